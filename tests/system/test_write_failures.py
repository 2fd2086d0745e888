"""Disks that are full, readers that have gone, folders that vanish, signals and memory that runs out: a line that
says so, and tables that end with whole rows."""

import os
import resource
import shutil
import signal
import subprocess
import time

import pytest

import kvr_run
import small_deck
from named_run import run_named, start, summary_of

LONG = small_deck.deck(schedule=small_deck.SCHEDULE.replace("2*30 /", "400*1 /"))
TABLES = ["FLOOD_Run_Recovery.out", "FLOOD_Run_Production.out", "FLOOD_Run_Wct.out", "FLOOD_Run_SweepVolume.out"]


@pytest.fixture
def case(tmp_path):
    (tmp_path / "FLOOD.DATA").write_text(LONG)
    return tmp_path


def rows_are_whole(folder):
    """Every table ends with a line end and all rows have as many columns as the head."""
    for name in TABLES:
        text = (folder / name).read_text()
        assert text == "" or text.endswith("\n"), name
        counts = {len(line.split()) for line in text.splitlines()}
        assert len(counts) <= 1, name
    summary = folder / "FLOOD_Summary.csv"
    return summary_of(summary)[0] if summary.exists() else None


def limited_files(size):
    def limit():
        signal.signal(signal.SIGXFSZ, signal.SIG_IGN)  # a write beyond the limit fails, as on a full disk
        resource.setrlimit(resource.RLIMIT_FSIZE, (size, size))
    return limit


@pytest.mark.parametrize("size", [20000, 60000, 150000])
def test_files_that_can_grow_no_further_end_the_run_with_whole_rows(case, size):
    ended = run_named("FLOOD", folder=case, preexec_fn=limited_files(size))
    assert ended.returncode == 1
    told = [line for line in ended.console.splitlines() if line.startswith("ERROR :: CANNOT WRITE ")]
    assert len(told) == 1 and "FLOOD_" in told[0] and "File too large" in told[0]
    summary = rows_are_whole(case)
    if size == 150000:
        assert len(summary["TIME"]) > 10


@pytest.mark.parametrize("name", ["FLOOD_Run_Recovery.out", "FLOOD_Summary.csv", "FLOOD_dbg.out", "FLOOD_Run_IniSwat.out", "FLOOD_COORD_BYKVR.tmp"])
def test_the_file_that_the_device_does_not_take_is_named(case, name):
    (case / name).symlink_to("/dev/full")
    ended = run_named("FLOOD", folder=case)
    assert ended.returncode == 1
    assert name in ended.console
    assert "END SIMULATION" not in ended.console and "Open first" not in ended.console


def test_a_console_whose_reader_has_gone_ends_the_run(case):
    process = start("FLOOD", folder=case)
    process.stdout.readline()
    process.stdout.close()
    errors = process.stderr.read()
    assert process.wait(timeout=100) == 1
    assert errors == "ERROR :: CANNOT WRITE the console :: Broken pipe\n"
    rows_are_whole(case)


def test_a_console_on_a_full_device_ends_the_run(case):
    with open("/dev/full", "w") as full:
        ended = run_named("FLOOD", folder=case, stdout=full)
    assert ended.returncode == 1
    assert ended.errors == "ERROR :: CANNOT WRITE the console :: No space left on device\n"


def wait_for_rows(path, count):
    """Until the table has so many rows."""
    for _ in range(3000):
        if path.exists() and path.read_text().count("\n") >= count:
            return
        time.sleep(0.01)
    raise AssertionError(f"{path} has not grown")


def test_a_folder_that_vanishes_ends_the_run(case):
    slow = LONG.replace("400*1 /", "9000*1 /")
    (case / "FLOOD.DATA").write_text(slow)
    process = start("FLOOD", "--output-dir", "out", folder=case)
    wait_for_rows(case / "out" / "FLOOD_Summary.csv", 5)
    while (case / "out").exists():
        shutil.rmtree(case / "out", ignore_errors=True)
    console, _ = process.communicate(timeout=100)
    assert process.returncode == 1
    assert "out/FLOOD" in console.split("ERROR", 1)[1]


@pytest.mark.parametrize("closed", ["0", "1", "2", "012"])
def test_streams_that_are_closed_do_not_lend_their_place_to_a_file(case, closed):
    (case / "FLOOD.DATA").write_text(small_deck.deck())
    command = f"exec {kvr_run.PROGRAM} FLOOD --verbose " + " ".join(f"{n}{'<' if n == '0' else '>'}&-" for n in closed)
    assert subprocess.run(["sh", "-c", command], cwd=case, capture_output=True, timeout=100).returncode == 0
    rows_are_whole(case)
    for path in case.glob("FLOOD_*"):
        if path.name != "FLOOD_dbg.out":
            assert "END SIMULATION" not in path.read_text(errors="replace"), path.name


@pytest.mark.parametrize("number, status", [(signal.SIGINT, 130), (signal.SIGTERM, 143)])
def test_a_signal_ends_the_run_behind_a_whole_step_with_its_summary(case, number, status):
    (case / "FLOOD.DATA").write_text(LONG.replace("400*1 /", "9000*1 /"))
    process = start("FLOOD", folder=case)
    wait_for_rows(case / "FLOOD_Summary.csv", 5)
    process.send_signal(number)
    console, _ = process.communicate(timeout=100)
    assert process.returncode == status
    assert f"ended by {number.name}" in console and "Open first" in console
    days = len(rows_are_whole(case)["TIME"]) - 1
    assert 3 <= days < 9000
    assert " Problems             1\n" in (case / "FLOOD.ECLEND").read_text()


@pytest.mark.parametrize("delay", [0.02 * n for n in range(1, 11)])
def test_tables_parse_however_suddenly_the_process_is_killed(case, delay):
    (case / "FLOOD.DATA").write_text(LONG.replace("400*1 /", "9000*1 /"))
    process = start("FLOOD", folder=case)
    wait_for_rows(case / "FLOOD_Summary.csv", 3)
    time.sleep(delay)
    process.kill()
    process.communicate(timeout=100)
    rows_are_whole(case)


@pytest.mark.skipif(os.environ.get("KVR_SANITIZED") == "1", reason="such a program maps terabytes at its start")
@pytest.mark.parametrize("megabytes", [60, 90, 120, 150, 180, 210, 260])
@pytest.mark.parametrize("solver", ["DGESV", "AMG"])
def test_memory_that_runs_out_ends_the_run_with_a_line(tmp_path, megabytes, solver):
    deck = small_deck.deck(options=kvr_run.options(lines=20, solver=solver, scheme="IMPLICIT"))
    (tmp_path / "FLOOD.DATA").write_text(deck)

    def limit():
        resource.setrlimit(resource.RLIMIT_AS, (megabytes << 20, megabytes << 20))
        resource.setrlimit(resource.RLIMIT_CPU, (20, 21))
    ended = run_named("FLOOD", "--threads", 1, folder=tmp_path, preexec_fn=limit)
    assert ended.returncode in (0, 1), "neither a spin nor an abort"
    if ended.returncode == 1:
        assert "emory" in ended.console + ended.errors or "MEMORY" in ended.console
