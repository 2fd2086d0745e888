"""Exact and plain numerical solutions of one-dimensional water flooding (Buckley and Leverett 1942,
Welge 1952), for relative permeabilities given as tables."""

import numpy

FINE_POINTS = 40001


def fractional_flow(table, water_viscosity, oil_viscosity):
    """Water fractional flow as a function of saturation; `table` has rows Sw, krw, krow."""
    table = numpy.asarray(table)

    def flow(saturation):
        water = numpy.interp(saturation, table[:, 0], table[:, 1]) / water_viscosity
        oil = numpy.interp(saturation, table[:, 0], table[:, 2]) / oil_viscosity
        return water / (water + oil)

    return flow


def upper_hull(x, y):
    """Indices of the upper concave hull of points with rising x."""
    hull = []
    for i in range(len(x)):
        while len(hull) >= 2:
            a, b = hull[-2], hull[-1]
            if (y[b] - y[a]) * (x[i] - x[b]) <= (y[i] - y[b]) * (x[b] - x[a]):
                hull.pop()
            else:
                break
        hull.append(i)
    return numpy.array(hull)


class Exact:
    """Entropy solution for injection at `injected` into a column at `initial`; positions in pore volumes."""

    def __init__(self, flow, initial, injected):
        saturation = numpy.linspace(initial, injected, FINE_POINTS)
        value = flow(saturation)
        hull = upper_hull(saturation, value)
        self.saturation = saturation[hull]
        self.value = value[hull]
        self.slope = numpy.diff(self.value) / numpy.diff(self.saturation)
        self.initial = initial

    def at(self, position, injected_volumes):
        """Saturation at `position` (fraction of the column) after so many pore volumes."""
        speed = numpy.asarray(position, dtype=float) / injected_volumes
        # Slopes fall along the hull: the first segment slower than `speed` begins at the wanted point.
        index = len(self.slope) - numpy.searchsorted(self.slope[::-1], speed, side="left")
        return self.saturation[index]

    def mean(self, injected_volumes, cells=20000):
        position = (numpy.arange(cells) + 0.5) / cells
        return self.at(position, injected_volumes).mean()

    def cell_means(self, cells, injected_volumes, points=50):
        position = (numpy.arange(cells * points) + 0.5) / (cells * points)
        return self.at(position, injected_volumes).reshape(cells, points).mean(axis=1)


def upwind(flow, initial, injected, cells, injected_volumes, cfl):
    """First-order explicit upwind solution, time step limited by the steepest chord of the flow curve."""
    saturation = numpy.full(cells, float(initial))
    fine = numpy.linspace(initial, injected, 2001)
    fastest = (numpy.diff(flow(fine)) / numpy.diff(fine)).max()
    steps = int(numpy.ceil(injected_volumes * cells * fastest / cfl))
    ratio = injected_volumes * cells / steps
    inlet = flow(numpy.array([injected]))
    for _ in range(steps):
        value = numpy.concatenate([inlet, flow(saturation)])
        saturation = saturation - ratio * numpy.diff(value)
    return saturation
