#include "fluid/black_oil.hpp"
#include "fluid/saturation_functions.hpp"
#include "unit/fluid/table_samples.hpp"

#include <gtest/gtest.h>

using namespace kvr;

namespace {

constexpr double H = 1e-3;  // psi, of central differences

}  // namespace

TEST(PropertySlopes, OfOilOffTheBubblePointMoveBothPressuresApart) {
    const FluidTables tables = samples::lightOil();
    const double p = 3700.0, pb = 2800.0;
    const OilSlopes slopes = oilSlopes(tables, p, pb, usableOilProperties(tables, p, pb));
    EXPECT_NEAR(slopes.BoByP, (OilFvf(tables, p + H, pb) - OilFvf(tables, p - H, pb)) / (2 * H), 1e-10);
    EXPECT_NEAR(slopes.BoByPb, (OilFvf(tables, p, pb + H) - OilFvf(tables, p, pb - H)) / (2 * H), 1e-10);
    EXPECT_NEAR(slopes.MuOByP, (OilViscosity(tables, p + H, pb) - OilViscosity(tables, p - H, pb)) / (2 * H),
                1e-10);
    EXPECT_NEAR(slopes.MuOByPb, (OilViscosity(tables, p, pb + H) - OilViscosity(tables, p, pb - H)) / (2 * H),
                1e-10);
    EXPECT_LT(slopes.BoByP, 0.0);
    EXPECT_GT(slopes.BoByPb, 0.0);
}

TEST(PropertySlopes, OfSaturatedOilFollowTheSaturatedCurve) {
    const FluidTables tables = samples::lightOil();
    const OilSlopes slopes = saturatedOilSlopes(tables, 3500.0, usableOilProperties(tables, 3500.0, 3500.0));
    // 1/B is linear between 3014.7 (1.565) and 4014.7 psia (1.695)
    const double b = OilFvf(tables, 3500.0, 3500.0);
    EXPECT_NEAR(slopes.BoByP, -b * b * (1.0 / 1.695 - 1.0 / 1.565) / 1000.0, 1e-9);
    EXPECT_EQ(slopes.BoByPb, 0.0);
}

TEST(PropertySlopes, OfGasAreThoseOfItsReciprocal) {
    const FluidTables tables = samples::lightOil();
    const GasProperties here = gasProperties(tables, 3500.0);
    const double inverseSlope = (1.0 / 0.811 - 1.0 / 1.08) / GasRatioFactor / 1000.0;
    EXPECT_NEAR(gasSlopes(tables, 3500.0, here).Bg, -here.Bg * here.Bg * inverseSlope, 1e-12);
}

TEST(PropertySlopes, OfRelativePermeabilitiesAreThoseOfTheSegments) {
    const FluidTables tables = samples::lightOil();
    const RelPermSlopes slopes = relPermSlopes(tables.regions[0], true, 0.5, 0.2);
    EXPECT_NEAR(slopes.wBySw, 0.15 / 0.2, 1e-12);
    EXPECT_NEAR(slopes.gBySg, 0.18 / 0.2, 1e-12);
    // c = .9; krow .35, krw .125, krog .4, krg .11; slopes -1.5, .75, -2, .9
    const double bySw = 0.9 * ((-1.5 / 0.9 + 0.75) * (0.4 / 0.9 + 0.11) - 0.75);
    const double bySg = 0.9 * ((0.35 / 0.9 + 0.125) * (-2.0 / 0.9 + 0.9) - 0.9);
    const double kro = 0.9 * ((0.35 / 0.9 + 0.125) * (0.4 / 0.9 + 0.11) - 0.125 - 0.11);
    ASSERT_GT(kro, 0.0);
    EXPECT_NEAR(slopes.oBySw, bySw, 1e-12);
    EXPECT_NEAR(slopes.oBySg, bySg, 1e-12);
}

TEST(PropertySlopes, VanishWhereARelativePermeabilityIsClipped) {
    const FluidTables tables = samples::lightOil();
    EXPECT_EQ(relPermSlopes(tables.regions[0], true, 0.1, 0.0).wBySw, 0.0);            // below connate water
    EXPECT_NEAR(relPermSlopes(tables.regions[0], true, 0.2, 0.0).wBySw, 0.25, 1e-12);  // to the right of it
    const RelPermSlopes dry = relPermSlopes(tables.regions[0], true, 0.5, 0.45);
    EXPECT_EQ(dry.oBySw, 0.0);
    EXPECT_EQ(dry.oBySg, 0.0);
}
