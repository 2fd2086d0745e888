#include "pressure/pressure_step.hpp"

#include "fluid/black_oil.hpp"
#include "unit/pressure/small_run.hpp"
#include "unit/quiet_console.hpp"

#include <algorithm>
#include <gtest/gtest.h>

using namespace kvr;

namespace {

int count(const std::string& text, const std::string& part) {
    int found = 0;
    for (std::size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) ++found;
    return found;
}

double sumOfFaces(const VelocityField& velocity, CellId c) {
    double outflow = 0.0;
    for (int d = 1; d <= 6; ++d)
        outflow += FaceSign[static_cast<std::size_t>(d) - 1] * velocity.CellFaceFlux(c, d);
    return outflow;
}

/// Four cells in a row, an injector at one end and a producer at the other.
void flood(double injected, double bhp, Simulation& s) {
    sample::makeRun(4, 1, 1, sample::waterAndOil(1e-5), s);
    s.state.Sw[1] = 0.6;
    s.state.So[1] = 0.4;
    sample::addWell("inj", "rate", injected, 100000.0, 1, s);
    sample::addWell("prd", "bhp", 0.0, bhp, 4, s);
}

}  // namespace

TEST(PressureStep, LeavesAClosedHydrostaticBoxAsItIs) {
    Simulation s;
    sample::makeRun(1, 1, 5, samples::lightOil(), s);
    for (CellId c = 1; c <= 5; ++c) {
        s.state.Pb[c] = 2500.0;
        s.state.Rs[c] = 0.775 / GasRatioFactor;
        s.state.Sw[c] = 0.2;
    }
    sample::hydrostaticColumn(3000.0, s);
    const CellState before = s.state;
    for (int step = 0; step < 10; ++step) PressureStep(s, 0, 1);
    for (CellId c = 1; c <= 5; ++c) {
        EXPECT_NEAR(s.state.Pressure[c], before.Pressure[c], 1e-8);
        EXPECT_NEAR(s.state.So[c], before.So[c], 1e-8);
        EXPECT_NEAR(s.state.Pb[c], before.Pb[c], 1e-8);
    }
}

TEST(PressureStep, HasNoResidualAtUniformPotential) {
    Simulation s;
    sample::makeRun(3, 3, 1, sample::waterAndOil(1e-5), s);
    PressureStep(s, 0, 1);
    for (const double residual : s.pressureWork.matrix.system.rhs) EXPECT_NEAR(residual, 0.0, 1e-12);
    for (CellId c = 1; c <= 9; ++c) EXPECT_EQ(s.pressure.DeltaP[c], 0.0);
}

TEST(PressureStep, RaisesAClosedBoxByTheInjectedVolumeOverItsCompressibility) {
    Simulation s;
    constexpr double compressibility = 1e-6;
    sample::makeRun(1, 1, 1, sample::waterAndOil(compressibility), s);
    s.options.PressureTolerance = 1e-6;
    s.state.Sw[1] = 0.6;
    s.state.So[1] = 0.4;
    const double pores = 100.0 * 100.0 * 20.0 / 5.614583 * 0.2;
    const double rate = 5.0 * pores * compressibility;  // q dt/(V phi c) = 5 psi, to first order
    sample::addWell("inj", "rate", rate, 100000.0, 1, s);
    PressureStep(s, 0, 1);
    // the pores grow as c (dP + c dP^2 / 2)
    const double exact = (std::sqrt(1.0 + 2.0 * compressibility * 5.0) - 1.0) / compressibility;
    EXPECT_NEAR(s.state.Pressure[1] - 3000.0, exact, exact * 1e-8);
    EXPECT_NEAR(s.wells.wells[0].WellQw, rate, 1e-8 * rate);
}

TEST(PressureStep, GivesTheSamePressuresInEitherUnitSystem) {
    Simulation field, metric;
    metric.units = metricUnits();
    for (Simulation* s : {&field, &metric}) {
        sample::makeRun(3, 1, 2, samples::lightOil(), *s);
        for (CellId c = 1; c <= 6; ++c) {
            s->state.Sw[c] = 0.3;
            s->state.So[c] = 0.6;
            s->state.Sg[c] = 0.1;
            s->state.Pb[c] = 3000.0;
            s->state.Rs[c] = SolutionRs(s->fluids, 3000.0);
        }
        const double internalPerBarrel = s == &metric ? 5.614583 : 1.0;
        sample::addWell("inj", "rate", 40.0 * internalPerBarrel, 100000.0, 1, *s);
        sample::addWell("prd", "orat", -20.0 * internalPerBarrel, 100.0, 6, *s);
        PressureStep(*s, 0, 1);
    }
    for (CellId c = 1; c <= 6; ++c) {
        EXPECT_NEAR(metric.state.Pressure[c], field.state.Pressure[c], 1e-6);
        EXPECT_NEAR(metric.state.Sg[c], field.state.Sg[c], 1e-9);
        for (int d = 1; d <= 6; ++d) {
            EXPECT_NEAR(metric.velocity.CellFaceFlux(c, d), 5.614583 * field.velocity.CellFaceFlux(c, d),
                        1e-4);
            EXPECT_NEAR(metric.velocity.CellFaceVelocity(c, d), field.velocity.CellFaceVelocity(c, d), 1e-7);
        }
    }
    for (std::size_t w = 0; w < 2; ++w) {
        EXPECT_NEAR(metric.wells.wells[w].Bhp, field.wells.wells[w].Bhp, 1e-5);
        EXPECT_NEAR(metric.wells.wells[w].WellQg, 5.614583 * field.wells.wells[w].WellQg, 0.05);
    }
    EXPECT_NEAR(field.wells.wells[1].WellQo, -20.0, 1e-3);
}

TEST(PressureStep, RaisesEveryCellOfAClosedBoxAlikeInTheEnd) {
    Simulation s;
    sample::makeRun(3, 1, 1, sample::waterAndOil(1e-5), s);
    const double pores = 3.0 * 100.0 * 100.0 * 20.0 / 5.614583 * 0.2;
    for (CellId c = 1; c <= 3; ++c) {
        s.state.Sw[c] = 0.6;
        s.state.So[c] = 0.4;
    }
    sample::addWell("inj", "rate", 10.0, 100000.0, 1, s);
    s.options.stepControl = false;  // iterated to the tolerance
    PressureStep(s, 0, 1);
    double weighted = 0.0;  // the pores gained hold what came in: c PV (dP + c dP^2 / 2)
    for (CellId c = 1; c <= 3; ++c) {
        const double dP = s.state.Pressure[c] - 3000.0;
        weighted += pores / 3.0 * 1e-5 * (dP + 0.5e-5 * dP * dP);
    }
    EXPECT_NEAR(weighted, 10.0, 1e-6);
}

TEST(PressureStep, CarriesTheRateOfAnInjectorToTheProducerThroughEveryFace) {
    Simulation s;
    flood(50.0, 2500.0, s);
    s.fluids.rockCompressibility = 0.0;
    s.options.PressureTolerance = 1e-9;
    PressureStep(s, 0, 1);
    const Well& injector = s.wells.wells[0];
    const Well& producer = s.wells.wells[1];
    EXPECT_NEAR(injector.WellQw, 50.0, 1e-8);
    EXPECT_NEAR(producer.WellQo, -50.0, 1e-6);
    for (CellId c = 1; c < 4; ++c) EXPECT_NEAR(s.velocity.CellFaceFlux(c, 2), 50.0, 1e-6);
    EXPECT_NEAR(sumOfFaces(s.velocity, 1), injector.connections[0].reservoirRate, 50.0 * 1e-6);
    EXPECT_NEAR(sumOfFaces(s.velocity, 4), producer.connections[0].reservoirRate, 50.0 * 1e-6);
    EXPECT_NEAR(sumOfFaces(s.velocity, 2), 0.0, 1e-6);
}

TEST(PressureStep, HoldsAnOilRateWellAtItsTargetBesideItsWater) {
    Simulation s;
    sample::makeRun(2, 1, 1, sample::waterAndOil(1e-5), s);
    for (CellId c = 1; c <= 2; ++c) {
        s.state.Sw[c] = 0.5;
        s.state.So[c] = 0.5;
    }
    sample::addWell("prd", "orat", -5.0, 100.0, 1, s);
    PressureStep(s, 0, 1);
    EXPECT_NEAR(s.wells.wells[0].WellQo, -5.0, 1e-4);
    EXPECT_LT(s.wells.wells[0].WellQw, -1.0);
    EXPECT_LT(s.state.Pressure[1], s.state.Pressure[2]);
}

TEST(PressureStep, HoldsAProducerThatWouldFallBelowItsLimitAtTheLimit) {
    QuietConsole quiet;
    Simulation s;
    sample::makeRun(2, 1, 1, sample::waterAndOil(1e-5), s);
    s.options.stepControl = false;  // the step cuts itself
    s.console = quiet.console;
    sample::addWell("prd", "orat", -1.0e5, 1000.0, 1, s);
    PressureStep(s, 0, 1);
    const Well& well = s.wells.wells[0];
    EXPECT_EQ(well.WellControl, "bhp");
    EXPECT_EQ(well.Bhp, 1000.0);
    EXPECT_GT(well.WellQo, -1.0e5);
    EXPECT_LT(well.WellQo, 0.0);
    EXPECT_EQ(s.pressureWork.matrix.system.size, 2);
}

TEST(PressureStep, GivesTheRateBackToAWellWhoseInjectivityHasRisenSinceTheStepBefore) {
    QuietConsole quiet;
    Simulation s;
    flood(50.0, 3000.0, s);
    s.console = quiet.console;
    s.options.PressureTolerance = 1e-9;
    Well& injector = s.wells.wells[0];
    const double injectivity = injector.connections[0].ConnWI;
    injector.connections[0].ConnWI = 1e-6 * injectivity;
    injector.BhpLimit = 6000.0;
    PressureStep(s, 0, 1);
    ASSERT_EQ(injector.WellControl, "bhp");
    ASSERT_LT(injector.WellQw, 50.0);
    injector.connections[0].ConnWI = injectivity;
    PressureStep(s, 0, 1);
    EXPECT_EQ(injector.WellControl, "rate");
    EXPECT_NEAR(injector.WellQw, 50.0, 1e-8);
}

TEST(PressureStep, PrintsItsLinesInOrder) {
    QuietConsole quiet;
    Simulation s;
    flood(10.0, 2900.0, s);
    s.options.stepControl = false;
    s.console = quiet.console;
    s.clock.time = 12.5;
    s.clock.stepCount = 3;
    PressureStep(s, 0, 1);
    const std::string text = quiet.logText();
    std::size_t at = 0;
    for (const char* part : {"----------", "Time Begin : 12.5  Step : 3\n", "----------",
                             "\n\nITE -->   0 dploc=(", "ITE -->   1", "Iteration for pressure     : ",
                             "Reservoir average pressure : ", " PSIA\n", "Request time for pressure  : "}) {
        const std::size_t found = text.find(part, at);
        ASSERT_NE(found, std::string::npos) << part;
        at = found;
    }
    EXPECT_EQ(text, quiet.screenText());
}

TEST(PressureStep, NamesTheLowestOfCellsThatTieForTheLargestChange) {
    QuietConsole quiet;
    Simulation s;
    sample::makeRun(3, 1, 1, sample::waterAndOil(1e-5), s);
    s.console = quiet.console;
    PressureStep(s, 0, 1);
    EXPECT_NE(quiet.logText().find("dploc=(   1    1    1)   DIFFP=        0.000000"), std::string::npos);
}

TEST(PressureStep, GoesOnWhenTheChangeEqualsTheTolerance) {
    Simulation first;
    flood(10.0, 2900.0, first);
    first.options.PressureTolerance = 1e7;
    PressureStep(first, 0, 1);
    double largest = 0.0;
    for (CellId c = 1; c <= 4; ++c) largest = std::max(largest, std::abs(first.pressure.DeltaP[c]));
    ASSERT_GT(largest, 0.0);

    for (const double factor : {1.0, 1.0000001}) {
        QuietConsole quiet;
        Simulation s;
        flood(10.0, 2900.0, s);
        s.options.stepControl = false;
        s.console = quiet.console;
        s.options.PressureTolerance = largest * factor;
        PressureStep(s, 0, 1);
        EXPECT_EQ(count(quiet.logText(), "ITE -->"), factor == 1.0 ? 2 : 1);
    }
}

TEST(PressureStep, EndsUnderStepControlOnWhatItMayHandOnWithRateWellsOnTheirTargets) {
    QuietConsole quiet;
    Simulation s;
    flood(10.0, 2900.0, s);
    s.fluids.rockCompressibility = 1e-4;
    s.options.stepControl = true;
    s.console = quiet.console;
    PressureStep(s, 0, 1);
    ASSERT_EQ(count(quiet.logText(), "ITE -->"), 1);
    EXPECT_NEAR(s.wells.wells[0].WellQw, 10.0, 1e-9);
    double left = 0.0;  // what wells brought and the pores do not show, factors 1
    for (const Well& well : s.wells.wells) left += well.WellQw + well.WellQo;
    for (CellId c = 1; c <= 4; ++c) left += s.pressure.carried.water[c] + s.pressure.carried.oil[c];
    const double pores = 4.0 * 100.0 * 100.0 * 20.0 / 5.614583 * 0.2;
    EXPECT_LT(std::abs(left), 0.1 * s.options.stepVolumeError * pores);
}

TEST(PressureStep, CutsUntilTheStepIsTinyWhenOneIterationIsAllowed) {
    QuietConsole quiet;
    Simulation s;
    flood(1.0, 2999.0, s);
    s.options.stepControl = false;  // the step cuts itself
    s.console = quiet.console;
    s.clock.dt = 10.0;
    s.options.MaxPressureIterations = 1;
    PressureStep(s, 0, 1);
    const std::string text = quiet.logText();
    EXPECT_EQ(count(text, "TIME STEP SIZE IS DECREASED -->"), 13);  // 10 * 0.2^13 = 8.192e-9
    EXPECT_NE(text.find("TIME STEP SIZE IS DECREASED --> 2\n"), std::string::npos);
    EXPECT_NE(text.find("TIME STEP SIZE IS DECREASED --> 0.4\n"), std::string::npos);
    EXPECT_EQ(count(text, "WARNING :: Force converge due to tiny tstep"), 1);
    EXPECT_NEAR(s.clock.dt, 8.192e-9, 1e-20);
    EXPECT_TRUE(s.pressure.stepCut);
}

TEST(PressureStep, LeavesAStepWithoutASolutionToTheStepControl) {
    QuietConsole quiet;
    Simulation s;
    flood(1.0, 2999.0, s);
    s.console = quiet.console;
    s.clock.dt = 10.0;
    s.options.MaxPressureIterations = 1;
    PressureStep(s, 0, 1);
    EXPECT_TRUE(s.pressure.failed);
    EXPECT_EQ(s.clock.dt, 10.0);
    EXPECT_FALSE(s.pressure.stepCut);
    EXPECT_EQ(count(quiet.logText(), "TIME STEP SIZE IS DECREASED"), 0);
    s.options.MaxPressureIterations = 30;
    PressureStep(s, 0, 1);
    EXPECT_FALSE(s.pressure.failed) << "the next one starts anew";
    EXPECT_TRUE(s.pressure.fieldStands);
}

TEST(PressureStep, CutsWhenACellFallsBelowFifteenPsia) {
    QuietConsole quiet;
    Simulation s;
    sample::makeRun(1, 1, 1, sample::waterAndOil(1e-6), s);
    s.options.stepControl = false;  // the step cuts itself
    s.console = quiet.console;
    s.state.Pressure[1] = 20.0;
    sample::addWell("prd", "bhp", 0.0, 14.6, 1, s);
    s.clock.dt = 1.0;
    PressureStep(s, 0, 1);
    EXPECT_TRUE(s.pressure.stepCut);
    EXPECT_NE(quiet.logText().find("TIME STEP SIZE IS DECREASED --> 0.2"), std::string::npos);
    EXPECT_TRUE(s.state.Pressure[1] >= 15.0 || s.clock.dt < 1e-8);
}

TEST(PressureStep, StartsAgainFromTheSavedLevelToTheLastBitAfterACut) {
    // Both end with a step of 2 days; the first has been through a failed one of 10 days.
    Simulation cut, direct;
    for (Simulation* s : {&cut, &direct}) {
        sample::makeRun(2, 1, 1, samples::lightOil(), *s);
        s->options.stepControl = false;  // the step cuts itself
        for (CellId c = 1; c <= 2; ++c) {
            s->state.Pressure[c] = 3000.0;
            s->state.Pb[c] = 2990.0;
            s->state.Rs[c] = 163.0;
        }
        s->options.MaxPressureIterations = 7;
        sample::addWell("prd", "orat", -400.0, 100.0, 1, *s);
    }
    cut.clock.dt = 10.0;
    PressureStep(cut, 0, 1);
    ASSERT_TRUE(cut.pressure.stepCut);
    direct.clock.dt = cut.clock.dt;
    direct.pressure.relPermsHeld = true;  // as the failed step has left it
    PressureStep(direct, 0, 1);
    ASSERT_FALSE(direct.pressure.stepCut);
    EXPECT_EQ(cut.state.Pressure.slots, direct.state.Pressure.slots);
    EXPECT_EQ(cut.state.Sg.slots, direct.state.Sg.slots);
    EXPECT_EQ(cut.state.Rs.slots, direct.state.Rs.slots);
    EXPECT_EQ(cut.timeLevel.Pressure.slots, direct.timeLevel.Pressure.slots);
    EXPECT_EQ(cut.wells.wells[0].Bhp, direct.wells.wells[0].Bhp);
}

namespace {

/// Two cells of live oil just above its bubble point, an oil producer in the first.
void depletion(double target, Simulation& s) {
    sample::makeRun(2, 1, 1, samples::lightOil(), s);
    for (CellId c = 1; c <= 2; ++c) {
        s.state.Pressure[c] = 3000.0;
        s.state.Pb[c] = 2990.0;
        s.state.Rs[c] = 163.0;
    }
    sample::addWell("prd", "orat", target, 1000.0, 1, s);
    s.clock.dt = 10.0;
}

}  // namespace

TEST(PressureStep, HoldsRelativePermeabilitiesFromTheFirstCutOnInARunWithGas) {
    Simulation s;
    QuietConsole quiet;
    depletion(-400.0, s);
    s.options.stepControl = s.options.conservativeMapping =
        false;  // steps that cut themselves, average mapping
    s.console = quiet.console;
    s.options.MaxPressureIterations = 1;  // a step that cannot but be cut
    PressureStep(s, 0, 1);
    ASSERT_TRUE(s.pressure.stepCut);
    EXPECT_TRUE(s.pressure.relPermsHeld);
    EXPECT_EQ(count(quiet.screenText(), "RELATIVE PERMEABILITIES ARE HELD"), 1)
        << "said once, not at every cut";

    s.options.MaxPressureIterations = 30;
    s.pressure.stepCut = false;
    s.clock.dt = 10.0;
    PressureStep(s, 0, 1);
    EXPECT_FALSE(s.pressure.stepCut);
    EXPECT_GT(s.state.Sg[1], 0.0);
    CellState level = s.state;
    returnToLevel(s.timeLevel, level);
    refreshProperties(s.grid, s.fluids, level);
    EXPECT_EQ(s.state.KroCell[1], level.KroCell[1]);
    EXPECT_EQ(s.state.KrgCell[1], level.KrgCell[1]);
}

TEST(PressureStep, HoldsNothingInARunWithoutGas) {
    Simulation s;
    flood(50.0, 2500.0, s);
    s.options.stepControl = s.options.conservativeMapping =
        false;  // steps that cut themselves, average mapping
    s.options.MaxPressureIterations = 1;
    PressureStep(s, 0, 1);
    ASSERT_TRUE(s.pressure.stepCut);
    EXPECT_FALSE(s.pressure.relPermsHeld);
}

TEST(PressureStep, SendsAWellToItsLimitBeforeATargetOutOfReachMovesTheCells) {
    Simulation outOfReach, atLimit;
    for (Simulation* s : {&outOfReach, &atLimit}) {
        depletion(-1e7, *s);
        s->pressure.relPermsHeld = true;
    }
    atLimit.wells.wells[0].WellControl = atLimit.wells.wells[0].deckControl = "bhp";
    atLimit.wells.RateWellCount = 0;
    PressureStep(outOfReach, 0, 1);
    PressureStep(atLimit, 0, 1);
    EXPECT_EQ(outOfReach.wells.wells[0].WellControl, "bhp");
    EXPECT_EQ(outOfReach.wells.wells[0].Bhp, 1000.0);
    EXPECT_FALSE(outOfReach.pressure.stepCut);
    EXPECT_EQ(outOfReach.state.Pressure.slots, atLimit.state.Pressure.slots)
        << "the solution with the target moved nothing";
}

TEST(PressureStep, OnlyRefreshesWhenNoSolveIsAsked) {
    Simulation s;
    flood(50.0, 2500.0, s);
    s.pressure.DeltaP.assign(4, 7.0);
    s.state.Pressure[1] = 3100.0;
    s.wells.wells[1].Bhp = 2500.0;
    PressureStep(s, 0, 0);
    EXPECT_EQ(s.state.Pressure[1], 3100.0);
    for (CellId c = 1; c <= 4; ++c) EXPECT_EQ(s.pressure.DeltaP[c], 0.0);
    EXPECT_GT(s.velocity.CellFaceFlux(1, 2), 0.0);
    EXPECT_LT(s.wells.wells[1].WellQo, 0.0);
}

TEST(PressureStep, KeepsTheTimeLevelInARepeatedPass) {
    Simulation s;
    flood(50.0, 2500.0, s);
    PressureStep(s, 0, 1);
    const CellState level = s.timeLevel;
    const double once = s.state.Pressure[1];
    PressureStep(s, 1, 1);
    EXPECT_EQ(s.timeLevel.Pressure.slots, level.Pressure.slots);
    EXPECT_NEAR(s.state.Pressure[1], once, 0.02);  // saturations are the same, so is the solution
}

namespace {

/// Live oil between an injector and a producer that draws its cell below the bubble point.
void liveFlood(Simulation& s) {
    flood(50.0, 2500.0, s);
    samples::fillOdehPvt(s.fluids);
    finishTables(s.fluids);
    s.fluids.hasGas = s.options.hasGas = true;
    for (CellId c = 1; c <= 4; ++c) {
        s.state.Rs[c] = SolutionRs(s.fluids, 3000.0);
        s.state.Pb[c] = 3000.0;
    }
}

}  // namespace

TEST(PressureStep, ReturnsTheTransportOfARepeatedPassToWhereTheFirstBegan) {
    Simulation s;
    liveFlood(s);
    const CellState start = s.state;
    PressureStep(s, 0, 1);
    const CellState first = s.state;
    ASSERT_GT(first.Sg[4], 0.0);       // the producer's cell has lost gas, so that its start was flashed
    for (CellId c = 1; c <= 4; ++c) {  // a transport that moves everything
        s.state.Sw[c] = 0.5;
        s.state.So[c] = 0.4;
        s.state.Sg[c] = 0.1;
        s.state.Rs[c] *= 0.5;
        s.state.Pb[c] = 1500.0;
    }
    returnToStepStart(start, s);
    for (CellId c = 1; c <= 4; ++c) {
        EXPECT_NEAR(s.state.Sw[c], first.Sw[c], 1e-12);
        EXPECT_NEAR(s.state.Sg[c], first.Sg[c], 1e-12);
        EXPECT_NEAR(s.state.Rs[c], first.Rs[c], 1e-9);
        EXPECT_NEAR(s.state.Pb[c], first.Pb[c], 1e-6);
        EXPECT_EQ(s.state.Pressure[c], first.Pressure[c]);
    }
}

TEST(PressureStep, TellsTheLargestChangeOfTheWholeStep) {
    Simulation s;
    flood(50.0, 2500.0, s);
    PressureStep(s, 0, 1);
    double largest = 0.0;
    for (CellId c = 1; c <= 4; ++c) largest = std::max(largest, std::abs(s.state.Pressure[c] - 3000.0));
    EXPECT_GT(largest, 100.0);
    EXPECT_EQ(s.pressure.largestDeltaP, largest);
}

TEST(PressureStepDeathTest, StopsOnASolverThatIsNotOnTheList) {
    const auto run = [] {
        Simulation s;
        sample::makeRun(2, 1, 1, sample::waterAndOil(1e-5), s);
        s.console = consoleOnStandardError();
        s.options.pressureSolver = "foo";
        PressureStep(s, 0, 1);
    };
    EXPECT_EXIT(run(), ::testing::ExitedWithCode(1), "Pressure solver not on the list");
}
