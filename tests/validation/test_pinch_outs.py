"""Cells above and below a layer that MINPV takes out, joined by PINCH, by every method against an independent simulator: water goes
in above the layer and comes out below it."""

import numpy
import pytest

from keyword_deck import KeywordDeck, WELLS
from named_run import run_named, summary_of
from peer_flow import flow_vectors, needs_flow

pytestmark = needs_flow

METHODS = ["STREAMLINE", "IMPES", "FIM"]
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


def run(folder, pinch, method):
    (folder / "OWN.DATA").write_text(deck(pinch, f"TUNEKVR\nFDMETHOD\n{method}\nMAXDT\n5 /\n"))
    ended = run_named("OWN.DATA", folder=folder)
    assert ended.returncode == 0, ended.console[-1500:]
    assert "NOT USED" not in ended.console and "not surpported" not in ended.console
    return summary_of(folder / "OWN_Summary.csv")[0]


@pytest.fixture(scope="module")
def peer(tmp_path_factory):
    return flow_vectors(tmp_path_factory.mktemp("peer") / "run", deck("PINCH\n/\n"), *VECTORS)


@pytest.mark.parametrize("method", METHODS)
def test_water_passes_a_pinched_layer_as_in_an_independent_simulator(method, tmp_path, peer):
    curves = run(tmp_path, "PINCH\n/\n", method)
    off = {}
    for vector in VECTORS:
        mine, theirs = (numpy.interp(REPORTS, c["TIME"], c[vector]) for c in (curves, peer))
        off[vector] = numpy.abs(mine - theirs).max() / numpy.abs(theirs).max()
    print(f"{method}: " + ", ".join(f"{v} {100 * o:.2f} %" for v, o in off.items()))
    assert max(off.values()) <= TOLERANCE[method]


def test_nothing_passes_where_the_deck_does_not_ask_for_it(tmp_path, peer):
    for name, pinch in (("without", ""), ("no gap", "PINCH\n0.001 NOGAP /\n")):
        (tmp_path / name).mkdir()
        curves = run(tmp_path / name, pinch, "FIM")
        assert curves["FOPT"][-1] < 0.05 * peer["FOPT"][-1]
