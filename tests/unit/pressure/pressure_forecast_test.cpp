#include "pressure/pressure_forecast.hpp"

#include <gtest/gtest.h>

namespace kvr {
namespace {

CellState pressures(double first, double second) {
    CellState state;
    state.Pressure.assign(2, 0.0);
    state.Pressure[1] = first;
    state.Pressure[2] = second;
    return state;
}

WellRecord wellsIn(CellId cell) {
    WellRecord record;
    for (const char* control : {"rate", "bhp"}) {
        Well well;
        well.WellControl = control;
        well.Bhp = 3000.0;
        WellConnection connection;
        connection.ConnCell = cell;
        well.connections.push_back(connection);
        record.wells.push_back(well);
    }
    return record;
}

/// Ten days over which the cells fall by 10 and rise by 20 psi, behind ten of the same kind.
PressureStage steadyRise() {
    PressureStage stage;
    keepPressureRise(10.0, pressures(2030.0, 1960.0), pressures(2020.0, 1980.0), stage);
    keepPressureRise(10.0, pressures(2020.0, 1980.0), pressures(2010.0, 2000.0), stage);
    return stage;
}

TEST(ForetellPressures, GoesOnAtTheRiseOfTheStepBefore) {
    CellState state = pressures(2010.0, 2000.0);
    WellRecord wells = wellsIn(2);
    foretellPressures(5.0, steadyRise(), state, wells);
    EXPECT_DOUBLE_EQ(state.Pressure[1], 2005.0);
    EXPECT_DOUBLE_EQ(state.Pressure[2], 2010.0);
    EXPECT_DOUBLE_EQ(wells.wells[0].Bhp, 3010.0) << "a rate well goes with its first cell";
    EXPECT_DOUBLE_EQ(wells.wells[1].Bhp, 3000.0);
}

TEST(ForetellPressures, LeavesAFieldWhoseLastStepCouldNotHaveBeenForetold) {
    PressureStage stage;
    CellState state = pressures(2000.0, 2000.0);
    WellRecord wells = wellsIn(1);
    keepPressureRise(10.0, pressures(2100.0, 2100.0), pressures(2000.0, 2000.0), stage);
    foretellPressures(10.0, stage, state, wells);
    EXPECT_EQ(state.Pressure[1], 2000.0) << "one step is no rule";
    keepPressureRise(10.0, pressures(2000.0, 2000.0), pressures(1960.0, 1960.0), stage);
    foretellPressures(10.0, stage, state, wells);
    EXPECT_EQ(state.Pressure[1], 2000.0) << "more than half of the change would have been missed";
    keepPressureRise(10.0, pressures(1960.0, 1960.0), pressures(1930.0, 1930.0), stage);
    foretellPressures(10.0, stage, state, wells);
    EXPECT_DOUBLE_EQ(state.Pressure[1], 1970.0);
}

TEST(ForetellPressures, TakesACellDownToHalfItsPressureAtMost) {
    CellState state = pressures(2010.0, 2000.0);
    WellRecord wells = wellsIn(1);
    foretellPressures(10000.0, steadyRise(), state, wells);
    EXPECT_DOUBLE_EQ(state.Pressure[1], 1005.0);
    EXPECT_DOUBLE_EQ(wells.wells[0].Bhp, 1500.0) << "a bottom-hole pressure too";
}

}  // namespace
}  // namespace kvr
