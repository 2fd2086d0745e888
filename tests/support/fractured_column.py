"""Gravity drainage of a closed column of two continua: its deck, and its equations solved without the program.

Gas stands in the fractures below oil and goes up; where it passes it drains the oil out of the matrix. Water does not
move, nothing is compressible and nothing flows in or out, so the total flow is 0 everywhere: between fracture cells

    q_g = T lg lo/(lg + lo) d,   d = (rho_o - rho_g) dz/144 up,   lg of the lower cell, lo of the upper one

and between a fracture cell and its matrix the same with Vk in the place of T and
d = H (rho_o - rho_g) (X_f - X_m)/144 into the matrix, X = Sg/(1 - Swc - Sor) the share of the height that gas fills,
where gas comes out of the fractures and oil out of the matrix, and mirrored (Sonier, Souillard and Blaskovich 1988)."""

import numpy

LAYERS, THICKNESS, AREA = 8, 20.0, 100.0 * 100.0
MATRIX_POROSITY, FRACTURE_POROSITY = 0.1, 0.05
MATRIX_PERMEABILITY, FRACTURE_PERMEABILITY = 5.0, 30.0
HEIGHT, SIGMA = 12.0, 0.04
CONNATE, RESIDUAL = 0.2, 0.2
GAS_AXIS, KRG, KROG = [0.0, 0.2, 0.4, 0.6], [0.0, 0.06, 0.3, 0.7], [0.9, 0.4, 0.1, 0.0]
OIL_DENSITY, GAS_DENSITY = 50.0, 12.0  # lb/ft3 in the reservoir; both formation volume factors are 1 rb/stb, rb/Mscf
OIL_VISCOSITY, GAS_VISCOSITY = 2.0, 0.5
START_GAS = [0.0] * 5 + [0.55] * 3  # of the fractures, from the top

DARCY = 0.00112771  # bbl cp/(day psi md ft)
CUBIC_FEET = 5.614583  # of a barrel


def shares(values):
    return " ".join(f"{value:g}" for value in values)


def deck(steps, pressure=3000.0):
    n = LAYERS
    gas = "\n".join(f"{s} {g} {o} 0" for s, g, o in zip(GAS_AXIS, KRG, KROG))
    rock = "".join(f"PERM{axis}\n{n}*{MATRIX_PERMEABILITY} {n}*{FRACTURE_PERMEABILITY} /\n" for axis in "XYZ")
    return (f"RUNSPEC\nDIMENS\n1 1 {2 * n} /\nDUALPORO\nNODPPM\nGRAVDR\nOIL\nWATER\nGAS\nFIELD\nSTART\n1 'JAN' 2000 /\n"
            f"GRID\nDPGRID\nDX\n{n}*100 /\nDY\n{n}*100 /\nDZ\n{n}*{THICKNESS} /\nTOPS\n{shares(5000 + THICKNESS * k for k in range(n))} /\n"
            f"PORO\n{n}*{MATRIX_POROSITY} {n}*{FRACTURE_POROSITY} /\n{rock}SIGMA\n{SIGMA} /\nDZMTRX\n{HEIGHT} /\n"
            f"PROPS\nPVDO\n1000 1.0 {OIL_VISCOSITY}\n8000 1.0 {OIL_VISCOSITY}\n/\nPVDG\n1000 1.0 {GAS_VISCOSITY}\n8000 1.0 {GAS_VISCOSITY}\n/\n"
            f"PVTW\n3000 1.0 0 0.5 0 /\nDENSITY\n{OIL_DENSITY} 64 {GAS_DENSITY / (1000.0 / CUBIC_FEET)} /\nROCK\n3000 1e-8 /\n"
            f"SWOF\n{CONNATE} 0 0.9 0\n0.5 0.1 0.3 0\n{1 - RESIDUAL} 0.4 0 0\n/\nSGOF\n{gas}\n/\n"
            f"SOLUTION\nPRESSURE\n{2 * n}*{pressure} /\nSWAT\n{2 * n}*{CONNATE} /\nSGAS\n{n}*0 {shares(START_GAS)} /\n"
            f"SCHEDULE\nTSTEP\n{steps} /\nEND\n")


def counter(conductance, drive, giver, taker):
    """Gas from `giver` to `taker` against oil, bbl/day."""
    lg = numpy.interp(giver, GAS_AXIS, KRG) / GAS_VISCOSITY
    lo = numpy.interp(taker, GAS_AXIS, KROG) / OIL_VISCOSITY
    return conductance * drive * lg * lo / (lg + lo) if lg * lo > 0.0 else 0.0


def rates(fracture, matrix):
    """Gas into the fracture cells and into their matrix, bbl/day, by the gas saturations from the top."""
    weight = (OIL_DENSITY - GAS_DENSITY) / 144.0
    vertical = DARCY * FRACTURE_PERMEABILITY * AREA / THICKNESS
    exchange = SIGMA * DARCY * MATRIX_PERMEABILITY * AREA * THICKNESS
    into, taken = numpy.zeros(LAYERS), numpy.zeros(LAYERS)
    for k in range(LAYERS - 1):
        up = counter(vertical, weight * THICKNESS, fracture[k + 1], fracture[k])
        into[k] += up
        into[k + 1] -= up
    filled = 1.0 - CONNATE - RESIDUAL
    for k in range(LAYERS):
        drive = HEIGHT * weight * (min(1.0, fracture[k] / filled) - min(1.0, matrix[k] / filled))
        if drive > 0.0:
            taken[k] = counter(exchange, drive, fracture[k], matrix[k])
        else:
            taken[k] = -counter(exchange, -drive, matrix[k], fracture[k])
    return into - taken, taken


def gas_behind(days, step=0.02):
    """Gas saturations of fractures and matrix behind so many days: the classical method of the fourth order."""
    pores = AREA * THICKNESS / CUBIC_FEET * numpy.array([[FRACTURE_POROSITY], [MATRIX_POROSITY]])
    state = numpy.array([START_GAS, [0.0] * LAYERS])
    slope = lambda at: numpy.array(rates(*at)) / pores  # noqa: E731
    for _ in range(round(days / step)):
        first = slope(state)
        second = slope(state + 0.5 * step * first)
        third = slope(state + 0.5 * step * second)
        state = state + step / 6.0 * (first + 2.0 * second + 2.0 * third + slope(state + step * third))
    return state
