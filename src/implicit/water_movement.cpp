#include "implicit/water_movement.hpp"

#include "pressure/flow_coefficients.hpp"

#include <cmath>

namespace kvr {

WaterMovement implicitWaterMovement(double dt, const CellState& state, const WellRecord& wells,
                                    const ImplicitWork& work) {
    WaterMovement movement;
    for (const ImplicitConnection& connection : work.connections) {
        const CellId a = work.cellOfRow[static_cast<std::size_t>(connection.first)];
        const CellId b = work.cellOfRow[static_cast<std::size_t>(connection.second)];
        const double phi = phasePotential(state.PressureW[a], state.PressureW[b], state.RhoW[a],
                                          state.RhoW[b], connection.g);
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
