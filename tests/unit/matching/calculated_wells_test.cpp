#include "matching/calculated_wells.hpp"

#include "matching/well_series_reader.hpp"
#include "unit/quiet_console.hpp"
#include "unit/scratch_folder.hpp"

#include <gtest/gtest.h>

using namespace kvr;

TEST(CalculatedWells, BinsEndAtEqualTimes) {
    EXPECT_DOUBLE_EQ(binTime(300.0, 4, 1), 75.0);
    EXPECT_DOUBLE_EQ(binTime(300.0, 4, 4), 300.0);
}

TEST(CalculatedWells, CutIsThatOfSurfaceVolumes) {
    const std::vector<WellBin> bins{{10.0, 600.0, 200.0, 0.0, 2500.0}};
    const WellSeries series = calculatedSeries(fieldUnits(), "P1", bins, /*Bo*/ 1.5, /*Bw*/ 1.0);
    EXPECT_DOUBLE_EQ(series.oil[0], 400.0);
    EXPECT_DOUBLE_EQ(series.water[0], 200.0);
    EXPECT_NEAR(series.cut[0], 1.0 / 3.0, 1e-12);
    EXPECT_EQ(series.pressure[0], 2500.0);
}

TEST(CalculatedWells, ACutOfRatesThatGoBackStaysWithinItsBounds) {
    EXPECT_EQ(surfaceCut(-5.0, 5.0), 0.0);
    EXPECT_NEAR(surfaceCut(5.0, -5.0), 1.0, 1e-9);
    EXPECT_EQ(surfaceCut(-1.0, -1.0), 0.0);
}

TEST(CalculatedWells, GasIsInThousandsOfCubicFeet) {
    // 178107.617 barrels of 5.614583 ft3 are 1000 Mscf.
    const std::vector<WellBin> bins{{10.0, 500.0, 0.0, 178107.617, 0.0}};
    const WellSeries series = calculatedSeries(fieldUnits(), "P1", bins, 1.0, 1.0);
    EXPECT_NEAR(series.gas[0], 1000.0, 1e-5);
    EXPECT_NEAR(series.gasOilRatio[0], 2.0, 1e-8);
}

TEST(CalculatedWells, AShutWellHasRowsOfZeros) {
    const std::vector<WellBin> bins{{10.0, 0.0, 0.0, 0.0, 0.0}, {20.0, 0.0, 0.0, 0.0, 0.0}};
    const WellSeries series = calculatedSeries(fieldUnits(), "P1", bins, 1.2, 1.0);
    for (const std::vector<double>* list :
         {&series.oil, &series.water, &series.gas, &series.cut, &series.gasOilRatio})
        EXPECT_EQ(*list, (std::vector<double>{0.0, 0.0}));
}

TEST(CalculatedWells, AreReadBackAsTheyWereWritten) {
    const ScratchFolder folder;
    const QuietConsole quiet;
    const std::vector<WellBin> first{{10.0, 600.0, 200.0, 30.0, 2500.0}, {20.0, 300.0, 500.0, 15.0, 2400.0}};
    const std::vector<WellSeries> wells{calculatedSeries(fieldUnits(), "P1", first, 1.5, 1.0),
                                        calculatedSeries(fieldUnits(), "P2", first, 1.2, 1.1)};
    folder.write("WELL_CALCULATED.DATA", "an older file\n");
    writeCalculatedWells(quiet.console, folder.path, wells);
    const std::vector<std::string> names{"P1", "P2"};
    const std::vector<WellSeries> read =
        readWellSeries(quiet.console, folder.path, WellDataSide::Calculated, names, 0);
    for (std::size_t w = 0; w < 2; ++w) {
        ASSERT_EQ(read[w].count(), 2u);
        for (std::size_t i = 0; i < 2; ++i) {
            EXPECT_EQ(read[w].time[i], wells[w].time[i]);
            EXPECT_NEAR(read[w].oil[i], wells[w].oil[i], 1e-9);
            EXPECT_NEAR(read[w].gas[i], wells[w].gas[i], 1e-9);
            EXPECT_NEAR(read[w].cut[i], wells[w].cut[i], 1e-12);
            EXPECT_NEAR(read[w].gasOilRatio[i], wells[w].gasOilRatio[i], 1e-12);
        }
    }
}
