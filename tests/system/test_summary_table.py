"""Vectors of every step: KVR_Summary.csv in the units of the deck, and the summary files with what SUMMARY asks for."""

import csv
import re
import shutil
import subprocess

import numpy
import pytest

import small_deck
from kvr_run import finished_normally, public_deck, run
from named_run import run_named, summary_of

ecl = pytest.importorskip("opm.io.ecl")

ASKED = "SUMMARY\nFOPR\nFOPT\nFPR\nFWCT\nFGOR\nFOIP\nFOE\nFVIT\nWLPR\n'PROD' /\nWWIT\n/\nWOPT\n'P*' /\nWWIR\n'INJ' /\n"
# Reports far longer than steps: a sum over reports would be off.
LONG_REPORTS = small_deck.SCHEDULE.replace("2*30 /", "2*300 /")
VIEWERS = small_deck.deck(solution=small_deck.SOLUTION + ASKED, schedule=LONG_REPORTS).replace(
    "1 0 0 0 0 0 0 1 0 0 /", "1 0 0 0 0 0 0 1 1 0 /").replace("CONVERGE", "MAXDT\n20 /\nCONVERGE")
FEET_PER_METRE, PSI_PER_BAR, FT3_PER_M3 = 3.28084, 14.50377, 35.314667
FT3_PER_BBL = 5.614583

METRIC = """RUNSPEC
DIMENS
5 1 1 /
OIL
WATER
METRIC
START
1 'JAN' 2000 /
WELLDIMS
2 1 /
GRID
DX
5*30 /
DY
5*30 /
DZ
5*6 /
TOPS
5*1500 /
PORO
5*0.2 /
PERMX
5*100 /
PERMY
5*100 /
PERMZ
5*10 /
PROPS
PVDO
20 1.05 2.85
60 1.02 2.99
600 1.01 3
/
PVTW
200 1.01 0.00004 0.3 0 /
DENSITY
850 1025 1 /
ROCK
200 0.00001 /
SWOF
0.2 0.00 1.00 0
0.5 0.25 0.25 0
0.8 1.00 0.00 0
/
SOLUTION
PRESSURE
5*200 /
SWAT
5*0.2 /
SCHEDULE
WELSPECS
'INJ' 'G' 1 1 1503 'WATER' /
'PROD' 'G' 5 1 1503 'OIL' /
/
COMPDAT
'INJ' 1 1 1 1 'OPEN' 2* 0.2 /
'PROD' 5 1 1 1 'OPEN' 2* 0.2 /
/
WCONPROD
'PROD' 'OPEN' 'BHP' 5* 150 /
/
WCONINJE
'INJ' 'WATER' 'OPEN' 'RATE' 5 1* 600 /
/
TSTEP
2*30 /
END
"""


@pytest.fixture(scope="module")
def viewed(tmp_path_factory):
    return finished_normally(run(tmp_path_factory.mktemp("viewed"), VIEWERS))


def test_the_table_holds_every_step_with_the_figures_of_the_other_tables(viewed):
    summary, units = summary_of(viewed.folder / "KVR_Summary.csv")
    table = viewed.table()
    assert list(summary["TIME"]) == pytest.approx(list(table["TIME"]), rel=1e-9)
    assert len(summary["TIME"]) > 20
    for name, column in table.items():
        assert summary[name] == pytest.approx(column, rel=1e-6, abs=1e-9), name
    assert (units["FOPR"], units["FGPR"], units["FPR"], units["FWCT"]) == ("STB/DAY", "MSCF/DAY", "PSIA", "")


def test_totals_are_the_sums_of_the_rates_over_the_steps(viewed):
    summary, _ = summary_of(viewed.folder / "KVR_Summary.csv")
    steps = numpy.diff(summary["TIME"])
    for rate, total in (("FOPR", "FOPT"), ("WOPR:PROD", "WOPT:PROD"), ("WWIR:INJ", "WWIT:INJ"), ("FVIR", "FVIT")):
        assert summary[total][1:] == pytest.approx(numpy.cumsum(summary[rate][1:] * steps), rel=1e-6), total


def test_dates_are_those_of_the_calendar(viewed):
    with open(viewed.folder / "KVR_Summary.csv", newline="") as file:
        rows = list(csv.reader(file))
    assert rows[0][:2] == ["TIME", "DATE"] and rows[1][:2] == ["DAYS", "YYYY-MM-DD"]
    dates = {float(row[0]): row[1] for row in rows[2:]}
    assert (dates[0.0], dates[300.0], dates[600.0]) == ("2000-01-01", "2000-10-27", "2001-08-23")


def test_the_table_of_a_metric_deck_is_in_metric_units(tmp_path):
    result = finished_normally(run(tmp_path, METRIC))
    summary, units = summary_of(tmp_path / "KVR_Summary.csv")
    table = result.table()
    assert (units["FOPR"], units["FOPT"], units["WBHP:PROD"], units["FGOR"]) == ("SM3/DAY", "SM3", "BARSA", "SM3/SM3")
    assert summary["WWIR:INJ"][1:] == pytest.approx(5.0, rel=1e-6), "the rate that the deck asks for"
    assert summary["WBHP:PROD"][1:] == pytest.approx(150.0, rel=1e-6)
    assert summary["FOPT"] == pytest.approx(table["FOPT"] * FT3_PER_BBL / FT3_PER_M3, rel=1e-6)
    assert summary["FPR"] == pytest.approx(table["FPR"] / PSI_PER_BAR, rel=1e-6)


def test_what_the_summary_section_asks_for_is_in_the_files_of_viewers(viewed):
    summary, _ = summary_of(viewed.folder / "KVR_Summary.csv")
    vectors = ecl.ESmry(str(viewed.folder / "ECLIPSE.SMSPEC"))
    assert numpy.array(vectors["TIME"]) == pytest.approx(summary["TIME"], rel=1e-6)
    asked = ["FOPR", "FOPT", "FPR", "FWCT", "FGOR", "FOIP", "FOE", "FVIT", "WLPR:PROD", "WWIT:INJ", "WWIT:PROD", "WWIR:INJ"]
    for name in asked:
        assert numpy.array(vectors[name]) == pytest.approx(summary[name], rel=1e-6, abs=1e-9), name
    spec = ecl.EclFile(str(viewed.folder / "ECLIPSE.SMSPEC"))
    keywords, wells, units = ([str(text).strip() for text in spec[key]] for key in ("KEYWORDS", "WGNAMES", "UNITS"))
    for name, unit in (("FOPR", "STB/DAY"), ("FPR", "PSIA"), ("FGOR", "MSCF/STB"), ("WWIT:INJ", "STB")):
        assert units[[k + ":" + w if k[0] == "W" else k for k, w in zip(keywords, wells)].index(name)] == unit
    assert not [name for name in vectors.keys() if name in ("WWIR:PROD", "WLPR:INJ", "FWPR")], "what is not asked for"


def test_totals_of_the_fixed_vectors_are_true_sums(viewed):
    summary, _ = summary_of(viewed.folder / "KVR_Summary.csv")
    vectors = ecl.ESmry(str(viewed.folder / "ECLIPSE.SMSPEC"))
    assert numpy.array(vectors["WOPT:PROD"]) == pytest.approx(summary["WOPT:PROD"], rel=1e-6)


def test_without_a_summary_section_a_file_holds_its_report_alone_and_true_sums(tmp_path):
    result = finished_normally(run(tmp_path, VIEWERS.replace(ASKED, "")))
    vectors = ecl.ESmry(str(tmp_path / "ECLIPSE.SMSPEC"))
    assert numpy.array(vectors["TIME"]) == pytest.approx([0.0, 300.0, 600.0])
    table, times = result.table(), list(result.table()["TIME"])
    rates = numpy.array(vectors["WOPR:PROD"])
    assert rates == pytest.approx([table["WOPR:PROD"][times.index(time)] for time in (0.0, 300.0, 600.0)], rel=1e-5)
    assert rates[0] == 0.0, "nothing has flowed at time zero"
    assert vectors["WOPT:PROD"][-1] == pytest.approx(table["FOPT"][-1], rel=1e-6)


# Observed rates change once; a prediction follows.
HISTORY = small_deck.SCHEDULE.split("WCONPROD")[0] + """WCONHIST
'PROD' 'OPEN' 'LRAT' 30 10 6 3* 2100 /
/
WCONINJH
'INJ' 'WATER' 'OPEN' 45 3900 /
/
TSTEP
20 20 /
WCONHIST
'PROD' 'OPEN' 'LRAT' 20 20 4 3* 2000 /
/
TSTEP
20 /
WCONPROD
'PROD' 'OPEN' 'LRAT' 3* 35 1* 1000 /
/
WCONINJE
'INJ' 'WATER' 'OPEN' 'RATE' 33 1* 9000 /
/
TSTEP
20 /
END
"""
OBSERVED_LISTED = "SUMMARY\nINCLUDE\n'VECTORS.INC' /\nFOPR\n"
OBSERVED_INCLUDED = "FOPRH\nFWPTH\nFWCTH\nFWITH\nFGORH\nWWIRH\n'INJ' /\nWLPTH\n'PROD' /\nWGPTH\n'P*' /\n"


def test_observed_rates_of_the_deck_have_vectors_and_true_sums(tmp_path):
    deck = VIEWERS.replace(ASKED, OBSERVED_LISTED).replace(LONG_REPORTS, HISTORY)
    finished_normally(run(tmp_path, deck, files={"VECTORS.INC": OBSERVED_INCLUDED}))
    summary, units = summary_of(tmp_path / "KVR_Summary.csv")
    vectors = ecl.ESmry(str(tmp_path / "ECLIPSE.SMSPEC"))
    days = summary["TIME"]
    first, then = numpy.minimum(days, 40.0), numpy.clip(days - 40.0, 0.0, 20.0)

    def during(early, late):
        """A rate of the first 40 days, of the next 20, and none behind them."""
        return numpy.select([days <= 40.0, days <= 60.0], [early, late], 0.0)

    expected = {"FOPRH": during(30.0, 20.0), "FWPTH": 10.0 * first + 20.0 * then, "FWCTH": during(0.25, 0.5),
                "FWITH": 45.0 * (first + then), "FGORH": during(0.2, 0.2), "WWIRH:INJ": during(45.0, 45.0),
                "WLPTH:PROD": 40.0 * (first + then), "WGPTH:PROD": 6.0 * first + 4.0 * then}
    assert len(days) >= 4
    for name, values in expected.items():
        assert summary[name] == pytest.approx(values, rel=1e-6, abs=1e-9), name
        assert numpy.array(vectors[name]) == pytest.approx(summary[name], rel=1e-6, abs=1e-6), name
    assert summary["WBHPH:PROD"][1] == pytest.approx(2100.0) and summary["WBHPH:INJ"][1] == pytest.approx(3900.0)
    assert (units["FOPRH"], units["FGORH"], units["WGPTH:PROD"]) == ("STB/DAY", "MSCF/STB", "MSCF")
    fixed = numpy.array(vectors["WOPTH:PROD"])[-1]
    assert fixed == pytest.approx(summary["WOPTH:PROD"][-1], rel=1e-6) == pytest.approx(30.0 * 40.0 + 20.0 * 20.0, rel=1e-6)


def test_observed_totals_count_the_time_that_a_well_is_on(tmp_path):
    # Rates of wells are those while they are on, rates of the field means over time, as in `flow`.
    factors = "WEFAC\n'PROD' 0.8 /\n'INJ' 0.5 /\n/\nTSTEP\n20 20 /\n"
    deck = VIEWERS.replace(ASKED, "SUMMARY\nFOPRH\n").replace(
        LONG_REPORTS, HISTORY.split("TSTEP")[0] + factors + "END\n")
    finished_normally(run(tmp_path, deck))
    summary, _ = summary_of(tmp_path / "KVR_Summary.csv")
    last = {name: column[-1] for name, column in summary.items()}
    assert last["TIME"] == pytest.approx(40.0)
    assert last["WOPRH:PROD"] == pytest.approx(30.0) and last["WWIRH:INJ"] == pytest.approx(45.0)
    assert last["FOPRH"] == pytest.approx(0.8 * 30.0) and last["FWIRH"] == pytest.approx(0.5 * 45.0)
    assert last["FOPTH"] == last["WOPTH:PROD"] == pytest.approx(0.8 * 30.0 * 40.0, rel=1e-6)
    assert last["FWITH"] == last["WWITH:INJ"] == pytest.approx(0.5 * 45.0 * 40.0, rel=1e-6)


def test_a_deck_without_observed_rates_has_no_columns_for_them(viewed):
    summary, _ = summary_of(viewed.folder / "KVR_Summary.csv")
    assert not [name for name in summary if name.split(":")[0].endswith("H")]


def test_pandas_reads_the_table_with_its_dates(viewed):
    pandas = pytest.importorskip("pandas")
    frame = pandas.read_csv(viewed.folder / "KVR_Summary.csv", skiprows=[1], parse_dates=["DATE"])
    summary, _ = summary_of(viewed.folder / "KVR_Summary.csv")
    assert (frame["DATE"].iloc[-1] - frame["DATE"].iloc[0]).days == summary["TIME"][-1] == 600.0
    assert frame.dtypes.drop("DATE").map(lambda kind: kind.kind).isin(["f", "i"]).all(), "every other column is numbers"
    assert list(frame["WOPR:PROD"]) == pytest.approx(list(summary["WOPR:PROD"]), rel=1e-12)


@pytest.mark.skipif(shutil.which("summary") is None, reason="no second reader of summary files")
def test_a_second_reader_finds_the_same_vectors(viewed):
    text = subprocess.run(["summary", "ECLIPSE.SMSPEC", "FOPT", "WWIT:INJ"], cwd=viewed.folder, capture_output=True, text=True,
                          check=True).stdout
    last = [float(word) for word in text.strip().splitlines()[-1].split()]
    summary, _ = summary_of(viewed.folder / "KVR_Summary.csv")
    assert last[-2:] == pytest.approx([summary["FOPT"][-1], summary["WWIT:INJ"][-1]], rel=1e-5)


@pytest.mark.skipif(shutil.which("gnuplot") is None, reason="no gnuplot")
def test_gnuplot_reads_the_table_by_its_names(viewed):
    script = "set datafile separator ','; set terminal dumb; stats 'KVR_Summary.csv' using 'TIME':'FOPT' name 'A'; print A_max_y"
    text = subprocess.run(["gnuplot", "-e", script], cwd=viewed.folder, capture_output=True, text=True, check=True).stderr
    summary, _ = summary_of(viewed.folder / "KVR_Summary.csv")
    assert float(text.split()[-1]) == pytest.approx(summary["FOPT"][-1], rel=1e-6)


def test_restart_files_of_live_oil_hold_its_gas(tmp_path):
    deck = public_deck("spe1/SPE1CASE1.DATA")
    if deck is None:
        pytest.skip("no public decks")
    free = re.sub(r"^DRSDT\s[^/]*/", "", deck, flags=re.M)  # gas may dissolve again
    deck = free.split("TSTEP", 1)[0] + "TSTEP\n31 28 /\nEND\nTUNEKVR\nFDMETHOD\nFIM\nOUTPUTKVR\n1 0 1 0 0 0 0 1 1 0 /\n"
    (tmp_path / "SPE1.DATA").write_text(deck)
    ended = run_named("SPE1", folder=tmp_path)
    assert ended.returncode == 0, ended.console
    rs = numpy.array(ecl.EclFile(str(tmp_path / "SPE1.X0000"))["RS"])
    assert rs == pytest.approx(1.270, abs=1e-6), "Mscf/stb, the constant of the deck"
    assert numpy.array(ecl.EclFile(str(tmp_path / "SPE1.X0002"))["RS"]).max() > 1.27


def test_the_date_of_line_files_is_that_of_the_step_s_end(tmp_path):
    deck = small_deck.deck().replace("1 0 0 0 0 0 0 1 0 0 /", "1 0 0 0 0 0 0 1 1 1 /")
    finished_normally(run(tmp_path, deck))
    for report, date in ((1, [31, 1, 2000]), (2, [1, 3, 2000])):
        head = numpy.array(ecl.EclFile(str(tmp_path / f"ECLIPSE.SLN{report:04d}"))["INTEHEAD"])
        assert list(head[4:7]) == date
