#include "pressure/mobility_forecast.hpp"

#include "unit/pressure/small_run.hpp"

#include <gtest/gtest.h>

namespace kvr {
namespace {

constexpr double Rate = 100.0;  // a day, of water from cell 1 to the producer in cell 2

/// Two cells of one unit of fluid per day and pore volume in flow; water and dead oil of constant factors.
struct Flood {
    Simulation s;

    Flood() {
        sample::makeRun(2, 1, 1, sample::waterAndOil(0.0), s);
        sample::addWell("inj", "rate", Rate, 9000.0, 1, s);
        sample::addWell("prd", "bhp", 0.0, 100.0, 2, s);
        s.options.method = "IMPES";
        refreshProperties(s.grid, s.fluids, s.state);
        s.velocity.CellFaceFlux(1, 2) = s.velocity.CellFaceFlux(2, 1) = Rate;
        s.wells.wells[0].connections[0].ConnQw = Rate / s.state.Bw[1];
        s.wells.wells[1].connections[0].reservoirRate = -Rate;
    }
};

TEST(ForecastMobilities, TakesThoseOfTheMeanOfTheStepAndLeavesTheStateAsItIs) {
    Flood run;
    const CellState before = run.s.state;
    const double dt = 2.0;
    forecastMobilities(dt, run.s);
    // Cell 1 holds only oil that moves and takes water in for half the step; what it lets out before water
    // moves is oil.
    const double sw = before.Sw[1] + 0.5 * dt * Rate / before.PoreVolume[1];
    const RelPerms kr = relPermsAtCell(run.s.fluids, 1, 1, sw, 0.0);
    const double promised = kr.w / before.MuW[1] + kr.o / before.MuO[1];
    const double total = run.s.state.LambdaW[1] + run.s.state.LambdaO[1] + run.s.state.LambdaG[1];
    EXPECT_NEAR(total, promised, 1e-3 * promised);
    EXPECT_GT(std::abs(total - before.LambdaO[1] - before.LambdaW[1]), 5e-3 * promised) << "something moves";
    EXPECT_NEAR(run.s.pressure.mobilityRatio[1], total / (before.LambdaO[1] + before.LambdaW[1]), 1e-12);
    EXPECT_NEAR(run.s.pressure.mobilityRatio[2], 1.0, 1e-3) << "hardly any water has come so far";
    EXPECT_EQ(run.s.state.Sw[1], before.Sw[1]);
    EXPECT_EQ(run.s.state.Pressure[1], before.Pressure[1]);
    EXPECT_EQ(run.s.wells.wells[0].connections[0].ConnQw, Rate / before.Bw[1]);
}

TEST(ForecastMobilities, TakesWhatGravityExchangesAlong) {
    Flood run;
    run.s.velocity.CellFaceFlux(1, 2) = run.s.velocity.CellFaceFlux(2, 1) = 0.0;
    run.s.wells.wells.clear();
    sizeAmounts(2, run.s.pressure.exchanged);
    const double gain = 0.05 * run.s.state.PoreVolume[2];
    run.s.pressure.exchanged.water[2] = gain / run.s.state.Bw[2];
    run.s.pressure.exchanged.oil[2] = -gain / run.s.state.Bo[2];
    forecastMobilities(4.0, run.s);  // 2 days of 0.05 pore volumes each
    const RelPerms kr = relPermsAtCell(run.s.fluids, 2, 1, 0.3, 0.0);
    EXPECT_NEAR(run.s.state.KrwCell[2], kr.w, 1e-12);
    EXPECT_NEAR(run.s.state.KroCell[2], kr.o, 1e-12);
}

}  // namespace
}  // namespace kvr
