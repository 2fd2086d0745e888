"""Lines on the restarts of other simulators, and of our own runs, against finite volumes, Darcy's law and our own pressures."""

import re
import shutil

import numpy
import pytest
from binary_blocks import arrays, blocks, real_block, without_blocks
from flux_times import at_points, darcy_fluxes, exact_means, exact_times, line_nodes, mean_difference, net_outflow, part_times
from kvr_run import PUBLIC_DECKS, REPOSITORY, finished_normally, public_deck, run
from peer_flow import needs_flow, run_flow

RUNNER = REPOSITORY / "tools/outside/flow_run"
OUTPUT = "OUTPUTKVR\n1 0 0 1 0 0 0 1 0 0 /\n"
UNREACHED = 1e9

needs_decks = pytest.mark.skipif(not PUBLIC_DECKS.exists(), reason="the public decks are not beside the checkout")


def without_end(deck):
    return re.sub(r"^END\b.*", "", deck, flags=re.M | re.S)


def traced(folder, deck, command, lines="1000 INJ No", files=None, output=OUTPUT):
    options = f"\nEND\nTUNEKVR\nECLTRACE\nLINUXRUN\nECLCOMM\n{command}\nNUMLINE\n{lines} /\n{output}"
    return finished_normally(run(folder, without_end(deck) + options, files))


def by_pair(result):
    """Rates by pair, rb/day, in the order of the file: injectors running fastest."""
    return numpy.loadtxt(result.folder / "KVR_Run_RateAllocation.out", ndmin=2)[:, 2]


def time_map(result, name="INJ"):
    return numpy.loadtxt(result.folder / f"KVR_Run_Tau{name}.out")


def deck_array(keyword, values):
    rows = [" ".join(f"{value:.9g}" for value in values[n:n + 8]) for n in range(0, len(values), 8)]
    return "\n".join([keyword, *rows, "/", ""])


def own_pressure(folder, deck, restart, keywords, files=None):
    """Lines by a pressure of our own on the cells of a restart: one step so short that nothing moves."""
    state = "SOLUTION\n" + "".join(deck_array(keyword, restart[keyword]) for keyword in keywords)
    deck = re.sub(r"^SOLUTION\b.*?(?=^(SUMMARY|SCHEDULE)\b)", lambda _: state, without_end(deck), flags=re.M | re.S)
    deck = re.sub(r"^TSTEP\b.*?/", "TSTEP\n0.001 /", deck, flags=re.M | re.S)
    return finished_normally(run(folder, deck + f"\nEND\nTUNEKVR\nNUMLINE\n1000 INJ No /\n{OUTPUT}", files))


def median_difference(one, other):
    known = (one < UNREACHED) & (other < UNREACHED)
    assert known.mean() > 0.95
    return float(numpy.median(numpy.abs(one[known] - other[known]) / other[known]))


def interpolated(x, table_x, table_y):
    """Linear, the last piece going on."""
    y = numpy.interp(x, table_x, table_y)
    slope = (table_y[-1] - table_y[-2]) / (table_x[-1] - table_x[-2])
    return numpy.where(x > table_x[-1], table_y[-1] + slope * (x - table_x[-1]), y)


def differences(nodes, lengths, top, fine, coarse):
    """Relative differences of the times of line nodes to those of finite volumes on parts, twice the result on twice as many less
    that on the fewer: first-order smearing falls out."""
    places = (nodes[:, :3] - numpy.array([0.0, 0.0, top])) / numpy.array(lengths)
    reference = 2.0 * at_points(fine, places) - at_points(coarse, places)
    known = numpy.isfinite(reference) & (reference > 0.0)
    assert known.mean() > 0.99
    difference = numpy.abs(nodes[known, 3] - reference[known]) / reference[known]
    print(f"times at {known.sum()} nodes: mean {difference.mean():.4f}, median {numpy.median(difference):.4f}")
    return difference


def exact_differences(nodes, exact):
    """Relative differences of the times of line nodes to exact ones."""
    known = numpy.isfinite(exact) & (exact > 0.0)
    assert known.mean() > 0.99
    difference = numpy.abs(nodes[known, 3] - exact[known]) / exact[known]
    print(f"exact times at {known.sum()} nodes: mean {difference.mean():.2e}, median {numpy.median(difference):.2e}, "
          f"largest {difference.max():.2e}")
    return difference


# --- five-spot on the first layer of the tenth comparative case, 60 x 220 ---------------------------------------------------

FIVE = {"p": numpy.array([300.0, 800.0, 8000.0]), "bo": numpy.array([1.05, 1.02, 1.01]), "muo": numpy.array([2.85, 2.99, 3.0])}
FIVE_CELLS = (1, 220, 60)
FIVE_INJECTOR = (0, 109, 29)
FIVE_PRODUCERS = [(0, 0, 0), (0, 0, 59), (0, 219, 59), (0, 219, 0)]


def five_factors(p):
    inverse = interpolated(p, FIVE["p"], 1.0 / FIVE["bo"])
    x = 3e-6 * (p - 6000.0)
    return 1.0 / inverse, 1.01 / (1.0 + x + 0.5 * x * x)


def five_field(folder, step):
    """Fluxes by Darcy's law, pore volumes and pressures of a restart, by the fluids of the deck."""
    static, restart = arrays(folder / "ECLIPSE.INIT"), arrays(folder / f"ECLIPSE.X{step:04d}")
    p, sw = (restart[name].reshape(FIVE_CELLS).astype(float) for name in ("PRESSURE", "SWAT"))
    bo, bw = five_factors(p)
    muo = interpolated(p, FIVE["p"], 1.0 / FIVE["bo"]) / interpolated(p, FIVE["p"], 1.0 / (FIVE["bo"] * FIVE["muo"]))
    s = numpy.linspace(0.2, 0.8, 13)
    share = (s - 0.2) / 0.6
    krw, kro = (numpy.interp(sw, s, table) for table in (numpy.round(share**2, 4), numpy.round((1.0 - share)**2, 4)))
    fluxes = darcy_fluxes(static, [p, p], [53.0 / bo, 64.0 / bw], [kro / muo, krw / 0.3])
    volume = static["PORV"].reshape(FIVE_CELLS).astype(float) * (1.0 + 1e-6 * (p - 6000.0))
    return fluxes, volume, p


@pytest.fixture(scope="module")
def five_spot(tmp_path_factory):
    """FIVE1 through flow for 600 days, every restart traced."""
    if shutil.which("flow") is None or not PUBLIC_DECKS.exists():
        pytest.skip("flow or the public decks are not here")
    folder = tmp_path_factory.mktemp("five")
    deck = public_deck("waterflood/FIVE1.DATA").replace("40*50", "12*50")
    files = {"FIVE1.INC": public_deck("waterflood/FIVE1.INC")}
    return deck, files, traced(folder, deck, RUNNER, files=files)


@needs_flow
def test_every_restart_of_the_five_spot_is_traced(five_spot):
    deck, files, result = five_spot
    for step in range(1, 13):
        assert f"EXTRACT RESTART -> ECLIPSE.X{step:04d}" in result.log
    assert result.console.count("Construct Velocity Field from Pressure") == 12


@needs_flow
def test_times_along_lines_are_those_of_the_fluxes(five_spot):
    """At every tenth node of the lines against exact times on fluxes by Darcy's law."""
    result = five_spot[2]
    fluxes, volume, _ = five_field(result.folder, 12)
    nodes = numpy.concatenate([line[1:-1] for line in line_nodes(result.folder / "Streamline_Time_600.plt")])[::10]
    places = numpy.stack([nodes[:, 0] / 20.0, nodes[:, 1] / 10.0, numpy.full(len(nodes), 0.5)], axis=1)
    difference = exact_differences(nodes, exact_times(fluxes, volume, places, FIVE_INJECTOR[::-1]))
    assert difference.mean() < 0.01


@needs_flow
def test_the_map_of_the_cells_is_that_of_the_fluxes(five_spot):
    """Every fifth cell against the mean of nine exact times, without the slowest twentieth: 5 % on the mean."""
    result = five_spot[2]
    fluxes, volume, _ = five_field(result.folder, 12)
    cells = numpy.arange(0, volume.size, 5)
    twin = exact_means(fluxes, volume, FIVE_INJECTOR[::-1], cells, 3)
    difference = mean_difference(time_map(result)[cells], twin)
    print(f"map of the cells against exact means: mean {difference:.4f}, "
          f"all cells {mean_difference(time_map(result)[cells], twin, 0.0):.4f}")
    assert difference < 0.05


@needs_flow
def test_rates_by_pair_are_the_reservoir_rates_of_the_producers(five_spot):
    result = five_spot[2]
    restart = arrays(result.folder / "ECLIPSE.X0012")
    _, _, p = five_field(result.folder, 12)
    words = restart["INTEHEAD"][26]
    rates = by_pair(result)
    for n, cell in enumerate(FIVE_PRODUCERS):
        oil, water = restart["XWEL"][(n + 1) * words:(n + 1) * words + 2]
        bo, bw = five_factors(p[cell])
        print(f"producer {n + 1}: {rates[n]:.4f} rb/day by lines, {oil * bo + water * bw:.4f} by the restart")
        assert rates[n] == pytest.approx(oil * bo + water * bw, rel=0.02)


@needs_flow
def test_our_own_pressure_on_the_same_cells_gives_the_same_times(five_spot, tmp_path):
    deck, files, result = five_spot
    restart = arrays(result.folder / "ECLIPSE.X0012")
    own = own_pressure(tmp_path, deck, restart, ("PRESSURE", "SWAT"), files)
    difference = median_difference(time_map(result), time_map(own))
    print(f"own pressure against the restart's: median {difference:.5f}")
    assert difference < 0.03


@needs_decks
def test_our_own_run_traced_back_has_its_lines(tmp_path):
    """The five-spot by our own solver with binary files, then traced from these."""
    deck = public_deck("waterflood/FIVE1.DATA").replace("40*50", "6*50")
    files = {"FIVE1.INC": public_deck("waterflood/FIVE1.INC")}
    first = tmp_path / "run"
    first.mkdir()
    own = finished_normally(run(first, without_end(deck) + "\nEND\nTUNEKVR\nNUMLINE\n1000 INJ No /\nOUTPUTKVR\n1 0 0 1 0 0 0 1 1 0 /\n",
                                files))
    second = tmp_path / "back"
    second.mkdir()
    for path in first.glob("ECLIPSE.*"):
        if path.suffix != ".DATA":
            shutil.copy(path, second)
    back = traced(second, deck, "true", files=files)
    assert "FLUX DATA FOUND :: Trace Streamline using FLO_X+" in back.console
    assert by_pair(back) == pytest.approx(by_pair(own), rel=0.005)
    one, other = time_map(back), time_map(own)
    known = (one < UNREACHED) & (other < UNREACHED)
    difference = numpy.abs(one[known] - other[known]) / other[known]
    print(f"times: mean {difference.mean():.2e}, median {numpy.median(difference):.2e}")
    assert known.mean() > 0.99 and difference.mean() < 0.005
    rows = {row.split()[0]: row.split()[1:] for row in own.console.splitlines() if re.match(r"P[1-4] ", row)}
    again = {row.split()[0]: row.split()[1:] for row in back.console.splitlines() if re.match(r"P[1-4] ", row)}
    assert len(rows) == 4
    # The run's rates are those of its step, the restart's what its field lets out of the cells at the end of it.
    for well, figures in rows.items():
        assert float(again[well][0]) == pytest.approx(float(figures[0]), rel=0.05, abs=0.1), well


# --- first comparative case: gas injection into live oil, 10 x 10 x 3 --------------------------------------------------------

SPE1_CELLS = (3, 10, 10)
YEAR = [31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31]


@pytest.fixture(scope="module", params=[36, 120])
def gas_injection(request, tmp_path_factory):
    """SPE1CASE2 through flow for so many months, lines from the producer."""
    if shutil.which("flow") is None or not PUBLIC_DECKS.exists():
        pytest.skip("flow or the public decks are not here")
    folder = tmp_path_factory.mktemp("gas")
    months = " ".join(str(days) for days in YEAR * (request.param // 12))
    deck = re.sub(r"^TSTEP\b.*?/", f"TSTEP\n{months}/", public_deck("spe1/SPE1CASE2.DATA"), flags=re.M | re.S)
    return deck, request.param, traced(folder, deck, RUNNER, "1000 PRD No")


MSCF = 5.614583 / 1000.0  # Mscf in a barrel at the surface
SPE1_PROPERTIES = [f"{phase}_{kind}" for phase in ("OIL", "GAS", "WAT") for kind in ("DEN", "VISC")] + ["OILKR", "GASKR", "WATKR"]


def spe1_cells(folder, step, *names):
    restart = arrays(folder / f"ECLIPSE.X{step:04d}")
    return [restart[name].reshape(SPE1_CELLS).astype(float) for name in names]


def spe1_field(folder, step):
    """Fluxes of oil and gas by Darcy's law, with the densities, viscosities and relative permeabilities that flow ran on, and pore
    volumes; water is at rest."""
    p, *oil = spe1_cells(folder, step, "PRESSURE", "OIL_DEN", "OILKR", "OIL_VISC")
    gas = spe1_cells(folder, step, "GAS_DEN", "GASKR", "GAS_VISC")
    static = arrays(folder / "ECLIPSE.INIT")
    x = 3e-6 * (p - 14.7)
    volume = static["PORV"].reshape(SPE1_CELLS) * (1.0 + x + 0.5 * x * x)
    return darcy_fluxes(static, [p, p], [oil[0], gas[0]], [oil[1] / oil[2], gas[1] / gas[2]]), volume


@needs_flow
def test_rates_by_pair_of_gas_injection_are_the_reservoir_rate_of_the_producer(gas_injection):
    _, step, result = gas_injection
    restart = arrays(result.folder / f"ECLIPSE.X{step:04d}")
    rs, oil_density, gas_density = (float(values[2, 9, 9]) for values in spe1_cells(result.folder, step, "RS", "OIL_DEN", "GAS_DEN"))
    bo, bg = (53.66 + rs / MSCF * 0.0533) / oil_density, 0.0533 / (gas_density * MSCF)
    oil, _, gas = restart["XWEL"][:3]
    expected = oil * bo + (gas - rs * oil) * bg
    print(f"step {step}: {by_pair(result).sum():.1f} rb/day by lines, {expected:.1f} by the restart")
    assert by_pair(result).sum() == pytest.approx(expected, rel=0.02)


@needs_flow
def test_our_own_pressure_on_the_cells_of_gas_injection_gives_the_same_times(gas_injection, tmp_path):
    deck, step, result = gas_injection
    restart = arrays(result.folder / f"ECLIPSE.X{step:04d}")
    own = own_pressure(tmp_path, deck, restart, ("PRESSURE", "SWAT", "SGAS", "RS"))
    difference = median_difference(time_map(result), time_map(own))
    print(f"step {step}: own pressure against the restart's: median {difference:.5f}")
    assert difference < 0.03


def spe1_lines(folder, days=None):
    """Nodes of the lines at a time, that of the last report where none is given, and their places in cells."""
    plots = {int(path.stem.split("_")[-1]): path for path in folder.glob("Streamline_Time_*.plt")}
    nodes = numpy.concatenate([line[1:-1] for line in line_nodes(plots[days or max(plots)])])
    layers = numpy.interp(nodes[:, 2], [8325.0, 8345.0, 8375.0, 8425.0], [0.0, 1.0, 2.0, 3.0])
    return nodes, numpy.stack([nodes[:, 0] / 1000.0, nodes[:, 1] / 1000.0, layers], axis=1)


def traced_again(folder, deck, result, fluxes=None, without=(), lines="1000 INJ No"):
    """Lines from the injector on the restarts of a run less some of their keywords, with total fluxes of the last one where these
    are given."""
    for path in result.folder.glob("ECLIPSE.*"):
        if re.match(r"\.X\d", path.suffix):
            (folder / path.name).write_bytes(without_blocks(path, without))
        elif path.suffix != ".DATA":
            shutil.copy(path, folder)
    if fluxes is not None:
        last = max(folder.glob("ECLIPSE.X[0-9]*"))
        with open(last, "ab") as file:
            for axis, flux in zip("IJK", fluxes):
                file.write(real_block(f"FLROIL{axis}+", flux))
    return traced(folder, deck, "true", lines)


@needs_flow
def test_lines_of_gas_injection_are_exact_on_given_fluxes(gas_injection, tmp_path):
    """Fluxes by Darcy's law stand in the restart. Gas rises and oil sinks between three layers, and lines turn: every node of
    every line is held."""
    deck, step, result = gas_injection
    fluxes, volume = spe1_field(result.folder, step)
    fluxes = [flux.astype(numpy.float32).astype(float) for flux in fluxes]
    lines = traced_again(tmp_path, deck, result, fluxes)
    assert "FLUX DATA FOUND" in lines.console
    nodes, places = spe1_lines(tmp_path)
    assert exact_differences(nodes, exact_times(fluxes, volume, places, (0, 0, 0))).max() < 0.005


@needs_flow
@pytest.mark.parametrize("without, most", [((), 1e-4), (SPE1_PROPERTIES, 0.05)], ids=["properties of the restart", "tables of the deck"])
def test_lines_of_gas_injection_are_those_of_the_run(gas_injection, tmp_path, without, most):
    """Of every sixth month: fluxes made from the pressures of the restart against Darcy's law with the densities, viscosities and
    relative permeabilities that flow ran on. Where the restart has these, little is left; by the tables of the deck oil
    above its bubble point is another between two rows of Rs, and where it stands almost still up and down, slow flow turns."""
    deck, steps, result = gas_injection
    traced_again(tmp_path, deck, result, without=without, lines="300 INJ No")
    ends = numpy.cumsum(YEAR * (steps // 12))
    for step in range(6, steps + 1, 6):
        nodes, places = spe1_lines(tmp_path, ends[step - 1])
        print(f"month {step}:", end=" ")
        assert exact_differences(nodes, exact_times(*spe1_field(result.folder, step), places, (0, 0, 0))).mean() < most


# --- 2D_HOMO: a restart of a commercial simulator with face fluxes -----------------------------------------------------------

HOMO_CELLS = (1, 21, 21)


@pytest.fixture(scope="module")
def commercial(tmp_path_factory):
    if not PUBLIC_DECKS.exists():
        pytest.skip("the public decks are not beside the checkout")
    folder = tmp_path_factory.mktemp("homo")
    for path in (PUBLIC_DECKS / "restart/2D_HOMO").iterdir():
        if path.suffix != ".DATA":
            (folder / path.name).write_bytes(path.read_bytes())
    return traced(folder, public_deck("restart/2D_HOMO/ECLIPSE.DATA"), "true")


def homo_fluxes(restart, factors):
    fluxes = [factors[0] * restart[f"FLOOIL{axis}+"].reshape(HOMO_CELLS).astype(float)
              + factors[1] * restart[f"FLOWAT{axis}+"].reshape(HOMO_CELLS).astype(float) for axis in "IJ"]
    return [*fluxes, numpy.zeros(HOMO_CELLS)]


def test_the_fluxes_of_a_commercial_restart_are_found(commercial):
    assert "FLUX DATA FOUND :: Trace Streamline using FLO_X+" in commercial.console
    for keyword in ("PRESSURE", "SWAT    ", "FLOOILI+", "FLOWATJ+", "OIL_VISC", "WATKR   "):
        assert f" RESTART Key employd -> {keyword}" in commercial.log
    for keyword in ("HIDDEN  ", "1OVERBO ", "REGRPT  "):
        assert f" RESTART Key ignored  : {keyword}" in commercial.log


def test_the_file_of_the_commercial_simulator_agrees_with_darcys_law(commercial):
    """Of the reference, no line of ours: the file's own factors, viscosities and relative permeabilities with its transmissibilities and pressures."""
    restart, static = (arrays(commercial.folder / f"ECLIPSE.{kind}") for kind in ("X0001", "INIT"))
    p = restart["PRESSURE"].reshape(HOMO_CELLS).astype(float)
    grid = {name: restart[name].reshape(HOMO_CELLS).astype(float) for name in
            ("OILKR", "WATKR", "OIL_VISC", "WAT_VISC", "OIL_DEN", "WAT_DEN", "1OVERBO", "1OVERBW")}
    largest = 0.0
    for phase, kr, viscosity, density, inverse in (("OIL", "OILKR", "OIL_VISC", "OIL_DEN", "1OVERBO"),
                                                   ("WAT", "WATKR", "WAT_VISC", "WAT_DEN", "1OVERBW")):
        mobility = grid[kr] / grid[viscosity] * grid[inverse]
        darcy = darcy_fluxes(static, [p], [grid[density]], [mobility])
        for axis, flux in zip("IJ", darcy):
            file = restart[f"FLO{phase}{axis}+"].reshape(HOMO_CELLS)
            largest = max(largest, float(numpy.abs(flux - file).max()))
    print(f"largest difference {largest:.5f} stb/day, {largest / 603.03:.2e} of what is injected")
    assert largest < 1e-4 * 603.03


def homo_amounts(pressure, saturation, pore_volume):
    """Surface volumes of oil and water in the cells, stb, by the fluids of the deck; rows of a table go on as 1/B goes."""
    x, y = 3e-6 * (pressure - 4000.0), 3.03e-6 * pressure
    inverse = {"OIL": 1.0 + (1.0 / 0.99 - 1.0) * pressure / 8000.0, "WAT": 1.0 + y + 0.5 * y * y}
    volume = pore_volume * (1.0 + x + 0.5 * x * x)
    return {phase: volume * share * inverse[phase] for phase, share in (("OIL", 1.0 - saturation), ("WAT", saturation))}, inverse


@needs_flow
def test_what_leaves_and_what_stays_in_the_cells_of_a_commercial_restart_balance(commercial, tmp_path):
    """Of the reference: what its fluxes take from a cell without a well is what the cell lost in the last step of that run, 28 days
    in which the field fills. Its summary tells the steps that it took; the cells at the start of the last one are those
    of flow on the same steps, which at the end has the cells of the file."""
    restart, static = (arrays(commercial.folder / f"ECLIPSE.{kind}") for kind in ("X0001", "INIT"))
    times = [float(values[0]) for keyword, values in blocks(commercial.folder / "ECLIPSE.S0001") if keyword == "PARAMS"]
    steps = numpy.diff(times)
    deck = re.sub(r"^TSTEP\b.*?/", "TSTEP\n" + " ".join(f"{step:.7g}" for step in steps) + " /",
                  public_deck("restart/2D_HOMO/ECLIPSE.DATA"), flags=re.M | re.S)
    status, printed = run_flow(tmp_path, deck, longest=100, options=["--enable-adaptive-time-stepping=false", "--tolerance-cnv=1e-7",
                                                                     "--tolerance-mb=1e-12", "--newton-max-iterations=40"])
    assert status == 0, printed[-3000:]
    start, end = (arrays(tmp_path / f"PEER.X{step:04d}") for step in (len(steps) - 1, len(steps)))
    assert end["PRESSURE"] == pytest.approx(restart["PRESSURE"], rel=1e-3)
    assert end["SWAT"] == pytest.approx(restart["SWAT"], abs=1e-3)
    porv = static["PORV"].astype(float)
    (before, _), (after, inverse) = (homo_amounts(*(cells[name].astype(float) for name in ("PRESSURE", "SWAT")), porv)
                                     for cells in (start, restart))
    assert inverse["OIL"] == pytest.approx(restart["1OVERBO"], rel=1e-6)
    assert inverse["WAT"] == pytest.approx(restart["1OVERBW"], rel=1e-6)
    for phase in ("OIL", "WAT"):
        fluxes = [restart[f"FLO{phase}{axis}+"].reshape(HOMO_CELLS).astype(float) for axis in "IJ"]
        leaving = net_outflow([*fluxes, numpy.zeros(HOMO_CELLS)]).ravel()
        stored = (after[phase] - before[phase]) / steps[-1]
        imbalance = numpy.abs(leaving + stored)[1:-1].max()
        print(f"{phase}: {imbalance:.5f} of {numpy.abs(leaving[1:-1]).max():.3f} stb/day, {imbalance / 603.03:.2e} of what is injected")
        assert imbalance < 1e-4 * 603.03


def test_the_well_rates_of_a_commercial_restart_are_taken(commercial):
    rows = {row.split()[0]: [float(word) for word in row.split()[1:3]] for row in commercial.console.splitlines()
            if re.match(r"(INJ|PRD) ", row) and "STB" not in row}
    assert rows["INJ"][1] == pytest.approx(603.03, abs=0.05)
    assert rows["PRD"] == pytest.approx([49.24, 24.77], abs=0.05)


def test_times_along_the_lines_of_a_commercial_restart_are_those_of_finite_volumes(commercial):
    restart, static = (arrays(commercial.folder / f"ECLIPSE.{kind}") for kind in ("X0001", "INIT"))
    factors = [1.0 / restart[name].reshape(HOMO_CELLS).astype(float) for name in ("1OVERBO", "1OVERBW")]
    fluxes = homo_fluxes(restart, factors)
    p = restart["PRESSURE"].reshape(HOMO_CELLS).astype(float)
    x = 3e-6 * (p - 4000.0)
    volume = static["PORV"].reshape(HOMO_CELLS).astype(float) * (1.0 + x + 0.5 * x * x)
    entering = numpy.zeros(HOMO_CELLS)
    entering[0, 0, 0] = net_outflow(fluxes)[0, 0, 0]
    fine, coarse = (part_times(fluxes, volume, entering, (m, m, 1)) for m in (40, 20))
    nodes = numpy.concatenate([line[1:-1] for line in line_nodes(commercial.folder / "Streamline_Time_100.plt")])
    difference = differences(nodes, [1050.0, 1050.0, 10.0], 5000.0, fine, coarse)
    assert difference.mean() < 0.03
    places = numpy.stack([nodes[:, 0] / 50.0, nodes[:, 1] / 50.0, numpy.full(len(nodes), 0.5)], axis=1)
    assert exact_differences(nodes, exact_times(fluxes, volume, places, (0, 0, 0))).mean() < 0.01


def test_wells_that_only_the_restart_knows_send_lines_and_take_them(tmp_path):
    """The deck without any well keyword: wells, rates and names of the commercial restart."""
    if not PUBLIC_DECKS.exists():
        pytest.skip("the public decks are not beside the checkout")
    for path in (PUBLIC_DECKS / "restart/2D_HOMO").iterdir():
        if path.suffix != ".DATA":
            (tmp_path / path.name).write_bytes(path.read_bytes())
    deck = public_deck("restart/2D_HOMO/ECLIPSE.DATA")
    deck = deck[:deck.index("WELSPECS")] + deck[deck.index("TSTEP"):]
    result = traced(tmp_path, deck, "true")
    assert "WARNING :: Welldata not read from Input - Overwrite from SUMMRY file" in result.console
    assert "Successed Streamline : 1000" in result.console
    assert by_pair(result).sum() == pytest.approx(463.1, rel=0.01)  # 603.03 stb/day at the 87966 psia of the injector's cell
    assert re.search(r"^INJ +0\.0 +603\.0", result.console, re.M)
    assert re.search(r"^PRD +49\.2 +24\.8", result.console, re.M)


@needs_decks
def test_a_run_on_the_transmissibilities_of_another_flows_as_without_them(tmp_path):
    """USEECLTR alone: model and restart 0 of the commercial simulator, in which nothing flows yet; the solver and the wells are
    ours."""
    deck = without_end(public_deck("restart/2D_HOMO/ECLIPSE.DATA"))
    rates = []
    for name, words in (("own", ""), ("other", "USEECLTR\nLINUXRUN\nECLCOMM\ntrue\n")):
        folder = tmp_path / name
        folder.mkdir()
        for path in (PUBLIC_DECKS / "restart/2D_HOMO").iterdir():
            if path.suffix != ".DATA":
                (folder / path.name).write_bytes(path.read_bytes())
        result = finished_normally(run(folder, deck + f"\nEND\nTUNEKVR\nFDMETHOD\nFIM\n{words}"))
        rates.append([float(result.table()[column][-1]) for column in ("WOPR:PRD", "WWPR:PRD")])
    print(rates)
    assert rates[1] == pytest.approx(rates[0], rel=0.01) and rates[0][0] > 1.0
