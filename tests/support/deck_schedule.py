"""What a deck asks of its wells: report times, and the control of every well between them, in field units.

Reads the schedule keywords that the decks of the tests use, independently of the program."""

import dataclasses
import fnmatch
import itertools
import re

METRIC_LIQUID = 0.158987295  # sm3 in a barrel
METRIC_GAS = 28.3168466  # sm3 in a Mscf
METRIC_PRESSURE = 0.0689475729  # bar in a psi

PRODUCER_RATES = {"OR": 3, "WR": 4, "GR": 5, "LR": 6, "RE": 7}  # place of the target in a WCONPROD row
PRODUCER_BHP, INJECTOR_RATE, INJECTOR_BHP = 8, 4, 6


@dataclasses.dataclass
class Control:
    well: str
    injects: str  # W or G, empty for a producer
    open: bool
    mode: str  # two letters: OR, WR, GR, LR, RE, RA or BH
    target: float  # stb/day, Mscf/day or rb/day; 0 under BH
    bhp: float  # psia, the limit or what is held; 0 where the deck says nothing


@dataclasses.dataclass
class Interval:
    """From one report to the next."""
    begin: float
    end: float
    controls: dict  # by well


def clean_lines(text):
    for line in text.splitlines():
        line = line.split("--")[0].strip()
        if line:
            yield line


def items_of(record):
    """Words of a record, repeats counted out; None where an item is left at its default."""
    for word in record.replace(",", " ").split():
        match = re.fullmatch(r"(\d+)\*(.*)", word)
        if match:
            yield from [match.group(2) or None] * int(match.group(1))
        else:
            yield word.strip("'\"")


def is_keyword(line):
    return re.fullmatch(r"[A-Z][A-Z0-9]{2,7}", line.split()[0]) is not None


def rows_of(lines):
    """Records of a list keyword, up to the one that is empty or to the next keyword."""
    for line in lines:
        if is_keyword(line) and "/" not in line:
            lines.push(line)
            return
        while "/" not in line:
            line += " " + next(lines)
        record = line.split("/")[0].strip()
        if not record:
            return
        yield list(items_of(record))


class Lines:
    """An iterator with one step back."""

    def __init__(self, lines):
        self.lines = iter(lines)

    def __iter__(self):
        return self

    def __next__(self):
        return next(self.lines)

    def push(self, line):
        self.lines = itertools.chain([line], self.lines)


def value_at(row, place):
    return float(row[place].lower().replace("d", "e")) if place < len(row) and row[place] is not None else 0.0


class Schedule:
    def __init__(self, text):
        self.metric = any(line.split()[0] == "METRIC" for line in clean_lines(text))
        self.intervals = []
        self.controls = {}
        self.names = []
        self.read(Lines(clean_lines(text)))

    def end(self):
        return self.intervals[-1].end if self.intervals else 0.0

    def read(self, lines):
        readers = {"WELSPECS": self.read_names, "WCONPROD": self.read_producers, "WCONINJE": self.read_injectors,
                   "TSTEP": self.read_steps}
        for line in lines:
            if line == "END":
                return
            if line in readers:
                readers[line](lines)

    def read_names(self, lines):
        self.names += [row[0] for row in rows_of(lines)]

    def put(self, pattern, control):
        for name in fnmatch.filter(self.names, pattern) if pattern.endswith("*") else [pattern]:
            self.controls[name] = dataclasses.replace(control, well=name)

    def scaled(self, value, gas):
        return value / (METRIC_GAS if gas else METRIC_LIQUID) if self.metric else value

    def read_producers(self, lines):
        for row in rows_of(lines):
            mode = row[2][:2].upper()
            target = value_at(row, PRODUCER_RATES[mode]) if mode in PRODUCER_RATES else 0.0
            self.put(row[0], Control("", "", self.is_open(row[1]), mode, self.scaled(target, mode == "GR"),
                                     self.pressure(row, PRODUCER_BHP)))

    def read_injectors(self, lines):
        for row in rows_of(lines):
            mode = row[3][:2].upper()
            fluid = row[1][:1].upper()
            target = value_at(row, INJECTOR_RATE) if mode == "RA" else 0.0
            self.put(row[0], Control("", fluid, self.is_open(row[2]), mode, self.scaled(target, fluid == "G"),
                                     self.pressure(row, INJECTOR_BHP)))

    @staticmethod
    def is_open(word):
        return not (word or "OPEN").upper().startswith(("SH", "ST"))

    def pressure(self, row, place):
        return value_at(row, place) / (METRIC_PRESSURE if self.metric else 1.0)

    def read_steps(self, lines):
        text = ""
        while "/" not in text:
            text += " " + next(lines)
        for word in items_of(text.split("/")[0]):
            begin = self.end()
            self.intervals.append(Interval(begin, begin + float(word), dict(self.controls)))
