#include "pressure/wells/well_groups.hpp"

#include "unit/pressure/well_samples.hpp"
#include "unit/quiet_console.hpp"

#include <gtest/gtest.h>

namespace kvr {
namespace {

/// Producers A of group G, which lies below P, and B without a group.
struct TwoProducers {
    QuietConsole quiet;
    ScheduleStep step;
    WellRecord wells;

    TwoProducers() {
        for (const std::string name : {"A", "B"}) {
            ScheduleWell source;
            source.name = name;
            source.holdsLimits = true;
            if (name == "A") source.group = "G";
            step.wells.push_back(source);
            wells.wells.push_back(sample::well("prd", "bhp", 1));
            wells.wells.back().WellName = name;
        }
        GroupControl group;
        group.name = "G";
        group.parent = "P";
        group.production.oil = 100.0;
        step.groups.own().push_back(group);
    }
    void assign() { assignGroups(quiet.console, step, wells); }
    const std::string& nameOf(int group) { return wells.groups[static_cast<std::size_t>(group)].given.name; }
};

TEST(WellGroups, StandBeforeTheirParents) {
    TwoProducers t;
    t.assign();
    ASSERT_EQ(t.wells.groups.size(), 3U);
    EXPECT_EQ(t.nameOf(0), "G");
    EXPECT_EQ(t.nameOf(1), "P");
    EXPECT_EQ(t.nameOf(2), "FIELD");
    EXPECT_EQ(t.wells.groups[0].parent, 1);
    EXPECT_EQ(t.wells.groups[1].parent, 2);
    EXPECT_EQ(t.wells.groups[2].parent, NoGroup);
    EXPECT_EQ(t.nameOf(t.wells.wells[0].group), "G");
    EXPECT_EQ(t.nameOf(t.wells.wells[1].group), "FIELD");
    EXPECT_TRUE(belongsTo(0, 2, t.wells));
    EXPECT_FALSE(belongsTo(2, 0, t.wells));
    EXPECT_FALSE(belongsTo(NoGroup, 2, t.wells));
    EXPECT_EQ(groupNamed("P", 0, t.wells), 1);
    EXPECT_EQ(groupNamed("", 0, t.wells), 0);
}

TEST(WellGroups, AreLeftOutWhereNoneHasATarget) {
    TwoProducers t;
    t.step.groups.own()[0].production = {};
    t.assign();
    EXPECT_TRUE(t.wells.groups.empty());
    EXPECT_EQ(t.wells.wells[0].group, NoGroup);
    t.step.groups.own()[0].injection[0].voidage = 1.0;
    t.assign();
    EXPECT_EQ(t.wells.groups.size(), 3U);
}

TEST(WellGroups, DoNotReachObservedRatesAndWellsThatTheDeckTakesOut) {
    TwoProducers t;
    t.step.wells.own(0).holdsLimits = false;
    t.step.wells.own(1).underGroups = false;
    t.assign();
    EXPECT_FALSE(t.wells.wells[0].underGroups);
    EXPECT_FALSE(t.wells.wells[1].underGroups);
}

TEST(WellGroups, TellOfAWellThatNoneHasATargetFor) {
    TwoProducers t;
    t.step.wells.own(0).waitsForGroup = t.step.wells.own(1).waitsForGroup = true;
    t.assign();
    EXPECT_NE(t.quiet.screenText().find("Well B is under GRUP, but no group has a target for it"),
              std::string::npos);
    EXPECT_EQ(t.quiet.screenText().find("Well A is under GRUP"), std::string::npos);
}

}  // namespace
}  // namespace kvr
