#include "pressure/velocity.hpp"

#include "unit/pressure/small_run.hpp"

#include <gtest/gtest.h>

using namespace kvr;

namespace {

/// Two cells side by side, transmissibility 1, oil mobility 0.8, other phases at rest.
void pair(double left, double right, Simulation& s) {
    sample::makeRun(2, 1, 1, sample::waterAndOil(1e-5), s);
    refreshProperties(s.grid, s.fluids, s.state);
    for (CellId c = 1; c <= 2; ++c) {
        const double p = c == 1 ? left : right;
        s.state.Pressure[c] = s.state.PressureW[c] = s.state.PressureG[c] = p;
        s.state.LambdaO[c] = 0.8;
        s.state.LambdaW[c] = s.state.LambdaG[c] = 0.0;
    }
    s.connections.Trans(1, 2) = s.connections.Trans(2, 1) = 1.0;
}

void build(Simulation& s) {
    BuildVelocityFromPressure(s.options, s.units, s.grid, s.connections, s.state, {}, s.velocity);
}

}  // namespace

TEST(FaceFlux, IsPositiveTowardsIncreasingIndexOnBothSidesOfAFace) {
    Simulation s;
    pair(3000.0, 2900.0, s);
    build(s);
    EXPECT_NEAR(s.velocity.CellFaceFlux(1, 2), 80.0, 1e-10);
    EXPECT_NEAR(s.velocity.CellFaceFlux(2, 1), 80.0, 1e-10);
    pair(2900.0, 3000.0, s);
    build(s);
    EXPECT_NEAR(s.velocity.CellFaceFlux(1, 2), -80.0, 1e-10);
    EXPECT_NEAR(s.velocity.CellFaceFlux(2, 1), -80.0, 1e-10);
    const PhaseFlux phases = phaseFluxThroughFace(s.units.FlowUnit, s.connections, s.state, 1, 2);
    EXPECT_NEAR(phases.oil, -80.0, 1e-10);
    EXPECT_EQ(phases.water, 0.0);
}

TEST(FaceFlux, IsSharedAmongThePhasesSoThatItsTotalStands) {
    Simulation s;
    pair(3000.0, 2900.0, s);
    s.state.LambdaW[1] = s.state.LambdaW[2] = 0.2;
    // By the potentials 80 and 20; half of that is to go through, by mobilities of 4 to 1.
    const PhaseFlux high = phaseSharesThroughFace(s.units.FlowUnit, s.connections, s.state, 1, 2, 50.0);
    EXPECT_NEAR(high.oil, 40.0, 1e-10);
    EXPECT_NEAR(high.water, 10.0, 1e-10);
    EXPECT_EQ(high.gas, 0.0);
    s.state.LambdaW[1] = 0.0;
    s.state.LambdaW[2] = 0.8;
    // Against the potentials: all of it comes from the other side, by its mobilities.
    const PhaseFlux back = phaseSharesThroughFace(s.units.FlowUnit, s.connections, s.state, 1, 2, -20.0);
    EXPECT_NEAR(back.oil, -10.0, 1e-10);
    EXPECT_NEAR(back.water, -10.0, 1e-10);
}

TEST(FaceFlux, LetsNoPhaseComeOutOfACellThatHasNoneOfIt) {
    Simulation s;
    pair(3000.0, 2900.0, s);
    s.state.LambdaO[1] = 0.8;
    s.state.LambdaO[2] = 0.0;
    s.state.LambdaW[1] = 0.0;
    s.state.LambdaW[2] = 0.8;
    for (const double total : {-500.0, -20.0, 0.0, 20.0, 500.0}) {
        const PhaseFlux flux = phaseSharesThroughFace(s.units.FlowUnit, s.connections, s.state, 1, 2, total);
        EXPECT_NEAR(flux.oil + flux.water, total, 1e-10);
        EXPECT_GE(flux.oil, -1e-10) << total;
        EXPECT_LE(flux.water, 1e-10) << total;
    }
}

TEST(FaceFlux, ExchangesHeavyForLightWithoutATotal) {
    Simulation s;
    pair(3000.0, 3000.0, s);
    s.state.LambdaO[1] = 0.4;
    s.state.LambdaO[2] = 0.2;
    s.state.LambdaW[1] = 0.5;
    s.state.LambdaW[2] = 0.6;
    s.connections.DepthDiff(1, 2) = 144.0;  // a foot of density is a psi
    s.connections.DepthDiff(2, 1) = -144.0;
    for (CellId c = 1; c <= 2; ++c) {
        s.state.RhoO[c] = 50.0;
        s.state.RhoW[c] = 60.0;
    }
    const PhaseFlux low = phaseSharesThroughFace(s.units.FlowUnit, s.connections, s.state, 1, 2, 0.0);
    const double T = s.connections.Trans(1, 2) * s.units.FlowUnit;
    // The neighbour is deeper: water goes down there by the 0.5 of this cell, oil comes up by the 0.2 of that
    // one, with T lo lw / (lo + lw) times 10 psi.
    EXPECT_NEAR(low.water, T * 0.2 * 0.5 / 0.7 * 10.0, 1e-9);
    EXPECT_NEAR(low.oil, -low.water, 1e-9);
}

TEST(FaceFlux, TakesTheDensityOfAPhaseFromTheCellThatHasIt) {
    // Liquid alone above vapour alone; each cell has one density only.
    Simulation s;
    pair(3000.0, 3000.0, s);
    for (CellArray<double>* mobility : {&s.state.LambdaO, &s.state.LambdaW, &s.state.LambdaG})
        mobility->assign(2, 0.0);
    s.state.LambdaO[1] = 0.4;
    s.state.LambdaG[2] = 0.5;
    s.state.RhoO[1] = s.state.RhoG[1] = 40.0;
    s.state.RhoO[2] = s.state.RhoG[2] = 10.0;
    s.state.lacking.assign(2, 0);
    s.state.lacking[1] = GasSide;
    s.state.lacking[2] = OilSide;
    s.connections.DepthDiff(1, 2) = 144.0;  // a foot of density is a psi
    s.connections.DepthDiff(2, 1) = -144.0;
    const PhaseFlux flux = phaseSharesThroughFace(s.units.FlowUnit, s.connections, s.state, 1, 2, 0.0);
    const double T = s.connections.Trans(1, 2) * s.units.FlowUnit;
    EXPECT_NEAR(flux.oil, T * 0.4 * 0.5 / 0.9 * 30.0, 1e-9);
    EXPECT_NEAR(flux.gas, -flux.oil, 1e-9);
}

TEST(FaceFlux, IsZeroOnBoundaryFaces) {
    Simulation s;
    pair(3000.0, 2900.0, s);
    build(s);
    for (const int d : {1, 3, 4, 5, 6}) EXPECT_EQ(s.velocity.CellFaceFlux(1, d), 0.0);
}

TEST(FaceFlux, IsZeroWithoutTransmissibility) {
    Simulation s;
    pair(3000.0, 2900.0, s);
    s.connections.Trans(1, 2) = 0.0;
    build(s);
    EXPECT_EQ(s.velocity.CellFaceFlux(1, 2), 0.0);
}

TEST(FaceFlux, TakesTheCellsOwnSideWhereTheTwoDiffer) {
    Simulation s;
    pair(3000.0, 2900.0, s);
    s.connections.Trans(1, 2) = 0.5;
    build(s);
    EXPECT_NEAR(s.velocity.CellFaceFlux(1, 2), 40.0, 1e-10);
    EXPECT_NEAR(s.velocity.CellFaceFlux(2, 1), 80.0, 1e-10);
}

TEST(FaceFlux, IsZeroInAHydrostaticColumn) {
    Simulation s;
    sample::makeRun(1, 1, 4, sample::waterAndOil(1e-5), s);
    sample::hydrostaticColumn(3000.0, s);
    refreshProperties(s.grid, s.fluids, s.state);
    build(s);
    for (CellId c = 1; c <= 4; ++c)
        EXPECT_NEAR(phaseFluxThroughFace(s.units.FlowUnit, s.connections, s.state, c, 6).oil, 0.0, 1e-10);
}

TEST(FaceVelocity, OfFiveHundredBarrelsThroughFiveHundredSquareFeet) {
    Simulation s;
    pair(3000.0, 2375.0, s);
    s.options.useNewtran = true;
    s.connections.ConnArea(1, 2) = 500.0;
    build(s);
    EXPECT_NEAR(s.velocity.CellFaceFlux(1, 2), 500.0, 1e-9);
    EXPECT_NEAR(s.velocity.CellFaceVelocity(1, 2), 5.614583, 1e-10);
    EXPECT_NEAR(fluxGradient(s.velocity, 1, 1), 500.0, 1e-9);
    EXPECT_NEAR(velocityGradient(s.velocity, 1, 1, s.grid.DX[1]), 5.614583 / 100.0, 1e-12);
}

TEST(FaceVelocity, OfABoxGridLeavesNetToGrossToTheTracing) {
    Simulation s;
    pair(3000.0, 2375.0, s);
    s.grid.NTG[1] = s.grid.NTG[2] = 0.25;
    s.connections.ConnArea(1, 2) = 500.0;  // 100 * 20 * 0.25
    build(s);
    EXPECT_NEAR(s.velocity.CellFaceVelocity(1, 2), 5.614583 * 500.0 / 2000.0, 1e-10);
}

TEST(FaceVelocity, IsLeftOutWhereTheFieldHasNoRoomForIt) {
    Simulation s;
    pair(3000.0, 2375.0, s);
    s.velocity = {};
    AllocateVelocity(s.console, s.grid.NCELLS, FaceCount, false, s.velocity);
    build(s);
    EXPECT_NEAR(s.velocity.CellFaceFlux(1, 2), 500.0, 1e-9);
    EXPECT_TRUE(s.velocity.CellFaceVelocity.slots.empty());
}

TEST(FaceVelocity, IsNeededByTheBoxTracingAndTheOrthogonalProjection) {
    RunOptions options;
    EXPECT_FALSE(needsFaceVelocity(options));
    options.orthogonalProjection = true;
    EXPECT_TRUE(needsFaceVelocity(options));
    options.orthogonalProjection = false;
    options.cornerPointTracing = false;
    EXPECT_TRUE(needsFaceVelocity(options));
}

TEST(WellVelocity, IsTheReservoirRateAtTheConvergedPressures) {
    Simulation s;
    pair(3000.0, 2900.0, s);
    sample::addWell("prd", "bhp", 0.0, 2500.0, 1, s);
    sample::addWell("inj", "rate", 10.0, 1e5, 2, s);
    s.wells.wells[0].connections[0].ConnWI = 2.0;
    s.wells.wells[0].Bhp = 2500.0;
    s.wells.wells[1].Bhp = 2800.0;  // below the cell: nothing goes in
    UpdateWellVelocity(s.units, s.state, s.wells);
    EXPECT_NEAR(s.wells.wells[0].connections[0].reservoirRate, -2.0 * 0.8 * 500.0, 1e-10);
    EXPECT_NEAR(s.wells.wells[0].reservoirRate, -800.0, 1e-10);
    EXPECT_EQ(s.wells.wells[1].reservoirRate, 0.0);
}
