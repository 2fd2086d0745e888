#include "pressure/pressure_matrix.hpp"

#include "model/dual_porosity.hpp"
#include "pressure/accumulation.hpp"
#include "pressure/flow_coefficients.hpp"
#include "pressure/wells/well_rates.hpp"
#include "unit/pressure/dense_twin.hpp"
#include "unit/pressure/small_run.hpp"
#include "unit/pressure/well_samples.hpp"

#include <gtest/gtest.h>

using namespace kvr;

namespace {

/// Two cells at 3000 and 2900 psia, transmissibility 1, oil mobility 0.8, all factors 1, and pore space
/// that stores 0.028 rb/day for a psi over a day.
struct TwoCells {
    TwoCells() : grid(sample::column(2)) {
        connections.Neighbour.assign(2, 6, 0);
        connections.Trans.assign(2, 6, 0.0);
        connections.DepthDiff.assign(2, 6, 0.0);
        connections.Neighbour(1, 2) = 2;
        connections.Neighbour(2, 1) = 1;
        connections.Trans(1, 2) = connections.Trans(2, 1) = 1.0;
        grid.NTG.assign(2, 1.0);
        grid.BulkVolume.assign(2, 14000.0);
        tables = sample::waterAndOil(1e-5);
        allocateCellState(2, 0, state);
        state.Pressure[1] = 3000.0;
        state.Pressure[2] = 2900.0;
        for (CellId c = 1; c <= 2; ++c) {
            state.So[c] = 1.0;
            state.LambdaO[c] = 0.8;
            state.PoreFraction[c] = 0.2;
            state.PoreVolume[c] = 2800.0;
            state.PressureW[c] = state.PressureG[c] = state.Pressure[c];
        }
        old = state;
        measureAmounts(grid, old, amounts);
    }

    void assemble(const WellRecord& wells = {}) {
        buildPattern(grid, connections, wells, matrix);
        accumulateTwoPhase(1, 1.0, grid, tables, old, amounts, state, matrix);
        flowTwoPhase(Upstream::Found, units, grid, connections, state, matrix);
        addWellTerms(units, tables, state, 0.0, wells, matrix);
        fillSystem(units, grid, connections, tables, state, 0.0, wells, matrix);
    }

    GridModel grid;
    ConnectionTable connections;
    FluidTables tables;
    UnitSystem units;
    CellState state, old;
    CellAmounts amounts;
    PressureMatrix matrix;
};

}  // namespace

TEST(PressureEquation, MovesTwoCellsTowardsTheirMean) {
    TwoCells cells;
    cells.assemble();
    const std::vector<double> dP = sample::solveByElimination(cells.matrix.system);
    // 0.028 dP + 0.8 (dP1 - dP2) = -80 and its mirror: dP = 80/(0.028 + 1.6)
    EXPECT_NEAR(dP[0], -49.140049, 1e-6);
    EXPECT_NEAR(dP[1], 49.140049, 1e-6);
}

TEST(PressureMatrix, IsTheSameAgainAfterItsCoefficientsWereReleased) {
    TwoCells cells;
    cells.assemble();
    const LinearSystem before = cells.matrix.system;
    releaseCoefficients(cells.matrix);
    EXPECT_EQ(cells.matrix.MatOff.slots.capacity(), 0U);
    cells.assemble();
    EXPECT_EQ(cells.matrix.system.patternStamp, before.patternStamp);
    EXPECT_EQ(cells.matrix.system.value, before.value);
    EXPECT_EQ(cells.matrix.system.rhs, before.rhs);
}

TEST(PressureMatrix, WithItsMatrixCellsEliminatedHasTheSameSolution) {
    for (const double sigma : {1e-6, 1e-2, 10.0}) {
        Simulation s;
        sample::makeRun(2, 1, 2, sample::waterAndOil(1e-5), s);
        s.grid.dual.isSet = true;
        s.grid.dual.SIGMA.assign(4, sigma);
        shareGeometry(s.grid);
        CALCTRANS_STATICGEOPART(s.console, s.options, s.units, s.grid, s.connections);
        for (CellId c = 1; c <= 4; ++c) s.state.Pressure[c] = 2800.0 + 100.0 * c;
        refreshProperties(s.grid, s.fluids, s.state);
        CellAmounts amounts;
        measureAmounts(s.grid, s.state, amounts);
        PressureMatrix matrix;
        buildPattern(s.grid, s.connections, s.wells, matrix);
        accumulateTwoPhase(1, 1.0, s.grid, s.fluids, s.state, amounts, s.state, matrix);
        flowTwoPhase(Upstream::Found, s.units, s.grid, s.connections, s.state, matrix);
        fillSystem(s.units, s.grid, s.connections, s.fluids, s.state, 0.0, s.wells, matrix);
        const std::vector<double> whole = sample::solveByElimination(matrix.system);
        eliminateMatrixCells(s.grid, s.connections, matrix);
        for (const std::size_t row : {0U, 1U}) EXPECT_EQ(matrix.system.rhs[row], 0.0);
        std::vector<double> solution = sample::solveByElimination(matrix.system);
        for (const std::size_t row : {0U, 1U}) EXPECT_EQ(solution[row], 0.0);
        solveMatrixCells(s.grid, s.connections, matrix, solution);
        ASSERT_GT(std::abs(whole[0]), 1.0);
        for (std::size_t row = 0; row < 4; ++row) EXPECT_NEAR(solution[row], whole[row], 1e-6) << sigma;
    }
}

TEST(PressureMatrix, HasNegativeDiagonalsAndPositiveNeighboursAndIsPassedReversed) {
    TwoCells cells;
    cells.assemble();
    EXPECT_NEAR(cells.matrix.MatDiag[1], -0.828, 1e-12);
    EXPECT_NEAR(cells.matrix.MatOff(1, 2), 0.8, 1e-12);
    EXPECT_NEAR(cells.matrix.MatRhs[1], -80.0, 1e-10);
    EXPECT_NEAR(cells.matrix.MatRhs[2], 80.0, 1e-10);
    const LinearSystem& system = cells.matrix.system;
    EXPECT_EQ(system.column[static_cast<std::size_t>(system.rowStart[1])], 1) << "the diagonal comes first";
    EXPECT_NEAR(system.value[static_cast<std::size_t>(system.rowStart[1])], 0.828, 1e-12);
    EXPECT_EQ(system.rhs[0], cells.matrix.MatRhs[1]);
}

TEST(PressureMatrix, StoresOverBulkTimesNetToGross) {
    TwoCells cells;
    cells.grid.NTG[1] = 0.5;
    cells.assemble();
    EXPECT_NEAR(cells.matrix.MatDiag[1], -0.814, 1e-12);
}

TEST(PressureMatrix, GivesACellWithoutPoresAndConnectionsTheDiagonalOne) {
    TwoCells cells;
    cells.state.PoreFraction[1] = 0.0;
    cells.connections.Trans(1, 2) = cells.connections.Trans(2, 1) = 0.0;
    cells.assemble();
    EXPECT_EQ(cells.matrix.MatDiag[1], -1.0);
    EXPECT_EQ(cells.matrix.MatRhs[1], 0.0);
    EXPECT_EQ(cells.matrix.system.value[0], 1.0);
}

TEST(PressureMatrix, StoresNothingInTiniestPores) {
    TwoCells cells;
    cells.state.PoreFraction[1] = 0.99e-12;
    cells.assemble();
    EXPECT_NEAR(cells.matrix.MatDiag[1], -0.8, 1e-12);
}

TEST(PressureMatrix, KeepsAnInactiveCellOutOfTheEquation) {
    TwoCells cells;
    cells.grid.Active[2] = 0;
    cells.connections.Trans(1, 2) = cells.connections.Trans(2, 1) = 0.0;
    cells.assemble();
    const std::vector<double> dP = sample::solveByElimination(cells.matrix.system);
    EXPECT_EQ(cells.matrix.MatRhs[2], 0.0);
    EXPECT_EQ(dP[1], 0.0);
    EXPECT_EQ(dP[0], 0.0);
}

TEST(PressureMatrix, WeighsAFlowByTheCellsOwnFactorOverTheUpstreamOne) {
    TwoCells cells;
    cells.state.Bo[1] = 1.2;
    cells.state.Bo[2] = 1.5;
    cells.assemble();
    EXPECT_NEAR(cells.matrix.MatOff(1, 2), 0.8, 1e-12);  // cell 1 is upstream
    EXPECT_NEAR(cells.matrix.MatOff(2, 1), 1.0, 1e-12);  // 1.5 * 0.8/1.2
    EXPECT_NEAR(cells.matrix.MatRhs[2], 1.0 * 100.0, 1e-10);
}

TEST(PressureMatrix, TakesTheLowerCellAsUpstreamFromBothSidesAtNoPotentialDifference) {
    TwoCells cells;
    cells.state.Pressure[2] = 3000.0;
    cells.state.PressureW[2] = 3000.0;
    cells.old = cells.state;
    cells.state.LambdaO[2] = 0.3;
    cells.assemble();
    EXPECT_NEAR(cells.matrix.MatOff(1, 2), 0.8, 1e-12);
    EXPECT_NEAR(cells.matrix.MatOff(2, 1), 0.8, 1e-12);
    EXPECT_EQ(cells.matrix.MatRhs[1], 0.0);
}

TEST(PressureMatrix, HoldsTheSidesThatPhasesCameFromAndMeasuresWhatWantsToCross) {
    TwoCells cells;
    cells.state.LambdaO[2] = 0.3;
    cells.assemble();  // from cell 1 to cell 2
    EXPECT_NEAR(cells.matrix.MatOff(2, 1), 0.8, 1e-12);
    const auto held = [&] {
        flowTwoPhase(Upstream::Held, cells.units, cells.grid, cells.connections, cells.state, cells.matrix);
    };
    held();
    EXPECT_EQ(astrayShare(cells.matrix), 0.0);
    cells.state.Pressure[2] = 3000.5;
    held();
    EXPECT_NEAR(cells.matrix.MatOff(2, 1), 0.8, 1e-12);
    EXPECT_NEAR(cells.matrix.MatOff(1, 2), 0.8, 1e-12);
    EXPECT_EQ(astrayShare(cells.matrix), 1.0);
    flowTwoPhase(Upstream::Found, cells.units, cells.grid, cells.connections, cells.state, cells.matrix);
    EXPECT_NEAR(cells.matrix.MatOff(2, 1), 0.3, 1e-12);
}

TEST(PressureMatrix, CarriesTheGasThatUpstreamOilBringsAlong) {
    TwoCells cells;
    cells.tables = samples::lightOil();
    for (CellId c = 1; c <= 2; ++c) cells.state.Bg[c] = 0.005;
    cells.state.Rs[1] = 220.0;
    cells.state.Rs[2] = 200.0;
    buildPattern(cells.grid, cells.connections, {}, cells.matrix);
    flowThreePhase(Upstream::Found, cells.units, cells.grid, cells.connections, cells.state, cells.matrix);
    // into cell 2: Bo + Bg (220 - 200) = 1.1; into cell 1, itself upstream: Bo
    EXPECT_NEAR(cells.matrix.MatOff(2, 1), 0.88, 1e-12);
    EXPECT_NEAR(cells.matrix.MatOff(1, 2), 0.8, 1e-12);
}

TEST(PressureMatrix, TakesTheFlowUnitOfTheDeckSystem) {
    TwoCells cells;
    cells.units = metricUnits();
    buildPattern(cells.grid, cells.connections, {}, cells.matrix);
    flowTwoPhase(Upstream::Found, cells.units, cells.grid, cells.connections, cells.state, cells.matrix);
    EXPECT_NEAR(cells.matrix.MatOff(1, 2), 0.8 * 5.614583, 1e-12);
}

TEST(WellTerms, OfAHeldPressureGoIntoDiagonalAndResidual) {
    TwoCells cells;
    WellRecord wells;
    wells.wells.push_back(sample::well("prd", "bhp", 1));
    wells.wells[0].Bhp = 2500.0;
    cells.assemble(wells);
    EXPECT_EQ(cells.matrix.system.size, 2);
    EXPECT_NEAR(cells.matrix.MatDiag[1], -1.628, 1e-12);
    EXPECT_NEAR(cells.matrix.MatRhs[1], -80.0 - 0.8 * 500.0, 1e-10);
}

TEST(WellTerms, OfARateWellReachTheTargetWithTheCells) {
    TwoCells cells;
    WellRecord wells;
    wells.RateWellCount = 1;
    wells.wells.push_back(sample::well("prd", "orat", 1));
    Well& well = wells.wells[0];
    well.TargetRate = -100.0;
    well.Bhp = 2950.0;
    cells.tables.OilFvf = {1.25, 1.25};
    finishTables(cells.tables);
    cells.state.Bo[1] = cells.state.Bo[2] = 1.25;
    cells.old = cells.state;
    PressureStage stage;
    UpdateWellRates(cells.units, cells.grid, cells.tables, cells.state, wells, stage);
    EXPECT_NEAR(well.WellQo, -32.0, 1e-10);  // 0.8 * 50 / 1.25
    cells.assemble(wells);
    ASSERT_EQ(cells.matrix.system.size, 3);
    const std::vector<double> x = sample::solveByElimination(cells.matrix.system);
    const double rate = 0.8 / 1.25 * (2950.0 + x[2] - 3000.0 - x[0]);
    EXPECT_NEAR(rate, -100.0, 1e-9);
    // what leaves the first cell is the well's reservoir volume and the flow to the second
    const double flow = 0.8 * (2900.0 + x[1] - 3000.0 - x[0]);
    EXPECT_NEAR(0.028 * x[0], flow - 100.0 * 1.25, 1e-9);
}

TEST(WellTerms, LeaveAWellWithoutAnyFlowAtItsPressure) {
    TwoCells cells;
    WellRecord wells;
    wells.RateWellCount = 1;
    wells.wells.push_back(sample::well("prd", "orat", 2));
    wells.wells[0].shut = true;
    wells.wells[0].Bhp = 2950.0;
    cells.assemble(wells);
    const std::vector<double> x = sample::solveByElimination(cells.matrix.system);
    EXPECT_EQ(x[2], 0.0);
    EXPECT_NEAR(x[0], -49.140049, 1e-6);
}

TEST(WellTerms, OfTwoRowsOfOneWellInOneCellShareAColumn) {
    TwoCells cells;
    WellRecord wells;
    wells.RateWellCount = 1;
    wells.wells.push_back(sample::well("prd", "orat", 1));
    Well& well = wells.wells[0];
    well.connections.push_back(well.connections[0]);
    well.TargetRate = -100.0;
    well.Bhp = 2950.0;
    PressureStage stage;
    UpdateWellRates(cells.units, cells.grid, cells.tables, cells.state, wells, stage);
    cells.assemble(wells);
    EXPECT_EQ(cells.matrix.system.column.size(), 7U);
    const std::vector<double> x = sample::solveByElimination(cells.matrix.system);
    EXPECT_NEAR(2.0 * 0.8 * (2950.0 + x[2] - 3000.0 - x[0]), -100.0, 1e-9);
}

TEST(BuildPattern, KeepsItsStampUntilTheRateWellsChange) {
    TwoCells cells;
    WellRecord wells;
    buildPattern(cells.grid, cells.connections, wells, cells.matrix);
    const auto first = cells.matrix.system.patternStamp;
    wells.wells.push_back(sample::well("prd", "bhp", 2));
    buildPattern(cells.grid, cells.connections, wells, cells.matrix);
    EXPECT_EQ(cells.matrix.system.patternStamp, first);
    wells.wells[0].WellControl = "orat";
    buildPattern(cells.grid, cells.connections, wells, cells.matrix);
    EXPECT_NE(cells.matrix.system.patternStamp, first);
    EXPECT_EQ(cells.matrix.system.size, 3);
}

TEST(BuildPattern, LetsDirectionsToOneNeighbourShareAnEntry) {
    TwoCells cells;
    cells.connections.NDIR = 7;
    cells.connections.Neighbour.assign(2, 7, 0);
    cells.connections.Trans.assign(2, 7, 0.0);
    cells.connections.DepthDiff.assign(2, 7, 0.0);
    for (const int d : {2, 7}) {
        cells.connections.Neighbour(1, d) = 2;
        cells.connections.Trans(1, d) = 0.5;
    }
    for (const int d : {1, 7}) {
        cells.connections.Neighbour(2, d) = 1;
        cells.connections.Trans(2, d) = 0.5;
    }
    cells.assemble();
    EXPECT_EQ(cells.matrix.system.column.size(), 4U);
    const std::vector<double> dP = sample::solveByElimination(cells.matrix.system);
    EXPECT_NEAR(dP[0], -49.140049, 1e-6);
}
