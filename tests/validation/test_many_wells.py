"""Depletion of a dipping live-oil field by 25 rate producers near the bubble point, to its end by both methods."""

import numpy
import pytest

import kvr_run
from curves import relative_difference
from public_floods import needs_public_decks, reference

pytestmark = needs_public_decks

WELLS = ["INJE1"] + [f"PRODU{number}" for number in range(2, 27)]
END = 900.0


def run_field(folder, **settings):
    text = kvr_run.public_deck("spe9/SPE9.DATA") + kvr_run.options(**settings)
    directory = kvr_run.PUBLIC_DECKS / "spe9"
    includes = {name: (directory / name).read_text() for name in ("PERMVALUES.DATA", "TOPSVALUES.DATA")}
    return kvr_run.finished_normally(kvr_run.run(folder, text, includes))


@pytest.fixture(scope="module")
def by_impes(tmp_path_factory):
    return run_field(tmp_path_factory.mktemp("impes"), method="IMPES", extra="MAXDT\n2.0\n")


@pytest.fixture(scope="module")
def by_streamlines(tmp_path_factory):
    return run_field(tmp_path_factory.mktemp("lines"), lines=1000, start="PRD", missed="Yes", extra="MAXDT\n5.0\n")


def holds_every_well_to_the_end(result, processor_seconds):
    table = result.table()
    cuts = result.console.count("TIME STEP SIZE IS DECREASED")
    print(f"{result.cpu_seconds:.0f} s, {len(table['TIME']) - 1} steps, {cuts} cuts")
    assert table["TIME"][-1] == END
    for well in WELLS:
        for figure in ("WBHP", "WOPR", "WWPR", "WGPR", "WWIR"):
            assert numpy.isfinite(table[f"{figure}:{well}"]).all()
        assert (table[f"WBHP:{well}"][1:] > 0.0).all()
    for well in WELLS[1:]:
        assert table[f"WOPR:{well}"].max() > 0.0
    assert cuts <= 10
    assert result.cpu_seconds < processor_seconds


def difference_at(table, day):
    curve = reference("SPE9")
    return relative_difference(numpy.interp(day, table["TIME"], table["FOPT"]),
                               numpy.interp(day, curve["TIME"], curve["FOPT"]))


def test_impes_brings_every_well_of_the_field_to_the_end(by_impes):
    holds_every_well_to_the_end(by_impes, 120.0)


def test_impes_has_the_oil_of_the_field_while_targets_are_met(by_impes):
    oil = difference_at(by_impes.table(), 300.0)
    print(f"IMPES: cumulative oil at 300 days {100 * oil:.1f} %")
    assert oil <= 0.05


@pytest.mark.xfail(strict=True, reason="no error of the step nor of the transport: measured in docs/validation.md")
def test_impes_recovers_the_oil_of_the_field(by_impes):
    oil = difference_at(by_impes.table(), END)
    print(f"IMPES: cumulative oil at the end {100 * oil:.1f} %")
    assert oil <= 0.10


def test_streamlines_bring_every_well_of_the_field_to_the_end(by_streamlines):
    holds_every_well_to_the_end(by_streamlines, 60.0)


@pytest.mark.xfail(strict=True, reason="lines carry out less oil than the targets that the pressure stage holds, beside what "
                   "IMPES misses: measured in docs/validation.md")
def test_streamlines_recover_the_oil_of_the_field(by_streamlines):
    oil = difference_at(by_streamlines.table(), END)
    print(f"streamlines: cumulative oil at the end {100 * oil:.1f} %")
    assert oil <= 0.10
