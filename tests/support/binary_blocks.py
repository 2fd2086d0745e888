"""Reads keyword blocks of binary files of the kind .X0001, .INIT, .EGRID: framed big-endian records."""

import pathlib
import struct

import numpy

TYPES = {"INTE": ">i4", "REAL": ">f4", "DOUB": ">f8", "LOGI": ">i4", "CHAR": "S8"}


def framed_blocks(data):
    """Keyword, type, payload and the bytes of the file of every block, in its order."""
    place = 0

    def record():
        nonlocal place
        (length,) = struct.unpack_from(">i", data, place)
        payload = data[place + 4:place + 4 + length]
        place += 8 + length
        return payload

    while place < len(data):
        begin, head = place, record()
        keyword, kind = head[:-8].decode("ascii").strip(), head[-4:].decode("ascii")
        (count,) = struct.unpack(">i", head[-8:-4])
        width = numpy.dtype(TYPES[kind]).itemsize if kind in TYPES else 0
        payload = b""
        while len(payload) < count * width:
            payload += record()
        yield keyword, kind, payload, data[begin:place]


def blocks(path):
    """Keyword and values of every block, in the order of the file."""
    for keyword, kind, payload, _ in framed_blocks(pathlib.Path(path).read_bytes()):
        yield keyword, numpy.frombuffer(payload, TYPES.get(kind, "S1"))


def arrays(path):
    """The first block of each keyword."""
    found = {}
    for keyword, values in blocks(path):
        found.setdefault(keyword, values)
    return found


def without_blocks(path, keywords):
    """The bytes of a file but for the blocks of some keywords."""
    framed = framed_blocks(pathlib.Path(path).read_bytes())
    return b"".join(whole for keyword, _, _, whole in framed if keyword not in keywords)


def real_block(keyword, values):
    """A block of single-precision numbers as these files have it."""

    def record(payload):
        return struct.pack(">i", len(payload)) + payload + struct.pack(">i", len(payload))

    numbers = numpy.asarray(values, dtype=">f4").ravel()
    data = record(keyword.ljust(8).encode("ascii") + struct.pack(">i", len(numbers)) + b"REAL")
    for begin in range(0, len(numbers), 1000):
        data += record(numbers[begin:begin + 1000].tobytes())
    return data
