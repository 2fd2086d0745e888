"""Synthetic history matches: random true fields, their histories by an independent simulator, and what a match leaves of the misfits."""

import dataclasses
import os
import pathlib
import re
import shutil
import subprocess
import time

import numpy

import binary_blocks
import kvr_run
import peer_flow

EXAMPLES = kvr_run.REPOSITORY / "examples"
EXAMPLE = EXAMPLES / "history_match" / "HISTORY_MATCH.DATA"
OUTSIDE_EXAMPLE = EXAMPLES / "history_match_flow" / "HISTORY_MATCH_FLOW.DATA"
SIDE = 31
LEAST_RISE = 0.05  # of the water saturation, of cells that count as swept


def rows_of(values, per_row=10):
    words = [f"{value:.6g}" for value in numpy.asarray(values).ravel()]
    return "\n".join(" ".join(words[n:n + per_row]) for n in range(0, len(words), per_row))


def smooth_noise(random, shape, length):
    """Gaussian noise of unit deviation whose correlation falls off over `length` cells."""
    waves = numpy.meshgrid(*[2 * numpy.pi * numpy.fft.fftfreq(n) for n in shape], indexing="ij")
    spectrum = numpy.exp(-0.25 * length**2 * sum(wave**2 for wave in waves))
    noise = numpy.fft.ifftn(numpy.fft.fftn(random.standard_normal(shape)) * spectrum).real
    return (noise - noise.mean()) / noise.std()


def channel(random, side=SIDE, width=2.0):
    """Distance from a winding line that crosses the field, as a bell of height 1."""
    place = numpy.linspace(0.0, 1.0, side)
    turns, phase, reach = random.uniform(0.5, 1.5), random.uniform(0, 2 * numpy.pi), random.uniform(0.1, 0.25)
    middle = side * (random.uniform(0.25, 0.75) + reach * numpy.sin(2 * numpy.pi * turns * place + phase))
    bell = numpy.exp(-0.5 * ((numpy.arange(side)[:, None] - middle[None, :]) / width)**2)
    return bell.T if random.uniform() < 0.5 else bell


def channels(seed):
    """A true field, md: two winding channels, five times as permeable as a background that varies a little."""
    random = numpy.random.default_rng(seed)
    bells = numpy.maximum(channel(random), channel(random))
    return 60.0 * numpy.exp(0.3 * smooth_noise(random, (SIDE, SIDE), 4.0) + numpy.log(5.0) * bells)


def with_permeability(deck, values):
    """The deck with another PERMX."""
    return re.sub(r"PERMX\n[^/]*/", lambda _: f"PERMX\n{rows_of(values)} /", deck, count=1)


def without_options(deck):
    return deck[:deck.index("\nEND\n")] + "\nEND\n"


def peer_names(wells):
    return [f"{quantity}:{well}" for well in wells for quantity in ("WOPR", "WWPR", "WGPR", "WBHP")]


def observed_by_peer(folder, deck, wells, times):
    """Histories of the wells by the independent simulator, as the text of a file of observed data, and the cells that it sweeps."""
    vectors = "\n".join(f"{name}\n/" for name in ("WOPR", "WWPR", "WGPR", "WBHP"))
    text = without_options(deck).replace("SCHEDULE\n", f"SUMMARY\n{vectors}\nSCHEDULE\nRPTRST\nBASIC=2 /\n", 1)
    found = peer_flow.flow_vectors(folder, text, *peer_names(wells))
    rows = ["WNAME TIME WOPR WWPR WGPR WBHP WWCT WGOR"]
    for well in wells:
        for day in times:
            oil, water, gas, pressure = (numpy.interp(day, found["TIME"], found[f"{q}:{well}"]) for q in ("WOPR", "WWPR", "WGPR", "WBHP"))
            cut, ratio = water / max(oil + water, 1e-9), gas / max(oil, 1e-9)
            rows.append(f"{well} {day:g} {oil:.8g} {water:.8g} {gas:.8g} {pressure:.8g} {cut:.8g} {ratio:.8g}")
    restarts = sorted(folder.glob("PEER.X*"))
    saturations = [binary_blocks.arrays(path)["SWAT"] for path in (restarts[0], restarts[-1])]
    return "\n".join(rows) + "\n", saturations[1] - saturations[0] > LEAST_RISE


@dataclasses.dataclass
class Outcome:
    """What a match did; shares are what is left of the first run."""
    folder: pathlib.Path
    seconds: float
    memory: float  # MB
    console: str

    def path(self, name):
        return self.folder / f"{name}"

    def sums(self, quantity):
        """Sum of |observed - calculated| by kept run and well."""
        lines = self.path(f"KVR_HM_ObjFnc_{quantity}_Abs.out").read_text().splitlines()
        return numpy.array([[float(word) for word in line.split()[1:-1]] for line in lines if line.split()[0].isdigit()])

    def left(self, quantity):
        sums = self.sums(quantity).sum(axis=1)
        return sums[-1] / sums[0] if sums[0] > 0 else 0.0

    def misfits_left(self, name):
        first, last = (sum(abs(float(line.split()[1])) for line in self.path(f"KVR_Inv_{run}{name}.out").read_text().splitlines())
                       for run in ("Init", "Final"))
        return last / first if first > 0 else 0.0

    def judged(self):
        lines = self.path("KVR_HM_ObjFnc.out").read_text().splitlines()
        return numpy.array([float(line.split()[-1]) for line in lines[2:]])

    def permeability(self):
        text = self.path("HM_Perm_Latest.DATA").read_text()
        return numpy.array(re.search(r"PERMX\n([^/]*)/", text)[1].split(), dtype=float)

    def runs(self):
        return sum(line.startswith("Match, run ") for line in self.console.splitlines())


def start(folder, deck, observed, files=None):
    folder.mkdir(parents=True, exist_ok=True)
    (folder / "ECLIPSE.DATA").write_text(deck)
    if observed is not None:
        (folder / "WELL_OBSERVED.DATA").write_text(observed)
    for name, content in (files or {}).items():
        (folder / name).write_text(content)


def match(folder, deck, observed, files=None, arguments=()):
    """Runs a match to its end; processor seconds and memory are those of the whole process."""
    start(folder, deck, observed, files)
    with open(folder / "console", "w") as console:
        process = subprocess.Popen([kvr_run.PROGRAM, *arguments], cwd=folder, stdin=subprocess.DEVNULL, stdout=console, stderr=subprocess.STDOUT,
                                   env=dict(os.environ, TERM="dumb"))
        _, status, usage = os.wait4(process.pid, 0)
        process.returncode = os.waitstatus_to_exitcode(status)
    text = (folder / "console").read_text(errors="replace")
    assert process.returncode == 0, text[-2000:]
    return Outcome(folder, usage.ru_utime + usage.ru_stime, usage.ru_maxrss / 1024, text)


def correlation(first, second, where):
    return numpy.corrcoef(numpy.log(numpy.ravel(first))[where], numpy.log(numpy.ravel(second))[where])[0, 1]
