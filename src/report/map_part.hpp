#pragma once

#include "model/dual_porosity.hpp"

#include <optional>

namespace kvr {

/// The cells that maps show one after another: all of them, or one continuum of dual porosity.
struct MapPart {
    std::optional<GridModel> half;  // geometry of one continuum
    const GridModel* whole = nullptr;
    CellId before = 0;  // cells of the run in front of the first one

    [[nodiscard]] const GridModel& grid() const { return half ? *half : *whole; }
    /// The cell of the run that a cell of the map is.
    [[nodiscard]] CellId cellOf(CellId cell) const { return before + cell; }
    /// Values of the run as an array of the map; `store` holds them where they are a part of the run's.
    const CellArray<double>& values(const CellArray<double>& ofRun, CellArray<double>& store) const {
        if (!half) return ofRun;
        store.assign(half->NCELLS, 0.0);
        for (CellId cell = 1; cell <= half->NCELLS; ++cell) store[cell] = ofRun[cellOf(cell)];
        return store;
    }
};

/// The grid, or the fractures where there are two continua.
inline MapPart mainPart(const GridModel& grid) {
    if (!grid.dual.isSet) return {std::nullopt, &grid, 0};
    return {geometryOf(grid), &grid, matrixCells(grid)};
}
inline MapPart matrixPart(const GridModel& grid) {
    return {geometryOf(grid), &grid, 0};
}

}  // namespace kvr
