"""Runs of components from start to end: what moves, what is reported, what is refused."""

import re

import numpy
import pytest

import block_files
import component_deck
import kvr_run
import named_run
import tecplot

GAS_DRIVE = dict(cells=(12, 1, 1), sizes=(80.0, 10.0, 100.0), steps="10*10", options="OUTPUTKVR\n1 1 1 0 0 0 0 0 1 1 /\n")
ORAT = """WCONINJE
INJ GAS OPEN RATE 50 1* 5000 /
/
WINJGAS
INJ STREAM LEAN /
/
WCONPROD
PRD OPEN ORAT 30 4* 500 /
/
"""


def run(folder, **pieces):
    (folder / "CASE.DATA").write_text(component_deck.replaced(**pieces))
    return named_run.run_named(folder / "CASE.DATA", folder=folder)


def whole(ended):
    assert ended.returncode == 0 and ended.errors == "", ended.console[-3000:]
    return ended


def component_rows(console):
    """Produced, injected (lb-mole) and balance error (%) of every component in the closing summary."""
    row = re.compile(r"^(\w+) +: produced (\S+) lb-mole, injected (\S+) lb-mole, balance error (\S+) %", re.M)
    return {name: tuple(map(float, values)) for name, *values in row.findall(console)}


@pytest.fixture(scope="module")
def drive(tmp_path_factory):
    folder = tmp_path_factory.mktemp("drive")
    return whole(run(folder, **GAS_DRIVE)), folder


def test_every_component_balances_and_what_is_injected_is_the_stream(drive):
    rows = component_rows(drive[0].console)
    assert list(rows) == ["C1", "C4", "C10"]
    assert all(abs(error) < 1e-4 for _, _, error in rows.values())
    assert rows["C1"][1] == pytest.approx(9 * rows["C4"][1], rel=1e-5) and rows["C10"][1] == 0.0
    # 50 Mscf a day: a lb-mole of gas is some 379 scf at 14.7 psia and 60 F.
    assert (rows["C1"][1] + rows["C4"][1]) == pytest.approx(100 * 50e3 / 379.4, rel=0.01)


def test_fronts_are_tracked_along_a_row_alone_and_told_elsewhere(tmp_path):
    warning = "FRONTS OF COMPONENTS ARE TRACKED ALONG A ROW OF CELLS ALONE"
    words = "FDMETHOD\nSTREAMLINE\nSL1DCON\n{} /\n"
    consoles, curves = {}, {}
    for name, cells, scheme in (("row", (12, 1, 1), "ANALYTICAL"), ("plane", (4, 3, 1), "ANALYTICAL"), ("lines", (4, 3, 1), "EXPLICIT")):
        (tmp_path / name).mkdir()
        pieces = dict(GAS_DRIVE, cells=cells, steps="2*10", options=words.format(scheme))
        consoles[name] = whole(run(tmp_path / name, **pieces)).console
        curves[name], _ = named_run.summary_of(tmp_path / name / "CASE_Summary.csv")
    assert {name for name, console in consoles.items() if warning in console} == {"plane"}
    numpy.testing.assert_allclose(curves["plane"]["FGPT"], curves["lines"]["FGPT"], rtol=5e-3)


def test_the_summary_holds_produced_fractions_that_sum_to_one(drive):
    columns, units = named_run.summary_of(drive[1] / "CASE_Summary.csv")
    field = sum(columns[f"FZMF_{i:04}"] for i in (1, 2, 3))
    well = sum(columns[f"WZMF_{i:04}:PRD"] for i in (1, 2, 3))
    assert numpy.allclose(field[1:], 1.0, atol=1e-9) and numpy.allclose(well[1:], 1.0, atol=1e-9)
    # The first oil that comes is what the pores held.
    assert [columns[f"FZMF_{i:04}"][1] for i in (1, 2, 3)] == pytest.approx([0.2, 0.3, 0.5], abs=1e-9)
    assert units["FZMF_0001"] == ""
    assert columns["WGIR:INJ"][1:] == pytest.approx(50.0, rel=1e-4)  # by the tolerance of the pressure


def test_maps_and_restart_files_hold_the_mole_fractions(drive):
    folder = drive[1]
    zones = tecplot.read_zones(folder / "CASE_TPlot_Out_Zmf.plt")
    assert len(zones) == 11
    last = max(folder.glob("*.X0*"))
    blocks = {block.keyword: block for block in block_files.blocks_of(last.read_bytes())}
    z = [numpy.frombuffer(b"".join(blocks[b"ZMF%d    " % i].data), ">f8" if blocks[b"ZMF%d    " % i].kind == b"DOUB" else ">f4")
         for i in (1, 2, 3)]
    assert numpy.allclose(sum(z), 1.0, atol=1e-6)
    assert z[0][0] > 0.5 and z[0][-1] == pytest.approx(0.2, abs=1e-6)


def test_the_balance_tables_hold_the_components(drive):
    _, folder = drive
    sheet = (folder / "CASE_Excl_mbec.xls").read_text().splitlines()
    masses = [float(word) for word in sheet[1].split("\t")[6:9]]
    moles = [mass / weight for mass, weight in zip(masses, (16.043, 58.12, 142.285))]
    assert [part / sum(moles) for part in moles] == pytest.approx([0.2, 0.3, 0.5], abs=1e-9)
    table = kvr_run.read_table(folder / "CASE_Run_SweepVolume.out")
    assert table["|CMP_MAS|"][0] == pytest.approx(sum(masses), rel=1e-9)
    assert table["|CMP_MOL|"][0] == pytest.approx(sum(moles), rel=1e-9)
    assert " Mole In Place **   " in (folder / "CASE_dbg.out").read_text()


def test_a_producer_holds_its_oil_rate(tmp_path):
    whole(run(tmp_path, controls=ORAT, cells=(12, 1, 1), sizes=(80.0, 10.0, 100.0), steps="6*10"))
    columns, _ = named_run.summary_of(tmp_path / "CASE_Summary.csv")
    assert columns["WOPR:PRD"][1:] == pytest.approx(30.0, rel=0.03)


@pytest.mark.parametrize("method", ["IMPES", "STREAMLINE"])
def test_results_are_the_same_bits_for_any_number_of_threads(tmp_path, method):
    pieces = dict(cells=(40, 30, 2), sizes=(40.0, 40.0, 20.0), steps="2*5", permeability=200.0, method=method)
    found = []
    for threads in ("1", "2"):
        folder = tmp_path / threads
        folder.mkdir()
        (folder / "CASE.DATA").write_text(component_deck.replaced(**pieces))
        ended = named_run.run_named("--threads", threads, folder / "CASE.DATA", folder=folder)
        assert ended.returncode == 0
        found.append((folder / "CASE_Summary.csv").read_text())
    assert found[0] == found[1]


LINES = dict(method="STREAMLINE")


@pytest.mark.parametrize("pieces, message", [
    (dict(method="FIM"), "components (COMPS) other than by streamlines or FDMETHOD IMPES"),
    (dict(LINES, options="SL1DCON\nIMPLICIT /\n"), "components (COMPS) on implicit or hybrid lines (SL1DCON)"),
    (dict(LINES, options="SL1DCON\nHYBRID /\n"), "components (COMPS) on implicit or hybrid lines (SL1DCON)"),
    (dict(LINES, options="SL1DCON\nEXPLICIT IRR 1 SPU Yes Yes No Yes /\n"), "components (COMPS) on lines with the orthogonal projection"),
    (dict(LINES, options="MAPPING\nAVERAGE /\n"), "components (COMPS) on lines with MAPPING AVERAGE"),
    (dict(controls=ORAT.replace("INJ STREAM LEAN /\n", "")), "ERROR :: WELL INJ INJECTS GAS WITHOUT A STREAM"),
    (dict(streams=(("LEAN", (0.0, 0.0, 1.0)),)), "ERROR :: STREAM LEAN OF WELL INJ HAS NO GAS AT THE SURFACE"),
    (dict(composition=""), "INITIALIZING Failed :: Initial Composition is not given"),
    (dict(temperature=-460.0), "ERROR :: COMPONENTS NEED RTEMP"),
])
def test_what_cannot_be_run_is_refused_in_one_line(tmp_path, pieces, message):
    ended = run(tmp_path, **pieces)
    assert ended.returncode != 0
    assert message in ended.console + (tmp_path / "CASE_dbg.out").read_text()


@pytest.fixture(scope="module")
def by_lines(tmp_path_factory):
    folder = tmp_path_factory.mktemp("by_lines")
    return whole(run(folder, **dict(GAS_DRIVE, **LINES))), folder


def test_every_component_balances_along_lines(drive, by_lines):
    rows, cells = component_rows(by_lines[0].console), component_rows(drive[0].console)
    assert all(abs(error) < 1e-4 for _, _, error in rows.values())
    for name, (produced, injected, _) in rows.items():
        assert injected == pytest.approx(cells[name][1], rel=1e-9), name
        # The row is coarse: twelve cells smear the front of the cells over two.
        assert produced == pytest.approx(cells[name][0], rel=0.03), name


def test_lines_of_components_are_shown_as_those_of_black_oil(by_lines):
    _, folder = by_lines
    assert "Successed Streamline : " in (folder / "CASE_dbg.out").read_text()
    assert len(list(folder.glob("CASE.SLN0*"))) == 10
    assert len(tecplot.read_zones(folder / "CASE_TPlot_Out_Zmf.plt")) == 11


def test_a_composition_that_does_not_sum_to_one_is_told_and_divided_by_its_sum(tmp_path):
    ended = whole(run(tmp_path, feed=(0.4, 0.6, 1.0), steps="1"))
    assert "WARNING :: MOLE FRACTIONS SUM TO 2" in ended.console
