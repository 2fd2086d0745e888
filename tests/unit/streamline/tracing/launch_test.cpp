#include "streamline/tracing/launch.hpp"

#include "unit/streamline/flow_samples.hpp"

#include <gtest/gtest.h>

namespace kvr {
namespace {

using samples::addWell;
using samples::emptyFlow;
using samples::Flow;

using Counts = std::array<int, 6>;

void setFlux(Flow& flow, CellId cell, std::array<double, 6> flux) {
    for (int face = 1; face <= 6; ++face)
        flow.velocity.CellFaceFlux(cell, face) = flux[static_cast<std::size_t>(face) - 1];
}

void addConnection(Flow& flow, CellId cell, double rate) {
    WellConnection connection;
    connection.ConnCell = cell;
    connection.reservoirRate = rate;
    flow.wells.wells.back().connections.push_back(connection);
}

std::string count(Flow& flow, int requested) {
    const QuietConsole quiet;
    flow.plan.RequestedLines = requested;
    rebuildCellTags(flow.grid.NCELLS, flow.wells, flow.tags);
    countLines(quiet.console, flow.wells, flow.connections, flow.velocity, flow.tags, flow.plan);
    return quiet.logText();
}

/// An injector with completions of 600 and 400 rb/day in the cells 31 and 53 of a 5x5x4 box, a producer.
Flow twoCompletions(std::array<double, 6> first, double firstRate, std::array<double, 6> second,
                    double secondRate) {
    Flow flow = emptyFlow(5, 5, 4, 10.0, 10.0, 10.0);
    addWell(flow, "I", "inj", 32, firstRate);
    addConnection(flow, 63, secondRate);
    addWell(flow, "P", "prd", 100, -(firstRate + secondRate));
    setFlux(flow, 32, first);
    setFlux(flow, 63, second);
    return flow;
}

TEST(CountLines, SharesTheLinesOfACompletionByFaceFlux) {
    Flow flow = twoCompletions({0, 300, 0, 300, 0, 0}, 600, {0, 100, 0, 100, 0, 200}, 400);
    const std::string log = count(flow, 10);
    EXPECT_EQ(flow.plan.counts[0][0], (Counts{0, 3, 0, 3, 0, 0}));
    EXPECT_EQ(flow.plan.counts[0][1], (Counts{0, 1, 0, 1, 0, 2}));
    EXPECT_EQ(flow.plan.ActiveLines, 10);
    EXPECT_DOUBLE_EQ(flow.plan.LineFlux, 100.0);
    EXPECT_NE(log.find("Streamline Start from : inj"), std::string::npos);
    EXPECT_NE(log.find("Number of Streamline : 10"), std::string::npos);
    EXPECT_NE(log.find("One Streamline flow  : 100"), std::string::npos);
}

TEST(CountLines, RoundsFaceByFaceAndSpreadsTheWholeRateOverWhatItCounted) {
    Flow flow = twoCompletions({0, 250, 0, 150, 0, 0}, 400, {0, 0, 350, 250, 0, 0}, 600);
    count(flow, 7);
    EXPECT_EQ(flow.plan.counts[0][0], (Counts{0, 2, 0, 1, 0, 0}));
    EXPECT_EQ(flow.plan.counts[0][1], (Counts{0, 0, 2, 2, 0, 0}));
    EXPECT_EQ(flow.plan.ActiveLines, 7);
    EXPECT_NEAR(flow.plan.LineFlux, 142.857142857, 1e-8);
}

TEST(CountLines, CanLeaveASmallInjectorWithoutLines) {
    Flow flow = emptyFlow(5, 5, 1, 10.0, 10.0, 10.0);
    addWell(flow, "A", "inj", 7, 95);
    addWell(flow, "B", "inj", 17, 5);
    addWell(flow, "P", "prd", 25, -100);
    setFlux(flow, 7, {0, 95, 0, 0, 0, 0});
    setFlux(flow, 17, {0, 5, 0, 0, 0, 0});
    const std::string log = count(flow, 1);
    EXPECT_EQ(flow.plan.counts[0][0][1], 1);
    EXPECT_EQ(flow.plan.counts[1][0][1], 0);
    EXPECT_DOUBLE_EQ(flow.plan.LineFlux, 100.0);
    EXPECT_EQ(log.find("WARNING"), std::string::npos);
}

TEST(CountLines, RoundsHalvesAwayFromZero) {
    Flow flow = emptyFlow(5, 5, 1, 10.0, 10.0, 10.0);
    addWell(flow, "A", "inj", 7, 100);
    addWell(flow, "P", "prd", 25, -100);
    setFlux(flow, 7, {0, 31.25, 0, 62.5, 0, 6.25});
    count(flow, 4);  // shares 1.25, 2.5 and 0.25 lines
    EXPECT_EQ(flow.plan.counts[0][0], (Counts{0, 1, 0, 3, 0, 0}));
}

TEST(CountLines, CountsFacesWhicheverWayTheyFlow) {
    Flow flow = emptyFlow(5, 5, 1, 10.0, 10.0, 10.0);
    addWell(flow, "A", "inj", 7, 100);
    addWell(flow, "P", "prd", 25, -100);
    setFlux(flow, 7, {50, 150, 0, 0, 0, 0});  // enters by face 1, leaves by face 2
    count(flow, 8);
    EXPECT_EQ(flow.plan.counts[0][0], (Counts{2, 6, 0, 0, 0, 0}));
}

TEST(CountLines, WarnsOfACompletionAmongTaggedCellsAndKeepsTheFluxOfABoundaryFace) {
    Flow flow = emptyFlow(3, 1, 1, 10.0, 10.0, 10.0);
    addWell(flow, "LEFTWELL", "prd", 1, -50);
    addWell(flow, "MIDDLE", "inj", 2, 100);
    addWell(flow, "RIGHT", "prd", 3, -50);
    setFlux(flow, 2, {-50, 50, 0, 0, 0, 0});
    const std::string log = count(flow, 10);
    EXPECT_EQ(flow.plan.ActiveLines, 0);
    EXPECT_NE(log.find(" WARNING :: Zero SL Launched from Well : MIDDLE   Perfolation grid : 2"),
              std::string::npos);

    setFlux(flow, 2, {-50, 50, 0, 3, 0, 0});  // an entry on the closed face 4
    count(flow, 10);
    EXPECT_EQ(flow.plan.counts[1][0], (Counts{0, 0, 0, 10, 0, 0}));
}

TEST(CountLines, LaunchesFromTheOnlySideThereIsAndKeepsThatMode) {
    Flow flow = emptyFlow(5, 5, 1, 10.0, 10.0, 10.0);
    addWell(flow, "P", "prd", 7, -100);
    setFlux(flow, 7, {10, -10, 0, 0, 0, 0});
    count(flow, 4);
    EXPECT_EQ(flow.plan.LaunchMode, "prd");
    EXPECT_EQ(flow.plan.ActiveLines, 4);
    clearLaunch(flow.plan);
    EXPECT_EQ(flow.plan.LaunchMode, "prd");
    EXPECT_EQ(flow.plan.ActiveLines, 0);
}

TEST(CountLines, LaunchesNothingFromWellsInCellMode) {
    Flow flow = twoCompletions({0, 300, 0, 300, 0, 0}, 600, {0, 100, 0, 100, 0, 200}, 400);
    flow.plan.LaunchMode = "cel";
    count(flow, 10);
    EXPECT_EQ(flow.plan.ActiveLines, 0);
    EXPECT_EQ(flow.plan.LineFlux, 1.0);
    EXPECT_EQ(flow.plan.wellCounts[0], 10);
}

TEST(CountLines, StopsBeforeMoreLinesThanItCanHold) {
    Flow flow = twoCompletions({0, 300, 0, 300, 0, 0}, 600, {0, 100, 0, 100, 0, 200}, 400);
    flow.plan.RequestedLines = 2'000'000'000;
    rebuildCellTags(flow.grid.NCELLS, flow.wells, flow.tags);
    EXPECT_EXIT(countLines(consoleOnStandardError(), flow.wells, flow.connections, flow.velocity, flow.tags,
                           flow.plan),
                ::testing::ExitedWithCode(1), "Number of streamlines beyond limit");
}

/// The start points of a lone injector in the middle of a box.
std::vector<LineStart> placed(int nx, int ny, int nz, Counts counts, bool referenceCube) {
    Flow flow = emptyFlow(nx, ny, nz, 50.0, 40.0, 10.0);
    addWell(flow, "I", "inj", (flow.grid.NCELLS + 1) / 2, 100);
    flow.plan.counts = {{counts}};
    placeLines(flow.grid, flow.wells, {flow.options.gridDimensionality, referenceCube}, flow.plan);
    return flow.plan.starts;
}

TEST(PlaceLines, SpreadsPointsEvenlyAlongAFaceOfAnArealGrid) {
    const std::vector<LineStart> cube = placed(3, 3, 1, {0, 3, 0, 0, 0, 0}, true);
    ASSERT_EQ(cube.size(), 3U);
    EXPECT_NEAR(cube[0].point[1], 1.0 / 6.0, 1e-15);
    EXPECT_NEAR(cube[1].point[1], 0.5, 1e-15);
    EXPECT_NEAR(cube[2].point[1], 5.0 / 6.0, 1e-15);
    for (const LineStart& start : cube) {
        EXPECT_EQ(start.point[0], 1.0);
        EXPECT_EQ(start.point[2], 0.5);
        EXPECT_EQ(start.cell, 5);
        EXPECT_EQ(start.face, 2);
        EXPECT_EQ(start.well, 1);
        EXPECT_EQ(start.completion, 1);
    }
    const std::vector<LineStart> box = placed(3, 3, 1, {0, 0, 4, 0, 0, 0}, false);
    ASSERT_EQ(box.size(), 4U);
    const double expected[] = {6.25, 18.75, 31.25, 43.75};
    for (std::size_t i = 0; i < 4; ++i) {
        EXPECT_NEAR(box[i].point[0], expected[i], 1e-12);
        EXPECT_EQ(box[i].point[1], 0.0);
        EXPECT_EQ(box[i].point[2], 5.0);
    }
}

TEST(PlaceLines, LeavesAnAxisAtZeroWhereTheGridGivesItNoMeaning) {
    const std::vector<LineStart> column = placed(3, 1, 1, {1, 0, 0, 1, 0, 0}, true);
    EXPECT_EQ(column[0].point, (std::array<double, 3>{0.0, 0.5, 0.5}));
    EXPECT_EQ(column[1].point, (std::array<double, 3>{0.5, 1.0, 0.0}));
    const std::vector<LineStart> section = placed(3, 1, 3, {0, 1, 1, 0, 0, 1}, true);
    EXPECT_EQ(section[0].point, (std::array<double, 3>{1.0, 0.5, 0.5}));
    EXPECT_EQ(section[1].point, (std::array<double, 3>{0.5, 0.0, 0.0}));
    EXPECT_EQ(section[2].point, (std::array<double, 3>{0.5, 0.5, 1.0}));
}

TEST(PlaceLines, DrawsTheSameRandomPointsInEveryRunAndOthersInTheNextStep) {
    const std::vector<LineStart> first = placed(3, 3, 3, {2, 2, 2, 2, 2, 2}, true);
    const std::vector<LineStart> second = placed(3, 3, 3, {2, 2, 2, 2, 2, 2}, true);
    ASSERT_EQ(first.size(), 12U);
    for (std::size_t i = 0; i < first.size(); ++i) {
        EXPECT_EQ(first[i].point, second[i].point);
        const auto axis = static_cast<std::size_t>(first[i].face - 1) / 2;
        EXPECT_EQ(first[i].point[axis], first[i].face % 2 == 0 ? 1.0 : 0.0);
        EXPECT_LE(*std::max_element(first[i].point.begin(), first[i].point.end()), 1.0);
    }
    Flow flow = emptyFlow(3, 3, 3, 1.0, 1.0, 1.0);
    addWell(flow, "I", "inj", 14, 100);
    flow.plan.counts = {{{1, 0, 0, 0, 0, 0}}};
    placeLines(flow.grid, flow.wells, {"xyz_3d", true}, flow.plan);
    const std::array<double, 3> before = flow.plan.starts[0].point;
    placeLines(flow.grid, flow.wells, {"xyz_3d", true}, flow.plan);
    EXPECT_NE(before, flow.plan.starts[0].point);
}

TEST(CellTags, LetTheLastWellDecideASharedCellAndPassARateWellAtRest) {
    Flow flow = emptyFlow(5, 1, 1, 10.0, 10.0, 10.0);
    addWell(flow, "I", "inj", 2, 100);
    addWell(flow, "P", "prd", 2, -100);
    addWell(flow, "REST", "prd", 3, 0);
    addWell(flow, "BHP", "prd", 4, 0);
    flow.wells.wells.back().WellControl = "bhp";
    rebuildCellTags(flow.grid.NCELLS, flow.wells, flow.tags);
    EXPECT_EQ(flow.tags.CellTag[1], CellTagKind::Pop);
    EXPECT_EQ(flow.tags.CellTag[2], CellTagKind::Producer);
    EXPECT_EQ(flow.tags.CellTag[3], CellTagKind::Pop);
    EXPECT_EQ(flow.tags.CellTag[4], CellTagKind::Producer);
}

}  // namespace
}  // namespace kvr
