"""Floods of mixtures on cells of three layers, each a smooth random field of its own: fluid of the fifth comparative
study (Killough and Kossack 1987), for studies and tests of long steps and of lines against cells."""

import numpy

SIX = (("C1", 343.0, 667.8, 1.598, 16.04, 0.0130), ("C3", 665.7, 616.3, 3.211, 44.10, 0.1524),
       ("C6", 913.4, 436.9, 5.923, 86.18, 0.3007), ("C10", 1111.8, 304.0, 10.087, 142.29, 0.4885),
       ("C15", 1270.0, 200.0, 16.696, 206.00, 0.6500), ("C20", 1380.0, 162.0, 21.484, 282.00, 0.8500))
OIL, SOLVENT = (0.50, 0.03, 0.07, 0.20, 0.15, 0.05), (0.77, 0.20, 0.03, 0.0, 0.0, 0.0)
GROUPS = ((0,), (1, 2), (3, 4, 5))  # of the three pseudo components
LAYERS = (500.0, 50.0, 200.0)       # md, mean of ln k
SPREAD, REACH, SEED = 0.7, 4.0, 17  # of ln k; cells
EXTENT, THICKNESS = 1550.0, (20.0, 30.0, 50.0)  # ft
HALF_CYCLE = 91.25                          # days


def lumped():
    """The three pseudo components and both mixtures: means by moles of the oil."""
    weights = [[OIL[i] for i in group] for group in GROUPS]
    parts = [numpy.average(numpy.array([SIX[i][1:] for i in group]), axis=0, weights=w)
             for group, w in zip(GROUPS, weights)]
    named = tuple((name, *part) for name, part in zip(("LIGHT", "MIDDLE", "HEAVY"), parts))
    return named, *(tuple(sum(z[i] for i in group) for group in GROUPS) for z in (OIL, SOLVENT))


def permeability(n):
    """md by cell; white noise smoothed over REACH cells of a grid of 31."""
    random = numpy.random.default_rng(SEED)
    axis = numpy.arange(-3 * n, 3 * n + 1)
    kernel = numpy.exp(-0.5 * (axis / (REACH * n / 31)) ** 2)
    kernel = kernel[numpy.abs(axis) <= (n - 1) // 2]
    fields = []
    for mean in LAYERS:
        noise = random.standard_normal((n, n))
        for _ in range(2):
            noise = numpy.apply_along_axis(lambda row: numpy.convolve(row, kernel, "same"), 0, noise).T
        fields.append(mean * numpy.exp(SPREAD * (noise - noise.mean()) / noise.std()))
    assert numpy.shape(fields) == (3, n, n)
    return numpy.array(fields).ravel()


def array(word, values):
    rows = [" ".join(f"{value:.6g}" for value in values[i:i + 10]) for i in range(0, len(values), 10)]
    return word + "\n" + "\n".join(rows) + " /\n"


def curves():
    water, gas = [], []
    for n in range(21):
        s = n / 20
        water.append(f"{0.2 + 0.6 * s:.2f} {0.5 * s**2.5:.6f} {(1 - s) ** 2.5:.6f} 0")
        gas.append(f"{0.8 * s:.2f} {0.8 * s**2:.6f} {(1 - s) ** 2.5:.6f} 0")
    return "SWOF\n" + "\n".join(water) + " /\nSGOF\n" + "\n".join(gas) + " /\n"


def schedule(case, days, n):
    parts = max(1, round(days / HALF_CYCLE))
    wells = f"""WELSPECS
INJ G 1 1 1* WATER /
PRD G {n} {n} 1* OIL /
/
COMPDAT
INJ 1 1 1 3 OPEN 1* 1* 0.5 /
PRD {n} {n} 1 3 OPEN 1* 1* 0.5 /
/
WCONPROD
PRD OPEN BHP 5* 3500 /
/
WINJGAS
INJ STREAM SOLVENT /
/
"""
    inject = "WCONINJE\nINJ {} OPEN RATE {} 1* 8000 /\n/\n"
    if case == "gas":
        return wells + inject.format("GAS", 10000) + f"TSTEP\n{parts}*{days / parts} /\n"
    for k in range(parts):
        wells += inject.format(*(("WATER", 6000) if k % 2 == 0 else ("GAS", 9000))) + f"TSTEP\n{days / parts} /\n"
    return wells


def deck(case, days, n, method, step="auto", extent=EXTENT):
    """`case`: gas or wag. `method`: IMPES, SPU or 2PU (lines by upwind or limited fluxes). `step`: the longest, days."""
    names, oil, solvent = (SIX, OIL, SOLVENT) if case == "gas" else lumped()
    count, columns = 3 * n * n, list(zip(*names))
    size, layer = extent / n, n * n
    k = permeability(n)
    keywords = ("CNAMES", "TCRIT", "PCRIT", "VCRIT", "MW", "ACF")
    rows = "".join(f"{word}\n{' '.join(str(v) for v in values)} /\n" for word, values in zip(keywords, columns))
    pairs = len(names) * (len(names) - 1) // 2
    lines = {"IMPES": "FDMETHOD\nIMPES /\n", "SPU": "FDMETHOD\nSTREAMLINE /\n",
             "2PU": "FDMETHOD\nSTREAMLINE /\nSL1DCON\nEXPLICIT IRR 1 2PU /\n"}[method]
    limit = "" if step == "auto" else f"MAXDT\n{step} /\n"
    return f"""RUNSPEC
DIMENS
{n} {n} 3 /
OIL
WATER
GAS
FIELD
COMPS
{len(names)} /
START
1 'JAN' 2026 /
TABDIMS
1 1 30 30 /
WELLDIMS
2 3 1 2 /
GRID
DX
{count}*{size} /
DY
{count}*{size} /
DZ
{' '.join(f'{layer}*{h}' for h in THICKNESS)} /
TOPS
{layer}*8325 /
PORO
{count}*0.3 /
{array('PERMX', k)}{array('PERMY', k)}{array('PERMZ', 0.1 * k)}PROPS
{rows}BIC
{'0 ' * pairs}/
RTEMP
160 /
ZI
{' '.join(f'{z:.6g}' for z in oil)} /
{curves()}PVTW
4000 1.0 3.3E-6 0.7 0 /
ROCK
4000 5E-6 /
DENSITY
50 62.4 0.05 /
SOLUTION
EQUIL
8400 4000 9000 0 8000 0 /
SCHEDULE
WELLSTRE
SOLVENT {' '.join(f'{z:.6g}' for z in solvent)} /
/
{schedule(case, days, n)}END
TUNEKVR
{lines}{limit}END
"""
