#include "streamline/mapping/producer_rates.hpp"

#include <gtest/gtest.h>

namespace kvr {
namespace {

WellRecord producerWithTwoConnections() {
    WellRecord wells;
    Well well;
    well.WellKind = "prd";
    for (const CellId cell : {7, 9}) {
        WellConnection connection;
        connection.ConnCell = cell;
        connection.reservoirRate = cell == 7 ? -300.0 : -100.0;
        connection.ConnQo = cell == 7 ? -240.0 : -80.0;
        connection.ConnQw = cell == 7 ? -60.0 : -20.0;
        well.connections.push_back(connection);
    }
    wells.wells.push_back(well);
    return wells;
}

TEST(ProducerRates, AreWhatTheLinesCarriedOutScaledToTheReservoirRate) {
    WellRecord wells = producerWithTwoConnections();
    OutletTable outlets;
    clearOutlets(wells, outlets);
    addLineEnd(wells, {1, 7, 0.25, 0.5, 60.0}, 50.0, outlets);
    addLineEnd(wells, {1, 7, 0.75, 0.1, 20.0}, 50.0, outlets);
    setProducerRates(outlets, wells);
    const Well& well = wells.wells[0];
    EXPECT_DOUBLE_EQ(well.connections[0].ConnQw, -300.0 * 0.5);
    EXPECT_DOUBLE_EQ(well.connections[0].ConnQo, -300.0 * 0.3);
    EXPECT_DOUBLE_EQ(well.connections[0].ConnQg, -300.0 * 40.0);
    EXPECT_DOUBLE_EQ(well.connections[1].ConnQo, -80.0);  // no line reached it
    EXPECT_DOUBLE_EQ(well.WellQo, -300.0 * 0.3 - 80.0);
    EXPECT_DOUBLE_EQ(well.WellQw, -300.0 * 0.5 - 20.0);
}

TEST(ProducerRates, StayThoseOfThePressureStepWhereNoLineEnded) {
    WellRecord wells = producerWithTwoConnections();
    wells.wells[0].WellQo = -320.0;
    OutletTable outlets;
    clearOutlets(wells, outlets);
    addLineEnd(wells, {0, 7, 0.25, 0.5, 0.0}, 50.0, outlets);  // died inside
    addLineEnd(wells, {1, 8, 0.25, 0.5, 0.0}, 50.0, outlets);  // no connection there
    addLineEnd(wells, {5, 7, 0.25, 0.5, 0.0}, 50.0, outlets);  // no such well
    setProducerRates(outlets, wells);
    EXPECT_EQ(wells.wells[0].connections[0].ConnQo, -240.0);
    EXPECT_EQ(wells.wells[0].WellQo, -320.0);
}

TEST(ProducerRates, IgnoreLinesThatEndInAnInjector) {
    WellRecord wells = producerWithTwoConnections();
    wells.wells[0].WellKind = "inj";
    OutletTable outlets;
    clearOutlets(wells, outlets);
    addLineEnd(wells, {1, 7, 0.25, 0.5, 0.0}, 50.0, outlets);
    EXPECT_EQ(outlets[0][0].reservoir, 0.0);
}

}  // namespace
}  // namespace kvr
