#pragma once

#include "fluid/end_points.hpp"
#include "fluid/tables.hpp"

namespace kvr {

/// End points of a finished table. A relative permeability up to 1e-6 counts as none, the published
/// tolerance. The values where the other phase stops flowing are left unset.
EndPoints endPointsOf(const SaturationTable& table);

/// The first of what makes the scaling of a table to these points impossible, in words; empty if nothing
/// does.
std::string_view endPointFault(const EndPoints& points, bool hasWater, bool hasGas);

/// A table whose functions are those of `table` scaled to the end points `to` (its own are `from`).
/// Saturations go from point to point on straight lines, s' = s1' + (s - s1)(s2' - s1')/(s2 - s1), s' of the
/// table:
///   krw    SWCR, [1 - SOWCR - SGL,] SWU         krow   by Sw = 1 - So: SWL + SGL, [SWCR + SGL,] 1 - SOWCR
///   krg    SGCR, [1 - SOGCR - SWL,] SGU         krog   by Sg = 1 - SWL - So: SGL, [SGCR,] 1 - SOGCR - SWL
///   Pcow   SWL, SWU                             Pcog   SGL, SGU
/// those in brackets with `threePoint`; a stretch that scaling leaves no width is left out. Values are
/// multiplied by the ratio of the greatest ones. Where the value R at a point in brackets is given (KRWR,
/// KRORW, KRGR, KRORG), values up to the horizontally scaled one there, r, are multiplied by R/r, and those
/// beyond go straight from r..greatest to R..greatest, by saturation where both ends of the former are one.
/// Lines stay lines: the result has rows wherever one of its functions bends, and is exact in between.
SaturationTable scaledTable(const SaturationTable& table, const EndPoints& from, const EndPoints& to,
                            bool threePoint, bool hasGas);

}  // namespace kvr
