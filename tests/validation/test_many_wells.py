"""Depletion of a dipping live-oil field by 25 rate producers near the bubble point: all methods side by side, and the
fully implicit one against a commercial simulator that joins the same cells."""

import csv

import numpy
import pytest

import kvr_run
from curves import relative_difference
from public_floods import needs_public_decks

pytestmark = needs_public_decks

WELLS = ["INJE1"] + [f"PRODU{number}" for number in range(2, 27)]
END = 900.0
BALANCE = 1e-3
COMMERCIAL = kvr_run.PUBLIC_DECKS / "robust" / "spe9_commercial.csv"


def run_field(folder, method):
    """The deck as published, but for the method."""
    text = kvr_run.public_deck("spe9/SPE9.DATA") + f"\nTUNEKVR\nFDMETHOD\n{method}\n"
    directory = kvr_run.PUBLIC_DECKS / "spe9"
    includes = {name: (directory / name).read_text() for name in ("PERMVALUES.DATA", "TOPSVALUES.DATA")}
    return kvr_run.finished_normally(kvr_run.run(folder, text, includes))


@pytest.fixture(scope="module")
def fully_implicit(tmp_path_factory):
    return run_field(tmp_path_factory.mktemp("fim"), "FIM")


@pytest.fixture(scope="module")
def by_impes(tmp_path_factory):
    return run_field(tmp_path_factory.mktemp("impes"), "IMPES")


@pytest.fixture(scope="module")
def by_streamlines(tmp_path_factory):
    return run_field(tmp_path_factory.mktemp("lines"), "STREAMLINE")


def runs_without_wells_lost(result):
    table = result.table()
    print(f"{result.cpu_seconds:.0f} s, {len(table['TIME']) - 1} steps")
    assert table["TIME"][-1] == END
    for well in WELLS:
        for figure in ("WBHP", "WOPR", "WWPR", "WGPR", "WWIR"):
            assert numpy.isfinite(table[f"{figure}:{well}"]).all()
        assert (table[f"WBHP:{well}"][1:] > 0.0).all()
    for well in WELLS[1:]:
        assert table[f"WOPR:{well}"].max() > 0.0


def commercial(day):
    """Figures of the field by name at one of the days of the table."""
    with COMMERCIAL.open(newline="") as rows:
        found = [row for row in csv.DictReader(rows) if row["NAME"] == "FIELD" and float(row["TIME"]) == day]
    assert len(found) == 1
    return {name: float(found[0][name]) for name in ("OPT", "WPT", "GPT", "WIT")}


@pytest.mark.parametrize("day", [370.0, 740.0])
@pytest.mark.parametrize("column, name, most", [("FOPT", "OPT", 0.02), ("FGPT", "GPT", 0.04), ("FWPT", "WPT", 0.06),
                                                ("FWIT", "WIT", 0.06)])
def test_fully_implicit_totals_are_those_of_a_commercial_simulator(fully_implicit, day, column, name, most):
    table = fully_implicit.table()
    ours, theirs = numpy.interp(day, table["TIME"], table[column]), commercial(day)[name]
    print(f"{column} at {day:.0f} d: {ours:.6g} against {theirs:.6g}, {100 * (ours / theirs - 1):+.2f} %")
    assert relative_difference(ours, theirs) <= most


@pytest.fixture(scope="module")
def sloping(tmp_path_factory):
    """The field as corner points whose layers touch, so that all simulators join the same cells."""
    directory = kvr_run.PUBLIC_DECKS / "robust"
    text = (directory / "SPE9_CP.DATA").read_text() + "\nTUNEKVR\nFDMETHOD\nFIM\n"
    includes = {name: (directory / name).read_text() for name in ("SPE9.GRDECL", "PERMVALUES.DATA")}
    return kvr_run.finished_normally(kvr_run.run(tmp_path_factory.mktemp("sloping"), text, includes))


@pytest.mark.parametrize("day", [225.0, 450.0, 675.0, 900.0])
@pytest.mark.parametrize("column, most", [("FOPR", 0.04), ("FGPR", 0.06), ("FWPR", 0.10)])
def test_fully_implicit_rates_are_those_of_an_open_simulator(sloping, day, column, most):
    curve, table = kvr_run.read_csv(kvr_run.PUBLIC_DECKS / "robust" / "SPE9_CP.csv"), sloping.table()
    ours, theirs = (numpy.interp(day, columns["TIME"], columns[column]) for columns in (table, curve))
    print(f"{column} at {day:.0f} d: {ours:.6g} against {theirs:.6g}, {100 * (ours / theirs - 1):+.2f} %")
    assert relative_difference(ours, theirs) <= most


@pytest.mark.parametrize("name", ["by_impes", "by_streamlines"])
@pytest.mark.parametrize("column, most", [("FOPT", 0.04), ("FWPT", 0.08), ("FGPT", 0.08)])
def test_totals_are_those_of_the_fully_implicit_method(fully_implicit, request, name, column, most):
    ours, full = (result.table()[column][-1] for result in (request.getfixturevalue(name), fully_implicit))
    print(f"{name} {column}: {ours:.6g} against {full:.6g}, {100 * (ours / full - 1):+.2f} %")
    assert relative_difference(ours, full) <= most


@pytest.mark.parametrize("name", ["by_impes", "by_streamlines"])
def test_every_well_is_held_to_the_end_and_every_phase_accounted_for(request, name):
    result = request.getfixturevalue(name)
    runs_without_wells_lost(result)
    balance = result.table("KVR_Run_SweepVolume.out")
    for column in ("|MBEO|", "|MBEW|", "|MBEG|"):
        error = numpy.abs(balance[column]).max()
        print(f"{name} {column}: {error:.1e}")
        assert error < BALANCE
    assert result.cpu_seconds < 60.0
