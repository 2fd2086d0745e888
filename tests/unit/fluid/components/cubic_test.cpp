#include "fluid/components/cubic.hpp"

#include <cmath>
#include <gtest/gtest.h>

namespace kvr {
namespace {

double cubicAt(double A, double B, double Z) {
    return ((Z + B - 1.0) * Z + A - 2.0 * B - 3.0 * B * B) * Z - (A - B - B * B) * B;
}

TEST(PengRobinsonCubic, HasThreeRootsOfWhichTheOuterOnesArePhases) {
    const CubicRoots roots = closedFormRoots(0.05, 0.005);
    EXPECT_NEAR(roots.vapour, 0.9533696347, 1e-10);
    EXPECT_NEAR(roots.liquid, 0.0067653448, 1e-10);
    const CubicRoots fine = fluidRoots(0.05, 0.005);
    EXPECT_NEAR(fine.vapour, roots.vapour, 1e-14);
    EXPECT_NEAR(fine.liquid, roots.liquid, 1e-14);
}

TEST(PengRobinsonCubic, HoldsRootsAtTheFloor) {
    const CubicRoots roots = closedFormRoots(1e-12, 1e-12);
    EXPECT_NEAR(roots.vapour, 1.0, 1e-11);
    EXPECT_EQ(roots.liquid, 1e-6);
}

TEST(PengRobinsonCubic, TakesOneRootWithoutCancellation) {
    // c2 = B - 1 with large B: q above 0, where (sqrt(D) - q)/2 would lose its digits.
    for (double A : {0.5, 3.0, 7.80378981, 40.0})
        for (double B : {0.1, 0.45914546, 1.7, 6.0}) {
            const CubicRoots roots = fluidRoots(A, B);
            EXPECT_NEAR(cubicAt(A, B, roots.vapour), 0.0, 1e-12 * (1.0 + A * B + B * B * B)) << A << ' ' << B;
            EXPECT_NEAR(closedFormRoots(A, B).vapour / roots.vapour, 1.0, 1e-9) << A << ' ' << B;
        }
}

TEST(PengRobinsonCubic, TurnsByARightAngleWhereTheDepressedFormHasNoConstant) {
    // q = 0 at given B: A from c1 c2/3 = 2 c2^3/27 + c0, which is linear in A.
    const double B = 0.01, c2 = B - 1.0;
    const double A =
        (2.0 * c2 * c2 * c2 / 27.0 + (2.0 * B + 3.0 * B * B) * c2 / 3.0 + (B + B * B) * B) / (c2 / 3.0 + B);
    const CubicRoots roots = closedFormRoots(A, B);
    // Roots at -c2/3 and sqrt(-3p) on both sides of it.
    const double p = (A - 2.0 * B - 3.0 * B * B) / 3.0 - c2 * c2 / 9.0;
    ASSERT_LT(p, 0.0);
    EXPECT_NEAR(roots.vapour, -c2 / 3.0 + std::sqrt(-3.0 * p), 1e-9);
    EXPECT_NEAR(roots.liquid, std::max(1e-6, -c2 / 3.0 - std::sqrt(-3.0 * p)), 1e-9);
}

TEST(PengRobinsonCubic, IsSolvedToTheLastDigitsNearItsTripleRoot) {
    // Critical point of the equation of state: A = 0.457235529, B = 0.077796074, Z = 0.3074013.
    for (double shift : {-1e-3, -1e-6, -1e-9, 0.0, 1e-9, 1e-6, 1e-3}) {
        const double A = 0.457235529 * (1.0 + shift), B = 0.077796074;
        for (const double Z : {fluidRoots(A, B).liquid, fluidRoots(A, B).vapour}) {
            EXPECT_NEAR(cubicAt(A, B, Z), 0.0, 2e-16) << shift;
            EXPECT_NEAR(Z, 0.3074, 0.1) << shift;
        }
    }
    EXPECT_EQ(closedFormRoots(0.457235529, 0.077796074).liquid > 0.0, true);
}

TEST(PengRobinsonCubic, SeparatesRootsThatTheClosedFormTakesAsDouble) {
    // Small roots 1e-4 apart: the discriminant is below 1e-10, both are volumes.
    const double B = 2e-5, A = 2e-4;
    const CubicRoots fine = fluidRoots(A, B);
    EXPECT_NEAR(cubicAt(A, B, fine.liquid), 0.0, 1e-18);
    EXPECT_GT(fine.liquid, B);
    EXPECT_LT(fine.liquid, 2e-4);
    EXPECT_NEAR(fine.vapour, 1.0 - 1.8e-4, 1e-6);
}

TEST(PengRobinsonCubic, TakesNoRootBelowTheCovolumeForAFluid) {
    const double A = 0.01, B = 0.02;  // A < B + B^2: a root between 0 and B
    EXPECT_LT(closedFormRoots(A, B).liquid, B);
    EXPECT_EQ(fluidRoots(A, B).liquid, fluidRoots(A, B).vapour);
}

TEST(RootSlopes, AreThoseOfDifferences) {
    const double A = 0.157, B = 0.0645, P = 1000.0, step = 0.5;
    auto root = [&](double p) { return fluidRoots(A * p / P, B * p / P).vapour; };
    const RootSlopes slopes = rootSlopes(A, B, P, root(P));
    EXPECT_NEAR(slopes.first, (root(P + step) - root(P - step)) / (2.0 * step),
                1e-6 * std::abs(slopes.first));
    EXPECT_NEAR(slopes.second, (root(P + step) - 2.0 * root(P) + root(P - step)) / (step * step),
                1e-4 * std::abs(slopes.second));
}

}  // namespace
}  // namespace kvr
