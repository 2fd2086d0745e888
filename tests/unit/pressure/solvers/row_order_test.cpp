#include "pressure/solvers/row_order.hpp"

#include "unit/pressure/solvers/generated_systems.hpp"

#include <algorithm>
#include <gtest/gtest.h>
#include <numeric>

namespace kvr {
namespace {

using test::Box;

LinearSystem boxOf(const Box& box, std::array<double, 3> axisFactor,
                   std::span<const test::GeneratedWell> wells = {}) {
    const std::vector<double> ones(static_cast<std::size_t>(box.cells()), 1.0);
    return boxSystem(box, ones, axisFactor, 1.0, wells);
}

std::vector<int> naturalOrder(int size) {
    std::vector<int> order(static_cast<std::size_t>(size));
    std::iota(order.begin(), order.end(), 0);
    return order;
}

TEST(SweepOrder, CountsFastestAlongTheStrongestAxisAndSlowestAlongTheWeakest) {
    const std::vector<int> order = sweepOrder(boxOf({4, 3, 2}, {0.01, 1.0, 100.0}));
    std::size_t place = 0;
    for (int x = 0; x < 4; ++x) {
        for (int y = 0; y < 3; ++y) {
            for (int z = 0; z < 2; ++z) EXPECT_EQ(order[place++], x + 4 * (y + 3 * z));
        }
    }
}

TEST(SweepOrder, CountsSlowestAlongTheLongestAxisOfAUniformBox) {
    // A cut across x severs 3 * 2 couplings, one across y 9 * 2, one across z 9 * 3.
    const std::vector<int> order = sweepOrder(boxOf({9, 3, 2}, {1.0, 1.0, 1.0}));
    std::size_t place = 0;
    for (int x = 0; x < 9; ++x) {
        for (int y = 0; y < 3; ++y) {
            for (int z = 0; z < 2; ++z) EXPECT_EQ(order[place++], x + 9 * (y + 3 * z));
        }
    }
}

TEST(SweepOrder, LeavesRowsThatCountSoAlreadyInPlace) {
    EXPECT_EQ(sweepOrder(boxOf({3, 4, 5}, {100.0, 1.0, 0.01})), naturalOrder(60));
}

TEST(SweepOrder, KeepsWellRowsBehindTheCells) {
    const test::GeneratedWell well{{0, 12}, {1.0, 1.0}, 1.0};
    const std::vector<test::GeneratedWell> wells(2, well);
    const std::vector<int> order = sweepOrder(boxOf({4, 3, 2}, {1.0, 1.0, 100.0}, wells));
    EXPECT_EQ(order[24], 24);
    EXPECT_EQ(order[25], 25);
    std::vector<int> sorted = order;
    std::sort(sorted.begin(), sorted.end());
    EXPECT_EQ(sorted, naturalOrder(26));
}

TEST(SweepOrder, IsTheGivenOneWhereRowsAreNoBox) {
    const LinearSystem ring = test::fromFull({{3.0, -1.0, 0.0, 0.0, -1.0},
                                              {-1.0, 3.0, 0.0, -1.0, 0.0},
                                              {0.0, 0.0, 3.0, -1.0, -1.0},
                                              {0.0, -1.0, -1.0, 3.0, 0.0},
                                              {-1.0, 0.0, -1.0, 0.0, 3.0}},
                                             {1.0, 1.0, 1.0, 1.0, 1.0});
    EXPECT_EQ(sweepOrder(ring), naturalOrder(5));
    EXPECT_EQ(sweepOrder(test::fromFull({{1.0}}, {1.0})), naturalOrder(1));
}

}  // namespace
}  // namespace kvr
