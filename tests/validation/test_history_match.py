"""The shipped history match: what it leaves of the misfits of another simulator's histories. Figures in docs/history-matching.md."""

import os
import shutil

import numpy
import pytest

from kvr_run import REPOSITORY
from named_run import run_named

SANITIZED = os.environ.get("KVR_SANITIZED") == "1"
EXAMPLE = REPOSITORY / "examples" / "history_match"


def last_column(path, head):
    return numpy.array([float(line.split()[-1]) for line in path.read_text().splitlines()[head:]])


def sum_of_sizes(path):
    return sum(abs(float(line.split()[1])) for line in path.read_text().splitlines())


@pytest.mark.skipif(SANITIZED, reason="whole runs are held in the release build")
def test_ten_iterations_take_misfits_down_and_none_is_worse_than_the_one_before(tmp_path):
    folder = tmp_path / "match"
    shutil.copytree(EXAMPLE, folder)
    deck = folder / "HISTORY_MATCH.DATA"
    deck.write_text(deck.read_text() + "HMSAFE\n4 Yes /\n")
    ended = run_named(deck.name, "--threads", 1, folder=folder)
    assert ended.returncode == 0, ended.console[-2000:]
    judged = last_column(folder / "HISTORY_MATCH_HM_ObjFnc.out", 2)
    cut = last_column(folder / "HISTORY_MATCH_HM_ObjFnc_WCT_Abs.out", 1)
    assert (numpy.diff(judged) <= 0.0).all()
    assert cut[-1] < 0.15 * cut[0]
    for name, share in (("TTime", 0.10), ("BHP", 0.20)):
        first, last = (sum_of_sizes(folder / f"HISTORY_MATCH_Inv_{run}{name}.out") for run in ("Init", "Final"))
        assert last < share * first, name
