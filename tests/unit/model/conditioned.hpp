#pragma once

#include "base/console.hpp"
#include "base/units.hpp"
#include "model/conditioning.hpp"
#include "unit/model/small_grids.hpp"

#include <cmath>
#include <gtest/gtest.h>
#include <string>
#include <utility>

namespace kvr {

inline constexpr double C = 0.00112771;

inline ::testing::AssertionResult close(double value, double expected, double relative = 1e-8) {
    if (std::abs(value - expected) <= relative * std::abs(expected)) return ::testing::AssertionSuccess();
    return ::testing::AssertionFailure() << value << " is not " << expected;
}

/// One conditioning run, silent.
struct Conditioned {
    GridModel grid;
    ConnectionTable table;
};

inline Conditioned condition(GridModel grid, bool newtran, RunOptions options = {}) {
    Conditioned result{std::move(grid), {}};
    options.useNewtran = newtran;
    const Console silent{nullptr, nullptr, nullptr};
    CALCTRANS_STATICGEOPART(silent, options, UnitSystem{}, result.grid, result.table);
    return result;
}

/// Three blocks in a row with different sizes, net-to-gross, depth and permeability.
inline GridModel threeBlocks() {
    GridModel grid = rockOnly(3, 1, 1);
    setCells(grid.DX, {100, 200, 100});
    setCells(grid.DY, {50, 50, 50});
    setCells(grid.DZ, {10, 20, 10});
    setCells(grid.NTG, {1, 0.5, 1});
    setCells(grid.TOPS, {1000, 1000, 1005});
    setCells(grid.PERMX, {100, 50, 200});
    buildBlockGrid(grid, CubicFeetPerBarrel);
    return grid;
}

inline ArithmeticRow row(const std::string& name, double factor, CellBox box = {}) {
    ArithmeticRow r;
    r.name = name;
    r.value = factor;
    r.box = box;
    return r;
}

}  // namespace kvr
