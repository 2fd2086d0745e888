#include "streamline/transport/line_grid.hpp"

#include "unit/streamline/flow_samples.hpp"

#include <gtest/gtest.h>

namespace kvr {
namespace {

SolverLine tracedLine(const std::vector<double>& deltaTof, double nodeFactor) {
    SolverLine line;
    sizeSolverLine(static_cast<int>(deltaTof.size()), nodeFactor, 0, line);
    line.tracedNodeCount = static_cast<int>(deltaTof.size());
    for (std::size_t n = 1; n <= deltaTof.size(); ++n) {
        line.tracedDeltaTof[n] = deltaTof[n - 1];
        line.tracedTof[n] = line.tracedTof[n - 1] + deltaTof[n - 1];
    }
    return line;
}

std::vector<double> used(const std::vector<double>& values, int count) {
    return {values.begin() + 1, values.begin() + 1 + count};
}

TEST(LayNodes, KeepsTheTracedNodesOfAnIrregularLine) {
    SolverLine line = tracedLine({10, 1, 5}, 1.0);
    layNodes(NodeControl::Irregular, 1.0, 1.0, line);
    EXPECT_EQ(line.nodeCount, 3);
    EXPECT_EQ(used(line.DeltaTof, 3), (std::vector<double>{10, 1, 5}));
    EXPECT_FALSE(line.regridded);
}

TEST(LayNodes, MakesTheCeilingOfFactorTimesNodesOnARegularLine) {
    SolverLine line = tracedLine({10, 2, 3, 20, 5}, 1.5);
    layNodes(NodeControl::Regular, 1.5, 1.0, line);
    EXPECT_EQ(line.nodeCount, 8);
    for (int n = 1; n <= 8; ++n) EXPECT_DOUBLE_EQ(line.DeltaTof[static_cast<std::size_t>(n)], 5.0);
    EXPECT_TRUE(line.regridded);
    // Mid-times 2.5 7.5 12.5 17.5 22.5 27.5 32.5 37.5 in cells ending at 10 12 15 35 40.
    EXPECT_EQ(std::vector<int>(line.tracedNode.begin() + 1, line.tracedNode.begin() + 9),
              (std::vector<int>{1, 1, 3, 4, 4, 4, 4, 5}));
}

TEST(LayNodes, EvensOutARegularLineOfAsManyNodesToo) {
    SolverLine line = tracedLine({10, 2}, 1.0);
    layNodes(NodeControl::Regular, 1.0, 1.0, line);
    EXPECT_EQ(line.nodeCount, 2);
    EXPECT_EQ(used(line.DeltaTof, 2), (std::vector<double>{6, 6}));
}

TEST(LayNodes, AveragesShortNodesUntilTheMeanReachesHalfTheFirst) {
    SolverLine line = tracedLine({10, 1, 1, 1, 8}, 1.0);
    layNodes(NodeControl::Auto, 1.0, 1.0, line);
    EXPECT_EQ(used(line.DeltaTof, 5), (std::vector<double>{10, 2.75, 2.75, 2.75, 2.75}));
    EXPECT_EQ(std::vector<int>(line.groupMark.begin() + 1, line.groupMark.begin() + 6),
              (std::vector<int>{0, 1, 1, 1, 1}));
    EXPECT_TRUE(line.regridded);

    SolverLine longer = tracedLine({10, 1, 9, 7, 2, 20}, 1.0);
    layNodes(NodeControl::Auto, 1.0, 1.0, longer);
    EXPECT_EQ(used(longer.DeltaTof, 6), (std::vector<double>{10, 5, 5, 7, 11, 11}));
    EXPECT_EQ(std::vector<int>(longer.groupMark.begin() + 1, longer.groupMark.begin() + 7),
              (std::vector<int>{0, 1, 1, 0, 2, 2}));
}

TEST(LayNodes, LeavesAnAutoLineOfLongNodesAlone) {
    SolverLine line = tracedLine({10, 6, 5}, 1.0);
    layNodes(NodeControl::Auto, 1.0, 1.0, line);
    EXPECT_FALSE(line.regridded);
}

TEST(RemapToTraced, WeighsTheSolverNodesByTheirOverlap) {
    SolverLine line = tracedLine({4, 10, 1}, 1.0);
    layNodes(NodeControl::Regular, 1.0, 1.0, line);  // three nodes of 5 days
    const std::vector<double> solver = {0, 1, 2, 4, 0};
    std::vector<double> traced(5, 0.0);
    remapToTraced(line, solver, traced);
    EXPECT_DOUBLE_EQ(traced[1], 1.0);
    EXPECT_DOUBLE_EQ(traced[2], (1.0 * 1 + 5.0 * 2 + 4.0 * 4) / 10.0);
    EXPECT_DOUBLE_EQ(traced[3], 4.0);
}

TEST(TakeTracedLine, TurnsALineFromAProducerRound) {
    samples::Flow flow = samples::column(4, 1000.0, 50.0);
    flow.state.PoreVolume[2] = 3000.0;
    samples::prepareTracing(flow);
    traceLine(flow.grid, flow.field, samples::startAt(1, 2, {1.0, 0.5, 0.5}), true, flow.record);
    SolverLine forward;
    sizeSolverLine(4, 1.0, 0, forward);
    takeTracedLine(flow.grid, flow.record, false, true, forward);
    traceLine(flow.grid, flow.field, samples::startAt(4, 1, {0.0, 0.5, 0.5}, 2), false, flow.record);
    SolverLine backward;
    sizeSolverLine(4, 1.0, 0, backward);
    takeTracedLine(flow.grid, flow.record, true, true, backward);

    const double times[] = {0.0, 20.0, 80.0, 100.0, 120.0};
    for (std::size_t n = 0; n <= 4; ++n) {
        EXPECT_EQ(forward.tracedCell[n], backward.tracedCell[n]);
        EXPECT_NEAR(forward.tracedTof[n], times[n], 1e-8);
        EXPECT_NEAR(backward.tracedTof[n], times[n], 1e-8);
    }
    EXPECT_EQ(backward.injector, 1);
    EXPECT_EQ(backward.producer, 2);
}

TEST(TakeTracedLine, MeasuresTheFirstAndLastStepFromTheCellCentres) {
    samples::Flow flow = samples::column(4, 1000.0, 50.0);  // blocks of 10 ft
    traceLine(flow.grid, flow.field, samples::startAt(1, 2, {1.0, 0.5, 0.5}), true, flow.record);
    SolverLine line;
    sizeSolverLine(4, 1.0, 0, line);
    takeTracedLine(flow.grid, flow.record, false, true, line);
    EXPECT_NEAR(line.tracedStepLength[2], 15.0, 1e-6);  // centre of cell 1 to the far face of cell 2
    EXPECT_NEAR(line.tracedStepLength[3], 10.0, 1e-6);
    EXPECT_NEAR(line.tracedStepLength[4], 5.0, 1e-6);
}

}  // namespace
}  // namespace kvr
