#pragma once

#include "fluid/tables.hpp"
#include "model/connections.hpp"
#include "model/grid.hpp"
#include "pressure/records/cell_state.hpp"
#include "pressure/wells/wells.hpp"

namespace kvr {

/// Hydrostatic head of every connection, psi over the bottom-hole pressure. A well without a datum depth has
/// its bottom-hole pressure at its first connection; one with it has the weight of its own fluid between the
/// datum and the first connection there. From connection to connection it goes down the list, with the fluids
/// of their cells. An injector's fluid is the phase that it injects, in cells with its phase's density there;
/// a producer's is what the cell lets through.
void WellHead(const GridModel& grid, const ConnectionTable& connections, const FluidTables& tables,
              const CellState& state, WellRecord& wells);

/// Density lb/ft3 in the bore at p psia: of the injected phase, or of all that a producer gives (by its
/// connection rates; where there are none yet, by what its cells would let through at one drawdown). With
/// surface rates q, gas beyond what the oil dissolves at p free:
///   (qw rho_w + qo rho_o + qg rho_g) / (qw Bw + qo Bo(Rs) + (qg - Rs qo) Bg),  Rs = min(Rs(p), qg/qo)
double boreMixtureDensity(const FluidTables& tables, const CellState& state, const Well& well, double p);

/// Head between the datum and the first connection, psi; 0 without a datum.
double datumHead(const Well& well);

}  // namespace kvr
