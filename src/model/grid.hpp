#pragma once

#include "base/cell_array.hpp"
#include "base/deck_place.hpp"

#include <array>
#include <cstdint>
#include <string>
#include <vector>

namespace kvr {

/// A box of cells, 1-based, inclusive; 0 means the whole range of that direction.
struct CellBox {
    int i1 = 0, i2 = 0, j1 = 0, j2 = 0, k1 = 0, k2 = 0;
};

/// What a row of array arithmetic does with its value.
enum class RowAction : std::uint8_t { Set, Multiply, Add };

/// Numbering of cells that MULTIREG, EQUALREG and ADDREG mean. Default: MULTNUM where it is given, else
/// FLUXNUM.
enum class RegionSet : std::uint8_t { Default, Mult, Flux, Oper };

/// One row of EQUALS (value), COPY (secondName), MULTIPLY (value is the factor), ADD, or of their forms for
/// regions.
struct ArithmeticRow {
    std::string name;        // up to 8 characters, as in the deck
    std::string secondName;  // COPY target
    double value = 0.0;
    CellBox box;
    RowAction action = RowAction::Multiply;  // of the rows behind COPY
    RegionSet regionSet = RegionSet::Default;
    int region = 0;  // above 0: the cells with this number in place of the box
    DeckPlace place;
};

/// One row of FAULTS: the faces on one side of a box of cells.
struct FaultFaces {
    std::string fault;
    CellBox box;
    int face = 0;  // 1..6, low x .. high z
};

/// One row of MULTFLT: what the connections through the faces of a fault are multiplied by.
struct FaultMultiplier {
    std::string fault;
    double value = 1.0;
};

/// Corner numbers 1..8 of a cell stand at [n - 1]: offset from the lower-index node along i, j, k.
inline constexpr std::array<std::array<int, 3>, 8> CornerOffset = {
    {{0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {1, 1, 0}, {0, 0, 1}, {1, 0, 1}, {0, 1, 1}, {1, 1, 1}}};

/// Rock averaged over windows of cells, constant in each window; empty where UPSCALE asked for nothing.
struct UpscaledRock {
    CellArray<double> PORO, PERMX, PERMY, PERMZ;
};

/// Dual porosity, DUALPORO: the layers 1 .. NZ/2 of the grid are the matrix blocks of the fractures in the
/// layers NZ/2 + 1 .. NZ, cell by cell. Both halves stand in the same place.
struct DualPorosity {
    bool isSet = false;
    bool fracturesFromMatrix =
        false;  // DPGRID: what the deck leaves out of the fractures is as in the matrix
    bool permeabilityEffective = false;  // NODPPM: fracture permeability is read as one of the bulk
    bool gravityDrainage = false;        // GRAVDR: phases lie apart in the blocks and around them
    CellArray<double> SIGMA;             // shape factor of matrix cells, 1/ft2; empty: 0
    CellArray<double> DZMTRX;  // ft, height of the blocks in matrix cells; empty: those of the cells
};

/// What the deck gives by cell in place of what geometry and rock say. Empty: nothing; below 0: not this
/// cell.
struct GivenByCell {
    CellArray<double> poreVolume;            // PORV, internal volume
    std::array<CellArray<double>, 3> trans;  // TRANX .. TRANZ to the upper neighbour, rb cp/(day psi)
};

/// PINCH: cells above and below what is pinched out are joined.
struct Pinch {
    bool isSet = false;
    double thickness = 0.001;  // ft, of cells that count as pinched out
    bool acrossSmall = true;   // those that MINPV closes count too, however thick they are
};

/// A row of NNC, or of EDITNNC and EDITNNCR: two cells and what stands for their connection.
struct ConnectionRow {
    enum class Means : std::uint8_t { Add, Multiply, Replace };
    CellId first = 0, second = 0;
    double value = 0.0;  // transmissibility, rb cp/(day psi), or a factor
    Means means = Means::Add;
};

/// A row of MULTREGT: connections between two regions of a numbering, 0: any other. Of connections of cells
/// that are not neighbours all, none, or they alone.
struct RegionMultiplier {
    enum class Further : std::uint8_t { Too, Not, Alone };
    int first = 0, second = 0;
    double value = 1.0;
    std::array<bool, 3> axes = {true, true, true};
    Further further = Further::Too;
    RegionSet regionSet = RegionSet::Default;
};

/// Static geometry and rock, one instance for the run. Lengths ft, permeability md.
struct GridModel {
    int NX = 0, NY = 0, NZ = 0;
    CellId NCELLS = 0;
    CellArray<int> CellI, CellJ, CellK;
    CellArray<std::uint8_t> Active;  // 1: takes part in flow

    std::vector<float> COORD;   // [6*(NX+1)*(NY+1)] pillars as read, in ft
    std::vector<float> ZCORN;   // [8*NCELLS] corner depths as read, in ft
    std::vector<float> xyz_3d;  // [24*(NCELLS+1)] x, y, z of corner 1..8 of each cell; see cornerOf
    std::vector<double> NodeX, NodeY, NodeZ;  // [(NX+1)*(NY+1)*(NZ+1)], i fastest; last writer wins
    DirectionArray<double> CellCentre;        // (cell, 1..3) mean of the eight corners
    CellArray<double> DX, DY, DZ;             // nominal cell sizes
    CellArray<double> TOPS;                   // block input: depth of the cell's top
    CellArray<double> PORV;                   // internal volume, at the reference pressure of PORO; as an
                                              // outside run gives it, empty without one
    CellArray<double> BulkVolume;             // internal volume units (rb in field units)
    CellArray<double> PORO, NTG, PERMX, PERMY, PERMZ;
    CellArray<double> JFactor;  // capillary scale of the J-function, 1 when it is off
    CellArray<int> SATNUM;      // saturation table region, 1-based
    CellArray<int> PVTNUM;      // region of fluid and rock tables, 1-based; empty: 1 everywhere
    CellArray<int> EQLNUM;      // region of equilibrium, 1-based; empty: 1 everywhere
    CellArray<int> FIPNUM;      // region of the balance, 1-based; empty: the deck asks for none
    CellArray<int> MULTNUM, FLUXNUM, OPERNUM;  // regions of array arithmetic; empty: not given
    std::array<double, 6> mapAxes{};

    // What the GRID and EDIT sections leave for conditioning.
    std::vector<ArithmeticRow> equalsRows;    // GRID EQUALS, EQUALREG
    std::vector<ArithmeticRow> copyRows;      // GRID COPY
    std::vector<ArithmeticRow> multiplyRows;  // GRID MULTIPLY, ADD, MULTIREG, ADDREG
    std::vector<ArithmeticRow> editRows;      // EDIT MULTIPLY
    // MULTX-, MULTX .. MULTZ- , MULTZ at [face - 1]: of the connection through that face; empty: 1
    std::array<CellArray<double>, 6> faceMultiplier;
    CellArray<double> MULTPV;  // of pore volumes; empty: 1
    GivenByCell given;
    double leastPoreVolume = 0.0;  // MINPV, internal volume: a cell with less takes no part in flow
    Pinch pinch;
    CellArray<std::uint8_t> PinchedOut;  // 1: the cells above and below are neighbours; empty: none is
    bool joinsAcrossFaults = false;      // lateral faces join every cell that they touch, by the shared area
    std::vector<ConnectionRow> connectionRows;
    std::vector<RegionMultiplier> regionMultipliers;
    std::vector<FaultFaces> faultFaces;
    std::vector<FaultMultiplier> faultMultipliers;
    bool editRockApplied = false;   // EDIT rows on rock arrays, and MULTPV, have been applied in this run
    bool smoothingApplied = false;  // SMTHPRM rows have been applied in this run
    UpscaledRock upscaled;
    DualPorosity dual;
    bool blockInput = false;       // DX.., DXV.. and TOPS gave the geometry
    bool coordAfterZcorn = false;  // geometry is to be rebuilt at the end of the section
};

inline CellId cellIndex(const GridModel& grid, int i, int j, int k) {
    return i + (j - 1) * grid.NX + (k - 1) * grid.NX * grid.NY;
}

/// Place of node (i, j, k), 1..N+1 each, in NodeX, NodeY, NodeZ.
inline std::size_t nodeIndex(const GridModel& grid, int i, int j, int k) {
    const std::size_t rows = static_cast<std::size_t>(k - 1) * static_cast<std::size_t>(grid.NY + 1) +
                             static_cast<std::size_t>(j - 1);
    return rows * static_cast<std::size_t>(grid.NX + 1) + static_cast<std::size_t>(i - 1);
}

/// x, y, z of corner n (1..8) of a cell.
inline const float* cornerOf(const GridModel& grid, CellId cell, int n) {
    return grid.xyz_3d.data() + static_cast<std::size_t>(cell) * 24 + static_cast<std::size_t>(n - 1) * 3;
}
inline float* cornerOf(GridModel& grid, CellId cell, int n) {
    return grid.xyz_3d.data() + static_cast<std::size_t>(cell) * 24 + static_cast<std::size_t>(n - 1) * 3;
}

/// The node at a corner (1..8) of a cell takes the corner's place.
inline void placeNode(GridModel& grid, CellId cell, int corner) {
    const auto& offset = CornerOffset[static_cast<std::size_t>(corner) - 1];
    const float* point = cornerOf(grid, cell, corner);
    const std::size_t node = nodeIndex(grid, grid.CellI[cell] + offset[0], grid.CellJ[cell] + offset[1],
                                       grid.CellK[cell] + offset[2]);
    grid.NodeX[node] = static_cast<double>(point[0]);
    grid.NodeY[node] = static_cast<double>(point[1]);
    grid.NodeZ[node] = static_cast<double>(point[2]);
}

/// x, y, z of a cell's centre.
inline std::array<double, 3> centreOf(const GridModel& grid, CellId cell) {
    const double* centre = grid.CellCentre.row(cell);
    return {centre[0], centre[1], centre[2]};
}

}  // namespace kvr
