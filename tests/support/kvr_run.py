"""Runs the real program in a scratch folder and reads what it leaves behind."""

import os
import pathlib
import resource
import subprocess

import numpy

PROGRAM = os.environ.get("KVR_PROGRAM", "")
REPOSITORY = pathlib.Path(__file__).resolve().parents[2]
PUBLIC_DECKS = REPOSITORY.parent / "shared" / "decks"


class Finished:
    """A run that has ended: exit status, console text, scratch folder, processor seconds."""

    def __init__(self, folder, process, cpu_seconds):
        self.folder = pathlib.Path(folder)
        self.status = process.returncode
        self.console = process.stdout
        self.errors = process.stderr
        self.cpu_seconds = cpu_seconds

    def read(self, name):
        return (self.folder / name).read_text()

    @property
    def log(self):
        return self.read("KVR_dbg.out")

    def table(self, name="KVR_Run_Recovery.out"):
        return read_table(self.folder / name)


def read_table(path):
    """Columns by name of a table with one header line and blank-separated numbers."""
    lines = [line for line in pathlib.Path(path).read_text().splitlines() if line.strip()]
    names = lines[0].split()
    values = numpy.array([[float(word) for word in line.split()] for line in lines[1:]])
    assert values.shape[1] == len(names)
    return {column: values[:, i] for i, column in enumerate(names)}


def run(folder, deck=None, files=None, standard_input="", timeout=600, name="ECLIPSE.DATA"):
    """Runs the program in `folder` with the deck text and further files written there first."""
    folder = pathlib.Path(folder)
    if deck is not None:
        (folder / name).write_text(deck)
    for file_name, content in (files or {}).items():
        target = folder / file_name
        if isinstance(content, bytes):
            target.write_bytes(content)
        else:
            target.write_text(content)
    before = resource.getrusage(resource.RUSAGE_CHILDREN)
    process = subprocess.run([PROGRAM], cwd=folder, input=standard_input, text=True, capture_output=True, errors="replace",
                             timeout=timeout)
    after = resource.getrusage(resource.RUSAGE_CHILDREN)
    assert process.stderr == "", process.stderr
    return Finished(folder, process, after.ru_utime - before.ru_utime)


def finished_normally(result):
    """The run came to its end and said so."""
    assert result.status == 0, result.console[-2000:]
    assert "END SIMULATION" in result.console
    return result


def public_deck(relative):
    """Text of a public deck, or None where the folder of public decks is not beside the checkout."""
    path = PUBLIC_DECKS / relative
    return path.read_text() if path.exists() else None


def read_csv(path):
    """Columns by name of a comma-separated table."""
    lines = path.read_text().splitlines()
    names = lines[0].split(",")
    values = numpy.array([[float(word) for word in line.split(",")] for line in lines[1:]])
    return {column: values[:, i] for i, column in enumerate(names)}


OPTION_TEMPLATE = """
TUNEKVR
FDMETHOD
{method}
PSOLVER
{solver}
NUMLINE
{lines} {start} {missed} /
SL1DCON
{scheme} {nodes} {factor} {upwind} Yes Yes Yes No /
SL1DMAP
{mappings} /
CFL
{cfl} {minimum_step} /
CFLG
0.8 0.01 /
CONVERGE
{tolerance} 1e-4 30 30 /
OUTPUTKVR
1 0 {plots} 0 0 0 0 1 0 0 /
{extra}
"""


def options(method="STREAMLINE", solver="AMG", lines=500, scheme="EXPLICIT", nodes="IRR", factor=1.0,
            upwind="SPU", mappings=1, cfl=0.8, minimum_step=0.01, tolerance=0.01, plots=0,
            start="INJ", missed="No", extra=""):
    """Option section to append behind END."""
    return OPTION_TEMPLATE.format(**locals())
