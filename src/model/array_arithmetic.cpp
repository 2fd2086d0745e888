#include "model/array_arithmetic.hpp"

#include "base/text.hpp"
#include "model/cell_box.hpp"
#include "model/multipliers.hpp"

#include <algorithm>

namespace kvr {

namespace {

constexpr EqualsArray EqualsArrays[] = {
    {"PERMX", &GridModel::PERMX, false, false}, {"PERMY", &GridModel::PERMY, false, false},
    {"PERMZ", &GridModel::PERMZ, false, false}, {"PORO", &GridModel::PORO, false, false},
    {"DX", &GridModel::DX, true, true},         {"DY", &GridModel::DY, true, true},
    {"DZ", &GridModel::DZ, true, true},         {"TOPS", &GridModel::TOPS, true, false},
};

constexpr std::string_view CopyArrays[] = {"PERMX", "PERMY", "PERMZ"};

void applyEquals(GridModel& grid, const ArithmeticRow& row) {
    const EqualsArray* known = findEqualsArray(row.name);
    if (known == nullptr) return;
    CellArray<double>& array = grid.*known->array;
    forEachCell(grid, row.box, [&](CellId cell) { array[cell] = row.value; });
}

void applyCopy(GridModel& grid, const ArithmeticRow& row) {
    const auto source = findCopyArray(row.name);
    const auto target = findCopyArray(row.secondName);
    if (source != nullptr && target != nullptr) grid.*target = grid.*source;
}

void applyMultiply(GridModel& grid, const ArithmeticRow& row) {
    const MultiplierKeyword* keyword = findMultiplier(row.name);
    if (keyword != nullptr && keyword->target == MultiplierTarget::RockArray)
        multiplyRock(grid, *keyword, row);
}

}  // namespace

const EqualsArray* findEqualsArray(std::string_view name) {
    const std::string_view word = trim(name);
    for (const EqualsArray& known : EqualsArrays)
        if (matchesInThreeForms(word, known.name)) return &known;
    return nullptr;
}

CellArray<double> GridModel::*findCopyArray(std::string_view name) {
    const std::string_view word = trim(name);
    const bool known = std::any_of(std::begin(CopyArrays), std::end(CopyArrays),
                                   [&](std::string_view copy) { return matchesInThreeForms(word, copy); });
    return known ? findEqualsArray(name)->array : nullptr;
}

ArithmeticStart arithmeticRowsSoFar(const GridModel& grid) {
    return {grid.equalsRows.size(), grid.copyRows.size(), grid.multiplyRows.size()};
}

void applyArithmetic(GridModel& grid, const ArithmeticStart& start) {
    for (std::size_t n = start.equals; n < grid.equalsRows.size(); ++n) applyEquals(grid, grid.equalsRows[n]);
    const std::size_t copies = std::min(grid.copyRows.size(), AppliedCopyRows);
    for (std::size_t n = start.copy; n < copies; ++n) applyCopy(grid, grid.copyRows[n]);
    for (std::size_t n = start.multiply; n < grid.multiplyRows.size(); ++n)
        applyMultiply(grid, grid.multiplyRows[n]);
}

}  // namespace kvr
