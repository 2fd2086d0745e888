#pragma once

#include "report/well_figures.hpp"

#include <cstdio>
#include <span>
#include <string>

namespace kvr {

/// Sink and source table: rates and totals of every well, in-place amounts and rates of the field. The
/// head names the columns, with a comment line of units in front when `withUnits` is set; `components`
/// columns FZMF stand before the field's.
void putSinkSourceHead(std::span<const std::string> wellNames, int components, bool withUnits,
                       std::FILE* file);
void addSinkSourceRow(const StepFigures& figures, std::FILE* file);

/// Well property table: bottom-hole pressure of every well and the state of its first completed cell; 0
/// for a well without one. Pressures psia, Rs Mscf/stb, densities lb/ft3, viscosities cp.
void putWellPropertyHead(std::span<const std::string> wellNames, std::FILE* file);
void addWellPropertyRow(double time, std::size_t wellCount, const WellRecord& wells, const CellState& state,
                        std::FILE* file);

}  // namespace kvr
