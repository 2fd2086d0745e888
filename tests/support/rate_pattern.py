"""Water floods of many wells in uneven sand, for the optimisation of rates."""

import numpy

import kvr_run

GRID = 24  # cells along each side

HEAD = """RUNSPEC
DIMENS
{n} {n} 1 /
OIL
WATER
FIELD
TABDIMS
1 1 20 20 /
WELLDIMS
20 5 2 20 /
START
1 'JAN' 2000 /
GRID
DX
{cells}*40 /
DY
{cells}*40 /
DZ
{cells}*20 /
TOPS
{cells}*6000 /
PORO
{cells}*0.2 /
PERMX
{sand}
/
COPY
'PERMX' 'PERMY' /
'PERMX' 'PERMZ' /
/
PROPS
PVDO
300 1.05 1.5
8000 1.0 1.6 /
PVTW
3000 1.0 0.000003 0.5 0 /
DENSITY
53 64 0.0624 /
ROCK
3000 0.000004 /
SWOF
0.2 0 1 0
0.3 0.03 0.65 0
0.4 0.1 0.4 0
0.5 0.22 0.22 0
0.6 0.4 0.1 0
0.7 0.65 0.03 0
0.8 1 0 0 /
SOLUTION
PRESSURE
{cells}*3000 /
SWAT
{cells}*0.2 /
SUMMARY
FOPT
FWIT
/
SCHEDULE
"""

INJECTORS = {"I1": (6, 6), "I2": (18, 18)}
PRODUCERS = {"P1": (1, 1), "P2": (12, 12), "P3": (24, 24), "P4": (24, 1), "P5": (1, 24)}


def sand(seed=5, spread=1.3):
    """Log-normal permeability, smoothed over some cells, md."""
    noise = numpy.random.default_rng(seed).standard_normal((GRID, GRID))
    for _ in range(2):
        noise = (noise + numpy.roll(noise, 1, 0) + numpy.roll(noise, 1, 1) + numpy.roll(noise, -1, 0) + numpy.roll(noise, -1, 1)) / 5
    return 200.0 * numpy.exp(spread * noise / noise.std())


def definitions(injectors=None, producers=None):
    injectors, producers = injectors or INJECTORS, producers or PRODUCERS
    rows = [(name, place, "WATER") for name, place in injectors.items()] + [(name, place, "OIL") for name, place in producers.items()]
    heads = "".join(f"'{name}' 'G' {i} {j} 1* '{phase}' /\n" for name, (i, j), phase in rows)
    holes = "".join(f"'{name}' {i} {j} 1 1 'OPEN' 2* 0.5 /\n" for name, (i, j), _ in rows)
    return f"WELSPECS\n{heads}/\nCOMPDAT\n{holes}/\n"


def controls(rate=300.0, injectors=None, producers=None, bhp=(), shut=(), limit=100.0, top=20000.0):
    """Every producer an equal share of the injection; those in `bhp` stand at 2500 psi, those in `shut` are shut."""
    injectors, producers = injectors or INJECTORS, producers or PRODUCERS
    share = rate * len(injectors) / len(producers)
    text = "WCONINJE\n"
    for name in injectors:
        text += f"'{name}' 'WATER' '{'SHUT' if name in shut else 'OPEN'}' 'RATE' {rate:g} 1* {top:g} /\n"
    text += "/\nWCONPROD\n"
    for name in producers:
        if name in bhp:
            text += f"'{name}' 'OPEN' 'BHP' 5* 2500 /\n"
        else:
            text += f"'{name}' '{'SHUT' if name in shut else 'OPEN'}' 'LRAT' 3* {share:.9g} 1* {limit:g} /\n"
    return text + "/\n"


def deck(schedule, extra="", method="STREAMLINE", lines=300, seed=5):
    values = "\n".join(" ".join(f"{value:.6g}" for value in row) for row in sand(seed))
    head = HEAD.format(n=GRID, cells=GRID * GRID, sand=values)
    return head + schedule + "END\n" + kvr_run.options(method=method, lines=lines, extra=extra)


def flood(extra="", steps="20*50", method="STREAMLINE", lines=300, **controls_of):
    wells = {key: controls_of[key] for key in ("injectors", "producers") if key in controls_of}
    return deck(definitions(**wells) + controls(**controls_of) + f"TSTEP\n{steps} /\n", extra, method, lines)


def numbers(start=1, alpha=1.0, down=-0.1, up=0.1, least=10, usage=100, tolerance=0.001):
    return f"WFOOPT\n{start} 0 1 {alpha} {down} {up} {least} {usage} {tolerance} /\n"
