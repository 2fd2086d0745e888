#include "streamline/streamline_step.hpp"

#include "flood_run.hpp"

#include <cmath>
#include <gtest/gtest.h>

namespace kvr {
namespace {

using samples::FloodRun;

TEST(StreamlineStep, FloodsARowOfCellsAsOneLine) {
    FloodRun run(samples::column(10, 500.0, 50.0), 1, 30.0);
    run.advance(1);
    const double sw[] = {0.73186127, 0.69262267, 0.66576346, 0.6370056,  0.61129213,
                         0.58245908, 0.46498875, 0.21397785, 0.20002918, 0.2};
    for (CellId cell = 1; cell <= 10; ++cell) EXPECT_NEAR(run.s.state.Sw[cell], sw[cell - 1], 1e-8);
    EXPECT_NEAR(run.waterGained(), 50.0 * 30.0, 1e-6);
}

TEST(StreamlineStep, SpeaksItsStagesInOrder) {
    FloodRun run(samples::column(10, 500.0, 50.0), 1, 30.0);
    run.advance(1);
    const std::string text = run.quiet.screenText();
    const char* expected[] = {
        "\n-- Saturation calculation --\n", "Number of Streamline : 1\n",   "One Streamline flow  : 50\n",
        "SL  Numerical method : mas\n",     "CFL condition for 1D : 0.8\n", "Total Stagnant Block : 1\n",
        "Successed Streamline : 1\n",       "Number of Missed blk : 0\n",   "time elapsed transSL :"};
    std::size_t from = 0;
    for (const char* words : expected) {
        const std::size_t found = text.find(words, from);
        ASSERT_NE(found, std::string::npos) << words;
        from = found;
    }
}

TEST(StreamlineStep, MapsOnlyAndSaysNothingWithoutWells) {
    samples::Flow flow = samples::column(10, 500.0, 50.0);
    flow.wells.wells.clear();
    FloodRun run(flow, 1, 30.0);
    run.advance(1);
    EXPECT_EQ(run.quiet.screenText(), "");
    EXPECT_EQ(run.waterGained(), 0.0);
}

TEST(StreamlineStep, ChangesNothingByLinesThatAreRejected) {
    samples::Flow flow = samples::column(3, 500.0, 50.0);
    // The injector cell's only open flux runs through its closed low face.
    flow.velocity.CellFaceFlux(1, 1) = -50.0;
    flow.velocity.CellFaceFlux(1, 2) = 0.0;
    FloodRun run(flow, 4, 30.0);
    run.s.options.conservativeMapping = false;  // nothing moves but by lines
    run.advance(1);
    EXPECT_EQ(run.waterGained(), 0.0);
    EXPECT_NE(run.quiet.screenText().find("Successed Streamline : 3\n"), std::string::npos);
}

TEST(StreamlineRestartStep, TracesLinesAndMovesNothing) {
    FloodRun run(samples::column(10, 500.0, 50.0), 1, 30.0);
    run.s.options.traceFromRestart = true;
    run.s.options.outputSensitivity = true;  // somebody looks at the rates by pair
    run.s.timeLevel = {};                    // a run that only traces keeps none
    const std::vector<double> water = run.s.state.Sw.slots;
    StreamlineRestartStep(run.s, 0, 0, 970.0, 1.0);
    EXPECT_EQ(run.s.state.Sw.slots, water);
    ASSERT_EQ(run.s.lines.pairs.allocation.size(), 1U);
    EXPECT_NEAR(run.s.lines.pairs.allocation[0], 50.0, 1e-9);
    EXPECT_NEAR(run.s.lines.pairs.fastest.at(0).endTime, run.s.state.PoreVolume[1] * 10.0 / 50.0,
                run.s.state.PoreVolume[1] / 50.0 + 1e-9);  // all cells, less what well cells leave out
    EXPECT_NE(run.quiet.screenText().find("Successed Streamline : 1\n"), std::string::npos);
}

TEST(StreamlineRestartStep, DoesNothingWithoutWells) {
    samples::Flow flow = samples::column(10, 500.0, 50.0);
    flow.wells.wells.clear();
    FloodRun run(flow, 1, 30.0);
    run.s.options.traceFromRestart = true;
    StreamlineRestartStep(run.s, 0, 0, 970.0, 1.0);
    EXPECT_EQ(run.quiet.screenText(), "");
}

TEST(StreamlineStep, SolvesNothingWithAWordThatMatchesNothing) {
    FloodRun run(samples::column(10, 500.0, 50.0), 1, 30.0);
    run.s.options.solverPhaseName = {"xyz"};
    run.s.options.conservativeMapping = false;  // nothing moves but by lines
    run.advance(1);
    EXPECT_EQ(run.waterGained(), 0.0);
}

TEST(StreamlineStep, LetsCellsPassWhatTheyHoldWhereNoLineTellsMore) {
    FloodRun run(samples::column(10, 500.0, 50.0), 1, 30.0);
    run.s.options.solverPhaseName = {"xyz"};
    run.advance(1);
    const Well& producer = run.s.wells.wells[1];
    EXPECT_NEAR(run.waterGained(), 30.0 * (50.0 + producer.WellQw), 1e-9);
    EXPECT_NEAR(producer.WellQw + producer.WellQo, -50.0, 1e-9);
    EXPECT_GT(run.s.state.Sw[1], run.s.state.Sw[2]);
}

TEST(StreamlineStep, StepsOnInPartsOfAPressureStepAsInOne) {
    FloodRun whole(samples::column(40, 500.0, 50.0), 1, 60.0);
    whole.advance(1);
    FloodRun parts(samples::column(40, 500.0, 50.0), 1, 60.0);
    parts.s.options.mapCount = 3;
    parts.s.clock.workDt = 20.0;
    for (int m = 1; m <= 3; ++m)
        StreamlineStep(parts.s, 0, 0, parts.s.clock.endTime - m * 20.0, 60.0 - m * 20.0);
    EXPECT_NEAR(parts.waterGained(), whole.waterGained(), 1e-6);
    for (CellId cell = 1; cell <= 40; ++cell)
        EXPECT_NEAR(parts.s.state.Sw[cell], whole.s.state.Sw[cell], 0.02);
}

TEST(StreamlineStep, TakesProducerRatesFromWhatTheLinesCarriedOut) {
    FloodRun run(samples::column(10, 500.0, 50.0), 1, 30.0);
    double produced = 0.0;
    for (int step = 0; step < 8; ++step) {
        run.advance(1);
        const Well& producer = run.s.wells.wells[1];
        EXPECT_NEAR(producer.WellQo + producer.WellQw, -50.0, 1e-9);  // the reservoir total is kept
        produced -= 30.0 * producer.WellQw;
    }
    EXPECT_GT(produced, 3000.0);
    EXPECT_NEAR(run.waterGained(), 50.0 * 240.0 - produced, 1e-6);  // one line: nothing is lost in mapping
}

TEST(StreamlineStep, LaunchedFromProducersGivesTheSameFlood) {
    FloodRun forward(samples::column(10, 500.0, 50.0), 1, 30.0);
    FloodRun backward(samples::column(10, 500.0, 50.0), 1, 30.0);
    backward.s.launch.LaunchMode = "prd";
    forward.advance(6);
    backward.advance(6);
    for (CellId cell = 1; cell <= 10; ++cell)
        EXPECT_NEAR(forward.s.state.Sw[cell], backward.s.state.Sw[cell], 1e-9);
    EXPECT_NEAR(forward.s.wells.wells[1].WellQw, backward.s.wells.wells[1].WellQw, 1e-9);
}

TEST(StreamlineStep, GivesTheSameBitsForAnyNumberOfThreads) {
    const samples::Flow flow = samples::quarterFiveSpot(12, 300.0);
    FloodRun one(flow, 37, 100.0, 1);
    FloodRun three(flow, 37, 100.0, 3);
    ASSERT_EQ(three.s.lines.workers.size(), 3U);
    one.advance(3);
    three.advance(3);
    for (CellId cell = 1; cell <= flow.grid.NCELLS; ++cell)
        ASSERT_EQ(one.s.state.Sw[cell], three.s.state.Sw[cell]) << cell;
    EXPECT_EQ(one.s.wells.wells[1].WellQw, three.s.wells.wells[1].WellQw);
    EXPECT_GT(one.waterGained(), 0.0);
}

TEST(StreamlineStep, FloodsAlmostAllTheInjectedWaterIntoAQuarterFiveSpot) {
    const samples::Flow flow = samples::quarterFiveSpot(20, 300.0);
    FloodRun run(flow, 400, 100.0);
    run.s.options.nodeControl = "reg";
    run.advance(5);
    EXPECT_NEAR(run.waterGained(), 300.0 * 500.0, 0.015 * 300.0 * 500.0);
    EXPECT_LT(std::abs(run.s.wells.wells[1].WellQw), 1e-9);  // before breakthrough
}

TEST(StreamlineStep, ReportsProgressTenTimesAtMost) {
    const samples::Flow flow = samples::quarterFiveSpot(12, 300.0);
    FloodRun run(flow, 60, 10.0);
    run.advance(1);
    const std::string text = run.quiet.logText();
    EXPECT_NE(text.find(" Calculation Finished : 6\n"), std::string::npos);
    EXPECT_EQ(text.find(" Calculation Finished : 5\n"), std::string::npos);
}

}  // namespace
}  // namespace kvr
