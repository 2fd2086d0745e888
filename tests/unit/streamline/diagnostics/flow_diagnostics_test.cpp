#include "streamline/diagnostics/flow_diagnostics.hpp"

#include "unit/streamline/diagnostics/finite_volume_twin.hpp"
#include "unit/streamline/diagnostics/five_spot_flow.hpp"
#include "unit/streamline/flow_samples.hpp"

#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <numeric>

namespace kvr {
namespace {

/// Maps of a flow.
struct Diagnostics {
    PairTable pairs;
    DiagnosticMaps maps;
    int lines = 0;

    explicit Diagnostics(const samples::Flow& flow, bool means = false) {
        clearPairs(flow.wells, false, pairs);
        lines = traceDiagnostics(flow.grid, flow.field, flow.state.PoreVolume, flow.wells, pairs,
                                 maxNodes(flow.options, flow.grid), means, maps);
    }
};

TEST(FlowDiagnostics, AddUpToTheTransitTimeInARowOfCells) {
    // Ten cells of ten days each.
    const Diagnostics row(samples::column(10, 500.0, 50.0));
    for (CellId cell = 1; cell <= 10; ++cell) {
        EXPECT_NEAR(row.maps.timeFromInjector[cell], 10.0 * cell, 1e-8);
        EXPECT_NEAR(row.maps.timeToProducer[cell], 100.0 - 10.0 * cell, 1e-8);
        EXPECT_NEAR(row.maps.timeSum[cell], 100.0, 1e-8);
        EXPECT_EQ(row.maps.injector[cell], 1);
        EXPECT_EQ(row.maps.producer[cell], 1);
        EXPECT_EQ(row.maps.connection[cell], 1);
    }
}

TEST(FlowDiagnostics, TakeTheMiddleOfACellAsItsMean) {
    const Diagnostics row(samples::column(10, 500.0, 50.0), true);  // ten cells of ten days each
    for (CellId cell = 1; cell <= 10; ++cell) {
        EXPECT_NEAR(row.maps.timeFromInjector[cell], 10.0 * cell - 5.0, 1e-8);
        EXPECT_NEAR(row.maps.timeToProducer[cell], 105.0 - 10.0 * cell, 1e-8);
        EXPECT_NEAR(row.maps.timeSum[cell], 100.0, 1e-8);
    }
}

TEST(FlowDiagnostics, StartInEveryCellOfAGridOf2601CellsAndInFewOf2602) {
    EXPECT_EQ(Diagnostics(samples::quarterFiveSpot(51, 300.0)).lines, 2601);
    // A row of 2602 cells is one line; the injector's cell starts one that finds no inflow.
    EXPECT_EQ(Diagnostics(samples::column(2602, 1.0, 50.0)).lines, 2);
}

TEST(FlowDiagnostics, LeaveUnreachedCellsAtTenToTheTenth) {
    samples::Flow flow = samples::column(6, 500.0, 50.0);
    flow.velocity.CellFaceFlux(2, 2) = flow.velocity.CellFaceFlux(3, 1) = 0.0;  // cut behind cell 2
    samples::prepareTracing(flow);
    const Diagnostics cut(flow);
    for (CellId cell = 1; cell <= 6; ++cell) {
        EXPECT_EQ(cut.maps.timeFromInjector[cell], 1e10);
        EXPECT_EQ(cut.maps.timeToProducer[cell], 1e10);
        EXPECT_EQ(cut.maps.timeSum[cell], 1e10);
        EXPECT_EQ(cut.maps.connection[cell], 0);
    }
}

TEST(FlowDiagnostics, AreSymmetricAboutTheDiagonalOfAQuarterFiveSpot) {
    const int n = 41;
    const samples::Flow flow = samples::quarterFiveSpot(n, 300.0);
    const Diagnostics spot(flow);
    for (int j = 1; j <= n; ++j)
        for (int i = 1; i <= n; ++i) {
            const CellId cell = cellIndex(flow.grid, i, j, 1);
            const CellId mirror = cellIndex(flow.grid, j, i, 1);
            for (const auto* map : {&spot.maps.timeFromInjector, &spot.maps.timeToProducer}) {
                ASSERT_LT((*map)[cell], 1e9) << i << " " << j;
                ASSERT_NEAR((*map)[cell], (*map)[mirror], 1e-6 * (*map)[cell]) << i << " " << j;
            }
            EXPECT_EQ(spot.maps.timeSum[cell],
                      spot.maps.timeFromInjector[cell] + spot.maps.timeToProducer[cell]);
        }
}

TEST(FlowDiagnostics, FollowTheExactTransitTimesOfAQuarterFiveSpot) {
    const int n = 151;
    const samples::Flow flow = samples::quarterFiveSpot(n, 300.0);
    const Diagnostics spot(flow);
    const auto& volumes = flow.state.PoreVolume.slots;
    const double unit = std::accumulate(volumes.begin(), volumes.end(), 0.0) / 300.0;
    double mean = 0.0;
    int count = 0;
    for (int j = 3; j <= n; j += 10)
        for (int i = 3; i <= n; i += 10) {
            const std::complex<double> z{(i - 0.5) / n, (j - 0.5) / n};
            if (std::min(std::abs(z), std::abs(z - std::complex<double>{1.0, 1.0})) < 0.1) continue;
            const double exact = samples::timeToWell(z, 1.0) + samples::timeToWell(z, -1.0);
            mean += std::abs(spot.maps.timeSum[cellIndex(flow.grid, i, j, 1)] / unit / exact - 1.0);
            ++count;
        }
    std::printf("transit time against the exact one: mean difference %.4f\n", mean / count);
    EXPECT_GT(count, 150);
    EXPECT_LT(mean / count, 0.02);
}

TEST(FiveSpotFlow, SendsNothingThroughItsSidesAndBreaksThroughWhenTextbooksSay) {
    for (const double x : {0.1, 0.4, 0.8}) {
        EXPECT_NEAR(samples::fiveSpotVelocity({x, 0.0}).imag(), 0.0, 1e-7);
        EXPECT_NEAR(samples::fiveSpotVelocity({1.0, x}).real(), 0.0, 1e-7);
    }
    // Areal sweep at breakthrough with unit mobility ratio: 0.7178 (Morel-Seytoux 1966).
    EXPECT_NEAR(samples::timeToWell({0.5, 0.5}, 1.0) + samples::timeToWell({0.5, 0.5}, -1.0), 0.7178, 2e-4);
}

// --- against finite volumes ---------------------------------------------------------------------------

/// Mean relative difference of a map and the twin, without the slowest twentieth of the cells.
double meanDifference(const CellArray<double>& map, const std::vector<double>& twin) {
    std::vector<CellId> order(twin.size() - 1);
    std::iota(order.begin(), order.end(), 1);
    std::sort(order.begin(), order.end(), [&](CellId a, CellId b) {
        return twin[static_cast<std::size_t>(a)] < twin[static_cast<std::size_t>(b)];
    });
    order.resize(order.size() * 95 / 100);
    double sum = 0.0;
    for (const CellId cell : order) sum += std::abs(map[cell] / twin[static_cast<std::size_t>(cell)] - 1.0);
    return sum / static_cast<double>(order.size());
}

/// A public deck's folder beside the checkout, empty where there is none.
std::filesystem::path publicDecks() {
    for (std::filesystem::path up = std::filesystem::current_path(); up.has_relative_path();
         up = up.parent_path())
        if (std::filesystem::exists(up / "shared/decks")) return up / "shared/decks";
    return {};
}

CellArray<double> keywordValues(const std::filesystem::path& file, const std::string& keyword, CellId count) {
    CellArray<double> values;
    values.assign(count, 0.0);
    std::ifstream text(file);
    for (std::string word; text >> word && word != keyword;) {
    }
    for (CellId cell = 1; cell <= count; ++cell) text >> values[cell];
    return values;
}

samples::Flow heterogeneousFiveSpot(const std::filesystem::path& include) {
    samples::Flow flow = samples::emptyFlow(60, 220, 1, 20.0, 10.0, 2.0);
    const CellId count = flow.grid.NCELLS;
    flow.grid.PERMX = keywordValues(include, "PERMX", count);
    flow.grid.PORO = keywordValues(include, "PORO", count);
    for (CellId cell = 1; cell <= count; ++cell)
        flow.state.PoreVolume[cell] = 20.0 * 10.0 * 2.0 * flow.grid.PORO[cell] / CubicFeetPerBarrel;
    samples::addWell(flow, "INJ", "inj", cellIndex(flow.grid, 30, 110, 1), 30.0);
    for (const auto& [i, j] : {std::pair{1, 1}, {60, 1}, {60, 220}, {1, 220}})
        samples::addWell(flow, "P", "prd", cellIndex(flow.grid, i, j, 1), -7.5);
    samples::solveFlow(flow);
    samples::prepareTracing(flow);
    return flow;
}

TEST(FlowDiagnostics, AgreeWithFiniteVolumesOnTheSameFluxes) {
    const std::filesystem::path decks = publicDecks();
    if (decks.empty()) GTEST_SKIP() << "public decks not beside the checkout";
    const samples::Flow flow = heterogeneousFiveSpot(decks / "waterflood/FIVE1.INC");
    const Diagnostics spot(flow);
    // First order: twice the finer result less the coarser one leaves the smearing of the twin out.
    std::vector<double> twin = samples::finiteVolumeTime(flow, 24);
    const std::vector<double> coarse = samples::finiteVolumeTime(flow, 12);
    for (std::size_t cell = 1; cell < twin.size(); ++cell) twin[cell] = 2.0 * twin[cell] - coarse[cell];
    const double fromInjector = meanDifference(spot.maps.timeFromInjector, twin);
    std::printf("time of flight against finite volumes: mean difference %.4f, %d lines\n", fromInjector,
                spot.lines);
    EXPECT_LT(fromInjector, 0.05);
    // The mean of the lines is nearer to the mean of a cell than their smallest time.
    const double byMeans = meanDifference(Diagnostics(flow, true).maps.timeFromInjector, twin);
    std::printf("means of the lines: mean difference %.4f\n", byMeans);
    EXPECT_LT(byMeans, fromInjector);
}

TEST(FlowDiagnostics, SweepThePoreVolumeOfTheCellsThatLinesVisit) {
    const std::filesystem::path decks = publicDecks();
    if (decks.empty()) GTEST_SKIP() << "public decks not beside the checkout";
    samples::Flow flow = heterogeneousFiveSpot(decks / "waterflood/FIVE1.INC");
    const QuietConsole quiet;
    flow.plan.RequestedLines = 2000;
    countLines(quiet.console, flow.wells, flow.connections, flow.velocity, flow.tags, flow.plan);
    placeLines(flow.grid, flow.wells, {flow.options.gridDimensionality, true}, flow.plan);
    PairTable pairs;
    clearPairs(flow.wells, false, pairs);
    std::vector<char> visited(static_cast<std::size_t>(flow.grid.NCELLS) + 1, 0);
    double swept = 0.0;
    for (const LineStart& start : flow.plan.starts) {
        traceLine(flow.grid, flow.field, start, true, flow.record);
        if (flow.record.status != TraceStatus::ReachedWell) continue;
        const auto last = static_cast<std::size_t>(flow.record.nodeCount);
        swept += flow.plan.LineFlux * flow.record.NodeTof[last];
        for (std::size_t n = 1; n <= last; ++n)
            visited[static_cast<std::size_t>(flow.record.NodeCell[n])] = 1;
        addToPair(flow.wells, {flow.record.injector, flow.record.producer, flow.plan.LineFlux, 0.0}, pairs);
    }
    double volume = 0.0;
    for (CellId cell = 1; cell <= flow.grid.NCELLS; ++cell)
        if (visited[static_cast<std::size_t>(cell)] != 0) volume += flow.state.PoreVolume[cell];
    std::printf("flow times time over the pore volume of visited cells: %.4f\n", swept / volume);
    EXPECT_NEAR(swept, volume, 0.03 * volume);
    // Every producer draws 7.5 rb/day.
    for (int producer = 1; producer <= 4; ++producer)
        EXPECT_NEAR(pairs.allocation[static_cast<std::size_t>(producer) - 1], 7.5, 0.01 * 7.5) << producer;
}

}  // namespace
}  // namespace kvr
