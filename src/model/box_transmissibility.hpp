#pragma once

#include "model/connections.hpp"
#include "model/grid.hpp"

namespace kvr {

/// What one connection of the box formula is made of.
struct BoxConnection {
    double area = 0.0;          // ft2
    double length = 0.0;        // ft, centre to centre along the axis
    double harmonicPerm = 0.0;  // md * DarcyConstant
    double cos2 = 1.0;          // squared cosine of the dip; 1 for vertical connections
    double trans = 0.0;         // rb cp/(day psi)
};

/// Box formula between cell i and its neighbour j along axis 0..2 (x, y, z), with a, b the sizes along and
/// across, h the height of a lateral face:
///   lateral   area = (b_i h_i NTG_i a_j + eps + b_j a_i h_j NTG_j)/(a_i + a_j)
///   vertical  area = (DX_i DY_i DZ_j + eps + DX_j DZ_i DY_j)/(DZ_i + DZ_j), without NTG
///   length = (a_i + a_j)/2 + eps,  cos2 = length^2/(depthDiff^2 + length^2)
///   harmonicPerm = (a_i + a_j)/(a_i/(k_i + eps) + a_j/(k_j + eps)) * DarcyConstant
///   trans = area * harmonicPerm * cos2/length
/// Cells without extent along the axis give a connection of zeros.
BoxConnection boxConnection(const GridModel& grid, CellId i, CellId j, int axis, double depthDiff);

/// Fills columns 1..6 of DepthDiff, ConnArea, ConnLength, HarmonicPerm, Trans and HalfTrans of every
/// active cell; HalfTrans = k A/(0.5 D) * DarcyConstant with the cell's own cross-section A and size D,
/// without NTG, also on faces without a neighbour. Trans and HalfTrans are 0 on a connection with an inactive
/// end. Sets BulkVolume = DX*DY*DZ/volumeFactor of active cells.
void connectByBoxFormula(GridModel& grid, ConnectionTable& connections, double volumeFactor);

/// Columns of one face (1..6) of an active cell, for a neighbour that it has got since; both ends are to be
/// done.
void connectFaceByBoxFormula(const GridModel& grid, ConnectionTable& connections, CellId cell, int face);

}  // namespace kvr
