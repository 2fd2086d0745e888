"""A run that is a fork of the server is the run of a process of its own, and is watched like it."""

import os
import pathlib
import signal

import pytest

import kvr_run
import mutated_run
import small_deck

SERVER = pathlib.Path(kvr_run.PROGRAM).parent / "tests" / "fork_server"
WAYS = {"process": mutated_run.Processes(kvr_run.PROGRAM), "fork": mutated_run.Forks(SERVER)}
ENDLESS = small_deck.deck().replace("TSTEP\n", "TSTEP\n9990*0.5 ")


def folder_of(tmp_path, name, text):
    folder = tmp_path / name
    folder.mkdir()
    (folder / "ECLIPSE.DATA").write_text(text)
    return folder


def console_of(folder):
    """The console ahead of the table of times, and without other lines that tell seconds."""
    text = (folder / mutated_run.CONSOLE).read_text().split("\nStage ")[0]
    return [line for line in text.splitlines() if " time " not in line and not line.startswith("time elapsed")]


DECKS = {"sound": small_deck.deck(), "broken": small_deck.deck().replace("DIMENS", "DIMENZ"), "empty": ""}


@pytest.mark.parametrize("words", [(), ("--check", "ECLIPSE.DATA"), ("--version",), ("--nothing",)])
@pytest.mark.parametrize("deck", DECKS)
def test_a_fork_leaves_what_a_process_leaves(tmp_path, deck, words):
    trials, folders = {}, {}
    for name, starter in WAYS.items():
        folders[name] = folder_of(tmp_path, name, DECKS[deck])
        trials[name] = mutated_run.run(starter, folders[name], words)
    assert (trials["fork"].verdict, trials["fork"].status) == (trials["process"].verdict, trials["process"].status)
    names = {path.name for path in folders["process"].iterdir()}
    assert {path.name for path in folders["fork"].iterdir()} == names
    assert console_of(folders["fork"]) == console_of(folders["process"])
    for name in names & {mutated_run.ERRORS, "KVR_Summary.csv", "KVR_Run_Recovery.out"}:
        assert (folders["fork"] / name).read_bytes() == (folders["process"] / name).read_bytes()


def test_a_fork_behind_its_time_is_asked_to_end(tmp_path):
    folder = folder_of(tmp_path, "run", ENDLESS)
    end = WAYS["fork"].run(folder, (), 0.3, 20.0)
    assert (end.done, end.status) == ("asked", 128 + signal.SIGTERM)
    assert 0.3 <= end.cpu_seconds < 10.0
    assert "SIGTERM" in (folder / "console.txt").read_text()


def test_a_fork_that_does_not_end_when_asked_is_forced(tmp_path):
    end = WAYS["fork"].run(folder_of(tmp_path, "run", ENDLESS), (), 0.3, -0.2)
    assert (end.done, end.status) == ("forced", -signal.SIGKILL)


def test_a_fork_that_exceeds_its_memory_is_ended(tmp_path, monkeypatch):
    monkeypatch.setattr(mutated_run, "MEMORY_MB", 1)
    trial = mutated_run.run(WAYS["fork"], folder_of(tmp_path, "run", ENDLESS))
    assert (trial.verdict, trial.status) == ("memory", -signal.SIGKILL)


def test_the_server_goes_on_behind_a_run_that_was_ended(tmp_path):
    server = mutated_run.Forks(SERVER)
    first = server.process().pid
    assert server.run(folder_of(tmp_path, "long", ENDLESS), (), 0.2, -0.1).done == "forced"
    assert server.run(folder_of(tmp_path, "short", small_deck.deck()), (), 10.0, 10.0).status == 0
    assert server.process().pid == first and os.path.exists(f"/proc/{first}")


def test_a_folder_that_is_not_there_is_no_run(tmp_path):
    assert WAYS["fork"].run(tmp_path / "nowhere", (), 1.0, 1.0).status == 126


def test_a_fork_that_waits_without_an_end_is_asked_to_end(tmp_path, monkeypatch):
    monkeypatch.setattr(mutated_run, "SLEEP_SECONDS", 0.3)
    folder = folder_of(tmp_path, "run", ENDLESS + "\nECLTRACE\nLINUXRUN\nECLCOMM\nfalse\n")
    end = WAYS["fork"].run(folder, (), 10.0, 10.0)
    assert (end.done, end.status) == ("asked", 128 + signal.SIGTERM)
