"""The front behind which the gas drive of gas_drive.py leaves no liquid, without any grid: the shock from the gas to the tie line
whose extension goes through it, tangent to the fractional flow there, and the waves of that tie line before it (Helfferich
1981; Orr 2007, chapter 4)."""

import numpy

import gas_drive

LEAST_GAS = 0.5  # saturation; the waves of the tie line end at less
SATURATIONS = numpy.linspace(LEAST_GAS, 0.9999, 50001)


def tie_line_through_the_gas(mix):
    """Liquid and vapour that the gas is a mixture of, with less than nothing of the liquid."""
    liquid, lnk = numpy.array([0.5, 0.2, 0.3]), gas_drive.wilson()[None, :]
    for _ in range(500):
        middle = 0.5 * (gas_drive.GAS + liquid)
        _, x, y, lnk = gas_drive.flash(mix, middle[None, :], lnk)
        change = numpy.abs(x[0] - liquid).max()
        liquid = 0.5 * (liquid + x[0])
        if change < 1e-12:
            return x[0], y[0]
    raise ValueError("no tie line")


def concave_hull(points):
    """Corners of the upper hull of points by rising abscissa."""
    hull = []
    for x, y in points:
        while len(hull) > 1 and (hull[-1][1] - hull[-2][1]) * (x - hull[-2][0]) <= (y - hull[-2][1]) * (hull[-1][0] - hull[-2][0]):
            hull.pop()
        hull.append((x, y))
    return numpy.array(hull)


def heaviest_behind(injected, cells, count):
    """Mole fraction of the heaviest component in the first `count` of `cells` cells, means behind so many pore volumes of gas.
    Across the shock amounts balance: speed * (gas - C) = gas - u F, C and F moles a pore volume and in a unit of flow of the
    tie line, u the flow behind the gas's own of 1; of all states the gas reaches the one with the slowest shock."""
    mix = gas_drive.mixture()
    x, y = tie_line_through_the_gas(mix)
    volume = [gas_drive.molar_volume(mix, z[None, :])[0] for z in (x, y, gas_drive.GAS)]
    viscosity = [gas_drive.viscosity(z[None, :], numpy.array([v]))[0] for z, v in zip((x, y), volume)]
    gas_mobility = numpy.interp(SATURATIONS, gas_drive.KR_AXIS, gas_drive.KR_AXIS**2) / viscosity[1]
    oil_mobility = numpy.interp(SATURATIONS, gas_drive.KR_AXIS, (1 - gas_drive.KR_AXIS) ** 2) / viscosity[0]
    share = gas_mobility / (gas_mobility + oil_mobility)

    def moles(part):
        return numpy.outer(1 - part, x / volume[0]) + numpy.outer(part, y / volume[1])

    gas = gas_drive.GAS / volume[2]
    missing, flow = gas - moles(SATURATIONS), moles(share)
    # Two of the balances; the third follows, since all compositions lie on one line.
    speed, u = numpy.linalg.solve(numpy.stack([missing[:, [0, 2]], flow[:, [0, 2]]], axis=2),
                                  numpy.tile(gas[[0, 2], None], (len(share), 1, 1)))[..., 0].T
    front = speed.argmin()
    hull = concave_hull(zip(SATURATIONS[:front + 1], share[:front + 1]))[::-1]
    waves = injected * cells * u[front] * numpy.diff(hull[:, 1]) / numpy.diff(hull[:, 0])
    places = (numpy.arange(200 * count) + 0.5) / 200
    held = moles(numpy.interp(places, waves, hull[:-1, 0]))
    held[places < injected * cells * speed[front]] = gas
    means = held.reshape(count, 200, 3).mean(axis=1)
    return means[:, 2] / means.sum(axis=1)
