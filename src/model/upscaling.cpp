#include "model/upscaling.hpp"

#include "base/hard_stop.hpp"
#include "base/text.hpp"
#include "model/rock_properties.hpp"
#include "model/window_flow.hpp"

#include <algorithm>

namespace kvr {

namespace {

template <class Visit>
void forCells(const GridModel& grid, const Window& window, const Visit& visit) {
    for (int k = window.first[2]; k <= window.last[2]; ++k)
        for (int j = window.first[1]; j <= window.last[1]; ++j)
            for (int i = window.first[0]; i <= window.last[0]; ++i) visit(cellIndex(grid, i, j, k));
}

/// Calls `visit(window)` for every window of the size in cells.
template <class Visit>
void forWindows(const GridModel& grid, const std::array<int, 3>& size, const Visit& visit) {
    const std::array<int, 3> end = {grid.NX, grid.NY, grid.NZ};
    Window window;
    std::array<int, 3>& first = window.first;
    for (first[2] = 1; first[2] <= end[2]; first[2] += size[2])
        for (first[1] = 1; first[1] <= end[1]; first[1] += size[1])
            for (first[0] = 1; first[0] <= end[0]; first[0] += size[0]) {
                for (std::size_t a = 0; a < 3; ++a) window.last[a] = std::min(first[a] + size[a] - 1, end[a]);
                visit(window);
            }
}

/// Mean of the active cells by net volume; 0 where there is none.
double meanPorosity(const GridModel& grid, const Window& window) {
    double pores = 0.0;
    double volume = 0.0;
    forCells(grid, window, [&](CellId cell) {
        if (grid.Active[cell] == 0) return;
        const double net = grid.DX[cell] * grid.DY[cell] * grid.DZ[cell] * grid.NTG[cell];
        pores += net * grid.PORO[cell];
        volume += net;
    });
    return volume > 0.0 ? pores / volume : 0.0;
}

/// Window sizes of a row, between one cell and the whole grid.
std::array<int, 3> windowSize(const GridModel& grid, const ConditioningRow& row) {
    return {std::clamp(row.window[0], 1, grid.NX), std::clamp(row.window[1], 1, grid.NY),
            std::clamp(row.window[2], 1, grid.NZ)};
}

void checkWindow(const Console& console, const std::array<int, 3>& size) {
    const long long cells = static_cast<long long>(size[0]) * size[1] * size[2];
    if (cells <= MostWindowCells) return;
    both(console, "ERROR :: UPSCALE window of {} cells is too large, the solver takes at most {}.", cells,
         MostWindowCells);
    hardStop(console);
}

void upscale(const Console& console, const RockProperty& property, const ConditioningRow& row,
             GridModel& grid) {
    const std::array<int, 3> size = windowSize(grid, row);
    CellArray<double>& result = grid.upscaled.*property.upscaled;
    if (property.axis != RockProperty::NoAxis) checkWindow(console, size);
    int number = 0;
    forWindows(grid, size, [&](const Window& window) {
        ++number;
        double value = 0.0;
        if (property.axis == RockProperty::NoAxis) {
            value = meanPorosity(grid, window);
        } else {
            both(console, "Upscaled Grid dir: {} GridID: {}", property.axis + 1, number);
            value = windowPermeability(grid, window, property.axis);
        }
        forCells(grid, window, [&](CellId cell) { result[cell] = value; });
    });
}

}  // namespace

void upscaleRock(const Console& console, const std::vector<ConditioningRow>& rows, GridModel& grid) {
    grid.upscaled = {grid.PORO, grid.PERMX, grid.PERMY, grid.PERMZ};
    for (const ConditioningRow& row : rows) {
        if (const RockProperty* property = findRockProperty(row.name); property != nullptr)
            upscale(console, *property, row, grid);
        else
            both(console, " {}-> not surpported", padded(row.name, 8));
    }
}

}  // namespace kvr
