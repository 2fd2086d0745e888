#include "optimization/miscibility.hpp"

#include <gtest/gtest.h>

using namespace kvr;

namespace {

constexpr double Down = -0.25, Up = 25.0;

PressureState pressure(double target, double average, double storage = 1e6) {
    return {target, average, 100.0, 100.0, storage, 10.0};
}

}  // namespace

TEST(InjectionFactor, IsOneWithoutATarget) {
    EXPECT_EQ(injectionFactor(pressure(0.0, 3000.0), Down, Up), 1.0);
}

TEST(InjectionFactor, IsTheTargetOverTheAverageWhereTheFieldTakesItUp) {
    EXPECT_NEAR(injectionFactor(pressure(3300.0, 3000.0), Down, Up), 1.1, 1e-12);
    EXPECT_NEAR(injectionFactor(pressure(2700.0, 3000.0), Down, Up), 0.9, 1e-12);
}

TEST(InjectionFactor, StaysWithinTheLargestChanges) {
    EXPECT_EQ(injectionFactor(pressure(1000.0, 3000.0), Down, Up), 0.75);
    EXPECT_EQ(injectionFactor(pressure(9000.0, 3000.0), Down, 0.5), 1.5);
}

TEST(InjectionFactor, DoesNotPassTheTargetInAStiffField) {
    // 0.1 rb/psi * 300 psi / 10 days = 3 rb/day, where the target over the average asks for 10.
    EXPECT_NEAR(injectionFactor(pressure(3300.0, 3000.0, 0.1), Down, Up), 1.03, 1e-12);
}

TEST(InjectionFactor, MakesUpForAPresentImbalance) {
    PressureState now = pressure(3000.0, 3000.0);
    now.injected = 80.0;
    EXPECT_NEAR(injectionFactor(now, Down, Up), 1.25, 1e-12);
}

TEST(InjectionFactor, LeavesAFieldWithoutInjectionAlone) {
    PressureState now = pressure(3300.0, 3000.0);
    now.injected = 0.0;
    EXPECT_EQ(injectionFactor(now, Down, Up), 1.0);
}
