#include "run/program.hpp"

#include "run/command_line.hpp"
#include "run/driver.hpp"
#include "run/process.hpp"
#include "run/thread_policy.hpp"

namespace kvr {

int runProgram(int count, char* arguments[]) {
    replaceClosedStreams();
    endOnFailuresWithALine();
    Simulation simulation;
    if (const auto status = readCommandLine(count, arguments, simulation.command)) return *status;
    letWaitingThreadsSleep(arguments);
    useThreads(simulation.command);
    return runSimulation(simulation);
}

}  // namespace kvr
