#pragma once

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>

namespace kvr {

inline constexpr double NoCrossing = 1e30;       // time of a face that is never reached
inline constexpr double SameSignMin = 1e-10;     // least product of entry and face velocity of a crossing
inline constexpr double UniformLimit = 1e-10;    // gradients smaller than this count as none
inline constexpr double LargestExponent = 50.0;  // a*t beyond it: the exponential is not trusted
inline constexpr double FaceClearance = 1e-10;   // least distance kept from faces not left by

/// One cell as tracing sees it: velocity linear along each axis between its two faces. In the reference
/// cube lengths are 1 and velocities the rates through the faces.
struct CrossingInput {
    std::array<double, 3> entry;     // entry point, 0..length
    std::array<double, 3> velocity;  // at the entry point
    std::array<double, 3> gradient;  // of each velocity along its own axis
    std::array<double, 6> face;      // velocities at faces 1..6
    std::array<double, 3> length;
    std::uint8_t exitFlags;  // bit (face - 1)
};

struct Crossing {
    int exitFace = 0;  // 0: none reached, or a displacement that would overflow
    double time = NoCrossing;
    std::array<double, 3> point{};
    std::array<double, 3> displacement{};
};

/// Time from the entry point to a face (Pollock 1988).
///   t = ln(vf/v)/a,  or  d/|v| where |a| < UniformLimit
/// NoCrossing where the flow does not run through the face or the distance d is not positive.
inline double timeToFace(double a, double v, double vf, double d) {
    if (vf * v < SameSignMin || d <= 0.0) return NoCrossing;
    return std::abs(a) >= UniformLimit ? std::log(vf / v) / a : d / std::abs(v);
}

/// Finds the earliest exit through a flagged face; of equal times the lowest face number wins. On an axis
/// the flow can only reach the face that it runs towards.
inline void findExit(const CrossingInput& in, Crossing& out) {
    for (std::size_t axis = 0; axis < 3; ++axis) {
        const double v = in.velocity[axis];
        const std::size_t side = v > 0.0 ? 1 : 0;
        const std::size_t face = 2 * axis + side;
        const double d = side == 1 ? in.length[axis] - in.entry[axis] : in.entry[axis];
        if ((in.exitFlags >> face & 1U) == 0) continue;
        const double t = timeToFace(in.gradient[axis], v, in.face[face], d);
        if (t < out.time) {
            out.time = t;
            out.exitFace = static_cast<int>(face) + 1;
        }
    }
}

/// The way along an axis in a time that does not end at its face.
inline double displacementAlong(double a, double v, double time) {
    return std::abs(a) < UniformLimit ? time * v : (std::exp(a * time) - 1.0) * v / a;
}

/// Crosses a cell to its earliest exit; see findExit. The point stays FaceClearance off the faces, except
/// that it lies exactly on the exit face.
inline Crossing crossCell(const CrossingInput& in) {
    Crossing out;
    findExit(in, out);
    if (out.exitFace == 0) return out;
    for (const double a : in.gradient)
        if (a * out.time > LargestExponent) {
            out.exitFace = 0;
            return out;
        }
    const auto exitAxis = static_cast<std::size_t>(out.exitFace - 1) / 2;
    for (std::size_t axis = 0; axis < 3; ++axis) {
        if (axis == exitAxis) {
            out.point[axis] = out.exitFace % 2 == 0 ? in.length[axis] : 0.0;
            out.displacement[axis] = out.point[axis] - in.entry[axis];
            continue;
        }
        out.displacement[axis] = displacementAlong(in.gradient[axis], in.velocity[axis], out.time);
        const double x = in.entry[axis] + out.displacement[axis];
        out.point[axis] = std::max(std::min(x, in.length[axis] - FaceClearance), FaceClearance);
    }
    return out;
}

}  // namespace kvr
