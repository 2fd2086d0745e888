"""The transport of components, on cells and along a line, against the fronts of a displacement of three components that
has a solution in closed form: constant K-values, no change of volume."""

import pathlib
import subprocess

import numpy
import pytest

import kvr_run
import ternary_fronts

CELLS = 200
WITHIN = 1.0  # cells


def program_profile(kind, pores, gas):
    """Mole fractions of the cells (rows)."""
    program = pathlib.Path(kvr_run.PROGRAM).parent / "tests" / "ternary_row"
    words = [kind, CELLS, pores, ternary_fronts.MOBILITY, *ternary_fronts.K, *ternary_fronts.OIL, *gas]
    done = subprocess.run([program, *map(str, words)], text=True, capture_output=True, check=True)
    return numpy.array([[float(word) for word in line.split()] for line in done.stdout.splitlines()])


def distance(profile, component, before, behind, place):
    """Cells between a front's half height and its place."""
    return ternary_fronts.crossing(profile[:, component], 0.5 * (before[component] + behind[component])) - place


@pytest.mark.parametrize("kind", ("cells", "SPU", "2PU", "BTF"))
def test_both_shocks_between_two_tie_lines_are_where_the_characteristics_put_them(kind):
    pores = 0.5
    gas, (behind, between, ahead), speeds = ternary_fronts.two_shocks(0.5)
    profile = program_profile(kind, pores, gas)
    switch, lead = (speed * pores * CELLS for speed in speeds)
    assert abs(distance(profile, 1, behind, between, switch)) < WITHIN
    for component in (0, 2):
        assert abs(distance(profile, component, between, ahead, lead)) < WITHIN
    # The states on both sides are those of the tie lines too.
    assert numpy.abs(profile[int(0.5 * switch)] - behind).max() < 1e-3
    assert numpy.abs(profile[int(0.5 * (switch + lead))] - between).max() < 0.01


@pytest.mark.parametrize("kind", ("2PU", "BTF"))
def test_limited_and_tracking_lines_put_the_fronts_of_a_dry_gas_where_the_characteristics_do(kind):
    """A zone of gas, its tie line, the switch, a rarefaction and the leading shock; upwind fluxes smear the fronts that
    run into a rarefaction, to 2.5 cells at half height."""
    pores = 0.7
    gas, states, speeds = ternary_fronts.three_fronts()
    profile = program_profile(kind, pores, gas)
    trail, switch, lead = (speed * pores * CELLS for speed in speeds)
    assert abs(distance(profile, 2, states[0], states[1], trail)) < WITHIN
    assert abs(distance(profile, 1, states[1], states[2], switch)) < WITHIN
    assert abs(distance(profile, 0, states[3], states[4], lead)) < WITHIN
