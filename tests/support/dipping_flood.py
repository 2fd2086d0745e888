"""A water flood of a tilted layer cake: 30 by 8 by 4 cells, 1500 ft along a dip of 10 degrees, the injector down
the dip and the producer up the dip, water 14 lb/ft3 heavier than oil."""

import math

NX, NY, NZ = 30, 8, 4
LENGTH, WIDTH, THICKNESS = 50.0, 50.0, 10.0  # ft, of a cell
DIP = 10.0  # degrees
SURFACE_FALL = LENGTH * math.tan(math.radians(DIP))


def tops():
    """Depths of the top layer; x runs up the dip."""
    return "\n".join(" ".join(f"{6000.0 + (NX - 1 - i) * SURFACE_FALL:.3f}" for i in range(NX)) for _ in range(NY))


def deck(option_section, steps="40*50", extra_runspec="", extra_props="", extra_schedule=""):
    cells = NX * NY * NZ
    layer = NX * NY
    return f"""RUNSPEC
DIMENS
{NX} {NY} {NZ} /
OIL
WATER
{extra_runspec}FIELD
START
1 'JAN' 2000 /
WELLDIMS
2 8 /
GRID
DX
{cells}*{LENGTH} /
DY
{cells}*{WIDTH} /
DZ
{cells}*{THICKNESS} /
TOPS
{tops()} /
PORO
{cells}*0.2 /
PERMX
{layer}*500 {layer}*2000 {layer}*500 {layer}*1000 /
PERMY
{layer}*500 {layer}*2000 {layer}*500 {layer}*1000 /
PERMZ
{layer}*50 {layer}*200 {layer}*50 {layer}*100 /
PROPS
PVDO
300  1.02 2.0
8000 1.0 2.0
/
PVTW
3000 1.0 3e-6 0.5 0 /
DENSITY
50 64 0.0624 /
ROCK
3000 4e-6 /
SWOF
0.2 0.00 1.00 0
0.3 0.01 0.70 0
0.4 0.04 0.45 0
0.5 0.09 0.25 0
0.6 0.18 0.10 0
0.7 0.30 0.02 0
0.8 0.45 0.00 0
/
{extra_props}SOLUTION
EQUIL
6000 3000 9000 0 1000 /
SCHEDULE
WELSPECS
'INJ' 'G' 1 4 6010 'WATER' /
'PROD' 'G' {NX} 5 6010 'OIL' /
/
COMPDAT
'INJ' 1 4 1 {NZ} 'OPEN' 2* 0.5 /
'PROD' {NX} 5 1 {NZ} 'OPEN' 2* 0.5 /
/
WCONPROD
'PROD' 'OPEN' 'BHP' 5* 2500 /
/
WCONINJE
'INJ' 'WATER' 'OPEN' 'RATE' 400 1* 9000 /
/
{extra_schedule}TSTEP
{steps} /
END
{option_section}"""
