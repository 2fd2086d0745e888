#include "model/window_flow.hpp"

#include "base/constants.hpp"
#include "model/box_transmissibility.hpp"
#include "pressure/solvers/dense.hpp"

#include <algorithm>
#include <cmath>

namespace kvr {

namespace {

constexpr int Inlet = 0, Outlet = 1, FirstFree = 2;
constexpr double Failed = -1.0;
constexpr int EdgesPerAxis = 4;  // of a cell

// --- the dense solve ---------------------------------------------------------------------------------------

/// Free nodes that some path joins to an end, numbered from 0; -1 for the others.
std::vector<int> reachedRows(const FlowNetwork& network, int& count) {
    std::vector<std::vector<int>> joined(static_cast<std::size_t>(network.nodes));
    for (const FlowNetwork::Edge& edge : network.edges) {
        if (!(edge.conductance > 0.0)) continue;
        joined[static_cast<std::size_t>(edge.a)].push_back(edge.b);
        joined[static_cast<std::size_t>(edge.b)].push_back(edge.a);
    }
    std::vector<int> row(static_cast<std::size_t>(network.nodes), -1);
    std::vector<int> waiting = {Inlet, Outlet};
    count = 0;
    while (!waiting.empty()) {
        const int node = waiting.back();
        waiting.pop_back();
        for (const int next : joined[static_cast<std::size_t>(node)]) {
            if (next < FirstFree || row[static_cast<std::size_t>(next)] >= 0) continue;
            row[static_cast<std::size_t>(next)] = count++;
            waiting.push_back(next);
        }
    }
    return row;
}

struct DenseNetwork {
    int size = 0;
    std::vector<double> matrix, potential;  // [size * size], [size]
};

void addEnd(int row, int other, int otherRow, double conductance, DenseNetwork& dense) {
    if (row < 0) return;
    const auto n = static_cast<std::size_t>(dense.size);
    const auto at = static_cast<std::size_t>(row);
    dense.matrix[at * n + at] += conductance;
    if (otherRow >= 0) dense.matrix[static_cast<std::size_t>(otherRow) * n + at] -= conductance;
    if (other == Inlet) dense.potential[at] += conductance;
}

DenseNetwork assemble(const FlowNetwork& network, const std::vector<int>& rows, int size) {
    DenseNetwork dense;
    dense.size = size;
    const auto n = static_cast<std::size_t>(size);
    dense.matrix.assign(n * n, 0.0);
    dense.potential.assign(n, 0.0);
    for (const FlowNetwork::Edge& edge : network.edges) {
        if (!(edge.conductance > 0.0)) continue;
        const int a = rows[static_cast<std::size_t>(edge.a)];
        const int b = rows[static_cast<std::size_t>(edge.b)];
        addEnd(a, edge.b, b, edge.conductance, dense);
        addEnd(b, edge.a, a, edge.conductance, dense);
    }
    return dense;
}

double inflow(const FlowNetwork& network, const std::vector<int>& rows,
              const std::vector<double>& potential) {
    const auto at = [&](int node) {
        const int row = rows[static_cast<std::size_t>(node)];
        if (row >= 0) return potential[static_cast<std::size_t>(row)];
        return node == Inlet ? 1.0 : 0.0;
    };
    double flow = 0.0;
    for (const FlowNetwork::Edge& edge : network.edges) {
        if (!(edge.conductance > 0.0)) continue;
        if (edge.a == Inlet) flow += edge.conductance * (1.0 - at(edge.b));
        if (edge.b == Inlet) flow += edge.conductance * (1.0 - at(edge.a));
    }
    return flow;
}

// --- the two networks of a window --------------------------------------------------------------------------

struct Extent {
    std::array<int, 3> size{};  // cells along each axis

    explicit Extent(const Window& window) {
        for (std::size_t axis = 0; axis < 3; ++axis) size[axis] = window.last[axis] - window.first[axis] + 1;
    }
};

template <class Visit>
void forCells(const GridModel& grid, const Window& window, const Visit& visit) {
    for (int k = window.first[2]; k <= window.last[2]; ++k)
        for (int j = window.first[1]; j <= window.last[1]; ++j)
            for (int i = window.first[0]; i <= window.last[0]; ++i) {
                const CellId cell = cellIndex(grid, i, j, k);
                if (grid.Active[cell] != 0) visit(cell, std::array<int, 3>{i, j, k});
            }
}

double lengthOf(const GridModel& grid, CellId cell, int axis) {
    const CellArray<double>* lengths[] = {&grid.DX, &grid.DY, &grid.DZ};
    return (*lengths[axis])[cell];
}

/// Cross-section of a cell for flow along an axis, ft2; net-to-gross narrows lateral flow only.
double sectionOf(const GridModel& grid, CellId cell, int axis) {
    const double section = lengthOf(grid, cell, (axis + 1) % 3) * lengthOf(grid, cell, (axis + 2) % 3);
    return axis == 2 ? section : section * grid.NTG[cell];
}

/// Conductance of a whole cell along an axis: k A / length.
double conductanceOf(const GridModel& grid, CellId cell, int axis) {
    const CellArray<double>* permeability[] = {&grid.PERMX, &grid.PERMY, &grid.PERMZ};
    const double length = lengthOf(grid, cell, axis);
    return length > 0.0 ? DarcyConstant * (*permeability[axis])[cell] * sectionOf(grid, cell, axis) / length
                        : 0.0;
}

int cellNode(const Window& window, const Extent& extent, const std::array<int, 3>& ijk) {
    const int i = ijk[0] - window.first[0];
    const int j = ijk[1] - window.first[1];
    const int k = ijk[2] - window.first[2];
    return FirstFree + i + extent.size[0] * (j + extent.size[1] * k);
}

/// A node per cell, box transmissibilities between them, half a cell to the two ends.
FlowNetwork cellNetwork(const GridModel& grid, const Window& window, int axis) {
    const Extent extent(window);
    FlowNetwork network;
    network.nodes = FirstFree + extent.size[0] * extent.size[1] * extent.size[2];
    const auto along = static_cast<std::size_t>(axis);
    forCells(grid, window, [&](CellId cell, const std::array<int, 3>& ijk) {
        const int node = cellNode(window, extent, ijk);
        const double half = 2.0 * conductanceOf(grid, cell, axis);
        if (ijk[along] == window.first[along]) network.edges.push_back({Inlet, node, half});
        if (ijk[along] == window.last[along]) network.edges.push_back({node, Outlet, half});
        for (std::size_t d = 0; d < 3; ++d) {
            if (ijk[d] == window.last[d]) continue;
            std::array<int, 3> next = ijk;
            ++next[d];
            const CellId neighbour = cellIndex(grid, next[0], next[1], next[2]);
            if (grid.Active[neighbour] == 0) continue;
            const double trans = boxConnection(grid, cell, neighbour, static_cast<int>(d), 0.0).trans;
            network.edges.push_back({node, cellNode(window, extent, next), trans});
        }
    });
    return network;
}

/// The node of a corner: the ends are one node each, and an axis of one cell across the flow has the same
/// potential on both its sides.
int cornerNode(const Extent& extent, int axis, std::array<int, 3> corner) {
    const auto along = static_cast<std::size_t>(axis);
    if (corner[along] == 0) return Inlet;
    if (corner[along] == extent.size[along]) return Outlet;
    std::array<int, 3> count{};
    for (std::size_t d = 0; d < 3; ++d) {
        count[d] = d == along ? extent.size[d] - 1 : extent.size[d] + 1;
        if (d == along) --corner[d];
        if (d != along && extent.size[d] == 1) {
            count[d] = 1;
            corner[d] = 0;
        }
    }
    return FirstFree + corner[0] + count[0] * (corner[1] + count[1] * corner[2]);
}

/// A node per corner; each cell's conductance along an axis is shared by its four edges.
FlowNetwork cornerNetwork(const GridModel& grid, const Window& window, int axis) {
    const Extent extent(window);
    FlowNetwork network;
    forCells(grid, window, [&](CellId cell, const std::array<int, 3>& ijk) {
        for (std::size_t d = 0; d < 3; ++d) {
            const double quarter = conductanceOf(grid, cell, static_cast<int>(d)) / EdgesPerAxis;
            for (int edge = 0; edge < EdgesPerAxis; ++edge) {
                std::array<int, 3> low{};
                for (std::size_t a = 0; a < 3; ++a) low[a] = ijk[a] - window.first[a];
                low[(d + 1) % 3] += edge % 2;
                low[(d + 2) % 3] += edge / 2;
                std::array<int, 3> high = low;
                ++high[d];
                const int a = cornerNode(extent, axis, low);
                const int b = cornerNode(extent, axis, high);
                if (a == b) continue;
                network.edges.push_back({a, b, quarter});
                network.nodes = std::max({network.nodes, a + 1, b + 1});
            }
        }
    });
    return network;
}

struct WindowMeasures {
    double length = 0.0;   // ft, mean of its rows along the axis
    double section = 0.0;  // ft2, net volume over it
};

WindowMeasures measure(const GridModel& grid, const Window& window, int axis) {
    const Extent extent(window);
    const auto along = static_cast<std::size_t>(axis);
    double lengths = 0.0;
    double volume = 0.0;
    int cells = 0;
    forCells(grid, window, [&](CellId cell, const std::array<int, 3>&) {
        lengths += lengthOf(grid, cell, axis);
        volume += lengthOf(grid, cell, axis) * sectionOf(grid, cell, axis);
        ++cells;
    });
    WindowMeasures measures;
    if (cells == 0) return measures;
    measures.length = lengths / cells * extent.size[along];
    measures.section = measures.length > 0.0 ? volume / measures.length : 0.0;
    return measures;
}

}  // namespace

double flowThrough(const FlowNetwork& network) {
    int size = 0;
    const std::vector<int> rows = reachedRows(network, size);
    DenseNetwork dense = assemble(network, rows, size);
    if (size > 0) {
        std::vector<int> pivot(static_cast<std::size_t>(size));
        if (factorDense(size, dense.matrix, pivot) != DenseStatus::Solved) return Failed;
        solveFactored(size, dense.matrix, pivot, dense.potential);
    }
    return inflow(network, rows, dense.potential);
}

double windowPermeability(const GridModel& grid, const Window& window, int axis) {
    const WindowMeasures measures = measure(grid, window, axis);
    if (!(measures.section > 0.0)) return 0.0;
    const double least = flowThrough(cellNetwork(grid, window, axis));
    const double most = flowThrough(cornerNetwork(grid, window, axis));
    if (!(least > 0.0) || !(most > 0.0)) return 0.0;
    return std::sqrt(least * most) * measures.length / (measures.section * DarcyConstant);
}

}  // namespace kvr
