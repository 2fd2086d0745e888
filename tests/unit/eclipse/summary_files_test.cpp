#include "eclipse/summary_files.hpp"

#include "unit/eclipse/block_file.hpp"
#include "unit/eclipse/small_case.hpp"

#include <fmt/format.h>
#include <gtest/gtest.h>

namespace kvr {
namespace {

const std::vector<std::string> Mnemonics = {"TIME",  "WWCT",  "WBHP",  "WGOR",  "WWPR",  "WOPR",
                                            "WGPR",  "WOPRH", "WWPRH", "WGPRH", "WBHPH", "WWCTH",
                                            "WGORH", "WOPT",  "WWPT",  "WOPTH", "WWPTH"};
const std::vector<std::string> Units = {"DAYS", "",    "PSIA", "MSCF/STB", "STB", "STB", "MSCF", "STB", "STB",
                                        "MSCF", "STB", "STB",  "STB",      "STB", "STB", "STB",  "STB"};

std::string eightWide(std::string text) {
    text.resize(8, ' ');
    return text;
}

std::vector<std::string> names(int count) {
    std::vector<std::string> result;
    for (int n = 1; n <= count; ++n) result.push_back(fmt::format("W{}", n));
    return result;
}

std::size_t specSize(int wells) {
    SmallCase c(2, 2, 1);
    writeSummarySpec(c.run.console, c.run.options, c.run.grid, names(wells));
    return c.size(".SMSPEC");
}

std::size_t stepSize(std::size_t wells) {
    SmallCase c(2, 2, 1);
    writeSummaryStep(c.run.console, c.run.options, c.run.clock, std::vector<SummaryFigures>(wells));
    return c.size(".S0001");
}

TEST(SummarySizes, FollowTheNumberOfWells) {
    EXPECT_EQ(specSize(1), 808U);
    EXPECT_EQ(specSize(2), 1284U);
    EXPECT_EQ(specSize(7), 3688U);
    EXPECT_EQ(stepSize(0), 96U);
    EXPECT_EQ(stepSize(1), 172U);
    EXPECT_EQ(stepSize(2), 240U);
    EXPECT_EQ(stepSize(7), 580U);
}

TEST(SummarySpec, RepeatsEveryVectorForEveryWell) {
    SmallCase c(4, 3, 2);
    writeSummarySpec(c.run.console, c.run.options, c.run.grid, names(2));
    const std::vector<ReadBlock> blocks = blocksOf(c.path(".SMSPEC"));
    EXPECT_EQ(keywordsOf(blocks), (std::vector<std::string>{"RESTART", "DIMENS", "KEYWORDS", "WGNAMES",
                                                            "STARTDAT", "NUMS", "UNITS"}));
    EXPECT_EQ(textsOf(blocks[0]), std::vector<std::string>(9, "        "));
    EXPECT_EQ(blocks[1].data.integers, (std::vector<std::int32_t>{17, 4, 3, 2, 0, 0}));
    std::vector<std::string> keywords, wells, units;
    for (std::size_t v = 0; v < 17; ++v)
        for (int w = 1; w <= 2; ++w) {
            keywords.push_back(eightWide(Mnemonics[v]));
            wells.push_back(eightWide(fmt::format("W{}", w)));
            units.push_back(eightWide(Units[v]));
        }
    EXPECT_EQ(textsOf(blocks[2]), keywords);
    EXPECT_EQ(textsOf(blocks[3]), wells);
    EXPECT_EQ(blocks[4].data.integers, (std::vector<std::int32_t>{3, 2, 2001}));
    EXPECT_EQ(blocks[5].data.integers, std::vector<std::int32_t>(34, 1));
    EXPECT_EQ(textsOf(blocks[6]), units);
}

TEST(SummaryStep, HoldsTheValuesOfAllWellsVectorByVector) {
    SmallCase c(2, 1, 1);
    SummaryFigures producer;
    producer.producer = true;
    producer.time = 30.0;
    producer.water = 100.0;
    producer.oil = 300.0;
    producer.gas = 600.0;
    producer.bhp = -2000.0;
    producer.historyOil = 250.0;
    producer.historyWater = 750.0;
    producer.historyGas = 500.0;
    producer.historyBhp = 1990.0;
    producer.oilTotal = 9000.0;
    producer.waterTotal = 3000.0;
    producer.historyOilTotal = 7500.0;
    producer.historyWaterTotal = 22500.0;
    SummaryFigures injector = producer;
    injector.producer = false;
    injector.bhp = 5000.0;
    injector.historyBhp = 4990.0;
    writeSummaryStep(c.run.console, c.run.options, c.run.clock, {producer, injector});
    const std::vector<ReadBlock> blocks = blocksOf(c.path(".S0001"));
    EXPECT_EQ(keywordsOf(blocks), (std::vector<std::string>{"SEQHDR", "MINISTEP", "PARAMS"}));
    EXPECT_EQ(blocks[0].data.integers, std::vector<std::int32_t>{0});
    EXPECT_EQ(blocks[1].data.integers, std::vector<std::int32_t>{0});
    const std::vector<float> first = {30,  0.25F, 2000,  2, 100,  300,  600,  250,  750,
                                      500, 1990,  0.75F, 2, 9000, 3000, 7500, 22500};
    const std::vector<float>& values = blocks[2].data.reals;
    ASSERT_EQ(values.size(), 34U);
    for (std::size_t v = 0; v < 17; ++v) {
        EXPECT_FLOAT_EQ(values[2 * v], first[v]) << Mnemonics[v];
        const float second = v == 0 ? 30.0F : v == 2 ? 5000.0F : v == 10 ? 4990.0F : 0.0F;
        EXPECT_EQ(values[2 * v + 1], second) << Mnemonics[v];
    }
    // The gas-oil ratios of both wells are entries 7 and 8, counted from 1.
    EXPECT_FLOAT_EQ(values[6], 2.0F);
    EXPECT_EQ(values[7], 0.0F);
}

// --- figures -----------------------------------------------------------------------------------------------

struct TwoWells {
    TwoWells() : c(2, 1, 1) {
        Well& producer = c.addWell("P1", "prd");
        producer.WellQo = -300.0;
        producer.WellQw = -100.0;
        producer.WellQg = -178107.6173;
        producer.Bhp = 2000.0;
        Well& injector = c.addWell("I1", "inj");
        injector.WellQw = 500.0;
        injector.Bhp = 5000.0;
        const ScheduleWell blank;
        for (int w = 0; w < 2; ++w) entry.wells.push_back(blank);
        entry.wells.own(0).histOil = 250.0;
        entry.wells.own(0).histWater = 50.0;
        entry.wells.own(0).histGas = 356215.2346;
        entry.wells.own(0).histBhp = 1990.0;
        entry.wells.own(1).isInjector = true;
        entry.wells.own(1).histInjBhp = 4990.0;
    }
    std::vector<SummaryFigures> at(double time, int report, std::size_t wellCount = 2) {
        c.run.clock.time = time;
        c.run.clock.reportIndex = report;
        return summaryFigures(c.run.units, c.run.clock, entry, c.run.wells, wellCount, totals);
    }
    SmallCase c;
    ScheduleStep entry;
    SummaryTotals totals;
};

TEST(SummaryFiguresOfAWell, AreMagnitudesInFieldUnits) {
    TwoWells wells;
    const std::vector<SummaryFigures> figures = wells.at(10.0, 1);
    EXPECT_DOUBLE_EQ(figures[0].oil, 300.0);
    EXPECT_DOUBLE_EQ(figures[0].water, 100.0);
    EXPECT_NEAR(figures[0].gas, 1000.0, 1e-5);  // Mscf/day
    EXPECT_NEAR(figures[0].historyGas, 2000.0, 1e-5);
    EXPECT_EQ(figures[0].historyBhp, 1990.0);
    EXPECT_TRUE(figures[0].producer);
    EXPECT_FALSE(figures[1].producer);
    EXPECT_EQ(figures[1].historyBhp, 4990.0);
}

TEST(SummaryFiguresOfAWell, TakeThePresentPressureAsHistoryAtTimeZero) {
    TwoWells wells;
    const std::vector<SummaryFigures> figures = wells.at(0.0, 0);
    EXPECT_EQ(figures[0].historyBhp, 2000.0);
    EXPECT_EQ(figures[1].historyBhp, 5000.0);
    EXPECT_EQ(figures[0].oilTotal, 0.0);
}

TEST(SummaryFiguresOfAWell, SumRatesOverTheTimeSinceTheLastCall) {
    TwoWells wells;
    wells.at(0.0, 0);
    wells.at(10.0, 1);
    wells.c.run.wells.wells[0].WellQo = -200.0;
    const std::vector<SummaryFigures> figures = wells.at(15.0, 2);
    EXPECT_DOUBLE_EQ(figures[0].oilTotal, 10.0 * 300.0 + 5.0 * 200.0);
    EXPECT_DOUBLE_EQ(figures[0].waterTotal, 1500.0);
    EXPECT_DOUBLE_EQ(figures[0].historyOilTotal, 3750.0);
    EXPECT_DOUBLE_EQ(figures[0].historyWaterTotal, 750.0);
    EXPECT_DOUBLE_EQ(figures[1].waterTotal, 7500.0);
}

TEST(SummaryFiguresOfAWell, NotYetIntroducedAreZero) {
    TwoWells wells;
    const std::vector<SummaryFigures> figures = wells.at(10.0, 1, 3);
    ASSERT_EQ(figures.size(), 3U);
    EXPECT_EQ(figures[2].oil, 0.0);
    EXPECT_EQ(figures[2].bhp, 0.0);
    EXPECT_EQ(figures[2].time, 10.0);
}

}  // namespace
}  // namespace kvr
