#include "report/co2_stores.hpp"

#include "pressure/properties.hpp"
#include "report/report_output.hpp"
#include "unit/report/report_run.hpp"

#include <gtest/gtest.h>

namespace kvr {
namespace {

/// Four cells, pore volume 1000, gas that does not move below 0.1: the first with Sg 0.3, the second with
/// 0.06, the third without free gas, the fourth without part in the flow.
struct StoreRun : ReportRun {
    StoreRun() {
        run.grid = boxModel(4, 1, 1);
        run.grid.Active[4] = 0;
        run.grid.SATNUM.assign(4, 1);
        run.grid.PERMX.assign(4, 150.0);
        run.fluids.hasGas = true;
        run.fluids.regions.resize(1);
        run.fluids.regions[0].CriticalSg = 0.1;
        run.options.co2Model = run.options.hasGas = true;
        allocateCellState(4, 0, run.state);
        allocateStores(run.console, run.options, 4, run.state);
        const double gas[] = {0.3, 0.06, 0.0, 0.3};
        for (CellId c = 1; c <= 4; ++c) {
            run.state.PoreVolume[c] = 1000.0;
            run.state.Sg[c] = gas[c - 1];
            run.state.So[c] = 1.0 - gas[c - 1];
            run.state.Bg[c] = 0.01;
            run.state.Rs[c] = 20.0;
            run.state.PoreFraction[c] = 0.2;
        }
    }
    [[nodiscard]] Co2Stores cell(CellId c) const {
        return storesOfCell(run.grid, run.fluids, run.state, run.pressure.carried, c);
    }
};

TEST(Co2Stores, PartFreeGasByTheSaturationBelowWhichItDoesNotMove) {
    const StoreRun stores;
    // Gas 1000 * 0.3 / 0.01, of which 1000 * 0.1 / 0.01 does not move; in the oil 700 * 20.
    EXPECT_DOUBLE_EQ(stores.cell(1).trapped, 10000.0);
    EXPECT_DOUBLE_EQ(stores.cell(1).mobile, 20000.0);
    EXPECT_DOUBLE_EQ(stores.cell(1).dissolved, 14000.0);
    EXPECT_DOUBLE_EQ(stores.cell(2).trapped, 6000.0);
    EXPECT_DOUBLE_EQ(stores.cell(2).mobile, 0.0);
    EXPECT_DOUBLE_EQ(stores.cell(3).trapped, 0.0);
    EXPECT_DOUBLE_EQ(stores.cell(3).dissolved, 20000.0);
    EXPECT_EQ(totalOf(stores.cell(4)), 0.0);
}

TEST(Co2Stores, CountWhatCellsHoldBeyondTheirSaturationsAndNothingTwice) {
    StoreRun stores;
    CellAmounts& carried = stores.run.pressure.carried;
    sizeAmounts(4, carried);
    carried.gas[1] = 500.0;
    carried.oil[1] = -10.0;
    carried.gas[3] = -300.0;
    EXPECT_DOUBLE_EQ(stores.cell(1).dissolved, 14000.0 - 200.0);
    EXPECT_DOUBLE_EQ(totalOf(stores.cell(1)), 44500.0);
    EXPECT_DOUBLE_EQ(stores.cell(3).dissolved, 19700.0) << "without a gas phase all gas is dissolved";
}

TEST(Co2Stores, SumOverTheCellsWithTheSolid) {
    StoreRun stores;
    stores.run.state.SolidGas[2] = 77.0;
    const Co2Stores sum = sumStores(stores.run);
    EXPECT_DOUBLE_EQ(sum.solid, 77.0);
    EXPECT_DOUBLE_EQ(totalOf(sum),
                     totalOf(stores.cell(1)) + totalOf(stores.cell(2)) + totalOf(stores.cell(3)));
}

TEST(Co2Stores, StandInATableUnderItsHead) {
    StoreRun stores;
    stores.run.units = metricUnits();  // volumes in ft3
    stores.run.balance.rows.emplace_back();
    reportStores(stores.run);
    stores.run.clock.time = 365.25;
    stores.run.balance.rows.emplace_back();
    reportStores(stores.run);
    // Mscf: free 36000, dissolved 14000 + 18800 + 20000.
    EXPECT_EQ(stores.folder.read("Mass_Balance_CO2.out"),
              "Time : FreeGas : Dissolved : Solid : Total =\n0 36 52.8 0 88.8\n365.25 36 52.8 0 88.8\n");
}

TEST(Co2Stores, CountWhatWellsBroughtAndTookInTheirBalance) {
    StoreRun stores;
    Simulation& run = stores.run;
    run.balance.rows.emplace_back();
    run.balance.initial.gas = 1000.0;
    run.balance.field.injected.gas = 88000.0;
    run.balance.field.produced.gas = 1090.0;  // 890 more than the cells can have given
    reportStores(run);
    const std::string text = stores.folder.read("KVR_CO2_Stores.csv");
    EXPECT_NE(text.find("TIME,DATE,MOBILE,TRAPPED,DISSOLVED,SOLID,TOTAL,INJECTED,PRODUCED,BALANCE\n"),
              std::string::npos);
    EXPECT_NE(text.find(",0.01\n"), std::string::npos) << text;
}

TEST(Co2Stores, AreMappedWithPermeabilityAndPorosityAtEveryReport) {
    StoreRun stores;
    stores.run.options.outputXls = "No";
    stores.run.options.outputKvrView = "No";
    stores.run.units = metricUnits();
    reportOutput(stores.run, 0, 10.0);
    stores.run.balance.rows.emplace_back();
    stores.run.clock.time = 10.0;
    reportOutput(stores.run, 1, 0.0);
    const auto values = [&stores](const std::string& name) {
        const std::vector<PlotZone> zones = stores.zones(name);
        EXPECT_EQ(zones.size(), 2U) << name;
        return zones.back().columns.back();
    };
    EXPECT_EQ(values("KVR_TPlot_CO2_Free.plt"), (std::vector<double>{30, 6, 0, 0}));
    EXPECT_EQ(values("KVR_TPlot_CO2_Trapped.plt"), (std::vector<double>{10, 6, 0, 0}));
    EXPECT_EQ(values("KVR_TPlot_CO2_Dissolved.plt"), (std::vector<double>{14, 18.8, 20, 0}));
    EXPECT_EQ(values("KVR_TPlot_CO2_Kx.plt"), (std::vector<double>{150, 150, 150, 150}));
    EXPECT_EQ(values("KVR_TPlot_CO2_Porosity.plt"), (std::vector<double>{0.2, 0.2, 0.2, 0.2}));
    const std::string kx = stores.folder.read("KVR_TPlot_CO2_Kx.plt");
    EXPECT_NE(kx.find("K<sub>x</sub>"), std::string::npos);
}

TEST(Co2Stores, LeaveNoFileInRunsWithoutThem) {
    StoreRun stores;
    stores.run.options.co2Model = false;
    reportOutput(stores.run, 0, 10.0);
    reportStores(stores.run);
    EXPECT_FALSE(stores.exists("Mass_Balance_CO2.out"));
    EXPECT_FALSE(stores.exists("KVR_TPlot_CO2_Free.plt"));
}

}  // namespace
}  // namespace kvr
