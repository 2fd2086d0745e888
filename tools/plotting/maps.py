"""Maps and lines of a run: every file with a value per cell, layer by layer, and the courses of streamlines."""

import dataclasses
import pathlib
import re

import numpy

from plotting.restarts import restart_days, restart_maps, restart_values
from plotting.run_files import Trouble, nearest

NO_LINE = 1e10  # time of flight of cells that no line reaches
UNITS = {"co2_free": "Mscf", "co2_trapped": "Mscf", "co2_dissolved": "Mscf", "co2_solid": "Mscf", "co2_kx": "md",
         "poil": "psia", "pressure": "psia", "rs": "Mscf/stb", "kx": "md", "ky": "md", "kz": "md", "permx": "md",
         "permy": "md", "permz": "md", "tauinj": "days", "tauprd": "days", "tausum": "days", "trnsx": "rb cp/(day psi)",
         "trnsy": "rb cp/(day psi)", "trnsz": "rb cp/(day psi)"}


@dataclasses.dataclass
class MapFile:
    name: str  # as the user asks for it
    path: pathlib.Path
    column: int = 0
    kind: str = "zones"  # zones, points, values, reports
    paths: tuple = ()  # of the reports


@dataclasses.dataclass
class Map:
    """Values (NZ, NY, NX) with X, Y and depth of nodes (one more along each axis) or of centres."""
    name: str
    day: float
    values: numpy.ndarray
    x: numpy.ndarray
    y: numpy.ndarray
    depth: numpy.ndarray
    at_nodes: bool


def name_of(path, case):
    """poil of KVR_TPlot_poil.plt, kx of KVR_Tplot_Static_kx.plt, endswat of KVR_Run_EndSwat.out."""
    stem = path.stem
    if stem.startswith(case.name + "_"):
        stem = stem[len(case.name) + 1:]
    return re.sub(r"^(TPlot|Tplot|Run)_(Static_)?", "", stem).lower()


def head_of(path, count=5):
    with open(path, errors="replace") as file:
        return [file.readline() for _ in range(count)]


def kind_of(path):
    """How the file holds its cells; None where it holds none."""
    head = "".join(head_of(path))
    if "CELLCENTERED" in head:
        return "zones"
    if "F = Point" in head:
        return "points"
    return "values" if re.search(r"_(Tau...|prdCxn|InjCxn)\.out$", path.name) else None


def map_files(case):
    """Every map of the run by name; where a plot, a table or the files for viewers hold the same, the first of them."""
    mine = [f"{case.name}_*"] + (["Smoothed_*", "Upscaled_*"] if case.name == "KVR" else [])
    paths = sorted({path for mask in mine for path in case.folder.glob(mask) if path.suffix in (".plt", ".out")},
                   key=lambda path: (path.suffix != ".plt", path.name.lower()))
    others = [other.name[:-len("_Summary.csv")] for other in case.folder.glob("*_Summary.csv")]
    longer = tuple(f"{other}_" for other in others if other.startswith(case.name + "_"))
    found = {}
    for path in paths:
        if path.stat().st_size == 0 or path.name.startswith(longer or ("\n",)) or "Streamline" in path.name:
            continue
        kind = kind_of(path)
        if kind is None:
            continue
        columns = len(re.findall(r"\d+=CELLCENTERED", "".join(head_of(path)))) if kind == "zones" else 1
        for column in range(columns):
            name = name_of(path, case) + (f"{column + 1}" if columns > 1 else "")
            found.setdefault(name, MapFile(name, path, column, kind))
    for name, files in restart_maps(case).items():
        found.setdefault(name, MapFile(name, files[-1], kind="reports", paths=tuple(files)))
    return found


def moments(entry):
    """Days that a map file has, empty where it holds one moment."""
    if entry.kind == "reports":
        return restart_days(entry.paths)
    return [zone[0] for zone in zone_times(entry.path)] if entry.kind == "zones" else []


def grid_size(case):
    path = case.path("KVR_Info_general.out")
    match = re.search(r"Number of Grid\s+(\d+) (\d+) (\d+)", path.read_text(errors="replace")) if path.exists() else None
    if match is None:
        raise Trouble(f"{path} does not tell the size of the grid")
    return tuple(int(group) for group in match.groups())


def zone_times(path):
    """Days and place in the file of every zone."""
    found, place = [], 0
    with open(path, "rb") as file:
        for line in file:
            if line.startswith(b"TITLE="):
                found.append([0.0, place])
            elif line.startswith(b"SOLUTIONTIME") and found:
                found[-1][0] = float(line.split(b"=")[1])
            place += len(line)
    return found


def numbers_of(text):
    return numpy.array(text.split(), dtype=float)


def read_zone(entry, day, size):
    zones = zone_times(entry.path)
    at = nearest(day, [zone[0] for zone in zones])
    with open(entry.path, "rb") as file:
        file.seek(zones[at][1])
        end = zones[at + 1][1] - zones[at][1] if at + 1 < len(zones) else -1
        head, body = file.read(end).split(b"VARLOCATION", 1)
    nx, ny, nz = size
    cells = nx * ny * nz
    bricks = b"FEBRICK" in head
    nodes = 8 * cells if bricks else (nx + 1) * (ny + 1) * (nz + 1)
    values = numbers_of(body.split(b"\n", 1)[1])
    if values.size < 3 * nodes + (entry.column + 1) * cells:
        raise Trouble(f"{entry.path} ends inside the map of {zones[at][0]:g} days")
    axes = values[:3 * nodes].reshape(3, -1)
    if bricks:  # corners of each cell: the plan is drawn of centres
        axes = axes.reshape(3, nz, ny, nx, 8).mean(axis=-1)
    else:
        axes = axes.reshape(3, nz + 1, ny + 1, nx + 1)
    start = 3 * nodes + entry.column * cells
    return Map(entry.name, zones[at][0], values[start:start + cells].reshape(nz, ny, nx), *axes, not bricks)


def read_points(path, size):
    rows = numpy.loadtxt(path, skiprows=3)
    nx, ny, nz = size
    return [rows[:, n].reshape(nz, ny, nx) for n in range(4)]


def read_map(case, entry, day, last_day):
    """The map nearest to `day`; files of one moment have that of the end."""
    size = grid_size(case)
    if entry.kind == "zones":
        return read_zone(entry, day, size)
    if entry.kind == "reports":
        at, values, axes = restart_values(entry.name, entry.paths, day, nearest, size)
        return Map(entry.name, at, values, *axes, False)
    at = 0.0 if entry.name.startswith(("perm", "ini")) else last_day
    if entry.kind == "points":
        x, y, depth, values = read_points(entry.path, size)
        return Map(entry.name, at, values, x, y, depth, False)
    x, y, depth, _ = read_points(case.path("KVR_Run_PermX.out"), size)
    values = numpy.loadtxt(entry.path).reshape(depth.shape)
    return Map(entry.name, at, values, x, y, depth, False)


def inactive_cells(case, found, last_day):
    """Cells that take no part, (NZ, NY, NX): their pressure stands at 0 in every map of it. None where no map tells."""
    entry = found.get("poil") or found.get("pressure")
    return None if entry is None else read_map(case, entry, None, last_day).values == 0.0


# --- lines ---------------------------------------------------------------------------------------------------

LINE_FILE = re.compile(r"Streamline_Time_([0-9.eE+-]+)\.plt$")


def line_files(case):
    """Days and path of every plot of lines."""
    prefix = "" if case.name == "KVR" else f"{case.name}_"
    found = [(float(match[1]), path) for path in case.folder.glob(f"{prefix}Streamline_Time_*.plt")
             if (match := LINE_FILE.search(path.name)) and path.name.startswith(f"{prefix}Streamline")]
    return sorted(found)


@dataclasses.dataclass
class Line:
    x: numpy.ndarray
    y: numpy.ndarray
    time: numpy.ndarray  # of flight, days


def zones_by_head(lines):
    """Rows behind each " ZONE I = n" line."""
    at = 0
    while at < len(lines):
        match = re.match(r"\s*ZONE I\s*=\s*(\d+)", lines[at])
        if match is None:
            at += 1
            continue
        count = int(match[1])
        yield numpy.array([row.split() for row in lines[at + 1:at + 1 + count]], dtype=float)
        at += 1 + count


def read_lines(path):
    text = path.read_text().split("TITLE = STREAMLINE", 1)
    if len(text) < 2:
        raise Trouble(f"{path} holds no lines")
    return [Line(rows[:, 0], rows[:, 1], rows[:, 3]) for rows in zones_by_head(text[1].splitlines()) if len(rows)]

