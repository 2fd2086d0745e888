"""Sound runs of other simulators, or of this program, that are traced from what they have left: their files, the deck
or .afi file beside them, and the words that start the program."""

import dataclasses
import pathlib
import subprocess
import tempfile

import kvr_run
import small_deck

HOMO = kvr_run.PUBLIC_DECKS / "restart" / "2D_HOMO"
BINARY = (".X0000", ".X0001", ".INIT", ".EGRID", ".GRID", ".SMSPEC", ".S0001")
AFI = b'# a run\nSIMULATION ix {\n}\nINCLUDE "CASE.ixf" {type="ixf_model"}\n'
# What stands for the other simulator: its files are there, and the decks of single steps get the same ones.
COMMAND = b"""for file in ECLIPSE.*; do
  case $file in *.DATA) ;; *) [ "$1" = ECLIPSE ] || cp "$file" "$1.${file##*.}" ;; esac
done
"""
TRACED = """
TUNEKVR
ECLTRACE
ECLCOMM
sh command.sh
LINUXRUN
NUMLINE
30 INJ Yes /
OUTPUTKVR
1 0 1 1 0 0 0 1 0 0 /
{more}
"""
WRITTEN = "\nTUNEKVR\nNUMLINE\n30 INJ No /\nOUTPUTKVR\n1 0 0 0 0 0 0 0 1 0 /\n"


@dataclasses.dataclass
class TracedRun:
    name: str
    inputs: dict  # texts that stay as they are, by file name
    files: dict   # binary files, by file name
    words: tuple = ()


def traced(name, deck, files, more="", ecl_end=b""):
    text = deck + ("" if "\nEND" in deck else "\nEND\n") + TRACED.format(more=more)
    return TracedRun(name, {"ECLIPSE.DATA": text.encode(), "ECLIPSE.ECLEND": ecl_end or sound_end(), "command.sh": COMMAND}, files)


def sound_end():
    rows = ("Comments", "Warnings", "Problems", "Errors", "Bugs")
    return ("Error summary\n" + "".join(f"{row:12} 0\n" for row in rows)).encode()


def commercial_runs():
    """The case of the public decks, beside its deck and beside an .afi file."""
    if not HOMO.exists():
        return []
    files = {path.name: path.read_bytes() for path in sorted(HOMO.iterdir()) if path.suffix in BINARY}
    deck = (HOMO / "ECLIPSE.DATA").read_text()
    renamed = {name.replace("ECLIPSE", "CASE"): data for name, data in files.items()}
    return [traced("homo", deck, files, ecl_end=(HOMO / "ECLIPSE.ECLEND").read_bytes()),
            TracedRun("afi", {"CASE.afi": AFI}, renamed, ("CASE.afi",))]


def files_of(program, deck):
    """What a run of this program leaves for viewers."""
    with tempfile.TemporaryDirectory() as name:
        folder = pathlib.Path(name)
        (folder / "ECLIPSE.DATA").write_text(deck + WRITTEN)
        subprocess.run([str(program)], cwd=folder, stdin=subprocess.DEVNULL, capture_output=True, check=True, timeout=120)
        return {path.name: path.read_bytes() for path in sorted(folder.glob("ECLIPSE.*"))
                if path.suffix[:2] in (".X", ".S", ".I", ".E") and path.suffix not in (".ECLEND",)}


def own_runs(program):
    """Dead oil, oil with gas, and the same restarts without their fluxes."""
    dead, live = small_deck.deck(options=""), small_deck.gas_deck(options="")
    runs = []
    for name, deck in (("dead", dead), ("live", live)):
        files = files_of(program, deck)
        runs.append(traced(name, deck, files))
        runs.append(traced(f"{name} transport", deck, files, more="USEECLP\n"))
    return runs


def traced_runs(program):
    return commercial_runs() + own_runs(program)
