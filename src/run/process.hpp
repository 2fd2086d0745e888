#pragma once

#include "run/records/command_line.hpp"

namespace kvr {

/// Standard streams that are closed are opened on nothing, before any file is: it would take their place,
/// and what is meant for the console would stand in it.
void replaceClosedStreams();

/// Memory that runs out anywhere, in a thread too, ends the process with a line and exit status 1; a console
/// whose reader has gone is an error of writing and no signal.
void endOnFailuresWithALine();

/// Exit status of a process that a signal ended in good order: 128 and its number.
int statusOfSignal(int signal);

/// Takes the number of threads of the command line.
void useThreads(const CommandLine& command);

}  // namespace kvr
