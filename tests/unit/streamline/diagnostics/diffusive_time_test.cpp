#include "streamline/diagnostics/diffusive_time.hpp"

#include "unit/streamline/line_samples.hpp"

#include <gtest/gtest.h>

namespace kvr {
namespace {

TEST(DiffusiveTime, DividesByTheDirectionsOfTheGrid) {
    // 100 ft through 144 md at a resistance of 1e-4: t = 100 / sqrt(1 / 1e-4) = 1 and adds 0.5 / D.
    const struct {
        const char* grid;
        int dimensions;
    } rows[] = {{"xyz_3d", 3}, {"xy_2d", 2}, {"xz_2d", 2}, {"x_1d", 1}};
    for (const auto& row : rows) {
        EXPECT_EQ(diffusiveDimensions(row.grid), row.dimensions);
        EXPECT_NEAR(diffusiveStep(100.0, 144.0, 1e-4, row.dimensions), 0.5 / row.dimensions, 1e-12);
    }
}

TEST(DiffusiveTime, IsNothingWhereNothingIsCompressible) {
    EXPECT_EQ(diffusiveStep(100.0, 144.0, 0.0, 2), 0.0);
}

TEST(DiffusiveTime, WeighsCompressibilitiesBySaturation) {
    FluidTables fluids = samples::plainFlood();
    fluids.waterCompressibility = 3e-6;
    fluids.rockCompressibility = 4e-6;
    CellState state;
    allocateCellState(1, 0, state);
    state.Pressure[1] = 3000.0;  // the reference pressure of rock and water
    state.Sw[1] = 0.5;
    state.So[1] = 0.5;
    state.MuW[1] = 0.5;
    state.MuO[1] = 2.0;
    // phi0 ct (So muo + Sw muw) r = 0.2 * (4e-6 + 0.5 * 3e-6) * 1.25 * 1; oil does not change its volume.
    EXPECT_NEAR(diffusiveResistance(fluids, state, 1, 0.2), 0.2 * 5.5e-6 * 1.25, 1e-4 * 0.2 * 5.5e-6 * 1.25);
}

}  // namespace
}  // namespace kvr
