#include "fluid/components/viscosity.hpp"

#include "fluid/components/flash.hpp"
#include "unit/fluid/components/component_samples.hpp"

#include <gtest/gtest.h>

namespace kvr {
namespace {

TEST(VIS_COMPS, GivesTheViscosityOfBothPhasesOfASplit) {
    const ComponentSet set = methaneDecane();
    FlashState state;
    FlashPT(set, {0.5, 0.5}, 1000.0, state);
    EXPECT_NEAR(VIS_COMPS(set, 1000.0, state.zLiquid, state.liquid), 0.208704242, 1e-8);
    EXPECT_NEAR(VIS_COMPS(set, 1000.0, state.zVapour, state.vapour), 0.01345828573, 1e-10);
}

TEST(VIS_COMPS, TakesDiluteComponentsByTheirReducedTemperature) {
    const ComponentSet set = methaneDecane();
    EXPECT_NEAR(diluteViscosity(set, 0), 0.01230064776, 1e-11);   // Tr 1.8066
    EXPECT_NEAR(diluteViscosity(set, 1), 0.006045258119, 1e-12);  // Tr 0.5574
    const ComponentSet gas = onlyComponent(0, Fahrenheit160);
    EXPECT_NEAR(VIS_COMPS(gas, 1000.0, 0.925183964, {1.0}), 0.01347079416, 1e-10);
    // Exactly 1.5 takes the first branch, 0.00034 Tr^0.94/xi: xi is known from the component at another
    // temperature.
    const ComponentSet at = onlyComponent(0, 1.5 * 343.0), cold = onlyComponent(0, 343.0);
    EXPECT_NEAR(diluteViscosity(at, 0) / diluteViscosity(cold, 0), 1.4639, 1e-4);  // 1.5^0.94
}

TEST(VIS_COMPS, IsOneWithoutTemperatureOrComposition) {
    ComponentSet set = methaneDecane();
    EXPECT_EQ(VIS_COMPS(set, 1000.0, 0.9, {0.0, 0.0}), 1.0);
    set.temperature = 0.0;
    EXPECT_EQ(VIS_COMPS(set, 1000.0, 0.9, {0.5, 0.5}), 1.0);
}

TEST(VIS_COMPS, TakesThePolynomialFromAReducedDensityOf018) {
    const ComponentSet gas = onlyComponent(0, Fahrenheit160);
    // rho_r = Vc P/(R Z T): Z for 0.18 at 1000 psia.
    const double Z = 1.59 * 1000.0 / (0.18 * GasConstant * Fahrenheit160);
    const double xi = 0.04703227246549919;  // (343/1.8)^(1/6)/(sqrt(16.043) (667.8/14.696)^(2/3))
    const double dilute = diluteViscosity(gas, 0);
    const double excess = VIS_COMPS(gas, 1000.0, Z * (1.0 - 1e-12), {1.0}) - dilute;
    const double linear = VIS_COMPS(gas, 1000.0, Z * (1.0 + 1e-12), {1.0}) - dilute;
    EXPECT_NEAR(excess / linear, 3.692821e-5 / 3.69e-5, 2e-7);
    EXPECT_NEAR(linear * xi, 3.69e-5, 1e-13);
}

}  // namespace
}  // namespace kvr
