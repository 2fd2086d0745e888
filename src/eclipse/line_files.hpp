#pragma once

#include "base/console.hpp"
#include "deck/options.hpp"
#include "eclipse/output_record.hpp"
#include "model/grid.hpp"
#include "run/records/clock.hpp"
#include "streamline/diagnostics/line_path.hpp"

#include <string>
#include <vector>

namespace kvr {

/// Replaces the .SLNSPEC file and asks the streamline steps to keep the courses of their lines. Needs both
/// options; without them it does nothing.
void writeLineSpec(const Console& console, const RunOptions& options, const GridModel& grid,
                   const std::vector<std::string>& wellNames, LinePaths& paths);

/// Takes over the number of lines of the step and, with both options, replaces the .SLN file of the clock's
/// report step by the courses collected; the hour is that of the end of the present step. The courses are
/// forgotten afterwards.
void writeLineStep(const Console& console, const RunOptions& options, const RunClock& clock, int tracedLines,
                   EclipseOutput& output);

}  // namespace kvr
