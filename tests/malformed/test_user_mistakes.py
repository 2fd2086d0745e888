"""Decks with one mistake that a user makes, each otherwise sound: every one ends with a line that names what is wrong and a
line with file, line and keyword, or runs on with a WARNING; none runs another scenario in silence."""

import dataclasses

import pytest

import small_deck
from kvr_run import run
from small_deck import GRID, PROPS, RUNSPEC, SCHEDULE, SOLUTION, WELLS

TIMEOUT = 60
GAS_TABLES = "PVDG\n300 4 0.012\n8000 0.5 0.03\n/\nSGOF\n0 0 1 0\n0.8 1 0 0\n/\n"


@dataclasses.dataclass
class Mistake:
    deck: str
    says: str  # part of the line that tells
    at: str = ""  # ends in the line of the deck that is named; empty: no line of its own
    keyword: str = ""
    stops: bool = False


def deck(**pieces):
    return small_deck.deck(**pieces)


def cells(values):
    """25 values one per line, so that each has a line of its own."""
    return "\n".join(str(value) for value in values) + "\n/\n"


def marked(value, usual, at=12):
    return cells([usual] * at + [value] + [usual] * (24 - at))


def grid_with(keyword, values):
    return small_deck.without_keyword(GRID, keyword) + f"{keyword}\n{values}"


def schedule(rows, steps="TSTEP\n2*30 /\nEND\n"):
    return f"SCHEDULE\n{rows}{steps}"


MISTAKES = {
    "porosity in per cent": Mistake(deck(grid=grid_with("PORO", marked(20.5, 0.2))),
                                    "ERROR :: PORO ABOVE 1 IN 1 CELLS; FIRST: cell 13 (I 3, J 3, K 1), 20.5", "20.5", "PORO", True),
    "porosity in per cent by EQUALS": Mistake(deck(grid=GRID + "EQUALS\nPORO 20 /\n/\n"), "ERROR :: POROSITY ABOVE 1", "", "PORO",
                                              True),
    "net to gross above 1": Mistake(deck(grid=GRID + "NTG\n" + marked(1.5, 1)), "WARNING :: NTG ABOVE 1 IN 1 CELLS", "1.5", "NTG"),
    "a negative permeability": Mistake(deck(grid=grid_with("PERMX", marked(-5, 100))), "WARNING :: PERMEABILITY BELOW ZERO"),
    "a negative factor in EDIT": Mistake(deck(grid=GRID + "EDIT\nMULTIPLY\n'PERMX' -2 /\n/\n"),
                                         "WARNING :: MULTIPLY PERMX BY -2", "'PERMX' -2", "MULTIPLY"),
    "a value too few": Mistake(deck(grid=GRID.replace("PORO\n25*0.2", "PORO\n24*0.2")), "25 values, 24 given", "24*0.2", "PORO",
                               True),
    "a letter O for a zero": Mistake(deck(grid=GRID.replace("PORO\n25*0.2", "PORO\n25*O.2")), "O.2", "25*O.2", "PORO", True),
    "both unit words": Mistake(deck(runspec=RUNSPEC.replace("FIELD\n", "METRIC\nFIELD\n")),
                               "WARNING :: FIELD AND METRIC ARE BOTH GIVEN", "FIELD", "FIELD"),
    "unit words of a laboratory": Mistake(deck(runspec=RUNSPEC.replace("FIELD\n", "LAB\n")), "ERROR :: UNITS LAB", "LAB", "LAB",
                                          True),
    "START on 31 FEB": Mistake(deck(runspec=RUNSPEC.replace("1 'JAN' 2000", "31 'FEB' 2000")),
                               "WARNING :: START 31 FEB 2000 IS NO DATE", "31 'FEB'", "START"),
    "a second RUNSPEC": Mistake(deck(grid=GRID + RUNSPEC), "ERROR :: A SECOND RUNSPEC", "", "RUNSPEC", True),
    "saturation axis that falls": Mistake(deck(props=PROPS.replace("0.5 0.25 0.25 0\n", "0.1 0.25 0.25 0\n")),
                                          "ERROR :: SWOF TABLE 1: Sw DOES NOT RISE IN 1 ROWS; FIRST: ROW 2, COLUMN 1, 0.1",
                                          "0.1 0.25", "SWOF", True),
    "saturations in per cent": Mistake(deck(props=PROPS.replace("0.8 1.00 0.00 0\n", "80 1.00 0.00 0\n")),
                                       "ERROR :: SWOF TABLE 1: Sw IS NOT WITHIN 0 TO 1", "80 1.00", "SWOF", True),
    "oil permeability that rises": Mistake(deck(props=PROPS.replace("0.5 0.25 0.25 0\n", "0.5 0.25 1.00 0\n")
                                                .replace("0.2 0.00 1.00 0", "0.2 0.00 0.90 0")),
                                           "WARNING :: SWOF TABLE 1: krow RISES IN 1 ROWS; FIRST: ROW 2, COLUMN 3, 1",
                                           "0.5 0.25 1.00", "SWOF"),
    "a column too few": Mistake(deck(props=PROPS.replace("0.5 0.25 0.25 0\n", "0.5 0.25 0.25\n")),
                                "ERROR :: SWOF: 7 VALUES IN A ROW OF 4", "0.8 1.00", "SWOF", True),
    "a column too many": Mistake(deck(props=PROPS.replace("0.5 0.25 0.25 0\n", "0.5 0.25 0.25 0 0\n")),
                                 "ERROR :: SWOF: 5 VALUES IN A ROW OF 4", "0.5 0.25", "SWOF", True),
    "a comment in the middle of a table": Mistake(
        deck(props=PROPS.replace("0.8 1.00 0.00 0\n", "-- end points\n0.8 1.00 0.00 0\n")),
        "WARNING :: A COMMENT OR BLANK LINE ENDS THE ROWS OF SWOF", "-- end points", "SWOF"),
    "a viscosity of 0": Mistake(deck(props=PROPS.replace("800  1.02 2.99", "800  1.02 0")),
                                "ERROR :: PVDO TABLE 1: viscosity IS BELOW", "800  1.02 0", "PVDO", True),
    "no relative permeabilities": Mistake(deck(props=PROPS[:PROPS.index("SWOF")]), "ERROR :: NO RELATIVE PERMEABILITIES OF WATER",
                                          "", "SWOF", True),
    "no PVT table of oil": Mistake(deck(props=small_deck.without_keyword(PROPS, "PVDO")), "ERROR :: NO PVT TABLE OF OIL", "", "PVDO",
                                   True),
    "no PVT table of gas": Mistake(deck(runspec=RUNSPEC.replace("OIL\n", "OIL\nGAS\n")), "ERROR :: NO PVT TABLE OF GAS", "", "PVDG",
                                   True),
    "no oil": Mistake(deck(runspec=RUNSPEC.replace("OIL\n", "")), "WARNING :: THE RUN HAS NO OIL, BUT 25 CELLS START WITH IT"),
    "saturations that do not add up": Mistake(
        deck(runspec=RUNSPEC.replace("OIL\n", "OIL\nGAS\n"), props=PROPS + GAS_TABLES,
             solution=SOLUTION + "SGAS\n25*0.1 /\nSOIL\n25*0.4 /\n"),
        "WARNING :: INITIAL SATURATIONS THAT DO NOT ADD UP TO 1, SCALED IN 25 CELLS; FIRST: cell 1"),
    "a saturation above 1": Mistake(deck(solution="SOLUTION\nPRESSURE\n25*3000 /\nSWAT\n" + marked(1.2, 0.2)),
                                    "WARNING :: SWAT ABOVE 1 IN 1 CELLS", "1.2", "SWAT"),
    "no pressure": Mistake(deck(solution="SOLUTION\nSWAT\n25*0.2 /\n"), "ERROR :: NO INITIAL PRESSURE ABOVE 0", "", "PRESSURE", True),
    "a date before START": Mistake(deck(schedule=schedule(WELLS, "DATES\n1 'FEB' 1999 /\n/\nTSTEP\n30 /\nEND\n")),
                                   "WARNING :: DATE 1 FEB 1999 LIES BEFORE THE START", "1 'FEB' 1999", "DATES"),
    "31 FEB": Mistake(deck(schedule=schedule(WELLS, "DATES\n31 'FEB' 2000 /\n/\nEND\n")),
                      "WARNING :: 31 FEB 2000 IS NO DATE OF THE CALENDAR, SET TO DAY 29", "31 'FEB'", "DATES"),
    "a month in another language": Mistake(deck(schedule=schedule(WELLS, "DATES\n1 'MAI' 2000 /\n/\nTSTEP\n30 /\nEND\n")),
                                           "WARNING :: MONTH MAI IS NOT KNOWN", "1 'MAI'", "DATES"),
    "a step length of 0": Mistake(deck(schedule=schedule(WELLS, "TSTEP\n30 0 30 30 /\nEND\n")),
                                  "WARNING :: STEP LENGTH 0 ENDS THE LIST, 2 BEHIND IT ARE DROPPED", "30 0 30", "TSTEP"),
    "an unknown well": Mistake(deck(schedule=schedule(WELLS.replace("'PROD' 'OPEN'", "'PROF' 'OPEN'"))),
                               "WARNING :: UNKNOWN WELL, ROW SKIPPED :: PROF", "'PROF' 'OPEN'", "WCONPROD"),
    "a well outside the grid": Mistake(deck(schedule=schedule(WELLS.replace("'PROD' 5 5 1 1", "'PROD' 5 6 1 1"))),
                                       "Well PROD: I 5, J 6, K 1 to 1, diameter 0.5 ft in a grid of 5 by 5 by 1 cells",
                                       "'PROD' 5 6 1 1", "COMPDAT", True),
    "a well without a connection": Mistake(deck(schedule=schedule(WELLS.replace("'PROD' 5 5 1 1 'OPEN' 2* 0.5 /\n", ""))),
                                           "WARNING :: WELL PROD HAS NO CONNECTION", "'PROD' 'G' 5 5", "COMPDAT"),
    "a well without a control": Mistake(deck(schedule=schedule(WELLS.replace("'PROD' 'OPEN' 'BHP' 5* 2000 /\n", ""))),
                                        "WARNING :: WELL PROD HAS NO CONTROL", "'PROD' 'G' 5 5", "WCONPROD"),
    "a well name alone on its line": Mistake(
        deck(schedule=schedule(WELLS.replace("'PROD' 'OPEN' 'BHP' 5* 2000 /", "PROD\n'OPEN' 'BHP' 5* 2000 /"))),
        "WARNING :: PROD ALONE ON ITS LINE", "WCONPROD\nPROD\n", "WCONPROD"),
    "a limit of an injector that is not held": Mistake(
        deck(schedule=schedule(WELLS.replace("'RATE' 50 1* 9000", "'RATE' 50 70 9000"))),
        "WARNING :: WELL INJ: THE LIMIT OF THE RESERVOIR RATE OF AN INJECTOR IS NOT HELD", "'RATE' 50 70", "WCONINJE"),
    "a later well outside the grid": Mistake(
        deck(schedule=schedule(WELLS + "TSTEP\n30 /\nWELSPECS\n'LATE' 'G' 3 7 8000 'OIL' /\n/\n")),
        "Well LATE: head at I 3, J 7 in a grid of 5 by 5 by 1 cells", "'LATE' 'G'", "COMPDAT or WELSPECS", True),
    "no unit word": Mistake(deck(runspec=RUNSPEC.replace("FIELD\n", "")), "WARNING :: NEITHER FIELD NOR METRIC IS GIVEN"),
    "a copy behind the factor": Mistake(deck(grid=GRID + "MULTIPLY\nPERMX 2 /\n/\nCOPY\nPERMX PERMY /\n/\n"),
                                        "WARNING :: COPY OF PERMX ACTS BEFORE MULTIPLY AND ADD", "PERMX PERMY", "COPY"),
    "a region without its numbering": Mistake(deck(grid=GRID + "MULTIREG\nPERMX 2 1 M /\n/\n"),
                                              "ERROR :: REGION 1 OF PERMX, BUT THE DECK DOES NOT GIVE MULTNUM", "PERMX 2 1", "MULTIREG", True),
    "a row without its box": Mistake(deck(grid=GRID + "EQUALS\nPORO 0.1 1 2 1 2 1 1 /\nPERMX 50 /\n/\n"),
                                     "WARNING :: A ROW WITHOUT A BOX MEANS ALL CELLS", "PERMX 50", "EQUALS"),
    "a box outside the grid": Mistake(deck(grid=GRID + "BOX\n1 6 1 5 1 1 /\n"), "ERROR :: BOX OUTSIDE THE GRID", "1 6 1 5", "BOX",
                                      True),
    "SKIP without ENDSKIP": Mistake(deck(grid=GRID.replace("PERMZ\n", "SKIP\nPERMZ\n")), "WARNING :: SKIP WITHOUT ENDSKIP", "SKIP",
                                    "SKIP", True),
    "a fault that is not there": Mistake(deck(grid=GRID + "MULTFLT\n'NORTH' 0.1 /\n/\n"), "WARNING :: FAULT NORTH IS NOT KNOWN",
                                         "'NORTH'", "MULTFLT"),
    "the method EbFVM": Mistake(deck(options="TUNEKVR\nFDMETHOD\nEbFVM\n"), "WARNING :: EbFVM HAS NO SOLVER", "EbFVM", "FDMETHOD"),
    "a solver that does not exist": Mistake(deck(options="TUNEKVR\nPSOLVER\nXYZ\n"), "WARNING :: PSOLVER: WORD XYZ IS NOT KNOWN",
                                            "XYZ", "PSOLVER"),
    "values for a larger grid": Mistake(deck(grid=grid_with("PORO", cells([0.2] * 30))),
                                        "WARNING :: PORO: MORE THAN THE 25 VALUES THAT IT HAS", "", "PORO"),
    "a longest step of 0": Mistake(deck(options="TUNEKVR\nMAXDT\n0 /\n"), "WARNING :: MAXDT 0 IS NOT ABOVE 0", "MAXDT\n0",
                                     "MAXDT"),
    "mapping steps out of range": Mistake(deck(options="TUNEKVR\nSL1DMAP\n5000 /\n"), "WARNING :: SL1DMAP 5000 IS OUT OF RANGE",
                                          "5000 /\n", "SL1DMAP"),
}


@pytest.mark.parametrize("name", sorted(MISTAKES))
def test_a_mistake_is_told_with_its_place(name, tmp_path):
    mistake = MISTAKES[name]
    result = run(tmp_path, mistake.deck, timeout=TIMEOUT)
    lines = result.console.splitlines()
    assert result.status == (1 if mistake.stops else 0), result.console[-1500:]
    told = [i for i, line in enumerate(lines) if mistake.says in line]
    assert told, result.console[-2500:]
    if not mistake.stops:
        assert "WARNING ::" in lines[told[0]]
        closing = result.console[result.console.rindex("\nWarnings "):]
        assert mistake.says in closing, closing
    near = "\n".join(lines[told[0]:told[0] + 2])
    if mistake.keyword:
        assert "ECLIPSE.DATA" in near and f"keyword {mistake.keyword}" in near, near
    if mistake.at:
        number = mistake.deck[:mistake.deck.rindex(mistake.at) + len(mistake.at.rstrip())].count("\n") + 1
        assert f"line {number}," in near, (number, near)


def test_there_are_thirty_of_them():
    assert len(MISTAKES) >= 30


def test_the_sound_deck_warns_of_nothing_that_these_do(tmp_path):
    result = run(tmp_path, deck(), timeout=TIMEOUT)
    assert result.status == 0
    for mistake in MISTAKES.values():
        assert mistake.says not in result.console


def test_july_may_be_written_as_other_simulators_do(tmp_path):
    result = run(tmp_path, deck(schedule=schedule(WELLS, "DATES\n1 'JLY' 2000 /\n/\nEND\n")), timeout=TIMEOUT)
    assert result.table()["TIME"][-1] == 182.0
