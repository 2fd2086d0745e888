"""Pictures of a history match: misfits run by run, curves of each well, maps of the permeability."""

import re

import matplotlib.pyplot as pyplot
import numpy

from plotting import maps, run_files
from plotting.pictures import panels, save

MISFITS = "KVR_HM_ObjFnc.out"
SENSITIVITIES = (("GTTI", "what a curve answers to ln k, sum over the reports"), ("GBHPI", "psi per unit of ln k, sum over the reports"))
CURVES = (("WCT", "matched curve"), ("BHP", "bottom-hole pressure, psia"))


def has_match(case):
    path = case.path(MISFITS)
    return path.exists() and path.stat().st_size > 0


def by_iteration(path):
    """Names of the columns and rows of numbers; the first column counts the runs."""
    lines = [line.split() for line in path.read_text().splitlines() if line.strip() and not set(line.strip()) <= {"-"}]
    rows = numpy.array([[float(word) for word in words] for words in lines if words[0].isdigit()])
    return lines[0], rows.reshape(-1, len(rows[0]) if len(rows) else 1)


def curves_of(path):
    """Time, observed and calculated of each well."""
    wells = {}
    for line in path.read_text().splitlines():
        well, *numbers = line.split()
        wells.setdefault(well, []).append([float(word) for word in numbers])
    return {well: numpy.array(rows).T for well, rows in wells.items()}


def draw_misfits(case, stem, data, written):
    _, totals = by_iteration(case.path(MISFITS))
    names, cut = by_iteration(case.path("KVR_HM_ObjFnc_WCT_Abs.out"))
    _, ratio = by_iteration(case.path("KVR_HM_ObjFnc_GOR_Abs.out"))
    _, pressure = by_iteration(case.path("KVR_HM_ObjFnc_BHP_Abs.out"))
    shown = [(title, rows) for title, rows in (("water cut, sum of differences", cut), ("gas-oil ratio, sum of differences", ratio),
                                               ("pressure, sum of differences", pressure)) if (rows[:, 1:] != 0).any()]
    figure, axes = panels(1 + len(shown))
    figure.suptitle(f"{case.name}: misfit run by run")
    axes[0].plot(totals[:, 0], totals[:, 2], "o-", color="#123a73")
    axes[0].set_title("what updates are judged by (first run: 1)")
    for axis, (title, rows) in zip(axes[1:], shown):
        for column, well in enumerate(names[1:-1], start=1):
            axis.plot(rows[:, 0], rows[:, column], "o-", markersize=3, label=well)
        axis.set_title(title)
        axis.legend(fontsize="small")
    for axis in axes:
        axis.set_xlabel("run")
        axis.set_ylim(bottom=0)
        axis.grid(color="#dddddd", linewidth=0.6)
    table = (["RUN", "SHIFT_RMS", "MISFIT"], list(totals.T)) if data else None
    save(figure, f"{stem}_Misfit", table, written)


def draw_curves(case, stem, data, written):
    for name, title in CURVES:
        first = curves_of(case.path(f"KVR_Inv_InitObsCal{name}.out"))
        last = curves_of(case.path(f"KVR_Inv_FinalObsCal{name}.out"))
        wells = [well for well in last if well in first and (name != "BHP" or (last[well][1] > 0).any())]
        if not wells:
            continue
        figure, axes = panels(len(wells))
        figure.suptitle(f"{case.name}: {title}")
        for axis, well in zip(axes, wells):
            axis.plot(last[well][0], last[well][1], "o", color="#555555", markersize=3, label="observed")
            axis.plot(first[well][0], first[well][2], "--", color="#c8502e", label="first run")
            axis.plot(last[well][0], last[well][2], color="#2a7fb8", label="last run")
            axis.set_title(well)
            axis.set_xlabel("days")
            axis.grid(color="#dddddd", linewidth=0.6)
        axes[0].legend(fontsize="small")
        columns = [[well for well in wells for _ in last[well][0]]]
        for pick in ((last, 0), (last, 1), (first, 2), (last, 2)):
            columns.append([value for well in wells for value in pick[0][well][pick[1]]])
        table = (["WELL", "TIME", "OBSERVED", "FIRST", "LAST"], columns) if data else None
        save(figure, f"{stem}_{name}", table, written)


def logarithm(case, name):
    """ln k of a map of permeability, with its nodes."""
    entry = maps.MapFile(name, case.path(name))
    shown = maps.read_zone(entry, None, maps.grid_size(case))
    return numpy.log(numpy.where(shown.values > 0, shown.values, numpy.nan)), shown


def draw_maps(case, layers, stem, data, written):
    path = case.path("KVR_Inv_FinalK.out")
    if not path.exists() or path.stat().st_size == 0:
        return
    first, shown = logarithm(case, "KVR_Inv_InitialK.out")
    last, _ = logarithm(case, "KVR_Inv_FinalK.out")
    change = last - first
    low, high = numpy.nanmin([first, last]), numpy.nanmax([first, last])
    bound = max(numpy.nanmax(numpy.abs(change)), 1e-9)
    panels_of = (("first", first, "viridis", low, max(high, low + 1e-9)), ("last", last, "viridis", low, max(high, low + 1e-9)),
                 ("change", change, "RdBu_r", -bound, bound))
    for layer in layers:
        figure, axes = pyplot.subplots(1, 3, figsize=(16, 5), layout="constrained")
        figure.suptitle(f"{case.name}: ln k, layer {layer}")
        for axis, (title, values, palette, least, most) in zip(axes, panels_of):
            plan = (shown.x[layer - 1], shown.y[layer - 1])
            mesh = axis.pcolormesh(*plan, values[layer - 1], cmap=palette, vmin=least, vmax=most, shading="auto")
            figure.colorbar(mesh, ax=axis)
            axis.set_title(title)
            axis.set_aspect("equal")
        table = None
        if data:
            nz, ny, nx = first.shape
            index = numpy.array([(i + 1, j + 1) for j in range(ny) for i in range(nx)]).T
            table = (["I", "J", "FIRST", "LAST"], [*index, first[layer - 1].ravel(), last[layer - 1].ravel()])
        save(figure, f"{stem}_LnK_layer_{layer}", table, written)


def latest(case, kind):
    """The plot of sensitivities of the last iteration that left one, and its number; None without any."""
    pattern = case.path(f"HM_SENSITIVITY_{kind}_Ite*.plt").name
    found = {int(re.search(r"Ite(\d+)", path.name)[1]): path for path in case.folder.glob(pattern) if path.stat().st_size > 0}
    return max(found.items()) if found else None


def summed(case, path, wells):
    """Maps of each well, summed over the reports."""
    size = maps.grid_size(case)
    days = [day for day, _ in maps.zone_times(path)]
    sums = []
    for column in range(len(wells)):
        zones = [maps.read_zone(maps.MapFile("sensitivity", path, column), day, size) for day in days]
        sums.append(sum(zone.values for zone in zones))
    return sums, zones[0]


def draw_sensitivities(case, layers, stem, data, written):
    """Maps of wells whose sensitivities OPTIONKVR 4 has kept; wells without any are left out."""
    names = run_files.read_curves(case).wells()
    for kind, title in SENSITIVITIES:
        found = latest(case, kind)
        if found is None:
            continue
        sums, plan = summed(case, found[1], names)
        shown = [(name, values) for name, values in zip(names, sums) if (values != 0).any()]
        for layer in layers if shown else []:
            figure, axes = panels(len(shown))
            figure.suptitle(f"{case.name}: {title}, iteration {found[0]}, layer {layer}")
            for axis, (name, values) in zip(axes, shown):
                bound = max(numpy.percentile(numpy.abs(values), 99), 1e-30)  # cells of wells stand far out
                mesh = axis.pcolormesh(plan.x[layer - 1], plan.y[layer - 1], values[layer - 1], cmap="RdBu_r", vmin=-bound, vmax=bound,
                                       shading="auto")
                figure.colorbar(mesh, ax=axis)
                axis.set_title(name)
                axis.set_aspect("equal")
            table = None
            if data:
                nz, ny, nx = shown[0][1].shape
                index = numpy.array([(i + 1, j + 1) for j in range(ny) for i in range(nx)]).T
                table = (["I", "J", *[name for name, _ in shown]], [*index, *[values[layer - 1].ravel() for _, values in shown]])
            save(figure, f"{stem}_{kind}_layer_{layer}", table, written)


def draw_match(case, layers, stem, data, written):
    if not has_match(case):
        raise run_files.Trouble(f"no history match of {case.name} in {case.folder}; DOINV makes one")
    draw_misfits(case, stem, data, written)
    draw_curves(case, stem, data, written)
    draw_maps(case, layers, stem, data, written)
    draw_sensitivities(case, layers, stem, data, written)
