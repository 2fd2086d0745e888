"""Every ready option section of the guide, run as it stands on a small deck."""

import re

import numpy
import pytest

import small_deck
from kvr_run import REPOSITORY
from named_run import run_named, summary_of

PAGE = REPOSITORY / "docs" / "option-sections.md"


def sections():
    """Number -> all its blocks as one section."""
    parts = re.split(r"^### (\d+)\. ", PAGE.read_text(), flags=re.M)[1:]
    return {int(number): "".join(re.findall(r"^```\n(.*?)^```$", text, flags=re.M | re.S))
            for number, text in zip(parts[::2], parts[1::2])}


def stepped(console):
    """Steps of the schedule alone: none cut, none by the fully implicit method."""
    return " 0 cuts" in console


# Files that must be there, files that must not, and what else shows that the section acted.
EXPECTED = {
    1: (["CASE_Summary.csv"], ["CASE_TPlot_*", "CASE_Run_EndSwat.out", "CASE_Run_Tau*"], lambda text: "Method    IMPES" in text),
    2: (["CASE_Summary.csv"], [], lambda text: "Method    fully implicit" in text),
    3: (["CASE_TPlot_swat.plt", "CASE_Tplot_Static_kx.plt"], ["*Streamline_Time_*"], lambda text: "Method    streamlines" in text),
    4: (["CASE_Streamline_Time_30.plt", "CASE_Run_TauINJ.plt", "CASE_Run_PrdCxn.plt", "CASE_Run_RateAllocation.out"], [], stepped),
    5: (["CASE.EGRID", "CASE.INIT", "CASE.X0002", "CASE.SMSPEC", "CASE.S0002", "CASE.SLN0002"], ["CASE_TPlot_*"], stepped),
    6: (["CASE_Excl_Well.xls", "CASE_Excl_Grid_Sat.xls", "CASE_Excl_mbe.xls"], ["CASE_TPlot_*"], stepped),
    7: (["CASE_Summary.csv"], [], stepped),
    8: (["CASE_Summary.csv"], [], stepped),
    9: (["CASE_Summary.csv"], [], stepped),
    10: (["CASE_Smoothed_Kx.plt", "CASE_Smoothed_Poro.plt", "CASE_UPSCALED_PERM.DATA", "CASE_UPSCALED_POROSITY.DATA"], [], stepped),
}


def flood(section):
    return small_deck.deck(options=section)


def run_section(folder, number, section):
    (folder / "CASE.DATA").write_text(small_deck.gas_deck(section) if number == 2 else flood(section))
    ended = run_named("CASE", folder=folder)
    assert ended.returncode == 0, ended.console + ended.errors
    return ended


def test_the_page_has_ten_tasks_and_its_list_names_them():
    text = PAGE.read_text()
    assert sorted(sections()) == sorted(EXPECTED) == list(range(1, 11))
    for title in re.findall(r"^### (.*)$", text, flags=re.M):
        anchor = re.sub(r"[^a-z0-9 -]", "", title.lower()).replace(" ", "-")
        assert f"(#{anchor})" in text, title


@pytest.mark.parametrize("number", sorted(EXPECTED))
def test_a_ready_section_runs_as_it_stands_and_leaves_what_it_says(tmp_path, number):
    ended = run_section(tmp_path, number, sections()[number])
    assert re.search(r"^Warnings +: 0$", ended.console, flags=re.M), ended.console[-1500:]
    assert "NOT USED" not in ended.console
    there, absent, acted = EXPECTED[number]
    assert [mask for mask in there if not list(tmp_path.glob(mask))] == []
    assert [mask for mask in absent if list(tmp_path.glob(mask))] == []
    assert acted(ended.console), ended.console


def forecast_limit(folder):
    """Limit of the error of mobilities that the last step of a run was judged by."""
    log = (folder / "CASE_dbg.out").read_text()
    return float(re.findall(r"STEP CONTROL :: .*error of mobility \S+ \(limit (\S+)\)", log)[-1])


def test_the_sections_of_method_and_steps_give_the_same_flood(tmp_path):
    """Water injected, and oil within what the step and the method make of five cells."""
    totals = {}
    for number in (1, 4, 7, 8, 9):
        folder = tmp_path / str(number)
        folder.mkdir()
        run_section(folder, number, sections()[number])
        totals[number], _ = summary_of(folder / "CASE_Summary.csv")
    for summary in totals.values():
        assert summary["FWIT"][-1] == pytest.approx(50.0 * 60.0, rel=1e-6)
    oil = numpy.array([summary["FOPT"][-1] for summary in totals.values()])
    assert oil.max() / oil.min() < 1.01
    assert len(totals[9]["TIME"]) - 1 == 2, "the two steps of the deck"
    assert forecast_limit(tmp_path / "4") == 2.0 * forecast_limit(tmp_path / "7"), "half of the limit"
    assert len(totals[7]["TIME"]) >= len(totals[4]["TIME"]), "tighter limits never mean longer steps"
