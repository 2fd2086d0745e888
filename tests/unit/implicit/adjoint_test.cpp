#include "implicit/adjoint.hpp"

#include "implicit/fully_implicit.hpp"
#include "unit/implicit/implicit_bench.hpp"

#include <gtest/gtest.h>

using namespace kvr;

namespace {

constexpr double Days[] = {2.0, 5.0, 10.0, 20.0, 20.0, 30.0};
constexpr double Move = 1e-4;  // of ln k, either way

void addNamedWell(const std::string& name, const std::string& kind, const std::string& control, double target,
                  double limit, CellId cell, Simulation& s) {
    sample::addWell(kind, control, target, limit, cell, s);
    s.wells.wells.back().WellName = name;
}

void makeModel(const FluidTables& tables, CellId moved, double by, Simulation& s) {
    sample::makeRun(4, 3, 1, tables, s);
    s.options.method = "FIM";
    s.options.PressureTolerance = 1e-7;
    s.options.SaturationTolerance = 1e-9;
    for (CellId c = 1; c <= s.grid.NCELLS; ++c) {
        const double factor = std::exp(0.5 * std::sin(2.7 * c) + (c == moved ? by : 0.0));
        for (CellArray<double>* k : {&s.grid.PERMX, &s.grid.PERMY, &s.grid.PERMZ}) (*k)[c] *= factor;
    }
    CALCTRANS_STATICGEOPART(s.console, s.options, s.units, s.grid, s.connections);
}

void makeFlood(CellId moved, double by, Simulation& s) {
    makeModel(sample::compressibleWaterAndOil(), moved, by, s);
    for (CellId c = 1; c <= s.grid.NCELLS; ++c) {
        s.state.Sw[c] = 0.31 + 0.011 * (c % 5);
        s.state.So[c] = 1.0 - s.state.Sw[c];
    }
    addNamedWell("I", "inj", "rate", 800.0, 9000.0, 1, s);
    addNamedWell("A", "prd", "bhp", 0.0, 2500.0, 12, s);
    addNamedWell("B", "prd", "lrat", -250.0, 100.0, 4, s);
}

/// Cells with free gas and cells without; the gas reaches some of these.
void makeGasDrive(CellId moved, double by, Simulation& s) {
    makeModel(sample::liveOil(), moved, by, s);
    for (CellId c = 1; c <= s.grid.NCELLS; ++c) {
        const bool free = c % 4 == 1;
        s.state.Pressure[c] = 3600.0;
        s.state.Sg[c] = free ? 0.13 : 0.0;
        s.state.Pb[c] = free ? 3600.0 : 2900.0 + 100.0 * (c % 4);
        s.state.Rs[c] = SolutionRs(s.fluids, s.state.Pb[c]);
        s.state.Sw[c] = 0.21 + 0.011 * (c % 5);
        s.state.So[c] = 1.0 - s.state.Sw[c] - s.state.Sg[c];
    }
    addNamedWell("I", "inj", "rate", 60000.0, 9000.0, 1, s);
    s.wells.wells.back().InjectFluid = "gas";
    addNamedWell("A", "prd", "bhp", 0.0, 3200.0, 12, s);
    addNamedWell("B", "prd", "orat", -20.0, 100.0, 4, s);
}

using Maker = void (*)(CellId, double, Simulation&);

std::vector<RunLevel> runLevels(Simulation& s) {
    AllocateFullyImplicit(s);
    std::vector<RunLevel> levels;
    s.clock.time = 0.0;
    for (const double days : Days) {
        s.clock.dt = s.clock.workDt = days;
        FullyImplicitStep(s);
        s.clock.time += s.clock.dt;
        levels.push_back(levelOf(s, s.clock.dt));
    }
    return levels;
}

double quantityOf(const WellFunctional& functional, const RunLevel& level) {
    for (const Well& well : level.wells.wells) {
        if (well.WellName != functional.well) continue;
        if (functional.quantity == WellQuantity::Pressure) return well.Bhp;
        if (functional.quantity == WellQuantity::Cut) return well.WellQw / (well.WellQw + well.WellQo);
        return well.WellQg / well.WellQo * 5.614583 / 1000.0;
    }
    return 0.0;
}

double valueOf(const WellFunctional& functional, const std::vector<RunLevel>& levels) {
    double sum = 0.0;
    for (std::size_t n = 0; n < levels.size(); ++n)
        sum += functional.weights[n] * quantityOf(functional, levels[n]);
    return sum;
}

/// Largest difference from central differences of whole runs, over the largest derivative.
void expectDerivatives(Maker make, const std::vector<WellFunctional>& functionals, double within) {
    Simulation s;
    make(0, 0.0, s);
    const CellId cells = s.grid.NCELLS;
    const std::vector<RunLevel> levels = runLevels(s);
    for (std::size_t n = 0; n < levels.size(); ++n) ASSERT_EQ(levels[n].dt, Days[n]);
    std::vector<CellArray<double>> found;
    ASSERT_TRUE(adjointDerivatives(s, levels, functionals, found));
    std::vector<double> worst(functionals.size(), 0.0), most(functionals.size(), 0.0);
    for (CellId cell = 1; cell <= cells; ++cell) {
        std::vector<RunLevel> sides[2];
        for (const int side : {0, 1}) {
            Simulation moved;
            make(cell, side == 0 ? -Move : Move, moved);
            sides[side] = runLevels(moved);
        }
        for (std::size_t f = 0; f < functionals.size(); ++f) {
            const double exact =
                (valueOf(functionals[f], sides[1]) - valueOf(functionals[f], sides[0])) / (2.0 * Move);
            worst[f] = std::max(worst[f], std::abs(found[f][cell] - exact));
            most[f] = std::max(most[f], std::abs(exact));
        }
    }
    for (std::size_t f = 0; f < functionals.size(); ++f) {
        EXPECT_GT(most[f], 0.0) << f;
        EXPECT_LT(worst[f], within * most[f]) << f;
    }
}

}  // namespace

TEST(AdjointDerivatives, AreTheDifferencesOfFloodsForCutsAndPressures) {
    expectDerivatives(makeFlood,
                      {{"A", WellQuantity::Cut, {0, 0, 0, 0, 0, 1}},
                       {"B", WellQuantity::Cut, {0, 0.2, 0.3, 0.5, 0, 0}},
                       {"B", WellQuantity::Pressure, {0, 0, 0, 0.5, 0, 0.5}},
                       {"I", WellQuantity::Pressure, {1, 0, 0, 0, 0, 0}}},
                      1e-4);
}

TEST(AdjointDerivatives, AreTheDifferencesOfGasDrivesForGasOilRatiosAndPressures) {
    expectDerivatives(makeGasDrive,
                      {{"A", WellQuantity::GasOilRatio, {0, 0, 0, 1, 0, 1}},
                       {"B", WellQuantity::GasOilRatio, {0, 0, 0.3, 0.3, 0.4, 0}},
                       {"B", WellQuantity::Pressure, {0, 0, 0, 0, 0, 1}}},
                      1e-4);
}
