"""Wells and schedule of the random models.

Rates follow from what the wells can deliver and from the pore volume, so that models of any size move between
a fraction of their pore volume and a little more than all of it, and limits are met in a good part of them."""

import dataclasses
import math

DARCY = 0.00708  # rb cp / (day psi md ft)
MOST_WELLS = 6
SHORTEST, LONGEST = 2.0, 8000.0  # days of a run
LEAST_DRAWDOWN = 1.0  # psi


@dataclasses.dataclass
class Well:
    name: str
    injects: str  # WATER, GAS, or "" for a producer
    i: int  # from 1, like all counts of a deck
    j: int
    k1: int
    k2: int
    depth: float
    diameter: float
    skin: float
    index: float = 0.0  # rb cp / (day psi)
    pressure: float = 0.0  # psia, initial, of its cells
    limit: float = 0.0  # bottom-hole pressure
    share: float = 0.0  # rb/day that it was drawn for


@dataclasses.dataclass
class Control:
    well: Well
    open: bool
    mode: str  # ORAT, WRAT, GRAT, LRAT, RESV, RATE or BHP
    rate: float  # stb, Mscf or rb a day
    bhp: float  # the limit, or under BHP what is held


@dataclasses.dataclass
class Period:
    controls: list  # rows that stand before the steps
    steps: list  # days, the lengths between reports


def active_runs(grid, i, j):
    """Ranges (k1, k2) of active cells in a column, from 0."""
    runs, start = [], None
    for k in range(grid.shape[2] + 1):
        inside = k < grid.shape[2] and grid.active[k, j, i]
        if inside and start is None:
            start = k
        if not inside and start is not None:
            runs.append((start, k - 1))
            start = None
    return runs


def draw_completion(rng, grid, i, j):
    low, high = rng.choice(active_runs(grid, i, j))
    if rng.random() < 0.5:
        return low, high
    k1 = rng.randint(low, high)
    return k1, rng.randint(k1, high)


def column_index(grid, i, j, k1, k2, radius, skin):
    dx, dy = grid.dx[i], grid.dy[j]
    reach = 0.14 * math.hypot(dx, dy)
    total = 0.0
    for k in range(k1, k2 + 1):
        kh = math.sqrt(grid.kx[k, j, i] * grid.ky[k, j, i]) * grid.dz[k]
        total += DARCY * kh / max(0.5, math.log(reach / radius) + skin)
    return total


def place(rng, grid, initial, name, injects, columns):
    """A well in one of the free columns, producers for choice where there is oil."""
    for attempt in range(20):
        i, j = rng.choice(columns)
        k1, k2 = draw_completion(rng, grid, i, j)
        depths = grid.depth[k1:k2 + 1, j, i]
        if injects or initial.is_oil(float(depths.mean())) or attempt == 19:
            break
    columns.remove((i, j))
    diameter, skin = rng.uniform(0.3, 0.7), rng.choice((0.0, 0.0, -1.0, 2.0))
    depth = float(depths[0])
    index = column_index(grid, i, j, k1, k2, diameter / 2, skin)
    return Well(name, injects, i + 1, j + 1, k1 + 1, k2 + 1, depth, diameter, skin, index, float(initial.pressure_at(depth)))


def place_wells(rng, grid, initial, fluid, kind, gas_share, beside):
    columns = [(i, j) for j in range(grid.shape[1]) for i in range(grid.shape[0]) if grid.active[:, j, i].any()]
    most = min(MOST_WELLS, len(columns))
    if kind == "flood" and most < 2:
        kind = "producers"
    injectors = {"flood": rng.randint(1, max(1, most // 2)), "producers": 0, "injectors": rng.randint(1, min(3, most))}[kind]
    producers = 0 if kind == "injectors" else rng.randint(1, max(1, min(4, most - injectors)))
    wells = []
    for n in range(injectors + producers):
        injects = ""
        if n < injectors:
            injects = "GAS" if fluid.has_gas() and rng.random() < gas_share else "WATER"
        free = columns
        if beside and n == injectors > 0:
            first = wells[0]
            near = [c for c in columns if abs(c[0] + 1 - first.i) + abs(c[1] + 1 - first.j) == 1]
            free = near or columns
        well = place(rng, grid, initial, f"{'I' if injects else 'P'}{n + 1}", injects, list(free))
        columns.remove((well.i - 1, well.j - 1))
        wells.append(well)
    return wells


def draw_limits(rng, wells, highest):
    for well in wells:
        if well.injects:
            well.limit = min(well.pressure * rng.uniform(1.1, 2.0), 0.95 * highest)
        else:
            well.limit = max(100.0, well.pressure * rng.uniform(0.25, 0.85))


def capacity(wells, mobility):
    return sum(well.index * mobility * abs(well.limit - well.pressure) for well in wells)


def plan_rates(rng, wells, pore_volume, mobility, compressibility):
    """Days of the run; each well gets its share in rb/day."""
    injectors = [well for well in wells if well.injects]
    producers = [well for well in wells if not well.injects]
    if injectors and producers:
        able = min(capacity(injectors, mobility), capacity(producers, mobility))
        rate = able * 10.0 ** rng.uniform(-1.5, 0.2)
        moved = pore_volume * rng.uniform(0.1, 1.3)
        days = min(LONGEST, max(SHORTEST, moved / rate))
        rate = min(rate, moved / days)
    else:
        days = 10.0 ** rng.uniform(1.3, 3.5)
        drop = sum(abs(well.limit - well.pressure) for well in wells) / len(wells)
        rate = compressibility * pore_volume * drop * 10.0 ** rng.uniform(-0.7, 0.5) / days
        rate = min(rate, 2.0 * capacity(wells, mobility))
    for group, total in ((injectors, rate), (producers, rate * rng.uniform(0.8, 1.2))):
        for well in group:
            well.share = total / len(group) * rng.uniform(0.5, 1.5)
    return days


def surface_rate(well, mode, rate, fluid, initial):
    """Target of a control mode for a reservoir rate."""
    p, rs = well.pressure, initial.rs
    oil = rate / fluid.bo(p, rs)
    if mode == "RATE":
        return rate / fluid.bg(p) if well.injects == "GAS" else rate / fluid.water["factor"]
    if mode == "GRAT":
        return oil * rs if rs > 0.0 else 0.3 * rate / fluid.bg(p)
    return {"ORAT": oil, "LRAT": oil, "WRAT": rate, "RESV": rate}[mode]


def draw_control(rng, well, fluid, initial, mobility, scale=1.0):
    rate = well.share * scale
    if well.injects:
        mode = rng.choices(("RATE", "BHP"), (7, 3))[0]
    else:
        gas = 1.5 if fluid.has_gas() else 0.0
        mode = rng.choices(("ORAT", "LRAT", "BHP", "RESV", "WRAT", "GRAT"), (3, 3, 3, 1, 0.5, gas))[0]
    if mode != "BHP":
        return Control(well, True, mode, surface_rate(well, mode, rate, fluid, initial), well.limit)
    drawdown = rate / (well.index * mobility) * rng.uniform(1.0, 3.0)
    drawdown = min(max(drawdown, LEAST_DRAWDOWN), abs(well.limit - well.pressure))
    return Control(well, True, mode, 0.0, well.pressure + (drawdown if well.injects else -drawdown))


def change_controls(rng, current, fluid, initial, mobility):
    """Rows of a later period for one or two wells: shut, opened again, or given another target."""
    rows = []
    for name in rng.sample(sorted(current), min(len(current), rng.randint(1, 2))):
        old = current[name]
        if not old.open:
            row = dataclasses.replace(old, open=True)
        elif rng.random() < 0.4:
            row = dataclasses.replace(old, open=False)
        else:
            row = draw_control(rng, old.well, fluid, initial, mobility, rng.uniform(0.4, 2.0))
        current[name] = row
        rows.append(row)
    return rows


def draw_steps(rng, days, longest):
    """Lengths between the reports of a period."""
    kind = rng.choice(("one", "even", "uneven"))
    if kind == "one":
        return [days]
    if kind == "even":
        count = max(1, round(days / longest / rng.choice((1, 2, 4))))
        return [days / count] * count
    cuts = sorted(rng.uniform(0.0, days) for _ in range(rng.randint(1, 6)))
    lengths = [b - a for a, b in zip([0.0] + cuts, cuts + [days])]
    return [length for length in lengths if length > 0.01 * days] or [days]


def draw_schedule(rng, wells, days, longest, fluid, initial, mobility):
    shares = [rng.uniform(0.5, 1.5) for _ in range(rng.choice((1, 1, 2, 3)))]
    current, periods = {}, []
    for n, share in enumerate(shares):
        if n == 0:
            rows = [draw_control(rng, well, fluid, initial, mobility) for well in wells]
            if len(shares) > 1 and len(wells) > 1 and rng.random() < 0.3:
                rows[-1].open = False
            current = {row.well.name: row for row in rows}
        else:
            rows = change_controls(rng, current, fluid, initial, mobility)
        periods.append(Period(rows, draw_steps(rng, days * share / sum(shares), longest)))
    return periods
