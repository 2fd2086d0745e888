#include "pressure/tracer_transport.hpp"

#include <cmath>
#include <gtest/gtest.h>

namespace kvr {
namespace {

const std::vector<std::string> Names = {"TRA1", "TRA2"};

WellRecord injectorOf(std::vector<InjectedTracer> tracers) {
    WellRecord wells;
    Well well = {};
    well.WellKind = "inj";
    well.injectedTracers = std::move(tracers);
    wells.wells.push_back(well);
    return wells;
}

CellArray<double> water(std::vector<double> volumes) {
    CellArray<double> cells;
    cells.assign(static_cast<CellId>(volumes.size()), 0.0);
    for (std::size_t n = 0; n < volumes.size(); ++n) cells.slots[n + 1] = volumes[n];
    return cells;
}

DirectionArray<double> concentrations(const std::vector<double>& values) {
    DirectionArray<double> tracer;
    tracer.assign(static_cast<CellId>(values.size()), 1, 0.0);
    for (std::size_t n = 0; n < values.size(); ++n) tracer.slots[n + 1] = values[n];
    return tracer;
}

TEST(InjectedConcentration, IsThatOfTheRowWhoseFirstFourLettersAgree) {
    const WellRecord wells = injectorOf({{"TRA2X", 0.5}});
    EXPECT_EQ(injectedConcentration(wells.wells[0], Names, 0), 0.0);
    EXPECT_EQ(injectedConcentration(wells.wells[0], Names, 1), 0.5);
}

TEST(InjectedConcentration, OfAnUnknownNameIsThatOfAllTracers) {
    const WellRecord wells = injectorOf({{"OTHER", 0.25}});
    EXPECT_EQ(injectedConcentration(wells.wells[0], Names, 0), 0.25);
    EXPECT_EQ(injectedConcentration(wells.wells[0], Names, 1), 0.25);
}

TEST(MoveTracers, FillsATankOfEvenFlowExponentially) {
    // 30 go through a cell of 100 that keeps its water.
    const WaterMovement movement{{{1, 2, 30.0}}, {{0, 1, 30.0}}};
    DirectionArray<double> tracer = concentrations({0.0, 0.0});
    moveTracers(movement, injectorOf({{"TRA1", 1.0}}), Names, water({100.0, 100.0}), tracer);
    EXPECT_NEAR(tracer(1, 1), 1.0 - std::exp(-0.3), 1e-12);
}

TEST(MoveTracers, LosesNothingInAChainThatGainsAndLosesWater) {
    // 40 come in, 25 go on, 10 of them leave by the producer in the third cell.
    const WaterMovement movement{{{2, 3, 20.0}, {1, 2, 25.0}}, {{0, 1, 40.0}, {0, 3, -10.0}}};
    DirectionArray<double> tracer = concentrations({0.2, 0.0, 0.0});
    moveTracers(movement, injectorOf({{"TRA1", 1.0}}), Names, water({50.0, 80.0, 60.0}), tracer);
    const double after[] = {65.0, 85.0, 70.0};
    double held = 0.0;
    for (CellId cell = 1; cell <= 3; ++cell) held += after[cell - 1] * tracer(cell, 1);
    const double came = 50.0 * 0.2 + 40.0;
    EXPECT_LT(held, came);
    EXPECT_GT(held, came - 10.0 * tracer(3, 1)) << "what left was never richer than the cell is now";
    EXPECT_GT(tracer(1, 1), tracer(2, 1));
    EXPECT_GT(tracer(2, 1), tracer(3, 1));
    EXPECT_GT(tracer(3, 1), 0.0);
}

TEST(MoveTracers, KeepsAllThatGoesRound) {
    const WaterMovement movement{{{1, 2, 10.0}, {2, 3, 10.0}, {3, 1, 10.0}}, {}};
    DirectionArray<double> tracer = concentrations({1.0, 0.0, 0.5});
    moveTracers(movement, WellRecord{}, Names, water({20.0, 30.0, 40.0}), tracer);
    const double held = 20.0 * tracer(1, 1) + 30.0 * tracer(2, 1) + 40.0 * tracer(3, 1);
    EXPECT_NEAR(held, 40.0, 1e-9);
    EXPECT_LT(tracer(1, 1), 1.0);
    EXPECT_GT(tracer(2, 1), 0.0);
}

TEST(MoveTracers, LeavesCellsWithoutFlowAsTheyAre) {
    DirectionArray<double> tracer = concentrations({0.7, 0.3});
    moveTracers({}, WellRecord{}, Names, water({10.0, 0.0}), tracer);
    EXPECT_EQ(tracer(1, 1), 0.7);
    EXPECT_EQ(tracer(2, 1), 0.3);
}

TEST(MoveTracers, GivesADryCellWhatComes) {
    const WaterMovement movement{{{1, 2, 5.0}}, {}};
    DirectionArray<double> tracer = concentrations({0.6, 0.0});
    moveTracers(movement, WellRecord{}, Names, water({10.0, 0.0}), tracer);
    EXPECT_DOUBLE_EQ(tracer(2, 1), 0.6);
    EXPECT_DOUBLE_EQ(tracer(1, 1), 0.6);
}

}  // namespace
}  // namespace kvr
