#include "eclipse/sensitivity_files.hpp"

#include "unit/quiet_console.hpp"
#include "unit/scratch_folder.hpp"

#include <filesystem>
#include <gtest/gtest.h>

using namespace kvr;

namespace {

/// Value of a cell of a well in a step, by which every place of a file is known.
double marked(int step, std::size_t well, CellId cell) {
    return 1e6 * step + 1e4 * static_cast<double>(well + 1) + cell;
}

void writeMarked(const Console& console, const ScratchFolder& folder, SensitivityKind kind, int step,
                 std::size_t wells, CellId cells) {
    writeSensitivityStep(
        console,
        {folder.path + sensitivityFileName(kind, step), folder.path + sensitivityFileName(kind, WholeRun)},
        step == 1, wells, cells, [&](std::size_t well, CellArray<double>& values) {
            for (CellId cell = 1; cell <= values.count(); ++cell) values[cell] = marked(step, well, cell);
        });
}

}  // namespace

TEST(SensitivityFiles, HaveNamesWithFourDigitsOfTheStep) {
    EXPECT_EQ(sensitivityFileName(SensitivityKind::TravelTime, 3), "HM_SENSTEMP_GTTI.K0003");
    EXPECT_EQ(sensitivityFileName(SensitivityKind::Pressure, WholeRun), "HM_SENSTEMP_GBHPI.K0000");
}

TEST(SensitivityFiles, CutEachWellIntoRecordsOfAThousandWithoutHeaders) {
    const QuietConsole quiet;
    const ScratchFolder folder;
    writeMarked(quiet.console, folder, SensitivityKind::TravelTime, 1, 2, 2500);
    // For each of two wells 1000, 1000 and 500 numbers of eight bytes between two lengths of four.
    EXPECT_EQ(std::filesystem::file_size(folder.path + "HM_SENSTEMP_GTTI.K0001"), 40048U);
    const std::string bytes = folder.read("HM_SENSTEMP_GTTI.K0001");
    EXPECT_EQ(bytes.substr(0, 4), std::string("\x00\x00\x1f\x40", 4));  // 8000, big-endian
}

TEST(SensitivityFiles, ComeBackWellByWellAsTheyWereWritten) {
    const QuietConsole quiet;
    const ScratchFolder folder;
    writeMarked(quiet.console, folder, SensitivityKind::Pressure, 1, 3, 1234);
    SensitivityReader reader;
    ASSERT_TRUE(openSensitivities(quiet.console, folder.path + "HM_SENSTEMP_GBHPI.K0001", 3, 1234, reader));
    for (const std::size_t well : {std::size_t{2}, std::size_t{0}, std::size_t{1}}) {
        const auto values = readSensitivities(quiet.console, 1234, well, reader);
        ASSERT_EQ(values.size(), 1234U);
        for (CellId cell = 1; cell <= 1234; ++cell)
            ASSERT_EQ(values[static_cast<std::size_t>(cell) - 1], marked(1, well, cell));
    }
    closeSensitivities(reader);
}

TEST(SensitivityFiles, AddUpInTheFileOfTheRunWhichAFirstStepStartsAnew) {
    const QuietConsole quiet;
    const ScratchFolder folder;
    for (int run = 0; run < 2; ++run)
        for (int step = 1; step <= 3; ++step)
            writeMarked(quiet.console, folder, SensitivityKind::Pressure, step, 2, 10);
    SensitivityReader reader;
    ASSERT_TRUE(openSensitivities(quiet.console, folder.path + "HM_SENSTEMP_GBHPI.K0000", 2, 10, reader));
    EXPECT_EQ(readSensitivities(quiet.console, 10, 1, reader)[6],
              marked(1, 1, 7) + marked(2, 1, 7) + marked(3, 1, 7));
    closeSensitivities(reader);
}

TEST(SensitivityFiles, OfOtherWellsOrCellsAreToldAndStop) {
    const ScratchFolder folder;
    const QuietConsole quiet;
    writeMarked(quiet.console, folder, SensitivityKind::Pressure, 1, 2, 10);
    const std::string path = folder.path + "HM_SENSTEMP_GBHPI.K0001";
    SensitivityReader reader;
    EXPECT_FALSE(openSensitivities(quiet.console, path + "X", 2, 10, reader));
    EXPECT_EXIT(openSensitivities(quiet.console, path, 3, 10, reader), ::testing::ExitedWithCode(1), "");
}
