#pragma once

#include "deck/sections/props.hpp"

#include <array>
#include <limits>

namespace kvr {

/// A number that a row leaves open (`1*`), until its neighbours in the column fill it in.
inline constexpr double OpenValue = std::numeric_limits<double>::quiet_NaN();

/// Fills open numbers of a column by those above and below, linear in the first column; at an end of the
/// table the next one stands.
void fillOpenValues(const Column& axis, Column& column);

/// Oil that dissolves no gas: no Rs, no rows behind the saturated ones.
void setDeadOil(FluidTables& tables);

/// Dead oil of constant compressibility C and viscosibility V about the pressure of reference, as a table
/// whose rows stand so close that straight lines between them are off by less than 1e-7:
///   Bo = Bor / (1 + X + X^2/2),  X = C (p - pr);   muo Bo = muor Bor / (1 + Y + Y^2/2),  Y = (C - V)(p - pr)
void tabulateConstantOil(const std::array<double, 5>& item, FluidTables& tables);

/// A phase of the run without any table would be one that nobody has described.
void requireTables(SectionReader& reader, const PropsRecords& records);

}  // namespace kvr
