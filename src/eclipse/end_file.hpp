#pragma once

#include "base/console.hpp"
#include "base/messages.hpp"
#include "deck/options.hpp"

#include <string>

namespace kvr {

/// Replaces the run's .ECLEND text, by which tools see whether results are finished: warnings and errors of
/// the run; a run that a signal ended is a problem.
void Output_ECLEND_Normal(const Console& console, const RunOptions& options, const MessageRecord& messages,
                          int problems = 0);

/// Deletes what an earlier run left under the path `base`: .RFT, .ECLEND, and .X and .S files of step 0 and
/// of 1 and on up to the first missing .X, at most 1000.
void clear_ECLIPSE_Data(const Console& console, const std::string& base);

}  // namespace kvr
