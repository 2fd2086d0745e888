#include "model/multipliers.hpp"

#include "unit/model/conditioned.hpp"

#include <gtest/gtest.h>

namespace kvr {
namespace {

TEST(Multipliers, OfTransActOnTheBoxedCellsSideOnly) {
    const auto normal = condition(threeBlocks(), false);
    GridModel grid = threeBlocks();
    grid.multiplyRows.push_back(row("MULTX", 0.0, {2, 2, 1, 1, 1, 1}));
    const auto [out, t] = condition(std::move(grid), false);
    EXPECT_EQ(t.Trans(2, 1), 0.0);
    EXPECT_EQ(t.Trans(2, 2), 0.0);
    EXPECT_EQ(t.Trans(1, 2), normal.table.Trans(1, 2));
    EXPECT_EQ(t.Trans(3, 1), normal.table.Trans(3, 1));
}

TEST(Multipliers, OfAnEqualsRowShutALayersOwnVerticalColumns) {
    GridModel grid = uniformBlocks(1, 1, 3, 100, 100, 10);
    grid.equalsRows.push_back(row("Multz", 0.0, {0, 0, 0, 0, 2, 2}));
    const auto [out, t] = condition(std::move(grid), false);
    EXPECT_EQ(t.Trans(2, 5), 0.0);
    EXPECT_EQ(t.Trans(2, 6), 0.0);
    EXPECT_GT(t.Trans(1, 6), 0.0);
    EXPECT_GT(t.Trans(3, 5), 0.0);
}

TEST(Multipliers, NamedTranActOnTransAndLeavePermeability) {
    const auto normal = condition(threeBlocks(), false);
    GridModel grid = threeBlocks();
    grid.editRows.push_back(row("TRANX", 0.1, {2, 2, 1, 1, 1, 1}));
    const auto [out, t] = condition(std::move(grid), false);
    EXPECT_TRUE(close(t.Trans(2, 1), 0.1 * normal.table.Trans(2, 1)));
    EXPECT_TRUE(close(t.Trans(2, 2), 0.1 * normal.table.Trans(2, 2)));
    EXPECT_EQ(t.Trans(1, 2), normal.table.Trans(1, 2));
    EXPECT_EQ(out.PERMX[2], 50.0);
}

TEST(Multipliers, OfRockInEditActOnceHoweverOftenTheGeometryIsConditioned) {
    Conditioned c{threeBlocks(), {}};
    c.grid.editRows.push_back(row("PORV", 0.5));
    c.grid.editRows.push_back(row("TRANX", 0.5));
    RunOptions options;
    options.useNewtran = false;
    const Console silent{nullptr, nullptr, nullptr};
    for (int iteration = 1; iteration <= 3; ++iteration)
        CALCTRANS_STATICGEOPART(silent, options, UnitSystem{}, c.grid, c.table);
    EXPECT_DOUBLE_EQ(c.grid.PORO[1], 0.1);
    EXPECT_TRUE(close(c.table.Trans(1, 2), 0.5 * 0.2252916759, 1e-9));
}

TEST(Multipliers, OfZeroPoreVolumeShutTheCellFromTheFirstConditioningOn) {
    Conditioned c{threeBlocks(), {}};
    c.grid.editRows.push_back(row("PORV", 0.0, {2, 2, 1, 1, 1, 1}));
    RunOptions options;
    options.useNewtran = false;
    const Console silent{nullptr, nullptr, nullptr};
    for (int iteration = 1; iteration <= 2; ++iteration) {
        CALCTRANS_STATICGEOPART(silent, options, UnitSystem{}, c.grid, c.table);
        EXPECT_EQ(c.grid.Active[2], 0);
        EXPECT_EQ(c.grid.PORO[2], 1e-20);
        EXPECT_EQ(c.table.Trans(1, 2), 0.0);
        EXPECT_EQ(c.table.Trans(2, 1), 0.0);
        EXPECT_EQ(c.grid.Active[1], 1);
    }
}

TEST(Multipliers, OfRockActInOrderAndInTheirBoxOnly) {
    GridModel grid = uniformBlocks(1, 1, 3, 100, 100, 10);
    grid.editRows.push_back(row("permx", 2.0, {1, 1, 1, 1, 2, 2}));
    grid.editRows.push_back(row("Permx", 3.0, {1, 1, 1, 1, 2, 2}));
    const auto [out, t] = condition(std::move(grid), false);
    EXPECT_EQ(out.PERMX[1], 100.0);
    EXPECT_EQ(out.PERMX[2], 600.0);
    EXPECT_EQ(out.PERMX[3], 100.0);
}

TEST(Multipliers, OfFacesActOnBothSidesOfTheirConnection) {
    const auto normal = condition(threeBlocks(), false);
    GridModel grid = threeBlocks();
    grid.faceMultiplier[1].assign(grid.NCELLS, 1.0);
    grid.faceMultiplier[1][1] = 0.5;  // MULTX of cell 1
    grid.faceMultiplier[0].assign(grid.NCELLS, 1.0);
    grid.faceMultiplier[0][3] = 0.1;  // MULTX- of cell 3
    const auto [out, t] = condition(std::move(grid), false);
    EXPECT_TRUE(close(t.Trans(1, 2), 0.5 * normal.table.Trans(1, 2)));
    EXPECT_TRUE(close(t.Trans(2, 1), 0.5 * normal.table.Trans(2, 1)));
    EXPECT_TRUE(close(t.Trans(2, 2), 0.1 * normal.table.Trans(2, 2)));
    EXPECT_TRUE(close(t.Trans(3, 1), 0.1 * normal.table.Trans(3, 1)));
}

TEST(Multipliers, OfAFaultActOnItsFaces) {
    const auto normal = condition(threeBlocks(), false);
    GridModel grid = threeBlocks();
    grid.faultFaces.push_back({"F", {2, 2, 1, 1, 1, 1}, 2});
    grid.faultMultipliers.push_back({"F", 0.25});
    const auto [out, t] = condition(std::move(grid), false);
    EXPECT_EQ(t.Trans(1, 2), normal.table.Trans(1, 2));
    EXPECT_TRUE(close(t.Trans(2, 2), 0.25 * normal.table.Trans(2, 2)));
    EXPECT_TRUE(close(t.Trans(3, 1), 0.25 * normal.table.Trans(3, 1)));
}

TEST(Multipliers, OfPoreVolumesActOnceAndLeaveConnections) {
    const auto normal = condition(threeBlocks(), false);
    Conditioned c{threeBlocks(), {}};
    c.grid.MULTPV.assign(c.grid.NCELLS, 1.0);
    c.grid.MULTPV[2] = 1000.0;
    RunOptions options;
    options.useNewtran = false;
    const Console silent{nullptr, nullptr, nullptr};
    for (int iteration = 1; iteration <= 2; ++iteration)
        CALCTRANS_STATICGEOPART(silent, options, UnitSystem{}, c.grid, c.table);
    EXPECT_DOUBLE_EQ(c.grid.PORO[2], 1000.0 * normal.grid.PORO[2]);
    EXPECT_EQ(c.grid.PORO[1], normal.grid.PORO[1]);
    EXPECT_EQ(c.table.Trans(1, 2), normal.table.Trans(1, 2));
}

TEST(Multipliers, OfFaultsInTheScheduleMultiplyWhatConnectionsAre) {
    auto [grid, t] = condition(threeBlocks(), false);
    grid.faultFaces.push_back({"F", {2, 2, 1, 1, 1, 1}, 2});
    const double first = t.Trans(2, 2);
    const std::vector<FaultMultiplier> factors = {{"F", 0.25}, {"OTHER", 0.0}};
    EXPECT_EQ(multiplyFaults(grid, factors, t), 1);
    EXPECT_EQ(multiplyFaults(grid, factors, t), 1);
    EXPECT_DOUBLE_EQ(t.Trans(2, 2), 0.0625 * first);
    EXPECT_DOUBLE_EQ(t.Trans(3, 1), 0.0625 * first);
    EXPECT_GT(t.Trans(1, 2), 0.0);
}

}  // namespace
}  // namespace kvr
