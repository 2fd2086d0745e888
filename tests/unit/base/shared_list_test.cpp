#include "base/shared_list.hpp"

#include <algorithm>
#include <gtest/gtest.h>
#include <string>

namespace kvr {
namespace {

TEST(SharedList, IsOneListUntilACopyIsChanged) {
    SharedList<int> first;
    first.own() = {1, 2, 3};
    SharedList<int> second = first;
    EXPECT_EQ(&first.view(), &second.view());
    second.own().push_back(4);
    EXPECT_EQ(first.view(), (std::vector<int>{1, 2, 3}));
    EXPECT_EQ(second.view(), (std::vector<int>{1, 2, 3, 4}));
}

TEST(SharedList, ThatNobodySharesIsChangedInPlace) {
    SharedList<int> list;
    list.own() = {1};
    const int* place = list.view().data();
    list.own()[0] = 7;
    EXPECT_EQ(list.view().data(), place);
    EXPECT_EQ(list[0], 7);
}

TEST(SharedElements, AreHeldOnceUntilTheyAreChanged) {
    SharedElements<std::string> first;
    for (const char* word : {"one", "two", "three"}) first.push_back(word);
    SharedElements<std::string> second = first;
    second.own(1) = "other";
    EXPECT_EQ(first[1], "two");
    EXPECT_EQ(second[1], "other");
    EXPECT_EQ(&first[0], &second[0]);
    EXPECT_EQ(&first.back(), &second.back());
    EXPECT_EQ(std::count(second.begin(), second.end(), "three"), 1);
}

}  // namespace
}  // namespace kvr
