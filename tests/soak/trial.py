"""Runs one random model by each method and judges what comes out."""

import dataclasses
import math
import pathlib
import sys
import tempfile

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[1] / "support"))

import run_judge  # noqa: E402
from deck import deck_text  # noqa: E402
from deck_schedule import Schedule  # noqa: E402
from limited_run import CONSOLE, CPU_SECONDS, run_limited  # noqa: E402
from models import draw_model  # noqa: E402

SATURATION_LIMIT = 1e-3
PRESSURE_LIMIT = 1.5  # field pressure over the highest held or initial one; depth adds to it
AGREEMENT_LIMIT = 0.05
LEAST_SHARE = 0.02  # of all that has moved, in a comparison of a phase
LEAST_MOVED = 1e-3  # of the phase in place; less is no flow to compare
STEP_DIVISOR = 4
STEP_LIMIT = 0.02  # a model whose own answer moves by more is listed apart
FINE = f"FIM/{STEP_DIVISOR}"
NO_COMPLAINT = ("WARNING :: Dead oil PVT table confirmed",)

CRITERIA = ("ends", "finite", "saturations", "balance", "moved", "target", "pressure", "console", "agrees")
# What is asked of every run; agreement is a figure of the methods, not a fault of a run.
REQUIRED = CRITERIA[:-1]


@dataclasses.dataclass
class Outcome:
    ended: object
    figures: object
    at_end: bool
    warnings: str
    cuts: int  # of steps that did not converge
    switches: int  # of wells to a limit and back


def run_text(program, text, cpu_seconds, active=None):
    """Runs a deck in a scratch folder."""
    schedule = Schedule(text)
    with tempfile.TemporaryDirectory(prefix="soak_") as name:
        folder = pathlib.Path(name)
        (folder / "ECLIPSE.DATA").write_text(text)
        ended = run_limited(program, folder, cpu_seconds)
        figures = run_judge.measure(folder, schedule, active)
        return Outcome(ended, figures, run_judge.reached_end(figures, schedule), deck_warnings(folder / "KVR_dbg.out"),
                       *count_lines(folder / CONSOLE, (b"TIME STEP SIZE IS DECREASED", b"WELL CONTROL ::")))


def count_lines(path, texts):
    """How many lines hold each text."""
    counts = [0] * len(texts)
    with open(path, "rb") as lines:
        for line in lines:
            for n, text in enumerate(texts):
                counts[n] += text in line
    return counts


def deck_warnings(log):
    """Complaints about the input: none is expected of a legal deck."""
    if not log.exists():
        return ""
    head = log.read_text(errors="replace").split("INITIALIZING")[0]
    found = {line.strip() for line in head.splitlines() if "WARNING" in line or "not surpported" in line}
    return "; ".join(sorted(line for line in found if not line.startswith(NO_COMPLAINT)))[:300]


def run_method(program, model, method, divisor=1, cpu_seconds=CPU_SECONDS):
    """A row of the results: what was run, what was measured, what is held of it."""
    text = deck_text(model, method, divisor)
    outcome = run_text(program, text, cpu_seconds, model.grid.active.ravel())
    o, ended, figures = model.options, outcome.ended, outcome.figures
    row = {
        "seed": model.seed, "class": model.family, "method": method if divisor == 1 else FINE,
        "cells": model.grid.cells(), "wells": len(model.wells), "days": model.days(), "maxdt": o.longest / divisor,
        "lines": f"{o.lines} {o.start} {'Yes' if o.missed else 'No'}",
        "line": f"{o.line_solver} {o.nodes} {o.factor:g} {o.upwind}{'' if o.line_compressibility else ' rigid'}"
                f"{' projected' if o.projection else ''}",
        "options": f"map {o.mappings} every {o.pressure_every} repeat {o.repetitions} ends {int(o.end_points)} {o.solver}",
        "status": ended.status, "cause": ended.cause(), "cpu": ended.cpu_seconds, "memory": ended.memory,
        "console": ended.console_size, "steps": figures.steps, "cuts": outcome.cuts, "switches": outcome.switches,
        "last_time": figures.last_time,
        "balance": figures.balance, "moved": figures.balance_moved, "over_target": figures.over_target,
        "over_well": figures.over_well, "pressure": figures.pressure, "saturation": figures.saturation,
        "warnings": outcome.warnings, "complaint": ended.complaint() if ended.status else ended.errors.strip()[:200],
    }
    row.update({name: figures.totals.get(name, math.nan) for name in ("FOPT", "FWPT", "FGPT", "FWIT", "FGIT")})
    row.update({name: figures.in_place.get(name, math.nan) for name in ("FOIP", "FWIP", "FGIP")})
    row["passes"] = judge(row, figures, outcome.at_end)
    return row


def within(value, limit):
    """Whether a figure holds its limit; one that could not be taken does not."""
    return bool(abs(value) <= limit)


def balance_limit(method):
    return run_judge.IMPLICIT_BALANCE_LIMIT if method.startswith("FIM") else run_judge.BALANCE_LIMIT


def judge(row, figures, at_end):
    return {
        "ends": row["status"] == 0 and at_end,
        "finite": figures.finite,
        "saturations": within(row["saturation"], SATURATION_LIMIT),
        "balance": within(row["balance"], balance_limit(row["method"])),
        "moved": within(row["moved"], run_judge.BALANCE_LIMIT),
        "target": bool(row["over_target"] <= run_judge.TARGET_LIMIT),
        "pressure": within(row["pressure"], PRESSURE_LIMIT),
        "console": row["console"] < run_judge.CONSOLE_LIMIT or row["method"] == FINE,
    }


def differences(row, reference):
    """Oil, water and gas of a run against another, the larger of what was produced and injected."""
    liquid = max(reference["FOPT"] + reference["FWPT"], reference["FWIT"])
    gas = max(reference["FGPT"], reference["FGIT"])

    def difference(name, moved):
        base = max(reference[name], LEAST_SHARE * moved, LEAST_MOVED * reference[name[:2] + "IP"])
        return abs(row[name] - reference[name]) / base if base > 0.0 else 0.0

    return {"oil": difference("FOPT", liquid),
            "water": max(difference("FWPT", liquid), difference("FWIT", liquid)),
            "gas": max(difference("FGPT", gas), difference("FGIT", gas))}


def compare(rows):
    """Adds to each row how far its totals are from those of the fully implicit run."""
    by_method = {row["method"]: row for row in rows}
    fine, implicit = by_method.get(FINE), by_method.get("FIM")
    settled = None
    if implicit and fine and implicit["passes"]["ends"] and fine["passes"]["ends"]:
        settled = max(differences(implicit, fine).values()) <= STEP_LIMIT
    for row in rows:
        reference = fine if row["method"] == "FIM" else implicit
        row["settled"] = settled
        row["passes"]["agrees"] = None
        row["differences"] = None
        if reference is None or row["method"] == FINE or not (reference["passes"]["ends"] and row["passes"]["ends"]):
            continue
        row["differences"] = differences(row, reference)
        if row["method"] != "FIM":
            row["passes"]["agrees"] = within(max(row["differences"].values()), AGREEMENT_LIMIT)
    return rows


def run_model(program, seed, name, methods, steps_too, cpu_seconds=CPU_SECONDS):
    """Rows of all runs of one model; with `steps_too` also of the fully implicit one with shorter steps."""
    model = draw_model(seed, name)
    rows = [run_method(program, model, method, 1, cpu_seconds) for method in methods]
    if steps_too and any(row["method"] == "FIM" and row["passes"]["ends"] for row in rows):
        rows.append(run_method(program, model, "FIM", STEP_DIVISOR, STEP_DIVISOR * cpu_seconds))
    return compare(rows)
