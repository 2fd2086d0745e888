#include "streamline/transport/line_matrix.hpp"

#include "streamline/transport/line_dump.hpp"
#include "unit/quiet_console.hpp"
#include "unit/scratch_folder.hpp"

#include <cmath>
#include <gtest/gtest.h>

namespace kvr {
namespace {

/// A system of `nodes` blocks whose entries have no pattern but are diagonally heavy.
LineMatrix generated(int unknowns, int nodes, bool upstreamOnly) {
    LineMatrix matrix;
    sizeLineMatrix(unknowns, nodes, matrix);
    matrix.upstreamOnly = upstreamOnly;
    double seed = 0.37;
    const auto next = [&] { return seed = std::fmod(seed * 97.13 + 0.311, 1.0); };
    for (std::size_t k = 0; k < matrix.diagonal.size(); ++k) {
        matrix.lower[k] = next() - 0.5;
        matrix.diagonal[k] = next() - 0.5;
        matrix.upper[k] = next() - 0.5;
    }
    const int m = unknowns;
    for (int n = 0; n < nodes; ++n)
        for (int r = 0; r < m; ++r) matrix.diagonal[static_cast<std::size_t>((n * m + r) * m + r)] += 4.0;
    for (double& value : matrix.rhs) value = next();
    return matrix;
}

/// Largest residual of a solution, by the entries of the matrix.
double residual(const LineMatrix& matrix, const std::vector<double>& rhs, const std::vector<double>& x) {
    const int rows = matrix.nodes * matrix.unknowns;
    double most = 0.0;
    for (int r = 0; r < rows; ++r) {
        double sum = rhs[static_cast<std::size_t>(r)];
        for (int c = 0; c < rows; ++c) sum -= entryAt(matrix, r, c) * x[static_cast<std::size_t>(c)];
        most = std::max(most, std::abs(sum));
    }
    return most;
}

struct Kind {
    int unknowns;
    bool upstreamOnly;
    double allowed;
};

TEST(SolveLineMatrix, SolvesByEveryRoute) {
    for (const Kind& kind :
         {Kind{1, true, 1e-12}, Kind{3, true, 1e-12}, Kind{1, false, 1e-12}, Kind{3, false, 1e-12}}) {
        for (const LineRoute route :
             {LineRoute::Forward, LineRoute::Banded, LineRoute::Dense, LineRoute::Sparse}) {
            const LineMatrix before = generated(kind.unknowns, 12, kind.upstreamOnly);
            LineMatrix matrix = generated(kind.unknowns, 12, kind.upstreamOnly);
            ASSERT_TRUE(solveLineMatrix(route, matrix));
            const double allowed = route == LineRoute::Sparse ? 1e-7 : kind.allowed;
            EXPECT_LT(residual(before, before.rhs, matrix.rhs), allowed)
                << kind.unknowns << kind.upstreamOnly << static_cast<int>(route);
        }
    }
}

TEST(SolveLineMatrix, PivotsBetweenTheRowsOfNeighbours) {
    LineMatrix crossed;
    sizeLineMatrix(1, 2, crossed);
    crossed.upstreamOnly = false;
    crossed.lower[1] = crossed.upper[0] = 1.0;
    crossed.rhs = {3.0, 5.0};
    ASSERT_TRUE(solveLineMatrix(LineRoute::Banded, crossed));
    EXPECT_EQ(crossed.rhs, (std::vector<double>{5.0, 3.0}));
    LineMatrix before = generated(3, 12, false);
    LineMatrix matrix = generated(3, 12, false);
    for (LineMatrix* one : {&before, &matrix})
        for (std::size_t k = 0; k < one->diagonal.size(); k += 4) one->diagonal[k] *= 1e-9;
    ASSERT_TRUE(solveLineMatrix(LineRoute::Banded, matrix));
    EXPECT_LT(residual(before, before.rhs, matrix.rhs), 1e-11);
}

TEST(SolveLineMatrix, SaysSoWhereAPivotVanishes) {
    for (const LineRoute route : {LineRoute::Forward, LineRoute::Banded, LineRoute::Dense}) {
        LineMatrix one = generated(1, 4, true);
        one.diagonal[2] = 0.0;
        EXPECT_FALSE(solveLineMatrix(route, one));
        LineMatrix three = generated(3, 4, true);
        for (std::size_t k = 9; k < 18; ++k) three.diagonal[k] = 0.0;
        EXPECT_FALSE(solveLineMatrix(route, three));
    }
}

TEST(LineRouteOf, ReadsTheSolverWordAndTakesBlankForBandStorage) {
    EXPECT_EQ(lineRouteOf("dgesv"), LineRoute::Dense);
    EXPECT_EQ(lineRouteOf("amg"), LineRoute::Sparse);
    EXPECT_EQ(lineRouteOf("gband"), LineRoute::Forward);
    EXPECT_EQ(lineRouteOf(""), LineRoute::Forward);
}

TEST(DumpLineMatrix, WritesARowPerUnknownWithTheRightHandSideLast) {
    const ScratchFolder scratch;
    const QuietConsole quiet;
    LineMatrix matrix;
    sizeLineMatrix(1, 2, matrix);
    matrix.diagonal = {2.0, 4.0};
    matrix.lower = {0.0, -1.0};
    matrix.rhs = {0.5, 3.0};
    const LineDump dump{&quiet.console, scratch.path, 30.0};
    dumpLineMatrix(dump, 1.5, 0.25, 2, matrix);
    EXPECT_EQ(scratch.read("SMatrix_T_31.5_dt_0.25_ite_2.xls"), "2\t0\t0.5\n-1\t4\t3\n");
}

}  // namespace
}  // namespace kvr
