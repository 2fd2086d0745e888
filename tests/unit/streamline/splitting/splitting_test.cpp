#include "streamline/splitting/splitting.hpp"

#include "fluid/table_checks.hpp"
#include "pressure/properties.hpp"
#include "streamline/splitting/splitting_flux.hpp"

#include <cmath>
#include <cstdio>
#include <gtest/gtest.h>
#include <omp.h>
#include <random>
#include <string>

namespace kvr {
namespace {

// --- the exchange over one face ---------------------------------------------------------------------

/// Head of a face to a neighbour whose centre lies this much deeper, ft.
double headOf(double deeper) {
    return deeper / 144.0;
}

SplittingCell waterOilCell(double pcow) {
    SplittingCell cell;
    cell.lambdaW = 0.2;
    cell.lambdaO = 0.3;
    cell.pcow = pcow;
    cell.rhoW = 62.4;
    cell.rhoO = 50.0;
    return cell;
}

ExchangeRates exchange(const SplittingCell& i, const SplittingCell& j, double deeper, bool hasGas = false,
                       const ThroughFlow& through = {}) {
    ExchangeRates out;
    addFaceExchange(i, j, 1.0, headOf(deeper), hasGas, through, out);
    return out;
}

TEST(FaceExchange, SendsWaterDownAgainstOil) {
    const ExchangeRates out = exchange(waterOilCell(0.0), waterOilCell(0.0), 20.0);
    EXPECT_NEAR(out.volumeW, 0.20666667, 0.5e-8);
    EXPECT_NEAR(out.volumeO, -0.20666667, 0.5e-8);
}

TEST(FaceExchange, SendsWaterToTheHigherCapillaryPressure) {
    EXPECT_NEAR(exchange(waterOilCell(1.0), waterOilCell(4.0), 0.0).volumeW, 0.36, 1e-12);
}

TEST(FaceExchange, AddsGravityAndCapillarity) {
    EXPECT_NEAR(exchange(waterOilCell(1.0), waterOilCell(4.0), 20.0).volumeW, 0.56666667, 0.5e-8);
}

TEST(FaceExchange, TakesEachPhaseFromTheCellThatItLeaves) {
    SplittingCell above = waterOilCell(0.0), below = waterOilCell(0.0);
    above.lambdaO = 0.7;  // oil rises from below, water falls from above
    below.lambdaW = 0.9;
    EXPECT_NEAR(exchange(above, below, 20.0).volumeW, 0.20666667, 0.5e-8);
    EXPECT_NEAR(exchange(below, above, -20.0).volumeW, -0.20666667, 0.5e-8);
}

TEST(FaceExchange, TakesSolutionGasAlongWithOilThatGravityTurnsAgainstAFlow) {
    // Water goes down with a flow of 0.1 that has taken 0.2 / 0.5 of water; oil rises against it:
    // d = 12.4 * 20 / 144 = 1.7222222, water 0.2 / 0.5 (0.1 + 0.3 d) = 0.24666667, oil -0.14666667.
    SplittingCell above = waterOilCell(0.0), below = waterOilCell(0.0);
    above.Rs = below.Rs = 0.5;
    ThroughFlow through;
    through.total = 0.1;
    through.water = 0.04;
    const ExchangeRates dry = exchange(above, below, 20.0, false, through);
    const ExchangeRates live = exchange(above, below, 20.0, true, through);
    EXPECT_NEAR(0.04 + live.amount.water, 0.24666667, 1e-8);
    EXPECT_NEAR(live.amount.oil, dry.amount.oil, 1e-15);
    EXPECT_NEAR(live.amount.gas, 0.5 * live.amount.oil, 1e-15);
    EXPECT_EQ(dry.amount.gas, 0.0);
}

TEST(FaceExchange, SendsGasUpAgainstOilWithItsSolutionGas) {
    // Gas 10 lb/ft3 in a cell 20 ft below: G = (10 - 50)(-20)/144 = 5.5555556; mobilities 2 and 0.5 in
    // harmony 0.4; Bg 0.01, oil from above with Bo 1.25 and Rs 150.
    SplittingCell below, above;
    below.lambdaG = 2.0;
    below.rhoG = above.rhoG = 10.0;
    below.rhoO = above.rhoO = 50.0;
    below.inverseBg = 100.0;
    above.lambdaO = 0.5;
    above.inverseBo = 0.8;
    above.Rs = 150.0;
    const ExchangeRates out = exchange(below, above, -20.0, true);
    const double q = 0.4 * 40.0 * 20.0 / 144.0;
    EXPECT_NEAR(out.volumeG, q, 1e-12);
    EXPECT_NEAR(out.amount.oil, -0.8 * q, 1e-12);
    EXPECT_NEAR(out.amount.gas, 100.0 * q - 150.0 * 0.8 * q, 1e-9);
    EXPECT_DOUBLE_EQ(out.volumeW, 0.0);
}

TEST(FaceExchange, LetsGasCapillarityPushGasOutOfTheHigherCell) {
    SplittingCell i, j;
    i.lambdaG = j.lambdaG = 1.0;
    i.lambdaO = j.lambdaO = 1.0;
    i.pcog = 2.0;
    EXPECT_NEAR(exchange(i, j, 0.0, true).volumeG, 0.5 * 2.0, 1e-12);
}

TEST(FaceExchange, IsNoneForAnImmobilePhase) {
    SplittingCell i = waterOilCell(0.0), j = waterOilCell(0.0);
    i.lambdaW = j.lambdaW = 0.0;
    EXPECT_EQ(exchange(i, j, 20.0).volumeW, 0.0);
    i.lambdaO = j.lambdaO = 0.0;
    EXPECT_EQ(exchange(i, j, 20.0).volumeW, 0.0);
}

TEST(FaceExchange, IsTheSameNumberFromBothSides) {
    std::mt19937_64 random(5);
    const auto draw = [&random] { return static_cast<double>(random() >> 11U) / 9007199254740992.0; };
    for (int n = 0; n < 1000; ++n) {
        SplittingCell cells[2];
        for (SplittingCell& c : cells)
            c = {draw(),        draw(),       draw(),       draw(), draw(), 62.0 + draw(),
                 40.0 + draw(), 9.0 + draw(), 1.0 + draw(), draw(), draw(), 100.0 * draw()};
        const double deeper = 40.0 * draw() - 20.0;
        const double total = n % 2 == 0 ? 0.0 : 4.0 * draw() - 2.0;
        const ThroughFlow through{total, total * draw(), 1.0};
        const bool hasGas = n % 4 < 2;
        const ExchangeRates there = exchange(cells[0], cells[1], deeper, hasGas, through);
        const ExchangeRates back =
            exchange(cells[1], cells[0], -deeper, hasGas, {-through.total, -through.water, 1.0});
        ASSERT_EQ(there.amount.water, -back.amount.water);
        ASSERT_EQ(there.amount.oil, -back.amount.oil);
        ASSERT_EQ(there.amount.gas, -back.amount.gas);
    }
}

/// Gas and oil in a cell above one with oil alone, 20 ft apart: d = (10 - 50) 20 / 144 = -5.5555556 psi.
struct GasAboveOil {
    SplittingCell above, below;

    GasAboveOil() {
        for (SplittingCell* cell : {&above, &below}) {
            cell->rhoG = 10.0;
            cell->rhoO = 50.0;
            cell->inverseBg = 100.0;
            cell->inverseBo = 0.8;
            cell->lambdaO = 0.5;
        }
        above.lambdaG = 1.5;
        above.lambdaO = 0.5;
        above.Rs = 150.0;
        below.Rs = 120.0;
    }
};

TEST(FaceExchange, TakesBackTheGasThatAWeakDownwardFlowCannotHaveCarried) {
    // 2 rb/day down. Gas holds against it: 2 - 5.56 * 0.5 < 0, and below there is none, so all of it is oil
    // from above. Transport has moved 1.5 of gas and 0.5 of oil.
    const GasAboveOil cells;
    const ExchangeRates out = exchange(cells.above, cells.below, 20.0, true, {2.0, 0.0});
    EXPECT_NEAR(out.volumeG, -1.5, 1e-12);
    EXPECT_NEAR(out.volumeO, 1.5, 1e-12);
    EXPECT_NEAR(out.amount.oil, 0.8 * 1.5, 1e-12);
    EXPECT_NEAR(out.amount.gas, -1.5 * 100.0 + 150.0 * 0.8 * 1.5, 1e-9);
    // From below it is no gas of its own that leaves.
    EXPECT_EQ(exchange(cells.below, cells.above, -20.0, true, {-2.0, 0.0}).volumeG, 0.0);
}

TEST(FaceExchange, SlowsTheGasThatAStrongDownwardFlowCarries) {
    // 10 rb/day down: both phases from above, gas 0.75 (10 - 0.5 * 5.5555556) instead of 7.5.
    const GasAboveOil cells;
    const ExchangeRates out = exchange(cells.above, cells.below, 20.0, true, {10.0, 0.0});
    EXPECT_NEAR(out.volumeG, -0.75 * 0.5 * 40.0 * 20.0 / 144.0, 1e-12);
    EXPECT_NEAR(out.volumeO, 0.75 * 0.5 * 40.0 * 20.0 / 144.0, 1e-12);
}

TEST(FaceExchange, LetsOilDrainAgainstAnUpwardFlow) {
    // 2 rb/day up out of the lower cell: transport moved 2 of oil. Oil from above comes down against it,
    // 5.5555556 * 1.5 > 2; gas from above would have to fall and does not flow, none comes from below:
    // nothing but the through flow itself, now counted as oil from below.
    const GasAboveOil cells;
    const ThroughPair flux =
        throughFlowFlux(1.0, -2.0, -40.0 * 20.0 / 144.0, {1.5, 0.0, 0.0}, {0.5, 0.5, 0.0});
    EXPECT_FALSE(flux.aFromI);
    EXPECT_FALSE(flux.bFromI);
    EXPECT_EQ(flux.a, 0.0);
    EXPECT_EQ(flux.b, -2.0);
    EXPECT_EQ(exchange(cells.above, cells.below, 20.0, true, {-2.0, 0.0}).volumeG, 0.0);
}

TEST(FaceExchange, IsTheCounterCurrentOneForAVanishingThroughFlow) {
    GasAboveOil cells;
    cells.below.lambdaG = 0.7;
    const ExchangeRates still = exchange(cells.above, cells.below, 20.0, true);
    const ExchangeRates moved = exchange(cells.above, cells.below, 20.0, true, {1e-12, 0.0});
    EXPECT_NEAR(moved.volumeG, still.volumeG, 1e-11);
    EXPECT_NEAR(moved.amount.oil, still.amount.oil, 1e-11);
    EXPECT_NEAR(moved.amount.gas, still.amount.gas, 1e-9);
}

TEST(FaceExchange, LeavesAHorizontalFlowAsTransportMovedIt) {
    const GasAboveOil cells;
    const ExchangeRates out = exchange(cells.above, cells.below, 0.0, true, {3.0, 0.0});
    EXPECT_NEAR(out.amount.gas, 0.0, 1e-12);
    EXPECT_NEAR(out.amount.oil, 0.0, 1e-12);
}

/// Oil beside water that does not flow in a cell above one where both do, 20 ft apart: d = 12.4 * 20 / 144 =
/// 1.7222222 psi.
struct OilAboveWater {
    SplittingCell above, below;

    OilAboveWater() {
        above = below = waterOilCell(0.0);
        above.lambdaW = 0.0;
        below.lambdaW = 0.5;
    }
};

TEST(FaceExchange, KeepsTheWaterThatAWeakUpwardFlowCannotHaveCarried) {
    // 0.1 rb/day up: against 1.7222222 * 0.3 water cannot rise, and none falls, so all of it is oil.
    // Transport has moved 0.0625 of water.
    const OilAboveWater cells;
    const ExchangeRates out = exchange(cells.below, cells.above, -20.0, false, {0.1, 0.0625});
    EXPECT_NEAR(out.amount.water, -0.0625, 1e-12);
    EXPECT_NEAR(out.amount.oil, 0.0625, 1e-12);
    EXPECT_EQ(out.volumeO, 0.0);  // what is only taken back limits no substep
    const ExchangeRates back = exchange(cells.above, cells.below, 20.0, false, {-0.1, -0.0625});
    EXPECT_EQ(back.amount.water, -out.amount.water);
    EXPECT_EQ(back.volumeW, 0.0);
}

TEST(FaceExchange, TakesBackNoMoreWaterThanTransportHasBrought) {
    const OilAboveWater cells;
    const ExchangeRates out = exchange(cells.below, cells.above, -20.0, false, {0.1, 0.02});
    EXPECT_NEAR(out.amount.water, -0.02, 1e-12);
    EXPECT_NEAR(out.amount.oil, 0.02, 1e-12);
}

TEST(FaceExchange, TakesBackBehindTheTransportWhatItHasMovedInAllOfTheStep) {
    const OilAboveWater cells;
    EXPECT_NEAR(exchange(cells.below, cells.above, -20.0, false, {0.1, 0.0625, 2.0}).amount.water, -0.125,
                1e-12);
    EXPECT_EQ(exchange(cells.below, cells.above, -20.0, false, {0.1, 0.0, 0.0}).amount.water, 0.0);
}

TEST(FaceExchange, SlowsTheWaterThatAStrongUpwardFlowCarries) {
    // 5 rb/day up through equal cells: water 0.4 (5 - 0.3 * 1.7222222) instead of 2.
    const SplittingCell cell = waterOilCell(0.0);
    const ExchangeRates out = exchange(cell, cell, -20.0, false, {5.0, 2.0});
    EXPECT_NEAR(out.amount.water, -0.4 * 0.3 * 12.4 * 20.0 / 144.0, 1e-12);
    EXPECT_NEAR(out.amount.oil, 0.4 * 0.3 * 12.4 * 20.0 / 144.0, 1e-12);
}

TEST(FaceExchange, LeavesAFlowAsTransportHasMovedItWithGravity) {
    const SplittingCell cell = waterOilCell(0.0);
    ThroughFlow through{5.0, 2.0};
    through.buoyant = true;
    for (const double flow : {5.0, -5.0}) {
        through.total = flow;
        const ExchangeRates out = exchange(cell, cell, -20.0, false, through);
        EXPECT_NEAR(out.amount.water, 0.0, 1e-12);
        EXPECT_NEAR(out.amount.oil, 0.0, 1e-12);
    }
}

TEST(FaceExchange, SendsAgainstAFlowWithGravityOnlyWhatGoesBeyondIt) {
    // 0.1 rb/day up: water would fall by 0.4 (0.1 - 0.3 * 1.7222222), were there no flow to go with.
    const SplittingCell cell = waterOilCell(0.0);
    ThroughFlow through{0.1, 0.0};
    through.buoyant = true;
    const ExchangeRates out = exchange(cell, cell, -20.0, false, through);
    EXPECT_NEAR(out.amount.water, 0.4 * (0.1 - 0.3 * 12.4 * 20.0 / 144.0), 1e-12);
    EXPECT_NEAR(out.volumeW, out.amount.water, 1e-12);
}

TEST(FaceExchange, LeavesAHorizontalFlowOfWaterAsTransportMovedIt) {
    const OilAboveWater cells;
    const ExchangeRates out = exchange(cells.below, cells.above, 0.0, false, {3.0, 1.0});
    EXPECT_NEAR(out.amount.water, 0.0, 1e-12);
    EXPECT_NEAR(out.amount.oil, 0.0, 1e-12);
}

// --- the stage --------------------------------------------------------------------------------------

/// Water and oil that hardly notice pressure: B 1, viscosities 1 cp, 62.4 and 50 lb/ft3. At Sw 0.5 the
/// mobilities are 0.2 and 0.3; Pcow is 6 psi at Sw 0 and falls to 0 at Sw 1.
FluidTables waterOilTables() {
    FluidTables tables;
    tables.OilPressure = {1000.0, 5000.0};
    tables.OilFvf = {1.0, 1.0};
    tables.OilViscosity = {1.0, 1.0};
    tables.GasPressure = {1000.0, 5000.0};
    tables.GasFvf = {0.01, 0.01};
    tables.GasViscosity = {0.02, 0.02};
    tables.waterFvf = 1.0;
    tables.waterViscosity = 1.0;
    tables.referencePressureWater = 3000.0;
    tables.oilDensity = 50.0;
    tables.waterDensity = 62.4;
    tables.gasDensity = 0.05;
    SaturationTable table;
    table.SwAxis = {0.0, 0.5, 1.0};
    table.Krw = {0.0, 0.2, 1.0};
    table.Krow = {1.0, 0.3, 0.0};
    table.Pcow = {6.0, 3.0, 0.0};
    table.SgAxis = {0.0, 1.0};
    table.Krg = {0.0, 1.0};
    table.Krog = {1.0, 0.0};
    table.Pcog = {0.0, 0.0};
    tables.regions.push_back(table);
    finishTables(tables);
    return tables;
}

/// A box of cells 20 ft high with pore volumes of 1000 and transmissibilities of 1, at 3000 psia.
struct SplittingBox {
    Simulation simulation;

    SplittingBox(int nx, int ny, int nz) {
        simulation.console = {std::tmpfile(), std::tmpfile(), nullptr};
        simulation.options.cflGravity = 0.8;
        simulation.options.minCflgStep = 0.01;
        simulation.options.lineGravity = true;
        simulation.fluids = waterOilTables();
        GridModel& grid = simulation.grid;
        grid.NX = nx;
        grid.NY = ny;
        grid.NZ = nz;
        grid.NCELLS = nx * ny * nz;
        grid.Active.assign(grid.NCELLS, 1);
        grid.SATNUM.assign(grid.NCELLS, 1);
        grid.JFactor.assign(grid.NCELLS, 1.0);
        grid.PORO.assign(grid.NCELLS, 1.0);
        grid.NTG.assign(grid.NCELLS, 1.0);
        grid.BulkVolume.assign(grid.NCELLS, 1000.0);
        connect();
        fill();
    }
    ~SplittingBox() {
        std::fclose(simulation.console.screen);
        std::fclose(simulation.console.log);
    }
    SplittingBox(const SplittingBox&) = delete;
    SplittingBox& operator=(const SplittingBox&) = delete;

    void connect() {
        GridModel& grid = simulation.grid;
        ConnectionTable& c = simulation.connections;
        c.Neighbour.assign(grid.NCELLS, 6, 0);
        c.Trans.assign(grid.NCELLS, 6, 0.0);
        c.DepthDiff.assign(grid.NCELLS, 6, 0.0);
        const auto join = [&c](CellId low, CellId high, int highFace, double deeper) {
            c.Neighbour(low, highFace) = high;
            c.Neighbour(high, highFace - 1) = low;
            c.Trans(low, highFace) = c.Trans(high, highFace - 1) = 1.0;
            c.DepthDiff(low, highFace) = deeper;
            c.DepthDiff(high, highFace - 1) = -deeper;
        };
        for (int k = 1; k <= grid.NZ; ++k) {
            for (int j = 1; j <= grid.NY; ++j) {
                for (int i = 1; i <= grid.NX; ++i) {
                    const CellId cell = cellIndex(grid, i, j, k);
                    if (i < grid.NX) join(cell, cell + 1, 2, 0.0);
                    if (j < grid.NY) join(cell, cell + grid.NX, 4, 0.0);
                    if (k < grid.NZ) join(cell, cell + grid.NX * grid.NY, 6, 20.0);
                }
            }
        }
    }

    void fill() {
        CellState& state = simulation.state;
        allocateCellState(simulation.grid.NCELLS, 0, state);
        for (CellId cell = 1; cell <= simulation.grid.NCELLS; ++cell) {
            state.Pressure[cell] = 3000.0;
            state.PoreVolume[cell] = 1000.0;
            state.Bg[cell] = 0.01;
            state.MuG[cell] = 0.02;
            state.RhoW[cell] = 62.4;
            state.RhoO[cell] = 50.0;
            state.RhoG[cell] = 5.0;
            setWater(cell, 0.5);
        }
    }
    void setWater(CellId cell, double sw) {
        simulation.state.Sw[cell] = sw;
        simulation.state.So[cell] = 1.0 - sw;
    }
    double water(CellId cell) { return simulation.state.Sw[cell]; }
    double waterVolume() {
        double sum = 0.0;
        for (CellId cell = 1; cell <= simulation.grid.NCELLS; ++cell)
            sum += water(cell) * simulation.state.PoreVolume[cell];
        return sum;
    }
    void run(double days) {
        simulation.clock.workDt = days;
        OSPLIT_GRVANDPC_GENERAL2(simulation);
    }
    static std::string textOf(std::FILE* file) {
        std::string text;
        std::rewind(file);
        for (int c = std::fgetc(file); c != EOF; c = std::fgetc(file)) text.push_back(static_cast<char>(c));
        return text;
    }
    /// Scattered water saturations.
    void scatter(std::uint64_t seed) {
        std::mt19937_64 random(seed);
        for (CellId cell = 1; cell <= simulation.grid.NCELLS; ++cell)
            setWater(cell, 0.1 + 0.8 * static_cast<double>(random() >> 11U) / 9007199254740992.0);
    }
};

TEST(Splitting, MovesWaterDownAtTheRateOfTheFace) {
    SplittingBox box(1, 1, 2);
    box.run(1.0);
    EXPECT_NEAR((0.5 - box.water(1)) * 1000.0, 0.20666667, 1e-8);
    EXPECT_NEAR((box.water(2) - 0.5) * 1000.0, 0.20666667, 1e-8);
}

TEST(Splitting, ExchangesByCapillarityAcrossALevelFace) {
    SplittingBox box(2, 1, 1);
    box.simulation.options.lineCapillary = true;
    box.simulation.grid.JFactor[2] = 2.0;  // Pcow 3 and 6 psi at Sw 0.5
    box.run(1.0);
    EXPECT_NEAR((0.5 - box.water(1)) * 1000.0, 0.36, 1e-8);
}

TEST(Splitting, AddsCapillarityToGravity) {
    SplittingBox box(1, 1, 2);
    box.simulation.options.lineCapillary = true;
    box.simulation.grid.JFactor[2] = 2.0;
    box.run(1.0);
    EXPECT_NEAR((0.5 - box.water(1)) * 1000.0, 0.56666667, 1e-8);
}

TEST(Splitting, EndsWithTheWaterAtTheBottom) {
    SplittingBox box(1, 1, 2);
    box.setWater(1, 0.7);
    box.setWater(2, 0.3);
    box.run(30000.0);
    EXPECT_NEAR(box.water(1), 0.0, 1e-2);
    EXPECT_NEAR(box.water(2), 1.0, 1e-2);
    EXPECT_NEAR(box.simulation.state.So[1] - 0.3, 0.7 - box.simulation.state.So[2], 1e-12);
}

TEST(Splitting, ConservesWaterWithGravityAndCapillarity) {
    SplittingBox box(4, 3, 5);
    box.simulation.options.lineCapillary = true;
    box.scatter(17);
    const double before = box.waterVolume();
    const double first = box.water(30);
    box.run(3000.0);
    EXPECT_GT(std::abs(box.water(30) - first), 1e-3);
    EXPECT_NEAR(box.waterVolume() / before, 1.0, 1e-12);
}

TEST(Splitting, LosesNothingWhenSubstepsAreLimitedByWhatIsThere) {
    SplittingBox box(3, 1, 4);
    for (double& t : box.simulation.connections.Trans.slots) t *= 2000.0;
    box.scatter(3);
    const double before = box.waterVolume();
    box.run(30.0);
    EXPECT_NEAR(box.waterVolume() / before, 1.0, 1e-12);
}

TEST(Splitting, ConservesOilAndGasWhileGasRises) {
    SplittingBox box(2, 1, 4);
    box.simulation.fluids.hasGas = true;
    CellState& state = box.simulation.state;
    for (CellId cell = 1; cell <= 8; ++cell) {
        state.Sw[cell] = 0.2;
        state.Sg[cell] = 0.05 * static_cast<double>(cell);
        state.So[cell] = 1.0 - state.Sw[cell] - state.Sg[cell];
    }
    double gasBefore = 0.0, oilBefore = 0.0, gas = 0.0, oil = 0.0;
    for (CellId cell = 1; cell <= 8; ++cell) gasBefore += state.Sg[cell], oilBefore += state.So[cell];
    box.run(200.0);
    for (CellId cell = 1; cell <= 8; ++cell) gas += state.Sg[cell], oil += state.So[cell];
    EXPECT_GT(state.Sg[1], 0.3);
    EXPECT_LT(state.Sg[8], 0.1);
    EXPECT_NEAR(gas / gasBefore, 1.0, 1e-12);
    EXPECT_NEAR(oil / oilBefore, 1.0, 1e-12);
}

TEST(Splitting, LeavesCapillaryGravityEquilibriumAlone) {
    // 12.4 lb/ft3 over 20 ft are 1.7222 psi, which Pcow = 6 (1 - Sw) balances with 0.28704 in Sw.
    SplittingBox box(1, 1, 3);
    box.simulation.options.lineCapillary = true;
    const double step = 12.4 * 20.0 / 144.0 / 6.0;
    for (CellId cell = 1; cell <= 3; ++cell) box.setWater(cell, 0.2 + step * (cell - 1));
    box.run(1000.0);
    for (CellId cell = 1; cell <= 3; ++cell) EXPECT_NEAR(box.water(cell), 0.2 + step * (cell - 1), 1e-12);
}

TEST(Splitting, ChangesNothingWithoutGravityAndCapillarity) {
    SplittingBox box(3, 2, 2);
    box.simulation.options.lineGravity = false;
    box.scatter(9);
    const std::vector<double> before = box.simulation.state.Sw.slots;
    box.run(250.0);
    EXPECT_EQ(box.simulation.state.Sw.slots, before);
}

TEST(Splitting, VisitsOnlyVerticalFacesWhereTheBedIsFlat) {
    SplittingBox box(2, 1, 1);
    box.simulation.connections.DepthDiff(1, 2) = 20.0;
    box.simulation.connections.DepthDiff(2, 1) = -20.0;
    box.simulation.flatBedValue = 0.0;  // found flat on an earlier entry
    box.run(10.0);
    EXPECT_EQ(box.water(1), 0.5);
    box.simulation.flatBedValue = -1.0;  // unset: looked up now
    box.run(10.0);
    EXPECT_EQ(box.simulation.flatBedValue, 20.0);
    EXPECT_LT(box.water(1), 0.4999);
}

TEST(Splitting, VisitsLateralFacesOfAFlatBedForCapillarity) {
    SplittingBox box(2, 1, 1);
    box.simulation.options.lineCapillary = true;
    box.setWater(1, 0.8);
    box.run(10.0);
    EXPECT_EQ(box.simulation.flatBedValue, 0.0);
    EXPECT_LT(box.water(1), 0.7999);
}

/// Two cells beside each other on a slope, with the velocity given on every face of both.
void setSlope(SplittingBox& box, double vx, double vy) {
    box.simulation.connections.DepthDiff(1, 2) = 20.0;
    box.simulation.connections.DepthDiff(2, 1) = -20.0;
    box.simulation.options.orthogonalProjection = true;
    box.simulation.velocity.CellFaceVelocity.assign(2, 6, 0.0);
    box.simulation.mapping.CellVisited.assign(2, 1);
    for (CellId cell = 1; cell <= 2; ++cell) {
        for (int face = 1; face <= 2; ++face) box.simulation.velocity.CellFaceVelocity(cell, face) = vx;
        for (int face = 3; face <= 4; ++face) box.simulation.velocity.CellFaceVelocity(cell, face) = vy;
    }
}

TEST(Splitting, ProjectsAwayTheFluxAlongTheStreamline) {
    SplittingBox box(2, 1, 1);
    setSlope(box, 1.5, 0.0);
    box.run(1.0);
    EXPECT_EQ(box.water(1), 0.5);
}

TEST(Splitting, ProjectsEachAxisByItsOwnVelocity) {
    // One pair of cells along each axis, 20 ft apart in depth: of a velocity (1, 2, 3) the squares are
    // 1, 4 and 9 of 14.
    const int counts[3][3] = {{2, 1, 1}, {1, 2, 1}, {1, 1, 2}};
    const double left[3] = {13.0 / 14.0, 10.0 / 14.0, 5.0 / 14.0};
    for (int axis = 0; axis < 3; ++axis) {
        SplittingBox box(counts[axis][0], counts[axis][1], counts[axis][2]);
        setSlope(box, 1.0, 2.0);
        const int high = 2 * axis + 2;
        box.simulation.connections.DepthDiff.assign(2, 6, 0.0);
        box.simulation.connections.DepthDiff(1, high) = 20.0;
        box.simulation.connections.DepthDiff(2, high - 1) = -20.0;
        for (CellId cell = 1; cell <= 2; ++cell)
            for (int face = 5; face <= 6; ++face) box.simulation.velocity.CellFaceVelocity(cell, face) = 3.0;
        box.run(1.0);
        EXPECT_NEAR((0.5 - box.water(1)) * 1000.0, left[axis] * 0.20666667, 1e-8) << axis;
    }
}

TEST(Splitting, KeepsTheShareAcrossTheStreamline) {
    SplittingBox box(2, 1, 1);
    setSlope(box, 1.0, 2.0);  // 1 - 1/5 is left
    box.run(1.0);
    EXPECT_NEAR((0.5 - box.water(1)) * 1000.0, 0.8 * 0.20666667, 1e-8);
}

TEST(Splitting, ProjectsOnlyInCellsOnALine) {
    SplittingBox box(2, 1, 1);
    setSlope(box, 1.5, 0.0);
    box.simulation.mapping.CellVisited.assign(2, 0);
    box.run(1.0);
    EXPECT_NEAR((0.5 - box.water(1)) * 1000.0, 0.20666667, 1e-8);
}

TEST(Splitting, ProjectsNothingOutOfAStandingField) {
    SplittingBox box(2, 1, 1);
    setSlope(box, 0.0, 0.0);
    box.run(1.0);
    EXPECT_NEAR((0.5 - box.water(1)) * 1000.0, 0.20666667, 1e-8);
}

TEST(Splitting, ClearsTheFlagsOfVisitedCells) {
    SplittingBox box(2, 1, 1);
    box.simulation.mapping.CellVisited.assign(2, 1);
    box.run(1.0);
    EXPECT_EQ(box.simulation.mapping.CellVisited[1], 0);
    EXPECT_EQ(box.simulation.mapping.CellVisited[2], 0);
}

TEST(Splitting, PassesByInactiveCellsAndCellsWithoutPoreVolume) {
    SplittingBox box(1, 1, 4);
    box.simulation.grid.Active[2] = 0;
    box.simulation.state.PoreVolume[3] = 0.0;
    box.run(10.0);
    for (CellId cell = 1; cell <= 4; ++cell) EXPECT_EQ(box.water(cell), 0.5);
}

TEST(Splitting, TakesTheFlowUnitOfTheDeck) {
    SplittingBox box(1, 1, 2);
    box.simulation.units.FlowUnit = 5.614583;
    box.run(1.0);
    EXPECT_NEAR((0.5 - box.water(1)) * 1000.0, 5.614583 * 0.206666666667, 1e-8);
}

TEST(Splitting, GivesTheSameBitsForAnyNumberOfThreads) {
    const int threads = omp_get_max_threads();
    std::vector<double> results[3];
    for (int n = 1; n <= 3; ++n) {
        omp_set_num_threads(n);
        SplittingBox box(12, 10, 10);
        box.simulation.options.lineCapillary = true;
        box.scatter(21);
        box.run(1000.0);
        results[n - 1] = box.simulation.state.Sw.slots;
    }
    omp_set_num_threads(threads);
    EXPECT_EQ(results[0], results[1]);
    EXPECT_EQ(results[0], results[2]);
}

TEST(Splitting, SpeaksOnScreenAndLog) {
    SplittingBox box(1, 1, 2);
    box.simulation.options.lineGravity = false;
    box.run(5000.0);  // fifty substeps of 100 days
    const std::string screen = SplittingBox::textOf(box.simulation.console.screen);
    EXPECT_EQ(screen.find("-- Saturation Calculation: Grv&Pc By Osplit --\n"), 0U);
    EXPECT_NE(screen.find("\n Pc_Grv Finished -> 100% ITE 50 STEP 100\n"), std::string::npos);
    EXPECT_NE(screen.find("\ntime elapsed Capillary&Gravity : "), std::string::npos);
    EXPECT_EQ(SplittingBox::textOf(box.simulation.console.log), screen);
}

// Two cells, one above the other, exchange 0.2066... a day (above) as long as their saturations hardly
// change.
TEST(Splitting, GoesInHalvesAboutTheTransportWhereAmountsAreHandedOn) {
    SplittingBox box(1, 1, 2);
    Simulation& s = box.simulation;
    sizeAmounts(2, s.pressure.carried);
    ASSERT_TRUE(exchangesAhead(s));
    s.clock.workDt = 1.0;
    exchangeAheadOfTransport(s);
    EXPECT_NEAR((0.5 - box.water(1)) * 1000.0, 0.5 * 0.20666667, 2e-4);
    OSPLIT_GRVANDPC_GENERAL2(s);
    EXPECT_NEAR((0.5 - box.water(1)) * 1000.0, 0.20666667, 4e-4);
    EXPECT_NEAR(s.pressure.exchanged.water[1], (box.water(1) - 0.5) * 1000.0, 1e-9) << "of the whole step";
    EXPECT_NEAR(s.pressure.exchanged.water[2], (box.water(2) - 0.5) * 1000.0, 1e-9);
}

// Up through the face go 0.6 a day of the lower cell: with gravity 0.4 (0.6 - 0.3 1.7222) = 0.0333 of it
// water, and so has transport moved it.
TEST(Splitting, TakesNothingBackOfWhatTransportHasMovedWithGravity) {
    SplittingBox box(1, 1, 2);
    Simulation& s = box.simulation;
    sizeAmounts(2, s.pressure.carried);
    box.setWater(1, 0.02);
    s.velocity.CellFaceFlux.assign(2, 6, 0.0);
    s.velocity.CellFaceFlux(1, 6) = s.velocity.CellFaceFlux(2, 5) = -0.6;
    s.clock.workDt = 1000.0;
    exchangeAheadOfTransport(s);
    EXPECT_NEAR(box.water(1), 0.02, 1e-12) << "nothing goes against the flow";
    s.pressure.waterMoved.assign(2, 3, 0.0);
    s.pressure.waterMoved(1, 3) = -0.0333;
    OSPLIT_GRVANDPC_GENERAL2(s);
    EXPECT_NEAR(box.water(1), 0.02, 1e-12);
    EXPECT_NEAR(box.water(1) + box.water(2), 0.52, 1e-12);
}

TEST(Splitting, AsksNoCellForMoreThanItHoldsHoweverLongASubstep) {
    SplittingBox box(1, 1, 2);
    Simulation& s = box.simulation;
    box.setWater(1, 0.3);
    for (double& trans : s.connections.Trans.slots) trans *= 100.0;
    s.options.minCflgStep = 100.0;
    s.clock.workDt = 100.0;
    OSPLIT_GRVANDPC_GENERAL2(s);
    EXPECT_LT(box.water(1), 0.3);
    EXPECT_NEAR(box.water(1) + box.water(2), 0.8, 1e-12);
}

TEST(Splitting, GoesBehindTheTransportAsAWholeInAllOtherRuns) {
    SplittingBox box(1, 1, 2);
    Simulation& s = box.simulation;
    s.clock.workDt = 1.0;
    exchangeAheadOfTransport(s);
    EXPECT_EQ(box.water(1), 0.5) << "no amounts are handed on";
    sizeAmounts(2, s.pressure.carried);
    s.options.orthogonalProjection = true;
    exchangeAheadOfTransport(s);
    EXPECT_EQ(box.water(1), 0.5) << "lines take gravity along";
}

TEST(SplittingSubstep, IsAHundredDaysWithoutExchange) {
    RunOptions options;
    options.cflGravity = 0.8;
    options.minCflgStep = 0.01;
    EXPECT_EQ(splittingSubstep(options, 0.0, 250.0), 100.0);
    EXPECT_EQ(splittingSubstep(options, 0.0, 150.0), 100.0);
    EXPECT_EQ(splittingSubstep(options, 0.0, 50.0), 50.0);
}

TEST(SplittingSubstep, FollowsTheRateDownToTheFloorAndNeverPassesTheEnd) {
    RunOptions options;
    options.cflGravity = 0.8;
    options.minCflgStep = 0.01;
    EXPECT_DOUBLE_EQ(splittingSubstep(options, 0.1, 250.0), 8.0);
    EXPECT_EQ(splittingSubstep(options, 1e6, 250.0), 0.01);
    EXPECT_EQ(splittingSubstep(options, 1e6, 0.004), 0.004);
    EXPECT_EQ(splittingSubstep(options, 1e-6, 250.0), 100.0);
}

}  // namespace
}  // namespace kvr
