#include "pressure/wells/well_target.hpp"

#include "unit/pressure/well_samples.hpp"

#include <gtest/gtest.h>
#include <limits>

namespace kvr {
namespace {

/// Cells at 3000 and 2900 psia, a connection of 1 rb/day/psi in each.
struct TwoCells {
    explicit TwoCells(const std::string& kind, const std::string& control)
        : well(sample::well(kind, control, 2)), state(sample::state(2)) {
        state.Pressure[2] = 2900.0;
    }
    WellInflow inflow() const { return wellInflow(units, tables, state, 3000.0, well); }

    UnitSystem units;
    FluidTables tables;
    Well well;
    CellState state;
};

TEST(WellInflow, OfAProducerRisesWithEveryConnectionThatComesIn) {
    const WellInflow inflow = TwoCells("prd", "orat").inflow();
    EXPECT_EQ(rateAtBhp(inflow, 3100.0), 0.0);
    EXPECT_DOUBLE_EQ(rateAtBhp(inflow, 2950.0), 50.0);
    EXPECT_DOUBLE_EQ(rateAtBhp(inflow, 2850.0), 200.0);
    EXPECT_DOUBLE_EQ(bhpOfRate(inflow, 60.0), 2940.0) << "the lower pressure would flow back";
    EXPECT_DOUBLE_EQ(bhpOfRate(inflow, 300.0), 2800.0);
}

TEST(WellInflow, OfAnInjectorRisesTheOtherWay) {
    const WellInflow inflow = TwoCells("inj", "rate").inflow();
    EXPECT_EQ(rateAtBhp(inflow, 2900.0), 0.0);
    EXPECT_DOUBLE_EQ(rateAtBhp(inflow, 3050.0), 200.0);
    EXPECT_DOUBLE_EQ(bhpOfRate(inflow, 60.0), 2960.0);
    EXPECT_DOUBLE_EQ(bhpOfRate(inflow, 300.0), 3100.0);
}

TEST(WellInflow, CountsTheHeadInTheBore) {
    TwoCells run("prd", "orat");
    run.well.connections[1].ConnHead = 10.0;
    EXPECT_DOUBLE_EQ(bhpOfRate(run.inflow(), 200.0), (3000.0 + 2890.0 - 200.0) / 2.0);
}

TEST(WellInflow, CountsWhatTheDeckControlNames) {
    struct Case {
        const char* control;
        double slope;  // a day and psi, of the first cell below
    };
    // 0.6/1.5 oil, 0.4/1 water, 0.1/0.005 free and 100 * 0.4 dissolved gas
    for (const Case& c :
         {Case{"orat", 0.4}, Case{"lrat", 0.8}, Case{"grat", 60.0}, Case{"wrat", 60.8}, Case{"resv", 1.1}}) {
        TwoCells run("prd", c.control);
        run.well.WellControl = "bhp";  // held at its limit
        run.well.connections.pop_back();
        run.state.LambdaO[1] = 0.6;
        run.state.Bo[1] = 1.5;
        run.state.LambdaW[1] = 0.4;
        run.state.LambdaG[1] = 0.1;
        run.state.Bg[1] = 0.005;
        run.state.Rs[1] = 100.0;
        EXPECT_NEAR(rateAtBhp(run.inflow(), 2990.0), 10.0 * c.slope, 1e-9) << c.control;
    }
}

TEST(WellInflow, LeavesOutConnectionsThatGiveNothingOfIt) {
    TwoCells run("prd", "orat");
    run.state.LambdaO.assign(2, 0.0);
    run.state.LambdaW.assign(2, 1.0);
    EXPECT_TRUE(run.inflow().starts.empty());
    EXPECT_EQ(rateAtBhp(run.inflow(), 100.0), 0.0);
    TwoCells bad("prd", "orat");
    bad.state.Pressure[1] = std::numeric_limits<double>::quiet_NaN();
    EXPECT_EQ(bad.inflow().starts.size(), 1U);
}

TEST(ControlShares, NameTheRatesThatAControlHolds) {
    struct Case {
        const char* control;
        double rate;
    };
    Well well = sample::well("prd", "bhp", 1);
    well.WellQw = 1.0;
    well.WellQo = 2.0;
    well.WellQg = 40.0;
    well.reservoirRate = 500.0;
    for (const Case& c : {Case{"orat", 2.0}, Case{"grat", 40.0}, Case{"lrat", 3.0}, Case{"wrat", 43.0},
                          Case{"rate", 43.0}, Case{"resv", 500.0}, Case{"bhp", 0.0}})
        EXPECT_EQ(controlledRate(well, c.control), c.rate) << c.control;
}

}  // namespace
}  // namespace kvr
