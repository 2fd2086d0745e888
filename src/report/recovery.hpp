#pragma once

#include "report/well_figures.hpp"

#include <cstdio>
#include <span>
#include <string>

namespace kvr {

/// One row of the recovery table, columns separated by blanks; the head with the column names comes
/// first in an empty file. Fixed columns TIME FOPR FWPR FGPR FGOR FWCT FWIR FGIR FOPT FWPT FGPT FWIT
/// FGIT FPR FOE, then WBHP WOPR WWPR WGPR WWIR WGIR of every well as "WBHP:NAME". Days, stb, Mscf,
/// psia; FGOR Mscf/stb. The file is complete up to this row when the routine returns.
void addRecoveryRow(const StepFigures& figures, std::span<const std::string> wellNames, std::FILE* file);

}  // namespace kvr
