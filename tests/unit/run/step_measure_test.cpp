#include "run/step_measure.hpp"

#include "unit/pressure/small_run.hpp"

#include <gtest/gtest.h>

namespace kvr {
namespace {

/// Two cells of water and dead oil, factors 1, on a frozen field; the level is the present state.
struct TwoCells {
    Simulation s;

    TwoCells() {
        sample::makeRun(2, 1, 1, sample::waterAndOil(0.0), s);
        refreshProperties(s.grid, s.fluids, s.state);
        s.stepLevel.state = s.state;
    }
    Well& producer(const std::string& control, double target) {
        sample::addWell("prd", control, target, 100.0, 2, s);
        return s.wells.wells.back();
    }
    [[nodiscard]] AttemptFigures figures() const { return measureStep(s); }
};

TEST(MeasureStep, FindsNothingWrongWithAStateThatStands) {
    const AttemptFigures figures = TwoCells().figures();
    EXPECT_TRUE(figures.pressureSolved);
    EXPECT_EQ(figures.volumeError, 0.0);
    EXPECT_EQ(figures.largestVolumeError, 0.0);
    EXPECT_EQ(figures.deficit, 0.0);
    EXPECT_EQ(figures.targetExcess, 0.0);
    EXPECT_EQ(figures.targetMiss, 0.0);
    EXPECT_EQ(figures.mobilityError, 0.0);
    EXPECT_EQ(figures.mobilityLag, 0.0);
    EXPECT_FALSE(unsolvedStep(TwoCells().s).pressureSolved);
}

TEST(MeasureStep, CountsVolumesBeyondThePoresByCellAndInAll) {
    TwoCells run;
    run.s.state.PoreVolume[1] = 100.0;
    run.s.state.PoreVolume[2] = 300.0;
    run.s.state.Bw[2] = 1.5;
    sizeAmounts(2, run.s.pressure.carried);
    run.s.pressure.carried.oil[1] = 1.0;
    run.s.pressure.carried.water[2] = -2.0;  // 3 rb too little
    run.s.pressure.deficit = 0.8;
    const AttemptFigures figures = run.figures();
    EXPECT_NEAR(figures.volumeError, 4.0 / 400.0, 1e-15) << "one side does not pay for the other";
    EXPECT_NEAR(figures.largestVolumeError, 0.01, 1e-15);
    EXPECT_NEAR(figures.deficit, 0.002, 1e-15);
}

TEST(MeasureStep, JudgesACellOfNextToNoPoresByAMillionthOfTheMean) {
    TwoCells run;
    run.s.state.PoreVolume[1] = 1e-8;
    run.s.state.PoreVolume[2] = 400.0;
    sizeAmounts(2, run.s.pressure.carried);
    run.s.pressure.carried.oil[1] = 2e-5;  // two thousand times what it holds
    EXPECT_NEAR(run.figures().largestVolumeError, 2e-5 / (200.0 * 1e-6), 1e-9);
    EXPECT_NEAR(run.figures().volumeError, 2e-5 / 400.0, 1e-12);
}

TEST(MeasureStep, CountsTheDissolvedGasOfCarriedOilOnce) {
    TwoCells run;
    run.s.state.PoreVolume[1] = run.s.state.PoreVolume[2] = 100.0;
    run.s.state.Rs[1] = 0.5;
    run.s.state.Bg[1] = 2.0;
    sizeAmounts(2, run.s.pressure.carried);
    run.s.pressure.carried.oil[1] = 4.0;
    run.s.pressure.carried.gas[1] = 3.0;  // 2 of it in the oil, 1 free: 2 rb
    EXPECT_NEAR(run.figures().largestVolumeError, 0.06, 1e-15);
}

TEST(MeasureStep, ComparesRatesWithTheTargetOfTheDeck) {
    TwoCells run;
    Well& well = run.producer("orat", -100.0);
    well.WellQo = -104.0;
    EXPECT_NEAR(run.figures().targetExcess, 0.04, 1e-15);
    EXPECT_EQ(run.figures().targetMiss, 0.0);
    well.WellQo = -93.0;
    EXPECT_EQ(run.figures().targetExcess, 0.0);
    EXPECT_NEAR(run.figures().targetMiss, 0.07, 1e-15);
    well.WellControl = "bhp";  // at its limit: less than the target is all that it can give
    EXPECT_EQ(run.figures().targetMiss, 0.0);
    well.WellQo = -104.0;  // but not more
    EXPECT_NEAR(run.figures().targetExcess, 0.04, 1e-15);
    well.shut = true;
    EXPECT_EQ(run.figures().targetExcess, 0.0);
}

TEST(MeasureStep, HoldsNoTargetAgainstAPressureWell) {
    TwoCells run;
    run.producer("bhp", 0.0).WellQo = -104.0;
    EXPECT_EQ(run.figures().targetExcess, 0.0);
    EXPECT_EQ(run.figures().targetMiss, 0.0);
}

TEST(MeasureStep, ComparesTheGasOfProducersWithTheSolvedOne) {
    TwoCells run;
    run.s.fluids.hasGas = true;
    run.s.fluids.regions[0].SgAxis = {0.0, 0.1, 0.3, 0.6};
    Well& well = run.producer("bhp", 0.0);
    well.solvedQg = -50.0;
    well.WellQg = -60.0;
    EXPECT_EQ(run.figures().targetMiss, 0.0) << "all gas is dissolved";
    run.s.state.Sg[1] = 0.1;
    EXPECT_TRUE(run.figures().freeGas);
    well.WellQg = -60.0;
    EXPECT_NEAR(run.figures().targetMiss, 0.2, 1e-15);
    well.WellQg = -45.0;
    EXPECT_NEAR(run.figures().targetMiss, 0.1, 1e-15);
}

TEST(MeasureStep, WeighsTheChangeOfMobilityByTheFlow) {
    // Total mobility at Sw 0.2: 0.9 / 2 = 0.45; at Sw 0.4: 0.05 / 0.5 + 0.5 / 2 = 0.35 /cp.
    TwoCells run;
    run.s.state.Sw[1] = 0.4;
    run.s.state.So[1] = 0.6;
    EXPECT_EQ(run.figures().mobilityError, 0.0) << "nothing flows";
    run.s.velocity.CellFaceFlux(1, 2) = 10.0;
    run.s.velocity.CellFaceFlux(2, 1) = 10.0;
    run.s.velocity.CellFaceFlux(2, 4) = -20.0;
    const double half = 0.05 / 0.4;  // of the mean of both
    EXPECT_NEAR(run.figures().mobilityLag, 10.0 * half / 40.0, 1e-12);
    EXPECT_NEAR(run.figures().mobilityError, 10.0 * half / 40.0, 1e-12);
    run.s.pressure.mobilityRatio.assign(2, 0.38 / 0.45);  // the pressure was solved with 0.38 of cell 1
    EXPECT_NEAR(run.figures().mobilityLag, 10.0 * half / 40.0, 1e-12);
    EXPECT_NEAR(run.figures().mobilityError, (10.0 * 0.02 / 0.4 + 30.0 * 0.07 / 0.45) / 40.0, 1e-12);
    run.s.pressure.mobilityRatio[2] = 1.0;
    EXPECT_NEAR(run.figures().mobilityError, 10.0 * 0.02 / 0.4 / 40.0, 1e-12);
}

TEST(CorrectTargets, AimsByThePromisedOverTheGivenRate) {
    TwoCells run;
    Well& well = run.producer("lrat", -100.0);
    well.solvedQo = -80.0;
    well.solvedQw = -20.0;
    well.WellQo = -60.0;
    well.WellQw = -65.0;
    correctTargets(run.s.wells);
    EXPECT_NEAR(well.targetFactor, 0.8, 1e-15);
    EXPECT_NEAR(aimedRate(well), -80.0, 1e-12);
    well.WellQo = -1.0;
    well.WellQw = -1.0;
    correctTargets(run.s.wells);
    EXPECT_EQ(well.targetFactor, 10.0);
    well.WellQo = -9000.0;
    correctTargets(run.s.wells);
    EXPECT_EQ(well.targetFactor, 0.1);
}

TEST(CorrectTargets, LeavesWellsWhoseRateTransportDoesNotChange) {
    TwoCells run;
    run.producer("resv", -100.0);
    run.producer("bhp", 0.0);
    run.producer("orat", -100.0).shut = true;
    run.producer("orat", 0.0);
    sample::addWell("inj", "rate", 100.0, 5000.0, 1, run.s);
    run.producer("grat", -100.0);  // nothing promised, nothing given
    for (std::size_t w = 0; w < 5; ++w) {
        run.s.wells.wells[w].solvedQo = run.s.wells.wells[w].solvedQw = 50.0;
        run.s.wells.wells[w].WellQo = run.s.wells.wells[w].WellQw = 100.0;
        run.s.wells.wells[w].reservoirRate = 100.0;
    }
    correctTargets(run.s.wells);
    for (const Well& well : run.s.wells.wells) EXPECT_EQ(well.targetFactor, 1.0) << well.deckControl;
}

/// A producer of 100 of oil, at most 150 of liquid, that gives 165.
Well& beyondItsLiquid(TwoCells& run) {
    Well& well = run.producer("orat", -100.0);
    well.givenControl = "orat";
    well.holdsLimits = true;
    well.targetOil = -100.0;
    well.targetLiquid = -150.0;
    well.WellQo = -100.0;
    well.WellQw = -65.0;
    return well;
}

TEST(MeasureStep, ComparesRatesWithTheLimitsBesideTheControl) {
    TwoCells run;
    Well& well = beyondItsLiquid(run);
    EXPECT_NEAR(run.figures().targetExcess, 0.1, 1e-15);
    well.holdsLimits = false;
    EXPECT_EQ(run.figures().targetExcess, 0.0);
}

TEST(CorrectTargets, GiveTheNextPassTheLimitThatWasPassed) {
    TwoCells run;
    Well& well = beyondItsLiquid(run);
    well.solvedQo = -100.0;
    well.solvedQw = -32.0;
    correctTargets(run.s.wells);
    EXPECT_EQ(well.WellControl, "lrat");
    EXPECT_EQ(well.TargetRate, -150.0);
    EXPECT_TRUE(well.controlChosen);
    EXPECT_DOUBLE_EQ(well.targetFactor, 132.0 / 165.0);
}

}  // namespace
}  // namespace kvr
