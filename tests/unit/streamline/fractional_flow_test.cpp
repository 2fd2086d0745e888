#include "streamline/fractional_flow.hpp"

#include "line_samples.hpp"

#include <gtest/gtest.h>

namespace kvr {
namespace {

TEST(EvaluateFluxes, GivesTheFractionalFlowOfTheTable) {
    const FluidTables tables = samples::plainFlood();
    SolverLine line = samples::floodedLine(std::vector<double>(7, 1.0));
    const double sw[] = {0.25, 0.3, 0.4, 0.5, 0.6, 0.7, 0.8};
    const double f[] = {0.02298851, 0.05405405, 0.26229508, 0.59016393, 0.87804878, 0.98360656, 1.0};
    for (std::size_t i = 0; i < 7; ++i) line.Sw[i + 1] = sw[i];
    evaluateFluxes(tables, 0, 7, line);
    for (std::size_t i = 0; i < 7; ++i) {
        EXPECT_NEAR(line.Fw[i + 1], f[i], 5e-9) << sw[i];
        EXPECT_NEAR(line.Fo[i + 1], 1.0 - f[i], 5e-9) << sw[i];
    }
}

TEST(EvaluateFluxes, DividesByTheVolumeFactorsAndCarriesGasInOil) {
    FluidTables tables = samples::plainFlood();
    tables.hasGas = true;
    tables.regions[0].Krg = {0.0, 0.5};
    finishTables(tables);
    SolverLine line = samples::floodedLine({1.0});
    line.Sw[1] = 0.3;
    line.Sg[1] = 0.1;
    line.Rs[1] = 120.0;
    line.inverseBw[1] = 1.0 / 1.02;
    line.inverseBo[1] = 1.0 / 1.5;
    line.inverseBg[1] = 1.0 / 0.004;
    line.inverseMuG[1] = 50.0;
    evaluateFluxes(tables, 1, 1, line);
    // krw .01, krg .05, krow .7, krog .9 with c 1: kro = (.71)(.95) - .06 = .6145.
    const double lw = 0.02, lo = 0.30725, lg = 2.5;
    const double lt = lw + lo + lg;
    EXPECT_NEAR(line.Fw[1], lw / lt / 1.02, 1e-12);
    EXPECT_NEAR(line.Fo[1], lo / lt / 1.5, 1e-12);
    EXPECT_NEAR(line.Fg[1], lg / lt / 0.004 + 120.0 * lo / lt / 1.5, 1e-9);
}

TEST(LargestWaveSpeed, IgnoresDifferencesOfAmountsThatAreNone) {
    SolverLine line = samples::floodedLine({2.0, 2.0});
    line.Cw = {0.8, 0.8 - 2e-6, 0.8 - 2.5e-6, 0.0};
    line.Co = {0.2, 0.2, 0.2, 0.0};
    line.Fw = {1.0, 0.999999, 0.9, 0.0};
    line.Fo = {0.0, 0.0, 0.0, 0.0};
    // First step: 1e-6 / 2e-6 / 2 days; the second one is below 1e-6.
    EXPECT_NEAR(largestWaveSpeed(plainFluxes(line), false, line), 0.25, 1e-8);
}

std::vector<double> limited(std::string_view scheme, const std::vector<double>& f) {
    std::vector<double> out(f.size());
    const std::vector<double> inverse(f.size(), 0.1);
    limitFlux(scheme, 2.0, static_cast<int>(f.size()) - 1, inverse, f, out);
    return out;
}

void expectValues(const std::vector<double>& values, const std::vector<double>& expected) {
    for (std::size_t i = 0; i < expected.size(); ++i) EXPECT_NEAR(values[i], expected[i], 1e-12) << i;
}

TEST(LimitFlux, TakesTheSmallerDifferenceOfASmoothProfile) {
    const std::vector<double> f = {1, 0.8, 0.5, 0.1, 0};
    expectValues(limited("2PU", f), {1, 0.72, 0.38, 0.02, 0});
    expectValues(limited("3PU", f), {1, 0.72, 0.38, 0.02, 0});
    expectValues(limited("Leonard", f), {1, 0.696, 0.356, 0.02, 0});
}

TEST(LimitFlux, LeavesAnExtremumAlone) {
    expectValues(limited("2PU", {1, 0.5, 0.7}), {1, 0.5, 0.7});
}

}  // namespace
}  // namespace kvr
