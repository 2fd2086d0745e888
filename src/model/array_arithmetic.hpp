#pragma once

#include "model/cell_box.hpp"
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

/// Arrays that ADD, MULTIREG, EQUALREG and ADDREG know.
struct ArithmeticArray {
    std::string_view name;
    CellArray<double> GridModel::*array;
};
const ArithmeticArray* findArithmeticArray(std::string_view name);

/// The numbering of cells that a row for a region means; empty where the deck has not given it.
const CellArray<int>& regionNumbers(const GridModel& grid, RegionSet set);

/// Calls visit(CellId) for each cell of a row's region, or of its box where it names none.
template <class Visit>
void forEachCellOf(const GridModel& grid, const ArithmeticRow& row, Visit visit) {
    if (row.region < 1) return forEachCell(grid, row.box, visit);
    const CellArray<int>& numbers = regionNumbers(grid, row.regionSet);
    for (CellId cell = 1; cell <= numbers.count(); ++cell)
        if (numbers[cell] == row.region) visit(cell);
}

/// Copy rows that are applied, whatever number is stored.
inline constexpr std::size_t AppliedCopyRows = 100;

/// Where the rows of one GRID section begin in the stored lists: rows of an earlier section have acted.
struct ArithmeticStart {
    std::size_t equals = 0;
    std::size_t copy = 0;
    std::size_t multiply = 0;
};
ArithmeticStart arithmeticRowsSoFar(const GridModel& grid);

/// Applies the stored rows on arrays: first those of EQUALS and EQUALREG, then the COPY rows over whole
/// arrays whatever box they carry, then those of MULTIPLY, ADD, MULTIREG and ADDREG, each list in deck order.
/// The order of the three is fixed, not the deck's. Rows on Trans stay for conditioning; rows with other
/// names do nothing.
void applyArithmetic(GridModel& grid, const ArithmeticStart& start);

}  // namespace kvr
