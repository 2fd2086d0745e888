#include "eclipse/outside_run.hpp"

#include "eclipse/end_file.hpp"
#include "eclipse/outside_command.hpp"
#include "unit/eclipse/small_case.hpp"
#include "unit/quiet_console.hpp"

#include <filesystem>
#include <gtest/gtest.h>

namespace kvr {
namespace {

bool holds(const std::string& text, const std::string& part) {
    return text.find(part) != std::string::npos;
}

int errorsIn(const std::string& text) {
    const ScratchFolder folder;
    folder.write("CASE.ECLEND", text);
    int errors = -1;
    Check_ECLEND(Console{nullptr, nullptr, nullptr}, folder.path + "CASE.ECLEND", errors);
    return errors;
}

// --- the command -----------------------------------------------------------------------------------------

TEST(OutsideCommand, ChangesTheFolderUnlessTheSystemIsLinux) {
    RunOptions options;
    options.workingFolder = " /data/ ";
    options.simulatorCommand = " $e300 ";
    EXPECT_EQ(outsideCommand(options, " CASE "), "cd /d /data/ & $e300 CASE");
    options.linuxRun = true;
    EXPECT_EQ(outsideCommand(options, "CASE"), "$e300 CASE");
}

TEST(OutsideCommand, NamesTheFolderOfTheDeckWhereTheResultsGoElsewhere) {
    RunOptions options;
    options.workingFolder = "/results/";
    options.deckFile = "/decks/CASE.DATA";
    options.deckFolder = "/decks/";
    EXPECT_EQ(outsideCommand(options, "CASE"), "cd /d /decks/ & $e300 CASE");
}

TEST(OutsideCommand, IsShownAndTellsOfItsFailure) {
    const QuietConsole quiet;
    RunOptions options;
    options.linuxRun = true;
    options.simulatorCommand = "false";
    EXPECT_FALSE(runOutsideCommand(quiet.console, options, "CASE"));
    EXPECT_EQ(quiet.screenText(),
              "Command :: false CASE\nCommandline -$eclipse- is not recognized\n"
              "Check environmental varialbe of computer\nCommand ended :: exit status 1\n");
    options.simulatorCommand = "true";
    const QuietConsole second;
    EXPECT_TRUE(runOutsideCommand(second.console, options, "CASE"));
    EXPECT_EQ(second.screenText(), "Command :: true CASE\n");
}

TEST(OutsideCommand, RunsInTheFolderOfANamedDeck) {
    const ScratchFolder folder;
    const QuietConsole quiet;
    RunOptions options;
    options.linuxRun = true;
    options.simulatorCommand = "touch";
    options.deckFile = folder.path + "CASE.DATA";
    options.deckFolder = folder.path;
    EXPECT_TRUE(runOutsideCommand(quiet.console, options, "made"));
    EXPECT_TRUE(std::filesystem::exists(folder.path + "made"));
}

TEST(OutsideCommand, StopsWithoutPermission) {
    const ScratchFolder folder;
    RunOptions options;
    options.linuxRun = true;
    options.outsideAllowed = false;
    options.simulatorCommand = "touch " + folder.path;
    EXPECT_EXIT(runOutsideCommand(consoleOnStandardError(), options, "made"), testing::ExitedWithCode(1),
                "--allow-outside ON THE COMMAND LINE\nCommand :: touch ");
    EXPECT_FALSE(std::filesystem::exists(folder.path + "made"));
}

// --- the end file ----------------------------------------------------------------------------------------

TEST(EndFileCheck, ReadsTheNumberBehindErrors) {
    EXPECT_EQ(errorsIn(" Error summary\n Comments 1\n Warnings 2\n Problems 0\n Errors 3\n Bugs 0\n"), 3);
    EXPECT_EQ(errorsIn(" Error summary\n Comments 1\n ERRORS 0\n"), 0);
    EXPECT_EQ(errorsIn("errors                 12\n"), 12);
}

TEST(EndFileCheck, TakesAFileWithoutTheWordAsClean) {
    EXPECT_EQ(errorsIn(""), 0);
    EXPECT_EQ(errorsIn(" Error summary\n Warnings 2\n"), 0);
    std::string late;
    for (int n = 0; n < 100; ++n) late += " Comments 1\n";
    EXPECT_EQ(errorsIn(late + " Errors 5\n"), 0);
    EXPECT_EQ(errorsIn(late.substr(12) + " Errors 5\n"), 5);
}

TEST(EndFileCheck, CountsAMissingFileOrNumberAsAnError) {
    const QuietConsole quiet;
    int errors = 0;
    Check_ECLEND(quiet.console, "/nowhere/CASE.ECLEND", errors);
    EXPECT_EQ(errors, 1);
    EXPECT_EQ(quiet.logText(),
              " Function Callecd  : Check_ECLEND\nError :: File not found : /nowhere/CASE.ECLEND\n");
    EXPECT_EQ(errorsIn(" Errors many\n"), 1);
}

TEST(EndFileCheck, ReportsWhatCannotBeOpenedAsAFile) {
    const ScratchFolder folder;
    const QuietConsole quiet;
    std::filesystem::create_directory(folder.path + "CASE.ECLEND");
    int errors = 0;
    Check_ECLEND(quiet.console, folder.path + "CASE.ECLEND", errors);
    EXPECT_EQ(errors, 1);
    EXPECT_EQ(quiet.screenText(), "ERROR: File handling Error\n" + folder.path + "CASE.ECLEND\n");
}

TEST(EndFileCheck, FindsNoErrorsInTheRunsOwn) {
    SmallCase c(1, 1, 1);
    Output_ECLEND_Normal(c.run.console, c.run.options, {});
    int errors = -1;
    Check_ECLEND(c.run.console, c.path(".ECLEND"), errors);
    EXPECT_EQ(errors, 0);
}

// --- runs once ahead -------------------------------------------------------------------------------------

/// A case whose command leaves the files of a run, and one that tells that it ran.
struct FakeRun : SmallCase {
    FakeRun() : SmallCase(2, 1, 1) {
        run.console = quiet.console;
        run.options.linuxRun = true;
        const std::string base = folder.path + "CASE";
        run.options.simulatorCommand =
            "echo ' Errors 0' > " + base + ".ECLEND; touch " + base + ".X0001 " + base + ".ran; true";
    }
    [[nodiscard]] bool hasRun() const { return std::filesystem::exists(path(".ran")); }
    QuietConsole quiet;
};

TEST(FirstOutsideRun, LeavesARunThatIsThereAlone) {
    FakeRun fake;
    fake.folder.write("CASE.X0001", "restart");
    EXPECT_TRUE(first_outside_run(fake.run));
    EXPECT_FALSE(fake.hasRun());
    EXPECT_EQ(fake.folder.read("CASE.X0001"), "restart");
}

TEST(FirstOutsideRun, RunsWhereNoneIsThereOrItIsCleared) {
    FakeRun missing;
    EXPECT_TRUE(first_outside_run(missing.run));
    EXPECT_TRUE(missing.hasRun());
    FakeRun cleared;
    cleared.folder.write("CASE.X0001", "restart");
    cleared.run.options.deleteEclipseRun = true;
    EXPECT_TRUE(first_outside_run(cleared.run));
    EXPECT_TRUE(cleared.hasRun());
    EXPECT_EQ(cleared.folder.read("CASE.X0001"), "");
    EXPECT_TRUE(holds(cleared.quiet.screenText(), " ECLIPSE seemed working successfully "));
}

TEST(FirstOutsideRun, StopsBehindACommandThatFails) {
    FakeRun fake;
    fake.run.console = consoleOnStandardError();
    fake.run.options.simulatorCommand = "false";
    EXPECT_EXIT(first_outside_run(fake.run), testing::ExitedWithCode(1),
                "Check environmental varialbe of computer");
}

TEST(FirstOutsideRun, RepeatsARunWithErrorsUntilItHasNone) {
    FakeRun fake;
    const std::string base = fake.folder.path + "CASE";
    fake.run.options.simulatorCommand =
        "touch " + base + ".X0001; test -e " + base + ".first && echo ' Errors 0' > " + base +
        ".ECLEND || echo ' Errors 2' > " + base + ".ECLEND; touch " + base + ".first; true";
    EXPECT_TRUE(first_outside_run(fake.run));
    EXPECT_TRUE(holds(fake.quiet.screenText(), "Error found in .ECLEND file. Run again..."));
    EXPECT_TRUE(holds(fake.quiet.screenText(), "turn :: 2"));
    EXPECT_FALSE(holds(fake.quiet.screenText(), "turn :: 3"));
}

TEST(IxRun, HasItsOwnCommandAndStopsWithoutIt) {
    SmallCase c(1, 1, 1);
    c.run.console = consoleOnStandardError();
    c.run.options.linuxRun = true;
    EXPECT_EXIT(ix_run(c.run), testing::ExitedWithCode(1), "Run Simulation by IX\nCommand :: ECLRUN ix CASE");
}

}  // namespace
}  // namespace kvr
