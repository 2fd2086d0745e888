"""Strict reader of the block-format plot files: every count must be what the zone header says."""

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
