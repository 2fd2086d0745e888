#pragma once

#include "base/console.hpp"
#include "base/units.hpp"
#include "deck/options.hpp"
#include "model/connections.hpp"
#include "model/grid.hpp"

namespace kvr {

/// Slots of INTEHEAD that both the static and the restart files use, 1-based.
namespace inte_head {
inline constexpr std::size_t Units = 3, NX = 9, NY = 10, NZ = 11, ActiveCells = 12, GridType = 14,
                             Phases = 15;
inline constexpr std::size_t Day = 65, Month = 66, Year = 67;
inline constexpr std::int32_t FieldUnits = 2;
inline constexpr std::int32_t CornerPointGrid = 0, BlockCentredGrid = 3;
}  // namespace inte_head

/// Replaces the .INIT file: pore volume of every cell (rb at the reference pressure of the porosity), and of
/// the active cells porosity, net-to-gross, permeabilities (md), transmissibilities of the high faces
/// (rb cp/(day psi)), depth and sizes (ft). Without the option it does nothing.
void writeInitFile(const Console& console, const RunOptions& options, const UnitSystem& units,
                   const GridModel& grid, const ConnectionTable& connections);

}  // namespace kvr
