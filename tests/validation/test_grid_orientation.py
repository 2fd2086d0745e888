"""Five-spot at an adverse mobility ratio on grids diagonal and parallel to the line from injector to producer."""

import re

import numpy
import pytest

import kvr_run
from curves import first_crossing
from public_floods import needs_public_decks

pytestmark = needs_public_decks

SIDE = 1000.0  # ft, of the quarter five-spot
RATE = 400.0  # stb/day of a quarter of a well
BREAKTHROUGH = 0.02  # water cut
OIL_VISCOSITY = "30"  # cp, a hundred times that of water


def deck(cells, spacing, injectors, producers, nine_points):
    """The homogeneous five-spot of the public deck on another square grid, with other wells."""
    text = kvr_run.public_deck("waterflood/QFS50.DATA")
    text = text.replace("50 50 1 /", f"{cells} {cells} 1 /" + ("\nNINEPOIN" if nine_points else ""))
    text = text.replace("2 1 1 2 /", "4 1 1 4 /").replace("2500*20 /", f"{cells * cells}*{spacing!r} /", 2)
    text = text.replace("2500*", f"{cells * cells}*")
    text = re.sub(r"(?<=^PVDO\n).*?(?=^/)", f"300 1.02 {OIL_VISCOSITY}\n8000 1.01 {OIL_VISCOSITY}\n", text,
                  flags=re.M | re.S)
    wells = [(f"I{n}", *at) for n, at in enumerate(injectors)] + [(f"P{n}", *at) for n, at in enumerate(producers)]
    lines = ["SCHEDULE", "WELSPECS"]
    lines += [f"'{name}' 'G1' {i} {j} 8010 '{'WATER' if name[0] == 'I' else 'OIL'}' /" for name, i, j in wells]
    lines += ["/", "COMPDAT"] + [f"'{name}' {i} {j} 1 1 'OPEN' 2* 0.5 /" for name, i, j in wells]
    lines += ["/", "WCONPROD"] + [f"'{name}' 'OPEN' 'BHP' 5* 3000 /" for name, _, _ in wells if name[0] == "P"]
    lines += ["/", "WCONINJE"]
    lines += [f"'{name}' 'WATER' 'OPEN' 'RATE' {RATE} 1* 200000 /" for name, _, _ in wells if name[0] == "I"]
    lines += ["/", "TSTEP", "60*10 /", "END", ""]
    return text[:text.index("SCHEDULE")] + "\n".join(lines) + kvr_run.options(method="FIM", tolerance=1e-4)


def flood(folder, *setting):
    folder.mkdir()
    return kvr_run.finished_normally(kvr_run.run(folder, deck(*setting))).table()


def breakthrough(table):
    return first_crossing(table["TIME"], table["FWCT"], BREAKTHROUGH)


def orientation_difference(folder, nine_points):
    """Breakthrough on the diagonal and on the parallel grid of cells of nearly the same size, days."""
    diagonal = flood(folder / f"diagonal{nine_points}", 20, SIDE / 20, [(1, 1)], [(20, 20)], nine_points)
    parallel = flood(folder / f"parallel{nine_points}", 28, SIDE * 2 ** 0.5 / 28, [(1, 1), (28, 28)],
                     [(1, 28), (28, 1)], nine_points)
    return breakthrough(diagonal), breakthrough(parallel)


@pytest.fixture(scope="module")
def breakthroughs(tmp_path_factory):
    folder = tmp_path_factory.mktemp("orientation")
    five, nine = orientation_difference(folder, False), orientation_difference(folder, True)
    print(f"breakthrough diagonal and parallel: five points {five[0]:.0f} and {five[1]:.0f} days, "
          f"nine points {nine[0]:.0f} and {nine[1]:.0f} days")
    return five, nine


def test_nine_points_take_away_two_fifths_of_the_effect_of_the_grid_on_breakthrough(breakthroughs):
    five, nine = breakthroughs
    assert five[0] > 1.1 * five[1]  # the effect is there: flow along the axes comes first
    assert abs(nine[0] - nine[1]) <= 0.6 * abs(five[0] - five[1])


@pytest.mark.xfail(strict=True, reason="diagonals get two fifths of a face where a fourth would be even, so that the "
                   "effect turns round: half of it is left at any mobility ratio, see docs/validation.md")
def test_nine_points_halve_the_effect_of_the_grid_on_breakthrough(breakthroughs):
    five, nine = breakthroughs
    assert abs(nine[0] - nine[1]) <= 0.5 * abs(five[0] - five[1])


def test_nine_points_do_not_know_one_axis_from_the_other(tmp_path):
    along_x = flood(tmp_path / "x", 15, 50.0, [(1, 1)], [(15, 8)], True)
    along_y = flood(tmp_path / "y", 15, 50.0, [(1, 1)], [(8, 15)], True)
    for column in ("FOPT", "FWPT", "FPR", "WBHP:I0"):
        assert along_y[column] == pytest.approx(along_x[column], rel=1e-6), column
    assert numpy.all(along_x["FOPT"][1:] > 0.0)
