#include "pressure/saturation_update.hpp"

#include "pressure/cell_transport.hpp"
#include "pressure/properties.hpp"

namespace kvr {

void SaturationUpdate(Simulation& simulation) {
    if (simulation.options.method == "IMPES")
        transportAmounts({}, true, simulation);
    else
        refreshProperties(simulation.grid, simulation.fluids, simulation.state);
}

}  // namespace kvr
