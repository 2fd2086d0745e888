"""Limits of rates beside the control of a producer: held by every method, told when one takes over."""

import numpy
import pytest

from keyword_deck import STEPS, WELLS, KeywordDeck
from kvr_run import finished_normally, run

# 600 of oil a day until water brings the liquid to 700.
LIMITED = KeywordDeck(schedule=WELLS.replace("'BHP' 5* 3000", "'ORAT' 600 2* 700 1* 1000").replace("'RATE' 1200", "'RATE' 800") + 2 * STEPS)
SLACK = 1.01
MISS = 0.03  # by which step control lets a rate stay below its target


@pytest.mark.parametrize("method", ["STREAMLINE", "IMPES", "FIM"])
def test_the_liquid_limit_takes_over_from_the_oil_rate(method, tmp_path):
    result = finished_normally(run(tmp_path, LIMITED.text(f"TUNEKVR\nFDMETHOD\n{method}\nMAXDT\n20 /\n")))
    table = result.table()
    oil, liquid = table["FOPR"][1:], table["FOPR"][1:] + table["FWPR"][1:]
    assert oil.max() <= SLACK * 600.0 and liquid.max() <= SLACK * 700.0
    assert oil[:3] == pytest.approx(600.0, rel=MISS), "before water comes"
    assert liquid[-3:] == pytest.approx(700.0, rel=MISS), "behind it"
    assert numpy.minimum(1.0 - oil / 600.0, 1.0 - liquid / 700.0).max() < MISS, "one of the two is always met"
    assert result.console.count(" WELL CONTROL :: PROD : orat -> lrat") == 1
    assert " WELL CONTROL :: PROD : lrat -> " not in result.console


def test_observed_rates_are_no_limits(tmp_path):
    deck = KeywordDeck(schedule=WELLS[:WELLS.index("WCONPROD")] + "WCONHIST\n'PROD' 'OPEN' 'ORAT' 600 1 1 /\n/\nTSTEP\n4*60 /\n")
    table = finished_normally(run(tmp_path, deck.text("TUNEKVR\nFDMETHOD\nFIM\nMAXDT\n20 /\n"))).table()
    assert table["FOPR"][1:] == pytest.approx(600.0, rel=1e-5)
    assert table["FGPR"].max() == 0.0 and table["FWPR"].max() < 1.0
