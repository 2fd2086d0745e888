"""Saturations that tables do not reach, in a deck of the common form, by every method against an independent simulator: both hold
the end values. The same tables with rows that extend them must differ by more than the tolerance."""

import numpy
import pytest

import keyword_deck
from keyword_deck import KeywordDeck
from named_run import run_named, summary_of
from peer_flow import flow_vectors, needs_flow

pytestmark = needs_flow

METHODS = ["STREAMLINE", "IMPES", "FIM"]
TOLERANCE = {"FIM": 0.01, "IMPES": 0.02, "STREAMLINE": 0.02}  # of the curves' largest values
REPORTS = numpy.arange(60, 721, 60)  # days
VECTORS = ("FOPT", "FWPT", "WBHP:INJ")

SHORT = keyword_deck.SWOF.replace("1.0 1.00 0.00 0\n", "")
EXTENDED = SHORT.replace("0.2 0.00", "0.1 0.00 1.30 0\n0.2 0.00").replace("/", "0.95 0.90 0.00 0\n/")
STATE = "EQUALS\nPRESSURE 4000 /\nSWAT 0.1 /\nSWAT 0.95 1 5 1 10 1 2 /\n/\n"


@pytest.fixture(scope="module")
def peers(tmp_path_factory):
    folder = tmp_path_factory.mktemp("peers")
    return [flow_vectors(folder / name, KeywordDeck(relperm=table, solution=STATE).text(), *VECTORS)
            for name, table in (("short", SHORT), ("extended", EXTENDED))]


def distance(curves, other, vector):
    mine, theirs = (numpy.interp(REPORTS, c["TIME"], c[vector]) for c in (curves, other))
    return numpy.abs(mine - theirs).max() / numpy.abs(theirs).max()


@pytest.mark.parametrize("method", METHODS)
def test_end_values_hold_beyond_the_tables_as_in_an_independent_simulator(method, tmp_path, peers):
    peer, extended = peers
    text = KeywordDeck(relperm=SHORT, solution=STATE).text(f"TUNEKVR\nFDMETHOD\n{method}\nMAXDT\n5 /\n")
    (tmp_path / "OWN.DATA").write_text(text)
    ended = run_named("OWN.DATA", folder=tmp_path)
    assert ended.returncode == 0, ended.console[-1500:]
    curves, _ = summary_of(tmp_path / "OWN_Summary.csv")
    shown = {v: (distance(curves, peer, v), distance(extended, peer, v)) for v in VECTORS}
    print(f"{method}: " + ", ".join(f"{v} {100 * o:.2f} % (extended {100 * e:.1f} %)" for v, (o, e) in shown.items()))
    assert max(effect for _, effect in shown.values()) > 2 * TOLERANCE[method]
    for vector, (off, _) in shown.items():
        assert off <= TOLERANCE[method], vector
