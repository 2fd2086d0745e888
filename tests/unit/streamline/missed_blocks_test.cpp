#include "streamline/missed_blocks.hpp"

#include "flood_run.hpp"
#include "streamline/mapping/mapping.hpp"
#include "streamline/streamline_step.hpp"

#include <algorithm>
#include <cstdlib>
#include <gtest/gtest.h>
#include <string>

namespace kvr {
namespace {

using samples::FloodRun;

CellId visitedCells(const Simulation& s) {
    CellId count = 0;
    for (CellId cell = 1; cell <= s.grid.NCELLS; ++cell) count += s.mapping.CellVisited[cell];
    return count;
}

/// The number that a console line names behind `words`.
int spoken(const FloodRun& run, const std::string& words) {
    const std::string text = run.quiet.screenText();
    for (std::size_t at = text.find(words); at != std::string::npos; at = text.find(words, at + 1)) {
        const std::size_t colon = text.find_first_not_of(' ', at + words.size());
        if (colon == std::string::npos || text.compare(colon, 2, ": ") != 0) continue;
        const char* digits = text.c_str() + colon + 2;
        char* end = nullptr;
        const long value = std::strtol(digits, &end, 10);
        if (end != digits) return static_cast<int>(value);
    }
    return -1;
}

FloodRun missedRun(const samples::Flow& flow, int lines, const char* missed = "Yes", const char* mode = "inj",
                   int threads = 1) {
    samples::Flow asked = flow;
    asked.options.traceMissed = missed;
    asked.options.streamlineStart = mode;
    return {asked, lines, 30.0, threads};
}

TEST(MissedBlocks, AreSweptToTheSameBitsByAnyNumberOfThreads) {
    FloodRun alone = missedRun(samples::quarterFiveSpot(20, 300.0), 3);
    alone.advance(2);
    for (const int threads : {2, 3, 8}) {
        FloodRun run = missedRun(samples::quarterFiveSpot(20, 300.0), 3, "Yes", "inj", threads);
        run.advance(2);
        for (CellId cell = 1; cell <= 400; ++cell) EXPECT_EQ(run.s.state.Sw[cell], alone.s.state.Sw[cell]);
        EXPECT_EQ(spoken(run, "Additional Streamline"), spoken(alone, "Additional Streamline"));
    }
}

TEST(MissedBlocks, AreAllReachedFromFewLaunchedLines) {
    FloodRun run = missedRun(samples::quarterFiveSpot(20, 300.0), 1);
    run.advance(1);
    EXPECT_EQ(visitedCells(run.s), 400);
    const int missed = spoken(run, "Number of Missed blk");
    const int additional = spoken(run, "Additional Streamline");
    EXPECT_GT(missed, 100);
    EXPECT_GT(additional, 0);
    EXPECT_LT(additional, missed / 5);
}

TEST(MissedBlocks, AreLeftAloneUnlessAskedFor) {
    FloodRun run = missedRun(samples::quarterFiveSpot(20, 300.0), 1, "No");
    run.advance(1);
    EXPECT_LT(visitedCells(run.s), 400);
    EXPECT_EQ(run.quiet.screenText().find("missed blk --"), std::string::npos);
}

TEST(MissedBlocks, SpeakTheirStageInOrder) {
    FloodRun run = missedRun(samples::quarterFiveSpot(8, 300.0), 1);
    run.advance(1);
    const std::string text = run.quiet.screenText();
    std::size_t from = 0;
    for (const char* words : {"time elapsed transSL :", "-- Saturation calculation from missed blk --\n",
                              "Additional Streamline  : ", "time elapsed missedblk :"}) {
        from = text.find(words, from);
        ASSERT_NE(from, std::string::npos) << words;
    }
}

TEST(MissedBlocks, TellHowFarTheirLinesAre) {
    FloodRun run = missedRun(samples::quarterFiveSpot(20, 300.0), 1);
    run.advance(1);
    const std::string text = run.quiet.screenText();
    const std::size_t stage = text.find("-- Saturation calculation from missed blk --");
    EXPECT_NE(text.find(" Calculation Finished : ", stage), std::string::npos);
}

TEST(MissedBlocks, LeaveTheLaunchingCellToTheLinesThatStartThere) {
    const samples::Flow flow = samples::quarterFiveSpot(16, 300.0);
    FloodRun run = missedRun(flow, 6);
    run.advance(1);
    EXPECT_EQ(run.s.mapping.visitedSnapshot[1], 1);  // the injector's
}

TEST(MissedBlocks, WriteNoCellOfTheSnapshot) {
    // Cells of the launched line alone keep what it gave them.
    const samples::Flow flow = samples::quarterFiveSpot(16, 300.0);
    FloodRun without = missedRun(flow, 6, "No");
    FloodRun with = missedRun(flow, 6);
    for (FloodRun* run : {&without, &with}) {
        run->s.options.conservativeMapping = false;  // cells take what lines give them, nothing else
        run->s.clock.dt = run->s.clock.workDt = 600.0;
    }
    without.advance(1);
    with.advance(1);
    int launched = 0;
    int moved = 0;
    for (CellId cell = 1; cell <= flow.grid.NCELLS; ++cell) {
        if (with.s.mapping.visitedSnapshot[cell] != 0) {
            ASSERT_EQ(with.s.state.Sw[cell], without.s.state.Sw[cell]) << cell;
            ++launched;
        } else if (with.s.state.Sw[cell] > 0.201) {
            ++moved;
        }
    }
    EXPECT_GT(launched, 10);
    EXPECT_GT(moved, 0);
}

TEST(MissedBlocks, KeepCelAsTheModeAndAreItsOnlyLines) {
    const samples::Flow flow = samples::quarterFiveSpot(20, 300.0);
    FloodRun run = missedRun(flow, 1, "No", "cel");
    run.advance(1);
    EXPECT_EQ(run.s.launch.LaunchMode, "cel");
    EXPECT_EQ(visitedCells(run.s), 400);
    EXPECT_EQ(spoken(run, "Number of Streamline"), -1);
    EXPECT_GT(spoken(run, "Additional Streamline"), 10);
    EXPECT_TRUE(std::none_of(run.s.mapping.visitedSnapshot.slots.begin(),
                             run.s.mapping.visitedSnapshot.slots.end(), [](auto flag) { return flag != 0; }));
    EXPECT_NEAR(run.waterGained(), 300.0 * 30.0, 0.03 * 300.0 * 30.0);
}

TEST(MissedBlocks, RunForwardAlsoWhereLinesAreLaunchedFromProducers) {
    const samples::Flow flow = samples::quarterFiveSpot(20, 300.0);
    FloodRun run = missedRun(flow, 2, "Yes", "prd");
    run.advance(2);
    EXPECT_EQ(run.s.launch.LaunchMode, "prd");
    EXPECT_EQ(visitedCells(run.s), 400);
    // Water stands around the injector, not around the producer.
    EXPECT_GT(run.s.state.Sw[42], 0.6);
    EXPECT_NEAR(run.s.state.Sw[379], 0.2, 1e-9);
}

TEST(MissedBlocks, PassOverDeadCells) {
    samples::Flow flow = samples::quarterFiveSpot(20, 300.0);
    flow.grid.Active[20] = 0;
    flow.grid.PERMX[40] = 0.0;
    flow.state.PoreVolume[381] = 0.0;
    FloodRun run = missedRun(flow, 1);
    run.s.mapping.CellVisited.assign(400, 1);
    for (const CellId cell : {20, 40, 381}) run.s.mapping.CellVisited[cell] = 0;
    traceMissedBlocks(run.s, 0);
    EXPECT_EQ(spoken(run, "Additional Streamline"), 0);
}

TEST(MissedBlocks, ThatDieInsideAreVisitedButGiveTheMappingNothing) {
    // The producer is not tagged: every line ends without one.
    samples::Flow flow = samples::quarterFiveSpot(12, 300.0);
    flow.wells.wells[1].TargetRate = 0.0;
    samples::prepareTracing(flow);
    FloodRun run = missedRun(flow, 1, "No", "cel");
    run.s.options.conservativeMapping = false;  // nothing moves but by lines
    run.advance(1);
    EXPECT_EQ(visitedCells(run.s), 144);
    EXPECT_GT(spoken(run, "Additional Streamline"), 0);
    EXPECT_EQ(run.waterGained(), 0.0);
}

TEST(MissedBlocks, AreTheSameForAnyNumberOfThreads) {
    samples::Flow flow = samples::quarterFiveSpot(16, 300.0);
    flow.options.traceMissed = "Yes";
    FloodRun one(flow, 5, 100.0, 1);
    FloodRun three(flow, 5, 100.0, 3);
    one.advance(2);
    three.advance(2);
    for (CellId cell = 1; cell <= flow.grid.NCELLS; ++cell)
        ASSERT_EQ(one.s.state.Sw[cell], three.s.state.Sw[cell]) << cell;
}

TEST(MissedBlocks, GiveTheProducerItsWaterCutInModeCel) {
    const samples::Flow flow = samples::quarterFiveSpot(20, 300.0);
    FloodRun all(flow, 400, 100.0);
    FloodRun cel = missedRun(flow, 1, "No", "cel");
    cel.s.clock.dt = cel.s.clock.workDt = 100.0;
    all.s.options.nodeControl = cel.s.options.nodeControl = "reg";
    double water[2] = {0.0, 0.0};
    for (int step = 0; step < 30; ++step) {
        all.advance(1);
        cel.advance(1);
        water[0] -= 100.0 * all.s.wells.wells[1].WellQw;
        water[1] -= 100.0 * cel.s.wells.wells[1].WellQw;
    }
    EXPECT_GT(water[0], 50.0 * 300.0);
    EXPECT_NEAR(water[1], water[0], 0.06 * water[0]);
}

}  // namespace
}  // namespace kvr
