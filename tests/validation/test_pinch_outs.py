"""Cells above and below a layer that MINPV takes out, joined by PINCH, by every method against an independent simulator: water goes
in above the layer and comes out below it."""

import numpy
import pytest

from keyword_deck import KeywordDeck, WELLS
from peer_curves import METHODS, by_method, distances, own_curves, told
from peer_flow import flow_vectors, needs_flow

pytestmark = needs_flow

TOLERANCE = {"FIM": 0.002, "IMPES": 0.015, "STREAMLINE": 0.015}  # of the curves' largest values
REPORTS = numpy.arange(60, 1441, 60)  # days
VECTORS = ("FOPT", "FWPT", "WBHP:INJ")

PINCHED = """DX
300*100 /
DY
300*100 /
DZ
100*20 100*2 100*30 /
TOPS
100*8000 /
PORO
100*0.2 100*0.05 100*0.2 /
PERMX
300*100 /
PERMY
300*100 /
PERMZ
100*10 100*1 100*20 /
MINPV
500 /
"""
ACROSS = WELLS.replace("1  1  1 2", "1  1  1 1").replace("10 10 1 2", "10 10 3 3") + "TSTEP\n24*60 /\n"


def deck(pinch, options=""):
    text = KeywordDeck(grid=PINCHED + pinch, schedule=ACROSS).text(options)
    assert "10 10 2 /" in text
    return text.replace("10 10 2 /", "10 10 3 /")


@pytest.fixture(scope="module")
def peer(tmp_path_factory):
    return flow_vectors(tmp_path_factory.mktemp("peer") / "run", deck("PINCH\n/\n"), *VECTORS)


@pytest.mark.parametrize("method", METHODS)
def test_water_passes_a_pinched_layer_as_in_an_independent_simulator(method, tmp_path, peer):
    off = distances(own_curves(tmp_path, deck("PINCH\n/\n", by_method(method))), peer, VECTORS, REPORTS)
    print(told(method, off))
    assert max(off.values()) <= TOLERANCE[method]


def test_nothing_passes_where_the_deck_does_not_ask_for_it(tmp_path, peer):
    for name, pinch in (("without", ""), ("no gap", "PINCH\n0.001 NOGAP /\n")):
        (tmp_path / name).mkdir()
        curves = own_curves(tmp_path / name, deck(pinch, by_method("FIM")))
        assert curves["FOPT"][-1] < 0.05 * peer["FOPT"][-1]
