"""Runs of an independent simulator, `flow`, where it is installed (Debian: libopm-simulators-bin, libopm-common-bin)."""

import os
import shutil
import subprocess

import numpy
import pytest

FLOW = shutil.which("flow")
SUMMARY = shutil.which("summary")  # prints vectors of a summary file
needs_flow = pytest.mark.skipif(FLOW is None or SUMMARY is None,
                                reason="the independent simulator flow and its tool summary are not installed")


def run_flow(folder, deck, timeout=600, longest=5, options=()):
    """Runs the deck in a folder of its own, in steps of at most `longest` days; exit status and what it printed."""
    folder.mkdir(parents=True, exist_ok=True)
    (folder / "PEER.DATA").write_text(deck)
    environment = dict(os.environ, OMP_NUM_THREADS="1")
    process = subprocess.run([FLOW, "PEER.DATA", "--output-dir=.", "--enable-ecl-output=true", f"--solver-max-time-step-in-days={longest}",
                              "--threads-per-process=1", *options],
                             cwd=folder, env=environment, text=True, capture_output=True, timeout=timeout)
    return process.returncode, process.stdout + process.stderr


def vectors(folder, *names, case="PEER"):
    """Vectors of the run in `folder` by name, with TIME in days."""
    process = subprocess.run([SUMMARY, case, "TIME", *names], cwd=folder, text=True, capture_output=True)
    lines = [line.split() for line in process.stdout.splitlines() if line.strip()]
    assert lines and lines[0] == ["TIME", *names], process.stdout[:500] + process.stderr[:500]
    values = numpy.array([[float(word) for word in words] for words in lines[1:]])
    return {name: values[:, i] for i, name in enumerate(lines[0])}


def flow_vectors(folder, deck, *names, longest=5):
    status, printed = run_flow(folder, deck, longest=longest)
    assert status == 0, printed[-3000:]
    return vectors(folder, *names)
