"""The runs whose speed the page of performance gives, against independent converged curves."""

import sys

import pytest

import kvr_run
from public_floods import flood_as_published, needs_public_decks

sys.path.insert(0, str(kvr_run.REPOSITORY / "bench"))
import bench_runs  # noqa: E402

pytestmark = needs_public_decks


@pytest.mark.parametrize("name, water_cut, oil", [("FIVE1", 0.010, 0.7), ("QFS50", 0.004, 0.5), ("FIVE5", 0.010, 0.8)])
def test_steps_that_judge_themselves_keep_the_accuracy_of_the_flood(tmp_path, name, water_cut, oil):
    flood_as_published(tmp_path, name, bench_runs.section(name, "streamlines"))
    found = bench_runs.distances(kvr_run.PUBLIC_DECKS / "waterflood", name, tmp_path)
    print(name, found, f"balance {bench_runs.largest_balance_error(tmp_path):.1e} %")
    assert found["waterCut"] <= water_cut
    assert abs(found["oil"]) <= oil
    assert bench_runs.largest_balance_error(tmp_path) < 0.1


def test_pressure_of_live_oil_follows_the_reference(tmp_path):
    flood_as_published(tmp_path, "LIVEWAT", bench_runs.section("LIVEWAT", "streamlines"))
    found = bench_runs.distances(kvr_run.PUBLIC_DECKS / "waterflood", "LIVEWAT", tmp_path)
    print("LIVEWAT", found)
    assert found["pressureOff"] <= 0.5
    assert abs(found["oil"]) <= 0.3
