"""Floods of a fractured layer as decks of dual porosity, and the decks of one continuum that they must become."""

# Matrix and fractures with one table: a capillary pressure that falls all the way, so that both end with the same
# saturation where fluid passes freely between them.
PROPS = """PROPS
PVDO
300  1.05 1.9
3000 1.03 2.0
8000 1.00 2.1
/
PVTW
3000 1.01 0.000003 0.5 0 /
DENSITY
53 64 0.0624 /
ROCK
3000 0.000004 /
"""
TABLE = """SWOF
0.2 0.00 0.90 8
0.3 0.02 0.62 5
0.5 0.12 0.22 2
0.7 0.30 0.03 0.5
0.8 0.45 0.00 0
/
"""

WELLS = """SCHEDULE
WELSPECS
'INJ' 'G' 1 1 5010 'WATER' /
'PROD' 'G' {nx} {ny} 5010 'OIL' /
/
COMPDAT
'INJ' 1 1 {k} {k} 'OPEN' 2* 0.5 /
'PROD' {nx} {ny} {k} {k} 'OPEN' 2* 0.5 /
/
WCONPROD
'PROD' 'OPEN' 'BHP' 5* 2000 /
/
WCONINJE
'INJ' 'WATER' 'OPEN' 'RATE' {rate} 1* 9000 /
/
TSTEP
{steps} /
END
"""


def per_half(count, matrix, fracture):
    return f"{count}*{matrix} {count}*{fracture} /\n"


def dual(nx, ny, rate, steps, sigma, matrix=(0.2, 1.0), fracture=(0.02, 300.0), runspec="", grid="", tables=TABLE,
         k=2):
    """One layer of pairs, porosity and permeability by continuum (md, of the fractures that of the bulk)."""
    n = nx * ny
    return (f"RUNSPEC\nDIMENS\n{nx} {ny} 2 /\nDUALPORO\nNODPPM\n{runspec}OIL\nWATER\nFIELD\nSTART\n1 'JAN' 2000 /\n"
            "WELLDIMS\n2 1 /\n"
            f"GRID\nDPGRID\nDX\n{n}*100 /\nDY\n{n}*100 /\nDZ\n{n}*20 /\nTOPS\n{n}*5000 /\n"
            f"PORO\n{per_half(n, matrix[0], fracture[0])}PERMX\n{per_half(n, matrix[1], fracture[1])}"
            f"PERMY\n{per_half(n, matrix[1], fracture[1])}PERMZ\n{per_half(n, matrix[1], fracture[1])}"
            f"SIGMA\n{sigma} /\n{grid}"
            f"{PROPS}{tables}SOLUTION\nPRESSURE\n{2 * n}*3000 /\nSWAT\n{2 * n}*0.2 /\n"
            + WELLS.format(nx=nx, ny=ny, k=k, rate=rate, steps=steps))


def single(nx, ny, rate, steps, porosity, permeability):
    """The same layer of one continuum."""
    n = nx * ny
    rock = "".join(f"PERM{axis}\n{n}*{permeability} /\n" for axis in "XYZ")
    return (f"RUNSPEC\nDIMENS\n{nx} {ny} 1 /\nOIL\nWATER\nFIELD\nSTART\n1 'JAN' 2000 /\nWELLDIMS\n2 1 /\n"
            f"GRID\nDX\n{n}*100 /\nDY\n{n}*100 /\nDZ\n{n}*20 /\nTOPS\n{n}*5000 /\nPORO\n{n}*{porosity} /\n{rock}"
            f"{PROPS}{TABLE}SOLUTION\nPRESSURE\n{n}*3000 /\nSWAT\n{n}*0.2 /\n"
            + WELLS.format(nx=nx, ny=ny, k=1, rate=rate, steps=steps))
