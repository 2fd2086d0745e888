"""Random legal models. A model is a function of its seed and its class alone.

Only random.Random with a text seed is asked for numbers: its streams do not change between versions of Python."""

import dataclasses
import random

from fluids import draw_curves, draw_fluid
from grids import draw_grid
from initial import draw_initial
from options import draw_options
from wells import draw_limits, draw_schedule, place_wells, plan_rates


@dataclasses.dataclass(frozen=True)
class Family:
    """What the models of a class have in common; None leaves it to chance."""
    fluid: str = None  # water, live, dead-gas
    corner: bool = None
    wells: str = "flood"  # or lone
    gas_injectors: float = 0.3  # share of the injectors of a run with gas
    tiny: bool = False


CLASSES = {
    "water-box": Family("water", False),
    "water-corner": Family("water", True),
    "live-box": Family("live", False, gas_injectors=0.0),
    "live-corner": Family("live", True, gas_injectors=0.0),
    "gas": Family("live", gas_injectors=1.0),
    "dead-gas": Family("dead-gas"),
    "lone": Family(wells="lone"),
    "tiny": Family(wells=None, tiny=True),
}
# On demand alone: not among the classes that seeds go through.
FURTHER = {"dual": Family()}


@dataclasses.dataclass
class Model:
    seed: int
    family: str
    metric: bool
    grid: object
    fluid: object
    curves: list  # of each saturation region
    initial: object
    wells: list
    periods: list
    options: object
    tracer: bool
    dual: object = None  # Dual where the grid is that of fractures with a matrix

    def days(self):
        return sum(sum(period.steps) for period in self.periods)


@dataclasses.dataclass(frozen=True)
class Dual:
    """Matrix of a fractured field, whose fractures are the grid of the model."""
    porosity: float  # of the fractures
    permeability: float  # of the matrix over that of the fractures
    shape_factor: float  # 1/ft2
    gravity: bool
    height: float  # ft, of the blocks; 0: that of the cells


def draw_dual(rng):
    return Dual(10.0 ** rng.uniform(-3.0, -1.5), 10.0 ** rng.uniform(-4.0, -0.5), 10.0 ** rng.uniform(-4.0, 1.0),
                rng.random() < 0.5, rng.choice((0.0, rng.uniform(2.0, 40.0))))


def class_of(seed):
    names = list(CLASSES)
    return names[seed % len(names)]


def step_count(rng, cells, gas):
    """Steps of a run: shorter with gas, fewer in large models."""
    count = rng.randint(30, 90) if gas else rng.randint(15, 60)
    return max(15, min(count, 50000 // cells))


def well_kind(rng, family):
    kind = family.wells or rng.choices(("flood", "lone"), (7, 3))[0]
    return rng.choice(("producers", "producers", "injectors")) if kind == "lone" else kind


def draw_model(seed, name=None):
    name = name or class_of(seed)
    family = {**CLASSES, **FURTHER}[name]
    rng = random.Random(f"{name} {seed}")
    fluid_kind = family.fluid or rng.choice(("water", "live", "dead-gas"))
    corner = rng.random() < 0.5 if family.corner is None else family.corner
    regions = 2 if rng.random() < 0.12 else 1
    capillary = rng.random() < 0.25
    grid = draw_grid(rng, family.tiny, corner, regions)
    pressure = rng.uniform(0.4, 0.55) * float(grid.depth.min())
    highest = 2.2 * (pressure + 0.5 * float(grid.depth.max() - grid.depth.min()))
    fluid = draw_fluid(rng, fluid_kind, highest)
    curves = [draw_curves(rng, fluid.has_gas(), capillary) for _ in range(regions)]
    initial = draw_initial(rng, grid, fluid, curves, pressure)

    beside = rng.random() < (0.4 if family.tiny else 0.1)
    wells = place_wells(rng, grid, initial, fluid, well_kind(rng, family), family.gas_injectors, beside)
    draw_limits(rng, wells, highest)
    mobility = curves[0].water_oil[0][2] / fluid.oil_viscosity(pressure, initial.rs)
    compressibility = fluid.rock[1] + (3e-5 if fluid.has_gas() else 1.2e-5)
    days = plan_rates(rng, wells, grid.pore_volume(), mobility, compressibility)
    longest = days / step_count(rng, grid.cells(), fluid.has_gas())
    periods = draw_schedule(rng, wells, days, longest, fluid, initial, mobility)

    resv = any(control.mode == "RESV" for period in periods for control in period.controls)
    options = draw_options(rng, grid.cells(), fluid.has_gas(), capillary, regions == 1, longest, resv)
    tracer = fluid_kind == "water" and any(well.injects for well in wells) and rng.random() < 0.15
    metric = rng.random() < 0.4
    dual = draw_dual(rng) if name == "dual" else None
    return Model(seed, name, metric, grid, fluid, curves, initial, wells, periods, options, tracer and dual is None, dual)
