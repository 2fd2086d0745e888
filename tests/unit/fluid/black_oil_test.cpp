#include "fluid/black_oil.hpp"

#include "unit/fluid/table_samples.hpp"

#include <gtest/gtest.h>

namespace kvr {
namespace {

constexpr double Tolerance = 1e-8;

void expectClose(double value, double expected) {
    EXPECT_NEAR(value, expected, Tolerance * std::abs(expected));
}

/// Printed to eight decimals.
void expectPrinted(double value, double expected) {
    EXPECT_NEAR(value, expected, std::max(6e-9, Tolerance * std::abs(expected)));
}

struct OilCase {
    double p, pb, bo, mu;
};

void expectOil(const FluidTables& tables, const OilCase& c) {
    SCOPED_TRACE(testing::Message() << "p " << c.p << ", pb " << c.pb);
    expectPrinted(OilFvf(tables, c.p, c.pb), c.bo);
    expectPrinted(OilViscosity(tables, c.p, c.pb), c.mu);
    const OilProperties both = oilProperties(tables, c.p, c.pb);
    EXPECT_EQ(both.Bo, OilFvf(tables, c.p, c.pb));
    EXPECT_EQ(both.MuO, OilViscosity(tables, c.p, c.pb));
}

/// Saturated rows at 1000, 2000, 3000 psia and three under-saturated rows behind the last.
FluidTables threeUnderRows() {
    FluidTables tables;
    tables.OilRs = {50, 100, 150, 150, 150, 150};
    tables.OilPressure = {1000, 2000, 3000, 4000, 5000, 6000};
    tables.OilFvf = {1.2, 1.35, 1.5, 1.48, 1.465, 1.455};
    tables.OilViscosity = {1.0, 0.8, 0.6, 0.65, 0.7, 0.75};
    tables.UnderRows = 3;
    finishTables(tables);
    return tables;
}

FluidTables deadOil() {
    FluidTables tables;
    tables.OilPressure = {1000, 2000, 4000};
    tables.OilFvf = {1.25, 1.2, 1.0};
    tables.OilViscosity = {2.0, 2.5, 4.0};
    finishTables(tables);
    return tables;
}

TEST(OilProperties, OfSaturatedOilComeFromTheReciprocalColumns) {
    const FluidTables tables = samples::lightOil();
    expectOil(tables, {4014.7, 4014.7, 1.695, 0.51});
    expectOil(tables, {3514.7, 3514.7, 1.62740798, 0.55047457});
}

TEST(OilProperties, BelowTheBubblePointFollowTheFirstUnderSaturatedStepDownward) {
    expectOil(samples::lightOil(), {4000, 4014.7, 1.69531413, 0.50896214});
    expectOil(threeUnderRows(), {2500, 3000, 1.50993377, 0.57391304});
}

TEST(OilProperties, AboveTheBubblePointWalkTheBlockFromAnyBubblePoint) {
    const FluidTables tables = samples::lightOil();
    expectOil(tables, {4800, 4014.7, 1.67654314, 0.53776741});
    expectOil(tables, {7014.7, 5014.7, 1.78086364, 0.52466481});
    expectOil(tables, {9014.7, 5014.7, 1.737, 0.631});
    expectOil(tables, {10014.7, 5014.7, 1.71586861, 0.70215366});
}

TEST(OilProperties, ReproduceEveryUnderSaturatedRowAndExtendTheLastStep) {
    const FluidTables tables = threeUnderRows();
    expectOil(tables, {3500, 3000, 1.48993289, 0.624});
    expectOil(tables, {4000, 3000, 1.48, 0.65});
    expectOil(tables, {5500, 3000, 1.45998288, 0.72413793});
    expectOil(tables, {6000, 3000, 1.455, 0.75});
    expectOil(tables, {7000, 3000, 1.44513559, 0.80769231});
    expectOil(tables, {3000, 2000, 1.33, 0.85});
}

TEST(OilProperties, OfDeadOilDependOnPressureAlone) {
    const FluidTables tables = deadOil();
    expectOil(tables, {2000, 0, 1.2, 2.5});
    // at 3000: 1/B = (1/1.2 + 1)/2, 1/(B mu) = (1/3 + 1/4)/2
    expectOil(tables, {3000, 500, 12.0 / 11.0, (24.0 / 7.0) / (12.0 / 11.0)});
}

TEST(OilProperties, AreOneWithFewerThanTwoSaturatedRows) {
    FluidTables tables;
    tables.OilRs = {100, 100};
    tables.OilPressure = {1000, 2000};
    tables.OilFvf = {1.2, 1.1};
    tables.OilViscosity = {0.5, 0.6};
    tables.UnderRows = 1;
    finishTables(tables);
    expectOil(tables, {1500, 1000, 1.0, 1.0});
    EXPECT_EQ(SolutionRs(tables, 1000), 0.0);
    EXPECT_EQ(BubblePoint(tables, 100), 0.0);
}

TEST(OilProperties, AreZeroOffTheBubblePointWithoutUnderSaturatedRows) {
    FluidTables tables = samples::lightOil();
    for (Column* column : {&tables.OilPressure, &tables.OilRs, &tables.OilFvf, &tables.OilViscosity})
        column->pop_back();
    tables.UnderRows = 0;
    finishTables(tables);
    EXPECT_EQ(OilFvf(tables, 4500, 4014.7), 0.0);
    EXPECT_EQ(OilViscosity(tables, 4500, 4014.7), 0.0);
    expectClose(OilFvf(tables, 4014.7, 4014.7), 1.695);
}

TEST(OilProperties, CountAsUnderSaturatedFromADifferenceOfExactlyTheTolerance) {
    FluidTables tables = threeUnderRows();
    tables.UnderRows = 0;
    EXPECT_EQ(OilFvf(tables, 1e-8, 0.0), 0.0);
    EXPECT_GT(OilFvf(tables, 0.99e-8, 0.0), 1.0);
}

TEST(OilFvf, StaysFiniteWhereTheReciprocalColumnHasRunOut) {
    FluidTables tables;
    tables.OilPressure = {1000, 2000};
    tables.OilFvf = {1.0, 2.0};
    tables.OilViscosity = {1.0, 1.0};
    finishTables(tables);
    expectClose(OilFvf(tables, 4000, 0), 1e10);
}

TEST(GasProperties, FollowTheReciprocalColumnsAndFallBackToStandardPressure) {
    const FluidTables tables = samples::lightOil();
    expectClose(GasFvf(tables, 14.7), 0.9357600903);
    expectClose(GasViscosity(tables, 14.7), 0.008);
    expectClose(GasFvf(tables, 1000), 0.01821242387);
    EXPECT_NEAR(GasViscosity(tables, 1000), 0.01394700, 6e-9);
    expectClose(GasFvf(tables, 4500), 0.004061432736);
    EXPECT_NEAR(GasViscosity(tables, 4500), 0.02887220, 6e-9);
    expectClose(GasFvf(tables, 10), 1.231752778);
    EXPECT_EQ(GasFvf(tables, -1000), GasFvf(tables, 14.6));
    EXPECT_EQ(GasViscosity(tables, -1000), GasViscosity(tables, 14.6));
    const GasProperties both = gasProperties(tables, 1234.5);
    EXPECT_EQ(both.Bg, GasFvf(tables, 1234.5));
    EXPECT_EQ(both.MuG, GasViscosity(tables, 1234.5));
}

TEST(GasProperties, AreOneInARunWithoutGasAndTouchNoTable) {
    const FluidTables empty;
    EXPECT_EQ(GasFvf(empty, 3000), 1.0);
    EXPECT_EQ(GasViscosity(empty, 3000), 1.0);
}

TEST(SolutionGas, LooksUpBothWaysAlongTheSaturatedRows) {
    const FluidTables tables = samples::lightOil();
    expectClose(SolutionRs(tables, 3514.7), 195.918379);
    expectClose(BubblePoint(tables, 200), 3582.10176);
    expectClose(SolutionRs(tables, 4014.7), 1.27 / 0.005614583);
    expectClose(SolutionRs(tables, 6014.7), (1.618 + 0.348) / 0.005614583);  // the last step goes on
    EXPECT_EQ(SolutionRs(tables, -1000), 0.0);
}

TEST(SolutionGas, IsNoneInDeadOil) {
    const FluidTables tables = deadOil();
    EXPECT_EQ(SolutionRs(tables, 2000), 0.0);
    EXPECT_EQ(BubblePoint(tables, 100), 0.0);
}

TEST(SolutionGas, SkipsRowsThatRepeatAnRs) {
    FluidTables tables = samples::lightOil();
    tables.OilRs[8] = tables.OilRs[7];  // 5014.7 repeats the Rs of 4014.7
    finishTables(tables);
    const double rs = tables.OilRs[8] + 1.0;
    const double perRs = 2000.0 / (tables.OilRs[8] - tables.OilRs[6]);
    expectClose(BubblePoint(tables, rs), 5014.7 + perRs);
}

TEST(WaterProperties, FollowTheirSeries) {
    FluidTables tables;
    tables.waterFvf = 1.038;
    tables.waterCompressibility = 3.13e-6;
    tables.referencePressureWater = 4017.55;
    expectClose(WaterFvf(tables, 5014.7), 1.034765375);
    tables.waterFvf = 1.03;
    tables.waterCompressibility = 3e-6;
    tables.referencePressureWater = 4000;
    expectClose(WaterFvf(tables, 3000), 1.033094635);
    tables.waterViscosity = 0.5;
    tables.waterViscosibility = 1e-5;
    expectClose(WaterViscosity(tables, 5000), 0.505024999);
    expectClose(WaterViscosity(tables, 3000), 0.4950249988);
    tables.waterViscosibility = 9e-11;
    EXPECT_EQ(WaterViscosity(tables, 9000), 0.5);
}

TEST(PoreFactor, FollowsItsSeries) {
    FluidTables tables;
    tables.rockCompressibility = 3e-6;
    tables.rockReferencePressure = 14.7;
    expectClose(PoreFactor(tables, 4800), 1.014458946);
    tables.rockCompressibility = 4e-6;
    tables.rockReferencePressure = 4000;
    expectClose(PoreFactor(tables, 2000), 0.992032);
}

TEST(Densities, AreMassOverReservoirVolume) {
    const FluidTables tables = samples::lightOil();
    const double rs = SolutionRs(tables, 4014.7);
    expectClose(oilDensityAt(tables, rs, OilFvf(tables, 4014.7, 4014.7)), 36.0804028);
    expectClose(gasDensityAt(tables, GasFvf(tables, 4014.7)), 11.7054698);
    expectClose(waterDensityAt(tables, 1.038), 64.49 / 1.038);
}

TEST(Slopes, OfSaturatedOilRunAlongTheSaturatedCurve) {
    const FluidTables tables = samples::lightOil();
    // 1/B is linear in p between the rows at 3014.7 and 4014.7: dB/dp = -B^2 d(1/B)/dp
    const double bo = 1.62740798;
    const double expected = -bo * bo * (1.0 / 1.695 - 1.0 / 1.565) / 1000.0;
    EXPECT_NEAR(OilFvfSlope(tables, 3514.7, 3514.7), expected, 1e-9);
    EXPECT_NEAR(SolutionRsSlope(tables, 3514.7), 0.34 / 0.005614583 / 1000.0, 1e-7);
}

TEST(Slopes, OfUnderSaturatedAndDeadOilHoldTheBubblePoint) {
    const FluidTables live = samples::lightOil();
    const double bo = 1.78086364;
    const double expected = -bo * bo * (1.0 / 1.737 - 1.0 / 1.827) / 4000.0;
    EXPECT_NEAR(OilFvfSlope(live, 7014.7, 5014.7), expected, 1e-9);
    const double mu = 0.52466481;
    const OilSlopes slopes = oilSlopes(live, 7014.7, 5014.7, usableOilProperties(live, 7014.7, 5014.7));
    EXPECT_NEAR(slopes.MuOByP, -mu * mu * (1.0 / 0.631 - 1.0 / 0.449) / 4000.0, 1e-9);
    const FluidTables dead = deadOil();
    const double b = 12.0 / 11.0;
    EXPECT_NEAR(OilFvfSlope(dead, 3000, 3000), -b * b * (1.0 - 1.0 / 1.2) / 2000.0, 1e-9);
}

TEST(Slopes, OfWaterAndGasAreForwardDifferences) {
    FluidTables tables = samples::lightOil();
    tables.waterViscosibility = 1e-5;
    const double c = 3.22e-6;
    EXPECT_NEAR(WaterFvfSlope(tables, 4017.55), -1.038 * c, 1e-10);
    EXPECT_NEAR(WaterViscositySlope(tables, 4017.55), 0.318e-5, 1e-9);
    const double b = GasFvf(tables, 3514.7);
    const double inverseSlope = (1.0 / 0.811 - 1.0 / 1.08) / 0.005614583 / 1000.0;
    const GasProperties slopes = gasSlopes(tables, 3514.7, gasProperties(tables, 3514.7));
    EXPECT_NEAR(slopes.Bg, -b * b * inverseSlope, 1e-11);
    EXPECT_GT(slopes.MuG, 0.0);
}

}  // namespace
}  // namespace kvr
