#pragma once

#include "pressure/component_make_up.hpp"
#include "run/records/simulation.hpp"

namespace kvr {

/// What the lines of a step tell of the flow of components through faces, and of what they leave in the cells
/// that they cross. A face is told where at least a quarter of the lines' flow through it comes out of nodes
/// that are no longer than the traced one.
ComponentMakeUp makeUpOfLines(const Simulation& simulation);

}  // namespace kvr
