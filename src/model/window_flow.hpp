#pragma once

#include "model/grid.hpp"

#include <vector>

namespace kvr {

/// A box of cells, 1-based, both ends included.
struct Window {
    std::array<int, 3> first{1, 1, 1};
    std::array<int, 3> last{1, 1, 1};
};

/// Nodes 0 (potential 1) and 1 (potential 0), free nodes behind them, joined by conductances.
struct FlowNetwork {
    struct Edge {
        int a = 0, b = 0;
        double conductance = 0.0;
    };
    int nodes = 2;
    std::vector<Edge> edges;
};

/// Flow from node 0 to node 1: the free potentials by one dense factorisation. Nodes that no conductance
/// joins to either end stay out. Negative where the dense system cannot be factored.
double flowThrough(const FlowNetwork& network);

/// The largest window along which flow is solved, cells; its dense matrix takes half a gigabyte.
inline constexpr int MostWindowCells = 8192;

/// Equivalent permeability of a window along an axis (0 x, 1 y, 2 z), md: a unit drop between its two faces
/// across the axis, no flow over its sides,
///   k = q L / (A dp),   L the mean length of its rows, A = net volume / L.
/// Two flows bound it. From cell to cell through box transmissibilities, depth differences left out, the flow
/// comes out too small where it must turn; in the network of the cells' edges, each edge a quarter of its
/// cells' conductance, too large. Both are exact for layers along or across the flow. Their geometric
/// mean is the result: exact too for fields that a quarter turn maps onto their inverse, such as
/// checkerboards (Keller 1964, A theorem on the conductivity of a composite medium, J. Math. Phys. 5), where
/// either bound alone is far off on any practical grid.
double windowPermeability(const GridModel& grid, const Window& window, int axis);

}  // namespace kvr
