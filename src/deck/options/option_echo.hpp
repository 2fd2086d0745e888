#pragma once

#include "base/console.hpp"
#include "deck/options.hpp"
#include "fluid/tables.hpp"

namespace kvr {

/// Every option with its label, section by section, to the log; only "Debug Mode is OFF" when debug
/// output is off. The short list goes to the console in either case.
void echoOptions(const Console& console, const RunOptions& options, const FluidTables& tables);

/// The few options that the summary of the input repeats, to the log stream of `console`.
void echoSummary(const Console& console, const RunOptions& options, const FluidTables& tables);

}  // namespace kvr
