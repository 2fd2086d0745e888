"""Runs of an independent simulator driven from a deck: its restarts traced, its rates as a history, its run in step decks."""

import re
import shutil
import subprocess

import numpy
import pytest

import kvr_run
import small_deck
from kvr_run import REPOSITORY
from named_run import run_named, summary_of
from peer_flow import needs_flow, vectors
from public_floods import needs_public_decks

RUNNER = REPOSITORY / "tools" / "outside" / "flow_run"
pytestmark = [needs_flow, needs_public_decks]


def options(mode, lines=100):
    return f"\nEND\nTUNEKVR\nNUMLINE\n{lines} INJ No /\n{mode}\nLINUXRUN\nECLCOMM\n{RUNNER}\n"


def parts(text):
    """A deck in front of its controls, and in front of its times."""
    schedule = text.index("SCHEDULE\n")
    controls = min(match.start() for match in re.finditer(r"^WCON(PROD|INJE)", text[schedule:], re.M))
    times = re.search(r"^TSTEP", text[schedule:], re.M).start()
    return text[:schedule + controls], text[:schedule + times]


def trace(folder, text, steps, mode="ECLTRACE", name="CASE", lines=100):
    _, controlled = parts(text)
    (folder / f"{name}.DATA").write_text(controlled + f"TSTEP\n{steps} /" + options(mode, lines))
    ended = run_named(folder / f"{name}.DATA", "--allow-outside", timeout=120)
    assert ended.returncode == 0, ended.console[-2000:] + ended.errors
    return ended


def flow(folder, name, text):
    """A run of the same runner by itself; nothing in its table of messages may be an error."""
    (folder / f"{name}.DATA").write_text(text)
    ended = subprocess.run([RUNNER, name], cwd=folder, capture_output=True, text=True, timeout=120)
    assert ended.returncode == 0, ended.stdout[-3000:]
    assert re.search(r"Errors\s+0$", (folder / f"{name}.ECLEND").read_text(), re.M)


def at_reports(folder, name, times, *wanted):
    """Vectors of a run at its reports."""
    found = vectors(folder, *wanted, case=name)
    rows = [int(numpy.argmin(abs(found["TIME"] - time))) for time in times]
    assert found["TIME"][rows] == pytest.approx(times, abs=1e-3)
    return {vector: found[vector][rows] for vector in wanted}


def spe1():
    return kvr_run.public_deck("spe1/SPE1CASE2.DATA")


def five_spot(folder):
    shutil.copy(kvr_run.PUBLIC_DECKS / "waterflood" / "FIVE1.INC", folder)
    return kvr_run.public_deck("waterflood/FIVE1.DATA")


MONTHS, MONTH_ENDS = "31 28 31 30 31 30", [31, 59, 90, 120, 151, 181]


def history_deck(folder, text, name="HISTORY", source="CASE"):
    defined, _ = parts(text)
    return defined + f"INCLUDE\n'{source}_SCHEDULE_TEMPORARY_FOR_HM.DATA' /\nEND\n"


def test_every_restart_is_traced_and_its_rates_are_reported(tmp_path):
    trace(tmp_path, spe1(), MONTHS)
    log = (tmp_path / "CASE_dbg.out").read_text()
    for step in range(1, 7):
        assert re.search(rf"EXTRACT RESTART -> .*CASE\.X{step:04d}", log)
    assert "Construct Velocity Field from Pressure" in log
    table, _ = summary_of(tmp_path / "CASE_Summary.csv")
    assert table["TIME"][-6:] == pytest.approx(MONTH_ENDS)
    told = at_reports(tmp_path, "CASE", MONTH_ENDS, "WOPR:PROD", "WGPR:PROD", "WGIR:INJ", "WBHP:PROD", "WBHP:INJ")
    for vector, values in told.items():
        assert table[vector][-6:] == pytest.approx(values, rel=1e-4), vector


def test_lines_of_a_flood_join_its_wells(tmp_path):
    trace(tmp_path, five_spot(tmp_path), "4*50", lines=200)
    rows = [line.split() for line in (tmp_path / "CASE_Run_RateAllocation.out").read_text().splitlines()]
    last = rows[-4:]
    assert [row[:2] for row in last] == [[str(n), str(n)] for n in range(1, 5)]
    injected = 30 * 1.01 / (1 + 3e-6 * 6000)  # rb/day at the pressure of the injector's cell, 12000 psia
    assert sum(float(row[2]) for row in last) == pytest.approx(injected, rel=0.02), "all that is injected arrives"


def test_the_history_of_a_water_flood_gives_its_rates_again(tmp_path):
    text, times = five_spot(tmp_path), [50, 100, 150, 200, 250]
    trace(tmp_path, text, "5*50")
    flow(tmp_path, "HISTORY", history_deck(tmp_path, text))
    names = [f"{kind}:P{well}" for kind in ("WOPR", "WWPR") for well in range(1, 5)] + ["WWIR:INJ"]
    before, again = (at_reports(tmp_path, name, times, *names) for name in ("CASE", "HISTORY"))
    for name in names:
        assert again[name] == pytest.approx(before[name], rel=1e-3, abs=1e-6), name


def test_the_history_of_a_gas_flood_gives_its_rates_again(tmp_path):
    """Gas goes in at the pressure of the end of a step, so that its rate is right only where the same steps are taken again: the
    history has those between the reports too."""
    trace(tmp_path, spe1(), MONTHS)
    flow(tmp_path, "HISTORY", history_deck(tmp_path, spe1()))
    history = (tmp_path / "CASE_SCHEDULE_TEMPORARY_FOR_HM.DATA").read_text()
    assert history.count("TSTEP") > len(MONTH_ENDS) and " BHP /" in history
    names = ("WOPR:PROD", "WGPR:PROD", "WGIR:INJ", "WBHP:INJ")
    before, again = (at_reports(tmp_path, name, MONTH_ENDS, *names) for name in ("CASE", "HISTORY"))
    for name in names:
        assert again[name] == pytest.approx(before[name], rel=1e-3), name


def test_the_history_of_a_metric_deck_is_in_its_units(tmp_path):
    runspec = small_deck.RUNSPEC.replace("FIELD", "METRIC").replace("2 1 /", "2 1 1 2 /") + "TABDIMS\n/\n"
    text = small_deck.deck(runspec=runspec, options="").replace("END\n", "")
    trace(tmp_path, text, "5 5")
    flow(tmp_path, "HISTORY", history_deck(tmp_path, text))
    names = ("WOPR:PROD", "WWPR:PROD", "WWIR:INJ", "WBHP:PROD")
    before, again = (at_reports(tmp_path, name, [5, 10], *names) for name in ("CASE", "HISTORY"))
    for name in names:
        assert again[name] == pytest.approx(before[name], rel=1e-3, abs=1e-4), name


def test_a_step_deck_goes_on_from_the_state_of_a_whole_run(tmp_path):
    _, controlled = parts(spe1())
    flow(tmp_path, "WHOLE", controlled + f"TSTEP\n{MONTHS} /\nEND\n")
    # The state of the third month is that from which the run of one month starts.
    for extension in ("EGRID", "INIT"):
        shutil.copy(tmp_path / f"WHOLE.{extension}", tmp_path / f"CASE.{extension}")
    shutil.copy(tmp_path / "WHOLE.X0003", tmp_path / "CASE.X0000")
    trace(tmp_path, spe1(), "30", mode="USEECLP\nUSEECLTR")
    names = ("FPR", "WOPR:PROD", "WGPR:PROD", "WBHP:PROD", "WBHP:INJ", "WGIR:INJ")
    whole = at_reports(tmp_path, "WHOLE", [120], *names)
    step = at_reports(tmp_path, "CASE_RST0001", [30], *names)
    for name in names:
        assert step[name] == pytest.approx(whole[name], rel=0.01), name
    lines = (tmp_path / "CASE_RST0001.DATA").read_text().splitlines()
    assert sum("SOLUTION_STP0001.DATA" in line for line in lines) == 1
    assert sum("SCHEDULE_STP0001.DATA" in line for line in lines) == 1


def test_pressures_of_the_outside_run_carry_the_runs_own_transport(tmp_path):
    ended = trace(tmp_path, spe1(), MONTHS, mode="USEECLP", lines=200)
    assert ended.console.count("turn :: 1") == 6
    table, _ = summary_of(tmp_path / "CASE_Summary.csv")
    _, controlled = parts(spe1())
    flow(tmp_path, "WHOLE", controlled + f"TSTEP\n{MONTHS} /\nEND\n")
    whole = at_reports(tmp_path, "WHOLE", MONTH_ENDS, "FPR", "WOPR:PROD")
    assert table["FPR"][-6:] == pytest.approx(whole["FPR"], rel=0.01)
    assert table["WOPR:PROD"][-6:] == pytest.approx(whole["WOPR:PROD"], rel=0.01)
