#pragma once

#include "base/console.hpp"
#include "base/units.hpp"
#include "deck/schedule.hpp"
#include "pressure/component_stage.hpp"

#include <span>

namespace kvr {

/// Streams of the wells in force by WELLSTRE and WINJGAS. A well that injects gas or oil without a known
/// stream, or with one that has none of it at the surface, stops the run.
void takeStreams(const Console& console, const UnitSystem& units, const SurfaceFluid& surface,
                 const Schedule& schedule, const WellRecord& wells, std::vector<WellMixture>& mixtures);

/// Surface yields of all connections from the cells as they stand: a producer's by one flash at the surface
/// of all that its connections let through, an injector's by the volume that its stream takes in the cell. A
/// producer's mixture goes the share `follow` of the way from the last one; where `drawn` tells what the
/// producers drew in a pass before over the same step, that is their mixture.
void yieldWells(const UnitSystem& units, const SurfaceFluid& surface, const ComponentStage& stage,
                const CellState& state, double follow, std::span<const DrawnMixture> drawn,
                std::vector<WellMixture>& mixtures, WellRecord& wells);

/// What the producers drew on average over a step of `dt` days.
void takeDrawn(double dt, int count, const std::vector<ComponentSource>& sources,
               const std::vector<SourceTotals>& moved, const WellRecord& wells,
               std::vector<DrawnMixture>& drawn);

/// What the connections take and bring at the rates of the pressure that has been found.
void takeSources(const WellRecord& wells, const std::vector<WellMixture>& mixtures,
                 std::vector<ComponentSource>& sources);

/// Rates of the wells from what has really moved in `dt` days, by one flash of each well's stream; adds to
/// the totals of the wells.
void rateWells(const UnitSystem& units, const SurfaceFluid& surface, double dt,
               const std::vector<ComponentSource>& sources, const std::vector<SourceTotals>& moved,
               std::vector<WellMixture>& mixtures, WellRecord& wells);

}  // namespace kvr
