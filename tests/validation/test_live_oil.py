"""Gas injection and water injection into live oil against an independent fully implicit simulator."""

import numpy
import pytest

import kvr_run
from curves import first_crossing, relative_difference
from public_floods import needs_public_decks, reference

pytestmark = needs_public_decks


def run_public(folder, name, files=(), **settings):
    text = kvr_run.public_deck(name)
    directory = (kvr_run.PUBLIC_DECKS / name).parent
    includes = {file: (directory / file).read_text() for file in files}
    return kvr_run.finished_normally(kvr_run.run(folder, text + kvr_run.options(**settings), includes))


def largest_difference(table, curve, column):
    """Largest relative difference of a column at the times of our run."""
    expected = numpy.interp(table["TIME"], curve["TIME"], curve[column])
    inside = table["TIME"] >= curve["TIME"][0]
    return numpy.abs(table[column][inside] / expected[inside] - 1.0).max()


@pytest.mark.xfail(strict=True, reason="lines launched from wells do not carry what expansion moves, and a cell with "
                   "a trace of free gas is mapped as saturated: measured in docs/validation.md")
def test_gas_injection_by_streamlines_follows_the_reference(tmp_path):
    table = run_public(tmp_path, "spe1/SPE1CASE2.DATA", lines=200).table()
    curve = reference("SPE1CASE2")
    ours = first_crossing(table["TIME"], table["FGOR"], 1.5)
    theirs = first_crossing(curve["TIME"], curve["FGOR"], 1.5)
    pressure = largest_difference(table, curve, "FPR")
    oil = relative_difference(table["FOPT"][-1], curve["WOPT:PROD"][-1])
    print(f"streamlines: GOR 1.5 at {ours:.0f} d against {theirs:.0f} d; pressure {100 * pressure:.1f} %; "
          f"cumulative oil {100 * oil:.1f} %")
    assert abs(ours - theirs) <= 150.0
    assert pressure <= 0.06
    assert oil <= 0.10


def test_gas_injection_by_streamlines_keeps_its_solution_gas_ratio_before_breakthrough(tmp_path):
    table = run_public(tmp_path, "spe1/SPE1CASE2.DATA", lines=200).table()
    early = (table["TIME"] > 0.0) & (table["TIME"] < 800.0)
    assert numpy.abs(table["FGOR"][early] - 1.27).max() < 0.05
    assert table["TIME"][-1] == 3650.0


@pytest.fixture(scope="module")
def gas_injection_by_impes(tmp_path_factory):
    folder = tmp_path_factory.mktemp("impes")
    return run_public(folder, "spe1/SPE1CASE2.DATA", method="IMPES", extra="MAXDT\n1.0\n").table()


def test_gas_injection_by_impes_has_the_plateau_pressure_of_the_reference(gas_injection_by_impes):
    table, curve = gas_injection_by_impes, reference("SPE1CASE2")
    plateau = (table["TIME"] > 100.0) & (table["TIME"] < 1100.0)
    expected = numpy.interp(table["TIME"][plateau], curve["TIME"], curve["FPR"])
    pressure = numpy.abs(table["FPR"][plateau] / expected - 1.0).max()
    print(f"IMPES: plateau pressure {100 * pressure:.2f} %")
    assert pressure <= 0.03


@pytest.mark.xfail(strict=True, reason="total-flux transport carries gas down into oil that dissolves it, before gravity "
                   "can hold it back: measured in docs/validation.md")
def test_gas_injection_by_impes_recovers_the_oil_of_the_reference(gas_injection_by_impes):
    oil = relative_difference(gas_injection_by_impes["FOPT"][-1], reference("SPE1CASE2")["WOPT:PROD"][-1])
    print(f"IMPES: cumulative oil {100 * oil:.2f} %")
    assert oil <= 0.05


def test_water_injection_into_live_oil_follows_the_reference(tmp_path):
    table = run_public(tmp_path, "waterflood/LIVEWAT.DATA", lines=800).table()
    curve = reference("LIVEWAT")
    pressure = largest_difference(table, curve, "FPR")
    oil = relative_difference(table["FOPT"][-1], curve["WOPT:PROD"][-1])
    print(f"LIVEWAT: pressure {100 * pressure:.1f} %, cumulative oil {100 * oil:.1f} %")
    assert pressure <= 0.04
    assert oil <= 0.04
