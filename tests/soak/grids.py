"""Grids and rock of the random models: ft and md, arrays in the order (k, j, i) of a deck."""

import dataclasses
import math

import numpy

LARGEST = 2500  # cells
LARGEST_TINY = 30
STEEPEST = 15.0  # degrees
LEAST_PERMEABILITY, MOST_PERMEABILITY = 0.1, 1e4  # md, five decades
LAYOUTS = ("column", "areal", "section", "volume")


@dataclasses.dataclass
class Grid:
    shape: tuple  # nx, ny, nz
    dx: numpy.ndarray  # [nx]
    dy: numpy.ndarray  # [ny]
    dz: numpy.ndarray  # [nz]
    tops: numpy.ndarray  # [ny, nx] top of the first layer at the centre of the column
    depth: numpy.ndarray  # [nz, ny, nx] centre of the cell
    pillars: numpy.ndarray = None  # [ny + 1, nx + 1, 6], of corner-point grids
    corners: numpy.ndarray = None  # [2 nz, 2 ny, 2 nx] depths, in deck order
    porosity: numpy.ndarray = None  # [nz, ny, nx], like all that follow
    kx: numpy.ndarray = None
    ky: numpy.ndarray = None
    kz: numpy.ndarray = None
    active: numpy.ndarray = None
    region: numpy.ndarray = None  # saturation table of the cell, from 1

    def cells(self):
        return self.porosity.size

    def volumes(self):
        """Bulk volume, ft3; pillars shear a cell but keep its volume."""
        return self.dz[:, None, None] * self.dy[None, :, None] * self.dx[None, None, :]

    def pore_volume(self):
        """rb, of the active cells."""
        return float((self.volumes() * self.porosity * self.active).sum() / 5.614583)


def draw_shape(rng, tiny):
    """Counts along the axes, their product at most LARGEST or LARGEST_TINY."""
    if tiny:
        while True:
            shape = rng.randint(1, 6), rng.randint(1, 4), rng.randint(1, 4)
            if 1 <= math.prod(shape) <= LARGEST_TINY:
                return shape
    cells = math.exp(rng.uniform(math.log(30), math.log(LARGEST)))
    layout = rng.choices(LAYOUTS, (1, 3, 2, 4))[0]
    if layout == "column":
        return min(200, round(cells)), 1, 1
    layers = {"areal": 1, "section": rng.randint(2, 12), "volume": rng.randint(2, 8)}[layout]
    columns = max(4.0, cells / layers)
    if layout == "section":
        return min(150, int(columns)), 1, layers
    nx = max(2, round(math.sqrt(columns * rng.uniform(0.5, 2.0))))
    return nx, max(2, int(columns / nx)), layers


def sizes(rng, count, least, most):
    """Lengths of `count` cells, even or each by itself."""
    even = rng.uniform(least, most)
    if rng.random() < 0.5:
        return numpy.full(count, even)
    return numpy.array([even * rng.uniform(0.5, 2.0) for _ in range(count)])


def draw_surface(rng, length, width):
    """Depth of the top of the field as a function of x and y."""
    top = rng.uniform(3000.0, 9000.0)
    slope, bump = 0.0, 0.0
    if rng.random() < 0.6:
        slope = math.tan(math.radians(rng.uniform(0.5, STEEPEST)))
        slope = min(slope, 1500.0 / (length + width))
    if rng.random() < 0.3:
        bump = rng.uniform(-0.02, 0.02) * (length + width)
    angle = rng.uniform(0.0, 2.0 * math.pi)

    def surface(x, y):
        shape = numpy.sin(math.pi * x / length) * numpy.sin(math.pi * y / width)
        return top + slope * (math.cos(angle) * x + math.sin(angle) * y) + bump * shape

    return surface


def draw_throws(rng, nx, ny, thickness):
    """Depth of each column below the surface: none, or up to two faults along y."""
    throws = numpy.zeros((ny, nx))
    for _ in range(rng.choice((0, 0, 1, 2)) if nx > 3 else 0):
        throws[:, rng.randint(1, nx - 1):] += rng.uniform(-1.0, 1.0) * thickness
    return throws


def corner_grid(grid, rng, surface, x_edge, y_edge, throws):
    """Pillars that may lean, layers parallel to the surface, a fault where the throw changes."""
    nx, ny, nz = grid.shape
    base = numpy.concatenate([[0.0], numpy.cumsum(grid.dz)])
    x, y = numpy.meshgrid(x_edge, y_edge)
    top = surface(x, y)
    high, low = top.min() - 500.0, top.max() + base[-1] + 500.0
    lean = rng.uniform(-0.1, 0.1) if rng.random() < 0.3 else 0.0
    grid.pillars = numpy.stack([x, y, numpy.full_like(x, high), x + lean * (low - high), y, numpy.full_like(x, low)], -1)
    # Corner columns: each column of cells has the four pillars around it, x fastest.
    i = numpy.repeat(numpy.arange(nx), 2) + numpy.tile([0, 1], nx)
    j = numpy.repeat(numpy.arange(ny), 2) + numpy.tile([0, 1], ny)
    corner_top = top[numpy.ix_(j, i)] + numpy.repeat(numpy.repeat(throws, 2, 0), 2, 1)
    face = numpy.repeat(base, 2)[1:-1]  # top and bottom of each layer
    grid.corners = corner_top[None] + face[:, None, None]


def draw_geometry(rng, shape, corner):
    nx, ny, nz = shape
    dx = sizes(rng, nx, 30.0, 400.0)
    dy = sizes(rng, ny, 30.0, 400.0)
    dz = sizes(rng, nz, 4.0, 50.0)
    x_edge = numpy.concatenate([[0.0], numpy.cumsum(dx)])
    y_edge = numpy.concatenate([[0.0], numpy.cumsum(dy)])
    surface = draw_surface(rng, x_edge[-1], y_edge[-1])
    x, y = numpy.meshgrid((x_edge[1:] + x_edge[:-1]) / 2, (y_edge[1:] + y_edge[:-1]) / 2)
    throws = draw_throws(rng, nx, ny, float(dz.sum())) if corner else numpy.zeros((ny, nx))
    tops = surface(x, y) + throws
    middle = numpy.cumsum(dz) - dz / 2
    grid = Grid(shape, dx, dy, dz, tops, tops[None] + middle[:, None, None])
    if corner:
        corner_grid(grid, rng, surface, x_edge, y_edge, throws)
    return grid


def draw_permeability(rng, shape):
    """One value per cell: even, by layers, scattered, or with a channel through it."""
    nx, ny, nz = shape
    base = 10.0 ** rng.uniform(-0.5, 3.7)
    field = numpy.full((nz, ny, nx), base)
    kind = rng.choice(("even", "layers", "scattered", "channel"))
    if kind == "layers":
        field *= 10.0 ** numpy.array([rng.uniform(-1.0, 1.0) for _ in range(nz)])[:, None, None]
    elif kind == "scattered":
        spread = rng.uniform(0.2, 1.2)
        field *= 10.0 ** numpy.array([spread * rng.gauss(0.0, 1.0) for _ in range(field.size)]).reshape(field.shape)
    elif kind == "channel":
        share, contrast = rng.uniform(0.2, 0.6), 10.0 ** rng.uniform(1.0, 4.0)
        inside = numpy.array([rng.random() < share for _ in range(ny * nz)]).reshape(nz, ny)
        field[inside] *= contrast
    return numpy.clip(field, LEAST_PERMEABILITY, MOST_PERMEABILITY)


def draw_rock(rng, grid, regions):
    nx, ny, nz = grid.shape
    grid.kx = draw_permeability(rng, grid.shape)
    grid.ky = grid.kx * (1.0 if rng.random() < 0.7 else rng.uniform(0.3, 3.0))
    grid.kz = grid.kx * 10.0 ** rng.uniform(-2.0, 0.0)
    grid.porosity = numpy.full(grid.kx.shape, rng.uniform(0.08, 0.3))
    if rng.random() < 0.5:  # looser where it is more permeable
        grid.porosity = numpy.clip(grid.porosity * (1.0 + 0.15 * numpy.log10(grid.kx / grid.kx.mean())), 0.03, 0.35)
    share = rng.choice((0.0, 0.0, 0.05, 0.25))
    grid.active = numpy.array([int(rng.random() >= share) for _ in range(nx * ny * nz)]).reshape(grid.kx.shape)
    if not grid.active.any():
        grid.active[:] = 1
    grid.region = numpy.ones(grid.kx.shape, dtype=int)
    if regions > 1:
        grid.region[:, :, nx // 2:] = 2


def draw_grid(rng, tiny, corner, regions):
    grid = draw_geometry(rng, draw_shape(rng, tiny), corner)
    draw_rock(rng, grid, regions)
    return grid
