#include "deck/sections/schedule_streams.hpp"

#include "unit/deck/sections/schedule_bench.hpp"

#include <gtest/gtest.h>

namespace kvr {
namespace {

TEST(InjectionStreams, AreKeptByName) {
    ScheduleBench run(
        TwoWells +
        "WTRACER\nP2 TR1 0.7 /\n/\nWELLSTRE\nSEP 0.6 0.4 /\nSEP 0.5 0.5 /\n/\nWINJGAS\nP2 STREAM SEP /\n/\n");
    run.options.componentCount = 2;
    run.read();
    EXPECT_EQ(run.well(1).tracerConcentration, 0.7);
    EXPECT_EQ(run.well(1).injectionStream, "SEP");
    EXPECT_TRUE(run.deck.printed("READ -> WTRACER\nREAD -> WELLSTRE\nREAD -> WINJGAS\n"));
    ASSERT_EQ(run.schedule.streams.size(), 1U);
    EXPECT_EQ(run.schedule.streams[0].moleFraction, (std::vector<double>{0.5, 0.5}));
}

TEST(InjectionStreams, ThatAreNoCompositionOrNotKnownAreTold) {
    ScheduleBench run(TwoWells + "WELLSTRE\nSEP 0.6 0.6 /\n/\nWINJGAS\nP2 STREAM LEAN /\nP2 GAS SEP /\n/\n");
    run.options.componentCount = 2;
    run.read();
    EXPECT_EQ(run.schedule.streams[0].moleFraction, (std::vector<double>{0.5, 0.5}));
    EXPECT_TRUE(run.deck.printed("WARNING :: MOLE FRACTIONS SUM TO 1.2"));
    EXPECT_TRUE(run.deck.printed("WARNING :: WINJGAS: STREAM LEAN IS NOT GIVEN BY WELLSTRE BEFORE"));
    EXPECT_TRUE(run.deck.printed("WARNING :: WINJGAS: FLUID GAS IS NOT KNOWN, ONLY STREAM IS"));
}

TEST(Wtracer, KeepsTheLastConcentrationOfEachTracer) {
    ScheduleBench run(TwoWells + "WTRACER\nP2 TR1 0.7 /\nP2 TR2 0.3 /\nP2 TR1 0.5 /\n/\n");
    run.read();
    const std::vector<InjectedTracer>& tracers = run.well(1).injectedTracers;
    ASSERT_EQ(tracers.size(), 2U);
    EXPECT_EQ(tracers[0].name, "TR1");
    EXPECT_EQ(tracers[0].concentration, 0.5);
    EXPECT_EQ(tracers[1].concentration, 0.3);
}

}  // namespace
}  // namespace kvr
