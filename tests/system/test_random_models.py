"""The random models of the soak: the same every time, the same for every method, and legal."""

import pathlib
import sys

import numpy
import pytest

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[1] / "soak"))

import kvr_run  # noqa: E402
import limited_run  # noqa: E402
from deck import deck_text  # noqa: E402
from deck_schedule import Schedule  # noqa: E402
from models import CLASSES, draw_model  # noqa: E402
from options import METHODS  # noqa: E402
from trial import deck_warnings  # noqa: E402

SEEDS = range(2001, 2065)


@pytest.fixture(scope="module")
def models():
    return [draw_model(seed) for seed in SEEDS]


def test_a_model_is_a_function_of_its_seed_and_class(models):
    for model in models[:16]:
        again = draw_model(model.seed, model.family)
        for method in METHODS:
            assert deck_text(again, method) == deck_text(model, method)
    assert len({deck_text(model, "FIM") for model in models}) == len(models)
    assert {model.family for model in models} == set(CLASSES)


def test_methods_differ_in_the_option_section_alone(models):
    for model in models:
        reservoirs = {deck_text(model, method).split("\nEND\n")[0] for method in METHODS}
        assert len(reservoirs) == 1


def test_models_keep_their_bounds(models):
    for model in models:
        grid = model.grid
        assert 1 <= grid.cells() <= 2500 and 1 <= len(model.wells) <= 6
        assert len({(well.i, well.j) for well in model.wells}) == len(model.wells)
        assert 0.1 <= grid.kx.min() and grid.kx.max() <= 1e4
        for well in model.wells:
            assert grid.active[well.k1 - 1:well.k2, well.j - 1, well.i - 1].all()
    permeability = numpy.concatenate([model.grid.kx.ravel() for model in models])
    assert permeability.max() / permeability.min() == pytest.approx(1e5)


def test_saturated_oil_is_compressible_and_curves_are_monotone(models):
    for model in models:
        fluid = model.fluid
        if fluid.live_oil:
            saturated = [(rows[0][0], rs, rows[0][1]) for rs, rows in fluid.live_oil]
            for (p0, rs0, bo0), (p1, rs1, bo1) in zip(saturated, saturated[1:]):
                assert p1 > p0 and rs1 > rs0
                assert fluid.bg(p1) * (rs1 - rs0) > bo1 - bo0
        if fluid.has_gas():
            factors = [row[1] for row in fluid.gas]
            assert factors == sorted(factors, reverse=True)
        for region in model.curves:
            for rows in filter(None, (region.water_oil, region.gas_oil)):
                columns = numpy.array(rows).T
                assert (numpy.diff(columns[0]) > 0.0).all() and (numpy.diff(columns[1]) >= 0.0).all()
                assert (numpy.diff(columns[2]) <= 0.0).all() and (numpy.diff(columns[3]) <= 0.0).all()


def test_the_schedule_of_a_deck_has_the_days_and_wells_of_its_model(models):
    for model in models:
        schedule = Schedule(deck_text(model, "FIM"))
        assert schedule.end() == pytest.approx(model.days(), rel=1e-5)
        assert set(schedule.controls) == {well.name for well in model.wells}


def test_a_strict_reader_of_decks_takes_every_model(models):
    parser = pytest.importorskip("opm.io.parser", reason="python3-opm-common is not installed")
    from opm.io.ecl_state import EclipseState
    from opm.io.schedule import Schedule as StrictSchedule
    for model in models:
        text = deck_text(model, "FIM").split("\nEND\n")[0] + "\n"
        # Two things that it asks for and that this program has no use for.
        text = text.replace("WELLDIMS\n", "EQLDIMS\n/\nWELLDIMS\n", 1).replace("SCHEDULE\n", "SUMMARY\nSCHEDULE\n", 1)
        deck = parser.Parser().parse_string(text)
        StrictSchedule(deck, EclipseState(deck))


@pytest.mark.parametrize("seed", list(SEEDS)[:16])
def test_the_program_reads_a_deck_without_a_warning(tmp_path, seed):
    text = deck_text(draw_model(seed), "FIM")
    head, tail = text.split("\nTSTEP\n", 1)
    only_start = head + "\nEND\n" + tail.split("\nEND\n", 1)[1]  # nothing is stepped: the initial state alone
    (tmp_path / "ECLIPSE.DATA").write_text(only_start)
    ended = limited_run.run_limited(kvr_run.PROGRAM, tmp_path)
    assert ended.status == 0, ended.complaint()
    log = (tmp_path / "KVR_dbg.out").read_text()
    assert "Keywords not supported: 0" in log
    assert deck_warnings(tmp_path / "KVR_dbg.out") in ("", "WARNING :: Time-step was not given. Want Initial conditon?")
