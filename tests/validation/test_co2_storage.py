"""Thirty years of CO2 into a tilted saline aquifer and two hundred of rest: the shipped example, by streamlines and fully implicitly."""

import re

import numpy
import pytest

import kvr_run
import peer_flow
from co2_deck import finished, stores

DECK = (kvr_run.REPOSITORY / "examples" / "co2_storage" / "CO2_STORAGE.DATA").read_text()
YEAR = 365.25
INJECTION = 30 * YEAR
RATE = 2e-6  # 1/day: a tenth of the dissolved CO2 turns solid in 140 years


def aquifer(folder, method, extra=""):
    folder.mkdir()
    text = DECK.replace("\nTUNEKVR\n", f"\nTUNEKVR\nFDMETHOD\n{method}\n{extra}")
    assert method in text
    return stores(finished(folder, text))


@pytest.fixture(scope="module")
def streamlines(tmp_path_factory):
    return aquifer(tmp_path_factory.mktemp("streamlines") / "run", "STREAMLINE")


@pytest.fixture(scope="module")
def implicit(tmp_path_factory):
    return aquifer(tmp_path_factory.mktemp("implicit") / "run", "FIM")


@pytest.fixture(scope="module")
def minerals(tmp_path_factory):
    folder = tmp_path_factory.mktemp("minerals")
    return [aquifer(folder / method, method, f"CO2SOLID\n{RATE} /\n") for method in ("STREAMLINE", "FIM")]


def as_corner_points(deck):
    """The deck for another simulator, its blocks as cells that are joined with their neighbours along the layers."""
    columns, layers = 40, 12
    depth = [[1500.5 - i + 5 * k for i in range(columns + 1)] for k in range(layers + 1)]  # corners halfway between the blocks' tops
    coord = [f"{50 * i} {200 * j} 1400 {50 * i} {200 * j} 1700" for j in (0, 1) for i in range(columns + 1)]
    zcorn = [" ".join(f"{row[i]} {row[i + 1]}" for i in range(columns)) for k in range(layers) for row in (depth[k], depth[k + 1]) for _ in (0, 1)]
    grid = "COORD\n" + "\n".join(coord) + " /\nZCORN\n" + "\n".join(zcorn) + " /\n"
    blocks = re.compile(r"^DX\n.*?^TOPS\n.*?/\n", re.S | re.M)
    assert blocks.search(deck)
    return blocks.sub(grid, deck).split("\nEND\n")[0].replace("FGIR\n", "FGIR\nFGIP\nFGIPL\n") + "\nEND\n"


def largest_difference(table, other, name):
    """Relative to what the other run has of it, from the first year on."""
    later = table["TIME"] >= YEAR
    expected = numpy.interp(table["TIME"][later], other["TIME"], other[name])
    return numpy.abs(table[name][later] / expected - 1.0).max()


def test_stores_and_wells_account_for_all_that_was_injected(streamlines, implicit):
    for table in (streamlines, implicit):
        assert table["INJECTED"][-1] == pytest.approx(8000.0 * INJECTION, rel=1e-7)
        assert numpy.abs(table["BALANCE"][1:]).max() < 1e-6


def test_ever_more_co2_dissolves_when_injection_has_ended(streamlines, implicit):
    for table in (streamlines, implicit):
        at_rest = table["TIME"] >= INJECTION
        share = table["DISSOLVED"][at_rest] / table["TOTAL"][at_rest]
        assert (numpy.diff(share) >= 0.0).all()
        assert share[-1] > 1.5 * share[0]


def test_the_stores_by_streamlines_are_those_of_the_fully_implicit_method(streamlines, implicit):
    seen = {name: largest_difference(streamlines, implicit, name) for name in ("MOBILE", "TRAPPED", "DISSOLVED")}
    print(seen)
    assert max(seen.values()) < 0.05


def test_as_much_turns_solid_by_either_method(minerals):
    by_lines, implicit = minerals
    for table in minerals:
        assert numpy.abs(table["BALANCE"][1:]).max() < 1e-6
        assert (numpy.diff(table["SOLID"]) >= 0.0).all()
        # What turned solid is the rate times what was dissolved, over the time.
        mean = 0.5 * (table["DISSOLVED"][1:] + table["DISSOLVED"][:-1])
        assert table["SOLID"][-1] == pytest.approx(RATE * (mean * numpy.diff(table["TIME"])).sum(), rel=0.01)
    assert by_lines["SOLID"][-1] == pytest.approx(implicit["SOLID"][-1], rel=0.03)


@peer_flow.needs_flow
def test_as_much_is_dissolved_as_an_independent_simulator_says(tmp_path, streamlines, implicit):
    peer = peer_flow.flow_vectors(tmp_path / "flow", as_corner_points(DECK), "FGIP", "FGIPL", longest=20)
    years = numpy.array([1, 5, 10, 20, 30, 60, 100, 150, 230]) * YEAR
    expected = numpy.interp(years, peer["TIME"], peer["FGIPL"] / peer["FGIP"])
    for table, most in ((implicit, 0.01), (streamlines, 0.03)):
        seen = numpy.interp(years, table["TIME"], table["DISSOLVED"] / numpy.maximum(table["TOTAL"], 1.0))
        print(numpy.abs(seen / expected - 1.0).max())
        assert numpy.abs(seen / expected - 1.0).max() < most
