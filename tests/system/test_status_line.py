"""The status line: rewritten in place on a terminal, never in a file or a pipe."""

import os
import pty
import re
import subprocess

import kvr_run
import small_deck
from kvr_run import finished_normally, run

STATUS = re.compile(r"(\d\d\.\d\d\.\d{4}) +(\d+\.\d) % of the schedule   elapsed \d+:\d\d:\d\d   left (-|\d+:\d\d:\d\d)")
ERASE = "\r\x1b[K"
TIMES = re.compile(r"\d+\.\d{3}|(Request time for pressure|time elapsed).*")


def on_a_terminal(folder, terminal="xterm"):
    """Everything that the program sends to a terminal of its own."""
    (folder / "ECLIPSE.DATA").write_text(small_deck.deck())
    ours, theirs = pty.openpty()
    environment = dict(os.environ, TERM=terminal)
    with subprocess.Popen([kvr_run.PROGRAM], cwd=folder, stdin=subprocess.DEVNULL, stdout=theirs, env=environment) as process:
        os.close(theirs)
        pieces = []
        while True:
            try:
                piece = os.read(ours, 65536)
            except OSError:  # the other side is closed
                break
            if not piece:
                break
            pieces.append(piece)
        os.close(ours)
    assert process.returncode == 0
    return b"".join(pieces).decode().replace("\r\n", "\n")


def what_remains(text):
    """The lines that stand on the screen in the end, once every erased line is gone."""
    lines = []
    for line in text.split("\n"):
        lines.append(line.split(ERASE)[-1])
    return lines


def test_a_terminal_shows_one_line_that_is_rewritten(tmp_path):
    text = on_a_terminal(tmp_path)
    shown = STATUS.findall(text)
    assert [shown[0][1], shown[-1][1]] == ["0.0", "100.0"]
    assert [float(status[1]) for status in shown] == sorted(float(status[1]) for status in shown)
    assert shown[0][0] == "01.01.2000" and shown[-1][0] == "01.03.2000", "60 days behind the first of January"
    assert not any(STATUS.search(line) for line in what_remains(text))


def test_the_fixed_texts_stand_on_a_terminal_as_in_a_pipe(tmp_path):
    (tmp_path / "pipe").mkdir()
    (tmp_path / "terminal").mkdir()
    piped = finished_normally(run(tmp_path / "pipe", small_deck.deck())).console
    seen = what_remains(on_a_terminal(tmp_path / "terminal"))
    assert [TIMES.sub("", line) for line in seen] == [TIMES.sub("", line) for line in piped.split("\n")]


def test_neither_a_pipe_nor_the_log_has_a_status_line(tmp_path):
    result = finished_normally(run(tmp_path, small_deck.deck()))
    assert not STATUS.search(result.console) and "\x1b" not in result.console and "\r" not in result.console
    (tmp_path / "terminal").mkdir()
    on_a_terminal(tmp_path / "terminal")
    log = (tmp_path / "terminal" / "KVR_dbg.out").read_text()
    assert not STATUS.search(log) and "\x1b" not in log


def test_a_terminal_that_cannot_rewrite_a_line_gets_none(tmp_path):
    text = on_a_terminal(tmp_path, terminal="dumb")
    assert not STATUS.search(text) and "\x1b" not in text
