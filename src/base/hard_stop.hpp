#pragma once

#include "base/console.hpp"

namespace kvr {

/// The one way in which a run fails: waits for a line from the console, so that a console window
/// stays open, and ends the process with exit status 1. The messages are the caller's and are already
/// out. Every open output is flushed and closed on the way (all outputs are stdio streams).
[[noreturn]] void hardStop(const Console& console);

/// An early end that is not a failure: the same closing of files, exit status 0, no waiting.
[[noreturn]] void normalStop();

/// Statuses of files that messages have words of their own for; any other is an errno.
inline constexpr int OpenErrorStatus = -1;  // there is no such file
inline constexpr int HandlingErrorStatus = -2;

}  // namespace kvr
