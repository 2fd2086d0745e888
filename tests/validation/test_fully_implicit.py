"""The fully implicit method against an independent fully implicit simulator, on public decks."""

import numpy
import pytest

import buckley_leverett
import column_flood
import kvr_run
import tecplot
from curves import first_crossing, relative_difference, water_cut_difference
from public_floods import REPORT_TIMES, needs_public_decks, reference

BALANCE = 1e-6


def run_implicit(folder, name, files=(), longest_step=10.0, **settings):
    """Runs a public deck as it stands, with an option section that asks for the method and its longest step."""
    text = kvr_run.public_deck(name)
    directory = (kvr_run.PUBLIC_DECKS / name).parent
    includes = {file: (directory / file).read_text() for file in files}
    section = kvr_run.options(method="FIM", extra=f"MAXDT\n{longest_step:g}\n", **settings)
    return kvr_run.finished_normally(kvr_run.run(folder, text + section, includes))


def mean_difference(table, curve, ours, theirs):
    """Mean relative difference of a column at the times of our run."""
    inside = table["TIME"] >= curve["TIME"][0]
    expected = numpy.interp(table["TIME"][inside], curve["TIME"], curve[theirs])
    return numpy.abs(table[ours][inside] / expected - 1.0).mean()


def largest_balance_error(result):
    table = result.table("KVR_Run_SweepVolume.out")
    return max(numpy.abs(table[column]).max() for column in ("|MBEO|", "|MBEW|", "|MBEG|"))


def closing_counts(result):
    names = ("Implicit steps", "Step cuts", "Newton iterations", "Linear iterations")
    lines = {name: line for line in result.console.splitlines() for name in names if line.startswith(name)}
    return {name: int(lines[name].split()[-1]) for name in names}


@pytest.fixture(scope="module")
def gas_injection(tmp_path_factory):
    return run_implicit(tmp_path_factory.mktemp("gas"), "spe1/SPE1CASE2.DATA")


@pytest.fixture(scope="module")
def live_water_flood(tmp_path_factory):
    return run_implicit(tmp_path_factory.mktemp("water"), "waterflood/LIVEWAT.DATA")


@pytest.fixture(scope="module")
def heterogeneous_flood(tmp_path_factory):
    return run_implicit(tmp_path_factory.mktemp("five"), "waterflood/FIVE1.DATA", ["FIVE1.INC"], longest_step=50.0)


@pytest.fixture(scope="module")
def many_wells(tmp_path_factory):
    return run_implicit(tmp_path_factory.mktemp("nine"), "spe9/SPE9.DATA", ["PERMVALUES.DATA", "TOPSVALUES.DATA"])


CURVES = ("FPR", "FOPR", "FGOR", "WBHP:PROD", "WBHP:INJ")


@needs_public_decks
@pytest.mark.parametrize("column", CURVES)
def test_gas_injection_follows_the_reference(gas_injection, column):
    difference = mean_difference(gas_injection.table(), reference("SPE1CASE2"), column, column)
    print(f"SPE1 {column}: {100 * difference:.2f} %")
    assert difference <= 0.02


@needs_public_decks
def test_gas_breaks_through_and_oil_is_recovered_as_in_the_reference(gas_injection):
    table, curve = gas_injection.table(), reference("SPE1CASE2")
    ours = first_crossing(table["TIME"], table["FGOR"], 1.5)
    theirs = first_crossing(curve["TIME"], curve["FGOR"], 1.5)
    oil = relative_difference(table["FOPT"][-1], curve["WOPT:PROD"][-1])
    print(f"SPE1: GOR 1.5 at {ours:.0f} d against {theirs:.0f} d, cumulative oil {100 * oil:.2f} %")
    assert abs(ours - theirs) <= 45.0
    assert oil <= 0.01


@needs_public_decks
@pytest.mark.parametrize("column", CURVES)
def test_water_injection_into_live_oil_follows_the_reference(live_water_flood, column):
    difference = mean_difference(live_water_flood.table(), reference("LIVEWAT"), column, column)
    print(f"LIVEWAT {column}: {100 * difference:.2f} %")
    assert difference <= 0.02


@needs_public_decks
def test_water_injection_into_live_oil_recovers_what_the_reference_does(live_water_flood):
    table, curve = live_water_flood.table(), reference("LIVEWAT")
    ours = first_crossing(table["TIME"], table["FWCT"], 1e-4)
    theirs = first_crossing(curve["TIME"], curve["FWCT"], 1e-4)
    oil = relative_difference(table["FOPT"][-1], curve["WOPT:PROD"][-1])
    print(f"LIVEWAT: water cut 1e-4 at {ours:.0f} d against {theirs:.0f} d, cumulative oil {100 * oil:.2f} %")
    assert ours == theirs == float("inf")  # five years are too short for the water
    assert oil <= 0.01


@needs_public_decks
def test_heterogeneous_flood_has_the_water_cut_of_the_reference(heterogeneous_flood):
    table = heterogeneous_flood.table()
    mean, largest = water_cut_difference(table, reference("FIVE1"), REPORT_TIMES)
    fine, _ = water_cut_difference(table, reference("FIVE1_dt5"), REPORT_TIMES)
    print(f"FIVE1: mean {mean:.4f}, largest {largest:.3f}; against steps of 5 days {fine:.4f}")
    assert mean <= 0.02
    assert fine <= 0.02


@needs_public_decks
def test_many_wells_under_changing_targets_run_to_the_end(many_wells):
    table = many_wells.table()
    assert table["TIME"][-1] == 900.0
    # Twenty-five producers at 100 stb/d each between day 300 and 360: all of them reach it in the end.
    low = (table["TIME"] > 330.0) & (table["TIME"] <= 360.0)
    assert numpy.abs(table["FOPR"][low] / 2500.0 - 1.0).max() < 1e-3


@needs_public_decks
@pytest.mark.parametrize("name", ["gas_injection", "live_water_flood", "heterogeneous_flood", "many_wells"])
def test_every_component_is_conserved(name, request):
    error = largest_balance_error(request.getfixturevalue(name))
    print(f"{name}: largest balance error {error:.1e}")
    assert error <= BALANCE


@needs_public_decks
@pytest.mark.parametrize("name, seconds", [("gas_injection", 3.0), ("many_wells", 25.0), ("heterogeneous_flood", 60.0)])
def test_cost_stays_in_its_bounds(name, seconds, request):
    result = request.getfixturevalue(name)
    counts = closing_counts(result)
    print(f"{name}: {result.cpu_seconds:.1f} s, {counts}")
    assert result.cpu_seconds <= seconds
    assert counts["Newton iterations"] >= counts["Implicit steps"] > 0
    assert counts["Linear iterations"] > 0


def test_a_column_is_flooded_as_the_exact_solution_says(tmp_path):
    """First order in space and time: the error falls with both, as plain upwind weighting has it."""
    flow = buckley_leverett.fractional_flow(column_flood.relative_permeability(), column_flood.WATER_VISCOSITY,
                                            column_flood.OIL_VISCOSITY)
    solution = buckley_leverett.Exact(flow, column_flood.CONNATE, 1.0 - column_flood.RESIDUAL)
    errors = {}
    for cells, longest in ((50, 10.0), (100, 5.0), (200, 2.5)):
        folder = tmp_path / str(cells)
        folder.mkdir()
        section = kvr_run.options(method="FIM", plots=1, extra=f"MAXDT\n{longest}\n")
        result = kvr_run.finished_normally(kvr_run.run(folder, column_flood.deck(cells, section)))
        zones = {zone.time: zone for zone in tecplot.read_zones(folder / "KVR_TPlot_swat.plt")}
        expected = solution.cell_means(cells, column_flood.injected_volumes(500.0))
        errors[cells] = numpy.abs(zones[500.0].values[0] - expected).mean()
        produced = result.table()["FOPT"][-1]
        recovered = solution.mean(column_flood.injected_volumes(2000.0)) - column_flood.CONNATE
        assert produced == pytest.approx(column_flood.PORE_VOLUME * recovered, rel=0.02)
    print(errors)
    assert errors[100] < 0.03
    assert errors[50] > 1.5 * errors[100]
    assert errors[100] > 1.5 * errors[200]
