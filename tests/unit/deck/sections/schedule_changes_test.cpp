#include "deck/sections/schedule_changes.hpp"

#include "unit/deck/sections/schedule_bench.hpp"

#include <cmath>
#include <gtest/gtest.h>

namespace kvr {
namespace {

const std::string Connected = TwoWells +
                              "COMPDAT\n'P1' 0 0 1 3 'OPEN' 2* 0.5 /\n'P2' 1 1 2 2 'OPEN' 2* 0.5 /\n/\n"
                              "WCONPROD\n'P*' 'OPEN' 'ORAT' 100 4* 1000 /\n/\n";

TEST(ScheduleChanges, OpenAndShutAWellAndCountIt) {
    ScheduleBench bench(Connected + "WELOPEN\n'P1' 'SHUT' /\n/\n");
    bench.read();
    EXPECT_EQ(bench.well(0).status, "SHUT");
    EXPECT_EQ(bench.well(1).status, "OPEN");
    EXPECT_EQ(bench.well(0).openings, 2);
    EXPECT_EQ(bench.well(1).openings, 1);
}

TEST(ScheduleChanges, ShutTheConnectionsThatAreNamedAndLeaveTheWell) {
    ScheduleBench bench(Connected + "WELOPEN\n'P1' 'SHUT' 0 0 2 /\n'P1' 'SHUT' 3* 3 3 /\n/\n");
    bench.read();
    EXPECT_EQ(bench.well(0).status, "OPEN");
    ASSERT_EQ(bench.step().completions.size(), 4U);
    EXPECT_EQ(bench.step().completions[2].k1, 2);
    EXPECT_EQ(bench.step().completions[2].k2, 2);
    EXPECT_EQ(bench.step().completions[2].status, "SHUT");
    EXPECT_EQ(bench.step().completions[3].k1, 3);
    EXPECT_DOUBLE_EQ(bench.step().completions[3].diameter, 0.5);
}

TEST(ScheduleChanges, TellOfConnectionsThatAreNotThere) {
    ScheduleBench bench(Connected + "WELOPEN\n'P1' 'SHUT' 0 0 9 /\n/\n");
    bench.read();
    EXPECT_TRUE(bench.deck.printed("WARNING :: WELL P1 HAS NO CONNECTION THERE"));
    EXPECT_EQ(bench.step().completions.size(), 2U);
}

TEST(ScheduleChanges, ACompletionGivenAnewTakesThePlaceOfItsShutParts) {
    ScheduleBench bench(Connected +
                        "WELOPEN\n'P1' 'SHUT' 0 0 2 /\n/\nCOMPDAT\n'P1' 0 0 1 3 'OPEN' 2* 0.7 /\n/\n");
    bench.read();
    ASSERT_EQ(bench.step().completions.size(), 2U);
    EXPECT_DOUBLE_EQ(bench.step().completions[0].diameter, 0.7);
}

TEST(ScheduleChanges, MultiplyTheFactorsOfTheConnectionsNamedOnTopOfEachOther) {
    ScheduleBench bench(Connected + "WPIMULT\n'P1' 0.5 /\n'P1' 0.5 0 0 2 /\n'P2' 3 5* /\n/\n");
    bench.read();
    double first = 0.0, second = 0.0, third = 0.0, other = 0.0;
    for (const ScheduleCompletion& row : bench.step().completions) {
        if (row.wellName == "P2") other = row.multiplier;
        if (row.wellName != "P1" || row.k1 != row.k2) continue;
        (row.k1 == 1 ? first : row.k1 == 2 ? second : third) = row.multiplier;
    }
    EXPECT_DOUBLE_EQ(first, 0.5);
    EXPECT_DOUBLE_EQ(second, 0.25);
    EXPECT_DOUBLE_EQ(third, 0.5);
    EXPECT_DOUBLE_EQ(other, 3.0);
}

TEST(ScheduleChanges, ACompletionGivenAnewHasItsWholeFactor) {
    ScheduleBench bench(Connected + "WPIMULT\n'P2' 3 /\n/\nCOMPDAT\n'P2' 1 1 2 2 'OPEN' 2* 0.5 /\n/\n");
    bench.read();
    ASSERT_EQ(bench.step().completions.size(), 2U);
    EXPECT_DOUBLE_EQ(bench.step().completions[1].multiplier, 1.0);
}

TEST(ScheduleChanges, AMultiplierBelowZeroIsToldAndNotTaken) {
    ScheduleBench bench(Connected + "WPIMULT\n'P2' -3 /\n/\n");
    bench.read();
    EXPECT_TRUE(bench.deck.printed("WARNING :: MULTIPLIER -3"));
    EXPECT_DOUBLE_EQ(bench.step().completions[1].multiplier, 1.0);
}

TEST(ScheduleChanges, SetATargetAndKeepTheControl) {
    ScheduleBench bench(Connected + "WELTARG\n'P1' ORAT 50 /\n'P1' 'BHP' 1500 /\n/\n");
    bench.read();
    EXPECT_EQ(bench.well(0).prodOil, 50.0);
    EXPECT_EQ(bench.well(0).prodBhp, 1500.0);
    EXPECT_EQ(bench.well(0).control, "ORAT");
    EXPECT_EQ(bench.well(1).prodOil, 100.0);
}

TEST(ScheduleChanges, SetTheRateOfAnInjectorByItsFluid) {
    ScheduleBench bench(
        TwoWells +
        "WCONINJE\n'P1' 'WATER' 'OPEN' 'RATE' 10 /\n/\nWELTARG\n'P1' WRAT 30 /\n'P1' GRAT 7 /\n/\n");
    bench.read();
    EXPECT_EQ(bench.well(0).injRate, 30.0);
    EXPECT_TRUE(bench.deck.printed("WARNING :: INJECTOR P1 HAS NO TARGET GRAT"));
}

TEST(ScheduleChanges, MakeATargetTheControl) {
    ScheduleBench bench(TwoWells +
                        "WCONINJE\n'P1' 'WATER' 'OPEN' 'RATE' 10 /\n/\nWCONPROD\n'P2' 'OPEN' 'ORAT' 10 /\n/\n"
                        "WELCNTL\n'P1' BHP 5000 /\n'P2' LRAT 70 /\n/\n");
    bench.read();
    EXPECT_EQ(bench.well(0).control, "BHP");
    EXPECT_EQ(bench.well(0).injBhp, 5000.0);
    EXPECT_EQ(bench.well(1).control, "LRAT");
    EXPECT_EQ(bench.well(1).prodLiquid, 70.0);
    EXPECT_EQ(bench.well(1).prodOil, 10.0);
}

TEST(ScheduleChanges, MultiplyTheEfficienciesOfAWellAndOfItsGroups) {
    ScheduleBench bench(TwoWells +
                        "GRUPTREE\n'G1' 'TOP' /\n/\nWEFAC\n'P1' 0.8 /\n/\nGEFAC\n'TOP' 0.5 /\n'G1' 0.9 /\n/\n"
                        "WEFAC\n'P2' 0.6 /\n/\nGEFAC\n'TOP' 0.7 /\n/\n");
    bench.read();
    EXPECT_NEAR(bench.well(0).efficiency, 0.8 * 0.7 * 0.9, 1e-12);
    EXPECT_NEAR(bench.well(1).efficiency, 0.6 * 0.7 * 0.9, 1e-12);
}

TEST(ScheduleChanges, SetTheControlOfObservedRates) {
    const std::string row = "WCONHIST\n'P1' 'OPEN' 'ORAT' 10 5 /\n/\n";
    ScheduleBench bench(TwoWells + "WHISTCTL\nRESV /\n" + row);
    bench.read();
    EXPECT_EQ(bench.well(0).control, "RESV");
    ScheduleBench ended(TwoWells + "WHISTCTL\nRESV /\nWHISTCTL\nNONE /\n" + row);
    ended.read();
    EXPECT_EQ(ended.well(0).control, "ORAT");
}

TEST(ScheduleChanges, TakeAnEfficiencyWithinItsRange) {
    ScheduleBench bench(TwoWells + "WEFAC\n'P1' 0.8 /\n'P2' 1.5 /\n/\n");
    bench.read();
    EXPECT_EQ(bench.well(0).efficiency, 0.8);
    EXPECT_EQ(bench.well(1).efficiency, 1.0);
    EXPECT_TRUE(bench.deck.printed("WARNING :: EFFICIENCY 1.5 IS OUT OF RANGE"));
}

TEST(ScheduleChanges, TakeEconomicLimitsInInternalUnits) {
    ScheduleBench bench(TwoWells + "WECON\n'P1' 10 5 0.9 2 0.5 '+CON' 'YES' /\n/\n");
    bench.read();
    const EconomicLimits& limits = bench.well(0).limits;
    EXPECT_EQ(limits.leastOil, 10.0);
    EXPECT_DOUBLE_EQ(limits.leastGas, 5.0 * 1000.0 / 5.614583);  // Mscf to surface barrels
    EXPECT_EQ(limits.mostWaterCut, 0.9);
    EXPECT_DOUBLE_EQ(limits.mostGasOilRatio, 2.0 * 1000.0 / 5.614583);
    EXPECT_DOUBLE_EQ(limits.mostWaterGasRatio, 0.5 * 5.614583 / 1000.0);
    EXPECT_EQ(limits.workover, Workover::ConnectionsBelow);
    EXPECT_TRUE(limits.endsRun);
    EXPECT_EQ(limits.leastLiquid, 0.0);
}

TEST(ScheduleChanges, LimitTheRiseOfSolutionGasFromTheirStepOn) {
    ScheduleBench bench("TSTEP\n1 /\nDRSDT\n0.01 /\nTSTEP\n1 /\n");
    bench.read();
    EXPECT_TRUE(std::isinf(bench.schedule.steps[0].mostRsRise));
    EXPECT_DOUBLE_EQ(bench.schedule.steps[1].mostRsRise, 0.01 * 1000.0 / 5.614583);
}

TEST(ScheduleChanges, NoSimIsTaken) {
    ScheduleBench bench("NOSIM\nTSTEP\n1 /\n");
    bench.read();
    EXPECT_TRUE(bench.options.noSimulation);
    EXPECT_FALSE(bench.deck.printed("not surpported"));
}

TEST(ScheduleChanges, OfConnectionsAreThoseWithAnyItemEvenOfZeros) {
    ScheduleBench bench(Connected + "WELOPEN\n'P1' 'SHUT' 0 0 0 2* /\n'P2' 'SHUT' 5* /\n/\n");
    bench.read();
    EXPECT_EQ(bench.well(0).status, "OPEN");
    EXPECT_EQ(bench.well(0).connectionOpenings, 1);
    EXPECT_EQ(bench.well(0).openings, 1);
    for (std::size_t n = 2; n < bench.step().completions.size(); ++n)
        EXPECT_EQ(bench.step().completions[n].status, "SHUT") << n;
    ASSERT_EQ(bench.step().completions.size(), 5U);  // the two rows of COMPDAT, and K 1, 2, 3 of P1
    EXPECT_EQ(bench.well(1).status, "SHUT");
}

TEST(ScheduleChanges, TellOfEconomicLimitsThatAreNotHeld) {
    ScheduleBench bench(TwoWells + "WECON\n'P1' 10 4* 'WELL' 'NO' 'P2' /\n'P2' 14* 100 /\n/\n");
    bench.read();
    EXPECT_TRUE(bench.deck.printed("WARNING :: WELL P1: THE WELL P2 THAT IS TO FOLLOW IT IS NOT OPENED"));
    EXPECT_TRUE(bench.deck.printed("WARNING :: WELL P2: POTENTIALS, SECOND WATER CUTS"));
}

TEST(ScheduleChanges, LimitNoRiseThatIsNotGivenAndTellThatAllCellsAreMeant) {
    ScheduleBench bench("DRSDT\n1* /\nTSTEP\n1 /\nDRSDT\n0.01 'FREE' /\nTSTEP\n1 /\n");
    bench.read();
    EXPECT_TRUE(std::isinf(bench.schedule.steps[0].mostRsRise));
    EXPECT_FALSE(std::isinf(bench.schedule.steps[1].mostRsRise));
    EXPECT_TRUE(bench.deck.printed("WARNING :: DRSDT FREE: THE LIMIT HOLDS IN ALL CELLS"));
}

TEST(ScheduleChanges, MultiplyFaultsFromTheirStepOnOnce) {
    ScheduleBench bench("TSTEP\n1 /\nMULTFLT\n'F1' 0.5 /\n'F1' 0.1 /\n'G' 2 /\n/\nTSTEP\n1 /\nTSTEP\n1 /\n");
    bench.grid.faultFaces.push_back({"F1", {}, 2});
    bench.read();
    EXPECT_TRUE(bench.schedule.steps[0].faultMultipliers.empty());
    ASSERT_EQ(bench.schedule.steps[1].faultMultipliers.size(), 1U);
    EXPECT_DOUBLE_EQ(bench.schedule.steps[1].faultMultipliers[0].value, 0.05);
    EXPECT_TRUE(bench.schedule.steps[2].faultMultipliers.empty()) << "it has acted";
    EXPECT_TRUE(bench.deck.printed("WARNING :: FAULT G IS NOT KNOWN"));
}

TEST(ScheduleChanges, ACompletionGivenAnewStandsBehindThoseThatItMeetsInPart) {
    ScheduleBench bench(
        TwoWells +
        "COMPDAT\n'P1' 0 0 1 5 'OPEN' 2* 0.5 /\n'P1' 0 0 3 7 'SHUT' 2* 0.6 /\n'P1' 0 0 1 5 'OPEN' 2* "
        "0.7 /\n/\n");
    bench.read();
    // The second row would shut cells 3 to 5 again, were it the last to name them.
    ASSERT_EQ(bench.step().completions.size(), 3U);
    EXPECT_DOUBLE_EQ(bench.step().completions[0].diameter, 0.7);
    EXPECT_EQ(bench.step().completions[2].k1, 1);
    EXPECT_EQ(bench.step().completions[2].status, "OPEN");
}

}  // namespace
}  // namespace kvr
