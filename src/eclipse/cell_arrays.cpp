#include "eclipse/cell_arrays.hpp"

#include <algorithm>

namespace kvr {

CellId activeCount(const GridModel& grid) {
    const std::span<const std::uint8_t> cells = grid.Active.cells();
    return static_cast<CellId>(
        std::count_if(cells.begin(), cells.end(), [](std::uint8_t active) { return active > 0; }));
}

}  // namespace kvr
