#include "eclipse/cell_arrays.hpp"

#include <algorithm>
#include <cmath>

namespace kvr {

CellId activeCount(const GridModel& grid) {
    const std::span<const std::uint8_t> cells = grid.Active.cells();
    return static_cast<CellId>(
        std::count_if(cells.begin(), cells.end(), [](std::uint8_t active) { return active > 0; }));
}

bool areCoordinates(const std::vector<float>& values) {
    constexpr float Furthest = 1e10F;
    return std::all_of(values.begin(), values.end(),
                       [](float value) { return std::abs(value) <= Furthest; });  // no number fails too
}

}  // namespace kvr
