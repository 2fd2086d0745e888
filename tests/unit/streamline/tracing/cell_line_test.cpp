#include "streamline/tracing/cell_line.hpp"

#include "unit/streamline/flow_samples.hpp"

#include <gtest/gtest.h>
#include <numeric>

namespace kvr {
namespace {

/// The line through a cell of a flow, and what it marked.
struct CellLine {
    CellArray<std::uint8_t> visited;
    CellLineLegs legs;
    StreamlineRecord record;
    double fresh = 0.0;

    CellLine(const samples::Flow& flow, CellId cell) {
        const int nodes = maxNodes(flow.options, flow.grid);
        sizeLegs(nodes, legs);
        sizeRecord(nodes, record);
        visited.assign(flow.grid.NCELLS, 0);
        fresh = traceThroughCell(flow.grid, flow.field, flow.state.PoreVolume, flow.wells, cell, visited,
                                 LegStandStill, legs, record);
    }
    [[nodiscard]] int marked() const {
        return std::accumulate(visited.slots.begin(), visited.slots.end(), 0);
    }
};

TEST(CellLine, JoinsBothLegsInARowOfCells) {
    // 500 rb a cell at 50 rb/day: ten days each, in the well cells too.
    const samples::Flow flow = samples::column(10, 500.0, 50.0);
    const CellLine line(flow, 4);
    ASSERT_EQ(line.record.status, TraceStatus::ReachedWell);
    EXPECT_EQ(line.legs.back.nodeCount, 4);
    EXPECT_EQ(line.legs.forward.nodeCount, 7);
    ASSERT_EQ(line.record.nodeCount, 10);
    for (int n = 1; n <= 10; ++n) {
        EXPECT_EQ(line.record.NodeCell[static_cast<std::size_t>(n)], n);
        EXPECT_NEAR(line.record.NodeTof[static_cast<std::size_t>(n)], 10.0 * n, 1e-8);
    }
    EXPECT_EQ(line.record.injector, 1);
    EXPECT_EQ(line.record.producer, 2);
    EXPECT_EQ(line.marked(), 10);
    EXPECT_NEAR(line.fresh, 5000.0, 1e-9);
}

TEST(CellLine, GivesNodesTheirDownstreamEnds) {
    const samples::Flow flow = samples::column(10, 500.0, 50.0);
    const CellLine line(flow, 4);
    for (std::size_t n = 1; n <= 9; ++n) {
        EXPECT_NEAR(line.record.NodePosition[n][0], 10.0 * static_cast<double>(n), 1e-5) << n;
        EXPECT_NEAR(line.record.NodeLocalPoint[n][0], 1.0, 1e-9) << n;
        EXPECT_EQ(line.record.NodeExitFace[n], 2) << n;
        const double length = n == 1 ? 0.0 : 10.0;  // the end in the well is measured with the solver's line
        EXPECT_NEAR(line.record.NodeStepLength[n], length, 1e-5) << n;
    }
}

TEST(CellLine, HasJoinedNodesAndRisingTimesThroughEveryCell) {
    const samples::Flow flow = samples::quarterFiveSpot(11, 300.0);
    for (CellId cell = 2; cell < flow.grid.NCELLS; ++cell) {
        const CellLine line(flow, cell);
        const bool diagonal = (cell - 1) % 11 == (cell - 1) / 11;  // runs into corners, where it may end
        ASSERT_TRUE(diagonal || line.record.status == TraceStatus::ReachedWell) << cell;
        ASSERT_EQ(line.record.nodeCount, line.legs.back.nodeCount + line.legs.forward.nodeCount - 1) << cell;
        for (std::size_t n = 1; n <= static_cast<std::size_t>(line.record.nodeCount); ++n)
            ASSERT_GT(line.record.NodeTof[n], line.record.NodeTof[n - 1]) << cell << " node " << n;
        EXPECT_GE(line.marked(), line.record.nodeCount);
    }
}

TEST(CellLine, TakesTheResidenceOfAWellCellFromItsCompletion) {
    samples::Flow flow = samples::column(5, 500.0, 50.0);
    flow.wells.wells[0].connections[0].reservoirRate = 25.0;
    flow.wells.wells[1].connections[0].reservoirRate = -100.0;
    const CellLine line(flow, 3);
    EXPECT_NEAR(line.record.NodeTof[1], 20.0, 1e-8);
    EXPECT_NEAR(line.record.NodeTof[5] - line.record.NodeTof[4], 5.0, 1e-8);
}

TEST(CellLine, ThroughAProducersCellHoldsItsWholeResidence) {
    const samples::Flow flow = samples::column(5, 500.0, 50.0);
    const CellLine line(flow, 5);
    EXPECT_EQ(line.record.status, TraceStatus::ReachedWell);
    ASSERT_EQ(line.record.nodeCount, 5);
    EXPECT_NEAR(line.record.NodeTof[5], 50.0, 1e-8);
}

TEST(CellLine, IsEmptyWhereNothingFlowsIn) {
    samples::Flow flow = samples::column(5, 500.0, 50.0);
    for (const CellId cell : {1, 3}) {  // the injector's cell, then one without any flow
        if (cell == 3)
            for (int face = 1; face <= 6; ++face) flow.velocity.CellFaceFlux(3, face) = 0.0;
        samples::prepareTracing(flow);
        const CellLine line(flow, cell);
        EXPECT_EQ(line.record.nodeCount, 0);
        EXPECT_EQ(line.record.status, TraceStatus::DiedInside);
        EXPECT_EQ(line.marked(), 1);
        EXPECT_NE(line.visited[cell], 0);
    }
}

TEST(CellLine, DiesWhereALegFindsNoWell) {
    samples::Flow flow = samples::column(6, 500.0, 50.0);
    flow.wells.wells[1].TargetRate = 0.0;  // not tagged
    samples::prepareTracing(flow);
    const CellLine line(flow, 3);
    EXPECT_EQ(line.record.status, TraceStatus::DiedInside);
    EXPECT_EQ(line.record.injector, 1);
    EXPECT_EQ(line.record.producer, 0);
    EXPECT_EQ(line.marked(), 6);
}

TEST(CellLine, DropsNodesBeyondItsCapacityFromTheProducersEnd) {
    samples::Flow flow = samples::column(10, 500.0, 50.0);
    CellLineLegs legs;
    StreamlineRecord record;
    CellArray<std::uint8_t> visited;
    visited.assign(10, 0);
    sizeLegs(10, legs);
    sizeRecord(6, record);
    traceThroughCell(flow.grid, flow.field, flow.state.PoreVolume, flow.wells, 5, visited, LegStandStill,
                     legs, record);
    EXPECT_EQ(record.nodeCount, 6);
    EXPECT_EQ(record.NodeCell[6], 6);
    EXPECT_EQ(record.status, TraceStatus::ReachedWell);
}

TEST(CellLine, CountsAPoreVolumeOnlyOnce) {
    const samples::Flow flow = samples::column(10, 500.0, 50.0);
    CellLine line(flow, 4);
    const double again = traceThroughCell(flow.grid, flow.field, flow.state.PoreVolume, flow.wells, 6,
                                          line.visited, LegStandStill, line.legs, line.record);
    EXPECT_EQ(again, 0.0);
}

}  // namespace
}  // namespace kvr
