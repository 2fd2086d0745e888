"""Cells joined that are not neighbours in I, J, K, by every method against an independent simulator: across a fault with a throw of a
layer and a half, and by rows of NNC; with EDITNNC and MULTFLT on them."""

import numpy
import pytest

from keyword_deck import GEOMETRY, KeywordDeck, WELLS, live_oil_deck
from peer_curves import METHODS, by_method, distances, own_curves, remembered, told
from peer_flow import needs_flow

pytestmark = needs_flow

TOLERANCE = {"FIM": 0.003, "IMPES": 0.02, "STREAMLINE": 0.02}  # of the curves' largest values
REPORTS = numpy.arange(60, 1801, 60)  # days

COLUMNS, ROWS, LAYERS, SIZE, HEIGHT = 10, 10, 4, 100.0, 20.0


def corner_points(throw):
    """Level layers; columns from i = 6 on lie `throw` ft deeper."""
    coord = "".join(f"{i * SIZE} {j * SIZE} 7000 {i * SIZE} {j * SIZE} 9000\n" for j in range(ROWS + 1) for i in range(COLUMNS + 1))
    zcorn = ""
    for edge in range(2 * LAYERS):
        depth = 8000 + HEIGHT * ((edge + 1) // 2)
        zcorn += f"{COLUMNS}*{depth} {COLUMNS}*{depth + throw}\n" * (2 * ROWS)
    cells = COLUMNS * ROWS * LAYERS
    return (f"COORD\n{coord}/\nZCORN\n{zcorn}/\nPORO\n{cells}*0.2 /\nPERMX\n{cells // 2}*100 {cells // 2}*300 /\n"
            f"PERMY\n{cells}*100 /\nPERMZ\n{cells}*10 /\n")


def faulted(throw=30.0, grid="", edit=""):
    wells = WELLS.replace("1  1  1 2", "1  1  1 4").replace("10 10 1 2", "10 10 1 4")
    deck = KeywordDeck(grid=corner_points(throw) + grid, edit=edit, schedule=wells + "TSTEP\n30*60 /\n")
    return lambda options: deck.text(options).replace("10 10 2 /", "10 10 4 /")


# Nothing passes between the layers but through these rows, and the wells are in different layers.
CROSSED = (GEOMETRY + "MULTZ\n200*0 /\n"
           + "NNC\n10 10 1 10 10 2 4 /\n5 5 1 7 7 2 3 /\n1 1 1 2 2 2 1 /\n5 5 1 7 7 2 1 /\n/\n")
BETWEEN = WELLS.replace("1  1  1 2", "1  1  1 1").replace("10 10 1 2", "10 10 2 2") + "TSTEP\n30*60 /\n"


def crossed(edit=""):
    return KeywordDeck(grid=CROSSED, edit=edit, schedule=BETWEEN).text


def gas_crossed():
    wells = BETWEEN.replace("'WATER' 'OPEN' 'RATE' 1200", "'GAS' 'OPEN' 'RATE' 1500").replace("8000 'WATER'", "8000 'GAS'")
    return live_oil_deck(grid=CROSSED, schedule=wells).text


FAULT = "FAULTS\n'F' 5 5 1 10 1 4 'X' /\n/\nMULTFLT\n'F' 0.01 /\n/\n"

CASES = {
    "fault": faulted(),
    "edited fault": faulted(grid=FAULT, edit="EDITNNC\n5 3 3 6 3 1 3 /\n5 4 3 6 4 1 5 /\n/\n"),
    "rows": crossed("EDITNNC\n5 5 1 7 7 2 0.1 /\n/\n"),
    "gas": gas_crossed(),
}
VECTORS = ("FOPT", "FWPT", "FGPT", "FPR", "WBHP:INJ")


@pytest.fixture(scope="module")
def peer(tmp_path_factory):
    return remembered(tmp_path_factory.mktemp, lambda case: CASES[case](""), VECTORS)


@pytest.mark.parametrize("method", METHODS)
@pytest.mark.parametrize("case", CASES)
def test_what_passes_is_that_of_an_independent_simulator(case, method, tmp_path, peer):
    off = distances(own_curves(tmp_path, CASES[case](by_method(method))), peer(case), VECTORS, REPORTS)
    print(told(f"{case}, {method}", off))
    assert max(off.values()) <= TOLERANCE[method]
