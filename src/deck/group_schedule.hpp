#pragma once

#include <array>
#include <cstddef>
#include <limits>
#include <string>

namespace kvr {

/// A rate or a share that the deck does not limit.
inline constexpr double NoGroupLimit = std::numeric_limits<double>::infinity();

/// The group above all others.
inline constexpr const char* FieldGroup = "FIELD";

/// A share of a group's rate that the deck gives, in amounts of a phase; a rate of 0 is none: the share
/// follows what the wells could give.
struct GuideRate {
    double rate = 0.0;    // internal volume a day
    std::string control;  // "orat", "wlim", "grat", "lrat" or "resv"; blank: of whatever is shared
};

/// GCONPROD: what the producers of a group give together at most. Internal volume a day.
struct GroupProduction {
    double oil = NoGroupLimit;
    double water = NoGroupLimit;
    double gas = NoGroupLimit;
    double liquid = NoGroupLimit;
    double resv = NoGroupLimit;
    bool followsParent = true;  // rates of the groups above are shared over it, too
    GuideRate guide;
};

/// GCONINJE: what the injectors of a group bring of one phase together at most.
struct GroupInjection {
    double surface = NoGroupLimit;      // internal volume a day
    double resv = NoGroupLimit;         // rb/day
    double reinjection = NoGroupLimit;  // share of the phase that the source produces
    double voidage =
        NoGroupLimit;  // share of the reservoir volume that the source produces, all phases' of it
    bool followsParent = true;
    GuideRate guide;
    std::string reinjectionSource;  // group; blank: itself
    std::string voidageSource;
};

/// Injected phases in the order of GroupControl::injection.
inline constexpr std::array<const char*, 3> InjectedPhases = {"wat", "oil", "gas"};

/// A group and what holds for it.
struct GroupControl {
    std::string name;
    std::string parent = FieldGroup;  // blank of the field itself
    GroupProduction production;
    std::array<GroupInjection, InjectedPhases.size()> injection;
};

}  // namespace kvr
