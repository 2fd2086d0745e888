"""The public decks made small: cells cropped to a corner of the grid, schedules cut short, INCLUDE files put in.

A small deck runs in a fraction of a second, so that many more of its damaged copies can be tried. What is not
understood here stays as it is: a seed need not be a sensible model, only one that is read and run to its end."""

import dataclasses
import lzma
import pathlib
import random
import re
import sys

REPOSITORY = pathlib.Path(__file__).resolve().parents[2]
sys.path.insert(0, str(REPOSITORY / "tests" / "soak"))

PUBLIC = (REPOSITORY / "examples", REPOSITORY.parent / "shared" / "decks")
MOST_CELLS = (5, 4, 3)
LARGER_CELLS = (8, 8, 5)  # of some decks more, so that a multigrid solver has several levels
LARGER = ("ub_multigrid_null_span", "FIVE1", "SPE1CASE1", "SPE9", "FAULTCP")
MOST_STEPS = 2  # of one TSTEP
MOST_TIMES = 3  # TSTEP and DATES of a schedule
MOST_ITERATIONS = 2  # of a match
SOAK_SEEDS = range(1, 13)
WHOLE_BYTES = 12000  # a deck up to this size with no more cells than below also stands as it is
WHOLE_CELLS = 150
# Take seconds as they stand: a thousand others fit in.
LONG = ("streamline_auto_small_steps", "streamline_implicit_gas_balance", "imp_gas", "WATER_AND_GAS")
OBSERVED = {"WELL_OBSERVED.DATA"}  # histories of a match, beside its deck
BINARY = {".EGRID", ".GRID", ".INIT", ".X0000", ".X0001", ".S0001", ".SMSPEC"}

CELL_ARRAYS = set("""DX DY DZ TOPS PORO PERMX PERMY PERMZ NTG ACTNUM SATNUM PVTNUM EQLNUM FIPNUM MULTX MULTY MULTZ
    PRESSURE SWAT SGAS SOIL RS PBUB MULTPV""".split())
AXIS_ARRAYS = {"DXV": 0, "DYV": 1, "DZV": 2}
BOX_ROWS = {"EQUALS", "COPY", "MULTIPLY", "ADD", "BOX", "FAULTS"}
WELL_ROWS = {"WELSPECS": (2, 3), "COMPDAT": (1, 2)}
SCHEDULE_TIMES = {"TSTEP", "DATES"}


@dataclasses.dataclass
class Seed:
    name: str
    text: bytes
    files: dict = dataclasses.field(default_factory=dict)  # beside the deck, by name


def text_of(path):
    packed = path.with_name(path.name + ".xz")
    data = lzma.decompress(packed.read_bytes()) if packed.exists() else path.read_bytes()
    return data.decode("latin-1")


def with_includes(text, folder):
    """INCLUDE and its file name replaced by what the file holds; a file that is not there stays named."""
    def content(match):
        path = folder / match.group(1).strip("'\" ").replace("\\", "/")
        found = path.exists() or path.with_name(path.name + ".xz").exists()
        return "\n" + text_of(path) + "\n" if found else match.group(0)
    return re.sub(r"(?m)^INCLUDE[^\n]*\n(?:\s*--[^\n]*\n|\s*\n)*\s*('[^'\n]+'|\S+)[^\n/]*(?:\n\s*)?/?", content, text)


def blocks_of(text):
    """Keyword lines with the lines behind them, as (word, lines)."""
    blocks = [("", [])]
    for line in text.splitlines():
        word = line.split()[0] if line.strip() else ""
        if re.fullmatch(r"[A-Z][A-Z0-9\-]{1,7}", word) and "/" not in line:
            blocks.append((word, []))
        blocks[-1][1].append(line)
    return blocks


def words_of(lines):
    """Words of a block behind its keyword, comments off, up to and with each slash."""
    for line in lines:
        for word in line.split("--")[0].replace("/", " / ").split():
            yield word


def counted(words):
    for word in words:
        match = re.fullmatch(r"(\d+)\*(\S+)", word)
        yield from [match.group(2)] * int(match.group(1)) if match else [word]


def packed(values, width=8):
    """Values in lines, equal neighbours with a repeat count."""
    words, start = [], 0
    for end in range(1, len(values) + 1):
        if end == len(values) or values[end] != values[start]:
            words.append(values[start] if end - start == 1 else f"{end - start}*{values[start]}")
            start = end
    return [" ".join(words[n:n + width]) for n in range(0, len(words), width)]


def kept(values, shape, small):
    nx, ny, _ = shape
    return [values[(k * ny + j) * nx + i] for k in range(small[2]) for j in range(small[1]) for i in range(small[0])]


def kept_pillars(values, shape, small):
    nx = shape[0]
    return [values[((j * (nx + 1)) + i) * 6 + n] for j in range(small[1] + 1) for i in range(small[0] + 1)
            for n in range(6)]


def kept_corners(values, shape, small):
    nx, ny, _ = shape
    return [values[(k * 2 * ny + j) * 2 * nx + i] for k in range(2 * small[2]) for j in range(2 * small[1])
            for i in range(2 * small[0])]


def crop_array(word, lines, shape, small):
    values = list(counted(w for w in words_of(lines[1:]) if w != "/"))
    cells, layer = shape[0] * shape[1] * shape[2], shape[0] * shape[1]
    if word in AXIS_ARRAYS and len(values) == shape[AXIS_ARRAYS[word]]:
        return [word] + packed(values[:small[AXIS_ARRAYS[word]]]) + ["/"]
    if word in CELL_ARRAYS and values and len(values) <= cells and len(values) % layer == 0:
        return [word] + packed(kept(values, shape, (small[0], small[1], min(small[2], len(values) // layer)))) + ["/"]
    if word == "COORD" and len(values) == (shape[0] + 1) * (shape[1] + 1) * 6:
        return [word] + packed(kept_pillars(values, shape, small), 6) + ["/"]
    if word == "ZCORN" and len(values) == 8 * cells:
        return [word] + packed(kept_corners(values, shape, small)) + ["/"]
    return lines


def scaled(word, axis, shape, small):
    """A cell number of the large grid in the small one; ends stay ends."""
    if not re.fullmatch(r"\d+", word) or not 1 <= int(word) <= shape[axis]:
        return word
    return str(1 + (int(word) - 1) * small[axis] // shape[axis])


def crop_row(words, places, axes, shape, small):
    for place, axis in zip(places, axes):
        if place < len(words):
            words[place] = scaled(words[place], axis, shape, small)
    return words


def crop_rows(word, lines, shape, small):
    rows, row = [lines[0]], []
    for item in words_of(lines[1:]):
        if item != "/":
            row += list(counted([item])) if re.fullmatch(r"\d+\*\d+", item) else [item]
            continue
        if word in WELL_ROWS:
            row = crop_row(row, WELL_ROWS[word], (0, 1), shape, small)
            row = crop_row(row, (3, 4), (2, 2), shape, small) if word == "COMPDAT" else row
        else:
            first = len(row) - 6 if word in ("EQUALS", "COPY", "MULTIPLY", "ADD", "BOX") else 1
            if first >= 0 and len(row) >= 6:
                row = crop_row(row, range(first, first + 6), (0, 0, 1, 1, 2, 2), shape, small)
        rows.append(" ".join(row) + " /")
        row = []
    return rows


def shorter_times(lines):
    values = [w for w in counted(words_of(lines[1:])) if w != "/"]
    return [lines[0], " ".join(values[:MOST_STEPS]) + " /"]


def fewer_iterations(lines):
    return [re.sub(r"\d+", lambda count: str(min(int(count.group()), MOST_ITERATIONS)), line) for line in lines]


def cropped(text, most_cells=MOST_CELLS):
    """The deck with few cells and few steps."""
    found = re.search(r"(?m)^DIMENS[^\n]*\n(?:\s*--[^\n]*\n|\s*\n)*\s*(\d+)\s+(\d+)\s+(\d+)", text)
    if not found:
        return text
    shape = [int(n) for n in found.groups()]
    small = [min(n, most) for n, most in zip(shape, most_cells)]
    if re.search(r"(?m)^DUALPORO", text):
        small[2] = shape[2]  # layers of the matrix, and as many of the fractures
    lines, times = [], 0
    for word, block in blocks_of(text):
        if word == "DIMENS":
            block = ["DIMENS", " ".join(map(str, small)) + " /"]
        elif word in CELL_ARRAYS or word in AXIS_ARRAYS or word in ("COORD", "ZCORN"):
            block = crop_array(word, block, shape, small)
        elif word in BOX_ROWS or word in WELL_ROWS:
            block = crop_rows(word, block, shape, small)
        elif word == "DOINV":
            block = fewer_iterations(block)
        elif word in SCHEDULE_TIMES:
            times += 1
            block = shorter_times(block) if word == "TSTEP" else block
            block = block if times <= MOST_TIMES else []
        lines += block
    return "\n".join(lines) + "\n"


def cell_count(text):
    found = re.search(r"(?m)^DIMENS[^\n]*\n(?:\s*--[^\n]*\n|\s*\n)*\s*(\d+)\s+(\d+)\s+(\d+)", text)
    return int(found[1]) * int(found[2]) * int(found[3]) if found else 0


def public_seeds():
    seeds = []
    for root in PUBLIC:
        for path in sorted(root.rglob("*.DATA")):
            text = text_of(path)
            if not re.search(r"(?m)^RUNSPEC", text):
                continue  # an INCLUDE file
            name = str(path.relative_to(root).with_suffix("")).replace("/", "_")
            files = {near.name: near.read_bytes() for near in path.parent.iterdir() if near.suffix in BINARY}
            whole = with_includes(text, path.parent)
            observed = {near.name: near.read_bytes() for near in path.parent.iterdir() if near.name in OBSERVED}
            seeds.append(Seed(name, cropped(whole).encode("latin-1"), observed))
            if name.endswith(LARGER):
                seeds.append(Seed(name + "_larger", cropped(whole, LARGER_CELLS).encode("latin-1"), {}))
            if files:
                seeds.append(Seed(name + "_restart", text.encode("latin-1"), files))
            elif len(whole) <= WHOLE_BYTES and cell_count(whole) <= WHOLE_CELLS and not name.endswith(LONG):
                seeds.append(Seed(name + "_whole", whole.encode("latin-1"), observed))
    return seeds


def random_model_seeds():
    """Models that the public decks leave out: several curves, tracers, J functions, barriers."""
    from deck import deck_text
    from models import draw_model
    from options import METHODS
    seeds = []
    for number in SOAK_SEEDS:
        model = draw_model(number)
        method = METHODS[number % len(METHODS)]
        seeds.append(Seed(f"random_{number}", cropped(deck_text(model, method)).encode("latin-1"), {}))
    return seeds


KEYWORD_DECK = b"""RUNSPEC
DIMENS
3 3 2 /
OIL
WATER
GAS
DISGAS
FIELD
START
1 'JAN' 2000 /
EQLDIMS
2 /
TABDIMS
2 2 20 20 /
WELLDIMS
3 2 /
TRACERS
1* 1 /
ENDSCALE
/
GRID
BOX
1 3 1 3 1 1 /
DX
9*300 /
DY
9*300 /
DZ
9*20 /
TOPS
9*8300 /
PORO
9*0.25 /
ENDBOX
EQUALS
DX 300 /
DY 300 /
DZ 20 1 3 1 3 2 2 /
PORO 0.2 1 3 1 3 2 2 /
PERMX 100 /
NTG 0.9 /
/
COPY
PERMX PERMY /
PERMX PERMZ /
/
MULTIPLY
PERMZ 0.1 /
/
ADD
PERMX 5 1 1 1 1 1 1 /
/
FAULTS
F1 1 1 1 3 1 2 X /
/
MULTFLT
F1 0.1 /
/
MULTZ
18*1 /
EDIT
MULTIPLY
PORV 1.1 1 1 1 1 1 1 /
/
PROPS
SWFN
0.2 0 0
1 1 0 /
0.2 0 3
1 1 0 /
SGFN
0 0 0
0.8 1 0 /
0 0 0
0.8 1 0 /
SOF3
0 0 0
0.8 1 1 /
0 0 0
0.8 1 1 /
SCALECRS
YES /
SWL
9*0.22 9*0.2 /
SWCR
18*0.3 /
SOWCR
18*0.1 /
SGCR
9*0.05 9* /
KRW
18*0.7 /
KRWR
18*0.5 /
PCW
9* 9*2 /
SWATINIT
9* 9*0.4 /
EQUALS
SGU 0.75 1 3 1 3 1 1 /
KRORW 0.8 /
/
PVCDO
4000 1.2 1E-5 1 0 /
4000 1.2 1E-5 1 0 /
PVTW
4000 1.01 3E-6 0.5 0 /
4000 1.01 3E-6 0.5 0 /
PVDG
14.7 166.666 0.008
4014.7 0.811 0.0268 /
14.7 166.666 0.008
4014.7 0.811 0.0268 /
ROCK
4000 3E-6 /
4000 3E-6 /
DENSITY
53 64 0.06 /
53 64 0.06 /
AQUTAB
0.1 0.315
1 0.802
10 1.651 /
REGIONS
SATNUM
9*1 9*2 /
PVTNUM
9*1 9*2 /
EQLNUM
9*1 9*2 /
FIPNUM
9*1 9*2 /
SOLUTION
EQUIL
8300 4000 8330 0 8200 0 /
8300 4100 8330 0 8200 0 /
AQUFETP
1 8350 1* 1E6 1E-5 5 /
/
AQUCT
2 8350 4000 200 0.2 1E-5 800 40 90 1 2 /
/
AQUANCON
1 3 3 1 3 1 2 'I+' /
2 1 3 1 1 1 2 'J-' 2* 'YES' /
/
SUMMARY
FOPR
WBHP
'P1' /
ROPR
1 2 /
SCHEDULE
DRSDT
0.01 /
GRUPTREE
'G1' 'P' /
/
WELSPECS
'I1' 'G1' 1 1 8300 'WATER' /
'P1' 'G1' 3 3 8300 'OIL' /
/
COMPDAT
'I1' 1 1 1 2 'OPEN' 2* 0.5 /
'P1' 3 3 1 2 'OPEN' 2* 0.5 /
/
WCONPROD
'P1' 'OPEN' 'ORAT' 200 4* 1000 /
/
WCONINJE
'I1' 'WATER' 'OPEN' 'RATE' 300 1* 6000 /
/
WGRUPCON
'P1' YES 2 OIL /
/
GCONPROD
'G1' ORAT 150 90 2* RATE YES 1 OIL /
/
GCONINJE
'FIELD' WATER VREP 3* 1.0 /
/
WEFAC
'P1' 0.9 /
/
WECON
'P1' 10 1* 0.9 2* CON /
/
TSTEP
2*10 /
WELTARG
'P1' ORAT 100 /
/
WELOPEN
'I1' 'SHUT' /
/
DATES
1 'MAR' 2000 /
/
END
"""


def seeds():
    return public_seeds() + random_model_seeds() + [Seed("keywords", KEYWORD_DECK)]


def generator(seed, number):
    """The same stream for the same two numbers, whatever else is drawn."""
    return random.Random(f"{seed}/{number}")
