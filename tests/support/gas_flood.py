"""The first comparative case, gas injection into live oil, and its comparison with the reference curve."""

import dataclasses

import numpy

import kvr_run
from curves import first_crossing
from public_floods import reference

BREAKTHROUGH = 1.5  # Mscf/stb


def gas_flood(folder, step=None, side="INJ", **settings):
    """Runs the case with steps of at most `step` days and lines from the INJ or PRD side."""
    options = kvr_run.options(extra=f"MAXDT\n{step}\n" if step else "", **settings)
    deck = kvr_run.public_deck("spe1/SPE1CASE2.DATA") + options.replace("INJ No /", f"{side} No /")
    return kvr_run.finished_normally(kvr_run.run(folder, deck))


@dataclasses.dataclass
class Comparison:
    breakthrough: float  # day at which the gas-oil ratio passes 1.5
    early_ratio: float  # largest distance of the ratio from 1.27 until 100 days before
    plateau: float  # largest relative difference of the field pressure between days 100 and 1100
    pressure: float  # the same at any time, with its sign
    oil: float  # cumulative oil, relative difference
    last_ratio: float


def compare(table):
    curve = reference("SPE1CASE2")
    time = table["TIME"]
    breakthrough = first_crossing(time, table["FGOR"], BREAKTHROUGH)
    early = (time > 0.0) & (time < breakthrough - 100.0)
    inside = time >= curve["TIME"][0]
    pressure = table["FPR"] / numpy.interp(time, curve["TIME"], curve["FPR"]) - 1.0
    plateau = (time > 100.0) & (time < 1100.0)
    return Comparison(breakthrough=breakthrough,
                      early_ratio=numpy.abs(table["FGOR"][early] - 1.27).max() if early.any() else 0.0,
                      plateau=numpy.abs(pressure[plateau]).max() if plateau.any() else 0.0,
                      pressure=pressure[inside][numpy.abs(pressure[inside]).argmax()],
                      oil=table["FOPT"][-1] / curve["WOPT:PROD"][-1] - 1.0,
                      last_ratio=table["FGOR"][-1])
