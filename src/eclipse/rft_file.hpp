#pragma once

#include "base/console.hpp"
#include "deck/options.hpp"
#include "eclipse/output_record.hpp"
#include "model/grid.hpp"
#include "pressure/records/cell_state.hpp"
#include "pressure/wells/wells.hpp"
#include "run/records/clock.hpp"

namespace kvr {

/// Adds the cells of every well's completions to the .RFT file: place, depth (ft), pressure (psia),
/// saturations. The first call of a run creates the file, with the option or without; without it nothing
/// else happens. What was added is in the file when the call returns.
void addRftRecords(const Console& console, const RunOptions& options, const RunClock& clock,
                   const GridModel& grid, const CellState& state, const WellRecord& wells,
                   EclipseOutput& output);

}  // namespace kvr
