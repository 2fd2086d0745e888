"""A one-dimensional water flood deck: 1000 ft of incompressible rock and fluid, injector at one end."""

LENGTH = 1000.0  # ft
RATE = 20.0  # rb/day
PORE_VOLUME = LENGTH * 50.0 * 20.0 * 0.2 / 5.614583  # rb
CONNATE, RESIDUAL = 0.2, 0.2
WATER_VISCOSITY, OIL_VISCOSITY = 0.5, 1.0  # cp


def relative_permeability(rows=25):
    """Rows Sw, krw, krow of quadratic curves between the end points."""
    table = []
    for i in range(rows):
        reduced = i / (rows - 1.0)
        table.append((CONNATE + 0.6 * reduced, reduced ** 2, (1.0 - reduced) ** 2))
    return table


def injected_volumes(time):
    return RATE * time / PORE_VOLUME


def deck(cells, option_section, rows=25):
    swof = "\n".join(f"{sw:.8f} {krw:.10f} {kro:.10f} 0" for sw, krw, kro in relative_permeability(rows))
    return f"""RUNSPEC
DIMENS
{cells} 1 1 /
OIL
WATER
FIELD
START
1 'JAN' 2000 /
WELLDIMS
2 2 /
GRID
DX
{cells}*{LENGTH / cells} /
DY
{cells}*50 /
DZ
{cells}*20 /
TOPS
{cells}*8000 /
PORO
{cells}*0.2 /
PERMX
{cells}*500 /
PERMY
{cells}*500 /
PERMZ
{cells}*50 /
PROPS
PVDO
300  1.0000001 1.0
4000 1.0 1.0
8000 0.9999999 1.0
/
PVTW
4000 1.0 1e-10 0.5 0 /
DENSITY
53 64 0.0624 /
ROCK
4000 1e-9 /
SWOF
{swof}
/
SOLUTION
PRESSURE
{cells}*3500 /
SWAT
{cells}*0.2 /
SCHEDULE
WELSPECS
'INJ' 'G' 1 1 8010 'WATER' /
'PROD' 'G' {cells} 1 8010 'OIL' /
/
COMPDAT
'INJ' 1 1 1 1 'OPEN' 2* 0.5 /
'PROD' {cells} 1 1 1 'OPEN' 2* 0.5 /
/
WCONPROD
'PROD' 'OPEN' 'BHP' 5* 3500 /
/
WCONINJE
'INJ' 'WATER' 'OPEN' 'RATE' {RATE} 1* 20000 /
/
TSTEP
40*50 /
END
{option_section}"""
