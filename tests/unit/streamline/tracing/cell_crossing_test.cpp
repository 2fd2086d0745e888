#include "streamline/tracing/cell_crossing.hpp"

#include "streamline/tracing/exit_flags.hpp"

#include <gtest/gtest.h>

namespace kvr {
namespace {

constexpr double Digits = 1e-8;

/// Unit cube with neighbours on all sides.
CrossingInput cube(std::array<double, 6> face, std::array<double, 3> entry) {
    CrossingInput in{};
    const CellId neighbours[6] = {1, 1, 1, 1, 1, 1};
    in.face = face;
    in.entry = entry;
    in.length = {1.0, 1.0, 1.0};
    for (std::size_t axis = 0; axis < 3; ++axis) {
        in.gradient[axis] = face[2 * axis + 1] - face[2 * axis];
        in.velocity[axis] = face[2 * axis] + in.gradient[axis] * entry[axis];
    }
    in.exitFlags = exitFaces(face.data(), neighbours, 1.0);
    return in;
}

TEST(CrossCell, FollowsTheLinearVelocityOfADeceleratingAxis) {
    const Crossing c = crossCell(cube({10, 6, 0, 4, 0, 0}, {0, 0.25, 0.5}));
    EXPECT_EQ(c.exitFace, 2);
    EXPECT_NEAR(c.time, 0.12770640594, Digits * 0.1277);
    EXPECT_EQ(c.point[0], 1.0);
    EXPECT_NEAR(c.point[1], 0.41666666667, Digits);
    EXPECT_EQ(c.point[2], 0.5);
}

TEST(CrossCell, GoesStraightThroughAUniformField) {
    const Crossing c = crossCell(cube({10, 10, 0, 0, 0, 0}, {0, 0.25, 0.5}));
    EXPECT_EQ(c.exitFace, 2);
    EXPECT_DOUBLE_EQ(c.time, 0.1);
    EXPECT_EQ(c.point, (std::array<double, 3>{1.0, 0.25, 0.5}));
}

TEST(CrossCell, LeavesByTheSideOfADivide) {
    const Crossing side = crossCell(cube({10, 4, -3, 3, 0, 0}, {0, 0.75, 0.5}));
    EXPECT_EQ(side.exitFace, 4);
    EXPECT_NEAR(side.time, 0.11552453, 1e-8);
    EXPECT_NEAR(side.point[0], 0.83333333333, Digits);
    const Crossing onTheDivide = crossCell(cube({10, 4, -3, 3, 0, 0}, {0, 0.5, 0.5}));
    EXPECT_EQ(onTheDivide.exitFace, 2);
    EXPECT_NEAR(onTheDivide.time, 0.152715122, 1e-9);
    EXPECT_EQ(onTheDivide.point[1], 0.5);
}

TEST(CrossCell, TurnsTheCornerOfAQuarter) {
    const Crossing c = crossCell(cube({8, 2, 2, 8, 0, 0}, {0, 0.3, 0.5}));
    EXPECT_EQ(c.exitFace, 4);
    EXPECT_NEAR(c.time, 0.12407341, 1e-8);
    EXPECT_NEAR(c.point[0], 0.7, Digits);
}

TEST(CrossCell, FindsNoFaceAtAStagnationPointAndLeavesItsNeighbourhood) {
    EXPECT_EQ(crossCell(cube({-5, 5, -5, 5, 0, 0}, {0.5, 0.5, 0.5})).exitFace, 0);
    const Crossing beside = crossCell(cube({-5, 5, -5, 5, 0, 0}, {0.6, 0.5, 0.5}));
    EXPECT_EQ(beside.exitFace, 2);
    EXPECT_NEAR(beside.time, 0.160943791, 1e-9);
}

TEST(CrossCell, LeavesByNoFaceOfAConvergingAxis) {
    const CrossingInput in = cube({5, -5, -5, 5, 0, 0}, {0, 0.5, 0.5});
    EXPECT_EQ(in.exitFlags, 0b001100);
    EXPECT_EQ(crossCell(in).exitFace, 0);
}

TEST(CrossCell, TakesTheLowerFaceOfEqualTimes) {
    const Crossing c = crossCell(cube({-1, -1, -1, -1, 0, 0}, {0.5, 0.5, 0.5}));
    EXPECT_EQ(c.exitFace, 1);
}

TEST(CrossCell, NeverReachesAFaceWithoutAFlag) {
    CrossingInput in = cube({10, 10, 0, 0, 0, 0}, {0, 0.25, 0.5});
    in.exitFlags = 0;
    EXPECT_EQ(crossCell(in).exitFace, 0);
}

TEST(CrossCell, EndsWhereTheExponentialWouldOverflow) {
    // y grows with a = 600 while x takes 1/10: a t = 60.
    const CrossingInput in = cube({10, 10, 0, 600, 0, 0}, {0, 0, 0.5});
    EXPECT_EQ(crossCell(in).exitFace, 0);
    const CrossingInput below = cube({10, 10, 0, 490, 0, 0}, {0, 0, 0.5});
    EXPECT_EQ(crossCell(below).exitFace, 2);
    const CrossingInput above = cube({10, 10, 0, 510, 0, 0}, {0, 0, 0.5});
    EXPECT_EQ(crossCell(above).exitFace, 0);
}

TEST(CrossCell, KeepsPointsOffTheFacesItDoesNotLeaveBy) {
    const Crossing c = crossCell(cube({10, 10, 0, 0, 0, 0}, {0, 0, 1}));
    EXPECT_EQ(c.point[1], 1e-10);
    EXPECT_EQ(c.point[2], 0.9999999999);
}

TEST(TimeToFace, IsNeverReachedWhenTheFaceFlowOpposesTheEntryOrIsTooSlow) {
    EXPECT_EQ(timeToFace(-2.0, 1.0, -1.0, 1.0), NoCrossing);
    EXPECT_EQ(timeToFace(0.0, 3e-6, 3e-5, 1.0), NoCrossing);  // product 9e-11
    EXPECT_EQ(timeToFace(0.0, 1.0, 1.0, 0.0), NoCrossing);
    EXPECT_DOUBLE_EQ(timeToFace(0.0, -4.0, -4.0, 0.5), 0.125);
}

TEST(ExitFaces, TurnRoundWithTheFlow) {
    const double flux[6] = {5, 5, -3, 4, 0, -1};
    const CellId all[6] = {1, 1, 1, 1, 1, 1};
    EXPECT_EQ(exitFaces(flux, all, 1.0), 0b001110);
    EXPECT_EQ(exitFaces(flux, all, -1.0), 0b100001);
    const CellId noHighX[6] = {1, 0, 1, 1, 1, 1};
    EXPECT_EQ(exitFaces(flux, noHighX, 1.0), 0b001100);
}

}  // namespace
}  // namespace kvr
