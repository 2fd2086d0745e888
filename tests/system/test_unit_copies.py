"""The copies of a deck in metric and field units read back as the deck: the same model, the same run."""

import csv
import re
import pathlib
import sys

import pytest

import dual_deck
from kvr_run import options, run

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[1] / "malformed"))

import small_decks  # noqa: E402

REQUEST = "RUNSPEC\n-- ConvertUnitCommandKVR\n"
COPIES = {"METRIC": "KVR_ECLMtricTemporaty.tmp", "FIELD": "KVR_ECLFieldTemporaty.tmp"}
SAME_UNITS = 1e-7  # numbers of the copy have nine digits
OTHER_UNITS = 1e-3  # factors of both directions have seven digits, and lines start where cells lie
LEAST = 1e-3  # of a column, in its unit: below it a value is what rounding leaves

# Of a unit of field decks in units of metric ones.
FACTORS = {("STB", "SM3"): 0.158987295, ("STB/DAY", "SM3/DAY"): 0.158987295, ("MSCF", "SM3"): 28.3168466,
           ("MSCF/DAY", "SM3/DAY"): 28.3168466, ("RB", "RM3"): 0.158987295, ("RB/DAY", "RM3/DAY"): 0.158987295,
           ("PSIA", "BARSA"): 0.0689475729, ("MSCF/STB", "SM3/SM3"): 178.107607}

CASES = ("keywords", "robust_LIVEGAS", "spe1_SPE1CASE1", "spe9_SPE9", "robust_fim_newton_cycle", "random_6", "random_12",
         "waterflood_QFS50", "robust_imp_gas")


def vectors(folder):
    with open(folder / "KVR_Summary.csv") as file:
        rows = list(csv.reader(file))
    return rows[0], rows[1], [row for row in rows[2:]]


def factor(unit, other):
    if unit == other:
        return 1.0
    return FACTORS[unit, other] if (unit, other) in FACTORS else 1.0 / FACTORS[other, unit]


def largest_difference(folder, other):
    """Over all vectors and steps, relative to the largest value of the vector."""
    names, units, rows = vectors(folder)
    names_there, units_there, rows_there = vectors(other)
    assert names == names_there and len(rows) == len(rows_there)
    worst = 0.0
    for column, name in enumerate(names):
        if name == "DATE":
            continue
        ratio = factor(units[column], units_there[column])
        values = [float(row[column]) for row in rows]
        found = [float(row[column]) / ratio for row in rows_there]
        scale = max(LEAST, *map(abs, values))
        worst = max(worst, max(abs(a - b) for a, b in zip(values, found)) / scale)
    return worst


@pytest.fixture(scope="module")
def decks():
    return {seed.name: seed.text.decode("latin-1") for seed in small_decks.seeds()}


@pytest.mark.parametrize("name", CASES)
def test_both_copies_of_a_deck_run_as_the_deck(tmp_path, decks, name):
    if name not in decks:
        pytest.skip("the folder of public decks is not beside the checkout")
    text = decks[name].replace("RUNSPEC\n", REQUEST, 1)
    if name.startswith("random"):  # their few lines tip with the last digits of a cell's corner
        text = re.sub(r"FDMETHOD\n\w+", "FDMETHOD\nFIM", text, count=1)
        assert "FDMETHOD\nFIM" in text
    if name == "waterflood_QFS50":  # so do its eight lines about the diagonal
        text = text.replace("END\n", "END\nTUNEKVR\nFDMETHOD\nIMPES\n", 1)
        assert "IMPES" in text
    copies_run_as(tmp_path, text)


def test_both_copies_of_two_continua_run_as_the_deck(tmp_path):
    deck = dual_deck.dual(4, 4, 20, "5*20", 0.01, runspec="GRAVDR\n", grid="DZMTRX\n12 /\n")
    copies_run_as(tmp_path, deck.replace("RUNSPEC\n", REQUEST, 1) + options(method="FIM"))


def copies_run_as(tmp_path, text):
    own = "METRIC" if "\nMETRIC\n" in text else "FIELD"
    (tmp_path / "deck").mkdir()
    assert run(tmp_path / "deck", text).status == 0
    for units, file_name in COPIES.items():
        (tmp_path / units).mkdir()
        copy = (tmp_path / "deck" / file_name).read_text()
        assert units in copy.split()
        assert run(tmp_path / units, copy).status == 0
        limit = SAME_UNITS if units == own else OTHER_UNITS
        assert largest_difference(tmp_path / "deck", tmp_path / units) < limit, units


def test_tables_of_a_copy_end_with_one_slash(tmp_path, decks):
    text = decks["keywords"].replace("RUNSPEC\n", REQUEST, 1)
    assert run(tmp_path, text).status == 0
    copy = (tmp_path / COPIES["FIELD"]).read_text()
    assert "PVDG\n14.7 166.666 0.008\n4014.7 0.811 0.0268\n/\n14.7 166.666 0.008\n4014.7 0.811 0.0268\n/\n" in copy
    assert "EQUALS\n'DX' 300 /\n" in copy


def test_a_copy_of_live_oil_keeps_every_undersaturated_row(tmp_path, decks):
    if "spe1_SPE1CASE1" not in decks:
        pytest.skip("the folder of public decks is not beside the checkout")
    assert run(tmp_path, decks["spe1_SPE1CASE1"].replace("RUNSPEC\n", REQUEST, 1)).status == 0
    table = (tmp_path / COPIES["FIELD"]).read_text().split("PVTO\n")[1].split("\n/\n")[0]
    records = [record.split() for record in table.replace("\n", " ").split("/")]
    assert [len(record) for record in records if record][-2:] == [7, 7]
