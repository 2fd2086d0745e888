"""Runs that start an outside simulator: what they ask before, how often they try, and how they end."""

import fcntl
import os
import pty
import re
import shutil
import signal
import subprocess
import termios
import threading
import time

import numpy
import pytest

import kvr_run
import small_deck
from kvr_run import run
from named_run import run_named
from public_floods import needs_public_decks

HOMO = kvr_run.PUBLIC_DECKS / "restart" / "2D_HOMO"
TURN = "Run of the outside simulator, turn :: "
INTERRUPTED = 128 + signal.SIGINT


def traced(command, extra="ECLTRACE", linux=True):
    """A small deck whose run is that of `command`."""
    lines = ["", "TUNEKVR", "FDMETHOD", "STREAMLINE", "NUMLINE", "20 INJ No /", extra, "ECLCOMM", command]
    return small_deck.deck(options="\n".join(lines + (["LINUXRUN"] if linux else []) + [""]))


def script(folder, name, text):
    path = folder / name
    path.write_text("#!/bin/sh\n" + text)
    path.chmod(0o755)
    return path


def environment(folder, **more):
    return dict(os.environ, PATH=f"{folder}:{os.environ['PATH']}", TERM="dumb", **more)


class Going:
    """A run that does not end by itself; its console goes to a file."""

    def __init__(self, folder, deck, words=(), **more):
        (folder / "ECLIPSE.DATA").write_text(deck)
        self.console_file = folder / "console.txt"
        with open(self.console_file, "wb") as console:
            self.process = subprocess.Popen([kvr_run.PROGRAM, *words], cwd=folder, stdin=subprocess.DEVNULL,
                                            stdout=console, stderr=subprocess.STDOUT, env=environment(folder, **more))

    @property
    def console(self):
        return self.console_file.read_text(errors="replace")

    def wait_for(self, text, seconds=30):
        end = time.monotonic() + seconds
        while text not in self.console:
            assert self.process.poll() is None, self.console[-2000:]
            assert time.monotonic() < end, self.console[-2000:]
            time.sleep(0.02)

    def interrupt(self, seconds=20):
        self.process.send_signal(signal.SIGINT)
        try:
            return self.process.wait(seconds)
        finally:
            self.process.kill()


def process_state(pid):
    try:
        with open(f"/proc/{pid}/stat") as status:
            return status.read().rsplit(")", 1)[1].split()[0]
    except OSError:
        return ""


def test_on_the_command_line_a_command_waits_for_permission_and_is_shown(tmp_path):
    script(tmp_path, "simulator", "touch has_run\n")
    (tmp_path / "CASE.DATA").write_text(traced("./simulator --fast"))
    ended = run_named(tmp_path / "CASE.DATA")
    assert ended.returncode == 1
    assert "--allow-outside" in ended.console
    assert "Command :: ./simulator --fast CASE" in ended.console
    assert not (tmp_path / "has_run").exists()


def test_a_conversion_waits_for_permission_too(tmp_path):
    script(tmp_path, "ecl2ix", "touch has_run\n")
    (tmp_path / "CASE.DATA").write_text(traced("./ecl2ix", extra=""))
    assert run_named(tmp_path / "CASE.DATA").returncode == 1
    assert not (tmp_path / "has_run").exists()
    assert run_named(tmp_path / "CASE.DATA", "--allow-outside").returncode == 0
    assert (tmp_path / "has_run").exists()


def test_a_check_runs_no_command(tmp_path):
    script(tmp_path, "simulator", "touch has_run\n")
    (tmp_path / "CASE.DATA").write_text(traced("./simulator"))
    ended = run_named(tmp_path / "CASE.DATA", "--check", "--allow-outside")
    assert ended.returncode == 0
    assert not (tmp_path / "has_run").exists()


def test_the_command_is_printed_before_it_runs(tmp_path):
    script(tmp_path, "ecl2ix", 'echo "THE COMMAND RAN $*"\n')
    result = run(tmp_path, traced("./ecl2ix -x", extra=""))
    assert result.status == 0
    assert "Command :: ./ecl2ix -x ECLIPSE\nTHE COMMAND RAN -x ECLIPSE\n" in result.console
    assert (tmp_path / "_COORD_BYKVR.tmp").stat().st_size > 0


def test_without_a_shell_of_its_kind_the_change_of_folder_fails_and_the_command_runs(tmp_path):
    script(tmp_path, "ecl2ix", "touch has_run\n")
    (tmp_path / "ECLIPSE.DATA").write_text(traced("./ecl2ix", extra="", linux=False))
    process = subprocess.run([kvr_run.PROGRAM], cwd=tmp_path, stdin=subprocess.DEVNULL, capture_output=True, text=True)
    assert "Command :: cd /d  & ./ecl2ix ECLIPSE" in process.stdout
    assert (tmp_path / "has_run").exists()


def test_a_missing_command_is_tried_again_until_a_signal_ends_the_run(tmp_path):
    going = Going(tmp_path, traced("no_such_simulator"))
    going.wait_for(TURN + "3")
    assert going.interrupt() == INTERRUPTED
    for text in ("Command :: no_such_simulator ECLIPSE", "Commandline -$eclipse- is not recognized",
                 "Check environmental varialbe of computer", "exit status 127", "ECLIPSE Restart is not exported.",
                 "     -> Change RPTRST or Inputdeck", "IS ENDED BY SIGINT IN TURN"):
        assert text in going.console, text
    assert going.console.count("Run Simulation by ECLIPSE") >= 3


def test_a_named_deck_shows_the_turns_too(tmp_path):
    going = Going(tmp_path, traced("no_such_simulator"), ("ECLIPSE.DATA", "--allow-outside"))
    going.wait_for(TURN + "2")
    assert going.interrupt() == INTERRUPTED
    assert "ECLIPSE Restart is not exported." in going.console
    assert "IS ENDED BY SIGINT IN TURN" in going.console


def test_a_killed_command_is_told_and_tried_again(tmp_path):
    script(tmp_path, "simulator", "kill -9 $$\n")
    going = Going(tmp_path, traced("exec simulator"))
    going.wait_for(TURN + "2")
    assert going.interrupt() == INTERRUPTED
    assert "Command ended :: ended by signal 9" in going.console


def test_a_signal_ends_the_command_that_is_waited_for(tmp_path):
    script(tmp_path, "simulator", "sleep 300 & echo $! > child; wait\n")
    going = Going(tmp_path, traced("simulator; true"))
    going.wait_for(TURN + "1")
    end = time.monotonic() + 20
    while not (tmp_path / "child").exists() or not (tmp_path / "child").read_text().strip():
        assert time.monotonic() < end
        time.sleep(0.02)
    child = int((tmp_path / "child").read_text())
    assert going.interrupt(10) == INTERRUPTED
    assert "IS ENDED BY SIGINT IN TURN 1" in going.console
    time.sleep(0.5)
    state = process_state(child)
    assert state in ("", "Z"), "what the command had started has ended with it"


def test_a_command_that_ignores_the_signal_is_ended_all_the_same(tmp_path):
    script(tmp_path, "simulator", "trap '' INT\necho $$ > child\nwhile true; do sleep 0.1; done\n")
    going = Going(tmp_path, traced("simulator"))
    end = time.monotonic() + 20
    while not (tmp_path / "child").exists() or not (tmp_path / "child").read_text().strip():
        assert time.monotonic() < end
        time.sleep(0.02)
    assert going.interrupt(20) == INTERRUPTED
    assert "Waiting for the outside simulator to end" in going.console
    time.sleep(0.5)
    assert process_state(int((tmp_path / "child").read_text())) in ("", "Z")


def drain(terminal):
    try:
        while os.read(terminal, 4096):
            pass
    except OSError:
        pass  # the run has ended


def test_a_command_that_asks_at_the_terminal_goes_on(tmp_path):
    """It has none; in the background of the run's own it would be stopped without a word."""
    script(tmp_path, "simulator", "stty sane </dev/tty\ntouch has_run\n")
    (tmp_path / "ECLIPSE.DATA").write_text(traced("simulator"))
    terminal, inner = pty.openpty()
    process = subprocess.Popen([kvr_run.PROGRAM], cwd=tmp_path, stdin=inner, stdout=inner, stderr=inner, env=environment(tmp_path),
                               start_new_session=True, preexec_fn=lambda: fcntl.ioctl(inner, termios.TIOCSCTTY, 0))
    os.close(inner)
    threading.Thread(target=drain, args=(terminal,), daemon=True).start()
    end = time.monotonic() + 20
    while not (tmp_path / "has_run").exists() and time.monotonic() < end:
        time.sleep(0.02)
    process.send_signal(signal.SIGINT)
    assert process.wait(20) == INTERRUPTED
    assert (tmp_path / "has_run").exists()


@pytest.mark.parametrize("extra, command", [("ECL2TEC", "simulator"), ("", "./ecl2ix")], ids=["plots", "deck"])
def test_a_signal_ends_a_conversion(tmp_path, extra, command):
    for name in ("simulator", "ecl2ix"):
        script(tmp_path, name, "touch has_run\nsleep 300\n")
    going = Going(tmp_path, traced(command, extra=extra))
    end = time.monotonic() + 20
    while not (tmp_path / "has_run").exists():
        assert time.monotonic() < end
        time.sleep(0.02)
    assert going.interrupt() == INTERRUPTED
    assert "RUN OF THE OUTSIDE SIMULATOR IS ENDED BY SIGINT" in going.console
    assert "is not recognized" not in going.console
    assert going.console.count("Run Simulation by ECLIPSE") == 1


@pytest.mark.parametrize("name", ["X;touch made;", "MY CASE", "a$(touch made)b"])
def test_the_name_of_a_deck_is_one_word_of_the_command(tmp_path, name):
    script(tmp_path, "ecl2ix", 'echo "$#" > count; touch "$1.told"\n')
    (tmp_path / f"{name}.DATA").write_text(traced("./ecl2ix", extra=""))
    ended = run_named(tmp_path / f"{name}.DATA", "--allow-outside")
    assert ended.returncode == 0, ended.console[-1000:]
    assert (tmp_path / "count").read_text() == "1\n"
    assert (tmp_path / f"{name}.told").exists()
    assert not (tmp_path / "made").exists()


# --- behind a run that has left its files ---------------------------------------------------------------------

def homo_deck(command, extra=""):
    return ((HOMO / "ECLIPSE.DATA").read_text()
            + f"\nTUNEKVR\nNUMLINE\n50 INJ No /\nECLTRACE\nLINUXRUN\n{extra}ECLCOMM\n{command}\n")


def homo_files(folder, end_file="Errors 0"):
    for path in HOMO.iterdir():
        if path.suffix not in (".DATA", ".ECLEND"):
            shutil.copy(path, folder / path.name)
    if end_file is not None:
        (folder / "ECLIPSE.ECLEND").write_text(f" Error summary\n {end_file}\n")


@needs_public_decks
@pytest.mark.parametrize("end_file", [None, "Errors 3"], ids=["no end file", "errors"])
def test_a_run_with_errors_is_repeated(tmp_path, end_file):
    homo_files(tmp_path, end_file)
    going = Going(tmp_path, homo_deck("$e300"), e300="true")
    going.wait_for(TURN + "2")
    assert going.interrupt() == INTERRUPTED
    assert "Error found in .ECLEND file. Run again..." in going.console
    assert " ECLIPSE seemed working successfully " in going.console


@needs_public_decks
def test_the_counts_of_frontsim_do_not_matter(tmp_path):
    homo_files(tmp_path, "Errors 3")
    script(tmp_path, "fake_simulator", "touch has_run\n")
    (tmp_path / "ECLIPSE.DATA").write_text(homo_deck("$frontsim"))
    process = subprocess.run([kvr_run.PROGRAM], cwd=tmp_path, stdin=subprocess.DEVNULL, capture_output=True, text=True,
                             env=environment(tmp_path, frontsim="fake_simulator"), timeout=120)
    assert process.returncode == 0, process.stdout[-2000:]
    assert (tmp_path / "has_run").exists()
    assert process.stdout.count(TURN) == 1


@needs_public_decks
def test_a_traced_run_leaves_the_files_of_the_outside_run_alone(tmp_path):
    homo_files(tmp_path)
    before = {path.name: path.read_bytes() for path in tmp_path.iterdir()}
    result = run(tmp_path, homo_deck("true", "OUTPUTKVR\n1 0 1 1 0 0 0 1 1 0 /\n"))
    assert result.status == 0, result.console[-2000:]
    assert "END SIMULATION" in result.console
    for name, content in before.items():
        assert (tmp_path / name).read_bytes() == content, name
    again = run(tmp_path)
    assert again.status == 0
    for name, content in before.items():
        assert (tmp_path / name).read_bytes() == content, name


@needs_public_decks
def test_a_run_that_is_cleared_before_has_to_write_its_files_anew(tmp_path):
    homo_files(tmp_path)
    kept = tmp_path / "kept"
    kept.mkdir()
    for path in tmp_path.glob("ECLIPSE.*"):
        shutil.copy(path, kept / path.name)
    script(tmp_path, "simulator", "test ! -e $1.X0001 && test ! -e $1.ECLEND && cp kept/$1.* . && touch was_clear\n")
    result = run(tmp_path, homo_deck("./simulator", "DELECL\n"))
    assert result.status == 0, result.console[-2000:]
    assert (tmp_path / "was_clear").exists()
    assert " ECLIPSE Pre-Run File Deleted from 0 to 2" in result.console


@needs_public_decks
def test_a_run_started_from_another_folder_traces_beside_its_deck_and_reports_elsewhere(tmp_path):
    case, results = tmp_path / "case", tmp_path / "results"
    case.mkdir()
    homo_files(case)
    (case / "ECLIPSE.DATA").write_text(homo_deck("touch ran_here; true"))
    ended = run_named(case / "ECLIPSE.DATA", "--allow-outside", "--output-dir", results, folder=tmp_path)
    assert ended.returncode == 0, ended.console[-2000:] + ended.errors
    assert (case / "ran_here").exists()
    assert (results / "ECLIPSE_Summary.csv").exists()
    assert not list(results.glob("ECLIPSE.X*"))


# --- runs of our own, followed as if they were another's ----------------------------------------------------------

TRACED_END = "TUNEKVR\nNUMLINE\n20 INJ No /\nECLTRACE\nLINUXRUN\nECLCOMM\ntrue\n"


def schedule(steps):
    return small_deck.SCHEDULE.replace("2*30", steps)


def own_run(folder, steps="4*30", extra=""):
    """A run that leaves its binary files, four reports of 30 days."""
    binary = kvr_run.options(lines=20, solver="DGESV", extra=extra).replace("1 0 0 0 0 0 0 1 0 0 /",
                                                                            "1 0 0 0 0 0 0 1 1 0 /")
    return kvr_run.finished_normally(run(folder, small_deck.deck(schedule=schedule(steps), options=binary)))


def restarts_read(result):
    return [int(step) for step in re.findall(r"EXTRACT RESTART -> .*ECLIPSE\.X(\d{4})", result.log)]


def test_a_traced_run_follows_the_restarts_of_the_run(tmp_path):
    before = own_run(tmp_path).table()
    traced_run = kvr_run.finished_normally(
        run(tmp_path, small_deck.deck(schedule=schedule("4*30"), options=TRACED_END)))
    assert restarts_read(traced_run) == [0, 1, 2, 3, 4]
    after = traced_run.table()
    assert list(after["TIME"]) == [0, 30, 60, 90, 120]
    rows = [int(numpy.argmin(abs(before["TIME"] - time))) for time in after["TIME"]]
    assert after["FPR"] == pytest.approx(before["FPR"][rows], rel=1e-5)


@pytest.mark.parametrize("steps, whole", [("4*30", True), ("2*30", False)], ids=["whole schedule", "schedule behind it"])
def test_a_traced_run_goes_on_behind_the_restart_that_its_deck_names(tmp_path, steps, whole):
    before = own_run(tmp_path).table()
    solution = "SOLUTION\nRESTART\n'ECLIPSE' 2 /\n"
    sections = schedule(steps).replace("SCHEDULE\n", "SCHEDULE\nSKIPREST\n") if whole else schedule(steps)
    result = kvr_run.finished_normally(
        run(tmp_path, small_deck.deck(solution=solution, schedule=sections, options=TRACED_END)))
    assert restarts_read(result) == [0, 3, 4]
    after = result.table()
    assert list(after["TIME"]) == [60, 90, 120]
    assert "Step 4 Time 90 --> 120 Stop Time: 120" in result.console
    rows = [int(numpy.argmin(abs(before["TIME"] - time))) for time in (90, 120)]
    assert after["WOPR:PROD"][1:] == pytest.approx(before["WOPR:PROD"][rows], rel=1e-3)


def test_the_times_of_the_restarts_are_those_of_the_run(tmp_path):
    own_run(tmp_path)
    result = kvr_run.finished_normally(
        run(tmp_path, small_deck.deck(schedule=schedule("8*15"), options=TRACED_END)))
    assert restarts_read(result) == [0, 1, 2, 3, 4]
    assert list(result.table()["TIME"]) == [0, 30, 60, 90, 120]


def test_a_missing_restart_is_told_and_the_field_before_it_serves(tmp_path):
    own_run(tmp_path)
    result = kvr_run.finished_normally(
        run(tmp_path, small_deck.deck(schedule=schedule("6*30"), options=TRACED_END)))
    assert restarts_read(result) == [0, 1, 2, 3, 4]
    assert result.console.count("RESTART File Not Found :: ") == 2
    assert result.table()["TIME"][-1] == 180


def test_a_run_without_a_summary_index_stops_with_a_message(tmp_path):
    own_run(tmp_path)
    (tmp_path / "ECLIPSE.SMSPEC").unlink()
    result = run(tmp_path, small_deck.deck(schedule=schedule("4*30"), options=TRACED_END))
    assert result.status == 1
    assert "ERROR: SMSPEC file is not given. Cannot Check .SXXXX file." in result.console


def test_model_and_state_of_an_outside_run_serve_the_runs_own_solvers(tmp_path):
    before = own_run(tmp_path)
    taken = own_run(tmp_path, extra="USEECLTR")
    assert restarts_read(taken) == [0]
    assert "Sum Trans Error : X direc = 0" in taken.console
    for column, values in before.table().items():
        assert taken.table()[column] == pytest.approx(values, rel=1e-4, abs=1e-6), column


def test_a_run_leaves_its_history_and_repeats_it(tmp_path):
    before = own_run(tmp_path, extra="OUTWHIST")
    text = before.read("SCHEDULE_TEMPORARY_FOR_HM.DATA")
    assert text.count("TSTEP\n30 /") == 4
    assert "'INJ' WATER OPEN 50 " in text
    controls = small_deck.SCHEDULE.index("WCONPROD")
    repeated = small_deck.SCHEDULE[:controls] + "INCLUDE\n'HISTORY.INC' /\nEND\n"
    again_folder = tmp_path / "again"
    again_folder.mkdir()
    again = kvr_run.finished_normally(run(again_folder, small_deck.deck(schedule=repeated), {"HISTORY.INC": text}))
    flow = before.table()["WWIR:INJ"][-1]  # the water has just broken through: against what flows
    for column in ("WOPR:PROD", "WWPR:PROD", "WWIR:INJ"):
        assert again.table()[column][-1] == pytest.approx(before.table()[column][-1], abs=1e-3 * flow), column


def test_a_history_switches_the_summary_files_on(tmp_path):
    plain = kvr_run.options(lines=20, solver="DGESV", extra="OUTWHIST")
    result = kvr_run.finished_normally(run(tmp_path, small_deck.deck(options=plain)))
    assert "OUTWHIST :: THE FILES OF OUTPUTKVR 9 ARE WRITTEN" in result.console
    assert result.read("SCHEDULE_TEMPORARY_FOR_HM.DATA").count("TSTEP") == 2


@pytest.mark.parametrize("fault", ["reading", "permission", "afi"])
def test_a_stop_leaves_the_end_file_of_the_outside_run(tmp_path, fault):
    deck = traced("true", extra="ECL2TEC" if fault == "permission" else "ECLTRACE")
    end_file = " Error summary\n Errors 0\n"
    (tmp_path / "CASE.ECLEND").write_text(end_file)
    name = "CASE.afi" if fault == "afi" else "CASE.DATA"
    (tmp_path / name).write_text(deck.replace("5 5 1 /", "5 x 1 /") if fault == "reading" else deck)
    assert run_named(tmp_path / name).returncode == 1
    assert (tmp_path / "CASE.ECLEND").read_text() == end_file


def test_a_command_behind_a_variable_that_is_not_set_runs_nothing(tmp_path):
    script(tmp_path, "ECLIPSE", "touch has_run\n")
    going = Going(tmp_path, traced("$no_such_variable"))
    going.wait_for(TURN + "2")
    assert going.interrupt() == INTERRUPTED
    assert "The variable no_such_variable of the environment is not set" in going.console
    assert not (tmp_path / "has_run").exists()


def test_the_reason_of_a_refused_command_stands_last(tmp_path):
    (tmp_path / "CASE.DATA").write_text(traced("./simulator"))
    lines = [line for line in run_named(tmp_path / "CASE.DATA").console.splitlines() if line.strip()]
    assert lines[-1] == "Command :: ./simulator CASE"
    assert "--allow-outside" in lines[-2]


@needs_public_decks
def test_wells_that_the_start_of_the_outside_run_has_shut_flow_by_the_schedule(tmp_path):
    plain, taken = tmp_path / "plain", tmp_path / "taken"
    tables = []
    for folder, extra in ((plain, ""), (taken, "USEECLTR\n")):
        folder.mkdir()
        homo_files(folder)
        deck = (HOMO / "ECLIPSE.DATA").read_text() + f"\nTUNEKVR\nNUMLINE\n50 INJ No /\n{extra}"
        tables.append(kvr_run.finished_normally(run(folder, deck)).table())
    for column in ("WOPR:PRD", "WWIR:INJ", "FPR"):
        assert tables[1][column][-1] == pytest.approx(tables[0][column][-1], rel=0.01), column
