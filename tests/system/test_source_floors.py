"""Includes go down only: from a folder to folders below it, or to records, which stand under everything."""

import re

from kvr_run import REPOSITORY

SOURCE = REPOSITORY / "src"
FLOOR = {"base": 0, "pressure/solvers": 0, "model": 1, "fluid": 2, "deck": 3, "pressure": 3, "streamline": 4, "implicit": 4,
         "report": 4, "eclipse": 4, "run": 5}
# Records that have a few routines of their own; stages take the whole run.
RECORDS = {"run/simulation.hpp", "run/clock.hpp", "run/output_streams.hpp", "run/output_table.hpp", "pressure/cell_state.hpp"}
INCLUDE = re.compile(r'^#include "([^"]+)"', re.M)


def is_record(header):
    return header in RECORDS or not (SOURCE / header).with_suffix(".cpp").exists()


def folder_of(path):
    return path.rsplit("/", 1)[0]


def test_no_file_includes_a_higher_floor():
    wrong = []
    for path in sorted(SOURCE.rglob("*.[ch]pp")):
        name = str(path.relative_to(SOURCE))
        for header in INCLUDE.findall(path.read_text()):
            if FLOOR[folder_of(header)] > FLOOR[folder_of(name)] and not is_record(header):
                wrong.append(f"{name} includes {header}")
    assert wrong == []


def test_the_ground_floor_stands_on_nothing():
    for folder in ("base", "pressure/solvers"):
        for path in (SOURCE / folder).glob("*.[ch]pp"):
            for header in INCLUDE.findall(path.read_text()):
                assert folder_of(header) in (folder, "base"), f"{path.name} includes {header}"


def test_no_headers_include_each_other_in_a_ring():
    headers = {str(path.relative_to(SOURCE)): INCLUDE.findall(path.read_text()) for path in SOURCE.rglob("*.hpp")}
    done = set()

    def walk(header, above):
        assert header not in above, " -> ".join(above + [header])
        if header in done:
            return
        for below in headers[header]:
            walk(below, above + [header])
        done.add(header)

    for header in headers:
        walk(header, [])
