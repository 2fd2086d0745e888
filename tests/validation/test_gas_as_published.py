"""Gas injection into live oil by the default method, decks as published and without any option, against an independent
fully implicit simulator."""

import numpy
import pytest

import kvr_run
from curves import relative_difference
from public_floods import needs_public_decks

pytestmark = needs_public_decks

DECKS = kvr_run.PUBLIC_DECKS
CASES = {"SPE1CASE2": (DECKS / "spe1" / "SPE1CASE2.DATA", DECKS / "reference" / "SPE1CASE2.csv"),
         "LIVEGAS": (DECKS / "robust" / "LIVEGAS.DATA", DECKS / "robust" / "LIVEGAS.csv")}


@pytest.fixture(scope="module", params=sorted(CASES))
def published(request, tmp_path_factory):
    """Table of our run, with the curve of the reference."""
    deck, curve = CASES[request.param]
    text = deck.read_text()
    assert "TUNEKVR" not in text
    result = kvr_run.finished_normally(kvr_run.run(tmp_path_factory.mktemp(request.param), text))
    print(f"{request.param}: {result.cpu_seconds:.1f} s")
    return request.param, result, kvr_run.read_csv(curve)


def test_cumulative_oil(published):
    name, result, curve = published
    ours, theirs = result.table()["FOPT"][-1], curve.get("FOPT", curve["WOPT:PROD"])[-1]
    print(f"{name}: cumulative oil {100 * (ours / theirs - 1):+.2f} %")
    assert result.table()["TIME"][-1] == pytest.approx(curve["TIME"][-1], rel=1e-6)
    assert relative_difference(ours, theirs) <= 0.01


def test_gas_oil_ratio_at_the_end(published):
    name, result, curve = published
    ours, theirs = result.table()["FGOR"][-1], curve["FGOR"][-1]
    print(f"{name}: gas-oil ratio {ours:.3f} against {theirs:.3f}, {100 * (ours / theirs - 1):+.2f} %")
    assert relative_difference(ours, theirs) <= 0.05


def test_field_pressure_at_all_times(published):
    name, result, curve = published
    table = result.table()
    inside = table["TIME"] >= curve["TIME"][0]
    expected = numpy.interp(table["TIME"][inside], curve["TIME"], curve["FPR"])
    difference = numpy.abs(table["FPR"][inside] / expected - 1.0).max()
    print(f"{name}: field pressure within {100 * difference:.2f} %")
    assert difference <= 0.02


def test_balances(published):
    name, result, _ = published
    balance = result.table("KVR_Run_SweepVolume.out")
    for column in ("|MBEO|", "|MBEW|", "|MBEG|"):
        error = numpy.abs(balance[column]).max()
        print(f"{name} {column}: {error:.1e}")
        assert error <= 1e-3


@needs_public_decks
def test_a_gas_flood_in_fixed_steps(tmp_path):
    """Without step control no step goes to the fully implicit method: lines and pressure alone."""
    deck, curve = CASES["LIVEGAS"]
    text = deck.read_text() + "\nTUNEKVR\nSTEPCTRL\nNo /\nMAXDT\n10 /\n"
    table = kvr_run.finished_normally(kvr_run.run(tmp_path, text)).table()
    reference = kvr_run.read_csv(curve)
    end = min(table["TIME"][-1], reference["TIME"][-1])

    def off(name):
        return numpy.interp(end, table["TIME"], table[name]) / numpy.interp(end, reference["TIME"], reference[name]) - 1

    pressure = numpy.interp(reference["TIME"], table["TIME"], table["FPR"]) / reference["FPR"] - 1
    print(f"LIVEGAS, steps of 10 days: oil {off('FOPT'):.4f}, gas {off('FGPT'):.4f}, "
          f"pressure {abs(pressure).max():.4f}")
    assert abs(off("FOPT")) < 0.015
    assert abs(off("FGPT")) < 0.02
    assert abs(pressure).max() < 0.04
