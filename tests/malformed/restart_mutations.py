"""Damages the binary files of an outside run: bytes, marks, lengths, counts, keywords, types, values, whole blocks, ends.
Pure functions of the bytes and of a stream of random numbers."""

import dataclasses
import struct

from block_files import SIZES, blocks_of, file_of

TYPES = [*SIZES, b"C016", b"\0\0\0\0", b"real", b"XXXX"]
KEYWORDS = [b"INTEHEAD", b"DOUBHEAD", b"LOGIHEAD", b"IWEL    ", b"SWEL    ", b"XWEL    ", b"ZWEL    ", b"ICON    ", b"SCON    ",
            b"XCON    ", b"PRESSURE", b"SWAT    ", b"SGAS    ", b"SOIL    ", b"RS      ", b"RV      ", b"BO      ",
            b"BW      ", b"BG      ", b"KRO     ", b"VOIL    ", b"ZMF1    ", b"FLOOILI+", b"FLOWATI+", b"FLOGASI+",
            b"FLROILI+", b"FLRWATJ+", b"DIMENS  ", b"COORDS  ", b"CORNERS ", b"COORD   ", b"ZCORN   ", b"ACTNUM  ",
            b"GRIDHEAD", b"PORV    ", b"PORO    ", b"PERMX   ", b"TRANX   ", b"KEYWORDS", b"WGNAMES ", b"NUMS    ",
            b"PARAMS  ", b"SEQHDR  ", b"MINISTEP", b"ENDGRID ", b"NOTHING ", b"        ", b"\xff" * 8]
INTEGERS = [0, 1, 2, -1, 3, 7, 21, 22, 440, 441, 442, 999, 1000, 65536, 2147483647, -2147483648, 46341]
REALS = [0.0, -0.0, 1.0, -1.0, 1e30, -1e30, 1e38, 1e-38, float("nan"), float("inf"), -float("inf"), 0.5, 2.0, 1e-10, 1e6]
WORDS = [b"        ", b"INJ     ", b"PRD     ", b"TIME    ", b"WOPR    ", b"WBHP    ", b"\0" * 8, b"\xff" * 8, b":+:+:+:+"]


def some_bytes(rng, data):
    data = bytearray(data)
    for _ in range(rng.choice((1, 1, 2, 8, 40))):
        if data:
            data[rng.randrange(len(data))] = rng.choice((0, 1, 0x7F, 0x80, 0xFF, rng.randrange(256)))
    return bytes(data)


def cut(rng, data):
    """Cut short anywhere, at the border of a record, or with a piece taken out."""
    blocks = blocks_of(data)
    way = rng.randrange(4)
    if way == 0 and blocks:
        return file_of(blocks[:rng.randrange(len(blocks))])
    if way == 1 and len(data) > 8:
        begin = rng.randrange(len(data))
        return data[:begin] + data[begin + rng.randrange(1, 200):]
    if way == 2:
        return data[:rng.randrange(0, 60)]
    return data[:rng.randrange(len(data) + 1)]


def marks(rng, data):
    """A length mark made wrong, in front of or behind a record."""
    places, at = [], 0
    while at + 8 <= len(data):
        length = struct.unpack_from(">i", data, at)[0]
        if length < 0 or at + 8 + length > len(data):
            break
        places += [at, at + 4 + length]
        at += 8 + length
    if not places:
        return some_bytes(rng, data)
    at = rng.choice(places)
    old = struct.unpack_from(">i", data, at)[0]
    new = rng.choice((old + 1, old - 1, -old, 0, old * 2, 16, 4, 2147483647, -2147483648, -1, old + 4, old << 8))
    return data[:at] + struct.pack(">i", ((new + 2**31) % 2**32) - 2**31) + data[at + 4:]


def counts(rng, blocks):
    block = rng.choice(blocks)
    old = block.count
    block.count = rng.choice((0, -1, old + 1, old - 1, old * 2, old // 2, 1, 1000, 1001, 100000, 2147483647, -2147483648,
                              268435456, 536870912))
    block.count = max(-2**31, min(block.count, 2**31 - 1))


def keywords(rng, blocks):
    block, way = rng.choice(blocks), rng.randrange(3)
    if way == 0:
        block.keyword = rng.choice(KEYWORDS)
    elif way == 1:
        other = rng.choice(blocks)
        block.keyword, other.keyword = other.keyword, block.keyword
    else:
        block.keyword = block.keyword[:rng.randrange(8)].ljust(8)


def types(rng, blocks):
    rng.choice(blocks).kind = rng.choice(TYPES)


def changed_value(rng, kind):
    if kind == b"REAL":
        return struct.pack(">f", rng.choice(REALS))
    if kind == b"DOUB":
        return struct.pack(">d", rng.choice(REALS))
    if kind == b"CHAR":
        return rng.choice(WORDS)
    return struct.pack(">i", rng.choice(INTEGERS))


def values(rng, blocks):
    """Numbers of a block made others: one, some, or all of a record."""
    full = [block for block in blocks if block.data and SIZES.get(block.kind)]
    if not full:
        return
    heads = [block for block in full if block.keyword in (b"INTEHEAD", b"DOUBHEAD", b"IWEL    ", b"ICON    ", b"DIMENS  ")]
    block = rng.choice(heads) if heads and rng.random() < 0.4 else rng.choice(full)
    size = SIZES[block.kind]
    record = rng.randrange(len(block.data))
    data = bytearray(block.data[record])
    count = len(data) // size
    if count == 0:
        return
    if rng.random() < 0.15:
        data[:count * size] = changed_value(rng, block.kind) * count
    else:
        for _ in range(rng.choice((1, 1, 1, 3, 20))):
            at = rng.randrange(min(count, rng.choice((20, 100, count)))) * size
            data[at:at + size] = changed_value(rng, block.kind)
    block.data[record] = bytes(data)


def whole_blocks(rng, blocks, others):
    """A block lost, doubled, moved, shorter, or one of another file in between."""
    at, way = rng.randrange(len(blocks)), rng.randrange(6)
    if way == 0:
        del blocks[at]
    elif way == 1:
        blocks.insert(rng.randrange(len(blocks) + 1), blocks[at])
    elif way == 2:
        blocks.insert(rng.randrange(len(blocks)), blocks.pop(at))
    elif way == 3 and blocks[at].data:
        blocks[at].data[-1] = blocks[at].data[-1][:rng.randrange(len(blocks[at].data[-1]) + 1)]
    elif way == 4:
        wanted = set(rng.sample(range(len(blocks)), min(len(blocks), rng.randrange(1, 12))))
        blocks[:] = [block for n, block in enumerate(blocks) if n not in wanted]
    else:
        donor = blocks_of(rng.choice(others))
        if donor:
            blocks.insert(at, rng.choice(donor))


KINDS = ("bytes", "cut", "marks", "counts", "keywords", "types", "values", "blocks", "files")
OF_BYTES = {"bytes": some_bytes, "cut": cut, "marks": marks}
OF_BLOCKS = {"counts": counts, "keywords": keywords, "types": types, "values": values}
AT_ONCE = (1, 1, 1, 2, 4)


def damage(rng, kind, data, others):
    if kind in OF_BYTES:
        return OF_BYTES[kind](rng, data)
    blocks = blocks_of(data)
    if not blocks:
        return some_bytes(rng, data)
    blocks = [dataclasses.replace(block, data=list(block.data)) for block in blocks]
    if kind == "blocks":
        whole_blocks(rng, blocks, others)
    else:
        OF_BLOCKS[kind](rng, blocks)
    return file_of(blocks)


def exchanged(rng, files, name):
    """One file in the place of another, an empty one, or bytes that are no file of this kind."""
    way = rng.randrange(4)
    if way == 0:
        return b""
    if way == 1:
        return bytes(rng.randrange(256) for _ in range(rng.randrange(1, 400)))
    if way == 2:
        return files[name] + files[rng.choice(sorted(files))]
    return files[rng.choice(sorted(files))]


WEIGHT = {".X": 6, ".I": 3, ".E": 2, ".G": 1, ".S": 2}  # by the begin of the ending


def drawn_name(rng, names):
    names = sorted(names)
    weights = [WEIGHT.get("." + name.rsplit(".", 1)[-1][:1], 1) for name in names]
    return rng.choices(names, weights)[0]


def damaged_files(rng, kind, files, others):
    """The files of a run with one, seldom two of them damaged; `others` are files of other runs."""
    files = dict(files)
    hurt = []
    for _ in range(rng.choice((1, 1, 1, 2))):
        name = drawn_name(rng, files)
        hurt.append(name)
        if kind == "files":
            pool = dict(files, **({f"other{n}": data for n, data in enumerate(others)}))
            files[name] = exchanged(rng, pool, name)
            continue
        for _ in range(rng.choice(AT_ONCE)):
            files[name] = damage(rng, kind, files[name], others)
    return files, hurt
