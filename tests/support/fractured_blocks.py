"""Matrix blocks one above the other with fractures above, below and beside them, drained by gas from the top: as two
continua, and cell by cell.

Half a block of the width W and the height H, with half the fracture beside it and those above and below; at the bottom
fractures alone, from which oil is taken. The shape factor has the faces that the fractures cut, pi^2 (1/W^2 + 1/H^2)
(Lim and Aziz 1995). Fluids and matrix curves are those of fractured_row."""

import math

import numpy

import fractured_row

LENGTH = 200.0  # ft, along the blocks
BLOCKS = 4
HALF_WIDTH, HEIGHT = 5.0, 10.0  # ft, of the block
APERTURE = 0.1  # ft, of the half fracture
POROSITY, PERMEABILITY = 0.29, 1.0
FRACTURE_PERMEABILITY = 2000.0  # md, of the fracture alone
PRESSURE, RS = 5014.7, 1.3066  # psia, Mscf/stb: at the bubble point

GAS_HEAD = ("0.0", "0.1", "0.2", "0.3", "0.4", "0.5", "0.55")
GAS_CURVES = {"0.0": (0.0, 1.0), "0.1": (0.015, 0.70), "0.2": (0.05, 0.45), "0.3": (0.103, 0.25), "0.4": (0.19, 0.11),
              "0.5": (0.31, 0.028), "0.55": (0.42, 0.0)}
PUBLISHED_PCOG = {"0.0": 0.075, "0.1": 0.085, "0.2": 0.095, "0.3": 0.115, "0.4": 0.145, "0.5": 0.255, "0.55": 0.386}


def gas_tables(matrix, fracture):
    """Capillary pressures (psi) by gas saturation of the matrix, and one for all of the fractures."""
    rows = "".join(f"{s} {GAS_CURVES[s][0]} {GAS_CURVES[s][1]} {matrix.get(s, 0.0)}\n" for s in GAS_HEAD)
    return f"SGOF\n{rows}/\n0.0 0.0 1.0 {fracture}\n1.0 1.0 0.0 {fracture}\n/\n"


def equilibrium_gas_tables(matrix, fracture, difference=29.0):
    """The same with a capillary pressure of the matrix at which the mean of a block in equilibrium is that of its
    height. `difference` of the densities, lb/ft3. With gas in the fractures down to the share X of the height, the block
    holds at y above it what its own curve Pcog has at the pressure of the fractures + difference y/144; with the mean S of
    that, and the share S/(1 - Swc - Sor) of the height, the exchange is at rest at
        fracture + H difference/144 (X - S/(1 - Swc - Sor))"""
    saturation, pcog = (numpy.array(values) for values in zip(*((float(s), matrix[s]) for s in GAS_HEAD)))
    gradient = difference / 144.0
    height = numpy.linspace(0.0, HEIGHT, 4001)
    held = numpy.interp(fracture + gradient * height, pcog, saturation)
    mean = numpy.concatenate([[0.0], numpy.cumsum(0.5 * (held[1:] + held[:-1]))]) / (height.size - 1)
    at_rest = fracture + gradient * (height - HEIGHT * mean / saturation[-1])
    rows = ""
    for s in (0.0, 0.002, 0.005, 0.01, 0.02, 0.05, 0.1, 0.2, 0.3, 0.4, 0.5, mean[-1], 0.55):
        krg, kro = (numpy.interp(s, saturation, [GAS_CURVES[head][k] for head in GAS_HEAD]) for k in (0, 1))
        most = s > mean[-1]  # more than gas all around can push in
        rows += f"{s:.6g} {krg:.6g} {kro:.6g} {pcog[-1] if most else numpy.interp(s, mean, at_rest):.6g}\n"
    return f"SGOF\n{rows}/\n0.0 0.0 1.0 {fracture}\n1.0 1.0 0.0 {fracture}\n/\n"


def props(matrix_pcog, fracture_pcog):
    return ("PROPS\n" + fractured_row.LIVE_FLUIDS + fractured_row.REST + fractured_row.WATER_TABLES +
            gas_tables(matrix_pcog, fracture_pcog))


def head(nz, ny, words):
    return (f"RUNSPEC\nDIMENS\n1 {ny} {nz} /\n{words}OIL\nWATER\nGAS\nDISGAS\nFIELD\nSTART\n1 'JAN' 2000 /\n"
            "TABDIMS\n2 1 40 40 /\nWELLDIMS\n2 1 /\n")


def wells(top, bottom, gas_rate, oil_rate, limit, steps):
    """Gas into the row of fractures at the top, oil from the one at the bottom."""
    return (f"SCHEDULE\nWELSPECS\n'INJ' 'G' 1 1 7000 'GAS' /\n'PROD' 'G' 1 1 7000 'OIL' /\n/\nCOMPDAT\n"
            f"'INJ' 1 1 {top} {top} 'OPEN' 1* 50 0.5 /\n'PROD' 1 1 {bottom} {bottom} 'OPEN' 1* 50 0.5 /\n/\n"
            f"WCONPROD\n'PROD' 'OPEN' 'ORAT' {oil_rate} 4* {limit} /\n/\n"
            f"WCONINJE\n'INJ' 'GAS' 'OPEN' 'RATE' {gas_rate} 1* 9000 /\n/\nTSTEP\n{steps} /\nEND\n")


def solution(cells, water):
    return f"SOLUTION\nPRESSURE\n{cells}*{PRESSURE} /\nSWAT\n{water} /\nSGAS\n{cells}*0 /\nRS\n{cells}*{RS} /\n"


def continua(steps, gas_rate, oil_rate, limit, matrix_pcog=None, fracture_pcog=0.0):
    size = BLOCKS + 1
    width, height = HALF_WIDTH + APERTURE, HEIGHT + 2.0 * APERTURE
    share = 1.0 - HALF_WIDTH * HEIGHT / (width * height)
    sigma = math.pi**2 * (1.0 / (2.0 * HALF_WIDTH) ** 2 + 1.0 / HEIGHT**2) * (1.0 - share)
    along, down = share, APERTURE / width  # of the section that fractures have
    text = head(2 * (BLOCKS + 1), 1, "DUALPORO\nNODPPM\nGRAVDR\n")
    tops = " ".join(f"{7000 + k * height}" for k in range(BLOCKS + 1))
    text += (f"GRID\nDPGRID\nDX\n{size}*{LENGTH} /\nDY\n{size}*{width} /\nDZ\n{size}*{height} /\nTOPS\n{tops} /\n"
             f"PORO\n{size}*{POROSITY * (1.0 - share)} {size}*{share} /\n")
    for axis in "XYZ":
        text += f"PERM{axis}\n{size}*{PERMEABILITY} {size}*{FRACTURE_PERMEABILITY * (down if axis == 'Z' else along)} /\n"
    text += f"ACTNUM\n{BLOCKS}*1 0 {size}*1 /\nSIGMA\n{sigma} /\nDZMTRX\n{HEIGHT} /\n"
    text += props(matrix_pcog or {}, fracture_pcog) + f"REGIONS\nSATNUM\n{size}*1 {size}*2 /\n"
    return text + solution(2 * size, f"{size}*0.2 {size}*0.0") + wells(BLOCKS + 2, 2 * (BLOCKS + 1), gas_rate, oil_rate, limit, steps)


def cell_by_cell(steps, gas_rate, oil_rate, limit, matrix_pcog=None, fracture_pcog=0.0, rows=5, layers=6):
    growth = 1.6
    first = HALF_WIDTH * (growth - 1.0) / (growth**rows - 1.0)
    wide = [APERTURE] + [first * growth**k for k in range(rows)]
    high = ([APERTURE] + [HEIGHT / layers] * layers + [APERTURE]) * (BLOCKS + 1)
    text = head(len(high), len(wide), "")
    text += (f"GRID\nDXV\n{LENGTH} /\nDYV\n{' '.join(f'{size:.8g}' for size in wide)} /\n"
             f"DZ\n{' '.join(f'{len(wide)}*{size:.8g}' for size in high)} /\nTOPS\n{len(wide)}*7000 /\n")
    cells = [(j == 0 or high[k] == APERTURE) for k in range(len(high)) for j in range(len(wide))]
    each = lambda fracture, matrix: " ".join(f"{fracture if cut else matrix}" for cut in cells)  # noqa: E731
    sump = len(high) // (BLOCKS + 1) * BLOCKS
    active = " ".join(f"{1 if k < sump or cells[k * len(wide) + j] else 0}" for k in range(len(high)) for j in range(len(wide)))
    text += f"ACTNUM\n{active} /\n"
    text += f"PORO\n{each(1, POROSITY)} /\nPERMX\n{each(FRACTURE_PERMEABILITY, 1e-9)} /\n"
    for axis in "YZ":
        text += f"PERM{axis}\n{each(FRACTURE_PERMEABILITY, PERMEABILITY)} /\n"
    text += props(matrix_pcog or {}, fracture_pcog) + f"REGIONS\nSATNUM\n{each(2, 1)} /\n"
    return text + solution(len(cells), each(0.0, 0.2)) + wells(1, len(high), gas_rate, oil_rate, limit, steps)
