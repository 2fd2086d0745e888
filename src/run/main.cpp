#include "run/driver.hpp"

int main() {
    kvr::Simulation simulation;
    kvr::runSimulation(simulation);
    return 0;
}
