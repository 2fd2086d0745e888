#pragma once

#include "base/console.hpp"
#include "deck/options.hpp"

#include <string>

namespace kvr {

/// Replaces the run's .ECLEND text: counts of messages, all 0, so that the results look finished to the
/// tools that read it.
void Output_ECLEND_Normal(const Console& console, const RunOptions& options);

/// Deletes what an earlier run left under the path `base`: .RFT, .ECLEND, and .X and .S files of step 0 and
/// of 1 and on up to the first missing .X, at most 1000.
void clear_ECLIPSE_Data(const Console& console, const std::string& base);

}  // namespace kvr
