#include "pressure/solvers/sweeps.hpp"

#include "unit/pressure/solvers/generated_systems.hpp"

#include <cmath>
#include <gtest/gtest.h>

namespace kvr {
namespace {

using test::Box;

/// A box with wells large enough for eight ranges, and a right side.
struct Sample {
    SparseMatrix matrix;
    int wells = 0;
    std::vector<double> b;
};

/// Couplings that single precision holds exactly: sweeps then follow their definition to rounding.
void roundCouplings(SparseMatrix& matrix) {
    for (int i = 0; i < matrix.rows; ++i) {
        for (int k = matrix.start[i] + 1; k < matrix.start[i + 1]; ++k)
            matrix.value[k] = static_cast<double>(static_cast<float>(matrix.value[k]));
    }
}

Sample sampleOf(const Box& box, bool withWells = true, bool rounded = true) {
    const std::vector<double> field = test::lognormalField(box.cells(), 1.0, 5);
    const auto wells = withWells ? test::fiveSpotWells(box, field) : std::vector<test::GeneratedWell>{};
    LinearSystem system = boxSystem(box, field, {1.0, 2.0, 5.0}, 0.1, wells);
    test::randomRhs(system, 4);
    Sample sample;
    sample.matrix.rows = sample.matrix.columns = system.size;
    sample.matrix.start.assign(system.rowStart.begin(), system.rowStart.end());
    sample.matrix.column = system.column;
    sample.matrix.value = system.value;
    sample.wells = system.size - system.cellRows;
    sample.b = system.rhs;
    if (rounded) roundCouplings(sample.matrix);
    return sample;
}

std::vector<double> product(const SparseMatrix& a, const std::vector<double>& x) {
    std::vector<double> y(x.size(), 0.0);
    for (int i = 0; i < a.rows; ++i) {
        for (int k = a.start[i]; k < a.start[i + 1]; ++k) y[i] += a.value[k] * x[a.column[k]];
    }
    return y;
}

/// The range of row i by the definition: equal parts of the cells; -1 for a well.
int rangeOf(const SweepMatrix& split, int i) {
    for (int r = 0; r < split.ranges.count; ++r) {
        if (i >= split.ranges[r].first && i < split.ranges[r].end) return r;
    }
    return -1;
}

/// Row i relaxed by the definition: other ranges with their old values and half of their couplings on the
/// diagonal, the rest with the present ones.
double relaxedRow(const Sample& s, const SweepMatrix& split, int i, const std::vector<double>& old,
                  const std::vector<double>& now) {
    double diagonal = s.matrix.value[s.matrix.start[i]], sum = s.b[i];
    for (int k = s.matrix.start[i] + 1; k < s.matrix.start[i + 1]; ++k) {
        const int j = s.matrix.column[k];
        const bool wellTakesPart = rangeOf(split, i) < 0 || rangeOf(split, j) < 0;
        if (wellTakesPart || rangeOf(split, i) == rangeOf(split, j)) {
            sum -= s.matrix.value[k] * now[j];
        } else {
            const double surplus = 0.5 * std::abs(s.matrix.value[k]);
            sum += surplus * old[i] - s.matrix.value[k] * old[j];
            diagonal += surplus;
        }
    }
    return sum / diagonal;
}

void expectEqual(const std::vector<double>& a, const std::vector<double>& b, double tolerance) {
    ASSERT_EQ(a.size(), b.size());
    double worst = 0.0;
    for (std::size_t i = 0; i < a.size(); ++i) worst = std::max(worst, std::abs(a[i] - b[i]));
    EXPECT_LE(worst, tolerance);
}

std::vector<double> someVector(int size) {
    std::vector<double> x(static_cast<std::size_t>(size));
    for (int i = 0; i < size; ++i) x[i] = std::sin(0.37 * i);
    return x;
}

TEST(Sweeps, CutAMatrixIntoRangesByItsSizeAlone) {
    SweepMatrix split;
    splitForSweeps(sampleOf({10, 10, 2}).matrix, 5, split);
    EXPECT_EQ(split.ranges.count, 1);
    EXPECT_EQ(split.tail, 200);
    EXPECT_TRUE(split.border.row.empty());
    splitForSweeps(sampleOf({40, 50, 20}).matrix, 5, split);
    EXPECT_EQ(split.ranges.count, 8);
    EXPECT_FALSE(split.border.row.empty());
}

TEST(Sweeps, KeepTheSumOfARowWhoseCouplingsAreRounded) {
    // The vector of ones takes the row sums out of the residual: far below what rounding leaves of couplings.
    const Sample s = sampleOf({40, 50, 20}, true, false);
    SweepMatrix split;
    splitForSweeps(s.matrix, s.wells, split);
    std::vector<double> x(s.b.size(), 1.0), b = product(s.matrix, x);
    sweepForward(split, b, x);
    expectEqual(x, std::vector<double>(s.b.size(), 1.0), 1e-13);
}

TEST(Sweeps, ForwardFollowTheDefinition) {
    const Sample s = sampleOf({40, 50, 20});
    SweepMatrix split;
    splitForSweeps(s.matrix, s.wells, split);
    std::vector<double> x = someVector(s.matrix.rows), twin = x, b = s.b;
    const std::vector<double> old = x;
    for (int i = 0; i < s.matrix.rows; ++i) twin[i] = relaxedRow(s, split, i, old, twin);
    sweepForward(split, b, x);
    expectEqual(x, twin, 1e-12);
}

TEST(Sweeps, BackwardFollowTheDefinitionWithTheWellsFirst) {
    const Sample s = sampleOf({40, 50, 20});
    SweepMatrix split;
    splitForSweeps(s.matrix, s.wells, split);
    std::vector<double> x = someVector(s.matrix.rows), twin = x, b = s.b;
    const std::vector<double> old = x;
    for (int i = s.matrix.rows - 1; i >= 0; --i) twin[i] = relaxedRow(s, split, i, old, twin);
    sweepBackward(split, b, x);
    expectEqual(x, twin, 1e-12);
}

TEST(Sweeps, FromZeroAreForwardSweepsFromAZeroVector) {
    const Sample s = sampleOf({40, 50, 20});
    SweepMatrix split;
    splitForSweeps(s.matrix, s.wells, split);
    std::vector<double> x(s.b.size(), 0.0), fromZero(s.b.size(), 7.0), b = s.b;
    sweepForward(split, b, x);
    sweepForwardFromZero(split, s.b, fromZero);
    expectEqual(x, fromZero, 0.0);
}

TEST(Sweeps, LeaveTheResidualOfTheMatrixBehind) {
    const Sample s = sampleOf({40, 50, 20});
    SweepMatrix split;
    splitForSweeps(s.matrix, s.wells, split);
    std::vector<double> x(s.b.size()), r(s.b.size());
    sweepForwardFromZero(split, s.b, x);
    formSweptResidual(split, x, r);
    std::vector<double> twin = product(s.matrix, x);
    for (std::size_t i = 0; i < twin.size(); ++i) twin[i] = s.b[i] - twin[i];
    expectEqual(r, twin, 1e-12);
}

TEST(Sweeps, LeaveASolutionWhereItIs) {
    const Sample s = sampleOf({40, 50, 20});
    SweepMatrix split;
    splitForSweeps(s.matrix, s.wells, split);
    const std::vector<double> solution = someVector(s.matrix.rows);
    std::vector<double> x = solution, b = product(s.matrix, solution);
    sweepBackward(split, b, x);
    expectEqual(x, solution, 1e-12);
    b = product(s.matrix, solution);
    sweepForward(split, b, x);
    expectEqual(x, solution, 1e-12);
}

TEST(Sweeps, ConvergeOnAMatrixOfManyRanges) {
    // Symmetric and with a positive diagonal: the error falls in the norm of the matrix.
    const Sample s = sampleOf({40, 50, 20}, false);
    SweepMatrix split;
    splitForSweeps(s.matrix, 0, split);
    std::vector<double> x = someVector(s.matrix.rows);
    double before = HUGE_VAL;
    for (int sweep = 0; sweep < 5; ++sweep) {
        std::vector<double> b(x.size(), 0.0);
        sweepForward(split, b, x);
        const std::vector<double> ax = product(s.matrix, x);
        double energy = 0.0;
        for (std::size_t i = 0; i < x.size(); ++i) energy += x[i] * ax[i];
        EXPECT_LT(energy, before);
        before = energy;
    }
}

}  // namespace
}  // namespace kvr
