#pragma once

#include "deck/options.hpp"

#include <string_view>

namespace kvr {

/// What the header of an outside run's .INIT file says of the run.
struct OutsideHead {
    bool found = false;  // the file is there and begins with a header as long as it must be
    bool hasOil = false;
    bool hasWater = false;
    bool hasGas = false;
    int startDay = 1;
    int startMonth = 1;
    int startYear = 2000;
};

/// Reads the header alone; a file without one leaves `found` false, and readers of the whole file tell why.
OutsideHead readOutsideHead(const RunOptions& options, std::string_view header);

}  // namespace kvr
