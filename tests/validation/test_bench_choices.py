"""The choices of lines whose speed the page of performance gives, against independent converged curves."""

import sys

import pytest

import kvr_run
from curves import relative_difference, water_cut_difference
from public_floods import REPORT_TIMES, flood, needs_public_decks, reference

sys.path.insert(0, str(kvr_run.REPOSITORY / "bench"))
from bench_cases import CHOICES  # noqa: E402

pytestmark = needs_public_decks


@pytest.mark.parametrize("name, curves, water_cut, oil, balance", [
    ("FIVE1", ("FIVE1_dt5", "FIVE1_fine"), 0.03, 0.035, 0.005),
    ("FIVE5", ("FIVE5_dt10",), 0.035, 0.04, 0.01)])
def test_the_fast_choice_of_lines_keeps_the_accuracy_of_the_flood(tmp_path, name, curves, water_cut, oil, balance):
    result = flood(tmp_path, name, **CHOICES[name])
    table = result.table()
    lost = result.table("KVR_Run_SweepVolume.out")["|MBEO|"][-1]
    print(f"{name}: balance error of oil {100 * lost:.2f} %, {result.cpu_seconds:.1f} s")
    for curve in map(reference, curves):
        mean, largest = water_cut_difference(table, curve, REPORT_TIMES)
        produced = relative_difference(table["FOPT"][-1], curve["FOPT"][-1])
        print(f"{name}: water cut mean {mean:.4f}, largest {largest:.4f}; cumulative oil {100 * produced:.2f} %")
        assert mean <= water_cut
        assert produced <= oil
    assert abs(lost) <= balance
