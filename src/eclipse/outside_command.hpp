#pragma once

#include "base/console.hpp"
#include "deck/options.hpp"

#include <string>
#include <string_view>

namespace kvr {

/// The line for the system shell that runs `deck` (its name without folder and extension): with LINUXRUN the
/// command and the deck, else a change into the folder before them, in the form of the shell that the command
/// belongs to. Folder and deck are one word each, whatever their characters: only the command is the deck's.
std::string outsideCommand(const RunOptions& options, std::string_view deck);

/// Stops, with the command, where the input asks for one and the command line has not allowed it.
void requirePermission(const Console& console, const RunOptions& options, std::string_view deck);

/// Shows the command, runs it and waits: in the present folder, or in that of a deck named on the command
/// line. One that ends with a failure is told, and false comes back; without a word where a signal has asked
/// the run to end.
bool runOutsideCommand(const Console& console, const RunOptions& options, std::string_view deck);

}  // namespace kvr
