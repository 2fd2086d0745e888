#include "pressure/solvers/block_system.hpp"

#include <algorithm>

namespace kvr {

namespace {

/// Neighbours of every row and the row itself, columns rising, each once.
void layOutRows(int rows, std::span<const std::pair<int, int>> connections, BlockSystem& system) {
    std::vector<std::vector<int>> neighbours(static_cast<std::size_t>(rows));
    for (int i = 0; i < rows; ++i) neighbours[i].push_back(i);
    for (const auto& [first, second] : connections) {
        neighbours[first].push_back(second);
        neighbours[second].push_back(first);
    }
    system.rowStart.assign(1, 0);
    system.column.clear();
    for (std::vector<int>& row : neighbours) {
        std::sort(row.begin(), row.end());
        row.erase(std::unique(row.begin(), row.end()), row.end());
        system.column.insert(system.column.end(), row.begin(), row.end());
        system.rowStart.push_back(static_cast<int>(system.column.size()));
    }
}

int placeOf(const BlockSystem& system, int row, int column) {
    const auto first = system.column.begin() + system.rowStart[row];
    const auto end = system.column.begin() + system.rowStart[row + 1];
    return static_cast<int>(std::lower_bound(first, end, column) - system.column.begin());
}

}  // namespace

std::vector<ConnectionPlaces> buildBlockPattern(int rows, int blockSize,
                                                std::span<const std::pair<int, int>> connections,
                                                BlockSystem& system) {
    system.rows = rows;
    system.blockSize = blockSize;
    layOutRows(rows, connections, system);
    system.diagonal.resize(static_cast<std::size_t>(rows));
    for (int i = 0; i < rows; ++i) system.diagonal[i] = placeOf(system, i, i);
    const auto size = static_cast<std::size_t>(blockSize);
    system.value.assign(system.column.size() * size * size, 0.0);
    system.rhs.assign(static_cast<std::size_t>(rows) * size, 0.0);
    ++system.patternStamp;
    std::vector<ConnectionPlaces> places;
    places.reserve(connections.size());
    for (const auto& [first, second] : connections)
        places.push_back({placeOf(system, first, second), placeOf(system, second, first)});
    return places;
}

void clearValues(BlockSystem& system) {
    for (auto* list : {&system.value, &system.rhs, &system.accumulation})
        std::fill(list->begin(), list->end(), 0.0);
    for (WellBorder& well : system.wells) {
        std::fill(well.columnBlocks.begin(), well.columnBlocks.end(), 0.0);
        std::fill(well.rowBlocks.begin(), well.rowBlocks.end(), 0.0);
        well.diagonal = 0.0;
        well.rhs = 0.0;
    }
}

bool solvesBlocksDensely(std::string_view word, int cells) {
    return cells < SmallestIterative || word == "st" || word == "dgesl" || word == "dgesv";
}

}  // namespace kvr
