#pragma once

#include "base/console.hpp"
#include "deck/options.hpp"
#include "run/records/command_line.hpp"

namespace kvr {

/// Takes the deck that the command line names; without one finds the input by the files in the present
/// folder, or asks for it on the console. Sets inputMode, header, folders and paths; stops where a named deck
/// is not found or its output folder cannot be made, and after a second answer that is not found.
void detectInput(const Console& console, const CommandLine& command, RunOptions& options);

}  // namespace kvr
