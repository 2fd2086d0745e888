#include "streamline/transport/fractional_flow.hpp"

#include "unit/streamline/line_samples.hpp"

#include <gtest/gtest.h>

namespace kvr {
namespace {

TEST(EvaluateFluxes, GivesTheFractionalFlowOfTheTable) {
    const FluidTables tables = samples::plainFlood();
    SolverLine line = samples::floodedLine(tables, std::vector<double>(7, 1.0));
    const double sw[] = {0.25, 0.3, 0.4, 0.5, 0.6, 0.7, 0.8};
    const double f[] = {0.02298851, 0.05405405, 0.26229508, 0.59016393, 0.87804878, 0.98360656, 1.0};
    for (std::size_t i = 0; i < 7; ++i) line.nodes[i + 1].Sw = sw[i];
    evaluateFluxes(tables.hasGas, 0, 7, line);
    for (std::size_t i = 0; i < 7; ++i) {
        EXPECT_NEAR(line.nodes[i + 1].Fw, f[i], 5e-9) << sw[i];
        EXPECT_NEAR(line.nodes[i + 1].Fo, 1.0 - f[i], 5e-9) << sw[i];
    }
}

TEST(EvaluateFluxes, DividesByTheVolumeFactorsAndCarriesGasInOil) {
    FluidTables tables = samples::plainFlood();
    tables.hasGas = true;
    tables.regions[0].Krg = {0.0, 0.5};
    finishTables(tables);
    SolverLine line = samples::floodedLine(tables, {1.0});
    line.nodes[1].Sw = 0.3;
    line.nodes[1].Sg = 0.1;
    line.nodes[1].Rs = 120.0;
    line.nodes[1].inverseBw = 1.0 / 1.02;
    line.nodes[1].inverseBo = 1.0 / 1.5;
    line.nodes[1].inverseBg = 1.0 / 0.004;
    line.nodes[1].inverseMuG = 50.0;
    evaluateFluxes(tables.hasGas, 1, 1, line);
    // krw .01, krg .05, krow .7, krog .9 with c 1: kro = (.71)(.95) - .06 = .6145.
    const double lw = 0.02, lo = 0.30725, lg = 2.5;
    const double lt = lw + lo + lg;
    EXPECT_NEAR(line.nodes[1].Fw, lw / lt / 1.02, 1e-12);
    EXPECT_NEAR(line.nodes[1].Fo, lo / lt / 1.5, 1e-12);
    EXPECT_NEAR(line.nodes[1].Fg, lg / lt / 0.004 + 120.0 * lo / lt / 1.5, 1e-9);
}

TEST(LargestWaveSpeed, IgnoresDifferencesOfAmountsThatAreNone) {
    const FluidTables tables = samples::plainFlood();
    SolverLine line = samples::floodedLine(tables, {2.0, 2.0});
    const double cw[] = {0.8, 0.8 - 2e-6, 0.8 - 2.5e-6};
    const double fw[] = {1.0, 0.999999, 0.9};
    for (std::size_t i = 0; i < 3; ++i) {
        line.nodes[i].Cw = cw[i];
        line.nodes[i].Fw = fw[i];
        line.nodes[i].Co = 0.2;
        line.nodes[i].Fo = 0.0;
    }
    // First step: 1e-6 / 2e-6 / 2 days; the second one is below 1e-6.
    EXPECT_NEAR(largestWaveSpeed(false, line), 0.25, 1e-8);
}

std::vector<double> limited(std::string_view scheme, const std::vector<double>& f) {
    std::vector<double> out(f.size());
    std::vector<FlowNode> nodes(f.size());
    for (std::size_t i = 0; i < f.size(); ++i) {
        nodes[i].Fw = f[i];
        nodes[i].inverseDeltaTof = 0.1;
    }
    limitFlux(scheme, 2.0, nodes, &FlowNode::Fw, out);
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

TEST(LimitFlux, PassesUpstreamFluxesOn) {
    const std::vector<double> f = {1, 0.8, 0.5, 0.1, 0};
    EXPECT_EQ(limited("SPU", f), f);
}

TEST(LimitFlux, LeavesAnExtremumAlone) {
    expectValues(limited("2PU", {1, 0.5, 0.7}), {1, 0.5, 0.7});
}

}  // namespace
}  // namespace kvr
