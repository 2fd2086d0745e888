"""One run of the program in a folder of its own, under limits of time, memory and file size."""

import dataclasses
import os
import pathlib
import resource
import signal
import subprocess

CPU_SECONDS = 60
MEMORY = 4 << 30  # bytes of address space
FILE_SIZE = 100 << 20  # bytes of any one file; a run that floods its log ends there
CONSOLE = "console.txt"
ERRORS = "errors.txt"
TAIL = 4000  # bytes of the console that are kept
SANITIZED = os.environ.get("KVR_SANITIZED", "") == "1"  # such a program maps terabytes of shadow memory at its start


@dataclasses.dataclass
class Ended:
    status: int  # exit status, or minus the number of the signal
    cpu_seconds: float
    memory: int  # KB at most
    console_size: int  # bytes
    tail: str  # end of the console
    errors: str  # begin of the error output

    def cause(self):
        """In a word what ended a run that did not end well; empty for status 0."""
        if self.status == 0:
            return ""
        if self.status > 0:
            return "message"
        return {signal.SIGXCPU: "time", signal.SIGKILL: "time", signal.SIGXFSZ: "file size"}.get(-self.status, "crash")

    def complaint(self):
        """The last line of the console that names the trouble."""
        lines = [line.strip() for line in self.tail.splitlines() if line.strip()]
        named = [line for line in lines if "ERROR" in line.upper()]
        return (named or lines or [""])[-1]


def set_limits(cpu_seconds):
    resource.setrlimit(resource.RLIMIT_CPU, (cpu_seconds, cpu_seconds + 1))
    if not SANITIZED:
        resource.setrlimit(resource.RLIMIT_AS, (MEMORY, MEMORY))
    resource.setrlimit(resource.RLIMIT_FSIZE, (FILE_SIZE, FILE_SIZE))
    resource.setrlimit(resource.RLIMIT_CORE, (0, 0))


def run_limited(program, folder, cpu_seconds=CPU_SECONDS):
    """Runs the deck that stands in `folder`; console and errors go to files there."""
    folder = pathlib.Path(folder)
    environment = dict(os.environ, OMP_NUM_THREADS="1", OPENBLAS_NUM_THREADS="1")
    with open(folder / CONSOLE, "wb") as console, open(folder / ERRORS, "wb") as errors:
        process = subprocess.Popen([str(program)], cwd=folder, stdin=subprocess.DEVNULL, stdout=console, stderr=errors,
                                   env=environment, preexec_fn=lambda: set_limits(cpu_seconds))
        _, state, usage = os.wait4(process.pid, 0)
    process.returncode = os.waitstatus_to_exitcode(state)
    size = (folder / CONSOLE).stat().st_size
    with open(folder / CONSOLE, "rb") as console:
        console.seek(max(0, size - TAIL))
        tail = console.read().decode(errors="replace")
    with open(folder / ERRORS, "rb") as errors:
        trouble = errors.read(TAIL).decode(errors="replace")
    return Ended(process.returncode, usage.ru_utime + usage.ru_stime, usage.ru_maxrss, size, tail, trouble)
