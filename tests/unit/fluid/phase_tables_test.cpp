#include "fluid/phase_tables.hpp"

#include <cstdio>
#include <gtest/gtest.h>

namespace kvr {
namespace {

const Console Silent{nullptr, nullptr, nullptr};

TEST(PhaseTables, OfWaterAndOilStandAtTheRowsOfBoth) {
    FluidTables tables;
    PhaseTables phases;
    phases.Sw = {0.2, 0.6, 1.0};
    phases.Krw = {0.0, 0.4, 1.0};
    phases.Pcow = {5.0, 1.0, 0.0};
    phases.So = {0.0, 0.3, 0.8};
    phases.Krow = {0.0, 0.1, 1.0};
    phases.Krog = phases.Krow;
    tables.phaseTables = {phases};
    combinePhaseTables(Silent, true, tables);
    ASSERT_EQ(tables.regions.size(), 1U);
    const SaturationTable& table = tables.regions[0];
    ASSERT_EQ(table.SwAxis.size(), 4U);
    const Column axis{0.2, 0.6, 0.7, 1.0};            // So 0.8 is Sw 0.2, 0.3 is 0.7, 0 is 1
    const Column krw{0.0, 0.4, 0.4 + 0.6 / 4, 1.0};   // a quarter of the way from 0.6 to 1
    const Column krow{1.0, 0.1 + 0.9 / 5, 0.1, 0.0};  // So 0.4 is a fifth of the way from 0.3 to 0.8
    const Column pcow{5.0, 1.0, 0.75, 0.0};
    for (std::size_t r = 0; r < axis.size(); ++r) {
        EXPECT_NEAR(table.SwAxis[r], axis[r], 1e-12);
        EXPECT_NEAR(table.Krw[r], krw[r], 1e-12);
        EXPECT_NEAR(table.Krow[r], krow[r], 1e-12);
        EXPECT_NEAR(table.Pcow[r], pcow[r], 1e-12);
    }
    EXPECT_TRUE(table.SgAxis.empty());
}

TEST(PhaseTables, OfGasCountTheOilBesideConnateWater) {
    FluidTables tables;
    PhaseTables phases;
    phases.Sw = {0.2, 1.0};
    phases.Krw = {0.0, 1.0};
    phases.Pcow = {0.0, 0.0};
    phases.Sg = {0.0, 0.8};
    phases.Krg = {0.0, 0.8};
    phases.Pcog = {0.0, 4.0};
    phases.So = {0.0, 0.4, 0.8};
    phases.Krow = {0.0, 0.2, 1.0};
    phases.Krog = {0.0, 0.1, 1.0};
    tables.phaseTables = {phases};
    combinePhaseTables(Silent, true, tables);
    const SaturationTable& table = tables.regions[0];
    ASSERT_EQ(table.SgAxis.size(), 3U);  // So 0.4 beside Swco 0.2 is Sg 0.4
    EXPECT_NEAR(table.SgAxis[1], 0.4, 1e-12);
    EXPECT_NEAR(table.Krg[1], 0.4, 1e-12);
    EXPECT_NEAR(table.Krog[1], 0.1, 1e-12);
    EXPECT_NEAR(table.Pcog[1], 2.0, 1e-12);
    EXPECT_NEAR(table.Krog[0], 1.0, 1e-12);
}

TEST(PhaseTables, OfNoWidthHaveTwoRowsAllTheSame) {
    FluidTables tables;
    PhaseTables phases;
    phases.Sg = {0.0, 0.0};  // a row that lost its saturation
    phases.Krg = {0.0, 1.0};
    phases.Pcog = {0.0, 0.0};
    phases.So = {0.0, 0.8};
    phases.Krow = {0.0, 1.0};
    phases.Krog = {0.0, 1.0};
    tables.phaseTables = {phases};
    combinePhaseTables(Silent, false, tables);
    const SaturationTable& table = tables.regions[0];
    EXPECT_EQ(table.SgAxis, (Column{0.0, 0.0}));
    EXPECT_EQ(table.Krg, (Column{0.0, 0.0}));
    EXPECT_EQ(table.Krog, (Column{1.0, 1.0}));
    EXPECT_EQ(table.Pcog.size(), 2U);
}

}  // namespace
}  // namespace kvr
