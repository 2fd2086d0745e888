#include "run/erase_script.hpp"

#include "run/records/output_streams.hpp"
#include "unit/quiet_console.hpp"
#include "unit/scratch_folder.hpp"

#include <algorithm>
#include <fnmatch.h>
#include <gtest/gtest.h>
#include <set>
#include <sstream>
#include <vector>

namespace kvr {
namespace {

std::vector<std::string> linesOf(const std::string& text) {
    std::istringstream in(text);
    std::vector<std::string> lines;
    for (std::string line; std::getline(in, line);) lines.push_back(line);
    return lines;
}

TEST(EraseScript, StartsWithEchoOffAndKeepsItsDoubledWord) {
    ScratchFolder folder;
    writeEraseScript(Console{nullptr, nullptr, nullptr}, folder.path);
    const std::vector<std::string> lines = linesOf(folder.read("0EraseData.bat"));
    ASSERT_FALSE(lines.empty());
    EXPECT_EQ(lines.front(), "@echo off");
    EXPECT_EQ(std::count(lines.begin(), lines.end(), "del del HM_ITE_0*"), 1);
}

TEST(EraseScript, HasOneDelLinePerNameAndEveryNameOnce) {
    ScratchFolder folder;
    writeEraseScript(Console{nullptr, nullptr, nullptr}, folder.path);
    std::vector<std::string> lines = linesOf(folder.read("0EraseData.bat"));
    lines.erase(lines.begin());
    for (const std::string& line : lines) EXPECT_EQ(line.rfind("del ", 0), 0U) << line;
    EXPECT_EQ(std::set<std::string>(lines.begin(), lines.end()).size(), lines.size());
    for (const char* line :
         {"del KVR_Run_RateAllocation.dat", "del tau.dat", "del dummy4.dat", "del HM_ITE_0*",
          "del Grid_Prs.xls", "del *.SMSPEC", "del *.FRSSPEC", "del *.PRT"})
        EXPECT_EQ(std::count(lines.begin(), lines.end(), line), 1) << line;
}

TEST(EraseScript, NamesEveryFileThatARunOpens) {
    for (const std::string prefix : {"", "CASE"}) {
        ScratchFolder folder;
        writeEraseScript(Console{nullptr, nullptr, nullptr}, folder.path, prefix);
        const std::vector<std::string> lines = linesOf(folder.read(outputFileName(prefix, "0EraseData.bat")));
        for (int n = 0; n < static_cast<int>(OutputFile::AllCount); ++n) {
            const auto file = static_cast<OutputFile>(n);
            std::string name = outputFileName(prefix, outputName(file));
            if (outputName(file).starts_with('*')) name = outputName(file);
            if (const std::size_t digit = name.find("[0-9]"); digit != std::string::npos)
                name = name.substr(0, digit) + "0" + name.substr(digit + 5);
            const bool named = std::any_of(lines.begin(), lines.end(), [&name](const std::string& line) {
                return fnmatch(line.substr(line.find(' ') + 1).c_str(), name.c_str(), 0) == 0;
            });
            EXPECT_TRUE(named || file == OutputFile::EraseScript) << name;
        }
    }
}

TEST(EraseScript, StopsInAFolderThatCannotBeWritten) {
    EXPECT_EXIT(writeEraseScript(consoleOnStandardError(), "/nonexistent/folder/"),
                testing::ExitedWithCode(1),
                "ERROR: File handling error, code = 2\nCannot create file for output. Check Directry path.\n"
                "/nonexistent/folder/0EraseData.bat");
}

}  // namespace
}  // namespace kvr
