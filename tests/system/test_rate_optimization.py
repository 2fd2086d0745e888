"""Rates that follow the pairs of wells: what changes, what is kept, what is told."""

import csv
import re

import numpy
import pytest

import kvr_run
import named_run
import rate_pattern
from kvr_run import finished_normally, run
from peer_flow import flow_vectors, needs_flow
from rate_pattern import flood, numbers

ALLOCATION = "EQWAFS\n" + numbers()
ARRIVAL = "EQARRIVE\n" + numbers()
PRICES = "NPVPRICE\n50 -5 2 /\nINJPRICE\n0 -1 0 /\n"


def changes(result):
    with open(result.folder / "KVR_RateChanges.csv") as file:
        rows = list(csv.DictReader(file))
    for row in rows:
        for key in ("TIME", "DECK", "OLD", "NEW"):
            row[key] = float(row[key])
    return rows


def totals(result):
    values, _ = named_run.summary_of(result.folder / "KVR_Summary.csv")
    return values


def steps_of(rows):
    return {step: [row for row in rows if row["STEP"] == step] for step in {row["STEP"] for row in rows}}


@pytest.fixture(scope="module")
def base(tmp_path_factory):
    return finished_normally(run(tmp_path_factory.mktemp("base"), flood()))


@pytest.fixture(scope="module")
def allocated(tmp_path_factory, base):
    extra = ALLOCATION + PRICES + f"BASERUN\n'{base.folder}/KVR_Summary.csv' /\n"
    return finished_normally(run(tmp_path_factory.mktemp("allocated"), flood(extra)))


@pytest.fixture(scope="module")
def arrived(tmp_path_factory):
    return finished_normally(run(tmp_path_factory.mktemp("arrived"), flood(ARRIVAL)))


@pytest.mark.parametrize("method", ["allocated", "arrived"])
def test_every_change_keeps_the_totals_and_its_bounds(method, request):
    rows = changes(request.getfixturevalue(method))
    assert len(steps_of(rows)) >= 5
    for step in steps_of(rows).values():
        for kind in ("inj", "prd"):
            before = sum(row["OLD"] for row in step if row["KIND"] == kind)
            after = sum(row["NEW"] for row in step if row["KIND"] == kind)
            assert after == pytest.approx(before, rel=1e-10)
    for row in rows:
        assert 0.9 - 1e-9 <= row["NEW"] / row["OLD"] <= 1.1 + 1e-9, row
        assert row["NEW"] >= 0.1 * row["DECK"] * (1 - 1e-12)
    assert {row["BOUND"] for row in rows} <= {"", "WMIN", "WMAX", "QWMIN", "BHP LIMIT"}


def test_every_change_stands_in_the_log(allocated):
    told = re.findall(r"^ *RATE CHANGE :: (\S+) (\S+) --> (\S+) STB/DAY", allocated.log, re.M)
    rows = changes(allocated)
    assert [name for name, _, _ in told] == [row["WELL"] for row in rows]
    assert [float(new) for _, _, new in told] == pytest.approx([row["NEW"] for row in rows], rel=1e-8)


def test_new_rates_act_in_the_next_step(allocated):
    values, rows = totals(allocated), changes(allocated)
    first = min(row["TIME"] for row in rows)
    behind = numpy.searchsorted(values["TIME"], first + 1e-6)
    for row in rows:
        if row["TIME"] == first and row["KIND"] == "inj":
            assert values[f"WWIR:{row['WELL']}"][behind] == pytest.approx(row["NEW"], rel=1e-6)


@pytest.mark.parametrize("method", ["allocated", "arrived"])
def test_oil_is_gained_at_the_same_water_injected(method, base, request):
    now, before = totals(request.getfixturevalue(method)), totals(base)
    assert now["FWIT"][-1] == pytest.approx(before["FWIT"][-1], rel=1e-6)
    assert now["FOPT"][-1] > 1.01 * before["FOPT"][-1]


def test_the_schedule_of_the_run_gives_its_oil_again(tmp_path):
    """In steps of 25 days: in those of 50 the two differ by the error of their steps, which start anew at every event."""
    for name in ("allocated", "again"):
        (tmp_path / name).mkdir()
    allocated = finished_normally(run(tmp_path / "allocated", flood(ALLOCATION + "MAXDT\n25 /\n")))
    schedule = (allocated.folder / "KVR_RateSchedule.DATA").read_text()
    again = finished_normally(run(tmp_path / "again", rate_pattern.deck(schedule, "MAXDT\n25 /\n")))
    assert totals(again)["FOPT"][-1] == pytest.approx(totals(allocated)["FOPT"][-1], rel=1e-3)
    assert totals(again)["TIME"][-1] == pytest.approx(1000.0)


FAULT = "FAULTS\n'F' 12 12 1 24 1 1 X /\n/\n"
LIMITS = "WECON\n'P1' 1* 1* 0.9 1* 1* WELL NO /\n/\n"


def faulted(schedule, extra=""):
    """A fault that opens in the middle of the run, a producer with a limit of water, part of the schedule in a file.
    Steps of ten days: a run again has other ones, and longer ones are 0.4 % off in oil by themselves."""
    return rate_pattern.deck(schedule, "MAXDT\n10 /\n" + extra).replace("PROPS\n", FAULT + "MULTFLT\n'F' 0.01 /\n/\nPROPS\n", 1)


@pytest.fixture(scope="module")
def faulted_run(tmp_path_factory):
    schedule = (rate_pattern.definitions() + rate_pattern.controls() + "INCLUDE\n'limits.inc' /\nTSTEP\n10*50 /\n"
                + "MULTFLT\n'F' 100 /\n-- opened\n/\nTSTEP\n5*50 /\nWELTARG\n'P2' BHP 120 /\n/\nTSTEP\n5*50 /\n")
    return finished_normally(run(tmp_path_factory.mktemp("faulted"), faulted(schedule, ALLOCATION), {"limits.inc": LIMITS}))


def test_the_schedule_of_the_run_has_what_the_deck_says(faulted_run):
    schedule = (faulted_run.folder / "KVR_RateSchedule.DATA").read_text()
    for keyword in ("WELSPECS", "COMPDAT", "WECON", "MULTFLT", "WELTARG"):
        assert len(re.findall(rf"^{keyword} *$", schedule, re.M)) == 1, keyword
    parts = re.split(r"^TSTEP *\n(\S+) /$", schedule, flags=re.M)
    ends = numpy.cumsum([float(length) for length in parts[1::2]])
    assert ends[-1] == pytest.approx(1000.0)
    at = {keyword: ends[next(n for n, part in enumerate(parts[::2]) if re.search(rf"^{keyword} *$", part, re.M)) - 1]
          for keyword in ("MULTFLT", "WELTARG")}
    assert at == {"MULTFLT": pytest.approx(500.0), "WELTARG": pytest.approx(750.0)}


def test_a_schedule_with_faults_and_limits_gives_the_oil_of_the_run_again(faulted_run, tmp_path):
    again = finished_normally(run(tmp_path, faulted((faulted_run.folder / "KVR_RateSchedule.DATA").read_text())))
    one, other = totals(again), totals(faulted_run)
    before = [numpy.interp(600.0, run["TIME"], run["FOPT"]) for run in (one, other)]
    assert before[0] == pytest.approx(before[1], rel=2e-3)
    # Behind it P1 comes to its limit in both, which is looked at behind each part of a step: up to 50 days apart.
    assert one["WOPR:P1"][-1] == other["WOPR:P1"][-1] == 0.0
    assert one["FOPT"][-1] == pytest.approx(other["FOPT"][-1], rel=5e-3)


@needs_flow
def test_the_independent_simulator_runs_that_schedule_as_it_stands(faulted_run, tmp_path):
    deck = faulted((faulted_run.folder / "KVR_RateSchedule.DATA").read_text())
    oil = flow_vectors(tmp_path / "peer", deck[:deck.index("TUNEKVR")], "FOPT")["FOPT"][-1]
    print(f"oil: {oil:.0f} stb by flow, {totals(faulted_run)['FOPT'][-1]:.0f} by the run")
    assert oil == pytest.approx(totals(faulted_run)["FOPT"][-1], rel=0.03)


def test_a_thin_pair_has_the_resistance_of_its_lines(arrived):
    """Drawdown over what the lines carry: a pair too thin to count has no flux left in the map."""
    for path in arrived.folder.glob("KVR_OPT_ECLIPSE_PTNMAP*.plt"):
        for row in path.read_text().splitlines()[2::2]:
            assert 0.0 < float(row.split()[10]) < 1e6


def test_the_value_is_that_of_the_summary(allocated):
    values = totals(allocated)
    value = (50 * values["FOPT"] - 5 * values["FWPT"] + 2 * values["FGPT"] - values["FWIT"])[-1]
    told = [float(word) for path in allocated.folder.glob("KVR_OPT_ECLIPSEWFLD_REALOC0*.out")
            for word in re.findall(r" NPV Time Step   = (\S+)", path.read_text())]
    assert sum(told) == pytest.approx(value, rel=1e-9)
    beside = re.search(r"NPV +: (\S+) \$, base (\S+), ", allocated.console)
    assert float(beside[1]) == pytest.approx(value, rel=1e-8)


def test_the_closing_summary_stands_beside_the_base_run(allocated, base):
    found = re.search(r"Oil produced +: (\S+) STB, base (\S+), \+", allocated.console)
    assert float(found[1]) == pytest.approx(totals(allocated)["FOPT"][-1], rel=1e-8)
    assert float(found[2]) == pytest.approx(totals(base)["FOPT"][-1], rel=1e-8)


def test_optimising_by_value_does_not_lose_value(base, tmp_path):
    by_value = finished_normally(run(tmp_path, flood("NPVOPT\n" + numbers() + PRICES)))

    def value(result):
        values = totals(result)
        return (50 * values["FOPT"] - 5 * values["FWPT"] - values["FWIT"])[-1]

    assert value(by_value) > value(base)


def test_files_of_the_steps(allocated):
    everything = (allocated.folder / "KVR_OPT_ECLIPSEWFLD_REALOC_ALL.out").read_text().splitlines()
    assert everything[0] == "  ---TIME---    ---RcvFac---   ---  NPV  ---  ---TTMsft---  ---RecvMsft--- ---T*R Msft--- "
    assert len(everything) == 21
    assert " File Generated : WFLOOD_REALOC_ALL.out" in allocated.log
    step = sorted(allocated.folder.glob("KVR_OPT_ECLIPSEWFLD_REALOC0*.out"))[0].read_text()
    for label in (" Simulation Time =", " Total Norm Fact =", " Qw Prd Total    =", " Qo Prd Total    =", " Qw Inj Total    ="):
        assert label in step
    pairs = sorted(allocated.folder.glob("KVR_OPT_ECLIPSE_PTNMAP*.plt"))[-1].read_text().splitlines()
    assert pairs[0] == "Variables= IDW1,IDW2,LoWX,LocWY,TotVal,RcvVal,ie_recov,ie,WelTOF,ConeTOF,ie_resis"
    assert pairs[1::2] == ["Zone i=1, F=point"] * (len(pairs) // 2)
    assert all(len(row.split()) == 11 for row in pairs[2::2])


def told_pairs(path):
    """Injector, producer, flux, oil, efficiency and number of lines of every pair of a step's file."""
    rows = re.findall(r"^ (I\d+)\s+(P\d+)\s+(\S+)\s+(\S+)\s+(\S+)\s+\S+\s+\S+\s+(\d+)", path.read_text(), re.M)
    return [(i, p, float(flux), float(oil), float(e), int(lines)) for i, p, flux, oil, e, lines in rows]


def line_count(plot):
    """Number and efficiency of the lines of every pair by the file of the lines alone: the water that a line lets out over the
    step is what enters it less what its cells keep, sum of (Sw behind the step less Sw of the cell before) times the days that
    it takes through the cell, over the days of the step. No number for a line that touches a cell at its corner for less than a
    hundredth of a day: what it holds there and behind is no account of its water."""
    frame, lines = plot.split("VARIABLES =X,Y,Z")
    n, size = rate_pattern.GRID, 40.0
    values = frame[frame.index("VARLOCATION"):].split("\n", 1)[1].split("TITLE")[0].split()
    nodes = 2 * (n + 1)**2
    before = numpy.array(values[3 * nodes + 2 * n * n:3 * nodes + 3 * n * n], dtype=float).reshape(n, n)
    kept = {}
    for line in lines.split("ZONE I =")[1:]:
        rows = numpy.array([row.split() for row in line.strip().splitlines()[1:] if len(row.split()) == 10], dtype=float)
        pair = int(rows[-1, 7]), int(rows[-1, 8])
        if 0 in pair:
            continue
        head = (numpy.array(rate_pattern.INJECTORS[f"I{pair[0]}"]) - 0.5) * size
        ends = rows[:, :2]
        begins = numpy.concatenate([ends[:1] + 0.02 * (head - ends[:1]), ends[:-1]])  # a row stands where a cell is left
        i, j = numpy.clip((0.5 * (begins + ends) / size).astype(int), 0, n - 1).T
        days = numpy.diff(rows[:, 3], prepend=0.0)
        account = float(numpy.sum(days * (rows[:, 5] - before[j, i])))
        kept.setdefault(pair, []).append(account if (days[1:] > 0.01).all() else numpy.nan)
    return kept


@pytest.mark.parametrize("last", [10, 2])
def test_pairs_have_their_lines_the_flow_of_their_wells_and_the_oil_of_the_field(tmp_path, last):
    """Efficiencies are those of what lines let out over the last part: the end of a line alone is up to 0.12 away from it."""
    text = flood(ALLOCATION, steps=f"10*50 {last}").replace("1 0 0 0 0 0 0 1 0 0 /", "1 0 0 1 0 0 0 1 0 0 /")
    result = finished_normally(run(tmp_path, text))
    values = totals(result)
    assert values["TIME"][-1] - values["TIME"][-2] == pytest.approx(last)  # one part
    plot = max(result.folder.glob("Streamline_Time_*.plt"), key=lambda path: float(path.stem.split("_")[-1])).read_text()
    kept = line_count(plot)
    rows = told_pairs(max(result.folder.glob("KVR_OPT_ECLIPSEWFLD_REALOC0*.out")))
    assert {(int(i[1:]), int(p[1:])): lines for i, p, _, _, _, lines in rows} == {pair: len(each) for pair, each in kept.items()}
    for injector, producer, _, _, told, _ in rows:
        counted = numpy.nanmean(kept[int(injector[1:]), int(producer[1:])]) / last
        print(f"{injector} {producer}: efficiency {told:.4f}, by the file of the lines {counted:.4f}")
        # Lines take the volumes at one pressure, 0.2 % by the expansion on the way.
        assert told == pytest.approx(counted, abs=0.005)
    for injector in ("I1", "I2"):
        flux = sum(row[2] for row in rows if row[0] == injector)
        assert flux == pytest.approx(values[f"WVIR:{injector}"][-1], rel=0.02)
    mean = sum(row[3] for row in rows) / sum(row[2] for row in rows)
    assert mean == pytest.approx(1.0 - values["FWCT"][-1], abs=0.02)
    assert all(oil == pytest.approx(e * flux, rel=1e-4) for _, _, flux, oil, e, _ in rows)


def test_a_well_at_a_given_pressure_and_a_shut_one_stay(tmp_path):
    result = finished_normally(run(tmp_path, flood(ALLOCATION, bhp=("P2",), shut=("P4",))))
    rows = changes(result)
    assert {row["WELL"] for row in rows} == {"I1", "I2", "P1", "P3", "P5"}
    schedule = (result.folder / "KVR_RateSchedule.DATA").read_text()
    assert len(re.findall(r"^'P2' OPEN BHP .* 2500 /", schedule, re.M)) == 1
    for step in steps_of(rows).values():
        producers = [row for row in step if row["KIND"] == "prd"]
        assert sum(row["NEW"] for row in producers) == pytest.approx(sum(row["OLD"] for row in producers), rel=1e-10)


@pytest.mark.parametrize("option", ["EQWAFS\n", "EQARRIVE\n", "OPTIMIZE\n"])
def test_one_pair_keeps_its_rates(tmp_path, option):
    result = finished_normally(run(tmp_path, flood(option + numbers(), injectors={"I1": (1, 1)}, producers={"P1": (24, 24)})))
    assert not (result.folder / "KVR_RateChanges.csv").exists()
    assert not re.search(r"\bnan\b", result.log.lower())


@pytest.mark.parametrize("option", ["EQWAFS\n", "EQARRIVE\n"])
def test_without_injection_nothing_changes(tmp_path, option):
    result = finished_normally(run(tmp_path, flood(option + numbers(), shut=("I1", "I2"), steps="3*1")))
    assert not (result.folder / "KVR_RateChanges.csv").exists()
    assert not re.search(r"\bnan\b", result.log.lower())


@pytest.mark.parametrize("method", ["IMPES", "FIM"])
def test_methods_without_lines_leave_the_rates_and_say_so_once(tmp_path, method):
    result = finished_normally(run(tmp_path, flood(ALLOCATION, steps="3*20", method=method)))
    told = f"RATES STAY AS THE SCHEDULE HAS THEM, FDMETHOD {method} HAS NO STREAMLINES"
    assert result.log.count("WARNING :: " + told) >= 1
    assert not (result.folder / "KVR_RateChanges.csv").exists()
    assert re.search(r"Warnings +: 1\b", result.console)


def test_nothing_changes_before_the_first_step_that_is_named(tmp_path):
    rows = changes(finished_normally(run(tmp_path, flood("EQWAFS\n" + numbers(start=12)))))
    assert min(row["TIME"] for row in rows) >= 600.0


def test_rates_rest_between_changes(tmp_path):
    rows = changes(finished_normally(run(tmp_path, flood(ARRIVAL + "RATEEVERY\n150 /\n"))))
    times = sorted({row["TIME"] for row in rows})
    assert all(after - before >= 150.0 - 1e-9 for before, after in zip(times, times[1:]))


def test_numbers_that_allow_no_change_stop_the_run(tmp_path):
    result = run(tmp_path, flood("EQWAFS\n" + numbers(down=0, up=0)))
    assert result.status == 1
    assert "ERROR :: Optimization of WAFs activated but max/min dq set to zero." in result.console


def test_a_well_event_leaves_the_rates_of_the_other_wells(tmp_path):
    later = "WCONPROD\n'P1' 'OPEN' 'LRAT' 3* 60 1* 100 /\n/\nTSTEP\n10*50 /\n"
    schedule = rate_pattern.definitions() + rate_pattern.controls() + "TSTEP\n10*50 /\n" + later
    rows = changes(finished_normally(run(tmp_path, rate_pattern.deck(schedule, ARRIVAL))))
    last = {row["WELL"]: row["NEW"] for row in rows if row["TIME"] <= 500.0}
    first = {row["WELL"]: row for row in reversed([row for row in rows if row["TIME"] > 500.0])}
    assert first["P1"]["OLD"] == pytest.approx(60.0)
    for well in set(last) - {"P1"}:
        assert first[well]["OLD"] == pytest.approx(last[well], rel=1e-9)


@pytest.mark.parametrize("target", [2700.0, 3600.0])
def test_the_average_pressure_goes_to_its_target(tmp_path, target):
    extra = f"OPTMMP\nMMPTARGET\n{target} /\n"
    result = finished_normally(run(tmp_path, flood(extra, limit=14.7)))
    assert totals(result)["FPR"][-1] == pytest.approx(target, rel=0.02)
    plot = (result.folder / "KVR_OPT_ECLIPSEWFLD_MMP.plt").read_text().splitlines()
    assert plot[0].startswith("TITLE=") and plot[1] == "VARIABLES= X,Y,XMF" and plot[2] == "Zone I = 1 ,J= 1 ,F = Point"
    assert plot[4] == "Zone I = 50 ,J= 50 ,F = Point" and len(plot) == 5 + 2500


def test_injectors_at_their_limit_say_that_the_pressure_is_out_of_reach(tmp_path):
    result = finished_normally(run(tmp_path, flood("OPTMMP\nMMPTARGET\n4500 /\n", top=3600.0)))
    assert totals(result)["FPR"][-1] < 4500.0 * 0.98
    assert "MISCIBILITY :: injectors at their bounds take" in result.log
    assert "BHP LIMIT" in {row["BOUND"] for row in changes(result)}


def test_without_a_target_the_pressure_is_left_alone(tmp_path, base):
    result = finished_normally(run(tmp_path, flood("OPTMMP\nMMPTARGET\n0 /\n")))
    assert totals(result)["FOPT"][-1] == totals(base)["FOPT"][-1]
    assert "OPTMMP without a target (MMPTARGET) is off" in result.console
    assert not (result.folder / "KVR_OPT_ECLIPSEWFLD_MMP.plt").exists()


def test_a_base_run_that_is_not_there_is_told(tmp_path):
    result = finished_normally(run(tmp_path, flood("BASERUN\n'nowhere.csv' /\n", steps="2*20")))
    assert "WARNING :: BASERUN CANNOT BE READ AS A SUMMARY TABLE" in result.console


def test_a_value_without_prices_is_told(tmp_path):
    result = finished_normally(run(tmp_path, flood("NPVOPT\nEQWAFS\n" + numbers(), steps="2*20")))
    assert "WARNING :: NPVOPT WITHOUT A PRICE OF OIL ABOVE THAT OF WATER CHANGES NO RATES" in result.console


# Oil that swells by less than its gas fills at all pressures of the wells.
LIVE_OIL = """PVTO
0.001 14.7 1.0 1.5 /
0.3 2000 1.15 1.2
    8000 1.14 1.4 /
0.6 4000 1.21 1.0
    8000 1.195 1.1 /
/
PVDG
14.7 200 0.01
2000 1.5 0.015
8000 0.5 0.03 /
SGOF
0 0 1 0
0.1 0.01 0.7 0
0.5 0.5 0.01 0
0.8 1 0 0 /"""


def test_what_gas_injectors_leave_is_not_asked_of_water_injectors(tmp_path):
    injectors = {"I1": (6, 6), "I2": (18, 18), "I3": (6, 18), "I4": (18, 6)}
    cells = rate_pattern.GRID**2
    text = rate_pattern.deck(rate_pattern.definitions(injectors, rate_pattern.PRODUCERS)
                             + rate_pattern.controls(injectors=injectors, top=3200.0) + "TSTEP\n6*50 /\n", "EQWAFS\n" + numbers())
    text = (text.replace("OIL\nWATER\nFIELD", "OIL\nWATER\nGAS\nFIELD").replace("PVDO\n300 1.05 1.5\n8000 1.0 1.6 /", LIVE_OIL)
            .replace(f"SWAT\n{cells}*0.2 /", f"SWAT\n{cells}*0.2 /\nSGAS\n{cells}*0 /\nRS\n{cells}*0.3 /"))
    for well in ("I3", "I4"):
        text = text.replace(f"'{well}' 'WATER' 'OPEN' 'RATE' 300 1* 3200", f"'{well}' 'GAS' 'OPEN' 'RATE' 6000 1* 9000")
    assert text.count("'GAS' 'OPEN'") == 2
    finished_normally(run(tmp_path, text))
    rates = {"I1": 300.0, "I2": 300.0}
    with open(tmp_path / "KVR_RateChanges.csv") as table:
        for row in csv.DictReader(table):
            if row["WELL"] in rates:
                rates[row["WELL"]] = float(row["NEW"])
    assert sum(rates.values()) <= 600.0 * (1.0 + 1e-9)
