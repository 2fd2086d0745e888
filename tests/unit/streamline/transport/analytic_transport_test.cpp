#include "streamline/transport/analytic_transport.hpp"

#include "unit/streamline/line_samples.hpp"

#include <gtest/gtest.h>

namespace kvr {
namespace {

AnalyticTable tableOf(const FluidTables& fluids) {
    AnalyticTable table;
    buildAnalyticTable(fluids, 200, 2.0, table);
    return table;
}

TEST(AnalyticTable, FindsTheFrontByTheTangent) {
    const FluidTables fluids = samples::plainFlood();
    const AnalyticTable table = tableOf(fluids);
    EXPECT_EQ(table.front, 132);
    EXPECT_NEAR(table.saturation[132], 0.596, 1e-12);
    EXPECT_NEAR(table.flow[132], 0.86939379, 5e-9);
    EXPECT_EQ(table.saturation[0], 0.2);
    EXPECT_EQ(table.flow[0], 0.0);
    EXPECT_NEAR(table.flow[200], 1.0, 1e-12);
}

TEST(AnalyticProfile, ListsTheRowsAboveTheFrontWithTheirPositions) {
    const FluidTables fluids = samples::plainFlood();
    AnalyticProfile profile;
    buildProfile(fluids, tableOf(fluids), profile);
    const double s[] = {0.596, 0.6, 0.7, 0.8};
    const double tau[] = {2.19543886, 2.16374761, 1.05557777, 0.16393443};
    ASSERT_EQ(profile.saturation.size(), 4U);
    for (std::size_t k = 0; k < 4; ++k) {
        EXPECT_NEAR(profile.saturation[k], s[k], 1e-12);
        EXPECT_NEAR(profile.position[k], tau[k], 1e-8);
    }
}

TEST(AdvanceAnalytic, LaysTheProfileAlongTheLine) {
    const FluidTables fluids = samples::plainFlood();
    AnalyticProfile profile;
    buildProfile(fluids, tableOf(fluids), profile);
    SolverLine line = samples::floodedLine(fluids, {10.0, 95.557777, 114.0, 100.0});
    // After 100 days: 10 days lie before the last listed position, 105.557777 on the row 0.7, 219.557777
    // past the front at 219.543886.
    advanceAnalytic(fluids, profile, 100.0, line);
    EXPECT_NEAR(line.nodes[1].Sw, 0.8, 1e-12);
    EXPECT_NEAR(line.nodes[2].Sw, 0.7, 1e-7);
    EXPECT_EQ(line.nodes[3].Sw, 0.2);
    EXPECT_EQ(line.nodes[4].Sw, 0.2);
    EXPECT_NEAR(line.nodes[2].So, 0.3, 1e-7);
    advanceAnalytic(fluids, profile, 0.0, line);
    EXPECT_EQ(line.nodes[1].Sw, 0.2);
}

}  // namespace
}  // namespace kvr
