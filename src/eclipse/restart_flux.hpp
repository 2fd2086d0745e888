#pragma once

#include "base/console.hpp"
#include "eclipse/records.hpp"
#include "eclipse/restart_units.hpp"
#include "model/connections.hpp"
#include "model/grid.hpp"
#include "pressure/records/cell_state.hpp"
#include "pressure/records/velocity_field.hpp"
#include "pressure/velocity.hpp"

#include <array>

namespace kvr {

/// Flux arrays of a restart, of the face of each cell toward higher index, in the file's units; empty where
/// the file has none.
using AxisFluxes = std::array<CellArray<float>, 3>;  // oil, water, gas

struct RestartFluxes {
    std::array<AxisFluxes, 3> reservoir;  // FLR.. of the axes I, J, K
    std::array<AxisFluxes, 3> surface;    // FLO..
    std::array<bool, 3> hasReservoir{};   // a keyword of the axis was found
    std::array<bool, 3> hasSurface{};
};

bool anyFlux(const RestartFluxes& fluxes);

/// Takes a block whose keyword is one of FLROILI+ .. FLOGASK+; false for any other.
bool takeFluxBlock(const Console& console, const GridModel& grid, const BlockHeader& header,
                   const BlockData& data, RestartFluxes& fluxes);

/// What turns surface fluxes of a cell into those at its conditions. Rs and the factors are dimensionless.
struct FluxFactors {
    double Bo = 1.0, Bw = 1.0, Bg = 1.0;
    double Rs = 0.0;
    double Rv = 0.0;          // vaporised oil by the file's volumes, 0 without it
    double surfaceGas = 1.0;  // c2 / c1, see FileUnits
};

/// Reservoir fluxes from surface fluxes Fo, Fw, Fg (oil and gas with what is dissolved in the other phase):
///   Qo = (Fo - Rv (Qg/Bg) c1/c2) Bo,  Qw = Fw Bw,  Qg = (Fg c2/c1 - Rs Qo/Bo) Bg
/// solved together; without vaporised oil the first is Fo Bo.
PhaseFlux reservoirFlux(const PhaseFlux& surface, const FluxFactors& factors);

/// Total fluxes of the field from the arrays, in internal volume a day: a face is that of the cell below it
/// along the axis, where it has a neighbour above; other faces, and axes that the file does not have, carry
/// nothing. Reservoir fluxes stand before surface ones. The arrays are given back on the way. The field
/// counts fluxes toward higher index as positive on both faces of a cell; outward, what leaves a cell through
/// its high face is negative at the low face of the neighbour.
void assembleFluxes(const GridModel& grid, const ConnectionTable& connections, const FileUnits& units,
                    const CellState& state, const CellArray<double>& vaporisedOil, RestartFluxes& fluxes,
                    VelocityField& velocity);

/// What leaves a cell through its six faces together, volume a day: what its wells bring and what expands.
double netOutflow(const VelocityField& velocity, CellId cell);

}  // namespace kvr
