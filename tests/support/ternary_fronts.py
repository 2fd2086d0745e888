"""Displacement of oil by gas of three components with constant K-values and one molar volume for all: fronts by the
method of characteristics (Helfferich, SPE J. 21, 1981; Orr, Theory of Gas Injection Processes, 2007).

On a tie line from liquid x to vapour y a composition is C = x + S (y - x), its flux F = x + f(S) (y - x). Two tie lines
that meet in X, at s on each of them, are joined by a shock whose balance holds for every component when its speed is
(f - s)/(S - s) on both sides: that of a flow in which X stands still. One phase is such a point too, S = f beyond 0 or 1.
"""

import numpy

K = numpy.array([2.5, 0.5, 0.05])
MOBILITY = 2.0                         # of pure gas over that of pure oil
OIL = numpy.array([0.1, 0.2, 0.7])     # liquid
GAS_LINE = numpy.array([0.95, 0.0, 1.5]) / 2.45  # liquid end of the tie line without the second component


def flow(S):
    return MOBILITY * S**2 / (MOBILITY * S**2 + (1 - S) ** 2)


def slope(S):
    return 2 * MOBILITY * S * (1 - S) / (MOBILITY * S**2 + (1 - S) ** 2) ** 2


def root(function, low, high):
    """Bisection; the function changes its sign once."""
    above = function(low) > 0
    for _ in range(100):
        middle = 0.5 * (low + high)
        low, high = (middle, high) if (function(middle) > 0) == above else (low, middle)
    return 0.5 * (low + high)


def speed(S, s):
    return (flow(S) - s) / (S - s)


def tie_line_of(z):
    """Liquid, vapour and the place of z on the (prolonged) tie line through it, between the poles of its equation."""
    near = 1e-9
    place = root(lambda V: (z * (K - 1) / (1 + V * (K - 1))).sum(), 1 / (1 - K.max()) + near, 1 / (1 - K.min()) - near)
    x = z / (1 + place * (K - 1))
    return x, K * x, place


def meeting(first, second):
    """Places of the point in which two tie lines meet."""
    (x, y), (u, v) = first, second
    return numpy.linalg.solve(numpy.array([y - x, u - v]).T[:2], (u - x)[:2])


def at(line, S):
    return line[0] + S * (line[1] - line[0])


def two_shocks(S):
    """Gas and oil in two phases behind both fronts: states between the fronts and speeds of these, a pore volume. S: gas
    saturation between the fronts, low enough for a shock to lead all the way from it to the oil. The gas that gives this
    has two phases in the reservoir: the composition whose flow is that of the first state."""
    x, y, place = tie_line_of(OIL)
    oil_line, gas_line = (x, y), (GAS_LINE, K * GAS_LINE)
    on_oil, on_gas = meeting(oil_line, gas_line)
    switch, lead = speed(S, on_oil), speed(S, place)
    # The wave along tie lines outruns the switch on both sides of it, and runs into the leading front.
    behind = root(lambda g: flow(g) - on_gas - switch * (g - on_gas), 0.2, 0.7)
    assert slope(behind) > switch and slope(S) > lead > switch
    return at(gas_line, flow(behind)), [at(gas_line, behind), at(oil_line, S), OIL], [switch, lead]


def three_fronts():
    """Pure first component: its tie line is left by one shock, the leading front is a shock out of a rarefaction, and so is
    the switch between the tie lines."""
    x, y, place = tie_line_of(OIL)
    oil_line, gas_line = (x, y), (GAS_LINE, K * GAS_LINE)
    gas = numpy.array([1.0, 0.0, 0.0])
    gas_place = (gas - GAS_LINE)[0] / (K * GAS_LINE - GAS_LINE)[0]
    on_oil, on_gas = meeting(oil_line, gas_line)

    def tangent(s):
        return root(lambda S: slope(S) - speed(S, s), 0.4, 0.95)

    lead, after = tangent(place), tangent(on_oil)
    switch = slope(after)
    behind = root(lambda g: flow(g) - on_gas - switch * (g - on_gas), 0.7, 0.95)
    trail = speed(behind, gas_place)
    assert trail < switch < slope(lead)
    states = [gas, at(gas_line, behind), at(oil_line, after), at(oil_line, lead), OIL]
    return gas, states, [trail, switch, slope(lead)]


def crossing(profile, level):
    """Place, in cells, in which a profile goes through a level; it does so once."""
    k = numpy.flatnonzero((profile[1:] > level) != (profile[:-1] > level))
    assert len(k) == 1
    k = k[0]
    return k + 0.5 + (level - profile[k]) / (profile[k + 1] - profile[k])
