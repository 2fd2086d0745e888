"""Every word of PSOLVER solves the same pressure equations."""

import numpy

import kvr_run
from public_floods import needs_public_decks

pytestmark = needs_public_decks

ITERATIVE = ("AMG", "GMRES", "CG")
DENSE = ("SGAUSS", "DGESV", "IDGESL")
STEPS = {"FIVE1": "40*50", "QFS50": "40*50"}


def first_step(folder, name, word, edit=lambda text: text):
    """Cell pressures behind the first step of 50 days, criterion of the iteration tight. Under step control a solve may
    leave a millionth over to the next one, which differs from word to word: the step is not judged."""
    text = kvr_run.public_deck(f"waterflood/{name}.DATA")
    assert STEPS[name] in text
    include = kvr_run.PUBLIC_DECKS / "waterflood" / f"{name}.INC"
    files = {include.name: include.read_text()} if include.exists() else {}
    section = kvr_run.options(method="IMPES", solver=word, tolerance=1e-5, extra="STEPCTRL\nNo /\n")
    folder.mkdir()
    result = kvr_run.run(folder, edit(text.replace(STEPS[name], "1*50")) + section, files)
    kvr_run.finished_normally(result)
    rows = [line.split() for line in result.read("KVR_Run_Pressure.out").splitlines()[3:]]
    return numpy.array([float(row[3]) for row in rows if len(row) == 4])


def thirty_by_thirty(text):
    """The quarter five-spot on 900 cells."""
    text = text.replace("50 50 1 /", "30 30 1 /").replace("2500*", "900*")
    return text.replace(" 50 50 ", " 30 30 ")


def largest_difference(values, reference):
    assert len(values) == len(reference)
    return numpy.abs(values / reference - 1.0).max()


def test_iterative_words_give_the_same_pressures_behind_the_first_step_of_the_five_spot(tmp_path):
    found = {word: first_step(tmp_path / word, "FIVE1", word) for word in ITERATIVE}
    assert len(found["AMG"]) == 13200
    for word in ITERATIVE[1:]:
        assert largest_difference(found[word], found["AMG"]) <= 1e-6, word


def test_dense_words_give_the_pressures_of_the_multigrid_on_nine_hundred_cells(tmp_path):
    reference = first_step(tmp_path / "AMG", "QFS50", "AMG", thirty_by_thirty)
    assert len(reference) == 900
    for word in DENSE:
        assert largest_difference(first_step(tmp_path / word, "QFS50", word, thirty_by_thirty), reference) <= 1e-6, word
