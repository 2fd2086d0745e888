#pragma once

#include "model/grid.hpp"

#include <string_view>

namespace kvr {

/// Arrays that EQUALS knows, by name in upper case, lower case or with an initial capital.
struct EqualsArray {
    std::string_view name;
    CellArray<double> GridModel::*array;
    bool isLength;     // deck lengths, converted to ft
    bool isBlockSize;  // DX, DY, DZ: counts as block input
};
const EqualsArray* findEqualsArray(std::string_view name);

/// Arrays that COPY knows, as source and as target; nullptr for any other word.
CellArray<double> GridModel::*findCopyArray(std::string_view name);

/// Copy rows that are applied, whatever number is stored.
inline constexpr std::size_t AppliedCopyRows = 100;

/// Where the rows of one GRID section begin in the stored lists: rows of an earlier section have acted.
struct ArithmeticStart {
    std::size_t equals = 0;
    std::size_t copy = 0;
    std::size_t multiply = 0;
};
ArithmeticStart arithmeticRowsSoFar(const GridModel& grid);

/// Applies the stored rows on arrays: first every EQUALS row, then the COPY rows over whole arrays whatever
/// box they carry, then every MULTIPLY row, each list in deck order. The order of the three is fixed, not the
/// deck's. Rows on Trans stay for conditioning; rows with other names do nothing.
void applyArithmetic(GridModel& grid, const ArithmeticStart& start);

}  // namespace kvr
