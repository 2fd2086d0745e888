"""One-dimensional water flood against the exact solution and a plain upwind solution."""

import numpy
import pytest

import buckley_leverett
import column_flood
import kvr_run
import tecplot

TIMES = (250.0, 500.0, 750.0)
SMOOTH_ROWS = 385
SWEPT = 1.0 - column_flood.RESIDUAL


def exact(rows=25):
    flow = buckley_leverett.fractional_flow(column_flood.relative_permeability(rows),
                                            column_flood.WATER_VISCOSITY, column_flood.OIL_VISCOSITY)
    return flow, buckley_leverett.Exact(flow, column_flood.CONNATE, SWEPT)


def saturation_errors(result, cells, rows=25):
    """Mean absolute saturation error at each of TIMES."""
    _, solution = exact(rows)
    zones = {zone.time: zone for zone in tecplot.read_zones(result.folder / "KVR_TPlot_swat.plt")}
    errors = []
    for time in TIMES:
        expected = solution.cell_means(cells, column_flood.injected_volumes(time))
        errors.append(numpy.abs(zones[time].values[0] - expected).mean())
    return errors


def run(folder, cells, rows=25, **settings):
    section = kvr_run.options(lines=1, plots=1, **settings)
    return kvr_run.finished_normally(kvr_run.run(folder, column_flood.deck(cells, section, rows)))


def test_explicit_lines_are_as_accurate_as_plain_upwind_on_the_same_grid(tmp_path):
    result = run(tmp_path, 100)
    flow, solution = exact()
    for time, error in zip(TIMES, saturation_errors(result, 100)):
        volumes = column_flood.injected_volumes(time)
        plain = buckley_leverett.upwind(flow, column_flood.CONNATE, SWEPT, 100, volumes, 0.8)
        plain_error = numpy.abs(plain - solution.cell_means(100, volumes)).mean()
        print(f"{time:6.0f} days: L1 {error:.5f}, plain upwind {plain_error:.5f}")
        assert error <= 1.3 * plain_error


def test_cumulative_oil_meets_the_exact_recovery(tmp_path):
    result = run(tmp_path, 100)
    _, solution = exact()
    recovered = solution.mean(column_flood.injected_volumes(2000.0)) - column_flood.CONNATE
    expected = column_flood.PORE_VOLUME * recovered
    produced = result.table()["FOPT"][-1]
    print(f"cumulative oil {produced:.0f} stb, exact {expected:.0f} stb")
    assert produced == pytest.approx(expected, rel=0.01)


def test_error_falls_with_refinement_at_the_order_of_a_shock(tmp_path):
    """Tables are piecewise linear: each of their kinks is a small shock of its own, whose smearing falls at
    order one half. The table is taken fine enough here for the curve to act as the smooth one it samples."""
    errors = []
    for cells in (100, 200, 400):
        folder = tmp_path / str(cells)
        folder.mkdir()
        errors.append(numpy.mean(saturation_errors(run(folder, cells, SMOOTH_ROWS), cells, SMOOTH_ROWS)))
    order = numpy.log2(errors[0] / errors[2]) / 2.0
    print(f"mean L1 errors {errors}, observed order {order:.2f}")
    assert errors[0] > errors[1] > errors[2]
    assert order >= 0.7


@pytest.mark.parametrize("mapping, limit", [("CONSERVE", 0.004), ("AVERAGE", 0.02)])
def test_analytic_lines_follow_the_exact_profile_and_do_so_better_with_a_finer_table(tmp_path, mapping, limit):
    means = []
    for rows in (25, 97):
        folder = tmp_path / str(rows)
        folder.mkdir()
        result = run(folder, 100, rows, scheme="ANALYTICAL", extra=f"MAPPING\n{mapping}\n")
        errors = saturation_errors(result, 100, rows)
        print(f"analytic lines, {mapping}, {rows} table rows: L1 {errors}")
        assert max(errors) <= limit
        means.append(numpy.mean(errors))
        if mapping == "CONSERVE":
            balance = result.table("KVR_Run_SweepVolume.out")
            assert numpy.abs([balance["|MBEO|"], balance["|MBEW|"]]).max() < 1e-6
    assert means[1] < means[0]


@pytest.mark.skipif(kvr_run.public_deck("waterflood/BL100.DATA") is None,
                    reason="public decks not beside the checkout")
def test_public_deck_runs_unchanged_and_meets_its_exact_recovery(tmp_path):
    text = kvr_run.public_deck("waterflood/BL100.DATA")
    result = kvr_run.finished_normally(kvr_run.run(tmp_path, text + kvr_run.options(lines=1)))
    produced = result.table()["FOPT"][-1]
    print(f"cumulative oil {produced:.0f} stb, exact 18135 stb")
    assert produced == pytest.approx(18135.0, rel=0.01)


@pytest.mark.parametrize("step", [10, 25])
def test_the_water_cut_that_impes_reports_rises_without_jumps(tmp_path, step):
    result = run(tmp_path, 50, method="IMPES", extra=f"STEPCTRL\nNo /\nMAXDT\n{step} /\n")
    cut = result.table()["FWCT"]
    flowing = cut[cut > 0.01]
    assert flowing.size > 20
    assert (numpy.diff(flowing) >= -1e-6).all()
