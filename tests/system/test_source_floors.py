"""Includes go down only: from a folder to folders below it, inside a folder from a room to the rooms before it."""

import re

import pytest

from kvr_run import REPOSITORY

SOURCE = REPOSITORY / "src"
# Folders from the ground up; those of one floor may use each other.
FLOORS = [{"base", "pressure/solvers"}, {"model"}, {"fluid"}, {"deck", "pressure"},
          {"streamline", "implicit", "report", "eclipse"}, {"matching", "optimization"}, {"run"}]
FLOOR = {folder: n for n, folders in enumerate(FLOORS) for folder in folders}
# Rooms of a folder in order. The folder's own files stand on top of them.
ROOMS = {
    "optimization": ["records"],
    "fluid": ["components"],
    "deck": ["reading", "sections", "options"],
    "pressure": ["solvers", "records", "wells"],
    "streamline": ["tracing", "transport", "mapping", "splitting", "diagnostics", "sensitivities"],
    "run": ["records"],
}
INCLUDE = re.compile(r'^#include "([^"]+)"', re.M)


def files():
    """Every file of the source with the headers that it includes."""
    return {str(path.relative_to(SOURCE)): INCLUDE.findall(path.read_text()) for path in sorted(SOURCE.rglob("*.[ch]pp"))}


def place(name):
    """Folder and room of a file; the room is empty for a folder's own files."""
    parts = name.split("/")
    return parts[0], "/".join(parts[1:-1])


def floor(name):
    folder, room = place(name)
    return FLOOR.get(f"{folder}/{room}", FLOOR.get(folder))


def order(name):
    folder, room = place(name)
    return (ROOMS.get(folder, []) + [""]).index(room)


def is_record(header):
    """Records stand under everything: headers without a source, and the rooms of records."""
    return place(header)[1] == "records" or not (SOURCE / header).with_suffix(".cpp").exists()


def test_every_file_stands_on_a_floor_and_in_a_room():
    for name in files():
        assert floor(name) is not None, name
        assert place(name)[1] in [*ROOMS.get(place(name)[0], []), ""], name


def test_no_file_includes_a_higher_floor():
    wrong = [f"{name} includes {header}" for name, headers in files().items() for header in headers
             if floor(header) > floor(name) and not is_record(header)]
    assert wrong == []


@pytest.mark.parametrize("folder", ROOMS)
def test_no_room_includes_a_later_one(folder):
    """The records that a folder keeps for all its rooms stand beside them."""
    wrong = [f"{name} includes {header}" for name, headers in files().items() for header in headers
             if place(name)[0] == place(header)[0] == folder and order(header) > order(name)
             and not (place(header)[1] == "" and is_record(header))]
    assert wrong == []


def test_records_stand_on_records_and_the_ground_floor():
    wrong = [f"{name} includes {header}" for name, headers in files().items() if place(name)[1] == "records"
             for header in headers if not is_record(header) and floor(header) > 0]
    assert wrong == []


def test_the_ground_floor_stands_on_nothing():
    for name, headers in files().items():
        if floor(name) == 0:
            for header in headers:
                assert place(header) in (place(name), ("base", "")), f"{name} includes {header}"


def test_no_headers_include_each_other_in_a_ring():
    headers = {name: included for name, included in files().items() if name.endswith(".hpp")}
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
