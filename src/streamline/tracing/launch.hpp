#pragma once

#include "base/console.hpp"
#include "model/connections.hpp"
#include "model/grid.hpp"
#include "pressure/records/velocity_field.hpp"
#include "pressure/wells/wells.hpp"
#include "streamline/tracing/launch_plan.hpp"

#include <string_view>

namespace kvr {

/// Count stage: how many lines start through which face of which completion. Every line carries the same
/// flow, so a face gets its share of the completion's rate over the rate of one line, rounded:
///   count(f) = nearest( F(f) r / sum(F) / q ),  q = side rate / RequestedLines
/// F(f) is the size of the flux through face f of the completion cell, 0 where the neighbour is tagged; r
/// is the completion's reservoir rate. Faces count whichever way they flow, and a face without a neighbour
/// keeps its flux; both are deliberate. Sets `counts`, `wellCounts` (both sides), ActiveLines, LineFlux
/// and, where one side has no wells, LaunchMode. Speaks the mode to the log and the result to both; a
/// completion of the launching side without flux is warned of in the log. More lines than the program can
/// hold stop it.
void countLines(const Console& console, const WellRecord& wells, const ConnectionTable& connections,
                const VelocityField& velocity, const CellTags& tags, LaunchPlan& plan);

/// How start points are laid on a face.
struct PlacementRule {
    std::string_view dimensionality = "xyz_3d";  // this word: random points, otherwise regular ones
    bool referenceCube = true;                   // points in 0..1, otherwise in ft along the cell
};

/// Placement stage: start cell, face, point and well of every line, lines numbered well by well,
/// completion by completion, face by face.
void placeLines(const GridModel& grid, const WellRecord& wells, const PlacementRule& rule, LaunchPlan& plan);

/// Forgets counts and starts at the end of a step; LaunchMode, LineFlux and the generator live on.
void clearLaunch(LaunchPlan& plan);

}  // namespace kvr
