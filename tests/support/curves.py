"""Comparison of production curves."""

import numpy


def step_water_cut(times, oil_total, water_total, at):
    """Water cut of each interval between the times `at`: ratio of the increments of the cumulatives."""
    oil = numpy.diff(numpy.interp(at, numpy.concatenate([[0.0], times]), numpy.concatenate([[0.0], oil_total])))
    water = numpy.diff(numpy.interp(at, numpy.concatenate([[0.0], times]), numpy.concatenate([[0.0], water_total])))
    return water / (water + oil)


def water_cut_difference(table, reference, at):
    """Mean and largest difference of the step-average field water cut, both at the times `at`."""
    ours = step_water_cut(table["TIME"], table["FOPT"], table["FWPT"], at)
    theirs = step_water_cut(reference["TIME"], reference["FOPT"], reference["FWPT"], at)
    difference = numpy.abs(ours - theirs)
    return difference.mean(), difference.max()


def relative_difference(value, reference):
    return abs(value / reference - 1.0)


def first_crossing(times, values, level):
    """First time at which a curve passes `level`, linear between points; infinity if it never does."""
    above = numpy.nonzero(numpy.asarray(values) > level)[0]
    if len(above) == 0:
        return float("inf")
    i = above[0]
    if i == 0:
        return times[0]
    share = (level - values[i - 1]) / (values[i] - values[i - 1])
    return times[i - 1] + share * (times[i] - times[i - 1])
