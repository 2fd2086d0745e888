"""Two-dimensional floods against the converged curves of an independent fully implicit simulator."""

import numpy
import pytest

import kvr_run
from curves import relative_difference, water_cut_difference
from public_floods import REPORT_TIMES, flood, needs_public_decks, reference

REGULAR = {"lines": 2000, "nodes": "REG", "factor": 1.0}

pytestmark = needs_public_decks


def test_homogeneous_quarter_five_spot_follows_the_converged_reference(tmp_path):
    table = flood(tmp_path, "QFS50", step=25.0, **REGULAR).table()
    curve = reference("QFS50_dt2")
    mean, largest = water_cut_difference(table, curve, REPORT_TIMES)
    oil = relative_difference(table["FOPT"][-1], curve["FOPT"][-1])
    print(f"QFS50: water cut mean {mean:.4f}, largest {largest:.4f}; cumulative oil {100 * oil:.2f} %")
    assert mean <= 0.005
    assert largest <= 0.06
    assert oil <= 0.01


def test_heterogeneous_five_spot_follows_the_converged_references_and_keeps_its_mass(tmp_path):
    result = flood(tmp_path, "FIVE1", **REGULAR)
    balance = result.table("KVR_Run_SweepVolume.out")
    print(f"FIVE1: balance errors oil {balance['|MBEO|'][-1]:.4f}, water {balance['|MBEW|'][-1]:.4f}")
    assert abs(balance["|MBEO|"][-1]) < 0.005
    assert abs(balance["|MBEW|"][-1]) < 0.015
    table = result.table()
    for name in ("FIVE1_dt5", "FIVE1_fine"):
        curve = reference(name)
        mean, largest = water_cut_difference(table, curve, REPORT_TIMES)
        oil = relative_difference(table["FOPT"][-1], curve["FOPT"][-1])
        print(f"{name}: water cut mean {mean:.4f}, largest {largest:.4f}; cumulative oil {100 * oil:.2f} %")
        assert mean <= 0.03
        assert oil <= 0.035


def well_rates(result):
    """Columns of the plot table of wells, which runs with analytic lines write too."""
    names, *rows = result.read("KVR_TPlot_Well_Rate.plt").splitlines()[1:]
    values = numpy.array([[float(word) for word in row.split()] for row in rows if row.strip()])
    return dict(zip(names.replace("VARIABLES = ", "").replace(" ", "").split(","), values.T))


@pytest.mark.parametrize("name, curve, limit, oil_limit", [("QFS50", "QFS50_dt2", 0.01, 0.02),
                                                           ("FIVE1", "FIVE1_dt5", 0.03, 0.04)])
def test_analytic_lines_keep_mass_and_come_nearer_than_their_average(tmp_path, name, curve, limit, oil_limit):
    """Their profile knows the age of the flood and nothing of mobilities, so they are not held to what explicit
    lines do."""
    truth = reference(curve)
    means = {}
    for mapping in ("CONSERVE", "AVERAGE"):
        result = flood(tmp_path / mapping, name, lines=500, scheme="ANALYTICAL", plots=1,
                       extra=f"MAPPING\n{mapping}\n")
        table = well_rates(result)
        means[mapping], largest = water_cut_difference(table, truth, REPORT_TIMES)
        oil = table["FOPT"][-1] / truth["FOPT"][-1] - 1.0
        print(f"{name}, {mapping}: water cut mean {means[mapping]:.4f}, largest {largest:.4f}; oil {100 * oil:+.2f} %")
        if mapping == "CONSERVE":
            balance = result.table("KVR_Run_SweepVolume.out")
            assert numpy.abs([balance["|MBEO|"], balance["|MBEW|"]]).max() < 1e-4
            assert means[mapping] <= limit
            assert abs(oil) <= oil_limit
    assert means["CONSERVE"] < means["AVERAGE"]


def test_twice_the_lines_or_half_the_step_change_little(tmp_path):
    base = flood(tmp_path / "base", "FIVE1", **REGULAR).table()["FOPT"][-1]
    lines = flood(tmp_path / "lines", "FIVE1", **{**REGULAR, "lines": 4000}).table()["FOPT"][-1]
    step = flood(tmp_path / "step", "FIVE1", step=25.0, **REGULAR).table()["FOPT"][-1]
    print(f"twice the lines {100 * (lines / base - 1):+.3f} %, half the step {100 * (step / base - 1):+.3f} %")
    assert relative_difference(lines, base) < 0.002
    assert relative_difference(step, base) < 0.01


def test_global_iterations_bring_pressures_of_long_steps_to_those_of_short_ones(tmp_path):
    # Passes over the fixed steps of the tables, on the mapping by means that they belong to.
    fixed = "STEPCTRL\nNo /\nMAPPING\nAVERAGE\n"
    passes = "OPTIONKVR\n1 0 0 0 0 0 0 2 /\n"
    short = flood(tmp_path / "short", "QFS50", 10.0, extra=fixed).table()
    once = flood(tmp_path / "once", "QFS50", 100.0, mappings=10, extra=fixed).table()
    thrice = flood(tmp_path / "thrice", "QFS50", 100.0, mappings=10, extra=fixed + passes).table()

    def distance(table, column):
        return numpy.abs(table[column] - numpy.interp(table["TIME"], short["TIME"], short[column])).mean()

    for column in ("FPR", "WBHP:INJ"):
        print(f"QFS50 {column}: {distance(once, column):.1f} psi once, {distance(thrice, column):.1f} with two more passes")
        assert distance(thrice, column) <= 0.25 * distance(once, column)
    # Oil follows the mapping, which the passes leave as it is: they take it no further away.
    assert distance(thrice, "FOPT") <= 1.001 * distance(once, "FOPT")
    assert list(thrice["TIME"]) == list(once["TIME"])
    # 400 stb/d, met to what the pressure iteration leaves open: totals count a step once, not every pass.
    assert thrice["FWIT"][-1] == pytest.approx(400.0 * 2000.0, rel=1e-7)


def test_pairs_share_the_reservoir_rates_of_the_producers_that_lines_start_from(tmp_path):
    text = kvr_run.public_deck("waterflood/FIVE1.DATA").replace("40*50", "6*100")
    include = (kvr_run.PUBLIC_DECKS / "waterflood" / "FIVE1.INC").read_text()
    result = kvr_run.finished_normally(kvr_run.run(tmp_path, text + kvr_run.options(lines=4000, plots=1, start="PRD"),
                                                   {"FIVE1.INC": include}))
    head, names, *rows = result.read("KVR_TPlot_Well_Rate.plt").splitlines()
    columns = names.replace("VARIABLES = ", "").replace(" ", "").split(",")
    last = dict(zip(columns, map(float, rows[-1].split())))
    produced = [last[name] for name in columns if name.startswith("WVPR_") and last[name] > 0.0]
    pairs = numpy.array([[float(word) for word in row.split()] for row in result.read("KVR_Run_RateAllocation.out").splitlines()])
    assert pairs[:, 0].tolist() == pairs[:, 1].tolist() == list(range(1, len(produced) + 1)), "one injector"
    print("FIVE1: allocation over reservoir rate", pairs[:, 2] / produced)
    numpy.testing.assert_allclose(pairs[:, 2], produced, rtol=0.01)
