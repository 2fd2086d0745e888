"""Maps from the files for viewers: CASE.X0000 and on, or one CASE.UNRST with all reports, on the grid of CASE.EGRID."""

import re
import struct

import numpy

from plotting.run_files import Trouble

KINDS = {"INTE": ">i4", "REAL": ">f4", "DOUB": ">f8"}
WIDTHS = {"INTE": 4, "REAL": 4, "DOUB": 8, "LOGI": 4, "CHAR": 8, "MESS": 0}
NOT_OF_CELLS = ("FLR",)  # through faces: of the size of a map, but none


def blocks(path):
    """Keyword, kind, values of every block; values only of numbers, and None where the file ends inside one."""
    with open(path, "rb") as file:
        while len(mark := file.read(4)) == 4:
            head = file.read(struct.unpack(">i", mark)[0])
            file.read(4)
            if len(head) != 16:
                return
            keyword, kind = (part.decode("ascii", "replace").strip() for part in (head[:8], head[12:]))
            width = int(kind[1:]) if re.fullmatch(r"C\d{3}", kind) else WIDTHS.get(kind, 0)
            size = struct.unpack(">i", head[8:12])[0] * width
            payload = b""
            while len(payload) < size:
                mark = file.read(4)
                if len(mark) < 4:
                    return
                payload += file.read(struct.unpack(">i", mark)[0])
                file.read(4)
            yield keyword, kind, numpy.frombuffer(payload, KINDS[kind]) if kind in KINDS else None


def moments_of(path):
    """Days and the blocks of every report of a file by keyword; the first block of each keyword."""
    moments = []
    for keyword, kind, values in blocks(path):
        if not moments or keyword == "SEQNUM":
            moments.append([0.0, {}])
        if keyword == "DOUBHEAD":
            moments[-1][0] = float(values[0])
        elif kind == "REAL" and values.size:
            moments[-1][1].setdefault(keyword, values)
    return moments


def restart_paths(case):
    """The files of the run: those of its name; in a run without a named deck those of the only name there is."""
    found = {}
    for path in sorted(case.folder.iterdir()):
        if re.fullmatch(r"\.(X\d{4}|UNRST)", path.suffix) and (case.name in ("KVR", path.stem)):
            found.setdefault(path.stem, []).append(path)
    if len(found) != 1:
        return []
    (paths,) = found.values()
    separate = [path for path in paths if path.suffix != ".UNRST"]
    return separate or paths


def restart_maps(case):
    """Names of the maps that the last report holds, with the files of all reports."""
    paths = restart_paths(case)
    if not paths or not paths[-1].with_suffix(".EGRID").exists():
        return {}
    moments = moments_of(paths[-1])
    held = moments[-1][1] if moments else {}
    cells = held["PRESSURE"].size if "PRESSURE" in held else 0
    names = [name for name, values in held.items() if values.size == cells and not name.startswith(NOT_OF_CELLS)]
    return {name.lower(): paths for name in names}


def restart_days(paths):
    return [days for path in paths for days, _ in moments_of(path)]


def centres(path, size):
    """X, Y, depth of the cell centres (NZ, NY, NX) and which cells are active, from pillars and corner depths."""
    held = {}
    for keyword, _, values in blocks(path):
        held.setdefault(keyword, values)
    nx, ny, nz = size
    if "COORD" not in held or held.get("ZCORN", numpy.zeros(0)).size != 8 * nx * ny * nz:
        raise Trouble(f"{path} holds no grid of {nx} by {ny} by {nz} cells")
    pillars = held["COORD"].astype(float).reshape(ny + 1, nx + 1, 6)
    depth = held["ZCORN"].astype(float).reshape(nz, 2, ny, 2, nx, 2)
    x, y = numpy.zeros_like(depth), numpy.zeros_like(depth)
    for b in (0, 1):
        for c in (0, 1):
            pillar = pillars[b:b + ny, c:c + nx]
            height = pillar[..., 5] - pillar[..., 2]
            part = (depth[:, :, :, b, :, c] - pillar[..., 2]) / numpy.where(height == 0.0, 1.0, height)
            x[:, :, :, b, :, c] = pillar[..., 0] + part * (pillar[..., 3] - pillar[..., 0])
            y[:, :, :, b, :, c] = pillar[..., 1] + part * (pillar[..., 4] - pillar[..., 1])
    active = held["ACTNUM"].reshape(nz, ny, nx) > 0 if held.get("ACTNUM") is not None else numpy.ones((nz, ny, nx), bool)
    return [values.mean(axis=(1, 3, 5)) for values in (x, y, depth)], active


def restart_values(name, paths, day, nearest, size):
    """Day, values (0 in cells that take no part), X, Y and depth of the report nearest to `day`."""
    moments = [moment for path in paths for moment in moments_of(path) if name.upper() in moment[1]]
    at, held = moments[nearest(day, [days for days, _ in moments])]
    axes, active = centres(paths[-1].with_suffix(".EGRID"), size)
    values = numpy.zeros(active.shape)
    if held[name.upper()].size != active.sum():
        raise Trouble(f"{paths[-1]} does not have the cells of {paths[-1].with_suffix('.EGRID').name}")
    values[active] = held[name.upper()]
    return at, values, axes
