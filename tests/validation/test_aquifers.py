"""Analytic aquifers by every method against an independent simulator, on a small box whose layers dip towards water. Without the
aquifer the oil that comes is less than half."""

import csv

import numpy
import pytest

from keyword_deck import DEAD_OIL, DENSITY, PVTW, ROCK, SWOF
from named_run import run_named
from peer_flow import flow_vectors, needs_flow

pytestmark = needs_flow

METHODS = ["STREAMLINE", "IMPES", "FIM"]
# Shares of the curves' largest values: of oil and pressure, of water. The peer's own steps of five days smear the front as those of
# the fully implicit method do.
TOLERANCE = {"FIM": (0.001, 0.002), "IMPES": (0.003, 0.025), "STREAMLINE": (0.003, 0.025)}
REPORTS = numpy.arange(30, 721, 30)  # days

I, J, K = 12, 8, 3
SIZE, THICKNESS, DIP = 200, 15, 12  # ft, the dip from column to column
CELLS = I * J * K

EDGE = "AQUANCON\n1 12 12 1 8 1 3 'I+' /\n/\n"
BOTTOM = "AQUANCON\n1 1 12 1 8 3 3 'K+' /\n/\n"
FETKOVICH = "AQUFETP\n1 8130 {pressure} 1E8 8E-6 30 /\n/\n"
CARTER_TRACY = "AQUCT\n1 8130 1* 200 0.2 8E-6 2000 45 180 /\n/\n"
OWN_TABLE = "AQUCT\n1 8130 1* 200 0.2 8E-6 1000 45 360 1 2 /\n/\n"
INFLUENCE = "AQUTAB\n0.01 0.112\n0.1 0.315\n1 0.802\n3 1.1\n5 1.25\n10 1.4\n100 8\n/\n"
STEPS = "TSTEP\n24*30 /\n"
INJECTION = "WCONINJE\n'I' 'WATER' 'OPEN' 'RATE' {rate} 1* 9000 /\n/\n"
TURNS_BACK = "TSTEP\n6*30 /\n" + INJECTION.format(rate=3000) + "TSTEP\n6*30 /\n" + INJECTION.format(rate=0) + "TSTEP\n12*30 /\n"

CASES = {
    "Fetkovich at an edge": (FETKOVICH.format(pressure="1*") + EDGE, STEPS),
    "Fetkovich from below with a pressure": (FETKOVICH.format(pressure="4200") + BOTTOM, STEPS),
    "Fetkovich, pushed back for a while": (FETKOVICH.format(pressure="1*") + EDGE, TURNS_BACK),
    "Carter-Tracy": (CARTER_TRACY + EDGE, STEPS),
    "Carter-Tracy by a table": (OWN_TABLE + EDGE, STEPS),
}


def geometry():
    pillars = [f"{i * SIZE} {j * SIZE} 7000 {i * SIZE} {j * SIZE} 9000" for j in range(J + 1) for i in range(I + 1)]
    rows = []
    for k in range(K):
        for depth in (8000 + THICKNESS * k, 8000 + THICKNESS * (k + 1)):
            rows += [" ".join(f"{depth + DIP * i} {depth + DIP * (i + 1)}" for i in range(I))] * (2 * J)
    return "COORD\n" + "\n".join(pillars) + "\n/\nZCORN\n" + "\n".join(rows) + "\n/\n"


def deck(aquifer, steps, options=""):
    return f"""RUNSPEC
DIMENS
{I} {J} {K} /
OIL
WATER
FIELD
START
1 'JAN' 2000 /
TABDIMS
1 1 40 40 /
WELLDIMS
10 10 6 10 /
AQUDIMS
2 100 2 40 2 200 /
GRID
{geometry()}PORO
{CELLS}*0.2 /
PERMX
{CELLS}*300 /
PERMY
{CELLS}*300 /
PERMZ
{CELLS}*30 /
PROPS
{DEAD_OIL}{PVTW}{DENSITY}{ROCK}{SWOF}{INFLUENCE}SOLUTION
EQUIL
8000 4000 8110 0 7000 0 1* 1* 0 /
{aquifer}SUMMARY
FOPT
FWPT
FPR
SCHEDULE
WELSPECS
'P' 'G' 3 4 8000 'OIL' /
'P2' 'G' 5 6 8000 'OIL' /
'I' 'G' 9 2 8000 'WATER' /
/
COMPDAT
'P' 3 4 1 3 'OPEN' 2* 0.5 /
'P2' 5 6 1 2 'OPEN' 2* 0.5 /
'I' 9 2 1 3 'OPEN' 2* 0.5 /
/
WCONPROD
'P' OPEN ORAT 800 4* 1500 /
'P2' OPEN LRAT 3* 400 1* 1500 /
/
WCONINJE
'I' 'WATER' 'SHUT' 'RATE' 0 1* 9000 /
/
{steps}END
{options}"""


def own_run(folder, aquifer, steps, method):
    (folder / "OWN.DATA").write_text(deck(aquifer, steps, f"TUNEKVR\nFDMETHOD\n{method}\nMAXDT\n5 /\n"))
    ended = run_named("OWN.DATA", folder=folder)
    assert ended.returncode == 0, ended.console[-1500:]
    assert "NOT USED" not in ended.console, ended.console[-1500:]
    rows = list(csv.reader((folder / "OWN_Summary.csv").open()))
    return {name: numpy.array([float(row[place]) for row in rows[2:]]) for place, name in enumerate(rows[0]) if name != "DATE"}


def distance(curves, other, vector):
    mine, theirs = (numpy.interp(REPORTS, c["TIME"], c[vector]) for c in (curves, other))
    return numpy.abs(mine - theirs).max() / numpy.abs(theirs).max()


@pytest.fixture(scope="module")
def peers():
    return {}


@pytest.mark.parametrize("method", METHODS)
@pytest.mark.parametrize("name", sorted(CASES))
def test_aquifers_give_what_an_independent_simulator_has_them_give(name, method, tmp_path, peers):
    aquifer, steps = CASES[name]
    if name not in peers:
        peers[name] = flow_vectors(tmp_path / "peer", deck(aquifer, steps), "FOPT", "FWPT", "FPR")
    curves = own_run(tmp_path, aquifer, steps, method)
    off = {vector: distance(curves, peers[name], vector) for vector in ("FOPT", "FPR", "FWPT")}
    print(f"{name}, {method}: " + ", ".join(f"{v} {100 * o:.3f} %" for v, o in off.items()))
    closely, roughly = TOLERANCE[method]
    assert off["FOPT"] <= closely and off["FPR"] <= closely and off["FWPT"] <= roughly


def test_without_its_aquifer_the_box_gives_less_than_half(tmp_path):
    def oil(folder, aquifer):
        folder.mkdir()
        return own_run(folder, aquifer, STEPS, "FIM")["FOPT"][-1]

    assert oil(tmp_path / "without", "") < 0.5 * oil(tmp_path / "with", CASES["Carter-Tracy"][0])


@pytest.mark.parametrize("method", METHODS)
def test_water_that_aquifers_give_and_take_back_is_in_the_balance(method, tmp_path):
    aquifer, steps = CASES["Fetkovich, pushed back for a while"]
    curves = own_run(tmp_path, aquifer, steps, method)
    log = (tmp_path / "OWN_dbg.out").read_text()
    gave = numpy.array([float(line.split("::")[1].split()[0]) for line in log.splitlines() if "Water from aquifer" in line])
    assert numpy.diff(gave).min() < 0 < numpy.diff(gave).max()
    change = curves["FWIP"] - curves["FWIP"][0] - curves["FWIT"] + curves["FWPT"]
    numpy.testing.assert_allclose(change, gave, atol=1e-6 * curves["FWIP"][0])
