#include "pressure/flow_rings.hpp"

#include "model/neighbours.hpp"
#include "unit/model/small_grids.hpp"

#include <algorithm>
#include <gtest/gtest.h>
#include <vector>

namespace kvr {
namespace {

TEST(StrongComponents, NumbersThemDownTheFlow) {
    // 2 -> 0 <-> 1 -> 3, the flow back from 1 to 0 weak.
    const FlowGraph graph{{0, 1, 3, 4, 4}, {{1, 5.0}, {0, 1.0}, {3, 4.0}, {0, 9.0}}};
    std::vector<int> component;
    EXPECT_EQ(strongComponents(graph, 0.0, component), 3);
    EXPECT_EQ(component, (std::vector<int>{1, 1, 0, 2}));
    EXPECT_EQ(strongComponents(graph, 2.0, component), 4);
    EXPECT_EQ(component, (std::vector<int>{1, 2, 0, 3}));
}

/// Six cells of a row of squares, each of 100 of pore volume: 1 2 3 / 4 5 6. A flow of 10 comes into cell 1
/// and leaves from 6.
struct TwoSquares {
    GridModel grid = uniformBlocks(3, 2, 1, 10.0, 10.0, 10.0);
    ConnectionTable connections;
    DirectionArray<double> flux;
    CellArray<double> poreVolume;
    RingPlan plan;

    TwoSquares() {
        connections.Neighbour.assign(grid.NCELLS, connections.NDIR, 0);
        buildNeighbours(grid, connections);
        flux.assign(grid.NCELLS, FaceCount, 0.0);
        poreVolume.assign(grid.NCELLS, 100.0);
        flow(1, 1, 10.0);
        flow(2, 1, 10.0);
        flow(3, 2, 10.0);
    }
    void flow(CellId low, int axis, double rate) { flux(low, 2 * axis) += rate; }
    /// Turns about the corner of four cells the lowest of which is `low`.
    void turn(CellId low, double rate) {
        flow(low, 1, rate);
        flow(low + 1, 2, rate);
        flow(low + 3, 1, -rate);
        flow(low, 2, -rate);
    }
    void make(double dt) {
        const std::vector<CellId> ring{1, 2, 3, 4, 5, 6};
        RingField field{connections, flux, poreVolume, {10, 0, 0, 0, 0, 0}, {0, 0, 0, 0, 0, 10}, dt};
        planRing(field, ring, plan);
    }
    /// Cells of a unit, sorted.
    [[nodiscard]] std::vector<CellId> unit(std::size_t u) const {
        std::vector<CellId> cells(plan.cells.begin() + static_cast<std::ptrdiff_t>(plan.unitStart[u]),
                                  plan.cells.begin() + static_cast<std::ptrdiff_t>(plan.unitStart[u + 1]));
        std::sort(cells.begin(), cells.end());
        return cells;
    }
};

TEST(PlanRing, JoinsWhatTurnsFarFasterThanAnythingFlowsThrough) {
    TwoSquares field;
    field.turn(1, 1000.0);  // 1 2 4 5; 10 flow in at 1 and out at 2
    field.make(10.0);
    ASSERT_EQ(field.plan.unitStart.size(), 4U);
    EXPECT_EQ(field.unit(0), (std::vector<CellId>{1, 2, 4, 5}));
    EXPECT_EQ(field.unit(1), (std::vector<CellId>{3}));
    EXPECT_EQ(field.unit(2), (std::vector<CellId>{6}));
    EXPECT_EQ(field.plan.groupStart, (std::vector<std::size_t>{0, 1, 2, 3})) << "no ring is left";
}

TEST(PlanRing, LeavesSlowRingsAndShortStepsToSweeps) {
    TwoSquares slow;
    slow.turn(1, 100.0);  // ten times what flows through
    slow.make(1000.0);
    EXPECT_EQ(slow.plan.unitStart.size(), 7U);
    EXPECT_EQ(slow.plan.groupStart.size(), 4U) << "four cells turn, two follow";
    TwoSquares brief;
    brief.turn(1, 1000.0);
    brief.make(1.0);  // the 400 of the four cells have turned two and a half times
    EXPECT_EQ(brief.plan.unitStart.size(), 7U);
}

TEST(PlanRing, KeepsAFastRingOutOfASlowOneThatItStandsIn) {
    TwoSquares field;
    field.turn(1, 10000.0);
    field.turn(2, 60.0);  // 2 3 6 5: turns slowly over two cells of the fast one
    field.make(10.0);
    ASSERT_EQ(field.plan.unitStart.size(), 4U);
    EXPECT_EQ(field.unit(0), (std::vector<CellId>{1, 2, 4, 5}));
    EXPECT_EQ(field.plan.groupStart, (std::vector<std::size_t>{0, 3})) << "the slow ring is left";
}

}  // namespace
}  // namespace kvr
