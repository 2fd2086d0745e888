#pragma once

#include "model/grid.hpp"

#include <array>
#include <vector>

namespace kvr {

/// Depths of a lateral face on the two pillars that it stands between: upper edge, then lower edge.
struct FaceSpan {
    std::array<double, 2> top{}, bottom{};
};

/// Area that two faces between the same pillars share, in depth times the distance of the pillars as 1:
///   integral over u in [0, 1] of max(0, min(bottom) - max(top)), edges linear in u. Exact.
double sharedSpan(const FaceSpan& a, const FaceSpan& b);

/// Two cells of columns next to each other that touch, or that are neighbours in I or J and do not.
struct SharedFace {
    CellId first = 0, second = 0;  // first < second
    int face = 0;                  // of the first, 2 or 4
    double area = 0.0;             // ft2, shared, projected along the axis of the face
};

/// The shared faces of all pairs of columns in which not every cell fits on its neighbour of the same layer.
/// Pillars may lean: the shared area is the share of each cell's own face, the mean of both.
std::vector<SharedFace> facesAcrossFaults(const GridModel& grid);

}  // namespace kvr
