#pragma once

#include "fluid/tables.hpp"
#include "streamline/transport/component_line.hpp"
#include "streamline/transport/component_node.hpp"
#include "streamline/transport/solver_line.hpp"

#include <cstddef>
#include <vector>

namespace kvr {

/// Where a displacement begins: `node` has the cell (relative permeabilities), region, pressure and factors
/// of water that stand for the line, and holds what was there.
struct FrontStart {
    ComponentNode node;
    ComponentFlow stream;
};

/// Finds the path of compositions and its fronts by marching a fine row of equal nodes, limited fluxes, until
/// the first front is through it. The flow changes along the row by what mixing makes of volumes.
void findFronts(const FluidTables& tables, const ComponentSet& set, double volumeFactor, double cfl,
                const FrontStart& start, ComponentFronts& fronts);

/// Composition-path stage of a run: fronts for every inlet of the field whose pressure or stream is away from
/// that of the last time. The mixture in place is that of the first call, mean over the pores.
void prepareFronts(const GridModel& grid, const FluidTables& tables, const CellState& state, double cfl,
                   ComponentField& field);

/// Puts the fronts on a laid line from an inlet, as they are at the end of a step, and what passed its
/// positions in the step. A node lies behind as many pores as its tube of flow has up to it, over what comes
/// into that. A node that is not a number takes the one before it; false where there was one.
bool trackFronts(const GridModel& grid, const CellState& state, const ComponentField& field, double step,
                 SolverLine& line, ComponentLine& components);

}  // namespace kvr
