"""Pages of the documentation that are made from the program stay what the program says."""

import fnmatch
import re
import subprocess

import kvr_run
import small_deck
from kvr_run import REPOSITORY, finished_normally, run


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
