"""A row of slabs between parallel fractures along the flow: as two continua, and cell by cell.

One fracture has half a slab on each side; by symmetry half a slab and half the fracture are enough. The shape factor of
slabs of the thickness L in the late time of diffusion is pi^2/L^2 (Lim and Aziz 1995). Matrix curves and rock are those
of the published comparative problem of dual porosity (Firoozabadi and Thomas 1990), of which this is one layer."""

import math

CELLS = 20
LENGTH, HEIGHT = 50.0, 50.0  # ft, of a cell along the row, and of the layer
HALF_SLAB = 5.0  # ft
APERTURE = 0.05  # ft, of the half fracture
MATRIX_POROSITY, MATRIX_PERMEABILITY = 0.29, 1.0
FRACTURE_PERMEABILITY = 2000.0  # md, of the fracture alone
SHAPE_FACTOR = math.pi**2 / (2.0 * HALF_SLAB) ** 2

WATER_FLUIDS = """PVDO
1000 1.05 0.6
6000 1.02 0.65
/
"""
LIVE_FLUIDS = """PVTO
0.367 1688.7 1.3001 0.529 /
0.447 2045.7 1.3359 0.487 /
0.564 2544.7 1.3891 0.436 /
0.679 3005.7 1.4425 0.397 /
0.832 3567.7 1.5141 0.351 /
1.000 4124.7 1.5938 0.310 /
1.143 4558.7 1.6630 0.278 /
1.285 4949.7 1.7315 0.248 /
1.413 5269.7 1.7953 0.229 /
1.530 5559.7 1.8540 0.210
      6559.7 1.8380 0.220 /
2.259 7014.7 2.1978 0.109
      8014.7 2.1770 0.115 /
/
PVDG
1688.7 1.98 0.0162
2045.7 1.62 0.0171
2544.7 1.30 0.0184
3005.7 1.11 0.0197
3567.7 0.959 0.0213
4124.7 0.855 0.0230
4558.7 0.795 0.0244
4949.7 0.751 0.0255
5269.7 0.720 0.0265
5559.7 0.696 0.0274
7014.7 0.600 0.0330
/
"""
REST = """PVTW
3000 1.0 3.5e-6 0.35 0 /
DENSITY
51 65 0.058 /
ROCK
3000 3.5e-6 /
"""
WATER_TABLES = """SWOF
0.20 0.000 1.000 50
0.25 0.005 0.860 9
0.30 0.010 0.723 2
0.35 0.020 0.600 0.5
0.40 0.030 0.492 0
0.45 0.045 0.392 -0.4
0.50 0.060 0.304 -1.2
0.60 0.110 0.154 -4
0.70 0.180 0.042 -10
0.75 0.230 0.000 -40
/
0.0 0.0 1.0 0
1.0 1.0 0.0 0
/
"""
GAS_TABLES = """SGOF
0.0 0.000 1.00 0
0.1 0.015 0.70 0
0.2 0.050 0.45 0
0.3 0.103 0.25 0
0.4 0.190 0.11 0
0.5 0.310 0.028 0
0.55 0.420 0.00 0
/
0.0 0.0 1.0 0
1.0 1.0 0.0 0
/
"""


def head(nx, ny, nz, words):
    return f"RUNSPEC\nDIMENS\n{nx} {ny} {nz} /\n{words}OIL\nWATER\nFIELD\nSTART\n1 'JAN' 2000 /\nTABDIMS\n2 1 40 40 /\nWELLDIMS\n2 1 /\n"


def wells(k, control, steps):
    return ("SCHEDULE\nWELSPECS\n'INJ' 'G' 1 1 7025 'WATER' /\n'PROD' 'G' {n} 1 7025 'OIL' /\n/\nCOMPDAT\n"
            "'INJ' 1 1 {k} {k} 'OPEN' 1* 10 0.5 /\n'PROD' {n} 1 {k} {k} 'OPEN' 1* 10 0.5 /\n/\n"
            "{control}TSTEP\n{steps} /\nEND\n").format(n=CELLS, k=k, control=control, steps=steps)


def props(gas):
    if not gas:
        return "PROPS\n" + WATER_FLUIDS + REST + WATER_TABLES
    return "PROPS\n" + LIVE_FLUIDS + REST + WATER_TABLES + GAS_TABLES


def solution(counts, pressure, gas):
    """`counts`: cells of matrix and fracture, in the order of the deck."""
    cells = sum(count for count, _ in counts)
    water = " ".join(f"{count}*{value}" for count, value in counts)
    rest = f"SGAS\n{cells}*0 /\nRS\n{cells}*1.53 /\n" if gas else ""
    return f"SOLUTION\nPRESSURE\n{cells}*{pressure} /\nSWAT\n{water} /\n{rest}"


def continua(control, steps, pressure=3000.0, gas=False, shape_factor=SHAPE_FACTOR):
    n, share = CELLS, APERTURE / HALF_SLAB
    words = "DUALPORO\nNODPPM\n" + ("GAS\nDISGAS\n" if gas else "")
    matrix_porosity = MATRIX_POROSITY * (1.0 - share)
    text = head(n, 1, 2, words) + (f"GRID\nDPGRID\nDX\n{n}*{LENGTH} /\nDY\n{n}*{HALF_SLAB} /\nDZ\n{n}*{HEIGHT} /\nTOPS\n{n}*7000 /\n"
                                   f"PORO\n{n}*{matrix_porosity} {n}*{share} /\n")
    for axis in "XYZ":
        text += f"PERM{axis}\n{n}*{MATRIX_PERMEABILITY} {n}*{FRACTURE_PERMEABILITY * share} /\n"
    text += f"SIGMA\n{shape_factor} /\n" + props(gas) + f"REGIONS\nSATNUM\n{n}*1 {n}*2 /\n"
    return text + solution([(n, 0.2), (n, 0.0)], pressure, gas) + wells(2, control, steps)


def slab_rows(count):
    """Thickness of rows of cells from the fracture to the middle of the slab, each thicker than the one before."""
    growth = 1.25
    first = (HALF_SLAB - APERTURE) * (growth - 1.0) / (growth**count - 1.0)
    return [first * growth**n for n in range(count)]


def cell_by_cell(control, steps, pressure=3000.0, gas=False, rows=14):
    n, sizes = CELLS, [APERTURE] + slab_rows(rows)
    words = "GAS\nDISGAS\n" if gas else ""
    text = head(n, rows + 1, 1, words) + f"GRID\nDXV\n{n}*{LENGTH} /\nDYV\n{' '.join(f'{size:.8g}' for size in sizes)} /\n"
    cells = n * (rows + 1)
    text += f"DZ\n{cells}*{HEIGHT} /\nTOPS\n{cells}*7000 /\nPORO\n{n}*1 {n * rows}*{MATRIX_POROSITY} /\n"
    text += f"PERMX\n{n}*{FRACTURE_PERMEABILITY} {n * rows}*1e-9 /\n"
    for axis in "YZ":
        text += f"PERM{axis}\n{n}*{FRACTURE_PERMEABILITY} {n * rows}*{MATRIX_PERMEABILITY} /\n"
    text += props(gas) + f"REGIONS\nSATNUM\n{n}*2 {n * rows}*1 /\n"
    return text + solution([(n, 0.0), (n * rows, 0.2)], pressure, gas) + wells(1, control, steps)
