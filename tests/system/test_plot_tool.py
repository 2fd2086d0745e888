"""Pictures of any run by tools/plot: they are there, and the figures behind them are those of the run's own files."""

import csv
import re
import shutil
import subprocess
import sys

import numpy
import pytest

import kvr_run
import small_deck
import tecplot
from kvr_run import REPOSITORY, finished_normally, run
from named_run import run_named, summary_of

pytest.importorskip("matplotlib")

PLOT = REPOSITORY / "tools" / "plot"
CELLS = (5, 4, 3)
PNG = b"\x89PNG"


def flood(switches="1 0 1 1 0 0 0 1 0 0 /", options="", cells=CELLS):
    nx, ny, nz = cells
    count = f"{nx * ny * nz}*"
    section = kvr_run.options(lines=40, solver="DGESV").replace("1 0 0 0 0 0 0 1 0 0 /", switches) + options
    grid = small_deck.GRID.replace("25*5000", f"{nx * ny}*5000").replace("25*", count)
    schedule = small_deck.SCHEDULE.replace("5 5 ", f"{nx} {ny} ").replace(" 1 1 'OPEN'", f" 1 {nz} 'OPEN'")
    return small_deck.deck(runspec=small_deck.RUNSPEC.replace("5 5 1", f"{nx} {ny} {nz}"), grid=grid,
                           solution=small_deck.SOLUTION.replace("25*", count), schedule=schedule, options=section)


def plot(*words):
    return subprocess.run([PLOT, *map(str, words)], capture_output=True, text=True)


def drawn(*words):
    """Pictures and tables that the tool says it has written, all there."""
    done = plot(*words)
    assert done.returncode == 0, done.stderr
    paths = {path.split("_Plot_")[1]: path for path in done.stdout.split()}
    for path in paths.values():
        with open(path, "rb") as file:
            assert path.endswith(".csv") or file.read(4) == PNG, path
    return paths


def table(path):
    with open(path, newline="") as file:
        rows = list(csv.reader(file))
    keep = [n for n, name in enumerate(rows[0]) if name != "DATE"]
    return {rows[0][n]: numpy.array([float(row[n]) for row in rows[1:]]) for n in keep}


def refused(*words):
    done = plot(*words)
    assert done.returncode == 1 and done.stdout == "", done.stdout
    line, = done.stderr.splitlines()
    assert line.startswith("tools/plot: ")
    return line


@pytest.fixture(scope="module")
def result(tmp_path_factory):
    return finished_normally(run(tmp_path_factory.mktemp("flood"), flood()))


def test_a_run_without_arguments_has_its_pictures_drawn_at_one_word(result):
    paths = drawn(result.folder, "--data")
    assert sorted(paths) == sorted(f"{stem}{ending}" for ending in (".png", ".csv") for stem in (
        "Field", "Wells", "swat_layer_1_60_days", "poil_layer_1_60_days", "Lines_60_days"))
    assert all(path.startswith(f"{result.folder}/KVR_Plot_") for path in paths.values())


def test_curves_are_those_of_the_tables(result):
    paths = drawn(result.folder, "--data")
    rows = result.table()
    for name in ("Field.csv", "Wells.csv"):
        for column, values in table(paths[name]).items():
            if column in rows:
                numpy.testing.assert_allclose(values, rows[column], rtol=1e-6, atol=1e-9, err_msg=column)
    assert {"FOPR", "FWIR", "FPR"} <= set(table(paths["Field.csv"]))
    assert {"WOPR:PROD", "WBHP:PROD", "WBHP:INJ"} <= set(table(paths["Wells.csv"]))
    assert not {"WOPR:INJ"} & set(table(paths["Wells.csv"])), "an injector has no curve of production"


def test_a_chosen_vector_of_a_chosen_well_is_drawn_alone(result):
    paths = drawn(result.folder, "--vector", "wopt", "FOPT", "--well", "PROD", "--data")
    assert sorted(paths) == ["FOPT.csv", "FOPT.png", "WOPT.csv", "WOPT.png"]
    assert sorted(table(paths["WOPT.csv"])) == ["TIME", "WOPT:PROD"]
    numpy.testing.assert_allclose(table(paths["WOPT.csv"])["WOPT:PROD"], result.table()["FOPT"], rtol=1e-6, atol=1e-9)


@pytest.mark.parametrize("date, place", [("2000-01-31", 1), ("0", 0), ("last", 2)])
def test_a_layer_of_a_map_holds_the_values_of_the_plot_file(result, date, place):
    zone = tecplot.read_zones(result.folder / "KVR_TPlot_swat.plt")[place]
    paths = drawn(result.folder, "--map", "swat", "--layer", "2,3", "--date", date, "--data")
    found = table(paths[f"swat_layer_2_3_{zone.time:g}_days.csv"])
    cells = zone.values[0].reshape(CELLS[2], CELLS[1], CELLS[0])
    assert sorted(set(found["K"])) == [2, 3]
    at = [found[axis].astype(int) - 1 for axis in ("K", "J", "I")]
    numpy.testing.assert_array_equal(found["swat"], cells[tuple(at)])


def test_every_map_that_the_list_names_can_be_drawn_in_every_layer(result):
    listed = plot(result.folder, "--list").stdout
    names = re.findall(r"^  (\S+) .*(?:plt|out)$", listed, flags=re.M)
    assert {"swat", "poil", "kx", "trnsz", "tauinj", "endswat", "prdcxn"} <= set(names)
    assert "Layers  : 1 to 3" in listed and "Wells   : INJ PROD" in listed and "Lines   : 30, 60 days" in listed
    paths = drawn(result.folder, "--map", *names, "--layer", "3")
    assert len(paths) == len(names)


def test_lines_are_those_of_the_plot_file(result):
    found = table(drawn(result.folder, "--lines", "--date", "30", "--data")["Lines_30_days.csv"])
    _, lines = tecplot.read_line_plot(result.folder / "Streamline_Time_30.plt")
    points = numpy.concatenate(lines)
    for column, name in ((0, "X"), (1, "Y"), (3, "TOF")):
        numpy.testing.assert_allclose(found[name], points[:, column], rtol=1e-9)
    assert found["LINE"][-1] == len(lines)


def test_maps_of_the_view_files_serve_where_there_are_no_plot_files(tmp_path):
    result = finished_normally(run(tmp_path, flood("1 0 0 0 0 0 0 1 0 0 /")))
    paths = drawn(tmp_path, "--data")
    values = table(paths["endswat_layer_1_60_days.csv"])["endswat"]
    rows = numpy.loadtxt(result.folder / "KVR_Run_EndSwat.out", skiprows=3)
    numpy.testing.assert_allclose(values, rows[:CELLS[0] * CELLS[1], 3], rtol=1e-9)
    assert "pressure_layer_1_60_days.png" in paths


@pytest.fixture(scope="module")
def viewer_files(tmp_path_factory):
    """A run with its maps in plots and in the files for viewers; one row of cells takes no part."""
    folder = tmp_path_factory.mktemp("viewer")
    deck = flood("1 0 1 0 0 0 0 0 1 0 /").replace("PROPS", "ACTNUM\n50*1 3*0 7*1 /\nPROPS", 1)
    return finished_normally(run(folder, deck)).folder


def without_plots(folder, target):
    shutil.copytree(folder, target)
    for path in target.glob("*.plt"):
        path.unlink()
    return target


@pytest.mark.parametrize("unified", [False, True])
def test_reports_for_viewers_serve_where_there_are_no_plot_files(tmp_path, viewer_files, unified):
    """The same values at the same places, from a file per report or from one with all of them."""
    bare = without_plots(viewer_files, tmp_path / "bare")
    if unified:
        reports = sorted(bare.glob("ECLIPSE.X*"))
        whole = b"".join(sequence_number(n) + path.read_bytes() for n, path in enumerate(reports))
        (bare / "ECLIPSE.UNRST").write_bytes(whole)
        for path in reports:
            path.unlink()
    listed = plot(bare, "--list").stdout
    assert re.search(r"^  swat +3 moments, 0 to 60 days", listed, re.M), listed
    for name, plotted in (("swat", "swat"), ("pressure", "poil")):
        for day in ("30", "last"):
            words = ("--layer", "all", "--date", day, "--data")
            (expected,) = (table(path) for key, path in drawn(viewer_files, "--map", plotted, *words).items() if key.endswith("csv"))
            (seen,) = (table(path) for key, path in drawn(bare, "--map", name, *words).items() if key.endswith("csv"))
            numpy.testing.assert_allclose(seen[name], expected[plotted], rtol=1e-6)
    sys.path.insert(0, str(REPOSITORY / "tools"))
    from plotting import maps, run_files
    plotted, reported = (maps.read_map(case, maps.map_files(case)["swat"], None, 60.0)
                         for case in (run_files.find_case(viewer_files), run_files.find_case(bare)))
    assert plotted.at_nodes and not reported.at_nodes
    for axis in ("x", "y", "depth"):
        nodes = getattr(plotted, axis)
        centres = sum(nodes[k:CELLS[2] + k, j:CELLS[1] + j, i:CELLS[0] + i] for k in (0, 1) for j in (0, 1) for i in (0, 1)) / 8.0
        numpy.testing.assert_allclose(getattr(reported, axis), centres, rtol=1e-6, err_msg=axis)


def sequence_number(number):
    """The block in front of each report of a file that holds all of them."""
    head = b"SEQNUM  " + (1).to_bytes(4, "big") + b"INTE"
    return b"".join(len(part).to_bytes(4, "big") + part + len(part).to_bytes(4, "big") for part in (head, number.to_bytes(4, "big")))


def test_a_report_that_ends_inside_a_block_is_told_in_one_line(tmp_path, viewer_files):
    bare = without_plots(viewer_files, tmp_path / "bare")
    grid = bare / "ECLIPSE.EGRID"
    grid.write_bytes(grid.read_bytes()[:600])
    assert "holds no grid" in refused(bare, "--map", "swat")


def test_cells_with_corners_of_their_own_are_drawn_too(tmp_path):
    finished_normally(run(tmp_path, flood(options="OPTIONKVR\n1 1 0 0 0 0 0 0 /\n")))
    plain = drawn(tmp_path, "--map", "swat", "--data")
    values = table(plain["swat_layer_1_60_days.csv"])["swat"]
    rows = numpy.loadtxt(tmp_path / "KVR_Run_EndSwat.out", skiprows=3)
    numpy.testing.assert_allclose(values, rows[:CELLS[0] * CELLS[1], 3], rtol=1e-8)


def test_inactive_cells_are_left_open(tmp_path):
    deck = flood().replace("PROPS", "ACTNUM\n50*1 3*0 7*1 /\nPROPS", 1)
    result = finished_normally(run(tmp_path, deck))
    sys.path.insert(0, str(REPOSITORY / "tools"))
    from plotting import maps, pictures, run_files
    case = run_files.find_case(tmp_path)
    found = maps.map_files(case)
    inactive = maps.inactive_cells(case, found, 60.0)
    assert numpy.nonzero(inactive.ravel())[0].tolist() == [50, 51, 52]
    shown = pictures.shown_values(maps.read_map(case, found["swat"], None, 60.0), inactive)
    assert numpy.isnan(shown).sum() == 3
    assert drawn(result.folder, "--map", "swat", "--layer", "3")


@pytest.mark.parametrize("cells", [(5, 1, 3), (1, 5, 3), (6, 1, 1)])
def test_a_model_of_one_row_is_seen_from_the_side(tmp_path, cells):
    finished_normally(run(tmp_path, flood(cells=cells)))
    paths = drawn(tmp_path, "--map", "swat", "--layer", "all", "--data")
    assert len(table(paths["swat_layer_all_60_days.csv"])["swat"]) == numpy.prod(cells)


def test_named_runs_have_pictures_of_their_names_and_two_of_them_are_asked_for(tmp_path):
    for name in ("EAST", "WEST"):
        (tmp_path / f"{name}.DATA").write_text(flood())
    assert run_named("EAST", folder=tmp_path).returncode == 0
    alone = drawn(tmp_path)
    assert alone["Field.png"] == f"{tmp_path}/EAST_Plot_Field.png" and "Lines_60_days.png" in alone
    assert run_named("WEST", folder=tmp_path).returncode == 0
    assert "holds 2 runs: EAST, WEST. Choose one with --case" in refused(tmp_path)
    assert drawn(tmp_path, "--case", "WEST")["Field.png"] == f"{tmp_path}/WEST_Plot_Field.png"
    paths = drawn(tmp_path / "WEST.DATA", "--vector", "FPR", "--data")
    summary, _ = summary_of(tmp_path / "WEST_Summary.csv")
    numpy.testing.assert_allclose(table(paths["FPR.csv"])["FPR"], summary["FPR"], rtol=1e-9)


def test_what_is_not_there_is_told_in_one_line(result, tmp_path):
    assert "there is no folder" in refused(tmp_path / "none")
    assert "no run in" in refused(tmp_path)
    assert "no run EAST" in refused(result.folder, "--case", "EAST")
    assert "no vector WCT; did you mean WWCT" in refused(result.folder, "--vector", "WCT")
    assert "no well P; did you mean" in refused(result.folder, "--vector", "WWCT", "--well", "P")
    assert "no map swatt; did you mean swat" in refused(result.folder, "--map", "swatt")
    assert "the model has layers 1 to 3" in refused(result.folder, "--map", "swat", "--layer", "4")
    assert "is no date" in refused(result.folder, "--map", "swat", "--date", "2000-13-01")
    (tmp_path / "bare").mkdir()
    shutil.copy(result.folder / "KVR_Summary.csv", tmp_path / "bare")
    assert "no map of KVR" in refused(tmp_path / "bare", "--map", "swat")
    assert "position 4 of OUTPUTKVR" in refused(tmp_path / "bare", "--lines")


def test_sensitivities_of_a_match_are_drawn_of_the_wells_that_have_them(tmp_path):
    observed = "WNAME TIME WOPR WWPR WWCT\n" + "".join(f"PROD {day} 100 {day} {day / (100 + day):.6g}\n" for day in (20, 40, 60, 80, 100))
    match = "DOINV\nTRAVEL LSQR 1 /\nOPTIONKVR\n1 0 0 1 0 0 0 0 /\nMISFCRIT\n0 0 /\n"
    (tmp_path / "WELL_OBSERVED.DATA").write_text(observed)
    finished_normally(run(tmp_path, flood(options=match), timeout=120))
    paths = drawn(tmp_path, "--match", "--data", "--layer", 2)
    assert {"Match_GTTI_layer_2.png", "Match_GTTI_layer_2.csv"} <= set(paths)
    figures = table(paths["Match_GTTI_layer_2.csv"])
    assert set(figures) == {"I", "J", "PROD"}, "injectors have no travel time"
    nx, ny, nz = CELLS
    data = (tmp_path / "HM_SENSTEMP_GTTI.K0000").read_bytes()
    frame = 8 + nx * ny * nz * 8
    sums = [numpy.frombuffer(data[well * frame + 4:(well + 1) * frame - 4], ">f8") for well in range(2)]
    whole = next(values for values in sums if values.any()).reshape(nz, ny, nx)
    numpy.testing.assert_allclose(figures["PROD"], whole[1].ravel(), rtol=2e-4, atol=1e-9)
