"""Binary files of keyword blocks taken apart into records and put together again, byte for byte."""

import dataclasses
import struct

SIZES = {b"INTE": 4, b"REAL": 4, b"DOUB": 8, b"LOGI": 4, b"CHAR": 8, b"MESS": 0}


@dataclasses.dataclass
class Block:
    """A keyword with its records: header and data as the file has them, marks and all."""
    keyword: bytes
    count: int
    kind: bytes
    data: list  # payloads of the data records

    def header(self):
        return self.keyword + struct.pack(">i", self.count) + self.kind


def framed(payload):
    mark = struct.pack(">i", len(payload))
    return mark + payload + mark


def blocks_of(data):
    """The blocks of a sound file with big-endian marks; None where the file is no such file."""
    records, at = [], 0
    while at < len(data):
        if at + 4 > len(data):
            return None
        length = struct.unpack_from(">i", data, at)[0]
        if length < 0 or at + 8 + length > len(data):
            return None
        records.append(data[at + 4:at + 4 + length])
        at += 8 + length
    blocks = []
    while records:
        head = records.pop(0)
        if len(head) != 16 or head[12:] not in SIZES:
            return None
        block = Block(head[:8], struct.unpack(">i", head[8:12])[0], head[12:], [])
        left = block.count * SIZES[block.kind]
        while left > 0 and records:
            block.data.append(records.pop(0))
            left -= len(block.data[-1])
        blocks.append(block)
    return blocks


def file_of(blocks):
    return b"".join(framed(block.header()) + b"".join(map(framed, block.data)) for block in blocks)
