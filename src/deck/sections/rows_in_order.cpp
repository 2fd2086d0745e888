#include "deck/sections/rows_in_order.hpp"

#include "base/text.hpp"
#include "deck/sections/given_arrays.hpp"
#include "model/array_arithmetic.hpp"
#include "model/cell_box.hpp"

#include <algorithm>
#include <cmath>

namespace kvr {

namespace {

struct DecimalArray {
    std::string_view name;
    CellArray<double> GridModel::*array;
    bool isLength = false;
};
constexpr DecimalArray DecimalArrays[] = {
    {"PERMX", &GridModel::PERMX},     {"PERMY", &GridModel::PERMY}, {"PERMZ", &GridModel::PERMZ},
    {"PORO", &GridModel::PORO},       {"NTG", &GridModel::NTG},     {"MULTPV", &GridModel::MULTPV},
    {"DX", &GridModel::DX, true},     {"DY", &GridModel::DY, true}, {"DZ", &GridModel::DZ, true},
    {"TOPS", &GridModel::TOPS, true},
};

/// Factors of connections, by the face (1..6) that they mean. Those of transmissibilities are the same
/// factors.
struct FaceArray {
    std::string_view name;
    int face;
    bool onlyMultiplied = false;
};
constexpr FaceArray FaceArrays[] = {
    {"MULTX", 2},  {"MULTY", 4},       {"MULTZ", 6},       {"MULTX-", 1},      {"MULTY-", 3},
    {"MULTZ-", 5}, {"TRANX", 2, true}, {"TRANY", 4, true}, {"TRANZ", 6, true},
};

struct NumberArray {
    std::string_view name;
    CellArray<int> GridModel::*array;
};
constexpr NumberArray NumberArrays[] = {
    {"MULTNUM", &GridModel::MULTNUM}, {"FLUXNUM", &GridModel::FLUXNUM}, {"OPERNUM", &GridModel::OPERNUM}};
constexpr double LargestNumber = 1e9;  // beyond any region

template <class Table>
auto rowNamed(const Table& table, std::string_view name) {
    const std::string word = toUpper(trim(name));
    const auto found = std::find_if(std::begin(table), std::end(table),
                                    [&word](const auto& known) { return known.name == word; });
    return found == std::end(table) ? nullptr : &*found;
}

/// Factors that no keyword has given yet are 1.
CellArray<double>& given(const GridModel& grid, CellArray<double>& array) {
    if (array.empty()) array.assign(grid.NCELLS, 1.0);
    return array;
}

void actOn(const GridModel& grid, const ArithmeticRow& row, double value, CellArray<double>& array) {
    forEachCellOf(grid, row, [&](CellId cell) {
        switch (row.action) {
            case RowAction::Set:
                array[cell] = value;
                break;
            case RowAction::Add:
                array[cell] += value;
                break;
            default:
                array[cell] *= value;
        }
    });
}

/// Whole numbers and the flags of active cells can only be set.
bool setNumbers(const ArithmeticRow& row, GridModel& grid) {
    if (row.action != RowAction::Set) return false;
    const int number = static_cast<int>(std::clamp(row.value, -LargestNumber, LargestNumber));
    if (toUpper(trim(row.name)) == "ACTNUM") {
        forEachCellOf(grid, row, [&](CellId cell) { grid.Active[cell] = number != 0 ? 1 : 0; });
        return true;
    }
    const NumberArray* known = rowNamed(NumberArrays, row.name);
    if (known == nullptr) return false;
    CellArray<int>& numbers = grid.*known->array;
    if (numbers.empty()) numbers.assign(grid.NCELLS, 1);
    forEachCell(grid, row.box, [&](CellId cell) { numbers[cell] = number; });
    return true;
}

}  // namespace

bool actInOrder(const SectionReader& reader, const ArithmeticRow& row, GridModel& grid) {
    if (const DecimalArray* known = rowNamed(DecimalArrays, row.name)) {
        const bool hasUnit = known->isLength && row.action != RowAction::Multiply;
        actOn(grid, row, hasUnit ? row.value * reader.units->length : row.value,
              given(grid, grid.*known->array));
        return true;
    }
    if (giveInOrder(reader, row, grid)) return true;
    if (toUpper(trim(row.name)) == "PORV" && row.action == RowAction::Multiply) {
        actOn(grid, row, row.value, given(grid, grid.MULTPV));
        return true;
    }
    if (const FaceArray* known = rowNamed(FaceArrays, row.name)) {
        if (known->onlyMultiplied && row.action != RowAction::Multiply) return false;
        const auto face = static_cast<std::size_t>(known->face);
        actOn(grid, row, row.value, given(grid, grid.faceMultiplier[face - 1]));
        return true;
    }
    return setNumbers(row, grid);
}

bool copyInOrder(const ArithmeticRow& row, GridModel& grid) {
    const DecimalArray* source = rowNamed(DecimalArrays, row.name);
    const DecimalArray* target = rowNamed(DecimalArrays, row.secondName);
    if (source == nullptr || target == nullptr) return false;
    const CellArray<double>& from = given(grid, grid.*source->array);
    CellArray<double>& to = given(grid, grid.*target->array);
    forEachCell(grid, row.box, [&](CellId cell) { to[cell] = from[cell]; });
    return true;
}

}  // namespace kvr
