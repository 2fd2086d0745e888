#include "matching/well_series_reader.hpp"

#include "eclipse/well_data_layout.hpp"
#include "unit/quiet_console.hpp"
#include "unit/scratch_folder.hpp"

#include <filesystem>
#include <gtest/gtest.h>

using namespace kvr;

namespace {

const std::string Head = "WNAME TIME WOPR WWPR WGPR WBHP WWCT WGOR\n";
const std::vector<std::string> Wells{"P1", "P2"};

struct ObservedFile {
    ScratchFolder folder;
    QuietConsole quiet;

    explicit ObservedFile(const std::string& text) { folder.write("WELL_OBSERVED.DATA", text); }
    std::vector<WellSeries> read(int componentCount = 0) const {
        return readWellSeries(quiet.console, folder.path, WellDataSide::Observed, Wells, componentCount);
    }
    [[nodiscard]] bool told(const std::string& lines) const {
        return quiet.screenText().find(lines) != std::string::npos;
    }
    [[nodiscard]] std::string placeOf(int line) const {
        return fmt::format("File {}WELL_OBSERVED.DATA, line {}", folder.path, line);
    }
    /// The reading stops with the message and the line of the file.
    void stops(const std::string& message, int line) const {
        EXPECT_EXIT(readWellSeries(consoleOnStandardError(), folder.path, WellDataSide::Observed, Wells, 0),
                    testing::ExitedWithCode(1),
                    message + "\nFile [^\n]*WELL_OBSERVED.DATA, line " + std::to_string(line) + "\n");
    }
};

const std::string Unreadable = "ERROR :: During Matching, could not extract Observed Data. ";
const std::string Suspicious = "ERROR :: Observed Data Format is Suspicious, Check WELL_OBSERVED.DATA ";

}  // namespace

TEST(WellDataLayout, NamesAndValuesStandInTheirWidths) {
    NumberWriter writer;
    putWellDataHead(0, writer);
    const std::string head = fmt::to_string(writer.buffer);
    EXPECT_EQ(head.size(), 8u * 21u + 1u);
    EXPECT_EQ(head.substr(0, 42), "WNAME                TIME                 ");
    NumberWriter row;
    const std::vector<double> values{10.0, -1.5};
    putWellDataRow("PRODUCER-7", values, row);
    EXPECT_EQ(fmt::to_string(row.buffer), "PRODUCER      1.000000000000E+01  -1.500000000000E+00 \n");
    NumberWriter components;
    putWellDataHead(2, components);
    EXPECT_EQ(fmt::to_string(components.buffer), head + "WZMF_0001            WZMF_0002            \n");
}

TEST(WellSeriesReader, ReadsWhatTheWriterWrites) {
    NumberWriter writer;
    putWellDataHead(0, writer);
    putWellDataRow("P2", std::vector<double>{1.0, 20.0, 80.0, 3.0, 2500.0, 0.8, 0.15}, writer);
    putWellDataRow("P1", std::vector<double>{1.0, 50.0, 0.0, 7.5, 2400.0, 0.0, 0.15}, writer);
    putWellDataRow("P1", std::vector<double>{2.5, 40.0, 10.0, 6.0, 2300.0, 0.2, 0.15}, writer);
    const ObservedFile file(fmt::to_string(writer.buffer));
    const std::vector<WellSeries> series = file.read();
    ASSERT_EQ(series.size(), 2u);
    EXPECT_EQ(series[0].name, "P1");
    EXPECT_EQ(series[0].time, (std::vector<double>{1.0, 2.5}));
    EXPECT_EQ(series[0].oil, (std::vector<double>{50.0, 40.0}));
    EXPECT_EQ(series[0].water, (std::vector<double>{0.0, 10.0}));
    EXPECT_EQ(series[0].gas, (std::vector<double>{7.5, 6.0}));
    EXPECT_EQ(series[0].pressure, (std::vector<double>{2400.0, 2300.0}));
    EXPECT_EQ(series[0].cut, (std::vector<double>{0.0, 0.2}));
    EXPECT_EQ(series[0].gasOilRatio, (std::vector<double>{0.15, 0.15}));
    EXPECT_EQ(series[1].cut, (std::vector<double>{0.8}));
    EXPECT_EQ(file.quiet.screenText(), "Read WELL_OBSERVED.DATA \n");
    EXPECT_NE(file.quiet.logText().find(" Observed  Point  : 2\n"), std::string::npos);
}

TEST(WellSeriesReader, FormsAMissingCutAndTellsIt) {
    const ObservedFile file("WNAME TIME WOPRH WWPRH\nP1 1 20 80\nP1 2 0 0\n");
    const std::vector<WellSeries> series = file.read();
    EXPECT_NEAR(series[0].cut[0], 0.8, 1e-10);
    EXPECT_EQ(series[0].cut[1], 0.0);
    EXPECT_EQ(series[0].pressure, (std::vector<double>{0.0, 0.0}));
    EXPECT_TRUE(file.told("NOTE :: Observed WCT Data calculated internally, from WOPR and WWPR \n"));
    const ObservedFile wet("WNAME TIME WOPR WWPR\nP1 1 80 20\n");
    EXPECT_NEAR(wet.read()[0].cut[0], 0.2, 1e-10);
}

TEST(WellSeriesReader, TakesColumnsInAnyOrderAndNumbersInAnyForm) {
    const ObservedFile file("wname\tWWCT,WGOR  time\r\n\r\nP1,+.5D0\t1d-400 1E1\r\n");
    const std::vector<WellSeries> series = file.read();
    EXPECT_EQ(series[0].time, (std::vector<double>{10.0}));
    EXPECT_EQ(series[0].cut, (std::vector<double>{0.5}));
    EXPECT_EQ(series[0].gasOilRatio, (std::vector<double>{0.0}));
}

TEST(WellSeriesReader, TakesTheFractionsOfComponentsFromTheSecondLine) {
    const ObservedFile file("WNAME TIME WOPR\nWZMF_0002 WZMF_0001\nP1 1 100 0.3 0.7\n");
    const std::vector<WellSeries> series = file.read(2);
    EXPECT_EQ(series[0].fractions[0], (std::vector<double>{0.7}));
    EXPECT_EQ(series[0].fractions[1], (std::vector<double>{0.3}));
}

TEST(WellSeriesReader, AWellWithoutRowsIsEmpty) {
    const ObservedFile file(Head);
    for (const WellSeries& series : file.read()) EXPECT_EQ(series.count(), 0u);
}

TEST(WellSeriesReader, WarnsWithFileAndLine) {
    const ObservedFile file(
        "WNAME TIME WOPR WWPR WWCT WLPR\n"
        "P1 1 10 0 0.0 1\n"
        "INJ 1 0 0 0.0 1\n"
        "P1 1 10 0 0.0 1\n"
        "P1 3 -5 0 0.0 1\n"
        "INJ 2 0 0 0.0 1\n"
        "P2 3 10 0 1.2 1\n");
    EXPECT_EQ(file.read()[0].count(), 3u);
    EXPECT_TRUE(file.told("WARNING :: Column WLPR is not known and is left out\n" + file.placeOf(1) + "\n"));
    EXPECT_TRUE(
        file.told("WARNING :: INJ is no producer of the run, its rows are left out\n" + file.placeOf(3)));
    EXPECT_FALSE(file.told(file.placeOf(6))) << "once";
    EXPECT_TRUE(
        file.told("WARNING :: Times of well P1 do not rise, they are not sorted\n" + file.placeOf(4)));
    EXPECT_TRUE(
        file.told("WARNING :: Well P1 has a value below 0 or a water cut above 1\n" + file.placeOf(5)));
    EXPECT_TRUE(
        file.told("WARNING :: Well P2 has a value below 0 or a water cut above 1\n" + file.placeOf(7)));
}

TEST(WellSeriesReader, StopsOnWhatIsNoNumber) {
    for (const char* word : {"x", "1.2.3", "nan", "inf", "1e999", "--", "1/2"})
        ObservedFile(Head + "P1 1 2 3 4 5 0.6 7\nP1 2 2 3 " + word + " 5 0.6 7\n").stops(Unreadable, 3);
    ObservedFile("").stops(Unreadable, 0);
}

TEST(WellSeriesReader, StopsOnColumnsThatDoNotFit) {
    ObservedFile(Head + "P1 1 2 3 4 5 0.6\n").stops(Suspicious, 2);
    ObservedFile(Head + "\nP1 1 2 3 4 5 0.6 7 8\n").stops(Suspicious, 3);
    ObservedFile(Head + "P1 -1 2 3 4 5 0.6 7\n").stops(Suspicious, 2);
    ObservedFile("P1 1 2 3 4 5 0.6 7\n").stops(Suspicious, 1);
    ObservedFile("WNAME WOPR\nP1 1\n").stops(Suspicious, 1);
    ObservedFile("WNAME TIME WOPR WOPRH\nP1 1 2 3\n").stops(Suspicious, 1);
}

TEST(WellSeriesReader, StopsOnFilesThatCannotBeOpened) {
    const ScratchFolder folder;
    const auto read = [&](WellDataSide side) {
        readWellSeries(consoleOnStandardError(), folder.path, side, Wells, 0);
    };
    EXPECT_EXIT(read(WellDataSide::Observed), testing::ExitedWithCode(1),
                "ERROR: File Open Error\n[^\n]*WELL_OBSERVED.DATA\n");
    std::filesystem::create_directory(folder.path + "WELL_OBSERVED.DATA");
    EXPECT_EXIT(read(WellDataSide::Observed), testing::ExitedWithCode(1),
                "ERROR: File handling Error at \\*.obs file for INVERSION \n");
    folder.write("WELL_CALCULATED.DATA", Head + "P1 1 2\n");
    EXPECT_EXIT(read(WellDataSide::Calculated), testing::ExitedWithCode(1),
                "ERROR :: Calculated Data Format is Suspicious, Check WELL_CALCULATED.DATA \n");
    folder.write("WELL_CALCULATED.DATA", Head + "P1 1 2 3 4 5 ? 7\n");
    EXPECT_EXIT(read(WellDataSide::Calculated), testing::ExitedWithCode(1),
                "ERROR :: During History Matching, problem by Calculated Data -> WELL_CALCULATED.DATA \n");
}

TEST(WellSeriesReader, FormsCutsWithinTheirBoundsOfRatesThatGoBackAndOfShutWells) {
    const ObservedFile file(
        "WNAME TIME WOPR WWPR\nP1 1 400 200\nP1 2 5 -5\nP1 3 -5 5\nP1 4 -1 -1\nP1 5 0 0\n");
    const std::vector<double> cut = file.read()[0].cut;
    ASSERT_EQ(cut.size(), 5U);
    EXPECT_NEAR(cut[0], 1.0 / 3.0, 1e-12);
    EXPECT_EQ(cut[1], 0.0);
    EXPECT_NEAR(cut[2], 1.0, 1e-9);
    EXPECT_EQ(cut[3], 0.0);
    EXPECT_EQ(cut[4], 0.0);
}
