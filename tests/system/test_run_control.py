"""What a run says and does around the physics: input detection, steps, reports, end."""

import re

import numpy
import pytest

import kvr_run
import small_deck
from kvr_run import finished_normally, run


FIXED_STEPS = "STEPCTRL\nNo /\n"  # as the tables have them

def step_lines(console):
    return re.findall(r"^Step (\d+) Time (\S+) --> (\S+) Stop Time: (\S+)$", console, flags=re.M)


def test_steps_end_at_reports_and_never_exceed_the_longest_step(tmp_path):
    schedule = small_deck.SCHEDULE.replace("2*30", "10 20")
    section = kvr_run.options(lines=20, solver="DGESV", extra=FIXED_STEPS + "MAXDT\n7 /\n")
    result = finished_normally(run(tmp_path, small_deck.deck(schedule=schedule, options=section)))
    assert [float(line[2]) for line in step_lines(result.console)] == [7.0, 10.0, 17.0, 24.0, 30.0]
    reports = re.findall(r"^Report (\d+) Time (\S+) --> (\S+)$", result.console, flags=re.M)
    assert [(int(n), float(end)) for n, _, end in reports] == [(1, 10.0), (2, 30.0)]


def test_every_report_is_announced_although_step_lengths_do_not_add_up_exactly(tmp_path):
    schedule = small_deck.SCHEDULE.replace("2*30", "10*1.7")
    section = kvr_run.options(lines=5, solver="DGESV", extra="MAXDT\n0.1 /\n")
    result = finished_normally(run(tmp_path, small_deck.deck(schedule=schedule, options=section)))
    assert re.findall(r"^Report (\d+) ", result.console, flags=re.M) == [str(n) for n in range(1, 11)]


def test_the_banner_of_a_step_taken_anew_tells_where_it_ends(tmp_path):
    limits = "STEPCTRL\nYes 2e-3 0.5 1e-4 8e-3 3e-2 0.0005 1e-3 /\n"  # mobilities are held to 0.05 %
    section = kvr_run.options(lines=20, solver="DGESV", extra=limits)
    result = finished_normally(run(tmp_path, small_deck.deck(options=section)))
    put_back = int(re.search(r"^Steps put back and taken anew    : (\d+)$", result.console, flags=re.M)[1])
    assert put_back >= 2
    lines = step_lines(result.console)
    last = {int(number): (float(begin), float(end)) for number, begin, end, _ in lines}
    assert len(lines) == len(last) + put_back
    assert list(last) == list(range(1, len(last) + 1))
    ends = [end for _, end in last.values()]
    assert ends[:-1] == [begin for begin, _ in list(last.values())[1:]]
    assert ends == pytest.approx(result.table()["TIME"][1:], rel=1e-8)


def test_short_steps_that_the_schedule_asks_for_end_no_run(tmp_path):
    # Twelve of them, each below a millionth of the run.
    schedule = small_deck.SCHEDULE.replace("2*30", "12*0.00001 99.99988")
    result = finished_normally(run(tmp_path, small_deck.deck(schedule=schedule)))
    assert result.table()["TIME"][-1] == pytest.approx(100.0)


def test_steps_taken_fully_implicitly_leave_the_line_files_of_every_report(tmp_path):
    section = kvr_run.options(lines=40, solver="DGESV").replace("1 0 0 0 0 0 0 1 0 0", "1 0 0 1 0 0 0 1 1 1")
    result = finished_normally(run(tmp_path, small_deck.gas_deck(section)))
    steps = len({number for number, *_ in step_lines(result.console)})
    implicit = int(re.search(r"Steps taken fully implicitly +: (\d+)", result.console)[1])
    assert steps == implicit, "no step keeps its lines, so that all files show lines of its end"
    for day in (30, 60, 90, 120):
        assert (tmp_path / f"Streamline_Time_{day}.plt").exists()
    assert len(list(tmp_path.glob("ECLIPSE.SLN0*"))) == 4
    times = numpy.loadtxt(tmp_path / "KVR_Run_TauSUM.out")
    assert times.size == 25 and numpy.isfinite(times).all()
    allocation = numpy.loadtxt(tmp_path / "KVR_Run_RateAllocation.out")
    assert allocation[2] == pytest.approx(50.0 * 1.01, rel=0.02), "all that is injected flows to the producer"


def test_a_well_event_at_a_report_time_comes_behind_the_report(tmp_path):
    schedule = small_deck.SCHEDULE.replace("TSTEP\n2*30 /\n", "TSTEP\n30 /\nTSTEP\n30 /\n")
    result = finished_normally(run(tmp_path, small_deck.deck(schedule=schedule)))
    first_report = result.console.index("Report 1 ")
    event = result.console.index("UPDATE WELL SCHEDULE")
    assert first_report < event < result.console.index("Report 2 ")
    assert result.console.count("-         UPDATE WELL SCHEDULE         -") == 1


def test_an_empty_schedule_gives_the_initial_state_and_ends_normally(tmp_path):
    schedule = small_deck.SCHEDULE.replace("TSTEP\n2*30 /\n", "")
    result = finished_normally(run(tmp_path, small_deck.deck(schedule=schedule)))
    assert "WARNING :: Time-step was not given. Want Initial conditon?" in result.console


def test_the_calendar_runs_with_the_steps(tmp_path):
    schedule = small_deck.SCHEDULE.replace("2*30", "31 29 1")
    section = kvr_run.options(lines=20, solver="DGESV", extra=FIXED_STEPS)
    result = finished_normally(run(tmp_path, small_deck.deck(schedule=schedule, options=section)))
    dates = re.findall(r"Calender Time : year (\d+) Mon : (\d+) Day : (\d+)", result.log)
    assert [tuple(map(int, date)) for date in dates] == [(2000, 1, 1), (2000, 2, 1), (2000, 3, 1)]


def test_global_iterations_repeat_the_solve_but_not_the_banner_or_the_calendar(tmp_path):
    section = kvr_run.options(lines=20, solver="DGESV", extra=FIXED_STEPS).replace(
        "TUNEKVR\n", "TUNEKVR\nOPTIONKVR\n1 0 0 0 0 0 0 2 /\n")
    result = finished_normally(run(tmp_path, small_deck.deck(options=section)))
    assert len(step_lines(result.console)) == 2
    assert result.console.count("-- ERROR FOR GLOBAL ITERATION --") == 6
    dates = re.findall(r"Calender Time : year (\d+) Mon : (\d+) Day : (\d+)", result.log)
    assert [tuple(map(int, date)) for date in dates] == [(2000, 1, 1), (2000, 1, 31)]


def test_the_fully_implicit_method_takes_each_step_once_whatever_the_global_iterations(tmp_path):
    section = kvr_run.options(method="FIM", solver="DGESV")
    for name in ("once", "asked"):
        (tmp_path / name).mkdir()
    once = finished_normally(run(tmp_path / "once", small_deck.deck(options=section)))
    section = section.replace("TUNEKVR\n", "TUNEKVR\nOPTIONKVR\n1 0 0 0 0 0 0 2 /\n")
    asked = finished_normally(run(tmp_path / "asked", small_deck.deck(options=section)))
    assert asked.console.count("Solution by Fully Implicit Method !") == 2
    assert "ERROR FOR GLOBAL ITERATION" not in asked.console
    assert (asked.table()["FOPT"] == once.table()["FOPT"]).all()


def test_dense_solves_give_the_same_bits_for_any_number_of_threads(tmp_path, monkeypatch):
    # 800 unknowns: enough for the linear algebra library to share its work if it were let.
    text = small_deck.deck(options=kvr_run.options(method="FIM", solver="DGESV"))
    text = text.replace("5 5 1 /", "20 20 1 /").replace("25*", "400*")
    written = []
    for threads in ("1", "3"):
        monkeypatch.setenv("OMP_NUM_THREADS", threads)
        folder = tmp_path / threads
        folder.mkdir()
        result = finished_normally(run(folder, text))
        written.append([result.read(name) for name in ("KVR_Run_Recovery.out", "KVR_Run_Pressure.out")])
    assert written[0] == written[1]


def test_a_step_cut_in_a_repeated_pass_moves_time_and_date_by_what_was_covered(tmp_path):
    # With at most three pressure iterations the third pass of the second step is cut from 10 to 2 days.
    section = kvr_run.options(lines=20, solver="DGESV", extra=FIXED_STEPS + "MAPPING\nAVERAGE\n").replace(
        "TUNEKVR\n", "TUNEKVR\nOPTIONKVR\n1 0 0 0 0 0 0 2 /\n").replace("1e-4 30 30", "1e-4 4 30")
    schedule = small_deck.SCHEDULE.replace("2*30", "4*10")
    result = finished_normally(run(tmp_path, small_deck.deck(schedule=schedule, options=section)))
    passes = result.console.split("-- ERROR FOR GLOBAL ITERATION --")
    assert ["TIME STEP SIZE IS DECREASED" in part for part in passes[:7]] == [False] * 5 + [True, False]
    starts = [float(line[1]) for line in step_lines(result.console)]
    assert starts == [0.0, 10.0, 12.0, 20.0, 30.0]
    dates = re.findall(r"Calender Time : year (\d+) Mon : (\d+) Day : (\d+)", result.log)
    assert [int(day) for _, _, day in dates] == [1, 11, 13, 21, 31]
    table = result.table()
    assert list(table["TIME"]) == [0.0, 10.0, 12.0, 20.0, 30.0, 40.0]
    assert table["FWIT"][-1] == pytest.approx(40 * 50, rel=1e-6)


def test_steps_are_shortened_by_the_pressure_change_of_the_step_before(tmp_path):
    section = kvr_run.options(lines=20, solver="DGESV", extra=FIXED_STEPS + "OPTTSTEP\n100 /\n")
    result = finished_normally(run(tmp_path, small_deck.deck(options=section)))
    assert result.console.count("Optimal Pressure Control, Reduce Tstep:") >= 1
    times = result.table()["TIME"]
    assert times[1] == 30.0  # nothing is known of pressure changes before the first step
    assert times[2] - times[1] < 30.0
    assert times[-1] == 60.0


def test_a_frontsim_deck_is_found_when_there_is_no_other(tmp_path):
    result = finished_normally(run(tmp_path, small_deck.deck(), name="FRONTSIM.DATA"))
    assert "WARNING: KVR Input File not found" in result.console
    assert "Insted of that, we found FRONTSIM.DATA file ..." in result.console


def test_an_eclipse_deck_goes_before_a_frontsim_deck(tmp_path):
    result = finished_normally(run(tmp_path, small_deck.deck(), files={"FRONTSIM.DATA": "nothing"}))
    assert "Insted of that, we found ECLIPSE.DATA file ..." in result.console


def test_native_files_go_before_any_other_deck(tmp_path):
    files = {"Reservoir.DATA": "", "Well.DATA": "", "Simulation.DATA": ""}
    result = run(tmp_path, small_deck.deck(), files=files)
    assert "WARNING: KVR Files detected..." in result.console
    assert "ERROR :: DIMENS NOT SPECIFIED" in result.console
    assert "File Reservoir.DATA" in result.console
    assert result.status == 1


def test_the_prompt_writes_the_example_deck_and_ends_after_two_names_that_are_missing(tmp_path):
    result = run(tmp_path, standard_input="0\n0\nx.DATA\ny\n")
    assert result.status == 1
    assert result.console.count("Example KVR Deck Generated in Local Folder.") == 2
    assert result.console.count("(Type 0 to generate example Deck)") >= 3
    assert " End Program." in result.console
    assert (tmp_path / "ECLIPSE.DATA").exists()


def test_the_example_deck_runs_in_a_hundred_steps_behind_a_short_start_and_two_reports(tmp_path):
    run(tmp_path, standard_input="0\nnone\nnone\n")
    result = finished_normally(run(tmp_path))
    steps = step_lines(result.console)
    assert [float(end) for _, _, end, _ in steps[:3]] == [0.0001, 0.0004, 0.001]  # a tenth, then threefold
    assert len(steps) == 3 + 99
    assert all(float(end) - float(start) <= 0.001 + 1e-9 for _, start, end, _ in steps)
    reports = re.findall(r"^Report (\d+) Time (\S+) --> (\S+)$", result.console, flags=re.M)
    assert [(int(n), float(end)) for n, _, end in reports] == [(1, 0.001), (2, 0.1)]


def test_a_closed_console_at_the_prompt_ends_the_program(tmp_path):
    result = run(tmp_path, standard_input="", timeout=20)
    assert result.status == 1


def test_a_typed_name_is_read_with_its_folder_and_header(tmp_path):
    (tmp_path / "case").mkdir()
    (tmp_path / "case" / "FLOOD.DATA").write_text(small_deck.deck())
    result = run(tmp_path, standard_input="case/FLOOD\n")
    finished_normally(result)
    assert (tmp_path / "case" / "KVR_dbg.out").exists()


def test_a_feature_that_is_not_built_is_refused_in_one_line(tmp_path):
    section = kvr_run.options(method="IMPES", lines=20, extra="OPTIONKVR\n3* 1 /\n")
    result = run(tmp_path, small_deck.deck(options=section))
    assert result.status == 1
    assert "cannot do what the input asks for: sensitivity output (OPTIONKVR 4) without streamlines" in result.console
    assert "cannot do what the input asks for: sensitivity output (OPTIONKVR 4) without streamlines" in result.log


def test_the_same_run_twice_leaves_the_same_files(tmp_path):
    texts = []
    for _ in range(2):
        result = finished_normally(run(tmp_path, small_deck.deck(options=kvr_run.options(lines=20, plots=1))))
        texts.append({path.name: path.read_bytes() for path in sorted(tmp_path.glob("KVR_*"))
                      if path.name != "KVR_dbg.out"})
    assert texts[0] == texts[1]


def test_any_number_of_threads_gives_the_same_bits(tmp_path, monkeypatch):
    tables = []
    for threads in ("1", "2", "3", "8"):
        monkeypatch.setenv("OMP_NUM_THREADS", threads)
        folder = tmp_path / threads
        folder.mkdir()
        result = finished_normally(run(folder, small_deck.deck(options=kvr_run.options(lines=6, missed="Yes", plots=1))))
        tables.append((result.read("KVR_Run_Recovery.out"), result.read("KVR_TPlot_swat.plt")))
    assert all(table == tables[0] for table in tables)
