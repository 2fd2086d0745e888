#pragma once

#include "base/cell_array.hpp"
#include "matching/sensitivity_rows.hpp"
#include "model/connections.hpp"
#include "model/grid.hpp"

#include <array>
#include <span>
#include <vector>

namespace kvr {

/// What the wells ask of the permeability field: one row of sensitivities for each datum, kind after kind
/// (cut, then pressure), well after well, and what the field is to change of it.
struct WellData {
    SensitivityRows rows;
    std::vector<double> rightSide;  // [rows.count()] unit of the datum
};

/// Constraints by their place in `ConstraintWeights`.
namespace constraint {
inline constexpr std::size_t Norm = 0, Horizontal = 1, Vertical = 2, Count = 3;
}
using ConstraintWeights = std::array<double, constraint::Count>;  // 0 or less: not in use

/// Neighbours of a column along one axis; NoColumn where there is none.
struct ColumnPair {
    int low, high;
};
inline constexpr int NoColumn = -1;

/// The linear system of one inversion, A x = b in the sense of least squares. Unknowns are the changes of ln
/// k of the active cells, columns 0 .. columns() - 1 in the order of the cells. Rows in this order:
///   data        sensitivities, right side the misfits
///   norm        weight on the diagonal, one for each active cell
///   smoothness  for each of the axes i, j (horizontal weight) and k (vertical weight), one for each active
///               cell: the weight on the diagonal, minus half of it for each active neighbour along the axis.
///               A cell with no active neighbour along the axis has a row of zeros
/// The right side of norm and smoothness is 0. Their rows are not held; the products form them.
struct MatchingSystem {
    const WellData* data = nullptr;  // outlives the system
    ConstraintWeights weights{};
    std::vector<CellId> cells;                                  // of each column
    CellArray<int> columnOf;                                    // NoColumn for inactive cells
    std::array<std::vector<ColumnPair>, AxisCount> neighbours;  // by column; empty: no row along the axis

    [[nodiscard]] std::size_t columns() const { return cells.size(); }
};

MatchingSystem buildMatchingSystem(const GridModel& grid, const ConstraintWeights& weights,
                                   const WellData& data);

/// Number of rows of all kinds.
std::size_t rowCount(const MatchingSystem& system);

/// y = y + A x; x by column, y by row.
void apply_A(const MatchingSystem& system, std::span<const double> x, std::span<double> y);

/// x = x + A^T y.
void apply_At(const MatchingSystem& system, std::span<const double> y, std::span<double> x);

/// Whether the constraints alone leave no column free.
bool constraintsHoldAll(const MatchingSystem& system);

}  // namespace kvr
