"""Small decks that once went wrong: each comes to its end, or ends with a message where it asks for what cannot be."""

import re

import pytest

import kvr_run
from deck_schedule import Schedule
from limited_run import run_limited
from run_judge import BALANCE_LIMIT, CONSOLE_LIMIT, IMPLICIT_BALANCE_LIMIT, TARGET_LIMIT, measure, reached_end

FOLDER = kvr_run.PUBLIC_DECKS / "robust"
DECKS = sorted(path.stem for path in FOLDER.glob("*.DATA") if path.stem != "PERMVALUES")
REFUSED = [name for name in DECKS if name.startswith("ub_") or name.endswith("_no_pressure")]
ACCEPTED = [name for name in DECKS if name not in REFUSED]
INCLUDED = re.compile(r"^INCLUDE\s+'?([^'/\s]+)", flags=re.M)

pytestmark = pytest.mark.skipif(not FOLDER.exists(), reason="public decks not beside the checkout")


def run_deck(folder, name):
    """The deck in a folder of its own, with the files that it includes."""
    text = (FOLDER / f"{name}.DATA").read_text()
    (folder / "ECLIPSE.DATA").write_text(text)
    for file_name in INCLUDED.findall(text):
        (folder / file_name).write_bytes((FOLDER / file_name).read_bytes())
    return text, run_limited(kvr_run.PROGRAM, folder)


@pytest.mark.parametrize("name", ACCEPTED)
def test_the_deck_runs_to_its_end(tmp_path, name):
    text, ended = run_deck(tmp_path, name)
    schedule = Schedule(text)
    figures = measure(tmp_path, schedule)
    implicit = re.search(r"^FDMETHOD\s+FIM", text, flags=re.M) is not None
    print(f"{name}: {ended.cause() or 'ends'} {ended.complaint() if ended.status else ''} day {figures.last_time:g} of "
          f"{schedule.end():g}, {figures.steps} steps, balance {figures.balance:.2e}, target {figures.over_target:+.2e} "
          f"{figures.over_well}, console {ended.console_size}, {ended.cpu_seconds:.2f} s")
    assert ended.status == 0, ended.complaint()
    assert reached_end(figures, schedule)
    assert figures.finite
    assert figures.balance <= (IMPLICIT_BALANCE_LIMIT if implicit else BALANCE_LIMIT)
    assert figures.over_target <= TARGET_LIMIT
    assert ended.console_size < CONSOLE_LIMIT


@pytest.mark.parametrize("name", REFUSED)
def test_the_deck_ends_with_a_message(tmp_path, name):
    _, ended = run_deck(tmp_path, name)
    print(f"{name}: status {ended.status}, {ended.complaint()}")
    assert ended.status == 1  # a stop of its own, no signal
    assert "ERROR" in ended.complaint().upper()
    assert ended.console_size < CONSOLE_LIMIT
    assert ended.errors == ""
