#pragma once

#include "pressure/solvers/sparse_matrix.hpp"

#include <cstdint>
#include <vector>

namespace kvr {

/// Strong dependence of rows on columns, compressed rows without the diagonal.
struct StrengthGraph {
    std::vector<int> start;  // [rows + 1]
    std::vector<int> column;
};

/// Row i depends strongly on j when -a_ij >= threshold * max_k(-a_ik): negative couplings only (Ruge and
/// Stueben 1987). A row whose couplings sum to less than (1 - dominance) of its diagonal depends on
/// nothing: smoothing alone resolves it.
StrengthGraph strongDependence(const SparseMatrix& matrix);

inline constexpr double StrengthThreshold = 0.25;
inline constexpr double DominanceLimit = 0.8;

/// The graph with its arrows turned round.
StrengthGraph turnedRound(const StrengthGraph& graph);

enum class PointKind : std::uint8_t { Undecided, Coarse, Fine };

/// Coarse points as a maximal independent set of the strength graph by falling influence (parallel
/// modified coarsening, De Sterck, Yang and Heys 2006); ties are broken by a fixed hash of the row, so
/// that the set is the same in every run. The last `keptRows` rows are coarse in any case. A fine row that
/// depends on something but reaches no coarse point within distance two becomes coarse.
std::vector<PointKind> chooseCoarsePoints(const StrengthGraph& graph, int keptRows);

}  // namespace kvr
