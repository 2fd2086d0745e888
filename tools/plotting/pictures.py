"""Pictures of curves, maps and lines, and the figures behind them as tables."""

import csv

import matplotlib

matplotlib.use("Agg")
import matplotlib.pyplot as pyplot  # noqa: E402
import numpy  # noqa: E402
from matplotlib import patheffects  # noqa: E402
from matplotlib.collections import LineCollection  # noqa: E402
from matplotlib.colors import LogNorm  # noqa: E402

from plotting.maps import NO_LINE, UNITS  # noqa: E402
from plotting.run_files import well_places  # noqa: E402

DPI = 110
MOST_NAMED = 36  # wells of one legend
LEGEND_ROWS = 12
LOGARITHMIC = 100.0  # range from which times of flight and permeabilities are shown by their logarithm
MOST_WRITTEN = 60  # wells with their names on a map
MOST_LINES = 600
WIDE = 6.0  # times as long as broad: a true scale would leave a thread
COLOURS = {"OPR": "#2e7d32", "WPR": "#2a7fb8", "WIR": "#123a73", "GPR": "#c8502e", "GIR": "#8c2d04", "LPR": "#555555"}
TITLES = {"OPR": "oil", "WPR": "water", "WIR": "water injected", "GPR": "gas", "GIR": "gas injected", "WCT": "water cut",
          "GOR": "gas-oil ratio", "BHP": "bottom-hole pressure", "PR": "mean pressure"}
FIELD_PANELS = [("Rates", ["FOPR", "FWPR", "FWIR"]), ("Gas", ["FGPR", "FGIR"]), ("Water cut", ["FWCT"]),
                ("Gas-oil ratio", ["FGOR"]), ("Mean pressure", ["FPR"])]
WELL_PANELS = ["WOPR", "WWPR", "WWCT", "WGPR", "WGOR", "WBHP"]
PALETTES = {"swat": ("YlGnBu", 0.0), "endswat": ("YlGnBu", 0.0), "iniswat": ("YlGnBu", 0.0), "soil": ("YlGn", 0.0),
            "sgas": ("YlOrRd", 0.0)}


def write_table(path, names, columns):
    with open(path, "w", newline="") as file:
        table = csv.writer(file)
        table.writerow(names)
        for row in zip(*columns):
            table.writerow([value if isinstance(value, str) else f"{value:.10g}" for value in row])


def save(figure, stem, table, written):
    """Writes the picture, and with `table`, names and columns, the figures beside it."""
    figure.savefig(f"{stem}.png", dpi=DPI)
    pyplot.close(figure)
    written.append(f"{stem}.png")
    if table is not None:
        write_table(f"{stem}.csv", *table)
        written.append(f"{stem}.csv")


def panels(count):
    columns = 1 if count == 1 else 2
    rows = (count + columns - 1) // columns
    figure, axes = pyplot.subplots(rows, columns, figsize=(7.0 * columns, 3.8 * rows), squeeze=False, layout="constrained")
    for spare in axes.flat[count:]:
        spare.remove()
    return figure, list(axes.flat[:count])


def label(axis, title, unit, days):
    axis.set_title(title)
    axis.set_xlabel("days")
    axis.set_ylabel(unit.lower() or "fraction")
    axis.set_xlim(days[0], max(days[-1], days[0] + 1e-9))
    axis.grid(color="#dddddd", linewidth=0.6)


def draw_field(case, curves, stem, data, written):
    shown = [(title, [name for name in names if name in curves.values and (curves.values[name] != 0.0).any()])
             for title, names in FIELD_PANELS]
    shown = [(title, names) for title, names in shown if names]
    if not shown:
        return
    figure, axes = panels(len(shown))
    figure.suptitle(f"{case.name}: field")
    for axis, (title, names) in zip(axes, shown):
        for name in names:
            axis.plot(curves.days, curves.values[name], color=COLOURS.get(name[1:]), label=TITLES.get(name[1:], name))
        label(axis, title, curves.units[names[0]], curves.days)
        if len(names) > 1:
            axis.legend(frameon=False)
    names = [name for _, group in shown for name in group]
    table = (["TIME", "DATE", *names], [curves.days, curves.dates, *[curves.values[name] for name in names]])
    save(figure, stem, table if data else None, written)


def curves_of(curves, vector, wells):
    """Columns of the vector, a well each; wells that stay at 0 are left out where others do not."""
    names = [f"{vector}:{well}" for well in wells if f"{vector}:{well}" in curves.values]
    return [name for name in names if (curves.values[name] != 0.0).any()] or names


def draw_vectors(case, curves, vectors, wells, stem, data, written):
    """A panel per vector; of well vectors a curve per well."""
    shown = []
    for vector in vectors:
        names = [vector] if vector in curves.values else curves_of(curves, vector, wells)
        shown.append((vector, names))
    figure, axes = panels(len(shown))
    figure.suptitle(case.name)
    named = {}
    for axis, (vector, names) in zip(axes, shown):
        for name in names:
            well = name.split(":", 1)[1] if ":" in name else ""
            place = wells.index(well) if well else 0
            line, = axis.plot(curves.days, curves.values[name], color=matplotlib.colormaps["tab20"](place % 20),
                              linestyle=("-", "--", ":")[place // 20 % 3], linewidth=1.2)
            if well:
                named[well] = line
        label(axis, f"{vector}: {TITLES[vector[1:]]}" if vector[1:] in TITLES else vector, curves.unit(vector), curves.days)
    if named:
        listed = list(named)[:MOST_NAMED]
        axes[min(1, len(axes) - 1)].legend([named[well] for well in listed], listed, loc="upper left", bbox_to_anchor=(1.02, 1.0),
                                           fontsize="small", frameon=False, ncol=-(-len(listed) // LEGEND_ROWS),
                                           title=None if len(named) == len(listed) else f"{len(listed)} of {len(named)} wells")
    names = [name for _, group in shown for name in group]
    table = (["TIME", "DATE", *names], [curves.days, curves.dates, *[curves.values[name] for name in names]])
    save(figure, stem, table if data else None, written)


def draw_wells(case, curves, wells, stem, data, written):
    vectors = [vector for vector in WELL_PANELS
               if any((curves.values.get(f"{vector}:{well}", numpy.zeros(1)) != 0.0).any() for well in wells)]
    if vectors:
        draw_vectors(case, curves, vectors, wells, stem, data, written)


# --- maps ----------------------------------------------------------------------------------------------------

def scale(name, values):
    """Palette and range of all that a picture shows."""
    finite = values[numpy.isfinite(values)]
    palette, least = PALETTES.get(name, ("viridis", None))
    if not finite.size:
        return {"cmap": palette}
    positive = finite[finite > 0.0]
    if name.startswith(("tau", "k", "perm", "smoothed_k", "upscaled_perm")) and positive.size and finite.max() > LOGARITHMIC * positive.min():
        return {"cmap": palette, "norm": LogNorm(max(positive.min(), 1e-6 * finite.max()), finite.max())}
    return {"cmap": palette, "vmin": finite.min() if least is None else least, "vmax": max(finite.max(), finite.min() + 1e-12)}


def in_proportion(axis, across, along):
    """True scale, unless one side is far longer."""
    sides = [float(numpy.ptp(across)), float(numpy.ptp(along))]
    axis.set_aspect("equal" if min(sides) > 0.0 and max(sides) / min(sides) < WIDE else "auto")


def write_wells(axis, places):
    for name, (x, y) in list(places.items())[:MOST_WRITTEN]:
        axis.plot([x], [y], marker="o", markersize=3.5, color="black", markerfacecolor="white")
        axis.annotate(name, (x, y), textcoords="offset points", xytext=(4, 4), fontsize=7,
                      path_effects=[patheffects.withStroke(linewidth=2, foreground="white")])


def shown_values(shown, inactive):
    """Values to draw: inactive cells and what stands for no line are left open."""
    values = numpy.where(shown.values >= NO_LINE, numpy.nan, shown.values)
    return values if inactive is None else numpy.where(inactive, numpy.nan, values)


def draw_mesh(axis, across, along, values, at_nodes, look):
    return axis.pcolormesh(across, along, values, shading="flat" if at_nodes else "nearest", **look)


def draw_plan(axis, shown, layer, values, places, look):
    x, y = shown.x[layer - 1], shown.y[layer - 1]
    mesh = draw_mesh(axis, x, y, values[layer - 1], shown.at_nodes, look)
    in_proportion(axis, x, y)
    axis.set_title(f"layer {layer}")
    axis.set_xlabel("x, ft")
    axis.set_ylabel("y, ft")
    write_wells(axis, places)
    return mesh


def draw_section(axis, shown, values, look):
    """The one row of a model that has no width, seen from the side; a single row of cells as a curve."""
    nz, ny, nx = values.shape
    along_x = ny == 1
    across = (shown.x if along_x else shown.y)
    across, depth = (across[:, 0, :], shown.depth[:, 0, :]) if along_x else (across[:, :, 0], shown.depth[:, :, 0])
    cut = values[:, 0, :] if along_x else values[:, :, 0]
    axis.set_xlabel("x, ft" if along_x else "y, ft")
    if nz == 1:
        middle = (across[0, 1:] + across[0, :-1]) / 2 if shown.at_nodes else across[0]
        axis.plot(middle, cut[0], drawstyle="steps-mid")
        axis.set_ylabel(shown.name)
        return None
    mesh = draw_mesh(axis, across, depth, cut, shown.at_nodes, look)
    axis.invert_yaxis()
    axis.set_ylabel("depth, ft")
    return mesh


def layer_table(shown, layers):
    """I, J, K, centre and value of the cells that a picture shows."""
    nz, ny, nx = shown.values.shape
    k, j, i = (axis.ravel() for axis in numpy.meshgrid(numpy.arange(1, nz + 1), numpy.arange(1, ny + 1), numpy.arange(1, nx + 1),
                                                       indexing="ij"))
    kept = numpy.isin(k, layers)
    return (["I", "J", "K", shown.name], [i[kept], j[kept], k[kept], shown.values.ravel()[kept]])


def draw_map(case, shown, layers, inactive, stem, data, written):
    values, places = shown_values(shown, inactive), well_places(case)
    look = scale(shown.name, values[[layer - 1 for layer in layers]])
    nz, ny, nx = values.shape
    if ny == 1 or nx == 1:
        figure, axis = pyplot.subplots(figsize=(9.0, 4.2), layout="constrained")
        mesh, axes = draw_section(axis, shown, values, look), [axis]
        layers = list(range(1, nz + 1))
    else:
        columns = min(len(layers), 4)
        rows = -(-len(layers) // columns)
        width = 7.5 if columns == 1 else 4.2 * columns
        figure, grid = pyplot.subplots(rows, columns, figsize=(width, (6.2 if columns == 1 else 4.0) * rows), squeeze=False,
                                       layout="constrained")
        axes = list(grid.flat[:len(layers)])
        for spare in grid.flat[len(layers):]:
            spare.remove()
        mesh = None
        for axis, layer in zip(axes, layers):
            mesh = draw_plan(axis, shown, layer, values, places, look)
    unit = UNITS.get(shown.name, "")
    figure.suptitle(f"{case.name}: {shown.name}{' (' + unit + ')' if unit else ''} after {shown.day:g} days")
    if mesh is not None:
        figure.colorbar(mesh, ax=axes)
    save(figure, stem, layer_table(shown, layers) if data else None, written)


# --- lines ---------------------------------------------------------------------------------------------------

def line_pieces(lines):
    """Segments of all lines with the time of flight at their middle."""
    pieces, times = [], []
    for line in lines:
        points = numpy.stack([line.x, line.y], axis=1)
        pieces.append(numpy.stack([points[:-1], points[1:]], axis=1))
        times.append((line.time[1:] + line.time[:-1]) / 2)
    return numpy.concatenate(pieces), numpy.concatenate(times)


def line_table(lines):
    number = numpy.concatenate([numpy.full(line.x.size, n + 1) for n, line in enumerate(lines)])
    return ["LINE", "X", "Y", "TOF"], [number, *(numpy.concatenate([getattr(line, axis) for line in lines]) for axis in ("x", "y", "time"))]


def draw_lines(case, lines, title, stem, data, written):
    """Courses in plan view, coloured by time of flight."""
    drawn = lines[::-(-len(lines) // MOST_LINES)]
    figure, axis = pyplot.subplots(figsize=(8.0, 7.0), layout="constrained")
    pieces, times = line_pieces(drawn)
    flown = times[times > 0.0]
    norm = LogNorm(max(flown.min(), flown.max() * 1e-4), flown.max()) if flown.size else None
    collection = LineCollection(pieces, linewidths=0.7, cmap="viridis", norm=norm)
    collection.set_array(numpy.maximum(times, norm.vmin) if norm else times)
    axis.add_collection(collection)
    figure.colorbar(collection, ax=axis, label="time of flight, days")
    axis.autoscale()
    in_proportion(axis, numpy.concatenate([line.x for line in drawn]), numpy.concatenate([line.y for line in drawn]))
    axis.set_xlabel("x, ft")
    axis.set_ylabel("y, ft")
    count = f"{len(lines)} lines" if len(drawn) == len(lines) else f"{len(drawn)} of {len(lines)} lines"
    axis.set_title(f"{case.name}: {count}, {title}")
    write_wells(axis, well_places(case))
    save(figure, stem, line_table(lines) if data else None, written)
