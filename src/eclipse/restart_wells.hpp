#pragma once

#include "base/console.hpp"
#include "base/units.hpp"
#include "eclipse/restart_well_tables.hpp"
#include "fluid/tables.hpp"
#include "model/connections.hpp"
#include "model/grid.hpp"
#include "pressure/records/cell_state.hpp"
#include "pressure/records/velocity_field.hpp"
#include "pressure/wells/wells.hpp"

#include <span>
#include <string>

namespace kvr {

/// Compares the wells of a restart with those of the run, in the order of both where the file has no names:
/// head, number of connections, type and phase. Tells the first difference of each well, and heads outside
/// the grid.
void checkWells(const Console& console, const GridModel& grid, std::span<const FileWell> file,
                const WellRecord& wells);

/// Names for wells of a file that names none: `names` where these are as many, else W1, W2 ...
void nameWells(std::span<const std::string> names, std::vector<FileWell>& file);

/// The wells of a run whose deck has none, by name: kind, connections, factors and pressures as the restart
/// has them. A well keeps its place from restart to restart; new ones come behind, and one that a restart
/// does not have is shut. Wells of no known type, with their heads outside the grid, and connections outside
/// it or in cells without flow are left out.
void makeWells(const Console& console, const GridModel& grid, std::span<const FileWell> file,
               WellRecord& wells);

/// Status, bottom-hole pressure and rates of the run's wells from the restart. A connection flows what the
/// connection table says, at the conditions of its cell:
///   Q = Bo qo + Bw qw + Bg (qg - Rs qo).
/// Where there is no such table, it flows what the well model gives at the file's bottom-hole pressure; where
/// there is none either, what the field takes from its cell or leaves there. Where connections come to
/// nothing and the file has rates of the well, these are shared out by the connection factors. Nothing flows
/// back. A well of the file that flows nothing is shut. Factors and Rs are those of the state, before those
/// of absent phases become 1.
void updateWells(const UnitSystem& units, const GridModel& grid, const ConnectionTable& connections,
                 const FluidTables& tables, const CellState& state, const VelocityField& velocity,
                 std::span<const FileWell> file, WellRecord& wells, PressureStage& stage);

}  // namespace kvr
