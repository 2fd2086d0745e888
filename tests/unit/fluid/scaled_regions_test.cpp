#include "fluid/scaled_regions.hpp"

#include "fluid/saturation_functions.hpp"
#include "fluid/table_checks.hpp"

#include <gtest/gtest.h>
#include <limits>

namespace kvr {
namespace {

constexpr double NotGiven = std::numeric_limits<double>::quiet_NaN();
const Console Silent{nullptr, nullptr, nullptr};

SaturationTable tableWithConnate(double connate) {
    SaturationTable table;
    table.SwAxis = {connate, 1.0};
    table.Krw = {0.0, 1.0};
    table.Krow = {1.0, 0.0};
    table.Pcow = {4.0, 0.0};
    table.SgAxis = {0.0, 1.0 - connate};
    table.Krg = {0.0, 1.0};
    table.Krog = {1.0, 0.0};
    table.Pcog = {0.0, 0.0};
    return table;
}

/// Six cells in a row, the last one inactive, the fifth of the second table.
struct RegionBench {
    GridModel grid;
    FluidTables tables;
    RegionBench() {
        grid.NX = grid.NCELLS = 6;
        grid.NY = grid.NZ = 1;
        grid.Active.assign(6, 1);
        grid.Active[6] = 0;
        grid.SATNUM.assign(6, 1);
        grid.SATNUM[5] = 2;
        for (CellArray<int>* index : {&grid.CellI, &grid.CellJ, &grid.CellK}) index->assign(6, 1);
        tables.hasGas = true;
        tables.regions = {tableWithConnate(0.2), tableWithConnate(0.3)};
        finishTables(tables);
        tables.scaling.isSet = true;
    }
    void give(std::size_t keyword, std::vector<double> values) {
        tables.scaling.given[keyword].assign(6, NotGiven);
        std::copy(values.begin(), values.end(), tables.scaling.given[keyword].cells().begin());
    }
    void make() { makeScaledRegions(Silent, true, grid, tables); }
};

TEST(ScaledRegions, AreSharedByCellsThatAgreeInTableAndEndPoints) {
    RegionBench bench;
    bench.give(0, {0.1, NotGiven, 0.2, 0.1, 0.1, 0.1});  // SWL
    bench.give(1, {0.1, NotGiven, 0.2, 0.1, 0.1, 0.1});  // SWCR
    bench.make();
    EXPECT_EQ(bench.tables.scaledRegions, 2U);
    EXPECT_EQ(ownRegions(bench.tables), 2U);
    EXPECT_EQ(bench.grid.SATNUM[1], 3);
    EXPECT_EQ(bench.grid.SATNUM[2], 1);  // nothing given
    EXPECT_EQ(bench.grid.SATNUM[3], 1);  // the point of its table
    EXPECT_EQ(bench.grid.SATNUM[4], 3);
    EXPECT_EQ(bench.grid.SATNUM[5], 4);
    EXPECT_EQ(bench.grid.SATNUM[6], 1);
    EXPECT_NEAR(KrwFn(bench.tables, 0.55, 3), 0.5, 1e-12);
    EXPECT_NEAR(PcowFn(bench.tables, 0.55, 4), 2.0, 1e-12);
    EXPECT_TRUE(bench.tables.scaling.given[0].empty());
}

TEST(ScaledRegions, AreNotMadeUnlessTheDeckAsks) {
    RegionBench bench;
    bench.tables.scaling.isSet = false;
    bench.give(0, {0.1, 0.1, 0.1, 0.1, 0.1, 0.1});
    bench.make();
    EXPECT_EQ(bench.tables.regions.size(), 2U);
    EXPECT_EQ(bench.grid.SATNUM[1], 1);
}

void makeAloud(RegionBench& bench) {
    const Console loud{stderr, nullptr, nullptr};
    makeScaledRegions(loud, true, bench.grid, bench.tables);
}

TEST(ScaledRegions, StopOnEndPointsThatNoTableCanHave) {
    RegionBench bench;
    bench.give(1, {0.1, 1.0, 0.1, 0.1, 0.1, 0.1});
    EXPECT_DEATH(makeAloud(bench), "END POINTS OF GRID 2 .*SWCR IS NOT BELOW SWU");
    bench.give(1, {0.1, 0.2, 0.1, -0.1, 0.1, 0.1});
    EXPECT_DEATH(makeAloud(bench), "SWCR OF GRID 4 .*IS -0.1");
}

}  // namespace
}  // namespace kvr
