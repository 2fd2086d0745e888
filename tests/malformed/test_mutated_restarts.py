"""Runs traced from damaged files of another simulator: none may crash, hang, break a sanitizer's rule, or end without a
word. The driver of large counts is `mutate_restarts` in this folder; here a part of its runs."""

import os
import pathlib
import subprocess
import sys

import pytest

import kvr_run
import mutated_run
import restart_mutations
import small_decks
import left_results

DRIVER = pathlib.Path(__file__).resolve().parent / "mutate_restarts"
SANITIZED = os.environ.get("KVR_SANITIZED", "") == "1"
COUNT = 500 if SANITIZED else 150
SEED = 1


@pytest.fixture(scope="module")
def runs():
    return left_results.traced_runs(kvr_run.PROGRAM)


def test_damaged_restarts_end_well(tmp_path):
    found = subprocess.run([sys.executable, DRIVER, "--count", str(COUNT), "--seed", str(SEED), "--jobs", str(os.cpu_count() or 1),
                            "--program", kvr_run.PROGRAM, "--out", tmp_path], text=True, capture_output=True)
    assert found.returncode == 0, found.stdout[-6000:] + found.stderr[-2000:]
    assert f"{COUNT} damaged runs" in found.stdout


def test_every_sound_run_is_traced(runs, tmp_path):
    for run in runs:
        folder = tmp_path / run.name
        folder.mkdir()
        for name, data in {**run.inputs, **run.files}.items():
            (folder / name).write_bytes(data)
        trial = mutated_run.run(mutated_run.Processes(kvr_run.PROGRAM), folder, run.words)
        console = (folder / mutated_run.CONSOLE).read_text(errors="replace")
        assert (trial.verdict, trial.status) == ("ended", 0), (run.name, trial, console[-2000:])


def test_sound_files_come_back_as_they_were(runs):
    for run in runs:
        for name, data in run.files.items():
            blocks = restart_mutations.blocks_of(data)
            assert blocks, name
            assert restart_mutations.file_of(blocks) == data, name


@pytest.mark.parametrize("kind", restart_mutations.KINDS)
def test_damaged_files_are_a_function_of_their_numbers(runs, kind):
    run = runs[-1]

    def files_of(number):
        rng = small_decks.generator(3, number)
        return restart_mutations.damaged_files(rng, kind, run.files, [b"\0" * 40])[0]

    assert files_of(5) == files_of(5)
    changed = sum(files_of(n) != run.files for n in range(30))
    assert changed > 20
