#include "pressure/cell_transport.hpp"

#include "base/constants.hpp"
#include "base/threads.hpp"
#include "fluid/saturation_functions.hpp"
#include "model/dual_porosity.hpp"
#include "pressure/flow_order.hpp"
#include "pressure/fraction_slopes.hpp"
#include "pressure/properties.hpp"
#include "pressure/tracer_transport.hpp"

#include <algorithm>
#include <cmath>

namespace kvr {

namespace {

/// Saturations, Rs and Pb from the amounts. A cell whose amounts are no numbers keeps its state.
void recoverCells(const RunOptions& options, const GridModel& grid, const FluidTables& tables,
                  const CellAmounts& amounts, CellState& state) {
#pragma omp parallel for schedule(static) if (grid.NCELLS >= ParallelCells)
    for (CellId c = 1; c <= grid.NCELLS; ++c) {
        if (grid.Active[c] == 0 || !(state.PoreVolume[c] > 0.0)) continue;
        const PhaseState found = stateOfAmounts(options, grid, tables, amounts, state, c);
        if (!std::isfinite(found.Sw + found.So + found.Sg + found.Rs + found.Pb)) continue;
        state.Sw[c] = found.Sw;
        state.So[c] = found.So;
        state.Sg[c] = found.Sg;
        state.Rs[c] = found.Rs;
        state.Pb[c] = found.Pb;
    }
}

/// The rates of wells become the means since the pressure step of what their connections gave and took.
void keepWellRates(double dt, const TransportAccount& account, WellMovement& moved, WellRecord& wells) {
    moved.days += dt;
    moved.amounts.resize(wells.wells.size());
    for (std::size_t w = 0; w < wells.wells.size(); ++w) {
        Well& well = wells.wells[w];
        moved.amounts[w].resize(well.connections.size());
        if (moved.days == dt) {
            well.solvedQo = well.WellQo;
            well.solvedQw = well.WellQw;
            well.solvedQg = well.WellQg;
        }
        well.WellQo = well.WellQw = well.WellQg = 0.0;
        for (std::size_t n = 0; n < well.connections.size(); ++n) {
            const ConservedAmounts& rate = account.wellRates[w][n];
            ConservedAmounts& sum = moved.amounts[w][n];
            sum.water += dt * rate.water;
            sum.oil += dt * rate.oil;
            sum.gas += dt * rate.gas;
            WellConnection& connection = well.connections[n];
            connection.ConnQw = sum.water / moved.days;
            connection.ConnQo = sum.oil / moved.days;
            connection.ConnQg = sum.gas / moved.days;
            well.WellQw += connection.ConnQw;
            well.WellQo += connection.ConnQo;
            well.WellQg += connection.ConnQg;
        }
    }
}

/// Where a transport of `dt` days has moved water.
WaterMovement waterMovement(double dt, const Simulation& s, const TransportAccount& account) {
    WaterMovement movement;
    for (CellId cell = 1; cell <= s.grid.NCELLS; ++cell)
        for (int axis = 1; axis <= account.passed.width; ++axis) {
            const int direction = directionOfAxis(axis);
            const CellId other = s.connections.Neighbour(cell, direction);
            const double volume = dt * account.passed(cell, axis).water;
            if (other <= 0 || !(volume > 0.0)) continue;
            const bool up = outflowThrough(s.connections, s.velocity.CellFaceFlux, cell, direction) > 0.0;
            movement.passages.push_back({up ? cell : other, up ? other : cell, volume});
        }
    for (CellId cell = 1; cell <= account.transferred.count(); ++cell) {
        const double volume = dt * account.transferred[cell].water;
        if (volume == 0.0) continue;
        const CellId matrix = partnerOf(s.grid, cell);
        movement.passages.push_back(
            {volume > 0.0 ? matrix : cell, volume > 0.0 ? cell : matrix, std::abs(volume)});
    }
    for (std::size_t w = 0; w < account.wellRates.size(); ++w)
        for (std::size_t n = 0; n < account.wellRates[w].size(); ++n)
            movement.wells.push_back(
                {w, s.wells.wells[w].connections[n].ConnCell, dt * account.wellRates[w][n].water});
    return movement;
}

/// Water that a transport has moved over the faces, for what gravity and capillarity do to it.
void keepWaterMoved(const Simulation& s, const TransportAccount& account, DirectionArray<double>& moved) {
    moved.assign(s.grid.NCELLS, account.passed.width, 0.0);
    for (CellId cell = 1; cell <= s.grid.NCELLS; ++cell)
        for (int axis = 1; axis <= account.passed.width; ++axis) {
            const CellId other = s.connections.Neighbour(cell, directionOfAxis(axis));
            const double flux = s.velocity.CellFaceFlux(cell, directionOfAxis(axis));
            if (other <= 0 || flux == 0.0) continue;
            const double volume = s.state.Bw[flux > 0.0 ? cell : other] * account.passed(cell, axis).water;
            moved(cell, axis) = flux > 0.0 ? volume : -volume;
        }
}

}  // namespace

bool gravityInTransport(const Simulation& s) {
    const RunOptions& options = s.options;
    return carriesAmounts(options) && options.lineGravity && !options.orthogonalProjection;
}

Buoyancy buoyancyOf(const Simulation& s) {
    Buoyancy buoyancy;
    buoyancy.acts = gravityInTransport(s);
    buoyancy.flowUnit = s.units.FlowUnit;
    buoyancy.gasCells = s.pressure.gasCells;
    if (!buoyancy.acts || !s.options.lineCapillary || !(s.fluids.PcowSpan > CapillarySpanLimit))
        return buoyancy;
    buoyancy.pcow.assign(s.grid.NCELLS, 0.0);
    for (CellId cell = 1; cell <= s.grid.NCELLS; ++cell)
        if (s.grid.Active[cell] != 0)
            buoyancy.pcow[cell] =
                s.grid.JFactor[cell] * PcowFn(s.fluids, s.state.Sw[cell], s.grid.SATNUM[cell]);
    return buoyancy;
}

MatrixTransfer transferOf(const Simulation& s) {
    return {s.units.FlowUnit, s.velocity.TransferFlux};
}

namespace {

/// Cells whose faces the exchange of phases serves by its own rules, in the transport and behind it.
void markGasCells(Simulation& s) {
    CellArray<std::uint8_t>& marks = s.pressure.gasCells;
    marks = {};
    if (!s.fluids.hasGas || !gravityInTransport(s)) return;
    marks.assign(s.grid.NCELLS, 0);
    for (CellId cell = 1; cell <= s.grid.NCELLS; ++cell)
        marks[cell] = s.state.Sg[cell] > SmallestFreeGas ? 1 : 0;
}

}  // namespace

PhaseState stateOfAmounts(const RunOptions& options, const GridModel& grid, const FluidTables& tables,
                          const CellAmounts& amounts, const CellState& state, CellId cell) {
    const double inverse = 1.0 / state.PoreVolume[cell];
    const ConservedAmounts held{amounts.water[cell] * inverse, amounts.oil[cell] * inverse,
                                amounts.gas[cell] * inverse};
    const bool keepEndPoints = options.keepIrreducibleSaturation;
    const double p = state.Pressure[cell];
    const SaturationTable& table = regionTable(tables, grid.SATNUM[cell]);
    if (tables.hasGas) return flashCell(pvtAt(tables, cell), table, keepEndPoints, p, state, cell, held);
    PhaseState found =
        recoverState(tables, table, keepEndPoints, {p, state.Bw[cell], state.Bo[cell], state.Bg[cell]}, held);
    found.Rs = state.Rs[cell];
    found.Pb = state.Pb[cell];
    return found;
}

void transportAmounts(const MakeUp& makeUp, bool tracers, Simulation& s) {
    const double dt = s.clock.workDt;
    markGasCells(s);
    CellAmounts amounts;
    measureWholeAmounts(s.grid, s.state, s.pressure.carried, amounts);
    const bool carries = tracers && s.state.tracer.width > 0;
    const CellArray<double> waterBefore = carries ? amounts.water : CellArray<double>{};
    TransportAccount account;
    advanceInOrder(dt, fractionSlopes(s.grid, s.fluids, s.state), s.grid, s.connections, s.fluids,
                   s.velocity.CellFaceFlux, s.wells, makeUp, buoyancyOf(s), s.state, amounts, account,
                   transferOf(s));
    s.pressure.deficit += account.deficit;
    keepWaterMoved(s, account, s.pressure.waterMoved);
    if (carries)
        moveTracers(waterMovement(dt, s, account), s.wells, s.fluids.tracerNames, waterBefore,
                    s.state.tracer);
    keepWellRates(dt, account, s.pressure.moved, s.wells);
    recoverCells(s.options, s.grid, s.fluids, amounts, s.state);
    refreshProperties(s.grid, s.fluids, s.state);
    measureCarried(s.grid, s.state, amounts, s.pressure.carried);
}

}  // namespace kvr
