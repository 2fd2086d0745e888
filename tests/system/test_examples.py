"""The shipped examples: they run in seconds, keep every amount, and agree with the fully implicit method."""

import os
import pathlib
import re
import resource
import shutil
import subprocess

import numpy
import pytest

import kvr_run
from kvr_run import REPOSITORY
from named_run import run_named, summary_of

EXAMPLES = REPOSITORY / "examples"
DECKS = {"five_spot": "ECLIPSE", "live_oil": "LIVE_OIL", "faults": "FAULTS"}
# Shown by the demonstration too; what their answers are held to stands in tests of their kind.
FURTHER = {"co2_storage": "CO2_STORAGE", "rich_gas": "RICH_GAS", "water_and_gas": "WATER_AND_GAS",
           "dual_porosity": "DUAL_POROSITY"}
MOST_SECONDS = 20.0
LEAST_BALANCE = 1e-6  # of what is in place
FIM_STEP = 10.0  # days
# A program with sanitizers takes fifty times as long: it reads the examples and takes their first steps.
SANITIZED = os.environ.get("KVR_SANITIZED") == "1"
whole_run = pytest.mark.skipif(SANITIZED, reason="whole runs are held in the release build")


class Example:
    def __init__(self, folder, name, method=None):
        self.case = DECKS[name]
        shutil.copytree(EXAMPLES / name, folder)
        deck = folder / f"{self.case}.DATA"
        text = deck.read_text()
        self.metric = "\nMETRIC\n" in text
        if method is not None:
            text = re.sub(r"^MAXDT\n15 /\n", "", text, flags=re.M)
            text = text.replace("FDMETHOD\nSTREAMLINE", f"FDMETHOD\n{method}\nMAXDT\n{FIM_STEP} /")
            assert method in text
        if SANITIZED:
            text = re.sub(r"^TSTEP\n[0-9.*]+ /", "TSTEP\n10 /", text, flags=re.M)
        deck.write_text(text)
        before = resource.getrusage(resource.RUSAGE_CHILDREN).ru_utime
        self.ended = run_named(deck.name, "--threads", 1, folder=folder)
        self.seconds = resource.getrusage(resource.RUSAGE_CHILDREN).ru_utime - before
        assert self.ended.returncode == 0, self.ended.console[-2000:] + self.ended.errors
        self.folder = folder
        self.summary, self.units = summary_of(folder / f"{self.case}_Summary.csv")

    def at(self, name, days):
        return numpy.interp(days, self.summary["TIME"], self.summary[name])


@pytest.fixture(scope="module", params=sorted(DECKS))
def example(request, tmp_path_factory):
    folder = tmp_path_factory.mktemp(request.param)
    return Example(folder / "lines", request.param)


@pytest.fixture(scope="module")
def runs_of_live_oil(tmp_path_factory):
    folder = tmp_path_factory.mktemp("gas")
    return Example(folder / "lines", "live_oil"), Example(folder / "implicit", "live_oil", "FIM")


def test_an_example_runs_in_seconds_without_a_warning(example):
    assert SANITIZED or example.seconds < MOST_SECONDS
    assert re.search(r"^Warnings +: 0$", example.ended.console, flags=re.M)
    assert "Method    streamlines" in example.ended.console and "NOT USED" not in example.ended.console


def test_an_example_keeps_every_amount(example):
    """In place at the end is what was there less what the tables say has gone through the wells; gas dissolved included."""
    summary = example.summary
    for phase in "OWG" if "live" in example.ended.console else "OW":
        start = summary[f"F{phase}IP"][0]
        left = start - summary[f"F{phase}PT"][-1] + summary[f"F{phase}IT"][-1]
        assert abs(summary[f"F{phase}IP"][-1] - left) < LEAST_BALANCE * start, phase


@whole_run
def test_an_example_agrees_with_the_fully_implicit_method(example, tmp_path):
    """Largest differences met: oil 0.6 %, water cut 0.013 in the mean, pressure 0.7 %."""
    end = example.summary["TIME"][-1]
    days = numpy.linspace(0.05 * end, end, 60)
    implicit = Example(tmp_path / "implicit", next(name for name, case in DECKS.items() if case == example.case), "FIM")
    assert example.at("FOPT", days) == pytest.approx(implicit.at("FOPT", days), rel=0.015)
    assert numpy.abs(example.at("FWCT", days) - implicit.at("FWCT", days)).mean() < 0.02
    assert numpy.abs(example.at("FPR", days) / implicit.at("FPR", days) - 1.0).max() < 0.02


@whole_run
def test_gas_comes_when_the_fully_implicit_method_says(runs_of_live_oil):
    lines, implicit = runs_of_live_oil
    for well in ("P1", "P2", "P3"):
        first = [run.summary["TIME"][numpy.argmax(run.summary[f"WGOR:{well}"] > 1.5)] for run in (lines, implicit)]
        assert 300.0 < first[1] < 1800.0 and abs(first[0] - first[1]) < 45.0, well
    assert numpy.abs(lines.at("FGPT", 2000.0) / implicit.at("FGPT", 2000.0) - 1.0) < 0.02


def test_the_metric_example_speaks_metric(tmp_path):
    run = Example(tmp_path / "run", "faults")
    assert (run.units["FOPR"], run.units["FPR"], run.units["WBHP:P1"]) == ("SM3/DAY", "BARSA", "BARSA")
    assert run.summary["WWIR:I1"][1:] == pytest.approx(205.0, rel=1e-6), "the rate that the deck asks for"
    assert run.summary["FPR"][0] == pytest.approx(190.0, abs=6.0), "the pressure of the deck, at another depth"


def test_the_faults_of_the_example_are_where_their_throw_is(tmp_path):
    made = subprocess.run([REPOSITORY / "tools" / "make_example_faults"], capture_output=True, text=True, check=True).stdout
    assert made == (EXAMPLES / "faults" / "GRID.INC").read_text(), "run tools/make_example_faults again"
    words = made.split("ZCORN\n")[1].split("/")[0].split()
    depths = numpy.concatenate([numpy.full(int(word.split("*")[0]) if "*" in word else 1, float(word.split("*")[-1])) for word in words])
    corners = depths.reshape(8, 32, 48)
    apart_x = (corners[:, :, 1:-1:2] != corners[:, :, 2::2]).any(axis=0)
    apart_y = (corners[:, 1:-1:2, :] != corners[:, 2::2, :]).any(axis=0)
    assert sorted(set(numpy.nonzero(apart_x)[1] + 1)) == [9] and apart_x[:, 8].sum() == 31, "WEST alone, but for its first edge"
    assert sorted(set(numpy.nonzero(apart_y)[0] + 1)) == [10] and apart_y[9].sum() == 2 * 12 - 1, "NORTH alone, but for its tip"
    assert (corners[0, -1, 18] - corners[0, -1, 17]) == pytest.approx(12.0), "throw of WEST at the last row"
    assert (corners[0, 20, -1] - corners[0, 19, -1]) == pytest.approx(6.0), "throw of NORTH at the last column"


@whole_run
def test_without_its_faults_tight_the_example_floods_otherwise(tmp_path):
    """MULTFLT acts: an open fault changes where water goes."""
    tight = Example(tmp_path / "tight", "faults")
    (tmp_path / "open").mkdir()
    shutil.copy(EXAMPLES / "faults" / "GRID.INC", tmp_path / "open")
    text = (EXAMPLES / "faults" / "FAULTS.DATA").read_text()
    (tmp_path / "open" / "FAULTS.DATA").write_text(text.replace("MULTFLT\nWEST  0.5 /\nNORTH 0.05 /\n/\n", ""))
    assert run_named("FAULTS", "--threads", 1, folder=tmp_path / "open").returncode == 0
    open_faults, _ = summary_of(tmp_path / "open" / "FAULTS_Summary.csv")
    assert abs(tight.summary["WWCT:P3"].max() - open_faults["WWCT:P3"].max()) > 0.02


@whole_run
@pytest.mark.parametrize("name", sorted(FURTHER))
def test_a_further_example_runs_to_its_end(tmp_path, name):
    ended = run_named(pathlib.Path(shutil.copy(EXAMPLES / name / f"{FURTHER[name]}.DATA", tmp_path)).name, "--threads", 1, folder=tmp_path)
    assert ended.returncode == 0, ended.console[-2000:] + ended.errors
    assert re.search(r"^Run +: finished$", ended.console, flags=re.M)
    errors = [float(share) for share in re.findall(r"balance error (\S+) %", ended.console)]
    assert errors and max(errors) < 0.1


def test_the_demo_runs_every_example_and_draws_it():
    """The list of the demo; building and running it is for a user."""
    text = (REPOSITORY / "tools" / "demo").read_text()
    assert re.findall(r'^    "(\w+):(\w+):', text, flags=re.M) == [*DECKS.items(), *FURTHER.items()]
    page = (REPOSITORY / "docs" / "examples.md").read_text()
    assert all(f"examples/{folder}/{deck}.DATA" in page for folder, deck in DECKS.items())
