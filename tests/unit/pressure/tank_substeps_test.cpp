#include "pressure/tank_substeps.hpp"

#include <gtest/gtest.h>

namespace kvr {
namespace {

TEST(LengthUnderGravity, TakesTwoFifthsOfWhatIsMobile) {
    // 40 of 50 above the floor: 16 at 2 a day.
    EXPECT_DOUBLE_EQ(lengthUnderGravity(10.0, {50.0, 50.0, 0.0}, {10.0, 20.0, 0.0}, {2.0, -2.0, 0.0}), 8.0);
    EXPECT_DOUBLE_EQ(lengthUnderGravity(5.0, {50.0, 50.0, 0.0}, {10.0, 20.0, 0.0}, {2.0, -2.0, 0.0}), 5.0);
}

TEST(LengthUnderGravity, IsAllOfASubstepThatTakesRoundingOfAPhaseThatIsNotThere) {
    EXPECT_EQ(lengthUnderGravity(10.0, {100.0, 0.0, 0.0}, {20.0, 0.0, 0.0}, {0.0, 1e-17, 0.0}), 10.0);
    EXPECT_EQ(lengthUnderGravity(10.0, {0.0, 100.0, 0.0}, {0.0, 20.0, 0.0}, {1e-30, 0.0, 0.0}), 10.0);
}

}  // namespace
}  // namespace kvr
