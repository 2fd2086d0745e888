"""CO2 storage: where the CO2 of a run is, step by step and in maps, and what becomes of it at rest."""

import numpy
import pytest

import kvr_run
import small_deck
from co2_deck import LAYERS, SCF_PER_SM3, balance_table, closed_column, finished, saturated, stores
from tecplot import read_zones

METHODS = ["STREAMLINE", "IMPES", "FIM"]
CONVERGED = "CONVERGE\n1e-7 1e-10 60 /\n"  # so far that sums can be told to 1e-10
BAR = 14.503774


def last_map(result, name):
    return numpy.array(read_zones(result.folder / name)[-1].values[0])


@pytest.fixture(scope="module", params=METHODS)
def column(request, tmp_path_factory):
    """CO2 in the lowest layers of a closed column of brine rises and dissolves."""
    deck = closed_column(options=f"FDMETHOD\n{request.param}\n{CONVERGED}")
    return finished(tmp_path_factory.mktemp(request.param), deck)


def test_the_stores_of_a_closed_box_keep_their_sum(column):
    table = stores(column)
    total = table["TOTAL"]
    assert numpy.abs(total / total[0] - 1.0).max() < 1e-10
    parts = sum(table[name] for name in ("MOBILE", "TRAPPED", "DISSOLVED", "SOLID"))
    assert numpy.abs(parts / total - 1.0).max() < 1e-11
    assert numpy.abs(table["BALANCE"]).max() < 1e-10


def test_brine_that_gas_has_passed_holds_what_the_table_says(column):
    """There is more CO2 than the brine takes: every cell ends at the limit of its pressure."""
    pressure = last_map(column, "KVR_TPlot_poil.plt") / BAR
    dissolved_ratio = last_map(column, "KVR_TPlot_Rs.plt") * 1000.0 / 5.614583  # Mscf/stb to sm3/sm3
    gas = last_map(column, "KVR_TPlot_sgas.plt")
    reached = gas > 1e-9
    assert reached.all(), gas
    assert numpy.abs(dissolved_ratio / saturated(pressure) - 1.0).max() < 2e-3  # columns hold reciprocals of Bo between rows
    table = stores(column)
    assert table["DISSOLVED"][-1] > 1.5 * table["DISSOLVED"][0]


def test_the_table_of_the_stores_has_their_sums_under_its_head(column):
    head, rows = balance_table(column)
    assert head == "Time : FreeGas : Dissolved : Solid : Total ="
    assert rows[0][0] == 0.0 and rows[-1][0] == pytest.approx(20 * 182.625)
    assert rows[:, 4] == pytest.approx(rows[:, 1:4].sum(axis=1), rel=1e-11)
    csv = stores(column)
    free = csv["MOBILE"] + csv["TRAPPED"]
    for number, values in ((1, free), (2, csv["DISSOLVED"]), (3, csv["SOLID"])):
        assert rows[:, number] == pytest.approx(values * SCF_PER_SM3 / 1000.0, rel=1e-6)


def test_maps_of_the_stores_sum_to_the_table(column):
    _, rows = balance_table(column)
    free, dissolved = last_map(column, "KVR_TPlot_CO2_Free.plt"), last_map(column, "KVR_TPlot_CO2_Dissolved.plt")
    trapped = last_map(column, "KVR_TPlot_CO2_Trapped.plt")
    assert len(free) == LAYERS
    assert free.sum() == pytest.approx(rows[-1][1], rel=1e-6)
    assert dissolved.sum() == pytest.approx(rows[-1][2], rel=1e-6)
    assert (trapped <= free * (1 + 1e-6)).all() and trapped.sum() > 0.0
    assert numpy.abs(last_map(column, "KVR_TPlot_CO2_Solid.plt")).max() == 0.0
    assert last_map(column, "KVR_TPlot_CO2_Kx.plt") == pytest.approx(numpy.full(LAYERS, 100.0))
    assert last_map(column, "KVR_TPlot_CO2_Porosity.plt") == pytest.approx(numpy.full(LAYERS, 0.2), rel=0.01)


def test_the_closing_summary_says_where_the_co2_is(column):
    line = next(line for line in column.log.splitlines() if line.startswith("CO2 stores"))
    assert "mobile" in line and "trapped" in line and "dissolved" in line and "solid 0.00 %" in line


def test_a_tracer_goes_along(column):
    zones = read_zones(column.folder / "KVR_Tplot_Tracer.plt")
    assert len(zones) >= 2 and "Value0001" in (column.folder / "KVR_Tplot_Tracer.plt").read_text()


@pytest.mark.parametrize("method", METHODS)
def test_dissolved_co2_turns_solid_at_its_rate_and_nothing_is_lost(tmp_path, method):
    """As long as gas stands in all cells their brine is saturated, and as much turns solid a day."""
    rate = 1e-5
    deck = closed_column(gas=(0.6,) * LAYERS, steps="10*36.525", options=f"FDMETHOD\n{method}\n{CONVERGED}CO2SOLID\n{rate} /\n")
    result = finished(tmp_path, deck)
    table = stores(result)
    assert numpy.abs(table["TOTAL"] / table["TOTAL"][0] - 1.0).max() < 1e-10
    mean = 0.5 * (table["DISSOLVED"][0] + table["DISSOLVED"][-1])
    assert table["SOLID"][-1] == pytest.approx(rate * mean * table["TIME"][-1], rel=5e-3)
    assert (numpy.diff(table["SOLID"]) > 0.0).all()
    assert last_map(result, "KVR_TPlot_CO2_Solid.plt").sum() == pytest.approx(balance_table(result)[1][-1][3], rel=1e-6)
    errors = result.table("KVR_Run_SweepVolume.out")
    assert numpy.abs(errors["|MBEG|"]).max() < 1e-9


@pytest.mark.parametrize("deck, told", [
    (small_deck.deck(options=kvr_run.options(lines=20, extra="CO2MBM\n")), "CO2MBM IN A RUN WITHOUT GAS"),
    (small_deck.deck(options=kvr_run.options(lines=20, extra="CO2SOLID\n1e-5 /\n")), "CO2SOLID WITHOUT CO2MBM"),
    (closed_column(steps="10", options="CO2SOLID\n-1 /\n"), "CO2SOLID -1 IS NO RATE"),
], ids=["no gas", "rate alone", "negative rate"])
def test_what_keeps_the_stores_from_working_is_told(tmp_path, deck, told):
    assert f"WARNING :: {told}" in finished(tmp_path, deck).log


def test_stores_of_an_earlier_run_do_not_stay_behind_one_without(tmp_path):
    finished(tmp_path, closed_column(steps="10"))
    assert (tmp_path / "Mass_Balance_CO2.out").exists()
    finished(tmp_path, closed_column(steps="10").replace("CO2MBM\n", ""))
    for name in ("Mass_Balance_CO2.out", "KVR_CO2_Stores.csv", "KVR_TPlot_CO2_Free.plt"):
        assert not (tmp_path / name).exists()
