"""Random models of mixtures come to their end with every amount kept. More by command:

   KVR_RANDOM_MIXTURES=100 ... pytest tests/validation/test_random_mixtures.py"""

import os
import re

import numpy
import pytest

import named_run
import random_mixtures

COUNT = int(os.environ.get("KVR_RANDOM_MIXTURES", "10"))
DRAWS_LITTLE = 18  # a well of four connections that draws by hundredths of a psi
SEEDS = sorted({*range(1, 1 + COUNT), DRAWS_LITTLE})
BALANCE = re.compile(r"^\w+ +: produced .* lb-mole, balance error (\S+) %", re.M)


@pytest.mark.parametrize("method", ["IMPES", "STREAMLINE"])
@pytest.mark.parametrize("seed", SEEDS)
def test_a_random_mixture_runs_to_its_end_and_keeps_every_component(tmp_path, seed, method):
    (tmp_path / "CASE.DATA").write_text(random_mixtures.model(seed).replace("FDMETHOD\nIMPES", f"FDMETHOD\n{method}"))
    ended = named_run.run_named(tmp_path / "CASE.DATA", folder=tmp_path, timeout=120)
    assert ended.returncode == 0 and ended.errors == "", ended.console[-3000:]
    errors = [abs(float(text)) for text in BALANCE.findall(ended.console)]
    assert len(errors) >= 2 and max(errors) < 1e-4, ended.console[-3000:]
    columns, _ = named_run.summary_of(tmp_path / "CASE_Summary.csv")
    assert all(numpy.isfinite(values).all() for values in columns.values())
    assert columns["FPR"].min() > 0.0
