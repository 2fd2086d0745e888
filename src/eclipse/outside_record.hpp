#pragma once

#include "eclipse/well_response.hpp"

namespace kvr {

/// What the stages that drive an outside simulator keep from call to call.
struct OutsideRun {
    bool modelRead = false;    // grid, activity, connections and step 0 are those of the outside run
    SummaryResponse response;  // of the last run
};

}  // namespace kvr
