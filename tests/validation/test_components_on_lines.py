"""Mixtures moved along streamlines against the same decks by IMPES, on their own grid and on finer ones.

All of the example by command:   KVR_RICH_GAS_DAYS=500 ... pytest tests/validation/test_components_on_lines.py"""

import os
import re

import numpy
import pytest

import component_deck
import kvr_run
import named_run
import tecplot

DAYS = int(os.environ.get("KVR_RICH_GAS_DAYS", "160"))
LENGTH, CELLS, FINE = 1000.0, 25, 100  # of a row, ft
ROW_DAYS = 100
OUTPUT = "OUTPUTKVR\n1 0 1 0 0 0 0 0 0 0 /\n"
LIMITED = "SL1DCON\nEXPLICIT IRR 1 2PU /\n"
PRODUCED = re.compile(r"^(\w+) +: produced (\S+) lb-mole, .* balance error (\S+) %", re.M)


def ended(folder, text):
    folder.mkdir()
    (folder / "CASE.DATA").write_text(text)
    run = named_run.run_named(folder / "CASE.DATA", folder=folder)
    assert run.returncode == 0 and run.errors == "", run.console[-3000:]
    return run


def row_of(folder, cells, method, options=""):
    """Mole fractions at the end, a column per cell, as means over CELLS cells."""
    days = 100.0 / cells
    text = component_deck.replaced(cells=(cells, 1, 1), sizes=(LENGTH / cells, 10.0, 100.0), method=method,
                                   steps=f"{round(ROW_DAYS / days)}*{days}", options=OUTPUT + options + f"MAXDT\n{days} /\n")
    ended(folder, text)
    values = numpy.array(tecplot.read_zones(folder / "CASE_TPlot_Out_Zmf.plt")[-1].values)
    return values.reshape(len(values), CELLS, -1).mean(axis=2)


def test_limited_lines_halve_the_error_of_a_gas_drive(tmp_path):
    reference = row_of(tmp_path / "fine", FINE, "IMPES")
    cells = row_of(tmp_path / "cells", CELLS, "IMPES")
    lines = row_of(tmp_path / "lines", CELLS, "STREAMLINE", LIMITED)
    plain = row_of(tmp_path / "plain", CELLS, "STREAMLINE")
    error = {name: numpy.abs(found - reference).mean(axis=1) for name, found in
             (("cells", cells), ("lines", lines), ("plain", plain))}
    assert (error["lines"] < 0.6 * error["cells"]).all(), error
    assert (error["lines"] < 0.01).all(), error
    # Upwind lines smear as upwind cells do, and no more.
    assert (error["plain"] < error["cells"]).all(), error


def test_rich_gas_through_a_channel_is_that_of_impes(tmp_path):
    text = (kvr_run.REPOSITORY / "examples" / "rich_gas" / "RICH_GAS.DATA").read_text()
    text = text.replace("25*20 /", f"{DAYS // 20}*20 /")
    assert "FDMETHOD\nIMPES" in text
    found = {}
    for method in ("IMPES", "STREAMLINE"):
        run = ended(tmp_path / method, text.replace("FDMETHOD\nIMPES", f"FDMETHOD\n{method}"))
        found[method] = {name: float(produced) for name, produced, _ in PRODUCED.findall(run.console)}
        assert all(abs(float(error)) < 1e-4 for *_, error in PRODUCED.findall(run.console))
    assert len(found["IMPES"]) == 3
    for name, produced in found["IMPES"].items():
        assert found["STREAMLINE"][name] == pytest.approx(produced, rel=0.03), name
