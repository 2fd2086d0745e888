#pragma once

#include "model/connections.hpp"
#include "model/grid.hpp"

#include <span>
#include <string_view>

namespace kvr {

/// What a multiplier keyword acts on.
enum class MultiplierTarget { None, RockArray, Trans };

/// One keyword of the lists of box records.
struct MultiplierKeyword {
    std::string_view name;  // upper case
    MultiplierTarget target;
    int axis;  // Trans: 0 x, 1 y, 2 z
    CellArray<double> GridModel::*array;
    std::string_view report;  // printed behind the name when a row acts
};

/// The row of a name in upper case, lower case or with an initial capital; nullptr for any other word.
const MultiplierKeyword* findMultiplier(std::string_view name);

/// The name in one of the three forms in which keywords of lists are recognised: upper case, lower case,
/// initial capital.
bool matchesInThreeForms(std::string_view name, std::string_view upperCase);

/// Multiplies a rock array over the box of one row. PORV acts on PORO.
void multiplyRock(GridModel& grid, const MultiplierKeyword& keyword, const ArithmeticRow& row);

/// Multiplies the two Trans columns of the keyword's axis for each cell of the box and for no neighbour: a
/// face on the edge of a box is multiplied from one side only, and the two Trans values of that connection
/// then differ. That is required.
void multiplyTrans(const GridModel& grid, const MultiplierKeyword& keyword, const ArithmeticRow& row,
                   ConnectionTable& connections);

/// Multiplies the connections through the faces of cells by the factors of MULTX .. MULTZ- and of faults, on
/// both sides. Returns how many connections were multiplied.
long long multiplyFaces(const GridModel& grid, ConnectionTable& connections);

/// Connections between regions by the rows of MULTREGT: of each numbering the last row that means a
/// connection. Returns how many connections were multiplied.
long long multiplyRegions(const GridModel& grid, ConnectionTable& connections);

/// The same by the factors of faults alone, on top of what the connections are.
long long multiplyFaults(const GridModel& grid, std::span<const FaultMultiplier> factors,
                         ConnectionTable& connections);

}  // namespace kvr
