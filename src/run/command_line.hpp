#pragma once

#include "run/records/command_line.hpp"

#include <optional>

namespace kvr {

/// Exit status of a command line that is not understood.
inline constexpr int WrongCommandLine = 2;

/// Reads the words behind the program's name. A value is the exit status of a program that is to end at
/// once: 0 behind the help and the version, WrongCommandLine behind one line on standard error.
std::optional<int> readCommandLine(int count, const char* const* words, CommandLine& command);

}  // namespace kvr
