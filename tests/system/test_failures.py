"""Every failure that a deck or a folder can cause: its message to the letter on console and log, exit
status 1, with standard input closed."""

import os
import subprocess
import time

import pytest

import kvr_run
import small_deck
from kvr_run import run

TIMEOUT = 60


def stops(result, *texts):
    """The run ended by itself with status 1; each text is a line, or the beginning of one, of console and log."""
    assert result.status == 1, result.console[-1500:]
    for text in texts:
        assert any(line.startswith(text) for line in result.console.splitlines()), (text, result.console[-1500:])
        assert any(line.startswith(text) for line in result.log.splitlines()), (text, result.log[-1500:])


def stops_on(tmp_path, *texts, files=None, **sections):
    stops(run(tmp_path, small_deck.deck(**sections), files=files, timeout=TIMEOUT), *texts)


# --- the console and the folder ---------------------------------------------------------------------------


def test_the_second_name_that_is_missing_ends_the_program(tmp_path):
    result = run(tmp_path, standard_input="first\nsecond.DATA\n", timeout=TIMEOUT)
    assert result.status == 1
    lines = [line for line in result.console.splitlines() if "Cannot find file ::" in line]
    assert lines == ["Cannot find file :: first.DATA", "Cannot find file :: second.DATA End Program."]


def test_a_failure_waits_for_a_line_before_it_ends(tmp_path):
    (tmp_path / "ECLIPSE.DATA").write_text(small_deck.deck(runspec="RUNSPEC\nOIL\n"))
    with subprocess.Popen([kvr_run.PROGRAM], cwd=tmp_path, stdin=subprocess.PIPE, stdout=subprocess.PIPE,
                          text=True) as process:
        time.sleep(1.0)
        assert process.poll() is None, "the console window would have closed"
        console, _ = process.communicate("\n", timeout=TIMEOUT)
        assert process.returncode == 1
    assert "ERROR :: DIMENS NOT SPECIFIED" in console


@pytest.mark.skipif(os.geteuid() == 0, reason="the super-user may read anything")
def test_a_deck_that_cannot_be_opened_stops_the_run(tmp_path):
    (tmp_path / "ECLIPSE.DATA").write_text(small_deck.deck())
    (tmp_path / "ECLIPSE.DATA").chmod(0)
    stops(run(tmp_path, timeout=TIMEOUT), "ERROR: File handling error in ECLIPSE input mode, code =")


def test_an_output_file_that_cannot_be_created_tells_the_code(tmp_path):
    (tmp_path / "KVR_Run_Recovery.out").mkdir()
    result = run(tmp_path, small_deck.deck(), timeout=TIMEOUT)
    assert result.status == 1
    assert "ERROR: File handling error, code = " in result.console
    assert "Cannot create file for output. Check Directry path." in result.console


def test_a_clean_up_file_that_cannot_be_created_stops_the_run(tmp_path):
    (tmp_path / "0EraseData.bat").mkdir()
    result = run(tmp_path, small_deck.deck(), timeout=TIMEOUT)
    assert result.status == 1
    assert "Cannot create file for output. Check Directry path." in result.console


def test_a_corner_point_file_that_cannot_be_created_stops_the_run(tmp_path):
    (tmp_path / "_COORD_BYKVR.tmp").mkdir()
    stops_on(tmp_path, "ERROR: File Open Error", "ERROR: File handling Error", "ERROR: File handling error, code = ",
             "Cannot create file for output. Check Directry path.")


# --- reading errors, by section ---------------------------------------------------------------------------

READ_ERROR = "ERROR: File reading error, code ="
EDIT = "EDIT\nMULTIPLY\nPORV {} 1 5 1 5 1 1 /\n/\n"


@pytest.mark.parametrize("section, sections", [
    ("RUNSPEC", {"runspec": small_deck.RUNSPEC.replace("5 5 1", "5 five 1")}),
    ("GRID", {"grid": small_deck.GRID.replace("25*0.2", "24*0.2 letters")}),
    ("EDIT", {"grid": small_deck.GRID + EDIT.format("two")}),
    ("PROPS", {"props": small_deck.PROPS.replace("53 64 0.0624", "53 heavy 0.0624")}),
    ("SOLUTION", {"solution": small_deck.SOLUTION.replace("25*3000", "24*3000 high")}),
    ("SCHEDULE", {"schedule": small_deck.SCHEDULE.replace("2*30", "thirty")}),
    ("STREAMLINE", {"options": kvr_run.options(lines="many")}),
])
def test_letters_where_numbers_belong_stop_in_their_section(tmp_path, section, sections):
    stops_on(tmp_path, READ_ERROR, f"Reading error, in {section} Section", **sections)


def test_a_reading_error_of_the_regions_goes_under_the_name_of_the_summary(tmp_path):
    stops_on(tmp_path, READ_ERROR, "Reading error, in SUMMARY Section",
             props=small_deck.PROPS + "REGIONS\nSATNUM\n24*1 one /\n")


@pytest.mark.parametrize("section, text", [
    ("RUNSPEC", "DIMENS\n5 five 1 /\n"), ("EDIT", EDIT.format("two").replace("EDIT\n", ""))])
def test_a_reading_error_inside_an_include_file_says_so(tmp_path, section, text):
    include = "INCLUDE\n'PART.INC' /\n"
    sections = {"RUNSPEC": {"runspec": small_deck.RUNSPEC + include},
                "EDIT": {"grid": small_deck.GRID + "EDIT\n" + include}}[section]
    stops_on(tmp_path, READ_ERROR, f"Reading error, in {section} INCLUDE file", files={"PART.INC": text}, **sections)


@pytest.mark.parametrize("section, sections", [
    ("RUNSPEC", {"runspec": small_deck.RUNSPEC + "{}"}), ("GRID", {"grid": small_deck.GRID + "{}"}),
    ("EDIT", {"grid": small_deck.GRID + "EDIT\n{}"}), ("PROPS", {"props": small_deck.PROPS + "{}"}),
    ("SCHEDULE", {"schedule": small_deck.SCHEDULE.replace("TSTEP", "{}TSTEP")}),
])
def test_an_include_file_that_is_missing_is_told_by_section(tmp_path, section, sections):
    sections = {name: text.replace("{}", "INCLUDE\n'nowhere.inc' /\n") for name, text in sections.items()}
    stops_on(tmp_path, f"ERROR: INCLUDE File Open Error at {section} section",
             f"File I/O Error, in {section} Section", **sections)


def test_an_include_file_of_the_regions_that_is_missing_goes_under_the_name_of_grid(tmp_path):
    stops_on(tmp_path, "ERROR: INCLUDE File Open Error at GRID section", "File I/O Error, in GRID Section",
             props=small_deck.PROPS + "REGIONS\nINCLUDE\n'nowhere.inc' /\n")


def test_an_include_file_of_the_solution_that_is_missing_goes_under_the_name_of_runspec(tmp_path):
    stops_on(tmp_path, "ERROR: File handling error, code =", "Include file missing, RUNSPEC section",
             solution=small_deck.SOLUTION + "INCLUDE\n'nowhere.inc' /\n")


# --- what a section finds wrong ---------------------------------------------------------------------------


@pytest.mark.parametrize("keyword, rows", [("PVDO", "300  1.05 2.85\n"), ("SWOF", "0.2 0 1 0\n"),
                                           ("PVDG", "300 1.0 0.02\n"), ("SGOF", "0.0 0 1 0\n")])
def test_a_table_of_one_row_stops_the_run(tmp_path, keyword, rows):
    props = small_deck.without_keyword(small_deck.PROPS, keyword) + f"{keyword}\n{rows}/\n"
    stops_on(tmp_path, f"ERROR :: INSUFFICIENT {keyword} TABLE", props=props)


def test_dates_without_a_row_stop_the_run(tmp_path):
    stops_on(tmp_path, "ERROR :: Could not extract DATES",
             schedule=small_deck.SCHEDULE.replace("TSTEP\n2*30 /", "DATES\n/"))


@pytest.mark.parametrize("there, text", [
    ("START.INC", "Error :: HistoryMatching, cannot find target  input file by PERMFILE"),
    ("TARGET.INC", "Error :: HistoryMatching, cannot find initial  input file by PERMFILE")])
def test_a_permfile_that_is_missing_is_told_by_its_part(tmp_path, there, text):
    options = kvr_run.options(lines=20, extra="PERMFILE\n'TARGET.INC' 'START.INC' /\n")
    stops_on(tmp_path, text, options=options, files={there: "-- nothing\n"})


def test_an_optimisation_without_a_least_flux_stops_the_run_only_behind_its_switch(tmp_path):
    limits = "WFOOPT\n1 0 1 2 -0.25 25 0 100 0.001 /\n"
    text = "ERROR : Option 7 should not be zero at WFOOPT. Provide constraint"
    stops_on(tmp_path, text, options=kvr_run.options(lines=20, extra="OPTIMIZE\n" + limits))
    result = run(tmp_path, small_deck.deck(options=kvr_run.options(lines=20, extra=limits + "OPTIMIZE\n")))
    assert text not in result.console


# --- wells ------------------------------------------------------------------------------------------------


@pytest.mark.parametrize("found, broken", [
    ("'PROD' 5 5 1 1", "'PROD' 6 5 1 1"), ("'PROD' 5 5 1 1", "'PROD' 5 6 1 1"), ("'PROD' 5 5 1 1", "'PROD' 5 5 2 2"),
    ("'INJ' 1 1 1 1 'OPEN' 2* 0.5", "'INJ' 1 1 1 1 'OPEN' 2* 0")])
def test_a_well_outside_the_grid_or_without_a_radius_stops_the_run(tmp_path, found, broken):
    assert found in small_deck.SCHEDULE
    stops_on(tmp_path, "ERROR :: Invailed Well Input Data (Location)",
             schedule=small_deck.SCHEDULE.replace(found, broken))


@pytest.mark.parametrize("found, broken, screen, log", [
    ("'OPEN' 'BHP'", "'OPEN' 'XXX'", "Invalid producer control type", "INVALID PRODUCER CONTROL TYPE."),
    ("'OPEN' 'RATE'", "'OPEN' 'RESV'", "Invalid injector control type", "INVALID INJECTOR CONTROL TYPE.")])
def test_a_control_that_is_not_known_stops_the_run(tmp_path, found, broken, screen, log):
    result = run(tmp_path, small_deck.deck(schedule=small_deck.SCHEDULE.replace(found, broken)), timeout=TIMEOUT)
    assert result.status == 1
    assert screen in result.console
    assert log in result.log


# --- the initial state and the pressure solve -------------------------------------------------------------


def test_an_equilibrium_that_does_not_settle_stops_the_run(tmp_path):
    """Oil that grows denser with depth faster than a step of the column can follow."""
    props = small_deck.PROPS.replace("300  1.05 2.85\n800  1.02 2.99\n8000 1.01 3\n", "300 1.0 3\n8000 0.0001 3\n")
    props = props.replace("53 64 0.0624", "5300 64 0.0624")
    stops_on(tmp_path, "Initialization Failed:", "Check Capillary-Density-OWC/OGC Data.", "Oil Pressure: ",
             "Wat Pressure: ", "Gas Pressure: ", props=props, solution="SOLUTION\nEQUIL\n5000 3000 5100 0 4000 /\n")


def stiff(runspec, cells, solver):
    """A closed bed of rock and fluids that do not give way at all: its pressure is anybody's."""
    return {"runspec": small_deck.RUNSPEC.replace("5 5 1", runspec),
            "grid": small_deck.GRID.replace("25*", f"{cells}*"),
            "props": small_deck.PROPS.replace("1.05 2.85", "1.0 3").replace("1.02 2.99", "1.0 3")
                                     .replace("1.01 3\n", "1.0 3\n").replace("0.000003", "0").replace("0.000001", "0"),
            "solution": small_deck.SOLUTION.replace("25*", f"{cells}*"),
            "schedule": "SCHEDULE\nTSTEP\n30 /\nEND\n",
            "options": kvr_run.options(method="IMPES", solver=solver)}


def test_a_singular_system_of_the_dense_solver_is_left_as_a_file(tmp_path):
    stops_on(tmp_path, "ERROR OCCURS IN SOLVING PRESSURES.", " ERROR  :: DGESV SOLVER - MATRIX MEY BE ERRORNOUS",
             "           GENERATE MATRIX AT PMATRIX FOLDER, PLEASE CHECK", **stiff("2 1 1", 2, "DGESV"))
    assert list(tmp_path.glob("PMatrix_T_*_ite_*.xls"))


def test_a_singular_system_of_the_plain_elimination_says_so(tmp_path):
    stops_on(tmp_path, "LINEAR_SOLVE FAILED", "IT IS HIGHLY PROBABLE THAT THE MATRIX IS SINGULAR.",
             **stiff("27 1 1", 27, "SGAUSS"))


def test_a_run_whose_steps_are_cut_to_nothing_again_and_again_stops(tmp_path):
    """Rock that grows without bound as pressure falls cannot be balanced by any step."""
    stops_on(tmp_path, "ERROR :: TIME STEP HAS VANISHED, PRESSURE CANNOT BE SOLVED",
             props=small_deck.PROPS.replace("3000 0.000001", "3000 -0.01"),
             options=kvr_run.options(lines=20, solver="DGESV", extra="STEPCTRL\nNo /\n"))


def test_a_fully_implicit_run_that_starts_without_pressure_stops(tmp_path):
    stops_on(tmp_path, "ERROR :: FULLY IMPLICIT METHOD NEEDS PRESSURES ABOVE 0, GRID 1",
             solution=small_deck.SOLUTION.replace("25*3000", "0 24*3000"), options=kvr_run.options(method="FIM"))


def test_a_longest_step_too_short_to_move_the_clock_is_reset(tmp_path):
    options = kvr_run.options(lines=20, solver="DGESV", extra="MAXDT\n1e-300 /\n")
    result = kvr_run.finished_normally(run(tmp_path, small_deck.deck(options=options), timeout=TIMEOUT))
    assert "WARNING :: Maximum Constraint Tstep is less than zero" in result.console
