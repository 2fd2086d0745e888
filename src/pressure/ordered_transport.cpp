#include "pressure/ordered_transport.hpp"

#include "pressure/flow_order.hpp"
#include "pressure/ring_transport.hpp"
#include "pressure/transport_walk.hpp"

#include <span>
#include <utility>

namespace kvr {

void advanceInOrder(double dt, const FractionSlopes& slopes, const GridModel& grid,
                    const ConnectionTable& connections, const FluidTables& tables,
                    const DirectionArray<double>& flux, const WellRecord& wells, const MakeUp& makeUp,
                    const Buoyancy& buoyancy, const CellState& state, CellAmounts& amounts,
                    TransportAccount& account, const MatrixTransfer& transfer) {
    FlowOrder order;
    orderByFlow(grid, connections, flux, order);
    Walk walk{dt, slopes, grid, connections, tables, flux,    wells,   makeUp, buoyancy, state, transfer,
              {}, {},     {},   {},          {},     amounts, account, {},     0,        {}};
    walk.passed.assign(grid.NCELLS, flowAxes(connections), {});
    walk.tilt.assign(grid.NCELLS, flowAxes(connections), 0.0);
    account.deficit = 0.0;
    listOutlets(walk);
    if (!transfer.flux.empty()) {
        account.transferred.assign(grid.NCELLS, {});
        walk.matrixEnd.assign(grid.NCELLS, {});
    }
    for (std::size_t g = 0; g + 1 < order.groupStart.size(); ++g) {
        const std::size_t first = order.groupStart[g];
        if (order.groupStart[g + 1] - first > 1) {
            passRing(std::span(order.cells).subspan(first, order.groupStart[g + 1] - first), walk);
            continue;
        }
        const CellId cell = order.cells[first];
        double deficit = 0.0;
        store(cell, passCell(cell, amountsOf(amounts, cell), walk, deficit), amounts);
        account.deficit += deficit;
    }
    storeMatrix(walk);
    account.passed = std::move(walk.passed);
}

}  // namespace kvr
