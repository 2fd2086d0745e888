#include "pressure/accumulation.hpp"

#include "fluid/black_oil.hpp"
#include "pressure/pressure_matrix.hpp"
#include "pressure/properties.hpp"
#include "unit/fluid/table_samples.hpp"
#include "unit/pressure/small_run.hpp"

#include <gtest/gtest.h>

using namespace kvr;

namespace {

/// One cell of the light oil in a grid of one block.
void oneCell(double p, double pb, double so, double sg, Simulation& s) {
    sample::makeRun(1, 1, 1, samples::lightOil(), s);
    s.state.Pressure[1] = p;
    s.state.Pb[1] = pb;
    s.state.So[1] = so;
    s.state.Sg[1] = sg;
    s.state.Sw[1] = 1.0 - so - sg;
    s.state.Rs[1] = SolutionRs(s.fluids, pb);
    refreshProperties(s.grid, s.fluids, s.state);
}

double relative(double value, double expected) {
    return std::abs(value - expected) / std::abs(expected);
}

}  // namespace

TEST(OilCompressibility, OfUnderSaturatedOilIsTheRelativeSlopeOfItsFactor) {
    Simulation s;
    oneCell(4800.0, 4014.7, 0.8, 0.0, s);
    const CellCompressibility comp = cellCompressibility(s.fluids, 4014.7, s.state, 1);
    // 1/Bo is linear between 1/1.695 at 4014.7 and 1/(1.695 - 0.09) at 8014.7, so -(dBo/dp)/Bo = slope * Bo
    const double slope = (1.0 / 1.605 - 1.0 / 1.695) / 4000.0;
    EXPECT_LT(relative(comp.CompressO, slope * s.state.Bo[1]), 1e-6);
    EXPECT_EQ(comp.rsSlope, 0.0);
}

TEST(OilCompressibility, OfSaturatedOilTakesTheGasGivenOffIntoAccount) {
    Simulation s;
    // Chord between two rows of the table, over the upper one: -dBo/dp alone would be negative.
    oneCell(4014.7, 4014.7, 0.7, 0.1, s);
    const FluidTables& t = s.fluids;
    const double chord = (OilFvf(t, 3014.7, 3014.7) - OilFvf(t, 4014.7, 4014.7) +
                          s.state.Bg[1] * (SolutionRs(t, 4014.7) - SolutionRs(t, 3014.7))) /
                         1000.0 / s.state.Bo[1];
    EXPECT_LT(relative(chord, 8.598e-5), 1e-4);

    // What storage takes is the tangent of the same segment, where 1/Bo and Rs are linear.
    oneCell(4014.7 - 1.0, 4014.7 - 1.0, 0.7, 0.1, s);
    const CellCompressibility comp = cellCompressibility(s.fluids, 4014.7, s.state, 1);
    const double total = comp.CompressO + s.state.Bg[1] * comp.rsSlope / s.state.Bo[1];
    const double slopeB = -(1.0 / 1.695 - 1.0 / 1.565) / 1000.0 * s.state.Bo[1] * s.state.Bo[1];
    const double expected =
        (-slopeB + s.state.Bg[1] * (1.27 - 0.93) / GasRatioFactor / 1000.0) / s.state.Bo[1];
    EXPECT_LT(relative(total, expected), 1e-5);
    EXPECT_GT(total, 0.0);
}

TEST(OilCompressibility, CountsACellAsSaturatedWhenItsBubblePointHasFallen) {
    Simulation s;
    oneCell(4014.7, 4014.7 - 1e-3, 0.8, 0.0, s);
    EXPECT_GT(cellCompressibility(s.fluids, 4014.7, s.state, 1).rsSlope, 0.0);
    EXPECT_EQ(cellCompressibility(s.fluids, 4014.7 - 1e-3, s.state, 1).rsSlope, 0.0);
}

TEST(Storage, OfASaturatedCellHoldsTheRateAtWhichItsVolumeAnswersPressure) {
    // The negative diagonal times a small pressure change is the volume that must flow in.
    Simulation s;
    oneCell(3500.0, 3500.0, 0.6, 0.2, s);
    CellAmounts amounts;
    measureAmounts(s.grid, s.state, amounts);
    const CellState old = s.state;
    PressureMatrix matrix;
    buildPattern(s.grid, s.connections, {}, matrix);
    accumulateThreePhase(0, 2.0, s.grid, s.fluids, old, amounts, s.state, matrix);
    const double perPsi = -matrix.MatDiag[1];
    EXPECT_NEAR(matrix.MatRhs[1], 0.0, 1e-12);

    const double up = 0.01;
    const double p = 3500.0 + up;
    const double water = amounts.water[1] * WaterFvf(s.fluids, p);
    const double oil = amounts.oil[1] * OilFvf(s.fluids, p, p);
    const double gas = (amounts.gas[1] - SolutionRs(s.fluids, p) * amounts.oil[1]) * GasFvf(s.fluids, p);
    const double pores = s.grid.BulkVolume[1] * s.grid.PORO[1] * PoreFactor(s.fluids, p);
    EXPECT_LT(relative(perPsi * up, (pores - water - oil - gas) / 2.0), 1e-4);
}

TEST(Storage, OfLaterIterationsIsTheExactDifferenceOfAmounts) {
    Simulation s;
    oneCell(4800.0, 4014.7, 0.8, 0.0, s);
    CellAmounts amounts;
    measureAmounts(s.grid, s.state, amounts);
    const CellState old = s.state;
    s.state.Pressure[1] = 4300.0;
    refreshProperties(s.grid, s.fluids, s.state);
    PressureMatrix matrix;
    buildPattern(s.grid, s.connections, {}, matrix);
    accumulateThreePhase(0, 5.0, s.grid, s.fluids, old, amounts, s.state, matrix);
    // the pores at the new pressure less the old amounts at the new factors
    const double expanded = amounts.oil[1] * s.state.Bo[1] + amounts.water[1] * s.state.Bw[1] +
                            s.state.Bg[1] * (amounts.gas[1] - s.state.Rs[1] * amounts.oil[1]);
    EXPECT_LT(relative(matrix.MatRhs[1], -(s.state.PoreVolume[1] - expanded) / 5.0), 1e-8);
}

TEST(Storage, OfTheFirstIterationIsLinearInTheChangeOfPressure) {
    Simulation s;
    oneCell(4800.0, 4014.7, 0.8, 0.0, s);
    CellAmounts amounts;
    measureAmounts(s.grid, s.state, amounts);
    const CellState old = s.state;
    PressureMatrix matrix;
    buildPattern(s.grid, s.connections, {}, matrix);
    accumulateThreePhase(1, 5.0, s.grid, s.fluids, old, amounts, s.state, matrix);
    EXPECT_EQ(matrix.MatRhs[1], 0.0);
    s.state.Pressure[1] += 2.0;
    s.state.PressureG[1] += 2.0;
    accumulateThreePhase(1, 5.0, s.grid, s.fluids, old, amounts, s.state, matrix);
    EXPECT_LT(relative(matrix.MatRhs[1], 2.0 * matrix.MatDiag[1]), 1e-12);
}
