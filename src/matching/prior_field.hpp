#pragma once

#include "base/cell_array.hpp"
#include "model/connections.hpp"
#include "model/grid.hpp"

#include <array>
#include <cstdint>
#include <vector>

namespace kvr {

/// What is held of ln k before wells speak: how far it may be from the starting field, and over which
/// distances it is alike.
struct PriorSettings {
    double deviation = 1.0;                   // of ln k of a cell
    std::array<double, AxisCount> lengths{};  // ft along x, y, z; 0: by the grid
    double level = 0.0;                       // deviation of ln k of all cells at once
};

/// Covariance of ln k about the starting field, between two cells a, b that may change,
///   C(a, b) = deviation^2 r_x(i_a - i_b) r_y(j_a - j_b) r_z(k_a - k_b) + level^2,
/// r(d) = exp(-(d h / L)^2) with h the mean size of cells along the axis and L the length. Distances count in
/// the grid: faults and pinched cells do not interrupt it.
struct PriorCovariance {
    std::array<int, AxisCount> extent{};
    std::array<std::vector<double>, AxisCount> correlation;  // by distance in cells, from 0
    double variance = 1.0, levelVariance = 0.0;
    CellArray<std::uint8_t> region;  // 1: may change
};

/// Lengths of 0 are an eighth of the longer side of the grid along x and y, of its height along z.
PriorCovariance buildPriorCovariance(const GridModel& grid, const PriorSettings& settings,
                                     const CellArray<std::uint8_t>& region);

/// values = C values, in place. `scratch` is one line of cells.
void applyPriorCovariance(const PriorCovariance& prior, CellArray<double>& values,
                          std::vector<double>& scratch);

}  // namespace kvr
