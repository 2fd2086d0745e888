"""Runs traced from files that do not fit or are not whole: a message, and an end."""

import struct

import numpy
import pytest

import block_files
import kvr_run
import left_results
import small_deck
from named_run import run_named

ACTIVE_CELLS, WELLS = 12, 17  # of INTEHEAD


@pytest.fixture(scope="module")
def sound():
    """The run of a small flood, and that of another grid."""
    other = small_deck.deck(options="").replace("25*", "20*").replace("5 5 1", "5 4 1").replace("'PROD' 'G' 5 5", "'PROD' 'G' 5 4") \
        .replace("'PROD' 5 5", "'PROD' 5 4")
    own = {run.name: run for run in left_results.own_runs(kvr_run.PROGRAM)}
    return own["dead"], left_results.files_of(kvr_run.PROGRAM, other)


def trace(folder, run, files, deck=None):
    texts = dict(run.inputs, **files)
    if deck is not None:
        texts["ECLIPSE.DATA"] = deck
    return kvr_run.run(folder, files={name: text if isinstance(text, (bytes, str)) else text.encode()
                                      for name, text in texts.items()}, timeout=120)


def changed(data, keyword, change):
    """The file with the data of every block of a keyword changed."""
    blocks = block_files.blocks_of(data)
    met = [block for block in blocks if block.keyword == keyword]
    assert met
    for block in met:
        block.data = [change(record) for record in block.data]
    return block_files.file_of(blocks)


def with_slot(slot, value):
    return lambda head: head[:4 * slot - 4] + struct.pack(">i", value) + head[4 * slot:]


def test_a_sound_run_is_traced(tmp_path, sound):
    run, _ = sound
    ended = trace(tmp_path, run, run.files)
    assert ended.status == 0
    assert "FLUX DATA FOUND :: Trace Streamline using FLO_X+" in ended.console
    assert "does not match" not in ended.console


def test_a_restart_of_another_grid_is_told(tmp_path, sound):
    run, other = sound
    ended = trace(tmp_path, run, dict(run.files, **{"ECLIPSE.X0001": other["ECLIPSE.X0001"]}))
    assert ended.status == 0
    assert " ERROR :: ACTNUM not match from INIT and KVR" in ended.console
    assert "Dimension does not match - Restart and Grid file" in ended.console
    assert "PRESSURE of the restart has 20 values, 25 active cells are expected" in ended.console


def test_files_of_another_grid_altogether_end_the_run_with_a_message(tmp_path, sound):
    run, other = sound
    ended = trace(tmp_path, run, {name: other[name] for name in run.files if name in other})
    assert ended.status == 1
    assert "ECLIPSE.EGRID: byte " in ended.console
    assert "the grid has other dimensions than the run" in ended.console


@pytest.mark.parametrize("share", [0.02, 0.5, 0.99])
def test_a_truncated_restart_ends_the_run_at_its_place(tmp_path, sound, share):
    run, _ = sound
    whole = run.files["ECLIPSE.X0001"]
    ended = trace(tmp_path, run, dict(run.files, **{"ECLIPSE.X0001": whole[:int(share * len(whole))]}))
    assert ended.status == 1
    assert "ECLIPSE.X0001: byte " in ended.console


def test_a_summary_without_oil_rates_is_told_and_the_run_goes_on(tmp_path, sound):
    run, _ = sound
    spec = changed(run.files["ECLIPSE.SMSPEC"], b"KEYWORDS", lambda names: names.replace(b"WOPR    ", b"WXYZ    "))
    ended = trace(tmp_path, run, dict(run.files, **{"ECLIPSE.SMSPEC": spec}))
    assert ended.status == 0
    assert "WARNING :: No WOPR is in the .SMSPEC file, oil rates of wells are not known" in ended.console


def test_a_missing_summary_ends_the_run_with_a_message(tmp_path, sound):
    run, _ = sound
    files = {name: data for name, data in run.files.items() if not name.endswith(".SMSPEC")}
    ended = trace(tmp_path, run, files)
    assert ended.status == 1
    assert "ERROR: SMSPEC file is not given. Cannot Check .SXXXX file." in ended.console


def test_a_run_without_wells_ends_without_lines(tmp_path, sound):
    run, _ = sound
    deck = run.inputs["ECLIPSE.DATA"].decode().replace(small_deck.WELLS, "")
    files = {name: changed(data, b"INTEHEAD", with_slot(WELLS, 0)) if ".X" in name else data
             for name, data in run.files.items()}
    ended = trace(tmp_path, run, files, deck.encode())
    assert ended.status == 0
    assert "WARNING :: Number of well is zero" in ended.console
    assert not list(tmp_path.glob("Streamline_Time_*"))


def test_a_wrong_count_of_active_cells_is_told(tmp_path, sound):
    run, _ = sound
    restart = changed(run.files["ECLIPSE.X0001"], b"INTEHEAD", with_slot(ACTIVE_CELLS, 7))
    ended = trace(tmp_path, run, dict(run.files, **{"ECLIPSE.X0001": restart}))
    assert ended.status == 0
    assert " ERROR :: ACTNUM not match from INIT and KVR" in ended.console


def test_a_compositional_restart_without_fluxes_is_refused(tmp_path, sound):
    run, _ = sound
    blocks = [block for block in block_files.blocks_of(run.files["ECLIPSE.X0001"]) if not block.keyword.startswith(b"FL")]
    fractions = next(block for block in blocks if block.keyword == b"SWAT    ")
    blocks.append(block_files.Block(b"ZMF1    ", fractions.count, fractions.kind, fractions.data))
    ended = trace(tmp_path, run, dict(run.files, **{"ECLIPSE.X0001": block_files.file_of(blocks)}))
    assert ended.status == 1
    assert "ERROR :: The restart is compositional (ZMF1) and has no fluxes" in ended.console


def test_a_pore_volume_of_the_outside_run_gives_its_times_of_flight(tmp_path, sound):
    """Twice the pores take the lines twice the time."""
    run, _ = sound
    double = changed(run.files["ECLIPSE.INIT"], b"PORV    ",
                     lambda record: (2 * numpy.frombuffer(record, ">f4")).astype(">f4").tobytes())
    times = []
    for name, spec in (("plain", run.files["ECLIPSE.INIT"]), ("double", double)):
        (tmp_path / name).mkdir()
        ended = trace(tmp_path / name, run, dict(run.files, **{"ECLIPSE.INIT": spec}))
        assert ended.status == 0
        lines = (tmp_path / name / "Streamline_Time_60.plt").read_text().split("ZONE I =")[1:]
        assert lines
        times.append(max(float(row.split()[3]) for line in lines for row in line.splitlines()[1:] if row.strip()))
    assert times[1] == pytest.approx(2.0 * times[0], rel=1e-5)


def test_a_named_run_shows_what_its_files_lack(tmp_path, sound):
    run, _ = sound
    files = {name: data for name, data in run.files.items() if not name.endswith((".INIT", ".EGRID"))}
    for name, data in {**run.inputs, **files}.items():
        (tmp_path / name).write_bytes(data)
    ended = run_named("ECLIPSE.DATA", "--allow-outside", folder=tmp_path)
    assert ended.returncode == 0, ended.console
    assert " ECLIPSE .GRID File Not Found :: " in ended.console
    assert " ECLIPSE .INIT File Not Found :: " in ended.console
