#include "run/step_level.hpp"

#include "pressure/saturation_update.hpp"
#include "unit/pressure/small_run.hpp"

#include <gtest/gtest.h>

namespace kvr {
namespace {

/// Light oil that a step of IMPES has already moved: amounts are carried and rates are known.
struct Row {
    Simulation s;

    Row() {
        sample::makeDepletingRow(s);
        step();
        // A step starts with the properties of its state.
        refreshProperties(s.grid, s.fluids, s.state);
    }
    void step() {
        PressureStep(s, 0, 1);
        s.clock.workDt = s.clock.dt;
        SaturationUpdate(s);
        s.clock.time += s.clock.workDt;
    }
};

TEST(StepLevel, PutsBackTheSameBits) {
    Row row;
    Simulation& s = row.s;
    s.wells.wells[0].targetFactor = 1.25;
    sizeAmounts(3, s.pressure.exchanged);
    s.pressure.exchanged.water[2] = 0.5;
    const std::vector<double> flux = s.velocity.CellFaceFlux.slots;
    keepStepLevel(s, s.stepLevel);
    const CellState state = s.state;
    const CellAmounts carried = s.pressure.carried;
    const Well well = s.wells.wells[0];
    const RunClock clock = s.clock;
    const double average = s.pressure.AveragePressure;
    s.clock.dt = 4.0;
    row.step();
    s.wells.wells[0].targetFactor = 2.0;
    s.wells.wells[0].WellControl = "bhp";
    s.pressure.fieldStands = false;
    s.pressure.exchanged.water[2] = 0.25;
    ASSERT_NE(s.velocity.CellFaceFlux.slots, flux);
    ASSERT_NE(s.state.Pressure[2], state.Pressure[2]);
    ASSERT_NE(s.pressure.carried.gas[1], carried.gas[1]);
    ASSERT_NE(s.wells.wells[0].Bhp, well.Bhp);
    returnToStepLevel(s.stepLevel, s);
    for (CellArray<double> CellState::*array :
         {&CellState::Pressure,  &CellState::Sw,       &CellState::So,           &CellState::Sg,
          &CellState::Rs,        &CellState::Pb,       &CellState::PoreFraction, &CellState::PoreVolume,
          &CellState::Bo,        &CellState::Bw,       &CellState::Bg,           &CellState::MuO,
          &CellState::MuW,       &CellState::MuG,      &CellState::KroCell,      &CellState::KrwCell,
          &CellState::KrgCell,   &CellState::LambdaO,  &CellState::LambdaW,      &CellState::LambdaG,
          &CellState::PressureW, &CellState::PressureG})
        EXPECT_EQ((s.state.*array).slots, (state.*array).slots);
    for (CellArray<double> CellAmounts::*array : {&CellAmounts::water, &CellAmounts::oil, &CellAmounts::gas})
        EXPECT_EQ((s.pressure.carried.*array).slots, (carried.*array).slots);
    EXPECT_EQ(s.pressure.AveragePressure, average);
    EXPECT_TRUE(s.pressure.fieldStands);
    EXPECT_EQ(s.velocity.CellFaceFlux.slots, flux);
    EXPECT_EQ(s.pressure.exchanged.water[2], 0.5);
    const Well& back = s.wells.wells[0];
    EXPECT_EQ(back.targetFactor, 1.25);
    EXPECT_EQ(back.WellControl, "orat");
    EXPECT_EQ(back.Bhp, well.Bhp);
    EXPECT_EQ(back.WellQg, well.WellQg);
    EXPECT_EQ(back.connections[0].ConnQo, well.connections[0].ConnQo);
    EXPECT_EQ(s.clock.time, clock.time);
    EXPECT_EQ(s.clock.dt, clock.dt);
    EXPECT_EQ(s.clock.workDt, clock.workDt);
    EXPECT_EQ(s.clock.stepsSinceEvent, clock.stepsSinceEvent);
}

TEST(StepLevel, LetsTheSameStepRunAgainToTheSameBits) {
    Row row;
    Simulation& s = row.s;
    keepStepLevel(s, s.stepLevel);
    row.step();
    const CellState first = s.state;
    const double bhp = s.wells.wells[0].Bhp;
    returnToStepLevel(s.stepLevel, s);
    s.clock.dt = 7.0;
    row.step();  // another one between
    ASSERT_NE(s.state.Sg[1], first.Sg[1]);
    returnToStepLevel(s.stepLevel, s);
    row.step();
    EXPECT_EQ(s.state.Pressure.slots, first.Pressure.slots);
    EXPECT_EQ(s.state.Sg.slots, first.Sg.slots);
    EXPECT_EQ(s.state.Rs.slots, first.Rs.slots);
    EXPECT_EQ(s.wells.wells[0].Bhp, bhp);
}

}  // namespace
}  // namespace kvr
