"""Broken decks: each ends in a message with exit status 1, or runs on with a repaired value; never in a
crash or a hang. Standard input is closed throughout."""

import random

import pytest

import kvr_run
import small_deck
from kvr_run import run

TIMEOUT = 60


def stops_with(tmp_path, deck, *texts, files=None):
    result = run(tmp_path, deck, files=files, timeout=TIMEOUT)
    assert result.status == 1, result.console[-1500:]
    for text in texts:
        assert text in result.console, result.console[-1500:]
    return result


def names_the_place(result, file_name, line_number):
    """Some line names both the file and the line."""
    assert any(file_name in line and str(line_number) in line for line in result.console.splitlines()), \
        result.console[-1500:]


def line_of(deck, text):
    return deck[:deck.index(text)].count("\n") + 1


@pytest.mark.parametrize("dimensions", ["0 5 1", "-5 5 1", "5 5"])
def test_dimensions_below_one_stop_the_run(tmp_path, dimensions):
    deck = small_deck.deck(runspec=small_deck.RUNSPEC.replace("5 5 1", dimensions))
    stops_with(tmp_path, deck, "ERROR :: DIMENS NOT SPECIFIED")


def test_dimensions_beyond_any_memory_stop_the_run(tmp_path):
    deck = small_deck.deck(runspec=small_deck.RUNSPEC.replace("5 5 1", "2000000 2000000 2000000"))
    result = stops_with(tmp_path, deck, "Error :: Memory error , Variable")
    names_the_place(result, "ECLIPSE.DATA", line_of(deck, "DIMENS") + 1)


def test_missing_dimensions_stop_the_run(tmp_path):
    deck = small_deck.deck(runspec=small_deck.without_keyword(small_deck.RUNSPEC, "DIMENS"))
    stops_with(tmp_path, deck, "ERROR :: DIMENS NOT SPECIFIED")


def test_a_missing_include_file_stops_the_run(tmp_path):
    grid = small_deck.GRID.replace("PORO\n25*0.2 /", "INCLUDE\n'nowhere.inc' /")
    stops_with(tmp_path, small_deck.deck(grid=grid), "ERROR: INCLUDE File Open Error at GRID section")


def test_a_missing_include_file_of_runspec_is_named(tmp_path):
    runspec = small_deck.RUNSPEC + "INCLUDE\n'nowhere.inc' /\n"
    stops_with(tmp_path, small_deck.deck(runspec=runspec),
               "ERROR: INCLUDE File Open Error at RUNSPEC section", "File I/O Error, in RUNSPEC Section")


def test_too_few_array_values_name_file_and_line(tmp_path):
    deck = small_deck.deck(grid=small_deck.GRID.replace("25*0.2", "24*0.2"))
    result = stops_with(tmp_path, deck, "PORO")
    names_the_place(result, "ECLIPSE.DATA", line_of(deck, "24*0.2"))


def test_letters_where_numbers_belong_name_file_and_line(tmp_path):
    deck = small_deck.deck(grid=small_deck.GRID.replace("PERMX\n25*100", "PERMX\n24*100 hundred"))
    result = stops_with(tmp_path, deck, "ERROR: File reading error, code =", "Reading error, in GRID Section")
    names_the_place(result, "ECLIPSE.DATA", line_of(deck, "hundred"))


def test_letters_in_runspec_and_schedule_stop_with_their_section(tmp_path):
    deck = small_deck.deck(runspec=small_deck.RUNSPEC.replace("5 5 1", "5 five 1"))
    stops_with(tmp_path, deck, "Reading error, in RUNSPEC Section")
    deck = small_deck.deck(schedule=small_deck.SCHEDULE.replace("2*30", "thirty"))
    stops_with(tmp_path, deck, "Reading error, in SCHEDULE Section")


def test_a_well_outside_the_grid_stops_the_run(tmp_path):
    deck = small_deck.deck(schedule=small_deck.SCHEDULE.replace("'PROD' 5 5 1 1", "'PROD' 9 5 1 1"))
    result = stops_with(tmp_path, deck, "ERROR :: Invailed Well Input Data (Location)", "PROD")
    names_the_place(result, "ECLIPSE.DATA", line_of(deck, "'PROD' 9 5 1 1"))


@pytest.mark.parametrize("keyword, first", [("SWOF", "0.2 0.00 1.00 0"), ("PVDO", "300  1.05 2.85")])
def test_a_table_of_one_row_stops_the_run(tmp_path, keyword, first):
    start = small_deck.PROPS.index(f"{keyword}\n")
    end = small_deck.PROPS.index("/\n", start)
    props = small_deck.PROPS[:start] + f"{keyword}\n{first}\n" + small_deck.PROPS[end:]
    stops_with(tmp_path, small_deck.deck(props=props), f"ERROR :: INSUFFICIENT {keyword} TABLE")


def test_an_unknown_control_stops_the_run(tmp_path):
    deck = small_deck.deck(schedule=small_deck.SCHEDULE.replace("'OPEN' 'BHP'", "'OPEN' 'XXX'"))
    stops_with(tmp_path, deck, "Invalid producer control type")


@pytest.mark.parametrize("keyword, broken, text", [
    ("PORO\n25*0.2", "PORO\n25*0.0", "ERROR at GRID :: INITIAL POROSITY IS ERRORNEOUS"),
    ("DX\n25*100", "DX\n0 24*100", "ERROR at GRID :: DX NOT ENOUGH"),
    ("DY\n25*100", "DY\n0 24*100", "ERROR at GRID :: DY NOT ENOUGH"),
    ("DZ\n25*20", "DZ\n0 24*20", "ERROR at GRID :: DZ NOT ENOUGH"),
    ("TOPS\n25*5000", "TOPS\n24*5000 -1", "ERROR at GRID :: SURFACE DATA (TOPS) IS ERRORNEOUS"),
    ("PERMX\n25*100", "PERMX\n25*0", "ERROR at GRID :: PERMEABILITY IS ERRORNEOUS"),
])
def test_a_grid_that_cannot_be_stops_the_run(tmp_path, keyword, broken, text):
    stops_with(tmp_path, small_deck.deck(grid=small_deck.GRID.replace(keyword, broken)), text)


def test_a_permfile_that_is_missing_stops_the_run(tmp_path):
    options = kvr_run.options(lines=20, extra="PERMFILE\n'TARGET.INC' 'START.INC' /\n")
    stops_with(tmp_path, small_deck.deck(options=options), "by PERMFILE")


def test_an_optimisation_without_a_least_flux_stops_the_run(tmp_path):
    options = kvr_run.options(lines=20, extra="OPTIMIZE\nWFOOPT\n1 0 1 2 -0.25 25 0 100 0.001 /\n")
    stops_with(tmp_path, small_deck.deck(options=options),
               "ERROR : Option 7 should not be zero at WFOOPT. Provide constraint")


def test_every_truncation_of_a_deck_ends_by_itself(tmp_path):
    deck = small_deck.deck()
    for i, length in enumerate(range(40, len(deck), 97)):
        folder = tmp_path / str(i)
        folder.mkdir()
        result = run(folder, deck[:length], timeout=TIMEOUT)
        assert result.status in (0, 1), (length, result.status)


HOSTILE_WORDS = ["-1", "0", "1e308", "nan", "inf", "99999999999999999999", "1000000000*1", "*", "/", "'", "//",
                 "3*", "-3*2", "1*", "END", "GRID", "\0", "\xff", "A" * 5000, "2147483647", "-2147483648", ","]


def test_random_damage_never_crashes_or_hangs(tmp_path):
    generator = random.Random(1)
    words = small_deck.deck().split(" ")
    for i in range(150):
        broken = list(words)
        for _ in range(generator.randint(1, 3)):
            at = generator.randrange(len(broken))
            if generator.random() < 0.5:
                broken[at] = generator.choice(HOSTILE_WORDS)
            elif generator.random() < 0.5:
                del broken[at]
            else:
                broken.insert(at, generator.choice(HOSTILE_WORDS))
        folder = tmp_path / str(i)
        folder.mkdir()
        deck = " ".join(broken)
        result = run(folder, files={"ECLIPSE.DATA": deck.encode("latin-1")}, timeout=TIMEOUT)
        assert result.status in (0, 1), (i, result.status, result.console[-500:])
