#include "run/step_control.hpp"

#include <cmath>
#include <gtest/gtest.h>
#include <limits>

namespace kvr {
namespace {

/// Limits that are easy to share: 0.1 of each figure, smallest step a thousandth of a day.
RunOptions tenths() {
    RunOptions options;
    options.hasGas = false;
    options.stepVolumeError = options.stepCellVolumeError = options.stepDeficit = 0.1;
    options.stepTargetError = options.stepTargetMiss = options.stepMobilityError = 0.1;
    options.stepSmallest = 1e-3;
    return options;
}

AttemptFigures figuresOf(double volumeError, double mobilityError = 0.0) {
    AttemptFigures figures;
    figures.volumeError = volumeError;
    figures.mobilityError = mobilityError;
    return figures;
}

/// Errors of mobility that grow with the length itself.
MobilityGrowth linear() {
    MobilityGrowth growth;
    growth.order = 1.0;
    return growth;
}

TEST(JudgeStep, LetsTheNextStepGrowByTheRootOfWhatIsLeftOfTheLimits) {
    struct Row {
        double figure, growth;
    };
    // 0.8 / sqrt(figure / limit), within 1 and 3.
    const Row rows[] = {{0.0, 3.0}, {0.001, 3.0}, {0.016, 2.0}, {0.04, 0.8 / std::sqrt(0.4)}, {0.1, 1.0}};
    for (const Row& row : rows) {
        const StepJudgement judgement = judgeStep(tenths(), figuresOf(row.figure), {}, 10.0, 0);
        EXPECT_EQ(judgement.verdict, StepVerdict::Accepted) << row.figure;
        EXPECT_NEAR(judgement.length, 10.0 * row.growth, 1e-12) << row.figure;
    }
}

TEST(JudgeStep, LetsTheErrorOfMobilityGrowWithTheLength) {
    AttemptFigures figures;
    figures.mobilityError = 0.05;  // half the limit
    EXPECT_NEAR(judgeStep(tenths(), figures, linear(), 10.0, 0).length, 16.0, 1e-12);
    MobilityGrowth growth;
    growth.order = 0.8;
    EXPECT_NEAR(judgeStep(tenths(), figures, growth, 10.0, 0).length, 8.0 * std::pow(2.0, 1.25), 1e-12);
    figures.volumeError = 0.04;
    EXPECT_NEAR(judgeStep(tenths(), figures, {}, 10.0, 0).length, 10.0 * 0.8 / std::sqrt(0.4), 1e-12)
        << "the least that a figure asks for";
}

AttemptFigures figuresOfMobility(double error, bool forecast = true) {
    AttemptFigures figures;
    figures.mobilityError = error;
    figures.forecast = forecast;
    return figures;
}

TEST(LearnGrowth, GoesHalfTheWayToWhatTwoLengthsHaveShown) {
    MobilityGrowth growth;
    const double first = growth.order;
    learnGrowth(figuresOfMobility(0.01), 10.0, growth);
    EXPECT_EQ(growth.order, first) << "one length shows nothing";
    learnGrowth(figuresOfMobility(0.02), 20.0, growth);
    EXPECT_NEAR(growth.order, 0.5 * (first + 1.0), 1e-12);
    const double second = growth.order;
    learnGrowth(figuresOfMobility(0.02 * std::sqrt(0.25)), 5.0, growth);
    EXPECT_NEAR(growth.order, 0.5 * (second + 0.5), 1e-12) << "of a shorter step as well";
}

TEST(LearnGrowth, TakesNoLessonFromLengthsThatAreAlikeOrErrorsThatCannotBeCompared) {
    MobilityGrowth growth;
    const double first = growth.order;
    learnGrowth(figuresOfMobility(0.01), 10.0, growth);
    learnGrowth(figuresOfMobility(0.03), 11.0, growth);
    learnGrowth(figuresOfMobility(0.03, false), 30.0, growth);
    learnGrowth(figuresOfMobility(0.0, false), 90.0, growth);
    learnGrowth(figuresOfMobility(0.03, false), 10.0, growth);
    learnGrowth(figuresOfMobility(std::numeric_limits<double>::quiet_NaN(), false), 30.0, growth);
    learnGrowth(figuresOfMobility(0.03, false), 90.0, growth);
    learnGrowth(figuresOfMobility(HUGE_VAL, false), 10.0, growth);
    learnGrowth(figuresOfMobility(0.03, false), 30.0, growth);
    EXPECT_EQ(growth.order, first);
}

TEST(LearnGrowth, StaysWithinItsBounds) {
    for (const double error : {1e-9, 1e9}) {
        MobilityGrowth growth;
        for (int n = 0; n < 60; ++n)
            learnGrowth(figuresOfMobility(n % 2 == 0 ? 1.0 : error), n % 2 == 0 ? 10.0 : 20.0, growth);
        EXPECT_NEAR(growth.order, error < 1.0 ? 0.4 : 1.5, 1e-12);
    }
}

TEST(JudgeStep, ShortensAStepBeyondALimitByTheSameRule) {
    struct Row {
        double figure, share;
    };
    // Within 0.1 and 0.7 of the length.
    const Row rows[] = {{0.1001, 0.7}, {0.11, 0.7}, {0.4, 0.4}, {1.6, 0.2}, {100.0, 0.1}};
    for (const Row& row : rows) {
        const StepJudgement judgement = judgeStep(tenths(), figuresOf(row.figure), {}, 10.0, 0);
        EXPECT_EQ(judgement.verdict, StepVerdict::Shorter) << row.figure;
        EXPECT_NEAR(judgement.length, 10.0 * row.share, 1e-12) << row.figure;
    }
}

TEST(JudgeStep, NamesTheFigureThatIsFurthestBeyondItsLimit) {
    struct Row {
        double AttemptFigures::*figure;
        double RunOptions::*limit;
        std::string_view reason;
        double share;  // of the length: 0.8 over the root, or of mobilities over the figure itself
    };
    const Row rows[] = {
        {&AttemptFigures::volumeError, &RunOptions::stepVolumeError, "volume error of the field", 0.4},
        {&AttemptFigures::largestVolumeError, &RunOptions::stepCellVolumeError, "volume error of a cell",
         0.4},
        {&AttemptFigures::deficit, &RunOptions::stepDeficit, "volume that cells did not hold", 0.4},
        {&AttemptFigures::targetExcess, &RunOptions::stepTargetError, "rate over a target", 0.4},
        {&AttemptFigures::targetMiss, &RunOptions::stepTargetMiss, "rate away from the solved one", 0.4},
        {&AttemptFigures::mobilityError, &RunOptions::stepMobilityError, "error of mobility", 0.2},
    };
    for (const Row& row : rows) {
        RunOptions options = tenths();
        options.*row.limit = 0.02;  // figure 0.08: four times beyond, the others twice
        AttemptFigures figures;
        for (const Row& other : rows) figures.*other.figure = 0.2;
        figures.*row.figure = 0.08;
        const StepJudgement judgement = judgeStep(options, figures, linear(), 1.0, 0);
        EXPECT_EQ(judgement.reason, row.reason);
        EXPECT_EQ(judgement.figure, 0.08);
        EXPECT_EQ(judgement.limit, 0.02);
        EXPECT_NEAR(judgement.length, row.share, 1e-12);
    }
}

TEST(JudgeStep, AllowsMobilitiesThatWereNotForecastALargerError) {
    const RunOptions options;
    AttemptFigures figures = figuresOf(0.0, 1.5 * options.stepMobilityError);
    EXPECT_EQ(judgeStep(options, figures, {}, 1.0, 0).verdict, StepVerdict::Shorter);
    figures.forecast = false;
    EXPECT_EQ(judgeStep(options, figures, {}, 1.0, 0).verdict, StepVerdict::Accepted);
    figures.mobilityError = 2.1 * options.stepMobilityError;
    EXPECT_EQ(judgeStep(options, figures, {}, 1.0, 0).verdict, StepVerdict::Shorter);
    figures.volumeError = 1.5 * options.stepVolumeError;
    figures.mobilityError = 0.0;
    EXPECT_EQ(judgeStep(options, figures, {}, 1.0, 0).verdict, StepVerdict::Shorter) << "mobilities alone";
}

TEST(JudgeStep, HandsTheThirdRejectionToTheImplicitMethod) {
    EXPECT_EQ(judgeStep(tenths(), figuresOf(0.4), {}, 10.0, 1).verdict, StepVerdict::Shorter);
    EXPECT_EQ(judgeStep(tenths(), figuresOf(0.4), {}, 10.0, 2).verdict, StepVerdict::Implicit);
    EXPECT_EQ(judgeStep(tenths(), figuresOf(0.04), {}, 10.0, 2).verdict, StepVerdict::Accepted);
}

TEST(JudgeStep, HandsStepsBelowTheSmallestToTheImplicitMethod) {
    EXPECT_EQ(judgeStep(tenths(), figuresOf(0.4), {}, 0.0026, 0).verdict, StepVerdict::Shorter);
    EXPECT_EQ(judgeStep(tenths(), figuresOf(0.4), {}, 0.0024, 0).verdict, StepVerdict::Implicit);
}

TEST(JudgeStep, TakesAFifthOfTheLimitsBesideFreeGas) {
    AttemptFigures figures = figuresOf(0.019);
    figures.freeGas = true;
    EXPECT_EQ(judgeStep(tenths(), figures, {}, 1.0, 0).verdict, StepVerdict::Accepted);
    figures.volumeError = 0.021;
    const StepJudgement judgement = judgeStep(tenths(), figures, {}, 1.0, 0);
    EXPECT_NE(judgement.verdict, StepVerdict::Accepted);
    EXPECT_NEAR(judgement.limit, 0.02, 1e-15);
}

TEST(JudgeStep, HoldsTheVolumeOfOneCellToItsWholeLimitBesideFreeGas) {
    AttemptFigures figures;
    figures.freeGas = true;
    figures.largestVolumeError = 0.09;
    EXPECT_EQ(judgeStep(tenths(), figures, {}, 1.0, 0).verdict, StepVerdict::Accepted);
    figures.largestVolumeError = 0.11;
    EXPECT_NEAR(judgeStep(tenths(), figures, {}, 1.0, 0).limit, 0.1, 1e-15);
}

TEST(JudgeStep, ShortensAStepWithoutAPressureToAQuarter) {
    AttemptFigures figures;
    figures.pressureSolved = false;
    const StepJudgement judgement = judgeStep(tenths(), figures, {}, 10.0, 0);
    EXPECT_EQ(judgement.verdict, StepVerdict::Shorter);
    EXPECT_DOUBLE_EQ(judgement.length, 2.5);
    EXPECT_EQ(judgement.reason, "pressure without a solution");
}

TEST(JudgeStep, AcceptsNoFigureThatIsNoNumber) {
    for (const double figure : {std::numeric_limits<double>::quiet_NaN(), HUGE_VAL}) {
        const StepJudgement judgement = judgeStep(tenths(), figuresOf(figure, 0.01), {}, 10.0, 0);
        EXPECT_EQ(judgement.verdict, StepVerdict::Shorter);
        EXPECT_DOUBLE_EQ(judgement.length, 1.0);
        EXPECT_EQ(judgement.reason, "volume error of the field");
    }
}

TEST(PartWithoutSplinter, SharesOutARestThatIsNoStepOfItsOwn) {
    EXPECT_EQ(partWithoutSplinter(15.0, 50.0), 15.0);
    EXPECT_EQ(partWithoutSplinter(15.0, 12.0), 12.0);
    EXPECT_DOUBLE_EQ(partWithoutSplinter(10.0, 20.00002), 20.00002 / 3.0);
    EXPECT_DOUBLE_EQ(partWithoutSplinter(10.0, 10.00002), 5.00001);
    EXPECT_EQ(partWithoutSplinter(0.001, 0.099), 0.001) << "rounding is no splinter";
    EXPECT_EQ(partWithoutSplinter(10.0, 0.00002), 0.00002);
}

TEST(AllowedBehind, ASplinterLeavesWhatTheStepsBeforeAllowed) {
    EXPECT_EQ(allowedBehind(3e-5, 200.0, 1e-5), 200.0);
    EXPECT_EQ(allowedBehind(90.0, 200.0, 70.0), 90.0) << "a third of it and more has its own say";
    EXPECT_EQ(allowedBehind(30.0, 0.0, 10.0), 30.0) << "nothing was allowed before";
}

TEST(ImplicitLength, IsThatOverWhichMobilitiesChangeLittle) {
    EXPECT_EQ(implicitLength(0.05, 365.0), 365.0);
    EXPECT_DOUBLE_EQ(implicitLength(0.1, 365.0), 0.4 * 365.0) << "0.8 of the length that comes to the limit";
    EXPECT_DOUBLE_EQ(implicitLength(5.0, 365.0), 36.5) << "no shorter than a tenth";
    EXPECT_DOUBLE_EQ(implicitLength(0.0501, 365.0), 0.7 * 365.0) << "shorter by three tenths at least";
    EXPECT_DOUBLE_EQ(implicitLength(HUGE_VAL, 365.0), 36.5);
    EXPECT_DOUBLE_EQ(implicitLength(std::numeric_limits<double>::quiet_NaN(), 365.0), 36.5);
}

TEST(ImplicitGrowth, TakesTheNextStepByWhatTheLastHasChanged) {
    EXPECT_EQ(implicitGrowth(0.0), 2.0);
    EXPECT_EQ(implicitGrowth(0.01), 2.0);
    EXPECT_DOUBLE_EQ(implicitGrowth(0.04), 1.0);
    EXPECT_DOUBLE_EQ(implicitGrowth(0.5), 0.7);
    EXPECT_DOUBLE_EQ(implicitGrowth(std::numeric_limits<double>::quiet_NaN()), 0.7);
}

TEST(LacksTooMuch, HoldsTheMissingVolumeAloneAgainstItsLimit) {
    RunOptions options = tenths();
    AttemptFigures figures = figuresOf(5.0);
    figures.deficit = 0.09;
    EXPECT_FALSE(lacksTooMuch(options, figures));
    options.hasGas = true;
    EXPECT_FALSE(lacksTooMuch(options, figures)) << "gas that is all in solution";
    figures.freeGas = true;
    EXPECT_TRUE(lacksTooMuch(options, figures)) << "a fifth beside free gas";
    figures.freeGas = false;
    figures.deficit = std::numeric_limits<double>::quiet_NaN();
    EXPECT_TRUE(lacksTooMuch(options, figures));
}

TEST(LacksTooMuch, GivesUpNoAttemptThatIsThenAccepted) {
    for (const bool freeGas : {false, true})
        for (const bool hasGas : {false, true})
            for (double deficit = 0.001; deficit < 0.2; deficit *= 1.3) {
                RunOptions options = tenths();
                options.hasGas = hasGas;
                AttemptFigures figures;
                figures.freeGas = freeGas;
                figures.deficit = deficit;
                if (isLost(options, figures)) {
                    EXPECT_NE(judgeStep(options, figures, {}, 1.0, 0).verdict, StepVerdict::Accepted)
                        << deficit;
                }
            }
}

TEST(MayStillStand, LeavesRatesToAnotherPass) {
    AttemptFigures figures = figuresOf(0.09);
    figures.targetExcess = figures.targetMiss = 5.0;
    EXPECT_TRUE(mayStillStand(tenths(), figures));
    figures.mobilityError = 0.11;
    EXPECT_FALSE(mayStillStand(tenths(), figures));
    const AttemptFigures left = beyondRepair(figures);
    EXPECT_EQ(left.targetExcess, 0.0);
    EXPECT_EQ(left.targetMiss, 0.0);
    EXPECT_EQ(left.mobilityError, 0.11);
    EXPECT_EQ(left.volumeError, 0.09);
}

TEST(IsLost, GivesUpAnAttemptWhoseFirstRejectionIsTheLast) {
    // Limits of 0.1, of 0.02 beside free gas. Without it a shorter step would have to know how far off the
    // whole one was.
    AttemptFigures figures = figuresOf(0.5);
    figures.targetMiss = 5.0;
    EXPECT_FALSE(isLost(tenths(), figures));
    figures.freeGas = true;
    EXPECT_TRUE(isLost(tenths(), figures));
    figures.volumeError = 0.019;
    EXPECT_FALSE(isLost(tenths(), figures));
    AttemptFigures lacking;
    lacking.deficit = 0.11;
    EXPECT_TRUE(isLost(tenths(), lacking));
}

TEST(EvenPart, SharesAStepEvenly) {
    EXPECT_EQ(evenPart(0.0, 30.0), 30.0) << "no bound";
    EXPECT_EQ(evenPart(40.0, 30.0), 30.0);
    EXPECT_EQ(evenPart(8.0, 30.0), 7.5);
    EXPECT_EQ(evenPart(10.0, 30.0), 10.0);
}

TEST(EvenPart, KeepsWholePartsAsManyAsTheyAreBeyondRounding) {
    EXPECT_EQ(evenPart(10.0 * (1.0 - 1e-14), 30.0), 10.0);
    EXPECT_EQ(evenPart(0.1, 0.1 + 0.1 + 0.1), (0.1 + 0.1 + 0.1) / 3.0);
    EXPECT_EQ(evenPart(9.99, 30.0), 7.5);
}

TEST(FirstLength, IsATenthOfWhatIsAskedFor) {
    EXPECT_DOUBLE_EQ(firstLength(50.0), 5.0);
}

}  // namespace
}  // namespace kvr
