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

/// Water beyond connate between two times of flight, by 20000 middles.
double listedContent(const AnalyticProfile& profile, double from, double to, double days) {
    constexpr int Middles = 20000;
    double sum = 0.0;
    for (int n = 0; n < Middles; ++n)
        sum += listedSaturation(profile, from + (to - from) * (n + 0.5) / Middles, days) - 0.2;
    return sum * (to - from) / Middles;
}

TEST(AdvanceAnalytic, PassesWhatHasComeToStandBeyondEveryPosition) {
    const FluidTables fluids = samples::plainFlood();
    AnalyticProfile profile;
    buildProfile(fluids, tableOf(fluids), profile);
    SolverLine line = samples::floodedLine(fluids, {10.0, 95.0, 75.0, 30.0, 300.0});
    // The front stands at 2.195 a day: 120.7 days of travel after 55 days, 241.5 after 110, so that it jumps
    // over the whole third node within the step.
    constexpr double Step = 55.0, Time = 110.0, End = 510.0;
    advanceAnalytic(fluids, profile, Step, Time, line);
    EXPECT_DOUBLE_EQ(line.nodes[0].passedW, Step) << "water alone comes in";
    EXPECT_EQ(line.nodes[5].passedW, 0.0) << "ahead of the front";
    EXPECT_DOUBLE_EQ(line.nodes[5].passedO, Step);
    EXPECT_DOUBLE_EQ(line.outletOil, 1.0);
    const double whole = listedContent(profile, 0.0, End, Time);
    for (std::size_t i = 1; i <= 4; ++i) {
        const double come = listedContent(profile, line.Tof[i], End, Time) -
                            listedContent(profile, line.Tof[i], End, Time - Step);
        EXPECT_NEAR(line.nodes[i].passedW, come * Time / whole, 1e-3 * Step) << i;
        EXPECT_NEAR(line.nodes[i].passedW + line.nodes[i].passedO, Step, 1e-12);
    }
    EXPECT_LT(line.nodes[3].passedW, 0.5 * Step) << "the front was there for the last part of the step only";
}

TEST(AdvanceAnalytic, LetsNoMoreThroughThanFlows) {
    // The profile of a flood of 10 days laid on a line at once: all of it would have to pass.
    const FluidTables fluids = samples::plainFlood();
    AnalyticProfile profile;
    buildProfile(fluids, tableOf(fluids), profile);
    SolverLine line = samples::floodedLine(fluids, {1.0, 1.0, 1.0});
    advanceAnalytic(fluids, profile, 0.5, 10.0, line);
    for (std::size_t i = 0; i <= 3; ++i) {
        EXPECT_LE(line.nodes[i].passedW, 0.5) << i;
        EXPECT_GE(line.nodes[i].passedO, 0.0) << i;
        EXPECT_NEAR(line.nodes[i].passedW + line.nodes[i].passedO, 0.5, 1e-12) << i;
    }
}

}  // namespace
}  // namespace kvr
