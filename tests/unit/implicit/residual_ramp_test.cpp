#include "implicit/residual_ramp.hpp"

#include "fluid/table_checks.hpp"
#include "implicit/fully_implicit.hpp"
#include "unit/implicit/implicit_bench.hpp"

#include <cmath>
#include <gtest/gtest.h>

using namespace kvr;

namespace {

/// At connate water kro is krog: 0.08 where the water table's residual oil of 0.2 is reached, at Sg = 0.6.
FluidTables oilThatGasDrivesFurther() {
    FluidTables tables = samples::lightOil();
    tables.regions[0].SgAxis = {0.0, 0.1, 0.3, 0.8};
    finishTables(tables);
    return tables;
}

void makeSaturations(double sw, double sg, CellId c, Simulation& s) {
    s.state.Sw[c] = sw;
    s.state.Sg[c] = sg;
    s.state.So[c] = 1.0 - sw - sg;
    s.state.Pb[c] = s.state.Pressure[c];
    s.state.Rs[c] = SolutionRs(s.fluids, s.state.Pressure[c]);
}

}  // namespace

TEST(RampShare, RunsFromTheResidualOilUpOverTheWidth) {
    SaturationTable table;
    table.ResidualSo = 0.2;
    EXPECT_EQ(rampShare(table, 0.2, 0.55), 1.0);
    EXPECT_NEAR(rampShare(table, 0.2, 0.6 - 0.25 * RampWidth), 0.25, 1e-9);
    EXPECT_EQ(rampShare(table, 0.25, 0.6), 0.0);
}

TEST(RampShare, LeavesARuleWithoutAJumpAlone) {
    SaturationTable table;
    table.ResidualSo = 0.2;
    table.oilRule = OilRule::Weighted;
    EXPECT_EQ(rampShare(table, 0.25, 0.6), 1.0);
}

TEST(RampOil, LowersTheMobilityOfOilOnTheRampAndNoOther) {
    Simulation s;
    sample::makeRun(3, 1, 1, oilThatGasDrivesFurther(), s);
    makeSaturations(0.2, 0.5, 1, s);
    makeSaturations(0.2, 0.6 - 0.5 * RampWidth, 2, s);
    makeSaturations(0.2, 0.61, 3, s);
    refreshProperties(s.grid, s.fluids, s.state);
    const double viscosity = s.state.MuO[2];
    rampOil(s.grid, s.fluids, s.state);
    EXPECT_NEAR(s.state.KroCell[1], 0.12, 1e-12);
    EXPECT_NEAR(s.state.KroCell[2], 0.5 * (0.08 + 0.4 * 0.5 * RampWidth), 1e-9);
    EXPECT_NEAR(s.state.LambdaO[2], s.state.KroCell[2] / viscosity, 1e-12);
    EXPECT_EQ(s.state.KroCell[3], 0.0);
}

TEST(RampedSlopes, AreThoseOfTheRampedValues) {
    const FluidTables tables = oilThatGasDrivesFurther();
    const auto kro = [&](double sw, double sg) {
        return Kro3Fn(tables, sw, sg, 1) * rampShare(tables.regions[0], sw, sg);
    };
    constexpr double step = 1e-7;
    for (const double above : {0.2, 0.7, 3.0}) {
        const double sw = 0.25, sg = 0.55 - above * RampWidth;
        const RelPermSlopes slopes = rampedSlopes(relPermSlopes(tables.regions[0], true, sw, sg),
                                                  rampShare(tables.regions[0], sw, sg), kro(sw, sg));
        EXPECT_NEAR(slopes.oBySw, (kro(sw + step, sg) - kro(sw - step, sg)) / (2.0 * step), 1e-4) << above;
        EXPECT_NEAR(slopes.oBySg, (kro(sw, sg + step) - kro(sw, sg - step)) / (2.0 * step), 1e-4) << above;
    }
}

TEST(ShareOntoRamp, EndsAMoveThatWouldJumpOverIt) {
    Simulation s;
    sample::makeRun(1, 1, 1, oilThatGasDrivesFurther(), s);
    const auto share = [&](double from, double to) {
        return shareOntoRamp(s.grid, s.fluids, 1, 0.2, 0.8 - from, 0.2, 0.8 - to);
    };
    EXPECT_NEAR(share(0.25, 0.15), (0.05 - 0.9 * RampWidth) / 0.1, 1e-9) << "nine tenths of its height";
    EXPECT_NEAR(share(0.15, 0.25), (0.05 + 0.1 * RampWidth) / 0.1, 1e-9) << "one tenth";
    EXPECT_EQ(share(0.25, 0.21), 1.0);
    EXPECT_EQ(share(0.25, 0.2 + 0.5 * RampWidth), 1.0);
    EXPECT_EQ(share(0.2 + 0.5 * RampWidth, 0.1), 1.0);
    Simulation smooth;
    sample::makeRun(1, 1, 1, samples::lightOil(), smooth);
    EXPECT_EQ(shareOntoRamp(smooth.grid, smooth.fluids, 1, 0.2, 0.55, 0.2, 0.65), 1.0)
        << "nothing jumps there";
}

TEST(ResidualRamp, LetsACellDrainToItsResidualOilInOneStep) {
    // Oil would leave the upper cell at once above So = 0.2 and stay for ever below it.
    Simulation s;
    sample::makeRun(1, 1, 2, oilThatGasDrivesFurther(), s);
    s.options.SaturationTolerance = 1e-4;
    s.clock.dt = 200.0;
    makeSaturations(0.2, 0.55, 1, s);
    makeSaturations(0.2, 0.3, 2, s);
    EXPECT_TRUE(tryFullyImplicitStep(s, 0));
    EXPECT_GT(s.state.So[1], 0.2);
    EXPECT_LT(s.state.So[1], 0.2 + RampWidth);
}
