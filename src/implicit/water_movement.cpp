#include "implicit/water_movement.hpp"

#include "fluid/saturation_functions.hpp"
#include "pressure/flow_coefficients.hpp"
#include "pressure/transfer_head.hpp"

#include <cmath>

namespace kvr {

namespace {

double waterHead(const GridModel& grid, const FluidTables& tables, const CellState& state, CellId cell) {
    const double share = shareAt(waterHeight(regionTable(tables, grid.SATNUM[cell])), state.Sw[cell]);
    return headOf(blockHeight(grid, cell), state.RhoW[cell], state.RhoO[cell], share);
}

}  // namespace

WaterMovement implicitWaterMovement(double dt, const GridModel& grid, const FluidTables& tables,
                                    const CellState& state, const WellRecord& wells,
                                    const ImplicitWork& work) {
    WaterMovement movement;
    for (const ImplicitConnection& connection : work.connections) {
        const CellId a = work.cellOfRow[static_cast<std::size_t>(connection.first)];
        const CellId b = work.cellOfRow[static_cast<std::size_t>(connection.second)];
        double phi = phasePotential(state.PressureW[a], state.PressureW[b], state.RhoW[a], state.RhoW[b],
                                    connection.g);
        if (connection.isTransfer && grid.dual.gravityDrainage)
            phi += waterHead(grid, tables, state, b) - waterHead(grid, tables, state, a);
        const CellId up = phi > 0.0 ? b : a;
        const double volume = dt * connection.trans * state.LambdaW[up] / state.Bw[up] * std::abs(phi);
        if (volume > 0.0) movement.passages.push_back({up, up == a ? b : a, volume});
    }
    for (std::size_t w = 0; w < wells.wells.size(); ++w)
        for (const WellConnection& connection : wells.wells[w].connections)
            movement.wells.push_back({w, connection.ConnCell, dt * connection.ConnQw});
    return movement;
}

}  // namespace kvr
