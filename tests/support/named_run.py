"""Runs the program with words on its command line and a deck that need not stand in the present folder."""

import os
import pathlib
import subprocess

import numpy

import kvr_run


def start(*words, folder=".", stdout=subprocess.PIPE, preexec_fn=None):
    """The program as a process that has just been started; nothing can be typed into it."""
    return subprocess.Popen([kvr_run.PROGRAM, *map(str, words)], cwd=folder, stdin=subprocess.DEVNULL, stdout=stdout,
                            stderr=subprocess.PIPE, text=True, errors="replace", preexec_fn=preexec_fn,
                            env=dict(os.environ, TERM="dumb"))


def run_named(*words, folder=".", timeout=300, **options):
    """The ended process, with `console` and `errors`."""
    process = start(*words, folder=folder, **options)
    process.console, process.errors = process.communicate(timeout=timeout)
    return process


def summary_of(path):
    """Columns by name and units by name of a summary table; the dates are left out."""
    lines = pathlib.Path(path).read_text().splitlines()
    names, units = lines[0].split(","), lines[1].split(",")
    rows = [line.split(",") for line in lines[2:]]
    assert all(len(row) == len(names) == len(units) for row in rows), "every row is whole"
    keep = [n for n, name in enumerate(names) if name != "DATE"]
    values = numpy.array([[float(row[n]) for n in keep] for row in rows])
    return {names[n]: values[:, i] for i, n in enumerate(keep)}, dict(zip(names, units))
