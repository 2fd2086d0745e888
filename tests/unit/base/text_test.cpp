#include "base/text.hpp"

#include <gtest/gtest.h>

namespace kvr {
namespace {

TEST(Trim, TakesBlanksTabsAndCarriageReturnsOffBothEnds) {
    EXPECT_EQ(trim(" \t a b \r"), "a b");
}

TEST(FirstWord, EndsAtBlankTabOrSlash) {
    EXPECT_EQ(firstWord("OIL -- phase"), "OIL");
    EXPECT_EQ(firstWord("FIELD/"), "FIELD");
    EXPECT_EQ(firstWord("GAS\t"), "GAS");
}

TEST(EditDistance, CountsLettersChangedDroppedPutInAndSwapped) {
    EXPECT_EQ(editDistance("NUMLINE", "NUMLINE"), 0U);
    EXPECT_EQ(editDistance("NUMLINES", "NUMLINE"), 1U);
    EXPECT_EQ(editDistance("NUMLIN", "NUMLINE"), 1U);
    EXPECT_EQ(editDistance("FDMETHDO", "FDMETHOD"), 1U);
    EXPECT_EQ(editDistance("SL1DCAP", "SL1DMAP"), 1U);
    EXPECT_EQ(editDistance("", "CFL"), 3U);
    EXPECT_EQ(editDistance("kitten", "sitting"), 3U);
}

TEST(Padded, CutsAndFills) {
    EXPECT_EQ(padded("OPTIONKVR", 8), "OPTIONKV");
    EXPECT_EQ(padded("OIL", 8), "OIL     ");
}

}  // namespace
}  // namespace kvr
