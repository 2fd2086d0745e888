#pragma once

#include "deck/sections/props.hpp"

namespace kvr {

// Keywords of relative permeability and capillary pressure, a table for each saturation region.

void readSwof(SectionReader& reader, PropsRecords& records);
void readSgof(SectionReader& reader, PropsRecords& records);
/// The rows of SGOF by the saturation of the liquids.
void readSlgof(SectionReader& reader, PropsRecords& records);
void readSwfn(SectionReader& reader, PropsRecords& records);
void readSgfn(SectionReader& reader, PropsRecords& records);
void readSof2(SectionReader& reader, PropsRecords& records);
void readSof3(SectionReader& reader, PropsRecords& records);

/// `swm`, `sgm`, `swf`, `sgf`: rows of SWOF and SGOF as table 1, of the matrix, and 2, of the fractures.
void readMatrixWater(SectionReader& reader, PropsRecords& records);
void readMatrixGas(SectionReader& reader, PropsRecords& records);
void readFractureWater(SectionReader& reader, PropsRecords& records);
void readFractureGas(SectionReader& reader, PropsRecords& records);

}  // namespace kvr
