#pragma once

#include "run/records/step_record.hpp"

#include <string>
#include <vector>

namespace kvr {

/// What the run of a match starts from, again and again.
struct MatchStart {
    StepLevel level;
    std::vector<std::string> solverPhaseName;
};

}  // namespace kvr
