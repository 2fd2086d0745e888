#pragma once

#include "base/console.hpp"
#include "deck/options.hpp"

#include <string>

namespace kvr {

/// The line for the system shell: with LINUXRUN the command and the header, else a change into the working
/// folder before them, in the form of the shell that the command belongs to.
std::string outsideCommand(const RunOptions& options);

/// Runs the outside simulator by it and waits. A command that ends with a failure is told; the caller goes
/// on with the files that are there.
void runOutsideCommand(const Console& console, const RunOptions& options);

}  // namespace kvr
