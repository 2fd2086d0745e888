"""Options that act, and options that say that they do not."""

import re

import numpy
import pytest

import column_flood
import kvr_run
import run_judge
import small_deck
import tecplot
from kvr_run import finished_normally, run

FIXED_STEPS = "STEPCTRL\nNo /\n"
METHODS = ("STREAMLINE", "IMPES", "FIM")

def with_switches(text, record):
    return text.replace("TUNEKVR\n", f"TUNEKVR\nOPTIONKVR\n{record} /\n")


@pytest.mark.parametrize("scheme, effects", [("IMPLICIT", "Yes"), ("EXPLICIT", "No"), ("IMPLICIT", "No"), ("HYBRID", "Yes")])
def test_lines_of_every_kind_keep_free_gas(tmp_path, scheme, effects):
    options = kvr_run.options(lines=40, solver="DGESV", scheme=scheme).replace("SPU Yes Yes", f"SPU {effects} Yes")
    finished_normally(run(tmp_path, small_deck.gas_deck(options)))
    sweep = run_judge.read_table(tmp_path / "KVR_Run_SweepVolume.out")
    assert sweep["FGIP_NOW"][-1] < 0.98 * sweep["FGIP_ORG"][0], "gas has been produced"
    for error in ("MBEO", "MBEW", "MBEG"):
        assert numpy.abs(sweep[error]).max() < 1e-4, error


@pytest.mark.parametrize("record", ["1 0 0 0 1 0 0 0", "1 0 0 0 0 1 0 0"])
def test_limits_on_solution_gas_say_that_they_do_not_act(tmp_path, record):
    options = with_switches(kvr_run.options(lines=40, solver="DGESV"), record)
    told = finished_normally(run(tmp_path, small_deck.gas_deck(options)))
    assert sum(line.startswith("WARNING :: Limits on solution gas") for line in told.console.splitlines()) == 1
    (tmp_path / "average").mkdir()
    average = finished_normally(run(tmp_path / "average", small_deck.gas_deck(options + "MAPPING\nAVERAGE\n")))
    assert "Limits on solution gas" not in average.console


def test_the_word_hybrid_names_hybrid_lines(tmp_path):
    options = kvr_run.options(lines=20, solver="DGESV", scheme="HYBRID")
    result = finished_normally(run(tmp_path, small_deck.deck(options=options)))
    assert "SL  Numerical method : hyb" in result.console
    (tmp_path / "explicit").mkdir()
    explicit = finished_normally(run(tmp_path / "explicit", small_deck.deck(options=kvr_run.options(lines=20, solver="DGESV"))))
    assert result.table()["FOPT"][-1] == pytest.approx(explicit.table()["FOPT"][-1], rel=0.01)


@pytest.mark.parametrize("method", ["STREAMLINE", "IMPES"])
def test_rates_and_fluxes_of_the_last_solve_stand_until_the_next(tmp_path, method):
    options = kvr_run.options(method=method, lines=20, solver="DGESV", extra=FIXED_STEPS + "MAXDT\n2.5 /\n")
    options = with_switches(options, "4 0 0 0 0 0 0 0").replace("1 0 0 0 0 0 0 1 0 0", "1 0 1 0 0 0 0 1 0 0")
    result = finished_normally(run(tmp_path, small_deck.deck(options=options)))
    assert result.console.count("Time Begin :") == 6, "of 24 steps"
    produced = run_judge.reservoir_rates(tmp_path / "KVR_TPlot_Well_Rate.plt")["PROD"]
    groups = produced[-24:].reshape(6, 4)
    assert (groups == groups[:, :1]).all()
    assert len(set(groups[:, 0])) > 3, "every solve finds another rate"
    sweep = run_judge.read_table(tmp_path / "KVR_Run_SweepVolume.out")
    assert max(numpy.abs(sweep[error]).max() for error in ("MBEO", "MBEW")) < 1e-6


def test_a_gas_table_holds_nothing_back_in_a_run_without_gas(tmp_path):
    table = "SGOF\n0 0 1 0\n0.1 0 0.9 0\n0.8 0.9 0 0\n/\n"
    options = with_switches(kvr_run.options(lines=20, solver="DGESV"), "1 0 1 0 0 0 0 0")
    tables = {}
    for name, props in (("without", small_deck.PROPS), ("with", small_deck.PROPS + table)):
        (tmp_path / name).mkdir()
        tables[name] = finished_normally(run(tmp_path / name, small_deck.deck(props=props, options=options))).table()
    assert tables["with"]["FOPT"][-1] > 1000.0
    for column in ("FOPT", "FWPT", "FPR"):
        assert (tables["with"][column] == tables["without"][column]).all(), column


def test_a_pressure_change_holds_the_steps_that_solve_pressure(tmp_path):
    # Solved once, at the start: no later step has a change of pressure to be held by.
    limited = kvr_run.options(lines=20, solver="DGESV", extra=FIXED_STEPS + "MAXDT\n5 /\nOPTTSTEP\n50 /\n")
    steps = {}
    for name, record in (("every step", "1 0 0 0 0 0 0 0"), ("once", "0 0 0 0 0 0 0 0")):
        (tmp_path / name).mkdir()
        result = finished_normally(run(tmp_path / name, small_deck.deck(options=with_switches(limited, record))))
        steps[name] = (len(re.findall(r"^Step \d+ ", result.console, flags=re.M)), result.console.count("Optimal Pressure Control"))
    assert steps["every step"][1] > 0
    assert steps["once"] == (12, 0)


def traced_column(method, options):
    """A column full of water at its start, so that a tracer moves as the water does, by 1 / 2000 of the pores a day."""
    deck = column_flood.deck(50, kvr_run.options(method=method, lines=4, plots=1, **options))
    deck = deck.replace("WELLDIMS\n", "TRACERS\n1* 1 /\nWELLDIMS\n").replace("\nSOLUTION", "\nTRACER\n'TRA1' 'WAT' /\n/\nSOLUTION")
    return deck.replace("WCONPROD\n", "WTRACER\n'INJ' 'TRA1' 1.0 /\n/\nWCONPROD\n", 1)


def tracer_in_place(zone_tracer, zone_water):
    cells = zone_tracer.values[0].size
    return (zone_tracer.values[0] * zone_water.values[0]).sum() / cells * column_flood.PORE_VOLUME


@pytest.mark.parametrize("method, options", [("STREAMLINE", {}), ("STREAMLINE", {"scheme": "ANALYTICAL"}), ("IMPES", {}), ("FIM", {})],
                         ids=["explicit", "analytic", "impes", "implicit"])
def test_tracers_move_with_the_water(tmp_path, method, options):
    finished_normally(run(tmp_path, traced_column(method, options)))
    tracer = tecplot.read_zones(tmp_path / "KVR_Tplot_Tracer.plt")
    water = {zone.time: zone for zone in tecplot.read_zones(tmp_path / "KVR_TPlot_swat.plt")}
    for zone in tracer:
        concentration = zone.values[0]
        assert concentration.min() >= -1e-9 and concentration.max() <= 1.0 + 1e-9
        if not 0.0 < zone.time <= 250.0:
            continue  # later it leaves by the producer
        held = tracer_in_place(zone, water[zone.time])
        assert held == pytest.approx(column_flood.RATE * zone.time, rel=0.02 if not options and method == "STREAMLINE" else 1e-3)
        assert (numpy.diff(concentration.ravel()) <= 1e-9).all(), "it falls along the flow"
