"""Free gas at pressures above the last row of PVTO, where solution gas and saturated oil are extended along the last rows: gas
injection against an independent fully implicit simulator that extends them likewise (same deck, steps of a day)."""

import numpy
import pytest

import kvr_run
import small_deck

DAYS = (10.0, 30.0, 60.0, 120.0)
LAST_ROW = 2700.0  # psia

# Start: solution gas on the extended line, field pressure psia and gas rate Mscf/day of the peer at DAYS.
PEER = {3500: (1.166, (3443.2, 3168.3, 2051.2, 1540.7), (485.0, 719.0, 1940.0, 496.0)),
        6000: (1.990, (6072.0, 6178.2, 6316.3, 6732.1), (431.0, 376.0, 373.0, 461.0)),
        9000: (2.990, (9083.6, 9250.2, 9506.2, 10070.7), (507.0, 459.0, 420.0, 478.0))}


def deck(start, method):
    text = small_deck.gas_deck(kvr_run.options(method=method, lines=40, extra="MAXDT\n1 /\n"))
    return (text.replace("25*2600", f"25*{start}").replace("25*0.86", f"25*{PEER[start][0]}")
            .replace("'INJ' 'WATER' 'OPEN' 'RATE' 50 1* 9000", "'INJ' 'GAS' 'OPEN' 'RATE' 500 1* 12000")
            .replace("BHP' 5* 1500", "ORAT' 100 4* 1500"))


# Where the oil has nearly doubled (9000 psia) gas rates of steps that part pressure and transport are a matter of the step.
LIMITS = [(start, "FIM", 0.001, 0.005) for start in PEER]
LIMITS += [(start, method, 0.005, rate) for method in ("IMPES", "STREAMLINE") for start, rate in ((3500, 0.05), (6000, 0.05), (9000, None))]


@pytest.mark.parametrize("start, method, pressure_limit, rate_limit", LIMITS)
def test_gas_above_the_last_row(tmp_path, start, method, pressure_limit, rate_limit):
    result = kvr_run.finished_normally(kvr_run.run(tmp_path, deck(start, method)))
    table, sweep = result.table(), result.table("KVR_Run_SweepVolume.out")
    assert table["FPR"][0] > LAST_ROW
    for column, expected, limit in (("FPR", PEER[start][1], pressure_limit), ("FGPR", PEER[start][2], rate_limit)):
        ours = numpy.interp(DAYS, table["TIME"], table[column])
        difference = numpy.abs(ours / expected - 1.0).max()
        print(f"{method} from {start} psia: {column} within {100 * difference:.2f} %")
        assert limit is None or difference <= limit
    for column in ("|MBEO|", "|MBEW|", "|MBEG|"):
        assert numpy.abs(sweep[column]).max() <= 1e-6
    assert "CHANGE TO DGESV SOLVER" not in result.console
