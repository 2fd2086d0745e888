"""A gas drive of three components on 200 cells, cells and streamlines, against finite volumes on 1600 cells written apart
from the program: tests/support/gas_drive_1600.txt is what `tests/support/gas_drive.py 1600 200` prints."""

import pathlib
import re

import numpy
import pytest

import component_deck
import drying_front
import flash_oracle
import gas_drive
import kvr_run
import named_run
import tecplot

CELLS, DAYS, STEPS = 200, 100, 100
PORES = 1000 * 10 * 100 * 0.2       # ft3
SURFACE = 14.7, 519.67              # psia, Rankine
MEAN_ERROR, BALANCE = 0.01, 1e-6    # of a mole fraction; of what is injected
FINE = pathlib.Path(gas_drive.__file__).with_name("gas_drive_1600.txt")
TRACKED = "SL1DCON\nANALYTICAL /\n"
FRONT_SHARE = 0.02                  # of the way of the first front, that it may be away from its place
DRY_FRONT, LEVELS = 0.3, 0.6        # cells: the front behind which no C10 is left, and compositions between the fronts
TRACKED_ERROR = 0.0025              # of a mole fraction
SHARP_DRY_FRONT = 0.12              # cells, the former from where it is without a grid
LIMITED = "SL1DCON\nEXPLICIT IRR 1 2PU /\n"
INJECTED = re.compile(r"^(\w+) +: produced \S+ lb-mole, injected (\S+) lb-mole", re.M)


def surface_volume():
    """ft3 that a lb-mole of the gas is at the surface."""
    pressure, temperature = SURFACE
    mixture = flash_oracle.Mixture(gas_drive.TC, gas_drive.PC, gas_drive.ACENTRIC, numpy.zeros((3, 3)), temperature)
    rt = flash_oracle.GAS_CONSTANT * temperature
    A = numpy.array([gas_drive.GAS @ mixture.a @ gas_drive.GAS * pressure / rt**2])
    B = numpy.array([gas_drive.GAS @ mixture.b * pressure / rt])
    return numpy.nanmax([z[0] for z in flash_oracle.cubic_roots(A, B)]) * rt / pressure


def deck(method, options):
    """The row at one pressure, all but: its rock is very permeable."""
    in_rock = gas_drive.molar_volume(gas_drive.mixture(), gas_drive.GAS[None, :])[0]
    rate = gas_drive.INJECTED * PORES / in_rock * surface_volume() / DAYS / 1000  # Mscf/day
    days = DAYS / STEPS
    text = component_deck.replaced(cells=(CELLS, 1, 1), sizes=(1000 / CELLS, 10.0, 100.0), permeability=1e5, method=method,
                                   steps=f"{STEPS}*{days}",
                                   options=f"OUTPUTKVR\n1 0 1 0 0 0 0 0 0 0 /\n{options}MAXDT\n{days} /\n")
    assert "RATE 50 " in text
    return text.replace("RATE 50 ", f"RATE {rate:.9f} ")


def fractions_of(folder, method, options):
    """Mole fractions of the cells (rows) at the end, and the run."""
    (folder / "CASE.DATA").write_text(deck(method, options))
    run = named_run.run_named(folder / "CASE.DATA", folder=folder)
    assert run.returncode == 0 and run.errors == "", run.console[-3000:]
    return numpy.array(tecplot.read_zones(folder / "CASE_TPlot_Out_Zmf.plt")[-1].values)[-3:].T, run


@pytest.mark.parametrize("method, options", (("IMPES", ""), ("STREAMLINE", ""), ("STREAMLINE", LIMITED)))
def test_compositions_are_those_of_eight_times_as_many_cells(tmp_path, method, options):
    found, run = fractions_of(tmp_path, method, options)
    expected = numpy.loadtxt(FINE)
    assert found.shape == expected.shape == (CELLS, 3)
    assert numpy.abs(found - expected).mean(axis=0).max() < MEAN_ERROR
    injected = sum(float(moles) for _, moles in INJECTED.findall(run.console))
    first = PORES / gas_drive.molar_volume(gas_drive.mixture(), gas_drive.OIL[None, :])[0] * gas_drive.OIL
    # The error of oil is that of the component which is furthest off, of what there was of it.
    error = kvr_run.read_table(tmp_path / "CASE_Run_SweepVolume.out")["|MBEO|"][-1]
    assert abs(error) * first.max() < BALANCE * injected


def crossings(profile, level):
    """Places, in cells, where a profile goes through a level."""
    k = numpy.flatnonzero((profile[1:] > level) != (profile[:-1] > level))
    return k + 0.5 + (level - profile[k]) / (profile[k + 1] - profile[k])


def test_tracking_lines_put_the_fronts_where_the_fine_solution_has_them(tmp_path):
    """The front in which gas reaches the oil, by each component half the way up, and the one behind which nothing of the
    heaviest is left."""
    found, run = fractions_of(tmp_path, "STREAMLINE", TRACKED)
    expected = numpy.loadtxt(FINE)
    assert "NaN" not in run.console
    ahead = expected[-1]
    first = crossings(expected[:, 2], 0.5 * (ahead[2] + expected[104, 2]))[-1]
    assert first == pytest.approx(107.9, abs=0.2)
    for component in range(3):
        level = 0.5 * (ahead[component] + expected[104, component])
        there, here = crossings(expected[:, component], level)[-1], crossings(found[:, component], level)[-1]
        assert abs(here - there) < FRONT_SHARE * first, component
    dry = 0.5 * expected[5, 2]
    there, here = crossings(expected[:, 2], dry)[0], crossings(found[:, 2], dry)[0]
    assert there == pytest.approx(4.9, abs=0.1)
    assert abs(here - there) < DRY_FRONT
    for component, level in ((0, 0.70), (0, 0.66), (0, 0.64), (0, 0.62), (0, 0.60), (0, 0.58), (2, 0.16), (2, 0.20), (2, 0.24)):
        there, here = crossings(expected[:, component], level)[0], crossings(found[:, component], level)[0]
        assert abs(here - there) < LEVELS, (component, level)
    assert numpy.abs(found - expected).mean(axis=0).max() < TRACKED_ERROR


def test_tracking_lines_put_the_drying_front_where_shocks_and_tie_lines_have_it(tmp_path):
    """That of 1600 cells is 0.2 cells back, 4 % of its way."""
    found, _ = fractions_of(tmp_path, "STREAMLINE", TRACKED)
    sharp = drying_front.heaviest_behind(gas_drive.INJECTED, CELLS, 8)
    level = 0.5 * numpy.loadtxt(FINE)[5, 2]
    there, here = crossings(sharp, level)[0], crossings(found[:, 2], level)[0]
    assert there == pytest.approx(5.08, abs=0.01)
    assert abs(here - there) < SHARP_DRY_FRONT


def test_tracking_lines_leave_what_is_ahead_of_the_first_front_as_it_was(tmp_path):
    """What cells miss of the lines goes on no faster than the flow: the well gives the oil that was there until then."""
    found, run = fractions_of(tmp_path, "STREAMLINE", TRACKED)
    curves, _ = named_run.summary_of(tmp_path / "CASE_Summary.csv")
    assert curves["TIME"][-1] == DAYS
    assert numpy.abs(curves["FGOR"][1:] / curves["FGOR"][1] - 1).max() < 1e-3
    assert numpy.abs(found[112:] - gas_drive.OIL).max() < 1e-3
