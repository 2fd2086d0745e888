"""Wells held at a pressure of the tubing head by tables of VFPPROD and VFPINJ, by every method against an independent simulator."""

import numpy
import pytest

from keyword_deck import KeywordDeck, WELLS, live_oil_deck
from peer_curves import METHODS, by_method, distances, own_curves, remembered, told
from peer_flow import needs_flow

pytestmark = needs_flow

# Means over the run, of the curves' largest values: at the arrival of water curves differ for a while as they do without tables.
TOLERANCE = {"FIM": 0.002, "IMPES": 0.015, "STREAMLINE": 0.015}
REPORTS = numpy.arange(60, 1441, 60)  # days

RATES = (100, 500, 1000, 2000, 3000)  # stb/day
HEADS = (200, 500, 1000)  # psia
CUTS = (0, 0.4, 0.9)
RATIOS = (0, 1)  # Mscf/stb
LIFTS = (0, 100)
INJECTED, PUMPED = (100, 500, 1500, 4000, 20000), (500, 1000, 1500)


def pressure(rate, head, cut, ratio, lift):
    """psia: a column that water makes heavier and gas lighter, and friction."""
    return round(head + 2300 + 500 * cut - 300 * ratio - lift + 7e-5 * rate ** 2 * (1 + 0.2 * ratio), 3)


def row(values):
    return " ".join(map(str, values)) + " /\n"


def producer_table():
    text = "VFPPROD\n1 8000 LIQ WCT GOR THP ' ' FIELD BHP /\n" + "".join(map(row, (RATES, HEADS, CUTS, RATIOS, LIFTS)))
    for t, head in enumerate(HEADS, 1):
        for w, cut in enumerate(CUTS, 1):
            for g, ratio in enumerate(RATIOS, 1):
                for a, lift in enumerate(LIFTS, 1):
                    text += row((t, w, g, a, *(pressure(rate, head, cut, ratio, lift) for rate in RATES)))
    return text


def injector_table():
    """Number 2 as a pressure that no rate changes, number 3 with friction."""
    text = ""
    for number, friction in ((2, 0), (3, 0.1)):
        text += f"VFPINJ\n{number} 8000 WAT THP FIELD BHP /\n" + row(INJECTED) + row(PUMPED)
        for t, head in enumerate(PUMPED, 1):
            text += row((t, *(head + 3400 - friction * rate for rate in INJECTED)))
    return text


def deck(make=KeywordDeck, injector="'INJ' 'WATER' 'OPEN' 'RATE' 1200 1* 9000 /", producer="'PROD' 'OPEN' 'THP' 5* 1000 400 1 /", later=""):
    wells = WELLS.replace("'INJ' 'WATER' 'OPEN' 'RATE' 1200 1* 9000 /", injector).replace("'PROD' 'OPEN' 'BHP' 5* 3000 /", producer)
    table = wells.index("WCONINJE")
    schedule = wells[:table] + producer_table() + injector_table() + wells[table:]
    return make(schedule=schedule + "TSTEP\n12*60 /\n" + later + "TSTEP\n12*60 /\n").text


CASES = {
    "head": deck(),
    "rate, then head": deck(producer="'PROD' 'OPEN' 'ORAT' 1000 4* 1000 300 1 50 /", later="WELTARG\n'PROD' THP 450 /\n/\n"),
    "gas in the oil": deck(live_oil_deck, producer="'PROD' 'OPEN' 'ORAT' 700 4* 1000 200 1 50 /"),
}
VECTORS = ("FOPR", "FWPR", "FOPT", "FWPT", "FPR", "WBHP:PROD", "WTHP:PROD", "WBHP:INJ")


def text_of(case, options=""):
    return CASES[case](options).replace("WBHP\n/", "WBHP\n/\nWTHP\n/")


def run(folder, case, method):
    return own_curves(folder, text_of(case, by_method(method)), ("NOT USED", "WARNING"))


@pytest.fixture(scope="module")
def peer(tmp_path_factory):
    return remembered(tmp_path_factory.mktemp, text_of, VECTORS)


@pytest.mark.parametrize("method", METHODS)
@pytest.mark.parametrize("case", CASES)
def test_wells_give_what_the_tubing_lets_them_as_in_an_independent_simulator(case, method, tmp_path, peer):
    off = distances(run(tmp_path, case, method), peer(case), VECTORS, REPORTS, numpy.mean)
    print(told(f"{case}, {method}", off))
    assert max(off.values()) <= TOLERANCE[method]


BY_HEAD = "'INJ' 'WATER' 'OPEN' 'THP' 1* 1* 9000 {} {} /"
AT_3000 = "'PROD' 'OPEN' 'BHP' 5* 3000 /"


@pytest.mark.parametrize("method", METHODS)
def test_an_injector_stands_where_the_table_has_it(method, tmp_path, peer):
    CASES["level injector"] = deck(injector=BY_HEAD.format(1300, 2), producer=AT_3000)
    CASES["the same pressure"] = deck(injector="'INJ' 'WATER' 'OPEN' 'BHP' 1* 1* 4700 /", producer=AT_3000)
    curves, theirs = run(tmp_path, "level injector", method), peer("the same pressure")
    off = distances(curves, theirs, ("FOPT", "FWPT", "FPR", "WBHP:INJ"), REPORTS, numpy.mean)
    assert len(off) == 4 and max(off.values()) <= TOLERANCE[method]
    CASES["injector with friction"] = deck(injector=BY_HEAD.format(1300, 3), producer=AT_3000)
    curves = run(tmp_path, "injector with friction", method)
    late = curves["TIME"] > 5
    assert curves["WWIR:INJ"][late].min() > 100
    off = curves["WBHP:INJ"][late] - (1300 + 3400 - 0.1 * curves["WWIR:INJ"][late])
    assert numpy.abs(off).max() <= 5  # psia; the rate is that of the step, the limit that of its last iteration
