#pragma once

#include "base/cell_array.hpp"
#include "fluid/components/flash.hpp"
#include "fluid/tables.hpp"
#include "model/grid.hpp"
#include "pressure/records/cell_state.hpp"
#include "streamline/transport/explicit_control.hpp"

#include <string_view>
#include <vector>

namespace kvr {

/// lb-mole of each component and surface volume of water: amounts per internal pore volume, or fluxes per
/// internal reservoir volume.
struct ComponentFlow {
    Composition moles{};
    double water = 0.0;
};

void addFlow(int count, double factor, const ComponentFlow& flow, ComponentFlow& sum);
bool isFinite(int count, const ComponentFlow& flow);

/// One position of a line of components; factors and pressure are those of its cell, held over a step.
struct ComponentNode {
    ComponentFlow held, flux, limited, passed;
    FlashState flash;
    CellId cell = 0;
    int region = 1;
    double pressure = 0.0, Bw = 1.0, MuW = 1.0;
    double Sw = 0.0, Sg = 0.0;
    double volume = 1.0;                                                // of what it holds, per pore volume
    double inverseDeltaTof = 0.0, inflowRate = 0.0, outflowRate = 0.0;  // 1/day
    double changed = 0.0;  // of what it holds, since its phases were found
};

/// The cell of a node, its region, pressure and factors of water.
void placeNode(const GridModel& grid, const CellState& state, CellId cell, ComponentNode& node);

/// Phases of what a node holds, by the flash that it keeps where that is the one of its cell; its volume, its
/// saturations, and its fluxes by their mobilities. `volumeFactor`: ft3 in an internal volume.
void findPhases(const FluidTables& tables, const ComponentSet& set, double volumeFactor, bool isFlashed,
                ComponentNode& node);

/// Largest wave speed of positions 1..last, 1/day, as told at advanceComponentLine.
double largestSpeed(int count, double volumeFactor, int last, const std::vector<ComponentNode>& nodes);

/// Fluxes by the upwind word of a substep.
void limitNodes(std::string_view upwind, int count, double dt, int last, std::vector<ComponentNode>& nodes);

/// A substep with limited fluxes; phases are found anew where a node has changed.
void moveNodes(const FluidTables& tables, const ComponentSet& set, double volumeFactor, double dt, int last,
               std::vector<ComponentNode>& nodes);

/// All three: one substep of at most `left`, of which the length in days is returned, CFL / (largest wave
/// speed + 1e-10).
double marchNodes(const FluidTables& tables, const ComponentSet& set, double volumeFactor,
                  const ExplicitControl& control, bool first, double left, int last,
                  std::vector<ComponentNode>& nodes);

}  // namespace kvr
