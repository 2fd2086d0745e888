#include "run/economic_limits.hpp"

#include "unit/pressure/small_run.hpp"

#include <gtest/gtest.h>

namespace kvr {
namespace {

/// A producer of three connections in a column of three cells; rates are set by hand, positive out.
struct ThreeConnections {
    Simulation s;

    ThreeConnections() {
        sample::makeRun(1, 1, 3, sample::waterAndOil(0.0), s);
        ScheduleStep step;
        ScheduleWell well;
        well.name = "P";
        well.headI = well.headJ = 1;
        well.control = "BHP";
        well.hasControl = true;
        well.prodBhp = 1000.0;
        step.wells.push_back(well);
        ScheduleCompletion row;
        row.wellName = "P";
        row.k1 = 1;
        row.k2 = 3;
        row.diameter = 0.5;
        step.completions.own().push_back(row);
        s.schedule.steps = {step};
        s.schedule.reportEnd = {10.0, 20.0, 30.0};
        s.clock.reportIndex = 2;
        s.clock.time = 14.0;
        s.clock.endTime = 30.0;
    }
    /// Rates of the well and, in parts by connection, of oil, water and gas.
    void flow(std::array<double, 3> oil, std::array<double, 3> water, std::array<double, 3> gas = {}) {
        AssignWells(1, s.console, s.options, s.units, s.schedule, s.grid, s.wells);
        Well& well = s.wells.wells[0];
        well.WellQo = well.WellQw = well.WellQg = 0.0;
        for (std::size_t n = 0; n < 3; ++n) {
            well.connections[n].ConnQo = -oil[n];
            well.connections[n].ConnQw = -water[n];
            well.connections[n].ConnQg = -gas[n];
            well.WellQo -= oil[n];
            well.WellQw -= water[n];
            well.WellQg -= gas[n];
        }
    }
    EconomicLimits& limits() { return s.schedule.steps[0].wells.own(0).limits; }
    [[nodiscard]] const Well& well() const { return s.wells.wells[0]; }
    [[nodiscard]] std::vector<CellId> open() const {
        std::vector<CellId> cells;
        for (const WellConnection& connection : well().connections) cells.push_back(connection.ConnCell);
        return cells;
    }
};

TEST(EconomicLimits, LeaveAWellWithinThem) {
    ThreeConnections run;
    run.limits().leastOil = 50.0;
    run.limits().mostWaterCut = 0.5;
    run.limits().workover = Workover::Well;
    run.flow({20, 20, 20}, {20, 20, 20});  // 60 a day, water cut a half: at the limit is not past it
    applyEconomicLimits(run.s);
    EXPECT_FALSE(run.well().shut);
    EXPECT_EQ(run.open(), (std::vector<CellId>{1, 2, 3}));
}

TEST(EconomicLimits, ShutAWellBelowALeastRateWhateverTheWorkover) {
    ThreeConnections run;
    run.limits().leastOil = 61.0;
    run.flow({20, 20, 20}, {0, 0, 0});
    applyEconomicLimits(run.s);
    EXPECT_TRUE(run.well().shut && run.well().closedByLimit);
    ThreeConnections liquid;
    liquid.limits().leastLiquid = 100.0;
    liquid.flow({20, 20, 20}, {10, 10, 10});
    applyEconomicLimits(liquid.s);
    EXPECT_TRUE(liquid.well().shut);
}

TEST(EconomicLimits, CloseTheConnectionWithTheLargestRatio) {
    // Water cuts 10/40, 30/40, 20/40; of the well 60/120.
    ThreeConnections run;
    run.limits().mostWaterCut = 0.4;
    run.limits().workover = Workover::Connection;
    run.flow({30, 10, 20}, {10, 30, 20});
    applyEconomicLimits(run.s);
    EXPECT_FALSE(run.well().shut);
    EXPECT_EQ(run.open(), (std::vector<CellId>{1, 3}));
}

TEST(EconomicLimits, CloseItWithAllBelow) {
    ThreeConnections run;
    run.limits().mostWaterCut = 0.4;
    run.limits().workover = Workover::ConnectionsBelow;
    run.flow({30, 10, 20}, {10, 30, 20});
    applyEconomicLimits(run.s);
    EXPECT_EQ(run.open(), (std::vector<CellId>{1}));
}

TEST(EconomicLimits, TakeGasWithoutOilForTheWorstRatio) {
    // Gas over oil 2, none but gas, 4: the middle one gives no oil at all.
    ThreeConnections run;
    run.limits().mostGasOilRatio = 3.0;
    run.limits().workover = Workover::Connection;
    run.flow({50, 0, 10}, {0, 0, 0}, {100, 200, 40});
    applyEconomicLimits(run.s);
    EXPECT_EQ(run.open(), (std::vector<CellId>{1, 3}));
}

TEST(EconomicLimits, ShutAWellThatGivesNothingButGas) {
    ThreeConnections run;
    run.limits().mostGasOilRatio = 3.0;
    run.limits().workover = Workover::Well;
    run.flow({0, 0, 0}, {0, 0, 0}, {100, 200, 40});
    applyEconomicLimits(run.s);
    EXPECT_TRUE(run.well().shut);
}

TEST(EconomicLimits, CountRatesWhileTheWellIsOn) {
    // A mean of 60 a day over half of the time is 120 while it is on.
    ThreeConnections run;
    run.limits().leastOil = 100.0;
    run.s.schedule.steps[0].wells.own(0).efficiency = 0.5;
    run.flow({20, 20, 20}, {0, 0, 0});
    applyEconomicLimits(run.s);
    EXPECT_FALSE(run.well().shut);
}

TEST(EconomicLimits, DoNothingWithoutAWorkover) {
    ThreeConnections run;
    run.limits().mostWaterCut = 0.1;
    run.flow({10, 10, 10}, {30, 30, 30});
    applyEconomicLimits(run.s);
    EXPECT_FALSE(run.well().shut);
    EXPECT_EQ(run.open().size(), 3U);
}

TEST(EconomicLimits, EndTheRunWithTheNextReport) {
    ThreeConnections run;
    run.limits().leastOil = 61.0;
    run.limits().endsRun = true;
    run.flow({20, 20, 20}, {0, 0, 0});
    applyEconomicLimits(run.s);
    EXPECT_EQ(run.s.clock.endTime, 20.0);
}

TEST(EconomicLimits, HoldUntilTheDeckSetsTheStatusAgain) {
    ThreeConnections run;
    run.limits().mostWaterCut = 0.4;
    run.limits().workover = Workover::Connection;
    run.flow({30, 10, 20}, {10, 30, 20});
    applyEconomicLimits(run.s);
    const auto rebuilt = [&run] {
        AssignWells(1, run.s.console, run.s.options, run.s.units, run.s.schedule, run.s.grid, run.s.wells);
        return run.open().size();
    };
    EXPECT_EQ(rebuilt(), 2U);
    ScheduleWell& well = run.s.schedule.steps[0].wells.own(0);
    ++well.connectionOpenings;  // WELOPEN of connections
    EXPECT_EQ(rebuilt(), 3U);
    run.limits().leastOil = 1000.0;
    run.flow({30, 10, 20}, {10, 30, 20});
    applyEconomicLimits(run.s);
    EXPECT_TRUE(run.well().shut);
    ++well.connectionOpenings;
    rebuilt();
    EXPECT_TRUE(run.well().shut) << "connections do not open a well";
    ++well.openings;
    rebuilt();
    EXPECT_FALSE(run.well().shut);
}

}  // namespace
}  // namespace kvr
