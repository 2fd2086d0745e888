#pragma once

#include "model/grid.hpp"
#include "pressure/wells/wells.hpp"

namespace kvr {

/// The cell of a connection as the well bore sees it.
struct CompletionGeometry {
    double kx = 0.0, ky = 0.0;  // md, the two permeabilities across the bore
    double Dx = 0.0, Dy = 0.0;  // ft, the two cell sizes across it
    double h = 0.0;             // ft, the cell size along it; thicknesses are net
};

/// Bore along 'X': PERMY, PERMZ, DY, DZ NTG, DX; along 'Y': PERMX, PERMZ, DX, DZ NTG, DY; otherwise vertical,
/// with DZ NTG along it: shale gives a well nothing, as it gives connections of cells nothing.
CompletionGeometry completionGeometry(const GridModel& grid, CellId cell, char direction);

/// Radius at which the steady radial pressure equals the cell pressure, ft (Peaceman 1983, anisotropic):
///   r = 0.28 sqrt(Dx^2 a + Dy^2 b) / (sqrt(a) + sqrt(b)),  a = sqrt(ky/kx), b = sqrt(kx/ky)
/// 1.0 where a permeability is 1e-10 md or less.
double equivalentRadius(const CompletionGeometry& cell);

/// sqrt(kx ky), md; 0 where kx is 1e-10 or less.
double equivalentPermeability(const CompletionGeometry& cell);

/// WellIndexConstant * k * h / (ln(r / radius) + skin), rb cp/(day psi), with `givenKh`, md ft, in the place
/// of k * h where it is above 0. 0 where the cell has no permeability, or where the denominator is not above
/// 0: such a connection does not flow.
double wellIndex(const CompletionGeometry& cell, double radius, double skin, double givenKh = -1.0);

/// Whether the Well Index of a connection follows the permeability of its cell: neither it nor Kh is given.
inline bool followsPermeability(const WellConnection& connection) {
    return connection.ConnFactor < 0.0 && !(connection.givenKh > 0.0);
}

/// The Well Index of one connection and the two figures reported with it. ConnFactor of 0 or more is the
/// Well Index itself, its multiplier aside. A connection in an inactive cell gets 0.
void ConnectionIndex(const GridModel& grid, WellConnection& connection);

}  // namespace kvr
