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
    advanceAnalytic(fluids, profile, 100.0, 100.0, line);
    EXPECT_NEAR(line.nodes[1].Sw, 0.8, 1e-12);
    EXPECT_NEAR(line.nodes[2].Sw, 0.7, 1e-7);
    EXPECT_EQ(line.nodes[3].Sw, 0.2);
    EXPECT_EQ(line.nodes[4].Sw, 0.2);
    EXPECT_NEAR(line.nodes[2].So, 0.3, 1e-7);
    advanceAnalytic(fluids, profile, 0.0, 0.0, line);
    EXPECT_EQ(line.nodes[1].Sw, 0.2);
}

/// The profile written out: saturation at tau days of travel after so many days of flood.
double listedSaturation(const AnalyticProfile& profile, double tau, double days) {
    const double x = tau / days;
    const std::size_t last = profile.position.size() - 1;
    if (x > profile.position[0]) return 0.2;
    if (x <= profile.position[last]) return profile.saturation[last];
    std::size_t k = 1;
    while (profile.position[k] > x) ++k;
    const double share = (x - profile.position[k - 1]) / (profile.position[k] - profile.position[k - 1]);
    return profile.saturation[k - 1] + share * (profile.saturation[k] - profile.saturation[k - 1]);
}

TEST(AdvanceAnalytic, SumsUpWhatPassesEveryPositionInTheStep) {
    const FluidTables fluids = samples::plainFlood();
    AnalyticProfile profile;
    buildProfile(fluids, tableOf(fluids), profile);
    SolverLine line = samples::floodedLine(fluids, {10.0, 95.0, 75.0, 300.0});
    constexpr double Step = 10.0, Time = 110.0;
    advanceAnalytic(fluids, profile, Step, Time, line);
    EXPECT_DOUBLE_EQ(line.nodes[0].passedW, Step) << "water alone comes in";
    EXPECT_EQ(line.nodes[4].passedW, 0.0) << "ahead of the front";
    EXPECT_DOUBLE_EQ(line.nodes[4].passedO, Step);
    // The same integral by 2000 middles; the flow fraction runs smoothly over a tenth of the time, so
    // Simpson's rule on three points is right to a hundredth of a percent.
    constexpr int Middles = 2000;
    for (const std::size_t i : {1U, 2U, 3U}) {
        double water = 0.0;
        for (int n = 0; n < Middles; ++n) {
            const double days = Time - Step + Step * (n + 0.5) / Middles;
            water += Step / Middles * samples::plainFraction(listedSaturation(profile, line.Tof[i], days));
        }
        EXPECT_NEAR(line.nodes[i].passedW, water, 1e-4 * Step) << i;
        EXPECT_NEAR(line.nodes[i].passedW + line.nodes[i].passedO, Step, 1e-12);
    }
    EXPECT_LT(line.nodes[3].passedW, 0.95 * Step) << "two phases flow there";
}

}  // namespace
}  // namespace kvr
