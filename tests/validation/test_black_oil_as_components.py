"""Gas injected above the bubble point into live oil, on the grid and with the wells of the first comparative study: a fluid of
two components as components, and the same fluid as tables of black oil made of it apart from the program."""

import numpy

import component_deck
import named_run
import pseudo_fluid

TEMPERATURE, BUBBLE_POINT, START = 200.0, 4014.7, 4800.0  # F, psia
YEARS = 5
STEP = 1.25  # days; the gas that comes is of first order in it in both runs
PRESSURES = sorted((100.0, *range(500, 6001, 100), BUBBLE_POINT))
ROCK = """DX
300*500 /
DY
300*500 /
DZ
100*20 100*30 100*50 /
TOPS
100*8325 /
PERMX
100*500 100*50 100*200 /
PERMY
100*500 100*50 100*200 /
PERMZ
100*500 100*50 100*200 /
PORO
300*0.3 /
"""
WELLS = """WELSPECS
INJ G 1 1 8335 GAS /
PRD G 10 10 8400 OIL /
/
COMPDAT
INJ 1 1 1 1 OPEN 1* 1* 0.5 /
PRD 10 10 3 3 OPEN 1* 1* 0.5 /
/
"""
CONTROLS = """WCONINJE
INJ GAS OPEN RATE 9000 1* 9000 /
/
{stream}WCONPROD
PRD OPEN ORAT 4500 4* 1000 /
/
"""
SGOF = "SGOF\n" + "".join(f"{s:.3f} {g} {o} 0\n" for s, g, o in (
    (0, 0, 1), (0.02, 0, 0.997), (0.05, 0.005, 0.98), (0.12, 0.025, 0.7), (0.2, 0.075, 0.35), (0.25, 0.125, 0.2), (0.3, 0.19, 0.09),
    (0.4, 0.41, 0.021), (0.45, 0.6, 0.01), (0.5, 0.72, 0.001), (0.6, 0.87, 0.0001), (0.7, 0.94, 0), (0.85, 0.98, 0), (0.88, 0.984, 0))) + "/\n"
SWOF = "SWOF\n0.12 0 1 0\n0.24 1e-9 0.3 0\n0.5 0.1 0.01 0\n0.7 0.4 0 0\n1.0 1.0 0 0 /\n"
SOLUTION = f"PRESSURE\n300*{START} /\nSWAT\n300*0.12 /\nSGAS\n300*0 /\n"


def mixture_deck(fluid, step):
    x, _ = fluid.split(fluid.reservoir, BUBBLE_POINT)
    stream = "WINJGAS\nINJ STREAM PURE /\n/\n"
    return component_deck.replaced(cells=(10, 10, 3), rock=ROCK, components=(pseudo_fluid.GAS, pseudo_fluid.OIL),
                                   binary=(pseudo_fluid.BINARY,), temperature=TEMPERATURE,
                                   feed=(x, 1 - x), props=SWOF + SGOF, solution=SOLUTION, streams=(("PURE", (1.0, 0.0)),), wells=WELLS,
                                   controls=CONTROLS.format(stream=stream), steps=f"{int(365 * YEARS / step)}*{step}")


def black_oil_deck(fluid, step):
    """The same deck with tables in place of the mixture."""
    x, _ = fluid.split(fluid.reservoir, BUBBLE_POINT)
    rs, _, _ = fluid.liquid_row(x, BUBBLE_POINT)
    oil, gas = fluid.densities()
    text = mixture_deck(fluid, step)
    text = text.replace("COMPS\n2 /\n", "DISGAS\n").replace("WELLSTRE\nPURE 1.0 0.0 /\n/\n", "").replace("WINJGAS\nINJ STREAM PURE /\n/\n", "")
    start, end = text.index("CNAMES"), text.index("SWOF")
    text = text[:start] + fluid.pvto(PRESSURES) + fluid.pvdg(PRESSURES) + text[end:]
    text = text.replace("DENSITY\n50 62.4 0.05 /", f"DENSITY\n{oil} 62.4 {gas} /")
    text = text.replace("SGAS\n300*0 /\n", f"SGAS\n300*0 /\nRS\n300*{rs} /\n")
    return text


def curves(folder, deck):
    folder.mkdir()
    (folder / "CASE.DATA").write_text(deck)
    ended = named_run.run_named(folder / "CASE.DATA", folder=folder)
    assert ended.returncode == 0 and ended.errors == "", ended.console[-3000:]
    return named_run.summary_of(folder / "CASE_Summary.csv")[0]


def test_a_mixture_of_gas_and_oil_flows_as_its_black_oil_tables(tmp_path):
    fluid = pseudo_fluid.Fluid(TEMPERATURE + 459.67)
    components = curves(tmp_path / "components", mixture_deck(fluid, STEP))
    tables = curves(tmp_path / "tables", black_oil_deck(fluid, STEP))
    times = numpy.linspace(73.0, 365.0 * YEARS, 25)
    for name in ("FOPR", "FGPR", "FOPT", "FGPT", "FPR", "WBHP:PRD"):
        a, b = (numpy.interp(times, run["TIME"], run[name]) for run in (components, tables))
        assert numpy.abs(a / b - 1).max() < 0.03, (name, a / b - 1)
    # Gas has broken through.
    gor = [run["FGPR"][-1] / run["FOPR"][-1] for run in (components, tables)]
    assert gor[1] > 2 * tables["FGPR"][1] / tables["FOPR"][1]
