#include "model/dual_porosity.hpp"

#include "implicit/fully_implicit.hpp"
#include "pressure/cell_transport.hpp"
#include "pressure/transfer_head.hpp"
#include "unit/implicit/implicit_bench.hpp"

#include <array>
#include <gtest/gtest.h>
#include <string>

using namespace kvr;

namespace {

// A matrix block of 100 x 100 x 20 ft, 1 = matrix, 2 = fractures.
constexpr CellId Matrix = 1, Fracture = 2;
constexpr double BarrelsOfBlock = 100.0 * 100.0 * 20.0 / 5.614583;

struct Pair {
    double sigma = 0.0;  // 1/ft2
    double matrixPorosity = 0.2, fracturePorosity = 0.02;
    double permeability = 0.5;   // md, of the matrix
    double gravityHeight = 0.0;  // ft; above 0: gravity drainage
};

void makePair(const Pair& pair, const FluidTables& tables, Simulation& s) {
    sample::makeRun(1, 1, 2, tables, s);
    s.options.method = "FIM";
    s.options.PressureTolerance = 1e-9;
    s.options.SaturationTolerance = 1e-12;
    s.grid.dual.isSet = true;
    s.grid.dual.SIGMA.assign(2, pair.sigma);
    s.grid.dual.gravityDrainage = pair.gravityHeight > 0.0;
    s.grid.dual.DZMTRX.assign(2, pair.gravityHeight);
    s.grid.PORO[Matrix] = pair.matrixPorosity;
    s.grid.PORO[Fracture] = pair.fracturePorosity;
    s.grid.PERMX[Matrix] = pair.permeability;
    shareGeometry(s.grid);
    CALCTRANS_STATICGEOPART(s.console, s.options, s.units, s.grid, s.connections);
    AllocateFullyImplicit(s);
}

void setWater(CellId cell, double Sw, Simulation& s) {
    s.state.Sw[cell] = Sw;
    s.state.So[cell] = 1.0 - Sw;
}

/// A step of clock.dt days by the method of the run: fully implicitly, or pressure and then the transport, as
/// IMPES and streamlines take it where there is an exchange.
void step(Simulation& s) {
    if (s.options.method == "FIM") {
        EXPECT_TRUE(tryFullyImplicitStep(s, 0));
        return;
    }
    s.clock.workDt = s.clock.dt;
    PressureStep(s, 0, 1);
    transportAmounts({}, false, s);
}

/// A figure behind `days` in so many equal steps.
template <class Start, class Figure>
double behind(double days, int steps, const Start& start, const Figure& figure) {
    Simulation s;
    start(s);
    for (int n = 0; n < steps; ++n) {
        s.clock.dt = days / steps;
        step(s);
    }
    return figure(s);
}

/// The limit of vanishing steps: three halvings, errors of the first three powers of the step removed.
template <class Start, class Figure>
double limitOfShortSteps(double days, int steps, const Start& start, const Figure& figure) {
    std::array<double, 4> row{};
    for (std::size_t n = 0; n < row.size(); ++n) row[n] = behind(days, steps << n, start, figure);
    double power = 2.0;
    for (std::size_t left = row.size() - 1; left > 0; --left, power *= 2.0)
        for (std::size_t n = 0; n < left; ++n) row[n] = (power * row[n + 1] - row[n]) / (power - 1.0);
    return row[0];
}

}  // namespace

TEST(DualPorosityExchange, IsTheExactExponentialOfItsShapeFactor) {
    // Oil alone flows, kro 0.9 at connate water and 2 cp: the difference of pressure fades with
    //   1/tau = Vk lambda (1/Cm + 1/Cf),   C = pore volume * rock compressibility
    constexpr double compressibility = 1e-6, sigma = 1e-5;
    const Pair pair{sigma};
    const double Vk = sigma * 0.00112771 * pair.permeability * 100.0 * 100.0 * 20.0;
    const double Cm = BarrelsOfBlock * pair.matrixPorosity * compressibility;
    const double Cf = BarrelsOfBlock * pair.fracturePorosity * compressibility;
    const double tau = 1.0 / (Vk * 0.9 / 2.0 * (1.0 / Cm + 1.0 / Cf));
    for (const std::string method : {"FIM", "IMPES"}) {
        const auto start = [&](Simulation& s) {
            makePair(pair, sample::waterAndOil(compressibility), s);
            s.options.method = method;
            s.state.Pressure[Matrix] = 3000.1;
            s.state.Pressure[Fracture] = 2999.9;
        };
        const auto difference = [](const Simulation& s) {
            return (s.state.Pressure[Matrix] - s.state.Pressure[Fracture]) / 0.2;
        };
        EXPECT_NEAR(limitOfShortSteps(tau, 8, start, difference), std::exp(-1.0), 1e-6) << method;
    }
}

TEST(DualPorosityExchange, KeepsAmountsToRoundingWhateverTheShapeFactor) {
    for (const double sigma : {0.0, 1e-6, 1.0, 1e8}) {
        Simulation s;
        makePair({sigma}, sample::compressibleWaterAndOil(), s);
        s.state.Pressure[Matrix] = 3400.0;
        setWater(Fracture, 0.75, s);
        refreshProperties(s.grid, s.fluids, s.state);
        CellAmounts before, after;
        measureAmounts(s.grid, s.state, before);
        s.clock.dt = 50.0;
        ASSERT_TRUE(tryFullyImplicitStep(s, 0)) << sigma;
        measureAmounts(s.grid, s.state, after);
        const double water = before.water[1] + before.water[2], oil = before.oil[1] + before.oil[2];
        EXPECT_NEAR(after.water[1] + after.water[2], water, 1e-9 * water) << sigma;
        EXPECT_NEAR(after.oil[1] + after.oil[2], oil, 1e-9 * oil) << sigma;
    }
}

TEST(DualPorosityExchange, StandsStillWithoutAShapeFactor) {
    Simulation s;
    makePair({0.0}, sample::waterAndOil(1e-6), s);
    s.state.Pressure[Matrix] = 3400.0;
    s.clock.dt = 100.0;
    ASSERT_TRUE(tryFullyImplicitStep(s, 0));
    EXPECT_NEAR(s.state.Pressure[Matrix], 3400.0, 1e-8);
    EXPECT_NEAR(s.state.Pressure[Fracture], 3000.0, 1e-8);
}

namespace {

// Water and oil without compressibility change places by their weight alone. With h = H (rho_w - rho_o)/144:
//   q = Vk lw lo/(lw + lo) h (Xf - Xm),   lw of the fractures, lo of the matrix
//   dSm/dt = q/Vm,   dSf/dt = -q/Vf
struct Drainage {
    double Vk, head, Vm, Vf;
};

double interpolated(const std::array<double, 4>& values, double sw) {
    const double at = std::clamp((sw - 0.2) / 0.2, 0.0, 3.0);
    const auto low = static_cast<std::size_t>(std::min(at, 2.0));
    return values[low] + (at - static_cast<double>(low)) * (values[low + 1] - values[low]);
}

double exchangeRate(const Drainage& d, double Sm, double Sf) {
    const double lw = interpolated({0.0, 0.05, 0.2, 0.45}, Sf) / 0.5;
    const double lo = interpolated({0.9, 0.5, 0.2, 0.0}, Sm) / 2.0;
    const double shares = (Sf - Sm) / 0.6;  // movable water: 0.2 to 0.8
    return d.Vk * lw * lo / (lw + lo) * d.head * shares;
}

double matrixWaterBehind(const Drainage& d, double days, double Sm, double Sf) {
    constexpr int Steps = 20000;
    const double dt = days / Steps;
    for (int n = 0; n < Steps; ++n) {  // the midpoint rule
        const double half = 0.5 * dt * exchangeRate(d, Sm, Sf);
        const double rate = exchangeRate(d, Sm + half / d.Vm, Sf - half / d.Vf);
        Sm += dt * rate / d.Vm;
        Sf -= dt * rate / d.Vf;
    }
    return Sm;
}

}  // namespace

TEST(GravityDrainage, ExchangesWaterAndOilAsTheirWeightsAsk) {
    const Pair pair{0.04, 0.1, 0.3, 5.0, 12.0};
    const double Vk = pair.sigma * 0.00112771 * pair.permeability * 100.0 * 100.0 * 20.0;
    const Drainage drainage{Vk, 12.0 * (62.4 - 50.0) / 144.0, 0.1 * BarrelsOfBlock, 0.3 * BarrelsOfBlock};
    const double days = 60.0;
    const double exact = matrixWaterBehind(drainage, days, 0.25, 0.78);
    ASSERT_GT(exact, 0.35);  // a good part of the way
    ASSERT_LT(exact, 0.6);
    const auto start = [&](Simulation& s) {
        makePair(pair, sample::waterAndOil(1e-7), s);
        s.options.PressureTolerance = 1e-4;
        s.options.SaturationTolerance = 1e-9;
        setWater(Matrix, 0.25, s);
        setWater(Fracture, 0.78, s);
    };
    const auto water = [](const Simulation& s) { return s.state.Sw[Matrix]; };
    EXPECT_NEAR(behind(days, 800, start, water), exact, 3e-4);
    const double coarse = std::abs(behind(days, 200, start, water) - exact);
    const double fine = std::abs(behind(days, 400, start, water) - exact);
    EXPECT_NEAR(coarse / fine, 2.0, 0.3);  // first order in the step
}

TEST(GravityDrainage, EndsWhereBothSidesAreFilledAlike) {
    Simulation s;
    makePair({1.0, 0.1, 0.3, 5.0, 12.0}, sample::waterAndOil(1e-7), s);
    setWater(Matrix, 0.3, s);
    setWater(Fracture, 0.7, s);
    for (int n = 0; n < 40; ++n) {
        s.clock.dt = 100.0;
        ASSERT_TRUE(tryFullyImplicitStep(s, 0));
    }
    EXPECT_NEAR(s.state.Sw[Matrix], 0.6, 1e-6);  // (0.1 * 0.3 + 0.3 * 0.7)/0.4
    EXPECT_NEAR(s.state.Sw[Fracture], 0.6, 1e-6);
}

TEST(GravityDrainage, DrivesNothingWhereItIsOff) {
    Simulation s;
    makePair({1.0, 0.1, 0.3, 5.0, 0.0}, sample::waterAndOil(1e-7), s);
    setWater(Matrix, 0.3, s);
    setWater(Fracture, 0.7, s);
    s.clock.dt = 1000.0;
    ASSERT_TRUE(tryFullyImplicitStep(s, 0));
    EXPECT_NEAR(s.state.Sw[Matrix], 0.3, 1e-9);
}

TEST(GravityDrainage, LetsGasIntoTheMatrixByItsLightness) {
    Simulation s;
    makePair({1.0, 0.1, 0.3, 5.0, 12.0}, samples::lightOil(), s);
    for (const CellId cell : {Matrix, Fracture}) {
        s.state.Pressure[cell] = 3000.0;
        s.state.Sw[cell] = 0.2;
        s.state.Sg[cell] = cell == Fracture ? 0.5 : 0.0;
        s.state.So[cell] = 0.8 - s.state.Sg[cell];
        s.state.Pb[cell] = 3000.0;
        s.state.Rs[cell] = SolutionRs(s.fluids, 3000.0);
    }
    s.clock.dt = 5.0;
    ASSERT_TRUE(tryFullyImplicitStep(s, 3));
    EXPECT_GT(s.state.Sg[Matrix], 0.01);
    EXPECT_LT(s.state.Sg[Fracture], 0.5);
}

TEST(GravityDrainage, HeadsAreTheWeightOfWhatTheHeightHolds) {
    const SaturationTable table = samples::lightOil().regions[0];
    EXPECT_DOUBLE_EQ(shareAt(waterHeight(table), 0.2), 0.0);
    EXPECT_NEAR(shareAt(waterHeight(table), 0.5), 0.5, 1e-12);
    EXPECT_DOUBLE_EQ(shareAt(waterHeight(table), 0.95), 1.0);
    EXPECT_NEAR(headOf(10.0, 62.4, 50.0, 0.5), 10.0 * 12.4 * 0.5 / 144.0, 1e-12);
}
