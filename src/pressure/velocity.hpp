#pragma once

#include "base/console.hpp"
#include "base/units.hpp"
#include "deck/options.hpp"
#include "model/connections.hpp"
#include "model/grid.hpp"
#include "pressure/records/cell_state.hpp"
#include "pressure/records/upstream_sides.hpp"
#include "pressure/records/velocity_field.hpp"
#include "pressure/wells/wells.hpp"

namespace kvr {

/// Tracing in boxes and the orthogonal projection need velocities beside fluxes.
bool needsFaceVelocity(const RunOptions& options);

/// Sizes the velocity field, fluxes by `directions` of each cell, with velocities where they are asked for;
/// "Error :: Allocation of velocity, flow and its gradient" and a stop when memory is short.
void AllocateVelocity(const Console& console, CellId count, int directions, bool faceVelocity,
                      VelocityField& velocity);

/// Fluxes of the phases through one face of a cell, rb/day.
struct PhaseFlux {
    double oil = 0.0, water = 0.0, gas = 0.0;
};
PhaseFlux phaseFluxThroughFace(double flowUnit, const ConnectionTable& connections, const CellState& state,
                               CellId cell, int face);

/// The fluxes of the phases that make up `total` through one face:
///   q_p = lambda_p / sum lambda (q + T sum_j lambda_j (u_p - u_j)),
/// u_p what drives a phase, each mobility from the side that its phase then comes from (Brenier and Jaffre
/// 1991). A phase that stands still on the side that it would come from does not flow.
PhaseFlux phaseSharesThroughFace(double flowUnit, const ConnectionTable& connections, const CellState& state,
                                 CellId cell, int face, double total);

/// Velocities of the fluxes that stand in the field, where it has room for them: flux * VolumeFactor / area.
void velocitiesOfFluxes(const RunOptions& options, const UnitSystem& units, const GridModel& grid,
                        const ConnectionTable& connections, VelocityField& velocity);

/// Total flux from the phase pressures, and velocity where the field has room for it. Phases come from the
/// sides that the pressure was solved with, so that the fluxes are those of its balance; where `sides` is
/// empty, from those of the present potentials.
void BuildVelocityFromPressure(const RunOptions& options, const UnitSystem& units, const GridModel& grid,
                               const ConnectionTable& connections, const CellState& state,
                               const UpstreamSides& sides, VelocityField& velocity);

/// Reservoir rates of connections and wells for launching, from the converged field.
void UpdateWellVelocity(const UnitSystem& units, const CellState& state, WellRecord& wells);

}  // namespace kvr
