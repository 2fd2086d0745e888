"""Saturation functions scaled to end points by cell, against an independent simulator: what is in place, and floods by every
method. Functions that were not scaled would miss: the independent simulator without the end points must differ by more than
the tolerance."""

import dataclasses

import numpy
import pytest

from keyword_deck import GAS_WELLS, SGOF, SWOF, WELLS, KeywordDeck, by_cell, live_oil_deck
from named_run import run_named
from named_run import summary_of as columns_of
from peer_flow import flow_vectors, needs_flow

pytestmark = needs_flow

METHODS = ["STREAMLINE", "IMPES", "FIM"]
REPORT = 60  # days
# Shares of the curves' largest values: explicit transport smears fronts less than the peer's steps do.
TOLERANCE = {"FIM": 0.003, "IMPES": 0.015, "STREAMLINE": 0.015}
LONG_STEPS = "TSTEP\n24*60 /\n"

WATER = """SWL
200*0.1 /
SWCR
200*0.25 /
SWU
200*0.9 /
SOWCR
200*0.3 /
"""
VALUES = "KRW\n200*0.4 /\nKRO\n200*0.7 /\nKRWR\n200*0.2 /\nKRORW\n200*0.6 /\n"
EVERY_CELL = ("SWL\n" + by_cell(lambda i, j, k: round(0.1 + 0.01 * i + 0.005 * j, 4)) +
              "COPY\nSWL SWCR /\n/\nADD\nSWCR 0.05 /\n/\nEQUALS\nSOWCR 0.35 1 10 1 10 1 1 /\nSOWCR 0.15 1 10 1 10 2 2 /\n/\n")
GAS = "SGCR\n200*0.15 /\nSOGCR\n200*0.3 /\nKRG\n200*0.6 /\nKRGR\n200*0.25 /\nKRORG\n200*0.5 /\n"


@dataclasses.dataclass
class Case:
    props: str
    gas: bool = False
    vectors: tuple = ("FOPT", "FWPT")

    def deck(self, props):
        if self.gas:
            return live_oil_deck(runspec="ENDSCALE\n/\n", relperm=SWOF + SGOF + props, schedule=GAS_WELLS + LONG_STEPS)
        return KeywordDeck(runspec="ENDSCALE\n/\n", relperm=SWOF + props, schedule=WELLS + LONG_STEPS)


CASES = {
    "three points and values": Case("SCALECRS\nYES /\n" + WATER + VALUES),
    "every cell its own": Case(EVERY_CELL),
    "gas by three points": Case("SCALECRS\nYES /\n" + GAS, gas=True, vectors=("FOPT", "FGPT")),
}


def summary_of(folder, text):
    folder.mkdir()
    (folder / "OWN.DATA").write_text(text)
    ended = run_named("OWN.DATA", folder=folder)
    assert ended.returncode == 0, ended.console[-1500:]
    assert "NOT USED" not in ended.console, ended.console[-1500:]
    return columns_of(folder / "OWN_Summary.csv")[0]


def distance(times, values, other_times, other):
    """Largest difference of two curves at the reports, over the largest value of the second."""
    at = numpy.arange(REPORT, min(times[-1], other_times[-1]) + 1, REPORT)
    difference = numpy.interp(at, times, values) - numpy.interp(at, other_times, other)
    return numpy.abs(difference).max() / numpy.abs(other).max()


@pytest.fixture(scope="module")
def peers():
    return {}


@pytest.mark.parametrize("method", METHODS)
@pytest.mark.parametrize("name", sorted(CASES))
def test_a_flood_with_scaled_functions_goes_as_in_an_independent_simulator(name, method, tmp_path, peers):
    case = CASES[name]
    if name not in peers:
        peers[name] = [flow_vectors(tmp_path / folder, case.deck(props).text(), *case.vectors, longest=10)
                       for folder, props in (("with", case.props), ("without", ""))]
    peer, without = peers[name]
    ours = summary_of(tmp_path / "ours", case.deck(case.props).text(f"TUNEKVR\nFDMETHOD\n{method}\nMAXDT\n10 /\n"))
    shown = []
    for vector in case.vectors:
        off = distance(ours["TIME"], ours[vector], peer["TIME"], peer[vector])
        effect = distance(without["TIME"], without[vector], peer["TIME"], peer[vector])
        shown.append((vector, off, effect))
    print(f"{name}, {method}: " + ", ".join(f"{v} {100 * o:.2f} % (effect {100 * e:.1f} %)" for v, o, e in shown))
    assert max(effect for _, _, effect in shown) > 2 * TOLERANCE[method]
    for vector, off, _ in shown:
        assert off <= TOLERANCE[method], vector


# Contacts in a column: capillary curves of every layer, and none at all.
CURVES = SWOF.replace("0.2 0.00 1.00 0", "0.2 0.00 1.00 6").replace("0.3 0.03 0.70 0", "0.3 0.03 0.70 4").replace(
    "0.5 0.15 0.25 0", "0.5 0.15 0.25 2")
LAYERS = ("SWL\n100*0.1 100*0.25 /\nSWCR\n100*0.15 100*0.3 /\nSWU\n100*0.95 100*0.9 /\n"
          "SGU\n100*0.85 100*0.7 /\n")
HEIGHTS = "PCW\n100*3 100*9 /\n"


@pytest.mark.parametrize("curves, points", [(CURVES, LAYERS + HEIGHTS), (SWOF, LAYERS)], ids=["capillary", "none"])
def test_in_place_is_what_an_independent_simulator_counts(curves, points, tmp_path):
    def deck(props):
        return live_oil_deck(runspec="ENDSCALE\n/\n", relperm=curves + SGOF + props, summary="FOIP\nFWIP\nFGIP\n",
                             solution="EQUIL\n8010 3000 8036.3 0 8006.2 0 1 0 -10 /\nRSVD\n8000 0.8\n8100 0.8 /\n",
                             schedule=GAS_WELLS + "TSTEP\n0.01 /\n")

    names = ("FOIP", "FWIP", "FGIP")
    peer, without = (flow_vectors(tmp_path / folder, deck(props).text(), *names) for folder, props in (("with", points), ("without", "")))
    ours = summary_of(tmp_path / "ours", deck(points).text("TUNEKVR\nFDMETHOD\nFIM\n"))
    for name in names:
        print(f"{name}: {100 * (ours[name][-1] / peer[name][-1] - 1):.3f} % (effect {100 * (without[name][-1] / peer[name][-1] - 1):.1f} %)")
        assert ours[name][-1] == pytest.approx(peer[name][-1], rel=0.001)
    assert without["FOIP"][-1] != pytest.approx(peer["FOIP"][-1], rel=0.01)


def test_water_that_the_deck_gives_stands_where_an_independent_simulator_has_it(tmp_path):
    def deck(props):
        return KeywordDeck(runspec="ENDSCALE\n/\n", relperm=CURVES + props, summary="FOIP\nFWIP\n",
                           solution="EQUIL\n8000 4000 8100 0 7000 0 1* 1* 0 /\n", schedule=WELLS + "TSTEP\n0.01 /\n")

    given = "SWL\n200*0.15 /\nSWCR\n200*0.2 /\nSWATINIT\n" + by_cell(lambda i, j, k: round(0.1 + 0.03 * i + 0.1 * k, 3))
    peer, without = (flow_vectors(tmp_path / folder, deck(props).text(), "FOIP", "FWIP") for folder, props in (("with", given), ("without", "")))
    ours = summary_of(tmp_path / "ours", deck(given).text("TUNEKVR\nFDMETHOD\nFIM\n"))
    for name in ("FOIP", "FWIP"):
        print(f"{name}: {100 * (ours[name][-1] / peer[name][-1] - 1):.3f} % (effect {100 * (without[name][-1] / peer[name][-1] - 1):.1f} %)")
        assert ours[name][-1] == pytest.approx(peer[name][-1], rel=0.0005)
        assert without[name][-1] != pytest.approx(peer[name][-1], rel=0.01)
