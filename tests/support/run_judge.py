"""Reads what a run left and holds it against its deck: end, balances, targets, saturations, pressures."""

import dataclasses
import math

import numpy

PHASES = "OWG"
LEAST_IN_PLACE = 1e-9  # stb or Mscf: rounding leaves less of a phase that is not there
LEAST_THROUGHPUT = 1e-3  # of what is in place, where less has moved
NEGLIGIBLE_SHARE = 1e-3  # of the pore volume: a phase of which less was in place is judged against this much
END_TOLERANCE = 1e-6  # of the length of the schedule
SHUT_FLOW = 1e-6  # stb/day or Mscf/day: a shut well gives none
CONSOLE_LIMIT = 1 << 20  # bytes
TARGET_LIMIT = 0.01
BALANCE_LIMIT = 0.01
IMPLICIT_BALANCE_LIMIT = 1e-6


@dataclasses.dataclass
class Figures:
    """What is measured of a run; a figure that cannot be taken is no number."""
    last_time: float = 0.0
    steps: int = 0
    balance: float = math.nan  # largest error of any phase at any time, as the report defines it
    balance_moved: float = math.nan  # error volume at the end over what the wells have moved of that phase
    over_target: float = math.nan  # largest excess of an interval's mean rate over its target, relative
    over_well: str = ""
    pressure: float = math.nan  # largest field pressure over the highest that anything holds
    saturation: float = math.nan  # largest distance from 0..1, and of the sum from 1
    finite: bool = True
    totals: dict = dataclasses.field(default_factory=dict)  # FOPT and its kin at the end
    in_place: dict = dataclasses.field(default_factory=dict)  # FOIP and its kin at the start


def read_table(path):
    """Columns by name, of a name that stands twice the first; None where there are no rows."""
    if not path.exists():
        return None
    lines = [line for line in path.read_text(errors="replace").splitlines() if line.strip()]
    if len(lines) < 2:
        return None
    names = lines[0].replace("|", " ").split()
    rows = [line.split() for line in lines[1:]]
    values = numpy.array([[float(word) for word in row] for row in rows if len(row) == len(names)])
    return {name: values[:, names.index(name)] for name in names} if values.size else None


def read_sheet(path):
    """The table of wells with a row per well and step, in the form of the recovery table."""
    if not path.exists():
        return None
    rows = [line.split("\t") for line in path.read_text(errors="replace").splitlines() if line.strip()]
    if len(rows) < 2:
        return None
    at = {name: n for n, name in enumerate(rows[0])}
    times = sorted({float(row[0]) for row in rows[1:]})
    place = {time: n + 1 for n, time in enumerate(times)}
    table = {"TIME": numpy.array([0.0] + times)}
    for row in rows[1:]:
        for rate in ("WOPR", "WWPR", "WGPR", "WWIR", "WGIR", "WBHP"):
            column = table.setdefault(f"{rate}:{row[at['NAME']]}", numpy.zeros(len(times) + 1))
            column[place[float(row[0])]] = float(row[at[rate]])
    return table


def reservoir_rates(path):
    """WVPR by well from the plot table of rates; empty where the run has not written it."""
    if not path.exists():
        return {}
    lines = [line for line in path.read_text(errors="replace").splitlines() if line.strip()]
    if len(lines) < 3:
        return {}
    names = [name.strip() for name in lines[1].split("=")[1].split(",")]
    values = numpy.array([[float(word) for word in line.split()] for line in lines[2:]])
    if values[0, 0] > 0.0:  # no row at time zero
        values = numpy.vstack([numpy.zeros(values.shape[1]), values])
    return {name[5:]: values[:, n] for n, name in enumerate(names) if name.startswith("WVPR_")}


def well_table(folder):
    """Rates of the wells step by step. Runs with analytic lines leave them in the sheet alone."""
    table = read_table(folder / "KVR_Run_Recovery.out")
    return table if table is not None and len(table["TIME"]) > 1 else read_sheet(folder / "KVR_Excl_Well.xls")


def rate_of(control, table, reservoir):
    """The rate that a control names; for WRAT the water, which its sum of all rates bounds."""
    name = control.well
    if control.injects:
        return table.get(f"WGIR:{name}" if control.injects == "G" else f"WWIR:{name}")
    oil, water, gas = (table.get(f"{word}:{name}") for word in ("WOPR", "WWPR", "WGPR"))
    if oil is None:
        return None
    return {"OR": oil, "WR": water, "GR": gas, "LR": oil + water, "RE": reservoir.get(name)}.get(control.mode)


def total_flow(control, table):
    words = ("WWIR", "WGIR", "WOPR", "WWPR", "WGPR")
    return sum(table.get(f"{word}:{control.well}", 0.0) for word in words)


def excess_over_target(schedule, table, reservoir):
    """Largest relative excess of a mean rate between two reports over its target, and the well."""
    time = table["TIME"]
    length = numpy.diff(time, prepend=time[0])
    worst, well = -1.0, ""
    for interval in schedule.intervals:
        inside = (time > interval.begin + 1e-9 * interval.end) & (time <= interval.end * (1.0 + 1e-9))
        if not inside.any():
            continue
        for control in interval.controls.values():
            if control.open and (control.mode == "BH" or control.target <= 0.0):
                continue
            rate = rate_of(control, table, reservoir) if control.open else total_flow(control, table)
            if rate is None or numpy.ndim(rate) == 0:
                continue
            mean = (rate[inside] * length[inside]).sum() / length[inside].sum()
            excess = mean / control.target - 1.0 if control.open else (math.inf if mean > SHUT_FLOW else -1.0)
            if not excess <= worst:
                worst, well = excess, control.well
    return worst, well


def phase_totals(table):
    """Produced and injected volumes of each phase, stb and Mscf, from the rates of the wells."""
    length = numpy.diff(table["TIME"], prepend=table["TIME"][0])
    words = {"FOPT": "WOPR", "FWPT": "WWPR", "FGPT": "WGPR", "FWIT": "WWIR", "FGIT": "WGIR"}
    return {total: float(sum(((rate * length).sum() for name, rate in table.items() if name.startswith(word + ":")), 0.0))
            for total, word in words.items()}


def judged_amount(first, now, produced, injected, least):
    """What an error of a phase is held against: what was in place; where that is next to nothing the most of what is in place and
    has moved, and a negligible share of the pore volume."""
    return first if first >= least and first > 0.0 else max(first, now.max(), produced, injected, least)


def phase_balances(sweep, totals):
    """Errors of each phase: over time as the report has them, at the end also from amounts and rates of wells here, and at the end
    over what has moved."""
    largest, moved = [], []
    pores = sweep["PVT"][0]  # reservoir barrels, about the scale of stb and Mscf
    for phase in PHASES:
        first, now = sweep[f"F{phase}IP_ORG"][0], sweep[f"F{phase}IP_NOW"]
        produced, injected = totals[f"F{phase}PT"], totals.get(f"F{phase}IT", 0.0)
        if max(first, now.max(), produced, injected) <= LEAST_IN_PLACE:
            continue
        base = first if first > 0.0 else now[-1]
        against = judged_amount(first, now, produced, injected, NEGLIGIBLE_SHARE * pores)
        own = abs(now[-1] - first - injected + produced) / against if against > 0.0 else math.inf
        reported = numpy.abs(sweep[f"MBE{phase}"]) * (base / against if base > 0.0 else 1.0)
        base = against
        largest.append(max(reported.max(), own, key=lambda x: math.inf if math.isnan(x) else x))
        moved.append(max(reported[-1], own) * base / max(produced, injected,
                                                                          LEAST_THROUGHPUT * max(first, now[-1], NEGLIGIBLE_SHARE * pores)))
    return max(largest, default=0.0), max(moved, default=0.0)


def last_maps(path):
    """Saturations of the last report by name, in natural order."""
    text = path.read_text(errors="replace") if path.exists() else ""
    maps, values, time = {}, None, None
    for line in text[max(0, last_time_at(text)):].splitlines():
        words = line.split("\t")
        if words[0] == "TIME ::":
            time = words[1]
        elif words[0] == "Grid":
            values = maps.setdefault(words[1].strip(), [])
        elif values is not None and time is not None and len(words) > 1 and words[0][:2] not in ("Y/", "Z/"):
            values.extend(float(word) for word in words[1:])
    return {name: numpy.array(column) for name, column in maps.items() if column}


def last_time_at(text):
    """Where the blocks of the last report begin: each block has a time of its own."""
    at = text.rfind("TIME ::")
    stamp = text[at:text.find("\n", at)]
    while at > 0:
        before = text.rfind("TIME ::", 0, at)
        if before < 0 or text[before:text.find("\n", before)] != stamp:
            break
        at = before
    return at


def saturation_fault(path, active):
    """Largest distance of a saturation from 0..1 and of a sum from 1 in active cells; no number without maps."""
    maps = last_maps(path)
    if not maps:
        return math.nan
    copies = len(next(iter(maps.values()))) // len(active)  # sections repeat a model of one row
    inside = numpy.tile(numpy.asarray(active, dtype=bool), copies)
    continua = {name.rpartition("_")[2] for name in maps}  # Frac, and Mtrx where there are two
    return max((fault_of([column[inside] for name, column in maps.items() if name.endswith(continuum)])
                for continuum in continua), key=worse)


def worse(fault):
    return math.inf if math.isnan(fault) else fault


def fault_of(columns):
    """The same of the phases of one continuum."""
    faults = [numpy.abs(sum(columns) - 1.0).max()]
    for column in columns:
        faults += [(-column).max(), (column - 1.0).max()]
    return float(max(faults, key=worse))


def measure(folder, schedule, active=None):
    """Figures of the run in `folder`."""
    figures = Figures()
    sweep = read_table(folder / "KVR_Run_SweepVolume.out")
    table = well_table(folder)
    if sweep is None:
        figures.finite = False
        return figures
    figures.last_time = float(sweep["TIME"][-1])
    figures.steps = len(sweep["TIME"]) - 1
    figures.in_place = {f"F{phase}IP": float(sweep[f"F{phase}IP_ORG"][0]) for phase in PHASES}
    figures.finite = all(numpy.isfinite(column).all() for column in sweep.values())
    if table is not None:
        figures.finite = figures.finite and all(numpy.isfinite(column).all() for column in table.values())
        figures.totals = phase_totals(table)
        figures.balance, figures.balance_moved = phase_balances(sweep, dict(figures.totals, FOIT=0.0))
        reservoir = reservoir_rates(folder / "KVR_TPlot_Well_Rate.plt")
        figures.over_target, figures.over_well = excess_over_target(schedule, table, reservoir)
    held = [control.bhp for interval in schedule.intervals for control in interval.controls.values() if control.injects]
    figures.pressure = float(sweep["FPR"].max() / max([sweep["FPR"][0]] + held))
    if active is not None:
        figures.saturation = saturation_fault(folder / "KVR_Excl_Grid_Sat.xls", active)
    return figures


def reached_end(figures, schedule):
    return abs(figures.last_time - schedule.end()) <= END_TOLERANCE * schedule.end()
