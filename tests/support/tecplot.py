"""Strict readers of the plot files: every count must be what the zone header says."""

import re

import numpy


class Zone:
    def __init__(self, title, time, cells, nodes, values):
        self.title = title
        self.time = time
        self.cells = cells  # (NX, NY, NZ)
        self.nodes = nodes  # X, Y, Depth at the nodes
        self.values = values  # list of cell arrays in natural order


HEADER = re.compile(r"Zone\s+i\s*=\s*(\d+)\s*,\s*j\s*=\s*(\d+)\s*,\s*k\s*=\s*(\d+)\s*,\s*DATAPACKING=BLOCK")
LOCATION = re.compile(r"(\d+)=CELLCENTERED")


def read_zones(path):
    """All zones of a file; raises where a zone is short, long or malformed."""
    lines = path.read_text().splitlines()
    zones = []
    at = 0
    while at < len(lines):
        if not lines[at].strip():
            at += 1
            continue
        title = lines[at].strip()
        assert title.startswith("TITLE="), f"{path.name}:{at + 1}: {title[:60]}"
        assert lines[at + 1].strip().startswith("VARIABLES="), f"{path.name}:{at + 2}"
        match = HEADER.search(lines[at + 2])
        assert match, f"{path.name}:{at + 3}: {lines[at + 2][:80]}"
        i, j, k = (int(group) for group in match.groups())
        time = 0.0
        if lines[at + 3].startswith("SOLUTIONTIME"):
            time = float(lines[at + 3].split("=")[1])
            at += 1
        at -= 1
        located = LOCATION.findall(lines[at + 4])
        assert located, f"{path.name}:{at + 5}"
        at += 5
        words = []
        nodes, cells = i * j * k, (i - 1) * (j - 1) * (k - 1)
        expected = 3 * nodes + len(located) * cells
        while len(words) < expected:
            assert at < len(lines), f"{path.name}: file ends inside a zone"
            words.extend(lines[at].split())
            at += 1
        assert len(words) == expected, f"{path.name}: zone has {len(words)} values, not {expected}"
        numbers = numpy.array([float(word) for word in words])
        zones.append(Zone(title, time, (i - 1, j - 1, k - 1), numbers[:3 * nodes].reshape(3, nodes),
                          list(numbers[3 * nodes:].reshape(len(located), cells))))
    return zones


FRAME_HEAD = ["TITLE=SL_FRAME_PLOT", "VARIABLES= X,Y,DEPTH,TOF,DFSV_TOF,S<sub>w</sub>,SNS,INDX_INJ,INDX_PRD,INDX_PERF"]
LINE_HEAD = ["TITLE = STREAMLINE", "VARIABLES =X,Y,Z,TOF,TOF_DFIIUSIVE,SWAT,SNS,INJ,PRD,PERF"]
LINE_ZONE = re.compile(r" ZONE I = (\d+) F=POINT")
LINE_COLUMNS = 10


def read_line_plot(path):
    """The frame of a streamline plot and its lines, an array (points, 10) each; raises where anything is amiss."""
    lines = path.read_text().splitlines()
    at = lines.index(LINE_HEAD[0])
    frame_path = path.with_suffix(".frame")
    assert lines[:2] == FRAME_HEAD and lines[at + 1] == LINE_HEAD[1], path.name
    frame_path.write_text("\n".join(lines[:at]) + "\n")
    frame, = read_zones(frame_path)
    frame_path.unlink()
    assert len(frame.values) == LINE_COLUMNS - 3, path.name
    zones = []
    at += 2
    while at < len(lines):
        match = LINE_ZONE.fullmatch(lines[at])
        assert match, f"{path.name}:{at + 1}: {lines[at][:60]}"
        count = int(match.group(1))
        assert count > 0 and at + count < len(lines), f"{path.name}:{at + 1}: the zone is not complete"
        rows = [line.split() for line in lines[at + 1:at + 1 + count]]
        assert all(len(row) == LINE_COLUMNS for row in rows), f"{path.name}:{at + 1}"
        zones.append(numpy.array(rows, dtype=float))
        at += 1 + count
    return frame, zones
