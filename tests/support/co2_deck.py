"""CO2 in brine: a tall column of sand, with CO2 at its foot or a well there, and readers of the stores of a run."""

import kvr_run
import numpy

# Rs (sm3/sm3), pressure (bar), Bo, viscosity of brine with CO2 at 50 C.
BRINE = [(0.0, 1.0, 1.0120, 0.640), (5.0, 20.0, 1.0182, 0.645), (10.0, 42.0, 1.0244, 0.650), (15.0, 72.0, 1.0304, 0.655),
         (19.0, 110.0, 1.0348, 0.659), (21.0, 150.0, 1.0361, 0.661), (23.0, 200.0, 1.0370, 0.663), (24.5, 250.0, 1.0373, 0.665)]
LAYERS = 8
SCF_PER_SM3 = 35.3146667

PROPS = "PROPS\nPVTO\n" + "".join(f"{rs} {p} {bo} {mu} /\n" for rs, p, bo, mu in BRINE) + """26.0 300 1.0374 0.666
 400 1.0328 0.670
 500 1.0283 0.678 /
/
PVDG
 10 0.111300 0.0158
 50 0.017810 0.0170
 80 0.008539 0.0200
100 0.004870 0.0280
120 0.003197 0.0430
150 0.002671 0.0550
200 0.002385 0.0670
250 0.002242 0.0760
300 0.002149 0.0840
400 0.002033 0.0980
/
PVTW
150 1.01 4.5e-5 0.6 0 /
DENSITY
1060 1060 1.87 /
ROCK
150 4.0e-5 /
SWOF
0.0 0.0 1.0 0
0.5 0.2 0.3 0
1.0 1.0 0.0 0
/
SGOF
0.00 0.000 1.000 0
0.10 0.000 0.740 0
0.30 0.060 0.340 0
0.50 0.200 0.100 0
0.75 0.480 0.000 0
1.00 0.900 0.000 0
/
"""


def closed_column(gas=(0.0,) * (LAYERS - 2) + (0.6, 0.6), options="", steps="20*182.625"):
    """Layers of 10 m without wells; `gas` the saturations from the top down, brine without CO2 where there is none."""
    return f"""RUNSPEC
DIMENS
1 1 {LAYERS} /
OIL
WATER
GAS
DISGAS
METRIC
START
1 'JAN' 2030 /
GRID
DX
{LAYERS}*50 /
DY
{LAYERS}*50 /
DZ
{LAYERS}*10 /
TOPS
1500 /
PORO
{LAYERS}*0.2 /
PERMX
{LAYERS}*100 /
PERMY
{LAYERS}*100 /
PERMZ
{LAYERS}*20 /
{PROPS}SOLUTION
PRESSURE
{" ".join(str(150 + k) for k in range(LAYERS))} /
SWAT
{LAYERS}*0 /
SGAS
{" ".join(str(s) for s in gas)} /
RS
{LAYERS}*0 /
SCHEDULE
TSTEP
{steps} /
END

TUNEKVR
CO2MBM
OUTPUTKVR
0 0 1 0 0 0 0 1 /
{options}
"""


def stores(result, name="KVR_CO2_Stores.csv"):
    """Columns by name of the table of stores; the dates are left out."""
    lines = (result.folder / name).read_text().splitlines()
    names = lines[0].split(",")
    rows = [line.split(",") for line in lines[2:]]
    return {column: numpy.array([float(row[n]) for row in rows]) for n, column in enumerate(names) if column != "DATE"}


def balance_table(result):
    """Head and rows of the table of the run."""
    head, *rows = result.read("Mass_Balance_CO2.out").splitlines()
    return head, numpy.array([[float(word) for word in row.split()] for row in rows])


def saturated(pressure):
    """Rs of brine at a pressure, both metric."""
    return numpy.interp(pressure, [row[1] for row in BRINE], [row[0] for row in BRINE])


def finished(folder, deck):
    return kvr_run.finished_normally(kvr_run.run(folder, deck))
