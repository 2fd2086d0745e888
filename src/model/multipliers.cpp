#include "model/multipliers.hpp"

#include "base/text.hpp"
#include "model/cell_box.hpp"

namespace kvr {

namespace {

constexpr std::string_view ByEdit = "-> Multiplied by EDIT";
constexpr std::string_view ByGrid = "-> Multiplied by GRID,EQUALS";

constexpr MultiplierKeyword Keywords[] = {
    {"PERMX", MultiplierTarget::RockArray, 0, &GridModel::PERMX, ByEdit},
    {"PERMY", MultiplierTarget::RockArray, 0, &GridModel::PERMY, ByEdit},
    {"PERMZ", MultiplierTarget::RockArray, 0, &GridModel::PERMZ, ByEdit},
    {"PORV", MultiplierTarget::RockArray, 0, &GridModel::PORO, ByEdit},
    {"MULTX", MultiplierTarget::Trans, 0, nullptr, ByGrid},
    {"MULTY", MultiplierTarget::Trans, 1, nullptr, ByGrid},
    {"MULTZ", MultiplierTarget::Trans, 2, nullptr, ByGrid},
    {"TRANX", MultiplierTarget::Trans, 0, nullptr, ByEdit},
    {"TRANY", MultiplierTarget::Trans, 1, nullptr, ByEdit},
    {"TRANZ", MultiplierTarget::Trans, 2, nullptr, ByEdit},
};

}  // namespace

bool matchesInThreeForms(std::string_view name, std::string_view upperCase) {
    if (name == upperCase) return true;
    const std::string lower = toLower(upperCase);
    return name == lower || (!name.empty() && name[0] == upperCase[0] && name.substr(1) == lower.substr(1));
}

const MultiplierKeyword* findMultiplier(std::string_view name) {
    const std::string_view word = trim(name);
    for (const MultiplierKeyword& keyword : Keywords)
        if (matchesInThreeForms(word, keyword.name)) return &keyword;
    return nullptr;
}

void multiplyRock(GridModel& grid, const MultiplierKeyword& keyword, const ArithmeticRow& row) {
    CellArray<double>& array = grid.*keyword.array;
    forEachCell(grid, row.box, [&](CellId cell) { array[cell] *= row.value; });
}

void multiplyTrans(const GridModel& grid, const MultiplierKeyword& keyword, const ArithmeticRow& row,
                   ConnectionTable& connections) {
    const int low = 2 * keyword.axis + 1;
    forEachCell(grid, row.box, [&](CellId cell) {
        connections.Trans(cell, low) *= row.value;
        connections.Trans(cell, low + 1) *= row.value;
    });
}

}  // namespace kvr
