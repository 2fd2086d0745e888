"""Pictures of a run whose rates were optimised: pairs of wells, rates before and after, oil beside another run."""

import csv
import re

import numpy
from matplotlib import pyplot

from plotting.pictures import save
from plotting.run_files import Trouble, read_curves

WIDEST = 7.0  # points, of the pair that carries most


def pair_rows(case):
    """Injector, producer, flux and efficiency of the pairs of the last step that was looked at."""
    files = sorted(case.folder.glob(f"{case.name}_OPT_*WFLD_REALOC[0-9]*_ITE_*.out"))
    if not files:
        raise Trouble(f"{case.name} in {case.folder} has no optimised rates (EQWAFS, EQARRIVE, NPVOPT, OPTIMIZE)")
    text = files[-1].read_text()
    body = text[text.index(" Injector Producer"):text.index(" Well ")].splitlines()[1:]
    words = [line.split() for line in body]
    day = float(re.search(r"Simulation Time = (\S+)", text)[1])
    return day, [(row[0], row[1], float(row[2]), float(row[4])) for row in words]


def rate_rows(case):
    """Unit, and deck rate and last rate of each well, injectors first."""
    path = case.path("KVR_RateChanges.csv")
    if not path.exists():
        raise Trouble(f"no rate of {case.name} has been changed: {path.name} is not there")
    wells = {}
    with open(path, newline="") as file:
        for row in csv.DictReader(file):
            wells[row["WELL"]] = (row["KIND"], row["UNIT"].lower(), float(row["DECK"]), float(row["NEW"]))
    return dict(sorted(wells.items(), key=lambda item: item[1][0]))


def draw_pairs(axis, figure, case, places):
    day, pairs = pair_rows(case)
    known = [pair for pair in pairs if pair[0] in places and pair[1] in places]
    if not known:
        raise Trouble(f"the places of the wells of {case.name} are not in its log")
    most = max(flux for _, _, flux, _ in known)
    colours = pyplot.get_cmap("RdYlGn")
    for injector, producer, flux, efficiency in known:
        ends = numpy.array([places[injector], places[producer]])
        axis.plot(ends[:, 0], ends[:, 1], color=colours(efficiency), linewidth=max(0.5, WIDEST * flux / most), zorder=1)
    for name, (x, y) in places.items():
        injects = any(name == pair[0] for pair in pairs)
        axis.plot(x, y, "v" if injects else "o", color="#123a73" if injects else "#222222", zorder=2)
        axis.annotate(name, (x, y), xytext=(5, 4), textcoords="offset points", fontsize=9, zorder=3)
    axis.set_aspect("equal", adjustable="datalim")
    axis.invert_yaxis()
    axis.set_title(f"pairs at {day:g} days: width by flux")
    axis.set_xlabel("ft")
    figure.colorbar(pyplot.cm.ScalarMappable(cmap=colours), ax=axis, label="efficiency: oil at the producer over flux")


def draw_rates(axis, case):
    wells = rate_rows(case)
    at = numpy.arange(len(wells))
    axis.bar(at - 0.2, [row[2] for row in wells.values()], 0.4, color="#bbbbbb", label="schedule")
    axis.bar(at + 0.2, [row[3] for row in wells.values()], 0.4, label="at the end",
             color=["#2a7fb8" if row[0] == "inj" else "#2e7d32" for row in wells.values()])
    axis.set_xticks(at, list(wells))
    axis.set_ylabel(next(iter(wells.values()))[1])
    axis.set_title("rates")
    axis.legend()
    return wells


def draw_gain(axis, case, beside):
    curves = read_curves(case)
    axis.plot(curves.days, curves.values["FOPT"], color="#2e7d32", label="optimised")
    if beside is not None:
        base = read_curves(beside)
        axis.plot(base.days, base.values["FOPT"], color="#888888", label="base run")
    axis.set_title("oil produced")
    axis.set_xlabel("days")
    axis.set_ylabel(curves.units["FOPT"].lower())
    axis.grid(color="#dddddd", linewidth=0.6)
    axis.legend()


def draw_optimisation(case, beside, places, stem, data, written):
    figure, axes = pyplot.subplots(1, 3, figsize=(18.0, 5.2), layout="constrained")
    draw_pairs(axes[0], figure, case, places)
    wells = draw_rates(axes[1], case)
    draw_gain(axes[2], case, beside)
    table = (["well", "schedule", "end"], [list(wells), [row[2] for row in wells.values()], [row[3] for row in wells.values()]])
    save(figure, stem, table if data else None, written)
