#include "streamline/sensitivities/line_sensitivity.hpp"

#include "unit/streamline/flood_run.hpp"

#include <cmath>
#include <gtest/gtest.h>

using namespace kvr;

namespace {

/// A column that is flooded up to a report, with pressures that fall along it.
struct FloodedColumn {
    samples::FloodRun run;
    static constexpr int Cells = 20;
    static constexpr double Rate = 50.0, Fall = 10.0;  // rb/day; psi from cell to cell

    explicit FloodedColumn(SensitivityForm form, int steps, const std::string& mode = "inj")
        : run(samples::column(Cells, 500.0, Rate), 1, 10.0) {
        run.s.options.outputSensitivity = true;
        run.s.options.hasWater = true;
        run.s.options.travelTimeForm = run.s.options.pressureForm = form;
        run.s.launch.LaunchMode = mode;
        for (CellId cell = 1; cell <= Cells; ++cell) {
            run.s.state.Pressure[cell] = 3000.0 - Fall * cell;
            run.s.state.LambdaW[cell] = run.s.state.LambdaO[cell] = 1.0;
        }
        for (Well& well : run.s.wells.wells) {
            well.Bhp = run.s.state.Pressure[well.connections[0].ConnCell];
            well.connections[0].ConnFactor = 1.0;  // given: no part of the well in its cell
        }
        run.advance(steps - 1);
        run.s.pressure.moved = {};
        StreamlineStep(run.s, 0, 0, 1000.0, 0.0);
    }
    StepSensitivities& step() { return run.s.lines.sensitivities; }
    CellArray<double> travelTime() {
        CellArray<double> values;
        values.assign(Cells, 0.0);
        fillTravelTime(sensitivitySettings(run.s.options), run.s.wells.wells[1], run.s.lines.field.lineFlux,
                       step().wells[1], values);
        return values;
    }
    CellArray<double> pressure(std::size_t well) {
        CellArray<double> values;
        values.assign(Cells, 0.0);
        fillPressure(run.s.wells.wells[well], run.s.lines.field.lineFlux, step().wells[well], values);
        return values;
    }
};

double sumOf(const CellArray<double>& values) {
    double sum = 0.0;
    for (const double value : values.cells()) sum += value;
    return sum;
}

double cutOf(int steps) {
    FloodedColumn column(SensitivityForm::Lines, steps);
    const WellSensitivity& sums = column.step().wells[1];
    return sums.top / (sums.top + sums.base);
}

constexpr int AfterBreakthrough = 24;  // steps of 10 days of a column of 200 days

}  // namespace

TEST(LineSensitivity, AreOnlyKeptInAStepThatEndsAtAReport) {
    FloodedColumn column(SensitivityForm::Lines, 2);
    EXPECT_TRUE(column.step().due);
    EXPECT_FALSE(column.step().wells.empty());
    column.run.advance(1);
    EXPECT_FALSE(column.step().due);
    EXPECT_TRUE(column.step().wells.empty());
}

TEST(LineSensitivity, OfAllCellsTogetherIsTheGrowthOfTheCutPerRelativeTime) {
    // k times (1 + e) everywhere brings what otherwise comes a share e of the time later.
    FloodedColumn column(SensitivityForm::Lines, AfterBreakthrough);
    const double growth = (cutOf(AfterBreakthrough + 2) - cutOf(AfterBreakthrough - 2)) / 40.0;
    EXPECT_GT(growth, 0.0);
    EXPECT_NEAR(sumOf(column.travelTime()), growth * 10.0 * AfterBreakthrough,
                0.15 * growth * 10.0 * AfterBreakthrough);
}

TEST(LineSensitivity, SharesTheTravelTimeByTheTimeInEachCell) {
    FloodedColumn column(SensitivityForm::Lines, AfterBreakthrough);
    const CellArray<double> values = column.travelTime();
    for (CellId cell = 2; cell < FloodedColumn::Cells; ++cell) EXPECT_NEAR(values[cell], values[2], 1e-12);
    EXPECT_NEAR(values[1], 0.5 * values[2], 0.51 * values[2]);  // a line may begin and end inside its cells
    EXPECT_GT(values[2], 0.0);
}

TEST(LineSensitivity, IsNothingBeforeWaterComes) {
    FloodedColumn column(SensitivityForm::Lines, 2);
    EXPECT_NEAR(sumOf(column.travelTime()), 0.0, 1e-12);
    FloodedColumn classic(SensitivityForm::Classic, 2);
    EXPECT_EQ(sumOf(classic.travelTime()), 0.0);
}

TEST(LineSensitivity, InTheClassicFormIsTheTimeOfFlightOverTheSaturationAtTheWell) {
    FloodedColumn column(SensitivityForm::Classic, AfterBreakthrough);
    const CellArray<double> values = column.travelTime();
    const LineResult& result = column.run.s.lines.worked.front();
    const double saturation = result.contribution.Sw[static_cast<std::size_t>(result.contribution.count)];
    EXPECT_GT(saturation, 0.3);
    EXPECT_NEAR(values[10], 500.0 / FloodedColumn::Rate / saturation, 1e-9);  // R is 1 for one line
}

TEST(LineSensitivity, OfPressureFallsAtTheInjectorAndRisesAtTheProducer) {
    for (const SensitivityForm form : {SensitivityForm::Lines, SensitivityForm::Classic}) {
        FloodedColumn column(form, 3);
        EXPECT_LT(sumOf(column.pressure(0)), 0.0);
        EXPECT_GT(sumOf(column.pressure(1)), 0.0);
        const CellArray<double> injector = column.pressure(0), producer = column.pressure(1);
        for (const double value : injector.cells()) EXPECT_LE(value, 0.0);
        for (const double value : producer.cells()) EXPECT_GE(value, 0.0);
    }
}

TEST(LineSensitivity, OfPressureTakesTheWholeDropBetweenTheTwoRateWells) {
    FloodedColumn column(SensitivityForm::Lines, 3);
    EXPECT_NEAR(sumOf(column.pressure(1)) - sumOf(column.pressure(0)),
                FloodedColumn::Fall * (FloodedColumn::Cells - 1), 1e-9);
    const CellArray<double> producer = column.pressure(1), injector = column.pressure(0);
    // A cell in the middle: ten psi of drop, shared by the pore volume on its two sides.
    EXPECT_NEAR(producer[10] - injector[10], FloodedColumn::Fall, 1e-9);
    EXPECT_LT(producer[2], producer[19]);
    EXPECT_LT(-injector[19], -injector[2]);
}

TEST(LineSensitivity, OfPressureBelongsToTheRateWellAloneOppositeAPressure) {
    FloodedColumn column(SensitivityForm::Lines, 2);
    column.run.s.wells.wells[1].WellControl = "bhp";
    column.run.s.pressure.moved = {};
    StreamlineStep(column.run.s, 0, 0, 1000.0, 0.0);
    EXPECT_NEAR(sumOf(column.pressure(0)), -FloodedColumn::Fall * (FloodedColumn::Cells - 1), 1e-9);
}

TEST(LineSensitivity, IsTheSameForLinesFromEitherEnd) {
    FloodedColumn forward(SensitivityForm::Lines, AfterBreakthrough);
    FloodedColumn backward(SensitivityForm::Lines, AfterBreakthrough, "prd");
    const CellArray<double> a = forward.travelTime(), b = backward.travelTime();
    const CellArray<double> p = forward.pressure(1), q = backward.pressure(1);
    for (CellId cell = 1; cell <= FloodedColumn::Cells; ++cell) {
        EXPECT_NEAR(a[cell], b[cell], 1e-9);
        EXPECT_NEAR(p[cell], q[cell], 1e-9);
    }
}

TEST(LineSensitivity, AddsCellsThatLinesShareOnce) {
    WellSensitivity sums;
    sums.cells = {{5, 1.0, 0.0, 2.0}, {3, 2.0, 0.0, 1.0}, {5, 4.0, 1.0, 3.0}};
    mergeCells(sums);
    ASSERT_EQ(sums.cells.size(), 2U);
    EXPECT_EQ(sums.cells[0].cell, 3);
    EXPECT_EQ(sums.cells[1].top, 5.0);
    EXPECT_EQ(sums.cells[1].pressure, 5.0);
}

TEST(LineSensitivity, OfAWellThatNoLineReachedIsZero) {
    WellSensitivity sums;
    CellArray<double> values;
    values.assign(3, 1.0);
    Well well;
    fillTravelTime({}, well, 1.0, sums, values);
    for (const double value : values.cells()) EXPECT_EQ(value, 0.0);
    values.assign(3, 1.0);
    fillPressure(well, 1.0, sums, values);
    for (const double value : values.cells()) EXPECT_EQ(value, 0.0);
}

TEST(LineSensitivity, PutsTheResistanceWhereThePermeabilityIsLow) {
    samples::Flow flow = samples::emptyFlow(2, 1, 1, 10.0, 10.0, 10.0);
    flow.grid.PERMX[1] = 300.0;
    flow.grid.PERMX[2] = 100.0;
    EXPECT_DOUBLE_EQ(resistanceShare(flow.grid, 1, 2), 0.25);
    EXPECT_DOUBLE_EQ(resistanceShare(flow.grid, 2, 1), 0.75);
}
