"""Damages a deck: bytes, tokens, lines, records, dimensions, repeat counts, options. Pure functions of text and stream."""

import re

NASTY = [b"0", b"-1", b"1e30", b"-1e30", b"nan", b"inf", b"1e-30", b"2147483647", b"2147483648", b"-2147483648",
         b"99999999999999", b"1e308", b"1e-308", b"/", b"*", b"1*", b"5*", b"0*1", b"-5*3", b"'", b"''", b"'A", b"ABC",
         b"1.5", b"1D5", b"1E", b"--", b"1000", b"100000", b"0.5", b"1", b"2", b"3", b"'*'", b"'INJ1'", b"'P1'", b"\x00",
         b"9" * 400, b"X" * 300, b"1*1*1", b"3**4", b",", b"\t", b"\r", b"+", b".", b"1.0.0", b"\xff\xfe"]
COUNTS = [0, 1, 2, 7, 1000, 100000, 10000000, 2147483647, 2147483648, 99999999999999999999, -1, -7]
SIZES = [0, -1, 1, 2, 3, 7, 50, 1000, 30000, 1000000, 46341, 65536, 2147483647, 4294967297]
SIZE_KEYWORDS = (b"DIMENS", b"TABDIMS", b"WELLDIMS", b"EQLDIMS", b"TRACERS", b"COMPS", b"BOX", b"NUMLINE", b"SL1DMAP",
                 b"OPTIONKVR", b"UPSCALE", b"SMTHPRM", b"COMPDAT", b"WELSPECS", b"CONVERGE", b"FAULTS", b"EQUALS",
                 b"COPY", b"MULTIPLY", b"START", b"DATES")
OPTIONS = (b"FDMETHOD\nIMPES\n", b"FDMETHOD\nFIM\n", b"FDMETHOD\nSTREAMLINE\n", b"FDMETHOD\nEbFVM\n",
           b"PSOLVER\nDGESV\n", b"PSOLVER\nSGAUSS\n", b"PSOLVER\nITGSV\n", b"PSOLVER\nCG\n", b"PSOLVER\nGMRES\n",
           b"PSOLVER\nAMG\n", b"SSOLVER\nSGAUSS\n", b"SSOLVER\nDGESV\n", b"CONVERGE\n1.d-2 1.d-4 30 30 /\n",
           b"NUMLINE\n20 INJ Yes /\n", b"NUMLINE\n20 PRD Yes /\n", b"NUMLINE\n9 CEL No /\n", b"NUMLINE\n1 INJ Yes /\n",
           b"SL1DCON\nEXPLICIT IRR 1.0 SPU Yes Yes Yes No /\n", b"SL1DCON\nIMPLICIT REG 2.0 SPU Yes Yes No No /\n",
           b"SL1DCON\nANALYTICAL REG 1.0 SPU Yes No No No /\n", b"SL1DCON\nEXPLICIT AUTO 1.0 2PU No Yes Yes Yes 2 /\n",
           b"SL1DCON\nEXPLICIT REG 0.5 LEONARD Yes Yes No Yes /\n", b"CFL\n0.5 1.d-3 /\n", b"CFLG\n0.5 1.d-3 /\n",
           b"OPTIONKVR\n1 1 1 0 1 1 0 2 /\n", b"OPTIONKVR\n0 0 0 0 0 0 0 0 /\n", b"OUTPUTKVR\n1 1 1 1 1 1 1 1 1 1 /\n",
           b"OUTPUTKVR\n0 0 1 1 1 0 0 1 1 1 /\n", b"MAXDT\n5 /\n", b"OPTTSTEP\n100 /\n", b"SL1DMAP\n3 /\n",
           b"MAPPING\nAVERAGE\n", b"STEPCTRL\nNo /\n", b"STEPCTRL\nYes 2.d-3 0.5 1.d-4 8.d-3 3.d-2 0.05 1.d-3 /\n",
           b"SMTHPRM\nPERMX 1 /\nPORO 2 /\n/\n", b"UPSCALE\nPERMX 2 2 1 /\n/\n", b"JFUNC\n30 /\n", b"NINEPOIN\n",
           b"ECL2TEC\n", b"CHKRSAT\n1 /\n", b"RESTART\n1 /\n", b"-- ConvertUnitCommandKVR\n")


def place_in(rng, text):
    return rng.randrange(len(text)) if text else 0


def spans(pattern, text):
    return [match.span() for match in re.finditer(pattern, text)]


def replaced(text, span, new):
    return text[:span[0]] + new + text[span[1]:]


def one_byte(rng, text):
    at, way = place_in(rng, text), rng.randrange(5)
    byte = bytes([rng.choice((rng.randrange(256), rng.choice(b"0123456789"), rng.choice(b"/*' \n-.\r\0\xff")))])
    if way == 0:
        return replaced(text, (at, at + 1), byte)
    if way == 1:
        return replaced(text, (at, at), byte)
    if way == 2:
        return replaced(text, (at, at + 1 + rng.randrange(4)), b"")
    if way == 3:
        return text[:at]  # cut off
    end = min(len(text), at + 1 + rng.randrange(60))
    other = place_in(rng, text)
    return replaced(text, (other, other), text[at:end])


def changed_number(rng, word):
    """A number made another: sign, power of ten, a digit more."""
    way = rng.randrange(5)
    if way == 0:
        return b"-" + word
    if way == 1:
        return word + bytes([rng.choice(b"0123456789")])
    if way == 2:
        return word.replace(b".", b"")
    if way == 3:
        return word + b"e" + str(rng.choice((-30, -9, -3, -1, 1, 2, 3, 6, 9, 30))).encode()
    return str(rng.choice((0, 1, 2, 3, 10, 1000))).encode()


def one_token(rng, text):
    tokens = spans(rb"[^\s]+", text)
    if not tokens:
        return text
    span, way = rng.choice(tokens), rng.randrange(6)
    word = text[span[0]:span[1]]
    if way == 0:
        return replaced(text, span, rng.choice(NASTY))
    if way == 1:
        return replaced(text, span, b"")
    if way == 2:
        other = rng.choice(tokens)
        return replaced(text, span, text[other[0]:other[1]])
    if way == 3:
        return replaced(text, span, word + b" " + rng.choice(NASTY))
    if way == 4 and re.match(rb"[\d.+-]", word):
        return replaced(text, span, changed_number(rng, word))
    return replaced(text, span, word + b" " + word)


def one_line(rng, text):
    lines = text.split(b"\n")
    at, way = rng.randrange(len(lines)), rng.randrange(7)
    if way == 0:
        del lines[at]
    elif way == 1:
        lines.insert(at, lines[at])
    elif way == 2:
        other = rng.randrange(len(lines))
        lines[at], lines[other] = lines[other], lines[at]
    elif way == 3 and at + 1 < len(lines):
        lines[at:at + 2] = [lines[at] + b" " + lines[at + 1]]
    elif way == 4:
        lines = lines[:at]
    elif way == 5:
        lines.insert(at, rng.choice((b"", b"/", b"--", b"-- note", b"X" * 5000, lines[rng.randrange(len(lines))])))
    else:
        del lines[at:at + rng.randrange(1, 20)]
    return b"\n".join(lines)


def records_of(text):
    """Where each keyword with its data begins and ends."""
    starts = [match.start() for match in re.finditer(rb"(?m)^[A-Z][A-Z0-9]{1,7}[ \t\r]*$", text)]
    return list(zip(starts, starts[1:] + [len(text)]))


def one_record(rng, text, others):
    records = records_of(text)
    if not records:
        return text
    span, way = rng.choice(records), rng.randrange(5)
    if way == 0:
        return replaced(text, span, b"")
    if way == 1:
        return replaced(text, (span[1], span[1]), text[span[0]:span[1]])
    if way == 2:
        other = rng.choice(records)
        return replaced(text, (other[0], other[0]), text[span[0]:span[1]])
    if way == 3:
        cut = rng.randrange(span[0], span[1])
        return replaced(text, (cut, span[1]), b"\n")
    donor = rng.choice(others)
    found = records_of(donor)
    if not found:
        return text
    piece = rng.choice(found)
    return replaced(text, (span[0], span[0]) if rng.random() < 0.5 else span, donor[piece[0]:piece[1]])


def one_dimension(rng, text):
    """An integer behind a keyword that gives sizes, counts or places."""
    found = [span for span in records_of(text)
             if text[span[0]:span[0] + 9].split()[0] in SIZE_KEYWORDS]
    if not found:
        return text
    begin, end = rng.choice(found)
    numbers = [(a + begin, b + begin) for a, b in spans(rb"(?<![\w.])\d+(?![\w.])", text[begin:end])]
    if not numbers:
        return text
    span = rng.choice(numbers)
    old = int(text[span[0]:span[1]][:18])
    new = rng.choice(SIZES + [old + 1, old - 1, old * 2, old * 10, old * 1000, -old])
    return replaced(text, span, str(new).encode())


def one_repeat(rng, text):
    """A repeat count made wrong, or one given to a number that had none."""
    found = spans(rb"(?<![\w.])\d+(?=\*)", text)
    if found and rng.random() < 0.7:
        span = rng.choice(found)
        old = int(text[span[0]:span[1]][:18])
        return replaced(text, span, str(rng.choice(COUNTS + [old + 1, old - 1, old * 2, old * 10])).encode())
    numbers = spans(rb"(?<![\w.*])[\d.]+(?![\w.*])", text)
    if not numbers:
        return text
    at = rng.choice(numbers)[0]
    return replaced(text, (at, at), str(rng.choice(COUNTS)).encode() + b"*")


def one_option(rng, text):
    """Rows of the option section, some of them damaged at once."""
    rows = b"".join(rng.sample(OPTIONS, rng.randrange(1, 7)))
    if rng.random() < 0.4:
        rows = rng.choice((one_token, one_repeat, one_byte))(rng, rows)
    if b"TUNEKVR" not in text:
        return text + b"\nEND\nTUNEKVR\n" + rows
    return text + b"\n" + rows


KINDS = ("bytes", "tokens", "lines", "records", "dimensions", "repeats", "options")
AT_ONCE = (1, 1, 1, 1, 2, 3)  # damages of one deck
OPTIONS_SHARE = 0.35  # of the decks of other kinds that run with drawn options as well


def damage(rng, kind, text, others):
    if kind == "records":
        return one_record(rng, text, others)
    return {"bytes": one_byte, "tokens": one_token, "lines": one_line, "dimensions": one_dimension,
            "repeats": one_repeat, "options": one_option}[kind](rng, text)


def sound_options(rng, text):
    rows = b"".join(rng.sample(OPTIONS, rng.randrange(1, 5)))
    return text + (b"\n" if b"TUNEKVR" in text else b"\nEND\nTUNEKVR\n") + rows


def damaged(rng, kind, text, others):
    """A damaged copy of a deck; with drawn options ahead of the damage in a part of the decks."""
    if kind != "options" and rng.random() < OPTIONS_SHARE:
        text = sound_options(rng, text)
    for _ in range(rng.choice(AT_ONCE)):
        text = damage(rng, kind, text, others)
    return text


def damaged_file(rng, data):
    """A binary file with some of its bytes changed, or cut short."""
    data = bytearray(data)
    if rng.random() < 0.3:
        return bytes(data[:rng.randrange(len(data) + 1)])
    for _ in range(rng.choice((1, 1, 2, 8))):
        at = rng.randrange(len(data))
        data[at] = rng.choice((0, 1, 0x7F, 0x80, 0xFF, rng.randrange(256)))
    return bytes(data)
