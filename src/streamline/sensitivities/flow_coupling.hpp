#pragma once

#include "model/connections.hpp"
#include "model/grid.hpp"
#include "pressure/records/cell_state.hpp"
#include "pressure/records/pressure_work.hpp"
#include "pressure/records/velocity_field.hpp"
#include "pressure/wells/wells.hpp"

#include <string_view>
#include <vector>

namespace kvr {

/// What a change of ln k of one cell does to all fluxes and bottom-hole pressures: pressures answer it over
/// the whole field. With the pressure system A dP = dR of the step, dR the residuals that a change of
/// transmissibilities and well indices leaves, any J with dJ = r . dP + (direct part) has
///   dJ / d ln k = psi . dR / d ln k + (direct part),   A' psi = r:
/// one solve with the matrix of the step for one J. The matrix stands for its transpose, from which it
/// differs by compressibility and by the phases of wells with several connections. Storage is spread over
/// `elapsed` days, since the change of permeability has been there from the start of the run.
struct FlowCoupling {
    const GridModel& grid;
    const ConnectionTable& connections;
    const VelocityField& velocity;
    const CellState& state;
    const WellRecord& wells;
    PressureMatrix& matrix;  // of the last solve; as it was behind every call
    PressureSolver& solver;
    std::string_view solverWord;
    double elapsed = 0.0;  // days since the start of the run
    double step = 0.0;     // days, that the matrix was made for
};

/// `row`: what a relative change of the speed in each cell does, the rest of the field being held; becomes
/// what a change of ln k does. False, and the row as it was, where the system was not solved.
bool coupleSpeeds(const FlowCoupling& flow, CellArray<double>& row);

/// psi of bottom-hole pressure of a rate well per unit of ln k of each cell; zeros for "bhp" wells. False
/// where the system was not solved.
bool pressureOfWell(const FlowCoupling& flow, std::size_t well, CellArray<double>& row);

}  // namespace kvr
