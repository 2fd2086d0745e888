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

constexpr ArithmeticArray ArithmeticArrays[] = {
    {"PERMX", &GridModel::PERMX}, {"PERMY", &GridModel::PERMY}, {"PERMZ", &GridModel::PERMZ},
    {"PORO", &GridModel::PORO},   {"NTG", &GridModel::NTG},     {"MULTPV", &GridModel::MULTPV},
};

/// A row of ADD or for a region.
void applyFurther(GridModel& grid, const ArithmeticRow& row) {
    const ArithmeticArray* known = findArithmeticArray(row.name);
    if (known == nullptr) return;
    CellArray<double>& array = grid.*known->array;
    if (array.empty()) array.assign(grid.NCELLS, 1.0);  // multipliers that no keyword has given yet
    forEachCellOf(grid, row, [&](CellId cell) {
        if (row.action == RowAction::Add)
            array[cell] += row.value;
        else
            array[cell] = row.action == RowAction::Set ? row.value : array[cell] * row.value;
    });
}

bool isFurther(const ArithmeticRow& row) {
    return row.region > 0 || row.action == RowAction::Add;
}

void applyEquals(GridModel& grid, const ArithmeticRow& row) {
    if (isFurther(row)) return applyFurther(grid, row);
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
    if (isFurther(row)) return applyFurther(grid, row);
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

const ArithmeticArray* findArithmeticArray(std::string_view name) {
    const std::string_view word = trim(name);
    for (const ArithmeticArray& known : ArithmeticArrays)
        if (matchesInThreeForms(word, known.name)) return &known;
    return nullptr;
}

const CellArray<int>& regionNumbers(const GridModel& grid, RegionSet set) {
    if (set == RegionSet::Flux) return grid.FLUXNUM;
    if (set == RegionSet::Oper) return grid.OPERNUM;
    return set == RegionSet::Default && grid.MULTNUM.empty() ? grid.FLUXNUM : grid.MULTNUM;
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
