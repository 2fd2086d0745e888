#include "deck/sections/props.hpp"

#include "fluid/black_oil.hpp"
#include "unit/deck/deck_bench.hpp"

#include <gtest/gtest.h>

namespace kvr {
namespace {

/// A PROPS section read from text, with the records it fills.
struct PropsBench : DeckBench {
    RunOptions options;
    FluidTables tables;
    GridModel grid;

    explicit PropsBench(std::string_view text) : DeckBench(text, "PROPS") { tables.hasGas = true; }
    void read() {
        PropsRecords records{options, tables, grid};
        readProps(reader, records);
    }
    [[nodiscard]] int timesPrinted(std::string_view text) const {
        const std::string all = screen();
        int count = 0;
        for (std::size_t at = all.find(text); at != std::string::npos; at = all.find(text, at + 1)) ++count;
        return count;
    }
};

constexpr std::string_view Swof = "SWOF\n0.2 0 0.9 0\n0.8 0.45 0 0 /\n";
constexpr std::string_view Sgof = "SGOF\n0 0 0.9 0\n0.6 0.6 0 0 /\n";
constexpr std::string_view OdehPvto =
    "PVTO\n"
    "0.0010 14.7   1.0620 1.0400 /\n"
    "0.0905 264.7  1.1500 0.9750 /\n"
    "0.1800 514.7  1.2070 0.9100 /\n"
    "0.3710 1014.7 1.2950 0.8300 /\n"
    "0.6360 2014.7 1.4350 0.6950 /\n"
    "0.7750 2514.7 1.5000 0.6410 /\n"
    "0.9300 3014.7 1.5650 0.5940 /\n"
    "1.2700 4014.7 1.6950 0.5100\n"
    "       9014.7 1.5790 0.7400 /\n"
    "1.6180 5014.7 1.8270 0.4490\n"
    "       9014.7 1.7370 0.6310 /\n"
    "/\n";

TEST(Props, OfATableOfOneRowStopsTheRun) {
    PropsBench bench("SWOF\n0.2 0 0.9 0 /\nDENSITY\n50 60 0.1 /\n");
    bench.speakToStandardError();
    EXPECT_EXIT(bench.read(), testing::ExitedWithCode(1), "ERROR :: INSUFFICIENT SWOF TABLE");
}

TEST(Props, OfALiveOilTableOfOneRowStopsTheRun) {
    PropsBench bench("PVTO\n0.5 2000 1.2 0.5 /\n/\n");
    bench.speakToStandardError();
    EXPECT_EXIT(bench.read(), testing::ExitedWithCode(1), "ERROR :: INSUFFICIENT PVTO TABLE");
}

TEST(Props, WithLettersForNumbersStopTheRunAndNameThePlace) {
    PropsBench bench("PVDG\n14.7 166 0.008\n264.7 12.0 abc\n");
    bench.reader.errorName = "PROPS";
    bench.speakToStandardError();
    EXPECT_EXIT(bench.read(), testing::ExitedWithCode(1),
                "ERROR: File reading error, code = 64\nReading error, in PROPS Section\n.*line 3.*PVDG");
}

TEST(Props, WithLettersInALiveOilRowStopTheRun) {
    PropsBench bench("PVTO\n0.5 2000 1.2 0.5 /\n0.7 x 1.2 0.5 /\n");
    bench.speakToStandardError();
    EXPECT_EXIT(bench.read(), testing::ExitedWithCode(1), "line 3.*PVTO");
}

TEST(Props, WithALiveOilRecordOfNoWholeRowsStopTheRun) {
    PropsBench bench("PVTO\n0.5 2000 1.2 0.5 /\n0.7 3000 /\n");
    bench.speakToStandardError();
    EXPECT_EXIT(bench.read(), testing::ExitedWithCode(1), "line 3.*PVTO");
}

TEST(Props, WithoutTablesGetDefaultsWithTheirLines) {
    PropsBench bench("");
    bench.read();
    const FluidTables& tables = bench.tables;
    EXPECT_EQ(tables.GasPressure, (Column{10.0, 100000.0}));
    EXPECT_EQ(tables.GasFvf, (Column{1.0, 1.0}));
    EXPECT_EQ(tables.GasViscosity, (Column{1.0, 1.0}));
    EXPECT_EQ(tables.OilPressure, (Column{10.0, 100000.0}));
    EXPECT_EQ(tables.regions.size(), 1U);
    EXPECT_EQ(tables.regions.front().Krg, (Column{0.0, 0.0}));
    EXPECT_EQ(tables.regions.front().CriticalSg, 0.0);
    EXPECT_EQ(tables.regions.front().Krow, (Column{1.0, 0.0}));
    for (const char* text :
         {"-> Finished Reading PROPS. Move to Next Section", "Gas PVT-Table was not given",
          "OIL PVT-Table was not given", "Gas RelpPerm-Table was not given",
          "OIL RelpPerm-Table was not given",
          "WARNING :: Rock compressibility was not given, or less than 1.E-20. -> Check Input Deck",
          "WARNING :: Dead oil PVT table confirmed..", "Bubble point pressure will be set to zero",
          "within given table data"})
        EXPECT_EQ(bench.timesPrinted(text), 1) << text;
    EXPECT_NE(bench.logged().find("WARNING :: Rock compressibility was not given, or less than 1.E-20\n"),
              std::string::npos);
}

TEST(Props, WithoutAGasTableLetTheOilFollowTheWaterTable) {
    PropsBench bench(Swof);
    bench.read();
    EXPECT_EQ(bench.tables.regions.front().Krog, (Column{0.9, 0.9}));
}

TEST(Props, OfADeckWithoutWaterSayNothingOfIt) {
    PropsBench bench(Swof);
    bench.read();
    EXPECT_EQ(bench.logged().find("water"), std::string::npos);
    EXPECT_EQ(bench.tables.waterFvf, 1.0);
}

TEST(Props, WithNothingForWaterAreRepairedWithOneWarningEach) {
    PropsBench bench("PVTW\n0 0 0 0 0 /\n");
    bench.options.hasWater = true;
    bench.read();
    EXPECT_EQ(bench.tables.referencePressureWater, 14.6);
    EXPECT_EQ(bench.tables.rockReferencePressure, 14.6);
    EXPECT_EQ(bench.tables.waterFvf, 1.0);
    EXPECT_EQ(bench.tables.waterViscosity, 1.0);
    EXPECT_EQ(bench.tables.waterCompressibility, 1e-20);
    for (const char* text :
         {"WARNING :: Given reference pressure is not realistic. -> Set ti 14.6 psi",
          "WARNING :: Given water formation volume factor is not realistic -> Check input",
          "WARNING :: Given water viscosity is not realistic -> Check input",
          "WARNING :: Given water compressibility is not realistic -> Set to 1.D-20, Check input"})
        EXPECT_EQ(bench.timesPrinted(text), 1) << text;
}

TEST(Props, WithWaterGivenKeepIt) {
    PropsBench bench("PVTW\n4017.55 1.038 3.22E-6 0.318 0.0 /\nROCK\n14.7 3E-6 /\n");
    bench.read();
    EXPECT_EQ(bench.tables.referencePressureWater, 4017.55);
    EXPECT_EQ(bench.tables.waterCompressibility, 3.22e-6);
    EXPECT_EQ(bench.tables.rockCompressibility, 3e-6);
    EXPECT_EQ(bench.timesPrinted("WARNING :: Given"), 0);
    EXPECT_EQ(bench.timesPrinted("WARNING :: Rock"), 0);
}

TEST(Props, TurnGasFormationFactorsIntoPureRatios) {
    PropsBench bench("PVDG\n14.7 166.666 0.008\n4014.7 0.811 0.0268 /\n");
    bench.read();
    EXPECT_NEAR(bench.tables.GasFvf[0], 0.9357601, 5e-8);
    EXPECT_NEAR(bench.tables.GasFvf[1], 0.004553427, 5e-10);
}

TEST(Props, OfAMetricDeckAreConverted) {
    PropsBench bench(
        "PVDG\n1 0.9 0.008\n100 0.01 0.0268 /\nDENSITY\n800 1000 1 /\nROCK\n100 1.450377E-4 /\n"
        "RTEMP\n100 /\n");
    bench.units = metricUnits();
    bench.read();
    EXPECT_EQ(bench.tables.GasFvf, (Column{0.9, 0.01}));
    EXPECT_NEAR(bench.tables.GasPressure[1], 1450.377, 1e-9);
    EXPECT_NEAR(bench.tables.waterDensity, 62.42797, 1e-9);
    EXPECT_NEAR(bench.tables.rockCompressibility, 1e-5, 1e-15);
    EXPECT_NEAR(bench.tables.reservoirTemperature, 671.67, 1e-9);
}

TEST(Props, OfAMetricDeckBecomeThoseOfTheSameFluidInFieldUnits) {
    // Pressures in multiples of 14.50377 psi, the psi of a bar.
    PropsBench metric(
        "PVTO\n100 100 1.3 0.8 /\n150 200 1.5 0.6\n300 1.45 0.7 /\n/\nSWOF\n0.2 0 0.9 2\n0.8 0.45 0 0 /\n"
        "SGOF\n0 0 0.9 0\n0.6 0.6 0 4 /\nPVTW\n200 1.03 1E-4 0.5 2E-4 /\nSTCOND\n15 1 /\n");
    metric.units = metricUnits();
    metric.read();
    const FluidTables& tables = metric.tables;
    EXPECT_EQ(tables.OilRs, (Column{100.0, 150.0, 150.0})) << "a pure ratio in the deck";
    EXPECT_NEAR(tables.OilPressure[2], 4351.131, 1e-9);
    EXPECT_NEAR(tables.UnderPressureStep[0], 1450.377, 1e-9);
    EXPECT_NEAR(tables.regions.front().Pcow.front(), 29.00754, 1e-10);
    EXPECT_NEAR(tables.regions.front().Pcog.back(), 58.01508, 1e-10);
    EXPECT_NEAR(tables.referencePressureWater, 2900.754, 1e-9);
    EXPECT_NEAR(tables.waterCompressibility * 14.50377, 1e-4, 1e-15);
    EXPECT_NEAR(tables.waterViscosibility * 14.50377, 2e-4, 1e-15);
    EXPECT_NEAR(tables.surfaceTemperature, 518.67, 1e-9);
    EXPECT_NEAR(tables.surfacePressure, 14.50377, 1e-12);
}

TEST(Props, StopOnAMissingFile) {
    PropsBench bench("INCLUDE\n'missing' /\n");
    bench.speakToStandardError();
    EXPECT_EXIT(bench.read(), testing::ExitedWithCode(1),
                "ERROR: INCLUDE File Open Error at PROPS section\nFile I/O Error, in PROPS Section");
}

TEST(Props, KeepTheSaturatedRowOfEveryRsAndTheLastUnderSaturatedBlock) {
    PropsBench bench(OdehPvto);
    bench.read();
    const FluidTables& tables = bench.tables;
    EXPECT_EQ(tables.SatRows, 9);
    EXPECT_EQ(tables.UnderRows, 1);
    EXPECT_EQ(tables.OilRows, 10);
    EXPECT_NEAR(tables.MaxRs, 288.178125, 288.178125e-8);
    EXPECT_EQ(tables.OilPressure.back(), 9014.7);
    EXPECT_EQ(tables.OilFvf.back(), 1.737);
    EXPECT_EQ(tables.OilFvf[7], 1.695);
    EXPECT_EQ(bench.timesPrinted("Dead oil"), 0);
}

TEST(Props, TakeLiveOilRecordsInAnyArrangement) {
    PropsBench bench(
        "PVTO\n-- Rs p Bo mu\n0.1\n500 1.1 1.0 /\n0.5 2000 1.3 0.8 /\n1.0 3000 1.5 0.6 4000 1.48 0.65\n"
        "5000 1.465 0.7 6000 1.455 0.75 /\nDENSITY\n50 60 0.1 /\n");
    bench.read();
    EXPECT_EQ(bench.tables.SatRows, 3);
    EXPECT_EQ(bench.tables.UnderRows, 3);
    EXPECT_EQ(bench.tables.OilPressure, (Column{500, 2000, 3000, 4000, 5000, 6000}));
    EXPECT_EQ(bench.tables.oilDensity, 50.0);
}

TEST(Props, EndALiveOilTableAtTheNextKeyword) {
    PropsBench bench("PVTO\n0.1 500 1.1 1.0 /\n0.5 2000 1.3 0.8\n     4000 1.2 0.9\nDENSITY\n50 60 0.1 /\n");
    bench.read();
    EXPECT_EQ(bench.tables.SatRows, 2);
    EXPECT_EQ(bench.tables.UnderRows, 1);
    EXPECT_EQ(bench.tables.oilDensity, 50.0);
}

TEST(Props, EndATableAtTheSlashBehindItsLastRow) {
    PropsBench bench("PVDG\n14.7 166 0.008\n264.7 12.0 0.01\n514.7 6.2 0.012 /\nDENSITY\n50 60 0.1 /\n");
    bench.read();
    EXPECT_EQ(bench.tables.GasRows, 3);
    EXPECT_EQ(bench.tables.oilDensity, 50.0);
}

TEST(Props, EndATableAtACommentAndReportItsOtherRows) {
    PropsBench bench(
        "SWOF\n0.2 0 0.9 0\n0.4 0.05 0.5 0\n0.6 0.2 0.2 0\n-- the rest\n0.7 0.3 0.1 0\n0.8 0.45 0 0\n/\n");
    bench.read();
    EXPECT_EQ(bench.tables.regions.front().SwAxis, (Column{0.2, 0.4, 0.6}));
    EXPECT_EQ(bench.timesPrinted(" 0.7 0.3  -> not surpported  "), 1);
    EXPECT_EQ(bench.timesPrinted(" 0.8 0.45 -> not surpported  "), 1);
}

TEST(Props, ConfirmDeadOilGivenByItsOwnTable) {
    PropsBench bench("PVDO\n300 1.0037 1.0\n4000 1.0 1.0\n/\n");
    bench.read();
    EXPECT_EQ(bench.tables.OilRows, 2);
    EXPECT_EQ(bench.tables.MaxRs, 0.0);
    EXPECT_EQ(bench.timesPrinted("WARNING :: Dead oil PVT table confirmed.."), 1);
}

TEST(Props, ReadATableForEveryRegion) {
    PropsBench bench(
        "SWOF\n0.2 0 0.9 0\n0.8 0.45 0 0 /\n-- second\n0.1 0 1 0\n0.5 0.2 0.3 0\n0.9 0.6 0 0 /\n"
        "SGOF\n0 0 0.9 0\n0.6 0.6 0 0\n/\n0 0 1 0\n0.7 0.7 0 0\n/\n");
    bench.options.maxRockTables = 2;
    bench.read();
    ASSERT_EQ(bench.tables.regions.size(), 2U);
    EXPECT_EQ(bench.tables.regions[1].SwAxis, (Column{0.1, 0.5, 0.9}));
    EXPECT_EQ(bench.tables.regions[1].SgAxis, (Column{0.0, 0.7}));
    EXPECT_NEAR(bench.tables.regions[1].ResidualSo, 0.1, 1e-15);
}

TEST(Props, CompleteTheRegionsThatGotNoTable) {
    PropsBench bench(std::string(Swof) + "-- no second table\n" + std::string(Sgof));
    bench.options.maxRockTables = 2;
    bench.read();
    EXPECT_EQ(bench.timesPrinted("Gas RelpPerm-Table was not given"), 1);
    EXPECT_EQ(bench.timesPrinted("OIL RelpPerm-Table was not given"), 1);
    EXPECT_EQ(bench.tables.regions[1].SwAxis, (Column{0.0, 1.0}));
}

TEST(Props, DropFurtherPvtRegions) {
    PropsBench bench(
        "PVDO\n300 1.0037 1.0\n4000 1.0 1.0 /\n300 2.0 1.0\n4000 1.9 1.0 /\n"
        "DENSITY\n50 60 0.1 /\n51 61 0.2 /\nROCK\n14.7 3E-6 /\n");
    bench.options.maxPvtTables = 2;
    bench.read();
    EXPECT_EQ(bench.tables.OilFvf, (Column{1.0037, 1.0}));
    EXPECT_EQ(bench.tables.oilDensity, 50.0);
    EXPECT_EQ(bench.tables.rockCompressibility, 3e-6);
}

TEST(Props, GetDensitiesThatWereNotGiven) {
    PropsBench bench("DENSITY\n0 0 0 /\n");
    bench.read();
    EXPECT_EQ(bench.tables.oilDensity, 37.4);
    EXPECT_EQ(bench.tables.waterDensity, 64.23);
    EXPECT_EQ(bench.tables.gasDensity, 0.11);
}

TEST(Props, ReadTemperaturesTracersAndSkipTheReportRequest) {
    PropsBench bench(
        "RTEMP\n200 /\nSTCOND\n60 14.7 /\nTRACER\nTR1 STB /\n'TR2' 'MSCF' /\n/\nRPTPROPS\n1 2 /\n");
    bench.read();
    EXPECT_NEAR(bench.tables.reservoirTemperature, 659.67, 1e-10);
    EXPECT_NEAR(bench.tables.surfaceTemperature, 519.67, 1e-10);
    EXPECT_EQ(bench.tables.surfacePressure, 14.7);
    EXPECT_EQ(bench.tables.tracerNames, (std::vector<std::string>{"TR1", "TR2"}));
    EXPECT_EQ(bench.tables.tracerUnits, (std::vector<std::string>{"STB", "MSCF"}));
    EXPECT_EQ(bench.timesPrinted("READ -> RPTPROPS, skipped"), 1);
    EXPECT_EQ(bench.timesPrinted("not surpported"), 0);
}

TEST(Props, HoldJFunctionColumnsWithoutAUnit) {
    PropsBench bench("SWOF\n0.2 0 0.9 0.5\n0.8 0.45 0 0 /\n");
    bench.units = metricUnits();
    bench.options.useJFunction = true;
    bench.read();
    EXPECT_EQ(bench.tables.regions.front().Pcow.front(), 0.5);
}

TEST(Props, PrintTheTablesToTheLog) {
    PropsBench bench(std::string(OdehPvto) + std::string(Swof) + std::string(Sgof));
    bench.read();
    const std::string text = bench.logged();
    for (const char* heading :
         {"OIL PROPERTY TABLE", "Derivative of Rock Table - SWOF", "dPcwdw",
          "Derivative of Rock Table - SGOF", "dPcgdSg", "Connate Sw            0.2",
          "Critical Sg           0\n", "Residual So @ (o/w)   0.2", "Residual So @ (l/g)   0.2"})
        EXPECT_NE(text.find(heading), std::string::npos) << heading;
}

TEST(Props, AreCopiedInBothUnitSystemsWhenAsked) {
    PropsBench bench("PVDO\n1000 1.2 2.0\n2000 1.1 2.5 /\n");
    bench.units = fieldUnits();
    bench.reader.outputMetric = true;
    bench.read();
    EXPECT_NE(contentsOf(bench.sinks.fieldCopy).find("PVDO\n1000 1.2 2\n2000 1.1 2.5\n/\n"),
              std::string::npos);
    EXPECT_NE(contentsOf(bench.sinks.metricCopy).find("PVDO\n68.94757 1.2 2\n137.89514 1.1 2.5\n/\n"),
              std::string::npos);
}

}  // namespace
}  // namespace kvr

namespace kvr {
namespace {

TEST(Props, OfConstantCompressibilityFollowItsSeries) {
    PropsBench bench("PVCDO\n3000 1.2 1e-5 2.0 3e-5 /\n");
    bench.read();
    // X = 1e-5 * 1000 = 0.01: Bo = 1.2 / 1.01005; Y = -2e-5 * 1000 = -0.02: mu Bo = 2.4 / 0.9802
    const double Bo = 1.2 / 1.01005;
    EXPECT_NEAR(OilFvf(bench.tables, 4000.0, 4000.0), Bo, 2e-7);
    EXPECT_NEAR(OilViscosity(bench.tables, 4000.0, 4000.0), 2.4 / 0.9802 / Bo, 1e-6);
}

TEST(Props, GiveEachRegionOfFluidsItsTables) {
    PropsBench bench(
        "PVDO\n1000 1.2 1\n4000 1.1 1.2\n/\n1000 1.4 3\n4000 1.3 4\n/\nDENSITY\n50 60 0.1 /\n55 70 0.1 /\n"
        "PVTW\n3000 1.0 1e-6 0.5 0 /\n3000 1.02 1e-6 0.7 0 /\nROCK\n3000 1e-6 /\n3000 2e-6 /\n");
    bench.options.maxPvtTables = 2;
    bench.read();
    ASSERT_EQ(bench.tables.furtherPvt.size(), 1U);
    bench.tables.PvtRegionCell.assign(2, 0);
    bench.tables.PvtRegionCell[2] = 1;
    EXPECT_DOUBLE_EQ(OilFvf(pvtAt(bench.tables, 1), 4000.0, 4000.0), 1.1);
    EXPECT_DOUBLE_EQ(OilFvf(pvtAt(bench.tables, 2), 4000.0, 4000.0), 1.3);
    EXPECT_EQ(pvtAt(bench.tables, 2).waterViscosity, 0.7);
    EXPECT_EQ(pvtAt(bench.tables, 2).oilDensity, 55.0);
    EXPECT_EQ(pvtAt(bench.tables, 2).rockCompressibility, 2e-6);
    EXPECT_EQ(pvtAt(bench.tables, 1).rockCompressibility, 1e-6);
}

TEST(Props, TellWhatARegionOfFluidsTakesFromTheOneBefore) {
    PropsBench bench("PVDO\n1000 1.2 1\n4000 1.1 1.2\n/\nDENSITY\n50 60 0.1 /\n55 70 0.1 /\n");
    bench.tables.hasGas = false;
    bench.options.maxPvtTables = 2;
    bench.read();
    EXPECT_TRUE(
        bench.printed("WARNING :: PVT REGION 2 HAS NO TABLE OF OIL, THAT OF THE REGION BEFORE IS TAKEN"));
    EXPECT_FALSE(bench.printed("PVT REGION 2 HAS NO DENSITY"));
    EXPECT_FALSE(bench.printed("PVT REGION 2 HAS NO TABLE OF GAS"));
    EXPECT_EQ(bench.tables.furtherPvt[0].OilFvf, bench.tables.OilFvf);
}

TEST(Props, FillOpenNumbersOfATableByTheirNeighbours) {
    PropsBench bench("SWOF\n0.2 0 1 0\n0.4 1* 0.5 1*\n0.8 0.6 0 1* /\n");
    bench.read();
    EXPECT_NEAR(bench.tables.regions[0].Krw[1], 0.2, 1e-12);  // a third of the way to 0.6
    EXPECT_EQ(bench.tables.regions[0].Pcow[2], 0.0);
}

TEST(Props, StopOnAnAxisThatFallsAndNameItsLine) {
    PropsBench bench("SWOF\n0.2 0 1 0\n0.1 0.2 0.5 0\n0.8 0.6 0 0 /\n");
    bench.speakToStandardError();
    EXPECT_EXIT(
        bench.read(), testing::ExitedWithCode(1),
        "SWOF TABLE 1: Sw DOES NOT RISE IN 1 ROWS; FIRST: ROW 2, COLUMN 1, 0.1\nFile TEST.DATA, line 3");
}

}  // namespace
}  // namespace kvr
