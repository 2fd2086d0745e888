#pragma once

#include "base/cell_array.hpp"
#include "model/connections.hpp"

#include <cstddef>
#include <span>
#include <vector>

namespace kvr {

/// Flows between the nodes of a group, by the node that they leave.
struct FlowGraph {
    struct Edge {
        int to = 0;
        double flow = 0.0;
    };
    std::vector<std::size_t> start;  // of every node's edges, and the end of the last one's
    std::vector<Edge> edges;
    [[nodiscard]] int count() const { return static_cast<int>(start.size()) - 1; }
};

/// Strongly connected components (Tarjan 1972) over the edges of at least `least`: number by node, numbers
/// rising down the flow. Returns how many there are.
int strongComponents(const FlowGraph& graph, double least, std::vector<int>& component);

/// How a ring of cells is worked. Cells that turn their contents around far faster than anything flows
/// through them stand in one unit, every other cell in a unit of its own; what is left of rings between units
/// are groups of more than one unit. Units and groups go down the flow.
struct RingPlan {
    std::vector<CellId> cells;            // unit by unit
    std::vector<std::size_t> unitStart;   // into cells, and the end
    std::vector<std::size_t> groupStart;  // into units, and the end
};

/// What a ring is made of, for planRing.
struct RingField {
    const ConnectionTable& connections;
    const DirectionArray<double>& flux;
    const CellArray<double>& poreVolume;
    std::vector<double> wellIn, wellOut;  // volume a day, by place in the ring
    double dt = 0.0;                      // days
    bool mixes = true;                    // cells that turn fast enough count as one tank
};

/// A unit is a strongly connected component over the faces that pass at least some flow t, where t is at
/// least 16 times what enters or leaves the component and passes its pore volume at least 10 times in the
/// step. Compositions in it then differ by no more than about a sixteenth of what the inflow differs by.
void planRing(const RingField& field, std::span<const CellId> ring, RingPlan& plan);

}  // namespace kvr
