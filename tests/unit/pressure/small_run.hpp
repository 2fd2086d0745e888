#pragma once

#include "fluid/black_oil.hpp"
#include "model/conditioning.hpp"
#include "pressure/pressure_step.hpp"
#include "pressure/properties.hpp"
#include "pressure/velocity.hpp"
#include "pressure/wells/well_controls.hpp"
#include "run/records/simulation.hpp"
#include "unit/fluid/table_samples.hpp"
#include "unit/model/small_grids.hpp"

#include <cmath>
#include <string>

namespace kvr::sample {

/// Water and dead oil of constant factors, viscosities 0.5 and 2 cp; rock of the given compressibility
/// about 3000 psia.
inline FluidTables waterAndOil(double rockCompressibility) {
    FluidTables tables = samples::constantFluids();
    tables.oilDensity = 50.0;
    tables.waterDensity = 62.4;
    tables.gasDensity = 0.11;
    tables.rockCompressibility = rockCompressibility;
    tables.regions.push_back(samples::fourRowRegion());
    finishTables(tables);
    return tables;
}

/// Blocks of 100 x 100 x 20 ft with porosity 0.2 and 100 md at 3000 psia, Sw 0.2 and So 0.8, no wells; the
/// dense solver, nothing printed. Silent console: set s.console to read what a step says.
inline void makeRun(int nx, int ny, int nz, const FluidTables& tables, Simulation& s) {
    s.console = Console{nullptr, nullptr, nullptr};
    s.options.useNewtran = false;
    s.options.pressureSolver = "dgesv";
    s.options.PressureTolerance = 0.01;
    s.options.MaxPressureIterations = 30;
    s.options.cfl = 0.8;
    s.options.minCflStep = 0.01;
    s.grid = uniformBlocks(nx, ny, nz, 100.0, 100.0, 20.0);
    CALCTRANS_STATICGEOPART(s.console, s.options, s.units, s.grid, s.connections);
    s.fluids = tables;
    allocateCellState(s.grid.NCELLS, 0, s.state);
    for (CellId c = 1; c <= s.grid.NCELLS; ++c) {
        s.state.Pressure[c] = 3000.0;
        s.state.Sw[c] = 0.2;
        s.state.So[c] = 0.8;
    }
    AllocateVelocity(s.console, s.grid.NCELLS, FaceCount, true, s.velocity);
    s.clock.dt = s.clock.workDt = 1.0;
    s.clock.stepCount = 1;
}

/// Adds a vertical well of one connection, radius 0.25 ft. A rate well takes its target, a "bhp" well its
/// limit.
inline void addWell(const std::string& kind, const std::string& control, double target, double limit,
                    CellId cell, Simulation& s) {
    Well well;
    well.WellName = kind == "inj" ? "INJ" : "PROD";
    well.WellKind = kind;
    well.WellControl = well.deckControl = control;
    if (kind == "inj") well.InjectFluid = "wat";
    well.TargetRate = target;
    well.BhpLimit = limit;
    WellConnection connection;
    connection.ConnCell = cell;
    connection.completion = 1;
    connection.WellRadius = 0.25;
    well.connections.push_back(connection);
    s.wells.wells.push_back(well);
    if (control != "bhp") ++s.wells.RateWellCount;
    computeWellIndices(s.grid, s.wells);
}

/// Three cells of light oil a little above its bubble point, with a producer in the first that frees gas.
inline void makeDepletingRow(Simulation& s) {
    makeRun(3, 1, 1, samples::lightOil(), s);
    s.options.method = "IMPES";
    for (CellId c = 1; c <= 3; ++c) {
        s.state.Pressure[c] = 4200.0;
        s.state.Pb[c] = 4014.7;
        s.state.Rs[c] = SolutionRs(s.fluids, 4014.7);
    }
    addWell("prd", "orat", -150.0, 500.0, 1, s);
    refreshProperties(s.grid, s.fluids, s.state);
}

/// Pressures of one column of cells under the weight of their oil, from the top cell downward.
inline void hydrostaticColumn(double topPressure, Simulation& s) {
    s.state.Pressure[1] = topPressure;
    for (CellId c = 1; c < s.grid.NCELLS; ++c) {
        double below = s.state.Pressure[c];
        const double feet = s.connections.DepthDiff(c, 6);
        for (int pass = 0; pass < 60; ++pass) {
            s.state.Pressure[c + 1] = below;
            refreshProperties(s.grid, s.fluids, s.state);
            below = s.state.Pressure[c] + 0.5 * (s.state.RhoO[c] + s.state.RhoO[c + 1]) * feet / 144.0;
        }
        s.state.Pressure[c + 1] = below;
    }
}

}  // namespace kvr::sample
