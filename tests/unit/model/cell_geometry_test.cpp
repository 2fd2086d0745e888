#include "model/cell_geometry.hpp"

#include <array>
#include <gtest/gtest.h>

namespace kvr {
namespace {

using Corners = std::array<float, 24>;

/// Corners 1..8 of a frustum of height 1: unit square on top, square of side `base` below.
Corners frustum(float base) {
    return {0, 0, 0, 1, 0, 0, 0, 1, 0, 1, 1, 0, 0, 0, 1, base, 0, 1, 0, base, 1, base, base, 1};
}

TEST(IntegratedVolume, OfTheUnitCubeIsOne) {
    EXPECT_NEAR(integratedVolume(frustum(1).data()), 1.0, 1e-14);
}

TEST(IntegratedVolume, OfAFrustumIsTheRulesValueAndNotTheExactOne) {
    // det J = (1 + z)^2: mean of 1.1127016654^2 and 1.8872983346^2 is 2.4, the exact integral 7/3.
    EXPECT_NEAR(integratedVolume(frustum(2).data()), 2.4, 1e-13);
}

TEST(IntegratedVolume, OfAWedgeWithLinearDeterminantIsExact) {
    // z = c(1 + 2a): det J = 1 + 2a, integral 2.
    const Corners wedge = {0, 0, 0, 1, 0, 0, 0, 1, 0, 1, 1, 0, 0, 0, 1, 1, 0, 3, 0, 1, 1, 1, 1, 3};
    EXPECT_NEAR(integratedVolume(wedge.data()), 2.0, 1e-13);
}

TEST(IntegratedVolume, DoesNotDependOnTheHandednessOfTheAxes) {
    Corners mirrored = frustum(2);
    for (std::size_t n = 0; n < 8; ++n) mirrored[3 * n + 1] = -mirrored[3 * n + 1];
    EXPECT_NEAR(integratedVolume(mirrored.data()), 2.4, 1e-13);
}

TEST(ProjectedArea, IsTheTrueAreaOfAnAxisParallelFace) {
    const Corners box = {0, 0, 0, 4, 0, 0, 0, 5, 0, 4, 5, 0, 0, 0, 6, 4, 0, 6, 0, 5, 6, 4, 5, 6};
    const double expected[] = {30, 30, 24, 24, 20, 20};
    for (int face = 1; face <= 6; ++face)
        EXPECT_NEAR(projectedArea(box.data(), face), expected[face - 1], 1e-12) << face;
}

TEST(ProjectedArea, LeavesOutThePartOfATiltedFaceAlongTheOtherAxes) {
    // The high x face leans: its lower edge lies 3 further along x. Seen along x it is still 1 by 1.
    const Corners leaning = {0, 0, 0, 1, 0, 0, 0, 1, 0, 1, 1, 0, 0, 0, 1, 4, 0, 1, 0, 1, 1, 4, 1, 1};
    EXPECT_NEAR(projectedArea(leaning.data(), 2), 1.0, 1e-13);
    EXPECT_NEAR(projectedArea(leaning.data(), 6), 4.0, 1e-13);
    // A trapezium with parallel sides 1 and 4 and height 1.
    EXPECT_NEAR(projectedArea(leaning.data(), 3), 2.5, 1e-13);
}

TEST(NominalSizes, UseOneCoordinateOnly) {
    // Cell tilted along x: 30 ft deeper over 40 ft. Its edge is 50 ft, its nominal size 40.
    const Corners tilted = {0, 0, 0, 40, 0, 30, 0, 7, 0, 40, 7, 30, 0, 0, 10, 40, 0, 40, 0, 7, 10, 40, 7, 40};
    const Vector3 sizes = nominalSizes(tilted.data());
    EXPECT_DOUBLE_EQ(sizes[0], 40.0);
    EXPECT_DOUBLE_EQ(sizes[1], 7.0);
    EXPECT_DOUBLE_EQ(sizes[2], 10.0);
}

TEST(MeanOfCorners, AddsInSinglePrecision) {
    // 8388608 is 2^23, 16777216 is 2^24: above 2^24 single precision holds even numbers only, so the two
    // ones added one by one to 2^24 are lost.
    Corners corners{};
    corners[0] = 8388608.0F;
    corners[3] = 8388608.0F;
    corners[6] = 1.0F;
    corners[9] = 1.0F;
    EXPECT_EQ(meanOfCorners(corners.data())[0], 16777216.0 / 8.0);
}

TEST(FaceCentre, IsTheMeanOfTheFacesFourCorners) {
    const Vector3 high = faceCentre(frustum(2).data(), 6);
    EXPECT_DOUBLE_EQ(high[0], 1.0);
    EXPECT_DOUBLE_EQ(high[1], 1.0);
    EXPECT_DOUBLE_EQ(high[2], 1.0);
    const Vector3 lowX = faceCentre(frustum(2).data(), 1);
    EXPECT_DOUBLE_EQ(lowX[0], 0.0);
    EXPECT_DOUBLE_EQ(lowX[1], 0.75);
    EXPECT_DOUBLE_EQ(lowX[2], 0.5);
}

TEST(MeanLateralExtent, AveragesHeightAndWidthOfTheFace) {
    const Corners box = {0, 0, 0, 4, 0, 0, 0, 5, 0, 4, 5, 0, 0, 0, 6, 4, 0, 6, 0, 5, 6, 4, 5, 6};
    EXPECT_DOUBLE_EQ(meanLateralExtent(box.data(), 1), 5.5);
    EXPECT_DOUBLE_EQ(meanLateralExtent(box.data(), 4), 5.0);
}

}  // namespace
}  // namespace kvr
