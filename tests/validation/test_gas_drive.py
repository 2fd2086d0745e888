"""The IMPES step of components against finite volumes written apart from it: a gas drive of three components.

With more cells by command:   KVR_GAS_DRIVE_CELLS=200 ... pytest tests/validation/test_gas_drive.py"""

import os
import pathlib
import subprocess

import numpy

import gas_drive
import kvr_run

CELLS = int(os.environ.get("KVR_GAS_DRIVE_CELLS", "20"))
STEP_DAYS = 20.0 / CELLS  # 4 % of a cell's pores
MEAN_ERROR = 0.002        # of each mole fraction; both are upstream by one cell, on the same grid


def program_profile():
    program = pathlib.Path(kvr_run.PROGRAM).parent / "tests" / "gas_drive_row"
    done = subprocess.run([program, str(CELLS), str(STEP_DAYS)], text=True, capture_output=True, check=True)
    return numpy.array([[float(word) for word in line.split()] for line in done.stdout.splitlines()])


def test_compositions_along_a_gas_drive_are_those_of_another_solution():
    expected, found = gas_drive.profile(CELLS), program_profile()
    assert numpy.abs(found[:, :3] - expected).mean(axis=0).max() < MEAN_ERROR
    # Gas has passed part of the row, and oil stands before it.
    assert found[0, 3] > 0.7 and found[-1, 3] == 0.0
