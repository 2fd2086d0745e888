#include "streamline/mapping/face_transfer.hpp"

#include "streamline/transport/explicit_transport.hpp"
#include "unit/streamline/flow_samples.hpp"
#include "unit/streamline/line_samples.hpp"

#include <gtest/gtest.h>

namespace kvr {
namespace {

/// Three cells in a row crossed by one line of residence times 10, 20 and 40 days; node i is cell i.
struct RowLine {
    FluidTables fluids = samples::plainFlood();
    SolverLine line = samples::floodedLine(fluids, {10.0, 20.0, 40.0});
    LinePassage passage;

    RowLine() {
        for (int n = 1; n <= 3; ++n) line.tracedCell[static_cast<std::size_t>(n)] = n;
        sizePassage(3, line.nodes.size(), passage);
    }
};

TEST(LinePassage, SummedUpBySubstepsIsWhatCameInLessWhatTheNodesHaveGained) {
    RowLine row;
    ExplicitControl control;
    ExplicitScratch scratch;
    advanceExplicit(row.fluids, control, 15.0, scratch, row.line);
    takePassage(row.line, row.passage);
    // The inlet lets in water alone, 1 a day; volumes are kept.
    EXPECT_DOUBLE_EQ(row.passage.water[0], 15.0);
    double gained = 0.0;
    for (std::size_t n = 1; n <= 3; ++n) {
        gained += row.line.DeltaTof[n] * (row.line.nodes[n].Sw - 0.2);
        EXPECT_NEAR(row.passage.water[n], 15.0 - gained, 1e-10);
        EXPECT_NEAR(row.passage.oil[n], gained, 1e-10);
    }
    EXPECT_NEAR(row.passage.water[3], 15.0 * row.line.outletWater, 1e-10);
    EXPECT_NEAR(row.passage.oil[3], 15.0 * row.line.outletOil, 1e-10);
}

TEST(LinePassage, IsLinearInTimeOfFlightOnARegriddedLine) {
    RowLine row;
    layNodes(NodeControl::Regular, 1.0, 1.0, row.line);  // three nodes of 70/3 days
    const double passed[] = {5.0, 3.0, 2.0, 1.0};
    for (std::size_t i = 0; i <= 3; ++i) row.line.nodes[i].passedW = passed[i];
    takePassage(row.line, row.passage);
    EXPECT_NEAR(row.passage.water[0], 5.0, 1e-12);
    EXPECT_NEAR(row.passage.water[1], 5.0 - 2.0 * 30.0 / 70.0, 1e-12);  // 10 of the first 70/3 days
    EXPECT_NEAR(row.passage.water[2], 3.0 - 20.0 / 70.0, 1e-12);        // 30 days: 20/3 into the second
    EXPECT_NEAR(row.passage.water[3], 1.0, 1e-12);
}

TEST(LinePassage, TellsNothingWhereANodeIsLongerThanTheCell) {
    RowLine row;
    takePassage(row.line, row.passage);
    EXPECT_EQ(row.passage.told[1] + row.passage.told[2] + row.passage.told[3], 3);
    layNodes(NodeControl::Regular, 1.0, 1.0, row.line);  // three nodes of 70/3 days over 10, 20 and 40
    takePassage(row.line, row.passage);
    EXPECT_EQ(row.passage.told[1], 0);
    EXPECT_EQ(row.passage.told[2], 0);
    EXPECT_EQ(row.passage.told[3], 1);
}

TEST(FaceTransfer, CountsTheFlowOfLinesThatTellNothingWithoutTheirMakeUp) {
    const samples::Flow flow = samples::emptyFlow(3, 1, 1, 10.0, 10.0, 10.0);
    LinePassage passage;
    sizePassage(3, 4, passage);
    passage.water = {9.0, 0.5, 0.25, 9.0, 9.0};
    passage.told[1] = 0;
    FaceTransfer transfer;
    clearTransfer(3, transfer);
    addPassage(flow.connections, std::vector<CellId>{0, 1, 2, 3}, 3, 10.0, {}, passage, transfer);
    EXPECT_EQ(transfer.flow(1, 1), 10.0);
    EXPECT_EQ(transfer.told(1, 1), 0.0);
    EXPECT_EQ(transfer.water(1, 1), 0.0);
    EXPECT_EQ(transfer.told(2, 1), 10.0);
    EXPECT_EQ(transfer.water(2, 1), 2.5);
}

TEST(FaceTransfer, HoldsALineOnTheLowSideOfEachFaceWithTheSignOfTheIndex) {
    const samples::Flow flow = samples::emptyFlow(2, 2, 1, 10.0, 10.0, 10.0);
    LinePassage passage;
    sizePassage(3, 4, passage);
    passage.oil = {9.0, 0.5, 0.25, 9.0, 9.0};
    passage.gas = {9.0, 60.0, 20.0, 9.0, 9.0};
    FaceTransfer transfer;
    clearTransfer(4, transfer);
    const std::vector<CellId> cells{0, 3, 4, 2};  // up along x, then down along y
    addPassage(flow.connections, cells, 3, 100.0, {}, passage, transfer);
    addPassage(flow.connections, cells, 3, 100.0, {}, passage, transfer);
    EXPECT_DOUBLE_EQ(transfer.flow(3, 1), 200.0);
    EXPECT_DOUBLE_EQ(transfer.oil(3, 1), 100.0);
    EXPECT_DOUBLE_EQ(transfer.gas(3, 1), 12000.0);
    EXPECT_DOUBLE_EQ(transfer.flow(2, 2), -200.0);
    EXPECT_DOUBLE_EQ(transfer.gas(2, 2), -4000.0);
    EXPECT_EQ(transferFace(flow.connections, 4, 1).cell, 3);
    EXPECT_EQ(transferFace(flow.connections, 4, 3).cell, 2);
    EXPECT_EQ(transferFace(flow.connections, 4, 3).axis, 2);
    EXPECT_EQ(transferFace(flow.connections, 1, 1).cell, 0);
}

TEST(FaceTransfer, TakesNoLineBetweenTwoCoveredCells) {
    const samples::Flow flow = samples::emptyFlow(3, 1, 1, 10.0, 10.0, 10.0);
    LinePassage passage;
    sizePassage(3, 4, passage);
    FaceTransfer transfer;
    clearTransfer(3, transfer);
    CellArray<std::uint8_t> covered;
    covered.assign(3, 0);
    covered[1] = covered[2] = 1;
    addPassage(flow.connections, std::vector<CellId>{0, 1, 2, 3}, 3, 10.0, covered, passage, transfer);
    EXPECT_EQ(transfer.flow(1, 1), 0.0);
    EXPECT_EQ(transfer.flow(2, 1), 10.0);
}

}  // namespace
}  // namespace kvr
