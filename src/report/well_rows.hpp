#pragma once

#include "report/well_figures.hpp"

#include <cstdio>

namespace kvr {

/// Main phase of a well: what it injects; of a producer "oil" or "wat" by the larger liquid rate, "gas"
/// without liquid but with gas.
std::string mainPhase(const Well& well);

/// Well block table of one step: for every well its head line and a line per completed cell, one of zeros
/// for a well without any.
void addWellBlocks(const GridModel& grid, const UnitSystem& units, const WellRecord& wells, std::FILE* file);

/// Well table of one step: a row per well, columns separated by tabs; the head comes first in an empty
/// file.
void addWellRows(const StepFigures& figures, const WellRecord& wells, std::FILE* file);

/// Rates, and water cut, of every producer: a row per well with the time in front.
void addProductionRows(const StepFigures& figures, const WellRecord& wells, std::FILE* file);
void addWaterCutRows(const StepFigures& figures, const WellRecord& wells, std::FILE* file);

}  // namespace kvr
