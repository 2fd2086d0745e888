#pragma once

#include "base/cell_array.hpp"
#include "model/connections.hpp"
#include "model/grid.hpp"

#include <cstddef>
#include <vector>

namespace kvr {

/// Active cells in the order of a flow field: every cell stands behind all cells that flow into it. Cells
/// that flow into each other in a ring (gravity can make such rings of the total flow) form one group.
struct FlowOrder {
    std::vector<CellId> cells;
    std::vector<std::size_t> groupStart;  // first place of every group, and the end of the last one
};

/// Order by the strongly connected components of the graph of the face flows (Tarjan 1972), linear in cells
/// and faces. `flux` (cell, direction) is positive toward increasing index, or number of the cell beyond the
/// faces; what both cells of a connection see is taken from its low side.
void orderByFlow(const GridModel& grid, const ConnectionTable& connections,
                 const DirectionArray<double>& flux, FlowOrder& order);

/// Flow out of a cell through a face, volume a day, negative into it: one value for both sides, that of the
/// cell on the low side of the face.
double outflowThrough(const ConnectionTable& connections, const DirectionArray<double>& flux, CellId cell,
                      int face);

}  // namespace kvr
