"""Random legal models of mixtures: fluid, grid, wells, controls and schedule by a seed."""

import random

import component_deck

# Substances by boiling point, light ones first.
SUBSTANCES = (
    ("N2", 227.2, 492.3, 1.44, 28.01, 0.04), ("C1", 343.0, 667.8, 1.59, 16.043, 0.0104), ("CO2", 547.6, 1070.6, 1.51, 44.01, 0.225),
    ("C2", 549.8, 707.8, 2.37, 30.07, 0.0986), ("C3", 665.7, 616.3, 3.21, 44.097, 0.1524), ("C4", 765.4, 550.7, 4.08, 58.12, 0.201),
    ("C6", 913.4, 436.9, 5.92, 86.18, 0.3007), ("C8", 1023.9, 360.6, 7.88, 114.23, 0.398), ("C10", 1111.8, 304.0, 9.66, 142.285, 0.4885),
    ("C15", 1270.0, 200.0, 16.7, 206.0, 0.65), ("C20", 1380.0, 162.0, 21.5, 282.0, 0.85))
LIGHT = ("N2", "C1", "CO2", "C2")


def fractions(chance, count):
    parts = [chance.random() ** 2 + 0.02 for _ in range(count)]
    return tuple(round(part / sum(parts), 6) for part in parts)


def stream(chance, names):
    """Mostly light: a gas at the surface."""
    parts = [chance.random() + 0.5 if name in LIGHT else 0.1 * chance.random() * (name in ("C3", "C4")) for name in names]
    return tuple(round(part / sum(parts), 6) for part in parts)


def model(seed):
    """The deck of a seed."""
    chance = random.Random(seed)
    count = chance.randint(2, 8)
    light = chance.choice([s for s in SUBSTANCES if s[0] in LIGHT])
    rest = [s for s in SUBSTANCES if s is not light]
    heavy = chance.choice([s for s in rest if s[1] > 1000])
    others = chance.sample([s for s in rest if s is not heavy], count - 2)
    components = tuple(sorted([light, heavy, *others], key=lambda s: s[1]))
    names = [s[0] for s in components]
    cells = (chance.randint(3, 9), chance.randint(1, 6), chance.randint(1, 4))
    number = cells[0] * cells[1] * cells[2]
    pressure = chance.choice((800.0, 1500.0, 3000.0, 5000.0))
    permeability = " ".join(f"{10 ** chance.uniform(0.5, 3):.3f}" for _ in range(number))
    rock = f"PERMX\n{permeability} /\nCOPY\nPERMX PERMY /\n/\nPORO\n" + " ".join(
        f"{chance.uniform(0.1, 0.3):.4f}" for _ in range(number)) + " /\n"
    water = round(chance.choice((0.0, 0.2, 0.35)), 2)
    depth = 5000.0 + 20.0 * cells[2] / 2
    solution = chance.choice((
        f"PRESSURE\n{number}*{pressure} /\nSWAT\n{number}*{max(water, 0.2)} /\nSGAS\n{number}*0 /\n",
        f"EQUIL\n{depth} {pressure} {5000 + 20 * cells[2] * chance.random()} 0 4000 0 /\n"))
    fluid = chance.choice(("GAS", "GAS", "WATER"))
    pores = number * 60.0 * 60.0 * 20.0 * 0.2
    rate = pores / 5.6 * chance.uniform(0.0002, 0.002)  # rb/day
    gas = rate * pressure / 15.0 / 178.0                # Mscf/day, roughly
    control = chance.choice((f"BHP 5* {0.8 * pressure}", f"ORAT {0.5 * rate} 4* {0.4 * pressure}", f"RESV 4* {rate} {0.4 * pressure}",
                             f"GRAT 2* {gas} 2* {0.4 * pressure}"))
    controls = f"""WCONINJE
INJ {fluid} OPEN RATE {gas if fluid == "GAS" else rate} 1* {2 * pressure} /
/
WINJGAS
INJ STREAM LEAN /
/
WCONPROD
PRD OPEN {control} /
/
"""
    return component_deck.replaced(
        cells=cells, sizes=(60.0, 60.0, 20.0), rock=rock, components=components, temperature=chance.uniform(100, 280),
        feed=fractions(chance, count), props=component_deck.SWOF_CONNATE + component_deck.SGOF_CONNATE, pressure=pressure,
        solution=solution, streams=(("LEAN", stream(chance, names)),), controls=controls,
        steps=f"{chance.randint(2, 8)}*{chance.choice((1, 10, 30))}")
