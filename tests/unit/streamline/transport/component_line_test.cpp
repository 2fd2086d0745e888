#include "streamline/transport/component_line.hpp"

#include "streamline/transport/line_grid.hpp"
#include "unit/pressure/component_row.hpp"

#include <cmath>
#include <gtest/gtest.h>

namespace kvr {
namespace {

constexpr double Residence = 10.0;  // days in a cell

/// A line through all cells of a row, fed by the first source of the run.
struct RowLine {
    Row row;
    SolverLine line;
    ComponentLine components;
    ComponentField field;
    ExplicitControl control;

    RowLine(const FluidTables& mixture, int cells, const Composition& z) : row(mixture, cells, 1000.0, 0.0) {
        row.fill(z, 1500.0);
        std::vector<double> times(static_cast<std::size_t>(cells), Residence);
        lay(times);
    }
    void lay(const std::vector<double>& times) {
        const auto count = static_cast<int>(times.size());
        sizeSolverLine(count, 1.0, 0, line);
        line.tracedNodeCount = count;
        for (std::size_t n = 1; n <= times.size(); ++n) {
            line.tracedCell[n] = static_cast<CellId>(n);
            line.tracedDeltaTof[n] = times[n - 1];
            line.tracedTof[n] = line.tracedTof[n - 1] + times[n - 1];
        }
        layNodes(NodeControl::Irregular, 1.0, 1.0, line);
    }
    /// What comes in is `stream`, as dense as it is at the pressure.
    void load(const Composition& stream) {
        FlashState flash;
        FlashPT(row.stage.set, stream, 1500.0, flash);
        const PhaseVolumes volumes = phaseVolumes(row.stage.set, 1500.0, flash);
        ComponentSource source;
        source.cell = 1;
        for (std::size_t i = 0; i < stream.size(); ++i)
            source.stream[i] = stream[i] * row.run.units.VolumeFactor / (volumes.liquid + volumes.vapour);
        row.run.wells.wells = {Row::wellAt(1, "inj", "rate")};
        row.run.wells.wells[0].connections[0].reservoirRate = 1.0;
        row.run.components.sources = {source};
        prepareComponentField(row.run.units, row.grid, row.state, row.run.velocity, row.run.wells,
                              row.run.components, field);
        loadComponentLine(row.grid, row.tables, row.state, field, line, components);
    }
    void advance(double step) { advanceComponentLine(row.tables, field, control, step, line, components); }
    [[nodiscard]] double held(std::size_t i) const {
        double sum = 0.0;
        for (std::size_t n = 1; n <= static_cast<std::size_t>(line.nodeCount); ++n)
            sum += line.DeltaTof[n] * components.nodes[n].held.moles[i];
        return sum;
    }
    [[nodiscard]] double fraction(std::size_t n, std::size_t i) const {
        const Composition& moles = components.nodes[n].held.moles;
        double sum = 0.0;
        for (int k = 0; k < row.stage.set.count; ++k) sum += moles[static_cast<std::size_t>(k)];
        return moles[i] / sum;
    }
};

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
