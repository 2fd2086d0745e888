#include "pressure/wells/well_groups.hpp"

#include "base/messages.hpp"

#include <algorithm>
#include <cmath>
#include <iterator>

namespace kvr {

namespace {

bool limitsAny(const GroupProduction& p) {
    const double limits[] = {p.oil, p.water, p.gas, p.liquid, p.resv};
    return std::any_of(std::begin(limits), std::end(limits),
                       [](double limit) { return std::isfinite(limit); });
}

bool limitsAny(const GroupInjection& i) {
    const double limits[] = {i.surface, i.resv, i.reinjection, i.voidage};
    return std::any_of(std::begin(limits), std::end(limits),
                       [](double limit) { return std::isfinite(limit); });
}

bool limitsAny(const GroupControl& group) {
    return limitsAny(group.production) ||
           std::any_of(group.injection.begin(), group.injection.end(),
                       [](const GroupInjection& injection) { return limitsAny(injection); });
}

/// Whether a group has a target for wells like this one.
bool limitsLike(const Well& well, const GroupControl& group) {
    if (!isInjector(well)) return limitsAny(group.production);
    for (std::size_t phase = 0; phase < InjectedPhases.size(); ++phase)
        if (well.InjectFluid == InjectedPhases[phase]) return limitsAny(group.injection[phase]);
    return false;
}

GroupControl plainGroup(const std::string& name) {
    GroupControl group;
    group.name = name;
    if (name == FieldGroup) group.parent.clear();
    return group;
}

std::size_t placeOf(const std::string& name, const std::vector<GroupControl>& list) {
    const auto found = std::find_if(list.begin(), list.end(),
                                    [&name](const GroupControl& group) { return group.name == name; });
    return static_cast<std::size_t>(found - list.begin());
}

const std::string& groupNameOf(const ScheduleWell& well) {
    static const std::string field = FieldGroup;
    return well.group.empty() ? field : well.group;
}

/// Every group that the step names, those of its wells and the field.
std::vector<GroupControl> allGroups(const ScheduleStep& step) {
    std::vector<GroupControl> list(step.groups.begin(), step.groups.end());
    const auto add = [&list](const std::string& name) {
        if (placeOf(name, list) == list.size()) list.push_back(plainGroup(name));
    };
    for (const ScheduleWell& well : step.wells) add(groupNameOf(well));
    const std::size_t named = list.size();
    for (std::size_t g = 0; g < named; ++g)
        if (const std::string parent = list[g].parent; !parent.empty()) add(parent);
    add(FieldGroup);
    return list;
}

int depthOf(const GroupControl& group, const std::vector<GroupControl>& list) {
    int depth = 0;
    for (const GroupControl* at = &group; !at->parent.empty(); ++depth) at = &list[placeOf(at->parent, list)];
    return depth;
}

void tellLonelyWells(const Console& console, const ScheduleStep& step, const WellRecord& wells) {
    for (std::size_t w = 0; w < wells.wells.size(); ++w) {
        if (!step.wells[w].waitsForGroup || wells.wells[w].shut) continue;
        bool isLimited = false;
        for (int g = wells.wells[w].group; g != NoGroup; g = wells.groups[static_cast<std::size_t>(g)].parent)
            isLimited =
                isLimited || limitsLike(wells.wells[w], wells.groups[static_cast<std::size_t>(g)].given);
        if (!isLimited)
            warn(console, "WARNING :: Well {} is under GRUP, but no group has a target for it",
                 wells.wells[w].WellName);
    }
}

}  // namespace

void assignGroups(const Console& console, const ScheduleStep& step, WellRecord& wells) {
    wells.groups.clear();
    if (!std::any_of(step.groups.begin(), step.groups.end(),
                     [](const GroupControl& group) { return limitsAny(group); }))
        return tellLonelyWells(console, step, wells);
    std::vector<GroupControl> list = allGroups(step);
    const std::vector<GroupControl> found = list;
    std::stable_sort(list.begin(), list.end(), [&found](const GroupControl& a, const GroupControl& b) {
        return depthOf(a, found) > depthOf(b, found);
    });
    for (const GroupControl& group : list) {
        const int parent = group.parent.empty() ? NoGroup : static_cast<int>(placeOf(group.parent, list));
        wells.groups.push_back({group, parent});
    }
    for (std::size_t w = 0; w < wells.wells.size(); ++w) {
        const ScheduleWell& source = step.wells[w];
        Well& well = wells.wells[w];
        well.group = static_cast<int>(placeOf(groupNameOf(source), list));
        well.underGroups = source.underGroups && source.holdsLimits;
        well.guide = source.guide;
    }
    tellLonelyWells(console, step, wells);
}

bool belongsTo(int group, int above, const WellRecord& wells) {
    for (int g = group; g != NoGroup; g = wells.groups[static_cast<std::size_t>(g)].parent)
        if (g == above) return true;
    return false;
}

int groupNamed(const std::string& name, int otherwise, const WellRecord& wells) {
    for (std::size_t g = 0; g < wells.groups.size(); ++g)
        if (wells.groups[g].given.name == name) return static_cast<int>(g);
    return otherwise;
}

}  // namespace kvr
