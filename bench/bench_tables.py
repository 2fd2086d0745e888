"""Tables of bench/run, for the console or as markdown."""

import datetime
import platform
import subprocess

import bench_cases
import bench_runs

STAGE_ROWS = {"lines": "line stage", "pressure": "pressure stage", "wall": "whole run"}


def print_table(head, rows, markdown):
    """First column to the left, the others to the right."""
    cells = [head] + rows
    widths = [max(len(row[k]) for row in cells) for k in range(len(head))]

    def laid(row):
        texts = [row[0].ljust(widths[0])] + [text.rjust(width) for text, width in zip(row[1:], widths[1:])]
        return "| " + " | ".join(texts) + " |" if markdown else "  ".join(texts)

    print(laid(head))
    if markdown:
        print("|" + "|".join("---" if k == 0 else "---:" for k in range(len(head))) + "|")
    for row in rows:
        print(laid(row))
    print()


def print_lines(lines, markdown):
    print("\n".join(["```"] * markdown + lines + ["```"] * markdown) + "\n")


def first_line(command):
    try:
        done = subprocess.run(command, cwd=bench_cases.ROOT, stdout=subprocess.PIPE, stderr=subprocess.STDOUT,
                              text=True, check=True)
    except (OSError, subprocess.CalledProcessError):
        return "-"
    return done.stdout.splitlines()[0] if done.stdout else "-"


def processor():
    with open("/proc/cpuinfo", encoding="ascii", errors="replace") as info:
        names = [line.split(":", 1)[1].strip() for line in info if line.startswith("model name")]
    return f"{len(names)} x {names[0]}" if names else platform.machine()


def print_machine(markdown):
    rows = [["date", datetime.date.today().isoformat()], ["machine", processor()],
            ["compiler", first_line(["c++", "--version"])],
            ["commit", first_line(["git", "describe", "--always", "--dirty"])],
            ["peer simulator", first_line(["flow", "--version"])],
            ["peer multigrid", first_line(["dpkg-query", "-W", "-f", "${Package} ${Version}", "libhypre-dev"])]]
    print_table(["", ""], rows, markdown)


def figure(row, key, decimals):
    return f"{row[key]:.{decimals}f}" if key in row else ""


def bytes_per_cell(row):
    return f"{row['megabytes'] * 1e6 / row['cells']:.0f}" if "cells" in row and "megabytes" in row else ""


def print_rows(rows, baseline, markdown):
    if not rows:
        return
    table = []
    for name, row in rows.items():
        before = baseline.get(name, {}).get("user")
        table.append([name, figure(row, "user", 3), figure(row, "wall", 2), figure(row, "megabytes", 0),
                      bytes_per_cell(row), figure(row, "rate", 2), f"{row['user'] / before:.2f}" if before else "-"])
    print_table(["case", "user s", "wall s", "MB", "bytes/cell", "million/s", "against baseline"], table, markdown)


def print_distances(rows, markdown):
    """Each whole run's distance from its reference curves beside its time."""
    table = [[name, figure(row, "user", 2), figure(row, "steps", 0), figure(row, "waterCut", 4),
              figure(row, "oil", 2), figure(row, "pressureOff", 2), f"{row['balance']:.1e}",
              *(figure(row, stage, 2) for stage in ("pressure", "lines", "splitting"))]
             for name, row in rows.items() if "balance" in row]
    if table:
        print_table(["run", "user s", "steps", "water cut", "oil %", "pressure %", "balance %", "pressure s", "lines s",
                     "gravity s"], table, markdown)


def ratio(rows, text, above, below, key="user"):
    """A row of the table of ratios, where both were measured."""
    if above not in rows or below not in rows or not rows[below][key] > 0.0:
        return []
    return [[text, f"{rows[above][key] / rows[below][key]:.2f}"]]


def run_ratios(name, rows):
    own, implicit, peer = (bench_runs.row_name(name, method) for method in bench_runs.METHODS)
    two = bench_runs.row_name(name, bench_runs.METHODS[0], 2)
    table = ratio(rows, f"{own} over fully implicit", own, implicit) + ratio(rows, f"{own} over the peer", own, peer)
    for key, label in STAGE_ROWS.items():
        table += ratio(rows, f"{own}: one thread over two, {label}", own, two, key)
    return table


def step_control_name(name, word):
    return f"{name}, as published, step control {word}"


def step_control_cost(name, rows):
    on, off = rows.get(step_control_name(name, "Yes")), rows.get(step_control_name(name, "No"))
    return [[f"{name}: user seconds with step control over without", f"{on['user'] / off['user']:.2f}"]] if on and off else []


def fractured_name(method, continua):
    return f"five-spot of {bench_cases.FRACTURED_SIDE} by {bench_cases.FRACTURED_SIDE}, {continua}, {method}"


def fractured_cost(method, rows):
    both, one = (fractured_name(method, name) for name in bench_cases.CONTINUA)
    return ratio(rows, f"five-spot by {method}: two continua over one", both, one)


def shared_name(beside, threads):
    return f"three steps of {bench_cases.SHARED_CASE} on {threads} thread{'s' if threads > 1 else ''}, beside {beside} busy processes"


def shared_cost(beside, rows):
    one, two = rows.get(shared_name(beside, 1)), rows.get(shared_name(beside, 2))
    return [[f"two threads over one, wall, beside {beside} busy processes", f"{two['wall'] / one['wall']:.2f}"]] if one and two else []


def reading(name, rows):
    row = rows.get(f"deck reading/{name}")
    return [[f"{name}: peak of deck reading over its arrays", f"{row['overFilled']:.2f}"]] if row else []


def print_ratios(rows, markdown):
    table = []
    for name in bench_runs.LINES:
        table += run_ratios(name, rows) + reading(name, rows)
    for name in bench_cases.STEP_CONTROL_DECKS:
        table += step_control_cost(name, rows)
    for method in bench_cases.FRACTURED_METHODS:
        table += fractured_cost(method, rows)
    for beside in (0, bench_cases.BUSY_PROCESSES):
        table += shared_cost(beside, rows)
    if table:
        print_table(["ratio", ""], table, markdown)
