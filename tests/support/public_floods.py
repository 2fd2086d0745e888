"""The public water-flood decks with option sections of our own, and their reference curves."""

import lzma

import numpy
import pytest

import kvr_run

needs_public_decks = pytest.mark.skipif(not kvr_run.PUBLIC_DECKS.exists(),
                                        reason="public decks not beside the checkout")

REPORT_TIMES = numpy.arange(0.0, 2000.1, 50.0)


def reference(name):
    return kvr_run.read_csv(kvr_run.PUBLIC_DECKS / "reference" / f"{name}.csv")


def included(name):
    """The included file of waterflood deck `name` by its name, empty where it has none."""
    include = kvr_run.PUBLIC_DECKS / "waterflood" / f"{name}.INC"
    packed = include.with_name(include.name + ".xz")
    if include.exists():
        return {include.name: include.read_bytes()}
    return {include.name: lzma.decompress(packed.read_bytes())} if packed.exists() else {}


def flood_as_published(folder, name, section=""):
    """Runs waterflood deck `name` with an option section behind it."""
    text = kvr_run.public_deck(f"waterflood/{name}.DATA") + section
    return kvr_run.finished_normally(kvr_run.run(folder, text, included(name)))


def flood(folder, name, step=50.0, **settings):
    """Runs waterflood deck `name` to 2000 days with steps of `step` days."""
    text = kvr_run.public_deck(f"waterflood/{name}.DATA")
    steps = int(round(2000.0 / step))
    assert "40*50" in text
    text = text.replace("40*50", f"{steps}*{step:g}")
    folder.mkdir(exist_ok=True)
    return kvr_run.finished_normally(kvr_run.run(folder, text + kvr_run.options(**settings), included(name)))
