"""Decks of mixtures: a box of cells with wells of streams, in pieces that a test replaces."""

import dataclasses

# name, critical temperature R, pressure psia, volume ft3/lb-mole, molecular weight, acentric factor
C1 = ("C1", 343.0, 667.8, 1.59, 16.043, 0.0104)
C4 = ("C4", 765.4, 550.7, 4.08, 58.12, 0.201)
C10 = ("C10", 1111.8, 304.0, 9.66, 142.285, 0.4885)

SWOF = "SWOF\n0.0 0 1 0\n1.0 1 0 0 /\n"
SWOF_CONNATE = "SWOF\n" + "".join(
    f"{0.2 + 0.03 * n:.2f} {(n / 20) ** 2:.6f} {(1 - n / 20) ** 2:.6f} 0\n" for n in range(21)) + "/\n"
SGOF = "SGOF\n" + "".join(f"{n / 20:.2f} {(n / 20) ** 2:.6f} {(1 - n / 20) ** 2:.6f} 0\n" for n in range(21)) + "/\n"
SGOF_CONNATE = "SGOF\n" + "".join(
    f"{0.04 * n:.2f} {(n / 20) ** 2:.6f} {(1 - n / 20) ** 2:.6f} 0\n" for n in range(21)) + "/\n"


@dataclasses.dataclass
class Mixture:
    """A deck; every text can be replaced."""
    cells: tuple = (20, 1, 1)
    sizes: tuple = (50.0, 10.0, 100.0)  # ft
    top: float = 5000.0
    permeability: float = 1000.0
    rock: str = ""                      # further keywords of GRID
    components: tuple = (C1, C4, C10)
    binary: tuple = None                # coefficients of the pairs; none: all 0
    temperature: float = 160.0          # F
    feed: tuple = (0.2, 0.3, 0.5)
    props: str = SWOF + SGOF
    composition: str = None             # in place of ZI
    pressure: float = 1500.0
    solution: str = None
    streams: tuple = (("LEAN", (0.9, 0.1, 0.0)),)
    wells: str = None
    controls: str = None
    steps: str = "20*5"
    method: str = "IMPES"
    options: str = ""

    def column(self, values):
        return " ".join(str(value) for value in values)

    def text(self):
        count = self.cells[0] * self.cells[1] * self.cells[2]
        layer = self.cells[0] * self.cells[1]
        names, tc, pc, vc, mw, acf = zip(*self.components)
        pairs = len(names) * (len(names) - 1) // 2
        binary = self.column(self.binary or [0] * pairs)
        tops = " ".join(f"{layer}*{self.top + k * self.sizes[2]}" for k in range(self.cells[2]))
        composition = self.composition if self.composition is not None else f"ZI\n{self.column(self.feed)} /\n"
        solution = self.solution or f"PRESSURE\n{count}*{self.pressure} /\nSWAT\n{count}*0 /\nSGAS\n{count}*0 /\n"
        streams = "".join(f"{name} {self.column(z)} /\n" for name, z in self.streams)
        wells = self.wells or f"""WELSPECS
INJ G 1 1 1* GAS /
PRD G {self.cells[0]} {self.cells[1]} 1* OIL /
/
COMPDAT
INJ 1 1 1 {self.cells[2]} OPEN 1* 1000 0.5 /
PRD {self.cells[0]} {self.cells[1]} 1 {self.cells[2]} OPEN 1* 1000 0.5 /
/
"""
        controls = self.controls if self.controls is not None else f"""WCONINJE
INJ GAS OPEN RATE 50 1* 5000 /
/
WINJGAS
INJ STREAM LEAN /
/
WCONPROD
PRD OPEN BHP 5* {self.pressure} /
/
"""
        return f"""RUNSPEC
DIMENS
{self.column(self.cells)} /
OIL
WATER
GAS
FIELD
COMPS
{len(names)} /
START
1 'JAN' 2020 /
WELLDIMS
10 {max(self.cells)} 1 10 /
GRID
DX
{count}*{self.sizes[0]} /
DY
{count}*{self.sizes[1]} /
DZ
{count}*{self.sizes[2]} /
TOPS
{tops} /
PERMX
{count}*{self.permeability} /
PERMY
{count}*{self.permeability} /
PERMZ
{count}*{self.permeability} /
PORO
{count}*0.2 /
{self.rock}PROPS
CNAMES
{self.column(names)} /
TCRIT
{self.column(tc)} /
PCRIT
{self.column(pc)} /
VCRIT
{self.column(vc)} /
MW
{self.column(mw)} /
ACF
{self.column(acf)} /
BIC
{binary} /
RTEMP
{self.temperature} /
{composition}{self.props}PVTW
1500 1 3E-6 1 0 /
ROCK
1500 3E-6 /
DENSITY
50 62.4 0.05 /
SOLUTION
{solution}SCHEDULE
{"WELLSTRE" + chr(10) + streams + "/" if streams else ""}
{wells}{controls}TSTEP
{self.steps} /
END
TUNEKVR
FDMETHOD
{self.method} /
{self.options}END
"""


def replaced(**pieces):
    return Mixture(**pieces).text()
