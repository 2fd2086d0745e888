#include "pressure/flow_order.hpp"

#include "model/neighbours.hpp"
#include "unit/model/small_grids.hpp"

#include <algorithm>
#include <gtest/gtest.h>
#include <random>
#include <vector>

namespace kvr {
namespace {

/// Blocks without flow; flows are set face by face.
struct Field {
    GridModel grid;
    ConnectionTable connections;
    DirectionArray<double> flux;
    FlowOrder order;

    Field(int nx, int ny, int nz) : grid(uniformBlocks(nx, ny, nz, 10.0, 10.0, 10.0)) {
        connections.Neighbour.assign(grid.NCELLS, connections.NDIR, 0);
        buildNeighbours(grid, connections);
        flux.assign(grid.NCELLS, FaceCount, 0.0);
    }
    /// Flow through the face between a cell and its neighbour on the high side of an axis 1..3.
    void flow(CellId low, int axis, double rate) {
        flux(low, 2 * axis) = rate;
        flux(connections.Neighbour(low, 2 * axis), 2 * axis - 1) = rate;
    }
    void sort() { orderByFlow(grid, connections, flux, order); }
    [[nodiscard]] std::size_t groupCount() const { return order.groupStart.size() - 1; }
    /// Number of the group that a cell stands in.
    [[nodiscard]] std::size_t groupOf(CellId cell) const {
        const auto place = std::find(order.cells.begin(), order.cells.end(), cell) - order.cells.begin();
        std::size_t g = 0;
        while (order.groupStart[g + 1] <= static_cast<std::size_t>(place)) ++g;
        return g;
    }
};

TEST(OutflowThrough, HasOneValueForBothSidesOfAFace) {
    Field field(2, 1, 1);
    field.flux(1, 2) = 7.0;
    field.flux(2, 1) = 6.5;  // of the other side: not asked
    EXPECT_EQ(outflowThrough(field.connections, field.flux, 1, 2), 7.0);
    EXPECT_EQ(outflowThrough(field.connections, field.flux, 2, 1), -7.0);
    EXPECT_EQ(outflowThrough(field.connections, field.flux, 1, 1), 0.0) << "border";
}

TEST(OrderByFlow, GoesDownAChainAgainstTheIndex) {
    Field field(4, 1, 1);
    for (const CellId low : {1, 2, 3}) field.flow(low, 1, -5.0);
    field.sort();
    EXPECT_EQ(field.order.cells, (std::vector<CellId>{4, 3, 2, 1}));
    EXPECT_EQ(field.order.groupStart, (std::vector<std::size_t>{0, 1, 2, 3, 4}));
}

TEST(OrderByFlow, PutsACellBehindAllBranchesThatMeetInIt) {
    // 1 -> 2, 1 -> 3, 2 -> 4, 3 -> 4 of a square, and 4 -> 8 -> 5 below it.
    Field field(2, 2, 2);
    field.flow(1, 1, 1.0);
    field.flow(1, 2, 1.0);
    field.flow(2, 2, 1.0);
    field.flow(3, 1, 1.0);
    field.flow(4, 3, 2.0);
    field.flow(7, 1, -1.0);
    field.flow(5, 2, -1.0);
    field.sort();
    ASSERT_EQ(field.order.cells.size(), 8U);
    EXPECT_EQ(field.groupCount(), 8U) << "no ring";
    EXPECT_LT(field.groupOf(1), std::min(field.groupOf(2), field.groupOf(3)));
    EXPECT_GT(field.groupOf(4), std::max(field.groupOf(2), field.groupOf(3)));
    EXPECT_LT(field.groupOf(4), field.groupOf(8));
    EXPECT_LT(field.groupOf(8), field.groupOf(7));
    EXPECT_LT(field.groupOf(7), field.groupOf(5));
}

TEST(OrderByFlow, MakesARingOneGroup) {
    // 1 -> 2 -> 5 -> 4 -> 1 turns; 2 -> 3 -> 6 leaves it.
    Field field(3, 2, 1);
    field.flow(1, 1, 3.0);
    field.flow(2, 2, 2.0);
    field.flow(4, 1, -2.0);
    field.flow(1, 2, -2.0);
    field.flow(2, 1, 1.0);
    field.flow(3, 2, 1.0);
    field.sort();
    ASSERT_EQ(field.order.groupStart, (std::vector<std::size_t>{0, 4, 5, 6}));
    std::vector<CellId> ring(field.order.cells.begin(), field.order.cells.begin() + 4);
    std::sort(ring.begin(), ring.end());
    EXPECT_EQ(ring, (std::vector<CellId>{1, 2, 4, 5}));
    EXPECT_EQ(field.order.cells[4], 3);
    EXPECT_EQ(field.order.cells[5], 6);
}

TEST(OrderByFlow, LeavesOutInactiveCells) {
    Field field(3, 1, 1);
    field.grid.Active[2] = 0;
    buildNeighbours(field.grid, field.connections);
    field.sort();
    std::vector<CellId> cells = field.order.cells;
    std::sort(cells.begin(), cells.end());
    EXPECT_EQ(cells, (std::vector<CellId>{1, 3}));
}

/// Every cell that a cell's flow reaches in the end, by walking on from it.
std::vector<std::uint8_t> reachedFrom(CellId start, const Field& field) {
    std::vector<std::uint8_t> reached(static_cast<std::size_t>(field.grid.NCELLS) + 1, 0);
    std::vector<CellId> open{start};
    while (!open.empty()) {
        const CellId cell = open.back();
        open.pop_back();
        for (int face = 1; face <= FaceCount; ++face) {
            const CellId next = field.connections.Neighbour(cell, face);
            if (next <= 0 || reached[static_cast<std::size_t>(next)] != 0) continue;
            if (!(FaceSign[static_cast<std::size_t>(face) - 1] * field.flux(cell, face) > 0.0)) continue;
            reached[static_cast<std::size_t>(next)] = 1;
            open.push_back(next);
        }
    }
    return reached;
}

TEST(OrderByFlow, GroupsExactlyTheCellsThatReachEachOtherInAnyField) {
    std::mt19937 generator(11);
    std::uniform_real_distribution<double> any(-1.0, 1.0);
    Field field(4, 3, 3);
    for (CellId cell = 1; cell <= field.grid.NCELLS; ++cell)
        for (int axis = 1; axis <= AxisCount; ++axis) {
            const double rate = any(generator);
            if (field.connections.Neighbour(cell, 2 * axis) > 0 && std::abs(rate) > 0.5)
                field.flow(cell, axis, rate);
        }
    field.sort();
    ASSERT_EQ(field.order.cells.size(), 36U);
    std::vector<std::vector<std::uint8_t>> reach(1);
    for (CellId cell = 1; cell <= 36; ++cell) reach.push_back(reachedFrom(cell, field));
    std::size_t together = 0;
    for (std::size_t a = 1; a <= 36; ++a)
        for (std::size_t b = 1; b <= 36; ++b) {
            if (a == b || reach[a][b] == 0) continue;
            const std::size_t first = field.groupOf(static_cast<CellId>(a));
            const std::size_t second = field.groupOf(static_cast<CellId>(b));
            if (reach[b][a] != 0) {
                EXPECT_EQ(first, second) << a << " and " << b;
                ++together;
            } else {
                EXPECT_LT(first, second) << a << " flows to " << b;
            }
        }
    EXPECT_GT(together, 0U) << "the field has rings";
    EXPECT_GT(field.groupCount(), 5U) << "and cells outside of them";
}

}  // namespace
}  // namespace kvr
