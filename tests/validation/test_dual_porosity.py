"""Two continua against the models that they become at the ends of the shape factor, and their balances."""

import numpy
import pytest

import dual_deck
import fractured_blocks
import fractured_column
import fractured_row
import fractured_tank
import kvr_run
import tecplot

STEPS = "40*25"
RATES = ("FOPR", "FWPR", "FOPT", "FWPT")
SECTION = kvr_run.options(method="FIM", tolerance=1e-7, plots=1, extra="MAXDT\n25\n")


def run_deck(folder, text, section=SECTION):
    return kvr_run.finished_normally(kvr_run.run(folder, text + section))


def distance(one, other, names=RATES):
    """Largest difference of a column of the field table over the largest value that it takes."""
    ours, theirs = one.table(), other.table()
    numpy.testing.assert_allclose(ours["TIME"], theirs["TIME"], rtol=1e-12)
    return max(numpy.abs(ours[name] - theirs[name]).max() / numpy.abs(theirs[name]).max() for name in names)


def flood(folder, sigma, **settings):
    return run_deck(folder, dual_deck.dual(6, 6, 200, STEPS, sigma, **settings))


def plain(folder, porosity):
    return run_deck(folder, dual_deck.single(6, 6, 200, STEPS, porosity, 300.0))


def scratch(tmp_path, name):
    folder = tmp_path / name
    folder.mkdir()
    return folder


def test_without_a_shape_factor_the_fractures_flow_alone(tmp_path):
    alone = plain(scratch(tmp_path, "alone"), 0.02)
    assert alone.table()["FWPR"][-1] > 0.5 * alone.table()["FOPR"][-1]  # water has broken through
    assert distance(flood(scratch(tmp_path, "dual"), 0.0), alone) < 1e-6


def test_a_growing_shape_factor_leads_to_one_continuum_with_all_pores(tmp_path):
    whole = plain(scratch(tmp_path, "whole"), 0.22)
    assert whole.table()["FWPR"][-1] > 0.1 * whole.table()["FOPR"][-1]
    far = distance(flood(scratch(tmp_path, "small"), 1e-3), whole)
    near = {sigma: distance(flood(scratch(tmp_path, f"{sigma:g}"), sigma), whole) for sigma in (1e3, 1e4, 1e7)}
    assert far > 0.01
    assert near[1e3] / near[1e4] == pytest.approx(10.0, rel=0.2)  # in the measure of 1/sigma
    assert near[1e7] < 1e-6


def test_the_balance_of_both_continua_closes_at_any_shape_factor(tmp_path):
    for sigma in (0.0, 1e-4, 0.1, 1e6):
        result = flood(scratch(tmp_path, f"{sigma:g}"), sigma, runspec="GRAVDR\n")
        table = result.table("KVR_Run_SweepVolume.out")
        assert max(numpy.abs(table[name]).max() for name in ("|MBEO|", "|MBEW|")) < 1e-7, sigma


def water_held(folder, zone):
    """Stock tank barrels in both continua, by the maps and the pores and factors that the deck gives."""
    held = 0.0
    for ending, porosity in (("", 0.02), ("_Mtrx", 0.2)):
        water, pressure = (tecplot.read_zones(folder / f"KVR_TPlot_{name}{ending}.plt")[zone].values[0]
                           for name in ("swat", "poil"))
        rock, liquid = 4e-6 * (pressure - 3000.0), 3e-6 * (pressure - 3000.0)
        pores = 100 * 100 * 20 / 5.614583 * porosity * (1.0 + rock + 0.5 * rock**2)
        held += (pores * water * (1.0 + liquid + 0.5 * liquid**2) / 1.01).sum()
    return held


def test_maps_show_fractures_and_matrix_apart(tmp_path):
    result = flood(tmp_path, 1e-3)
    fracture = tecplot.read_zones(tmp_path / "KVR_TPlot_swat.plt")
    matrix = tecplot.read_zones(tmp_path / "KVR_TPlot_swat_Mtrx.plt")
    assert len(fracture) == len(matrix) > 2
    assert fracture[0].cells == matrix[0].cells == (6, 6, 1)
    numpy.testing.assert_array_equal(fracture[-1].nodes, matrix[-1].nodes)
    water = [zone[-1].values[0] for zone in (fracture, matrix)]
    assert (water[0] >= water[1] - 1e-9).all()  # water comes to the matrix out of its fractures
    assert water[1].max() > 0.21
    # What has stayed of the injected water stands in the pores of both.
    held = [water_held(tmp_path, zone) for zone in (0, -1)]
    table = result.table()
    assert held[1] - held[0] == pytest.approx(table["FWIT"][-1] - table["FWPT"][-1], rel=1e-6)


def test_completions_in_the_matrix_are_those_of_its_fractures(tmp_path):
    below = flood(scratch(tmp_path, "below"), 1e-2)
    above = flood(scratch(tmp_path, "above"), 1e-2, k=1)
    assert distance(above, below) == 0.0


# --- IMPES and streamlines -------------------------------------------------------------------------------------------

SEQUENTIAL = ("IMPES", "STREAMLINE")


def section_by(method, longest=25, extra=""):
    return kvr_run.options(method=method, tolerance=1e-5, extra=f"MAXDT\n{longest}\n{extra}")


def life_difference(one, other, name="FOPT"):
    """Largest difference of a cumulative over the largest value, wherever the steps of the two end."""
    at = numpy.linspace(0.0, other["TIME"][-1], 41)
    ours, theirs = (numpy.interp(at, table["TIME"], table[name]) for table in (one, other))
    return numpy.abs(ours - theirs).max() / theirs.max()


def test_without_a_shape_factor_fractures_flow_alone_by_every_method(tmp_path):
    # Where lines go hangs on the last digits of the pressure, which a solver that is given the matrix cells as well
    # may leave otherwise: CG does not.
    for method in SEQUENTIAL:
        section = kvr_run.options(method=method, solver="CG", tolerance=1e-8, extra="MAXDT\n25\n")
        both = run_deck(scratch(tmp_path, method), dual_deck.dual(6, 6, 200, STEPS, 0.0), section).table()
        alone = run_deck(scratch(tmp_path, method + "1"), dual_deck.single(6, 6, 200, STEPS, 0.02, 300.0),
                         section).table()
        assert max(life_difference(both, alone, name) for name in ("FOPT", "FWPT")) < 1e-6, method


def test_a_flood_by_impes_and_streamlines_is_that_of_short_implicit_steps(tmp_path):
    for sigma, runspec in ((1e-3, "GRAVDR\n"), (1.0, ""), (1e3, ""), (1e6, "")):
        deck = dual_deck.dual(6, 6, 200, STEPS, sigma, runspec=runspec)
        fine = run_deck(scratch(tmp_path, f"fine{sigma:g}"), deck, section_by("FIM", 2.5)).table()
        for method in SEQUENTIAL:
            result = run_deck(scratch(tmp_path, f"{method}{sigma:g}"), deck, section_by(method))
            balance = result.table("KVR_Run_SweepVolume.out")
            assert max(numpy.abs(balance[name]).max() for name in ("|MBEO|", "|MBEW|")) < 1e-12, (method, sigma)
            assert result.log.count("fully implicitly") <= 2, (method, sigma)
            for name in ("FOPT", "FWPT"):
                assert life_difference(result.table(), fine, name) < 0.01, (method, sigma, name)


def test_a_large_shape_factor_leads_to_one_continuum_by_impes(tmp_path):
    both = run_deck(scratch(tmp_path, "dual"), dual_deck.dual(6, 6, 200, STEPS, 1e3), section_by("IMPES")).table()
    whole = run_deck(scratch(tmp_path, "whole"), dual_deck.single(6, 6, 200, STEPS, 0.22, 300.0), section_by("FIM", 2.5)).table()
    assert max(life_difference(both, whole, name) for name in ("FOPT", "FWPT")) < 0.005


def test_the_average_over_lines_does_not_go_with_two_continua(tmp_path):
    result = kvr_run.run(tmp_path, dual_deck.dual(3, 3, 20, "2*10", 0.01) +
                         kvr_run.options(method="STREAMLINE", extra="MAPPING\nAVERAGE\n"))
    assert result.status == 1
    assert "dual porosity (DUALPORO) with the average over lines (MAPPING AVERAGE)" in result.console


# --- gravity drainage of a column, against its equations -------------------------------------------------------------

def gas_of_column(folder, method, days, steps):
    section = kvr_run.options(method=method, tolerance=1e-6, plots=1, extra=f"MAXDT\n{days / steps}\n")
    run_deck(folder, fractured_column.deck(days), section)
    return numpy.array([tecplot.read_zones(folder / f"KVR_TPlot_sgas{ending}.plt")[-1].values[0]
                        for ending in ("", "_Mtrx")])


def test_a_column_drains_by_gravity_as_its_equations_ask(tmp_path):
    days = 40
    exact = fractured_column.gas_behind(days, step=0.05)
    assert exact[1].max() > 0.1  # gas has gone into the matrix ...
    assert exact[0][0] > 1e-3  # ... and up to the top
    apart = {}
    for method, steps in (("FIM", 200), ("FIM", 800), ("IMPES", 200), ("STREAMLINE", 200)):
        found = gas_of_column(scratch(tmp_path, f"{method}{steps}"), method, days, steps)
        apart[method, steps] = abs(found - exact).max()
    assert apart["FIM", 200] / apart["FIM", 800] == pytest.approx(4.0, rel=0.2)  # first order in the step
    assert max(apart.values()) < 1e-3, apart


# --- slabs between fractures, against the same slabs cell by cell ----------------------------------------------------

# Water at the rate over the pores of the published problem, 7e-5 a day.
WATER_DRIVE = "WCONPROD\n'PROD' 'OPEN' 'BHP' 5* 2500 /\n/\nWCONINJE\n'INJ' 'WATER' 'OPEN' 'RATE' 0.875 1* 9000 /\n/\n"
DEPLETION = "WCONPROD\n'PROD' 'OPEN' 'ORAT' 1 4* 1700 /\n/\n"


def slabs(tmp_path, control, steps, longest, **settings):
    section = kvr_run.options(method="FIM", tolerance=1e-3, extra=f"MAXDT\n{longest}\n")
    both = [run_deck(scratch(tmp_path, make.__name__), make(control, steps, **settings), section)
            for make in (fractured_row.continua, fractured_row.cell_by_cell)]
    return [run.table() for run in both]


def oil_differences(continua, fine):
    """Difference of cumulative oil over the life, relative, from a tenth of what is produced on."""
    at = fine["TIME"][fine["FOPT"] > 0.1 * fine["FOPT"][-1]]
    ours, theirs = (numpy.interp(at, table["TIME"], table["FOPT"]) for table in (continua, fine))
    return numpy.abs(ours / theirs - 1.0)


def test_a_water_drive_of_slabs_gives_the_oil_of_its_cells(tmp_path):
    continua, fine = slabs(tmp_path, WATER_DRIVE, "146*50", 50)
    assert fine["FWPR"][-1] > fine["FOPR"][-1]
    assert oil_differences(continua, fine).max() < 0.05


def test_a_solution_gas_drive_of_slabs_gives_the_oil_of_its_cells(tmp_path):
    continua, fine = slabs(tmp_path, DEPLETION, "60*20", 20, pressure=6014.7, gas=True)
    assert fine["FGOR"].max() > 2.0 * fine["FGOR"][1]
    assert oil_differences(continua, fine).max() < 0.05


def test_gas_that_capillarity_keeps_in_slabs_comes_out_as_of_their_cells(tmp_path, monkeypatch):
    # The fractures have the capillary pressure at which the matrix lets the first gas in; the cells give the same oil
    # with none in the fractures, the mean of a slab does not.
    monkeypatch.setattr(fractured_row, "GAS_TABLES", fractured_blocks.gas_tables(fractured_blocks.PUBLISHED_PCOG, 0.075))
    continua, fine = slabs(tmp_path, DEPLETION, "60*20", 20, pressure=6014.7, gas=True)
    assert fine["FOPT"][-1] < 0.9 * 1070.0  # what they give without capillary pressure
    assert oil_differences(continua, fine).max() < 0.05


@pytest.mark.parametrize("in_fractures", [0.0, 0.075])
def test_gas_that_capillarity_pushes_out_of_slabs_is_that_of_a_tank(tmp_path, monkeypatch, in_fractures):
    pcog = fractured_blocks.PUBLISHED_PCOG
    # Fractures with next to no pores, which the tank has not; they flow as the others do.
    monkeypatch.setattr(fractured_row, "APERTURE", 0.01 * fractured_row.APERTURE)
    monkeypatch.setattr(fractured_row, "FRACTURE_PERMEABILITY", 100.0 * fractured_row.FRACTURE_PERMEABILITY)
    monkeypatch.setattr(fractured_row, "GAS_TABLES", fractured_blocks.gas_tables(pcog, in_fractures))
    section = kvr_run.options(method="FIM", tolerance=1e-3, extra="MAXDT\n5\n")
    deck = fractured_row.continua(DEPLETION, "60*20", pressure=6014.7, gas=True)
    table = run_deck(tmp_path, deck, section).table()
    before = numpy.interp(-fractured_tank.BUBBLE_POINT, -table["FPR"], table["FOPT"])
    given = fractured_tank.oil_behind_bubble_point(1.0, 1700.0, pcog, in_fractures)
    assert table["FOPT"][-1] - before == pytest.approx(given, rel=0.02)


# --- blocks drained by gas from above, against the same blocks cell by cell --------------------------------------------

def test_blocks_drained_by_gas_give_the_oil_of_their_cells(tmp_path):
    days, oil = 9000, 0.1
    settings = (f"40*{days / 40}", 1.17 * oil, oil, 1700)
    section = kvr_run.options(method="FIM", tolerance=1e-3, extra=f"MAXDT\n{days / 80}\n")
    fine = run_deck(scratch(tmp_path, "fine"), fractured_blocks.cell_by_cell(*settings), section).table()
    deck = fractured_blocks.continua(*settings)
    implicit = run_deck(scratch(tmp_path, "continua"), deck, section).table()
    assert fine["FOPR"][-1] < 0.5 * oil  # the blocks are drained
    assert oil_differences(implicit, fine).max() < 0.05
    for method in SEQUENTIAL:
        other = run_deck(scratch(tmp_path, method), deck, section_by(method, days / 80)).table()
        assert life_difference(other, implicit) < 0.03, method


def test_blocks_that_capillarity_holds_give_the_oil_of_their_cells_by_its_mean_over_their_height(tmp_path, monkeypatch):
    days, oil, held = 9000, 0.1, (fractured_blocks.PUBLISHED_PCOG, 0.075)
    settings = (f"40*{days / 40}", 1.17 * oil, oil, 1700)
    section = kvr_run.options(method="FIM", tolerance=1e-3, extra=f"MAXDT\n{days / 80}\n")
    fine = run_deck(scratch(tmp_path, "fine"), fractured_blocks.cell_by_cell(*settings, *held), section).table()
    curve = run_deck(scratch(tmp_path, "curve"), fractured_blocks.continua(*settings, *held), section).table()
    monkeypatch.setattr(fractured_blocks, "gas_tables", fractured_blocks.equilibrium_gas_tables)
    mean = run_deck(scratch(tmp_path, "mean"), fractured_blocks.continua(*settings, *held), section).table()
    assert oil_differences(curve, fine).max() > 0.05  # by the curve of the rock itself
    assert oil_differences(mean, fine).max() < 0.04


def test_slabs_by_impes_and_streamlines_give_the_oil_of_the_implicit_run(tmp_path):
    for name, control, steps, longest, settings in (
            ("flood", WATER_DRIVE, "73*100", 50, {}),
            ("gas", DEPLETION, "60*20", 10, {"pressure": 6014.7, "gas": True})):
        deck = fractured_row.continua(control, steps, **settings)
        implicit = run_deck(scratch(tmp_path, name), deck, kvr_run.options(method="FIM", extra=f"MAXDT\n{longest / 5}\n")).table()
        for method in SEQUENTIAL:
            result = run_deck(scratch(tmp_path, name + method), deck, section_by(method, longest)).table()
            assert life_difference(result, implicit) < 0.03, (name, method)


def test_the_example_gives_the_oil_of_its_matrix(tmp_path):
    deck = (kvr_run.REPOSITORY / "examples" / "dual_porosity" / "DUAL_POROSITY.DATA").read_text()
    both = kvr_run.finished_normally(kvr_run.run(scratch(tmp_path, "both"), deck)).table()
    without = deck.replace("SIGMA\n0.12 /", "SIGMA\n0 /")
    fractures = kvr_run.finished_normally(kvr_run.run(scratch(tmp_path, "alone"), without)).table()
    assert both["FOPT"][-1] > 3.0 * fractures["FOPT"][-1]
    assert both["FWPT"][-1] < fractures["FWPT"][-1]
