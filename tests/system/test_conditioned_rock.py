"""Upscaling and smoothing from a deck: maps, deck fragments that read back, known averages."""

import numpy

import kvr_run
import small_deck
import tecplot
from kvr_run import finished_normally, run

BOARD = 64


def numbers(values):
    return "\n".join(f"{value:.9g}" for value in values)


def model(cells, porosity, along, across, down):
    """A deck of `cells` = (NX, NY, NZ) with the given rock, a value per cell."""
    count = cells[0] * cells[1] * cells[2]
    grid = "GRID\n" + "".join(f"{name}\n{count}*{size} /\n" for name, size in (("DX", 100), ("DY", 100), ("DZ", 20)))
    grid += f"TOPS\n{cells[0] * cells[1]}*5000 /\n"
    for name, values in (("PORO", porosity), ("PERMX", along), ("PERMY", across), ("PERMZ", down)):
        grid += f"{name}\n{numbers(values)} /\n"
    return grid


def flood(folder, cells, grid, extra="", files=None):
    """A short run without lines worth mentioning on the model, with an injector and a producer in its corners."""
    count = cells[0] * cells[1] * cells[2]
    deck = small_deck.deck(runspec=small_deck.RUNSPEC.replace("5 5 1", " ".join(map(str, cells))), grid=grid,
                           solution=small_deck.SOLUTION.replace("25*", f"{count}*"),
                           schedule=small_deck.SCHEDULE.replace("5 5", f"{cells[0]} {cells[1]}").replace("2*30", "1"),
                           options=kvr_run.options(lines=5, extra=extra))
    folder.mkdir(exist_ok=True)
    return finished_normally(run(folder, deck, files))


def upscaled(result, name):
    zones = tecplot.read_zones(result.folder / f"Upscaled_{name}.plt")
    assert len(zones) == 1
    assert zones[0].title == "TITLE= PowerLawUpscale PLOT"
    return zones[0].values[0]


def point_values(result, name):
    lines = result.read(name).splitlines()
    return numpy.array([float(line.split()[3]) for line in lines[3:]])


def test_layers_upscale_to_their_means_and_the_fragments_read_back(tmp_path):
    cells = (4, 4, 3)
    layers = numpy.repeat([10.0, 400.0, 90.0], 16)
    porosity = numpy.repeat([0.1, 0.3, 0.2], 16)
    extra = "UPSCALE\nPORO 4 4 3 /\nPERMX 4 4 3 /\nPERMY 2 2 3 /\nPERMZ 4 4 3 /\n/\n"
    first = flood(tmp_path / "first", cells, model(cells, porosity, layers, layers, layers), extra)
    arithmetic, harmonic = 500.0 / 3.0, 3.0 / (1 / 10.0 + 1 / 400.0 + 1 / 90.0)
    numpy.testing.assert_allclose(upscaled(first, "Porosity"), 0.2, rtol=1e-8)
    numpy.testing.assert_allclose(upscaled(first, "PERMX"), arithmetic, rtol=1e-8)
    numpy.testing.assert_allclose(upscaled(first, "PERMY"), arithmetic, rtol=1e-8)
    numpy.testing.assert_allclose(upscaled(first, "PERMZ"), harmonic, rtol=1e-8)
    numpy.testing.assert_allclose(upscaled(first, "PERMZ_LOG10"), numpy.log10(harmonic), rtol=1e-8)
    assert first.console.count("Upscaled Grid dir: 2 GridID: ") == 4
    numpy.testing.assert_allclose(point_values(first, "KVR_Run_PermX.out"), layers, err_msg="the run keeps its rock")

    fragments = {name: first.read(name) for name in ("UPSCALED_POROSITY.DATA", "UPSCALED_PERM.DATA")}
    grid = model(cells, porosity, layers, layers, layers)
    grid = grid[:grid.index("PORO")] + "".join(f"INCLUDE\n'{name}' /\n" for name in fragments)
    second = flood(tmp_path / "second", cells, grid, files=fragments)
    numpy.testing.assert_allclose(point_values(second, "KVR_Run_PermX.out"), arithmetic, rtol=1e-8)
    numpy.testing.assert_allclose(point_values(second, "KVR_Run_PermY.out"), arithmetic, rtol=1e-8)
    numpy.testing.assert_allclose(point_values(second, "KVR_Run_PermZ.out"), harmonic, rtol=1e-8)


def test_a_checkerboard_as_one_window_is_its_geometric_mean(tmp_path):
    cells = (BOARD, BOARD, 1)
    j, i = numpy.mgrid[0:BOARD, 0:BOARD]
    board = numpy.where((i + j) % 2 == 0, 1.0, 100.0).ravel()
    extra = f"UPSCALE\nPERMX {BOARD} {BOARD} 1 /\n/\n"
    result = flood(tmp_path / "board", cells, model(cells, board * 0 + 0.2, board, board, board), extra)
    numpy.testing.assert_allclose(upscaled(result, "PERMX"), 10.0, rtol=0.06)


def test_smoothing_acts_on_the_run_and_leaves_a_map_of_each_property(tmp_path):
    cells = (3, 1, 1)
    values = numpy.array([1.0, 2.0, 6.0])
    grid = model(cells, values / 20.0, values, values, values)
    result = flood(tmp_path / "smooth", cells, grid, "SMTHPRM\nPERMX 2 /\nPORO 1 /\nPERMZ 0 /\n/\n")
    twice, once = [2.25, 17.0 / 6.0, 3.5], numpy.array([1.5, 3.0, 4.0]) / 20.0
    for name, expected in (("Kx", twice), ("Poro", once), ("Kz", values)):
        zone, = tecplot.read_zones(result.folder / f"Smoothed_{name}.plt")
        numpy.testing.assert_allclose(zone.values[0], expected, rtol=1e-8)
    assert not (result.folder / "Smoothed_Ky.plt").exists()
    numpy.testing.assert_allclose(point_values(result, "KVR_Run_PermX.out"), twice, rtol=1e-8)
    numpy.testing.assert_allclose(point_values(result, "KVR_Run_PermY.out"), values, rtol=1e-8)
