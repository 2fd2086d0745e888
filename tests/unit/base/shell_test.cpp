#include "base/shell.hpp"

#include "base/stopwatch.hpp"
#include "unit/scratch_folder.hpp"

#include <csignal>
#include <cstdio>
#include <filesystem>
#include <gtest/gtest.h>

namespace kvr {
namespace {

const Console Quiet{nullptr, nullptr, nullptr};

TEST(Shell, TellsTheExitStatus) {
    EXPECT_TRUE(succeeded(runShell(Quiet, "true", "")));
    EXPECT_EQ(runShell(Quiet, "exit 3", "").status, 3);
    EXPECT_FALSE(succeeded(runShell(Quiet, "exit 3", "")));
    EXPECT_EQ(runShell(Quiet, "no_such_command_anywhere 2> /dev/null", "").status, 127);
}

TEST(Shell, TellsTheSignalThatEndedIt) {
    const ShellEnd end = runShell(Quiet, "kill -9 $$", "");
    EXPECT_TRUE(end.started);
    EXPECT_EQ(end.signal, SIGKILL);
    EXPECT_FALSE(succeeded(end));
}

TEST(Shell, RunsInTheGivenFolder) {
    const ScratchFolder folder;
    EXPECT_TRUE(succeeded(runShell(Quiet, "touch here", folder.path)));
    EXPECT_TRUE(std::filesystem::exists(folder.path + "here"));
    EXPECT_FALSE(succeeded(runShell(Quiet, "true", folder.path + "missing")));
}

TEST(Shell, GivesTheCommandNothingToRead) {
    EXPECT_EQ(runShell(Quiet, "read line", "").status, 1);
}

TEST(Shell, WaitsForTheCommand) {
    const double start = wallSeconds();
    EXPECT_TRUE(succeeded(runShell(Quiet, "sleep 0.3", "")));
    EXPECT_GE(wallSeconds() - start, 0.3);
}

TEST(Shell, HidesTheFilesOfTheRunFromTheCommand) {
    const ScratchFolder folder;
    std::FILE* const open = std::fopen((folder.path + "open").c_str(), "w");
    EXPECT_TRUE(succeeded(
        runShell(Quiet, "for n in 3 4 5 6 7 8 9; do test ! -e /proc/$$/fd/$n || exit 1; done", "")));
    std::fclose(open);
}

TEST(Shell, IsWaitedForWhereEndsOfProcessesAreIgnored) {
    std::signal(SIGCHLD, SIG_IGN);
    EXPECT_EQ(runShell(Quiet, "exit 4", "").status, 4);
    std::signal(SIGCHLD, SIG_DFL);
}

TEST(ShellWord, StandsAsItIsWhereItIsPlain) {
    EXPECT_EQ(shellWord("CASE_1.A-2"), "CASE_1.A-2");
    EXPECT_EQ(shellWord("/data/run/"), "/data/run/");
    EXPECT_EQ(shellWord(""), "");
}

TEST(ShellWord, IsOneWordWhateverItsCharacters) {
    EXPECT_EQ(shellWord("MY CASE"), "'MY CASE'");
    EXPECT_EQ(shellWord("a'b"), "'a'\\''b'");
    const ScratchFolder folder;
    for (const std::string name :
         {"MY CASE", "X;touch made;", "a'b", "$(touch made)", "`touch made`", "a\\b"}) {
        EXPECT_TRUE(succeeded(runShell(Quiet, "touch " + shellWord(name), folder.path))) << name;
        EXPECT_TRUE(std::filesystem::exists(folder.path + name)) << name;
    }
    EXPECT_FALSE(std::filesystem::exists(folder.path + "made"));
}

}  // namespace
}  // namespace kvr
