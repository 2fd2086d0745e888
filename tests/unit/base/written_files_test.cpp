#include "base/written_files.hpp"

#include "unit/quiet_console.hpp"
#include "unit/scratch_folder.hpp"

#include <csignal>
#include <filesystem>
#include <gtest/gtest.h>
#include <sys/resource.h>

namespace kvr {
namespace {

/// A folder with one watched table, whose files may not grow beyond `limit` bytes.
struct Table {
    ScratchFolder folder;
    WrittenFiles files;
    Console console = consoleOnStandardError();
    std::FILE* file = nullptr;

    explicit Table(rlim_t limit) {
        std::signal(SIGXFSZ, SIG_IGN);
        const rlimit size{limit, limit};
        setrlimit(RLIMIT_FSIZE, &size);
        console.files = &files;
        file = std::fopen((folder.path + "table").c_str(), "w");
        watchFile(console, file, folder.path + "table");
    }
};

const std::string Row(99, 'x');

void writeRows(Table& table, int count) {
    for (int n = 0; n < count; ++n) std::fprintf(table.file, "%s\n", Row.c_str());
}

TEST(WrittenFilesDeathTest, EndWithTheirLastWholeRowWhereTheDiskTakesNoMore) {
    const auto run = [] {
        Table table(1050);
        writeRows(table, 10);
        checkWritten(table.console);
        writeRows(table, 1);
        checkWritten(table.console);
    };
    EXPECT_EXIT(run(), testing::ExitedWithCode(1), "ERROR :: CANNOT WRITE .*table :: File too large");
}

TEST(WrittenFiles, AreWholeUpToTheLastCheck) {
    const ScratchFolder folder;
    WrittenFiles files;
    QuietConsole quiet;
    quiet.console.files = &files;
    std::FILE* file = std::fopen((folder.path + "table").c_str(), "w");
    watchFile(quiet.console, file, folder.path + "table");
    std::fputs("one\n", file);
    checkWritten(quiet.console);
    std::fputs("tw", file);
    EXPECT_EQ(files.open.front().whole, 4);
    EXPECT_EQ(folder.read("table"), "one\n");
    unwatchFile(quiet.console, file);
    EXPECT_TRUE(files.open.empty());
    std::fclose(file);
}

TEST(WrittenFilesDeathTest, ThatHaveBeenRemovedStopTheRun) {
    const auto run = [] {
        Table table(RLIM_INFINITY);
        std::filesystem::remove(table.folder.path + "table");
        checkWritten(table.console);
    };
    EXPECT_EXIT(run(), testing::ExitedWithCode(1),
                "CANNOT WRITE .*table :: the file or its folder has been removed");
}

TEST(CloseWholeDeathTest, RemovesAFileThatDidNotReachTheDisk) {
    const auto run = [] {
        Table table(50);
        unwatchFile(table.console, table.file);
        writeRows(table, 1);
        closeWhole(table.console, table.file);
    };
    EXPECT_EXIT(run(), testing::ExitedWithCode(1), "CANNOT WRITE .*table");
}

}  // namespace
}  // namespace kvr
