#include "deck/sections/props.hpp"
#include "model/grid_memory.hpp"
#include "unit/deck/deck_bench.hpp"

#include <cmath>
#include <gtest/gtest.h>

namespace kvr {
namespace {

constexpr std::string_view Tables = "SWOF\n0.2 0 0.9 4\n0.8 0.45 0 0 /\nPVDO\n14.7 1 1\n5000 1 1 /\n";

/// A PROPS section of four cells in a row, in the common form.
struct EndPointBench : DeckBench {
    RunOptions options;
    FluidTables tables;
    GridModel grid;

    explicit EndPointBench(const std::string& text) : DeckBench(std::string(Tables) + text, "PROPS") {
        options.hasOil = options.hasWater = true;
        reader.commonForm = true;
        grid.NX = 4;
        grid.NY = grid.NZ = 1;
        allocateGrid(grid);
        reader.gridSize = {4, 1, 1};
        tables.scaling.isSet = true;
    }
    void read() {
        PropsRecords records{options, tables, grid};
        readProps(reader, records);
    }
    [[nodiscard]] const CellArray<double>& given(std::string_view name) const {
        std::size_t place = 0;
        while (EndPointKeywords[place].name != name) ++place;
        return tables.scaling.given[place];
    }
};

TEST(EndPointArrays, LeaveTheTablesToCellsWithoutAValue) {
    EndPointBench bench("SWL\n0.1 2* 0.15 /\nSCALECRS\nYES /\n");
    bench.read();
    EXPECT_DOUBLE_EQ(bench.given("SWL")[1], 0.1);
    EXPECT_TRUE(std::isnan(bench.given("SWL")[2]));
    EXPECT_DOUBLE_EQ(bench.given("SWL")[4], 0.15);
    EXPECT_TRUE(bench.given("SWCR").empty());
    EXPECT_TRUE(bench.tables.scaling.threePoint);
}

TEST(EndPointArrays, ComeByRowsOverBoxes) {
    EndPointBench bench(
        "EQUALS\nSWL 0.1 1 2 1 1 1 1 /\nPCW 6 /\n/\nCOPY\nSWL SWCR /\n/\nADD\nSWCR 0.05 /\n/\n"
        "MULTIPLY\nPCW 2 1 1 1 1 1 1 /\n/\n");
    bench.reader.units = nullptr;
    UnitSystem metric = metricUnits();
    bench.reader.units = &metric;
    bench.read();
    EXPECT_DOUBLE_EQ(bench.given("SWL")[2], 0.1);
    EXPECT_TRUE(std::isnan(bench.given("SWL")[3]));
    EXPECT_DOUBLE_EQ(bench.given("SWCR")[1], 0.15000000000000002);
    EXPECT_NEAR(bench.given("PCW")[1], 12.0 * metric.pressure, 1e-9);
    EXPECT_NEAR(bench.given("PCW")[2], 6.0 * metric.pressure, 1e-9);  // in the box of the row before
    EXPECT_TRUE(std::isnan(bench.given("PCW")[3]));
}

TEST(EndPointArrays, LeaveOutInACopyWhatTheDeckLeavesOut) {
    EndPointBench bench("SWL\n0.1 2* 0.15 /\nSWATINIT\n3* 0.5 /\n");
    bench.reader.outputMetric = true;
    bench.read();
    const std::string copy = contentsOf(bench.sinks.metricCopy);
    EXPECT_NE(copy.find("SWL\n0.1 1* 1* 0.15 /"), std::string::npos) << copy;
    EXPECT_NE(copy.find("SWATINIT\n1* 1* 1* 0.5 /"), std::string::npos) << copy;
    EXPECT_DOUBLE_EQ(bench.tables.scaling.initialWater[4], 0.5);
}

TEST(EndPointArrays, FillABox) {
    EndPointBench bench("BOX\n2 3 1 1 1 1 /\nKRW\n2*0.5 /\nENDBOX\n");
    bench.read();
    EXPECT_TRUE(std::isnan(bench.given("KRW")[1]));
    EXPECT_DOUBLE_EQ(bench.given("KRW")[2], 0.5);
}

TEST(EndPointArrays, ThatChangeNothingAreTold) {
    EndPointBench bench("MULTIPLY\nSWU 0.9 /\n/\n");
    bench.read();
    EXPECT_TRUE(bench.printed("MULTIPLY OF SWU, WHICH NO ARRAY GIVES"));
    EndPointBench unasked("SWL\n4*0.1 /\n");
    unasked.tables.scaling.isSet = false;
    unasked.read();
    EXPECT_TRUE(unasked.printed("SWL HAS NO EFFECT WITHOUT ENDSCALE"));
}

TEST(EndPointArrays, OfTheOlderFormAreToldAndReadOver) {
    EndPointBench bench("SWL\n4*0.1 /\n");
    bench.reader.commonForm = false;
    bench.read();
    EXPECT_TRUE(bench.given("SWL").empty());
    ASSERT_EQ(bench.sinks.skipped.size(), 1U);
    EXPECT_EQ(bench.sinks.skipped[0].name, "SWL");
}

}  // namespace
}  // namespace kvr
