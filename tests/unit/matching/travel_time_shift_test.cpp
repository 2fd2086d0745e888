#include "matching/travel_time_shift.hpp"

#include <algorithm>
#include <gtest/gtest.h>
#include <vector>

using namespace kvr;

namespace {

std::vector<double> tenDays() {
    std::vector<double> times;
    for (int n = 0; n <= 100; ++n) times.push_back(10.0 * n);
    return times;
}

/// Rises from 0 at `start` to 1 within 200 days.
std::vector<double> ramp(double start, double height = 1.0) {
    std::vector<double> values;
    for (const double time : tenDays())
        values.push_back(height * std::clamp((time - start) / 200.0, 0.0, 1.0));
    return values;
}

// Two smooth curves at uneven times.
const std::vector<double> UnevenTimes{0, 10, 25, 60, 90, 150, 210, 300, 420, 500};
const std::vector<double> LateCurve{0.0015011822567369917, 0.0019267346633274757, 0.0028009269671209736,
                                    0.0066928509242848554, 0.014063627043245475,  0.06008665017400762,
                                    0.22270013882530884,   0.7310585786300049,    0.9820137900379085,
                                    0.9975273768433653};
const std::vector<double> EarlyCurve{
    0.0328668726983499,  0.039135426724511105, 0.050714582496109835, 0.0912556311007327, 0.14666442363208948,
    0.33022766767065076, 0.5697723323293492,   0.8087443688992673,   0.8886852547436562, 0.8973322261780305};

}  // namespace

TEST(TravelTimeShift, IsPositiveWhereTheModelIsEarly) {
    const TimeShift shift = travelTimeShift(tenDays(), ramp(400.0), ramp(300.0));
    EXPECT_NEAR(shift.days, 100.0, 1e-9);
    EXPECT_NEAR(shift.fit, 1.0, 1e-12);
    EXPECT_NEAR(travelTimeShift(tenDays(), ramp(300.0), ramp(400.0)).days, -100.0, 1e-9);
}

TEST(TravelTimeShift, OfEqualOrFlatCurvesIsZero) {
    const std::vector<double> flat(101, 0.3);
    EXPECT_EQ(travelTimeShift(tenDays(), ramp(400.0), ramp(400.0)).days, 0.0);
    EXPECT_EQ(travelTimeShift(tenDays(), ramp(400.0), flat).days, 0.0);
    EXPECT_EQ(travelTimeShift(tenDays(), flat, ramp(400.0)).days, 0.0);
    EXPECT_EQ(travelTimeShift({}, {}, {}).days, 0.0);
    const std::vector<double> one{5.0}, low{0.1}, high{0.9};
    EXPECT_EQ(travelTimeShift(one, low, high).days, 0.0);
}

TEST(TravelTimeShift, OfACurveOfHalfTheHeightIsTheBestFit) {
    const TimeShift shift = travelTimeShift(tenDays(), ramp(400.0), ramp(400.0, 0.5));
    EXPECT_NEAR(shift.days, -90.0, 1e-9);
    EXPECT_NEAR(shift.fit, 0.5421083965742322, 1e-12);
}

TEST(TravelTimeShift, OfAPlateauIsNotDecidedByItsRoundedMean) {
    // 26 months: observed 0.43 up to the 13th, then rising to 0.9 by equal steps; calculated 0.43 until the
    // rise of the last month. The mean of thirteen values of 0.43 is not 0.43 to the last digit.
    std::vector<double> times, observed, calculated;
    for (int n = 0; n < 26; ++n) {
        times.push_back(30.0 * n);
        observed.push_back(n <= 12 ? 0.43 : 0.43 + 0.47 * (n - 12) / 13.0);
        calculated.push_back(n < 25 ? 0.43 : 0.43 + 0.47 / 13.0);
    }
    const TimeShift found = travelTimeShift(times, observed, calculated);
    EXPECT_LT(found.days, -300.0) << "late by about a year";
    EXPECT_GT(found.days, -390.0) << "not by the whole plateau";
}

TEST(TravelTimeShift, OfFivePoints) {
    const std::vector<double> times{0, 1, 2, 3, 4}, observed{0, 0, 0, 0.5, 1}, calculated{0, 0.5, 1, 1, 1};
    EXPECT_NEAR(travelTimeShift(times, observed, calculated).days, 2.0, 1e-12);
}

TEST(TravelTimeShift, ReachesOverNearlyTheWholeHistory) {
    std::vector<double> last(101, 0.0), first(101, 1.0);
    last.back() = 1.0;
    EXPECT_EQ(travelTimeShift(tenDays(), last, first).days, 0.0) << "risen before the history: flat";
    first.front() = 0.0;
    EXPECT_NEAR(travelTimeShift(tenDays(), last, first).days, 990.0, 1e-9);
}

TEST(TravelTimeShift, AtUnevenTimesIsThatOfTheReference) {
    // Values of a script of its own in another language.
    const TimeShift shift = travelTimeShift(UnevenTimes, LateCurve, EarlyCurve);
    EXPECT_NEAR(shift.days, 69.8, 1e-9);
    EXPECT_NEAR(shift.fit, 0.9644867352022285, 1e-12);
}

TEST(TravelTimeShift, IsFiniteForTimesThatRepeatOrGoBack) {
    const std::vector<double> repeated{0, 10, 10, 20}, back{0, 20, 10, 30}, all(4, 5.0);
    const std::vector<double> observed{0, 0, 0.5, 1}, calculated{0, 0.5, 1, 1};
    for (const std::vector<double>& times : {repeated, back, all}) {
        const TimeShift shift = travelTimeShift(times, observed, calculated);
        EXPECT_LE(std::abs(shift.days), 30.0);
        EXPECT_GE(shift.fit, 0.0);
        EXPECT_LE(shift.fit, 1.0);
    }
}

TEST(InterpolateHeld, TakesTheNearerEndOutsideAndAxesThatFall) {
    const std::vector<double> x{1, 2, 4}, y{10, 20, 0}, falling{4, 2, 1}, reversed{0, 20, 10};
    for (const auto& [place, value] :
         {std::pair{0.0, 10.0}, {1.5, 15.0}, {2.0, 20.0}, {3.0, 10.0}, {9.0, 0.0}}) {
        EXPECT_DOUBLE_EQ(interpolateHeld(x, y, place), value);
        EXPECT_DOUBLE_EQ(interpolateHeld(falling, reversed, place), value);
    }
    const std::vector<double> one{3.0}, value{7.0};
    EXPECT_EQ(interpolateHeld(one, value, -5.0), 7.0);
}

TEST(SteepestRise, IsThatOfTheSmoothedSlope) {
    EXPECT_NEAR(steepestRise(UnevenTimes, LateCurve), 0.0002097393510508105, 1e-16);
    // Three points: slopes 0, 0.1, 0.4; the ends stay, the middle goes to their mean 0.2 within 50 sweeps.
    const std::vector<double> times{0, 10, 20}, rising{0, 1, 5}, falling{5, 1, 0};
    EXPECT_NEAR(steepestRise(times, rising), 0.4, 1e-15);
    EXPECT_EQ(steepestRise(times, falling), 0.0);
    EXPECT_EQ(steepestRise(std::vector<double>{1.0}, std::vector<double>{1.0}), 0.0);
}
