#include "model/fault_faces.hpp"

#include "unit/deck/deck_bench.hpp"
#include "unit/model/conditioned.hpp"

#include <cstdio>

namespace kvr {
namespace {

TEST(SharedSpan, IsTheHeightThatLevelFacesHaveInCommon) {
    EXPECT_DOUBLE_EQ(sharedSpan({{0, 0}, {10, 10}}, {{4, 4}, {15, 15}}), 6.0);
    EXPECT_DOUBLE_EQ(sharedSpan({{0, 0}, {10, 10}}, {{10, 10}, {20, 20}}), 0.0);
    EXPECT_DOUBLE_EQ(sharedSpan({{0, 0}, {10, 10}}, {{2, 2}, {3, 3}}), 1.0);
}

TEST(SharedSpan, IsExactWhereEdgesCross) {
    // A strip of height 10 that climbs by 20 across a level one of the same height: a triangle of height 10.
    EXPECT_NEAR(sharedSpan({{0, 0}, {10, 10}}, {{-10, 10}, {0, 20}}), 5.0, 1e-12);
    // A wedge.
    EXPECT_NEAR(sharedSpan({{0, 0}, {10, 0}}, {{0, 0}, {10, 0}}), 5.0, 1e-12);
    // Tops cross in the middle: a quarter is lost on the one half, a quarter on the other.
    EXPECT_NEAR(sharedSpan({{0, 10}, {20, 20}}, {{10, 0}, {20, 20}}), 20.0 - 7.5, 1e-12);
}

/// Two columns of two cells of 100 by 50 by 10 ft, 100 md; the second lies `thrown` ft deeper.
GridModel thrownColumns(float thrown, bool joins = true) {
    GridModel grid = rockOnly(2, 1, 2);
    verticalPillars(grid, {0, 100, 200}, {0, 50}, 0, 2000);
    for (int k = 1; k <= 2; ++k)
        for (int i = 1; i <= 2; ++i) {
            const float top = 1000.0F + 10.0F * static_cast<float>(k - 1) + (i == 2 ? thrown : 0.0F);
            setDepths(grid, i, 1, k, top, top + 10.0F);
        }
    CALC_RESERVOIR_COORDINATE_FRMCOORD(grid, CubicFeetPerBarrel);
    grid.joinsAcrossFaults = joins;
    return grid;
}

TEST(FaultFaces, JoinEveryCellThatAFaceTouchesByTheSharedArea) {
    const auto [grid, t] = condition(thrownColumns(5), true);
    // halves k A/L = 100 * 250/50 * C, two behind each other
    EXPECT_TRUE(close(t.Trans(1, 2), 250 * C));
    EXPECT_TRUE(close(t.Trans(2, 1), 250 * C));
    EXPECT_TRUE(close(t.Trans(3, 2), 250 * C));
    ASSERT_EQ(t.further.size(), 1U);
    EXPECT_EQ(t.Neighbour(2, 7), 3);
    EXPECT_EQ(t.Neighbour(3, 7), 2);
    EXPECT_EQ(t.Neighbour(1, 7), 0);
    EXPECT_TRUE(close(t.Trans(2, 7), 250 * C));
    EXPECT_TRUE(close(t.Trans(3, 7), 250 * C));
    EXPECT_NEAR(t.DepthDiff(2, 7), 5.0, 1e-9);
    EXPECT_NEAR(t.DepthDiff(3, 7), -5.0, 1e-9);
    EXPECT_EQ(t.further[0].face, 1);
    EXPECT_EQ(t.flowDirections, 7);
}

TEST(FaultFaces, PartNeighboursThatDoNotTouch) {
    const auto [grid, t] = condition(thrownColumns(10), true);
    EXPECT_EQ(t.Trans(1, 2), 0.0);
    EXPECT_EQ(t.Trans(3, 2), 0.0);
    EXPECT_TRUE(close(t.Trans(2, 7), 500 * C));
}

TEST(FaultFaces, LeaveGridsWithoutThrowAsTheyWere) {
    const auto joined = condition(thrownColumns(0), true);
    const auto plain = condition(thrownColumns(0, false), true);
    EXPECT_TRUE(joined.table.further.empty());
    for (CellId cell = 1; cell <= 4; ++cell)
        for (int d = 1; d <= FaceCount; ++d)
            EXPECT_EQ(joined.table.Trans(cell, d), plain.table.Trans(cell, d));
}

TEST(FaultFaces, AreOfNoEffectInDecksThatJoinByIndex) {
    const auto [grid, t] = condition(thrownColumns(5, false), true);
    EXPECT_TRUE(t.further.empty());
    EXPECT_TRUE(close(t.Trans(1, 2), 500 * C));
}

TEST(FaultFaces, AreMultipliedWithTheFaceThatTheyLeaveBy) {
    GridModel grid = thrownColumns(5);
    grid.faceMultiplier[1].assign(4, 1.0);  // MULTX of cell 3
    grid.faceMultiplier[1][3] = 0.5;
    grid.faceMultiplier[0].assign(4, 1.0);  // MULTX- of cell 2
    grid.faceMultiplier[0][2] = 0.1;
    const auto [out, t] = condition(grid, true);
    EXPECT_TRUE(close(t.Trans(3, 2), 125 * C));
    EXPECT_TRUE(close(t.Trans(1, 2), 25 * C));
    EXPECT_TRUE(close(t.Trans(2, 7), 12.5 * C));
    EXPECT_TRUE(close(t.Trans(3, 7), 12.5 * C));
}

TEST(FaultFaces, TakePartInAFault) {
    GridModel grid = thrownColumns(5);
    grid.faultFaces = {{"F", {1, 1, 1, 1, 1, 2}, 2}};
    grid.faultMultipliers = {{"F", 0.2}};
    const auto [out, t] = condition(grid, true);
    EXPECT_TRUE(close(t.Trans(1, 2), 50 * C));
    EXPECT_TRUE(close(t.Trans(2, 7), 50 * C));
}

TEST(RegionMultipliers, ActOnAllThatJoinsTwoRegionsByTheLastRowThatMeansIt) {
    GridModel grid = thrownColumns(5);
    grid.MULTNUM.assign(4, 1);
    grid.MULTNUM[2] = grid.MULTNUM[4] = 2;
    RegionMultiplier row;
    row.first = 1;
    row.second = 2;
    row.value = 0.1;
    grid.regionMultipliers = {row};
    row.value = 0.5;
    row.further = RegionMultiplier::Further::Not;
    row.regionSet = RegionSet::Mult;  // the first row means it, too
    grid.regionMultipliers.push_back(row);
    const auto [out, t] = condition(grid, true);
    EXPECT_TRUE(close(t.Trans(1, 2), 125 * C)) << "by the second row";
    EXPECT_TRUE(close(t.Trans(2, 1), 125 * C));
    EXPECT_TRUE(close(t.Trans(2, 7), 25 * C)) << "by the first, which alone means it";
    EXPECT_TRUE(close(t.Trans(3, 7), 25 * C));
    EXPECT_EQ(t.Trans(1, 6), condition(thrownColumns(5), true).table.Trans(1, 6));
}

TEST(RegionMultipliers, MeanAnyOtherRegionWhereOneIsLeftOutAndTheirAxesAlone) {
    GridModel grid = uniformBlocks(3, 1, 2, 100.0, 50.0, 10.0);
    const auto plain = condition(grid, false).table;
    grid.FLUXNUM.assign(6, 1);
    grid.FLUXNUM[2] = 2;
    grid.FLUXNUM[3] = 3;
    RegionMultiplier row;
    row.first = 2;
    row.value = 0.25;
    row.axes = {true, true, false};
    row.regionSet = RegionSet::Flux;
    grid.regionMultipliers = {row};
    const auto [out, t] = condition(grid, false);
    EXPECT_TRUE(close(t.Trans(1, 2), 0.25 * plain.Trans(1, 2)));
    EXPECT_TRUE(close(t.Trans(3, 1), 0.25 * plain.Trans(3, 1)));
    EXPECT_EQ(t.Trans(2, 6), plain.Trans(2, 6));
    EXPECT_EQ(t.Trans(4, 2), plain.Trans(4, 2));
}

TEST(FaultFaces, ThatAreLeftOutAreTold) {
    for (const float thrown : {0.0F, 5.0F}) {
        GridModel grid = thrownColumns(thrown);
        const Console told{std::tmpfile(), nullptr, nullptr};
        RunOptions options;
        options.useNewtran = true;
        options.componentCount = 2;
        ConnectionTable table;
        CALCTRANS_STATICGEOPART(told, options, UnitSystem{}, grid, table);
        EXPECT_EQ(contentsOf(told.screen).find("NOT JOINED ACROSS FAULTS") != std::string::npos,
                  thrown > 0.0F);
        EXPECT_TRUE(table.further.empty());
        std::fclose(told.screen);
    }
}

}  // namespace
}  // namespace kvr
