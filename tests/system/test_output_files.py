"""The fixed file set and what its files hold."""

import os

import pytest

import kvr_run
import small_deck
import tecplot
from kvr_run import finished_normally, run

FIELD_FILES = ["poil", "swat", "soil"]
OBJECTIVES = ["BHP", "CMP", "GOR", "GPR", "OPR", "WCT", "WPR"]
EXPECTED = (
    [f"KVR_TPlot_{name}.plt" for name in FIELD_FILES + ["sgas", "Rs", "swatmp", "Well_Blk", "Well_Rate"]]
    + [f"KVR_TPlot_AllFlo_{phase}.plt" for phase in ("Gas", "Oil", "Wat")]
    + [f"KVR_TPlot_Out_{name}.plt" for name in ("Zmf", "mobg", "mobo", "mobt", "mobw", "velt", "velx", "vely", "velz")]
    + [f"KVR_TPlot_PcGFlo_{phase}_{kind}.plt" for phase in ("Gas", "Oil", "Wat") for kind in ("All", "Pll", "Trv")]
    + ["KVR_Tplot_Tracer.plt"]
    + [f"KVR_Run_{name}.out" for name in ("Recovery", "Production", "Wct", "Streamline", "IniSwat", "PermX",
                                          "PermY", "PermZ")]
    + [f"KVR_Excl_{name}.xls" for name in ("Grid_Prs", "Grid_Sat", "Well", "Well_Blk", "mbe", "mbec")]
    + ["KVR_HM_ObjFnc.out", "KVR_HM_ObjFnc_BETA.out", "KVR_HM_Perm_Change_Cum.plt", "KVR_HM_Perm_Change_Inc.plt",
       "KVR_HM_Perm_Hist.plt", "KVR_HM_Perm_Hist_Log.plt"]
    + [f"KVR_HM_ObjFnc_{name}{kind}.out" for name in OBJECTIVES for kind in ("", "_Abs")]
    + [f"KVR_Info_{name}.out" for name in ("aspect", "fstream", "general")]
    + [f"KVR_Inv_{name}.out" for name in (
        "FinalBHP", "FinalK", "FinalObsCalBHP", "FinalObsCalWCT", "FinalTTime", "IncrementK", "InitBHP",
        "InitObsCalBHP", "InitObsCalWCT", "InitTTime", "InitialK", "RMSError", "RMSError_BHP")]
    + ["KVR_dbg.out", "KVR_ECLMtricTemporaty.tmp", "KVR_ECLFieldTemporaty.tmp", "0EraseData.bat"])


def test_every_file_of_the_set_exists_after_a_run(tmp_path):
    finished_normally(run(tmp_path, small_deck.deck()))
    missing = [name for name in EXPECTED if not (tmp_path / name).exists()]
    assert missing == []


def test_the_clean_up_file_keeps_its_lines(tmp_path):
    finished_normally(run(tmp_path, small_deck.deck()))
    lines = (tmp_path / "0EraseData.bat").read_text().splitlines()
    assert lines[0] == "@echo off"
    assert "del del HM_ITE_0*" in lines
    assert "del *.SMSPEC" in lines


def test_the_log_begins_with_its_version_line(tmp_path):
    result = finished_normally(run(tmp_path, small_deck.deck()))
    assert "LAST UPDATE :   **/**/2012" in result.log.splitlines()[0]


def test_a_second_run_leaves_nothing_of_the_first(tmp_path):
    finished_normally(run(tmp_path, small_deck.deck()))
    for name in EXPECTED:
        (tmp_path / name).write_text("residue\n" * 20000)
    finished_normally(run(tmp_path, small_deck.deck()))
    assert all("residue" not in (tmp_path / name).read_text() for name in EXPECTED)


def test_a_file_that_cannot_be_created_stops_the_run(tmp_path):
    (tmp_path / "KVR_Run_Recovery.out").mkdir()
    result = run(tmp_path, small_deck.deck())
    assert result.status == 1
    assert "Cannot create file for output. Check Directry path." in result.console


@pytest.mark.skipif(os.geteuid() == 0, reason="the super-user may write anywhere")
def test_a_folder_that_cannot_be_written_stops_the_run(tmp_path):
    (tmp_path / "ECLIPSE.DATA").write_text(small_deck.deck())
    tmp_path.chmod(0o555)
    try:
        result = run(tmp_path)
    finally:
        tmp_path.chmod(0o755)
    assert result.status == 1
    assert "Cannot create file for output. Check Directry path." in result.console


def test_field_files_hold_a_full_zone_for_time_zero_and_every_report(tmp_path):
    result = finished_normally(run(tmp_path, small_deck.deck(options=kvr_run.options(lines=20, plots=1))))
    for name in FIELD_FILES:
        zones = tecplot.read_zones(result.folder / f"KVR_TPlot_{name}.plt")
        assert [zone.time for zone in zones] == [0.0, 30.0, 60.0]
        assert all(zone.cells == (5, 5, 1) for zone in zones)
    saturation = tecplot.read_zones(result.folder / "KVR_TPlot_swat.plt")
    oil = tecplot.read_zones(result.folder / "KVR_TPlot_soil.plt")
    for water_zone, oil_zone in zip(saturation, oil):
        assert abs(water_zone.values[0] + oil_zone.values[0] - 1.0).max() < 1e-8
    # 3030 rb of water into 7124 rb of pores: a single upwind cell holds 0.39, the exact profile 0.49 on average.
    assert 0.39 < saturation[-1].values[0][0] < 0.49, "the injector cell is swept"


def test_gas_files_stay_without_zones_in_a_run_without_gas(tmp_path):
    result = finished_normally(run(tmp_path, small_deck.deck(options=kvr_run.options(lines=20, plots=1))))
    assert result.read("KVR_TPlot_sgas.plt") == ""
    assert result.read("KVR_TPlot_Rs.plt") == ""
