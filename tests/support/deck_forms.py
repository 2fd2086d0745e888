"""A deck in one file and the same as three files, run side by side: which of their results differ."""

import os
import pathlib
import subprocess

import three_files

# Files that tell of the deck's own text, of paths, or of processor time.
OF_THE_FORM = ("_dbg.out", "_ECLMtricTemporaty.tmp", "_ECLFieldTemporaty.tmp", "_0EraseData.bat", "_Info_general.out",
               "_Files.md")
# SUMMARY is not read from the three files, so that vectors it asks for are not in the files of viewers.
OF_SUMMARY = (".SMSPEC", ".S0")


def run(program, deck, output, timeout, words=()):
    environment = dict(os.environ, OMP_NUM_THREADS="1", TERM="dumb")
    return subprocess.run([str(program), str(deck), "--output-dir", str(output), *words], stdin=subprocess.DEVNULL,
                          capture_output=True, text=True, errors="replace", timeout=timeout, env=environment)


def results_of(folder, asks_summary):
    left_out = OF_THE_FORM + (OF_SUMMARY if asks_summary else ())
    return {path.name: path.read_bytes() for path in folder.iterdir()
            if not any(part in path.name for part in left_out)}


def both_forms(program, deck, folder, change=lambda text: text, timeout=600):
    """Runs both forms of a deck, its text changed first. Gives both exit statuses, the number of result files and the
    names of those that differ or that one form alone has left."""
    deck, folder = pathlib.Path(deck), pathlib.Path(folder)
    text = change(deck.read_text(errors="replace"))
    single = folder / "single"
    single.mkdir(parents=True)
    (single / "CASE.DATA").write_text(text)
    three_files.copy_included(deck, text, single)
    three_files.write_three_files(deck, folder / "CASE", text)
    ends = [run(program, single / "CASE.DATA", folder / "of_one", timeout),
            run(program, folder / "CASE", folder / "of_three", timeout)]
    asks_summary = "SUMMARY" in three_files.sections_of(text)
    one, three = (results_of(folder / name, asks_summary) for name in ("of_one", "of_three"))
    differ = sorted(name for name in one.keys() | three.keys() if one.get(name) != three.get(name))
    return [end.returncode for end in ends], len(one), differ


ALL_OUTPUT = "\nOUTPUTKVR\n1 1 1 1 0 0 0 1 1 1 /\n"


def with_all_output(text):
    """Every file that a run can leave, so that all of them are compared."""
    if "TUNEKVR" in text:
        return text.replace("TUNEKVR", "TUNEKVR" + ALL_OUTPUT, 1)
    end = "" if any(three_files.word_of(line) == "END" for line in text.splitlines()) else "\nEND\n"
    return text + end + "\nTUNEKVR" + ALL_OUTPUT
