"""Rates of groups by every method against an independent simulator, on a deck of three producers in two groups and two
injectors. What the deck is without the keyword must differ by more than the tolerance."""

import csv
import dataclasses

import numpy
import pytest

from keyword_deck import KeywordDeck, live_oil_deck
from named_run import run_named
from peer_flow import flow_vectors, needs_flow

pytestmark = needs_flow

METHODS = ["STREAMLINE", "IMPES", "FIM"]
REPORT = 60  # days
TOLERANCE = {"FIM": 0.015, "IMPES": 0.035, "STREAMLINE": 0.035}  # of the curves' largest values
GROUP_ERROR = 0.01  # of a group's rate, over a report


@dataclasses.dataclass
class Case:
    deck: KeywordDeck
    without: KeywordDeck
    vectors: tuple


# Three producers in two groups below a platform, two injectors in a third.
GROUP_WELLS = """WELSPECS
'I1' 'GI' 1 1 8000 'WATER' /
'I2' 'GI' 1 10 8000 'WATER' /
'P1' 'GA' 10 10 8000 'OIL' /
'P2' 'GA' 10 1 8000 'OIL' /
'P3' 'GB' 5 5 8000 'OIL' /
/
COMPDAT
'I*' 2* 1 2 'OPEN' 2* 0.5 /
'P1' 2* 1 2 'OPEN' 2* 0.5 /
'P2' 2* 1 1 'OPEN' 2* 0.5 /
'P3' 2* 2 2 'OPEN' 2* 0.5 /
/
GRUPTREE
'GA' 'FP' /
'GB' 'FP' /
'FP' 'FIELD' /
'GI' 'FIELD' /
/
"""
OWN_RATES = "'P*' OPEN ORAT 250 4* 1500 /\n"
OF_GROUPS = "'P*' OPEN GRUP 5* 1500 /\n"
OWN_INJECTION = "'I*' WATER OPEN RATE 400 1* 9000 /\n"
GROUP_INJECTION = "'I*' WATER OPEN GRUP 2* 9000 /\n"
WELLS_OF_GROUPS = ("FOPT", "WOPR:P1", "WOPR:P2", "WOPR:P3")


def groups(rows, producers=OF_GROUPS, injectors=OWN_INJECTION, gas=False):
    """The wells under `rows` of the keywords of groups, their rates in the summary."""
    wells = GROUP_WELLS.replace("'WATER'", "'GAS'") if gas else GROUP_WELLS
    text = f"{wells}WCONPROD\n{producers}/\nWCONINJE\n{injectors}/\n{rows}TSTEP\n6*60 /\n"
    summary = "WOPR\n/\nWWIR\n/\nFWIT\nFGIT\n"
    return live_oil_deck(schedule=text, summary=summary) if gas else KeywordDeck(schedule=text, summary=summary)


CASES = {
    "GCONPROD of two levels": Case(groups("GCONPROD\n'FIELD' ORAT 600 /\n'GA' ORAT 200 /\n/\n"), groups("", OWN_RATES),
                                   WELLS_OF_GROUPS),
    "GCONPROD of the liquid rate, a well at its own": Case(
        groups("GCONPROD\n'FP' LRAT 3* 600 /\n/\n", OF_GROUPS + "'P1' OPEN GRUP 100 4* 1500 /\n"), groups("", OWN_RATES), WELLS_OF_GROUPS),
    "GCONPROD with guide rates of groups": Case(
        groups("GCONPROD\n'FIELD' ORAT 600 /\n'GA' FLD 6* 2 OIL /\n'GB' FLD 6* 1 OIL /\n/\n"),
        groups("GCONPROD\n'FIELD' ORAT 600 /\n/\n"), WELLS_OF_GROUPS),
    "WGRUPCON": Case(groups("GCONPROD\n'FIELD' ORAT 600 /\n/\nWGRUPCON\n'P1' YES 1 OIL /\n'P2' YES 2 OIL /\n'P3' YES 3 OIL /\n/\n"),
                     groups("GCONPROD\n'FIELD' ORAT 600 /\n/\n"), WELLS_OF_GROUPS),
    "GCONINJE of a reservoir rate": Case(groups("GCONINJE\n'GI' WATER RESV 1* 900 /\n/\n", OWN_RATES, GROUP_INJECTION),
                                         groups("", OWN_RATES), ("FOPT", "FWIT")),
    "GCONINJE of the voidage": Case(
        groups("GCONPROD\n'FIELD' ORAT 500 /\n/\nGCONINJE\n'GI' WATER VREP 3* 0.9 4* FP /\n/\n", OF_GROUPS, GROUP_INJECTION),
        groups("GCONPROD\n'FIELD' ORAT 500 /\n/\n"), ("FOPT", "FWIT", "FPR")),
    "GCONINJE of the produced gas": Case(
        groups("GCONINJE\n'FIELD' GAS REIN 2* 0.8 /\n/\n", OWN_RATES.replace("1500", "1000"),
               GROUP_INJECTION.replace("WATER", "GAS"), True),
        groups("", OWN_RATES.replace("1500", "1000"), OWN_INJECTION.replace("WATER", "GAS"), True), ("FGPT", "FGIT")),
}


@pytest.fixture(scope="module")
def peers():
    return {}


def peer_curves(name, folder, peers):
    if name not in peers:
        case = CASES[name]
        peers[name] = (flow_vectors(folder / "with", case.deck.text(), *case.vectors),
                       flow_vectors(folder / "without", case.without.text(), *case.vectors))
    return peers[name]


def summary_of(folder, text):
    (folder / "OWN.DATA").write_text(text)
    ended = run_named("OWN.DATA", folder=folder)
    assert ended.returncode == 0, ended.console[-1500:]
    assert "NOT USED" not in ended.console, ended.console[-1500:]
    rows = list(csv.reader((folder / "OWN_Summary.csv").open()))
    return {name: numpy.array([float(row[place]) for row in rows[2:]]) for place, name in enumerate(rows[0]) if name != "DATE"}


def at_reports(curves, vector, until=360):
    return numpy.interp(numpy.arange(0, until + 1, REPORT), curves["TIME"], curves[vector])


def distance(curves, other, vector):
    """Largest difference at the reports, over the largest value of the second."""
    mine, theirs = at_reports(curves, vector)[1:], at_reports(other, vector)[1:]
    return numpy.abs(mine - theirs).max() / numpy.abs(theirs).max()


@pytest.mark.parametrize("method", METHODS)
@pytest.mark.parametrize("name", sorted(CASES))
def test_rates_of_groups_are_shared_as_in_an_independent_simulator(name, method, tmp_path, peers):
    case = CASES[name]
    peer, without = peer_curves(name, tmp_path, peers)
    curves = summary_of(tmp_path, case.deck.text(f"TUNEKVR\nFDMETHOD\n{method}\nMAXDT\n5 /\n"))
    shown = {v: (distance(curves, peer, v), distance(without, peer, v)) for v in case.vectors}
    print(f"{name}, {method}: " + ", ".join(f"{v} {100 * o:.2f} % (effect {100 * e:.1f} %)" for v, (o, e) in shown.items()))
    assert max(effect for _, effect in shown.values()) > 2 * TOLERANCE[method]
    for vector, (off, _) in shown.items():
        assert off <= TOLERANCE[method], vector


# Totals that grow by so many a day, or by so much of another total.
TARGETS = {
    "GCONPROD of two levels": ("FOPT", 600, None),
    "GCONPROD of the liquid rate, a well at its own": ("FLPT", 600, None),
    "GCONINJE of the voidage": ("FVIT", 0.9, "FVPT"),
    "GCONINJE of the produced gas": ("FGIT", 0.8, "FGPT"),
}


@pytest.mark.parametrize("method", METHODS)
@pytest.mark.parametrize("name", sorted(TARGETS))
def test_groups_keep_their_rates_over_reports_in_steps_of_the_programs_choice(name, method, tmp_path):
    total, share, of = TARGETS[name]
    curves = summary_of(tmp_path, CASES[name].deck.text(f"TUNEKVR\nFDMETHOD\n{method}\n"))
    given = numpy.diff(at_reports(curves, total))
    asked = share * (numpy.diff(at_reports(curves, of)) if of else numpy.full(given.size, REPORT))
    print(f"{name}, {method}: within {100 * numpy.abs(given / asked - 1).max():.2f} %")
    numpy.testing.assert_allclose(given, asked, rtol=GROUP_ERROR)
