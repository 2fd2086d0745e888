#include "pressure/component_step.hpp"

#include "base/constants.hpp"
#include "fluid/table_checks.hpp"
#include "pressure/component_properties.hpp"
#include "unit/fluid/components/component_samples.hpp"

#include <algorithm>
#include <cmath>
#include <gtest/gtest.h>

namespace kvr {
namespace {

constexpr double Area = 1000.0;  // ft2
constexpr double Porosity = 0.2;
constexpr double Permeability = 100.0;  // md
constexpr double Tolerance = 1e-8;      // psi

/// A row of equal cells, level or falling, with one mixture.
struct Row {
    UnitSystem units;
    GridModel grid;
    ConnectionTable connections;
    FluidTables tables;
    CellState state;
    ComponentStage stage;
    ComponentWork work;
    std::vector<ComponentSource> sources;

    Row(const FluidTables& mixture, CellId cells, double length, double fall) : tables(mixture) {
        fillTables();
        grid.NX = grid.NCELLS = cells;
        grid.NY = grid.NZ = 1;
        grid.Active.assign(cells, 1);
        grid.SATNUM.assign(cells, 1);
        for (CellArray<double>* ones : {&grid.JFactor, &grid.NTG}) ones->assign(cells, 1.0);
        grid.PORO.assign(cells, Porosity);
        const double step = length / cells;
        grid.BulkVolume.assign(cells, Area * step / CubicFeetPerBarrel);
        connections.Neighbour.assign(cells, FaceCount, 0);
        connections.Trans.assign(cells, FaceCount, 0.0);
        connections.DepthDiff.assign(cells, FaceCount, 0.0);
        for (CellId c = 1; c < cells; ++c) {
            connections.Neighbour(c, 2) = c + 1;
            connections.Neighbour(c + 1, 1) = c;
            connections.Trans(c, 2) = connections.Trans(c + 1, 1) =
                DarcyConstant * Permeability * Area / step;
            connections.DepthDiff(c, 2) = fall / cells;
            connections.DepthDiff(c + 1, 1) = -fall / cells;
        }
        allocateCellState(cells, 0, state);
        stage.set = componentSet(tables, Fahrenheit160);
    }
    void fillTables() {
        SaturationTable table;
        table.SwAxis = {0.0, 1.0};
        table.Krw = {0.0, 1.0};
        table.Krow = {1.0, 0.0};
        table.Pcow = {0.0, 0.0};
        for (int r = 0; r <= 20; ++r) {
            const double s = r / 20.0;
            table.SgAxis.push_back(s);
            table.Krg.push_back(s * s);
            table.Krog.push_back((1.0 - s) * (1.0 - s));
            table.Pcog.push_back(0.0);
        }
        tables.regions = {table};
        tables.hasGas = true;
        tables.waterFvf = tables.waterViscosity = 1.0;
        tables.waterDensity = 62.4;
        tables.rockReferencePressure = 1000.0;
        tables.rockCompressibility = 3e-6;
        finishTables(tables);
    }
    void fill(const Composition& z, double pressure) {
        const int count = stage.cells.count = stage.set.count;
        stage.cells.z.assign(grid.NCELLS, count, 0.0);
        stage.cells.flash.assign(static_cast<std::size_t>(grid.NCELLS) + 1, FlashState{});
        for (CellId c = 1; c <= grid.NCELLS; ++c) {
            state.Pressure[c] = pressure;
            std::copy_n(z.begin(), count, stage.cells.z.row(c));
        }
        fillPores(grid, tables, units.VolumeFactor, state, stage);
    }
    /// A stream that takes so many pore volumes a day at a pressure, into cell 1, and a well at that pressure
    /// in the last cell.
    void drive(const Composition& stream, double poresPerDay, double pressure) {
        FlashState flash;
        FlashPT(stage.set, stream, pressure, flash);
        const PhaseVolumes volumes = phaseVolumes(stage.set, pressure, flash);
        const double pores = grid.NCELLS * grid.BulkVolume[1] * Porosity * units.VolumeFactor;
        ComponentSource injector, producer;
        injector.cell = 1;
        injector.stream = stream;
        injector.molarRate = poresPerDay * pores / (volumes.liquid + volumes.vapour);
        producer.cell = grid.NCELLS;
        producer.pressure = pressure;
        producer.productivity = 1000.0;
        sources = {injector, producer};
    }
    ComponentStepResult step(double dt) {
        return componentStep(units, grid, connections, tables, sources, "dgesv", dt, Tolerance, 30, work,
                             stage, state);
    }
    [[nodiscard]] double molesOf(int i) const {
        double sum = 0.0;
        for (CellId c = 1; c <= grid.NCELLS; ++c) sum += stage.amounts.moles(c, i + 1);
        return sum;
    }
};

FluidTables threeComponents() {
    FluidTables tables;
    tables.TCRIT = {343.0, 765.4, 1111.8};
    tables.PCRIT = {667.8, 550.7, 304.0};
    tables.ACF = {0.0104, 0.201, 0.4885};
    tables.MW = {16.043, 58.12, 142.285};
    tables.VCRIT = {1.59, 4.08, 9.66};
    tables.BIC.assign(9, 0.0);
    return tables;
}

TEST(ComponentStage, FillsItsPoresWithTheMixture) {
    Row row(threeComponents(), 3, 300.0, 0.0);
    row.fill({0.4, 0.2, 0.4}, 1000.0);
    refreshComponents(row.grid, row.tables, row.units.VolumeFactor, VolumeSlopes::All, row.stage, row.state);
    for (CellId c = 1; c <= 3; ++c)
        EXPECT_NEAR(row.stage.FluidVolume[c] / row.state.PoreVolume[c], 1.0, 1e-12);
    EXPECT_GT(row.state.Sg[2], 0.05);
    EXPECT_GT(row.state.So[2], 0.05);
}

TEST(ComponentStep, LeavesAClosedColumnAtRest) {
    Row row(threeComponents(), 20, 200.0, 200.0);
    row.fill({0.2, 0.2, 0.6}, 2000.0);
    // The first steps hang the pressures; behind them nothing moves in a thousand days.
    for (int n = 0; n < 20; ++n) ASSERT_TRUE(row.step(50.0).isSolved);
    const CellArray<double> before = row.state.Pressure;
    for (int n = 0; n < 10; ++n) ASSERT_TRUE(row.step(100.0).isSolved);
    for (CellId c = 1; c <= 20; ++c) EXPECT_NEAR(row.state.Pressure[c], before[c], 1e-6);
    for (CellId c = 1; c < 20; ++c)
        EXPECT_NEAR(row.state.Pressure[c + 1] - row.state.Pressure[c],
                    0.5 * (row.state.RhoO[c] + row.state.RhoO[c + 1]) * 10.0 / 144.0, 1e-6);
}

TEST(ComponentStep, KeepsPureGasPureBehindItsOwnInjection) {
    Row row(methaneDecaneTables(), 10, 500.0, 0.0);
    row.fill({1.0, 0.0}, 1500.0);
    row.drive({1.0, 0.0}, 0.01, 1500.0);
    for (int n = 0; n < 20; ++n) ASSERT_TRUE(row.step(5.0).isSolved);
    for (CellId c = 1; c <= 10; ++c) EXPECT_EQ(row.stage.cells.z(c, 1), 1.0);
}

TEST(ComponentStep, LosesNothingOfAnyComponent) {
    Row row(threeComponents(), 40, 1000.0, 50.0);
    row.fill({0.2, 0.3, 0.5}, 1500.0);
    row.drive({0.9, 0.1, 0.0}, 0.002, 1500.0);
    Composition before{}, brought{};
    for (int i = 0; i < 3; ++i) before[i] = row.molesOf(i);
    for (int n = 0; n < 40; ++n) {
        const ComponentStepResult result = row.step(5.0);
        ASSERT_TRUE(result.isSolved);
        for (int i = 0; i < 3; ++i) brought[i] += result.sources.moles[i];
    }
    const double given = row.sources[0].molarRate * 200.0;
    for (int i = 0; i < 3; ++i)
        EXPECT_NEAR(row.molesOf(i) - before[i], brought[i], 1e-12 * (before[i] + given)) << i;
    const std::vector<double>& moles = row.stage.amounts.moles.slots;
    EXPECT_GE(*std::min_element(moles.begin(), moles.end()), 0.0);
    EXPECT_GT(row.state.Sg[1], 0.3);
    EXPECT_EQ(row.state.Sg[40], 0.0);
}

/// Largest part of a cell's pores that fluids lack or exceed behind 200 days of gas, and the mean over the
/// row.
struct Misfit {
    double largest = 0.0, mean = 0.0;
};
Misfit misfitOfVolumes(double dt) {
    Row row(threeComponents(), 40, 1000.0, 0.0);
    row.fill({0.2, 0.3, 0.5}, 1500.0);
    row.drive({0.9, 0.1, 0.0}, 0.002, 1500.0);
    for (double time = 0.0; time < 200.0 - 1e-9; time += dt) EXPECT_TRUE(row.step(dt).isSolved);
    Misfit misfit;
    for (CellId c = 1; c <= 40; ++c) {
        const double off = std::abs(row.stage.FluidVolume[c] / row.state.PoreVolume[c] - 1.0);
        misfit.largest = std::max(misfit.largest, off);
        misfit.mean += off / 40.0;
    }
    return misfit;
}

TEST(ComponentStep, LeavesLittleOfTheVolumeBalanceToTheNextStepAndLessWithAShorterOne) {
    // Where gas comes out of its first liquid in a step the volumes of the step's start do not hold.
    const Misfit coarse = misfitOfVolumes(5.0), fine = misfitOfVolumes(1.0);
    EXPECT_LT(coarse.mean, 2e-3);
    EXPECT_LT(fine.mean, 0.5 * coarse.mean);
    EXPECT_LT(fine.largest, 0.5 * coarse.largest);
}

/// Methane fraction over a row of `cells`, averaged over ten parts, behind 0.4 pore volumes of gas.
std::vector<double> gasDrive(CellId cells, double dt) {
    Row row(threeComponents(), cells, 1000.0, 0.0);
    row.fill({0.2, 0.3, 0.5}, 1500.0);
    row.drive({0.9, 0.1, 0.0}, 0.002, 1500.0);
    for (double time = 0.0; time < 200.0 - 1e-9; time += dt) EXPECT_TRUE(row.step(dt).isSolved);
    std::vector<double> parts(10, 0.0);
    for (CellId c = 1; c <= cells; ++c)
        parts[static_cast<std::size_t>((c - 1) * 10 / cells)] += row.stage.cells.z(c, 1) * 10.0 / cells;
    return parts;
}

double apart(const std::vector<double>& a, const std::vector<double>& b) {
    double sum = 0.0;
    for (std::size_t k = 0; k < a.size(); ++k) sum += std::abs(a[k] - b[k]) / static_cast<double>(a.size());
    return sum;
}

TEST(ComponentStep, ConvergesWithTheGridAndWithTheStep) {
    const std::vector<double> coarse = gasDrive(20, 5.0), middle = gasDrive(40, 5.0),
                              fine = gasDrive(80, 5.0);
    EXPECT_LT(apart(middle, fine), 0.75 * apart(coarse, middle));
    EXPECT_LT(apart(middle, fine), 0.02);
    EXPECT_LT(apart(middle, gasDrive(40, 1.0)), 0.005);
}

}  // namespace
}  // namespace kvr
