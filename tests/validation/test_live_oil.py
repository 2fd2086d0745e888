"""Gas injection and water injection into live oil against an independent fully implicit simulator."""

import numpy
import pytest

import kvr_run
from curves import first_crossing, relative_difference
from gas_flood import BREAKTHROUGH, compare, gas_flood
from public_floods import needs_public_decks, reference

pytestmark = needs_public_decks


def run_public(folder, name, files=(), **settings):
    text = kvr_run.public_deck(name)
    directory = (kvr_run.PUBLIC_DECKS / name).parent
    includes = {file: (directory / file).read_text() for file in files}
    return kvr_run.finished_normally(kvr_run.run(folder, text + kvr_run.options(**settings), includes))


def reference_breakthrough():
    curve = reference("SPE1CASE2")
    return first_crossing(curve["TIME"], curve["FGOR"], BREAKTHROUGH)


def largest_difference(table, curve, column):
    """Largest relative difference of a column at the times of our run."""
    expected = numpy.interp(table["TIME"], curve["TIME"], curve[column])
    inside = table["TIME"] >= curve["TIME"][0]
    return numpy.abs(table[column][inside] / expected[inside] - 1.0).max()


@pytest.fixture(scope="module")
def gas_injection_by_streamlines(tmp_path_factory):
    return gas_flood(tmp_path_factory.mktemp("streamlines"), step=10, lines=200)


def test_gas_injection_by_streamlines_follows_the_reference(gas_injection_by_streamlines):
    table = gas_injection_by_streamlines.table()
    seen = compare(table)
    print(f"streamlines: {seen}")
    assert table["TIME"][-1] == 3650.0
    assert seen.early_ratio < 0.06
    assert abs(seen.breakthrough - reference_breakthrough()) <= 150.0
    assert abs(seen.pressure) <= 0.06
    assert abs(seen.oil) <= 0.10


def test_gas_injection_by_streamlines_closes_its_balances(gas_injection_by_streamlines):
    balance = gas_injection_by_streamlines.table("KVR_Run_SweepVolume.out")
    for phase in "OWG":
        assert abs(balance[f"|MBE{phase}|"][-1]) < 1e-4


def test_gas_injection_by_streamlines_holds_its_pressure_in_long_steps_and_in_short_ones(tmp_path, gas_injection_by_streamlines):
    longer = compare(gas_injection_by_streamlines.table())
    shorter = compare(gas_flood(tmp_path, step=2, lines=200).table())
    print(f"streamlines, two-day steps: {shorter}")
    assert abs(shorter.pressure) <= 0.02
    assert abs(longer.pressure) <= 0.02
    assert abs(shorter.oil) < 0.01


@pytest.fixture(scope="module")
def gas_injection_by_impes(tmp_path_factory):
    return compare(gas_flood(tmp_path_factory.mktemp("impes"), step=5, method="IMPES").table())


def test_gas_injection_by_impes_has_the_plateau_pressure_of_the_reference(gas_injection_by_impes):
    print(f"IMPES: {gas_injection_by_impes}")
    assert gas_injection_by_impes.plateau <= 0.03


def test_gas_injection_by_impes_breaks_through_and_recovers_as_the_reference(gas_injection_by_impes):
    assert abs(gas_injection_by_impes.breakthrough - reference_breakthrough()) <= 60.0
    assert abs(gas_injection_by_impes.oil) <= 0.05
    assert abs(gas_injection_by_impes.pressure) <= 0.03


def test_water_injection_into_live_oil_follows_the_reference(tmp_path):
    table = run_public(tmp_path, "waterflood/LIVEWAT.DATA", lines=800).table()
    curve = reference("LIVEWAT")
    pressure = largest_difference(table, curve, "FPR")
    oil = relative_difference(table["FOPT"][-1], curve["WOPT:PROD"][-1])
    print(f"LIVEWAT: pressure {100 * pressure:.1f} %, cumulative oil {100 * oil:.1f} %")
    assert pressure <= 0.04
    assert oil <= 0.04


def long_steps(folder, repetitions, longest=100.0):
    """The flood in fixed steps of 100 days with as many mappings in each as there are steps of ten days, which
    move cells by the mean of their lines; oil above its bubble point by one block of rows."""
    text = kvr_run.public_deck("waterflood/LIVEWAT.DATA")
    assert "65*30.4167" in text
    section = kvr_run.options(lines=400, mappings=round(longest / 10.0), extra=f"OPTIONKVR\n1 0 0 0 0 0 0 {repetitions} /\n"
                              f"MAXDT\n{longest:g} /\nSTEPCTRL\nNo /\nMAPPING\nAVERAGE\nPVTOROWS\nLAST\n")
    return kvr_run.finished_normally(kvr_run.run(folder, text.replace("65*30.4167", "20*100") + section)).table()


def test_repeated_long_steps_bring_the_pressure_of_the_injector_to_that_of_short_ones(tmp_path_factory):
    short = long_steps(tmp_path_factory.mktemp("short"), 0, longest=10.0)
    once, twice, thrice = (long_steps(tmp_path_factory.mktemp("long"), repetitions) for repetitions in (0, 1, 2))

    def distance(table, column):
        expected = numpy.interp(table["TIME"], short["TIME"], short[column])
        return numpy.abs(table[column][1:] / expected[1:] - 1.0).mean()

    for column in ("WBHP:INJ", "FPR", "FOPT"):
        seen = ", ".join(f"{100 * distance(table, column):.3f} %" for table in (once, twice, thrice))
        print(f"LIVEWAT {column}: {seen} with no, one and two repetitions")
    for table in (twice, thrice):
        assert distance(table, "WBHP:INJ") <= 0.5 * distance(once, "WBHP:INJ")
        # What the lines of another step change: runs of 10, 5 and 2.5 days are up to 0.07 % apart.
        assert distance(table, "FPR") <= 1e-3
        assert distance(table, "FOPT") <= 2e-3
        assert list(table["TIME"]) == list(once["TIME"])
