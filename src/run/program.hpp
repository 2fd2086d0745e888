#pragma once

namespace kvr {

/// What `main` does: the words of the command line read, the run, its exit status.
int runProgram(int count, char* arguments[]);

}  // namespace kvr
