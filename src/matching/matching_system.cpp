#include "matching/matching_system.hpp"

#include <algorithm>

namespace kvr {

namespace {

double axisWeight(const MatchingSystem& system, std::size_t axis) {
    return system.weights[axis < 2 ? constraint::Horizontal : constraint::Vertical];
}

bool isAlone(const ColumnPair& pair) {
    return pair.low == NoColumn && pair.high == NoColumn;
}

std::vector<ColumnPair> neighboursAlong(const GridModel& grid, const MatchingSystem& system,
                                        std::size_t axis) {
    const std::array<int, AxisCount> stride = {1, grid.NX, grid.NX * grid.NY};
    const std::array<int, AxisCount> extent = {grid.NX, grid.NY, grid.NZ};
    std::vector<ColumnPair> pairs(system.columns());
    for (std::size_t column = 0; column < pairs.size(); ++column) {
        const CellId cell = system.cells[column];
        const int place = (cell - 1) / stride[axis] % extent[axis];  // 0-based along the axis
        pairs[column] = {place == 0 ? NoColumn : system.columnOf[cell - stride[axis]],
                         place == extent[axis] - 1 ? NoColumn : system.columnOf[cell + stride[axis]]};
    }
    return pairs;
}

/// out = out + S in for the smoothness rows of one axis. S is its own transpose: neighbours are mutual and
/// the weight is one for all cells, so both products use it.
void addSmoothness(const std::vector<ColumnPair>& pairs, double weight, std::span<const double> in,
                   std::span<double> out) {
    for (std::size_t column = 0; column < pairs.size(); ++column) {
        const ColumnPair pair = pairs[column];
        if (isAlone(pair)) continue;
        double sum = in[column];
        if (pair.low != NoColumn) sum -= 0.5 * in[static_cast<std::size_t>(pair.low)];
        if (pair.high != NoColumn) sum -= 0.5 * in[static_cast<std::size_t>(pair.high)];
        out[column] += weight * sum;
    }
}

void addScaled(double weight, std::span<const double> in, std::span<double> out) {
    for (std::size_t n = 0; n < in.size(); ++n) out[n] += weight * in[n];
}

/// block(weight, first row, pairs) for the blocks of constraint rows in use; no pairs: the norm.
template <class Block>
void forConstraintBlocks(const MatchingSystem& system, const Block& block) {
    std::size_t row = system.data->rows.count();
    const std::vector<ColumnPair> none;
    if (system.weights[constraint::Norm] > 0.0) {
        block(system.weights[constraint::Norm], row, none);
        row += system.columns();
    }
    for (std::size_t axis = 0; axis < AxisCount; ++axis) {
        if (system.neighbours[axis].empty()) continue;
        block(axisWeight(system, axis), row, system.neighbours[axis]);
        row += system.columns();
    }
}

}  // namespace

MatchingSystem buildMatchingSystem(const GridModel& grid, const ConstraintWeights& weights,
                                   const WellData& data) {
    MatchingSystem system;
    system.data = &data;
    system.weights = weights;
    system.columnOf.assign(grid.NCELLS, NoColumn);
    for (CellId cell = 1; cell <= grid.NCELLS; ++cell) {
        if (grid.Active[cell] == 0) continue;
        system.columnOf[cell] = static_cast<int>(system.cells.size());
        system.cells.push_back(cell);
    }
    for (std::size_t axis = 0; axis < AxisCount; ++axis)
        if (axisWeight(system, axis) > 0.0) system.neighbours[axis] = neighboursAlong(grid, system, axis);
    return system;
}

std::size_t rowCount(const MatchingSystem& system) {
    std::size_t rows = system.data->rows.count();
    forConstraintBlocks(
        system, [&](double, std::size_t, const std::vector<ColumnPair>&) { rows += system.columns(); });
    return rows;
}

void apply_A(const MatchingSystem& system, std::span<const double> x, std::span<double> y) {
    const SensitivityRows& rows = system.data->rows;
    for (std::size_t row = 0; row < rows.count(); ++row) {
        double sum = 0.0;
        for (std::size_t n = rows.start[row]; n < rows.start[row + 1]; ++n)
            sum += rows.value[n] * x[static_cast<std::size_t>(system.columnOf[rows.cell[n]])];
        y[row] += sum;
    }
    forConstraintBlocks(system, [&](double weight, std::size_t first, const std::vector<ColumnPair>& pairs) {
        const std::span<double> block = y.subspan(first, system.columns());
        if (pairs.empty())
            addScaled(weight, x, block);
        else
            addSmoothness(pairs, weight, x, block);
    });
}

void apply_At(const MatchingSystem& system, std::span<const double> y, std::span<double> x) {
    const SensitivityRows& rows = system.data->rows;
    for (std::size_t row = 0; row < rows.count(); ++row)
        for (std::size_t n = rows.start[row]; n < rows.start[row + 1]; ++n)
            x[static_cast<std::size_t>(system.columnOf[rows.cell[n]])] += rows.value[n] * y[row];
    forConstraintBlocks(system, [&](double weight, std::size_t first, const std::vector<ColumnPair>& pairs) {
        const std::span<const double> block = y.subspan(first, system.columns());
        if (pairs.empty())
            addScaled(weight, block, x);
        else
            addSmoothness(pairs, weight, block, x);
    });
}

bool constraintsHoldAll(const MatchingSystem& system) {
    if (system.weights[constraint::Norm] > 0.0) return true;
    for (std::size_t column = 0; column < system.columns(); ++column) {
        const bool held = std::any_of(
            system.neighbours.begin(), system.neighbours.end(),
            [&](const std::vector<ColumnPair>& pairs) { return !pairs.empty() && !isAlone(pairs[column]); });
        if (!held) return false;
    }
    return true;
}

}  // namespace kvr
