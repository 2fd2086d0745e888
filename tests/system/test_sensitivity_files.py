"""Sensitivities of wells to permeability as a run leaves them, and what a deck that asks for them in vain is told."""

import numpy
import pytest

import small_deck
from kvr_run import finished_normally, run

WELLS, CELLS = 2, 25


def deck(record="1 0 0 1 0 0 0 0", extra=""):
    return small_deck.deck().replace("TUNEKVR\n", f"TUNEKVR\nOPTIONKVR\n{record} /\n{extra}")


def values(path):
    """[well][cell] of a file."""
    data, found, place = path.read_bytes(), [], 0
    while place < len(data):
        length = int.from_bytes(data[place:place + 4], "big")
        assert data[place + 4 + length:place + 8 + length] == data[place:place + 4]
        found.append(numpy.frombuffer(data[place + 4:place + 4 + length], ">f8"))
        place += length + 8
    return numpy.concatenate(found).reshape(WELLS, CELLS)


@pytest.mark.parametrize("form", ["COUPLED", "LINES", "CLASSIC"])
def test_every_report_leaves_a_file_of_each_kind_and_their_sum(tmp_path, form):
    result = finished_normally(run(tmp_path, deck(extra=f"SNSFORM\n{form} {form} /\n")))
    for kind in ("GTTI", "GBHPI"):
        steps = sorted(tmp_path.glob(f"HM_SENSTEMP_{kind}.K*"))
        assert [step.name[-5:] for step in steps] == [f"K{n:04d}" for n in range(len(steps))] and len(steps) > 1
        read = [values(step) for step in steps]
        assert all(numpy.isfinite(step).all() for step in read)
        numpy.testing.assert_allclose(read[0], sum(read[1:]), rtol=1e-12, atol=1e-300)
        assert f"File Generated : HM_SENSTEMP_{kind}.K0001" in result.log
        assert not list(tmp_path.glob("*.new"))
    assert result.log.index("GBHPI.K0001") < result.log.index("GTTI.K0001") < result.log.index("GBHPI.K0000")
    assert f"Sensitivity of travel time :: {form}" in result.log
    assert not values(tmp_path / "HM_SENSTEMP_GTTI.K0001")[0].any() or not values(tmp_path / "HM_SENSTEMP_GTTI.K0001")[1].any()


def test_a_run_is_the_same_with_and_without_them(tmp_path):
    tables = []
    for record in ("1 0 0 0 0 0 0 0", "1 0 0 1 0 0 0 0"):
        folder = tmp_path / record[6]
        folder.mkdir()
        tables.append(finished_normally(run(folder, deck(record))).read("KVR_Run_Recovery.out"))
    assert tables[0] == tables[1]
    assert not list((tmp_path / "0").glob("HM_SENSTEMP*"))


def test_a_run_without_lines_is_refused(tmp_path):
    result = run(tmp_path, deck().replace("STREAMLINE", "FIM"), standard_input="\n")
    assert result.status != 0
    assert "sensitivity output (OPTIONKVR 4) without streamlines" in result.console
