#include "matching/perm_file.hpp"

#include "unit/quiet_console.hpp"

#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <iterator>

using namespace kvr;

namespace {

constexpr const char* Text =
    "-- PERMX of the pilot\nPERMX\n2*100. 50 -- two layers\n2.5D1 /\nPORO\n4*0.2 /\nPERMZ\n4*10/\n";

}  // namespace

TEST(PermBlocks, AreTheValuesOfEachPermeability) {
    std::vector<PermBlock> blocks;
    ASSERT_TRUE(findPermBlocks(Text, blocks));
    ASSERT_EQ(blocks.size(), 2U);
    EXPECT_EQ(blocks[0].values, (std::vector<double>{100.0, 100.0, 50.0, 25.0}));
    EXPECT_EQ(blocks[1].values, std::vector<double>(4, 10.0));
}

TEST(PermBlocks, WithoutASlashOrWithAWordAreNone) {
    std::vector<PermBlock> blocks;
    EXPECT_FALSE(findPermBlocks("PERMX\n1 2 3", blocks));
    EXPECT_FALSE(findPermBlocks("PERMX\n1 two 3 /", blocks));
    EXPECT_FALSE(findPermBlocks("PERMX\n1 x*2 /", blocks));
    EXPECT_FALSE(findPermBlocks("PERMX\n99999999999*2 /", blocks));
    EXPECT_TRUE(findPermBlocks("PORO\n1 /", blocks));
    EXPECT_TRUE(blocks.empty());
}

TEST(PermFile, KeepsEverythingButTheValues) {
    const std::string path = (std::filesystem::temp_directory_path() / "kvr_perm_file_test.inc").string();
    std::ofstream(path) << Text;
    const PermFile file = readPermFile(QuietConsole().console, path, 4);
    CellArray<double> ratio;
    ratio.slots = {0.0, 1.0, 2.0, 0.5, 1.0};
    writePermFile(QuietConsole().console, file, ratio);
    std::ifstream stream(path);
    const std::string text{std::istreambuf_iterator<char>(stream), {}};
    EXPECT_EQ(text, "-- PERMX of the pilot\nPERMX\n100 200 25 25\n/\nPORO\n4*0.2 /\nPERMZ\n10 20 5 10\n/\n");
    std::filesystem::remove(path);
}
