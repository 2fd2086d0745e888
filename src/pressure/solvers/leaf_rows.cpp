#include "pressure/solvers/leaf_rows.hpp"

#include "pressure/solvers/block_kernels.hpp"

#include <algorithm>
#include <array>
#include <cstddef>

namespace kvr {

namespace {

constexpr std::uint64_t StampOfRest = std::uint64_t{1} << 32;  // no whole system's: one memory may serve both

int placeIn(const BlockSystem& system, int row, int column) {
    const auto first = system.column.begin() + system.rowStart[row];
    const auto end = system.column.begin() + system.rowStart[row + 1];
    return static_cast<int>(std::lower_bound(first, end, column) - system.column.begin());
}

bool isLeaf(const BlockSystem& whole, int row) {
    return whole.rowStart[row + 1] - whole.rowStart[row] == 2;
}

int hostOf(const BlockSystem& whole, int row) {
    const int first = whole.column[whole.rowStart[row]];
    return first == row ? whole.column[whole.rowStart[row] + 1] : first;
}

/// Rows of the rest without its leaves, and where their blocks stand in the whole.
void layOutRest(const BlockSystem& whole, LeafRows& leaves) {
    BlockSystem& rest = leaves.rest;
    rest.blockSize = whole.blockSize;
    rest.rows = static_cast<int>(leaves.wholeRow.size());
    rest.rowStart.assign(1, 0);
    for (const int row : leaves.wholeRow) {
        for (int k = whole.rowStart[row]; k < whole.rowStart[row + 1]; ++k) {
            const int column = leaves.rowInRest[whole.column[k]];
            if (column < 0) continue;
            if (whole.column[k] == row) rest.diagonal.push_back(static_cast<int>(rest.column.size()));
            rest.column.push_back(column);
            leaves.wholePlace.push_back(k);
        }
        rest.rowStart.push_back(static_cast<int>(rest.column.size()));
    }
    const auto size = static_cast<std::size_t>(whole.blockSize);
    rest.value.assign(rest.column.size() * size * size, 0.0);
    rest.rhs.assign(leaves.wholeRow.size() * size, 0.0);
    rest.patternStamp = StampOfRest + whole.patternStamp;
    leaves.solution.assign(rest.rhs.size(), 0.0);
    leaves.inverse.assign(leaves.leaves.size() * size * size, 0.0);
}

/// The wells by their rows in the rest; false where one stands in a leaf.
bool copyWells(const BlockSystem& whole, const std::vector<int>& rowInRest, BlockSystem& rest) {
    rest.wells = whole.wells;
    for (WellBorder& well : rest.wells)
        for (int& cell : well.cells) {
            cell = rowInRest[cell];
            if (cell < 0) return false;
        }
    return true;
}

/// Copies blocks of `size` values, the n-th from the place that the list has for it.
void gather(const std::vector<double>& from, const std::vector<int>& places, std::size_t size,
            std::vector<double>& to) {
    to.resize(places.size() * size);
    for (std::size_t n = 0; n < places.size(); ++n)
        std::copy_n(from.begin() + static_cast<std::ptrdiff_t>(static_cast<std::size_t>(places[n]) * size),
                    size, to.begin() + static_cast<std::ptrdiff_t>(n * size));
}

template <int N>
const double* blockAt(const std::vector<double>& values, int place) {
    return values.data() + static_cast<std::size_t>(place) * N * N;
}

template <int N>
const double* vectorAt(const std::vector<double>& values, int row) {
    return values.data() + static_cast<std::size_t>(row) * N;
}

template <int N>
bool foldLeaves(const BlockSystem& whole, LeafRows& leaves) {
    for (std::size_t n = 0; n < leaves.leaves.size(); ++n) {
        const LeafRow& leaf = leaves.leaves[n];
        double* inverse = leaves.inverse.data() + n * N * N;
        if (!invertBlock<N>(blockAt<N>(whole.value, leaf.diagonal), inverse)) return false;
        std::array<double, N * N> product;
        setBlockProduct<N>(blockAt<N>(whole.value, leaf.fromLeaf), inverse, product.data());
        subtractBlockProduct<N>(product.data(), blockAt<N>(whole.value, leaf.fromHost),
                                leaves.rest.block(leaf.hostDiagonalInRest).data());
        subtractBlockTimes<N>(product.data(), vectorAt<N>(whole.rhs, leaf.row),
                              leaves.rest.rhs.data() + static_cast<std::size_t>(leaf.hostInRest) * N);
    }
    return true;
}

template <int N>
void solveLeaves(const BlockSystem& whole, const LeafRows& leaves, std::span<double> solution) {
    for (std::size_t row = 0; row < leaves.wholeRow.size(); ++row)
        std::copy_n(leaves.solution.data() + row * N, N,
                    solution.data() + static_cast<std::size_t>(leaves.wholeRow[row]) * N);
    for (std::size_t n = 0; n < leaves.leaves.size(); ++n) {
        const LeafRow& leaf = leaves.leaves[n];
        std::array<double, N> open;
        std::copy_n(vectorAt<N>(whole.rhs, leaf.row), N, open.begin());
        subtractBlockTimes<N>(blockAt<N>(whole.value, leaf.fromHost),
                              solution.data() + static_cast<std::size_t>(leaf.host) * N, open.data());
        setBlockTimes<N>(leaves.inverse.data() + n * N * N, open.data(),
                         solution.data() + static_cast<std::size_t>(leaf.row) * N);
    }
}

}  // namespace

LeafRows findLeafRows(const BlockSystem& whole, std::span<const int> candidates) {
    LeafRows leaves;
    leaves.rowInRest.assign(static_cast<std::size_t>(whole.rows), 0);
    for (const int row : candidates) {
        if (!isLeaf(whole, row) || leaves.rowInRest[hostOf(whole, row)] < 0) continue;
        leaves.rowInRest[row] = -1;
        LeafRow leaf;
        leaf.row = row;
        leaf.host = hostOf(whole, row);
        leaf.diagonal = whole.diagonal[row];
        leaf.fromHost = placeIn(whole, row, leaf.host);
        leaf.fromLeaf = placeIn(whole, leaf.host, row);
        leaves.leaves.push_back(leaf);
    }
    if (leaves.leaves.empty()) return leaves;
    for (int row = 0; row < whole.rows; ++row) {
        if (leaves.rowInRest[row] < 0) continue;
        leaves.rowInRest[row] = static_cast<int>(leaves.wholeRow.size());
        leaves.wholeRow.push_back(row);
    }
    layOutRest(whole, leaves);
    for (LeafRow& leaf : leaves.leaves) {
        leaf.hostInRest = leaves.rowInRest[leaf.host];
        leaf.hostDiagonalInRest = leaves.rest.diagonal[leaf.hostInRest];
    }
    return leaves;
}

bool takeOutLeaves(const BlockSystem& whole, LeafRows& leaves) {
    const auto size = static_cast<std::size_t>(whole.blockSize);
    BlockSystem& rest = leaves.rest;
    if (!copyWells(whole, leaves.rowInRest, rest)) return false;
    gather(whole.value, leaves.wholePlace, size * size, rest.value);
    gather(whole.rhs, leaves.wholeRow, size, rest.rhs);
    if (!whole.accumulation.empty())
        gather(whole.accumulation, leaves.wholeRow, size * size, rest.accumulation);
    return size == 3 ? foldLeaves<3>(whole, leaves) : foldLeaves<2>(whole, leaves);
}

void putBackLeaves(const BlockSystem& whole, const LeafRows& leaves, std::span<double> solution) {
    if (whole.blockSize == 3)
        solveLeaves<3>(whole, leaves, solution);
    else
        solveLeaves<2>(whole, leaves, solution);
}

}  // namespace kvr
