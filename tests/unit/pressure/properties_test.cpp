#include "pressure/properties.hpp"

#include "fluid/black_oil.hpp"
#include "unit/pressure/small_run.hpp"
#include "unit/quiet_console.hpp"

#include <gtest/gtest.h>

using namespace kvr;

namespace {

constexpr double Eps = 1e-8;

/// One cell of the light oil; flash amounts are those of its state.
struct OneCell {
    OneCell(double p, double pb, double sw, double so, double sg) {
        sample::makeRun(1, 1, 1, samples::lightOil(), s);
        s.state.Pressure[1] = p;
        s.state.Pb[1] = pb;
        s.state.Rs[1] = SolutionRs(s.fluids, pb);
        s.state.Sw[1] = sw;
        s.state.So[1] = so;
        s.state.Sg[1] = sg;
        refreshProperties(s.grid, s.fluids, s.state);
        measureAmounts(s.grid, s.state, amounts);
        for (CellArray<double>* array : {&amounts.water, &amounts.oil, &amounts.gas})
            (*array)[1] /= s.state.PoreVolume[1];
    }

    void update(double p, const Console& console = Console{nullptr, nullptr, nullptr}) {
        s.state.Pressure[1] = p;
        UpdateProperties(console, s.options, s.grid, s.fluids, amounts, s.state);
    }

    Simulation s;
    CellAmounts amounts;
};

}  // namespace

TEST(UpdateProperties, FreesTheGasThatALowerPressureCannotHold) {
    OneCell cell(4014.7, 4014.7, 0.2, 0.8, 0.0);
    cell.s.fluids.waterCompressibility = 0.0;
    refreshProperties(cell.s.grid, cell.s.fluids, cell.s.state);
    cell.amounts.water[1] = 0.2 / cell.s.state.Bw[1];
    cell.update(3514.7);
    const CellState& state = cell.s.state;
    const double sum = 1.042426;  // before the scaling, So .768098 and Sg .074328
    EXPECT_NEAR(state.So[1], 0.768098 / sum, 1e-6);
    EXPECT_NEAR(state.Sg[1], 0.074328 / sum, 1e-6);
    EXPECT_NEAR(state.Rs[1], 195.918379, 1e-6);
    EXPECT_EQ(state.Pb[1], 3514.7);
    // the gas is still all there in proportion to the oil
    const ConservedAmounts shown = shownAmounts(state, 1);
    EXPECT_NEAR(shown.gas / shown.oil, cell.amounts.gas[1] / cell.amounts.oil[1], 1e-9);
}

TEST(UpdateProperties, LetsMobilitiesFollowTheViscositiesAloneWhileRelativePermeabilitiesAreHeld) {
    OneCell cell(4014.7, 4014.7, 0.2, 0.8, 0.0);
    const double kro = cell.s.state.KroCell[1], krg = cell.s.state.KrgCell[1];
    cell.s.state.Pressure[1] = 3514.7;
    UpdateProperties(cell.s.console, cell.s.options, cell.s.grid, cell.s.fluids, cell.amounts, cell.s.state,
                     true);
    const CellState& state = cell.s.state;
    ASSERT_GT(state.Sg[1], 0.05) << "the flash itself goes on";
    EXPECT_EQ(state.KroCell[1], kro);
    EXPECT_EQ(state.KrgCell[1], krg);
    EXPECT_EQ(state.LambdaO[1], kro / state.MuO[1]);
    cell.update(3514.7);
    refreshProperties(cell.s.grid, cell.s.fluids, cell.s.state);
    EXPECT_LT(state.KroCell[1], kro);
}

TEST(UpdateProperties, DissolvesAllGasAboveTheNewBubblePoint) {
    OneCell cell(3500.0, 3500.0, 0.2, 0.79, 0.01);
    cell.update(4800.0);
    const CellState& state = cell.s.state;
    EXPECT_EQ(state.Sg[1], 0.0);
    const double rs = cell.amounts.gas[1] / cell.amounts.oil[1];
    EXPECT_NEAR(state.Rs[1], rs, Eps * rs);
    EXPECT_NEAR(state.Pb[1], BubblePoint(cell.s.fluids, rs), Eps * 4000.0);
    EXPECT_GT(state.Pb[1], 3500.0);
    EXPECT_LT(state.Pb[1], 4800.0);
    EXPECT_NEAR(state.Sw[1] + state.So[1], 1.0, 1e-15);
}

TEST(UpdateProperties, EndsAtTheSameStateWhateverTheWay) {
    OneCell direct(4014.7, 4014.7, 0.2, 0.8, 0.0);
    OneCell detour(4014.7, 4014.7, 0.2, 0.8, 0.0);
    direct.update(3514.7);
    for (const double p : {3000.0, 4500.0, 2500.0, 3514.7}) detour.update(p);
    EXPECT_NEAR(detour.s.state.Sg[1], direct.s.state.Sg[1], 1e-14);
    EXPECT_NEAR(detour.s.state.So[1], direct.s.state.So[1], 1e-14);
}

TEST(UpdateProperties, LeavesAnUnderSaturatedCellAlone) {
    OneCell cell(4800.0, 4014.7, 0.2, 0.8, 0.0);
    cell.update(4500.0);
    EXPECT_EQ(cell.s.state.So[1], 0.8);
    EXPECT_EQ(cell.s.state.Pb[1], 4014.7);
    EXPECT_NEAR(cell.s.state.Bo[1], OilFvf(cell.s.fluids, 4500.0, 4014.7), 1e-15);
}

TEST(UpdateProperties, TakesACellWithoutOilToTheLowestBubblePoint) {
    OneCell cell(3500.0, 3500.0, 0.3, 0.0, 0.7);
    cell.update(3400.0);
    EXPECT_EQ(cell.s.state.So[1], 0.0);
    EXPECT_EQ(cell.s.state.Pb[1], BubblePoint(cell.s.fluids, cell.s.fluids.OilRs.front()));
}

TEST(UpdateProperties, CapsExcessiveRsAndSaysSoOnlyWithTheDebugFlag) {
    for (const bool debug : {false, true}) {
        QuietConsole quiet;
        Simulation s;
        FluidTables tables = samples::lightOil();
        tables.hasGas = false;
        sample::makeRun(1, 1, 1, tables, s);
        s.options.debugOutput = debug;
        s.state.Pressure[1] = 3000.0;
        s.state.Pb[1] = 2500.0;
        s.state.Rs[1] = 300.0;
        refreshProperties(s.grid, s.fluids, s.state);
        UpdateProperties(quiet.console, s.options, s.grid, s.fluids, {}, s.state);
        const double limit = SolutionRs(s.fluids, 3000.0);
        EXPECT_EQ(s.state.Rs[1], limit);
        EXPECT_NEAR(s.state.Pb[1], 3000.0, 1e-6);
        const std::string expected =
            debug ? "Exceed Solution GOR detected at Matrix pre.. oil pressure value.. @Grid 1\n" : "";
        EXPECT_EQ(quiet.logText(), expected);
        EXPECT_EQ(quiet.screenText(), "");
    }
}

TEST(UpdateProperties, SetsANegativeRsToNothing) {
    QuietConsole quiet;
    Simulation s;
    FluidTables tables = samples::lightOil();
    tables.hasGas = false;
    sample::makeRun(1, 1, 1, tables, s);
    s.options.debugOutput = true;
    s.state.Rs[1] = -1.0;
    refreshProperties(s.grid, s.fluids, s.state);
    UpdateProperties(quiet.console, s.options, s.grid, s.fluids, {}, s.state);
    EXPECT_EQ(s.state.Rs[1], 0.0);
    EXPECT_EQ(s.state.Pb[1], BubblePoint(s.fluids, 0.0));
    EXPECT_EQ(quiet.logText(), "Negative Solution GOR detected at matrix.pre. set zero.. @Grid 1\n");
}

TEST(UpdateProperties, HoldsSaturationsWithinTheEndPointsWhenAsked) {
    Simulation s;
    sample::makeRun(1, 1, 1, sample::waterAndOil(0.0), s);
    s.options.keepIrreducibleSaturation = true;
    s.state.Sw[1] = 0.1;
    s.state.So[1] = 0.9;
    refreshProperties(s.grid, s.fluids, s.state);
    UpdateProperties(s.console, s.options, s.grid, s.fluids, {}, s.state);
    EXPECT_NEAR(s.state.Sw[1], 0.2, 1e-15);
    EXPECT_NEAR(s.state.So[1], 0.8, 1e-15);
    EXPECT_EQ(s.state.KrwCell[1], 0.0);
    EXPECT_NEAR(s.state.KroCell[1], 0.9, 1e-15);
}

TEST(UpdateProperties, PutsNoGasIntoARunWithoutIt) {
    FluidTables tables = sample::waterAndOil(0.0);
    tables.regions[0].CriticalSg = 0.05;
    Simulation s;
    sample::makeRun(1, 1, 1, tables, s);
    s.options.keepIrreducibleSaturation = true;
    s.state.Sw[1] = 0.4;
    s.state.So[1] = 0.6;
    refreshProperties(s.grid, s.fluids, s.state);
    UpdateProperties(s.console, s.options, s.grid, s.fluids, {}, s.state);
    EXPECT_EQ(s.state.Sg[1], 0.0);
    EXPECT_NEAR(s.state.Sw[1], 0.4, 1e-15);
}

TEST(RefreshProperties, TakesTheBubblePointsPropertiesWhereTheTableEndsThere) {
    FluidTables tables;
    samples::fillOdehPvt(tables);
    for (Column* column : {&tables.OilRs, &tables.OilPressure, &tables.OilFvf, &tables.OilViscosity})
        column->pop_back();
    tables.UnderRows = 0;
    tables.regions.push_back(samples::fourRowRegion());
    finishTables(tables);
    Simulation s;
    sample::makeRun(1, 1, 1, tables, s);
    s.state.Pressure[1] = 4500.0;
    s.state.Pb[1] = 4014.7;
    refreshProperties(s.grid, s.fluids, s.state);
    EXPECT_NEAR(s.state.Bo[1], 1.695, 1e-12);
    EXPECT_NEAR(s.state.MuO[1], 0.51, 1e-12);
}

TEST(RefreshProperties, GivesPhasePressuresByTheCapillaryCurvesAndTheirScale) {
    FluidTables tables = sample::waterAndOil(0.0);
    tables.regions[0].Pcow = {4.0, 2.0, 1.0, 0.0};
    finishTables(tables);
    Simulation s;
    sample::makeRun(1, 1, 1, tables, s);
    s.state.Sw[1] = 0.4;
    s.grid.JFactor[1] = 1.5;
    refreshProperties(s.grid, s.fluids, s.state);
    EXPECT_NEAR(s.state.PressureW[1], 2997.0, 1e-12);
    EXPECT_EQ(s.state.PressureG[1], 3000.0);
}

TEST(RefreshProperties, TurnsANumberOfTheJFunctionIntoAPressure) {
    FluidTables tables = sample::waterAndOil(0.0);
    tables.regions[0].Pcow = {1.0, 0.5, 0.25, 0.0};
    finishTables(tables);
    Simulation s;
    s.options.useJFunction = true;
    s.options.surfaceTension = 30.0;
    sample::makeRun(1, 1, 1, tables, s);  // porosity 0.2, 100 md
    s.state.Sw[1] = 0.4;
    refreshProperties(s.grid, s.fluids, s.state);
    EXPECT_NEAR(s.state.Pressure[1] - s.state.PressureW[1], 3.097030044, 1e-8);
}

TEST(RefreshProperties, TakesTheTablesThatTheCellIsFlaggedFor) {
    Simulation s;
    sample::makeRun(2, 1, 1, samples::lightOil(), s);
    s.fluids.RegionTableCell.assign(2, 1);
    s.fluids.RegionTableCell[2] = 0;
    s.fluids.KrwSingle = {0.1, 0.1, 0.1, 0.1};
    for (CellId c = 1; c <= 2; ++c) s.state.Sw[c] = 0.5;
    refreshProperties(s.grid, s.fluids, s.state);
    EXPECT_NEAR(s.state.KrwCell[1], 0.125, 1e-15);
    EXPECT_NEAR(s.state.KrwCell[2], 0.1, 1e-15);
}

TEST(RefreshProperties, KeepsOnePoreVolumeForAllUses) {
    Simulation s;
    sample::makeRun(2, 1, 1, sample::waterAndOil(1e-5), s);
    s.grid.NTG[2] = 0.5;
    s.state.Pressure[2] = 3100.0;
    refreshProperties(s.grid, s.fluids, s.state);
    const double bulk = 100.0 * 100.0 * 20.0 / 5.614583;
    EXPECT_NEAR(s.state.PoreVolume[1], bulk * 0.2, 1e-8);
    EXPECT_NEAR(s.state.PoreVolume[2], bulk * 0.5 * 0.2 * (1.0 + 1e-3 + 0.5e-6), 1e-8);
}

TEST(MeasureCarried, IsWhatTheSaturationsDoNotShow) {
    OneCell cell(4014.7, 4014.7, 0.2, 0.8, 0.0);
    CellAmounts whole, carried, sum;
    measureAmounts(cell.s.grid, cell.s.state, whole);
    cell.update(3514.7);
    measureCarried(cell.s.grid, cell.s.state, whole, carried);
    EXPECT_GT(carried.oil[1] / whole.oil[1], 0.03);  // the scaling has taken 4 % off
    measureWholeAmounts(cell.s.grid, cell.s.state, carried, sum);
    EXPECT_NEAR(sum.gas[1], whole.gas[1], 1e-9 * whole.gas[1]);
}
