"""Keywords of decks, one after another, by every method against an independent simulator on the same small deck. A keyword
that were read over would miss: the independent simulator without it must differ by more than the tolerance."""

import dataclasses

import numpy
import pytest

import keyword_deck
import kvr_run
from keyword_deck import BY_PHASE, GAS_WELLS, GEOMETRY, STEPS, WELLS, KeywordDeck, by_cell, live_oil_deck
from peer_flow import flow_vectors, needs_flow, run_flow

pytestmark = needs_flow

METHODS = ["STREAMLINE", "IMPES", "FIM"]
REPORT = 60  # days
# Shares of the curves' largest values. The fully implicit method takes the peer's own steps; the others take parts of a step
# explicitly and smear fronts less than its implicit steps of five days do.
TOLERANCE = {"FIM": 0.015, "IMPES": 0.035, "STREAMLINE": 0.035}

FAULT = "FAULTS\n'F1' 5 5 1 9 1 2 'X' /\n'F2' 6 9 9 9 1 2 'J' /\n/\n"
BARRIER_X = by_cell(lambda i, j, k: 0.001 if i == 5 and j < 10 else 1)
BARRIER_X_MINUS = by_cell(lambda i, j, k: 0.001 if i == 6 and j < 10 else 1)
BARRIER_Y = by_cell(lambda i, j, k: 0.01 if j == 5 and i < 9 else 1)
BARRIER_Y_MINUS = by_cell(lambda i, j, k: 0.01 if j == 6 and i < 9 else 1)
TIGHT_LAYERS = "PERMZ\n200*0.001 /\n"
LAYERED = GEOMETRY + "PERMX\n100*300 100*50 /\nPERMY\n100*300 100*50 /\nPERMZ\n200*0.01 /\n"
HALVES = by_cell(lambda i, j, k: 1 if i <= 5 else 2)

SECOND_FLUID = """PVDO
300  1.25 1.00
2000 1.22 1.10
4000 1.19 1.20
8000 1.15 1.40
/
300  1.10 4.00
4000 1.07 5.00
8000 1.05 6.00
/
"""
TWO_WATERS = "PVTW\n4000 1.01 3.0E-6 0.5 0 /\n4000 1.03 3.0E-6 1.0 0 /\n"
TWO_DENSITIES = "DENSITY\n50 64 0.06 /\n56 70 0.06 /\n"
ONE_FLUID_TWICE = dict(oil=keyword_deck.DEAD_OIL + keyword_deck.DEAD_OIL.replace("PVDO\n", ""),
                       water=keyword_deck.PVTW + "4000 1.01 3.0E-6 0.5 0 /\n",
                       density=keyword_deck.DENSITY + "50 64 0.06 /\n", rock=keyword_deck.ROCK + "4000 4.0E-6 /\n",
                       tables="1 2 40 40")

def limited(control):
    """A producer under a rate that the injector nearly makes up for, until long behind the breakthrough."""
    return WELLS.replace("'BHP' 5* 3000", control).replace("'RATE' 1200", "'RATE' 800") + 2 * STEPS


RATE_WELLS = WELLS.replace("'BHP' 5* 3000", "'ORAT' 600 4* 1500").replace("'RATE' 1200", "'RATE' 750")

WATER_CUT_LIMIT = "WECON\n'PROD' 2* {limit} 2* {workover} /\n/\n"
LATE_WATER = STEPS * 2


@dataclasses.dataclass
class Case:
    deck: KeywordDeck
    without: KeywordDeck  # the same with the keyword left out
    vectors: tuple = ("FOPT", "FWPT")
    peer: KeywordDeck = None  # what stands for the deck where the peer does not know the keyword


def flood(schedule):
    return KeywordDeck(schedule=schedule)


def with_grid(text, base=GEOMETRY):
    return KeywordDeck(grid=base + text)


def late_with_grid(text):
    """Until water is no longer a little of what has come: when it comes is a matter of how much a method smears."""
    return KeywordDeck(grid=GEOMETRY + text, schedule=WELLS + LATE_WATER)


PLAIN = KeywordDeck()
LATE = late_with_grid("")
THREE_LAYERS = WELLS.replace("1  1  1 2", "1  1  1 1").replace("10 10 1 2", "10 10 2 2")

OBSERVED = WELLS[:WELLS.index("WCONPROD")] + "WCONHIST\n'PROD' 'OPEN' 'ORAT' 800 600 0 /\n/\n"

CASES = {
    "BOX": Case(with_grid("BOX\n3 8 2 9 1 2 /\nPERMX\n96*2 /\nPERMY\n96*2 /\nENDBOX\n"), PLAIN),
    "BOX of EQUALS": Case(with_grid("BOX\n3 8 2 9 1 2 /\nEQUALS\nPERMX 2 /\nPERMY 2 /\n/\nENDBOX\n"), PLAIN),
    "SKIP": Case(with_grid("SKIP\nPERMX\n200*1 /\nENDSKIP\nSKIP100\nPERMY\n200*1 /\nENDSKIP\n"),
                 with_grid("PERMX\n200*1 /\nPERMY\n200*1 /\n"), peer=PLAIN),
    "SKIP300": Case(with_grid("SKIP300\nEQUALS\nPERMX 2 3 8 2 9 1 2 /\nPERMY 2 3 8 2 9 1 2 /\n/\nENDSKIP\n"), PLAIN,
                    peer=with_grid("EQUALS\nPERMX 2 3 8 2 9 1 2 /\nPERMY 2 3 8 2 9 1 2 /\n/\n")),
    "SWFN, SOF2": Case(KeywordDeck(relperm=BY_PHASE),
                       KeywordDeck(relperm=keyword_deck.SWOF.replace("0.70 0", "0.30 0").replace("0.25 0", "0.05 0"))),
    "SWFN, SGFN, SOF3": Case(
        live_oil_deck(relperm=BY_PHASE[:BY_PHASE.index("SOF2")] +
                      "SGFN\n0 0 0\n0.05 0 0\n0.2 0.05 0\n0.4 0.2 0\n0.6 0.5 0\n0.8 1 0\n/\n"
                      "SOF3\n0 0 0\n0.2 0 0\n0.3 0.02 0.05\n0.4 0.13 0.1\n0.5 0.25 0.25\n0.6 0.47 0.4\n0.75 0.85 0.8\n0.8 1 1\n/\n"),
        live_oil_deck(relperm=keyword_deck.SWOF + keyword_deck.SGOF.replace("0.05 0.40", "0.3 0.10")), ("FOPT", "FGPT")),
    "PVCDO": Case(KeywordDeck(oil="PVCDO\n4000 1.19 4.0E-5 1.2 8.0E-5 /\n"),
                  KeywordDeck(oil="PVDO\n300 1.4 1.0\n8000 1.39 1.0\n/\n"), ("FOPT", "WBHP:INJ")),
    "PVTNUM": Case(KeywordDeck(oil=SECOND_FLUID, water=TWO_WATERS, density=TWO_DENSITIES, rock=ONE_FLUID_TWICE["rock"],
                               tables="1 2 40 40", regions="PVTNUM\n" + HALVES),
                   KeywordDeck(regions="PVTNUM\n" + HALVES, **ONE_FLUID_TWICE), ("FOPT", "FWPT", "WBHP:INJ")),
    "EQLNUM": Case(KeywordDeck(runspec="EQLDIMS\n2 /\n", grid=GEOMETRY + "MULTX\n" + by_cell(lambda i, j, k: 0.02 if i == 5 else 1),
                               regions="EQLNUM\n" + HALVES, solution="EQUIL\n8000 4000 9000 0 7000 0 /\n8000 3000 8020 0 7000 0 /\n"),
                   KeywordDeck(grid=GEOMETRY + "MULTX\n" + by_cell(lambda i, j, k: 0.02 if i == 5 else 1)),
                   ("FOPT", "FWPT", "WBHP:INJ")),
    "EQUALS of REGIONS": Case(
        KeywordDeck(oil=SECOND_FLUID, water=TWO_WATERS, density=TWO_DENSITIES, rock=ONE_FLUID_TWICE["rock"], tables="1 2 40 40",
                    regions="EQUALS\nPVTNUM 1 /\nPVTNUM 2 6 10 1 10 1 2 /\n/\n"),
        KeywordDeck(regions="PVTNUM\n" + HALVES, **ONE_FLUID_TWICE), ("FOPT", "FWPT", "WBHP:INJ")),
    "EQUALS of SOLUTION": Case(KeywordDeck(solution="EQUALS\nPRESSURE 4000 /\nSWAT 0.2 /\nSWAT 0.6 6 10 1 10 1 2 /\n/\n"), PLAIN),
    "WELOPEN of wells": Case(flood(WELLS + "TSTEP\n4*60 /\nWELOPEN\n'PROD' 'SHUT' /\n/\nTSTEP\n2*60 /\nWELOPEN\n'PROD' 'OPEN' /\n/\n"
                                   "TSTEP\n6*60 /\n"), PLAIN, ("FOPT", "WBHP:INJ")),
    "WELOPEN of connections": Case(
        KeywordDeck(grid=GEOMETRY + TIGHT_LAYERS, schedule=WELLS + "WELOPEN\n'PROD' 'SHUT' 0 0 1 /\n'INJ' 'SHUT' 0 0 2 /\n/\n" + STEPS),
        KeywordDeck(grid=GEOMETRY + TIGHT_LAYERS)),
    "WELOPEN by number": Case(
        KeywordDeck(grid=GEOMETRY + TIGHT_LAYERS, schedule=WELLS + "WELOPEN\n'PROD' 'SHUT' 3* 1 1 /\n'INJ' 'SHUT' 3* 2 2 /\n/\n" + STEPS),
        KeywordDeck(grid=GEOMETRY + TIGHT_LAYERS),
        peer=KeywordDeck(grid=GEOMETRY + TIGHT_LAYERS, schedule=WELLS + "WELOPEN\n'PROD' 'SHUT' 0 0 1 /\n'INJ' 'SHUT' 0 0 2 /\n/\n" + STEPS)),
    "WELOPEN of all connections": Case(
        KeywordDeck(grid=GEOMETRY + TIGHT_LAYERS, schedule=WELLS + "WELOPEN\n'PROD' 'SHUT' 0 0 1 /\n/\nTSTEP\n2*60 /\n"
                    "WELOPEN\n'PROD' 'OPEN' 0 0 0 2* /\n/\nTSTEP\n10*60 /\n"),
        KeywordDeck(grid=GEOMETRY + TIGHT_LAYERS, schedule=WELLS + "WELOPEN\n'PROD' 'SHUT' 0 0 1 /\n/\n" + STEPS)),
    "a liquid limit beside the oil rate": Case(flood(limited("'ORAT' 600 2* 700 1* 1000")), flood(limited("'ORAT' 600 4* 1000"))),
    "a water limit beside the oil rate": Case(flood(limited("'ORAT' 600 150 3* 1000")), flood(limited("'ORAT' 600 4* 1000"))),
    "oil and water limits beside the liquid rate": Case(flood(limited("'LRAT' 500 200 1* 700 1* 1000")),
                                                        flood(limited("'LRAT' 3* 700 1* 1000"))),
    "an oil limit beside the pressure": Case(flood(WELLS.replace("'BHP' 5* 3000", "'BHP' 500 4* 3000") + 2 * STEPS),
                                             flood(WELLS + 2 * STEPS)),
    "a rate limit beside an injector's pressure": Case(
        flood(WELLS.replace("'RATE' 1200 1* 9000", "'BHP' 900 1* 7000") + 2 * STEPS),
        flood(WELLS.replace("'RATE' 1200 1* 9000", "'BHP' 2* 7000") + 2 * STEPS), ("FOPT",)),
    "a gas limit beside the oil rate": Case(
        live_oil_deck(schedule=GAS_WELLS.replace("'BHP' 5* 3000", "'ORAT' 800 1* 1500 2* 1000") + 2 * STEPS),
        live_oil_deck(schedule=GAS_WELLS.replace("'BHP' 5* 3000", "'ORAT' 800 4* 1000") + 2 * STEPS), ("FOPT", "FGPT")),
    "WELTARG": Case(flood(RATE_WELLS + "TSTEP\n3*60 /\nWELTARG\n'PROD' ORAT 400 /\n'INJ' WRAT 500 /\n/\nTSTEP\n3*60 /\n"
                          "WELTARG\n'PROD' 'ORAT' 800 /\n'INJ' WRAT 1000 /\n/\nTSTEP\n6*60 /\n"), flood(RATE_WELLS + STEPS),
                    ("FOPT",)),
    "WELTARG BHP": Case(flood(WELLS + "TSTEP\n6*60 /\nWELTARG\n'PROD' 'BHP' 2000 /\n/\nTSTEP\n6*60 /\n"), PLAIN,
                        ("FOPT", "WBHP:INJ")),
    "WECON of a well": Case(flood(WELLS + WATER_CUT_LIMIT.format(limit=0.4, workover="WELL") + LATE_WATER),
                            flood(WELLS + LATE_WATER), ("FOPT",)),
    "WECON of connections": Case(
        KeywordDeck(grid=LAYERED, schedule=WELLS + WATER_CUT_LIMIT.format(limit=0.5, workover="CON") + LATE_WATER),
        KeywordDeck(grid=LAYERED, schedule=WELLS + LATE_WATER), ("FOPT",)),
    "WECON of the oil rate": Case(flood(WELLS + "WECON\n'PROD' 300 /\n/\n" + LATE_WATER + STEPS),
                                  flood(WELLS + LATE_WATER + STEPS), ("FOPT",)),
    "FAULTS, MULTFLT": Case(with_grid(FAULT + "MULTFLT\n'F1' 0.001 /\n'F2' 0.002 /\n/\n"), PLAIN),
    "MULTFLT of EDIT": Case(KeywordDeck(grid=GEOMETRY + FAULT, edit="MULTFLT\n'F*' 0.001 /\n/\n"), PLAIN,
                            peer=KeywordDeck(grid=GEOMETRY + FAULT, edit="MULTFLT\n'F1' 0.001 /\n'F2' 0.001 /\n/\n")),
    "MULTFLT of SCHEDULE": Case(KeywordDeck(grid=GEOMETRY + FAULT, schedule=WELLS + "TSTEP\n3*60 /\nMULTFLT\n'F1' 0.001 /\n"
                                            "'F2' 0.002 /\n/\nTSTEP\n9*60 /\n"), PLAIN),
    "MULTFLT of SCHEDULE, again and again": Case(
        KeywordDeck(grid=GEOMETRY + FAULT + "MULTFLT\n'F*' 0.03 /\n/\n",
                    schedule=WELLS + "TSTEP\n3*60 /\nMULTFLT\n'F1' 0.03 /\n'F2' 0.03 /\n/\nTSTEP\n3*60 /\nMULTFLT\n'F1' 1000 /\n"
                    "'F2' 1000 /\n/\nTSTEP\n6*60 /\n"), with_grid(FAULT + "MULTFLT\n'F1' 0.0009 /\n'F2' 0.0009 /\n/\n"),
        peer=KeywordDeck(grid=GEOMETRY + FAULT + "MULTFLT\n'F1' 0.03 /\n'F2' 0.03 /\n/\n",
                         schedule=WELLS + "TSTEP\n3*60 /\nMULTFLT\n'F1' 0.03 /\n'F2' 0.03 /\n/\nTSTEP\n3*60 /\nMULTFLT\n'F1' 1000 /\n"
                         "'F2' 1000 /\n/\nTSTEP\n6*60 /\n")),
    "ADD": Case(late_with_grid("ADD\nPERMX 200 1 5 1 10 1 2 /\nPORO 0.1 1 5 1 10 1 2 /\n/\n"), LATE),
    "MULTIREG": Case(late_with_grid("MULTNUM\n" + HALVES + "MULTIREG\nPERMX 3 1 M /\nPORO 1.5 2 M /\n/\n"), LATE),
    "MULTIREG by FLUXNUM": Case(late_with_grid("FLUXNUM\n" + HALVES + "MULTIREG\nPERMX 3 1 /\nPORO 1.5 2 F /\n/\n"), LATE),
    "EQUALREG": Case(late_with_grid("MULTNUM\n" + HALVES + "EQUALREG\nPERMX 300 1 M /\nPORO 0.3 2 M /\n/\n"), LATE),
    "ADDREG": Case(late_with_grid("OPERNUM\n" + HALVES + "ADDREG\nPERMX 200 1 O /\nPORO 0.1 2 O /\n/\n"), LATE),
    "PORV": Case(KeywordDeck(grid=GEOMETRY + "MULTPV\n200*3 /\n", edit="PORV\n100* 100*4000 /\nMULTIPLY\nPORV 2 1 10 1 10 2 2 /\n/\n",
                            schedule=WELLS + LATE_WATER), late_with_grid("MULTPV\n200*3 /\n")),
    "TRANX, TRANY": Case(KeywordDeck(edit="BOX\n5 5 1 9 1 2 /\nTRANX\n18*0.002 /\nENDBOX\nTRANY\n200* /\n"), PLAIN),
    "MINPV": Case(with_grid("PORO\n" + by_cell(lambda i, j, k: 0.02 if i == 5 and j < 10 else 0.2) + "MINPV\n3000 /\n"),
                  with_grid("PORO\n" + by_cell(lambda i, j, k: 0.02 if i == 5 and j < 10 else 0.2))),
    "WPIMULT": Case(flood(WELLS + "TSTEP\n3*60 /\nWPIMULT\n'PROD' 0.2 /\n'INJ' 0.5 0 0 1 /\n/\nTSTEP\n9*60 /\n"), PLAIN,
                    ("FOPT", "FWPT", "WBHP:INJ")),
    "MULTPV": Case(with_grid("MULTPV\n100*2 100*1 /\n"), PLAIN),
    "MULTPV of EDIT": Case(KeywordDeck(grid=GEOMETRY + "MULTPV\n200*0.5 /\n", edit="MULTPV\n100*2 100*1 /\n"), PLAIN),
    "MULTPV of rows": Case(with_grid("EQUALS\nMULTPV 4 1 10 1 10 1 1 /\n/\nMULTIPLY\nMULTPV 0.5 1 10 1 10 1 1 /\n/\n"), PLAIN),
    "MULTX": Case(with_grid("MULTX\n" + BARRIER_X), PLAIN),
    "MULTX-": Case(with_grid("MULTX-\n" + BARRIER_X_MINUS), PLAIN),
    "MULTY": Case(with_grid("MULTY\n" + BARRIER_Y), PLAIN),
    "MULTY-": Case(with_grid("MULTY-\n" + BARRIER_Y_MINUS), PLAIN),
    "MULTZ": Case(KeywordDeck(grid=GEOMETRY + "MULTZ\n100*0.0005 100*1 /\n", schedule=THREE_LAYERS + 2 * STEPS),
                  KeywordDeck(schedule=THREE_LAYERS + 2 * STEPS)),
    "MULTZ-": Case(KeywordDeck(grid=GEOMETRY + "MULTZ-\n100*1 100*0.0005 /\n", schedule=THREE_LAYERS + 2 * STEPS),
                   KeywordDeck(schedule=THREE_LAYERS + 2 * STEPS)),
    "MULTZ- of EQUALS": Case(KeywordDeck(grid=GEOMETRY + "EQUALS\n'MULTZ-' 0.0005 1 10 1 10 2 2 /\n/\n",
                                         schedule=THREE_LAYERS + 2 * STEPS), KeywordDeck(schedule=THREE_LAYERS + 2 * STEPS)),
    "DRSDT": Case(live_oil_deck(schedule="DRSDT\n0 /\n" + GAS_WELLS + STEPS), live_oil_deck(), ("FGPT", "WBHP:INJ")),
    "DRSDT above 0": Case(live_oil_deck(schedule="DRSDT\n0.0003 /\n" + GAS_WELLS + STEPS), live_oil_deck(), ("FGPT", "WBHP:INJ")),
    "NTG": Case(with_grid("NTG\n200*0.4 /\n"), with_grid("PORO\n200*0.08 /\n"), ("FOPT", "WBHP:INJ")),
    "COMPDAT Kh": Case(flood(WELLS.replace("2* 0.5 /", "2* 0.5 8000 /") + STEPS), PLAIN, ("FOPT", "WBHP:INJ")),
    "WEFAC": Case(KeywordDeck(schedule=WELLS + "WEFAC\n'PROD' 0.6 /\n'INJ' 0.7 /\n/\n" + STEPS, summary="WOPR\n/\nWWIR\n/\n"),
                  KeywordDeck(summary="WOPR\n/\nWWIR\n/\n"), ("FOPT", "FOPR", "WOPR:PROD", "WWIR:INJ", "WBHP:INJ")),
    "MULTREGT": Case(with_grid("MULTNUM\n" + HALVES + "MULTREGT\n1 2 0.5 XYZ ALL M /\n1 2 0.01 XY ALL M /\n/\n"), PLAIN, ("FOPT", "WBHP:INJ")),
    "GEFAC": Case(flood("GRUPTREE\n'G' 'TOP' /\n/\n" + WELLS + "GEFAC\n'TOP' 0.8 /\n'G' 0.75 /\n/\n" + STEPS), PLAIN,
                  ("FOPT", "FOPR", "WBHP:INJ")),
    "WHISTCTL": Case(flood("WHISTCTL\nLRAT /\n" + OBSERVED + STEPS), flood(OBSERVED + STEPS), ("FOPT", "FOPR", "FPR")),
}


@pytest.fixture(scope="module")
def peers():
    return {}


def peer_curves(name, case, folder, peers):
    """Curves of the independent simulator with and without the keyword, by case."""
    if name not in peers:
        peers[name] = (flow_vectors(folder / "with", (case.peer or case.deck).text(), *case.vectors),
                       flow_vectors(folder / "without", case.without.text(), *case.vectors))
    return peers[name]


def distance(times, values, other_times, other):
    """Largest difference of two curves at the reports, over the largest value of the second."""
    at = numpy.arange(REPORT, min(times[-1], other_times[-1]) + 1, REPORT)
    difference = numpy.interp(at, times, values) - numpy.interp(at, other_times, other)
    return numpy.abs(difference).max() / numpy.abs(other).max()


@pytest.mark.parametrize("method", METHODS)
@pytest.mark.parametrize("name", sorted(CASES))
def test_a_keyword_acts_as_in_an_independent_simulator(name, method, tmp_path, peers):
    case = CASES[name]
    peer, without = peer_curves(name, case, tmp_path, peers)
    result = kvr_run.finished_normally(
        kvr_run.run(tmp_path, case.deck.text(f"TUNEKVR\nFDMETHOD\n{method}\nMAXDT\n5 /\n")))
    table = result.table()
    tolerance = TOLERANCE[method]
    shown = []
    for vector in case.vectors:
        off = distance(table["TIME"], table[vector], peer["TIME"], peer[vector])
        effect = distance(without["TIME"], without[vector], peer["TIME"], peer[vector])
        shown.append((vector, off, effect))
    print(f"{name}, {method}: " + ", ".join(f"{v} {100 * o:.2f} % (effect {100 * e:.1f} %)" for v, o, e in shown))
    assert max(effect for _, _, effect in shown) > 2 * tolerance
    for vector, off, _ in shown:
        assert off <= tolerance, vector


def test_regions_of_the_balance_hold_what_an_independent_simulator_counts(tmp_path):
    deck = KeywordDeck(regions="FIPNUM\n" + HALVES, summary="ROIP\n/\nRWIP\n/\n")
    peer = flow_vectors(tmp_path / "peer", deck.text(), "ROIP:1", "ROIP:2", "RWIP:1", "RWIP:2")
    result = kvr_run.finished_normally(kvr_run.run(tmp_path, deck.text("TUNEKVR\nFDMETHOD\nFIM\nMAXDT\n5 /\n")))
    table = result.table("KVR_Run_Regions.out")
    balance = result.table("KVR_Run_SweepVolume.out")
    for region in (1, 2):
        rows = table["REGION"] == region
        for name, vector in (("FOIP", "ROIP"), ("FWIP", "RWIP")):
            off = distance(table["TIME"][rows], table[name][rows], peer["TIME"], peer[f"{vector}:{region}"])
            print(f"region {region}, {name}: {100 * off:.3f} %")
            assert off <= 0.005
    first, second = table["REGION"] == 1, table["REGION"] == 2
    numpy.testing.assert_allclose(table["FOIP"][first] + table["FOIP"][second], balance["|FOIP_NOW|"], rtol=1e-6)


CONTACTS_IN_CELLS = "EQUIL\n8010 3000 {water} 0 {gas} 0 1 0 {parts} /\nRSVD\n8000 0.8\n8100 0.8 /\n"
TRANSITION = keyword_deck.SWOF.replace("0.2 0.00 1.00 0", "0.2 0.00 1.00 6").replace("0.5 0.15 0.25 0", "0.5 0.15 0.25 2").replace(
    "0.3 0.03 0.70 0", "0.3 0.03 0.70 4")


# Where nothing is said, cells of a transition zone that goes on above them keep their centres, here alone.
@pytest.mark.parametrize("curve, parts", [(keyword_deck.SWOF, parts) for parts in ("1*", "0", "-2", "-20")] +
                         [(TRANSITION, parts) for parts in ("0", "-2", "-20")])
def test_cells_that_contacts_cross_hold_what_an_independent_simulator_counts(curve, parts, tmp_path):
    deck = live_oil_deck(relperm=curve + keyword_deck.SGOF, solution=CONTACTS_IN_CELLS.format(water=8036.3, gas=8006.2, parts=parts),
                         summary="FOIP\nFWIP\nFGIP\n", schedule=GAS_WELLS + "TSTEP\n0.01 /\n")
    peer = flow_vectors(tmp_path / "peer", deck.text(), "FOIP", "FWIP", "FGIP")
    result = kvr_run.finished_normally(kvr_run.run(tmp_path, deck.text("TUNEKVR\nFDMETHOD\nFIM\n")))
    balance = result.table("KVR_Run_SweepVolume.out")
    for name in ("FOIP", "FWIP", "FGIP"):
        ours, theirs = balance[f"|{name}_NOW|"][-1], peer[name][-1]
        print(f"{parts}, {name}: {100 * (ours / theirs - 1):.3f} %")
        assert ours == pytest.approx(theirs, rel=0.001)


@pytest.mark.parametrize("method", METHODS)
def test_a_tree_of_groups_without_rates_changes_nothing(method, tmp_path):
    options = f"TUNEKVR\nFDMETHOD\n{method}\nMAXDT\n20 /\n"
    (tmp_path / "with").mkdir()
    with_tree = kvr_run.run(tmp_path / "with", flood("GRUPTREE\n'G' 'FIELD' /\n/\n" + WELLS + STEPS).text(options))
    assert "GRUPTREE -> not surpported" not in with_tree.console
    plain = kvr_run.run(tmp_path, PLAIN.text(options))
    numpy.testing.assert_array_equal(with_tree.table()["FOPT"], plain.table()["FOPT"])


@pytest.mark.parametrize("section", ["runspec", "schedule"])
def test_a_deck_that_is_only_checked_runs_nothing_here_and_there(section, tmp_path):
    deck = KeywordDeck(runspec="NOSIM\n") if section == "runspec" else flood("NOSIM\n" + WELLS + STEPS)
    result = kvr_run.run(tmp_path, deck.text())
    assert result.status == 0 and "NOSIM :: THE DECK HAS BEEN READ AND CHECKED" in result.console
    assert list(result.table()["TIME"]) == [0.0]
    status, printed = run_flow(tmp_path / "peer", deck.text())
    assert status == 0 and "Starting time step" not in printed
