"""Curves of a deck by a method of this program beside those of the independent simulator `flow`."""

import re

import numpy

from named_run import run_named, summary_of
from peer_flow import flow_vectors

METHODS = ["STREAMLINE", "IMPES", "FIM"]


def by_method(method, longest=5):
    """Options behind a deck: the method, in steps of at most `longest` days as those of the other simulator."""
    return f"TUNEKVR\nFDMETHOD\n{method}\nMAXDT\n{longest} /\n"


def own_curves(folder, text, unwanted=("NOT USED", "not surpported")):
    """Columns of the summary of a run that ends well, with its phases in balance and without those words on its console."""
    (folder / "OWN.DATA").write_text(text)
    ended = run_named("OWN.DATA", folder=folder)
    assert ended.returncode == 0, ended.console[-1500:]
    for words in unwanted:
        assert words not in ended.console
    errors = re.findall(r"balance error (\S+) %", ended.console)
    assert len(errors) >= 2 and set(errors) <= {"0.0000", "-0.0000"}
    return summary_of(folder / "OWN_Summary.csv")[0]


def remembered(folder_of, text_of, vectors):
    """Curves of the other simulator by case, each run once; `folder_of` gives a new folder, `text_of` the deck of a case."""
    known = {}

    def curves(case):
        if case not in known:
            known[case] = flow_vectors(folder_of("peer") / "run", text_of(case), *vectors)
        return known[case]

    return curves


def distances(curves, theirs, vectors, reports, measure=numpy.max):
    """Difference at the reports over the largest value, by vector; those that stay below 1 are left out."""
    off = {}
    for vector in vectors:
        a, b = (numpy.interp(reports, c["TIME"], c[vector]) for c in (curves, theirs))
        if numpy.abs(b).max() > 1.0:
            off[vector] = measure(numpy.abs(a - b)) / numpy.abs(b).max()
    return off


def told(name, off):
    return f"{name}: " + ", ".join(f"{vector} {100 * share:.2f} %" for vector, share in off.items())
