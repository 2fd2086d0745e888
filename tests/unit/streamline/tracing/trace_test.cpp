#include "streamline/tracing/trace.hpp"

#include "unit/streamline/flow_samples.hpp"

#include <gtest/gtest.h>

namespace kvr {
namespace {

using samples::column;
using samples::Flow;
using samples::quarterFiveSpot;
using samples::startAt;

void trace(Flow& flow, const LineStart& start, bool fromInjector) {
    traceLine(flow.grid, flow.field, start, fromInjector, flow.record);
}

TEST(TraceLine, AddsUpResidenceTimesAlongARowOfCells) {
    Flow flow = column(5, 1000.0, 50.0);
    trace(flow, startAt(1, 2, {1.0, 0.5, 0.5}), true);
    EXPECT_EQ(flow.record.status, TraceStatus::ReachedWell);
    ASSERT_EQ(flow.record.nodeCount, 5);
    for (std::size_t n = 0; n <= 5; ++n)
        EXPECT_NEAR(flow.record.NodeTof[n], 20.0 * static_cast<double>(n), 1e-10 * 100.0);
    EXPECT_EQ(flow.record.NodeTof[1], 1000.0 / (50.0 + 1e-10));
    EXPECT_EQ(flow.record.injector, 1);
    EXPECT_EQ(flow.record.producer, 2);
}

TEST(TraceLine, FitsARowIntoExactlyItsCells) {
    Flow flow = column(100, 1000.0, 50.0);
    EXPECT_EQ(flow.record.MaxNodes, 100);
    trace(flow, startAt(1, 2, {1.0, 0.5, 0.5}), true);
    EXPECT_EQ(flow.record.nodeCount, 100);
    EXPECT_EQ(flow.record.status, TraceStatus::ReachedWell);
    EXPECT_NEAR(flow.record.NodeTof[100], 2000.0, 1e-10 * 2000.0);
}

TEST(TraceLine, RejectsALineThroughAClosedFace) {
    Flow flow = column(5, 1000.0, 50.0);
    trace(flow, startAt(1, 1, {0.0, 0.5, 0.5}), true);
    EXPECT_EQ(flow.record.status, TraceStatus::Rejected);
    EXPECT_EQ(flow.record.nodeCount, 1);
}

TEST(TraceLine, DiesWithoutAFarEndWhenTheNodesRunOut) {
    Flow flow = column(10, 1000.0, 50.0);
    flow.record.MaxNodes = 6;
    trace(flow, startAt(1, 2, {1.0, 0.5, 0.5}), true);
    EXPECT_EQ(flow.record.status, TraceStatus::DiedInside);
    EXPECT_EQ(flow.record.nodeCount, 5);
    EXPECT_EQ(flow.record.enteredNodes, 6);
    EXPECT_EQ(flow.record.producer, 0);
}

TEST(TraceLine, DropsTheNodeOfACellThatItCannotLeave) {
    Flow flow = column(5, 1000.0, 50.0);
    flow.velocity.CellFaceFlux(3, 2) = -50.0;  // cell 3 is entered from both sides
    flow.velocity.CellFaceFlux(4, 1) = -50.0;
    samples::prepareTracing(flow);
    trace(flow, startAt(1, 2, {1.0, 0.5, 0.5}), true);
    EXPECT_EQ(flow.record.status, TraceStatus::DiedInside);
    EXPECT_EQ(flow.record.nodeCount, 2);
}

TEST(TraceLine, StaysAtMidCellOnOneLayer) {
    Flow flow = quarterFiveSpot(10, 500.0);
    trace(flow, startAt(1, 2, {1.0, 0.3, 0.5}), true);
    EXPECT_EQ(flow.record.status, TraceStatus::ReachedWell);
    for (int n = 1; n < flow.record.nodeCount; ++n)
        EXPECT_DOUBLE_EQ(flow.record.NodeLocalPoint[static_cast<std::size_t>(n)][2], 0.5);
}

TEST(TraceLine, RunsTheSamePathBackward) {
    Flow flow = quarterFiveSpot(20, 500.0);
    for (const double y : {0.1, 0.37, 0.5, 0.83}) {
        trace(flow, startAt(1, 2, {1.0, y, 0.5}), true);
        ASSERT_EQ(flow.record.status, TraceStatus::ReachedWell);
        const StreamlineRecord forward = flow.record;
        const auto last = static_cast<std::size_t>(forward.nodeCount);
        // The face of the producer cell that the forward line came in by.
        const int enteredBy = oppositeFace(forward.NodeExitFace[last - 1]);
        trace(flow, startAt(flow.grid.NCELLS, enteredBy, forward.NodeLocalPoint[last], 2), false);
        ASSERT_EQ(flow.record.nodeCount, forward.nodeCount);
        EXPECT_EQ(flow.record.injector, 1);
        EXPECT_EQ(flow.record.producer, 2);
        const double totalForward = forward.NodeTof[last];
        EXPECT_NEAR(flow.record.NodeTof[last], totalForward, 1e-8 * totalForward);
        for (std::size_t n = 0; n <= last; ++n) {
            EXPECT_NEAR(flow.record.NodeTof[n], totalForward - forward.NodeTof[last - n],
                        1e-8 * totalForward);
            if (n > 0) {
                EXPECT_EQ(flow.record.NodeCell[n], forward.NodeCell[last + 1 - n]);
            }
        }
    }
}

TEST(TraceLine, PutsItsNodesWhereTheEightCornersOfTheirCellsDo) {
    Flow flow = samples::emptyFlow(4, 4, 3, 100.0, 100.0, 20.0);
    samples::addWell(flow, "I", "inj", 1, 100.0);
    samples::addWell(flow, "P", "prd", flow.grid.NCELLS, -100.0);
    samples::solveFlow(flow);
    samples::prepareTracing(flow);
    for (std::size_t k = 24; k < flow.grid.xyz_3d.size(); ++k)  // no two faces of a cell parallel
        flow.grid.xyz_3d[k] += static_cast<float>(k % 7) - 3.0F;
    for (const int face : {2, 4, 6}) {
        std::array<double, 3> point{0.3, 0.6, 0.2};
        point[static_cast<std::size_t>(face) / 2 - 1] = 1.0;
        trace(flow, startAt(1, face, point), true);
        ASSERT_GT(flow.record.nodeCount, 3);
        for (std::size_t n = 1; n < static_cast<std::size_t>(flow.record.nodeCount); ++n)
            EXPECT_EQ(flow.record.NodePosition[n],
                      cellPoint(flow.grid, flow.record.NodeCell[n], flow.record.NodeLocalPoint[n]));
    }
}

TEST(TraceField, IsEmptyOnceReleased) {
    Flow flow = quarterFiveSpot(3, 50.0);
    releaseTraceField(flow.field);
    EXPECT_EQ(flow.field.cells.capacity(), 0U);
    EXPECT_EQ(flow.field.boxes.capacity(), 0U);
}

TEST(TraceLine, GivesTheSameTimesInTheCubeAndInTheBox) {
    Flow cube = quarterFiveSpot(20, 500.0);
    Flow box = cube;
    box.options.cornerPointTracing = false;
    samples::prepareTracing(box);
    const double size = 50.0;
    for (const double y : {0.1, 0.5, 0.83}) {
        trace(cube, startAt(1, 2, {1.0, y, 0.5}), true);
        trace(box, startAt(1, 2, {size, y * size, 10.0}), true);
        ASSERT_EQ(cube.record.nodeCount, box.record.nodeCount);
        for (int n = 1; n <= cube.record.nodeCount; ++n) {
            const auto node = static_cast<std::size_t>(n);
            EXPECT_NEAR(cube.record.NodeTof[node], box.record.NodeTof[node],
                        1e-9 * cube.record.NodeTof[node]);
            EXPECT_EQ(cube.record.NodeCell[node], box.record.NodeCell[node]);
            if (n < cube.record.nodeCount) {
                EXPECT_NEAR(cube.record.NodeLocalPoint[node][0] * size, box.record.NodeLocalPoint[node][0],
                            1e-7);
            }
        }
    }
}

/// Time of flight between the wells of a homogeneous quarter five-spot along its diagonal, corner to
/// corner, from the exact potential. The pattern repeats over a square lattice of image wells; on the
/// diagonal of the unit square the speed of a flow q through a porous layer is
///   v = q pi-periodic sum; by the complex potential W = -ln(sn(Kz)...), summed here as images in rows,
/// each row of a well of strength m at spacing 2 giving m/4 coth(pi (z - z0)/2) (rows are closed forms).
double diagonalTimeOfFlight(double fromFraction, double toFraction, double poreVolumeOverRate) {
    // Unit square, injector at (0,0), producer at (1,1), full wells of strength 4 (quarter rate 1): images of
    // injectors at (2i, 2j) and producers at (2i+1, 2j+1). Velocity on the diagonal by symmetry.
    const auto speed = [](double s) {
        // w = vx - i vy = sum over rows j of  (4/(2 pi)) (pi/2) coth(pi (z - i y_j - x_r)/2) summed along y;
        // a column of sources at x = x0, spacing 2 along y, gives (4/(2 pi)) (pi/2) coth(pi (z - z0)/2).
        double vx = 0.0;
        for (int column = -40; column <= 40; ++column) {
            const double strength = column % 2 == 0 ? 1.0 : -1.0;
            const double y0 = column % 2 == 0 ? 0.0 : 1.0;
            const double a = M_PI * (s - column);
            const double b = M_PI * (s - y0);
            vx += strength * std::sinh(a) / (std::cosh(a) - std::cos(b));
        }
        return vx;  // x part of the speed per unit quarter rate; the y part is equal
    };
    const int steps = 20000;
    double time = 0.0;
    for (int i = 0; i < steps; ++i) {
        const double s = fromFraction + (toFraction - fromFraction) * (i + 0.5) / steps;
        time += (toFraction - fromFraction) / steps / speed(s);
    }
    return time * poreVolumeOverRate;
}

TEST(TraceLine, TakesTheTimeOfTheExactPotentialAlongTheDiagonal) {
    // Between the entries of the 1/8 and 7/8 points of the diagonal, clear of the well cells whose shape the
    // exact potential does not have; on 64 blocks a side these are cell corners.
    const int n = 64;
    Flow flow = quarterFiveSpot(n, 500.0);
    const double total = 500.0;
    double poreVolume = 0.0;
    for (CellId cell = 1; cell <= flow.grid.NCELLS; ++cell) poreVolume += flow.state.PoreVolume[cell];
    // A line just beside the diagonal; its times at the cells (8,8) and (56,56).
    trace(flow, startAt(1, 2, {1.0, 1.0 - 1e-6, 0.5}), true);
    ASSERT_EQ(flow.record.status, TraceStatus::ReachedWell);
    const auto timeAfter = [&](int index) {
        const CellId cell = cellIndex(flow.grid, index, index, 1);
        for (int k = 1; k <= flow.record.nodeCount; ++k)
            if (flow.record.NodeCell[static_cast<std::size_t>(k)] == cell)
                return flow.record.NodeTof[static_cast<std::size_t>(k)];
        return -1.0;
    };
    const double traced = timeAfter(56) - timeAfter(8);
    const double exact = diagonalTimeOfFlight(8.0 / n, 56.0 / n, poreVolume / total);
    EXPECT_NEAR(traced, exact, 0.01 * exact);
}

TEST(ReportTracing, CountsTheCellsThatNoLineReachedAndSpeaksTheLineCount) {
    Flow flow = column(5, 1000.0, 50.0);
    CellArray<std::uint8_t> visited;
    visited.assign(5, 0);
    visited[3] = 1;
    const QuietConsole quiet;
    reportTracing(quiet.console, flow.tags, 7, visited);
    EXPECT_EQ(quiet.logText(), "Successed Streamline : 7\nNumber of Missed blk : 2\n");
    EXPECT_EQ(quiet.screenText(), quiet.logText());
}

TEST(MaxNodes, FollowTheDimensionsAndTheNodeFactor) {
    Flow flow = samples::emptyFlow(3, 7, 5, 1.0, 1.0, 1.0);
    EXPECT_EQ(maxNodes(flow.options, flow.grid), 112);
    flow.options.gridDimensionality = "xy_2d";
    EXPECT_EQ(maxNodes(flow.options, flow.grid), 56);
    flow.options.gridDimensionality = "x_1d";
    EXPECT_EQ(maxNodes(flow.options, flow.grid), 3);
    flow.options.nodeFactor = 1.7;
    EXPECT_EQ(maxNodes(flow.options, flow.grid), 5);
    flow.options.nodeFactor = 0.5;
    EXPECT_EQ(maxNodes(flow.options, flow.grid), 3);
}

}  // namespace
}  // namespace kvr
