#include "matching/quantity_files.hpp"

#include "unit/quiet_console.hpp"
#include "unit/scratch_folder.hpp"

#include <filesystem>
#include <gtest/gtest.h>

using namespace kvr;

namespace {

struct SixFiles {
    ScratchFolder folder;
    QuietConsole quiet;

    SixFiles() {
        for (const std::string_view name : QuantityFiles)
            folder.write(std::string(name), "LABEL     \n1 10 20\n");
    }
};

}  // namespace

TEST(QuantityFiles, TakeTwoRowsOfEachAndNoMore) {
    const SixFiles six;
    six.folder.write("WOPRH_OBSERVED.DATA",
                     "OIL RATES\n1 10 20\n2.5 30 40\nthe third row is not looked at\n");
    six.folder.write("WGPRH_OBSERVED.DATA", "GAS RATES\n");
    const QuantityRows rows = readQuantityFiles(six.quiet.console, six.folder.path, 2);
    ASSERT_EQ(rows.files[0].size(), 2u);
    EXPECT_EQ(rows.files[0][1].time, 2.5);
    EXPECT_EQ(rows.files[0][1].values, (std::vector<double>{30.0, 40.0}));
    EXPECT_EQ(rows.files[1].size(), 1u);
    EXPECT_EQ(rows.files[2].size(), 0u);
    EXPECT_EQ(rows.rowsKept, 2u);
}

TEST(QuantityFiles, TakeABlankLineForTheLabel) {
    const SixFiles six;
    six.folder.write("WOPRH_OBSERVED.DATA", "          \n1 10 20\n2.5 30 40\n");
    const QuantityRows rows = readQuantityFiles(six.quiet.console, six.folder.path, 2);
    ASSERT_EQ(rows.files[0].size(), 2u);
    EXPECT_EQ(rows.files[0][0].time, 1.0);
}

TEST(QuantityFiles, StopOnRowsThatAreShortOrNoNumbersAndOnMissingFiles) {
    const SixFiles six;
    const auto read = [&] { readQuantityFiles(consoleOnStandardError(), six.folder.path, 2); };
    const std::string message =
        "ERROR :: During Matching, could not extract Observed Data. \nFile [^\n]*WBHPH_OBSERVED.DATA, line ";
    six.folder.write("WBHPH_OBSERVED.DATA", "LABEL\n1 10\n");
    EXPECT_EXIT(read(), testing::ExitedWithCode(1), message + "2\n");
    six.folder.write("WBHPH_OBSERVED.DATA", "LABEL\n1 10 20\n2 30 x\n");
    EXPECT_EXIT(read(), testing::ExitedWithCode(1), message + "3\n");
    std::filesystem::remove(six.folder.path + "WBHPH_OBSERVED.DATA");
    EXPECT_EXIT(read(), testing::ExitedWithCode(1), "ERROR: File Open Error\n[^\n]*WBHPH_OBSERVED.DATA\n");
}
