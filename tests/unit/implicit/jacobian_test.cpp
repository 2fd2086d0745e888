#include "implicit/jacobian.hpp"

#include "model/dual_porosity.hpp"
#include "unit/implicit/implicit_bench.hpp"

#include <gtest/gtest.h>

using namespace kvr;

namespace {

/// Every entry of the Jacobian against differences of the residuals, to 1e-5 of the entry; entries that
/// rounding of the residuals hides are held against the largest of their row and unknown.
void expectSlopesOfResiduals(Simulation& s) {
    constexpr double Relative = 1e-5, Hidden = 1e-4;
    sample::residuals(s);
    const auto full = sample::fullMatrix(s.implicit.system);
    const auto size = static_cast<std::size_t>(s.implicit.system.blockSize);
    const std::size_t cells = s.implicit.cellOfRow.size() * size;
    const auto kindOf = [&](std::size_t column) { return column < cells ? column % size : size; };
    std::vector<std::vector<double>> largest(full.size(), std::vector<double>(size + 1, 0.0));
    for (std::size_t row = 0; row < full.size(); ++row)
        for (std::size_t column = 0; column < full.size(); ++column)
            largest[row][kindOf(column)] =
                std::max(largest[row][kindOf(column)], std::abs(full[row][column]));
    std::size_t compared = 0;
    for (std::size_t column = 0; column < full.size(); ++column) {
        const bool held = column >= cells && !isRateControlled(s.wells.wells[column - cells]);
        const std::vector<double> expected = sample::differences(column, s);
        for (std::size_t row = 0; row < full.size(); ++row) {
            if (held && row == column) continue;  // dBhp = 0 is no residual of a state
            EXPECT_NEAR(full[row][column], expected[row],
                        Relative * (std::abs(expected[row]) + Hidden * largest[row][kindOf(column)]))
                << "row " << row << " column " << column;
            compared += expected[row] != 0.0 ? 1 : 0;
        }
    }
    EXPECT_GT(compared, 5 * cells);
}

void makeBox(int nx, int ny, int nz, const FluidTables& tables, sample::Oil oil, Simulation& s) {
    sample::makeRun(nx, ny, nz, tables, s);
    sample::scatter(oil, 11, s);
}

}  // namespace

TEST(ImplicitJacobian, IsTheSlopeOfTheResidualsOfWaterAndOil) {
    Simulation s;
    makeBox(3, 2, 2, sample::compressibleWaterAndOil(), sample::Oil::UnderSaturated, s);
    sample::prepare(s);
    expectSlopesOfResiduals(s);
}

TEST(ImplicitJacobian, IsTheSlopeOfTheResidualsOfSaturatedOil) {
    Simulation s;
    makeBox(3, 2, 2, sample::liveOil(), sample::Oil::Saturated, s);
    sample::prepare(s);
    expectSlopesOfResiduals(s);
}

TEST(ImplicitJacobian, IsTheSlopeOfTheResidualsOfUnderSaturatedOil) {
    Simulation s;
    makeBox(3, 2, 2, sample::liveOil(), sample::Oil::UnderSaturated, s);
    sample::prepare(s);
    for (const ThirdUnknown unknown : s.implicit.unknown) EXPECT_EQ(unknown, ThirdUnknown::SolutionGas);
    expectSlopesOfResiduals(s);
}

TEST(ImplicitJacobian, IsTheSlopeOfTheResidualsWhereSaturatedAndUnderSaturatedOilMeet) {
    Simulation s;
    makeBox(3, 2, 2, sample::liveOil(), sample::Oil::Mixed, s);
    sample::prepare(s);
    expectSlopesOfResiduals(s);
}

TEST(ImplicitJacobian, HoldsForMetricUnits) {
    Simulation s;
    s.units = metricUnits();
    makeBox(2, 2, 2, sample::liveOil(), sample::Oil::Mixed, s);
    sample::addWell("prd", "lrat", -200.0, 100.0, 8, s);
    s.wells.wells[0].Bhp = 2500.0;
    sample::prepare(s);
    expectSlopesOfResiduals(s);
}

TEST(ImplicitJacobian, TakesInTheDiagonalsOfTheNinePointScheme) {
    Simulation s;
    makeBox(3, 3, 1, sample::liveOil(), sample::Oil::Mixed, s);
    s.options.ninePoint = true;
    s.options.method = "FIM";
    s.options.maxConnectionsPerCell = 26;
    CALCTRANS_STATICGEOPART(s.console, s.options, s.units, s.grid, s.connections);
    sample::prepare(s);
    EXPECT_EQ(s.implicit.connections.size(), 12U + 8U);  // faces, diagonals
    expectSlopesOfResiduals(s);
}

class Transfers : public testing::TestWithParam<bool> {};

TEST_P(Transfers, OfTwoContinuaHaveTheSlopesOfTheirResiduals) {
    for (const bool gas : {false, true}) {
        Simulation s;
        const FluidTables tables = gas ? sample::liveOil() : sample::compressibleWaterAndOil();
        makeBox(3, 1, 4, tables, gas ? sample::Oil::Mixed : sample::Oil::UnderSaturated, s);
        s.grid.dual.isSet = true;
        s.grid.dual.gravityDrainage = GetParam();
        s.grid.dual.SIGMA.assign(s.grid.NCELLS, 0.05);
        shareGeometry(s.grid);
        CALCTRANS_STATICGEOPART(s.console, s.options, s.units, s.grid, s.connections);
        sample::prepare(s);
        EXPECT_EQ(s.implicit.connections.size(), 6U + 7U);  // pairs, faces of the fractures
        expectSlopesOfResiduals(s);
    }
}

INSTANTIATE_TEST_SUITE_P(WithAndWithoutGravity, Transfers, testing::Bool());

class WellControl : public testing::TestWithParam<const char*> {};

TEST_P(WellControl, OfAProducerHasTheSlopesOfItsRowAndOfItsCells) {
    Simulation s;
    makeBox(2, 1, 3, sample::liveOil(), sample::Oil::Mixed, s);
    sample::addWell("prd", GetParam(), -300.0, 2000.0, 1, s);
    WellConnection deeper = s.wells.wells[0].connections[0];
    for (const CellId cell : {3, 5}) {
        deeper.ConnCell = cell;
        s.wells.wells[0].connections.push_back(deeper);
    }
    computeWellIndices(s.grid, s.wells);
    s.wells.wells[0].Bhp = 2800.0;
    sample::prepare(s);
    expectSlopesOfResiduals(s);
}

INSTANTIATE_TEST_SUITE_P(EveryControl, WellControl,
                         testing::Values("orat", "wrat", "grat", "lrat", "resv", "bhp"),
                         [](const auto& control) { return std::string(control.param); });

struct Injection {
    const char* control;
    const char* fluid;
};
class InjectorControl : public testing::TestWithParam<Injection> {};

TEST_P(InjectorControl, OfAnInjectorHasTheSlopesOfItsRowAndOfItsCells) {
    Simulation s;
    // Of gas into under-saturated oil the slope by Rs is left out; see below.
    const bool gas = GetParam().fluid == std::string("gas");
    makeBox(2, 1, 2, sample::liveOil(), gas ? sample::Oil::Saturated : sample::Oil::Mixed, s);
    sample::addWell("inj", GetParam().control, 300.0, 5000.0, 1, s);
    s.wells.wells[0].InjectFluid = GetParam().fluid;
    WellConnection deeper = s.wells.wells[0].connections[0];
    deeper.ConnCell = 3;
    s.wells.wells[0].connections.push_back(deeper);
    computeWellIndices(s.grid, s.wells);
    s.wells.wells[0].Bhp = 4500.0;
    sample::prepare(s);
    expectSlopesOfResiduals(s);
}

INSTANTIATE_TEST_SUITE_P(EveryControl, InjectorControl,
                         testing::Values(Injection{"rate", "wat"}, Injection{"rate", "gas"},
                                         Injection{"rate", "oil"}, Injection{"bhp", "wat"},
                                         Injection{"bhp", "gas"}),
                         [](const auto& injection) {
                             return std::string(injection.param.control) + injection.param.fluid;
                         });

TEST(ImplicitJacobian, LetsNoThinnerOilDrawInGas) {
    Simulation s;
    makeBox(2, 1, 1, sample::liveOil(), sample::Oil::UnderSaturated, s);
    sample::addWell("inj", "bhp", 0.0, 5000.0, 1, s);
    s.wells.wells[0].InjectFluid = "gas";
    s.wells.wells[0].Bhp = 4500.0;
    sample::prepare(s);
    const auto slopesByRs = [&] {
        sample::residuals(s);
        const auto full = sample::fullMatrix(s.implicit.system);
        return std::vector<double>{full[0][GasPlace], full[1][GasPlace], full[2][GasPlace]};
    };
    const std::vector<double> injecting = slopesByRs();
    EXPECT_GT(s.wells.wells[0].WellQg, 0.0);
    s.wells.wells[0].shut = true;
    EXPECT_EQ(injecting, slopesByRs());
}

TEST(ImplicitJacobian, IsTheSlopeOfTheResidualsWhereACellHasNoOil) {
    Simulation s;
    makeBox(3, 2, 1, sample::liveOil(), sample::Oil::Mixed, s);
    for (const CellId c : {2, 5}) {
        s.state.Sw[c] = 0.92;
        s.state.Sg[c] = 0.08;
        s.state.So[c] = 0.0;
    }
    sample::prepare(s);
    EXPECT_EQ(s.implicit.unknown[1], ThirdUnknown::WithoutOil);
    expectSlopesOfResiduals(s);
}

TEST(ImplicitJacobian, LeavesOutAConnectionThatWouldFlowBack) {
    Simulation s;
    makeBox(2, 1, 2, sample::liveOil(), sample::Oil::Mixed, s);
    sample::addWell("prd", "bhp", 0.0, 2000.0, 1, s);
    WellConnection deeper = s.wells.wells[0].connections[0];
    deeper.ConnCell = 3;
    s.wells.wells[0].connections.push_back(deeper);
    computeWellIndices(s.grid, s.wells);
    s.wells.wells[0].Bhp = 0.5 * (s.state.Pressure[1] + s.state.Pressure[3]);
    sample::prepare(s);
    for (WellConnection& connection : s.wells.wells[0].connections) connection.ConnHead = 0.0;
    expectSlopesOfResiduals(s);
    const bool firstFlows = s.state.Pressure[1] > s.state.Pressure[3];
    const std::vector<double>& columns = s.implicit.system.wells[0].columnBlocks;
    for (std::size_t k = 0; k < 3; ++k) EXPECT_EQ(columns[(firstFlows ? 3 : 0) + k], 0.0);
}

TEST(ImplicitJacobian, ConservesEveryComponentBetweenCells) {
    Simulation s;
    makeBox(3, 3, 2, sample::liveOil(), sample::Oil::Mixed, s);
    // A multiplier on one side of a face: both cells must still see the same flow.
    s.connections.Trans(5, 2) *= 0.25;
    sample::prepare(s);
    const std::vector<double> residual = sample::residuals(s);  // amounts are the old ones: flow alone
    double largest = 0.0;
    for (std::size_t component = 0; component < 3; ++component) {
        double sum = 0.0;
        for (std::size_t row = 0; row < 18; ++row) {
            sum += residual[row * 3 + component];
            largest = std::max(largest, std::abs(residual[row * 3 + component]));
        }
        EXPECT_NEAR(sum, 0.0, 1e-12 * largest);
    }
    EXPECT_GT(largest, 1.0);
}

TEST(ImplicitJacobian, ShutsAConnectionThatIsShutOnOneSide) {
    Simulation s;
    makeBox(2, 1, 1, sample::compressibleWaterAndOil(), sample::Oil::UnderSaturated, s);
    s.connections.Trans(1, 2) = 0.0;
    sample::prepare(s);
    for (const double value : sample::residuals(s)) EXPECT_EQ(value, 0.0);
}
