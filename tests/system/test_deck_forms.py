"""The forms of a deck: three files give the same bits as one, and what a folder lacks is told; an .afi file with the results
of its run beside it is traced."""

import re

import pytest

import deck_forms
import kvr_run
import small_deck
import three_files
from named_run import run_named

needs_public_decks = pytest.mark.skipif(not kvr_run.PUBLIC_DECKS.exists(),
                                        reason="the folder of public decks is not beside the checkout")
CHANGE = small_deck.SCHEDULE.replace("TSTEP\n2*30 /\n", "TSTEP\n2*30 /\nWCONPROD\n'PROD' 'OPEN' 'BHP' 5* 1800 /\n/\nTSTEP\n2*30 /\n")


def same_bits(deck, folder, change=deck_forms.with_all_output):
    ends, count, differ = deck_forms.both_forms(kvr_run.PROGRAM, deck, folder, change)
    assert ends == [0, 0]
    assert count > 40 and differ == []


@pytest.mark.parametrize("text", [
    pytest.param(small_deck.deck(schedule=CHANGE), id="two phases"),
    pytest.param(small_deck.gas_deck(kvr_run.options(method="IMPES", plots=1)), id="gas"),
    pytest.param(small_deck.deck(schedule=CHANGE, options=kvr_run.options(method="FIM")), id="fully implicit"),
    pytest.param("TITLE\nGRID of a small field\n" + small_deck.deck(), id="a title that begins like a section"),
    pytest.param(small_deck.deck(grid=small_deck.GRID + "SKIP\nPROPS\nENDSKIP\n"), id="a skipped section word")])
def test_three_files_give_the_bits_of_one(tmp_path, text):
    deck = tmp_path / "OWN.DATA"
    deck.write_text(text)
    same_bits(deck, tmp_path / "run")


@needs_public_decks
@pytest.mark.parametrize("name", ["waterflood/BL100", "waterflood/FAULTCP", "spe1/SPE1CASE2", "robust/well_limit"])
def test_public_decks_as_three_files_give_the_bits_of_one(tmp_path, name):
    same_bits(kvr_run.PUBLIC_DECKS / f"{name}.DATA", tmp_path)


def three_in(folder, text):
    folder.mkdir()
    for name, part in three_files.three_files(text).items():
        (folder / name).write_text(part)


def test_lines_go_on_explicitly_behind_the_first_change_of_wells(tmp_path):
    analytical = kvr_run.options(lines=20, scheme="ANALYTICAL", solver="DGESV", extra="STEPCTRL\nNo /")
    three_in(tmp_path / "FIELD", small_deck.deck(schedule=CHANGE, options=analytical))
    ended = kvr_run.run(tmp_path / "FIELD")
    assert ended.status == 0
    assert ended.console.startswith("-") and "WARNING: KVR Files detected..." in ended.console
    before, behind = ended.console.split("-         UPDATE WELL SCHEDULE         -")
    methods = [re.findall(r"SL  Numerical method : (\w+)", part) for part in (before, behind)]
    assert set(methods[0]) == {"btf"} and set(methods[1]) == {"mas"}


def test_results_of_three_files_have_the_name_of_their_folder(tmp_path):
    three_in(tmp_path / "FIELD", small_deck.deck())
    for words, folder in ((("FIELD",), "FIELD"), (("FIELD/Well.DATA", "--output-dir", "out"), "out")):
        ended = run_named(*words, folder=tmp_path)
        assert ended.returncode == 0, ended.console
        assert (tmp_path / folder / "FIELD_Summary.csv").exists()
    ended = run_named(".", "--check", folder=tmp_path / "FIELD")
    assert ended.returncode == 0 and "FIELD" in ended.console and "5 x 5 x 1" in ended.console


def test_a_check_of_three_files_writes_nothing(tmp_path):
    three_in(tmp_path / "FIELD", small_deck.deck())
    assert run_named("FIELD", "--check", folder=tmp_path).returncode == 0
    assert sorted(path.name for path in (tmp_path / "FIELD").iterdir()) == sorted(three_files.NAMES)


def test_a_file_that_is_missing_is_named(tmp_path):
    three_in(tmp_path / "FIELD", small_deck.deck())
    (tmp_path / "FIELD" / "Well.DATA").unlink()
    ended = run_named("FIELD", folder=tmp_path)
    assert ended.returncode == 1
    assert "Cannot find file :: FIELD, a folder" in ended.console
    assert "Not there for a three-file deck :: Well.DATA" in ended.console


def test_what_stands_behind_the_last_section_is_told_with_its_place(tmp_path):
    three_in(tmp_path / "FIELD", small_deck.deck())
    reservoir = tmp_path / "FIELD" / "Reservoir.DATA"
    reservoir.write_text(reservoir.read_text().replace("\nEND\n", "\nPROPS\nROCK\n3000 1e-3 /\nEND\n"))
    ended = run_named("FIELD", "--check", folder=tmp_path)
    assert ended.returncode == 0
    assert "PROPS AND WHAT STANDS BEHIND IT IS NOT READ" in ended.console
    assert "Reservoir.DATA, line" in ended.console
