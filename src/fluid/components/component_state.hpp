#pragma once

#include "base/cell_array.hpp"
#include "fluid/components/flash.hpp"

#include <algorithm>
#include <vector>

namespace kvr {

/// What the cells of a run with components hold beside CellState: oil is the liquid, gas the vapour of the
/// mixture.
struct ComponentState {
    int count = 0;                  // components
    DirectionArray<double> z;       // (cell, component 1..count) overall mole fraction
    std::vector<FlashState> flash;  // [cell], slot 0 unused: the last flash at the cell's pressure
};

inline Composition compositionOf(const ComponentState& components, CellId cell) {
    Composition z{};
    std::copy_n(components.z.row(cell), components.count, z.begin());
    return z;
}

}  // namespace kvr
