"""A closed box in the equilibrium of gravity and capillarity: nothing moves, whatever the method."""

import numpy
import pytest

import kvr_run
import small_deck
import tecplot

LAYERS = 20
GRID = f"""GRID
DX
{2 * LAYERS}*100 /
DY
{2 * LAYERS}*100 /
DZ
{2 * LAYERS}*5 /
TOPS
2*5000 /
PORO
{2 * LAYERS}*0.2 /
PERMX
{2 * LAYERS}*100 /
PERMY
{2 * LAYERS}*100 /
PERMZ
{2 * LAYERS}*10 /
"""

# 20 psi over the transition zone: it spans half of the box above the contact.
CURVES = """SWOF
0.2 0.00 1.00 20
0.4 0.05 0.50 6
0.5 0.15 0.25 3
0.8 0.60 0.00 0.5
1.0 1.00 0.00 0
/
"""

SOLUTION = """SOLUTION
EQUIL
5000 3000 5060 0 0 0 /
"""

PRESSURE_DRIFT = 1e-3  # psi, two hundred times what the fully implicit method shows
SATURATION_DRIFT = 1e-4


def deck(options):
    props = small_deck.PROPS[:small_deck.PROPS.index("SWOF")] + CURVES
    schedule = (small_deck.SCHEDULE.replace("'PROD' 5 5", "'PROD' 2 1").replace("5 5 5010", "2 1 5010")
                .replace("'PROD' 'OPEN' 'BHP'", "'PROD' 'SHUT' 'BHP'").replace("'WATER' 'OPEN' 'RATE'", "'WATER' 'SHUT' 'RATE'")
                .replace("2*30", "10*100"))
    return small_deck.deck(runspec=small_deck.RUNSPEC.replace("5 5 1", f"2 1 {LAYERS}"), grid=GRID, props=props,
                           solution=SOLUTION, schedule=schedule, options=options)


def drift(folder, name):
    zones = tecplot.read_zones(folder / f"KVR_TPlot_{name}.plt")
    assert len(zones) == 11
    return max(numpy.abs(zone.values[0] - zones[0].values[0]).max() for zone in zones), zones[0].values[0]


@pytest.mark.parametrize("method", ["STREAMLINE", "IMPES", "FIM"])
@pytest.mark.parametrize("lines", ["as they come", "with all effects"])
def test_a_transition_zone_stays_as_it_is(tmp_path, method, lines):
    plots = f"\nTUNEKVR\nFDMETHOD\n{method}\nOUTPUTKVR\n1 0 1 0 0 0 0 1 0 0 /\n"
    options = plots if lines == "as they come" else kvr_run.options(method=method, lines=20, plots=1)
    result = kvr_run.finished_normally(kvr_run.run(tmp_path, deck(options)))
    pressure, _ = drift(tmp_path, "poil")
    saturation, water = drift(tmp_path, "swat")
    print(f"{method} {lines}: pressure moves by {pressure:.1e} psi, saturation by {saturation:.1e}")
    assert 10 < numpy.count_nonzero((water > 0.25) & (water < 0.95))
    assert pressure <= PRESSURE_DRIFT
    assert saturation <= SATURATION_DRIFT
    assert "does not act between cells" not in result.console


def test_a_run_without_the_capillary_exchange_says_so(tmp_path):
    options = kvr_run.options(lines=20).replace("Yes Yes Yes No", "Yes Yes No No")
    result = kvr_run.finished_normally(kvr_run.run(tmp_path, deck(options)))
    warning = "WARNING :: Capillary pressure of the tables does not act between cells"
    assert result.console.count(f"\n{warning}") == 1
    assert result.console.count(f"  1 x {warning}") == 1, "the closing summary repeats it"
