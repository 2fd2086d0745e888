"""Damaged copies of the public decks: none may crash, hang, break a sanitizer's rule, or end without a word. The driver of
large counts is `mutate_decks` in this folder; here a part of its decks, and what its judge sees."""

import os
import pathlib
import subprocess
import sys

import pytest

import kvr_run
import mutated_run
import mutations
import small_decks

DRIVER = pathlib.Path(__file__).resolve().parent / "mutate_decks"
SANITIZED = os.environ.get("KVR_SANITIZED", "") == "1"
COUNT = 2000 if SANITIZED else 400
SEED = 1
ONLY_PUBLIC = pytest.mark.skipif(not kvr_run.PUBLIC_DECKS.exists(),
                                 reason="the folder of public decks is not beside the checkout")


def test_damaged_decks_end_well(tmp_path):
    found = subprocess.run([sys.executable, DRIVER, "--count", str(COUNT), "--seed", str(SEED), "--jobs", str(os.cpu_count() or 1),
                            "--program", kvr_run.PROGRAM, "--out", tmp_path], text=True, capture_output=True)
    assert found.returncode == 0, found.stdout[-6000:] + found.stderr[-2000:]
    assert f"{COUNT} damaged decks" in found.stdout


def script(tmp_path, text):
    """A program that does what the judge is to see."""
    path = tmp_path / "program"
    path.write_text("#!/bin/sh\n" + text)
    path.chmod(0o755)
    folder = tmp_path / "run"
    folder.mkdir()
    return path, folder


@pytest.mark.parametrize("text, verdict", [
    ("kill -SEGV $$", "crash"),
    ("exit 1", "silent"),
    ("echo 'ERROR :: DIMENS NOT SPECIFIED'; exit 1", "message"),
    ("echo 'x.cpp:3:4: runtime error: index 7 out of bounds' >&2; exit 1", "sanitizer"),
    ("echo '==1==ERROR: AddressSanitizer: heap-buffer-overflow' >&2; exit 1", "sanitizer"),
    ("echo '==1==AddressSanitizer: hard rss limit exhausted' >&2; exit 1", "memory"),
    ("exit 0", "ended"),
    ("trap 'exit 143' TERM; while :; do :; done", "long"),
    ("trap '' TERM; while :; do :; done", "hang"),
    ("printf 'TIME,FOPR\\nDAYS,STB/DAY\\n0,1\\n1,nan\\n' > KVR_Summary.csv", "unreadable"),
    ("printf 'TIME,FOPR\\nDAYS,STB/DAY\\n0,1\\n1\\n' > KVR_Summary.csv", "unreadable"),
    ("printf 'TIME,FOPR\\nDAYS,STB/DAY\\n0,1\\n1,2\\n' > KVR_Summary.csv", "ended"),
    ("printf '\\000\\000\\000\\020abc' > CASE.X0001", "unreadable"),
])
def test_the_judge_tells_ends_apart(tmp_path, text, verdict):
    program, folder = script(tmp_path, text)
    assert mutated_run.run(mutated_run.Processes(program), folder, cpu_seconds=0.3, end_seconds=0.3).verdict == verdict


def test_reading_that_takes_the_limit_is_told(tmp_path):
    program, folder = script(tmp_path, "while :; do :; done")
    assert mutated_run.check(mutated_run.Processes(program), folder, cpu_seconds=0.3).verdict == "slow reading"


@pytest.mark.parametrize("kind", mutations.KINDS)
def test_a_damaged_deck_is_a_function_of_its_numbers(kind):
    decks = [small_decks.KEYWORD_DECK]
    text = mutations.damaged(small_decks.generator(3, 5), kind, small_decks.KEYWORD_DECK, decks)
    assert text == mutations.damaged(small_decks.generator(3, 5), kind, small_decks.KEYWORD_DECK, decks)
    others = [mutations.damaged(small_decks.generator(3, n), kind, small_decks.KEYWORD_DECK, decks) for n in range(40)]
    assert len(set(others)) > 20


@ONLY_PUBLIC
def test_every_sound_seed_is_read_and_has_few_cells(tmp_path):
    seeds = small_decks.seeds()
    assert len(seeds) > 50 and len({seed.name for seed in seeds}) == len(seeds)
    sound = 0
    for seed in seeds:
        assert small_decks.cell_count(seed.text.decode("latin-1")) <= 500
        folder = tmp_path / seed.name
        folder.mkdir()
        (folder / "ECLIPSE.DATA").write_bytes(seed.text)
        sound += mutated_run.check(mutated_run.Processes(kvr_run.PROGRAM), folder).status == 0
    assert sound > 0.85 * len(seeds)
