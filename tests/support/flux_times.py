"""Time of flight by finite volumes on given face fluxes, and face fluxes by Darcy's law from the files of another simulator."""

import numpy

CUBIC_FEET_PER_BARREL = 5.614583
DARCY_HEAD = 144.0  # lb/ft3 * ft to psi


def net_outflow(fluxes):
    """What leaves each cell through its faces: `fluxes` by axis x, y, z on arrays [k, j, i], of the face toward higher
    index, positive that way."""
    total = numpy.zeros_like(fluxes[0])
    for axis, flux in zip((2, 1, 0), fluxes):
        total += flux
        inner = numpy.moveaxis(total, axis, 0)
        inner[1:] -= numpy.moveaxis(flux, axis, 0)[:-1]
    return total


def refine(fluxes, parts):
    """Fluxes through the high faces of parts of the cells, linear along each axis inside a cell. `parts`: along x, y, z."""
    refined = []
    for n, (axis, flux) in enumerate(zip((2, 1, 0), fluxes)):
        low = numpy.zeros_like(flux)
        numpy.moveaxis(low, axis, 0)[1:] = numpy.moveaxis(flux, axis, 0)[:-1]
        m = parts[n]
        steps = numpy.arange(1, m + 1) / m
        shape = list(flux.shape)
        fine = numpy.expand_dims(low, axis + 1) + numpy.expand_dims(flux - low, axis + 1) * steps.reshape(
            [-1 if d == axis + 1 else 1 for d in range(4)])
        shape[axis] *= m
        fine = fine.reshape(shape)
        for other, count in zip((2, 1, 0), parts):
            if other != axis:
                fine = numpy.repeat(fine, count, axis=other) / count
        refined.append(fine)
    return refined


def upwind_times(fluxes, volume, entering):
    """First-order finite volumes of v . grad(tau) = porosity: tau = (volume + sum of q_in tau_in) / (sum of q_in + entering)
    in the order of flow. Fluid enters wells with time 0: `entering`, volume a day. Parts on cycles keep NaN."""
    shape = volume.shape
    strides = [1, shape[2], shape[1] * shape[2]]
    count = volume.size
    flat = [flux.ravel() for flux in fluxes]
    cells = numpy.arange(count)
    sources, targets, rates = [], [], []
    for stride, flux in zip(strides, flat):
        forward = cells[flux > 0.0]
        backward = cells[flux < 0.0]
        sources += [forward, backward + stride]
        targets += [forward + stride, backward]
        rates += [flux[forward], -flux[backward]]
    sources, targets, rates = (numpy.concatenate(parts) for parts in (sources, targets, rates))
    order = numpy.argsort(sources, kind="stable")
    sources, targets, rates = sources[order], targets[order], rates[order]
    first = numpy.searchsorted(sources, numpy.arange(count + 1))
    waiting = numpy.bincount(targets, minlength=count)
    inflow = numpy.bincount(targets, weights=rates, minlength=count) + entering.ravel()
    brought = volume.ravel().astype(float).copy()
    times = numpy.full(count, numpy.nan)
    front = cells[(waiting == 0) & (inflow > 0.0)]
    while front.size:
        times[front] = brought[front] / inflow[front]
        counts = first[front + 1] - first[front]
        if counts.sum() == 0:
            break
        offsets = numpy.repeat(first[front] - numpy.concatenate([[0], numpy.cumsum(counts)[:-1]]), counts)
        edges = offsets + numpy.arange(counts.sum())
        numpy.add.at(brought, targets[edges], rates[edges] * times[sources[edges]])
        numpy.subtract.at(waiting, targets[edges], 1)
        touched = numpy.unique(targets[edges])
        front = touched[(waiting[touched] == 0) & (inflow[touched] > 0.0)]
    return times.reshape(shape)


def part_times(fluxes, volume, entering, parts):
    """Times on `parts` of every cell along x, y, z as one array [k, j, i] of the parts. What enters spreads over the parts of
    its cell."""
    share = numpy.prod(parts)
    fine_volume, fine_entering = volume / share, entering / share
    for axis, count in zip((2, 1, 0), parts):
        fine_volume = numpy.repeat(fine_volume, count, axis=axis)
        fine_entering = numpy.repeat(fine_entering, count, axis=axis)
    return upwind_times(refine(fluxes, parts), fine_volume, fine_entering)


def exact_times(fluxes, volume, places, sources, most=5000):
    """Days from the cells `sources` (rows i, j, k from 0) to `places` (x, y, z in cells), inside a well's cell its mean residence: back
    along the flow from cell to cell, each coordinate by its own exponential, as fluxes linear between two faces give it (Pollock,
    Ground Water 26, 1988). What finite volumes come to on ever more parts of a cell. NaN where the way ends elsewhere."""
    sides = []
    for axis, flux in zip((2, 1, 0), fluxes):
        low = numpy.zeros_like(flux)
        numpy.moveaxis(low, axis, 0)[1:] = numpy.moveaxis(flux, axis, 0)[:-1]
        sides.append((low, flux))
    place = numpy.array(places, dtype=float)
    cell = numpy.clip(place.astype(int), 0, numpy.array(volume.shape[::-1]) - 1)
    is_source = numpy.zeros(volume.shape, dtype=bool)
    is_source[tuple(numpy.array(sources).reshape(-1, 3)[:, ::-1].T)] = True
    times = numpy.zeros(len(place))
    arrived = is_source[tuple(cell[:, ::-1].T)]
    going = numpy.flatnonzero(~arrived)
    for _ in range(most):
        if going.size == 0:
            break
        at = cell[going]
        k, j, i = at[:, 2], at[:, 1], at[:, 0]
        within = place[going] - at
        days, steps, speeds, slopes = (numpy.zeros(at.shape) for _ in range(4))
        for axis, (low, high) in enumerate(sides):
            entry, exit_ = (side[k, j, i] / volume[k, j, i] for side in (low, high))  # cells a day
            slope = exit_ - entry
            speed = entry + slope * within[:, axis]
            back, ahead = (speed > 0.0) & (entry > 0.0), (speed < 0.0) & (exit_ < 0.0)
            even = numpy.abs(slope) < 1e-9 * numpy.abs(speed)
            with numpy.errstate(divide="ignore", invalid="ignore"):
                way = numpy.where(back, within[:, axis], 1.0 - within[:, axis]) / numpy.abs(speed)
                bent = numpy.log(speed / numpy.where(back, entry, exit_)) / slope
            days[:, axis] = numpy.where(back | ahead, numpy.maximum(numpy.where(even, way, bent), 0.0), numpy.inf)
            steps[:, axis] = numpy.where(back, -1, 1)
            speeds[:, axis], slopes[:, axis] = speed, slope
        first = days.argmin(axis=1)
        passed = days[numpy.arange(len(at)), first]
        moves = numpy.isfinite(passed)
        going, at, within, first, passed, steps, speeds, slopes = (
            values[moves] for values in (going, at, within, first, passed, steps, speeds, slopes))
        turn = slopes * passed[:, None]
        straight = numpy.abs(turn) < 1e-9
        shift = numpy.where(straight, -speeds * passed[:, None], speeds * numpy.expm1(-turn) / numpy.where(straight, 1.0, slopes))
        within = numpy.clip(within + shift, 0.0, 1.0)
        rows = numpy.arange(len(at))
        within[rows, first] = numpy.where(steps[rows, first] < 0, 0.0, 1.0)
        place[going] = at + within
        cell[going, first] += steps[rows, first].astype(int)
        times[going] += passed
        arrived[going] = is_source[tuple(cell[going][:, ::-1].T)]
        going = going[~arrived[going]]
    end = tuple(cell[:, ::-1].T)
    return numpy.where(arrived, times + volume[end] / numpy.where(arrived, net_outflow(fluxes)[end], 1.0), numpy.nan)


def exact_means(fluxes, volume, sources, cells, points):
    """Mean over `points` by `points` places of each of the flat `cells` of a layer, in the middle of its height."""
    shares = (numpy.arange(points) + 0.5) / points
    i, j = cells % volume.shape[2], cells // volume.shape[2]
    places = [numpy.stack([i + x, j + y, 0.5 + 0.0 * i], axis=1) for x in shares for y in shares]
    return exact_times(fluxes, volume, numpy.concatenate(places), sources).reshape(points**2, -1).mean(axis=0)


def cell_means(times, parts):
    """Mean of each cell of what its parts have."""
    nz, ny, nx = times.shape
    return times.reshape(nz // parts[2], parts[2], ny // parts[1], parts[1], nx // parts[0], parts[0]).mean(axis=(1, 3, 5))


def mean_difference(times, reference, slowest=0.05):
    """Mean relative difference, without the slowest cells by the reference and those that either leaves out."""
    known = numpy.isfinite(reference) & (times < 1e9)
    times, reference = times[known], reference[known]
    kept = reference <= numpy.quantile(reference, 1.0 - slowest)
    return float(numpy.mean(numpy.abs(times[kept] - reference[kept]) / reference[kept]))


def darcy_fluxes(static, pressures, densities, mobilities):
    """Total reservoir flux through the high faces, rb/day: sum over the phases of T * upstream mobility * (p - p_next + rho *
    depth difference / 144), with the transmissibilities and depths of the static file. Arrays [k, j, i] by phase."""
    shape = densities[0].shape
    depth = static["DEPTH"].reshape(shape).astype(float)
    fluxes = []
    for axis, keyword in zip((2, 1, 0), ("TRANX", "TRANY", "TRANZ")):
        trans = static[keyword].reshape(shape).astype(float)
        total = numpy.zeros(shape)
        here = tuple(slice(None, -1) if d == axis else slice(None) for d in range(3))
        there = tuple(slice(1, None) if d == axis else slice(None) for d in range(3))
        for p, rho, mobility in zip(pressures, densities, mobilities):
            drive = p[here] - p[there] + 0.5 * (rho[here] + rho[there]) * (depth[there] - depth[here]) / DARCY_HEAD
            total[here] += trans[here] * drive * numpy.where(drive > 0.0, mobility[here], mobility[there])
        fluxes.append(total)
    return fluxes


def at_points(times, places):
    """Linear between the centres of the parts: `places` x, y, z as shares of the grid's lengths."""
    lows, shares = [], []
    for axis, count in zip((0, 1, 2), times.shape[::-1]):
        x = numpy.clip(places[:, axis] * count - 0.5, 0.0, max(count - 1.000001, 0.0))
        lows.append(x.astype(int))
        shares.append(x - lows[-1])
    values = numpy.zeros(len(places))
    for corner in range(8):
        steps = [(corner >> axis) & 1 for axis in range(3)]
        weight = numpy.prod([share if step else 1.0 - share for share, step in zip(shares, steps)], axis=0)
        i, j, k = (numpy.minimum(low + step, count - 1) for low, step, count in zip(lows, steps, times.shape[::-1]))
        values += numpy.where(weight > 0.0, weight * times[k, j, i], 0.0)
    return values


def line_nodes(path):
    """Nodes of every line of a plot file of lines: arrays of x, y, depth, time of flight and what follows."""
    text = path.read_text().splitlines()
    lines = []
    place = 0
    while place < len(text):
        head = text[place].split()
        place += 1
        if head[:1] == ["ZONE"] and "F=POINT" in head:
            count = int(head[head.index("=") + 1])
            lines.append(numpy.array([[float(word) for word in row.split()] for row in text[place:place + count]]))
            place += count
    return lines
