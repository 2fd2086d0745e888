#include "pressure/solvers/coarsening.hpp"
#include "pressure/solvers/cycle.hpp"
#include "pressure/solvers/galerkin.hpp"
#include "pressure/solvers/interpolation.hpp"
#include "unit/pressure/solvers/generated_systems.hpp"

#include <algorithm>
#include <cmath>
#include <gtest/gtest.h>

namespace kvr {
namespace {

using test::Box;

SparseMatrix asMatrix(const LinearSystem& system) {
    SparseMatrix matrix;
    matrix.rows = matrix.columns = system.size;
    matrix.start.assign(system.rowStart.begin(), system.rowStart.end());
    matrix.column = system.column;
    matrix.value = system.value;
    return matrix;
}

SparseMatrix boxMatrix(const Box& box, double deviation, double storage) {
    return asMatrix(
        test::boxSystem(box, test::lognormalField(box.cells(), deviation, 3), {1.0, 1.0, 1.0}, storage));
}

std::vector<std::vector<double>> full(const SparseMatrix& matrix) {
    std::vector<std::vector<double>> rows(matrix.rows, std::vector<double>(matrix.columns, 0.0));
    for (int i = 0; i < matrix.rows; ++i) {
        for (int k = matrix.start[i]; k < matrix.start[i + 1]; ++k)
            rows[i][matrix.column[k]] += matrix.value[k];
    }
    return rows;
}

bool holds(const StrengthGraph& graph, int i, int j) {
    return std::find(graph.column.begin() + graph.start[i], graph.column.begin() + graph.start[i + 1], j) !=
           graph.column.begin() + graph.start[i + 1];
}

TEST(StrongDependence, TakesNegativeCouplingsFromAQuarterOfTheLargest) {
    const SparseMatrix matrix = asMatrix(test::fromFull({{4.0, -2.0, -0.5, -0.49, 1.0},
                                                         {-1.0, 2.0, 0.0, 0.0, 0.0},
                                                         {-1.0, 0.0, 2.0, 0.0, 0.0},
                                                         {-1.0, 0.0, 0.0, 2.0, 0.0},
                                                         {-1.0, 0.0, 0.0, 0.0, 2.0}},
                                                        {1.0, 1.0, 1.0, 1.0, 1.0}));
    const StrengthGraph graph = strongDependence(matrix);
    EXPECT_TRUE(holds(graph, 0, 1));
    EXPECT_TRUE(holds(graph, 0, 2));
    EXPECT_FALSE(holds(graph, 0, 3));
    EXPECT_FALSE(holds(graph, 0, 4));
}

TEST(StrongDependence, IsNoneForADominantRow) {
    const SparseMatrix matrix = asMatrix(test::fromFull({{10.0, -1.9}, {-2.1, 10.0}}, {1.0, 1.0}));
    const StrengthGraph graph = strongDependence(matrix);
    EXPECT_FALSE(holds(graph, 0, 1));
    EXPECT_TRUE(holds(graph, 1, 0));
}

TEST(CoarsePoints, LeaveNoFineRowWithoutACoarseOneWithinDistanceTwo) {
    const SparseMatrix matrix = boxMatrix({20, 18, 5}, 2.0, 1e-6);
    const StrengthGraph graph = strongDependence(matrix);
    const std::vector<PointKind> kind = chooseCoarsePoints(graph, 0);
    for (int i = 0; i < matrix.rows; ++i) {
        if (kind[i] == PointKind::Coarse) continue;
        bool reached = false;
        for (int k = graph.start[i]; k < graph.start[i + 1]; ++k) {
            const int j = graph.column[k];
            reached = reached || kind[j] == PointKind::Coarse;
            for (int m = graph.start[j]; m < graph.start[j + 1]; ++m)
                reached = reached || kind[graph.column[m]] == PointKind::Coarse;
        }
        EXPECT_TRUE(reached) << "row " << i;
    }
}

TEST(CoarsePoints, AreFewerThanHalfOfTheRows) {
    const SparseMatrix matrix = boxMatrix({20, 20, 10}, 0.0, 1e-6);
    const std::vector<PointKind> kind = chooseCoarsePoints(strongDependence(matrix), 0);
    EXPECT_LT(std::count(kind.begin(), kind.end(), PointKind::Coarse), matrix.rows / 2);
}

TEST(CoarsePoints, ContainTheKeptRows) {
    const SparseMatrix matrix = boxMatrix({10, 10, 1}, 1.0, 1e-6);
    const std::vector<PointKind> kind = chooseCoarsePoints(strongDependence(matrix), 3);
    for (int i = 97; i < 100; ++i) EXPECT_EQ(kind[i], PointKind::Coarse);
}

TEST(CoarsePoints, AreNoneWhereNothingIsCoupled) {
    const SparseMatrix matrix = asMatrix(test::fromFull({{1.0, 0.0}, {0.0, 1.0}}, {1.0, 1.0}));
    const std::vector<PointKind> kind = chooseCoarsePoints(strongDependence(matrix), 0);
    EXPECT_EQ(std::count(kind.begin(), kind.end(), PointKind::Fine), 2);
}

TEST(Interpolation, ReproducesAConstantWhereRowsSumToZero) {
    const SparseMatrix matrix = boxMatrix({15, 15, 4}, 2.0, 0.0);
    const StrengthGraph graph = strongDependence(matrix);
    const SparseMatrix p = extendedInterpolation(matrix, graph, chooseCoarsePoints(graph, 0));
    for (int i = 0; i < p.rows; ++i) {
        double sum = 0.0;
        for (int k = p.start[i]; k < p.start[i + 1]; ++k) sum += p.value[k];
        EXPECT_NEAR(sum, 1.0, 1e-12);
        EXPECT_LE(p.start[i + 1] - p.start[i], MaxWeights);
    }
}

TEST(Interpolation, FollowsTheFormulaOnALine) {
    // Rows 0 and 3 coarse, couplings 2, 1, 4. Row 1: strong fine neighbour 2 passes its coupling 1 on to
    // row 3 (share 4/5) and back to row 1 (share 1/5): w10 = 2/2.8, w13 = 0.8/2.8; row 2 likewise with
    // shares 2/3 and 1/3: w20 = (2/3)/(14/3), w23 = 4/(14/3).
    const SparseMatrix matrix = asMatrix(test::fromFull(
        {{2.0, -2.0, 0.0, 0.0}, {-2.0, 3.0, -1.0, 0.0}, {0.0, -1.0, 5.0, -4.0}, {0.0, 0.0, -4.0, 4.0}},
        {0.0, 0.0, 0.0, 0.0}));
    const std::vector<PointKind> kind = {PointKind::Coarse, PointKind::Fine, PointKind::Fine,
                                         PointKind::Coarse};
    const auto rows = full(extendedInterpolation(matrix, strongDependence(matrix), kind));
    EXPECT_DOUBLE_EQ(rows[0][0], 1.0);
    EXPECT_NEAR(rows[1][0], 2.0 / 2.8, 1e-14);
    EXPECT_NEAR(rows[1][1], 0.8 / 2.8, 1e-14);
    EXPECT_NEAR(rows[2][0], 1.0 / 7.0, 1e-14);
    EXPECT_NEAR(rows[2][1], 6.0 / 7.0, 1e-14);
    EXPECT_DOUBLE_EQ(rows[3][1], 1.0);
}

TEST(GalerkinProduct, AgreesWithTheFullTripleProduct) {
    LinearSystem system = test::boxSystem({6, 5, 3}, test::lognormalField(90, 1.0, 9), {1.0, 1.0, 1.0}, 0.1);
    test::oneSidedMultipliers(system, 0.3, 17);
    const SparseMatrix matrix = asMatrix(system);
    const StrengthGraph graph = strongDependence(matrix);
    const SparseMatrix p = extendedInterpolation(matrix, graph, chooseCoarsePoints(graph, 0));
    const SparseMatrix coarse = galerkinProduct(matrix, p, transposed(p));
    const auto a = full(matrix), w = full(p), c = full(coarse);
    for (int r = 0; r < coarse.rows; ++r) {
        EXPECT_EQ(coarse.column[coarse.start[r]], r);
        for (int s = 0; s < coarse.rows; ++s) {
            double sum = 0.0;
            for (int i = 0; i < matrix.rows; ++i) {
                for (int j = 0; j < matrix.rows; ++j) sum += w[i][r] * a[i][j] * w[j][s];
            }
            EXPECT_NEAR(c[r][s], sum, 1e-11);
        }
    }
}

TEST(Transfer, HoldsTheRoundedWeightsExactly) {
    SparseMatrix matrix{2, 2, {0, 2, 3}, {1, 0, 1}, {1.0 / 3.0, 0.7, 0.5}};
    roundWeights(matrix);
    const SparseMatrix rounded = matrix;
    EXPECT_NEAR(rounded.value[0], 1.0 / 3.0, 5e-7);
    const Transfer transfer = transferOf(matrix);
    EXPECT_EQ(transfer.rows, 2);
    EXPECT_EQ(transfer.start, rounded.start);
    EXPECT_EQ(transfer.column, rounded.column);
    for (std::size_t k = 0; k < rounded.value.size(); ++k)
        EXPECT_EQ(static_cast<double>(transfer.weight[k]), rounded.value[k]);
}

TEST(Transfer, KeepsTheSumOfARowOfWeights) {
    SparseMatrix matrix{3, 4, {0, 4, 6, 7}, {0, 1, 2, 3, 0, 1, 2}, {0.1, 0.2, 0.3, 0.4, -0.3, 1.3, 1e9 / 3}};
    roundWeights(matrix);
    EXPECT_EQ(matrix.value[0] + matrix.value[1] + matrix.value[2] + matrix.value[3], 1.0);
    EXPECT_EQ(matrix.value[4] + matrix.value[5], 1.0);
    for (const double weight : matrix.value)
        EXPECT_EQ(weight, static_cast<double>(static_cast<float>(weight)));
    EXPECT_NEAR(matrix.value[6], 1e9 / 3, 100.0);
}

TEST(Transposition, ExchangesRowsAndColumns) {
    const SparseMatrix matrix = boxMatrix({5, 4, 2}, 1.0, 0.1);
    const auto a = full(matrix), t = full(transposed(matrix));
    for (int i = 0; i < matrix.rows; ++i) {
        for (int j = 0; j < matrix.rows; ++j) EXPECT_EQ(a[i][j], t[j][i]);
    }
}

TEST(Cycle, OfTwoLevelsIsSmoothingCorrectionSmoothing) {
    // Two cells, one coarse: A = [[3,-1],[-1,2]], P = (1, 1/2)', P'AP = 5/2. From zero with b = (3, 5):
    // forward sweep x = (1, 3); residual (3, 0); coarse correction 3/2.5 = 1.2: x = (2.2, 3.6);
    // backward sweep: x2 = (5 + 2.2)/2 = 3.6, x1 = (3 + 3.6)/3 = 2.2.
    Hierarchy hierarchy;
    hierarchy.levels.resize(2);
    const SparseMatrix fine{2, 2, {0, 2, 4}, {0, 1, 1, 0}, {3.0, -1.0, 2.0, -1.0}};
    const SparseMatrix p{2, 1, {0, 1, 2}, {0, 0}, {1.0, 0.5}};
    const SparseMatrix coarse = galerkinProduct(fine, p, transposed(p));
    ASSERT_DOUBLE_EQ(coarse.value[0], 2.5);
    splitForSweeps(fine, 0, hierarchy.levels[0].matrix);
    splitForSweeps(coarse, 0, hierarchy.levels[1].matrix);
    SparseMatrix down = p, up = transposed(p);
    hierarchy.levels[0].interpolation = transferOf(down);
    hierarchy.levels[0].restriction = transferOf(up);
    for (MultigridLevel& level : hierarchy.levels) sizeVectors(level);
    hierarchy.order = {0, 1};
    hierarchy.rowScale = {1.0, 1.0};
    const std::vector<double> b = {3.0, 5.0};
    std::vector<double> x(2);
    applyCycle(hierarchy, b, x);
    EXPECT_NEAR(x[0], 2.2, 1e-14);
    EXPECT_NEAR(x[1], 3.6, 1e-14);
}

TEST(Cycle, NumbersItsVectorsAsTheSystemDoes) {
    // One level, swept: with the two rows exchanged inside, each still answers its own right side. The
    // matrix inside is that of the scaled rows: 2 * 4 and 8.
    Hierarchy hierarchy;
    hierarchy.levels.resize(1);
    const SparseMatrix diagonal{2, 2, {0, 1, 2}, {0, 1}, {8.0, 8.0}};
    splitForSweeps(diagonal, 0, hierarchy.levels[0].matrix);
    sizeVectors(hierarchy.levels[0]);
    hierarchy.order = {1, 0};
    hierarchy.rowScale = {1.0, 2.0};
    const std::vector<double> b = {16.0, 4.0};
    std::vector<double> x(2);
    applyCycle(hierarchy, b, x);
    EXPECT_DOUBLE_EQ(x[0], 2.0);
    EXPECT_DOUBLE_EQ(x[1], 1.0);
}

}  // namespace
}  // namespace kvr
