"""Finds a run in a folder and reads its curves: KVR_Summary.csv, or CASE_Summary.csv of a deck that was named."""

import csv
import dataclasses
import datetime
import difflib
import pathlib
import re

import numpy

SUMMARY = "_Summary.csv"


class Trouble(Exception):
    """What the user is told in one line."""


@dataclasses.dataclass
class Case:
    folder: pathlib.Path
    name: str  # KVR, or the name of the deck

    def path(self, name):
        """A file of the fixed set by the name that it has in a run without a named deck."""
        if name.startswith("KVR"):
            return self.folder / (self.name + name[3:])
        return self.folder / (name if self.name == "KVR" else f"{self.name}_{name}")


def find_case(place, wanted=None):
    """The run in the folder `place`, or the one of a deck or a result file that is named instead of a folder."""
    place = pathlib.Path(place)
    if place.is_file():
        stem = place.name[:-len(SUMMARY)] if place.name.endswith(SUMMARY) else place.stem
        return find_case(place.parent, wanted or stem)
    if not place.is_dir():
        raise Trouble(f"there is no folder {place}")
    names = sorted(path.name[:-len(SUMMARY)] for path in place.glob("*" + SUMMARY))
    if not names:
        raise Trouble(f"no run in {place}: neither KVR_Summary.csv nor CASE_Summary.csv is there. Results lie beside the deck, "
                      "or in the folder of --output-dir")
    if wanted is None:
        if len(names) > 1:
            raise Trouble(f"{place} holds {len(names)} runs: {', '.join(names)}. Choose one with --case {names[0]}")
        return Case(place, names[0])
    if wanted not in names:
        raise Trouble(f"no run {wanted} in {place}; there is {', '.join(names)}")
    return Case(place, wanted)


@dataclasses.dataclass
class Curves:
    """Columns of the summary table by name, FOPR or WOPR:NAME, with their units; dates as they stand."""
    days: numpy.ndarray
    dates: list
    values: dict
    units: dict

    def wells(self):
        return list(dict.fromkeys(name.split(":", 1)[1] for name in self.values if ":" in name))

    def vectors(self):
        """Mnemonics without wells."""
        return list(dict.fromkeys(name.split(":", 1)[0] for name in self.values))

    def unit(self, mnemonic):
        return next(self.units[name] for name in self.values if name.split(":", 1)[0] == mnemonic)


def read_curves(case):
    path = case.path("KVR" + SUMMARY)
    with open(path, newline="") as file:
        rows = [row for row in csv.reader(file)]
    if len(rows) < 3 or rows[0][:2] != ["TIME", "DATE"]:
        raise Trouble(f"{path} holds no step")
    names, units = rows[0], rows[1]
    whole = [row for row in rows[2:] if len(row) == len(names)]  # a run that is still going may be at work on its last row
    columns = {name: numpy.array([float(row[n]) for row in whole]) for n, name in enumerate(names) if n != 1}
    days = columns.pop("TIME")
    return Curves(days, [row[1] for row in whole], columns, dict(zip(names, units)))


def chosen(wanted, known, what):
    """The names of `known` that are wanted, whatever their letters' size; all of them where nothing is wanted."""
    if not wanted:
        return list(known)
    by_letters = {name.upper(): name for name in known}
    missing = [name for name in wanted if name.upper() not in by_letters]
    if missing:
        near = difflib.get_close_matches(missing[0].upper(), by_letters, n=3, cutoff=0.5)
        listed = [by_letters[name] for name in near] or list(known)[:12]
        raise Trouble(f"no {what} {missing[0]}; did you mean {', '.join(listed)}? --list shows all")
    return [by_letters[name.upper()] for name in wanted]


def day_of(text, curves):
    """Days of a moment: a number of days, a date YYYY-MM-DD, or `last`; None for last."""
    if text is None or text == "last":
        return None
    if re.fullmatch(r"\d{4}-\d\d-\d\d", text):
        try:
            asked = datetime.date.fromisoformat(text)
            first = datetime.date.fromisoformat(curves.dates[0])
        except ValueError as error:
            raise Trouble(f"--date {text} is no date: {error}") from error
        return float((asked - first).days) + curves.days[0]
    try:
        return float(text)
    except ValueError as error:
        raise Trouble(f"--date {text}: say days, YYYY-MM-DD, or last") from error


def nearest(day, days):
    """Place of the moment nearest to `day`; the last for None."""
    return len(days) - 1 if day is None else int(numpy.argmin(numpy.abs(numpy.array(days) - day)))


WELL_HEAD = re.compile(r"^ Name   :: (.+?)\s*$")
WELL_CELL = re.compile(r"^\s+1\s+(\d+)\s+(\d+)\s+(\d+)\s+(\S+)\s+(\S+)\s+\S+\s+[XYZ]\s")


def well_places(case):
    """X and Y of the first connection of each well, ft, from the log; empty where there is none."""
    path = case.path("KVR_dbg.out")
    places, name = {}, None
    if not path.exists():
        return places
    with open(path, errors="replace") as file:
        for line in file:
            if line.startswith(" Name   :: "):
                name = WELL_HEAD.match(line)[1]
            elif name and (match := WELL_CELL.match(line)):
                places[name] = (float(match[4]), float(match[5]))
                name = None
    return places
