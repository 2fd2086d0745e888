#include "streamline/transport/component_line.hpp"

#include "component_row_line.hpp"

#include <cmath>
#include <gtest/gtest.h>

namespace kvr {
namespace {

/// Decane and another name for it: a tracer.
FluidTables marked() {
    FluidTables tables;
    tables.TCRIT = {1111.8, 1111.8};
    tables.PCRIT = {304.0, 304.0};
    tables.ACF = {0.4885, 0.4885};
    tables.MW = {142.285, 142.285};
    tables.VCRIT = {9.66, 9.66};
    tables.BIC.assign(4, 0.0);
    return tables;
}

double widthOfTracer(const char* upwind) {
    RowLine run(marked(), 20, {1.0, 0.0});
    run.control.upwind = upwind;
    run.control.cfl = 0.2;  // upwind fluxes smear the more the shorter a substep is
    run.load({0.0, 1.0});
    run.advance(103.0);
    double arrived = 0.0, width = 0.0;
    for (std::size_t n = 1; n <= 20; ++n) {
        const double z = run.fraction(n, 1);
        EXPECT_GE(z, -1e-12);
        EXPECT_LE(z, 1.0 + 1e-12);
        arrived += Residence * z;
        width += Residence * z * (1.0 - z);
    }
    const ComponentNode& last = run.components.nodes[20];
    const double gone = last.passed.moles[1] / (last.held.moles[0] + last.held.moles[1]);
    EXPECT_NEAR(arrived + gone, 103.0, 1e-6) << upwind;
    return width;
}

TEST(ComponentLine, CarriesATracerAsFarAsTheFlowGoesAndSharperWhereFluxesAreLimited) {
    EXPECT_LT(widthOfTracer("2PU"), 0.7 * widthOfTracer("SPU"));
}

TEST(ComponentLine, KeepsMethaneBehindMethane) {
    RowLine run(methaneDecaneTables(), 10, {1.0, 0.0});
    run.load({1.0, 0.0});
    const Composition before = run.components.nodes[5].held.moles;
    run.advance(40.0);
    for (std::size_t n = 1; n <= 10; ++n) {
        EXPECT_EQ(run.components.nodes[n].held.moles[1], 0.0);
        EXPECT_NEAR(run.components.nodes[n].held.moles[0], before[0], 1e-9 * before[0]);
    }
}

TEST(ComponentLine, HoldsOfEveryComponentWhatHasComeInAndNotGoneOut) {
    for (const char* upwind : {"SPU", "2PU", "3PU", "Leonard"}) {
        RowLine run(threeComponents(), 20, {0.2, 0.3, 0.5});
        run.control.upwind = upwind;
        run.load({0.9, 0.1, 0.0});
        const double before[] = {run.held(0), run.held(1), run.held(2)};
        run.advance(45.0);
        const Composition& in = run.components.nodes[0].passed.moles;
        const Composition& out = run.components.nodes[20].passed.moles;
        for (std::size_t i = 0; i < 3; ++i)
            EXPECT_NEAR(run.held(i) - before[i], in[i] - out[i], 1e-11 * (before[i] + in[i])) << upwind << i;
        EXPECT_GT(run.components.nodes[1].Sg, 0.5) << upwind;
        EXPECT_LT(run.components.nodes[20].Sg, 1e-6) << upwind;
        for (std::size_t n = 1; n <= 20; ++n)
            for (std::size_t i = 0; i < 3; ++i) EXPECT_GE(run.components.nodes[n].held.moles[i], 0.0);
    }
}

TEST(ComponentLine, JoinsNodesThatTheStepCrossesOften) {
    RowLine run(threeComponents(), 6, {0.2, 0.3, 0.5});
    run.lay({1.0, 1.0, 12.0, 9.0, 2.0, 3.0});
    joinShortNodes(40.0, run.line);  // none below 10 days
    ASSERT_EQ(run.line.nodeCount, 2);
    EXPECT_DOUBLE_EQ(run.line.DeltaTof[1], 14.0);
    EXPECT_DOUBLE_EQ(run.line.DeltaTof[2], 14.0);
    EXPECT_TRUE(run.line.regridded);
    run.load({0.9, 0.1, 0.0});
    // The sum of what the joined cells hold.
    EXPECT_NEAR(run.components.nodes[1].held.moles[2] * run.row.state.PoreVolume[1],
                run.row.stage.amounts.moles(1, 3), 1e-9 * run.row.stage.amounts.moles(1, 3));
    run.lay({40.0, 50.0});
    joinShortNodes(40.0, run.line);
    EXPECT_EQ(run.line.nodeCount, 2);
    EXPECT_FALSE(run.line.regridded);
}

TEST(ComponentLine, TakesALineOfOneNode) {
    RowLine run(threeComponents(), 1, {0.2, 0.3, 0.5});
    run.load({0.9, 0.1, 0.0});
    run.advance(5.0);
    EXPECT_GT(run.fraction(1, 0), 0.2);
    EXPECT_TRUE(std::isfinite(run.components.nodes[1].passed.moles[2]));
}

}  // namespace
}  // namespace kvr
