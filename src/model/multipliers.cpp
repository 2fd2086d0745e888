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

void multiplyBothSides(CellId cell, int direction, double factor, ConnectionTable& connections) {
    const CellId neighbour = connections.Neighbour(cell, direction);
    connections.Trans(cell, direction) *= factor;
    connections.Trans(neighbour, directionBack(connections, cell, neighbour, direction)) *= factor;
}

/// Whether a further connection goes through a face of a cell, across a fault.
bool leavesBy(const FurtherConnection& further, CellId cell, int face) {
    if (further.face == 0) return false;
    return cell == further.first ? face == further.face
                                 : cell == further.second && face == oppositeFace(further.face);
}

/// The connections of a cell through a face, from both of their sides; false where there is none.
bool multiplyConnection(CellId cell, int face, double factor, ConnectionTable& connections) {
    const bool hasNeighbour = connections.Neighbour(cell, face) > 0;
    if (hasNeighbour) multiplyBothSides(cell, face, factor, connections);
    bool any = hasNeighbour;
    for (int d = FaceCount + 1; !connections.further.empty() && d <= connections.NDIR; ++d) {
        const CellId other = connections.Neighbour(cell, d);
        if (other <= 0) continue;
        const FurtherConnection& further = furtherBetween(connections, cell, other);
        if (!leavesBy(further, cell, face)) continue;
        multiplyBothSides(cell, d, factor, connections);
        any = true;
    }
    return any;
}

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

long long multiplyFaces(const GridModel& grid, ConnectionTable& connections) {
    long long count = 0;
    for (int face = 1; face <= FaceCount; ++face) {
        const CellArray<double>& factors = grid.faceMultiplier[static_cast<std::size_t>(face) - 1];
        for (CellId cell = 1; cell <= factors.count(); ++cell)
            if (factors[cell] != 1.0 && multiplyConnection(cell, face, factors[cell], connections)) ++count;
    }
    return count + multiplyFaults(grid, grid.faultMultipliers, connections);
}

long long multiplyFaults(const GridModel& grid, std::span<const FaultMultiplier> factors,
                         ConnectionTable& connections) {
    long long count = 0;
    for (const FaultMultiplier& fault : factors)
        for (const FaultFaces& row : grid.faultFaces) {
            if (row.fault != fault.fault) continue;
            forEachCell(grid, row.box, [&](CellId cell) {
                if (multiplyConnection(cell, row.face, fault.value, connections)) ++count;
            });
        }
    return count;
}

}  // namespace kvr
