"""Pages made from the program stay what the program says, and what pages name exists."""

import fnmatch
import re
import subprocess

import pytest

import kvr_run
import small_deck
from kvr_run import REPOSITORY, finished_normally, run

SOURCE = REPOSITORY / "src"
FOLDERS = sorted(path.name for path in SOURCE.iterdir() if path.is_dir())
MAP = "docs/code-map.md"
PLACE = r"[a-z0-9_]+(?:/[a-z0-9_]*)*(?:\.[a-z]+)?"  # a file with or without its ending, or a folder
MOST_LINES = 15


def exists(name, places):
    """A place named in a page, under one of the folders that the page speaks of."""
    return any((place / f"{name}{ending}").exists() for place in places for ending in ("", ".hpp", ".cpp"))


def missing(names, places):
    return [name for name in names if not exists(name, places)]


def test_the_list_of_keywords_is_what_the_section_tables_say():
    made = subprocess.run([REPOSITORY / "tools" / "keyword_list"], capture_output=True, text=True, check=True)
    assert made.stdout == (REPOSITORY / "docs" / "keywords.md").read_text(), "run tools/keyword_list again"


def test_the_list_of_files_is_what_the_table_of_files_says():
    made = subprocess.run([REPOSITORY / "tools" / "file_list"], capture_output=True, text=True, check=True)
    assert made.stdout == (REPOSITORY / "docs" / "files.md").read_text(), "run tools/file_list again"


def test_the_list_of_files_names_every_file_that_a_run_leaves(tmp_path):
    options = kvr_run.options(lines=20, plots=1).replace("1 0 1 0 0 0 0 1 0 0", "1 1 1 0 0 1 0 1 0 0")
    grid = small_deck.GRID.replace("25*", "30*")
    deck = small_deck.deck(runspec=small_deck.RUNSPEC.replace("5 5 1", "6 5 1"), grid=grid,
                           solution=small_deck.SOLUTION.replace("25*", "30*"), options=options)
    result = finished_normally(run(tmp_path, deck))
    left = {path.name for path in result.folder.iterdir()} - {"ECLIPSE.DATA"}
    assert {"pmtrx.out", "KVR_dbgAMG.out", "_COORD_BYKVR.tmp"} <= left
    patterns = re.findall(r"`([^` ]+)`", (REPOSITORY / "docs" / "files.md").read_text())
    unnamed = [name for name in sorted(left) if not any(fnmatch.fnmatch(name, pattern) for pattern in patterns)]
    assert unnamed == []


def test_every_path_on_the_map_of_the_code_exists():
    text = (REPOSITORY / MAP).read_text()
    road = re.findall(rf"(?<![\w/`]){PLACE}", text.split("```")[1])
    named = re.findall(rf"`({PLACE})`", text) + re.findall(r"\]\(([^)#]+)\)", text) + road
    assert missing((name for name in named if "/" in name), [SOURCE, REPOSITORY, REPOSITORY / "docs"]) == []


def test_the_map_answers_where_twenty_things_are_decided():
    table = (REPOSITORY / MAP).read_text().split("## Where is it decided?")[1].split("\n## ")[0]
    rows = [line for line in table.splitlines() if re.search(r"\| `[^`]+\.[ch]pp`", line)]
    assert len(rows) >= 20


@pytest.mark.parametrize("folder", FOLDERS)
def test_every_folder_of_the_source_says_what_it_holds(folder):
    page = SOURCE / folder / "README.md"
    text = page.read_text()
    assert len(text.splitlines()) <= MOST_LINES
    assert f"(../src/{folder}/README.md)" in (REPOSITORY / MAP).read_text()
    rooms = [path for path in page.parent.rglob("*") if path.is_dir()]
    assert missing(re.findall(rf"`({PLACE})`", text), [page.parent, *rooms, SOURCE, REPOSITORY]) == []
