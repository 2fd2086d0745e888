#include "fluid/equilibrium.hpp"

#include "base/constants.hpp"
#include "base/hard_stop.hpp"
#include "base/messages.hpp"
#include "fluid/black_oil.hpp"
#include "fluid/column_state.hpp"
#include "fluid/depth_table.hpp"
#include "fluid/state_recovery.hpp"
#include "fluid/table_lookup.hpp"

#include <algorithm>
#include <array>

namespace kvr {

namespace {

constexpr CellId LeastIterativeCells = 27;  // fewer unknowns go to the direct solver

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

void initialiseByDepth(const Console& console, const GridModel& grid, const FluidTables& tables,
                       const InitialConditions& initial, const RunOptions& options, CellState& state) {
    const std::vector<InitDepthTable> columns =
        equilibriumColumns(console, grid, tables, initial, options.hasWater);
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

}  // namespace

std::vector<InitDepthTable> equilibriumColumns(const Console& console, const GridModel& grid,
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

void chooseDirectSolver(const Console& console, const GridModel& grid, RunOptions& options) {
    if (grid.NCELLS >= LeastIterativeCells) return;
    both(console, "WARNING :: Due to small small number of unknown, direct solver(DGESV) is used");
    options.pressureSolver = "dgesv";
}

void tellInitialBranch(const Console& console, bool byDepth) {
    if (byDepth) {
        log(console, "INITIALIZE: PC-DENSITY-OWC/GOC, ACCORDINGLY");
        screen(console, "Initialize: Pc-Density-OWC/GOC, Accordingly");
    } else {
        log(console, "INITIALIZE: EXPLICITLY ASSIGNED BY INPUT DATA");
        screen(console, "Initialize: Explicitly Assigned By Input Data");
    }
}

void initialiseBlackOil(const Console& console, const GridModel& grid, const FluidTables& tables,
                        const InitialConditions& initial, RunOptions& options, CellState& state) {
    log(console, "INITIALIZING...");
    screen(console, "Initializing...");
    tellInitialBranch(console, initial.equilibrationMode);
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
