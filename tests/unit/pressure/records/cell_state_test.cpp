#include "pressure/records/cell_state.hpp"

#include "unit/pressure/small_run.hpp"

#include <gtest/gtest.h>

using namespace kvr;

TEST(KeptLevel, GivesTheWholeStateBackOnceItsPropertiesAreMadeAnew) {
    Simulation s;
    sample::makeRun(2, 1, 1, sample::waterAndOil(1e-5), s);
    refreshProperties(s.grid, s.fluids, s.state);
    const CellState start = s.state;
    CellState level;
    keepLevel(s.fluids.hasGas, s.state, level);
    for (const CellId cell : {1, 2}) {
        s.state.Pressure[cell] += 200.0 * cell;
        s.state.Sw[cell] = 0.6;
        s.state.So[cell] = 0.4;
    }
    refreshProperties(s.grid, s.fluids, s.state);
    EXPECT_NE(s.state.LambdaO.slots, start.LambdaO.slots);
    EXPECT_NE(s.state.PoreVolume.slots, start.PoreVolume.slots);
    returnToLevel(level, s.state);
    refreshProperties(s.grid, s.fluids, s.state);
    for (const auto array :
         {&CellState::Pressure, &CellState::Sw, &CellState::So, &CellState::PoreVolume, &CellState::Bo,
          &CellState::Bw, &CellState::MuO, &CellState::RhoO, &CellState::RhoW, &CellState::KroCell,
          &CellState::KrwCell, &CellState::LambdaO, &CellState::LambdaW, &CellState::PressureW})
        EXPECT_EQ((s.state.*array).slots, (start.*array).slots);
}

TEST(KeptLevel, GivesTheSolidStoreBack) {
    CellState state, level;
    allocateCellState(2, 0, state);
    state.SolidGas.assign(2, 3.0);
    keepLevel(true, state, level);
    state.SolidGas[2] = 8.0;
    returnToLevel(level, state);
    EXPECT_EQ(state.SolidGas[2], 3.0);
}

TEST(KeptLevel, HoldsNothingThatFollowsFromTheRest) {
    CellState state, level;
    allocateCellState(5, 1, state);
    keepLevel(true, state, level);
    EXPECT_TRUE(level.LambdaO.slots.empty());
    EXPECT_TRUE(level.RhoW.slots.empty());
    EXPECT_EQ(level.PressureG.count(), 5);
    EXPECT_EQ(level.tracer.slots.size(), 6U);
}
