"""Initial state of a random model: contacts and a datum, or pressure and saturations cell by cell."""

import dataclasses

import numpy

OUTSIDE = 300.0  # ft from the field to a contact that is not in it
PRESSURE_GRADIENT = 0.35  # psi/ft, of the arrays


@dataclasses.dataclass
class Initial:
    datum: float  # ft
    pressure: float  # psia there
    water_contact: float
    gas_contact: float
    rs: float  # Mscf/stb, the same at all depths; 0 without live oil
    arrays: dict = None  # by keyword, [nz, ny, nx]; then the figures above only guide the wells

    def pressure_at(self, depth):
        return self.pressure + PRESSURE_GRADIENT * (depth - self.datum)

    def is_oil(self, depth):
        return self.gas_contact < depth < self.water_contact


def contact(rng, depths, share, inside):
    """A depth that leaves `share` of the field above it; outside the field a far one."""
    if inside and depths.max() - depths.min() > 5.0:
        return float(numpy.quantile(depths, share))
    return float(depths.max() + OUTSIDE if share > 0.5 else depths.min() - OUTSIDE)


def draw_arrays(rng, grid, fluid, curves, initial):
    pressure = initial.pressure_at(grid.depth)
    connate = max(region.connate for region in curves)
    water = numpy.full(grid.depth.shape, connate + rng.choice((0.0, rng.uniform(0.02, 0.2))))
    arrays = {"PRESSURE": pressure, "SWAT": water}
    if fluid.has_gas():
        free = fluid.dead_oil is not None or rng.random() < 0.2
        arrays["SGAS"] = numpy.full(grid.depth.shape, rng.uniform(0.02, 0.2) if free else 0.0)
    if fluid.live_oil:  # cells with free gas are saturated whatever is written here
        arrays["RS"] = numpy.full(grid.depth.shape, initial.rs)
    return arrays


def draw_initial(rng, grid, fluid, curves, pressure):
    """`pressure` stands at the top of the field where no contact is inside it."""
    depths = grid.depth[grid.active > 0]
    water_contact = contact(rng, depths, rng.uniform(0.6, 0.95), rng.random() < 0.3)
    cap = fluid.has_gas() and rng.random() < (0.7 if fluid.dead_oil else 0.3)
    gas_contact = contact(rng, depths, rng.uniform(0.05, 0.35), cap)
    cap = cap and gas_contact > depths.min()
    datum = gas_contact if cap else float(depths.min())
    rs = 0.0
    if fluid.live_oil:
        bubble_point = pressure if cap else pressure * rng.uniform(0.5, 0.99)
        rs = fluid.saturated_rs(bubble_point)
    initial = Initial(datum, pressure, water_contact, gas_contact, rs)
    if rng.random() < 0.25:
        initial.arrays = draw_arrays(rng, grid, fluid, curves, initial)
    return initial
