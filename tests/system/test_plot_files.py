"""Every file that a run can leave: under its own switch only, told of in the log, holding the state that it shows,
readable by a plotting program, and complete up to the last report when the run is killed."""

import fnmatch
import os
import pty
import re
import signal
import subprocess

import numpy
import pytest

import kvr_run
import small_deck
import tecplot
from kvr_run import REPOSITORY, finished_normally, run

CELLS = (5, 4, 3)
GAS_PROPS = """PVDG
300  10 0.012
3000 1.0 0.020
8000 0.5 0.030
/
SGOF
0.0 0.0 1.0 0
0.3 0.3 0.2 0
0.8 1.0 0.0 0
/
"""
ROW = re.compile(r"^\| `([^`]+)` \| ([^|]*) \| [^|]* \| [^|]* \| (?:`([^`]+)`)? *\|$", re.M)
# What else a file needs beside its switch: tracers, a failing or another solver, lines that plot, implicit lines.
ELSEWHERE = {"KVR_Run_Regions.out", "KVR_Tplot_Tracer.plt", "KVR_TPlot_Out_Zmf.plt", "KVR_Excl_mbec.xls", "PMatrix_T_*_ite_*.xls", "SMatrix_T_*_dt_*_ite_*.xls", "KVR_BICGSTB_Info.out",
             "KVR_ECLMtricTemporaty.tmp", "KVR_ECLFieldTemporaty.tmp"}


def listed_files():
    """Name, switch and log line of every row of the list of files."""
    return ROW.findall((REPOSITORY / "docs" / "files.md").read_text())


def asked_for(of, switches):
    """Whether the switches fill a file whose column says `of`: any of several, all where they go together."""
    together = " with " in of or " and " in of
    needed = re.findall(r"\d+|`\w+`", of)
    return of == "-" or (bool(needed) and (all if together else any)(switch in switches for switch in needed))


def flood(folder, switches, gas=False, cells=CELLS, **options):
    """A water flood from corner to corner with the given positions of OUTPUTKVR on and all others but the log off."""
    count = cells[0] * cells[1] * cells[2]
    positions = ["0"] * 10
    for switch in switches:
        positions[int(switch) - 1] = "1"
    options = kvr_run.options(lines=20, **options).replace("1 0 0 0 0 0 0 1 0 0", "1 " + " ".join(positions[1:]))
    grid = small_deck.GRID.replace("25*", f"{count}*").replace(f"TOPS\n{count}*", f"TOPS\n{cells[0] * cells[1]}*")
    grid = grid.replace(f"PERMX\n{count}*100", "PERMX\n" + " ".join(str(50 + n) for n in range(count)))
    runspec = small_deck.RUNSPEC.replace("5 5 1", " ".join(map(str, cells)))
    deck = small_deck.deck(runspec=runspec.replace("OIL\n", "OIL\nGAS\n") if gas else runspec, grid=grid,
                           props=small_deck.PROPS + (GAS_PROPS if gas else ""),
                           solution=small_deck.SOLUTION.replace("25*", f"{count}*"),
                           schedule=small_deck.SCHEDULE.replace("5 5", f"{cells[0]} {cells[1]}"), options=options)
    folder.mkdir(exist_ok=True)
    return finished_normally(run(folder, deck))


def filled(folder):
    """Files that hold more than the head which stands in some from the start."""
    heads = {"KVR_Excl_mbe.xls": 1}
    return {path.name for path in folder.iterdir() if path.stat().st_size > 0
            and len(path.read_bytes().splitlines()) > heads.get(path.name, 0)}


@pytest.mark.parametrize("gas", [False, True])
@pytest.mark.parametrize("switches", [(), ("2",), ("3",), ("4",), ("5",), ("6",), ("7",), ("8",), ("9",), ("10",),
                                      ("3", "8"), ("9", "10")])
def test_every_file_is_written_under_its_own_switch_and_told_of(tmp_path, switches, gas):
    result = flood(tmp_path / "run", switches, gas)
    left = filled(result.folder)
    log = result.log.splitlines()
    for name, of, told in listed_files():
        if name in ELSEWHERE:
            continue
        asked = asked_for(of, switches)
        if name in ("KVR_TPlot_sgas.plt", "KVR_TPlot_Rs.plt"):
            asked = asked and gas
        if of.strip() == "" or "OPTIONKVR" in of:
            continue  # only the head of a table for other kinds of runs; under a switch of another option
        assert any(fnmatch.fnmatch(file, name) for file in left) == asked, f"{name} with switches {switches}"
        if told and name not in ("KVR_TPlot_sgas.plt", "KVR_TPlot_Rs.plt"):
            assert any(fnmatch.fnmatchcase(line.strip(), told) for line in log) == asked, f"line of {name} with {switches}"


@pytest.mark.parametrize("switches", [(), ("7",)])
def test_matrices_of_implicit_lines_are_left_under_their_switch(tmp_path, switches):
    result = flood(tmp_path / "run", switches, scheme="IMPLICIT", factor=3.0)
    matrices = [path for path in result.folder.glob("SMatrix_T_*_dt_*_ite_*.xls") if path.stat().st_size > 0]
    assert (len(matrices) > 0) == (switches == ("7",))


OIL_EXPANSION = 0.0014  # of the pressure that wells leave, 3000 to 2000 psia, by the table of the deck


@pytest.mark.parametrize("switches", [("3", "4"), ("3", "4", "5")])
def test_line_plots_show_the_lines_of_each_report_in_the_grid(tmp_path, switches):
    # A step from report to report; gravity would move water before the lines go.
    options = "STEPCTRL\nNo /\nSL1DCON\nEXPLICIT IRR 1.0 SPU Yes No Yes No /\n"
    result = flood(tmp_path / "run", switches, extra=options)
    water = tecplot.read_zones(result.folder / "KVR_TPlot_swat.plt")
    launched = re.findall(r"^Number of Streamline : (\d+)$", result.log, re.M)
    for report, count in zip((1, 2), map(int, launched), strict=True):
        frame, lines = tecplot.read_line_plot(result.folder / f"Streamline_Time_{30 * report}.plt")
        assert frame.cells == CELLS and len(lines) == count >= 15
        numpy.testing.assert_array_equal(frame.nodes, water[0].nodes)
        for column, values in enumerate(frame.values):
            expected = water[report - 1].values[0] if column == 2 else 0.0
            numpy.testing.assert_allclose(values, expected, rtol=1e-8, err_msg="water as the step begins, else nothing")
        for line in lines:
            x, y, z, time, diffusive, saturation, *indices = line.T
            assert x.min() >= 0.0 and x.max() <= 500.0 and y.min() >= 0.0 and y.max() <= 400.0
            assert z.min() >= 5000.0 and z.max() <= 5060.0
            assert (numpy.diff(time) > 0.0).all() and time[0] > 0.0
            assert saturation.min() >= 0.2 * (1.0 - OIL_EXPANSION) and saturation.max() <= 0.8
            assert (numpy.diff(diffusive) > 0.0).all() if "5" in switches else (diffusive == 0.0).all()
            assert [set(column) for column in indices] == [{0.0}, {1.0}, {1.0}, {1.0}]
            assert line[-1, :2].tolist() == [450.0, 350.0], "the producer's cell"


def point_values(result, name):
    lines = result.read(name).splitlines()
    assert lines[0] == "TITLE=waterPLOT"
    assert lines[2] == "Zone I ={},J={},k={},F = Point".format(*CELLS)
    return numpy.array([[float(word) for word in line.split()] for line in lines[3:]])


def slices(result, name, label):
    """Values by report time of one quantity of a sheet."""
    found = {}
    lines = result.read(name).splitlines()
    starts = [n for n, line in enumerate(lines) if line.startswith("TIME ::")] + [len(lines)]
    for start, end in zip(starts, starts[1:]):
        if lines[start + 1] != f"Grid\t{label}":
            continue
        assert lines[start + 2] == " - - - - - - - - - - - - -"
        planes = [n for n in range(start, end) if lines[n].startswith("plane Z = ")]
        assert len(planes) == CELLS[2]
        rows = [lines[plane + 2 + j].split("\t")[1:] for plane in planes for j in range(CELLS[1])]
        found[float(lines[start].split("\t")[1])] = numpy.array(rows, dtype=float).ravel()
    return found


def test_maps_sheets_and_point_files_show_the_same_state(tmp_path):
    result = flood(tmp_path / "run", "238", gas=True)
    maps = {name: tecplot.read_zones(result.folder / f"KVR_TPlot_{name}.plt") for name in ("poil", "swat", "soil", "sgas", "Rs")}
    titles = {"poil": "p<sub>o</sub>", "swat": "S<sub>w</sub>", "soil": "S<sub>o</sub>", "sgas": "S<sub>g</sub>",
              "Rs": "R<sub>s</sub>"}
    for name, zones in maps.items():
        assert [zone.time for zone in zones] == [0.0, 30.0, 60.0]
        assert all(zone.cells == CELLS and zone.title == f"TITLE={titles[name]}PLOT" for zone in zones)
    for water, oil, gas in zip(maps["swat"], maps["soil"], maps["sgas"]):
        numpy.testing.assert_allclose(water.values[0] + oil.values[0] + gas.values[0], 1.0, atol=1e-8)
    for sheet, label, name in (("KVR_Excl_Grid_Prs.xls", "Pres_Frac", "poil"), ("KVR_Excl_Grid_Sat.xls", "SWAT_Frac", "swat"),
                               ("KVR_Excl_Grid_Sat.xls", "SOIL_Frac", "soil"), ("KVR_Excl_Grid_Sat.xls", "SGAS_Frac", "sgas")):
        blocks = slices(result, sheet, label)
        assert sorted(blocks) == [0.0, 30.0, 60.0]
        for zone in maps[name]:
            numpy.testing.assert_allclose(blocks[zone.time], zone.values[0], rtol=1e-8)
    for file, zone in (("EndSwat", maps["swat"][-1]), ("Pressure", maps["poil"][-1]), ("IniSwat", maps["swat"][0])):
        points = point_values(result, f"KVR_Run_{file}.out")
        numpy.testing.assert_allclose(points[:, 3], zone.values[0], rtol=1e-8)
    assert points[0, :3].tolist() == [50.0, 50.0, 5010.0]
    pore_volume = 100.0 * 100.0 * 20.0 * 0.2 / 5.614583
    recovered = result.table()["FOE"][-1]
    ratio = 1.0 - maps["soil"][-1].values[0].sum() / maps["soil"][0].values[0].sum()
    assert abs(recovered - ratio) < 0.01, "oil expands by less than that"
    assert abs(result.table()["FWIT"][-1] - 50.0 * 60.0) < 1e-6 * pore_volume


def test_static_maps_show_the_rock_of_the_deck_and_the_transmissibility_of_the_blocks(tmp_path):
    result = flood(tmp_path / "run", "38")
    permeability = 50.0 + numpy.arange(60)

    def static(name):
        zone, = tecplot.read_zones(result.folder / f"KVR_Tplot_Static_{name}.plt")
        return zone.values[0]

    numpy.testing.assert_allclose(static("kx"), permeability)
    numpy.testing.assert_allclose(static("ky"), 100.0)
    numpy.testing.assert_allclose(static("Logkx"), numpy.log10(permeability), rtol=1e-8)
    numpy.testing.assert_allclose(static("phif"), 0.2)
    numpy.testing.assert_allclose(point_values(result, "KVR_Run_PermX.out")[:, 3], permeability)
    along = static("TRNSX").reshape(CELLS[2], CELLS[1], CELLS[0])
    k = permeability.reshape(along.shape)
    expected = 0.00112771 * 2.0 / (1.0 / k[:, :, :-1] + 1.0 / k[:, :, 1:]) * (100.0 * 20.0) / 100.0
    numpy.testing.assert_allclose(along[:, :, :-1], expected, rtol=1e-8)
    assert (along[:, :, -1] == 0.0).all()


def test_maps_of_the_flow_diagnostics_have_the_time_of_the_end_of_their_step(tmp_path):
    """Not that of its beginning, where the lines start: they show the flow of the whole step."""
    result = flood(tmp_path / "run", ("3", "8"))
    end = tecplot.read_zones(result.folder / "KVR_TPlot_swat.plt")[-1].time
    before = tecplot.read_zones(result.folder / "KVR_TPlot_swat.plt")[-2].time
    assert end == pytest.approx(result.table()["TIME"][-1]) and end > before
    for name in ("TauINJ", "TauPRD", "TauSUM", "PrdCxn", "InjCxn", "CxnCxn"):
        assert tecplot.read_zones(result.folder / f"KVR_Run_{name}.plt")[-1].time == pytest.approx(end), name


def restart_block(result, name, keyword, kind):
    """The values of a block of one record of a binary file; None where there is none."""
    raw = (result.folder / name).read_bytes()
    at = raw.find(keyword.encode().ljust(8))
    if at < 0:
        return None
    return numpy.frombuffer(raw, kind, CELLS[0] * CELLS[1] * CELLS[2], at + 16 + 8)


@pytest.mark.parametrize("switches", [("9",), ("8", "9")])
def test_the_last_restart_file_holds_the_maps_of_the_view(tmp_path, switches):
    result = flood(tmp_path / "run", switches)
    blocks = {"PRDID": "prdCxn", "INJID": "InjCxn", "CXNID": None, "TOFI": "TauINJ", "TOFP": "TauPRD", "TOFT": "TauSUM"}
    for keyword, listed in blocks.items():
        kind = ">f4" if keyword.startswith("TOF") else ">i4"
        assert restart_block(result, "ECLIPSE.X0001", keyword, kind) is None
        values = restart_block(result, "ECLIPSE.X0002", keyword, kind)
        assert (values is not None) == ("8" in switches)
        if values is not None:
            expected = 1.0 if listed is None else numpy.loadtxt(result.folder / f"KVR_Run_{listed}.out")
            numpy.testing.assert_allclose(values, expected, rtol=1e-6)


# --- another program's reader ------------------------------------------------------------------------------


def blocks_of(path):
    """The self-contained blocks of a plot file, with names for a reader that finds coordinates by their letters: it
    would not take Depth for one, but k<sub>x</sub>. Titles get the quotes that it wants around blanks."""
    text = re.sub(r"VARIABLES= X,Y,Depth,[^\n]*", r"VARIABLES= X,Y,Z,shown", path.read_text())
    text = re.sub(r"TITLE=([^\n]*)", r'TITLE="\1"', text)
    return ["TITLE=" + part for part in text.split("TITLE=")[1:]]


def load(folder, block):
    """Number of cells and points, and the shown values, as VTK reads them."""
    geometry = pytest.importorskip("vtkmodules.vtkIOGeometry", reason="VTK's Python is not installed")
    common = pytest.importorskip("vtkmodules.vtkCommonCore")
    common.vtkObject.GlobalWarningDisplayOff()
    name = folder / "block.plt"
    name.write_text(block)
    reader = geometry.vtkTecplotReader()
    reader.SetFileName(str(name))
    reader.Update()
    assert reader.GetOutput().GetNumberOfBlocks() == 1
    grid = reader.GetOutput().GetBlock(0)
    shown = grid.GetCellData().GetArray(0)
    assert shown.GetNumberOfTuples() == grid.GetNumberOfCells()
    return grid.GetNumberOfCells(), grid.GetNumberOfPoints(), shown.GetRange(), grid.GetBounds()


def test_a_plotting_library_reads_every_block_zone(tmp_path):
    result = flood(tmp_path / "run", "38", gas=True, extra="UPSCALE\nPERMX 5 4 3 /\n/\nSMTHPRM\nPORO 1 /\n/\n")
    paths = [path for path in sorted(result.folder.glob("*.plt")) if "DATAPACKING=BLOCK" in path.read_text()]
    assert len(paths) == 5 + 10 + 7 + 1 + 6, "maps, rock, upscaled and smoothed, diagnostics"
    for path in paths:
        zones = tecplot.read_zones(path)
        blocks = blocks_of(path)
        assert len(blocks) == len(zones)
        for block, zone in zip(blocks, zones):
            cells, points, (least, most), bounds = load(tmp_path, block)
            assert (cells, points) == (60, 120)
            values = zone.values[0]
            numpy.testing.assert_allclose([least, most], [values.min(), values.max()], rtol=1e-6, err_msg=path.name)
            assert bounds[:4] == (0.0, 500.0, 0.0, 400.0) and bounds[5] - bounds[4] == 60.0


def test_a_plotting_library_reads_zones_with_corners_of_their_own(tmp_path):
    result = flood(tmp_path / "run", "3", extra="OPTIONKVR\n1 1 0 0 0 0 0 0 /\n")
    for block in blocks_of(result.folder / "KVR_TPlot_swat.plt"):
        cells, points, (least, most), bounds = load(tmp_path, block)
        assert (cells, points) == (60, 480)
        assert 0.2 - 1e-6 <= least <= most <= 0.8
        assert bounds[:4] == (0.0, 500.0, 0.0, 400.0)


# --- a killed run ------------------------------------------------------------------------------------------

KILLED_AT = 4  # step whose announcement is the end


def killed_in_a_step(folder):
    """Kills a run as soon as it announces step KILLED_AT; the dense solver makes every step take its time."""
    cells = (40, 40, 1)
    (folder / "whole").mkdir()
    options = kvr_run.options(lines=20, solver="DGESV", extra="STEPCTRL\nNo /\n")
    options = options.replace("1 0 0 0 0 0 0 1 0 0", "1 1 1 0 0 0 0 1 0 0")
    deck = small_deck.deck(runspec=small_deck.RUNSPEC.replace("5 5 1", "40 40 1"),
                           grid=small_deck.GRID.replace("25*", "1600*"),
                           solution=small_deck.SOLUTION.replace("25*", "1600*"),
                           schedule=small_deck.SCHEDULE.replace("5 5 ", "40 40 ").replace("2*30", "20*30"), options=options)
    (folder / "ECLIPSE.DATA").write_text(deck)
    ours, theirs = pty.openpty()
    with subprocess.Popen([kvr_run.PROGRAM], cwd=folder, stdin=subprocess.DEVNULL, stdout=theirs) as process:
        os.close(theirs)
        text = ""
        while f"Step {KILLED_AT} Time" not in text:
            text += os.read(ours, 4096).decode(errors="replace")
        process.send_signal(signal.SIGKILL)
        process.wait()
        os.close(ours)
    assert process.returncode == -signal.SIGKILL
    return cells


def whole_lines(folder, name):
    text = (folder / name).read_text()
    assert text.endswith("\n"), name
    return text.splitlines()


def test_a_killed_run_leaves_every_file_readable_up_to_its_last_report(tmp_path):
    cells = killed_in_a_step(tmp_path)
    times = [30.0 * n for n in range(KILLED_AT)]
    for name in ("poil", "swat", "soil"):
        zones = tecplot.read_zones(tmp_path / f"KVR_TPlot_{name}.plt")
        assert [zone.time for zone in zones] == times and all(zone.cells == cells for zone in zones)
    for name in ("KVR_Excl_Grid_Prs.xls", "KVR_Excl_Grid_Sat.xls"):
        blocks = [line for line in whole_lines(tmp_path, name) if line.startswith("TIME ::")]
        assert sorted({float(line.split("\t")[1]) for line in blocks}) == times
    for name, head in (("KVR_Run_Recovery.out", 1), ("KVR_Run_SweepVolume.out", 1), ("KVR_Excl_mbe.xls", 1)):
        rows = whole_lines(tmp_path, name)[head:]
        assert [float(row.split()[0]) for row in rows] == times, name
        assert len({len(row.split()) for row in rows}) == 1, name
    for name, head in (("KVR_Run_Production.out", 1), ("KVR_Run_Wct.out", 1), ("KVR_TPlot_Well_Rate.plt", 2),
                       ("KVR_TPlot_Well_Blk.plt", 2)):
        rows = whole_lines(tmp_path, name)[head:]
        assert [float(row.split()[0]) for row in rows] == times[1:], name
    assert len(whole_lines(tmp_path, "KVR_Excl_Well.xls")) == 1 + 2 * (KILLED_AT - 1)
    assert len(whole_lines(tmp_path, "KVR_Excl_Well_Blk.xls")) == 4 * (KILLED_AT - 1)
    for name in ("KVR_Tplot_Static_kx.plt", "KVR_Tplot_Static_TRNSX.plt"):
        assert len(tecplot.read_zones(tmp_path / name)) == 1
    assert len(whole_lines(tmp_path, "KVR_Run_PermX.out")) == 3 + 1600
    assert "SPECIAL pbub corre -" in whole_lines(tmp_path, "KVR_Info_general.out")[-1]
    assert any(line.startswith(f"Report {KILLED_AT - 1} ") for line in whole_lines(tmp_path, "KVR_dbg.out"))
