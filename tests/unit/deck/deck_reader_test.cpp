#include "deck/deck_reader.hpp"

#include "unit/deck/deck_bench.hpp"
#include "unit/deck/deck_texts.hpp"
#include "unit/scratch_folder.hpp"

#include <filesystem>
#include <gtest/gtest.h>
#include <string>

namespace kvr {
namespace {

namespace fs = std::filesystem;

std::string wholeDeck(std::string_view ending) {
    std::string text;
    for (const std::string_view part : {Size, Grid, Fluids, Start, Wells, ending}) text += part;
    return text;
}

/// A deck file of its own and the run that it fills.
struct DeckRun {
    fs::path folder;
    Simulation run;

    explicit DeckRun(std::string_view text, std::FILE* screen = std::tmpfile()) {
        const auto* const test = testing::UnitTest::GetInstance()->current_test_info();
        folder = fs::temp_directory_path() / (std::string("kvr_deck_") + test->name());
        fs::create_directories(folder);
        std::FILE* file = std::fopen((folder / "CASE.DATA").c_str(), "wb");
        std::fwrite(text.data(), 1, text.size(), file);
        std::fclose(file);
        run.console.screen = screen;
        run.console.log = std::tmpfile();
        run.console.input = nullptr;
        run.outputs.streams.assign(static_cast<std::size_t>(OutputFile::Count), nullptr);
        run.options.inputMode = 1;
        run.options.useRelativePath = true;
        run.options.workingFolder = run.options.deckFolder = folder.string() + "/";
        run.options.dataFileBase = (folder / "CASE").string();
    }
    DeckRun(const DeckRun&) = delete;
    DeckRun& operator=(const DeckRun&) = delete;
    ~DeckRun() {
        fs::remove_all(folder);
        std::fclose(run.console.log);
        if (run.console.screen != stderr) std::fclose(run.console.screen);
    }
    std::string read() {
        readDeck(run);
        return contentsOf(run.console.screen);
    }
};

TEST(DeckReader, ReadsAWholeDeckAndTheOptionsBehindItsEnd) {
    DeckRun deck(wholeDeck("END\nTUNEKVR\nMAXDT\n 7 /\nEND\n"));
    const std::string said = deck.read();
    EXPECT_EQ(deck.run.grid.NCELLS, 3);
    EXPECT_EQ(deck.run.fluids.OilRows, 2);
    EXPECT_EQ(deck.run.schedule.stepLength, (std::vector<double>{10.0, 20.0}));
    EXPECT_EQ(deck.run.schedule.endTime, 30.0);
    EXPECT_EQ(deck.run.options.maxDt, 7.0);
    for (const char* banner :
         {"\n---- READ FROM RUNSPEC ----\n", "\n---- READ FROM GRID ----\n", "\n---- READ FROM PROPS ----\n",
          "\n---- READ FROM SOLUTION ----\n", "\n---- READ FROM SCHEDULE ----\n",
          "\n\nFILE END DETECTED & CLOSED...\n", "\n---- READ FROM STREAMLINE for KVR ----\n"}) {
        EXPECT_TRUE(holds(said, banner)) << banner;
    }
    EXPECT_FALSE(holds(said, "END OF FILE"));
    EXPECT_TRUE(holds(said, "Keywords not supported: 0\n"));
}

TEST(DeckReader, RunsBothPassesToTheEndOfAFileWithoutEnd) {
    DeckRun deck(wholeDeck(""));
    const std::string said = deck.read();
    EXPECT_TRUE(holds(said, "FILE I/O -> END OF FILE DETECTED BEFORE STREAMLINE INFO..\n"));
    EXPECT_TRUE(holds(said, "FILE I/O -> END OF FILE DETECTED AFTER STREAMLINE INFO..\n"));
    EXPECT_EQ(deck.run.options.MaxPressureIterations, 30);
}

TEST(DeckReader, GoesStraightToTheOptionsOfADeckWithoutEnd) {
    DeckRun deck(wholeDeck("TUNEKVR\nMAXDT\n 5 /\n"));
    const std::string said = deck.read();
    EXPECT_EQ(deck.run.options.maxDt, 5.0);
    EXPECT_FALSE(holds(said, "BEFORE STREAMLINE INFO"));
    EXPECT_TRUE(holds(said, "AFTER STREAMLINE INFO"));
}

TEST(DeckReader, TellsThatEditTakesOnlyMultiply) {
    std::string text(Size);
    text += std::string(Grid) + "EDIT\nMULTIPLY\nPORV 0.5 /\n/\n" + std::string(Fluids) + "END\n";
    DeckRun deck(text);
    EXPECT_TRUE(
        holds(deck.read(), "\n---- READ FROM EDIT ----\nNote: Only Multiply will be taken into account.\n"));
}

TEST(DeckReader, ListsEachUnsupportedKeywordOnceWithItsFirstLine) {
    DeckRun deck("UNIFOUT\n" + std::string(Size) + "MESSAGES\n 1* 2 /\nUNIFOUT\n" + std::string(Grid) +
                 "END\nFOO\n");
    const std::string said = deck.read();
    EXPECT_TRUE(holds(said, "Keywords not supported: 3: UNIFOUT (line 1), MESSAGES (line 8), FOO (line "));
    EXPECT_TRUE(holds(contentsOf(deck.run.console.log), "Keywords not supported: 3: "));
}

TEST(DeckReader, GivesDefaultsForSectionsThatTheDeckLeavesOut) {
    DeckRun deck(std::string(Size) + std::string(Grid) + "END\n");
    deck.read();
    EXPECT_FALSE(deck.run.fluids.regions.empty());
    EXPECT_EQ(deck.run.initial.initialPressure.count(), 3);
    EXPECT_EQ(deck.run.schedule.stepLength, std::vector<double>{0.0});
}

TEST(DeckReader, TakesRegionForRegions) {
    DeckRun deck(std::string(Size) + "REGION\nSATNUM\n1 5 1 /\n" + std::string(Grid) + "END\n");
    EXPECT_TRUE(
        holds(deck.read(), "\n---- READ FROM REGIONS ----\nREAD -> SATNUM\nWARNING :: SATNUM, GRID 2 IS"));
}

TEST(DeckReader, EndsAGasTableAtTheSlashOfItsLastRow) {
    std::string gas = "PVDG\n";
    for (int row = 1; row <= 9; ++row)
        gas += std::to_string(500 * row) + " 5.0 0.0" + std::to_string(row) + "\n";
    gas += "9000 0.4 0.047 /\nDENSITY\n50 62 0.06 /\n";
    DeckRun deck(std::string(Size) + std::string(Grid) + std::string(Fluids) + gas + "END\n");
    deck.read();
    EXPECT_EQ(deck.run.fluids.GasRows, 10);
    EXPECT_EQ(deck.run.fluids.oilDensity, 50.0);
}

void readAndStop(std::string_view text) {
    DeckRun deck(text, stderr);
    readDeck(deck.run);
}

TEST(DeckReaderDeathTest, StopsWithoutDimensions) {
    EXPECT_EXIT(readAndStop(""), testing::ExitedWithCode(1),
                "NO RUNSPEC SECTION BEFORE THIS ONE: IT GIVES DIMENS, PHASES AND UNITS\n"
                "ERROR :: DIMENS NOT SPECIFIED\nFile .*CASE.DATA, line 0");
    EXPECT_EXIT(readAndStop(Grid), testing::ExitedWithCode(1),
                "ERROR :: DIMENS NOT SPECIFIED\nFile .*, line 1,");
}

void readFrom(const std::string& path) {
    Simulation run;
    run.console.screen = stderr;
    run.console.input = nullptr;
    run.options.useRelativePath = true;
    run.options.dataFileBase = path;
    readDeck(run);
}

TEST(DeckReaderDeathTest, StopsWhenTheDeckCannotBeOpened) {
    EXPECT_EXIT(readFrom("no/such/deck"), testing::ExitedWithCode(1),
                "ERROR: File Open Error\nFile no/such/deck.DATA\n");
}

TEST(DeckReaderDeathTest, StopsWithTheSystemsCodeWhenTheDeckCannotBeRead) {
    // A file that is there and opens, but whose first bytes no process can read.
    const ScratchFolder folder;
    fs::create_symlink("/proc/self/mem", folder.path + "locked.DATA");
    EXPECT_EXIT(readFrom(folder.path + "locked"), testing::ExitedWithCode(1),
                "ERROR: File handling error in ECLIPSE input mode, code = 5\nFile .*locked.DATA\n");
}

}  // namespace
}  // namespace kvr
