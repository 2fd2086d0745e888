#include "streamline/diagnostics/pair_table.hpp"

#include "unit/streamline/flow_samples.hpp"

#include <gtest/gtest.h>

namespace kvr {
namespace {

/// Wells by kind, one cell each.
WellRecord wellsOf(const std::vector<std::string>& kinds) {
    WellRecord record;
    for (const std::string& kind : kinds) {
        Well well;
        well.WellKind = kind;
        record.wells.push_back(well);
    }
    return record;
}

TEST(PairTable, NumbersPairsWithTheInjectorsRunningFastest) {
    const WellRecord wells = wellsOf({"prd", "inj", "inj", "prd", "inj"});
    PairTable table;
    clearPairs(wells, false, table);
    EXPECT_EQ(injectorIndex(wells, table, 5), 3);
    EXPECT_EQ(injectorIndex(wells, table, 4), 0);
    EXPECT_EQ(producerIndex(wells, table, 4), 2);
    EXPECT_EQ(producerIndex(wells, table, 0), 0);
    EXPECT_EQ(connectionNumber(table, 1, 1), 1);
    EXPECT_EQ(connectionNumber(table, 3, 1), 3);
    EXPECT_EQ(connectionNumber(table, 1, 2), 4);
    EXPECT_EQ(connectionNumber(table, 3, 2), 6);
    EXPECT_EQ(connectionNumber(table, 0, 2), 0);
    EXPECT_EQ(connectionNumber(table, 3, 0), 0);
}

TEST(PairTable, SumsTenLinesOf100To1000) {
    const WellRecord wells = wellsOf({"inj", "prd"});
    PairTable table;
    clearPairs(wells, false, table);
    for (int line = 0; line < 10; ++line) addToPair(wells, {1, 2, 100.0, 0.25}, table);
    EXPECT_DOUBLE_EQ(table.allocation[0], 1000.0);
    EXPECT_DOUBLE_EQ(table.waterAllocation[0], 250.0);
    EXPECT_EQ(table.lineCount[0], 10);
}

TEST(PairTable, LeavesOutLinesWithAnUnknownEnd) {
    const WellRecord wells = wellsOf({"inj", "prd", "inj"});
    PairTable table;
    clearPairs(wells, false, table);
    addToPair(wells, {1, 0, 100.0, 0.0}, table);
    addToPair(wells, {0, 2, 100.0, 0.0}, table);
    addToPair(wells, {1, 3, 100.0, 0.0}, table);  // ends in an injector
    EXPECT_EQ(table.allocation, (std::vector<double>{0.0, 0.0}));
    EXPECT_EQ(table.lineCount[0], 0);
}

TEST(PairTable, KeepsTheFastestLineOfAPairFromItsInjector) {
    samples::Flow flow = samples::column(4, 500.0, 50.0);
    PairTable table;
    clearPairs(flow.wells, true, table);
    traceLine(flow.grid, flow.field, samples::startAt(4, 1, {0.0, 0.5, 0.5}, 2), false, flow.record);
    keepFastest(flow.wells, flow.grid, flow.record, true, table);
    const EndNodeRecord& kept = table.fastest[0];
    EXPECT_NEAR(kept.endTime, 40.0, 1e-8);
    EXPECT_EQ(kept.cell, (std::vector<CellId>{1, 2, 3, 4}));
    for (std::size_t n = 0; n < 4; ++n) EXPECT_NEAR(kept.time[n], 10.0F * static_cast<float>(n + 1), 1e-4F);
    EXPECT_FLOAT_EQ(kept.position[1][0], 20.0F);  // downstream end of the second cell
    // A slower line changes nothing.
    for (double& time : flow.record.NodeTof) time *= 2.0;
    keepFastest(flow.wells, flow.grid, flow.record, true, table);
    EXPECT_NEAR(table.fastest[0].endTime, 40.0, 1e-8);
}

}  // namespace
}  // namespace kvr
