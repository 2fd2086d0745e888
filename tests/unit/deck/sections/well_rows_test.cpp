#include "deck/sections/well_rows.hpp"

#include <gtest/gtest.h>

namespace kvr {
namespace {

TEST(FindWell, FindsEveryWellInWhateverOrderTheyAreNamed) {
    ScheduleStep step;
    for (const char* name : {"A", "B", "C", "D"}) {
        ScheduleWell well;
        well.name = name;
        step.wells.push_back(well);
    }
    for (const char* name : {"A", "B", "D", "C", "A", "A", "D", "B"}) {
        const ScheduleWell* found = findWell(step, name);
        ASSERT_NE(found, nullptr) << name;
        EXPECT_EQ(found->name, name);
        EXPECT_EQ(findWell(step, "NONE"), nullptr);
    }
    step.wells.held.resize(1);
    EXPECT_EQ(findWell(step, "D"), nullptr);
    EXPECT_NE(findWell(step, "A"), nullptr);
    step.wells.held.clear();
    EXPECT_EQ(findWell(step, "A"), nullptr);
}

}  // namespace
}  // namespace kvr
