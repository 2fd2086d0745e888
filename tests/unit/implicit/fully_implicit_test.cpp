#include "implicit/fully_implicit.hpp"

#include "fluid/table_checks.hpp"
#include "implicit/step_balance.hpp"
#include "unit/implicit/implicit_bench.hpp"
#include "unit/quiet_console.hpp"

#include <gtest/gtest.h>
#include <limits>
#include <numeric>

using namespace kvr;

namespace {

void makeImplicit(int nx, int ny, int nz, const FluidTables& tables, Simulation& s) {
    sample::makeRun(nx, ny, nz, tables, s);
    s.options.method = "FIM";
    s.options.pressureSolver = "amg";
    s.options.SaturationTolerance = 1e-4;
    AllocateFullyImplicit(s);
}

/// Cell means of the entropy solution (envelope of the tabulated fractional flow) on 100 cells after 0.3
/// pore volumes, worked by an independent program; the kinks of the table make plateaus.
const std::vector<double>& exactFlood() {
    static const std::vector<double> means = {
        0.800, 0.800, 0.800, 0.791, 0.757, 0.732, 0.712, 0.700, 0.700, 0.700, 0.700, 0.700, 0.700,
        0.700, 0.700, 0.700, 0.700, 0.700, 0.700, 0.700, 0.700, 0.698, 0.692, 0.685, 0.679, 0.674,
        0.668, 0.663, 0.659, 0.654, 0.650, 0.646, 0.642, 0.638, 0.635, 0.631, 0.628, 0.625, 0.622,
        0.619, 0.616, 0.613, 0.611, 0.608, 0.606, 0.604, 0.601, 0.600, 0.600, 0.600, 0.600, 0.600,
        0.600, 0.600, 0.600, 0.600, 0.600, 0.600, 0.600, 0.600, 0.600, 0.600, 0.600, 0.600, 0.599,
        0.541, 0.200, 0.200, 0.200, 0.200, 0.200, 0.200, 0.200, 0.200, 0.200, 0.200, 0.200, 0.200,
        0.200, 0.200, 0.200, 0.200, 0.200, 0.200, 0.200, 0.200, 0.200, 0.200, 0.200, 0.200, 0.200,
        0.200, 0.200, 0.200, 0.200, 0.200, 0.200, 0.200, 0.200, 0.200};
    return means;
}

double sumOf(const CellArray<double>& values) {
    return std::accumulate(values.cells().begin(), values.cells().end(), 0.0);
}

}  // namespace

TEST(FullyImplicitStep, LeavesAClosedHydrostaticBoxAsItIsInOneIteration) {
    Simulation s;
    makeImplicit(1, 1, 5, samples::lightOil(), s);
    for (CellId c = 1; c <= 5; ++c) {
        s.state.Pb[c] = 2500.0;
        s.state.Rs[c] = SolutionRs(s.fluids, 2500.0);
    }
    sample::hydrostaticColumn(3000.0, s);
    const CellState before = s.state;
    beginImplicitStep(s);
    int iterations = 0;
    EXPECT_TRUE(attemptImplicitStep(s, iterations));
    EXPECT_EQ(iterations, 1);
    for (CellId c = 1; c <= 5; ++c) {
        EXPECT_NEAR(s.state.Pressure[c], before.Pressure[c], 1e-10);
        EXPECT_NEAR(s.state.Rs[c], before.Rs[c], 1e-10);
    }
}

TEST(FullyImplicitStep, RaisesAClosedCellByTheInjectedVolumeOverItsCompressibility) {
    Simulation s;
    constexpr double compressibility = 1e-6;
    makeImplicit(1, 1, 1, sample::waterAndOil(compressibility), s);
    s.options.PressureTolerance = 1e-6;
    s.state.Sw[1] = 0.6;
    s.state.So[1] = 0.4;
    const double pores = 100.0 * 100.0 * 20.0 / 5.614583 * 0.2;
    const double rate = 5.0 * pores * compressibility;  // q dt/(V phi c) = 5 psi, to first order
    sample::addWell("inj", "rate", rate, 100000.0, 1, s);
    FullyImplicitStep(s);
    // the pores grow as c (dP + c dP^2 / 2)
    const double exact = (std::sqrt(1.0 + 2.0 * compressibility * 5.0) - 1.0) / compressibility;
    EXPECT_NEAR(s.state.Pressure[1] - 3000.0, exact, exact * 1e-8);
    EXPECT_NEAR(s.wells.wells[0].WellQw, rate, 1e-8 * rate);
    EXPECT_NEAR(s.state.So[1] * s.state.PoreVolume[1], 0.4 * pores, 1e-8 * pores);
}

TEST(FullyImplicitStep, FailsOnAPressureThatIsNoNumberAndHalvesTheStep) {
    QuietConsole quiet;
    Simulation s;
    makeImplicit(3, 1, 1, sample::waterAndOil(1e-6), s);
    s.console = quiet.console;
    s.clock.dt = 8.0;
    beginImplicitStep(s);
    const double saved = s.state.Pressure[1];
    s.state.Pressure[1] = std::numeric_limits<double>::quiet_NaN();
    int iterations = 0;
    EXPECT_FALSE(attemptImplicitStep(s, iterations));
    cutImplicitStep(s);
    EXPECT_EQ(s.clock.dt, 4.0);
    EXPECT_EQ(s.state.Pressure[1], saved);
    const std::string text = quiet.screenText();
    const std::size_t problem = text.find("CONVERGENS PROBLEM OCCURS\n");
    ASSERT_NE(problem, std::string::npos) << text;
    EXPECT_EQ(text.find(" TIME STEP SIZE IS DECREASED --> 4\n"), problem + 26);
    EXPECT_EQ(quiet.logText(), text);
}

TEST(FullyImplicitStep, FailsAndSaysSoWhereTheSystemHasNoSolution) {
    // Nothing gives way in a closed cell: no pressure makes room for what is injected.
    QuietConsole quiet;
    Simulation s;
    makeImplicit(1, 1, 1, sample::waterAndOil(0.0), s);
    s.console = quiet.console;
    sample::addWell("inj", "rate", 10.0, 1e6, 1, s);
    beginImplicitStep(s);
    int iterations = 0;
    EXPECT_FALSE(attemptImplicitStep(s, iterations));
    EXPECT_EQ(iterations, 1);
    const std::string text = quiet.screenText();
    EXPECT_NE(text.find("ERROR OCCURS IN SOLVING PRESSURES.\n"), std::string::npos) << text;
    EXPECT_EQ(text.find(" ITE: "), std::string::npos) << text;
}

TEST(FullyImplicitStep, TakesAFailedStepAnewAtHalfItsLength) {
    QuietConsole quiet;
    Simulation s;
    makeImplicit(2, 1, 1, sample::waterAndOil(1e-6), s);
    s.console = quiet.console;
    // At this rate a whole day would raise the pressure by far more than an iteration may.
    const double pores = 2.0 * 100.0 * 100.0 * 20.0 / 5.614583 * 0.2;
    sample::addWell("inj", "rate", 30000.0 * pores * 1e-6, 1e9, 1, s);
    FullyImplicitStep(s);
    EXPECT_EQ(s.clock.dt, 0.25);
    EXPECT_TRUE(s.pressure.stepCut);
    EXPECT_EQ(s.implicit.counts.cuts, 2);
    EXPECT_EQ(s.implicit.longestStep, 0.5);
    EXPECT_NE(quiet.screenText().find(" TIME STEP SIZE IS DECREASED --> 0.25\n"), std::string::npos);
    EXPECT_NE(quiet.screenText().find(" T-STEP SIZE  --> 0.25\n"), std::string::npos);
}

namespace {

/// Nothing gives way in its one cell, so that no step succeeds.
void makeHopeless(Simulation& s) {
    makeImplicit(1, 1, 1, sample::waterAndOil(0.0), s);
    sample::addWell("inj", "rate", 10.0, 1e6, 1, s);
}

}  // namespace

TEST(FullyImplicitStep, StopsWhenTheStepHasVanished) {
    Simulation s;
    makeHopeless(s);
    s.console = consoleOnStandardError();
    s.clock.dt = 1e-30;
    EXPECT_EXIT(FullyImplicitStep(s), testing::ExitedWithCode(1), "TIME STEP HAS VANISHED");
}

TEST(FullyImplicitStep, StopsWhereACellHasNoPressure) {
    Simulation s;
    makeImplicit(3, 1, 1, sample::waterAndOil(1e-6), s);
    s.console = consoleOnStandardError();
    s.state.Pressure[2] = 0.0;
    EXPECT_EXIT(FullyImplicitStep(s), testing::ExitedWithCode(1), "NEEDS PRESSURES ABOVE 0, GRID 2");
}

TEST(TryFullyImplicitStep, PutsEverythingBackWhereItGivesUp) {
    Simulation s;
    makeHopeless(s);
    s.clock.dt = 8.0;
    s.wells.wells[0].Bhp = 3500.0;
    EXPECT_FALSE(tryFullyImplicitStep(s, 3));
    EXPECT_EQ(s.implicit.counts.cuts, 4);
    EXPECT_EQ(s.clock.dt, 8.0);
    EXPECT_EQ(s.state.Pressure[1], 3000.0);
    EXPECT_EQ(s.state.Sw[1], 0.2);
    EXPECT_EQ(s.wells.wells[0].Bhp, 3500.0);
    EXPECT_EQ(s.wells.wells[0].WellControl, "rate");
}

TEST(TryFullyImplicitStep, NeedsNoMemoryMadeBefore) {
    Simulation s;
    sample::makeRun(3, 1, 1, sample::waterAndOil(1e-6), s);
    s.options.SaturationTolerance = 1e-4;
    EXPECT_TRUE(tryFullyImplicitStep(s, 0));
    EXPECT_EQ(s.implicit.cellOfRow.size(), 3U);
}

TEST(TryFullyImplicitStep, TakesOverWhatIsCarriedBeyondTheSaturations) {
    // A thousandth of the pores more than the saturations show: rock of 1e-6 1/psi makes room for it.
    constexpr double compressibility = 1e-6;
    Simulation s;
    makeImplicit(1, 1, 1, sample::waterAndOil(compressibility), s);
    s.options.PressureTolerance = 1e-6;
    const double pores = 100.0 * 100.0 * 20.0 / 5.614583 * 0.2;
    sizeAmounts(1, s.pressure.carried);
    s.pressure.carried.water[1] = 0.001 * pores;
    EXPECT_TRUE(tryFullyImplicitStep(s, 0));
    const double rise = (std::sqrt(1.0 + 2.0 * 0.001) - 1.0) / compressibility;
    EXPECT_NEAR(s.state.Pressure[1] - 3000.0, rise, 1e-6 * rise);
    EXPECT_NEAR(s.state.Sw[1] * s.state.PoreVolume[1], 0.201 * pores, 1e-8 * pores);
    EXPECT_TRUE(s.pressure.carried.water.empty());
}

TEST(FullyImplicitStep, LetsAProducerStandWhoseCellIsPastItsLimitAndOpensItLater) {
    Simulation s;
    makeImplicit(3, 1, 1, sample::waterAndOil(1e-4), s);
    sample::addWell("inj", "rate", 100.0, 9000.0, 1, s);
    sample::addWell("prd", "lrat", -20.0, 3100.0, 3, s);
    const Well& producer = s.wells.wells[1];
    FullyImplicitStep(s);
    EXPECT_EQ(s.implicit.counts.cuts, 0);
    EXPECT_EQ(producer.WellControl, "bhp");
    EXPECT_EQ(producer.WellQo, 0.0);
    double highest = 0.0;
    for (int step = 0; step < 40; ++step) {
        FullyImplicitStep(s);
        highest = std::max(highest, std::abs(producer.WellQo + producer.WellQw));
    }
    EXPECT_EQ(producer.WellControl, "lrat");
    EXPECT_NEAR(highest, 20.0, 20.0 * 1e-6);
    EXPECT_EQ(s.implicit.counts.cuts, 0);
}

TEST(StepBalanceError, IsOfThePoresWhereAComponentIsHardlyThere) {
    Simulation s;
    makeImplicit(1, 1, 1, sample::waterAndOil(1e-6), s);
    const double pores = 100.0 * 100.0 * 20.0 / 5.614583 * 0.2;
    s.state.Sw[1] = 1.0;
    s.state.So[1] = 0.0;
    refreshProperties(s.grid, s.fluids, s.state);
    CellAmounts old, now;
    measureAmounts(s.grid, s.state, old);
    old.oil[1] = 1e-9 * pores;  // lost: all of the oil, and a millionth of a thousandth of the pores
    EXPECT_NEAR(stepBalanceError(1.0, s.grid, s.state, s.wells, old, now), 1e-6, 1e-10);
    old.oil[1] = 0.0;
    old.water[1] = (1.0 - 1e-5) * pores;
    EXPECT_NEAR(stepBalanceError(1.0, s.grid, s.state, s.wells, old, now), 1e-5, 1e-9);
}

TEST(FullyImplicitStep, SaysWhatItDoesInItsOwnWords) {
    QuietConsole quiet;
    Simulation s;
    makeImplicit(1, 1, 1, sample::waterAndOil(1e-6), s);
    s.console = quiet.console;
    FullyImplicitStep(s);
    EXPECT_EQ(quiet.screenText(),
              "Solution by Fully Implicit Method !\n"
              " ITE: 1  Dp= 0  DSw= 0  DSg= 0\n"
              " T-STEP SIZE  --> 1\n"
              "PRESSURES and SATURATIONS ARE SOLVED SUCCESSFULLY !\n"
              " NUMBER OF ITERATIONS --> 1\n"
              " Reservoir average pressure : 3000 PSIA\n");
}

TEST(FullyImplicitStep, FloodsAColumnAsTheExactSolutionDoes) {
    Simulation s;
    FluidTables tables = sample::waterAndOil(1e-12);
    SaturationTable& rock = tables.regions[0];
    rock.SwAxis = {0.2, 0.3, 0.4, 0.5, 0.6, 0.7, 0.8};
    rock.Krw = {0.0, 0.01, 0.04, 0.09, 0.18, 0.3, 0.45};
    rock.Krow = {1.0, 0.7, 0.45, 0.25, 0.1, 0.02, 0.0};
    rock.Pcow.assign(7, 0.0);
    finishTables(tables);
    constexpr int Cells = 100;
    makeImplicit(Cells, 1, 1, tables, s);
    const double pores = Cells * 100.0 * 100.0 * 20.0 / 5.614583 * 0.2;
    constexpr double Injected = 0.3;  // pore volumes
    constexpr int Steps = 120;
    s.clock.dt = 50.0;
    sample::addWell("inj", "rate", pores * Injected / Steps / s.clock.dt, 1e6, 1, s);
    sample::addWell("prd", "bhp", 0.0, 3000.0, Cells, s);
    for (int step = 0; step < Steps; ++step) FullyImplicitStep(s);
    double difference = 0.0;
    for (CellId c = 1; c <= Cells; ++c)
        difference += std::abs(s.state.Sw[c] - exactFlood()[static_cast<std::size_t>(c) - 1]) / Cells;
    EXPECT_LT(difference, 0.03);
    EXPECT_NEAR(sumOf(s.state.Sw), Cells * (0.2 + Injected), Cells * 1e-6);
}

TEST(FullyImplicitStep, ConservesEveryComponentWhileGasComesAndGoes) {
    Simulation s;
    makeImplicit(4, 4, 2, sample::liveOil(), s);
    sample::scatter(sample::Oil::Mixed, 3, s);
    sample::addWell("inj", "rate", 400.0, 6000.0, 1, s);
    s.wells.wells[0].InjectFluid = "gas";
    sample::addWell("prd", "orat", -60.0, 1500.0, 32, s);
    refreshProperties(s.grid, s.fluids, s.state);
    CellAmounts first, last;
    measureAmounts(s.grid, s.state, first);
    double oil = 0.0, water = 0.0, gas = 0.0;
    int switched = 0;
    for (int step = 0; step < 10; ++step) {
        const std::vector<ThirdUnknown> before = s.implicit.unknown;
        s.clock.dt = 2.0;
        FullyImplicitStep(s);
        oil += s.clock.dt * (s.wells.wells[0].WellQo + s.wells.wells[1].WellQo);
        water += s.clock.dt * (s.wells.wells[0].WellQw + s.wells.wells[1].WellQw);
        gas += s.clock.dt * (s.wells.wells[0].WellQg + s.wells.wells[1].WellQg);
        for (std::size_t row = 0; row < before.size(); ++row)
            switched += step > 0 && before[row] != s.implicit.unknown[row] ? 1 : 0;
    }
    measureAmounts(s.grid, s.state, last);
    EXPECT_NEAR(sumOf(last.oil) - sumOf(first.oil), oil, 1e-6 * sumOf(first.oil));
    EXPECT_NEAR(sumOf(last.water) - sumOf(first.water), water, 1e-6 * sumOf(first.water));
    EXPECT_NEAR(sumOf(last.gas) - sumOf(first.gas), gas, 1e-6 * sumOf(first.gas));
    EXPECT_GT(switched, 3);
    EXPECT_LT(oil, -100.0);
}

TEST(FullyImplicitStep, HoldsAProducerAtItsLimitAndReturnsItsRateLater) {
    QuietConsole quiet;
    Simulation s;
    makeImplicit(3, 1, 1, sample::waterAndOil(1e-4), s);
    s.console = quiet.console;
    sample::addWell("prd", "orat", -2000.0, 2500.0, 3, s);
    FullyImplicitStep(s);
    const Well& well = s.wells.wells[0];
    EXPECT_EQ(well.WellControl, "bhp");
    EXPECT_EQ(well.Bhp, 2500.0);
    EXPECT_LT(std::abs(well.WellQo), 2000.0);
    EXPECT_GT(std::abs(well.WellQo), 1.0);
    s.wells.wells[0].TargetRate = -0.5 * std::abs(well.WellQo);
    FullyImplicitStep(s);
    EXPECT_EQ(well.WellControl, "orat");
    EXPECT_NEAR(well.WellQo, well.TargetRate, 1e-6 * std::abs(well.TargetRate));
    EXPECT_GT(well.Bhp, 2500.0);
    const std::string text = quiet.screenText();
    EXPECT_NE(text.find(" WELL CONTROL :: PROD : orat -> bhp"), std::string::npos);
    EXPECT_NE(text.find(" WELL CONTROL :: PROD : bhp -> orat"), std::string::npos);
}

TEST(FullyImplicitStep, GivesEveryControlItsTarget) {
    struct Case {
        const char* control;
        double target;
        double (*rate)(const Well&);
    };
    const Case cases[] = {
        {"orat", -50.0, [](const Well& w) { return w.WellQo; }},
        {"grat", -9000.0, [](const Well& w) { return w.WellQg; }},
        {"lrat", -50.0, [](const Well& w) { return w.WellQo + w.WellQw; }},
        {"resv", -80.0, [](const Well& w) { return w.reservoirRate; }},
        // the sum of the surface rates is what "wrat" holds
        {"wrat", -9000.0, [](const Well& w) { return w.WellQo + w.WellQw + w.WellQg; }},
    };
    for (const Case& c : cases) {
        Simulation s;
        makeImplicit(3, 1, 1, sample::liveOil(), s);
        sample::scatter(sample::Oil::Saturated, 5, s);
        sample::addWell("prd", c.control, c.target, 100.0, 3, s);
        FullyImplicitStep(s);
        EXPECT_NEAR(c.rate(s.wells.wells[0]), c.target, 1e-6 * std::abs(c.target)) << c.control;
        EXPECT_EQ(s.wells.wells[0].WellControl, c.control);
    }
}

TEST(FullyImplicitStep, TreatsBothAxesOfTheNinePointSchemeAlike) {
    Simulation s;
    sample::makeRun(5, 5, 1, sample::waterAndOil(1e-6), s);
    s.options.method = "FIM";
    s.options.ninePoint = true;
    s.options.maxConnectionsPerCell = 26;
    s.options.SaturationTolerance = 1e-8;
    s.options.PressureTolerance = 1e-8;
    CALCTRANS_STATICGEOPART(s.console, s.options, s.units, s.grid, s.connections);
    AllocateFullyImplicit(s);
    sample::addWell("inj", "rate", 500.0, 1e6, 1, s);
    sample::addWell("prd", "bhp", 0.0, 3000.0, 25, s);
    for (int step = 0; step < 20; ++step) FullyImplicitStep(s);
    EXPECT_GT(s.state.Sw[7], 0.25);
    for (int i = 1; i <= 5; ++i)
        for (int j = 1; j < i; ++j) {
            const CellId one = cellIndex(s.grid, i, j, 1), other = cellIndex(s.grid, j, i, 1);
            EXPECT_NEAR(s.state.Sw[one], s.state.Sw[other], 1e-8);
            EXPECT_NEAR(s.state.Pressure[one], s.state.Pressure[other], 1e-6);
        }
}

TEST(StepLengthAfterCuts, SharesAStepEvenly) {
    EXPECT_EQ(stepLengthAfterCuts(0.0, 30.0), 30.0);
    EXPECT_EQ(stepLengthAfterCuts(40.0, 30.0), 30.0);
    EXPECT_EQ(stepLengthAfterCuts(8.0, 30.0), 7.5);
}
