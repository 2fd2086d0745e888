"""Implicit transport on lines, gravity along them, and tracers, against explicit transport and plain schemes."""

import numpy
import pytest

import buckley_leverett
import column_flood
import dipping_flood
import kvr_run
import tecplot
from curves import relative_difference, water_cut_difference
from kvr_run import finished_normally, run
from public_floods import REPORT_TIMES, flood, needs_public_decks

CELLS = 100
FIRST_SHARE, GROWTH = 0.1, 1.15  # of an implicit line's steps


def newton_counts(result):
    """Steps, iterations and halvings of the closing table."""
    line = next(line for line in result.console.splitlines() if line.startswith("Newton"))
    return [int(word) for word in line.split()[1:]]


def column_flow():
    return buckley_leverett.fractional_flow(column_flood.relative_permeability(), column_flood.WATER_VISCOSITY,
                                            column_flood.OIL_VISCOSITY)


def backward_euler(flow, steps):
    """Upstream backward Euler over the steps (days), every cell's balance by bisection."""
    saturation = numpy.full(CELLS, column_flood.CONNATE)
    for dt in steps:
        ratio = column_flood.injected_volumes(dt) * CELLS
        inflow = 1.0
        for i in range(CELLS):
            low, high = saturation[i], 1.0 - column_flood.RESIDUAL
            for _ in range(45):
                middle = 0.5 * (low + high)
                if middle - saturation[i] + ratio * (flow(middle) - inflow) < 0.0:
                    low = middle
                else:
                    high = middle
            saturation[i] = 0.5 * (low + high)
            inflow = flow(saturation[i])
    return saturation


def steps_of_a_line(step):
    """A tenth first, then 15 percent more each time, the last one trimmed."""
    steps = []
    dt = FIRST_SHARE * step
    while step - sum(steps) > 1e-9 * step:
        steps.append(min(dt, step - sum(steps)))
        dt *= GROWTH
    return steps


def column(folder, step, **settings):
    section = kvr_run.options(lines=1, plots=1, nodes="IRR", **settings)
    folder.mkdir()
    deck = column_flood.deck(CELLS, section).replace("40*50", f"{round(2000.0 / step)}*{step:g}")
    return finished_normally(run(folder, deck))


def saturations(result, time):
    zones = {zone.time: zone for zone in tecplot.read_zones(result.folder / "KVR_TPlot_swat.plt")}
    return zones[time].values[0]


@pytest.mark.parametrize("step", [50.0, 250.0])
def test_a_column_is_backward_euler_to_the_tolerance_of_the_iteration(tmp_path, step):
    flow = column_flow()
    exact = buckley_leverett.Exact(flow, column_flood.CONNATE, 1.0 - column_flood.RESIDUAL)
    expected = exact.cell_means(CELLS, column_flood.injected_volumes(500.0))
    result = column(tmp_path / "imp", step, scheme="IMPLICIT", extra="STEPCTRL\nNo /\n")  # the steps of the twin
    ours = saturations(result, 500.0)
    twin = backward_euler(flow, round(500.0 / step) * steps_of_a_line(step))
    error, plain = numpy.abs(ours - expected).mean(), numpy.abs(twin - expected).mean()
    print(f"{step:.0f}-day steps: L1 {error:.5f}, plain backward Euler {plain:.5f}, "
          f"Newton {newton_counts(result)}")
    assert numpy.abs(ours - twin).mean() < 2e-4
    assert error < 1.02 * plain
    steps, iterations, halvings = newton_counts(result)
    assert steps == round(2000.0 / step) * len(steps_of_a_line(step))  # every step let the next one grow
    assert iterations < 4 * steps
    assert halvings == 0


def test_the_front_of_an_implicit_column_stays_beside_the_explicit_one_with_steps_as_short(tmp_path):
    explicitly = saturations(column(tmp_path / "mas", 50.0), 500.0)
    implicit = saturations(column(tmp_path / "imp", 10.0, scheme="IMPLICIT"), 500.0)
    middle = 0.5 * (column_flood.CONNATE + 1.0 - column_flood.RESIDUAL)
    fronts = [numpy.count_nonzero(values > middle) for values in (explicitly, implicit)]
    print(f"front cell: explicit {fronts[0]}, implicit {fronts[1]}")
    assert abs(fronts[0] - fronts[1]) <= 1
    assert numpy.sum(implicit) == pytest.approx(numpy.sum(explicitly), rel=1e-6)


@needs_public_decks
def test_implicit_lines_meet_explicit_ones_on_a_heterogeneous_five_spot_within_few_iterations(tmp_path):
    runs = {}
    for scheme in ("EXPLICIT", "IMPLICIT"):
        runs[scheme] = flood(tmp_path / scheme, "FIVE1", lines=300, nodes="IRR", scheme=scheme)
    tables = {scheme: result.table() for scheme, result in runs.items()}
    mean, largest = water_cut_difference(tables["IMPLICIT"], tables["EXPLICIT"], REPORT_TIMES)
    oil = relative_difference(tables["IMPLICIT"]["FOPT"][-1], tables["EXPLICIT"]["FOPT"][-1])
    steps, iterations, halvings = newton_counts(runs["IMPLICIT"])
    print(f"FIVE1: water cut mean {mean:.4f}, largest {largest:.4f}, oil {100 * oil:.2f} %; "
          f"{iterations / steps:.2f} iterations a step, {halvings} halvings")
    assert mean <= 0.03
    assert oil <= 0.04
    assert iterations <= 4 * steps
    assert halvings <= 0.01 * steps


def with_projection(section, word):
    assert "Yes Yes Yes No /" in section
    return section.replace("Yes Yes Yes No /", f"Yes Yes No {word} /")


SHORT_STEPS = "STEPCTRL\nYes 2e-3 0.5 1e-4 8e-3 0.03 0.01 /\n"  # the ways of gravity are compared, not steps


def dipping(folder, word, scheme, extra=""):
    folder.mkdir()
    section = kvr_run.options(lines=1000, nodes="IRR", scheme=scheme, extra=extra)
    return finished_normally(run(folder, dipping_flood.deck(with_projection(section, word))))


def test_gravity_by_projection_and_by_splitting_agree_on_a_dipping_flood_and_keep_its_mass(tmp_path):
    cases = {"splitting": ("No", "EXPLICIT"), "projection": ("Yes", "EXPLICIT"),
             "projection, implicit": ("Yes", "IMPLICIT")}
    oil = {}
    for name, (word, scheme) in cases.items():
        result = dipping(tmp_path / name.replace(", ", "_"), word, scheme, SHORT_STEPS)
        oil[name] = result.table()["FOPT"][-1]
        balance = result.table("KVR_Run_SweepVolume.out")
        errors = [balance[column][-1] for column in ("|MBEO|", "|MBEW|")]
        print(f"{name}: oil {oil[name]:.0f} stb, balance errors oil {errors[0]:+.4f}, water {errors[1]:+.4f}")
        assert numpy.abs(errors).max() < 1e-5
    assert oil["projection"] == pytest.approx(oil["splitting"], rel=0.015)
    assert oil["projection, implicit"] == pytest.approx(oil["splitting"], rel=0.015)


def test_a_slow_flood_from_above_does_not_hold_implicit_lines_up(tmp_path):
    """Water injected up the dip falls through the oil; lines graze cells in which it turns over within minutes."""
    oil = {}
    for word, scheme in (("No", "EXPLICIT"), ("Yes", "IMPLICIT")):
        folder = tmp_path / scheme
        folder.mkdir()
        deck = dipping_flood.deck(with_projection(kvr_run.options(lines=100, nodes="IRR", scheme=scheme), word),
                                  steps="2*500")
        nx = dipping_flood.NX
        for theirs, ours in (("'INJ' 'G' 1 4", f"'INJ' 'G' {nx} 4"), ("'INJ' 1 4", f"'INJ' {nx} 4"),
                             (f"'PROD' 'G' {nx} 5", "'PROD' 'G' 1 5"), (f"'PROD' {nx} 5", "'PROD' 1 5"),
                             ("'RATE' 400", "'RATE' 40")):
            assert theirs in deck
            deck = deck.replace(theirs, ours)
        result = finished_normally(run(folder, deck, timeout=60))
        oil[scheme] = result.table()["FOPT"][-1]
    steps, iterations, halvings = newton_counts(result)
    print(f"oil {oil}, Newton {iterations / steps:.1f} iterations a step, {halvings} halvings")
    assert oil["IMPLICIT"] == pytest.approx(oil["EXPLICIT"], rel=0.015)
    assert iterations <= 6 * steps
    assert halvings <= 0.02 * steps


def test_the_dip_matters_so_that_the_two_ways_of_gravity_have_something_to_agree_on(tmp_path):
    section = kvr_run.options(lines=300, nodes="IRR")
    for name, gravity in (("with", "Yes"), ("without", "No")):
        (tmp_path / name).mkdir()
    runs = {name: finished_normally(run(tmp_path / name, dipping_flood.deck(
        section.replace("Yes Yes Yes No /", f"Yes {gravity} No No /")))).table()["FOPT"][-1]
        for name, gravity in (("with", "Yes"), ("without", "No"))}
    print(f"cumulative oil with gravity {runs['with']:.0f}, without {runs['without']:.0f} stb")
    assert runs["with"] > 1.06 * runs["without"]


def traced_column(section):
    """The column flood with two tracers, the second twice as strong and injected from day 500 on."""
    deck = column_flood.deck(CELLS, section)
    deck = deck.replace("GRID\n", "TRACERS\n1 2 1 /\nGRID\n", 1)
    deck = deck.replace("SWOF\n", "TRACER\n'SEA' 'WAT' /\n'RIV' 'WAT' /\n/\nSWOF\n", 1)
    return deck.replace("TSTEP\n40*50 /\n", "WTRACER\n'INJ' 'SEA' 1.0 /\n/\nTSTEP\n10*50 /\n"
                        "WTRACER\n'INJ' 'RIV' 2.0 /\n/\nTSTEP\n10*50 /\n", 1)


@pytest.mark.parametrize("scheme", ["EXPLICIT", "IMPLICIT"])
def test_tracers_of_a_column_flood_are_all_accounted_for(tmp_path, scheme):
    result = finished_normally(run(tmp_path, traced_column(
        kvr_run.options(lines=1, plots=1, nodes="IRR", scheme=scheme))))
    zones = {zone.time: zone for zone in tecplot.read_zones(tmp_path / "KVR_Tplot_Tracer.plt")}

    def held(time, tracer):
        """Amount in place over what a day of injection at concentration 1 brings."""
        volume = column_flood.PORE_VOLUME / CELLS
        return (zones[time].values[tracer] * saturations(result, time)).sum() * volume / column_flood.RATE

    assert held(500.0, 0) == pytest.approx(500.0, rel=1e-4)
    assert held(500.0, 1) == pytest.approx(0.0, abs=1e-9)
    assert held(750.0, 1) == pytest.approx(2.0 * 250.0, rel=1e-4)
    front = numpy.count_nonzero(zones[500.0].values[0] > 0.5)
    water = numpy.count_nonzero(saturations(result, 500.0) > 0.4)
    print(f"{scheme}: tracer front at cell {front}, water front at {water}")
    assert front < water  # water pushes the connate water ahead of itself
