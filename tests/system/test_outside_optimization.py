"""Rates optimised over the runs of an independent simulator: each step a deck of its own with rewritten controls."""

import csv
import re

import pytest

import rate_pattern
from kvr_run import REPOSITORY, finished_normally, run
from named_run import run_named, summary_of
from peer_flow import flow_vectors, needs_flow, vectors
from rate_pattern import numbers

RUNNER = REPOSITORY / "tools" / "outside" / "flow_run"
pytestmark = needs_flow
OPTION = "EQARRIVE\n" + numbers()
STEPS = "10*80"


def parts(extra):
    """Schedule of the pattern and its deck with that option."""
    schedule = rate_pattern.definitions() + rate_pattern.controls() + f"TSTEP\n{STEPS} /\n"
    return rate_pattern.deck("RPTRST\nBASIC=2 /\n" + schedule, extra)


def flow_oil(folder, text):
    return flow_vectors(folder, text.split("\nTUNEKVR")[0], "FOPT", "FWIT")["FOPT"][-1]


@pytest.fixture(scope="module")
def outside(tmp_path_factory):
    folder = tmp_path_factory.mktemp("outside")
    (folder / "CASE.DATA").write_text(parts(f"{OPTION}ECLTRACE\nLINUXRUN\nECLCOMM\n{RUNNER}\n"))
    ended = run_named(folder / "CASE.DATA", "--allow-outside", timeout=300)
    assert ended.returncode == 0, ended.console[-3000:] + ended.errors
    return folder


def test_every_step_deck_has_the_rates_of_the_step_before(outside):
    with open(outside / "CASE_RateChanges.csv") as file:
        rows = list(csv.DictReader(file))
    times = sorted({float(row["TIME"]) for row in rows})
    assert times == [80.0 * n for n in range(1, 10)]
    for step in range(2, 11):
        text = (outside / f"SCHEDULE_STP{step:04d}.DATA").read_text()
        for row in rows:
            if float(row["TIME"]) != 80.0 * (step - 1):
                continue
            found = re.search(rf"^'{row['WELL']}' (?:WATER OPEN RATE|OPEN LRAT 1\* 1\* 1\*) (\S+)", text, re.M)
            assert float(found[1]) == pytest.approx(float(row["NEW"]), rel=1e-9), (step, row)


def test_totals_are_kept(outside):
    with open(outside / "CASE_RateChanges.csv") as file:
        rows = list(csv.DictReader(file))
    for time in {row["TIME"] for row in rows}:
        for kind in ("inj", "prd"):
            step = [row for row in rows if row["TIME"] == time and row["KIND"] == kind]
            assert sum(float(row["NEW"]) for row in step) == pytest.approx(sum(float(row["OLD"]) for row in step), rel=1e-10)


def test_the_gain_is_that_of_the_own_run(outside, tmp_path):
    base = flow_oil(tmp_path / "base", parts(""))
    # The runner's own steps on both sides; a restart goes on with the totals of the run before.
    first, last = vectors(outside, "FOPT", case="CASE"), vectors(outside, "FOPT", case="CASE_RST0010")
    own = finished_normally(run(tmp_path, parts(OPTION)))
    (tmp_path / "before").mkdir()
    before = finished_normally(run(tmp_path / "before", parts("")))
    own_oil = summary_of(own.folder / "KVR_Summary.csv")[0]["FOPT"][-1]
    own_base = summary_of(before.folder / "KVR_Summary.csv")[0]["FOPT"][-1]
    outside_gain, own_gain = last["FOPT"][-1] / first["FOPT"][-1] - 1.0, own_oil / own_base - 1.0
    print(f"gain driven by the peer {outside_gain:.4f}, own {own_gain:.4f}")
    assert own_gain > 0.01
    assert outside_gain == pytest.approx(own_gain, abs=0.01)
    schedule = (own.folder / "KVR_RateSchedule.DATA").read_text()
    fixed = flow_oil(tmp_path / "fixed", rate_pattern.deck(schedule)) / base - 1.0
    print(f"gain of the fixed schedule by the peer {fixed:.4f}")
    assert fixed > 2.0 / 3.0 * own_gain
