#include "pressure/saturation_update.hpp"

#include "pressure/cell_transport.hpp"
#include "pressure/properties.hpp"

namespace kvr {

namespace {

/// The convective step of IMPES on the frozen field.
void transportCells(Simulation& s) {
    CellTransport transport;
    transport.flux = &s.velocity.CellFaceFlux;
    transport.wellsLimit = true;
    sizeAmounts(s.grid.NCELLS, transport.rates);
    addWellRates(s.wells, transport.rates);
    CellAmounts amounts;
    measureWholeAmounts(s.grid, s.state, s.pressure.carried, amounts);
    transportAmounts(transport, amounts, s);
}

}  // namespace

void SaturationUpdate(Simulation& simulation) {
    if (simulation.options.method == "IMPES")
        transportCells(simulation);
    else
        refreshProperties(simulation.grid, simulation.fluids, simulation.state);
}

}  // namespace kvr
