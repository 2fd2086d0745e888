"""One damaged deck run under limits and judged: how it ended, and whether what it left can be read."""

import dataclasses
import math
import os
import pathlib
import re
import resource
import signal
import struct
import subprocess
import threading
import time

CPU_SECONDS = 10.0  # of a run; reading must never take them, a run may be long because its deck is
END_SECONDS = 10.0  # more for a run that was asked to end: its step, its closing summary
MEMORY_MB = 2048
FILE_SIZE = 100 << 20  # bytes of any one file
POLL_SECONDS = 0.05
CONSOLE, ERRORS = "console.txt", "errors.txt"
TAIL = 20000  # bytes of the console that are searched for a message
SANITIZER = re.compile(rb"runtime error:|ERROR: (?:Address|Leak|UndefinedBehavior)Sanitizer|Sanitizer:DEADLYSIGNAL")
OUT_OF_MEMORY = re.compile(rb"hard rss limit exhausted|allocation-size-too-big|out-of-memory|out of memory: allocator")
MESSAGE = re.compile(rb"error|out of memory|cannot|not specified|failed|invalid", re.IGNORECASE)

GOOD = ("ended", "message", "long")
BAD = ("crash", "sanitizer", "silent", "hang", "slow reading", "memory", "flood", "unreadable")


@dataclasses.dataclass
class Trial:
    verdict: str
    cause: str  # one line; equal for equal causes
    cpu_seconds: float
    memory_mb: float
    status: int


def limit_this_process():
    """Limits that every child inherits; time and memory of a sanitized program are watched from here."""
    resource.setrlimit(resource.RLIMIT_CORE, (0, 0))
    resource.setrlimit(resource.RLIMIT_FSIZE, (FILE_SIZE, FILE_SIZE))


def environment_of_runs():
    sanitizer = f"hard_rss_limit_mb={MEMORY_MB}:max_allocation_size_mb={MEMORY_MB}:detect_leaks=0"
    # With the wait policy set the program need not start itself a second time.
    return dict(os.environ, OMP_NUM_THREADS="1", OPENBLAS_NUM_THREADS="1", OMP_WAIT_POLICY="passive", ASAN_OPTIONS=sanitizer,
                UBSAN_OPTIONS="print_stacktrace=1")


def cpu_of(pid):
    """Seconds that a living process and the commands that it has run have used."""
    try:
        with open(f"/proc/{pid}/stat") as stat:
            fields = stat.read().rsplit(")", 1)[1].split()
    except OSError:
        return 0.0
    return sum(map(int, fields[11:15])) / os.sysconf("SC_CLK_TCK")


def watched(process, cpu_seconds, end_seconds):
    """Waits for the end; asks for it behind `cpu_seconds` of processor time, forces it behind `end_seconds` more.
    Returns state, usage, and whether it was asked or forced."""
    ended = []
    waiter = threading.Thread(target=lambda: ended.extend(os.wait4(process.pid, 0)[1:]))
    waiter.start()
    waiter.join(cpu_seconds)
    asked = forced = False
    while waiter.is_alive():
        used = cpu_of(process.pid)
        if not forced and used > cpu_seconds + end_seconds:
            forced = True
            os.kill(process.pid, signal.SIGKILL)
        elif not asked and used > cpu_seconds:
            asked = True
            os.kill(process.pid, signal.SIGTERM)
        waiter.join(POLL_SECONDS)
    state, usage = ended
    return os.waitstatus_to_exitcode(state), usage, asked, forced


def tail_of(path):
    size = path.stat().st_size
    with open(path, "rb") as file:
        file.seek(max(0, size - TAIL))
        return file.read()


def cause_of_sanitizer(text):
    """The complaint and the first place of our own sources, addresses taken out."""
    line = SANITIZER.search(text)
    complaint = text[line.start():].split(b"\n")[0].decode(errors="replace")
    complaint = re.sub(r"0x[0-9a-f]+|-?\d[\d.e+]*", "N", complaint)[:160]
    source = re.search(rb"src/([\w/]+\.[ch]pp:\d+)", text)
    return f"{source.group(1).decode() if source else '?'} {complaint}"


def judge_end(status, asked, forced, console, errors):
    """Verdict and cause of how a process ended."""
    both = console + errors
    if OUT_OF_MEMORY.search(both):
        place = re.search(rb"src/([\w/]+\.[ch]pp:\d+)", both)
        return "memory", place.group(1).decode() if place else "?"
    if SANITIZER.search(both):
        return "sanitizer", cause_of_sanitizer(errors if SANITIZER.search(errors) else console)
    if forced:
        return "hang", ""
    if asked:
        return ("long", "") if status in (0, 1, 128 + signal.SIGTERM) else ("crash", f"signal {-status}")
    if status == -signal.SIGXFSZ:
        return "flood", ""
    if status < 0:
        return "crash", f"signal {-status}"
    if status == 0:
        return "ended", ""
    lines = [line.strip() for line in both.splitlines() if MESSAGE.search(line)]
    if not lines:
        return "silent", f"status {status}"
    return "message", re.sub(r"-?\d[\d.e+-]*", "N", lines[-1].decode(errors="replace"))[:100]


def bad_records(data):
    """Whether a binary file is not made of whole records between equal length marks."""
    at = 0
    while at < len(data):
        if at + 4 > len(data):
            return True
        length = struct.unpack_from(">i", data, at)[0]
        if length < 0 or at + 8 + length > len(data) or data[at:at + 4] != data[at + 4 + length:at + 8 + length]:
            return True
        at += 8 + length
    return False


def unreadable_sheet(path):
    """What is wrong with a table of comma separated values, empty where nothing is."""
    lines = path.read_text(errors="replace").splitlines()
    width = lines[0].count(",") if lines else 0
    for number, line in enumerate(lines, 1):
        if line.count(",") != width:
            return f"{path.name} has a row of another width"
        if number <= 2:
            continue  # names and units
        for word in line.split(","):
            try:
                if not math.isfinite(float(word)):
                    return f"{path.name} holds a value that is not finite"
            except ValueError:
                if not re.fullmatch(r"\d{4}-\d\d-\d\d|[\w-]*", word):
                    return f"{path.name} holds a word that is no number"
    return ""


BINARY = re.compile(r"\.(X\d{4}|S\d{4}|SMSPEC|EGRID|INIT|UNRST|UNSMRY)$")


def unreadable_results(folder, inputs, own_files=True):
    """What is wrong with the results; without `own_files` the binary files are another program's, damaged ones too."""
    for path in folder.iterdir():
        if path.name in inputs or not path.is_file():
            continue
        if path.name.endswith("_Summary.csv"):
            wrong = unreadable_sheet(path)
            if wrong:
                return wrong
        elif own_files and BINARY.search(path.name) and bad_records(path.read_bytes()):
            return f"*{path.suffix[:2]} has broken records"
    return ""


def run(program, folder, words=(), cpu_seconds=CPU_SECONDS, end_seconds=END_SECONDS, own_files=True):
    """Runs `ECLIPSE.DATA` of a folder; console and errors go to files there."""
    folder = pathlib.Path(folder)
    inputs = {path.name for path in folder.iterdir()}
    with open(folder / CONSOLE, "wb") as console, open(folder / ERRORS, "wb") as errors:
        process = subprocess.Popen([str(program), *words], cwd=folder, stdin=subprocess.DEVNULL, stdout=console,
                                   stderr=errors, env=environment_of_runs(), close_fds=False)
        status, usage, asked, forced = watched(process, cpu_seconds, end_seconds)
    process.returncode = status
    verdict, cause = judge_end(status, asked, forced, tail_of(folder / CONSOLE), tail_of(folder / ERRORS))
    if verdict in ("ended", "long") and status in (0, 128 + signal.SIGTERM):
        wrong = unreadable_results(folder, inputs | {CONSOLE, ERRORS}, own_files)
        verdict, cause = ("unreadable", wrong) if wrong else (verdict, cause)
    return Trial(verdict, cause, usage.ru_utime + usage.ru_stime, usage.ru_maxrss / 1024.0, status)


def check(program, folder, cpu_seconds=CPU_SECONDS):
    """The same deck, read and checked alone: it must never come near the limit of time."""
    trial = run(program, folder, ("--check", "ECLIPSE.DATA"), cpu_seconds, end_seconds=1.0)
    if trial.cpu_seconds >= cpu_seconds:
        trial.verdict = "slow reading"
    return trial
