#include "run/command_line.hpp"
#include "run/driver.hpp"
#include "run/process.hpp"
#include "run/thread_policy.hpp"

int main(int count, char* arguments[]) {
    kvr::replaceClosedStreams();
    kvr::endOnFailuresWithALine();
    kvr::Simulation simulation;
    if (const auto status = kvr::readCommandLine(count, arguments, simulation.command)) return *status;
    kvr::letWaitingThreadsSleep(arguments);
    kvr::useThreads(simulation.command);
    return kvr::runSimulation(simulation);
}
