#include "implicit/newton_update.hpp"

#include "unit/implicit/implicit_bench.hpp"

#include <gtest/gtest.h>
#include <limits>

using namespace kvr;

namespace {

/// One cell of live oil at 3000 psia, no wells, ready for a step of its unknowns.
void makeCell(double Sw, double Sg, double Pb, Simulation& s) {
    sample::makeRun(1, 1, 1, samples::lightOil(), s);
    s.state.Sw[1] = Sw;
    s.state.Sg[1] = Sg;
    s.state.So[1] = 1.0 - Sw - Sg;
    s.state.Pb[1] = Pb;
    s.state.Rs[1] = SolutionRs(s.fluids, Pb);
    sample::prepare(s);
}

NewtonChange step(double dp, double dSw, double third, Simulation& s) {
    s.implicit.solution = {dp, dSw, third};
    return applyNewtonStep(s.grid, s.fluids, s.state, s.wells, s.implicit);
}

double gasIn(const Simulation& s) {
    return s.state.Sg[1] / s.state.Bg[1] + s.state.Rs[1] * s.state.So[1] / s.state.Bo[1];
}

}  // namespace

TEST(NewtonStep, MovesPressureAndSaturations) {
    Simulation s;
    makeCell(0.3, 0.2, 3000.0, s);
    const NewtonChange change = step(-20.0, 0.05, -0.1, s);
    EXPECT_DOUBLE_EQ(s.state.Pressure[1], 2980.0);
    EXPECT_DOUBLE_EQ(s.state.Pb[1], 2980.0);
    EXPECT_DOUBLE_EQ(s.state.Rs[1], SolutionRs(s.fluids, 2980.0));
    EXPECT_DOUBLE_EQ(s.state.Sw[1], 0.35);
    EXPECT_DOUBLE_EQ(s.state.Sg[1], 0.1);
    EXPECT_DOUBLE_EQ(s.state.So[1], 0.55);
    EXPECT_DOUBLE_EQ(change.Dp, 20.0);
    EXPECT_NEAR(change.DSw, 0.05, 1e-15);
    EXPECT_NEAR(change.DSg, 0.1, 1e-15);
}

TEST(NewtonStep, ShortensAMoveThatChangesASaturationByMoreThanAFifth) {
    Simulation s;
    makeCell(0.3, 0.1, 3000.0, s);
    step(0.0, 0.25, 0.15, s);  // the oil would lose 0.4: half of the move
    EXPECT_DOUBLE_EQ(s.state.Sw[1], 0.425);
    EXPECT_DOUBLE_EQ(s.state.Sg[1], 0.175);
}

TEST(NewtonStep, HalvesOrDoublesAPressureAtMost) {
    Simulation s;
    makeCell(0.3, 0.1, 3000.0, s);
    EXPECT_EQ(step(-5000.0, 0.0, 0.0, s).Dp, 5000.0);
    EXPECT_EQ(s.state.Pressure[1], 1500.0);
    step(9000.0, 0.0, 0.0, s);
    EXPECT_EQ(s.state.Pressure[1], 3000.0);
}

TEST(NewtonStep, TakesOverdrawnFreeGasFromTheOil) {
    Simulation s;
    makeCell(0.3, 0.01, 3000.0, s);
    const double oil = 0.7 / s.state.Bo[1];
    // All free gas and 1 % of the pore volume more.
    const double left = s.state.Rs[1] * oil - 0.01 / s.state.Bg[1];
    step(0.0, 0.0, -0.02, s);
    EXPECT_EQ(s.implicit.unknown[0], ThirdUnknown::SolutionGas);
    EXPECT_EQ(s.state.Sg[1], 0.0);
    EXPECT_NEAR(gasIn(s), left, 1e-10 * left);
    EXPECT_NEAR(SolutionRs(s.fluids, s.state.Pb[1]), s.state.Rs[1], 1e-10);
    EXPECT_LT(s.state.Pb[1], 3000.0);
}

TEST(NewtonStep, FreesGasThatThePressureCannotHold) {
    Simulation s;
    makeCell(0.3, 0.0, 2900.0, s);
    EXPECT_EQ(s.implicit.unknown[0], ThirdUnknown::SolutionGas);
    const double limit = SolutionRs(s.fluids, 3000.0);
    const double before = s.state.Rs[1];
    step(0.0, 0.0, limit + 4.0 - before, s);
    EXPECT_EQ(s.implicit.unknown[0], ThirdUnknown::FreeGas);
    EXPECT_DOUBLE_EQ(s.state.Rs[1], limit);
    EXPECT_DOUBLE_EQ(s.state.Pb[1], 3000.0);
    // 4 sb of every stb of the oil, 0.7 of the pores, are free
    EXPECT_NEAR(s.state.Sg[1], 4.0 * 0.7 * s.state.Bg[1] / s.state.Bo[1], 1e-12);
}

TEST(NewtonStep, AsksForMoreOvershootOfACellThatKeepsChangingSides) {
    Simulation s;
    makeCell(0.3, 0.0, 2900.0, s);
    for (int n = 0; n < 2; ++n) {
        const double limit = SolutionRs(s.fluids, s.state.Pressure[1]);
        step(0.0, 0.0, limit * 1.00001 - s.state.Rs[1], s);
        EXPECT_EQ(s.implicit.unknown[0], ThirdUnknown::FreeGas);
        step(0.0, 0.0, -s.state.Sg[1] - 1e-5, s);
        EXPECT_EQ(s.implicit.unknown[0], ThirdUnknown::SolutionGas);
    }
    const double limit = SolutionRs(s.fluids, s.state.Pressure[1]);
    step(0.0, 0.0, limit * 1.000005 - s.state.Rs[1], s);
    EXPECT_EQ(s.implicit.unknown[0], ThirdUnknown::SolutionGas);
    EXPECT_NEAR(s.state.Rs[1], limit * 1.000005, 1e-9);
    step(0.0, 0.0, limit * 1.001 - s.state.Rs[1], s);
    EXPECT_EQ(s.implicit.unknown[0], ThirdUnknown::FreeGas);
}

TEST(NewtonStep, KeepsSaturationsInTheirRange) {
    Simulation s;
    makeCell(0.85, 0.05, 3000.0, s);
    step(0.0, 0.1, 0.05, s);
    EXPECT_NEAR(s.state.Sw[1] + s.state.Sg[1], 1.0, 1e-15);
    EXPECT_EQ(s.state.So[1], 0.0) << "what rounding leaves of 1 - Sw - Sg is no oil";
    step(0.0, 0.2, 0.0, s);
    EXPECT_LE(s.state.Sw[1], 1.0);
    EXPECT_GE(s.state.Sg[1], 0.0);
}

TEST(NewtonStep, KeepsTheRsOfACellWithoutOil) {
    Simulation s;
    makeCell(1.0, 0.0, 2000.0, s);
    EXPECT_EQ(s.implicit.unknown[0], ThirdUnknown::WithoutOil);
    const double before = s.state.Rs[1];
    step(-100.0, -0.05, 0.05, s);
    EXPECT_EQ(s.implicit.unknown[0], ThirdUnknown::WithoutOil);
    EXPECT_DOUBLE_EQ(s.state.Sg[1], 0.05);
    EXPECT_EQ(s.state.Rs[1], before);
    EXPECT_NEAR(s.state.Pb[1], 2000.0, 1e-9);
}

TEST(NewtonStep, LetsOilIntoACellWithoutAnyAtTheGasThatComesWithIt) {
    // Oil of 0.1 of the pores; what it lacks of the held Rs stands as negative free gas in the solution.
    Simulation s;
    makeCell(1.0, 0.0, 2500.0, s);
    const double oil = 0.1, incoming = SolutionRs(s.fluids, 2000.0);
    const double lacks = (s.state.Rs[1] - incoming) * oil * s.state.Bg[1] / s.state.Bo[1];
    step(0.0, -oil, -lacks, s);
    EXPECT_EQ(s.implicit.unknown[0], ThirdUnknown::SolutionGas);
    EXPECT_EQ(s.state.Sg[1], 0.0);
    EXPECT_NEAR(s.state.Rs[1], incoming, 1e-9);
    EXPECT_NEAR(s.state.Pb[1], 2000.0, 1e-6);
}

TEST(NewtonStep, MixesTheGasOfOilThatComesIn) {
    // A quarter of the oil of the cell and three quarters that come in; the linear equations see So dRs
    // alone.
    Simulation s;
    makeCell(0.96, 0.0, 2500.0, s);
    const double here = s.state.Rs[1], incoming = SolutionRs(s.fluids, 2000.0);
    step(0.0, -0.12, 3.0 * (incoming - here), s);
    EXPECT_NEAR(s.state.So[1], 0.16, 1e-12);
    EXPECT_NEAR(s.state.Rs[1], 0.25 * here + 0.75 * incoming, 1e-9);
}

TEST(NewtonStep, LeavesHalfOfTheDissolvedGasAtLeast) {
    Simulation s;
    makeCell(0.3, 0.0, 2000.0, s);
    const double before = s.state.Rs[1];
    step(0.0, 0.0, -2.0 * before, s);
    EXPECT_NEAR(s.state.Rs[1], 0.5 * before, 1e-9);
}

TEST(NewtonStep, WeighsChangesOfRsByTheOil) {
    Simulation s;
    makeCell(0.9, 0.0, 2000.0, s);
    EXPECT_NEAR(step(0.0, 0.0, -5.0, s).DRs, 0.1 * 5.0 / SolutionRs(s.fluids, 3000.0), 1e-12);
}

TEST(NewtonStep, ReportsTheWholeChangeOfADampedStep) {
    Simulation s;
    makeCell(0.3, 0.2, 3000.0, s);
    step(0.0, 0.01, 0.0, s);
    step(0.0, -0.01, 0.0, s);
    const NewtonChange change = step(0.0, 0.01, 0.0, s);
    EXPECT_NEAR(change.DSw, 0.01, 1e-12);
    EXPECT_NEAR(s.state.Sw[1], 0.3 + 0.7 * 0.01, 1e-12);
}

TEST(NewtonStep, ChangesNothingByASolutionThatIsNoNumber) {
    Simulation s;
    makeCell(0.3, 0.1, 3000.0, s);
    EXPECT_FALSE(step(std::numeric_limits<double>::quiet_NaN(), 0.1, 0.0, s).finite);
    EXPECT_EQ(s.state.Pressure[1], 3000.0);
    EXPECT_EQ(s.state.Sw[1], 0.3);
}
