"""Matches of small models: what a user is told, what is left behind, and what a broken file or a killed run leads to."""

import os
import random
import re
import signal
import subprocess
import time

import numpy
import pytest

import kvr_run
import small_deck
from kvr_run import finished_normally, run
from named_run import run_named

WELLS = small_deck.WELLS.replace("'PROD' 'OPEN' 'BHP' 5* 2000", "'PROD' 'OPEN' 'LRAT' 3* 900 1* 500").replace(
    "'RATE' 50 1* 9000", "'BHP' 2* 4000")
SCHEDULE = f"SCHEDULE\n{WELLS}TSTEP\n12*30 /\nEND\n"
OBSERVED = "WELL_OBSERVED.DATA"
KILLS = int(os.environ.get("MATCH_KILLS", "5"))
TABLES = ("KVR_HM_ObjFnc.out", "KVR_HM_ObjFnc_WCT_Abs.out", "KVR_Inv_FinalObsCalWCT.out", "KVR_Inv_InitObsCalWCT.out",
          "KVR_Inv_FinalK.out", "KVR_Inv_IncrementK.out", "HM_Perm_Latest.DATA", "KVR_Summary.csv")


def options(iterations=3, criteria="0.1 1.0", weights="1.0 0.5", extra="", mode="TRAVEL LSQR"):
    return kvr_run.options(lines=100, solver="DGESV",
                           extra=f"DOINV\n{mode} {iterations} /\nSNSTIMWT\n{weights} /\nMISFCRIT\n{criteria} /\n{extra}")


def permeability(factor=1.0, diagonal=1.0):
    """Constant, but for the diagonal between the wells."""
    values = numpy.full((5, 5), 100.0 * factor)
    for n in range(5):
        values[n, n] *= diagonal
    return " ".join(f"{value:g}" for value in values.ravel())


def deck(section, field=None, schedule=SCHEDULE):
    grid = small_deck.GRID.replace("PERMX\n25*100", f"PERMX\n{field or '25*100'}")
    return small_deck.deck(grid=grid, schedule=schedule, options=section)


def histories(folder, section):
    """What the wells of the true model do: its diagonal is four times as permeable."""
    finished_normally(run(folder, deck(section, permeability(diagonal=4.0))))
    rows = summary(folder)
    times = [30.0 * (n + 1) for n in range(12)]
    text = "WNAME TIME WOPR WWPR WBHP WWCT\n"
    for day in times:
        oil, water, bhp = (numpy.interp(day, rows["TIME"], rows[f"{name}:PROD"]) for name in ("WOPR", "WWPR", "WBHP"))
        text += f"PROD {day:g} {oil:.10g} {water:.10g} {bhp:.10g} {water / (oil + water):.10g}\n"
    return text


@pytest.fixture(scope="module")
def observed(tmp_path_factory):
    return histories(tmp_path_factory.mktemp("truth"), kvr_run.options(lines=100, solver="DGESV"))


def summary(folder, name="KVR_Summary.csv"):
    lines = (folder / name).read_text().splitlines()
    names = lines[0].split(",")
    keep = [n for n, column in enumerate(names) if column != "DATE"]
    values = numpy.array([[float(line.split(",")[n]) for n in keep] for line in lines[2:]])
    return {names[n]: values[:, i] for i, n in enumerate(keep)}


def misfits(folder, name="KVR_HM_ObjFnc.out"):
    lines = (folder / name).read_text().splitlines()
    assert lines[0] == " Iteration   Traveltime RMS error   Total RMS error"
    return numpy.array([[float(word) for word in line.split()] for line in lines[2:]])


def match(folder, text, section=None, **others):
    return run(folder, deck(section or options()), files={OBSERVED: text}, **others)


def told_runs(result):
    return [line for line in result.console.splitlines() if line.startswith("Match, run ")]


def test_a_match_comes_closer_run_by_run(tmp_path, observed):
    result = finished_normally(match(tmp_path, observed, options(iterations=5)))
    rows = misfits(tmp_path)
    assert rows[0, 2] == 1.0
    assert (numpy.diff(rows[:, 2]) <= 0.0).all(), "no kept run is worse than the one before"
    assert rows[-1, 2] < 0.5
    assert len([line for line in told_runs(result) if "::" not in line]) == len(rows)
    for name in TABLES:
        assert (tmp_path / name).stat().st_size > 0, name
    assert not (tmp_path / "KVR_HM_Resume.bin").exists()


ADJOINTS = "HMPRIOR\n1 /\nSNSFORM\nADJOINT ADJOINT /\n"


def test_the_most_probable_field_comes_closer_to_the_histories(tmp_path, observed):
    finished_normally(match(tmp_path, observed, options(iterations=5, extra="HMPRIOR\n1 /\n")))
    judged = misfits(tmp_path)[:, 2]
    assert (numpy.diff(judged) <= 0.0).all()
    assert judged[-1] < 0.5


def test_adjoints_bring_the_most_probable_field_closer_to_the_truth(tmp_path, observed):
    """Rows by lines find one of many fields of 25 cells with these histories: which one, the digits of a run decide."""
    finished_normally(match(tmp_path, observed, options(iterations=10, extra=ADJOINTS)))
    text = (tmp_path / "HM_Perm_Latest.DATA").read_text()
    found = numpy.log(numpy.array(re.search(r"PERMX\n([^/]*)/", text)[1].split(), dtype=float)).reshape(5, 5)
    truth = numpy.eye(5)
    assert numpy.corrcoef(found.ravel(), truth.ravel())[0, 1] > 0.3, "the diagonal of the truth is more permeable"


@pytest.mark.parametrize("method, left", [("STREAMLINE", 0.2), ("FIM", 0.01)])
def test_adjoints_come_close_to_what_lines_did_and_closer_to_what_balances_did(tmp_path, method, left):
    steps = "MAXDT\n5 /\nHMERROR\n0.0005 0.05 1 /\n"
    (tmp_path / "truth").mkdir()
    text = histories(tmp_path / "truth", kvr_run.options(lines=100, solver="DGESV", extra=steps).replace("STREAMLINE", method, 1))
    finished_normally(match(tmp_path, text, options(iterations=6, extra=ADJOINTS + steps).replace("STREAMLINE", method, 1)))
    judged = misfits(tmp_path)[:, 2]
    assert (numpy.diff(judged) <= 0.0).all()
    assert judged[-1] < left
    assert not list(tmp_path.glob("HM_SENSTEMP*")), "no line is asked"


def test_adjoints_give_rows_of_any_match(tmp_path, observed):
    section = options(iterations=3, criteria="0.1 1e6", extra="SNSFORM\nADJOINT COUPLED /\nOBJINV\n1 0 /\nMAXDT\n5 /\n")
    finished_normally(match(tmp_path, observed, section))
    rows = misfits(tmp_path)
    assert rows[-1, 1] < 0.5 * rows[0, 1], "of the shifts"
    for kind in ("GTTI", "GBHPI"):
        assert len(list(tmp_path.glob(f"HM_SENSTEMP_{kind}.K*"))) == 13, "twelve reports and their sum"


@pytest.mark.parametrize("word, column", [("CUT", 3), ("GOR", 4), ("AUTO", 3)])
def test_the_curve_that_is_asked_for_is_matched(tmp_path, word, column):
    rows = [f"PROD {30 * n} {400 - n} {n} {0.02 * n:g} {1.5 + 0.1 * n:g}" for n in range(1, 13)]
    text = "WNAME TIME WOPR WWPR WWCT WGOR\n" + "\n".join(rows) + "\n"
    finished_normally(match(tmp_path, text, options(iterations=1, extra=f"HMDATA\n{word} /\n")))
    matched = [float(line.split()[2]) for line in (tmp_path / "KVR_Inv_InitObsCalWCT.out").read_text().splitlines()]
    given = [float(row.split()[column + 1]) for row in rows]
    assert numpy.allclose(matched, given, rtol=1e-6)


def test_a_match_of_a_named_deck_has_its_name(tmp_path, observed):
    (tmp_path / OBSERVED).write_text(observed)
    (tmp_path / "PILOT.DATA").write_text(deck(options(iterations=3)))
    ended = run_named("PILOT.DATA", folder=tmp_path)
    assert ended.returncode == 0, ended.console[-2000:]
    rows = misfits(tmp_path, "PILOT_HM_ObjFnc.out")
    assert rows[-1, 2] < 0.8
    assert "HM_SENSTEMP" not in ended.console, "every file of sensitivities is found"
    assert (tmp_path / "PILOT_HM_Perm_Latest.DATA").exists()


def test_one_iteration_is_one_run_and_one_update(tmp_path, observed):
    result = finished_normally(match(tmp_path, observed, options(iterations=1)))
    assert len(told_runs(result)) == 1
    assert result.console.count("Calling Minimization Module") == 1
    assert "UPDATE WELL SCHEDULE" not in result.console, "the run is not put back to its start"
    assert (tmp_path / "HM_ITE_0001").exists()


def test_the_last_update_can_be_run_too(tmp_path, observed):
    result = finished_normally(match(tmp_path, observed, options(iterations=1, extra="HMSAFE\n0 Yes /\n")))
    assert len(told_runs(result)) == 2
    assert result.console.count("Calling Minimization Module") == 1
    assert result.console.count("-         UPDATE WELL SCHEDULE         -") == 1


def test_a_matched_model_is_left_alone(tmp_path, observed):
    result = finished_normally(match(tmp_path, observed, options(criteria="1e6 1e6")))
    assert "All the sensitivity becomes ZERO." in result.console
    assert " History-Matched! " in result.console
    assert "History-Matched! - Press any key to terminate..." in result.console
    values = re.search(r"PERMX\n([^/]*)/", (tmp_path / "HM_Perm_Latest.DATA").read_text())[1].split()
    assert [float(value) for value in values] == [100.0] * 25
    assert len(told_runs(result)) == 1


def test_what_the_model_is_early_by_takes_permeability_away(tmp_path, observed):
    """Observed curves 60 days later than those of the first guess."""
    finished_normally(match(tmp_path, observed, options(iterations=1)))
    lines = (tmp_path / "KVR_Inv_InitObsCalWCT.out").read_text().splitlines()
    late = "WNAME TIME WWCT\n" + "".join(f"PROD {float(day) + 60:g} {cut}\n" for _, day, _, cut in map(str.split, lines))
    (tmp_path / "late").mkdir()
    result = finished_normally(match(tmp_path / "late", late, options(iterations=1)))
    assert float(re.search(r" GTTI misfit : (\S+)", result.console)[1]) == pytest.approx(60.0, abs=10.0)
    values = re.search(r"PERMX\n([^/]*)/", (tmp_path / "late" / "HM_Perm_Latest.DATA").read_text())[1].split()
    change = numpy.log(numpy.array(values, dtype=float) / 100.0)
    assert change.sum() < 0.0


def test_bounds_hold(tmp_path, observed):
    finished_normally(match(tmp_path, observed, options(iterations=3, extra="MAXPARAM\n130 /\nMINPARAM\n80 /\n")))
    values = re.search(r"PERMX\n([^/]*)/", (tmp_path / "HM_Perm_Latest.DATA").read_text())[1].split()
    values = numpy.array(values, dtype=float)
    assert values.max() <= 130.0 and values.min() >= 80.0
    assert values.max() > 100.0 or values.min() < 100.0


def contents(folder):
    return {name: (folder / name).read_bytes() for name in TABLES}


@pytest.mark.parametrize("extra", ["", "HMPRIOR\n1 /\n", ADJOINTS], ids=["rows alone", "most probable field", "adjoints"])
def test_a_killed_match_goes_on_and_ends_with_the_same_bits(tmp_path, observed, extra):
    section = options(iterations=6, criteria="0 0", extra=extra)
    whole = tmp_path / "whole"
    whole.mkdir()
    start = time.monotonic()
    finished_normally(match(whole, observed, section))
    seconds = time.monotonic() - start
    resumed = 0
    moments = random.Random(7)
    for turn in range(KILLS):
        folder = tmp_path / f"killed_{turn}"
        folder.mkdir()
        (folder / "ECLIPSE.DATA").write_text(deck(section))
        (folder / OBSERVED).write_text(observed)
        with open(folder / "console", "w") as console:
            process = subprocess.Popen([kvr_run.PROGRAM], cwd=folder, stdin=subprocess.DEVNULL, stdout=console)
            try:
                process.wait(seconds * moments.uniform(0.1, 0.95))
            except subprocess.TimeoutExpired:
                process.send_signal(signal.SIGKILL)
                process.wait()
        result = finished_normally(run(folder))
        resumed += "The match goes on behind" in result.console
        assert contents(folder) == contents(whole), turn
    print(f"{resumed} of {KILLS} killed matches went on from their file")
    assert resumed >= 1


def test_a_match_of_other_data_does_not_go_on(tmp_path, observed):
    first = finished_normally(match(tmp_path, observed, options(iterations=1)))
    assert "KVR_HM_Resume.bin" not in first.console
    (tmp_path / "KVR_HM_Resume.bin").write_bytes(b"KVRMATCH0001" + bytes(500))
    result = finished_normally(match(tmp_path, observed, options(iterations=1)))
    assert "The match in KVR_HM_Resume.bin is of another deck or other data: a new one begins" in result.console


def test_a_killed_match_of_changed_histories_begins_anew(tmp_path, observed):
    section = options(iterations=6, criteria="0 0")
    (tmp_path / "ECLIPSE.DATA").write_text(deck(section))
    (tmp_path / OBSERVED).write_text(observed)
    with open(tmp_path / "killed_console", "w") as console:
        process = subprocess.Popen([kvr_run.PROGRAM], cwd=tmp_path, stdin=subprocess.DEVNULL, stdout=console)
        for _ in range(3000):
            if (tmp_path / "KVR_HM_Resume.bin").exists() or process.poll() is not None:
                break
            time.sleep(0.01)
        process.kill()
        process.wait()
    assert (tmp_path / "KVR_HM_Resume.bin").exists()
    head, *rows = observed.splitlines()
    name, day, *values = rows[-1].split()
    rows[-1] = " ".join([name, day, *values[:-1], f"{float(values[-1]) * 0.999:.10g}"])
    (tmp_path / OBSERVED).write_text("\n".join([head, *rows]) + "\n")
    result = finished_normally(run(tmp_path))
    assert "The match in KVR_HM_Resume.bin is of another deck or other data: a new one begins" in result.console


def test_a_match_by_lines_alone_has_its_curves(tmp_path, observed):
    section = options(iterations=2).replace("EXPLICIT IRR", "ANALYTIC IRR")
    result = finished_normally(match(tmp_path, observed, section))
    assert len(told_runs(result)) >= 2
    rows = (tmp_path / "KVR_Inv_InitObsCalWCT.out").read_text().splitlines()
    calculated = numpy.array([float(line.split()[-1]) for line in rows])
    assert len(rows) == 12 and calculated[-1] > 0.5 and (numpy.diff(calculated) > -0.01).all()


def test_the_file_of_an_outside_deck_follows_the_field(tmp_path, observed):
    text = deck(options(iterations=2, extra="PERMFILE\nPERM.INC FIRST.INC /\n"))
    text = text.replace("PERMX\n25*100 /", "INCLUDE\n'PERM.INC' /\nMULTIPLY\nPERMX 2 /\n/")
    files = {OBSERVED: observed, "PERM.INC": "PERMX\n25*77 /\n", "FIRST.INC": "-- half\nPERMX\n25*50 /\nNTG\n25*1 /\n"}
    result = finished_normally(run(tmp_path, text, files=files))
    assert "PERMFILE :: the deck is read again" in result.console
    written = (tmp_path / "PERM.INC").read_text()
    assert written.startswith("-- half\nPERMX") and written.endswith("NTG\n25*1 /\n")
    outside = numpy.array(re.search(r"PERMX\n([^/]*)/", written)[1].split(), dtype=float)
    inside = numpy.array(re.search(r"PERMX\n([^/]*)/", (tmp_path / "HM_Perm_Latest.DATA").read_text())[1].split(), dtype=float)
    assert numpy.abs(outside - 50.0).max() > 0.0
    assert inside == pytest.approx(2.0 * outside, rel=1e-6), "MULTIPLY of the deck acts once"


@pytest.mark.parametrize("method", ["FIM", "IMPES"])
def test_methods_without_lines_are_refused(tmp_path, observed, method):
    section = options().replace("STREAMLINE", method, 1)
    result = run(tmp_path, deck(section), files={OBSERVED: observed})
    assert result.status == 1
    assert "history matching (DOINV) without streamlines (FDMETHOD)" in result.console


HEAD = "WNAME TIME WOPR WWPR WBHP WWCT\n"
BROKEN = {
    "missing": (None, "ERROR: File Open Error"),
    "empty": ("", "ERROR :: During Matching, could not extract Observed Data. "),
    "no name": ("TIME WOPR\n30 5\n", "ERROR :: Observed Data Format is Suspicious, Check WELL_OBSERVED.DATA "),
    "no time": ("WNAME WOPR\nPROD 5\n", "ERROR :: Observed Data Format is Suspicious, Check WELL_OBSERVED.DATA "),
    "a column twice": ("WNAME TIME WWCT WWCT\nPROD 30 0 0\n",
                       "ERROR :: Observed Data Format is Suspicious, Check WELL_OBSERVED.DATA "),
    "a short row": (HEAD + "PROD 30 1 1 1 0\nPROD 60 1 1 1\n",
                    "ERROR :: Observed Data Format is Suspicious, Check WELL_OBSERVED.DATA "),
    "a long row": (HEAD + "PROD 30 1 1 1 0 7\n", "ERROR :: Observed Data Format is Suspicious, Check WELL_OBSERVED.DATA "),
    "a word": (HEAD + "PROD 30 1 one 1 0\n", "ERROR :: During Matching, could not extract Observed Data. "),
    "not a number": (HEAD + "PROD 30 1 NaN 1 0\n", "ERROR :: During Matching, could not extract Observed Data. "),
    "infinite": (HEAD + "PROD 30 1 1e999 1 0\n", "ERROR :: During Matching, could not extract Observed Data. "),
    "time below 0": (HEAD + "PROD -30 1 1 1 0\n", "ERROR :: Observed Data Format is Suspicious, Check WELL_OBSERVED.DATA "),
    "head alone": (HEAD, "ERROR :: WELL_OBSERVED.DATA HAS NO PRODUCER OF THE RUN WITH TWO POINTS OR MORE"),
    "one point": (HEAD + "PROD 30 1 1 1 0\n", "ERROR :: WELL_OBSERVED.DATA HAS NO PRODUCER OF THE RUN WITH TWO POINTS OR MORE"),
    "other wells": (HEAD + "P7 30 1 1 1 0\nP7 60 1 1 1 0\n",
                    "ERROR :: WELL_OBSERVED.DATA HAS NO PRODUCER OF THE RUN WITH TWO POINTS OR MORE"),
    "binary": ("\0\1\2\3" * 50, "ERROR :: Observed Data Format is Suspicious, Check WELL_OBSERVED.DATA "),
}


@pytest.mark.parametrize("name", sorted(BROKEN))
def test_broken_histories_stop_ahead_of_the_first_run(tmp_path, name):
    text, message = BROKEN[name]
    result = run(tmp_path, deck(options()), files={} if text is None else {OBSERVED: text})
    assert result.status == 1
    assert message in result.console
    assert "Saturation calculation" not in result.console, "nothing has been simulated"
    if name in ("a short row", "a long row", "a word", "not a number", "infinite", "time below 0"):
        line = 3 if name == "a short row" else 2
        assert f"{OBSERVED}, line {line}" in result.console


WARNED = {
    "times beyond the run": (lambda rows: rows + ["PROD 9000 1 99 2000 0.99"],
                             "WARNING :: Well PROD: 1 of 13 observed points are at times that the run does not reach"),
    "unsorted rows": (lambda rows: rows[::-1], "WARNING :: Times of well PROD do not rise, they are not sorted"),
    "an unknown column": (lambda rows: [row + " 3" for row in rows], "WARNING :: Column WXYZ is not known and is left out"),
    "cut above 1": (lambda rows: rows[:-1] + [rows[-1].rsplit(" ", 1)[0] + " 1.5"],
                    "WARNING :: Well PROD has a value below 0 or a water cut above 1"),
    "an injector": (lambda rows: rows + ["INJ 30 0 0 4000 0"], "WARNING :: INJ is no producer of the run, its rows are left out"),
}


@pytest.mark.parametrize("name", sorted(WARNED))
def test_odd_histories_are_told_and_leave_numbers(tmp_path, observed, name):
    change, message = WARNED[name]
    head, *rows = observed.splitlines()
    text = "\n".join([head + (" WXYZ" if name == "an unknown column" else "")] + change(rows)) + "\n"
    result = finished_normally(match(tmp_path, text, options(iterations=2)))
    assert message in result.console
    for table in TABLES:
        assert "nan" not in (tmp_path / table).read_text().lower(), table
