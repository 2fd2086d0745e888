#include "model/fault_faces.hpp"

#include "model/cell_geometry.hpp"
#include "model/connections.hpp"

#include <algorithm>
#include <cmath>

namespace kvr {

namespace {

constexpr double Fits =
    1e-3;  // ft, of the depths of two faces that are the same; corners are single precision
constexpr double LeastShare = 1e-6;  // of a face: below, cells do not touch

double along(const std::array<double, 2>& edge, double u) {
    return (1.0 - u) * edge[0] + u * edge[1];
}

double spanAt(const FaceSpan& a, const FaceSpan& b, double u) {
    return std::max(
        0.0, std::min(along(a.bottom, u), along(b.bottom, u)) - std::max(along(a.top, u), along(b.top, u)));
}

FaceSpan spanOf(const GridModel& grid, CellId cell, int face) {
    const auto& corners = FaceCorners[static_cast<std::size_t>(face) - 1];
    const auto depth = [&](int n) { return static_cast<double>(cornerOf(grid, cell, n)[2]); };
    return {{depth(corners[0]), depth(corners[1])}, {depth(corners[2]), depth(corners[3])}};
}

bool fit(const FaceSpan& a, const FaceSpan& b) {
    const auto same = [](const std::array<double, 2>& x, const std::array<double, 2>& y) {
        return std::abs(x[0] - y[0]) < Fits && std::abs(x[1] - y[1]) < Fits;
    };
    return same(a.top, b.top) && same(a.bottom, b.bottom);
}

/// Columns of cells on both sides of a row of faces.
struct ColumnPair {
    std::vector<CellId> first, second;
    std::vector<FaceSpan> firstSpan, secondSpan;
};

ColumnPair columnsOf(const GridModel& grid, CellId top, CellId beside, int face) {
    ColumnPair pair;
    const CellId layer = grid.NX * grid.NY;
    for (int k = 0; k < grid.NZ; ++k) {
        pair.first.push_back(top + k * layer);
        pair.second.push_back(beside + k * layer);
        pair.firstSpan.push_back(spanOf(grid, pair.first.back(), face));
        pair.secondSpan.push_back(spanOf(grid, pair.second.back(), oppositeFace(face)));
    }
    return pair;
}

bool isWhole(const ColumnPair& pair) {
    for (std::size_t k = 0; k < pair.first.size(); ++k)
        if (!fit(pair.firstSpan[k], pair.secondSpan[k])) return false;
    return true;
}

/// Projected area of a cell's face per unit of its span; 0 of a face without height.
double areaOfSpan(const GridModel& grid, CellId cell, int face, const FaceSpan& span) {
    const double own = sharedSpan(span, span);
    return own > 0.0 ? projectedArea(cornerOf(grid, cell, 1), face) / own : 0.0;
}

void shareFaces(const GridModel& grid, const ColumnPair& pair, int face, std::vector<SharedFace>& faces) {
    for (std::size_t a = 0; a < pair.first.size(); ++a) {
        const double ofFirst = areaOfSpan(grid, pair.first[a], face, pair.firstSpan[a]);
        const double own = sharedSpan(pair.firstSpan[a], pair.firstSpan[a]);
        for (std::size_t b = 0; b < pair.second.size(); ++b) {
            const double shared = sharedSpan(pair.firstSpan[a], pair.secondSpan[b]);
            const double other = sharedSpan(pair.secondSpan[b], pair.secondSpan[b]);
            const bool touch = shared > LeastShare * std::min(own, other);
            if (!touch && a != b) continue;
            const double ofSecond = areaOfSpan(grid, pair.second[b], oppositeFace(face), pair.secondSpan[b]);
            faces.push_back({std::min(pair.first[a], pair.second[b]), std::max(pair.first[a], pair.second[b]),
                             pair.first[a] < pair.second[b] ? face : oppositeFace(face),
                             touch ? 0.5 * shared * (ofFirst + ofSecond) : 0.0});
        }
    }
}

}  // namespace

double sharedSpan(const FaceSpan& a, const FaceSpan& b) {
    // Where edges cross, the shared height has a bend; between bends it is linear.
    std::array<double, 6> bends = {0.0, 1.0, 1.0, 1.0, 1.0, 1.0};
    const std::array<std::array<const std::array<double, 2>*, 2>, 4> crossing = {
        {{&a.top, &b.top}, {&a.bottom, &b.bottom}, {&a.top, &b.bottom}, {&a.bottom, &b.top}}};
    std::size_t count = 2;
    for (const auto& [x, y] : crossing) {
        const double low = (*x)[0] - (*y)[0], high = (*x)[1] - (*y)[1];
        if (low * high < 0.0) bends[count++] = low / (low - high);
    }
    std::sort(bends.begin(), bends.end());
    double sum = 0.0;
    for (std::size_t n = 0; n + 1 < bends.size(); ++n)
        sum += 0.5 * (bends[n + 1] - bends[n]) * (spanAt(a, b, bends[n]) + spanAt(a, b, bends[n + 1]));
    return sum;
}

std::vector<SharedFace> facesAcrossFaults(const GridModel& grid) {
    std::vector<SharedFace> faces;
    for (int j = 1; j <= grid.NY; ++j)
        for (int i = 1; i <= grid.NX; ++i)
            for (const int face : {2, 4}) {
                const bool inX = face == 2;
                if (inX ? i == grid.NX : j == grid.NY) continue;
                const ColumnPair pair =
                    columnsOf(grid, cellIndex(grid, i, j, 1),
                              cellIndex(grid, i + (inX ? 1 : 0), j + (inX ? 0 : 1), 1), face);
                if (!isWhole(pair)) shareFaces(grid, pair, face, faces);
            }
    return faces;
}

}  // namespace kvr
