"""What must not change does not, and what flows is accounted for."""

import numpy
import pytest

import kvr_run
import small_deck
import tecplot
from kvr_run import finished_normally, run
from public_floods import flood, needs_public_decks

BOX = """RUNSPEC
DIMENS
3 3 8 /
OIL
WATER
{gas}FIELD
START
1 'JAN' 2000 /
GRID
DX
72*100 /
DY
72*100 /
DZ
72*20 /
TOPS
9*5000 /
PORO
72*0.2 /
PERMX
72*100 /
PERMY
72*100 /
PERMZ
72*20 /
PROPS
PVTW
3000 1.01 3e-6 0.5 0 /
DENSITY
50 63 0.06 /
ROCK
3000 4e-6 /
{props}
SOLUTION
EQUIL
5080 3000 5100 0 5050 /
SCHEDULE
TSTEP
10*30 /
END
"""

DEAD_OIL = """PVDO
1000 1.05 2.0
5000 1.01 2.1
/
SWOF
0.2 0.0 0.9 {pc}
0.5 0.1 0.3 {half}
1.0 0.6 0.0 0
/
"""

GAS_CAP = DEAD_OIL + """PVDG
1000 3.0 0.013
5000 0.6 0.022
/
SGOF
0.0 0.0 0.9 0
0.4 0.2 0.2 0
0.8 0.8 0.0 0
/
"""

# In a capillary transition the column takes the water's density at the water pressure, the cells at the oil
# pressure: 2 psi of capillary pressure times the compressibility, 5e-5 psi from cell to cell, which a curve of
# 5 psi per saturation answers with 1e-5.
CASES = {
    "water below oil": ("", DEAD_OIL.format(pc=0, half=0), 1e-8),
    "capillary transition": ("", DEAD_OIL.format(pc=4, half=2.5), 1e-5),
    "gas above oil above water": ("GAS\n", GAS_CAP.format(pc=0, half=0), 1e-8),
}


@pytest.mark.parametrize("method", ["STREAMLINE", "IMPES"])
@pytest.mark.parametrize("case", CASES)
def test_a_closed_box_in_equilibrium_stays_as_it_is(tmp_path, case, method):
    gas, props, allowed = CASES[case]
    result = finished_normally(run(tmp_path, BOX.format(gas=gas, props=props)
                                   + kvr_run.options(method=method, lines=20, plots=1, tolerance=1e-6)))
    names = ["poil", "swat", "soil"] + (["sgas"] if gas else [])
    for name in names:
        zones = tecplot.read_zones(result.folder / f"KVR_TPlot_{name}.plt")
        assert len(zones) == 11
        first, last = zones[0].values[0], zones[-1].values[0]
        change = numpy.abs(last - first).max() / max(1.0, numpy.abs(first).max())
        print(f"{case}, {method}, {name}: {change:.1e}")
        assert change <= allowed


def test_a_flood_by_finite_differences_keeps_its_balance(tmp_path):
    table = balance(run(tmp_path, small_deck.deck(options=kvr_run.options(method="IMPES", solver="DGESV"))))
    print(f"IMPES: oil {table['|MBEO|'][-1]:.1e}, water {table['|MBEW|'][-1]:.1e}")
    assert numpy.abs(table["|MBEO|"]).max() < 0.001
    assert numpy.abs(table["|MBEW|"]).max() < 0.001


def balance(result):
    """Columns of the balance table; of a label that stands twice the first."""
    lines = finished_normally(result).read("KVR_Run_SweepVolume.out").splitlines()
    names = lines[0].split()
    values = numpy.array([[float(word) for word in line.split()] for line in lines[1:] if line.strip()])
    return {name: values[:, names.index(name)] for name in names}


@needs_public_decks
def test_a_flood_by_streamlines_keeps_its_balance(tmp_path):
    table = balance(flood(tmp_path, "QFS50", lines=2000, nodes="REG", factor=1.0))
    oil, water = table["|MBEO|"][-1], table["|MBEW|"][-1]
    print(f"QFS50: oil {100 * oil:.2f} %, water {100 * water:.2f} % at the end")
    assert abs(oil) < 0.005
    assert abs(water) < 0.015
