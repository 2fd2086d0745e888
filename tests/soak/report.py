"""Results of a soak as a table of all figures and as a summary to read."""

import collections
import csv
import math

from trial import CRITERIA, FINE, REQUIRED

COLUMNS = ("seed", "class", "method", "cells", "wells", "days", "maxdt", "lines", "line", "options", "status", "cause", "cpu",
           "memory", "console", "steps", "cuts", "switches", "last_time", "balance", "moved", "over_target", "over_well",
           "pressure", "saturation", "FOPT", "FWPT", "FGPT", "FWIT", "FGIT", "FOIP", "FWIP", "FGIP", "settled")
DIFFERENCES = ("oil", "water", "gas")


def shown(value):
    return f"{value:.6g}" if isinstance(value, float) else value


def write_table(rows, path):
    """One line per run."""
    with open(path, "w", newline="") as file:
        writer = csv.writer(file)
        writer.writerow(COLUMNS + tuple(f"d_{name}" for name in DIFFERENCES) + CRITERIA + ("warnings", "complaint"))
        for row in rows:
            apart = row["differences"] or {}
            writer.writerow([shown(row[name]) for name in COLUMNS] + [shown(apart.get(name, "")) for name in DIFFERENCES]
                            + [row["passes"][name] for name in CRITERIA] + [row["warnings"], row["complaint"]])


def holds(row):
    return all(row["passes"][name] for name in REQUIRED)


def causes(row):
    """What is wrong with a run: how it ended, or else the criteria that it misses."""
    if row["cause"] == "message":
        return [f"message: {row['complaint'][:70]}"]
    if row["cause"]:
        return [row["cause"]]
    return [name for name in REQUIRED if not row["passes"][name]]


def quantile(values, share):
    values = sorted(value for value in values if not math.isnan(value))
    return values[min(len(values) - 1, int(share * len(values)))] if values else math.nan


def class_table(rows):
    """Runs that hold each criterion, by class and method."""
    groups = collections.defaultdict(list)
    for row in rows:
        groups[row["class"], row["method"]].append(row)
        groups["all", row["method"]].append(row)
    lines = ["| class | method | runs | pass | " + " | ".join(CRITERIA) + " |", "|" + "---|" * (4 + len(CRITERIA))]
    for (name, method), group in sorted(groups.items(), key=lambda item: (item[0][0] != "all", item[0])):
        counts = []
        for criterion in CRITERIA:
            judged = [row["passes"][criterion] for row in group if row["passes"][criterion] is not None]
            counts.append(f"{sum(judged)}/{len(judged)}" if criterion == "agrees" else f"{sum(judged)}")
        lines.append(f"| {name} | {method} | {len(group)} | {sum(map(holds, group))} | " + " | ".join(counts) + " |")
    return lines


def cause_list(rows):
    """Seeds by what went wrong, most frequent first."""
    seeds = collections.defaultdict(list)
    for row in rows:
        for cause in causes(row):
            seeds[row["method"], cause].append(f"{row['seed']} ({row['class']})")
    lines = ["| method | cause | runs | seeds |", "|---|---|---|---|"]
    for (method, cause), found in sorted(seeds.items(), key=lambda item: -len(item[1])):
        more = f", and {len(found) - 12} more" if len(found) > 12 else ""
        lines.append(f"| {method} | {cause.replace('|', '/')} | {len(found)} | {', '.join(found[:12])}{more} |")
    return lines


def agreement_table(rows):
    lines = ["| method | compared | median | 90 % | beyond the limit, seeds |", "|---|---|---|---|---|"]
    for method in sorted({row["method"] for row in rows} - {"FIM", FINE}):
        found = [(max(row["differences"].values()), row) for row in rows
                 if row["method"] == method and row["differences"] and row["settled"]]
        values = [value for value, _ in found]
        far = sorted((item for item in found if not item[1]["passes"]["agrees"]), key=lambda item: -item[0])
        seeds = ", ".join(f"{row['seed']} ({100 * value:.0f} %)" for value, row in far[:15])
        lines.append(f"| {method} | {len(found)} | {100 * quantile(values, 0.5):.2f} % | {100 * quantile(values, 0.9):.1f} % | "
                     f"{len(far)}: {seeds} |")
    return lines


def balance_table(rows):
    lines = ["| method | median | 99 % | largest | above 0.5 % | above 1 % |", "|---|---|---|---|---|---|"]
    for method in sorted({row["method"] for row in rows}):
        values = [row["balance"] for row in rows if row["method"] == method and row["passes"]["ends"]]
        lines.append(f"| {method} | {quantile(values, 0.5):.1e} | {quantile(values, 0.99):.1e} | {quantile(values, 1.0):.1e} | "
                     f"{sum(value > 0.005 for value in values)} | {sum(value > 0.01 for value in values)} |")
    return lines


def summary(rows):
    """The whole page."""
    models = {(row["seed"], row["class"]) for row in rows}
    apart = sorted({row["seed"] for row in rows if row["settled"] is False})
    warned = collections.Counter(row["warnings"] for row in rows if row["warnings"])
    seconds = collections.defaultdict(list)
    for row in rows:
        seconds[row["method"]].append(row["cpu"])
    cost = ", ".join(f"{method} {sum(values) / len(values):.2f} s mean, {max(values):.1f} s largest"
                     for method, values in sorted(seconds.items()))
    parts = [f"# Soak of {len(models)} models, {len(rows)} runs", "", f"Processor time of a run: {cost}.", "",
             "## Runs that hold each criterion", "", *class_table(rows), "", "## Balance of the runs that came to their end", "",
             *balance_table(rows), "", "## Totals against the fully implicit run", "",
             f"Models whose fully implicit totals move by more than 2 % with a quarter of the step ({len(apart)}) are left out: "
             f"{', '.join(map(str, apart))}", "", *agreement_table(rows), "", "## Failing seeds by cause", "", *cause_list(rows), "",
             "## Warnings about the input", ""]
    parts += [f"- {count} runs: {text}" for text, count in warned.most_common(12)] or ["None."]
    return "\n".join(parts) + "\n"
