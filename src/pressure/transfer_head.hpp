#pragma once

#include "base/constants.hpp"
#include "fluid/tables.hpp"
#include "model/dual_porosity.hpp"
#include "pressure/records/cell_state.hpp"

#include <algorithm>

namespace kvr {

// Gravity drainage of dual porosity. Phases lie apart by their densities in a matrix block of the height H
// and in the fractures around it, water below, gas above; each pressure stands for the middle of the block,
// and the contact of two phases, which has one pressure, lies by its height above or below. The potential of
// a phase over the transfer is its pressure and a head (Sonier, Souillard and Blaskovich 1988), psi:
//   water: H (rho_w - rho_o) X_w/144,   X_w = (Sw - Swc)/(1 - Swc - Sorw)
//   gas:   H (rho_o - rho_g) X_g/144,   X_g = (Sg - Sgc)/(1 - Swc - Sgc - Sorw)
// with X between 0 and 1, end points those of the cell's own region and densities those of the cell.

/// ft, of the block in a pair of cells.
inline double blockHeight(const GridModel& grid, CellId cell) {
    const CellId matrix = isMatrixCell(grid, cell) ? cell : partnerOf(grid, cell);
    return grid.dual.DZMTRX.empty() ? grid.DZ[matrix] : grid.dual.DZMTRX[matrix];
}

/// How much of the height a phase fills, before its bounds 0 and 1: slope * (s - least).
struct HeightShare {
    double least = 0.0, slope = 0.0;
};

inline HeightShare heightShare(double least, double most) {
    return {least, most > least ? 1.0 / (most - least) : 0.0};
}
inline HeightShare waterHeight(const SaturationTable& table) {
    return heightShare(table.ConnateSw, 1.0 - table.ResidualSo);
}
inline HeightShare gasHeight(const SaturationTable& table) {
    return heightShare(table.CriticalSg, 1.0 - table.ConnateSw - table.ResidualSo);
}

inline double shareAt(const HeightShare& share, double s) {
    return std::clamp(share.slope * (s - share.least), 0.0, 1.0);
}

/// psi, of a phase that fills `share` of a block of the height, against oil; densities lb/ft3.
template <class Number>
Number headOf(double height, const Number& heavier, const Number& lighter, const Number& share) {
    return (height / SquareInchesPerSquareFoot) * ((heavier - lighter) * share);
}

/// The heads of a cell's water and gas at its saturations and densities.
inline void setTransferHeads(const GridModel& grid, const SaturationTable& table, CellId cell,
                             CellState& state) {
    const double height = blockHeight(grid, cell);
    state.HeadW[cell] =
        headOf(height, state.RhoW[cell], state.RhoO[cell], shareAt(waterHeight(table), state.Sw[cell]));
    state.HeadG[cell] =
        headOf(height, state.RhoO[cell], state.RhoG[cell], shareAt(gasHeight(table), state.Sg[cell]));
}

/// Heads over the transfer between two cells, of the second against the first.
struct HeadDifference {
    double water = 0.0, gas = 0.0;
};
inline HeadDifference headDifference(const CellState& state, CellId cell, CellId other) {
    if (state.HeadW.empty()) return {};
    return {state.HeadW[other] - state.HeadW[cell], state.HeadG[other] - state.HeadG[cell]};
}

}  // namespace kvr
