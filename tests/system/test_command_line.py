"""The deck and a few switches on the command line: results beside the deck under its name, a concise console."""

import os
import shutil

import pytest

import small_deck
from named_run import run_named, start, summary_of

LIVE = small_deck.deck()


@pytest.fixture
def case(tmp_path):
    """A folder with FLOOD.DATA, and another one to start from."""
    (tmp_path / "decks").mkdir()
    (tmp_path / "elsewhere").mkdir()
    (tmp_path / "decks" / "FLOOD.DATA").write_text(small_deck.deck())
    return tmp_path


def test_a_named_deck_runs_from_any_folder_and_leaves_its_results_beside_it(case):
    ended = run_named("../decks/FLOOD.DATA", folder=case / "elsewhere")
    assert ended.returncode == 0, ended.console
    assert os.listdir(case / "elsewhere") == []
    names = os.listdir(case / "decks")
    assert {"FLOOD_Run_Recovery.out", "FLOOD_Summary.csv", "FLOOD_dbg.out", "FLOOD_Files.txt", "FLOOD.ECLEND"} <= set(names)
    assert all(name.startswith("FLOOD") for name in names)


def test_the_extension_may_be_left_out(case):
    assert run_named("decks/FLOOD", folder=case).returncode == 0


def test_results_go_into_the_folder_that_is_asked_for_and_the_deck_s_may_be_read_only(case):
    (case / "decks" / "PORO.INC").write_text("PORO\n25*0.2 /\n")
    deck = small_deck.deck(grid=small_deck.GRID.replace("PORO\n25*0.2 /\n", "INCLUDE\n'PORO.INC' /\n"))
    (case / "decks" / "FLOOD.DATA").write_text(deck)
    before = sorted(os.listdir(case / "decks"))
    os.chmod(case / "decks", 0o555)
    try:
        ended = run_named("decks/FLOOD", "--output-dir", "new/results", folder=case)
    finally:
        os.chmod(case / "decks", 0o755)
    assert ended.returncode == 0, ended.console
    assert sorted(os.listdir(case / "decks")) == before
    assert (case / "new" / "results" / "FLOOD_Summary.csv").exists()


def test_two_decks_of_one_folder_run_at_once_without_meeting(case):
    longer = small_deck.deck(schedule=small_deck.SCHEDULE.replace("'RATE' 50", "'RATE' 80"))
    (case / "decks" / "FAST.DATA").write_text(longer)
    both = [start("decks/FLOOD", folder=case), start("decks/FAST", folder=case)]
    for process in both:
        process.communicate(timeout=300)
        assert process.returncode == 0
    together = [(case / "decks" / f"{name}_Summary.csv").read_text() for name in ("FLOOD", "FAST")]
    for name, text in zip(("FLOOD", "FAST"), together):
        alone = case / name
        alone.mkdir()
        shutil.copy(case / "decks" / f"{name}.DATA", alone)
        assert run_named(f"{name}/{name}", folder=case).returncode == 0
        assert (alone / f"{name}_Summary.csv").read_text() == text
    assert together[0] != together[1]


def test_the_console_is_concise_and_the_log_keeps_every_line(case):
    ended = run_named("decks/FLOOD", folder=case)
    assert ended.errors == ""
    assert len(ended.console.splitlines()) < 40
    assert "Grid      5 x 5 x 1 = 25 cells, 25 active, blocks" in ended.console
    assert "READ -> " not in ended.console and "Time Begin" not in ended.console
    log = (case / "decks" / "FLOOD_dbg.out").read_text()
    for text in ("READ -> PORO", "Time Begin : ", "************ END SIMULATION ************", "Grid      5 x 5 x 1"):
        assert text in log


def test_the_table_has_a_row_for_each_report_with_the_figures_of_the_summary(case):
    ended = run_named("decks/FLOOD", folder=case)
    lines = ended.console.splitlines()
    head = next(n for n, line in enumerate(lines) if line.startswith("Date "))
    rows = [line.split() for line in lines[head + 2:head + 4]]
    summary, _ = summary_of(case / "decks" / "FLOOD_Summary.csv")
    assert [row[0] for row in rows] == ["2000-01-31", "2000-03-01"]
    for row in rows:
        place = list(summary["TIME"]).index(float(row[1]))
        assert float(row[4]) == pytest.approx(summary["FOPR"][place], abs=0.06)
        assert float(row[7]) == pytest.approx(summary["FPR"][place], abs=0.06)
    assert sum(int(row[2]) for row in rows) == len(summary["TIME"]) - 1, "steps of all reports"


def test_verbose_shows_the_stages_and_the_table(case):
    ended = run_named("decks/FLOOD", "--verbose", folder=case)
    for text in ("READ -> PORO", "Time Begin : ", "END SIMULATION", "Date ", "Open first"):
        assert text in ended.console


def test_a_check_tells_the_deck_and_writes_nothing(case):
    before = sorted(os.listdir(case / "decks"))
    ended = run_named("decks/FLOOD", "--check", folder=case)
    assert ended.returncode == 0
    assert "In place  oil " in ended.console and "60 days from 2000-01-01, 2 reports" in ended.console
    assert "Date " not in ended.console
    assert sorted(os.listdir(case / "decks")) == before


def test_a_check_of_a_faulty_deck_names_the_place_and_fails(case):
    (case / "decks" / "FLOOD.DATA").write_text(LIVE.replace("25*0.2 /", "25*x /", 1))
    ended = run_named("decks/FLOOD", "--check", folder=case)
    assert ended.returncode == 1
    assert 'FLOOD.DATA, line 21, keyword PORO: "x"' in ended.console.splitlines()[-1]


def test_the_number_of_threads_changes_nothing_but_the_time(case):
    texts = []
    for threads in (1, 2):
        assert run_named("decks/FLOOD", "--threads", threads, folder=case).returncode == 0
        texts.append((case / "decks" / "FLOOD_Summary.csv").read_text())
    assert texts[0] == texts[1]


@pytest.mark.parametrize("words", [["--foo"], ["A", "B"], ["--threads", "none"], ["--threads", "0"], ["--output-dir"]])
def test_words_that_are_not_understood_are_one_line_and_exit_2(tmp_path, words):
    ended = run_named(*words, folder=tmp_path)
    assert (ended.returncode, ended.console) == (2, "")
    assert len(ended.errors.splitlines()) == 1 and ended.errors.startswith("kvr: ")
    assert os.listdir(tmp_path) == []


@pytest.mark.parametrize("word, text", [("--help", "--output-dir"), ("--version", "KVR ")])
def test_help_and_version_are_told_without_a_run(tmp_path, word, text):
    ended = run_named(word, folder=tmp_path)
    assert ended.returncode == 0 and text in ended.console
    assert os.listdir(tmp_path) == []


def test_a_deck_that_is_not_there_is_named(tmp_path):
    ended = run_named("NOTHING", folder=tmp_path)
    assert ended.returncode == 1
    assert ended.console.splitlines()[-1] == "ERROR :: Cannot find file :: NOTHING"


def test_an_error_in_the_deck_is_the_last_line_of_a_concise_console(case):
    (case / "decks" / "FLOOD.DATA").write_text(LIVE.replace("25*0.2 /", "25*x /", 1))
    ended = run_named("decks/FLOOD", folder=case)
    assert ended.returncode == 1
    assert ended.console.splitlines()[0].startswith("ERROR")
    assert 'line 21, keyword PORO: "x"' in ended.console.splitlines()[-1]


def test_a_name_that_is_no_deck_is_answered_with_the_decks_that_lie_there(tmp_path):
    (tmp_path / "field").mkdir()
    for name in ("EAST.DATA", "WEST.DATA", "notes.txt"):
        (tmp_path / "field" / name).write_text("")
    for word, said in (("field", "field, a folder"), ("field/NORTH", "field/NORTH"), ("field/east.data", "field/east.data")):
        ended = run_named(word, folder=tmp_path)
        assert ended.returncode == 1
        lines = [line for line in ended.console.splitlines() if line]
        assert lines[-2:] == [f"ERROR :: Cannot find file :: {said}", "Decks there :: field/EAST.DATA field/WEST.DATA"]
    ended = run_named("nowhere/CASE", folder=tmp_path)
    assert ended.returncode == 1 and "Decks there" not in ended.console


def test_an_unknown_control_of_a_well_is_answered_with_those_that_there_are(tmp_path):
    (tmp_path / "CASE.DATA").write_text(small_deck.deck().replace("'OPEN' 'BHP' 5* 2000", "'OPEN' 'OIL' 50 4* 2000"))
    ended = run_named("CASE", folder=tmp_path)
    assert ended.returncode == 1
    assert "Well PROD: control 'OIL'" in ended.console and "Known: ORAT, WRAT, GRAT, LRAT, RESV, BHP" in ended.console
