"""Water that drains out of a column beneath oil: what gravity adds to the flow leaves the immobile water where it is."""

import kvr_run
import numpy
import pytest
import tecplot

IMMOBILE = 0.2
START = 0.25
LAYERS = 10
MOBILE_WATER = (START - IMMOBILE) * 0.3 * LAYERS * 500 * 500 * 10 / 5.614583  # stb

DECK = f"""RUNSPEC
DIMENS
1 1 {LAYERS} /
OIL
WATER
FIELD
TABDIMS
1 1 40 40 /
WELLDIMS
2 6 1 2 /
START
1 'JAN' 2015 /
GRID
DX
10*500 /
DY
10*500 /
DZ
10*10 /
TOPS
1*8000 /
PORO
10*0.3 /
PERMX
10*5000 /
PERMY
10*5000 /
PERMZ
10*5000 /
PROPS
PVTW
4000 1.0 1E-6 0.5 0.0 /
PVDO
1000 1.001 2.0
8000 1.0 2.0 /
ROCK
4000 1E-6 /
DENSITY
53 64 0.06 /
SWOF
0.2 0 1 0
0.3 0.0111 0.694 0
0.4 0.0444 0.444 0
0.5 0.1 0.25 0
0.6 0.1778 0.111 0
0.7 0.2778 0.0278 0
0.8 0.4 0 0
1.0 1.0 0 0
/
SOLUTION
PRESSURE
10*4000 /
SWAT
10*{START} /
SUMMARY
SCHEDULE
WELSPECS
'PROD' 'G' 1 1 8000 'OIL' /
'INJ' 'G' 1 1 8000 'OIL' /
/
COMPDAT
'PROD' 1 1 10 10 'OPEN' 2* 0.5 /
'INJ' 1 1 1 1 'OPEN' 2* 0.5 /
/
WCONPROD
'PROD' 'OPEN' 'BHP' 5* 4000 /
/
WCONINJE
'INJ' 'OIL' 'OPEN' 'RATE' {{rate}} 1* 9014 /
/
TSTEP
{{steps}} /
END

TUNEKVR
FDMETHOD
{{method}}
OUTPUTKVR
1 0 1 0 0 0 0 1 0 0 /
{{more}}
"""


# The same column turned over: oil rises out of water that is injected beneath it, dead or live without free gas.
RISING = (DECK.replace("'INJ' 'OIL'", "'INJ' 'WATER'").replace("'PROD' 1 1 10 10", "'PROD' 1 1 1 1")
          .replace("'INJ' 1 1 1 1 'OPEN'", "'INJ' 1 1 10 10 'OPEN'").replace(f"10*{START} /", "10*0.75 /"))
LIVE = """PVTO
0.001 14.7 1.0 2.0 /
0.3 2000 1.15 2.0
    8000 1.14 2.0 /
0.6 4000 1.3 2.0
    8000 1.28 2.0 /
/
PVDG
14.7 200 0.01
2000 1.5 0.015
8000 0.5 0.03 /
SGOF
0 0 1 0
0.1 0.01 0.7 0
0.5 0.5 0.01 0
0.8 1 0 0 /"""
RISING_LIVE = (RISING.replace("OIL\nWATER\nFIELD", "OIL\nWATER\nGAS\nFIELD").replace("PVDO\n1000 1.001 2.0\n8000 1.0 2.0 /", LIVE)
               .replace("SUMMARY\n", "RS\n10*0.3 /\nSGAS\n10*0 /\nSUMMARY\n"))
RESIDUAL_OIL = 0.2


def column_run(folder, deck, rate, method, steps, more):
    """Water saturations of the reports, and the table of the run."""
    folder.mkdir()
    result = kvr_run.finished_normally(
        kvr_run.run(folder, deck.format(rate=rate, method=method, steps=steps, more=more)))
    return [zone.values[0] for zone in tecplot.read_zones(folder / "KVR_TPlot_swat.plt")], result.table()


def drained(folder, rate, method, steps="8*50", more=""):
    """Least water saturation of any cell and report, and the water produced, stb."""
    water, table = column_run(folder, DECK, rate, method, steps, more)
    return min(zone.min() for zone in water), table["FWPT"][-1]


def risen(folder, deck, rate, method, steps="8*50", more=""):
    """Largest water saturation of any cell and report, and the oil produced, stb."""
    water, table = column_run(folder, deck, rate, method, steps, more)
    return max(zone.max() for zone in water), table["FOPT"][-1]


@pytest.mark.parametrize("method, way", [("STREAMLINE", "in the transport"), ("IMPES", "in the transport"),
                                         ("IMPES", "behind it")])
@pytest.mark.parametrize("rate", [200, 1000])
def test_immobile_water_stays_in_a_column_that_drains(rate, method, way, tmp_path):
    more = "SL1DCON\n7* Yes /" if way == "behind it" else ""
    least, water = drained(tmp_path / "run", rate, method, more=more)
    _, reference = drained(tmp_path / "short", rate, "FIM", steps="80*5")
    print(f"{rate} stb/d, {method}, gravity {way}: least {least:.4f}, water {water:.0f}, fully implicit {reference:.0f} stb")
    assert least >= IMMOBILE - 0.002
    assert water <= MOBILE_WATER
    assert water == pytest.approx(reference, rel=0.05)


def test_the_fully_implicit_column_converges_in_the_step(tmp_path):
    water = [drained(tmp_path / steps.replace("*", "_"), 200, "FIM", steps)[1] for steps in ("8*50", "40*10", "80*5")]
    assert numpy.all(numpy.diff(water) > 0.0)
    assert water[2] == pytest.approx(water[1], rel=0.01)


@pytest.mark.parametrize("method, way", [("STREAMLINE", "in the transport"), ("IMPES", "in the transport"),
                                         ("IMPES", "behind it")])
@pytest.mark.parametrize("deck", [RISING, RISING_LIVE], ids=["dead oil", "live oil"])
@pytest.mark.parametrize("rate", [200, 1000])
def test_residual_oil_stays_in_a_column_that_water_fills(rate, deck, method, way, tmp_path):
    more = "SL1DCON\n7* Yes /" if way == "behind it" else ""
    # An exchange behind the transport is of first order: half the step of the others for the same limit.
    most, oil = risen(tmp_path / "run", deck, rate, method, "16*25" if more else "8*50", more)
    _, reference = risen(tmp_path / "short", deck, rate, "FIM", "80*5")
    print(f"{rate} stb/d, {method}, gravity {way}: most water {most:.4f}, oil {oil:.0f}, fully implicit {reference:.0f} stb")
    assert most <= 1.0 - RESIDUAL_OIL + 0.002
    assert oil == pytest.approx(reference, rel=0.08)
