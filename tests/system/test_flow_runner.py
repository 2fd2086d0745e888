"""The runner of the simulator flow, with a program of that name that only tells what it was given."""

import os
import subprocess

import pytest

from kvr_run import REPOSITORY

RUNNER = REPOSITORY / "tools" / "outside" / "flow_run"
FAKE = """#!/bin/sh
cp "$1" seen.DATA
out=$(echo "$2" | cut -d= -f2)
name=$(basename "$1" .DATA)
for extension in X0001 S0001 SMSPEC EGRID; do echo new > $out/$name.$extension; done
printf 'Error summary:\\nWarnings          3\\nInfo              5\\nErrors            %s\\nBugs 0\\n' "$ERRORS"
exit $STATUS
"""
DECK = """RUNSPEC
TITLE
SCHEDULE of work
UNIFOUT
OIL
SKIP
END
ENDSKIP
SUMMARY
FOPR
SCHEDULE
TSTEP
5 /
END
TUNEKVR
ECLTRACE
"""


def start(folder, deck=DECK, status=0, errors=0, with_flow=True):
    (folder / "CASE.DATA").write_bytes(deck.encode("latin-1"))
    path = os.environ["PATH"]
    if with_flow:
        (folder / "flow").write_text(FAKE)
        (folder / "flow").chmod(0o755)
        path = f"{folder}:{path}"
    else:
        path = "/nowhere"
    return subprocess.run(["/usr/bin/python3", RUNNER, "CASE"], cwd=folder, capture_output=True, text=True,
                          env=dict(os.environ, PATH=path, STATUS=str(status), ERRORS=str(errors)))


def counts(folder):
    rows = [line.split() for line in (folder / "CASE.ECLEND").read_text().splitlines()]
    assert rows[0] == ["Error", "summary"]
    return {kind: int(count) for kind, count in rows[1:]}


def test_results_stand_under_the_name_of_the_case_and_nothing_else_is_left(tmp_path):
    (tmp_path / "CASE.X0007").write_text("old")
    assert start(tmp_path).returncode == 0
    left = sorted(path.name for path in tmp_path.iterdir())
    assert left == ["CASE.DATA", "CASE.ECLEND", "CASE.EGRID", "CASE.S0001", "CASE.SMSPEC", "CASE.X0001", "flow", "seen.DATA"]
    assert counts(tmp_path) == {"Comments": 5, "Warnings": 3, "Problems": 0, "Errors": 0, "Bugs": 0}


def test_a_failure_is_passed_on_and_counts_as_an_error(tmp_path):
    assert start(tmp_path, status=4).returncode == 4
    assert counts(tmp_path)["Errors"] == 1
    assert start(tmp_path, status=4, errors=7).returncode == 4
    assert counts(tmp_path)["Errors"] == 7


def test_a_machine_without_the_simulator_leaves_results_alone_and_an_error(tmp_path):
    (tmp_path / "CASE.X0001").write_text("old")
    ended = start(tmp_path, with_flow=False)
    assert ended.returncode == 127
    assert "flow is not installed" in ended.stderr
    assert (tmp_path / "CASE.X0001").read_text() == "old"
    assert counts(tmp_path)["Errors"] == 1


@pytest.mark.parametrize("comment", ["", "-- Größe\n"], ids=["plain", "other bytes"])
def test_the_deck_asks_for_a_restart_and_a_summary_per_report(tmp_path, comment):
    assert start(tmp_path, comment + DECK).returncode == 0
    lines = (tmp_path / "seen.DATA").read_bytes().decode("latin-1").splitlines()
    assert "UNIFOUT" not in lines
    assert lines[lines.index("TITLE") + 1] == "SCHEDULE of work"
    assert lines[lines.index("SKIP"):lines.index("ENDSKIP") + 1] == ["SKIP", "END", "ENDSKIP"]
    assert lines[lines.index("SCHEDULE") + 1:] == ["RPTRST", "BASIC=2 DEN VISC KRO /", "TSTEP", "5 /", "END"]
    assert lines.count("SUMMARY") == 1 and "WBHP" in lines and "FOPR" in lines


def test_a_deck_without_a_summary_section_gets_one(tmp_path):
    assert start(tmp_path, DECK.replace("SUMMARY\nFOPR\n", "")).returncode == 0
    lines = (tmp_path / "seen.DATA").read_text().splitlines()
    assert lines.index("SUMMARY") < lines.index("WOPR") < lines.index("SCHEDULE")


def test_a_restart_that_the_deck_starts_from_is_kept(tmp_path):
    (tmp_path / "CASE.X0002").write_text("start")
    assert start(tmp_path, DECK.replace("SUMMARY", "SOLUTION\nRESTART\n'CASE' 2 /\nSUMMARY")).returncode == 0
    assert (tmp_path / "CASE.X0002").read_text() == "start"
