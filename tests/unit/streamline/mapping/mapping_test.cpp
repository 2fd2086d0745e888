#include "streamline/mapping/mapping.hpp"

#include "unit/fluid/table_samples.hpp"
#include "unit/streamline/flow_samples.hpp"
#include "unit/streamline/line_samples.hpp"

#include <cmath>
#include <gtest/gtest.h>

namespace kvr {
namespace {

/// Three cells at 4000 psia with their sums.
struct Cells {
    RunOptions options;
    FluidTables fluids;
    samples::Flow flow = samples::emptyFlow(3, 1, 1, 10.0, 10.0, 10.0);
    MappingSums sums;

    explicit Cells(FluidTables tables) : fluids(std::move(tables)) {
        for (CellId cell = 1; cell <= 3; ++cell) {
            flow.grid.SATNUM[cell] = 1;
            flow.state.Pressure[cell] = 4000.0;
            flow.state.Pb[cell] = 3000.0;
            flow.state.Rs[cell] = 165.0;
            flow.state.Sw[cell] = 0.25;
            flow.state.So[cell] = 0.7;
            flow.state.Sg[cell] = 0.05;
        }
        sizeMapping(3, 0, true, flow.state, sums);
    }
    void add(CellId cell, double weight, double sw, double so, double sg, double pb,
             bool onlyMissed = false) {
        LineContribution line;
        sizeContribution(1, 0, line);
        line.count = 1;
        line.cell[1] = cell;
        line.weight[1] = weight;
        line.Sw[1] = sw;
        line.So[1] = so;
        line.Sg[1] = sg;
        line.bubblePoint[1] = pb;
        accumulate(line, fluids.hasGas, onlyMissed, sums);
    }
    CellState& map() {
        mapToCells(options, fluids, flow.grid, sums, flow.state);
        return flow.state;
    }
};

TEST(MapToCells, WeighsLinesByTheirResidenceTime) {
    Cells cells(samples::plainFlood());
    cells.add(2, 10.0, 0.6, 0.4, 0.0, 0.0);
    cells.add(2, 30.0, 0.4, 0.6, 0.0, 0.0);
    const CellState& state = cells.map();
    EXPECT_DOUBLE_EQ(state.Sw[2], 0.45);
    EXPECT_DOUBLE_EQ(state.So[2], 0.55);
}

TEST(MapToCells, LeavesACellWithoutALineAsItWas) {
    Cells cells(samples::lightOil());
    const CellState& state = cells.map();
    EXPECT_EQ(state.Sw[1], 0.25);
    EXPECT_EQ(state.So[1], 0.7);
    EXPECT_EQ(state.Sg[1], 0.05);
    EXPECT_EQ(state.Pb[1], 3000.0);
    EXPECT_EQ(state.Rs[1], 165.0);
}

TEST(MapToCells, TurnsASumOfNothingIntoWater) {
    Cells cells(samples::plainFlood());
    cells.add(1, 5.0, 0.0, 0.0, 0.0, 0.0);
    const CellState& state = cells.map();
    EXPECT_EQ(state.Sw[1], 1.0);
    EXPECT_EQ(state.So[1], 0.0);
}

TEST(MapToCells, RepairsWhatIsNotANumberByTheEndPoints) {
    Cells cells(samples::plainFlood());
    cells.add(1, 5.0, 0.6, std::nan(""), 0.0, 0.0);
    const CellState& state = cells.map();
    EXPECT_DOUBLE_EQ(state.So[1], 0.2 / 0.8);  // residual oil 0.2 beside 0.6 of water, scaled
    EXPECT_DOUBLE_EQ(state.Sw[1], 0.75);
}

TEST(MapToCells, ScalesSumsToOne) {
    Cells cells(samples::lightOil());
    cells.add(1, 2.0, 0.5, 0.5, 0.2, 3500.0);
    const CellState& state = cells.map();
    EXPECT_NEAR(state.Sw[1], 0.41666666667, 1e-10);
    EXPECT_NEAR(state.So[1], 0.41666666667, 1e-10);
    EXPECT_NEAR(state.Sg[1], 0.16666666667, 1e-10);
}

TEST(MapToCells, PutsTheBubblePointOfACellWithFreeGasAtItsPressure) {
    Cells cells(samples::lightOil());
    cells.add(1, 2.0, 0.2, 0.7, 0.1, 3500.0);
    cells.add(2, 2.0, 0.2, 0.8, 0.0, 3514.7);
    const CellState& state = cells.map();
    EXPECT_EQ(state.Pb[1], 4000.0);
    EXPECT_EQ(state.Pb[2], 3514.7);
    EXPECT_NEAR(state.Rs[2], 195.918379, 1e-6);
}

TEST(MapToCells, HoldsTheEndPointsWhereTheOptionAsksForIt) {
    Cells cells(samples::plainFlood());
    cells.options.keepIrreducibleSaturation = true;
    cells.add(1, 2.0, 0.95, 0.05, 0.0, 0.0);
    cells.flow.state.Sw[2] = 0.1;
    cells.flow.state.So[2] = 0.9;
    cells.flow.state.Sg[2] = 0.0;
    const CellState& state = cells.map();
    EXPECT_DOUBLE_EQ(state.Sw[1], 0.8);
    EXPECT_DOUBLE_EQ(state.So[1], 0.2);
    EXPECT_DOUBLE_EQ(state.Sw[2], 0.2);  // no line, limits all the same
    EXPECT_DOUBLE_EQ(state.So[2], 0.8);
}

TEST(MapToCells, CutsABubblePointToItsFirstValueWhereTheLimitIsOn) {
    Cells cells(samples::lightOil());
    cells.add(1, 2.0, 0.2, 0.8, 0.0, 3514.7);
    cells.options.bubblePointMaxLimit = true;
    const CellState& state = cells.map();
    EXPECT_EQ(state.Pb[1], 3000.0);
    EXPECT_LT(state.Rs[1], 170.0);
}

TEST(Accumulate, KeepsALineFromMissedCellsOutOfCellsThatLaunchedLinesTouched) {
    Cells cells(samples::plainFlood());
    cells.add(2, 10.0, 0.6, 0.4, 0.0, 0.0);
    cells.sums.visitedSnapshot[2] = 1;
    cells.add(2, 30.0, 0.4, 0.6, 0.0, 0.0, true);
    cells.add(3, 30.0, 0.4, 0.6, 0.0, 0.0, true);
    EXPECT_EQ(cells.sums.weight[2], 10.0);
    EXPECT_EQ(cells.sums.weight[3], 30.0);
}

TEST(ClearMapping, ForgetsTheSumsAndLeavesTheVisitsToTheNextStep) {
    Cells cells(samples::plainFlood());
    cells.add(2, 10.0, 0.6, 0.4, 0.0, 0.0);
    cells.sums.CellVisited[2] = 1;
    clearMapping(cells.sums);
    EXPECT_EQ(cells.sums.weight[2], 0.0);
    EXPECT_EQ(cells.sums.water[2], 0.0);
    EXPECT_EQ(cells.sums.CellVisited[2], 1);
    clearVisited(cells.sums);
    EXPECT_EQ(cells.sums.CellVisited[2], 0);
}

}  // namespace
}  // namespace kvr
