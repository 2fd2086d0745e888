#include "base/constants.hpp"
#include "unit/deck/sections/schedule_bench.hpp"

#include <gtest/gtest.h>

namespace kvr {
namespace {

const std::string Producer =
    "VFPPROD\n3 8000 GAS WGR OGR THP ' ' FIELD BHP /\n10 20 /\n100 200 /\n0 0.1 /\n0 /\n0 /\n"
    "1 1 1 1 500 600 /\n1 2 1 1 510\n 610 /\n2 1 1 1 520 620 /\n2 2 1 1 530 630 /\n";
const std::string Injector =
    "VFPINJ\n3 7000 WAT THP FIELD BHP /\n100 200 300 /\n100 200 /\n1 4000 3900 3800 /\n2 4100 4000 3900 /\n";
const std::string Rest = "TSTEP\n1 /\n";

TEST(LiftTableKeywords, GiveTheTablesOfProducersAndInjectors) {
    ScheduleBench bench(TwoWells + Producer + Injector + "WCONPROD\n'P1' OPEN THP 5* 1000 150 3 7 /\n/\n" +
                        Rest);
    bench.read();
    ASSERT_EQ(bench.schedule.liftTables.size(), 2U);
    const LiftTable& table = *bench.schedule.liftTables[0];
    const double mscf = 1000.0 / CubicFeetPerBarrel;
    EXPECT_EQ(table.number, 3);
    EXPECT_FALSE(table.ofInjector);
    EXPECT_EQ(table.rate, LiftRate::Gas);
    EXPECT_EQ(table.water, LiftWater::PerGas);
    EXPECT_EQ(table.gas, LiftGas::OilPerGas);
    EXPECT_NEAR(table.axes[LiftTable::Rate][1], 20 * mscf, 1e-6);
    EXPECT_NEAR(table.axes[LiftTable::Water][1], 0.1 / mscf, 1e-9);
    EXPECT_EQ(table.bhp, (std::vector<double>{500, 600, 510, 610, 520, 620, 530, 630}));
    const LiftTable& other = *bench.schedule.liftTables[1];
    EXPECT_TRUE(other.ofInjector);
    EXPECT_EQ(other.datumDepth, 7000.0);
    EXPECT_EQ(other.bhp[3], 4100.0);
    EXPECT_EQ(bench.well().liftTable, 3);
    EXPECT_EQ(bench.well().artificialLift, 7.0);
    EXPECT_EQ(bench.well().prodThp, 150.0);
}

TEST(LiftTableKeywords, TakeTheLastTableOfANumber) {
    std::string later = Injector;
    later.replace(later.find("7000"), 4, "7100");
    ScheduleBench bench(TwoWells + Injector + later + Rest);
    bench.read();
    ASSERT_EQ(bench.schedule.liftTables.size(), 1U);
    EXPECT_EQ(bench.schedule.liftTables[0]->datumDepth, 7100.0);
}

std::string changed(std::string text, const std::string& from, const std::string& to) {
    return text.replace(text.find(from), from.size(), to);
}

TEST(LiftTableKeywordsDeathTest, StopOnTablesThatCannotBeRead) {
    const auto stops = [](const std::string& table, const char* message) {
        EXPECT_EXIT(
            {
                ScheduleBench bench(TwoWells + table + Rest);
                bench.read();
            },
            testing::ExitedWithCode(1), "")
            << message;
    };
    stops(changed(Injector, "100 200 300", "100 300 200"), "an axis that does not rise");
    stops(changed(Injector, "2 4100", "3 4100"), "a place off the axis");
    stops(changed(Injector, "2 4100", "1 4100"), "a row that stands twice");
    stops(changed(Injector, "3900 3800", "3900"), "a row that is short");
    stops(changed(Injector, "WAT", "LIQ"), "a rate that injectors do not have");
    stops(changed(Injector, "FIELD", "METRIC"), "other units");
    stops(changed(Producer, "WGR", "WXR"), "a ratio that is not known");
}

}  // namespace
}  // namespace kvr
