"""Oil that a matrix gives to its fractures by solution gas, as one tank: the equations of two continua without a grid,
without pores of fractures and without this program.

At the rate q of oil the difference of pressures is d = q Bo/(Vk lo), lo the mobility of oil; gas comes with d and what
capillarity adds to it, Pcog of the mean saturation less that of the fractures. Of a stb of oil the matrix so loses
Rs + Vk lg max(0, d + Pcog - Pcog of the fractures)/(q Bg) of gas. Pressure is the one at which all fits its pores."""

import math

import numpy

import fractured_blocks
import fractured_row

BUBBLE_POINT = 5559.7  # psia, of the fluids
CONNATE_WATER = 0.2
CUBIC_FEET = 5.614583  # of a barrel
COMPRESSIBILITY = 3.5e-6  # 1/psi, of rock and water
DARCY = 0.00112771  # rb cp/(day md psi ft)
OIL_STEP = 1.0  # stb; a tenth of it changes 0.2 %


def columns(word):
    """Columns of a table of the fluids at its saturated rows, pressure first: Rs (Mscf/stb), Bo, viscosity of the oil, Bg
    (rb/Mscf), viscosity of the gas."""
    rows = fractured_row.LIVE_FLUIDS.split(word + "\n")[1].split("\n/\n")[0].splitlines()
    numbers = [[float(value) for value in row.rstrip("/ ").split()] for row in rows if row[0] != " "]
    table = numpy.array([row[:4] for row in numbers]).T
    if word == "PVDG":
        return table[0], table[1], table[2]
    return table[1], table[0], table[2], table[3]


def bulk_and_pores():
    """Of the matrix of the row of slabs, ft3 and rb."""
    bulk = fractured_row.CELLS * fractured_row.LENGTH * fractured_row.HALF_SLAB * fractured_row.HEIGHT
    return bulk, bulk * fractured_row.MATRIX_POROSITY * (1.0 - fractured_row.APERTURE / fractured_row.HALF_SLAB) / CUBIC_FEET


def oil_behind_bubble_point(rate, limit, matrix_pcog, fracture_pcog):
    """stb from the bubble point until the pressure of the fractures is down to the limit."""
    pressure, rs, bo, oil_viscosity = columns("PVTO")
    gas_pressure, bg, gas_viscosity = columns("PVDG")
    curves = [(float(s), *fractured_blocks.GAS_CURVES[s], matrix_pcog.get(s, 0.0)) for s in fractured_blocks.GAS_HEAD]
    saturation, krg, kro, pcog = numpy.array(curves).T
    bulk, pores = bulk_and_pores()
    conductance = fractured_row.SHAPE_FACTOR * DARCY * fractured_row.MATRIX_PERMEABILITY * bulk
    water = CONNATE_WATER * pores
    oil = (1.0 - CONNATE_WATER) * pores / numpy.interp(BUBBLE_POINT, pressure, bo)
    gas = oil * numpy.interp(BUBBLE_POINT, pressure, rs)

    def free_gas(p):
        return max(0.0, gas - oil * numpy.interp(p, pressure, rs)) * numpy.interp(p, gas_pressure, bg)

    def overfull(p):
        """Volume beyond the pores, which grow with pressure."""
        swell = math.exp(COMPRESSIBILITY * (p - BUBBLE_POINT))
        return water / swell + oil * numpy.interp(p, pressure, bo) + free_gas(p) - pores * swell

    given = 0.0
    while True:
        low, high = pressure[0], 6000.0
        for _ in range(40):
            middle = 0.5 * (low + high)
            low, high = (middle, high) if overfull(middle) > 0.0 else (low, middle)
        s = free_gas(low) / (pores * math.exp(COMPRESSIBILITY * (low - BUBBLE_POINT)))
        oil_mobility = numpy.interp(s, saturation, kro) / numpy.interp(low, pressure, oil_viscosity)
        gas_mobility = numpy.interp(s, saturation, krg) / numpy.interp(low, gas_pressure, gas_viscosity)
        drawdown = rate * numpy.interp(low, pressure, bo) / (conductance * oil_mobility)
        if low - drawdown <= limit:
            return given
        pull = max(0.0, drawdown + numpy.interp(s, saturation, pcog) - fracture_pcog)
        ratio = numpy.interp(low, pressure, rs) + conductance * gas_mobility * pull / (rate * numpy.interp(low, gas_pressure, bg))
        oil -= OIL_STEP
        gas -= OIL_STEP * ratio
        given += OIL_STEP
