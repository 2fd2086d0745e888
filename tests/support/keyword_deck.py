"""A deck of 10 by 10 by 2 cells that this program and an independent simulator both read, in pieces that a test replaces:
water flood of dead oil, or with `gas=True` gas injection into live oil."""

import dataclasses

CELLS = "10 10 2"
COUNT = 200

GEOMETRY = f"""DX
{COUNT}*100 /
DY
{COUNT}*100 /
DZ
{COUNT}*20 /
TOPS
100*8000 /
PORO
{COUNT}*0.2 /
PERMX
{COUNT}*100 /
PERMY
{COUNT}*100 /
PERMZ
{COUNT}*10 /
"""

DEAD_OIL = """PVDO
300  1.25 1.00
2000 1.22 1.10
4000 1.19 1.20
8000 1.15 1.40
/
"""

PVTW = "PVTW\n4000 1.01 3.0E-6 0.5 0 /\n"
DENSITY = "DENSITY\n50 64 0.06 /\n"
ROCK = "ROCK\n4000 4.0E-6 /\n"

SWOF = """SWOF
0.2 0.00 1.00 0
0.3 0.03 0.70 0
0.5 0.15 0.25 0
0.7 0.40 0.02 0
0.8 0.60 0.00 0
1.0 1.00 0.00 0
/
"""

# The same curves phase by phase.
BY_PHASE = """SWFN
0.2 0.00 0
0.3 0.03 0
0.5 0.15 0
0.7 0.40 0
0.8 0.60 0
1.0 1.00 0
/
SOF2
0.0 0.00
0.2 0.00
0.3 0.02
0.5 0.25
0.7 0.70
0.8 1.00
/
"""

LIVE_OIL = """PVTO
0.10  500 1.10 1.20 /
0.40 1500 1.20 0.90 /
0.80 3000 1.35 0.65 /
1.20 4500 1.50 0.50
     5500 1.48 0.52
     9000 1.42 0.60 /
/
"""
DRY_GAS = """PVDG
500  6.00 0.012
1500 2.00 0.014
3000 1.00 0.018
4500 0.70 0.023
9000 0.40 0.035
/
"""
SGOF = """SGOF
0.00 0.00 1.00 0
0.05 0.00 0.80 0
0.20 0.05 0.40 0
0.40 0.20 0.10 0
0.60 0.50 0.00 0
0.80 1.00 0.00 0
/
"""

EQUIL = "EQUIL\n8000 4000 9000 0 7000 0 /\n"

WELLS = """WELSPECS
'INJ'  'G' 1  1  8000 'WATER' /
'PROD' 'G' 10 10 8000 'OIL' /
/
COMPDAT
'INJ'  1  1  1 2 'OPEN' 2* 0.5 /
'PROD' 10 10 1 2 'OPEN' 2* 0.5 /
/
WCONINJE
'INJ' 'WATER' 'OPEN' 'RATE' 1200 1* 9000 /
/
WCONPROD
'PROD' 'OPEN' 'BHP' 5* 3000 /
/
"""
GAS_WELLS = WELLS.replace("'WATER' 'OPEN' 'RATE' 1200", "'GAS' 'OPEN' 'RATE' 1500").replace("8000 'WATER'", "8000 'GAS'")

STEPS = "TSTEP\n12*60 /\n"


@dataclasses.dataclass
class KeywordDeck:
    runspec: str = ""
    grid: str = GEOMETRY
    edit: str = ""
    oil: str = DEAD_OIL
    water: str = PVTW
    density: str = DENSITY
    rock: str = ROCK
    relperm: str = SWOF
    regions: str = ""
    solution: str = EQUIL
    summary: str = ""
    schedule: str = WELLS + STEPS
    gas: bool = False
    tables: str = "1 1 40 40"

    def text(self, options=""):
        phases = "OIL\nWATER\nGAS\nDISGAS\n" if self.gas else "OIL\nWATER\n"
        edit = f"EDIT\n{self.edit}" if self.edit else ""
        regions = f"REGIONS\n{self.regions}" if self.regions else ""
        return (f"RUNSPEC\nTITLE\nkeywords\nDIMENS\n{CELLS} /\n{phases}FIELD\nSTART\n1 'JAN' 2000 /\nTABDIMS\n{self.tables} /\n"
                f"WELLDIMS\n10 10 6 10 /\n{self.runspec}"
                f"GRID\n{self.grid}{edit}PROPS\n{self.oil}{self.water}{self.density}{self.rock}{self.relperm}{regions}"
                f"SOLUTION\n{self.solution}SUMMARY\nFOPT\nFWPT\nFGPT\nFPR\nFOPR\nFWPR\nFGPR\nWBHP\n/\n{self.summary}"
                f"SCHEDULE\n{self.schedule}END\n{options}")


def live_oil_deck(**pieces):
    given = {"gas": True, "oil": LIVE_OIL + DRY_GAS, "relperm": SWOF + SGOF, "solution": EQUIL.replace("7000 0 /", "7000 0 1 /") + "RSVD\n7000 0.6\n9000 0.6\n/\n",
             "schedule": GAS_WELLS + STEPS}
    given.update(pieces)
    return KeywordDeck(**given)


def by_cell(value):
    """Values of an array in deck order, `value(i, j, k)` from 1."""
    return " ".join(str(value(i, j, k)) for k in (1, 2) for j in range(1, 11) for i in range(1, 11)) + " /\n"
