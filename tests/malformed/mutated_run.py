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

READING_SECONDS = 10.0  # of processor time, which reading must never take
RUN_SECONDS = 3.0  # a run may be long because its deck is: it is asked to end
SLEEP_SECONDS = 5.0  # on the clock, of a fork that waits for nothing
END_SECONDS = 30.0  # more for a run that was asked to end: its step, of up to a thousand sub-steps, its closing summary
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


@dataclasses.dataclass
class End:
    """How a process ended: its exit code, what it used, and whether it was "left" alone, "asked" or "forced" to end, or
    its memory was "exhausted"."""
    status: int
    cpu_seconds: float
    memory_mb: float
    done: str


def limit_this_process():
    """Limits that every child inherits; time and memory of a sanitized program are watched from here."""
    resource.setrlimit(resource.RLIMIT_CORE, (0, 0))
    resource.setrlimit(resource.RLIMIT_FSIZE, (FILE_SIZE, FILE_SIZE))


def environment_of_runs(rss_limit=True):
    """A limit of resident memory is held by a thread of the sanitizer, which a fork has not."""
    sanitizer = f"max_allocation_size_mb={MEMORY_MB}:detect_leaks=0" + (f":hard_rss_limit_mb={MEMORY_MB}" if rss_limit else "")
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
    """Waits for the end; asks for it behind `cpu_seconds` of processor time, forces it behind `end_seconds` more."""
    ended = []
    waiter = threading.Thread(target=lambda: ended.extend(os.wait4(process.pid, 0)[1:]))
    waiter.start()
    waiter.join(cpu_seconds)
    done = "left"
    while waiter.is_alive():
        used = cpu_of(process.pid)
        if done != "forced" and used > cpu_seconds + end_seconds:
            done = "forced"
            os.kill(process.pid, signal.SIGKILL)
        elif done == "left" and used > cpu_seconds:
            done = "asked"
            os.kill(process.pid, signal.SIGTERM)
        waiter.join(POLL_SECONDS)
    state, usage = ended
    return End(os.waitstatus_to_exitcode(state), usage.ru_utime + usage.ru_stime, usage.ru_maxrss / 1024.0, done)


class Processes:
    """Each run is a process of its own."""

    def __init__(self, program):
        self.program = program

    def run(self, folder, words, cpu_seconds, end_seconds):
        with open(folder / CONSOLE, "wb") as console, open(folder / ERRORS, "wb") as errors:
            process = subprocess.Popen([str(self.program), *words], cwd=folder, stdin=subprocess.DEVNULL, stdout=console,
                                       stderr=errors, env=environment_of_runs(), close_fds=False)
            end = watched(process, cpu_seconds, end_seconds)
        process.returncode = end.status
        return end


class Forks:
    """Each run is a fork of one process that has the program loaded (tests/support/fork_server.cpp); a server for each
    thread that asks."""

    def __init__(self, server):
        self.server = server
        self.own = threading.local()

    def process(self):
        if not hasattr(self.own, "process"):
            self.own.process = subprocess.Popen([str(self.server)], stdin=subprocess.PIPE, stdout=subprocess.PIPE, text=True,
                                                env=environment_of_runs(rss_limit=False))
        return self.own.process

    def run(self, folder, words, cpu_seconds, end_seconds):
        process = self.process()
        request = (cpu_seconds, end_seconds, SLEEP_SECONDS, MEMORY_MB << 10, folder, *words)
        process.stdin.write("\t".join(map(str, request)) + "\n")
        process.stdin.flush()
        state, used, peak, done = process.stdout.readline().split()
        return End(os.waitstatus_to_exitcode(int(state)), float(used), int(peak) / 1024.0, done)


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


def judge_end(end, console, errors):
    """Verdict and cause of how a process ended."""
    both, status = console + errors, end.status
    if end.done == "exhausted":
        return "memory", "?"
    if OUT_OF_MEMORY.search(both):
        place = re.search(rb"src/([\w/]+\.[ch]pp:\d+)", both)
        return "memory", place.group(1).decode() if place else "?"
    if SANITIZER.search(both):
        return "sanitizer", cause_of_sanitizer(errors if SANITIZER.search(errors) else console)
    if end.done == "forced":
        return "hang", ""
    if end.done == "asked":
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


def run(starter, folder, words=(), cpu_seconds=RUN_SECONDS, end_seconds=END_SECONDS, own_files=True):
    """Runs `ECLIPSE.DATA` of a folder by `Processes` or `Forks`; console and errors go to files there."""
    folder = pathlib.Path(folder)
    inputs = {path.name for path in folder.iterdir()}
    end = starter.run(folder, words, cpu_seconds, end_seconds)
    verdict, cause = judge_end(end, tail_of(folder / CONSOLE), tail_of(folder / ERRORS))
    if verdict in ("ended", "long") and end.status in (0, 128 + signal.SIGTERM):
        wrong = unreadable_results(folder, inputs | {CONSOLE, ERRORS}, own_files)
        verdict, cause = ("unreadable", wrong) if wrong else (verdict, cause)
    return Trial(verdict, cause, end.cpu_seconds, end.memory_mb, end.status)


def check(starter, folder, words=("--check", "ECLIPSE.DATA"), cpu_seconds=READING_SECONDS):
    """The same deck, read and checked alone: it must never come near the limit of time."""
    trial = run(starter, folder, words, cpu_seconds, end_seconds=1.0)
    if trial.cpu_seconds >= cpu_seconds:
        trial.verdict = "slow reading"
    return trial
