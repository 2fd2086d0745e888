"""The whole console text of one small run, kept as a text to read beside the user guide.

The bed is a row of ten cells. Both phases have straight relative permeabilities and 1 cp, so the total
mobility is 1/cp at any saturation and nothing gives way: every pressure follows from Darcy's law by hand."""

import math
import pathlib
import re

import kvr_run
import small_deck

TRANSCRIPT = pathlib.Path(__file__).with_name("console_transcript.txt")

DECK = """-- A row of ten cells, water from the left; the rate is raised after the second report.
RUNSPEC
TITLE
ROW OF TEN CELLS
NOECHO
DIMENS
10 1 1 /
OIL
WATER
FIELD
START
1 'JAN' 2000 /
TABDIMS
1 1 20 20 /
WELLDIMS
2 1 /

GRID
INIT
EQUALS
DX 100 /
DY 50 /
DZ 20 /
TOPS 5000 /
/
PORO
10*0.2 /
PERMX
10*100 /
COPY
PERMX PERMY /
PERMX PERMZ /
/
MULTIPLY
PERMZ 0.1 1 10 1 1 1 1 /
/
RPTGRID
1 /

PROPS
PVDO
1000 1.0 1.0
5000 1.0 1.0
/
PVTW
3000 1.0 1e-15 1.0 0 /
DENSITY
50 62 0.06 /
ROCK
3000 1e-15 /
SWOF
0.2 0 1 0
0.8 1 0 0
/

REGIONS
SATNUM
10*1 /

SOLUTION
PRESSURE
10*3000 /
SWAT
10*0.2 /

SUMMARY
FOPR

SCHEDULE
RPTSCHED
1 /
""" + small_deck.WELLS.replace("5 5", "10 1") + """TSTEP
10 20 /
WCONINJE
'INJ' 'WATER' 'OPEN' 'RATE' 80 1* 9000 /
/
TSTEP
30 /
END

TUNEKVR
FDMETHOD
STREAMLINE
PSOLVER
AMG
NUMLINE
20 INJ No /
SL1DCON
EXPLICIT IRR 1.0 SPU Yes Yes Yes No /
CFL
0.8 0.01 /
CFLG
0.8 0.01 /
CONVERGE
0.01 1e-4 30 30 /
OPTIONKVR
1 0 0 0 0 0 0 0 /
OUTPUTKVR
1 1 1 0 0 0 0 1 0 0 /
MAXDT
15 /
"""

SECONDS = [
    (re.compile(r"^(Request time for pressure  :|time elapsed [^:]*:) .*$"), r"\1 <seconds>"),
    (re.compile(r"^(REQUIRED CPU TIME IS) .* SEC$"), r"\1 <seconds> SEC"),
    (re.compile(r"^([A-Z][A-Za-z ]{15}) +\d+\.\d{3} +\d+\.\d{3}$"), r"\1 <seconds> <seconds>"),
]
# A change that is rounding stands in any cell.
ROUNDING = (re.compile(r"dploc=\([ 0-9]*\)(   DIFFP=        0\.00000.)$"), r"dploc=( any  any  any)\1")


def masked(line):
    for pattern, replacement in SECONDS + [ROUNDING]:
        line = pattern.sub(replacement, line)
    return line


def the_run(folder):
    return kvr_run.finished_normally(kvr_run.run(folder, DECK))


def test_the_console_says_what_the_transcript_says(tmp_path):
    said = [masked(line) for line in the_run(tmp_path).console.split("\n")]
    expected = TRANSCRIPT.read_text().split("\n")
    for number, (ours, theirs) in enumerate(zip(said, expected), 1):
        assert ours == theirs, f"line {number}"
    assert len(said) == len(expected)


def test_the_numbers_of_the_transcript_follow_from_darcys_law():
    """Pressure falls by q/T from cell to cell and by q/WI into the producer at 2000 psia."""
    transmissibility = 0.00112771 * 100.0 * (50.0 * 20.0) / 100.0
    equivalent_radius = 0.28 * math.hypot(100.0, 50.0) / 2.0
    well_index = 0.007085610902759491 * 100.0 * 20.0 / math.log(equivalent_radius / 0.25)

    def row(rate):
        last = 2000.0 + rate / well_index
        return [last + (9 - i) * rate / transmissibility for i in range(10)]

    before = [3000.0] * 10
    expected = []
    injector = row(50.0)[0] + 50.0 / well_index
    for rate in [50.0] * 5 + [80.0] * 5:
        after = row(rate)
        change = [abs(b - a) for a, b in zip(before, after)]
        if max(change) > 0.01:
            cell = change.index(max(change)) + 1
            expected.append(f"ITE -->   0 dploc=({cell:4d}    1    1)   DIFFP={max(change):16.6f}")
        expected.append(f"Reservoir average pressure : {sum(after) / 10.0:.9g} PSIA")
        before = after
    lines = TRANSCRIPT.read_text().split("\n")
    assert [line for line in lines if "average pressure" in line or
            ("DIFFP" in line and "any" not in line)] == expected
    assert f"      bhp  :: {injector:<12.9g}2000        " in lines  # at the well event, before the rate is raised


def test_the_steps_of_the_transcript_grow_threefold_where_nothing_is_wrong():
    """A tenth of what is asked for behind the start and the well event, then at most thrice the step before, what is
    asked for (15 days, or what is left to the report) in even parts of that."""
    steps, time = [], 0.0
    for reports in ((10.0, 30.0), (60.0,)):
        longest = None
        for end in reports:
            while time < end:
                asked = min(15.0, end - time)
                longest = asked / 10.0 if longest is None else longest
                length = asked / math.ceil(asked / longest)
                steps.append((time, time + length))
                time += length
                longest = 3.0 * length
    lines = TRANSCRIPT.read_text().split("\n")
    assert [line for line in lines if line.startswith("Step ")] == [
        f"Step {number} Time {begin:g} --> {end:g} Stop Time: 60" for number, (begin, end) in enumerate(steps, 1)]


def test_the_log_has_its_blocks_in_order(tmp_path):
    """Deck, property tables, wells, options, initial state, geometry, balance; then, step by step, banner with the
    date, pressure, lines, gravity, wells, balance, maps; the well event behind all of them."""
    a_step = ["Step {}", "Calender Time : ", "Time Begin : ", "ITE --> ", "Iteration for pressure     :",
              "Reservoir average pressure :", "Streamline Start from :", "Number of Streamline :",
              "Total Stagnant Block :", "time elapsed transSL :", "-- Saturation Calculation: Grv&Pc By Osplit --", "STEP CONTROL :: ",
              "Info Added in FILE : KVR_Run_Production.out", "File Replaced : KVR_Run_Recovery.out",
              "------------------------------------------------------->", " Material Balance Report: ",
              " Fluid in Place Totals **  ", " FIP Surface Volumes  ** ", "File Replaced : KVR_Run_SweepVolume.out",
              " Function Ends: ReportMBE", "<------------------------------------------------------"]
    a_report = ["Information Added for poil,ssat.plt", "Information Added for XXX.xls"]
    order = ["BLACKOIL   KVR   LAST UPDATE :   **/**/2012", "RUNSPEC", "-> Finished Reading RUNSPEC.", "GRID",
             "-> Finished Reading GRID.", "PROPS", "-> Finished Reading PROPS.", "OIL PROPERTY TABLE", "SOLUTION",
             "-> Finished Reading SOLUTION.", "SCHEDULE", "-> Finished Reading SCHEDULE.", "-- WELL Data Assigned to KVR",
             "---------------  WELL to GRID Connection Information", "-------- Report Date and Time Steps --------",
             "TUNEKVR", "Simulation General Info", "Some Streamline Related Option", "File I/O, Option, ETC.",
             "General System information", "History Matching Related Data", "Rate Optimization Related Data",
             "Other Testing Functions", "INITIALIZING...", "INITIALIZE: EXPLICITLY ASSIGNED BY INPUT DATA",
             *a_report, "SUCCESSFULLY INITIALIZED.", "--- PRECONDITIONED GEOLOGICAL INFORMATION ---",
             " Material Balance Report: "]
    for step in range(1, 11):
        order += [text.format(step) for text in a_step] + (a_report if step in (3, 5, 10) else [])
        if step == 5:
            order += ["-         UPDATE WELL SCHEDULE         -", "-- WELL Data Assigned to KVR"]
    order += ["File Replaced : KVR_Run_EndSwat.out", "File Replaced : KVR_Run_Pressure.out",
              "************ END SIMULATION ************", "REQUIRED CPU TIME IS "]
    lines = iter(the_run(tmp_path).log.split("\n"))
    for text in order:
        assert any(line.startswith(text) for line in lines), f"{text!r} does not follow"
