#!/usr/bin/python3
"""Turns a deck in one file into the three-file form: Reservoir.DATA, Well.DATA and Simulation.DATA.

    three_files.py CASE.DATA FOLDER       files that the deck includes go with it"""

import pathlib
import re
import shutil
import sys

NAMES = ("Reservoir.DATA", "Well.DATA", "Simulation.DATA")
RESERVOIR = ("RUNSPEC", "GRID", "EDIT", "PROPS", "REGIONS", "SOLUTION", "SUMMARY")  # SUMMARY is there to be left out
WELLS, OPTIONS, END = "SCHEDULE", "TUNEKVR", "END"


def word_of(line):
    """The word that a keyword test sees."""
    found = re.match(r"[^\s/]*", line.lstrip(" \t"))
    word = found.group()[:8]
    return "REGIONS" if word == "REGION" else word


def sections_of(text):
    """Lines of each section by its word, in one list where it stands more than once; what stands before the first has
    the word blank, and the option section goes up to the END behind it."""
    sections, present, words = {"": []}, "", {*RESERVOIR, WELLS, OPTIONS}
    ended = skipped = title = False
    for line in text.splitlines():
        word = word_of(line)
        if title or skipped:  # text of a title, and what SKIP leaves out, are no keywords
            skipped = skipped and word != "ENDSKIP"
            title = False
            sections[present].append(line)
            continue
        title, skipped = word == "TITLE", word in ("SKIP", "SKIP100")
        if word == END:
            if ended or present == OPTIONS:
                break
            ended, present = True, ""
        elif word in words and (not ended or word == OPTIONS):
            present = word
            sections.setdefault(word, [])
        elif present or not ended:
            sections[present].append(line)
    return sections


def three_files(text):
    """The texts of the three files by name."""
    sections = sections_of(text)
    reservoir = list(sections[""])
    for word in RESERVOIR:
        if word in sections:
            reservoir += [word, *sections[word]]
    wells = [WELLS, *sections.get(WELLS, [])]
    options = [OPTIONS, *sections.get(OPTIONS, [])]
    return {name: "\n".join([*lines, END, ""]) for name, lines in zip(NAMES, (reservoir, wells, options))}


def included(text):
    """Names of the files that a deck includes."""
    lines = [line.split("--")[0].strip() for line in text.splitlines()]
    lines = [line for line in lines if line]
    return [lines[n + 1].split("/")[0].strip(" '\"") if "'" not in lines[n + 1] else lines[n + 1].split("'")[1]
            for n, line in enumerate(lines[:-1]) if line.split()[0] == "INCLUDE"]


def copy_included(deck, text, folder):
    for name in included(text):
        source = deck.parent / name
        if source.exists():
            (folder / name).parent.mkdir(parents=True, exist_ok=True)
            shutil.copy(source, folder / name)


def write_three_files(deck, folder, text=None):
    """The deck, or another text in its place, as three files in `folder`, which is made."""
    deck, folder = pathlib.Path(deck), pathlib.Path(folder)
    folder.mkdir(parents=True, exist_ok=True)
    text = deck.read_text(errors="replace") if text is None else text
    for name, part in three_files(text).items():
        (folder / name).write_text(part)
    copy_included(deck, text, folder)


if __name__ == "__main__":
    if len(sys.argv) != 3:
        sys.exit(__doc__)
    write_three_files(sys.argv[1], sys.argv[2])
