#include "model/cell_geometry.hpp"

#include <cmath>

namespace kvr {

namespace {

/// Pairs of corners 1..8 one step apart along x, y, z; the two other axes run fastest first.
constexpr int AxisEdges[3][4][2] = {
    {{1, 2}, {3, 4}, {5, 6}, {7, 8}}, {{1, 3}, {2, 4}, {5, 7}, {6, 8}}, {{1, 5}, {2, 6}, {3, 7}, {4, 8}}};

double coordinate(const float* corners, int corner, int axis) {
    return static_cast<double>(corners[(corner - 1) * 3 + axis]);
}

Vector3 edge(const float* corners, int from, int to) {
    return {coordinate(corners, to, 0) - coordinate(corners, from, 0),
            coordinate(corners, to, 1) - coordinate(corners, from, 1),
            coordinate(corners, to, 2) - coordinate(corners, from, 2)};
}

double determinant(const Vector3& a, const Vector3& b, const Vector3& c) {
    return a[0] * (b[1] * c[2] - b[2] * c[1]) + a[1] * (b[2] * c[0] - b[0] * c[2]) +
           a[2] * (b[0] * c[1] - b[1] * c[0]);
}

/// Tangents along one axis at the four rule points of the two other axes, [slow * 2 + fast].
std::array<Vector3, 4> tangentsAtRulePoints(const float* corners, int axis) {
    Vector3 edges[4];
    for (int e = 0; e < 4; ++e) edges[e] = edge(corners, AxisEdges[axis][e][0], AxisEdges[axis][e][1]);
    std::array<Vector3, 4> tangents;
    for (int slow = 0; slow < 2; ++slow)
        for (int fast = 0; fast < 2; ++fast) {
            const double u = RulePoint[fast];
            const double v = RulePoint[slow];
            for (int r = 0; r < 3; ++r)
                tangents[slow * 2 + fast][r] = (1.0 - v) * ((1.0 - u) * edges[0][r] + u * edges[1][r]) +
                                               v * ((1.0 - u) * edges[2][r] + u * edges[3][r]);
        }
    return tangents;
}

double edgeExtent(const float* corners, int from, int to, int axis) {
    return std::abs(coordinate(corners, to, axis) - coordinate(corners, from, axis));
}

}  // namespace

Vector3 meanOfCorners(const float* corners) {
    constexpr double Eighth = 0.125;
    float sum[3] = {0.0F, 0.0F, 0.0F};
    for (int n = 0; n < 8; ++n)
        for (int r = 0; r < 3; ++r) sum[r] += corners[n * 3 + r];
    return {static_cast<double>(sum[0]) * Eighth, static_cast<double>(sum[1]) * Eighth,
            static_cast<double>(sum[2]) * Eighth};
}

Vector3 nominalSizes(const float* corners) {
    Vector3 sizes{};
    for (int axis = 0; axis < 3; ++axis) {
        for (const auto& pair : AxisEdges[axis]) sizes[axis] += edgeExtent(corners, pair[0], pair[1], axis);
        sizes[axis] *= 0.25;
    }
    return sizes;
}

double integratedVolume(const float* corners) {
    const auto alongX = tangentsAtRulePoints(corners, 0);  // [c * 2 + b]
    const auto alongY = tangentsAtRulePoints(corners, 1);  // [c * 2 + a]
    const auto alongZ = tangentsAtRulePoints(corners, 2);  // [b * 2 + a]
    double sum = 0.0;
    for (int c = 0; c < 2; ++c)
        for (int b = 0; b < 2; ++b)
            for (int a = 0; a < 2; ++a)
                sum += std::abs(determinant(alongX[c * 2 + b], alongY[c * 2 + a], alongZ[b * 2 + a]));
    return RuleWeight * RuleWeight * RuleWeight * sum;
}

Vector3 faceCentre(const float* corners, int face) {
    Vector3 centre{};
    for (const int corner : FaceCorners[face - 1])
        for (int r = 0; r < 3; ++r) centre[r] += 0.25 * coordinate(corners, corner, r);
    return centre;
}

double projectedArea(const float* corners, int face) {
    const auto& f = FaceCorners[face - 1];
    const int axis = (face - 1) / 2;
    const int p = (axis + 1) % 3;
    const int q = (axis + 2) % 3;
    const Vector3 low1 = edge(corners, f[0], f[1]);
    const Vector3 high1 = edge(corners, f[2], f[3]);
    const Vector3 low2 = edge(corners, f[0], f[2]);
    const Vector3 high2 = edge(corners, f[1], f[3]);
    constexpr double IdlePoints = 2.0;
    double sum = 0.0;
    for (const double u : RulePoint)
        for (const double v : RulePoint) {
            const double p1 = (1.0 - v) * low1[p] + v * high1[p];
            const double q1 = (1.0 - v) * low1[q] + v * high1[q];
            const double p2 = (1.0 - u) * low2[p] + u * high2[p];
            const double q2 = (1.0 - u) * low2[q] + u * high2[q];
            sum += IdlePoints * std::abs(p1 * q2 - q1 * p2);
        }
    return RuleWeight * RuleWeight * RuleWeight * sum;
}

double meanLateralExtent(const float* corners, int face) {
    const auto& f = FaceCorners[face - 1];
    const int across = face <= 2 ? 1 : 0;  // the face's horizontal axis
    const double horizontal =
        0.5 * (edgeExtent(corners, f[0], f[1], across) + edgeExtent(corners, f[2], f[3], across));
    const double vertical = 0.5 * (edgeExtent(corners, f[0], f[2], 2) + edgeExtent(corners, f[1], f[3], 2));
    return 0.5 * (vertical + horizontal);
}

}  // namespace kvr
