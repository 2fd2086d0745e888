"""A small water flood whose pieces a test can replace: 5 by 5 by 1 cells, two wells."""

import re

import kvr_run

RUNSPEC = """RUNSPEC
DIMENS
5 5 1 /
OIL
WATER
FIELD
START
1 'JAN' 2000 /
WELLDIMS
2 1 /
"""

GRID = """GRID
DX
25*100 /
DY
25*100 /
DZ
25*20 /
TOPS
25*5000 /
PORO
25*0.2 /
PERMX
25*100 /
PERMY
25*100 /
PERMZ
25*10 /
"""

PROPS = """PROPS
PVDO
300  1.05 2.85
800  1.02 2.99
8000 1.01 3
/
PVTW
3000 1.01 0.000003 0.3 0 /
DENSITY
53 64 0.0624 /
ROCK
3000 0.000001 /
SWOF
0.2 0.00 1.00 0
0.5 0.25 0.25 0
0.8 1.00 0.00 0
/
"""

SOLUTION = """SOLUTION
PRESSURE
25*3000 /
SWAT
25*0.2 /
"""

# An injector of water in the first cell, a producer where its I and J say.
WELLS = """WELSPECS
'INJ' 'G' 1 1 5010 'WATER' /
'PROD' 'G' 5 5 5010 'OIL' /
/
COMPDAT
'INJ' 1 1 1 1 'OPEN' 2* 0.5 /
'PROD' 5 5 1 1 'OPEN' 2* 0.5 /
/
WCONPROD
'PROD' 'OPEN' 'BHP' 5* 2000 /
/
WCONINJE
'INJ' 'WATER' 'OPEN' 'RATE' 50 1* 9000 /
/
"""

SCHEDULE = f"""SCHEDULE
{WELLS}TSTEP
2*30 /
END
"""


def deck(runspec=RUNSPEC, grid=GRID, props=PROPS, solution=SOLUTION, schedule=SCHEDULE, options=None):
    section = kvr_run.options(lines=20, solver="DGESV") if options is None else options
    return runspec + grid + props + solution + schedule + section


def without_keyword(section, keyword):
    """A section less one keyword and its data, up to the slash that ends them."""
    return re.sub(rf"^{keyword}\n[^/]*/\n", "", section, flags=re.M)


GAS_PROPS = PROPS.replace("PVDO\n300  1.05 2.85\n800  1.02 2.99\n8000 1.01 3\n/\n", """PVTO
0.1 300  1.10 1.2 /
0.5 1500 1.30 0.8 /
0.9 2700 1.50 0.6
    6000 1.45 0.7 /
/
PVDG
300  9.5 0.012
1500 1.8 0.016
2700 1.0 0.020
6000 0.6 0.030
/
""") + """SGOF
0    0    1    0
0.05 0    0.9  0
0.4  0.4  0.1  0
0.8  0.9  0    0
/
"""


def gas_deck(options):
    """Oil at its bubble point with some free gas, from which a well draws."""
    runspec = RUNSPEC.replace("WATER\n", "WATER\nGAS\nDISGAS\n")
    solution = SOLUTION.replace("25*3000", "25*2600") + "SGAS\n25*0.1 /\nRS\n25*0.86 /\n"
    schedule = SCHEDULE.replace("BHP' 5* 2000", "BHP' 5* 1500").replace("2*30", "4*30")
    return deck(runspec=runspec, props=GAS_PROPS, solution=solution, schedule=schedule, options=options)
