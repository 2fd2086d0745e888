#include "deck/reading/deck_extent.hpp"

#include "unit/deck/deck_bench.hpp"
#include "unit/scratch_folder.hpp"

#include <gtest/gtest.h>

namespace kvr {
namespace {

std::optional<std::int64_t> largestOf(const std::string& text, std::int64_t enough = 1'000'000,
                                      const std::string& folder = "") {
    return largestArray(cursorOn(text), folder, enough);
}

TEST(LargestArray, CountsRepeatsOut) {
    EXPECT_EQ(largestOf("DIMENS\n9 9 9 /\nPORO\n100*0.2 3*0.1 0.5\n0.6 /\n"), 105);
}

TEST(LargestArray, IsThatOfOneKeywordNotTheirSum) {
    EXPECT_EQ(largestOf("PERMX\n60*1 /\nPERMY\n60*1 /\n"), 60);
}

TEST(LargestArray, PassesOverComments) {
    EXPECT_EQ(largestOf("PORO\n-- 1000*7\n5*0.2 -- 900*3\n4*1 /\n"), 9);
}

TEST(LargestArray, LooksIntoIncludedFiles) {
    ScratchFolder folder;
    folder.write("rock.inc", "PORO\n2500*0.2 /\n");
    EXPECT_EQ(largestOf("PERMX\n60*1 /\nINCLUDE\n-- rock\n'rock.inc' /\n", 1'000'000, folder.path), 2500);
}

TEST(LargestArray, HasNoBoundWhereBoxesFillCells) {
    EXPECT_FALSE(largestOf("EQUALS\nPORO 0.2 /\n/\n").has_value());
    EXPECT_FALSE(largestOf("BOX\n1 9 1 9 1 1 /\nPORO\n81*0.2 /\n").has_value());
}

TEST(LargestArray, IsNotCountedWhereTheTextIsLongEnough) {
    EXPECT_FALSE(largestOf("PORO\n1 1 1 1 1 1 1 1 1 1 /\n", 10).has_value());
}

TEST(LargestArray, HoldsCountsBeyondAnyNumber) {
    EXPECT_GE(*largestOf("PORO\n99999999999999999999999*1 5*1 /\n"), 1'000'000'000);
}

}  // namespace
}  // namespace kvr
