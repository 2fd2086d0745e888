#pragma once

#include "base/console.hpp"
#include "deck/options.hpp"

namespace kvr {

/// Stops the run with one plain line when the deck asks for something this version cannot do, so that no
/// run goes on as if it could.
void refuseUnbuiltFeatures(const Console& console, const RunOptions& options);

}  // namespace kvr
