#include "run/records/output_streams.hpp"

#include "unit/quiet_console.hpp"
#include "unit/scratch_folder.hpp"

#include <gtest/gtest.h>
#include <set>

namespace kvr {
namespace {

/// The set opened in a scratch folder, closed when the test ends.
struct OpenSet {
    OpenSet() { openOutputs(folder.path, outputs, console); }
    ~OpenSet() { close(); }
    void close() {
        closeOutputs(outputs);
        closeLog(outputs, console);
    }
    ScratchFolder folder;
    Console console{nullptr, nullptr, nullptr};
    OutputStreams outputs;
};

int countFiles(const std::string& folder, const std::string& prefix) {
    int count = 0;
    for (const auto& entry : std::filesystem::directory_iterator(folder))
        count += entry.path().filename().string().rfind(prefix, 0) == 0 ? 1 : 0;
    return count;
}

TEST(OpenOutputs, LeavesTheWholeFixedSetInTheFolder) {
    OpenSet set;
    EXPECT_EQ(countFiles(set.folder.path, ""), static_cast<int>(OutputFile::Count));
    EXPECT_EQ(countFiles(set.folder.path, "KVR_TPlot_PcGFlo_"), 9);
    for (const char* name : {"BHP", "CMP", "GOR", "GPR", "OPR", "WCT", "WPR"})
        for (const char* twin : {".out", "_Abs.out"}) {
            const std::string file = std::string("KVR_HM_ObjFnc_") + name + twin;
            EXPECT_TRUE(std::filesystem::exists(set.folder.path + file)) << file;
        }
}

TEST(OpenOutputs, GivesEveryFileAStreamNumberOfItsOwn) {
    std::set<int> numbers;
    std::set<std::string_view> names;
    for (int n = 0; n < static_cast<int>(OutputFile::Count); ++n) {
        numbers.insert(streamNumber(static_cast<OutputFile>(n)));
        names.insert(outputName(static_cast<OutputFile>(n)));
    }
    EXPECT_EQ(numbers.size(), static_cast<std::size_t>(OutputFile::Count));
    EXPECT_EQ(names.size(), static_cast<std::size_t>(OutputFile::Count));
    EXPECT_EQ(streamNumber(OutputFile::TPlotSwatmp), 60);
    EXPECT_EQ(streamNumber(OutputFile::FieldCopy), 302);
}

TEST(OpenOutputs, WritesTheFixedHeads) {
    OpenSet set;
    set.close();
    EXPECT_EQ(set.folder.read("KVR_dbg.out"), "BLACKOIL   KVR   LAST UPDATE :   **/**/2012\n");
    EXPECT_EQ(set.folder.read("KVR_Excl_mbe.xls"), "TIME\tPVI\tMBE_O %\tMBE_W %\tMBE_G %\tPCT %\n");
    EXPECT_NE(set.folder.read("KVR_Excl_mbec.xls").find("MassbyCompoent ->     \tComponents ->     "),
              std::string::npos);
}

TEST(OpenOutputs, LeavesNoResidueOfAnEarlierRun) {
    ScratchFolder folder;
    Console console{nullptr, nullptr, nullptr};
    OutputStreams outputs;
    for (int run = 0; run < 2; ++run) {
        openOutputs(folder.path, outputs, console);
        if (run == 0)
            for (std::FILE* file : outputs.streams) std::fputs("old text\n", file);
        closeOutputs(outputs);
        closeLog(outputs, console);
    }
    for (const auto& entry : std::filesystem::directory_iterator(folder.path))
        EXPECT_EQ(ScratchFolder::readFile(entry.path().string()).find("old text"), std::string::npos)
            << entry.path();
}

TEST(OpenOutputs, StopsAtTheFirstFileOfAFolderThatCannotBeWritten) {
    EXPECT_EXIT(
        {
            Console console = consoleOnStandardError();
            OutputStreams outputs;
            openOutputs("/nonexistent/folder/", outputs, console);
        },
        testing::ExitedWithCode(1),
        "ERROR: File handling error, code = 2\nCannot create file for output. Check Directry path.\n"
        "/nonexistent/folder/KVR_TPlot_poil.plt");
}

TEST(ReplaceOutput, EmptiesOneFileAndKeepsItsStream) {
    OpenSet set;
    std::FILE* file = stream(set.outputs, OutputFile::RunWct);
    std::fputs("first iteration\n", file);
    replaceOutput(set.console, OutputFile::RunWct, set.outputs);
    EXPECT_EQ(stream(set.outputs, OutputFile::RunWct), file);
    std::fputs("second\n", file);
    flushOutputs(set.outputs);
    EXPECT_EQ(set.folder.read("KVR_Run_Wct.out"), "second\n");
}

TEST(CloseOutputs, KeepsTheLogAndTheCopiesOpen) {
    OpenSet set;
    closeOutputs(set.outputs);
    EXPECT_EQ(stream(set.outputs, OutputFile::TPlotPoil), nullptr);
    EXPECT_NE(stream(set.outputs, OutputFile::MetricCopy), nullptr);
    lineToLog(set.console, "last line");
    closeLog(set.outputs, set.console);
    EXPECT_NE(set.folder.read("KVR_dbg.out").find("last line"), std::string::npos);
}

}  // namespace
}  // namespace kvr
