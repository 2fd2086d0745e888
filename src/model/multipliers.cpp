#include "model/multipliers.hpp"

#include "base/text.hpp"
#include "model/array_arithmetic.hpp"
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

namespace {

/// Whether a row means the connection of cells of regions a and b.
bool joins(const RegionMultiplier& row, int a, int b) {
    const auto is = [](int region, int given) { return given < 1 || region == given; };
    if (a == b) return row.first == a && row.second == a;
    return (is(a, row.first) && is(b, row.second)) || (is(b, row.first) && is(a, row.second));
}

/// Axis of a connection, 0..2; that of the fault that it crosses, -1 of one that the deck gives.
int axisOfConnection(const ConnectionTable& connections, CellId cell, CellId other, int direction) {
    const int face = direction <= FaceCount ? direction : furtherBetween(connections, cell, other).face;
    return face > 0 ? (face - 1) / 2 : -1;
}

bool means(const RegionMultiplier& row, int axis, bool isFurther) {
    if (axis >= 0 && !row.axes[static_cast<std::size_t>(axis)]) return false;
    return row.further == RegionMultiplier::Further::Too ||
           isFurther == (row.further == RegionMultiplier::Further::Alone);
}

/// The product over the numberings of the last row of each that means the connection.
double regionFactor(const GridModel& grid, CellId cell, CellId other, int axis, bool isFurther) {
    double factor = 1.0;
    for (const RegionSet set : {RegionSet::Mult, RegionSet::Flux, RegionSet::Oper}) {
        const CellArray<int>& region = regionNumbers(grid, set);
        if (region.empty()) continue;
        for (auto row = grid.regionMultipliers.rbegin(); row != grid.regionMultipliers.rend(); ++row) {
            if (&regionNumbers(grid, row->regionSet) != &region || !means(*row, axis, isFurther) ||
                !joins(*row, region[cell], region[other]))
                continue;
            factor *= row->value;
            break;
        }
    }
    return factor;
}

}  // namespace

long long multiplyRegions(const GridModel& grid, ConnectionTable& connections) {
    long long count = 0;
    for (CellId cell = 1; !grid.regionMultipliers.empty() && cell <= grid.NCELLS; ++cell)
        for (int d = 1; d <= connections.flowDirections; ++d) {
            const CellId other = connections.Neighbour(cell, d);
            if (other <= cell) continue;
            const int axis = axisOfConnection(connections, cell, other, d);
            const double factor = regionFactor(grid, cell, other, axis, d > FaceCount);
            if (factor == 1.0) continue;
            multiplyBothSides(cell, d, factor, connections);
            ++count;
        }
    return count;
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
