#include "report/net_value.hpp"

#include <gtest/gtest.h>

using namespace kvr;

TEST(NetValue, CountsBarrelsAndThousandsOfCubicFeet) {
    // 178107.617 barrels of gas are 1000 Mscf.
    const PhaseAmounts produced{1000.0, 200.0, 178107.617};
    EXPECT_NEAR(valueOf(fieldUnits(), produced, {50.0, -5.0, 2.0}), 51000.0, 1e-3);
}

TEST(NetValue, IsTheSameForAMetricRun) {
    const double cubicFeet = 5.614583;
    const PhaseAmounts produced{1000.0 * cubicFeet, 200.0 * cubicFeet, 178107.617 * cubicFeet};
    EXPECT_NEAR(valueOf(metricUnits(), produced, {50.0, -5.0, 2.0}), 51000.0, 1e-3);
}
