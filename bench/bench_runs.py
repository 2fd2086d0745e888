"""Whole runs of bench/run: method beside method on the same deck, each with its distance from a reference curve beside
its time."""

import re
import shutil
import sys
import tempfile

import numpy

import bench_cases

sys.path.insert(0, str(bench_cases.ROOT / "tests" / "support"))
import curves  # noqa: E402
import kvr_run  # noqa: E402

LARGEST = "FIVE85"

# Number of lines from the injectors, the only option of a streamline run; where there is none the deck runs as
# published. The distances are held by tests/validation/test_bench_choices.py.
LINES = {"FIVE1": 30, "FIVE5": 250, "FIVE85": 1000, "QFS50": None, "LIVEWAT": None, "FAULTCP": None}

# Converged curves of another simulator, on the same grid or, `fine`, on cells of half the size.
CURVES = {"FIVE1": ("FIVE1_dt5", "FIVE1_fine"), "FIVE5": ("FIVE5_dt10",), "QFS50": ("QFS50_dt2",),
          "LIVEWAT": ("LIVEWAT",), "FAULTCP": ("FAULTCP",)}

REPORT_TIMES = numpy.arange(0.0, 2000.1, 50.0)
SHORT_STEPS = {LARGEST: "8*50"}  # of the largest case against our fully implicit run: to day 400

METHODS = ("streamlines", "fully implicit", "peer")
WEIGHED = ("FIVE1", "streamlines, pairs weighed")  # what the optimisation of rates costs before it changes any


def section(name, method):
    """The option section of a run, empty where it needs none."""
    if method == "fully implicit":
        return "\nTUNEKVR\nFDMETHOD\nFIM\n"
    lines = f"\nTUNEKVR\nNUMLINE\n{LINES[name]} /\n" if LINES[name] else ""
    return lines + "EQWAFS\nWFOOPT\n999999 0 1 2 -0.25 25 10 /\n" if method == WEIGHED[1] else lines


def row_name(name, method, threads=1):
    steps = " to day 400" if name in SHORT_STEPS else ""
    return f"{name}{steps}, {method}" + (f", {threads} threads" if threads > 1 else "")


def distances(decks, name, folder):
    """Mean difference of the water cut, difference of cumulative oil (%) and largest difference of the mean pressure
    (%), each the largest over the reference curves."""
    table = kvr_run.read_table(folder / "KVR_Run_Recovery.out")
    found = {}
    for curve in CURVES.get(name, ()):
        reference = kvr_run.read_csv(decks.parent / "reference" / f"{curve}.csv")
        mean, _ = curves.water_cut_difference(table, reference, REPORT_TIMES)
        end = min(table["TIME"][-1], reference["TIME"][-1])
        oil = 100.0 * (numpy.interp(end, table["TIME"], table["FOPT"])
                       / numpy.interp(end, reference["TIME"], reference["FOPT"]) - 1.0)
        known = reference["TIME"] <= table["TIME"][-1]
        pressure = numpy.interp(reference["TIME"][known], table["TIME"], table["FPR"]) / reference["FPR"][known]
        for key, value in (("waterCut", mean), ("oil", oil), ("pressureOff", 100.0 * abs(pressure - 1.0).max())):
            found[key] = max(found.get(key, 0.0), value, key=abs)
    return found


def largest_balance_error(folder):
    """Largest error of the balance of oil, water and gas at the end of a run, % of what was there."""
    table = kvr_run.read_table(folder / "KVR_Run_SweepVolume.out")
    return 100.0 * max(abs(table[column][-1]) for column in ("|MBEO|", "|MBEW|", "|MBEG|") if column in table)


def steps_taken(log):
    """Time steps of a run by its closing summary."""
    return int(re.findall(r"^Time .* (\d+) steps", log, re.MULTILINE)[-1])


def own_run(decks, name, method, threads=1, steps=None):
    """Figures of one run, in `steps` of its deck where they are given."""
    with tempfile.TemporaryDirectory() as scratch:
        folder = bench_cases.placed(decks, name, scratch, options=section(name, method), steps=steps)
        figures = bench_cases.measure([bench_cases.BUILD / "kvr"], folder, threads)
        log = (folder / "KVR_dbg.out").read_text(errors="replace")
        figures["cells"] = bench_cases.cells_of((folder / "ECLIPSE.DATA").read_text())
        figures["steps"] = steps_taken(log)
        figures["balance"] = largest_balance_error(folder)
        return figures | distances(decks, name, folder) | bench_cases.stage_seconds(log)


def peer_run(decks, name):
    with tempfile.TemporaryDirectory() as scratch:
        folder = bench_cases.placed(decks, name, scratch, options="")
        return bench_cases.measure(["flow", "ECLIPSE.DATA", f"--output-dir={folder}"], folder, 1)


def measured(decks, repeats, large, peer):
    """Figures of every case and method by row name; the methods of a case run in turn, so that all see the same
    machine, the largest case and the peer once."""
    rows = {}
    for name in LINES:
        if name == LARGEST and not large:
            continue
        times, steps = 1 if name == LARGEST else repeats, SHORT_STEPS.get(name)
        own = {method: [] for method in METHODS[:2] + (WEIGHED[1:] if name == WEIGHED[0] else ())}
        for _ in range(times):
            for method, runs in own.items():
                runs.append(own_run(decks, name, method, steps=steps))
        for method, runs in own.items():
            rows[row_name(name, method)] = bench_cases.medians(runs)
        two = [own_run(decks, name, METHODS[0], threads=2, steps=steps) for _ in range(times)]
        rows[row_name(name, METHODS[0], 2)] = bench_cases.medians(two)
        if name in SHORT_STEPS:
            rows[f"{name}, {METHODS[0]}"] = own_run(decks, name, METHODS[0])
        if peer and shutil.which("flow") and name != LARGEST:
            rows[row_name(name, METHODS[2])] = peer_run(decks, name)
    return rows
