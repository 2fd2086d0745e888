#pragma once

#include "deck/sections/grid_section.hpp"

namespace kvr {

// Keywords of GRID for dual porosity. Without DUALPORO they are neglected.

void readDpgrid(SectionReader& reader, GridRecords& records);
void readSigma(SectionReader& reader, GridRecords& records);
void readSigmav(SectionReader& reader, GridRecords& records);
void readDzmtrx(SectionReader& reader, GridRecords& records);
void readDzmtrxv(SectionReader& reader, GridRecords& records);
void readMatrixPorosity(SectionReader& reader, GridRecords& records);
void readNodppm(SectionReader& reader, GridRecords& records);
[[noreturn]] void refuseDpnum(SectionReader& reader, GridRecords& records);

/// At the end of the section, before the geometry is built: what DPGRID means, the permeability of the
/// fractures, and a warning where matrix and fractures exchange nothing.
void completeContinua(const SectionReader& reader, GridModel& grid);

}  // namespace kvr
