#include "pressure/solvers/ilu.hpp"

#include "unit/pressure/solvers/generated_systems.hpp"

#include <gtest/gtest.h>

namespace kvr {
namespace {

/// Non-symmetric, tridiagonal: elimination makes no fill, so that the incomplete factors are exact.
LinearSystem tridiagonal() {
    return test::fromFull(
        {{4.0, -1.0, 0.0, 0.0}, {-2.0, 5.0, -1.5, 0.0}, {0.0, -0.5, 3.0, -2.0}, {0.0, 0.0, -1.0, 6.0}},
        {1.0, -2.0, 3.0, 0.5});
}

TEST(IncompleteFactors, AreExactWhereEliminationMakesNoFill) {
    const LinearSystem system = tridiagonal();
    IncompleteFactors factors;
    factorIncomplete(system, factors);
    std::vector<double> z(4);
    applyIncomplete(factors, system.rhs, z);
    EXPECT_LT(test::trueResidual(system, z), 1e-14);
}

TEST(IncompleteFactors, SolveTheTransposedSystem) {
    const LinearSystem system = tridiagonal();
    const LinearSystem transposed = test::fromFull(
        {{4.0, -2.0, 0.0, 0.0}, {-1.0, 5.0, -0.5, 0.0}, {0.0, -1.5, 3.0, -1.0}, {0.0, 0.0, -2.0, 6.0}},
        system.rhs);
    IncompleteFactors factors;
    factorIncomplete(system, factors);
    std::vector<double> z(4);
    applyIncompleteTransposed(factors, system.rhs, z);
    EXPECT_LT(test::trueResidual(transposed, z), 1e-14);
}

TEST(IncompleteFactors, StorePivotsInverted) {
    IncompleteFactors factors;
    factorIncomplete(tridiagonal(), factors);
    EXPECT_DOUBLE_EQ(factors.inversePivot[0], 1.0 / 4.0);
    EXPECT_DOUBLE_EQ(factors.inversePivot[1], 1.0 / 4.5);  // 5 - 2 * 1 / 4
}

TEST(IncompleteFactors, SortColumnsWhateverTheirOrderInTheSystem) {
    LinearSystem system = tridiagonal();
    LinearSystem shuffled = system;
    shuffled.patternStamp += 1000000;
    std::swap(shuffled.column[3], shuffled.column[4]);  // the two couplings of row 2
    std::swap(shuffled.value[3], shuffled.value[4]);
    IncompleteFactors factors, shuffledFactors;
    factorIncomplete(system, factors);
    factorIncomplete(shuffled, shuffledFactors);
    EXPECT_EQ(factors.inversePivot, shuffledFactors.inversePivot);
    EXPECT_EQ(factors.lowerColumn, shuffledFactors.lowerColumn);
}

TEST(IncompleteFactors, FollowNewValuesOnAKeptPattern) {
    LinearSystem system = tridiagonal();
    IncompleteFactors factors;
    factorIncomplete(system, factors);
    for (double& value : system.value) value *= 2.0;
    factorIncomplete(system, factors);
    EXPECT_DOUBLE_EQ(factors.inversePivot[1], 1.0 / 9.0);
}

TEST(IncompleteFactors, FallBackToTheDiagonalWhereAPivotVanishes) {
    IncompleteFactors factors;
    factorIncomplete(test::fromFull({{1.0, -1.0}, {-1.0, 1.0}}, {1.0, 1.0}), factors);
    EXPECT_DOUBLE_EQ(factors.inversePivot[1], 1.0);
}

}  // namespace
}  // namespace kvr
