#pragma once

#include "pressure/solvers/linear_system.hpp"

#include <string>
#include <vector>

namespace kvr::bench {

struct NamedSystem {
    std::string name;
    LinearSystem system;
};

/// The pressure system of the first step of the deck in `folder` (ECLIPSE.DATA), as the program builds it.
NamedSystem assembledSystem(const std::string& folder);

/// Variants of a layered field with five wells, 66 thousand cells each: lognormal, strongly anisotropic,
/// homogeneous, one-sided multipliers; on request those with 1.1 million cells too.
std::vector<NamedSystem> generatedSystems(bool large);

}  // namespace kvr::bench
