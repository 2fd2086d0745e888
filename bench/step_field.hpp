#pragma once

#include "run/records/simulation.hpp"

#include <memory>
#include <string>

namespace kvr::bench {

/// The run of the deck in `folder` (ECLIPSE.DATA) up to its first pressure step of 50 days, with the lines of
/// that step launched and the field that they are traced in built; the program's own output goes to the
/// folder and the standard output.
std::unique_ptr<Simulation> firstStepField(const std::string& folder);

/// Last part of a folder's path: what its rows are called.
std::string caseName(const std::string& folder);

}  // namespace kvr::bench
