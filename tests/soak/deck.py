"""Writes a random model as a deck, in field or metric units."""

import dataclasses

import numpy

from options import option_section


@dataclasses.dataclass(frozen=True)
class Units:
    """Factors from field units to those of the deck."""
    word: str = "FIELD"
    length: float = 1.0
    pressure: float = 1.0
    liquid: float = 1.0
    gas: float = 1.0
    density: float = 1.0

    def rs(self):
        return self.gas / self.liquid

    def bg(self):
        return self.liquid / self.gas


FIELD = Units()
METRIC = Units("METRIC", 0.3048, 0.0689475729, 0.158987295, 28.3168466, 16.0184634)


def number(value):
    return f"{value:.7g}"


def row(values):
    return " ".join(number(value) for value in values)


def array(keyword, values, width=10):
    """Values with repeat counts; `values` in deck order."""
    words, flat = [], [number(value) for value in numpy.ravel(values)]
    start = 0
    for end in range(1, len(flat) + 1):
        if end == len(flat) or flat[end] != flat[start]:
            count = end - start
            words.append(flat[start] if count == 1 else f"{count}*{flat[start]}")
            start = end
    lines = [" ".join(words[n:n + width]) for n in range(0, len(words), width)]
    return keyword + "\n" + "\n".join(lines) + " /\n"


def table(rows):
    return "\n".join(row(values) for values in rows) + "\n/\n"


def whole(model, values, matrix=1.0):
    """Values of the grid; of matrix and fractures one after the other where there are two continua."""
    return values if model.dual is None else numpy.concatenate((values * matrix, values))


def layers(model):
    """Layers above the first one that wells are in."""
    return 0 if model.dual is None else model.grid.shape[2]


def runspec(model, units):
    nx, ny, nz = model.grid.shape
    dual = "DUALPORO\nNODPPM\n" + ("GRAVDR\n" if model.dual.gravity else "") if model.dual else ""
    gas = "GAS\n" + ("DISGAS\n" if model.fluid.live_oil else "") if model.fluid.has_gas() else ""
    tracer = "TRACERS\n1* 1 /\n" if model.tracer else ""
    most = max(well.k2 - well.k1 + 1 for well in model.wells)
    return f"""-- random model {model.seed} of class {model.family}
RUNSPEC
DIMENS
{nx} {ny} {nz + layers(model)} /
{dual}OIL
WATER
{gas}{units.word}
START
1 'JAN' 2020 /
TABDIMS
{len(model.curves)} 1 60 60 /
WELLDIMS
{len(model.wells)} {most} /
{tracer}
"""


def grid_section(model, units):
    grid, text = model.grid, "GRID\n" + ("DPGRID\n" if model.dual else "")
    shape = grid.depth.shape
    if grid.corners is None:
        for keyword, sizes in (("DX", grid.dx[None, None, :]), ("DY", grid.dy[None, :, None]), ("DZ", grid.dz[:, None, None])):
            text += array(keyword, numpy.broadcast_to(sizes, shape) * units.length)
        text += array("TOPS", grid.tops * units.length)
    else:
        text += array("COORD", grid.pillars * units.length, 6) + array("ZCORN", grid.corners * units.length)
    if model.dual is None:
        text += array("PORO", grid.porosity)
    else:
        fractures = numpy.full(shape, model.dual.porosity)
        text += array("PORO", numpy.concatenate((grid.porosity, fractures)))
    for keyword, values in (("PERMX", grid.kx), ("PERMY", grid.ky), ("PERMZ", grid.kz)):
        text += array(keyword, whole(model, values, model.dual.permeability if model.dual else 1.0))
    if not grid.active.all():
        text += array("ACTNUM", whole(model, grid.active))
    return text + dual_rows(model, units) + "\n"


def dual_rows(model, units):
    if model.dual is None:
        return ""
    height = f"DZMTRX\n{number(model.dual.height * units.length)} /\n" if model.dual.height > 0.0 else ""
    return f"SIGMA\n{number(model.dual.shape_factor / units.length**2)} /\n{height}"


def live_oil(fluid, units):
    text = "PVTO\n"
    for rs, rows in fluid.live_oil:
        lines = [row((p * units.pressure, bo, viscosity)) for p, bo, viscosity in rows]
        text += number(rs * units.rs()) + " " + "\n  ".join(lines) + " /\n"
    return text + "/\n"


def props_section(model, units):
    fluid, pressure = model.fluid, units.pressure
    water = (fluid.water["pressure"] * pressure, fluid.water["factor"], fluid.water["compressibility"] / pressure,
             fluid.water["viscosity"], 0.0)
    text = "PROPS\n"
    if fluid.live_oil:
        text += live_oil(fluid, units)
    else:
        text += "PVDO\n" + table((p * pressure, bo, viscosity) for p, bo, viscosity in fluid.dead_oil)
    if fluid.has_gas():
        text += "PVDG\n" + table((p * pressure, bg * units.bg(), viscosity) for p, bg, viscosity in fluid.gas)
    text += f"PVTW\n{row(water)} /\nDENSITY\n{row(value * units.density for value in fluid.density)} /\n"
    text += f"ROCK\n{row((fluid.rock[0] * pressure, fluid.rock[1] / pressure))} /\n"
    text += "SWOF\n" + "".join(saturation_table(region.water_oil, pressure) for region in model.curves)
    if fluid.has_gas():
        text += "SGOF\n" + "".join(saturation_table(region.gas_oil, pressure) for region in model.curves)
    if model.tracer:
        text += "TRACER\n'TRA1' 'WAT' /\n/\n"
    if len(model.curves) > 1:
        text += "\nREGIONS\n" + array("SATNUM", whole(model, model.grid.region), 40)
    return text + "\n"


def saturation_table(rows, pressure):
    return table((s, phase, oil, capillary * pressure) for s, phase, oil, capillary in rows)


def solution_section(model, units):
    initial, text = model.initial, "SOLUTION\n"
    if initial.arrays:
        factors = {"PRESSURE": units.pressure, "RS": units.rs()}
        return text + "".join(array(keyword, whole(model, values * factors.get(keyword, 1.0)))
                              for keyword, values in initial.arrays.items()) + "\n"
    text += (f"EQUIL\n{number(initial.datum * units.length)} {number(initial.pressure * units.pressure)} "
             f"{number(initial.water_contact * units.length)} 0 {number(initial.gas_contact * units.length)} 0{' 1' if model.fluid.live_oil else ''} /\n")
    if model.fluid.live_oil:
        depth = model.grid.depth
        text += "RSVD\n" + table((d * units.length, initial.rs * units.rs())
                                 for d in (float(depth.min()) - 500.0, float(depth.max()) + 500.0))
    return text + "\n"


PRODUCER_ITEM = {"ORAT": 0, "WRAT": 1, "GRAT": 2, "LRAT": 3, "RESV": 4}


def control_row(control, units):
    well, status = control.well, "OPEN" if control.open else "SHUT"
    bhp = number(control.bhp * units.pressure)
    factor = units.gas if control.mode == "GRAT" or well.injects == "GAS" else units.liquid
    rate = number(control.rate * factor)
    if well.injects:
        return f"'{well.name}' '{well.injects}' '{status}' '{control.mode}' {'1*' if control.mode == 'BHP' else rate} 1* {bhp} /\n"
    items = ["1*"] * 5
    if control.mode != "BHP":
        items[PRODUCER_ITEM[control.mode]] = rate
    return f"'{well.name}' '{status}' '{control.mode}' {' '.join(items)} {bhp} /\n"


def control_rows(keyword, rows):
    return f"{keyword}\n{''.join(rows)}/\n" if rows else ""


def schedule_section(model, units):
    text = "SCHEDULE\nWELSPECS\n"
    for well in model.wells:
        phase = well.injects or "OIL"
        text += f"'{well.name}' 'G' {well.i} {well.j} {number(well.depth * units.length)} '{phase}' /\n"
    text += "/\nCOMPDAT\n"
    down = layers(model)
    for well in model.wells:
        text += (f"'{well.name}' {well.i} {well.j} {well.k1 + down} {well.k2 + down} 'OPEN' 2* "
                 f"{number(well.diameter * units.length)} 1* {number(well.skin)} /\n")
    text += "/\n"
    if model.tracer:
        text += "WTRACER\n" + "".join(f"'{well.name}' 'TRA1' 1.0 /\n" for well in model.wells if well.injects) + "/\n"
    for period in model.periods:
        text += control_rows("WCONPROD", [control_row(c, units) for c in period.controls if not c.well.injects])
        text += control_rows("WCONINJE", [control_row(c, units) for c in period.controls if c.well.injects])
        text += array("TSTEP", period.steps)
    return text + "END\n"


def deck_text(model, method, divisor=1):
    """The whole deck; `divisor` cuts the longest step of the run."""
    units = METRIC if model.metric else FIELD
    sections = (runspec, grid_section, props_section, solution_section, schedule_section)
    return "".join(section(model, units) for section in sections) + option_section(model.options, method, divisor)
