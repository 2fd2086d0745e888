"""A gas drive of methane, butane and decane in one dimension at one pressure: plain explicit finite volumes, upstream by
one cell, with the equation of state of flash_oracle and a viscosity of its own (Lohrenz, Bray and Clark 1964)."""

import sys

import numpy

import flash_oracle

PRESSURE, TEMPERATURE = 1500.0, 619.67  # psia, Rankine
TC, PC = numpy.array([343.0, 765.4, 1111.8]), numpy.array([667.8, 550.7, 304.0])
ACENTRIC, MW = numpy.array([0.0104, 0.201, 0.4885]), numpy.array([16.043, 58.12, 142.285])
VC = numpy.array([1.59, 4.08, 9.66])
OIL, GAS = numpy.array([0.2, 0.3, 0.5]), numpy.array([0.9, 0.1, 0.0])
INJECTED = 0.4        # pore volumes of gas at the pressure
STEP = 0.06           # of a cell's pores that are injected in a step; saturations travel up to some eight times as fast
MOLE_STEP = 1e-6      # of the differences that give the room of what enters
UNCHANGED = 1e-12     # of the moles of a cell
TRIVIAL = 1e-2       # largest |ln K| of phases that are one
LEAST_PASSES = 5
KR_AXIS = numpy.linspace(0.0, 1.0, 21)


def wilson():
    return numpy.log(PC / PRESSURE) + 5.37 * (1 + ACENTRIC) * (1 - TC / TEMPERATURE)


def mixture():
    return flash_oracle.Mixture(TC, PC, ACENTRIC, numpy.zeros((3, 3)), TEMPERATURE)


def molar_volume(mix, x):
    """ft3/lb-mole of compositions (rows) at the root of least Gibbs energy."""
    rt = flash_oracle.GAS_CONSTANT * mix.temperature
    A, B = ((x @ mix.a) * x).sum(axis=1) * PRESSURE / rt**2, x @ mix.b * PRESSURE / rt
    best, least = numpy.zeros(len(x)), numpy.full(len(x), numpy.inf)
    s = numpy.sqrt(2.0)
    for z in flash_oracle.cubic_roots(A, B):
        usable = z > B * (1 + 1e-12)
        z = numpy.where(usable, z, 2 * B)
        gibbs = z - 1 - numpy.log(z - B) - A / (2 * s * B) * numpy.log((z + (1 + s) * B) / (z + (1 - s) * B))
        better = usable & (gibbs < least)
        best, least = numpy.where(better, z, best), numpy.where(better, gibbs, least)
    return best * rt / PRESSURE


def vapour_fraction(z, K):
    """Bisection, held to 0..1."""
    low, high = numpy.zeros(len(z)), numpy.ones(len(z))
    for _ in range(48):
        V = 0.5 * (low + high)
        g = (z * (K - 1) / (1 + V[:, None] * (K - 1))).sum(axis=1)
        low, high = numpy.where(g > 0, V, low), numpy.where(g > 0, high, V)
    V = 0.5 * (low + high)
    return numpy.where(V < 1e-12, 0.0, numpy.where(V > 1 - 1e-12, 1.0, V))


def flash(mix, z, lnk):
    """V, x, y and ln K of feeds (rows) by successive substitution from ln K; where these have become nothing, from
    Wilson's, so that a feed that was one phase may split again."""
    lnk = numpy.where((numpy.abs(lnk).max(axis=1) < TRIVIAL)[:, None], wilson(), lnk)
    for n in range(400):
        K = numpy.exp(lnk)
        V = vapour_fraction(z, K)
        x = z / (1 + V[:, None] * (K - 1))
        y = K * x
        x, y = x / x.sum(axis=1, keepdims=True), y / y.sum(axis=1, keepdims=True)
        new = mix.ln_phi(x, PRESSURE) - mix.ln_phi(y, PRESSURE)
        # One phase is told by a few passes and goes on in the next step.
        split = (V > 0.0) & (V < 1.0)
        change = numpy.abs(new - lnk).max(axis=1)[split].max(initial=0.0)
        lnk = new
        if n >= LEAST_PASSES and change < 1e-9:
            break
    return V, x, y, lnk


def viscosity(x, volume):
    def inverse(tc, pc, mw):
        return (tc / 1.8) ** (1 / 6) / (numpy.sqrt(mw) * (pc / 14.696) ** (2 / 3))

    tr = TEMPERATURE / TC
    dilute = numpy.where(tr <= 1.5, 0.00034 * tr**0.94, 0.0001778 * numpy.maximum(4.58 * tr - 1.67, 0.0) ** 0.625) / inverse(TC, PC, MW)
    low = (x * dilute * numpy.sqrt(MW)).sum(axis=1) / (x * numpy.sqrt(MW)).sum(axis=1)
    xi = inverse(x @ TC, x @ PC, x @ MW)
    r = x @ VC / volume
    poly = 0.1023 + 0.023364 * r + 0.058533 * r**2 - 0.040758 * r**3 + 0.0093324 * r**4
    return numpy.where(r < 0.18, low + 2.05e-4 * r / xi, low + (poly**4 - 1e-4) / xi)


def volumes(mix, z, lnk):
    """Volume a mole and the parts of the flash."""
    V, x, y, lnk = flash(mix, numpy.maximum(z, 1e-30), lnk)
    liquid, vapour = molar_volume(mix, x), molar_volume(mix, y)
    return (1 - V) * liquid + V * vapour, V, x, y, liquid, vapour, lnk


def room(mix, moles, v, added, lnk):
    """Volume that a unit of what is added takes in each cell (rows), from volumes a mole and the flash without it."""
    total = moles.sum(axis=1)
    step = MOLE_STEP * total / added.sum(axis=1)
    more = moles + step[:, None] * added
    sums = more.sum(axis=1)
    return (sums * volumes(mix, more / sums[:, None], lnk)[0] - total * v) / step


def profile(cells):
    """Overall compositions (rows) of the cells behind the injection; a cell's pores are 1 ft3. What a cell gives takes one
    unit of room for a unit of flow: its phases are in equilibrium. Cells ahead of the first change are left alone."""
    mix = mixture()
    lnk = numpy.tile(wilson(), (cells, 1))
    oil = OIL / molar_volume(mix, OIL[None, :])[0]
    moles = numpy.tile(oil, (cells, 1))
    stream = GAS / molar_volume(mix, GAS[None, :])[0]  # moles a ft3 injected
    steps = int(numpy.ceil(INJECTED * cells / STEP))
    dt = INJECTED * cells / steps  # ft3 injected in a step
    for _ in range(steps):
        changed = numpy.flatnonzero(numpy.abs(moles / oil - 1).max(axis=1) > UNCHANGED)
        n = min(cells, changed.max(initial=-1) + 3)
        held = moles[:n]
        total = held.sum(axis=1)
        v, V, x, y, liquid, vapour, lnk[:n] = volumes(mix, held / total[:, None], lnk[:n])
        sg = V * vapour / v
        gas_mobility = numpy.interp(sg, KR_AXIS, KR_AXIS**2) / viscosity(y, vapour)
        oil_mobility = numpy.interp(sg, KR_AXIS, (1 - KR_AXIS) ** 2) / viscosity(x, liquid)
        share = gas_mobility / (gas_mobility + oil_mobility)
        carried = (share / vapour)[:, None] * y + ((1 - share) / liquid)[:, None] * x  # moles a ft3 of flow
        entering = numpy.vstack([stream, carried[:-1]])
        taken = room(mix, held, v, entering, lnk[:n])
        excess = (total * v - 1.0) / dt  # by which the pores are too full
        flow = numpy.empty(n + 1)
        flow[0] = 1.0
        for k in range(n):
            flow[k + 1] = flow[k] * taken[k] + excess[k]
        held += dt * (flow[:-1, None] * entering - flow[1:, None] * carried)
    return moles / moles.sum(axis=1, keepdims=True)


def main():
    """Prints means over groups of a fine solution's cells: gas_drive.py CELLS GROUPS."""
    cells, groups = map(int, sys.argv[1:])
    for row in profile(cells).reshape(groups, -1, 3).mean(axis=1):
        print(" ".join(f"{fraction:.6f}" for fraction in row))


if __name__ == "__main__":
    main()
