"""The last lines of a run, its index of files and its counts of messages."""

import re
import shutil
import subprocess

import pytest

import kvr_run
import small_deck
from kvr_run import finished_normally, run
from named_run import run_named

LIMITED = small_deck.SCHEDULE.replace("'PROD' 'OPEN' 'BHP' 5* 2000", "'PROD' 'OPEN' 'ORAT' 5000 4* 2500").replace(
    "'PROD' 'G' 5 5 5010 'OIL' /", "'PROD' 'G' 5 5 5010 'OIL' /\n'IDLE' 'G' 3 3 5010 'OIL' /").replace(
    "'PROD' 5 5 1 1 'OPEN' 2* 0.5 /", "'PROD' 5 5 1 1 'OPEN' 2* 0.5 /\n'IDLE' 3 3 1 1 'OPEN' 2* 0.5 /").replace(
    "4* 2500 /", "4* 2500 /\n'IDLE' 'SHUT' 'BHP' 5* 2000 /")


def closing(text):
    """The lines between the last two rules."""
    return text.rsplit("-" * 72, 2)[1].strip("\n").splitlines()


def row(lines, label):
    return next(line.split(":", 1)[1].strip() for line in lines if line.startswith(label))


def counts(path):
    return {name: int(count) for name, count in re.findall(r"^ (\w+) +(\d+)$", path.read_text(), flags=re.M)}


def test_every_run_ends_with_its_summary_on_console_and_log(tmp_path):
    result = finished_normally(run(tmp_path, small_deck.deck()))
    lines = closing(result.console)
    assert lines == closing(result.log)
    assert row(lines, "Run") == "finished"
    assert row(lines, "Time").startswith("60 of 60 days, 2000-03-01, ")
    table = result.table()
    assert f"produced {table['FOPT'][-1]:.6g} STB" in row(lines, "Oil")
    assert f"injected {table['FWIT'][-1]:.6g} STB" in row(lines, "Water")
    assert "balance error 0.0000 %" in row(lines, "Oil")
    assert row(lines, "Warnings") == "0"
    assert [line.split(":")[0].strip() for line in lines[-4:]] == ["KVR_Summary.csv", "a curve", "KVR_Files.txt", "KVR_dbg.out"]


def last_wells(text):
    """Rows of the table of wells in front of the closing summary, by name; the words behind the figures at the end."""
    head, units, *rows = text[text.rindex("\nWells on ") + 1:].split("\n\n")[0].splitlines()
    assert head.split() == "Wells on Oil rate Water rate Water cut BHP".split()
    return units.split(), {row.split()[0]: row.split() for row in rows}


def test_every_well_ends_with_a_row_of_its_last_figures(tmp_path):
    deck = small_deck.deck(runspec=small_deck.RUNSPEC.replace("2 1 /", "3 1 /"), schedule=LIMITED)
    result = finished_normally(run(tmp_path, deck))
    units, rows = last_wells(result.console)
    assert units == ["2000-03-01", "STB/DAY", "STB/DAY", "PSIA"]
    table = result.table()
    last = {name: column[-1] for name, column in table.items()}
    cut = last["FWPR"] / (last["FWPR"] + last["FOPR"])
    assert rows["PROD"][1:5] == [f"{last['FOPR']:.1f}", f"{last['FWPR']:.1f}", f"{cut:.3f}", f"{last['WBHP:PROD']:.1f}"]
    assert " ".join(rows["PROD"][5:]) == "at its BHP limit"
    assert rows["INJ"][2:4] == ["50.0", "-"] and rows["INJ"][5:] == ["injects"]
    assert rows["IDLE"][5:] == ["shut"]


@pytest.mark.skipif(shutil.which("gnuplot") is None, reason="no gnuplot")
def test_the_command_for_a_curve_draws_it_from_the_folder_of_the_call(tmp_path):
    (tmp_path / "deep").mkdir()
    (tmp_path / "deep" / "FLOOD.DATA").write_text(small_deck.deck())
    ended = run_named("deep/FLOOD", folder=tmp_path)
    command = next(line for line in ended.console.splitlines() if line.startswith("  a curve: "))[len("  a curve: "):]
    assert "'TIME':'WWCT:PROD'" in command
    drawn = subprocess.run(command.replace('-e "', '-e "set terminal dumb; ', 1), shell=True, cwd=tmp_path, capture_output=True,
                           text=True)
    assert drawn.returncode == 0 and drawn.stderr == "" and drawn.stdout.count("*") > 20, drawn.stderr


def test_wells_that_never_flowed_or_met_their_limit_are_named_with_dates(tmp_path):
    deck = small_deck.deck(runspec=small_deck.RUNSPEC.replace("2 1 /", "3 1 /"), schedule=LIMITED)
    result = finished_normally(run(tmp_path, deck))
    lines = closing(result.console)
    assert row(lines, "Never flowed") == "IDLE"
    date = re.match(r"PROD from (\d{4}-\d\d-\d\d)", row(lines, "At their BHP limit"))
    assert date and "2000-01-01" <= date[1] <= "2000-01-31"


def test_wells_that_an_economic_limit_closes_are_named_with_the_date(tmp_path):
    schedule = small_deck.SCHEDULE.replace("TSTEP", "WECON\n'PROD' 1000000 /\n/\nTSTEP", 1)
    result = finished_normally(run(tmp_path, small_deck.deck(schedule=schedule)))
    assert re.fullmatch(r"PROD on 2000-01-\d\d", row(closing(result.console), "Closed by WECON"))


def test_a_deck_that_is_only_read_says_so(tmp_path):
    result = finished_normally(run(tmp_path, small_deck.deck().replace("OIL\n", "NOSIM\nOIL\n", 1)))
    assert row(closing(result.console), "Run") == "read and checked, nothing is run (NOSIM)"


def test_a_check_and_a_deck_that_is_only_read_end_at_the_same_place(tmp_path):
    (tmp_path / "READ.DATA").write_text(small_deck.deck().replace("OIL\n", "NOSIM\nOIL\n", 1))
    (tmp_path / "FLOOD.DATA").write_text(small_deck.deck())
    read, check = run_named("READ", folder=tmp_path), run_named("FLOOD", "--check", folder=tmp_path)
    assert read.returncode == check.returncode == 0

    def told(text):
        """What the deck holds, and the messages about it."""
        lines = text.splitlines()
        return [line for line in lines if line[:10].strip() in ("Grid", "Fluids", "Units", "In place", "Wells", "Schedule", "Method")
                or line.startswith(("Warnings  ", "NOT USED", "Not needed"))]
    assert len(told(check.console)) >= 8
    assert [line.replace("line 6", "line 5") for line in told(read.console)][:7] == told(check.console)[:7]
    assert "Date " not in read.console + check.console


def test_a_balance_error_above_one_per_cent_is_a_warning(tmp_path):
    options = small_deck.deck().split("TUNEKVR")[1]
    deck = small_deck.deck(options="TUNEKVR" + options + "MAPPING\nAVERAGE /\nSTEPCTRL\nNo /\n",
                           schedule=small_deck.SCHEDULE.replace("2*30 /", "2*300 /").replace("'RATE' 50", "'RATE' 300"))
    lines = closing(finished_normally(run(tmp_path, deck)).console)
    worst = max(abs(float(re.search(r"balance error (\S+) %", row(lines, phase))[1])) for phase in ("Oil", "Water"))
    assert worst > 1.0, "lines averaged in cells keep no amounts"
    assert "WARNING" in row(lines, "Oil") + row(lines, "Water")
    assert any("WARNING :: BALANCE ERROR OF" in line for line in lines)


def test_warnings_stand_by_kind_with_place_and_count_and_in_the_end_file(tmp_path):
    schedule = small_deck.SCHEDULE.replace("TSTEP", "WCONPROD\n'NONE' 'OPEN' 'BHP' 5* 2000 /\n'NADA' 'OPEN' 'BHP' 5* 2000 /\n/\nTSTEP", 1)
    result = finished_normally(run(tmp_path, small_deck.deck(schedule=schedule)))
    lines = closing(result.console)
    place = 1 + small_deck.deck(schedule=schedule).splitlines().index("'NONE' 'OPEN' 'BHP' 5* 2000 /")
    assert row(lines, "Warnings") == "2"
    told = next(line for line in lines if "UNKNOWN WELL" in line)
    assert told.strip() == f"2 x WARNING :: UNKNOWN WELL, ROW SKIPPED :: NONE (File ECLIPSE.DATA, line {place}, keyword WCONPROD)"
    assert counts(tmp_path / "ECLIPSE.ECLEND") == {"Comments": 0, "Warnings": 2, "Problems": 0, "Errors": 0, "Bugs": 0}


def test_keywords_that_change_the_answer_stand_apart_from_those_that_steer_output(tmp_path):
    grid = small_deck.GRID + "MULTREGP\n1 2 /\n/\n"
    schedule = small_deck.SCHEDULE.replace("TSTEP", "RPTSCHED\n1 /\nTSTEP", 1)
    deck = small_deck.deck(grid=grid, schedule=schedule)
    lines = closing(finished_normally(run(tmp_path, deck)).console)
    at = [1 + deck.splitlines().index(word) for word in ("MULTREGP", "RPTSCHED")]
    assert row(lines, "NOT USED") == f"MULTREGP (line {at[0]})"
    assert row(lines, "Not needed").startswith(f"RPTSCHED (line {at[1]}") or f"RPTSCHED (line {at[1] + 1}" in row(lines, "Not needed")


def test_a_mistyped_option_is_listed_with_the_one_that_it_looks_like(tmp_path):
    deck = small_deck.deck().replace("NUMLINE", "NUMLNIE")
    lines = closing(finished_normally(run(tmp_path, deck)).console)
    place = 1 + deck.splitlines().index("NUMLNIE")
    assert row(lines, "NOT USED") == f"NUMLNIE (line {place}, is NUMLINE meant?)"


def test_a_run_that_an_error_ends_counts_it_in_the_end_file(tmp_path):
    ended = run(tmp_path, small_deck.deck().replace("25*0.2 /", "25*x /", 1))
    assert ended.status == 1
    assert counts(tmp_path / "ECLIPSE.ECLEND")["Errors"] == 1


def test_the_index_lists_every_file_that_holds_something(tmp_path):
    (tmp_path / "FLOOD.DATA").write_text(small_deck.deck())
    assert run_named("FLOOD", folder=tmp_path).returncode == 0
    listed = [line.split()[0] for line in (tmp_path / "FLOOD_Files.txt").read_text().splitlines()]
    left = {path.name for path in tmp_path.iterdir()} - {"FLOOD.DATA", "FLOOD_Files.txt"}
    assert sorted(listed) == sorted(left)
    assert all(path.stat().st_size > 0 for path in tmp_path.iterdir()), "empty files are removed"


def test_a_name_with_signs_of_patterns_means_itself(tmp_path):
    options = small_deck.deck().split("TUNEKVR")[1].replace("1 0 0 0 0 0 0 1 0 0 /", "1 0 0 1 0 0 0 1 1 1 /")
    (tmp_path / "FLOOD[12].DATA").write_text(small_deck.deck(options="TUNEKVR" + options))
    (tmp_path / "FLOOD1.X0007").write_text("of another run")
    assert run_named("FLOOD[12]", folder=tmp_path).returncode == 0
    assert (tmp_path / "FLOOD1.X0007").exists()
    listed = [line.split()[0] for line in (tmp_path / "FLOOD[12]_Files.txt").read_text().splitlines()]
    left = {path.name for path in tmp_path.iterdir()} - {"FLOOD[12].DATA", "FLOOD[12]_Files.txt", "FLOOD1.X0007"}
    assert sorted(listed) == sorted(left)


def test_files_of_an_earlier_run_of_the_name_are_removed(tmp_path):
    options = small_deck.deck().split("TUNEKVR")[1].replace("1 0 0 0 0 0 0 1 0 0 /", "1 0 0 1 0 0 0 1 1 1 /")
    deck = small_deck.deck(options="TUNEKVR" + options)
    (tmp_path / "FLOOD.DATA").write_text(deck)
    assert run_named("FLOOD", folder=tmp_path).returncode == 0
    assert (tmp_path / "FLOOD.X0002").exists() and (tmp_path / "FLOOD.SLN0002").exists()
    lines_of_first = {path.name for path in tmp_path.glob("FLOOD_Streamline_Time_*")}
    (tmp_path / "OTHER.X0007").write_text("of another run")
    (tmp_path / "FLOOD.DATA").write_text(deck.replace("2*30 /", "25 /"))
    ended = run_named("FLOOD", "--verbose", folder=tmp_path)
    assert ended.returncode == 0
    assert "FILES OF AN EARLIER RUN REMOVED :: " in ended.console
    assert not (tmp_path / "FLOOD.X0002").exists() and not (tmp_path / "FLOOD.SLN0002").exists()
    assert not lines_of_first & {path.name for path in tmp_path.glob("FLOOD_Streamline_Time_*")}
    assert (tmp_path / "OTHER.X0007").exists()


def test_long_fully_implicit_steps_are_told_with_a_length_that_serves(tmp_path):
    def flood(name, longest):
        schedule = small_deck.SCHEDULE.replace("2*30 /", "400 /")
        options = kvr_run.options(method="FIM", extra=f"MAXDT\n{longest} /\n")
        (tmp_path / name).mkdir()
        result = finished_normally(run(tmp_path / name, small_deck.deck(schedule=schedule, options=options)))
        told = [line for line in closing(result.console) if "LONG STEPS FOR THE FULLY IMPLICIT METHOD" in line]
        return result.table()["FOPT"][-1], told

    long, told = flood("long", 400)
    assert len(told) == 1
    served, told_there = flood("served", re.search(r"MAXDT (\S+) WOULD", told[0])[1])
    short, _ = flood("short", 2)
    print(f"oil away from short steps: {long / short - 1:.4f}, with the length told {served / short - 1:.4f}")
    assert told_there == []
    assert abs(served / short - 1.0) < 0.5 * abs(long / short - 1.0)
