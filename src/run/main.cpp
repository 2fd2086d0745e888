#include "run/driver.hpp"
#include "run/thread_policy.hpp"

int main(int /*count*/, char* arguments[]) {
    kvr::letWaitingThreadsSleep(arguments);
    kvr::Simulation simulation;
    kvr::runSimulation(simulation);
    return 0;
}
