"""Building, decks and measurements of bench/run. A measurement is a dictionary of figures by name: user, wall
(s), megabytes, rate (million/s), and of a whole run the elapsed seconds of its stages and its cells."""

import contextlib
import json
import lzma
import os
import pathlib
import re
import shutil
import statistics
import subprocess
import sys
import tempfile

ROOT = pathlib.Path(__file__).resolve().parent.parent
BUILD = ROOT / "build" / "bench"

sys.path.insert(0, str(ROOT / "tests" / "support"))
import dual_deck  # noqa: E402
import kvr_run  # noqa: E402
import mixture_flood  # noqa: E402

PROGRAMS = ["kvr", "bench_solvers", "bench_multigrid", "bench_lines", "bench_deck_reading",
            "bench_eclipse_files", "bench_flash", "bench_run_flashes"]

# Lines whose tracing and transport are measured; the option section stands behind END.
CHOICES = {"FIVE1": {"lines": 30, "nodes": "IRR"},
           "FIVE5": {"lines": 4000, "nodes": "REG", "factor": 0.5},
           "FIVE85": {"lines": 60000, "nodes": "REG", "factor": 0.5},
           "LIVEWAT": {"lines": 400, "nodes": "REG"}}

# Every flood takes 2000 days in pressure steps of 50.
WHOLE_RUN = "40*50"
STEPS = {"20*100": WHOLE_RUN}

# Rows of the program's closing table of stages.
STAGES = {"Deck reading": "deck", "Initialisation": "start", "Pressure": "pressure", "Streamlines": "lines",
          "Gravity and Pc": "splitting", "Reports": "reports"}


def build():
    configure = ["cmake", "-S", ROOT, "-B", BUILD, "-G", "Ninja", "-DCMAKE_BUILD_TYPE=Release", "-DKVR_BENCH=ON"]
    for command in (configure, ["cmake", "--build", BUILD, "--target", *PROGRAMS]):
        done = subprocess.run(command, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True, check=False)
        if done.returncode != 0:
            sys.exit(done.stdout[-4000:])


def placed(decks, name, scratch, options=True, steps=None):
    """The deck `name` in a folder of its own name, with its option section, an own text of one, or none; `steps`
    in place of its time steps."""
    folder = pathlib.Path(scratch) / name
    folder.mkdir()
    text = (decks / f"{name}.DATA").read_text()
    for theirs, ours in STEPS.items():
        text = text.replace(theirs, ours)
    if steps is not None:
        assert WHOLE_RUN in text
        text = text.replace(WHOLE_RUN, steps)
    section = options if isinstance(options, str) else kvr_run.options(**CHOICES[name]) if options else ""
    (folder / "ECLIPSE.DATA").write_text(text + section)
    plain, packed = decks / f"{name}.INC", decks / f"{name}.INC.xz"
    if plain.exists():
        shutil.copyfile(plain, folder / plain.name)
    elif packed.exists():
        (folder / plain.name).write_bytes(lzma.decompress(packed.read_bytes()))
    return folder


def medians(measurements):
    return {key: statistics.median(one[key] for one in measurements) for key in measurements[0]}


# --- micro benchmarks --------------------------------------------------------------------------------

def google(program, arguments, repeats):
    """Medians of a Google Benchmark program, rows by their names."""
    done = subprocess.run([BUILD / "bench" / program, *arguments, "--benchmark_format=json",
                           f"--benchmark_repetitions={repeats}", "--benchmark_report_aggregates_only=true"],
                          stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, text=True, errors="replace",
                          check=True)
    # What the library itself prints on the way stands before the report.
    report = json.loads(done.stdout[done.stdout.index('{\n  "context"'):])
    seconds = {"ns": 1e-9, "us": 1e-6, "ms": 1e-3, "s": 1.0}
    rows = {}
    for row in report["benchmarks"]:
        if repeats > 1 and row.get("aggregate_name") != "median":
            continue
        figures = {"user": row["cpu_time"] * seconds[row["time_unit"]]}
        if "million/s" in row:
            figures["rate"] = row["million/s"]
        rows[row["run_name"]] = figures
    return rows


def deck_reading(folder, repeats):
    runs = []
    for _ in range(repeats):
        done = subprocess.run([BUILD / "bench" / "bench_deck_reading"], cwd=folder, stdin=subprocess.DEVNULL,
                              stdout=subprocess.PIPE, text=True, check=True)
        found = dict(re.findall(r"(\S+)=(\S+)", done.stdout.splitlines()[-1]))
        runs.append({"user": float(found["seconds"]), "megabytes": float(found["peak_MB"]),
                     "overFilled": float(found["peak/filled"]), "cells": int(found["cells"])})
    return medians(runs)


RUN_FLASHES = {"RICH_GAS": "rich_gas", "WATER_AND_GAS": "water_and_gas"}  # shipped decks of mixtures


def run_flashes(name, repeats):
    """Figures by row name of the flashes of a whole run: all, and those from last K-values."""
    runs = []
    for _ in range(repeats):
        with tempfile.TemporaryDirectory() as folder:
            deck = shutil.copy(ROOT / "examples" / RUN_FLASHES[name] / f"{name}.DATA", folder)
            done = subprocess.run([BUILD / "bench" / "bench_run_flashes", deck], cwd=folder, stdin=subprocess.DEVNULL,
                                  stdout=subprocess.PIPE, text=True, errors="replace", check=True)
            found = dict(re.findall(r"(\S+)=(\S+)", done.stdout.splitlines()[-1]))
            runs.append({key: float(value) for key, value in found.items()})
    figures = medians(runs)
    row = f"flash/run of {name}, {figures['components']:.0f} components"
    return {f"{row}, {text}": {"user": 1e-6 / figures[key], "rate": figures[key]}
            for text, key in (("all", "all"), ("from last K", "withK"), ("of one phase without K", "withoutK"))}


def multigrid(folders, large):
    """Lines of the solver comparison."""
    done = subprocess.run([BUILD / "bench" / "bench_multigrid", *(["--large"] if large else []), *folders], stdin=subprocess.DEVNULL,
                          stdout=subprocess.PIPE, text=True, errors="replace", check=True)
    return [line for line in done.stdout.splitlines() if " kvr " in line or " peer " in line]


# --- whole runs --------------------------------------------------------------------------------------

# Runs in a process of its own, so that its children's resource use is that of one command.
MEASURE = """
import json, resource, subprocess, sys, time
start = time.monotonic()
status = subprocess.run(sys.argv[1:], stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL,
                        stderr=subprocess.DEVNULL).returncode
use = resource.getrusage(resource.RUSAGE_CHILDREN)
print(json.dumps({"user": use.ru_utime, "wall": time.monotonic() - start,
                  "megabytes": use.ru_maxrss * 1024 / 1e6, "status": status}))
"""


def measure(command, folder, threads):
    """User CPU and wall seconds and largest resident megabytes of one run."""
    done = subprocess.run([sys.executable, "-c", MEASURE, *map(str, command)], cwd=folder, text=True, check=True,
                          env=dict(os.environ, OMP_NUM_THREADS=str(threads)), stdout=subprocess.PIPE)
    figures = json.loads(done.stdout.splitlines()[-1])
    if figures.pop("status") != 0:
        sys.exit(f"{command[0]} failed in {folder}")
    return figures


def stage_seconds(log):
    """Elapsed seconds by stage from the closing table of a run's log."""
    found = {}
    for label, name in STAGES.items():
        rows = re.findall(rf"^{label}\s+([0-9.]+)\s+[0-9.]+\s*$", log, re.MULTILINE)
        found[name] = float(rows[-1])
    return found


def cells_of(deck):
    sizes = re.search(r"^DIMENS\s+(\d+)\s+(\d+)\s+(\d+)", deck, re.MULTILINE)
    return int(sizes[1]) * int(sizes[2]) * int(sizes[3])


# --- cost of step control ----------------------------------------------------------------------------

STEP_CONTROL_DECKS = ("LIVEWAT", "QFS50", "BL100")
LEAST_MEASURED = 2.0  # s of CPU, which a short run is repeated to


def step_control(decks, name, repeats):
    """User seconds of a deck at its published steps with step control and without, each row a median of runs taken
    in turn, so that both see the same machine."""
    runs = {"Yes": [], "No": []}
    while min(map(len, runs.values())) < repeats or sum(one["user"] for one in runs["No"]) < LEAST_MEASURED:
        for word, measured in runs.items():
            with tempfile.TemporaryDirectory() as scratch:
                section = f"\nTUNEKVR\nSTEPCTRL\n{word} /\n"
                measured.append(measure([BUILD / "kvr"], placed(decks, name, scratch, options=section), 1))
    return {word: medians(measured) for word, measured in runs.items()}


# --- fractures with their matrix -----------------------------------------------------------------------

FRACTURED_SIDE, FRACTURED_SIGMA = 100, 0.01  # pairs along a side; 1/ft2
FRACTURED_METHODS = ("STREAMLINE", "IMPES", "FIM")
CONTINUA = ("two continua", "one continuum")


def fractured_five_spot(method, repeats):
    """Figures of a quarter of a five-spot of fractures and matrix, and of one continuum with the pores of both, over
    1000 days, taken in turn."""
    side = FRACTURED_SIDE
    rate, steps = 200.0 * side * side / 36.0, "40*25"
    decks = (dual_deck.dual(side, side, rate, steps, FRACTURED_SIGMA),
             dual_deck.single(side, side, rate, steps, 0.22, 300.0))
    runs = {name: [] for name in CONTINUA}
    for _ in range(repeats):
        for name, deck in zip(CONTINUA, decks):
            with tempfile.TemporaryDirectory() as scratch:
                section = f"\nTUNEKVR\nFDMETHOD\n{method}\nMAXDT\n25\n"
                (pathlib.Path(scratch) / "ECLIPSE.DATA").write_text(deck + section)
                figures = measure([BUILD / "kvr"], scratch, 1)
                runs[name].append(figures | {"cells": cells_of(deck)})
    return {name: medians(measured) for name, measured in runs.items()}


# --- mixtures ------------------------------------------------------------------------------------------

MIXTURE_SIDE, MIXTURE_CELL, MIXTURE_DAYS = 149, 50.0, 500.0  # cells along a side of three layers; ft


def mixture(method, repeats):
    """Figures of solvent into six components on 66,603 cells."""
    deck = mixture_flood.deck("gas", MIXTURE_DAYS, MIXTURE_SIDE, method, extent=MIXTURE_SIDE * MIXTURE_CELL)
    runs = []
    for _ in range(repeats):
        with tempfile.TemporaryDirectory() as scratch:
            (pathlib.Path(scratch) / "ECLIPSE.DATA").write_text(deck)
            runs.append(measure([BUILD / "kvr"], scratch, 1) | {"cells": cells_of(deck)})
    return medians(runs)


# --- a machine that others use -----------------------------------------------------------------------

SHARED_CASE, SHARED_STEPS, BUSY_PROCESSES = "FIVE5", "3*50", 3


@contextlib.contextmanager
def busy(count):
    """So many processes that do nothing but compute."""
    running = [subprocess.Popen([sys.executable, "-c", "while True: pass"]) for _ in range(count)]
    try:
        yield
    finally:
        for process in running:
            process.kill()
            process.wait()


def shared_run(decks, beside, repeats):
    """Figures by number of threads of the first steps of a run beside so many busy processes, taken in turn."""
    runs = {1: [], 2: []}
    with busy(beside):
        for _ in range(repeats):
            for threads, measured in runs.items():
                with tempfile.TemporaryDirectory() as scratch:
                    folder = placed(decks, SHARED_CASE, scratch, steps=SHARED_STEPS)
                    measured.append(measure([BUILD / "kvr"], folder, threads))
    return {threads: medians(measured) for threads, measured in runs.items()}
