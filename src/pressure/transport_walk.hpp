#pragma once

#include "base/cell_array.hpp"
#include "fluid/state_recovery.hpp"
#include "pressure/ordered_transport.hpp"
#include "pressure/stirred_tank.hpp"

#include <cstddef>
#include <vector>

namespace kvr {

inline constexpr int NoConnection = -1;

/// One connection, found from its cell.
struct Outlet {
    std::size_t well = 0, connection = 0;
    int next = NoConnection;
};

/// Everything that the walk of advanceInOrder reads and writes.
struct Walk {
    double dt = 0.0;
    const FractionSlopes& slopes;
    const GridModel& grid;
    const ConnectionTable& connections;
    const FluidTables& tables;
    const DirectionArray<double>& flux;
    const WellRecord& wells;
    const MakeUp& makeUp;
    const Buoyancy& buoyancy;
    const CellState& state;
    const MatrixTransfer& transfer;
    CellArray<int> firstOutlet;
    std::vector<Outlet> outlets;
    DirectionArray<ConservedAmounts> passed;  // a day, by low cell and axis, along the flow
    DirectionArray<double> tilt;              // of the same, water in the place of oil, volume per volume
    std::vector<BuoyantFlow> buoyant;         // of the tank at work, in the order of its faces
    CellAmounts& amounts;
    TransportAccount& account;
    CellArray<int> unit;  // of the cells of rings, 0 elsewhere; empty before the first ring
    int units = 0;
    CellArray<ConservedAmounts> matrixEnd;  // of the matrix of fracture cells; empty without dual porosity
};

/// Whether a cell is one of fractures that exchanges with its matrix.
bool hasMatrix(const Walk& walk, CellId cell);

/// A connection by its low cell and axis, see axisOf.
struct FacePlace {
    CellId cell = 0;
    int axis = 1;
};

FacePlace placeOf(const ConnectionTable& connections, CellId cell, int face);
bool faceIsKnown(const MakeUp& makeUp, FacePlace place);

/// Links the connections of every cell and opens their rates in the account.
void listOutlets(Walk& walk);
const WellConnection& connectionOf(const Walk& walk, const Outlet& outlet);
bool produces(const Walk& walk, const Outlet& outlet);

/// A cell as a tank, by the factors and viscosities of the state.
TankFluid fluidOf(CellId cell, const Walk& walk);
ConservedAmounts amountsOf(const CellAmounts& amounts, CellId cell);
ConservedAmounts operator*(double factor, const ConservedAmounts& a);

/// What flows in and what is asked for, from the faces and connections of a cell, but for the faces between
/// cells of one unit of a ring. Adds those on which gravity acts to `walk.buoyant`.
TankFlows flowsOf(CellId cell, Walk& walk);

/// Hands what a tank has let out to the faces and connections of a cell; returns the sum, a day. `buoyant`:
/// the next of the tank's faces on which gravity acts, moved on.
ConservedAmounts share(CellId cell, double trust, const TankFluid& fluid, const TankOutflow& outflow,
                       std::size_t& buoyant, Walk& walk);

/// One cell: its flows in, its tank, its flows out. Returns what it holds at the end; what its matrix then
/// holds goes to `walk.matrixEnd`.
ConservedAmounts passCell(CellId cell, const ConservedAmounts& start, Walk& walk, double& deficit);
void store(CellId cell, const ConservedAmounts& held, CellAmounts& amounts);

/// Amounts of the matrix, when all fractures are done.
void storeMatrix(Walk& walk);

}  // namespace kvr
