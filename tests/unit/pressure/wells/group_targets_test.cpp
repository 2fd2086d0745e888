#include "pressure/wells/group_targets.hpp"

#include "unit/pressure/well_samples.hpp"

#include <cmath>
#include <gtest/gtest.h>
#include <limits>

namespace kvr {
namespace {

constexpr double Infinity = std::numeric_limits<double>::infinity();

TEST(SharesOf, GoByTheGuides) {
    const std::vector<Sharer> sharers = {{1.0, 1000.0}, {3.0, 1000.0}};
    EXPECT_EQ(sharesOf(400.0, sharers), (std::vector<double>{100.0, 300.0}));
}

TEST(SharesOf, LeaveToTheOthersWhatOneCannotGive) {
    // 600 by 1 : 2 : 3 is 100, 200, 300; the last gives 150, of 450 by 1 : 2 the second gives its 200.
    const std::vector<Sharer> sharers = {{1.0, 1000.0}, {2.0, 200.0}, {3.0, 150.0}};
    EXPECT_EQ(sharesOf(600.0, sharers), (std::vector<double>{250.0, Infinity, Infinity}));
}

TEST(SharesOf, LimitNobodyWhereAllTogetherCannotGiveTheRate) {
    const std::vector<Sharer> sharers = {{1.0, 100.0}, {2.0, 200.0}};
    EXPECT_EQ(sharesOf(1000.0, sharers), (std::vector<double>{Infinity, Infinity}));
}

TEST(SharesOf, OfNothingAreNothing) {
    const std::vector<Sharer> sharers = {{1.0, 100.0}, {2.0, 0.0}};
    EXPECT_EQ(sharesOf(0.0, sharers), (std::vector<double>{0.0, Infinity}));
}

/// Two producers in group A, a third in group B, two injectors of water in group W, all of them in groups of
/// the field, in cells of 3000 psia. Pressure limits of 2000 and 4000 psia: they can give 1000, 3000, 2000,
/// and take 1000 each, stb a day of Well Indices 1, 3, 2, 1, 1.
struct FiveWells {
    enum Place { A, B, W, Field };

    CellState state = sample::state(5);
    FluidTables tables;
    UnitSystem units;
    WellRecord wells;

    FiveWells() {
        for (const std::string name : {"A", "B", "W", "FIELD"}) {
            WellGroup group;
            group.given.name = name;
            group.parent = name == "FIELD" ? NoGroup : static_cast<int>(Field);
            wells.groups.push_back(group);
        }
        const double index[] = {1.0, 3.0, 2.0, 1.0, 1.0};
        const Place place[] = {A, A, B, W, W};
        for (int n = 0; n < 5; ++n) {
            Well well = sample::well(n < 3 ? "prd" : "inj", "bhp", 1);
            well.connections[0].ConnCell = n + 1;
            well.connections[0].ConnWI = index[n];
            well.givenControl = "bhp";
            well.BhpLimit = well.Bhp = n < 3 ? 2000.0 : 4000.0;
            well.holdsLimits = n < 3;
            well.underGroups = true;
            well.group = place[n];
            wells.wells.push_back(well);
        }
        tables.waterFvf = 1.25;
    }
    GroupControl& group(Place place) { return wells.groups[place].given; }
    Well& well(std::size_t n) { return wells.wells[n]; }
    void share(ShareTime time = ShareTime::StepBegin) {
        shareGroupTargets(time, units, tables, state, 3000.0, wells);
    }
    void expectRates(double first, double second, double third) {
        const double rates[] = {first, second, third};
        for (std::size_t n = 0; n < 3; ++n) {
            EXPECT_EQ(well(n).deckControl, "orat") << n;
            EXPECT_NEAR(well(n).TargetRate, -rates[n], 1e-9 * rates[n]) << n;
        }
    }
};

TEST(GroupTargets, AreSharedByWhatWellsCouldGive) {
    FiveWells five;
    five.group(FiveWells::Field).production.oil = 600.0;
    five.share();
    five.expectRates(100.0, 300.0, 200.0);
    EXPECT_EQ(five.well(0).WellControl, "bhp") << "released where rates are updated";
    EXPECT_EQ(five.well(3).deckControl, "bhp") << "injectors have no part in it";
}

TEST(GroupTargets, OfLowerGroupsHoldBesideThoseAbove) {
    FiveWells five;  // B gives 50, the others share the rest of 600
    five.group(FiveWells::Field).production.oil = 600.0;
    five.group(FiveWells::B).production.oil = 50.0;
    five.share();
    five.expectRates(137.5, 412.5, 50.0);
}

TEST(GroupTargets, GoToGroupsWithGuidesOfTheirOwnAsOne) {
    FiveWells five;  // 1 : 2 between A and B, in A by what its wells could give
    five.group(FiveWells::Field).production.oil = 600.0;
    five.group(FiveWells::A).production.guide = {1.0, "orat"};
    five.group(FiveWells::B).production.guide = {2.0, "orat"};
    five.share();
    five.expectRates(50.0, 150.0, 400.0);
}

TEST(GroupTargets, GoByTheGuidesOfWells) {
    FiveWells five;
    five.group(FiveWells::A).production.oil = 600.0;
    five.well(0).guide = {5.0, "orat"};
    five.well(1).guide = {1.0, "lrat"};
    five.share();
    EXPECT_NEAR(five.well(0).TargetRate, -500.0, 1e-9);
    EXPECT_NEAR(five.well(1).TargetRate, -100.0, 1e-9) << "of its liquid all is oil";
    EXPECT_EQ(five.well(2).deckControl, "bhp");
}

TEST(GroupTargets, CountWellsThatDoNotFollowAsTheyAre) {
    FiveWells five;  // the third gives its 200, the others share 400
    five.group(FiveWells::Field).production.oil = 600.0;
    five.well(2).underGroups = false;
    five.well(2).targetOil = five.well(2).TargetRate = -200.0;
    five.well(2).givenControl = five.well(2).deckControl = "orat";
    five.share();
    five.expectRates(100.0, 300.0, 200.0);
    five.well(2).underGroups = true;
    five.group(FiveWells::B).production.followsParent = false;
    five.share();
    five.expectRates(100.0, 300.0, 200.0);
}

TEST(GroupTargets, LeaveTheDecksOwnRatesWhereTheseAreSmaller) {
    FiveWells five;
    five.group(FiveWells::Field).production.oil = 600.0;
    five.well(1).targetOil = -60.0;
    five.share();
    five.expectRates(180.0, 60.0, 360.0);
}

TEST(GroupTargets, ThatAreGoneLeaveWellsAtTheirPressures) {
    FiveWells five;
    five.group(FiveWells::Field).production.oil = 600.0;
    five.share();
    five.well(0).WellControl = "orat";
    five.wells.RateWellCount = 1;
    five.group(FiveWells::Field).production.oil = NoGroupLimit;
    five.share();
    EXPECT_EQ(five.well(0).WellControl, "bhp");
    EXPECT_EQ(five.well(0).deckControl, "bhp");
    EXPECT_EQ(five.well(0).Bhp, 2000.0);
    EXPECT_EQ(five.wells.RateWellCount, 0);
}

TEST(GroupTargets, OfNothingShutWellsUntilThereIsSomething) {
    FiveWells five;
    five.group(FiveWells::A).production.oil = 0.0;
    five.share();
    EXPECT_TRUE(five.well(0).shut);
    EXPECT_TRUE(five.well(0).shutByGroup);
    EXPECT_FALSE(five.well(2).shut);
    five.group(FiveWells::A).production.oil = 400.0;
    five.share();
    EXPECT_FALSE(five.well(0).shut);
    EXPECT_NEAR(five.well(0).TargetRate, -100.0, 1e-9);
    five.group(FiveWells::A).production.oil = 0.0;
    five.share(ShareTime::Iteration);
    EXPECT_FALSE(five.well(0).shut) << "a step does not lose a well";
    EXPECT_NEAR(five.well(0).TargetRate, -0.01, 1e-9) << "a hundredth of a psi";
}

TEST(GroupTargets, OfInjectionAreSurfaceRates) {
    FiveWells five;
    five.group(FiveWells::W).injection[0].surface = 500.0;
    five.well(4).guide.rate = 3000.0;  // against 1000 that the other could take
    five.share();
    EXPECT_EQ(five.well(3).deckControl, "rate");
    EXPECT_NEAR(five.well(3).TargetRate, 125.0, 1e-9);
    EXPECT_NEAR(five.well(4).TargetRate, 375.0, 1e-9);
}

TEST(GroupTargets, OfReservoirVolumeGoByTheFactorAtTheAveragePressure) {
    FiveWells five;
    five.group(FiveWells::Field).injection[0].resv = 1000.0;
    five.share();
    EXPECT_NEAR(five.well(3).TargetRate, 400.0, 1e-9);
    EXPECT_NEAR(five.well(4).TargetRate, 400.0, 1e-9);
}

TEST(GroupTargets, ReplaceWhatTheProducersGiveUnderTheirOwn) {
    FiveWells five;  // 600 rb of oil; 0.9 of it is 540 rb, 432 stb of water
    five.group(FiveWells::Field).production.oil = 600.0;
    five.group(FiveWells::Field).injection[0].voidage = 0.9;
    five.share();
    EXPECT_NEAR(five.well(3).TargetRate, 216.0, 1e-9);
    EXPECT_NEAR(five.well(4).TargetRate, 216.0, 1e-9);
    five.group(FiveWells::Field).injection[0].voidageSource = "A";  // 400 of it
    five.share();
    EXPECT_NEAR(five.well(3).TargetRate, 144.0, 1e-9);
}

TEST(GroupTargets, ReplaceWhatOtherPhasesLeave) {
    FiveWells five;  // oil brings 100 rb of the 600
    five.group(FiveWells::Field).production.oil = 600.0;
    five.group(FiveWells::W).injection[0].voidage = 1.0;
    five.group(FiveWells::W).injection[0].voidageSource = "FIELD";
    five.well(4).InjectFluid = "oil";
    five.well(4).givenControl = five.well(4).deckControl = "rate";
    five.well(4).targetOil = five.well(4).TargetRate = 100.0;
    five.share();
    EXPECT_NEAR(five.well(3).TargetRate, 400.0, 1e-9);
    EXPECT_NEAR(five.well(4).TargetRate, 100.0, 1e-9);
}

TEST(GroupTargets, BringBackAShareOfThePhase) {
    FiveWells five;
    for (CellId cell = 1; cell <= 3; ++cell) five.state.LambdaW[cell] = 0.5;  // a third of what flows
    five.group(FiveWells::Field).production.oil = 600.0;
    five.group(FiveWells::W).injection[0].reinjection = 0.8;
    five.group(FiveWells::W).injection[0].reinjectionSource = "FIELD";
    five.share();
    EXPECT_NEAR(five.well(3).TargetRate, 0.8 * 300.0 / 2.0, 1e-9);
}

}  // namespace
}  // namespace kvr
