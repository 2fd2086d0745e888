"""Long steps of a mixture against short ones: solvent into six components past its breakthrough, by cells.

Without the passes that solve a step again with the mobilities it has come to, automatic steps give 5 % less gas."""

import re

import kvr_run
import mixture_flood
import named_run

DAYS, CELLS = 456.25, 9
SHORT = 5  # days; steps of half of them give the same within 0.03 %
PRODUCED = re.compile(r"^(\w+) +: produced (\S+) lb-mole", re.M)


def produced_in(folder, step):
    folder.mkdir()
    (folder / "CASE.DATA").write_text(mixture_flood.deck("gas", DAYS, CELLS, "IMPES", step))
    run = named_run.run_named(folder / "CASE.DATA", folder=folder)
    assert run.returncode == 0 and run.errors == "", run.console[-3000:]
    table = kvr_run.read_table(folder / "CASE_Run_Recovery.out")
    figures = {name: float(moles) for name, moles in PRODUCED.findall(run.console)}
    return figures | {"oil": table["FOPT"][-1], "gas": table["FGPT"][-1]}, len(table["FOPT"])


def test_automatic_steps_of_a_solvent_flood_are_those_of_five_days(tmp_path):
    short, many = produced_in(tmp_path / "short", SHORT)
    automatic, few = produced_in(tmp_path / "automatic", "auto")
    assert len(short) == 8 and few < many / 2, (few, many)
    off = {name: automatic[name] / short[name] - 1.0 for name in short}
    assert all(abs(share) < 0.01 for share in off.values()), off
