#pragma once

#include "base/console.hpp"
#include "deck/options.hpp"
#include "eclipse/records.hpp"
#include "model/grid.hpp"

#include <string_view>

namespace kvr {

/// Takes ACTNUM from an open .EGRID file. Cells whose activity changes are named; the file's value is taken.
ReadResult readActivityBlocks(const Console& console, RecordReader& reader, GridModel& grid);

/// The same for the .EGRID file of an outside run in the working folder; without the file nothing happens.
void input_ACTNUM_EGRID(const Console& console, const RunOptions& options, std::string_view header,
                        GridModel& grid);

}  // namespace kvr
