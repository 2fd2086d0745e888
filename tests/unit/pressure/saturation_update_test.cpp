#include "pressure/saturation_update.hpp"

#include "fluid/black_oil.hpp"
#include "unit/pressure/small_run.hpp"

#include <gtest/gtest.h>

using namespace kvr;

namespace {

/// Three cells in a row that water at 50 rb/day has entered at the low end; incompressible.
void row(Simulation& s) {
    sample::makeRun(3, 1, 1, sample::waterAndOil(0.0), s);
    s.options.method = "IMPES";
    s.state.Sw[1] = 0.5;
    s.state.So[1] = 0.5;
    refreshProperties(s.grid, s.fluids, s.state);
    for (CellId c = 1; c < 3; ++c) s.velocity.CellFaceFlux(c, 2) = s.velocity.CellFaceFlux(c + 1, 1) = 50.0;
    sample::addWell("inj", "rate", 50.0, 1e5, 1, s);
    sample::addWell("prd", "bhp", 0.0, 1000.0, 3, s);
    s.wells.wells[0].connections[0].ConnQw = 50.0;
    s.wells.wells[0].connections[0].reservoirRate = 50.0;
    s.wells.wells[1].connections[0].ConnQo = -50.0;
    s.wells.wells[1].connections[0].reservoirRate = -50.0;
}

constexpr double Pores = 100.0 * 100.0 * 20.0 / 5.614583 * 0.2;

double amountOf(const CellAmounts& amounts, char phase) {
    double sum = 0.0;
    for (const double value : (phase == 'w'   ? amounts.water
                               : phase == 'o' ? amounts.oil
                                              : amounts.gas)
                                  .cells())
        sum += value;
    return sum;
}

}  // namespace

TEST(ImpesTransport, MovesWaterByTheFractionOfTheCellItComesFrom) {
    Simulation s;
    row(s);
    s.clock.workDt = 10.0;
    SaturationUpdate(s);
    // P dS/dt = q (f of the cell before - f), 2000 Runge-Kutta steps by a script of its own
    EXPECT_NEAR(s.state.Sw[1], 0.52658314, 2e-4);
    EXPECT_NEAR(s.state.Sw[2], 0.24191894, 2e-4);
    EXPECT_NEAR(s.state.Sw[3], 0.20163776, 2e-4);
    EXPECT_NEAR(s.state.So[2], 1.0 - s.state.Sw[2], 1e-15);
    EXPECT_GT(s.state.KrwCell[2], 0.0) << "properties follow the new saturations";
}

TEST(ImpesTransport, TakesShorterSubstepsForAStrongerFlow) {
    // With sub-steps of the right length the water in the row is the water that came in and did not leave.
    Simulation s;
    row(s);
    s.clock.workDt = 60.0;
    SaturationUpdate(s);
    double water = 0.0;
    for (CellId c = 1; c <= 3; ++c) water += s.state.Sw[c] * Pores;
    EXPECT_NEAR(water, (0.5 + 0.2 + 0.2) * Pores + 60.0 * (50.0 + s.wells.wells[1].WellQw), 1e-6);
    EXPECT_NEAR(s.wells.wells[1].WellQw + s.wells.wells[1].WellQo, -50.0, 1e-12);
    EXPECT_LT(s.wells.wells[1].WellQw, 0.0) << "the first water passes through all cells in one step";
    EXPECT_GT(s.state.Sw[1], s.state.Sw[2]);
    EXPECT_GT(s.state.Sw[2], s.state.Sw[3]);
}

TEST(ImpesTransport, RunsBackwardsAgainstTheIndex) {
    Simulation s;
    row(s);
    for (CellId c = 1; c < 3; ++c) s.velocity.CellFaceFlux(c, 2) = s.velocity.CellFaceFlux(c + 1, 1) = -50.0;
    WellConnection& injector = s.wells.wells[0].connections[0];
    injector.ConnCell = 3;
    injector.ConnQw = 0.0;
    injector.ConnQo = 50.0;
    s.wells.wells[1].connections[0].ConnCell = 1;
    s.clock.workDt = 1.0;
    SaturationUpdate(s);
    // P dS/dt = -q f in the last cell, by the same script; no water reaches it
    EXPECT_NEAR(s.state.Sw[1], 0.49590769, 1e-5);
    EXPECT_NEAR(s.state.Sw[2], 0.2, 1e-12);
}

TEST(ImpesTransport, GivesGasThatHasComeInToTheOilFirst) {
    Simulation s;
    sample::makeRun(1, 1, 1, samples::lightOil(), s);
    s.options.method = "IMPES";
    s.state.Pressure[1] = 4800.0;
    s.state.Pb[1] = 4014.7;
    s.state.Rs[1] = SolutionRs(s.fluids, 4014.7);
    refreshProperties(s.grid, s.fluids, s.state);
    CellAmounts before;
    measureAmounts(s.grid, s.state, before);
    sample::addWell("inj", "rate", 1.0, 1e5, 1, s);
    s.wells.wells[0].connections[0].ConnQg = 0.05 * before.gas[1];
    s.clock.workDt = 1.0;
    SaturationUpdate(s);
    EXPECT_EQ(s.state.Sg[1], 0.0);
    EXPECT_NEAR(s.state.Rs[1], 1.05 * SolutionRs(s.fluids, 4014.7), 1e-6);
    CellAmounts whole;
    measureWholeAmounts(s.grid, s.state, s.pressure.carried, whole);
    EXPECT_NEAR(whole.gas[1], 1.05 * before.gas[1], 1e-9 * before.gas[1]);
    EXPECT_NEAR(whole.oil[1], before.oil[1], 1e-9 * before.oil[1]);
}

TEST(ImpesTransport, LosesNothingOverStepsThatFreeGas) {
    Simulation s;
    sample::makeDepletingRow(s);
    CellAmounts amounts;
    measureAmounts(s.grid, s.state, amounts);
    const double oil = amountOf(amounts, 'o'), gas = amountOf(amounts, 'g');
    double producedOil = 0.0, producedGas = 0.0;
    for (int step = 0; step < 20; ++step) {
        s.clock.dt = 1.0;
        PressureStep(s, 0, 1);
        s.clock.workDt = s.clock.dt;
        SaturationUpdate(s);
        s.clock.time += s.clock.dt;
        producedOil -= s.wells.wells[0].WellQo * s.clock.dt;
        producedGas -= s.wells.wells[0].WellQg * s.clock.dt;
    }
    EXPECT_GT(s.state.Sg[1], 0.01);
    measureWholeAmounts(s.grid, s.state, s.pressure.carried, amounts);
    EXPECT_NEAR(amountOf(amounts, 'o') + producedOil, oil, 1e-10 * oil);
    EXPECT_NEAR(amountOf(amounts, 'g') + producedGas, gas, 1e-10 * gas);
    measureAmounts(s.grid, s.state, amounts);  // what reports see
    EXPECT_NEAR(amountOf(amounts, 'o') + producedOil, oil, 1e-3 * oil);
    EXPECT_NEAR(amountOf(amounts, 'g') + producedGas, gas, 1e-3 * gas);
}

TEST(SaturationUpdate, OnlyRefreshesPropertiesForTheStreamlineMethod) {
    Simulation s;
    row(s);
    s.options.method = "streamline";
    s.state.Sw[2] = 0.6;
    s.state.So[2] = 0.4;
    SaturationUpdate(s);
    EXPECT_EQ(s.state.Sw[2], 0.6);
    EXPECT_EQ(s.state.Sw[1], 0.5);
    EXPECT_NEAR(s.state.KrwCell[2], 0.2, 1e-15);
}
