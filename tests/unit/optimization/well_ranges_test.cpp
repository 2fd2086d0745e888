#include "optimization/well_ranges.hpp"

#include <gtest/gtest.h>

using namespace kvr;

namespace {

/// A producer under a liquid rate whose inflow is not looked at: its connection lets nothing through.
Well producer(double rate) {
    Well well;
    well.WellName = std::string{"PRD1"};
    well.WellKind = "prd";
    well.WellControl = well.deckControl = well.givenControl = "lrat";
    well.TargetRate = well.targetLiquid = -rate;
    well.WellQo = -0.4 * rate;
    well.WellQw = -0.6 * rate;
    well.reservoirRate = -1.1 * rate;
    well.connections.resize(1);
    well.connections[0].ConnCell = 1;
    return well;
}

struct Ranges {
    Ranges() {
        allocateCellState(1, 0, state);
        state.Pressure[1] = 3000.0;
    }
    [[nodiscard]] WellRange of(const Well& well, double deckRate, double percent = 0.0) const {
        return rangeOf({{}, percent}, deckRate, fieldUnits(), tables, state, 3000.0, well);
    }
    CellState state;
    FluidTables tables;
};

}  // namespace

TEST(WellRange, IsThatOfTheLargestChangesInOneStep) {
    const WellRange range = Ranges().of(producer(1000.0), 1000.0);
    EXPECT_DOUBLE_EQ(range.least, 750.0);
    EXPECT_EQ(range.leastWhy, "WMIN");
    EXPECT_DOUBLE_EQ(range.most, 26000.0);
}

TEST(WellRange, NeverGoesBelowItsShareOfTheDecksRate) {
    const WellRange range = Ranges().of(producer(600.0), 1000.0, 50.0);
    EXPECT_DOUBLE_EQ(range.least, 500.0);
    EXPECT_EQ(range.leastWhy, "QWMIN");
    EXPECT_DOUBLE_EQ(Ranges().of(producer(500.0), 1000.0, 50.0).least, 500.0);
}

TEST(WellRange, EndsWhereAnotherRateReachesItsLimit) {
    Well well = producer(1000.0);
    well.holdsLimits = true;
    well.targetOil = -440.0;
    const WellRange range = Ranges().of(well, 1000.0);
    EXPECT_DOUBLE_EQ(range.most, 1100.0);
    EXPECT_EQ(range.mostWhy, "ORAT LIMIT");
}

TEST(MayChange, OnlyAnOpenWellUnderARate) {
    Well well = producer(1000.0);
    EXPECT_TRUE(mayChange(well));
    well.shut = true;
    EXPECT_FALSE(mayChange(well));
    well.shut = false;
    well.givenControl = well.deckControl = well.WellControl = "bhp";
    EXPECT_FALSE(mayChange(well));
    EXPECT_FALSE(mayChange(producer(0.0)));
}

TEST(SetOwnRate, KeepsSignAndThePressureLimitThatHolds) {
    Well well = producer(1000.0);
    well.WellControl = "bhp";
    setOwnRate(800.0, well);
    EXPECT_EQ(well.TargetRate, -800.0);
    EXPECT_EQ(well.targetLiquid, -800.0);
    EXPECT_EQ(well.WellControl, "bhp");
    EXPECT_EQ(ownRate(well), 800.0);
}

TEST(SetOwnRate, GoesBackFromALimitToTheSchedulesControl) {
    Well well = producer(1000.0);
    well.deckControl = well.WellControl = "wlim";
    well.TargetRate = -500.0;
    setOwnRate(800.0, well);
    EXPECT_EQ(well.deckControl, "lrat");
    EXPECT_EQ(well.TargetRate, -800.0);
}

TEST(SetOwnRate, KnowsWhatAnInjectorInjects) {
    Well well;
    well.WellKind = "inj";
    well.InjectFluid = "wat";
    well.WellControl = well.deckControl = well.givenControl = "rate";
    well.TargetRate = well.targetWater = 300.0;
    well.connections.resize(1);
    EXPECT_TRUE(mayChange(well));
    setOwnRate(200.0, well);
    EXPECT_EQ(well.TargetRate, 200.0);
    EXPECT_EQ(well.targetWater, 200.0);
}
