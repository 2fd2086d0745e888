#include "fluid/equilibrium.hpp"

#include "base/constants.hpp"
#include "base/hard_stop.hpp"
#include "base/messages.hpp"
#include "fluid/black_oil.hpp"
#include "fluid/depth_table.hpp"
#include "fluid/state_recovery.hpp"
#include "fluid/table_lookup.hpp"

#include <algorithm>
#include <array>

namespace kvr {

namespace {

constexpr CellId LeastIterativeCells = 27;  // fewer unknowns go to the direct solver

/// A saturation as a function of capillary pressure: both columns ordered so that the pressure rises.
struct CapillaryInverse {
    Column pressure;    // psi
    Column saturation;  // at that pressure
};

/// The two curves of a saturation region.
struct RegionInverse {
    CapillaryInverse water;
    CapillaryInverse gas;
};

struct PhasePressures {
    double oil = 0.0, water = 0.0, gas = 0.0;  // psia
};

RegionInverse invert(const SaturationTable& table) {
    RegionInverse inverse;
    inverse.water.pressure.assign(table.Pcow.rbegin(), table.Pcow.rend());
    inverse.water.saturation.assign(table.SwAxis.rbegin(), table.SwAxis.rend());
    inverse.gas.pressure = table.Pcog;
    inverse.gas.saturation = table.SgAxis;
    return inverse;
}

/// Beyond the curve its end saturation stands.
double saturationAt(const CapillaryInverse& curve, double capillaryPressure) {
    if (capillaryPressure <= curve.pressure.front()) return curve.saturation.front();
    if (capillaryPressure >= curve.pressure.back()) return curve.saturation.back();
    return TableLookup(curve.pressure, curve.saturation, 1, 1, static_cast<int>(curve.pressure.size()),
                       capillaryPressure);
}

PhasePressures pressuresAt(const InitDepthTable& rows, double depth) {
    const TablePlace place = findPlace(rows.Depth, 1, static_cast<int>(rows.Depth.size()), depth);
    return {valueAt(rows.PressureO, place), valueAt(rows.PressureW, place), valueAt(rows.PressureG, place)};
}

/// What one cell sees: its table, the factor of its capillary pressures (0: none), and the columns.
struct CellView {
    const SaturationTable& table;
    const RegionInverse& inverse;
    double pcowFactor = 0.0;
    double pcogFactor = 0.0;
    double depth = 0.0;  // ft
    PhasePressures columns;
};

/// Sw by its capillary curve, or without one by the contact: all water below, connate above.
double waterSaturation(const CellView& cell, const InitDepthTable& rows) {
    if (cell.pcowFactor > 0.0)
        return saturationAt(cell.inverse.water, (cell.columns.oil - cell.columns.water) / cell.pcowFactor);
    return cell.depth > rows.WocDepth ? cell.table.SwAxis.back() : cell.table.ConnateSw;
}

/// Sg by its capillary curve, or without one by the contact: all but connate water above, none below.
double gasSaturation(const CellView& cell, const InitDepthTable& rows) {
    if (cell.pcogFactor > 0.0)
        return saturationAt(cell.inverse.gas, (cell.columns.gas - cell.columns.oil) / cell.pcogFactor);
    return cell.depth < rows.GocDepth ? 1.0 - cell.table.ConnateSw : 0.0;
}

/// Oil pressure of the cell: the oil column. Where the capillary pressure has run out of its curve oil no
/// longer moves, and the column of the water or gas that does must stay in balance instead.
double cellPressure(const CellView& cell) {
    const double leastPcow = cell.pcowFactor * cell.table.Pcow.back();
    const double mostPcog = cell.pcogFactor * cell.table.Pcog.back();
    const PhasePressures& p = cell.columns;
    if (p.oil - p.water < leastPcow) return p.water + leastPcow;
    if (p.gas - p.oil > mostPcog) return p.gas - mostPcog;
    return p.oil;
}

/// Saturations and oil pressure that stand at one depth, or on the mean over a cell.
struct DepthState {
    double Sw = 0.0, Sg = 0.0;
    double pressure = 0.0;  // psia
};

/// Capillary pressure of a curve by saturation, psi, scaled by the cell's factor; beyond the curve its ends.
double capillaryAt(const Column& axis, const Column& capillary, double factor, double saturation) {
    if (factor <= 0.0) return 0.0;
    const double within = std::clamp(saturation, axis.front(), axis.back());
    return factor * TableLookup(axis, capillary, 1, 1, static_cast<int>(axis.size()), within);
}

/// Where the transition zones of gas and water meet no oil is left: water has the saturation at which both
/// capillary pressures together balance gas against water, and gas has the rest. Bisection: both curves fall
/// with the water saturation.
DepthState gasOverWater(const CellView& cell) {
    constexpr int Halvings = 60;
    const SaturationTable& table = cell.table;
    const double pull = cell.columns.gas - cell.columns.water;
    const auto gasPull = [&](double sw) {
        return capillaryAt(table.SgAxis, table.Pcog, cell.pcogFactor, 1.0 - sw);
    };
    double low = table.SwAxis.front(), high = table.SwAxis.back();
    for (int n = 0; n < Halvings; ++n) {
        const double sw = 0.5 * (low + high);
        const double held = capillaryAt(table.SwAxis, table.Pcow, cell.pcowFactor, sw) + gasPull(sw);
        (held > pull ? low : high) = sw;
    }
    const double sw = 0.5 * (low + high);
    return {sw, 1.0 - sw, cell.columns.gas - gasPull(sw)};
}

DepthState stateAt(const CellView& cell, const InitDepthTable& rows, bool hasGas) {
    const DepthState found = {waterSaturation(cell, rows), hasGas ? gasSaturation(cell, rows) : 0.0,
                              cellPressure(cell)};
    constexpr double Slack = 1e-9;  // of saturations: rounding of tables that end at one another
    const bool overlap = found.Sw + found.Sg > 1.0 + Slack && cell.pcowFactor > 0.0;
    return overlap ? gasOverWater(cell) : found;
}

bool sameFluids(const DepthState& a, const DepthState& b) {
    return a.Sw == b.Sw && a.Sg == b.Sg;
}

/// All that the saturation of a phase can change, lies between the top and the bottom of a cell.
bool holdsWholeTransition(const CellView& cell, const DepthState& top, const DepthState& bottom) {
    constexpr double AllOfIt = 1.0 - 1e-6;
    const SaturationTable& table = cell.table;
    const double least = cell.pcowFactor > 0.0 ? table.SwAxis.front() : table.ConnateSw;
    const double mostGas = cell.pcogFactor > 0.0 ? table.SgAxis.back() : 1.0 - table.ConnateSw;
    return bottom.Sw - top.Sw >= AllOfIt * (table.SwAxis.back() - least) ||
           top.Sg - bottom.Sg >= AllOfIt * mostGas;
}

/// The state of a cell between two depths: that of its centre, or the mean over level slices of equal height,
/// each at its middle.
DepthState meanState(CellView cell, const InitDepthTable& rows, bool hasGas, std::array<double, 2> depths,
                     CellSlices slices) {
    const auto at = [&](double depth) {
        cell.depth = depth;
        cell.columns = pressuresAt(rows, depth);
        return stateAt(cell, rows, hasGas);
    };
    const DepthState centre = at(cell.depth);
    if (slices.count == 0) return centre;
    const DepthState top = at(depths[0]), bottom = at(depths[1]);
    if (sameFluids(top, centre) && sameFluids(bottom, centre)) return centre;
    if (!slices.always && !holdsWholeTransition(cell, top, bottom)) return centre;
    DepthState mean;
    const double height = (depths[1] - depths[0]) / slices.count;
    for (int slice = 0; slice < slices.count; ++slice) {
        const DepthState part = at(depths[0] + (slice + 0.5) * height);
        mean.Sw += part.Sw / slices.count;
        mean.Sg += part.Sg / slices.count;
        mean.pressure += part.pressure / slices.count;
    }
    return mean;
}

/// Shallowest and deepest corner of a cell, ft.
std::array<double, 2> depthRange(const GridModel& grid, CellId cell) {
    std::array<double, 2> range = {cornerOf(grid, cell, 1)[2], cornerOf(grid, cell, 1)[2]};
    for (int corner = 2; corner <= 8; ++corner) {
        const double depth = cornerOf(grid, cell, corner)[2];
        range = {std::min(range[0], depth), std::max(range[1], depth)};
    }
    return range;
}

/// Cells whose oil cannot hold the gas that the deck gives it.
struct ExcessGas {
    int cells = 0;
    CellId first = 0;
    double given = 0.0, held = 0.0;  // Rs of the first one
};

void noteExcess(double given, double held, CellId cell, ExcessGas& excess) {
    constexpr double Slack = 1e-3;  // relative; of numbers with a few digits
    if (!(given > held * (1.0 + Slack) + MachineEpsilon)) return;
    if (++excess.cells > 1) return;
    excess.first = cell;
    excess.given = given;
    excess.held = held;
}

void tellExcess(const Console& console, const GridModel& grid, const ExcessGas& excess) {
    if (excess.cells == 0) return;
    warn(console,
         "WARNING :: RS OF {} CELLS IS MORE THAN THEIR OIL HOLDS, THE EXCESS IS LEFT OUT; FIRST: CELL {} "
         "(I {}, J {}, K {}), {} OF {} MSCF/STB",
         excess.cells, excess.first, grid.CellI[excess.first], grid.CellJ[excess.first],
         grid.CellK[excess.first], number(excess.held * GasRatioFactor),
         number(excess.given * GasRatioFactor));
}

/// Limits, scaling and the gas in solution: saturated where free gas stands, otherwise by `pb`.
void finishCell(const FluidTables& tables, const SaturationTable& table, bool keepEndPoints, double pb,
                double pressure, PhaseState& cell) {
    limitSaturations(table, keepEndPoints, cell);
    const bool freeGas = tables.hasGas && tables.MaxRs > 0.0 && cell.Sg > MachineEpsilon;
    cell.Pb = freeGas ? pressure : std::min(pb, pressure);
    cell.Rs = SolutionRs(tables, cell.Pb);
}

void storeCell(const PhaseState& from, double pressure, CellId cell, CellState& state) {
    state.Pressure[cell] = pressure;
    storePhases(from, cell, state);
}

/// Equilibrium region of a cell, 1-based.
int equilibriumOf(const GridModel& grid, CellId cell) {
    return grid.EQLNUM.empty() ? 1 : grid.EQLNUM[cell];
}

/// The columns of every equilibrium region that has cells, with the fluids of its first one.
std::vector<InitDepthTable> depthTables(const Console& console, const GridModel& grid,
                                        const FluidTables& tables, const InitialConditions& initial,
                                        bool hasWater) {
    std::vector<InitDepthTable> columns(initial.regions.size());
    for (CellId cell = 1; cell <= grid.NCELLS; ++cell) {
        if (grid.Active[cell] == 0) continue;
        const auto region = static_cast<std::size_t>(equilibriumOf(grid, cell)) - 1;
        if (columns[region].Depth.empty())
            columns[region] =
                buildDepthTable(console, grid, pvtAt(tables, cell), initial.regions[region], hasWater);
    }
    return columns;
}

void initialiseByDepth(const Console& console, const GridModel& grid, const FluidTables& tables,
                       const InitialConditions& initial, const RunOptions& options, CellState& state) {
    const std::vector<InitDepthTable> columns = depthTables(console, grid, tables, initial, options.hasWater);
    std::vector<RegionInverse> inverses;
    for (const SaturationTable& table : tables.regions) inverses.push_back(invert(table));
    ExcessGas excess;
    for (CellId cell = 1; cell <= grid.NCELLS; ++cell) {
        if (grid.Active[cell] == 0) continue;
        const InitDepthTable& rows = columns[static_cast<std::size_t>(equilibriumOf(grid, cell)) - 1];
        const FluidTables& fluids = pvtAt(tables, cell);
        const int region = grid.SATNUM[cell];
        const double depth = grid.CellCentre(cell, 3);
        const Equilibrium& record = initial.regions[static_cast<std::size_t>(equilibriumOf(grid, cell)) - 1];
        const CellView view{
            regionTable(tables, region),
            inverses[static_cast<std::size_t>(region) - 1],
            options.hasWater && tables.PcowSpan > CapillarySpanLimit ? grid.JFactor[cell] : 0.0,
            tables.hasGas && tables.PcogSpan > CapillarySpanLimit ? grid.JFactor[cell] : 0.0,
            depth,
            {}};
        const DepthState mean = meanState(view, rows, tables.hasGas, depthRange(grid, cell), record.slices);
        PhaseState found;
        found.Sw = mean.Sw;
        found.Sg = mean.Sg;
        found.So = 1.0 - found.Sw - found.Sg;
        const double pressure = mean.pressure;
        finishCell(fluids, view.table, options.keepIrreducibleSaturation,
                   bubblePointAtDepth(fluids, rows, depth, pressure), pressure, found);
        storeCell(found, pressure, cell, state);
        if (record.rsTableDepth.empty() || found.So <= MachineEpsilon) continue;
        noteExcess(rsAtDepth(rows, depth), found.Rs, cell, excess);
    }
    tellExcess(console, grid, excess);
}

/// A value of an array of the deck, 0 where the array was not given.
double given(const CellArray<double>& values, CellId cell) {
    return values.empty() ? 0.0 : values[cell];
}

/// The three saturations from those that were given; what is not given is the rest.
PhaseState givenSaturations(const InitialConditions& initial, CellId cell) {
    PhaseState found;
    found.Sg = given(initial.initialSgas, cell);
    found.So = given(initial.initialSoil, cell);
    found.Sw = initial.swatGiven || !initial.soilGiven ? given(initial.initialSwat, cell)
                                                       : std::max(0.0, 1.0 - found.So - found.Sg);
    if (!initial.soilGiven) found.So = std::max(0.0, 1.0 - found.Sw - found.Sg);
    return found;
}

/// The region whose RSVD serves a cell of a state given by arrays; where the deck has none for it, region 1.
const Equilibrium& rsRegionOf(const GridModel& grid, const InitialConditions& initial, CellId cell) {
    const auto place = static_cast<std::size_t>(std::max(equilibriumOf(grid, cell), 1)) - 1;
    return initial.regions[place < initial.regions.size() ? place : 0];
}

void initialiseByArrays(const Console& console, const GridModel& grid, const FluidTables& tables,
                        const InitialConditions& initial, const RunOptions& options, CellState& state) {
    ExcessGas excess;
    for (CellId cell = 1; cell <= grid.NCELLS; ++cell) {
        if (grid.Active[cell] == 0) continue;
        const double pressure = given(initial.initialPressure, cell);
        const FluidTables& fluids = pvtAt(tables, cell);
        const Equilibrium& region = rsRegionOf(grid, initial, cell);
        const int rsRows = static_cast<int>(region.rsTableDepth.size());
        double rs = given(initial.initialRs, cell);
        if (!initial.rsGiven && rsRows > 0)
            rs = TableLookup(region.rsTableDepth, region.rsTableRs, 1, 1, rsRows, grid.CellCentre(cell, 3));
        PhaseState found = givenSaturations(initial, cell);
        finishCell(fluids, regionTable(tables, grid.SATNUM[cell]), options.keepIrreducibleSaturation,
                   BubblePoint(fluids, rs), pressure, found);
        storeCell(found, pressure, cell, state);
        if (found.So > MachineEpsilon) noteExcess(rs, found.Rs, cell, excess);
    }
    tellExcess(console, grid, excess);
}

/// Every active cell has a record of EQUIL and saturation tables: what follows indexes them unasked. Cells
/// whose state arrays give need no record.
void requireRegions(const Console& console, const GridModel& grid, const FluidTables& tables,
                    const InitialConditions& initial) {
    const auto hasRecord = [&initial](int region) {
        return region >= 1 && static_cast<std::size_t>(region) <= initial.regions.size() &&
               initial.regions[static_cast<std::size_t>(region) - 1].isGiven;
    };
    const auto refuse = [&](std::string_view what, int number, std::string_view keyword, CellId cell) {
        both(console, "ERROR :: NO {} {} FOR {}, GRID {} (I {}, J {}, K {})", what, number, keyword, cell,
             grid.CellI[cell], grid.CellJ[cell], grid.CellK[cell]);
        hardStop(console);
    };
    const int regions = static_cast<int>(tables.regions.size());
    for (CellId cell = 1; cell <= grid.NCELLS; ++cell) {
        if (grid.Active[cell] == 0) continue;
        const int equilibrium = equilibriumOf(grid, cell), saturation = grid.SATNUM[cell];
        if (initial.equilibrationMode && !hasRecord(equilibrium))
            refuse("EQUIL RECORD", equilibrium, "EQLNUM", cell);
        if (saturation < 1 || saturation > regions) refuse("SATURATION TABLE", saturation, "SATNUM", cell);
    }
}

/// Where neither water nor gas is there is oil, whatever phases the deck names.
void tellOilOfNoPhase(const Console& console, const GridModel& grid, const RunOptions& options,
                      const CellState& state) {
    constexpr double LeastOil = 1e-6;  // saturation
    if (options.hasOil) return;
    CellId first = 0;
    int count = 0;
    for (CellId cell = 1; cell <= grid.NCELLS; ++cell) {
        if (grid.Active[cell] == 0 || !(state.So[cell] > LeastOil)) continue;
        if (count++ == 0) first = cell;
    }
    if (count > 0)
        warn(console, "WARNING :: THE RUN HAS NO OIL, BUT {} CELLS START WITH IT; FIRST: GRID {}, {}", count,
             first, number(state.So[first]));
}

void chooseDirectSolver(const Console& console, const GridModel& grid, RunOptions& options) {
    if (grid.NCELLS >= LeastIterativeCells) return;
    both(console, "WARNING :: Due to small small number of unknown, direct solver(DGESV) is used");
    options.pressureSolver = "dgesv";
}

}  // namespace

void initialiseBlackOil(const Console& console, const GridModel& grid, const FluidTables& tables,
                        const InitialConditions& initial, RunOptions& options, CellState& state) {
    log(console, "INITIALIZING...");
    screen(console, "Initializing...");
    if (initial.equilibrationMode) {
        log(console, "INITIALIZE: PC-DENSITY-OWC/GOC, ACCORDINGLY");
        screen(console, "Initialize: Pc-Density-OWC/GOC, Accordingly");
    } else {
        log(console, "INITIALIZE: EXPLICITLY ASSIGNED BY INPUT DATA");
        screen(console, "Initialize: Explicitly Assigned By Input Data");
    }
    requireRegions(console, grid, tables, initial);
    chooseDirectSolver(console, grid, options);
    if (initial.equilibrationMode)
        initialiseByDepth(console, grid, tables, initial, options, state);
    else
        initialiseByArrays(console, grid, tables, initial, options, state);
    tellOilOfNoPhase(console, grid, options, state);
}

void releaseInitialArrays(InitialConditions& initial) {
    for (CellArray<double>* values : {&initial.initialPressure, &initial.initialSwat, &initial.initialSgas,
                                      &initial.initialSoil, &initial.initialRs})
        *values = {};
    initial.initialZ = {};
}

}  // namespace kvr
