#include "report/well_figures.hpp"

#include "unit/report/report_run.hpp"

#include <gtest/gtest.h>

namespace kvr {
namespace {

TEST(WellFigures, ShowRatesWhileAWellIsOnAndMeansOfTheField) {
    ReportRun bench;
    Simulation& run = bench.run;
    run.units = fieldUnits();
    Well well;
    well.WellName = "P";
    well.WellKind = "prd";
    well.efficiency = 0.5;
    well.WellQo = -60.0;
    well.WellQw = -20.0;
    run.wells.wells = {well};
    run.balance.rows.resize(1);
    run.balance.wells.resize(1);
    run.balance.wells[0].produced.oil = 600.0;
    const StepFigures figures = stepFigures(run);
    EXPECT_DOUBLE_EQ(figures.wells[0].production.oil, 120.0);
    EXPECT_DOUBLE_EQ(figures.wells[0].production.water, 40.0);
    EXPECT_DOUBLE_EQ(figures.field.production.oil, 60.0);
    EXPECT_DOUBLE_EQ(figures.wells[0].produced.oil, 600.0);
    EXPECT_DOUBLE_EQ(waterCut(figures.wells[0].production), 0.25);
}

}  // namespace
}  // namespace kvr
