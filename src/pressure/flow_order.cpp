#include "pressure/flow_order.hpp"

#include <algorithm>

namespace kvr {

namespace {

constexpr int Unseen = 0;

/// A cell whose upstream neighbours are being gone through.
struct Visit {
    CellId cell = 0;
    int nextFace = 1;
};

/// Working arrays of the search; numbers are those of the order of discovery, from 1.
struct Search {
    CellArray<int> number;
    CellArray<int> lowest;  // smallest number that can be reached against the flow
    CellArray<std::uint8_t> waiting;
    std::vector<CellId> stack;
    std::vector<Visit> path;
    int count = 0;
};

void enter(CellId cell, Search& search) {
    search.number[cell] = search.lowest[cell] = ++search.count;
    search.stack.push_back(cell);
    search.waiting[cell] = 1;
    search.path.push_back({cell, 1});
}

/// The cell with which a group began is done: all that was found behind it and still waits is its group.
void closeGroup(CellId first, Search& search, FlowOrder& order) {
    for (;;) {
        const CellId cell = search.stack.back();
        search.stack.pop_back();
        search.waiting[cell] = 0;
        order.cells.push_back(cell);
        if (cell == first) break;
    }
    order.groupStart.push_back(order.cells.size());
}

void leave(Search& search, FlowOrder& order) {
    const CellId cell = search.path.back().cell;
    search.path.pop_back();
    if (search.lowest[cell] == search.number[cell]) closeGroup(cell, search, order);
    if (search.path.empty()) return;
    const CellId above = search.path.back().cell;
    search.lowest[above] = std::min(search.lowest[above], search.lowest[cell]);
}

/// Goes on with the cell at the end of the path: into its next upstream neighbour, or back.
void advance(const ConnectionTable& connections, const DirectionArray<double>& flux, Search& search,
             FlowOrder& order) {
    Visit& visit = search.path.back();
    for (; visit.nextFace <= connections.flowDirections; ++visit.nextFace) {
        const CellId upstream = connections.Neighbour(visit.cell, visit.nextFace);
        if (upstream <= 0 || !(outflowThrough(connections, flux, visit.cell, visit.nextFace) < 0.0)) continue;
        if (search.number[upstream] == Unseen) {
            ++visit.nextFace;
            return enter(upstream, search);
        }
        if (search.waiting[upstream] != 0)
            search.lowest[visit.cell] = std::min(search.lowest[visit.cell], search.number[upstream]);
    }
    leave(search, order);
}

}  // namespace

double outflowThrough(const ConnectionTable& connections, const DirectionArray<double>& flux, CellId cell,
                      int face) {
    if (isLowSide(connections, cell, face)) return flux(cell, face);
    const CellId low = connections.Neighbour(cell, face);
    return low > 0 ? -flux(low, directionBack(connections, cell, low, face)) : 0.0;
}

void orderByFlow(const GridModel& grid, const ConnectionTable& connections,
                 const DirectionArray<double>& flux, FlowOrder& order) {
    order.cells.clear();
    order.groupStart.assign(1, 0);
    Search search;
    search.number.assign(grid.NCELLS, Unseen);
    search.lowest.assign(grid.NCELLS, Unseen);
    search.waiting.assign(grid.NCELLS, 0);
    for (CellId cell = 1; cell <= grid.NCELLS; ++cell) {
        if (grid.Active[cell] == 0 || search.number[cell] != Unseen) continue;
        enter(cell, search);
        while (!search.path.empty()) advance(connections, flux, search, order);
    }
}

}  // namespace kvr
