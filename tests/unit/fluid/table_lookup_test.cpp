#include "fluid/table_lookup.hpp"

#include <gtest/gtest.h>
#include <limits>
#include <vector>

namespace kvr {
namespace {

using Values = std::vector<double>;

double lookup(const Values& x, const Values& y, double value) {
    return TableLookup(x, y, 1, 1, static_cast<int>(x.size()), value);
}

TEST(TableLookup, InterpolatesInsideAndExtendsTheEndSegments) {
    const Values x = {1, 2, 4};
    const Values y = {10, 20, 0};
    const Values at = {0, 0.5, 1, 1.5, 2, 3};
    const Values expected = {0, 5, 10, 15, 20, 10};
    for (std::size_t i = 0; i < at.size(); ++i) EXPECT_DOUBLE_EQ(lookup(x, y, at[i]), expected[i]) << at[i];
}

TEST(TableLookup, IsNeverNegative) {
    const Values x = {1, 2, 4};
    const Values y = {10, 20, 0};
    EXPECT_EQ(lookup(x, y, 4), 0.0);
    EXPECT_EQ(lookup(x, y, 5), 0.0);
    EXPECT_EQ(lookup(x, y, -5), 0.0);
}

TEST(TableLookup, UsesOnlyTheRowsAskedFor) {
    const Values x = {1, 2, 4, 5};
    const Values y = {10, 20, 0, 100};
    EXPECT_DOUBLE_EQ(TableLookup(x, y, 1, 1, 2, 3.0), 30.0);
    EXPECT_DOUBLE_EQ(TableLookup(x, y, 2, 1, 3, 0.0), 40.0);
}

TEST(TableLookup, StepsOverRows) {
    const Values x = {1, 2, 3, 4, 5};
    const Values y = {10, 0, 30, 0, 50};
    EXPECT_DOUBLE_EQ(TableLookup(x, y, 1, 2, 5, 2.0), 20.0);
    EXPECT_EQ(TableLookup(x, y, 1, 3, 5, 4.5), 0.0) << "no row holds the value";
}

TEST(TableLookup, MakesNoSegmentOfRepeatedAxisValues) {
    const Values x = {1, 1, 3, 5, 5};
    const Values y = {10, 20, 30, 50, 70};
    EXPECT_DOUBLE_EQ(lookup(x, y, 0.0), 0.0);    // first row and row 3: 10 + (30 - 10)/2 * (-1)
    EXPECT_DOUBLE_EQ(lookup(x, y, 7.0), 110.0);  // row 3 and the last: 70 + (70 - 30)/2 * 2
    EXPECT_DOUBLE_EQ(lookup({2, 2}, {7, 9}, 100.0), 7.0);
}

TEST(TableLookup, IsConstantOnOneRowAndZeroForNotANumber) {
    EXPECT_EQ(lookup({3}, {8}, 100.0), 8.0);
    EXPECT_EQ(lookup({1, 2, 4}, {10, 20, 0}, std::numeric_limits<double>::quiet_NaN()), 0.0);
}

TEST(TableLookup, FindsTheSameRowByBisectionAsAScanDoes) {
    Values x;
    Values y;
    for (int i = 0; i < 37; ++i) {
        x.push_back(0.1 * i * i);
        y.push_back(1.0 + 3.0 * ((i * 7) % 11));
    }
    for (double value = 0.05; value < x.back(); value += 0.173) {
        std::size_t row = 0;
        while (!(x[row] < value && value <= x[row + 1])) ++row;
        const double weight = (value - x[row]) / (x[row + 1] - x[row]);
        EXPECT_EQ(lookup(x, y, value), y[row] + weight * (y[row + 1] - y[row])) << value;
    }
}

TEST(FindPlace, ServesEveryColumnOfATable) {
    const Values x = {1, 2, 4};
    const TablePlace place = findPlace(x, 1, 3, 2.5);
    EXPECT_DOUBLE_EQ(valueAt(Values{10, 20, 0}, place), 15.0);
    EXPECT_DOUBLE_EQ(valueAt(Values{1, 2, 4}, place), 2.5);
}

}  // namespace
}  // namespace kvr
