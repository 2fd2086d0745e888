#include "run/input_detection.hpp"

#include <cstdio>
#include <filesystem>
#include <gtest/gtest.h>
#include <initializer_list>
#include <string>
#include <string_view>

namespace kvr {
namespace {

namespace fs = std::filesystem;

/// The present folder is an empty one while a test runs.
class InputDetection : public testing::Test {
protected:
    void SetUp() override {
        home = fs::current_path();
        const auto* const test = testing::UnitTest::GetInstance()->current_test_info();
        folder = fs::temp_directory_path() / (std::string("kvr_detect_") + test->name());
        fs::remove_all(folder);
        fs::create_directory(folder);
        fs::current_path(folder);
    }
    void TearDown() override {
        fs::current_path(home);
        fs::remove_all(folder);
    }

    static void make(std::initializer_list<const char*> names) {
        for (const char* name : names) std::fclose(std::fopen(name, "w"));
    }
    /// Detects with `answers` on the console; leaves what was printed in `printed`.
    void detect(std::string_view answers = "") {
        console.screen = std::tmpfile();
        console.input = std::tmpfile();
        std::fwrite(answers.data(), 1, answers.size(), console.input);
        std::rewind(console.input);
        detectInput(console, command, options);
        std::rewind(console.screen);
        for (int c = std::fgetc(console.screen); c != EOF; c = std::fgetc(console.screen)) {
            printed.push_back(static_cast<char>(c));
        }
        std::fclose(console.screen);
        std::fclose(console.input);
    }
    [[nodiscard]] bool said(std::string_view text) const { return printed.find(text) != std::string::npos; }

    fs::path home;
    fs::path folder;
    Console console;
    CommandLine command;
    RunOptions options;
    std::string printed;
};
using InputDetectionDeathTest = InputDetection;

TEST_F(InputDetection, PrefersTheNativeDeck) {
    make({"Reservoir.DATA", "Well.DATA", "Simulation.DATA", "ECLIPSE.DATA"});
    detect();
    EXPECT_EQ(options.inputMode, 3);
    EXPECT_EQ(options.headerName, "KVR");
    EXPECT_EQ(options.dataFileBase, "KVR");
    EXPECT_EQ(printed, "WARNING: KVR Files detected...\n");
}

TEST_F(InputDetection, FindsAFrontsimDeck) {
    make({"FRONTSIM.DATA"});
    detect();
    EXPECT_EQ(options.inputMode, 1);
    EXPECT_EQ(options.headerName, "FRONTSIM");
    EXPECT_EQ(printed,
              "WARNING: KVR Input File not found\n"
              "Insted of that, we found FRONTSIM.DATA file ...\n");
}

TEST_F(InputDetection, TakesTheEclipseDeckBeforeTheFrontsimOne) {
    make({"FRONTSIM.DATA", "ECLIPSE.DATA", "ECLIPSE.afi", "Well.DATA"});
    detect();
    EXPECT_EQ(options.inputMode, 1);
    EXPECT_EQ(options.headerName, "ECLIPSE");
    EXPECT_FALSE(options.ixExtract);
    EXPECT_FALSE(options.useRelativePath);
    EXPECT_EQ(printed,
              "WARNING: KVR Input File not found\n"
              "Insted of that, we found ECLIPSE.DATA file ...\n");
}

TEST_F(InputDetection, ExtractsFromAnIxDeck) {
    make({"ECLIPSE.afi"});
    detect();
    EXPECT_EQ(options.inputMode, 4);
    EXPECT_TRUE(options.ixExtract);
    EXPECT_EQ(options.headerName, "ECLIPSE");
    EXPECT_TRUE(said("Insted of that, we found IX.afi file ..."));
}

TEST_F(InputDetection, AddsTheExtensionToATypedName) {
    make({"CASE1.DATA"});
    detect("CASE1\n");
    EXPECT_EQ(options.inputMode, 1);
    EXPECT_TRUE(options.useRelativePath);
    EXPECT_EQ(options.headerName, "CASE1");
    EXPECT_EQ(options.workingFolder, "");
    EXPECT_EQ(options.dataFileBase, "CASE1");
    EXPECT_TRUE(
        said("WARNING: KVR Input File not found\n"
             "ECLIPSE output data converter can be used\n"
             "---- ECLRUN / HISTORY MATCH / DATA CONVERSION ------\n"
             "Add following key to ECLIPSE input deck after END\n"
             "Keyword -> TUNEKVR  (To activate KVR option     )\n"
             "Keyword -> ECL2TEC  (Convert output to Tecplot  )\n"
             "Keyword -> ECLTRACE (Run ECLIPSE and trace SLine)\n"
             "Keyword -> DOINV    (History Match with WCONHIST)\n"
             "Keyword -> OPTIMIZE (Optimization with  WFOOPT  )\n"
             "Need to have following file to run option\n"
             "RESTART (*.X000 )  (For data conversion  )\n"
             "GRID    (*.E|GRID) (For data conversion  )\n"
             "INPUT   (*.DATA )  (If Output cannot find)\n"
             "SUMMARY (*.S000 )  (If Correct TOF needed)\n"
             "Input Header name of ECLIPSE RESTART :: -XXXX-.DATA\n"
             "(Type 0 to generate example Deck)\n"
             "ECLIPSE -> TECPLOT Conversion if TEC2ECL\n"
             "ECLIPSE -> Streamline tracing if ECLTRACE\n"
             "(Will do something else if either cannot find"));
}

TEST_F(InputDetection, SplitsATypedPathAtItsLastBackslash) {
    make({"C:\\run\\CASE1.DATA"});
    detect("C:\\run\\CASE1\n");
    EXPECT_EQ(options.workingFolder, "C:\\run\\");
    EXPECT_EQ(options.headerName, "CASE1");
    EXPECT_EQ(options.dataFileBase, "C:\\run\\CASE1");
}

TEST_F(InputDetection, TakesTypedBackslashesForTheSlashesOfAFolderThatExists) {
    fs::create_directory("sub");
    make({"sub/CASE1.DATA"});
    detect("sub\\CASE1\n");
    EXPECT_EQ(options.workingFolder, "sub/");
    EXPECT_EQ(options.dataFileBase, "sub/CASE1");
}

TEST_F(InputDetection, SplitsATypedPathAtItsLastSlash) {
    fs::create_directory("sub");
    make({"sub/CASE1.DATA"});
    detect("sub/CASE1.DATA\n");
    EXPECT_EQ(options.workingFolder, "sub/");
    EXPECT_EQ(options.dataFileBase, "sub/CASE1");
}

TEST_F(InputDetection, CutsFourLettersOffAnIxName) {
    make({"m.afi"});
    detect("m.afi\r\n");
    EXPECT_EQ(options.inputMode, 4);
    EXPECT_TRUE(options.ixExtract);
    EXPECT_EQ(options.headerName, "m");
}

TEST_F(InputDetection, WritesTheExampleDeckAtEveryZeroAndAsksAgain) {
    make({"y.DATA"});
    detect("0\n0\nx.DATA\ny\n");
    EXPECT_TRUE(fs::exists("ECLIPSE.DATA"));
    const std::string generated = "Example KVR Deck Generated in Local Folder.\n";
    const std::size_t first = printed.find(generated);
    ASSERT_NE(first, std::string::npos);
    const std::size_t second = printed.find(generated, first + 1);
    ASSERT_NE(second, std::string::npos);
    EXPECT_EQ(printed.find(generated, second + 1), std::string::npos);
    EXPECT_TRUE(said("Cannot find file :: x.DATA\nInput Header name of ECLIPSE RESTART"));
    EXPECT_EQ(options.headerName, "y");
}

TEST_F(InputDetection, TakesANamedFolderWithThreeFilesForADeckOfItsName) {
    fs::create_directory("NORTH");
    make({"NORTH/Reservoir.DATA", "NORTH/Well.DATA", "NORTH/Simulation.DATA"});
    for (const char* name : {"NORTH", "NORTH/", "NORTH/Well.DATA"}) {
        options = RunOptions{};
        command.deck = name;
        detect();
        EXPECT_EQ(options.inputMode, 3) << name;
        EXPECT_EQ(options.headerName, "NORTH");
        EXPECT_EQ(options.outputPrefix, "NORTH");
        EXPECT_EQ(options.deckFolder, "NORTH/");
        EXPECT_EQ(options.workingFolder, "NORTH/");
        EXPECT_EQ(options.dataFileBase, "NORTH/NORTH");
    }
}

TEST_F(InputDetection, GivesThePresentFolderItsName) {
    fs::create_directory("SOUTH");
    fs::current_path("SOUTH");
    make({"Reservoir.DATA", "Well.DATA", "Simulation.DATA"});
    command.deck = ".";
    command.outputFolder = "results";
    detect();
    EXPECT_EQ(options.headerName, "SOUTH");
    EXPECT_EQ(options.deckFolder, "./");
    EXPECT_EQ(options.dataFileBase, "results/SOUTH");
}

TEST_F(InputDetection, TakesADeckBesideAFolderOfTheSameName) {
    fs::create_directory("NORTH");
    make({"NORTH.DATA", "NORTH/Reservoir.DATA", "NORTH/Well.DATA", "NORTH/Simulation.DATA"});
    command.deck = "NORTH";
    detect();
    EXPECT_EQ(options.inputMode, 1);
    EXPECT_EQ(options.deckFile, "NORTH.DATA");
}

TEST_F(InputDetection, TakesOneOfTheThreeNamesForASingleDeckWhereItStandsAlone) {
    make({"Reservoir.DATA"});
    command.deck = "Reservoir.DATA";
    detect();
    EXPECT_EQ(options.inputMode, 1);
    EXPECT_EQ(options.headerName, "Reservoir");
}

TEST_F(InputDetection, TracesTheResultsBesideANamedIxDeckAndRunsOneWithout) {
    make({"RUN.Afi"});
    for (const char* name : {"RUN", "RUN.Afi"}) {
        command.deck = name;
        detect();
        EXPECT_EQ(options.inputMode, 4) << name;
        EXPECT_EQ(options.deckFile, "RUN.Afi");
        EXPECT_TRUE(options.ixExtract);
    }
    make({"RUN.X0001"});
    detect();
    EXPECT_EQ(options.inputMode, 4);
    EXPECT_FALSE(options.ixExtract);
}

void nameAFolder() {
    Console console;
    console.screen = stderr;
    CommandLine command;
    command.deck = "NORTH";
    RunOptions options;
    detectInput(console, command, options);
}

TEST_F(InputDetectionDeathTest, TellsWhichOfTheThreeFilesAFolderLacks) {
    fs::create_directory("NORTH");
    make({"NORTH/Reservoir.DATA", "NORTH/Simulation.DATA"});
    EXPECT_EXIT(
        nameAFolder(), testing::ExitedWithCode(1),
        "ERROR :: Cannot find file :: NORTH, a folder\nNot there for a three-file deck :: Well.DATA\n");
}

void missTwice(std::string_view answers) {
    Console console;
    console.screen = stderr;
    console.input = std::tmpfile();
    std::fwrite(answers.data(), 1, answers.size(), console.input);
    std::rewind(console.input);
    RunOptions options;
    detectInput(console, CommandLine{}, options);
}

TEST_F(InputDetectionDeathTest, EndsAfterASecondMiss) {
    EXPECT_EXIT(missTwice("0\n0\nx.DATA\ny\n"), testing::ExitedWithCode(1),
                "Cannot find file :: x.DATA\nInput Header name of ECLIPSE RESTART :: -XXXX-.DATA\n"
                "Cannot find file :: y.DATA End Program.\n$");
}

TEST_F(InputDetectionDeathTest, DoesNotHangOnAClosedConsole) {
    EXPECT_EXIT(missTwice(""), testing::ExitedWithCode(1), " End Program.");
}

}  // namespace
}  // namespace kvr
