#include "pressure/wells/aquifers.hpp"

#include "fluid/table_checks.hpp"
#include "unit/fluid/table_samples.hpp"
#include "unit/quiet_console.hpp"

#include <cmath>
#include <gtest/gtest.h>

namespace kvr {
namespace {

/// 1e8 of water that gives 1000 per psi, and 50 a day and psi.
Aquifer tank() {
    Aquifer aquifer;
    aquifer.given.volume = 1e8;
    aquifer.given.compressibility = 1e-5;
    aquifer.given.productivity = 50.0;
    aquifer.initialPressure = 4000.0;
    return aquifer;
}

TEST(FetkovichAquifer, GivesTheMeanOfADecliningRateOverAStep) {
    Aquifer aquifer = tank();
    aquifer.gave = 5000.0;
    const AquiferTerms terms = fetkovichTerms(aquifer, 10.0);
    EXPECT_DOUBLE_EQ(terms.pressure, 3995.0);
    EXPECT_NEAR(terms.flow, 50.0 * 0.7869386805747332, 1e-12);  // (1 - exp(-1/2)) / (1/2)
    EXPECT_DOUBLE_EQ(fetkovichTerms(aquifer, 1e-9).flow, 50.0);
}

TEST(FetkovichAquifer, GivesAsMuchInManyStepsAsInOneAgainstAHeldPressure) {
    const auto given = [](int steps) {
        Aquifer aquifer = tank();
        const double dt = 30.0 / steps;
        for (int n = 0; n < steps; ++n) {
            const AquiferTerms terms = fetkovichTerms(aquifer, dt);
            aquifer.gave += dt * terms.flow * (terms.pressure - 3900.0);
        }
        return aquifer.gave;
    };
    EXPECT_NEAR(given(1), 1000.0 * 100.0 * (1.0 - std::exp(-1.5)), 1e-6);
    EXPECT_NEAR(given(30), given(1), 1e-6);
}

TEST(CarterTracyAquifer, IsATankWhereItsPressureRisesWithTime) {
    Aquifer aquifer;
    aquifer.given.law = AquiferLaw::CarterTracy;
    aquifer.initialPressure = 4000.0;
    aquifer.timeUnit = 20.0;
    aquifer.influx = 1000.0;
    aquifer.influence = {{0.0, 1.0, 100.0}, {0.0, 1.0, 100.0}};
    aquifer.time = 40.0;
    aquifer.gave = 5000.0;
    const AquiferTerms terms = carterTracyTerms(aquifer, 10.0);
    EXPECT_DOUBLE_EQ(terms.pressure, 3995.0);  // all that is left after the step's own W / 1000
    EXPECT_DOUBLE_EQ(terms.flow, 100.0);       // 1000 per psi in 10 days
}

TEST(CarterTracyAquifer, ComesToTheLogarithmWithoutAnOuterBorder) {
    const InfluenceTable table = unboundedInfluence();
    ASSERT_EQ(table.time.size(), table.pressure.size());
    for (const double t : {100.0, 250.0, 500.0, 1000.0})
        EXPECT_NEAR(influenceAt(table, t).value, 0.5 * (std::log(t) + 0.80907), 0.02) << t;
    EXPECT_NEAR(influenceAt(table, 0.1).value, 2.0 * std::sqrt(0.1 / 3.14159265358979) - 0.05, 0.01);
    EXPECT_DOUBLE_EQ(influenceAt(table, 1100.0).slope, (3.86 - 3.809) / 100.0);  // extended
}

struct TwoCells {
    GridModel grid;
    FluidTables tables = samples::lightOil();
    CellState state;
    GivenAquifers given;

    TwoCells() {
        grid.NX = grid.NCELLS = 2;
        grid.NY = grid.NZ = 1;
        grid.CellI.assign(2, 1);
        grid.CellI[2] = 2;
        grid.CellJ.assign(2, 1);
        grid.CellK.assign(2, 1);
        grid.Active.assign(2, 1);
        for (CellArray<double>* size : {&grid.DX, &grid.DY, &grid.DZ}) size->assign(2, 10.0);
        grid.DX[1] = 100.0;
        grid.DX[2] = 300.0;
        grid.CellCentre.assign(2, 3, 0.0);
        grid.CellCentre(1, 3) = 7144.0;
        grid.CellCentre(2, 3) = 7288.0;
        state.Pressure.assign(2, 3000.0);
        state.Pressure[2] = 3100.0;
        state.RhoW.assign(2, 72.0);
        state.Bw.assign(2, 1.0);
        GivenAquifer aquifer;
        aquifer.number = 1;
        aquifer.datumDepth = 7000.0;
        aquifer.volume = 1e8;
        aquifer.compressibility = 1e-5;
        aquifer.productivity = 50.0;
        given.aquifers = {aquifer};
        AquiferFaces faces;
        faces.number = 1;
        faces.face = 3;
        given.faces = {faces};
    }
    [[nodiscard]] AquiferRecord start() const {
        QuietConsole quiet;
        return startAquifers(quiet.console, UnitSystem{}, grid, tables, state, given);
    }
};

TEST(Aquifers, GiveBySharesOfAreaAndRestWithTheirCells) {
    const TwoCells bench;
    const AquiferRecord record = bench.start();
    ASSERT_EQ(record.aquifers.size(), 1U);
    const Aquifer& aquifer = record.aquifers.front();
    ASSERT_EQ(aquifer.cells.size(), 2U);
    EXPECT_DOUBLE_EQ(aquifer.cells[0].share, 0.25);
    EXPECT_DOUBLE_EQ(aquifer.cells[1].share, 0.75);
    EXPECT_DOUBLE_EQ(aquifer.initialPressure, 0.25 * (3000.0 - 72.0) + 0.75 * (3100.0 - 144.0));
}

TEST(Aquifers, LieBesideFacesWithoutANeighbourUnlessToldOtherwise) {
    TwoCells bench;
    bench.given.faces.front().face = 2;
    AquiferRecord record = bench.start();
    ASSERT_EQ(record.aquifers.front().cells.size(), 1U);
    EXPECT_EQ(record.aquifers.front().cells.front().cell, 2);
    bench.given.faces.front().inside = true;
    record = bench.start();
    EXPECT_EQ(record.aquifers.front().cells.size(), 2U);
}

TEST(Aquifers, AreWellsDuringAStepAndKeepWhatTheyGave) {
    TwoCells bench;
    bench.given.aquifers.front().pressure = 4000.0;
    AquiferRecord record = bench.start();
    WellRecord wells;
    wells.wells.emplace_back();
    joinAquifers(record, wells);
    ASSERT_EQ(wells.wells.size(), 3U);
    setAquiferTerms(1e-9, bench.grid, record, wells);
    const Well& gives = wells.wells[1];
    EXPECT_EQ(gives.WellKind, "inj");
    EXPECT_DOUBLE_EQ(gives.Bhp, 4000.0);
    EXPECT_DOUBLE_EQ(gives.connections[1].aquiferFlow, 37.5);
    EXPECT_DOUBLE_EQ(gives.connections[0].ConnHead, record.aquifers.front().density);  // 144 ft below
    wells.wells[1].connections[0].reservoirRate = 30.0;
    wells.wells[2].connections[1].reservoirRate = -10.0;
    partAquifers(2.0, bench.state, record, wells);
    EXPECT_EQ(wells.wells.size(), 1U);
    EXPECT_DOUBLE_EQ(record.aquifers.front().gave, 40.0);
    EXPECT_DOUBLE_EQ(record.aquifers.front().time, 2.0);
}

}  // namespace
}  // namespace kvr
