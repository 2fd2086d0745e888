#include "pressure/rs_limit.hpp"

#include <algorithm>
#include <cmath>
#include <limits>

namespace kvr {

namespace {

double mostRise(const Simulation& s) {
    const auto entry = static_cast<std::size_t>(std::max(s.clock.wellChangeIndex, 0));
    if (entry >= s.schedule.steps.size()) return std::numeric_limits<double>::infinity();
    return s.schedule.steps[entry].mostRsRise;
}

}  // namespace

void startRsLimit(Simulation& simulation) {
    const bool limits = simulation.fluids.hasGas && std::isfinite(mostRise(simulation));
    simulation.state.RsStart = limits ? simulation.state.Rs : CellArray<double>{};
}

void setRsRise(Simulation& simulation) {
    if (!simulation.state.RsStart.empty())
        simulation.state.RsRise = mostRise(simulation) * simulation.clock.dt;
}

}  // namespace kvr
