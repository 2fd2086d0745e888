#pragma once

#include "deck/reading/section_reader.hpp"
#include "model/grid.hpp"

namespace kvr {

/// The unit system of a deck in the other units, field or metric.
UnitSystem otherUnits(const UnitSystem& units);

// Pore volumes and transmissibilities that the deck gives in place of those that its geometry and rock would
// have, and the least pore volume of a cell that takes part.

/// PORV, one value per cell; a cell left out keeps its own.
void readPorv(SectionReader& reader, GridModel& grid);

/// TRANX (axis 0), TRANY, TRANZ (2), one value per cell, of its connection to the upper neighbour.
void readTrans(SectionReader& reader, int axis, GridModel& grid);

/// MINPV, one value.
void readMinpv(SectionReader& reader, GridModel& grid);
/// PINCH: thickness, GAP or NOGAP; what other items ask for beyond their defaults is told.
void readPinch(SectionReader& reader, GridModel& grid);

/// A row of EQUALS that names one of the arrays; false for any other row.
bool giveInOrder(const SectionReader& reader, const ArithmeticRow& row, GridModel& grid);

}  // namespace kvr
