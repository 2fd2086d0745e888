#pragma once

#include "run/records/simulation.hpp"

namespace kvr {

/// What moves amounts over one step beside the upstream transport through faces.
struct CellTransport {
    const DirectionArray<double>* flux = nullptr;  // (cell, face 1..6) total flow, sign as CellFaceFlux
    CellAmounts rates;                             // surface amounts a day into every cell by other ways
    bool wellsLimit = false;  // well rates count in the throughput that limits the sub-steps
};

/// Explicit upstream transport of `amounts` (what the cells hold) over clock.workDt: every cell takes
/// dt * (flow in through its faces, with the fractional flow, volume factors and Rs of the cell that it
/// comes from) + dt * rates. No gravity or capillary term, the splitting stage has them. Sub-steps of
/// CFL number / (largest throughput per pore volume * steepest rise of the fractional flow), not below the
/// floor of the CFL option. The state of a cell is recovered from its amounts after each; what a well has
/// taken beyond the content of its cell stays owed. Leaves saturations, Rs, bubble points and properties,
/// and what saturations do not show in PressureStage::carried. Mobilities and volume factors are to be up
/// to date.
void transportAmounts(const CellTransport& transport, CellAmounts& amounts, Simulation& simulation);

/// Adds the rates of every well connection to the cells' rates.
void addWellRates(const WellRecord& wells, CellAmounts& rates);

}  // namespace kvr
