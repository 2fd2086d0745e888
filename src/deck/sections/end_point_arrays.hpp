#pragma once

#include "deck/sections/props.hpp"

namespace kvr {

/// The array of end points named by reader.keyword, one value per cell; cells left out have that of their
/// table.
void readEndPoints(SectionReader& reader, PropsRecords& records);

/// SWATINIT: the water saturation that EQUIL is to give each cell.
void readInitialWater(SectionReader& reader, PropsRecords& records);

/// SCALECRS: YES for three points, NO for two.
void readScalecrs(SectionReader& reader, PropsRecords& records);

/// Rows of arrays of end points over boxes, acting where they stand.
void readEndPointEquals(SectionReader& reader, PropsRecords& records);
void readEndPointMultiply(SectionReader& reader, PropsRecords& records);
void readEndPointAdd(SectionReader& reader, PropsRecords& records);
void readEndPointCopy(SectionReader& reader, PropsRecords& records);

}  // namespace kvr
