#pragma once

#include "base/console.hpp"
#include "deck/options.hpp"
#include "eclipse/records.hpp"
#include "model/grid.hpp"
#include "run/records/clock.hpp"

#include <array>
#include <cstdio>
#include <string>
#include <string_view>

namespace kvr {

/// The five plot files of a conversion: pressure, oil, water, gas saturation, everything else.
struct RestartPlots {
    std::array<std::FILE*, 5> files{};
    std::string base;  // working folder and header, before the names of files by keyword
};

RestartPlots openRestartPlots(const Console& console, const RunOptions& options, std::string_view header);
void closeRestartPlots(const Console& console, RestartPlots& plots);

/// Turns the blocks of an open .X file into zones at the file's time, which clock.time takes. Values are
/// those of every cell, or of the active cells in natural order; what a block lacks is 0, what it has more
/// is left out of the zone. Blocks of REAL that no file of the five is for get a plot and a text file each.
ReadResult plotRestartBlocks(const Console& console, const RunOptions& options, const GridModel& grid,
                             int step, RecordReader& reader, RestartPlots& plots, RunClock& clock);

/// Converts the .X files of an outside run in the working folder from `firstStep` on up to the first that is
/// missing (step 0 may be), at most to step 1000. The clock stands at 0 afterwards.
void input_RST2Tecplot(const Console& console, const RunOptions& options, const GridModel& grid,
                       std::string_view header, int firstStep, RunClock& clock);

}  // namespace kvr
