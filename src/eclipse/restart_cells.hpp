#pragma once

#include "base/console.hpp"
#include "eclipse/cell_arrays.hpp"
#include "eclipse/records.hpp"
#include "eclipse/restart_units.hpp"
#include "model/grid.hpp"
#include "pressure/records/cell_state.hpp"

#include <vector>

namespace kvr {

/// Cell arrays of a restart on their way into a state.
struct RestartCells {
    std::vector<CellArray<double> CellState::*> given;  // arrays that the file has brought
    CellArray<double> vaporisedOil;  // RV as the file has it (stb/Mscf in field units); empty without it
    bool keepSaturations = false;    // the run moves its own: those of the file are left out
};

/// Puts a block into the array that its keyword names: one value for each cell, or for each active one in
/// natural order. What lies outside the range of its quantity, or is not a number, leaves the cell as it was;
/// that and a wrong count are told. False where the table has no such keyword.
bool takeCellBlock(const Console& console, const GridModel& grid, const FileUnits& units,
                   const BlockHeader& header, const BlockData& data, RestartCells& cells, CellState& state);

/// The oil saturation that files leave out: what water and gas leave of the pores.
void completeSaturations(const GridModel& grid, RestartCells& cells, CellState& state);

/// A formation volume factor of 1 for every phase whose saturation is no more than rounding.
void neutralAbsentPhases(const GridModel& grid, CellState& state);

/// Tells how many values of a block were no value of its quantity, where any were.
void tellLeftOut(const Console& console, const BlockHeader& header, long long leftOut);

/// Number of values of a block of real numbers, and one of them.
std::size_t realCount(const BlockData& data);
inline double realAt(const BlockData& data, std::size_t n) {
    return data.reals.empty() ? data.doubles[n] : static_cast<double>(data.reals[n]);
}

/// How many values a block has for cells, told where it is neither all nor all active ones.
struct BlockSpread {
    std::size_t count = 0;
    bool whole = false;
};
BlockSpread spreadOf(const Console& console, const GridModel& grid, const BlockHeader& header,
                     const BlockData& data);

/// Hands out every value of a block with its cell, in natural order.
template <class Take>
void spreadOverCells(const Console& console, const GridModel& grid, const BlockHeader& header,
                     const BlockData& data, Take take) {
    const BlockSpread spread = spreadOf(console, grid, header, data);
    ActiveWalk walk{grid};
    for (std::size_t n = 0; n < spread.count; ++n)
        take(spread.whole ? static_cast<CellId>(n) + 1 : walk.next(), realAt(data, n));
}

}  // namespace kvr
