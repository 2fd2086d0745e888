#include "streamline/transport/component_fronts.hpp"

#include "component_row_line.hpp"

#include <cmath>
#include <gtest/gtest.h>

namespace kvr {
namespace {

/// Gas into oil of three components along 20 cells.
struct TrackedLine : RowLine {
    explicit TrackedLine(const FluidTables& mixture, const Composition& oil, const Composition& stream)
        : RowLine(mixture, 20, oil) {
        load(stream);
    }
    void find() { prepareFronts(row.grid, row.tables, row.state, control.cfl, field); }
    bool track(double age, double step) {
        field.age = {age - step};
        return trackFronts(row.grid, row.state, field, step, line, components);
    }
};

/// Gas into oil, with fronts that are found once for all tests.
struct GasDrive : TrackedLine {
    GasDrive() : TrackedLine(threeComponents(), {0.2, 0.3, 0.5}, {0.9, 0.1, 0.0}) {
        static const std::vector<ComponentFronts> found = (find(), field.fronts);
        field.fronts = found;
    }
};

TEST(ComponentFronts, KeepsMethaneBehindMethane) {
    TrackedLine run(methaneDecaneTables(), {1.0, 0.0}, {1.0, 0.0});
    run.find();
    EXPECT_TRUE(run.track(80.0, 40.0));
    for (std::size_t n = 1; n <= 20; ++n) EXPECT_NEAR(run.fraction(n, 0), 1.0, 1e-12);
}

TEST(ComponentFronts, HoldsOfEveryComponentWhatHasComeInAndNotGoneOut) {
    GasDrive run;
    const double age = 60.0;  // of 200 days through all of it
    ASSERT_TRUE(run.track(age, age));
    const ComponentFronts& fronts = run.field.fronts[0];
    Composition more{};
    // Pores go by with the flow, which is 1 to 0.99 behind the first front.
    for (std::size_t n = 1; n <= 20; ++n)
        for (std::size_t i = 0; i < 3; ++i)
            more[i] += Residence * (run.components.nodes[n].held.moles[i] - fronts.initial.moles[i]);
    const FrontPosition& last = fronts.positions.back();
    for (std::size_t i = 0; i < 3; ++i) {
        const double kept = age * (fronts.stream.moles[i] - last.passed.moles[i]);
        EXPECT_NEAR(more[i], kept, 0.03 * std::abs(kept) + 1e-9) << i;
    }
}

TEST(ComponentFronts, HaveEveryCompositionAtItsShareOfTheTime) {
    GasDrive run;
    run.track(40.0, 10.0);
    const double near = run.fraction(5, 0);
    run.track(80.0, 10.0);
    // Node 5 of the age of 40 days lies within nodes 9 and 10 of 80.
    EXPECT_NEAR(near, 0.5 * (run.fraction(9, 0) + run.fraction(10, 0)), 0.01);
}

TEST(ComponentFronts, TakeTheNodeBeforeWhereOneIsNotANumberAndTheInletBeforeTheFirst) {
    GasDrive run;
    for (FrontPosition& position : run.field.fronts[0].positions) position.passed.moles[1] = std::nan("");
    EXPECT_FALSE(run.track(40.0, 10.0));
    for (std::size_t i = 0; i < 3; ++i)
        EXPECT_EQ(run.components.nodes[1].held.moles[i], run.field.fronts[0].stream.moles[i]);
}

}  // namespace
}  // namespace kvr
