"""The binary files for viewers, opened by readers that are not ours, against the run's own tables."""

import re

import numpy
import pytest

import kvr_run
import small_deck
import tecplot
from kvr_run import REPOSITORY, finished_normally, run
from public_floods import needs_public_decks

ecl = pytest.importorskip("opm.io.ecl", reason="python3-opm-common is not installed")

CUBIC_FEET_PER_BARREL = 5.614583


def with_binary_output(options):
    return re.sub(r"1 0 (\d) 0 0 0 0 1 0 0 /", r"1 0 \1 0 0 0 0 1 1 1 /", options)


def five_spot(folder):
    text = (REPOSITORY / "examples" / "five_spot" / "ECLIPSE.DATA").read_text().replace("20*182.5", "3*50")
    text = text[:text.index("TUNEKVR")] + with_binary_output(kvr_run.options(lines=200, plots=1))
    include = (REPOSITORY / "examples" / "five_spot" / "PERMEABILITY.INC").read_text()
    return finished_normally(run(folder, text, {"PERMEABILITY.INC": include}))


def spe1(folder):
    text = kvr_run.public_deck("spe1/SPE1CASE2.DATA")
    schedule = text.index("TSTEP", text.index("SCHEDULE"))
    text = text[:schedule] + "TSTEP\n31 28 31 /\nEND\n"
    # A step that is taken fully implicitly traces no lines; every step of this run is to leave some.
    fixed = kvr_run.options(lines=100, plots=1, extra="STEPCTRL\nNo /")
    return finished_normally(run(folder, text + with_binary_output(fixed)))


def faults(folder):
    text = kvr_run.public_deck("waterflood/FAULTCP.DATA").replace("40*50", "3*50")
    include = (kvr_run.PUBLIC_DECKS / "waterflood" / "FAULTCP.INC").read_text()
    return finished_normally(run(folder, text + with_binary_output(kvr_run.options(lines=100, plots=1)),
                                 {"FAULTCP.INC": include}))


MAKERS = {"five-spot": (five_spot, (31, 31, 3)), "spe1": (spe1, (10, 10, 3)), "faults": (faults, (24, 16, 5))}


@pytest.fixture(scope="module", params=["five-spot", pytest.param("spe1", marks=needs_public_decks),
                                        pytest.param("faults", marks=needs_public_decks)])
def case(request, tmp_path_factory):
    """A run and the dimensions of its grid; each runs once for all tests of this file."""
    make, dimension = MAKERS[request.param]
    return make(tmp_path_factory.mktemp("case")), dimension


def eclipse_file(result, extension):
    return str(result.folder / f"ECLIPSE.{extension}")


def array(result, extension, keyword):
    return numpy.array(ecl.EclFile(eclipse_file(result, extension))[keyword], dtype=float)


def last_zone(result, name):
    return tecplot.read_zones(result.folder / name)[-1].values[0]


def test_the_grid_has_the_cells_and_volumes_of_the_run(case):
    result, dimension = case
    grid = ecl.EGrid(eclipse_file(result, "EGRID"))
    assert tuple(grid.dimension) == dimension
    cells = dimension[0] * dimension[1] * dimension[2]
    assert grid.active_cells == cells
    volumes = numpy.array(grid.cellvolumes(), dtype=float)
    pore = array(result, "INIT", "PORV") * CUBIC_FEET_PER_BARREL
    assert pore == pytest.approx(volumes * array(result, "INIT", "PORO") * array(result, "INIT", "NTG"), rel=1e-5)


def test_static_arrays_are_those_of_the_static_maps(case):
    result, _ = case
    for keyword, name in (("TRANX", "TRNSX"), ("TRANY", "TRNSY"), ("TRANZ", "TRNSZ"), ("PERMX", "kx")):
        assert array(result, "INIT", keyword) == pytest.approx(
            last_zone(result, f"KVR_Tplot_Static_{name}.plt"), rel=1e-6, abs=1e-12)


def test_restarts_hold_the_maps_of_their_reports(case):
    result, _ = case
    pressure = tecplot.read_zones(result.folder / "KVR_TPlot_poil.plt")
    water = tecplot.read_zones(result.folder / "KVR_TPlot_swat.plt")
    assert len(pressure) == 4
    for step in range(4):
        restart = ecl.ERst(eclipse_file(result, f"X{step:04d}"))
        assert list(restart.report_steps) == [step]
        assert numpy.array(restart["PRESSURE", step]) == pytest.approx(pressure[step].values[0], rel=1e-6)
        assert numpy.array(restart["SWAT", step]) == pytest.approx(water[step].values[0], abs=1e-6)
        total = sum(numpy.array(restart[name, step], dtype=float) for name in ("SWAT", "SOIL", "SGAS"))
        assert total == pytest.approx(1.0, abs=1e-6)


MAPS = {"PRDID": "PrdCxn", "INJID": "InjCxn", "CXNID": "CxnCxn", "TOFI": "TauINJ", "TOFP": "TauPRD", "TOFT": "TauSUM"}
UNREACHED = 1e10


def test_the_last_restart_holds_the_maps_of_the_lines(case):
    result, _ = case
    for step in range(3):
        names = [entry[0] for entry in ecl.EclFile(eclipse_file(result, f"X{step:04d}")).arrays]
        assert names[-1] in ("SGAS", "RS") if step == 0 else names[-1].startswith("FLR")
    for keyword, name in MAPS.items():
        plotted = last_zone(result, f"KVR_Run_{name}.plt")
        assert array(result, "X0003", keyword) == pytest.approx(plotted, rel=1e-6), keyword
    assert (array(result, "X0003", "TOFT") < UNREACHED).any()
    assert (array(result, "X0003", "CXNID") > 0).any()


def test_summaries_hold_the_rates_of_the_tables(case):
    result, _ = case
    table = result.table()
    summary = ecl.ESmry(eclipse_file(result, "SMSPEC"))
    times = numpy.array(summary["TIME"])
    assert len(times) in (4, len(table["TIME"])), "reports, or every step where the deck asks for vectors"
    rows = [numpy.argmin(abs(table["TIME"] - time)) for time in times[1:]]
    assert table["TIME"][rows] == pytest.approx(times[1:], rel=1e-6)
    producers = [name[5:] for name in table if name.startswith("WOPR:") and table[name][rows[-1]] > 0.0]
    assert producers
    for well in producers:
        oil, water = table[f"WOPR:{well}"][rows], table[f"WWPR:{well}"][rows]
        assert numpy.array(summary[f"WOPR:{well}"])[1:] == pytest.approx(oil, rel=1e-5)
        assert numpy.array(summary[f"WBHP:{well}"])[1:] == pytest.approx(table[f"WBHP:{well}"][rows], rel=1e-5)
        assert numpy.array(summary[f"WWCT:{well}"])[1:] == pytest.approx(water / (water + oil), rel=1e-5, abs=1e-9)


def test_formation_tests_hold_the_cells_of_the_wells(case):
    result, dimension = case
    tests = ecl.ERft(eclipse_file(result, "RFT"))
    found = tests.list_of_rfts
    wells = {entry[0] for entry in found}
    assert len(found) == 3 * len(wells)
    pressure = tecplot.read_zones(result.folder / "KVR_TPlot_poil.plt")[-1].values[0]
    blocks = ecl.EclFile(eclipse_file(result, "RFT"))
    names = [entry[0] for entry in blocks.arrays]
    last = {name: len(names) - 1 - names[::-1].index(name) for name in ("CONIPOS", "CONJPOS", "CONKPOS", "PRESSURE")}
    i, j, k = (numpy.array(blocks[last[name]]) for name in ("CONIPOS", "CONJPOS", "CONKPOS"))
    cells = (i - 1) + dimension[0] * ((j - 1) + dimension[1] * (k - 1))
    assert numpy.array(blocks[last["PRESSURE"]]) == pytest.approx(pressure[cells], rel=1e-6)


def test_streamlines_run_from_well_to_well_through_neighbouring_cells(tmp_path):
    result = five_spot(tmp_path)
    lines = ecl.EclFile(eclipse_file(result, "SLN0002"))
    geometry = numpy.array(lines["GEOMETRY"]).reshape(-1, 3)
    index = (numpy.array(lines["GEOMINDX"]) - 1) // 3
    cells, times = numpy.array(lines["ID_CELL"]), numpy.array(lines["TIME_BEG"])
    count = len(index) - 1
    assert len(geometry) == len(times) == len(cells) + count
    assert index[0] == 0 and index[-1] == len(geometry)
    ends = numpy.array(lines["ID_END"])
    assert set(numpy.array(lines["ID_BEG"])) == {1}
    assert set(ends) <= {2, 3, 4, 5, 6} and len(set(ends)) >= 4
    water = numpy.array(lines["SWAT"])
    assert water.min() >= 0.0 and water.max() <= 1.0
    for line in range(count):
        first, behind = index[line], index[line + 1]
        assert times[first] == 0.0
        assert (numpy.diff(times[first:behind]) > 0.0).all()
        crossed = cells[first - line:behind - line - 1]
        i, j, k = (crossed - 1) % 31, (crossed - 1) // 31 % 31, (crossed - 1) // 961
        steps = abs(numpy.diff(i)) + abs(numpy.diff(j)) + abs(numpy.diff(k))
        assert (steps == 1).all()


def test_without_the_switch_only_an_empty_file_and_the_end_file_are_left(tmp_path):
    finished_normally(run(tmp_path, small_deck.deck()))
    left = sorted(path.name for path in tmp_path.glob("ECLIPSE.*"))
    assert left == ["ECLIPSE.DATA", "ECLIPSE.ECLEND", "ECLIPSE.RFT"]
    assert (tmp_path / "ECLIPSE.RFT").read_bytes() == b""


# --- restarts of an outside run into plots -----------------------------------------------------------------

HOMO = kvr_run.PUBLIC_DECKS / "restart" / "2D_HOMO"
NAMED = ["PRES", "SOIL", "SWAT", "SGAS", "ELSE"]


@needs_public_decks
def test_restarts_of_another_simulator_become_plots(tmp_path):
    files = {path.name: path.read_bytes() for path in HOMO.iterdir() if path.suffix != ".DATA"}
    deck = (HOMO / "ECLIPSE.DATA").read_text() + "\nTUNEKVR\nECL2TEC\nLINUXRUN\nECLCOMM\ntrue\n"
    result = run(tmp_path, deck, files)
    assert result.status == 0
    assert result.console.count("Run Simulation by ECLIPSE") == 2
    assert result.console.count("STEP :: 1 Time :: 100") == 2
    zones = {name: tecplot.read_zones(tmp_path / f"ECLIPSE_X0_{name}.PLT") for name in NAMED}
    assert [len(zones[name]) for name in NAMED] == [2, 0, 2, 0, 4]
    for step in range(2):
        restart = ecl.EclFile(str(HOMO / f"ECLIPSE.X{step:04d}"))
        time = [0.0, 100.0][step]
        for name, keyword in (("PRES", "PRESSURE"), ("SWAT", "SWAT")):
            zone = zones[name][step]
            assert zone.time == time and zone.cells == (21, 21, 1)
            assert zone.values[0] == pytest.approx(numpy.array(restart[keyword], dtype=float), rel=1e-6)
        assert zones["ELSE"][2 * step].values[0] == pytest.approx(numpy.array(restart["FLOOILI+"]), rel=1e-6)
        assert zones["ELSE"][2 * step + 1].values[0] == pytest.approx(numpy.array(restart["FLOWATI+"]), rel=1e-6)
        others = [entry[0] for entry in restart.arrays if str(entry[1]).endswith("REAL")
                  and entry[0] not in ("PRESSURE", "SWAT", "FLOOILI+", "FLOWATI+")]
        assert len(others) == 17
        for keyword in others:
            values = numpy.array(restart[keyword], dtype=float)
            text = (tmp_path / f"ECLIPSE_{keyword}_STEP_{step:04d}_TIME_{time:.0f}.ECLTXT").read_text().split()
            assert numpy.array([float(word) for word in text]) == pytest.approx(values, rel=1e-6)
            zone = tecplot.read_zones(tmp_path / f"ECLIPSE_{step:04d}{keyword}.PLT")[0]
            assert zone.time == time
            shown = numpy.zeros(441)
            shown[:len(values)] = values[:441]
            assert zone.values[0] == pytest.approx(shown, rel=1e-6)
