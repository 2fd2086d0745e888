#pragma once

#include "model/connections.hpp"
#include "model/fault_faces.hpp"
#include "model/grid.hpp"

#include <vector>

namespace kvr {

/// Lists the connections beside those of neighbours in I, J, K, in order of their cells: of `faces`, and of
/// the rows of NNC. Each has a direction at both cells; NDIR and flowDirections become what the cell with
/// the most of them needs.
void listFurther(const GridModel& grid, const std::vector<SharedFace>& faces, ConnectionTable& connections);

/// Neighbours in the directions of `further`.
void placeFurther(const GridModel& grid, ConnectionTable& connections);

/// Transmissibilities through the faces that cells share across faults, of neighbours in the place of those
/// through their whole faces:
///   T = 1/(1/H_i + 1/H_j),  H = d_axis A k/(dx^2 + dy^2 + dz^2) * DarcyConstant,
/// A the shared area, (dx, dy, dz) from a cell's centre to the centre of its own whole face, k with NTG.
void connectAcrossFaults(const GridModel& grid, const std::vector<SharedFace>& faces,
                         ConnectionTable& connections);

/// Rows of NNC, EDITNNC and EDITNNCR in their order, on what stands. Returns how many found no connection.
int applyConnectionRows(const GridModel& grid, ConnectionTable& connections);

/// Nothing flows to or from inactive cells in the directions of `further`.
void closeFurther(const GridModel& grid, ConnectionTable& connections);

}  // namespace kvr
