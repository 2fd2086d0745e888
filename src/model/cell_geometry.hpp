#pragma once

#include <array>

namespace kvr {

/// A point or vector: x, y, z (depth, downwards), ft.
using Vector3 = std::array<double, 3>;

/// Corners of the low x, high x, low y, high y, low z, high z face of a cell, numbers 1..8, at [face - 1].
/// Within a row: first and second differ along one of the face's axes, first and third along the other.
inline constexpr std::array<std::array<int, 4>, 6> FaceCorners = {
    {{1, 3, 5, 7}, {2, 4, 6, 8}, {1, 2, 5, 6}, {3, 4, 7, 8}, {1, 2, 3, 4}, {5, 6, 7, 8}}};

/// The two abscissae of the volume and area rule on [0, 1]. They are the outer points of the three-point
/// Gauss rule, used with the equal weights of a two-point rule. The pairing is required: the volumes that
/// all in-place figures are built on come from it. Exact for a linear integrand only.
inline constexpr std::array<double, 2> RulePoint = {0.1127016653792583, 0.8872983346207417};
inline constexpr double RuleWeight = 0.5;

/// Mean of the eight corners, added in single precision.
/// corners: 24 values, x y z of corner 1..8.
Vector3 meanOfCorners(const float* corners);

/// Nominal sizes: per axis the mean of four absolute coordinate differences along that axis. One coordinate
/// only, not edge lengths: a tilted cell gets a size smaller than its true edge.
Vector3 nominalSizes(const float* corners);

/// ft3: sum over the eight points (a, b, c) of RulePoint of 0.5 * 0.5 * 0.5 * |det J|, J the Jacobian of the
/// trilinear map of the unit cube onto the corners. A folded cell gives the sum of the absolute parts.
double integratedVolume(const float* corners);

/// Mean of the four corners of a face 1..6.
Vector3 faceCentre(const float* corners, int face);

/// ft2: area of a face 1..6 projected along its axis (x for 1 and 2, y for 3 and 4, z for 5 and 6): the
/// absolute value of that component of the tangent cross product, summed over the eight points of the volume
/// rule with the third coordinate idle, so that the weights add to 1.
double projectedArea(const float* corners, int face);

/// ft: |mean of the face's extent in z and in the other horizontal axis| of a lateral face 1..4, each extent
/// the mean of two opposite edges.
double meanLateralExtent(const float* corners, int face);

}  // namespace kvr
