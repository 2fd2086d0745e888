#pragma once

#include "deck/options.hpp"

#include <optional>

namespace kvr {

/// Time, days, of the restart that RESTART of the deck names: of that run, else of the run of the deck's own
/// name, in the folder of the outside run. Empty where neither file is there or tells one.
std::optional<double> timeOfNamedRestart(const RunOptions& options);

}  // namespace kvr
