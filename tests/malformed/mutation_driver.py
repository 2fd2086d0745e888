"""What the drivers of damaged inputs share: words of the command line, the loop over the trials, and the tables of
what came of them. A driver gives the function that makes and runs trial `n` and returns its row."""

import argparse
import collections
import concurrent.futures
import csv
import os
import pathlib
import sys
import time

import mutated_run

REPOSITORY = pathlib.Path(__file__).resolve().parents[2]
FASTEST = pathlib.Path("/dev/shm")


def parser(description, count, what):
    words = argparse.ArgumentParser(description=description, formatter_class=argparse.RawDescriptionHelpFormatter)
    words.add_argument("--count", type=int, default=count)
    words.add_argument("--seed", type=int, default=1)
    words.add_argument("--first", type=int, default=1, help=f"number of the first {what}")
    words.add_argument("--only", type=int, nargs="+", metavar="N")
    words.add_argument("--jobs", type=int, default=1)
    words.add_argument("--seconds", type=float, default=float("inf"), help="no further one is begun behind this time")
    words.add_argument("--program", type=pathlib.Path,
                       default=os.environ.get("KVR_PROGRAM") or REPOSITORY / "build" / "sanitize" / "kvr")
    words.add_argument("--processes", action="store_true", help="each run is a process of its own, no fork; slower")
    words.add_argument("--plain", type=pathlib.Path, help="runs again what a sanitized program has no memory for")
    words.add_argument("--keep", type=pathlib.Path, help="folder that those of --only are left in")
    words.add_argument("--out", type=pathlib.Path, help="folder of the figures and of what failed")
    return words


def scratch_root():
    return FASTEST if FASTEST.is_dir() and os.access(FASTEST, os.W_OK) else None


def worst(row, verdicts):
    """The verdict of a row: the first bad one of its columns, or that of the last."""
    return next((row[column] for column in verdicts if row[column] in mutated_run.BAD), row[verdicts[-1]])


def fails(row, verdicts):
    return worst(row, verdicts) in mutated_run.BAD


def again_without_sanitizer(options, trial, folder, words):
    """A sanitizer cannot hand a lack of memory to the program, so that this is judged without one."""
    if trial.verdict != "memory" or options.plain is None:
        return trial
    limit = mutated_run.Processes("/usr/bin/prlimit")
    return mutated_run.run(limit, folder, (f"--as={mutated_run.MEMORY_MB << 20}", str(options.plain), *words))


def table(rows, column, verdicts, what):
    counts = collections.defaultdict(collections.Counter)
    for row in rows:
        counts[row[column]][worst(row, verdicts)] += 1
    met = set().union(*counts.values()) if counts else set()
    shown = mutated_run.GOOD + tuple(v for v in mutated_run.BAD if v in met)
    lines = [f"| {column} | {what} | " + " | ".join(shown) + " |", "|---|" + "---:|" * (1 + len(shown))]
    for name, found in sorted(counts.items()):
        lines.append(f"| {name} | {sum(found.values())} | " + " | ".join(str(found[v]) for v in shown) + " |")
    return "\n".join(lines) + "\n"


def summary(rows, seconds, verdicts, columns, what):
    bad = [row for row in rows if fails(row, verdicts)]
    causes = collections.defaultdict(list)
    for row in bad:
        causes[(worst(row, verdicts), row["cause"])].append(row["number"])
    text = f"{len(rows)} damaged {what} in {seconds:.0f} s, {len(bad)} ended badly\n\n"
    for column in columns:
        text += table(rows, column, verdicts, what) + "\n"
    for (verdict, cause), numbers in sorted(causes.items(), key=lambda item: -len(item[1])):
        text += f"{len(numbers)} x {verdict}: {cause}   {what} {' '.join(map(str, numbers[:6]))}\n"
    return text


def run_all(options, try_one, columns, verdicts, file_name):
    """Rows as they come; a table of them grows in the folder of --out."""
    numbers = iter(options.only or range(options.first, options.first + options.count))
    begin, rows, waiting = time.monotonic(), [], set()
    sink = open(options.out / file_name, "a", newline="") if options.out else open(os.devnull, "w")
    with sink, concurrent.futures.ThreadPoolExecutor(options.jobs) as pool:
        writer = csv.DictWriter(sink, columns)
        if sink.tell() == 0:
            writer.writeheader()
        while True:
            late = time.monotonic() - begin > options.seconds
            while not late and len(waiting) < 2 * options.jobs and (number := next(numbers, None)) is not None:
                waiting.add(pool.submit(try_one, number))
            if not waiting:
                return rows, time.monotonic() - begin
            done, waiting = concurrent.futures.wait(waiting, return_when=concurrent.futures.FIRST_COMPLETED)
            for trial in done:
                row = trial.result()
                rows.append(row)
                writer.writerow(row)
                sink.flush()
                if fails(row, verdicts):
                    print(" ".join(f"{row[name]}" for name in columns), flush=True)


def starter(options):
    """The server of forks is built beside the program, of the same library."""
    if options.processes:
        return mutated_run.Processes(options.program)
    server, library = options.program.parent / "tests" / "fork_server", options.program.parent / "libkvr_core.a"
    if not server.exists():
        sys.exit(f"{server} is not there: build it, or say --processes")
    if library.exists() and library.stat().st_mtime > server.stat().st_mtime:
        sys.exit(f"{server} is older than the library: build it, or say --processes")
    return mutated_run.Forks(server)


def prepare(options):
    """Whole paths, limits, what starts a run, and the folder of the figures."""
    options.program = pathlib.Path(options.program).resolve()
    options.starter = starter(options)
    options.plain = options.plain.resolve() if options.plain else None
    mutated_run.limit_this_process()
    if options.out:
        options.out.mkdir(parents=True, exist_ok=True)


def finish(options, text, rows, verdicts):
    print(text)
    if options.out:
        (options.out / "summary.md").write_text(text)
    sys.exit(1 if any(fails(row, verdicts) for row in rows) else 0)
