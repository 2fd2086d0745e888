"""Random mixtures of hydrocarbons, carbon dioxide, nitrogen and hydrogen sulphide, and their flashes by the program's
own routine against the oracle."""

import os
import pathlib
import subprocess

import numpy

import flash_oracle
import kvr_run

# Name, Tc (R), Pc (psia), acentric factor; a library of pure substances and of pseudo fractions.
LIBRARY = [("N2", 227.2, 492.3, 0.04), ("CO2", 547.6, 1071.3, 0.225), ("H2S", 672.5, 1306.5, 0.1),
           ("C1", 343.1, 667.8, 0.013), ("C2", 549.8, 708.3, 0.0986), ("C3", 665.7, 616.3, 0.1524),
           ("NC4", 765.4, 550.7, 0.201), ("NC5", 845.4, 489.5, 0.251), ("C6", 913.4, 436.9, 0.3007),
           ("C8", 1035.0, 361.0, 0.4), ("C10", 1111.8, 304.0, 0.4885), ("C15", 1270.0, 206.0, 0.685),
           ("C20", 1380.0, 162.0, 0.87), ("C30", 1520.0, 120.0, 1.15)]
LIGHTEST_PRESSURE, HIGHEST_PRESSURE = 15.0, 10000.0
FAHRENHEIT = 459.67


def interactions(names, random):
    """Binary coefficients as usual: high with the gases that are no hydrocarbons, small with methane."""
    n = len(names)
    bic = numpy.zeros((n, n))
    for i in range(n):
        for j in range(i):
            pair = {names[i], names[j]}
            if pair & {"CO2", "N2", "H2S"}:
                bic[i, j] = random.uniform(0.0, 0.12)
            elif "C1" in pair:
                bic[i, j] = random.uniform(0.0, 0.05)
            bic[j, i] = bic[i, j]
    return bic


def random_feed(random):
    """(Tc, Pc, acentric factors, BIC, temperature in R, pressure, feed)."""
    count = int(random.integers(2, 13))
    chosen = sorted(random.choice(len(LIBRARY), count, replace=False))
    names = [LIBRARY[i][0] for i in chosen]
    tc, pc, acentric = (numpy.array([LIBRARY[i][k] for i in chosen]) for k in (1, 2, 3))
    feed = random.dirichlet(numpy.ones(count))
    feed = numpy.maximum(feed, 1e-6)
    feed /= feed.sum()
    pressure = numpy.exp(random.uniform(numpy.log(LIGHTEST_PRESSURE), numpy.log(HIGHEST_PRESSURE)))
    return tc, pc, acentric, interactions(names, random), FAHRENHEIT + random.uniform(60.0, 400.0), pressure, feed


def line_of(tc, pc, acentric, bic, temperature, pressure, feed):
    numbers = [temperature, pressure, *tc, *pc, *acentric, *bic.ravel(), *feed]
    return f"{len(tc)} " + " ".join(repr(float(v)) for v in numbers)


def flash_program():
    return pathlib.Path(os.environ.get("KVR_FLASH_TABLE", pathlib.Path(kvr_run.PROGRAM).parent / "tests" / "flash_table"))


def program_flashes(feeds):
    """Rows of phases, solved, V, Z_L, Z_V, x, y by the program's routine."""
    text = "\n".join(line_of(*feed) for feed in feeds) + "\n"
    output = subprocess.run([flash_program()], input=text, text=True, capture_output=True, check=True).stdout
    return [[float(word) for word in line.split()] for line in output.splitlines()]


class Verdict:
    """How one feed compares: `kind` one of right, count, boundary, third, unsolved; errors of right splits."""

    def __init__(self, kind, error=0.0, gap=0.0, detail=""):
        self.kind, self.error, self.gap, self.detail = kind, error, gap, detail


def compare(feed, row):
    tc, pc, acentric, bic, temperature, pressure, z = feed
    n = len(tc)
    mixture = flash_oracle.Mixture(tc, pc, acentric, bic, temperature)
    tm, split = flash_oracle.flash(mixture, z, pressure)
    is_both = int(row[0]) == 3
    if split in ("third", "unsolved"):
        return Verdict(split)
    if is_both != (split is not None):
        # Within a millionth of a boundary the count is open.
        near = {flash_oracle.flash(mixture, z, pressure * (1 + d))[1] is None for d in (-1e-6, 1e-6)}
        return Verdict("boundary" if len(near) == 2 or abs(tm) < 1e-12 else "count", detail=f"tm {tm}")
    if not is_both:
        return Verdict("right")
    V, x, y = row[2], numpy.array(row[5:5 + n]), numpy.array(row[5 + n:5 + 2 * n])
    want = [numpy.array([float(v) for v in split[key]]) for key in ("x", "y")]
    straight = max(abs(x - want[0]).max(), abs(y - want[1]).max(), abs(V - float(split["V"])))
    crossed = max(abs(x - want[1]).max(), abs(y - want[0]).max(), abs(1 - V - float(split["V"])))
    return Verdict("right", min(straight, crossed), flash_oracle.fugacity_gap(mixture, x, y, pressure))
