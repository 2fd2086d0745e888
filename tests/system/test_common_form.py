"""Decks named on the command line come from anywhere: whatever the form allows that leaves their meaning as it is leaves
every number as it is. Each pair of decks here says the same twice."""

import re

import pytest

import small_deck
from kvr_run import options
from named_run import run_named
from small_deck import GRID, PROPS, RUNSPEC, SCHEDULE, SOLUTION

GAS = small_deck.gas_deck(options(method="IMPES"))
PLAIN = small_deck.deck(schedule=SCHEDULE.replace("2*30", "4*30"), options=options(method="IMPES"))


def rows_of(folder, text, files=None):
    """Summary of the run of a deck, as text; the run must end and say nothing of keywords that it does not know."""
    folder.mkdir()
    (folder / "OWN.DATA").write_text(text)
    for name, content in (files or {}).items():
        (folder / name).write_text(content)
    ended = run_named("OWN.DATA", folder=folder)
    assert ended.returncode == 0, ended.console[-1500:]
    assert "NOT USED" not in ended.console, ended.console[-1500:]
    return (folder / "OWN_Summary.csv").read_text()


def notes_everywhere(text):
    return "".join(line + "\n\n-- 1 2 3 a note /\n" for line in text.splitlines())


def slashes_alone(text):
    return re.sub(r"(?<=\S) ?/\n", "\n/\n", text)


def included(text, part, name="part.inc"):
    assert part in text
    return text.replace(part, f"INCLUDE\n'{name}' /\n"), {name: part}


def nested(text):
    head, tail = GRID.split("PORO\n")
    outer = {"outer.inc": head.removeprefix("GRID\n") + "INCLUDE\n'inner.inc' /\n", "inner.inc": "PORO\n" + tail}
    return text.replace(GRID, "GRID\nINCLUDE\n'outer.inc' /\n"), outer


FORMS = {
    "comments and blank lines between any two lines": lambda t: (notes_everywhere(t), {}),
    "slashes on lines of their own": lambda t: (slashes_alone(t), {}),
    "several rows of a table on a line": lambda t: (t.replace("0.2 0.00 1.00 0\n0.5", "0.2 0.00 1.00 0  0.5"), {}),
    "files that include files": nested,
    "sections in an included file": lambda t: included(t, PROPS + SOLUTION),
    "the head of the deck in an included file": lambda t: included(t, RUNSPEC),
    "a section that goes on in an included file with the next one":
        lambda t: included(t, GRID[GRID.index("PORO\n"):] + PROPS),
    "names of reports over several lines":
        lambda t: (t.replace(SOLUTION, SOLUTION + "RPTSOL\n PRESSURE SWAT\n SGAS FIP=1 /\n"), {}),
    "one list of times for each step": lambda t: (t.replace("TSTEP\n4*30 /\n", "TSTEP\n30 /\nTSTEP\n30 /\nTSTEP\n2*30 /\n"), {}),
    "a note between a title and its keyword": lambda t: ("TITLE\n-- of\nGRID\n" + t, {}),
}


@pytest.mark.parametrize("name", FORMS)
def test_another_form_of_a_deck_leaves_its_numbers(name, tmp_path):
    text, files = FORMS[name](PLAIN)
    assert text != PLAIN
    assert rows_of(tmp_path / "other", text, files) == rows_of(tmp_path / "plain", PLAIN)


@pytest.mark.parametrize("name", ["comments and blank lines between any two lines", "slashes on lines of their own"])
def test_live_oil_may_be_written_in_any_arrangement(name, tmp_path):
    text, files = FORMS[name](GAS)
    assert rows_of(tmp_path / "other", text, files) == rows_of(tmp_path / "plain", GAS)


def column_rows(text, keyword):
    start = text.index(keyword + "\n") + len(keyword) + 1
    end = text.index("/\n", start)
    return start, end, [line.split() for line in text[start:end].splitlines()]


def by_liquid(text):
    """The table of gas and oil turned round: the saturation of the liquids in place of that of gas."""
    start, end, rows = column_rows(text, "SGOF")
    turned = "".join(f"{1 - float(sg):.10g} {' '.join(others)}\n" for sg, *others in reversed(rows))
    return text[:start].replace("SGOF\n", "SLGOF\n") + turned + text[end:]


def by_gravity(text):
    # 141.5 / (131.5 + API) * 62.366 = 53, 64 / 62.366, 0.0624 / 0.0763
    return text.replace("DENSITY\n53 64 0.0624 /", "GRAVITY\n35.007452830 1.026200173 0.817824377 /")


def contacts(text, table):
    start = text.index("SOLUTION\n")
    return text[:start] + "SOLUTION\nEQUIL\n5010 2600 5015 0 4000 0 1 0 0 /\n" + table + text[text.index("SCHEDULE\n"):]


def numbers(summary):
    return [float(word) for line in summary.splitlines()[2:] for n, word in enumerate(line.split(",")) if n != 1]


# 2100 psi lies half way from the row of 1500 psi, 0.5 to the row of 2700 psi, 0.9.
WORDS = {
    "gas by liquid saturation": (by_liquid(GAS), GAS),
    "gravities": (by_gravity(GAS), GAS),
    "bubble points by depth": (contacts(GAS, "PBVD\n4000 2100\n6000 2100\n/\n"), contacts(GAS, "RSVD\n4000 0.7\n6000 0.7\n/\n")),
}


@pytest.mark.parametrize("name", WORDS)
def test_another_word_for_the_same_leaves_the_numbers(name, tmp_path):
    other, usual = WORDS[name]
    assert other != usual
    assert numbers(rows_of(tmp_path / "other", other)) == pytest.approx(numbers(rows_of(tmp_path / "usual", usual)), rel=1e-5, abs=1e-7)


def with_two_rocks(first, second, numbers_of_cells):
    """Two saturation tables that differ in capillary pressure, and the region of each cell."""
    table = PROPS[PROPS.index("SWOF\n"):]
    assert table.count(" 0\n") == 3

    def rows(pressures):
        return "\n".join(line[:-1] + pressure for line, pressure in zip(table.splitlines()[1:4], pressures)) + "\n/\n"
    props = PROPS.replace(table, "SWOF\n" + rows(first) + rows(second)) + "REGIONS\nSATNUM\n" + numbers_of_cells + "/\n"
    return small_deck.deck(runspec=RUNSPEC + "TABDIMS\n2 1 /\n", props=props, options=options(method="IMPES"))


def test_capillary_pressure_acts_whichever_region_has_it(tmp_path):
    none, some = ("0", "0", "0"), ("60", "9", "0")
    of_the_second = rows_of(tmp_path / "second", with_two_rocks(none, some, "10*1 15*2 "))
    assert of_the_second == rows_of(tmp_path / "first", with_two_rocks(some, none, "10*2 15*1 "))
    assert of_the_second != rows_of(tmp_path / "none", with_two_rocks(none, none, "10*1 15*2 "))


def grid(rows):
    return PLAIN.replace(GRID, GRID + rows)


EDIT = "EDIT\nMULTIPLY\nTRANX 0.5 3 3 1 5 1 1 /\n/\n"
ARITHMETIC = {
    "copies take what multipliers before them have made":
        (grid("MULTIPLY\nPERMX 3 /\n/\nCOPY\nPERMX PERMY /\n/\n"), grid("PERMX\n25*300 /\nPERMY\n25*300 /\n")),
    "a row without a box has that of the row before":
        (grid("EQUALS\nPERMX 20 2 3 2 3 1 1 /\nPORO 0.1 /\n/\n"), grid("EQUALS\nPERMX 20 2 3 2 3 1 1 /\nPORO 0.1 2 3 2 3 1 1 /\n/\n")),
    "a limit left out is that of the row before":
        (grid("EQUALS\nPERMX 20 2 3 2 3 1 1 /\nPORO 0.1 2* 4 5 /\n/\n"),
         grid("EQUALS\nPERMX 20 2 3 2 3 1 1 /\nPORO 0.1 2 3 4 5 1 1 /\n/\n")),
    "copies keep to their box":
        (grid("PERMX\n25*300 /\nCOPY\nPERMX PERMY 1 5 1 2 1 1 /\n/\n"), grid("PERMX\n25*300 /\nPERMY\n10*300 15*100 /\n")),
    "arrays stand over rows before them":
        (grid("EQUALS\nPORO 0.05 /\n/\nPORO\n25*0.3 /\n"), grid("PORO\n25*0.3 /\n")),
    "cells are taken out by a row":
        (grid("EQUALS\nACTNUM 0 2 2 1 3 1 1 /\n/\n"), grid("ACTNUM\n1 0 3*1 1 0 3*1 1 0 3*1 10*1 /\n")),
    "porosity is multiplied": (grid("MULTIPLY\nPORO 0.5 /\n/\n"), grid("PORO\n25*0.1 /\n")),
    "net to gross is set": (grid("EQUALS\nNTG 0.5 /\n/\n"), grid("NTG\n25*0.5 /\n")),
    "a multiplier of connections means the upper neighbour":
        (grid("EQUALS\nMULTX 0.5 3 3 1 5 1 1 /\n/\n"), grid("MULTX\n" + "1 1 0.5 1 1 " * 5 + "/\n")),
    "so does one of transmissibilities":
        (grid(EDIT), grid("MULTX\n" + "1 1 0.5 1 1 " * 5 + "/\n")),
}


@pytest.mark.parametrize("name", ARITHMETIC)
def test_array_arithmetic_acts_where_it_stands(name, tmp_path):
    rows, arrays = ARITHMETIC[name]
    by_rows, by_arrays = rows_of(tmp_path / "rows", rows), rows_of(tmp_path / "arrays", arrays)
    assert by_rows == by_arrays
    assert by_rows != rows_of(tmp_path / "without", PLAIN), "the rows must change something"


def stopped(folder, text, files=None):
    folder.mkdir()
    (folder / "OWN.DATA").write_text(text)
    for name, content in (files or {}).items():
        (folder / name).write_text(content)
    ended = run_named("OWN.DATA", folder=folder)
    assert ended.returncode == 1
    return ended.console


@pytest.mark.parametrize("deck, files", [
    pytest.param(grid("INCLUDE\n'own.inc' /\n"), {"own.inc": "INCLUDE\n'own.inc' /\n"}, id="within a section"),
    pytest.param("INCLUDE\n'own.inc' /\n", {"own.inc": "INCLUDE\n'own.inc' /\n"}, id="between sections"),
    pytest.param(grid("INCLUDE\n'own.inc' /\n"), {"own.inc": "GRID\nINCLUDE\n'own.inc' /\nPROPS\n"}, id="with sections")])
def test_files_that_include_themselves_stop_the_run(deck, files, tmp_path):
    console = stopped(tmp_path / "run", deck, files)
    assert "ERROR :: FILES THAT INCLUDE ONE ANOTHER WITHOUT END" in console
    assert "own.inc" in console


LIVE = "PVTO\n0.1 300 1.05 1.2 /\n0.3 1500 1.15 0.9 /\n0.6 3000 1.3 0.6\n 5000 1.27 0.7 /\n/\n"


@pytest.mark.parametrize("good, bad, says, line", [
    ("0.3 1500 1.15 0.9 /", "0.3 1500 1.15 /", "ERROR :: PVTO: A RECORD OF 3 NUMBERS", "0.3 1500"),
    ("0.6 3000 1.3 0.6\n", "0.6 3000 1.3\n", "ERROR :: PVTO: A RECORD OF 6 NUMBERS", "0.6 3000"),
    (" 5000 1.27 0.7 /", " 5000 1.27 /", "ERROR :: PVTO: A RECORD OF 6 NUMBERS", "0.6 3000"),
    (" 5000 1.27 0.7 /", " 2000 1.27 0.7 /", "pressure under one Rs DOES NOT RISE", " 2000 1.27"),
    ("0.1 300 1.05 1.2 /", "0.1 300 1.05 1.2", "ERROR :: PVTO: A RECORD OF 8 NUMBERS", "0.1 300")])
def test_a_row_of_live_oil_that_lacks_a_number_stops_the_run(good, bad, says, line, tmp_path):
    assert LIVE.count(good) == 1
    start, end = GAS.index("PVTO\n"), GAS.index("/\n/\n", GAS.index("PVTO\n")) + len("/\n/\n")
    text = GAS[:start] + LIVE.replace(good, bad) + GAS[end:]
    console = stopped(tmp_path / "run", text)
    number = text[:text.index(line)].count("\n") + 1
    assert says in console and f"line {number}, keyword PVTO" in console, console[-1500:]


def test_options_behind_the_end_are_told_where_others_stand_before_it(tmp_path):
    (tmp_path / "OWN.DATA").write_text(PLAIN.replace("END\n", "") + "END\nTUNEKVR\nMAXDT\n1 /\n"
                                       if "END\nTUNEKVR" not in PLAIN else PLAIN + "END\nTUNEKVR\nMAXDT\n1 /\n")
    ended = run_named("OWN.DATA", folder=tmp_path)
    assert ended.returncode == 0
    assert "WARNING :: A SECOND TUNEKVR BEHIND END IS NOT READ" in ended.console


def columns_of(folder, text):
    rows = [line.split(",") for line in rows_of(folder, text).splitlines()]
    return {name: [float(row[n]) for row in rows[3:]] for n, name in enumerate(rows[0]) if name != "DATE"}


BY_RATE = "'INJ' 'WATER' 'OPEN' 'RATE' 50 1* 9000 /"


def test_an_injector_may_be_given_its_reservoir_rate(tmp_path):
    assert BY_RATE in PLAIN
    columns = columns_of(tmp_path / "run", PLAIN.replace(BY_RATE, "'INJ' 'WATER' 'OPEN' 'RESV' 1* 60 9000 /"))
    assert columns["WVIR:INJ"] == pytest.approx([60.0] * len(columns["TIME"]), rel=2e-3)


def test_without_a_name_the_reservoir_rate_of_an_injector_stops_the_run(tmp_path):
    (tmp_path / "ECLIPSE.DATA").write_text(PLAIN.replace(BY_RATE, "'INJ' 'WATER' 'OPEN' 'RESV' 1* 60 9000 /"))
    ended = run_named(folder=tmp_path)
    assert ended.returncode == 1 and "Invalid injector control type" in ended.console


def test_observed_rates_under_a_reservoir_rate_give_those_rates_back(tmp_path):
    """Oil of the deck comes with 0.86 Mscf/stb near its first pressure: what was observed is what the rocks gave."""
    text = GAS.replace("WCONPROD\n'PROD' 'OPEN' 'BHP' 5* 1500 /\n/\n", "WCONHIST\n'PROD' 'OPEN' 'RESV' 20 0 17.2 3* 1000 /\n/\n")
    assert "WCONHIST" in text
    text = text[:text.index("SOLUTION\n")] + "SOLUTION\nEQUIL\n5010 2600 9000 0 4000 0 1 0 0 /\nRSVD\n4000 0.86\n6000 0.86\n/\n" \
        + text[text.index("SCHEDULE\n"):]
    columns = columns_of(tmp_path / "run", text)
    assert columns["WOPR:PROD"][0] == pytest.approx(20.0, rel=0.01)
