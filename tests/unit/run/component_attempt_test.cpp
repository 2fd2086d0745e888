#include "run/component_attempt.hpp"

#include <gtest/gtest.h>

namespace kvr {
namespace {

/// A run without cells with one producer at its pressure.
Simulation producing(double solvedOil, double solvedGas, double gas) {
    Simulation run;
    Well well;
    well.WellKind = "prd";
    well.WellControl = well.deckControl = well.givenControl = "bhp";
    well.solvedQo = solvedOil;
    well.solvedQg = solvedGas;
    well.WellQg = gas;
    run.wells.wells = {well};
    return run;
}

TEST(ComponentAttempt, MeasuresTheGasOfAProducerByWhatItsPressureWasSolvedWith) {
    EXPECT_NEAR(measureComponentStep(producing(1.0, 100.0, 106.0)).gasMiss, 0.06, 1e-12);
    EXPECT_NEAR(measureComponentStep(producing(1.0, 100.0, 94.0)).gasMiss, 0.06, 1e-12);
    // Little gas beside the oil.
    EXPECT_NEAR(measureComponentStep(producing(1000.0, 1.0, 2.0)).gasMiss, 0.001, 1e-12);
    EXPECT_EQ(measureComponentStep(producing(0.0, 0.0, 0.0)).gasMiss, 0.0);
}

TEST(ComponentAttempt, TakesAStepAgainInWhichAProducerGivesOtherGas) {
    RunOptions options;
    ComponentFigures figures;
    figures.gasMiss = 0.02;
    EXPECT_TRUE(judgeComponentStep(options, figures, 40.0).stands);
    figures.gasMiss = 0.06;
    const ComponentJudgement judgement = judgeComponentStep(options, figures, 40.0);
    EXPECT_FALSE(judgement.stands);
    EXPECT_EQ(judgement.reason, "gas rate of a producer");
    EXPECT_NEAR(judgement.length, 40.0 * 0.8 * 0.03 / 0.06, 1e-12);
}

TEST(ComponentAttempt, BoundsTheErrorThatLaterPassesPutRight) {
    RunOptions options;
    ComponentFigures figures;
    figures.mobilityError = 0.1 * options.stepMobilityError;
    figures.correctedError = 0.9 * options.stepMobilityError;
    EXPECT_TRUE(judgeComponentStep(options, figures, 40.0).stands);
    figures.correctedError = 2.0 * options.stepMobilityError;
    const ComponentJudgement judgement = judgeComponentStep(options, figures, 40.0);
    EXPECT_FALSE(judgement.stands);
    EXPECT_NEAR(judgement.length, 40.0 * 0.8 / 2.0, 1e-12);
}

}  // namespace
}  // namespace kvr
