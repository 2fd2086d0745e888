#pragma once

#include "base/console.hpp"
#include "deck/schedule.hpp"
#include "pressure/wells/wells.hpp"

namespace kvr {

/// The groups of a schedule step, each before its parent and the field last, and the group of each of its
/// wells; none where no group has a target. A well that the deck leaves to its groups, none of which has a
/// target for it, is told.
void assignGroups(const Console& console, const ScheduleStep& step, WellRecord& wells);

/// Whether a group is `above` or lies below it; `group` may be NoGroup.
bool belongsTo(int group, int above, const WellRecord& wells);

/// The place of a group by its name, of `otherwise` where the name is blank or not known.
int groupNamed(const std::string& name, int otherwise, const WellRecord& wells);

}  // namespace kvr
