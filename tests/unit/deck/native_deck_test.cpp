#include "deck/native_deck.hpp"

#include "unit/deck/deck_bench.hpp"
#include "unit/deck/deck_texts.hpp"
#include "unit/scratch_folder.hpp"

#include <gtest/gtest.h>
#include <string>

namespace kvr {
namespace {

std::string joined(std::initializer_list<std::string_view> parts) {
    std::string text;
    for (const std::string_view part : parts) text += part;
    return text;
}

/// A three-file deck in a folder of its own and the run that it fills.
struct NativeRun {
    ScratchFolder folder;
    Simulation run;

    NativeRun(const std::string& reservoir, const std::string& wells, const std::string& options,
              std::FILE* screen = std::tmpfile()) {
        folder.write("Reservoir.DATA", reservoir);
        folder.write("Well.DATA", wells);
        folder.write("Simulation.DATA", options);
        run.console.screen = screen;
        run.console.log = std::tmpfile();
        run.console.input = nullptr;
        run.console.messages = &run.messages;
        run.outputs.streams.assign(static_cast<std::size_t>(OutputFile::Count), nullptr);
        run.options.deckFolder = folder.path;
    }
    NativeRun(const NativeRun&) = delete;
    NativeRun& operator=(const NativeRun&) = delete;
    ~NativeRun() {
        std::fclose(run.console.log);
        if (run.console.screen != stderr) std::fclose(run.console.screen);
    }
    std::string read() {
        readNativeDeck(run);
        return contentsOf(run.console.screen);
    }
    [[nodiscard]] bool warned(std::string_view text) const {
        for (const WarningKind& kind : run.messages.warnings)
            if (holds(kind.first, text)) return true;
        return false;
    }
};

TEST(NativeDeck, ReadsTheSectionsOfItsFilesInTheirOrder) {
    NativeRun deck(
        joined({Size, Grid, "EDIT\nMULTIPLY\nPORV 0.5 /\n/\n", Fluids, "REGIONS\nSATNUM\n3*1 /\n", Start}),
        std::string(Wells), "TUNEKVR\nMAXDT\n 7 /\n");
    const std::string said = deck.read();
    EXPECT_EQ(deck.run.grid.NCELLS, 3);
    EXPECT_EQ(deck.run.grid.editRows.size(), 1U);
    EXPECT_EQ(deck.run.fluids.OilRows, 2);
    EXPECT_EQ(deck.run.initial.initialPressure[3], 3000.0);
    EXPECT_EQ(deck.run.schedule.stepLength, (std::vector<double>{10.0, 20.0}));
    EXPECT_EQ(deck.run.options.maxDt, 7.0);
    std::size_t place = 0;
    for (const char* line :
         {"\n---- READ FROM RUNSPEC ----\nREADING - RUNSPEC SECTION\n", "\n---- READ FROM GRID ----\n",
          "\n---- READ FROM EDIT ----\nNote: Only Multiply will be taken into account.\n",
          "\n---- READ FROM PROPS ----\nREAD -> PVDO\n", "\n---- READ FROM REGIONS ----\nREAD -> SATNUM\n",
          "\n---- READ FROM SOLUTION ----\nREAD -> FIELD PRESSURE by MANUAL\n",
          "\n---- READ FROM SCHEDULE ----\nREAD -> WELSPECS\n",
          "\n---- READ FROM STREAMLINE for KVR ----\nREAD -> MAXDT\n", "Keywords not supported: 0\n"}) {
        const std::size_t found = said.find(line, place);
        ASSERT_NE(found, std::string::npos) << line << "\n" << said;
        place = found;
    }
    EXPECT_EQ(deck.run.messages.warnings.size(), 0U);
}

TEST(NativeDeck, ReadsWellsAndOptionsWithoutTheirSectionWords) {
    const std::string wells(Wells.substr(Wells.find('\n') + 1));
    NativeRun deck(joined({Size, Grid, Fluids, Start, "END\n"}), wells, "MAXDT\n 7 /\nEND\n");
    deck.read();
    EXPECT_EQ(deck.run.schedule.endTime, 30.0);
    EXPECT_EQ(deck.run.options.maxDt, 7.0);
}

TEST(NativeDeck, ReadsThePropertiesOfADeckWithoutEdit) {
    NativeRun deck(joined({Size, Grid, Fluids, Start}), std::string(Wells), "");
    const std::string said = deck.read();
    EXPECT_TRUE(holds(said, "\n---- READ FROM EDIT ----\n"));
    EXPECT_EQ(deck.run.fluids.OilRows, 2);
    EXPECT_EQ(deck.run.fluids.referencePressureWater, 3000.0);
    EXPECT_EQ(deck.run.messages.warnings.size(), 0U);
}

TEST(NativeDeck, DoesNotEnterASummary) {
    NativeRun deck(joined({Size, Grid, Fluids, Start, "SUMMARY\nFOPR\n"}), std::string(Wells), "");
    const std::string said = deck.read();
    EXPECT_TRUE(deck.run.summaryRequests.empty());
    EXPECT_FALSE(holds(said, "READ FROM SUMMARY"));
    EXPECT_TRUE(holds(said, "-> SUMMARY is not read from this file\n"));
}

TEST(NativeDeck, LeavesASectionThatStandsBeforeItsTurnAndTellsTheRest) {
    // The reader of EDIT meets SOLUTION, and so do those of PROPS and REGIONS; behind SOLUTION stands PROPS.
    NativeRun deck(joined({Size, Grid, Start, Fluids}), std::string(Wells), "");
    deck.read();
    EXPECT_EQ(deck.run.initial.initialPressure[1], 3000.0);
    EXPECT_NE(deck.run.fluids.referencePressureWater, 3000.0);
    EXPECT_TRUE(deck.warned("WARNING :: SECTION PROPS IS NOT IN ITS PLACE"));
    EXPECT_TRUE(deck.warned("WARNING :: PROPS AND WHAT STANDS BEHIND IT IS NOT READ"));
}

TEST(NativeDeck, TakesTheFallBacksOfTheOptions) {
    NativeRun deck(joined({Size, Grid, Fluids, Start}), std::string(Wells), "");
    deck.read();
    EXPECT_EQ(deck.run.options.MaxPressureIterations, 30);
    EXPECT_EQ(deck.run.options.solverPhaseName, std::vector<std::string>{"mas"});
}

void readWithout(const char* name) {
    NativeRun deck(joined({Size, Grid, Fluids, Start}), std::string(Wells), "", stderr);
    std::remove((deck.folder.path + name).c_str());
    readNativeDeck(deck.run);
}

TEST(NativeDeckDeathTest, StopsWhereAFileIsMissing) {
    for (const char* name : {"Reservoir.DATA", "Well.DATA", "Simulation.DATA"})
        EXPECT_EXIT(readWithout(name), testing::ExitedWithCode(1),
                    std::string("ERROR: File handling Error for input file\nFile .*") + name +
                        "\nCheck input file and folder...\n");
}

void readUnreadable() {
    NativeRun deck(joined({Size, Grid, Fluids, Start}), std::string(Wells), "", stderr);
    std::remove((deck.folder.path + "Well.DATA").c_str());
    std::filesystem::create_symlink("/proc/self/mem", deck.folder.path + "Well.DATA");
    readNativeDeck(deck.run);
}

TEST(NativeDeckDeathTest, StopsWithTheSystemsCodeWhereAFileCannotBeRead) {
    EXPECT_EXIT(readUnreadable(), testing::ExitedWithCode(1),
                "ERROR: File handling error, code = 5\nFile .*Well.DATA\nCheck input file and folder...\n");
}

}  // namespace
}  // namespace kvr
