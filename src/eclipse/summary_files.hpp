#pragma once

#include "base/console.hpp"
#include "base/units.hpp"
#include "deck/options.hpp"
#include "deck/schedule.hpp"
#include "eclipse/output_record.hpp"
#include "eclipse/summary_vectors.hpp"
#include "model/grid.hpp"
#include "pressure/wells/wells.hpp"
#include "run/records/clock.hpp"

#include <string>
#include <vector>

namespace kvr {

/// Replaces the .SMSPEC file for the wells of the run in the order of their numbers, behind their vectors
/// those that the deck asks for. Neither without the option nor without wells.
void writeSummarySpec(const Console& console, const RunOptions& options, const GridModel& grid,
                      const std::vector<std::string>& wellNames, const std::vector<AskedVector>& asked = {});

/// Moves the running sums on to the clock's time and gives the figures of every well of the run; wells that
/// the schedule has not introduced yet stand at 0. `entry` is the part of the schedule in force.
std::vector<SummaryFigures> summaryFigures(const UnitSystem& units, const RunClock& clock,
                                           const ScheduleStep& entry, const WellRecord& wells,
                                           std::size_t wellCount, SummaryTotals& totals);

/// The values of one step in the order of the files: those of every well, then those asked for.
std::vector<float> summaryValues(const std::vector<SummaryFigures>& figures,
                                 const std::vector<float>& asked = {});

/// Replaces the .S file of the clock's report step with the values of its steps. Without the option it does
/// nothing.
void writeSummaryStep(const Console& console, const RunOptions& options, const RunClock& clock,
                      const std::vector<std::vector<float>>& steps);
/// The same of a report with one step and no vectors asked for.
void writeSummaryStep(const Console& console, const RunOptions& options, const RunClock& clock,
                      const std::vector<SummaryFigures>& figures);

}  // namespace kvr
