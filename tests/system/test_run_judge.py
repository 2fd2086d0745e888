"""The judge of runs on tables made by hand: each fault is seen, and nothing else is."""

import math

import pytest

import run_judge
from deck_schedule import Schedule

DECK = """RUNSPEC
METRIC
SCHEDULE
WELSPECS
'P1' 'G' 1 1 10 'OIL' /
'P2' 'G' 2 1 10 'OIL' /
'I' 'G' 3 1 10 'GAS' /
/
WCONPROD
'P*' 'OPEN' 'ORAT' 15.8987295 4* 50 / -- a hundred barrels
/
WCONINJE
'I' 'GAS' 'OPEN' 'RATE' 283.168466 1* 300 /
/
TSTEP
2*10 5 /
WCONPROD
'P2' 'SHUT' 'ORAT' 15.8987295 4* 50 /
'P1' 'OPEN' 'LRAT' 3* 31.797459 1* 50 /
/
TSTEP
25 /
END
TSTEP
1000 /
"""
NAMES = ("TIME FPR WBHP:P1 WOPR:P1 WWPR:P1 WGPR:P1 WWIR:P1 WGIR:P1 WBHP:P2 WOPR:P2 WWPR:P2 WGPR:P2 WWIR:P2 WGIR:P2 "
         "WBHP:I WOPR:I WWPR:I WGPR:I WWIR:I WGIR:I").split()
STEPS = (5.0, 10.0, 20.0, 25.0, 50.0)


def recovery(changes=None):
    """The table of wells: targets met all along, but for `changes` by (time, column)."""
    rows = {}
    for time in (0.0,) + STEPS:
        row = dict.fromkeys(NAMES, 0.0)
        row.update(TIME=time, FPR=2000.0)
        if time > 0.0:
            row.update({"WOPR:P1": 100.0, "WGIR:I": 10.0, "WOPR:P2": 100.0 if time <= 25.0 else 0.0})
            row["WWPR:P1"] = 100.0 if time > 25.0 else 0.0
        rows[time] = row
    for (time, column), value in (changes or {}).items():
        rows[time][column] = value
    return " ".join(NAMES) + "\n" + "\n".join(" ".join(str(value) for value in row.values()) for row in rows.values()) + "\n"


def sweep(water_error=0.0, last=50.0, water=97500.0, first_gas=0.0, gas_error=0.0):
    """The balance table of 100,000 stb of oil and of water, less what the wells have produced, the error in the last row."""
    names = "TIME PVT FPR MBEO MBEW MBEG FOIP_ORG FOIP_NOW FWIP_ORG FWIP_NOW FGIP_ORG FGIP_NOW FPR".split()
    rows = [[0.0, 2.5e5, 2000.0, 0, 0, 0, 1e5, 1e5, 1e5, 1e5, first_gas, first_gas, 1.0],
            [last, 2.5e5, 2100.0, 0, water_error, gas_error, 1e5, 92500.0, 1e5, water, first_gas, first_gas + 500, 1.0]]
    return "".join(f" |{name}|" for name in names) + "\n" + "\n".join(" ".join(map(str, row)) for row in rows) + "\n"


def measured(folder, wells=None, balance=None):
    (folder / "KVR_Run_Recovery.out").write_text(recovery(wells))
    (folder / "KVR_Run_SweepVolume.out").write_text(balance or sweep())
    return run_judge.measure(folder, Schedule(DECK))


def test_a_schedule_is_read_in_field_units_with_its_reports_and_the_controls_between_them():
    schedule = Schedule(DECK)
    assert [(interval.begin, interval.end) for interval in schedule.intervals] == [(0, 10), (10, 20), (20, 25), (25, 50)]
    first, last = schedule.intervals[0].controls, schedule.intervals[-1].controls
    assert first["P1"].target == pytest.approx(100.0) and first["P1"].mode == "OR" and first["P2"].open
    assert first["I"].target == pytest.approx(10.0) and first["I"].injects == "G"
    assert first["I"].bhp == pytest.approx(300 / 0.0689475729)
    assert last["P1"].mode == "LR" and last["P1"].target == pytest.approx(200.0) and not last["P2"].open


def test_a_run_on_its_targets_is_within_all_limits(tmp_path):
    figures = measured(tmp_path)
    assert abs(figures.over_target) < 1e-9
    assert figures.balance == 0.0 and figures.balance_moved == 0.0 and figures.finite
    assert run_judge.reached_end(figures, Schedule(DECK))
    assert figures.totals == {"FOPT": 100.0 * 75, "FWPT": 100.0 * 25, "FGPT": 0.0, "FWIT": 0.0, "FGIT": 10.0 * 50}


def test_a_rate_counts_by_its_mean_between_reports(tmp_path):
    # Six per cent too much in one of two equal steps is three in the mean.
    figures = measured(tmp_path, {(5.0, "WOPR:P1"): 106.0})
    assert figures.over_target == pytest.approx(0.03) and figures.over_well == "P1"
    figures = measured(tmp_path, {(50.0, "WWPR:P1"): 104.0})
    assert figures.over_target == pytest.approx(0.02)
    figures = measured(tmp_path, {(25.0, "WGIR:I"): 11.0})
    assert figures.over_target == pytest.approx(0.1) and figures.over_well == "I"


def test_a_shut_well_that_flows_is_beyond_any_target(tmp_path):
    assert measured(tmp_path, {(50.0, "WGPR:P2"): 0.5}).over_target == math.inf


def test_an_error_is_held_against_what_is_in_place_and_against_what_has_moved(tmp_path):
    figures = measured(tmp_path, balance=sweep(water_error=-0.004))
    assert figures.balance == pytest.approx(0.004)
    assert figures.balance_moved == pytest.approx(0.004 * 1e5 / 2500.0)


def test_an_error_of_a_phase_that_holds_next_to_nothing_is_held_against_what_moved_or_a_share_of_the_pores(tmp_path):
    # A thousandth of an Mscf was there at first, five hundred have been injected: ten thousand times the first is one in fifty.
    figures = measured(tmp_path, balance=sweep(first_gas=0.001, gas_error=1e4))
    assert figures.balance == pytest.approx(10.0 / 500.001)
    # Without wells the thousandth part of the pore volume is 250.
    still = {(time, "WGIR:I"): 0.0 for time in STEPS}
    text = sweep(first_gas=0.001, gas_error=1.0).replace("500.001", "0.0")
    assert measured(tmp_path, wells=still, balance=text).balance == pytest.approx(0.001 / 250.0)


def test_a_true_error_of_a_phase_that_was_there_is_not_made_small_by_what_has_moved(tmp_path):
    # 250 of 300 Mscf that were there: above a thousandth of the pores, so that what was there counts.
    figures = measured(tmp_path, balance=sweep(first_gas=300.0, gas_error=0.25))
    assert figures.balance == pytest.approx(0.25)


def test_amounts_at_the_end_are_held_against_the_rates_of_the_wells_whatever_the_report_says(tmp_path):
    # Water has lost 10,000, of which 2,500 were produced.
    figures = measured(tmp_path, balance=sweep(water=90000.0))
    assert figures.balance == pytest.approx(0.075)
    assert figures.balance_moved == pytest.approx(3.0)


def test_a_value_that_is_no_number_is_seen_wherever_it_stands(tmp_path):
    assert not measured(tmp_path, {(10.0, "WBHP:I"): math.nan}).finite
    assert not measured(tmp_path, balance=sweep(water_error=math.inf)).finite


def test_a_run_that_stops_early_has_not_reached_its_end(tmp_path):
    assert not run_judge.reached_end(measured(tmp_path, balance=sweep(last=49.0)), Schedule(DECK))


def test_a_run_without_tables_has_no_figure_that_holds(tmp_path):
    figures = run_judge.measure(tmp_path, Schedule(DECK), active=[1])
    assert not figures.finite and math.isnan(figures.balance) and math.isnan(figures.over_target)


SHEET = """TIME ::\t{time}
Grid\t{name}
 - - - - - - - - - - - - -
Y/ X =\t50\t150\t250
10\t{values}
Z/ X =\t50\t150\t250
1\t{values}
"""


def sheets(folder, oil, water):
    text = "".join(SHEET.format(time=time, name=name, values="\t".join(map(str, values)))
                   for time, maps in ((0, ([9, 9, 9], [9, 9, 9])), (50, (oil, water)))
                   for name, values in zip(("SOIL_Frac", "SWAT_Frac"), maps))
    (folder / "KVR_Excl_Grid_Sat.xls").write_text(text)
    return run_judge.saturation_fault(folder / "KVR_Excl_Grid_Sat.xls", [1, 0, 1])


def test_saturations_of_two_continua_are_judged_apart(tmp_path):
    def fault(matrix_water):
        maps = {"SOIL_Frac": [0.75, 0, 1.0], "SWAT_Frac": [0.25, 0, 0.0], "SOIL_Mtrx": [0.5, 0, 0.5], "SWAT_Mtrx": matrix_water}
        path = tmp_path / "KVR_Excl_Grid_Sat.xls"
        path.write_text("".join(SHEET.format(time=50, name=name, values="\t".join(map(str, values))) for name, values in maps.items()))
        return run_judge.saturation_fault(path, [1, 0, 1])

    assert fault([0.5, 0, 0.5]) == 0.0
    assert fault([0.5, 0, 0.25]) == pytest.approx(0.25)


def test_saturations_of_the_last_report_are_judged_in_active_cells_alone(tmp_path):
    assert sheets(tmp_path, [0.75, 0, 1.0], [0.25, 0, 0.0]) == 0.0
    assert sheets(tmp_path, [0.75, 0, 0.5], [0.25, 0, 0.25]) == pytest.approx(0.25)
    assert sheets(tmp_path, [1.25, 0, 0.5], [-0.25, 0, 0.5]) == pytest.approx(0.25)
    assert not sheets(tmp_path, [math.nan, 0, 0.5], [0.25, 0, 0.5]) <= 1e-3
