"""Option sections of the random models: one draw of all switches, written out for each method."""

import dataclasses

METHODS = ("STREAMLINE", "IMPES", "FIM")


@dataclasses.dataclass
class Options:
    solver: str
    lines: int
    start: str
    missed: bool
    line_solver: str
    nodes: str
    factor: float
    upwind: str
    line_compressibility: bool
    projection: bool
    mappings: int
    pressure_every: int
    repetitions: int
    end_points: bool
    pressure_change: float  # psi of OPTTSTEP, 0 without
    longest: float  # days of MAXDT
    smallest: float  # days, of a step on a line
    capillary: bool
    plots: bool  # reservoir rates of wells stand in the plot table alone


def draw_options(rng, cells, gas, capillary, one_region, longest, plots):
    small = cells <= 400
    analytic = not gas and not capillary and one_region
    nodes = rng.choices(("IRR", "REG", "AUTO"), (4, 3, 3))[0]
    return Options(
        solver=rng.choices(("AMG", "CG", "GMRES", "DGESV"), (6, 1, 1, 1 if small else 0))[0],
        lines=rng.choice((max(5, cells // 10), max(20, cells // 3), max(60, cells))),
        start=rng.choices(("INJ", "PRD", "CEL"), (6, 3, 1))[0],
        missed=rng.random() < 0.4,
        line_solver=rng.choices(("EXPLICIT", "IMPLICIT", "ANALYTICAL"), (6, 3, 0.7 if analytic else 0))[0],
        nodes=nodes,
        factor=rng.choice((0.5, 1.0, 1.0, 2.0)) if nodes == "REG" else 1.0,
        upwind=rng.choices(("SPU", "2PU", "3PU"), (6, 2, 2))[0],
        line_compressibility=rng.random() < 0.85,
        projection=rng.random() < 0.1,
        mappings=rng.choices((1, 2, 5, 10), (6, 2, 1, 1))[0],
        pressure_every=rng.choices((1, 2, 4, 0), (85, 6, 4, 5))[0],
        repetitions=rng.choices((0, 1, 2), (90, 5, 5))[0],
        end_points=rng.random() < 0.05,
        pressure_change=rng.choice((200.0, 500.0)) if rng.random() < 0.1 else 0.0,
        longest=longest, smallest=min(0.01, longest / 1000.0), capillary=capillary, plots=plots)


def yes(flag):
    return "Yes" if flag else "No"


def option_section(options, method, divisor=1):
    """Text behind END; `divisor` shortens the longest step."""
    o = options
    shorter = f"OPTTSTEP\n{o.pressure_change:g} /\n" if o.pressure_change > 0.0 else ""
    repetitions = 0 if method == "FIM" else o.repetitions
    return f"""
TUNEKVR
FDMETHOD
{method}
PSOLVER
{o.solver}
NUMLINE
{o.lines} {o.start} {yes(o.missed)} /
SL1DCON
{o.line_solver} {o.nodes} {o.factor:g} {o.upwind} {yes(o.line_compressibility)} Yes {yes(o.capillary)} {yes(o.projection)} /
SL1DMAP
{o.mappings} /
CFL
0.8 {o.smallest:.6g} /
CFLG
0.8 {o.smallest:.6g} /
CONVERGE
0.01 1e-4 30 30 /
MAXDT
{o.longest / divisor:.9g} /
{shorter}OPTIONKVR
{o.pressure_every} 0 {int(o.end_points)} 0 0 0 0 {repetitions} /
OUTPUTKVR
1 1 {int(o.plots)} 0 0 0 0 0 0 0 /
"""
