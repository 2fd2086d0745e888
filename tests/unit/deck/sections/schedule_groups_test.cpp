#include "deck/sections/schedule_groups.hpp"

#include "unit/deck/sections/schedule_bench.hpp"

#include <cmath>
#include <gtest/gtest.h>

namespace kvr {
namespace {

const GroupControl& groupOf(const ScheduleBench& bench, const std::string& name) {
    for (const GroupControl& group : bench.step().groups)
        if (group.name == name) return group;
    ADD_FAILURE() << name << " is no group";
    return bench.step().groups.front();
}

TEST(ScheduleGroups, HaveTheParentsOfTheTree) {
    ScheduleBench bench("GRUPTREE\n'G1' 'PLAT' /\n'PLAT' /\n'PLAT' 'G1' /\n/\n");
    bench.read();
    EXPECT_EQ(groupOf(bench, "G1").parent, "PLAT");
    EXPECT_EQ(groupOf(bench, "PLAT").parent, "FIELD");
    EXPECT_TRUE(bench.deck.printed("GROUP PLAT CANNOT LIE BELOW G1"));
}

TEST(ScheduleGroups, LimitWhatTheirControlNamesAndWhatIsPassedByRate) {
    ScheduleBench bench(TwoWells +
                        "GCONPROD\n'G1' ORAT 500 100 3 700 NONE NO 20 LIQ RATE CON RATE 900 /\n/\n");
    bench.read();
    const GroupProduction& production = groupOf(bench, "G1").production;
    EXPECT_EQ(production.oil, 500.0);
    EXPECT_EQ(production.water, 100.0);
    EXPECT_EQ(production.liquid, 700.0);
    EXPECT_TRUE(std::isinf(production.gas));
    EXPECT_TRUE(std::isinf(production.resv));
    EXPECT_FALSE(production.followsParent);
    EXPECT_EQ(production.guide.rate, 20.0);
    EXPECT_EQ(production.guide.control, "lrat");
    EXPECT_TRUE(bench.deck.printed("GROUP G1: CON IS NOT DONE"));
}

TEST(ScheduleGroups, TakeGasRatesInGasUnits) {
    ScheduleBench bench(TwoWells +
                        "GCONPROD\nFIELD GRAT 2* 56.14583 /\n/\nGCONINJE\n'G*' GAS RATE 56.14583 /\n/\n");
    bench.read();
    EXPECT_NEAR(groupOf(bench, "FIELD").production.gas, 10000.0, 1e-8);
    EXPECT_NEAR(groupOf(bench, "G1").injection[2].surface, 10000.0, 1e-8);
}

TEST(ScheduleGroups, InjectPhasesByRatesAndSharesOfSources) {
    ScheduleBench bench(
        TwoWells +
        "GCONINJE\n'G1' WATER VREP 900 800 0.5 1.1 NO 1* RATE FIELD G1 /\n'G1' STEAM RATE 1 /\n"
        "'G9' WATER RATE 1 /\n/\n");
    bench.read();
    const GroupInjection& water = groupOf(bench, "G1").injection[0];
    EXPECT_EQ(water.surface, 900.0);
    EXPECT_EQ(water.resv, 800.0);
    EXPECT_EQ(water.reinjection, 0.5);
    EXPECT_EQ(water.voidage, 1.1);
    EXPECT_FALSE(water.followsParent);
    EXPECT_EQ(water.reinjectionSource, "FIELD");
    EXPECT_EQ(water.voidageSource, "G1");
    EXPECT_TRUE(std::isinf(groupOf(bench, "G1").injection[2].surface));
    EXPECT_TRUE(bench.deck.printed("PHASE STEAM IS NOT WATER, GAS OR OIL"));
    EXPECT_TRUE(bench.deck.printed("NO WELL IS IN GROUP G9"));
}

TEST(ScheduleGroups, LeaveEarlierStepsAsTheyWere) {
    ScheduleBench bench(TwoWells +
                        "GCONPROD\nG1 ORAT 500 /\n/\nTSTEP\n1 /\nGCONPROD\nG1 NONE /\n/\nTSTEP\n1 /\n");
    bench.read();
    EXPECT_EQ(bench.schedule.steps[0].groups[0].production.oil, 500.0);
    EXPECT_TRUE(std::isinf(bench.schedule.steps[1].groups[0].production.oil));
    EXPECT_FALSE(hasWellsOf(bench.schedule.steps[1], bench.schedule.steps[0]));
}

TEST(ScheduleGroups, AreToldOfWhatTheyDoNotKnow) {
    ScheduleBench bench(TwoWells +
                        "GCONPROD\nG1 PRBL 500 /\nG1 ORAT /\nG1 FLD 6* 1 FORM /\nG1 NONE 7* FORM /\n/\n"
                        "GCONINJE\nG1 GAS REIN /\nG1 GAS WGRA 1 /\n/\n");
    bench.read();
    EXPECT_TRUE(bench.deck.printed("GROUP G1: CONTROL PRBL IS NOT KNOWN"));
    EXPECT_TRUE(bench.deck.printed("GROUP G1: ORAT WITHOUT A RATE"));
    EXPECT_TRUE(bench.deck.printed("GUIDE RATES BY A FORMULA ARE NOT USED"));
    EXPECT_TRUE(bench.deck.printed("GROUP G1: REIN WITHOUT A RATE"));
    EXPECT_TRUE(bench.deck.printed("GROUP G1: CONTROL WGRA IS NOT KNOWN"));
}

TEST(ScheduleGroups, GuideTheirWells) {
    ScheduleBench bench(TwoWells + "WGRUPCON\n'P1' NO /\n'P2' YES 30 OIL 2 /\n/\n");
    bench.read();
    EXPECT_FALSE(bench.well(0).underGroups);
    EXPECT_EQ(bench.well(0).guide.rate, 0.0);
    EXPECT_TRUE(bench.well(1).underGroups);
    EXPECT_EQ(bench.well(1).guide.rate, 60.0);
    EXPECT_EQ(bench.well(1).guide.control, "orat");
}

TEST(ScheduleGroups, AloneControlAWellUnderGrupInTheCommonForm) {
    const std::string rows =
        TwoWells + "WCONPROD\n'P1' OPEN GRUP 100 4* 1500 /\n/\nWCONINJE\n'P2' GAS OPEN GRUP /\n/\n";
    ScheduleBench common(rows);
    common.deck.reader.commonForm = true;
    common.read();
    for (const std::size_t n : {0U, 1U}) {
        EXPECT_EQ(common.well(n).control, "BHP");
        EXPECT_TRUE(common.well(n).waitsForGroup);
    }
    EXPECT_EQ(common.well(0).prodOil, 100.0);
    ScheduleBench native(rows);
    native.read();
    EXPECT_EQ(native.well(0).control, "GRUP");
}

}  // namespace
}  // namespace kvr
