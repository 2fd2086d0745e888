#pragma once

#include <string_view>

namespace kvr {

/// SIGINT and SIGTERM no longer end the process but are kept for `endSignal`; the second one ends it.
void catchEndSignals();
/// The signal that asks the run to end; 0: none yet.
int endSignal();

/// "SIGINT" or "SIGTERM".
std::string_view signalName(int signal);

}  // namespace kvr
