#include "fluid/component_equilibrium.hpp"

#include "base/constants.hpp"
#include "fluid/components/surface.hpp"
#include "unit/fluid/column_bench.hpp"
#include "unit/fluid/components/component_samples.hpp"
#include "unit/quiet_console.hpp"

#include <cmath>
#include <gtest/gtest.h>

namespace kvr {
namespace {

/// The layers of a bench with methane and decane, or with one component.
struct MixtureBench : ColumnBench {
    ComponentState components;

    MixtureBench(double top, const std::vector<double>& thickness, const FluidTables& mixture)
        : ColumnBench(top, thickness) {
        useGas();
        tables.TCRIT = mixture.TCRIT;
        tables.PCRIT = mixture.PCRIT;
        tables.ACF = mixture.ACF;
        tables.MW = mixture.MW;
        tables.VCRIT = mixture.VCRIT;
        tables.BIC = mixture.BIC;
        tables.reservoirTemperature = Fahrenheit160;
        options.componentCount = static_cast<int>(mixture.TCRIT.size());
        options.hasWater = false;
    }
    void fill() { SETEQUILIBRIUM_COMPS(console, grid, tables, initial, options, state, components); }
    [[nodiscard]] ComponentSet set() const { return componentSet(tables, tables.reservoirTemperature); }
};

FluidTables onlyMethane() {
    FluidTables one, both = methaneDecaneTables();
    one.TCRIT = {both.TCRIT[0]};
    one.PCRIT = {both.PCRIT[0]};
    one.ACF = {both.ACF[0]};
    one.MW = {both.MW[0]};
    one.VCRIT = {both.VCRIT[0]};
    one.BIC = {0.0};
    return one;
}

TEST(ComponentEquilibrium, StopsWithoutAComposition) {
    MixtureBench bench(5000.0, {10.0, 10.0}, methaneDecaneTables());
    std::fclose(bench.console.screen);
    bench.console.screen = stderr;
    bench.contacts(5000.0, 2000.0, 6000.0, 4000.0);
    EXPECT_EXIT(bench.fill(), testing::ExitedWithCode(1),
                "Initializing Failed :: Initial Composition is not given");
}

TEST(ComponentEquilibrium, HangsAColumnOfGasOnItsOwnDensity) {
    MixtureBench bench(5000.0, std::vector<double>(10, 10.0), onlyMethane());
    bench.tables.ZI = {1.0};
    bench.contacts(5000.0, 2000.0, 9000.0, 9000.0);
    bench.fill();
    // dP/dz = rho(P)/144, rho = P MW/(Z R T), by Runge and Kutta in steps of 1 ft from the datum to 5095 ft.
    const ComponentSet set = bench.set();
    const auto gradient = [&](double p) {
        EosMixture mixture;
        PR_EOS(set, {1.0}, p, mixture);
        return p * set.Mw[0] / (mixture.zVapour * GasConstant * set.temperature) / SquareInchesPerSquareFoot;
    };
    double p = 2000.0;
    for (int foot = 0; foot < 95; ++foot) {
        const double k1 = gradient(p), k2 = gradient(p + 0.5 * k1), k3 = gradient(p + 0.5 * k2),
                     k4 = gradient(p + k3);
        p += (k1 + 2.0 * k2 + 2.0 * k3 + k4) / 6.0;
    }
    EXPECT_NEAR(bench.state.Pressure[10], p, 1e-4);
    EXPECT_GT(bench.state.Pressure[10] - 2000.0, 3.0);
    EXPECT_EQ(bench.components.flash[1].phases, FluidPhases::Vapour);
    EXPECT_EQ(bench.state.Sg[1], 1.0);
}

TEST(ComponentEquilibrium, GivesAllCellsTheUniformCompositionAndItsSplit) {
    MixtureBench bench(5000.0, {10.0, 10.0, 10.0}, methaneDecaneTables());
    bench.tables.ZI = {0.5, 0.5};
    bench.contacts(5000.0, 1000.0, 9000.0, 1000.0);
    bench.fill();
    for (CellId cell = 1; cell <= 3; ++cell) {
        EXPECT_EQ(bench.components.z(cell, 1), 0.5);
        FlashState alone;
        FlashPT(bench.set(), {0.5, 0.5}, bench.state.Pressure[cell], alone);
        EXPECT_NEAR(bench.components.flash[static_cast<std::size_t>(cell)].vapourFraction,
                    alone.vapourFraction, 1e-12);
        // Saturations are shares of the phases' volumes.
        const PhaseVolumes volumes = phaseVolumes(bench.set(), bench.state.Pressure[cell], alone);
        EXPECT_NEAR(bench.state.Sg[cell], volumes.vapour / (volumes.liquid + volumes.vapour), 1e-12);
        EXPECT_NEAR(bench.state.So[cell] + bench.state.Sg[cell], 1.0, 1e-15);
    }
    // The datum is the top: the first centre hangs 5 ft below it on liquid of 38.7 lb/ft3.
    EXPECT_NEAR(bench.state.Pressure[1], 1000.0 + 38.7 * 5.0 / 144.0, 1e-3);
    EXPECT_NEAR(bench.state.RhoO[1], 38.70, 0.01);
    EXPECT_NEAR(bench.state.MuO[1], 0.2087, 1e-4);
}

TEST(ComponentEquilibrium, TakesCompositionsLinearlyOverDepth) {
    CompositionByDepth rows;
    rows.Depth = {1000.0, 2000.0};
    rows.z = {{0.8, 0.2}, {0.4, 0.6}};
    EXPECT_DOUBLE_EQ(compositionAt(rows, 1250.0)[0], 0.7);
    EXPECT_DOUBLE_EQ(compositionAt(rows, 500.0)[0], 0.8);
    EXPECT_DOUBLE_EQ(compositionAt(rows, 2500.0)[1], 0.6);
}

TEST(ComponentEquilibrium, HangsGasAboveAndOilBelowTheContact) {
    // Nearly pure methane above 5050 ft, oil below: densities of either phase by hand at the pressure near
    // the contact.
    MixtureBench bench(5000.0, {50.0, 50.0}, methaneDecaneTables());
    bench.tables.ZMFVD = {5000.0, 0.9999, 0.0001, 5049.9, 0.9999, 0.0001, 5050.1, 0.4, 0.6, 5100.0, 0.4, 0.6};
    bench.contacts(5050.0, 2500.0, 9000.0, 5050.0);
    bench.fill();
    FlashState gas, oil;
    const double rhoG = phaseDensity(bench.set(), {0.9999, 0.0001}, 2500.0, false, gas);
    const double rhoO = phaseDensity(bench.set(), {0.4, 0.6}, 2500.0, true, oil);
    EXPECT_EQ(gas.phases, FluidPhases::Vapour);
    EXPECT_EQ(oil.phases, FluidPhases::Liquid);
    EXPECT_NEAR(bench.state.Pressure[1], 2500.0 - 25.0 * rhoG / 144.0, 0.02);
    EXPECT_NEAR(bench.state.Pressure[2], 2500.0 + 25.0 * rhoO / 144.0, 0.02);
    EXPECT_EQ(bench.state.Sg[1], 1.0);
    EXPECT_EQ(bench.state.Sg[2], 0.0);
}

TEST(ComponentEquilibrium, TakesArraysAndTheCellsOwnCompositions) {
    MixtureBench bench(5000.0, {10.0, 10.0}, methaneDecaneTables());
    bench.initial.equilibrationMode = false;
    bench.initial.initialPressure.assign(2, 1000.0);
    bench.initial.initialSwat.assign(2, 0.25);
    bench.initial.swatGiven = true;
    bench.initial.initialZ.assign(2, 2, 0.5);
    bench.initial.initialZ(2, 1) = 0.999;
    bench.initial.initialZ(2, 2) = 0.001;
    bench.fill();
    EXPECT_EQ(bench.state.Pressure[2], 1000.0);
    EXPECT_EQ(bench.state.Sw[1], 0.25);
    EXPECT_EQ(bench.components.flash[1].phases, FluidPhases::Both);
    EXPECT_EQ(bench.components.flash[2].phases, FluidPhases::Vapour);
    EXPECT_EQ(bench.state.So[2], 0.0);
}

TEST(ColumnsOfAnyDensity, GoOnWhereARowGoesToAndFroBetweenPhases) {
    MixtureBench bench(5000.0, {10.0, 10.0}, methaneDecaneTables());
    bench.contacts(5000.0, 2000.0, 9000.0, 1000.0);
    // Heavy below 2002 psia at mid-row, without weight above: no pressure of that row agrees with its
    // density.
    const ColumnDensity density = [](ColumnPhase, double, double pressure) {
        return pressure < 2002.0 ? 1440.0 : 0.0;
    };
    bool isSettled = true;
    const InitDepthTable rows =
        buildColumns(bench.console, bench.grid, density, bench.initial.regions[0], false, isSettled);
    EXPECT_FALSE(isSettled);
    EXPECT_NEAR(rows.PressureO.back(), 2002.0, 5.0);
}

TEST(ComponentEquilibrium, WarnsOfTheDirectSolverBelow27Cells) {
    for (const std::size_t cells : {26U, 27U}) {
        MixtureBench bench(5000.0, std::vector<double>(cells, 1.0), methaneDecaneTables());
        bench.tables.ZI = {0.5, 0.5};
        bench.contacts(5000.0, 1000.0, 9000.0, 1000.0);
        bench.options.pressureSolver = "amg";
        bench.fill();
        EXPECT_EQ(bench.options.pressureSolver == "dgesv", cells == 26U);
    }
}

TEST(SurfaceVolumes, AreThoseOfAFlashAtTheSurface) {
    const SurfaceFluid surface = surfaceFluid(methaneDecaneTables());
    EXPECT_EQ(surface.set.temperature, 519.67);
    EXPECT_EQ(surface.pressure, 14.7);
    FlashState state;
    const PhaseVolumes volumes = surfaceVolumes(surface, {0.5, 0.5}, state);
    // A lb-mole of gas takes R T/P less two thousandths; the tank oil is decane of 45 lb/ft3 or so.
    const double gasMoles = state.vapourFraction;
    EXPECT_NEAR(volumes.vapour, gasMoles * 10.73159 * 519.67 / 14.7, 0.003 * volumes.vapour);
    EXPECT_NEAR(gasMoles, 0.5, 0.005);
    EXPECT_NEAR(0.5 * 142.285 / volumes.liquid, 45.0, 3.0);
    // Moles of both phases make up the feed.
    EXPECT_NEAR((1.0 - gasMoles) * state.liquid[0] + gasMoles * state.vapour[0], 0.5, 1e-14);
}

}  // namespace
}  // namespace kvr
