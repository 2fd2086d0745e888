#pragma once

#include "base/console.hpp"
#include "deck/options.hpp"

namespace kvr {

/// Finds the input by the files in the present folder, or asks for it on the console. Sets inputMode,
/// header, folder and path; stops after a second name that is not found.
void detectInput(const Console& console, RunOptions& options);

}  // namespace kvr
