"""The forms of a deck: three files give the same bits as one, and what a folder lacks is told; an .afi file with the results
of its run beside it is traced."""

import re

import pytest

import binary_blocks
import deck_forms
import dual_deck
import kvr_run
import left_results
import small_deck
import three_files
from named_run import run_named, summary_of

needs_public_decks = pytest.mark.skipif(not kvr_run.PUBLIC_DECKS.exists(),
                                        reason="the folder of public decks is not beside the checkout")
CHANGE = small_deck.SCHEDULE.replace("TSTEP\n2*30 /\n", "TSTEP\n2*30 /\nWCONPROD\n'PROD' 'OPEN' 'BHP' 5* 1800 /\n/\nTSTEP\n2*30 /\n")


def same_bits(deck, folder, change=deck_forms.with_all_output):
    ends, count, differ = deck_forms.both_forms(kvr_run.PROGRAM, deck, folder, change)
    assert ends == [0, 0]
    assert count > 40 and differ == []


@pytest.mark.parametrize("text", [
    pytest.param(small_deck.deck(schedule=CHANGE), id="two phases"),
    pytest.param(small_deck.gas_deck(kvr_run.options(method="IMPES", plots=1)), id="gas"),
    pytest.param(small_deck.deck(schedule=CHANGE, options=kvr_run.options(method="FIM")), id="fully implicit"),
    pytest.param(dual_deck.dual(4, 4, 20, "5*20", 0.01) + kvr_run.options(method="FIM", plots=1), id="two continua"),
    pytest.param("TITLE\nGRID of a small field\n" + small_deck.deck(), id="a title that begins like a section"),
    pytest.param(small_deck.deck(grid=small_deck.GRID + "SKIP\nPROPS\nENDSKIP\n"), id="a skipped section word")])
def test_three_files_give_the_bits_of_one(tmp_path, text):
    deck = tmp_path / "OWN.DATA"
    deck.write_text(text)
    same_bits(deck, tmp_path / "run")


FRACTURE_TABLE = "0 0 1 0\n1 1 0 0\n/\n"


def with_named_continua(text):
    """The shape factor, the porosity of the matrix and the tables by the names of the two continua."""
    named = text.replace("SIGMA\n", "*shape factor\n").replace("PORO\n16*0.2 16*0.02 /\n", "PORO\n16*0.5 16*0.02 /\n*phim\n16*0.2 /\n")
    named = named.replace("SWOF\n", "swm krwm krowm Pcowm\n").replace(FRACTURE_TABLE, "swf krwf krowf Pcowf\n" + FRACTURE_TABLE)
    return named.replace("REGIONS\nSATNUM\n16*1 16*2 /\n", "")


def test_words_of_the_continua_mean_shape_factor_porosity_and_tables(tmp_path):
    text = dual_deck.dual(4, 4, 20, "5*20", 0.01, runspec="TABDIMS\n2 /\n",
                          tables=dual_deck.TABLE + FRACTURE_TABLE + "REGIONS\nSATNUM\n16*1 16*2 /\n")
    named = with_named_continua(text)
    assert sum(word in named for word in ("*shape factor", "*phim", "swm", "swf")) == 4 and "SATNUM" not in named
    section = kvr_run.options(method="FIM")
    (tmp_path / "one").mkdir()
    whole = kvr_run.finished_normally(kvr_run.run(tmp_path / "one", text + section))
    three_in(tmp_path / "FIELD", named + section)
    ended = kvr_run.finished_normally(kvr_run.run(tmp_path / "FIELD"))
    assert whole.table()["FWPT"][-1] >= 0.0 and whole.table()["FOPT"][-1] > 0.0
    tables = [run.read(left) for run, left in ((whole, "KVR_Run_Recovery.out"), (ended, "KVR_Run_Recovery.out"))]
    assert tables[0] == tables[1]


def test_a_table_of_the_fractures_needs_room_for_two(tmp_path):
    result = kvr_run.run(tmp_path, dual_deck.dual(2, 2, 20, "5*20", 0.01, tables=dual_deck.TABLE + "swf\n" + FRACTURE_TABLE))
    assert result.status == 1
    assert "swf IS SATURATION TABLE 2, AND TABDIMS HAS ROOM FOR 1" in result.console


@needs_public_decks
@pytest.mark.parametrize("name", ["waterflood/BL100", "waterflood/FAULTCP", "spe1/SPE1CASE2", "robust/well_limit"])
def test_public_decks_as_three_files_give_the_bits_of_one(tmp_path, name):
    same_bits(kvr_run.PUBLIC_DECKS / f"{name}.DATA", tmp_path)


def three_in(folder, text):
    folder.mkdir()
    for name, part in three_files.three_files(text).items():
        (folder / name).write_text(part)


def test_lines_go_on_explicitly_behind_the_first_change_of_wells(tmp_path):
    analytical = kvr_run.options(lines=20, scheme="ANALYTICAL", solver="DGESV", extra="STEPCTRL\nNo /")
    three_in(tmp_path / "FIELD", small_deck.deck(schedule=CHANGE, options=analytical))
    ended = kvr_run.run(tmp_path / "FIELD")
    assert ended.status == 0
    assert ended.console.startswith("-") and "WARNING: KVR Files detected..." in ended.console
    before, behind = ended.console.split("-         UPDATE WELL SCHEDULE         -")
    methods = [re.findall(r"SL  Numerical method : (\w+)", part) for part in (before, behind)]
    assert set(methods[0]) == {"btf"} and set(methods[1]) == {"mas"}


def test_results_of_three_files_have_the_name_of_their_folder(tmp_path):
    three_in(tmp_path / "FIELD", small_deck.deck())
    for words, folder in ((("FIELD",), "FIELD"), (("FIELD/Well.DATA", "--output-dir", "out"), "out")):
        ended = run_named(*words, folder=tmp_path)
        assert ended.returncode == 0, ended.console
        assert (tmp_path / folder / "FIELD_Summary.csv").exists()
    ended = run_named(".", "--check", folder=tmp_path / "FIELD")
    assert ended.returncode == 0 and "FIELD" in ended.console and "5 x 5 x 1" in ended.console


def test_a_check_of_three_files_writes_nothing(tmp_path):
    three_in(tmp_path / "FIELD", small_deck.deck())
    assert run_named("FIELD", "--check", folder=tmp_path).returncode == 0
    assert sorted(path.name for path in (tmp_path / "FIELD").iterdir()) == sorted(three_files.NAMES)


def test_a_file_that_is_missing_is_named(tmp_path):
    three_in(tmp_path / "FIELD", small_deck.deck())
    (tmp_path / "FIELD" / "Well.DATA").unlink()
    ended = run_named("FIELD", folder=tmp_path)
    assert ended.returncode == 1
    assert "Cannot find file :: FIELD, a folder" in ended.console
    assert "Not there for a three-file deck :: Well.DATA" in ended.console


def test_what_stands_behind_the_last_section_is_told_with_its_place(tmp_path):
    three_in(tmp_path / "FIELD", small_deck.deck())
    reservoir = tmp_path / "FIELD" / "Reservoir.DATA"
    reservoir.write_text(reservoir.read_text().replace("\nEND\n", "\nPROPS\nROCK\n3000 1e-3 /\nEND\n"))
    ended = run_named("FIELD", "--check", folder=tmp_path)
    assert ended.returncode == 0
    assert "PROPS AND WHAT STANDS BEHIND IT IS NOT READ" in ended.console
    assert "Reservoir.DATA, line" in ended.console


# --- .afi ------------------------------------------------------------------------------------------------------------

AFI = left_results.AFI.decode()
needs_commercial_run = pytest.mark.skipif(not left_results.HOMO.exists(),
                                          reason="the folder of public decks is not beside the checkout")


def afi_folder(folder, left_out=()):
    """The results of the commercial case beside an .afi file."""
    run = next(run for run in left_results.commercial_runs() if run.name == "afi")
    folder.mkdir(exist_ok=True)
    for name, data in {**run.inputs, **run.files}.items():
        if not name.endswith(tuple(left_out)):
            (folder / name).write_bytes(data)


@needs_commercial_run
@pytest.mark.parametrize("left_out", [(), (".GRID",), (".EGRID",), (".SMSPEC", ".S0001")])
def test_the_results_beside_an_afi_file_are_traced(tmp_path, left_out):
    afi_folder(tmp_path / "run", left_out)
    ended = run_named("run/CASE.afi", "--output-dir", "out", folder=tmp_path)
    assert ended.returncode == 0, ended.console
    log = (tmp_path / "out" / "CASE_dbg.out").read_text()
    assert "Type = ixf_model Path -> CASE.ixf" in log
    assert " SIMULATI -> not surpported  " in log
    assert "FILE I/O -> END OF FILE DETECTED BEFORE STREAMLINE INFO.." in log
    assert "FLUX DATA FOUND :: Trace Streamline using FLO_X+" in log
    assert "Successed Streamline : 1000" in log
    lines = (tmp_path / "out" / "CASE_Streamline_Time_100.plt").read_text()
    assert lines.count("ZONE I =") == 1000
    assert (tmp_path / "out" / "CASE_TPlot_poil.plt").stat().st_size > 0
    assert "1 producing, 1 injecting" in ended.console
    # The restart holds reciprocals of its factors, under names of its own.
    assert "WARNING :: The restart has no formation volume factors (BO, BW, BG), those of default tables serve" in ended.console


@needs_commercial_run
def test_rates_of_a_traced_afi_run_are_those_of_its_restart(tmp_path):
    afi_folder(tmp_path)
    assert run_named("CASE", folder=tmp_path).returncode == 0
    columns, _ = summary_of(tmp_path / "CASE_Summary.csv")
    last = [values for keyword, values in binary_blocks.blocks(left_results.HOMO / "ECLIPSE.S0001") if keyword == "PARAMS"][-1]
    names = [name.decode().strip() for name in binary_blocks.arrays(left_results.HOMO / "ECLIPSE.SMSPEC")["KEYWORDS"]]
    theirs = dict(zip(names, last))
    assert columns["TIME"] == [100.0]
    for name in ("FOPR", "FWPR", "FWCT"):
        assert columns[name][-1] == pytest.approx(theirs[name], rel=1e-5)


@needs_commercial_run
def test_an_afi_run_without_a_grid_ends_with_a_message(tmp_path):
    afi_folder(tmp_path, (".GRID", ".EGRID"))
    (tmp_path / "CASE.afi").write_text("")
    ended = run_named("CASE.afi", folder=tmp_path)
    assert ended.returncode == 1
    assert "ERROR :: NO GRID OF THE RUN TO TRACE IN :: CASE.GRID" in ended.console
    assert " ECLIPSE .GRID File Not Found :: CASE.GRID" in (tmp_path / "CASE_dbg.out").read_text()


@needs_commercial_run
def test_a_check_of_an_afi_file_writes_nothing(tmp_path):
    afi_folder(tmp_path)
    before = sorted(path.name for path in tmp_path.iterdir())
    ended = run_named("CASE.afi", "--check", folder=tmp_path)
    assert ended.returncode == 0 and "21 x 21 x 1 = 441 cells" in ended.console
    assert sorted(path.name for path in tmp_path.iterdir()) == before


def test_an_afi_file_without_results_waits_for_permission_to_run_a_program(tmp_path):
    (tmp_path / "CASE.afi").write_text(AFI)
    ended = run_named("CASE.afi", folder=tmp_path)
    assert ended.returncode == 1
    assert "ECLRUN ix" in ended.console and "--allow-outside" in ended.console
    ended = run_named("CASE.afi", "--check", folder=tmp_path)
    assert ended.returncode == 0 and "No results of CASE.afi are there" in ended.console


def test_a_restart_without_wells_is_told(tmp_path):
    own = next(run for run in left_results.own_runs(kvr_run.PROGRAM) if run.name == "dead")
    for name, data in own.files.items():
        (tmp_path / name.replace("ECLIPSE", "CASE")).write_bytes(data)
    (tmp_path / "CASE.afi").write_text(AFI)
    ended = run_named("CASE.afi", folder=tmp_path)
    assert ended.returncode == 0, ended.console
    assert "WARNING :: THE RESTART HAS NO WELLS, NO LINE STARTS" in ended.console
    assert "5 x 5 x 1 = 25 cells" in ended.console
    assert (tmp_path / "CASE_Tplot_Static_kx.plt").exists()


def test_another_section_in_an_included_file_of_three_ends_that_file_alone(tmp_path):
    """Sections have their places in three files: what stands behind the row of INCLUDE is read on."""
    head, tail = small_deck.GRID.split("PERMX\n")
    whole = small_deck.deck(options=kvr_run.options(method="IMPES"))
    split = whole.replace(small_deck.GRID, head + "INCLUDE\n'rest.inc' /\nPERMX\n" + tail)
    results = []
    for name, text in (("whole", whole), ("split", split)):
        three_in(tmp_path / name, text)
        (tmp_path / name / "rest.inc").write_text("NTG\n25*1 /\nEDIT\n")
        ended = run_named(tmp_path / name, folder=tmp_path)
        assert ended.returncode == 0, ended.console[-1500:]
        results.append(summary_of(next((tmp_path / name).glob("*_Summary.csv")))[0]["FOPT"])
    assert list(results[0]) == list(results[1])
