"""Fluids and saturation functions of the random models, in field units.

Every table is smooth and monotone, and saturated oil keeps a positive compressibility: what Bo loses with
pressure stays below what the gas going into solution frees."""

import dataclasses
import math

SURFACE = 14.7  # psia
TEMPERATURE = 640.0  # Rankine, of the gas formation factor
GAS_CONSTANT = 5.035  # rb psi / (Mscf R)


@dataclasses.dataclass
class Fluid:
    water: dict  # reference pressure, factor, compressibility, viscosity
    rock: tuple  # reference pressure, compressibility
    density: tuple  # oil, water, gas at the surface
    dead_oil: list = None  # rows p, Bo, viscosity
    live_oil: list = None  # rows (Rs, [(p, Bo, viscosity), ...])
    gas: list = None  # rows p, Bg (rb/Mscf), viscosity

    def has_gas(self):
        return self.gas is not None

    def bo(self, pressure, rs):
        if self.dead_oil:
            return interpolate([(row[0], row[1]) for row in self.dead_oil], pressure)
        return interpolate([(row[0], row[1][0][1]) for row in self.live_oil], rs)

    def oil_viscosity(self, pressure, rs):
        if self.dead_oil:
            return interpolate([(row[0], row[2]) for row in self.dead_oil], pressure)
        return interpolate([(row[0], row[1][0][2]) for row in self.live_oil], rs)

    def saturated_rs(self, pressure):
        return interpolate([(row[1][0][0], row[0]) for row in self.live_oil], pressure) if self.live_oil else 0.0

    def bg(self, pressure):
        return interpolate([(row[0], row[1]) for row in self.gas], pressure)


def interpolate(rows, at):
    """Linear between rows, the end values outside."""
    if at <= rows[0][0]:
        return rows[0][1]
    for (x0, y0), (x1, y1) in zip(rows, rows[1:]):
        if at <= x1:
            return y0 + (y1 - y0) * (at - x0) / (x1 - x0)
    return rows[-1][1]


def gas_factor(pressure):
    """Bg, rb/Mscf, of a gas whose deviation factor dips to 0.88 and rises again; p/Z rises all the way."""
    reduced = pressure / 3000.0
    deviation = 1.0 - 0.33 * reduced * math.exp(-reduced) + 0.02 * reduced ** 2
    return GAS_CONSTANT * TEMPERATURE * deviation / pressure


def gas_table(rng, highest):
    count = 20
    ratio = (highest / SURFACE) ** (1.0 / (count - 1))
    thin, thick = rng.uniform(0.008, 0.013), rng.uniform(0.02, 0.045)
    pressures = [SURFACE * ratio ** n for n in range(count)]
    return [(p, gas_factor(p), thin + (thick - thin) * p / highest) for p in pressures]


def live_oil_table(rng, highest, gas):
    """Saturated rows up to `highest`, under-saturated rows behind the last one."""
    count = rng.randint(6, 12)
    most_rs = rng.uniform(0.15, 0.3) * highest / 1000.0  # Mscf/stb
    power = rng.uniform(0.9, 1.1)
    swelling = min(rng.uniform(0.3, 0.45), 0.75 * gas[-1][1])  # rb/Mscf
    dead, live = rng.uniform(0.8, 5.0), rng.uniform(0.3, 0.7)
    base = rng.uniform(1.03, 1.1)
    rows = []
    for n in range(count):
        p = SURFACE + (highest - SURFACE) * n / (count - 1)
        rs = most_rs * (p / highest) ** power
        viscosity = live + (dead - live) * math.exp(-2.5 * rs / most_rs)
        rows.append([rs, [(p, base + swelling * rs, viscosity)]])
    compressibility, thickening = rng.uniform(8e-6, 2e-5), rng.uniform(2e-5, 8e-5)
    p0, bo0, viscosity0 = rows[-1][1][0]
    for step in (2000.0, 5000.0, 10000.0):
        rows[-1][1].append((p0 + step, bo0 * math.exp(-compressibility * step), viscosity0 * (1.0 + thickening * step)))
    return rows


def dead_oil_table(rng, highest):
    compressibility, thickening = rng.uniform(3e-6, 2e-5), rng.uniform(5e-6, 5e-5)
    factor, viscosity = rng.uniform(1.02, 1.3), 10.0 ** rng.uniform(-0.3, 1.0)
    return [(p, factor * math.exp(-compressibility * p), viscosity * (1.0 + thickening * p))
            for p in (SURFACE, 1000.0, 2000.0, 4000.0, 7000.0, max(highest, 10000.0))]


def draw_fluid(rng, kind, highest):
    """`kind` is water (dead oil and water), live or dead-gas; tables reach to `highest` psia."""
    gas = None if kind == "water" else gas_table(rng, highest)
    fluid = Fluid(
        water={"pressure": 3000.0, "factor": rng.uniform(1.0, 1.04), "compressibility": rng.uniform(2.5e-6, 4e-6),
               "viscosity": rng.uniform(0.3, 0.9)},
        rock=(3000.0, 10.0 ** rng.uniform(-6.0, -5.0)),
        density=(rng.uniform(48.0, 56.0), rng.uniform(62.5, 66.0), rng.uniform(0.045, 0.07)), gas=gas)
    if kind == "live":
        fluid.live_oil = live_oil_table(rng, highest, gas)
    else:
        fluid.dead_oil = dead_oil_table(rng, highest)
    return fluid


@dataclasses.dataclass
class Curves:
    connate: float
    residual: float  # oil, to water
    water_oil: list  # rows Sw, krw, krow, pcow
    gas_oil: list = None  # rows Sg, krg, krog, pcog


def draw_curves(rng, gas, capillary, count=20):
    """Corey curves; the oil curves meet at connate water without gas."""
    connate, residual = rng.uniform(0.1, 0.25), rng.uniform(0.15, 0.3)
    water_end, oil_end, gas_end = rng.uniform(0.2, 0.7), rng.uniform(0.7, 1.0), rng.uniform(0.5, 0.95)
    water_power, oil_power, gas_power = (rng.uniform(1.5, 4.0) for _ in range(3))
    entry = rng.uniform(0.5, 12.0) if capillary else 0.0  # psi at connate water
    rows = []
    for n in range(count):
        s = n / (count - 1)
        pc = entry * (1.0 - s) ** 2
        rows.append((connate + s * (1.0 - connate - residual), water_end * s ** water_power,
                     oil_end * (1.0 - s) ** oil_power, pc))
    rows.append((1.0, 1.0, 0.0, 0.0))
    curves = Curves(connate, residual, rows)
    if gas:
        critical, left = rng.choice((0.0, 0.03)), rng.uniform(0.05, 0.15)
        top = 1.0 - connate
        curves.gas_oil = [(0.0, 0.0, oil_end, 0.0)]
        for n in range(0 if critical > 0.0 else 1, count):
            s = n / (count - 1)
            sg = critical + s * (top - left - critical)
            oil = oil_end * (1.0 - sg / (top - left)) ** oil_power if n < count - 1 else 0.0
            curves.gas_oil.append((sg, gas_end * s ** gas_power, oil, 0.0))
        curves.gas_oil.append((top, 1.0, 0.0, 0.0))
    return curves
