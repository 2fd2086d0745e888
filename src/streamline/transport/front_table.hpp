#pragma once

#include "streamline/transport/component_node.hpp"

#include <vector>

namespace kvr {

/// What has gone by a position since the stream came in, per reservoir volume of it, and what stands there.
struct FrontPosition {
    double place = 0.0;    // pore volume behind it, per reservoir volume that came in
    double volume = 0.0;   // reservoir volume
    ComponentFlow passed;  // amounts
    double Sw = 0.0, Sg = 0.0;
};

/// Displacement of a uniform mixture by a steady stream, at one pressure, along a line: compositions keep
/// their places over time (Helfferich, SPE J. 21, 1981), so that one table tells them for all.
struct ComponentFronts {
    double pressure = 0.0;                 // psia
    ComponentFlow stream, initial;         // what comes in, a reservoir volume; what was there, a pore volume
    std::vector<FrontPosition> positions;  // from the inlet; the last one ahead of all fronts
};

}  // namespace kvr
