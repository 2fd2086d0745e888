#pragma once

#include "base/console.hpp"
#include "model/connections.hpp"
#include "pressure/records/velocity_field.hpp"
#include "streamline/tracing/streamline_record.hpp"

namespace kvr {

/// Faces through which the flow leaves each cell, forward and with the flow reversed. Where the flow
/// enters an axis from both sides both flags of that axis are cleared. Speaks the number of cells without
/// any forward flag after "Total Stagnant Block :".
void prepareExitFlags(const Console& console, const ConnectionTable& connections,
                      const VelocityField& velocity, ExitFlags& flags);

/// Bits (face - 1) of the faces by which `flux` leaves a cell with these neighbours, all fluxes times
/// `direction` (1 or -1).
std::uint8_t exitFaces(const double* flux, const CellId* neighbour, double direction);

}  // namespace kvr
