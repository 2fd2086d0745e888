#include "pressure/wells/group_targets.hpp"

#include "fluid/black_oil.hpp"
#include "pressure/wells/rate_limits.hpp"
#include "pressure/wells/well_groups.hpp"
#include "pressure/wells/well_rates.hpp"
#include "pressure/wells/well_target.hpp"

#include <algorithm>
#include <cmath>
#include <string_view>

namespace kvr {

namespace {

constexpr double Trickle = 0.01;  // psi of drawdown that a well within a step is left at least

constexpr std::string_view PhaseControls[] = {"wlim", "orat", "grat"};  // in the order of InjectedPhases

constexpr int Production = -1;  // in the place of an injected phase

/// A rate of a group and the same of a well's share.
struct ProductionRow {
    std::string_view control;
    double GroupProduction::*limit;
    double GroupShare::*share;
};
constexpr ProductionRow ProductionRows[] = {{"orat", &GroupProduction::oil, &GroupShare::oil},
                                            {"wlim", &GroupProduction::water, &GroupShare::water},
                                            {"grat", &GroupProduction::gas, &GroupShare::gas},
                                            {"lrat", &GroupProduction::liquid, &GroupShare::liquid},
                                            {"resv", &GroupProduction::resv, &GroupShare::resv}};

/// What is shared: a rate by its control word, over producers or over the injectors of a phase.
struct Shared {
    std::string_view control;
    double GroupShare::*share;
    int phase = Production;  // or the place among InjectedPhases
};

/// Wells while rates are shared, with the bottom-hole pressures that their limits allow so far.
struct Sharing {
    ShareTime time;
    const UnitSystem& units;
    const FluidTables& tables;
    const CellState& state;
    double averagePressure;
    WellRecord& wells;
    std::vector<double> bound;  // psia, by well
};

WellInflow inflowOf(const Sharing& s, std::size_t w, std::string_view control) {
    return wellInflow(s.units, s.tables, s.state, s.averagePressure, s.wells.wells[w], control);
}

/// What the well gives under its limits so far, and at its pressure limit alone.
double rateNow(const Sharing& s, std::size_t w, std::string_view control) {
    return rateAtBhp(inflowOf(s, w, control), s.bound[w]);
}
double potential(const Sharing& s, std::size_t w, std::string_view control) {
    return rateAtBhp(inflowOf(s, w, control), s.wells.wells[w].BhpLimit);
}

double tighter(const Well& well, double a, double b) {
    return isInjector(well) ? std::min(a, b) : std::max(a, b);
}

/// What the deck holds an injector at, groups aside; "bhp" where it gives no rate.
RateLimit ownInjection(const Well& well) {
    if (well.givenControl == "resv") return {"resv", well.targetResv};
    const double rate = well.InjectFluid == "gas"   ? well.targetGas
                        : well.InjectFluid == "oil" ? well.targetOil
                                                    : well.targetWater;
    const bool holds = well.givenControl == "rate" || well.holdsLimits;
    return holds && rate > 0.0 ? RateLimit{"rate", rate} : RateLimit{"bhp", 0.0};
}

RateLimit ownLimit(const Sharing& s, const Well& well) {
    if (isInjector(well)) return ownInjection(well);
    return tightestLimit(s.units, s.tables, s.state, s.averagePressure, well).value_or(RateLimit{"bhp", 0.0});
}

/// The pressure of the well's own limits, no group's.
double ownBound(const Sharing& s, std::size_t w) {
    const Well& well = s.wells.wells[w];
    const RateLimit own = ownLimit(s, well);
    if (own.control == "bhp") return well.BhpLimit;
    const WellInflow inflow = inflowOf(s, w, own.control);
    if (inflow.starts.empty()) return well.BhpLimit;
    return tighter(well, well.BhpLimit, bhpOfRate(inflow, std::abs(own.target)));
}

void begin(Sharing& s) {
    for (std::size_t w = 0; w < s.wells.wells.size(); ++w) {
        Well& well = s.wells.wells[w];
        well.share = {};
        if (s.time == ShareTime::StepBegin && well.shutByGroup) well.shut = well.shutByGroup = false;
        s.bound.push_back(well.shut ? 0.0 : ownBound(s, w));
    }
}

bool isOfKind(const Well& well, int phase) {
    if (well.shut || isInjector(well) != (phase != Production)) return false;
    return phase == Production || well.InjectFluid == InjectedPhases[static_cast<std::size_t>(phase)];
}

const GroupControl& groupAt(const Sharing& s, int group) {
    return s.wells.groups[static_cast<std::size_t>(group)].given;
}
bool followsParent(const GroupControl& group, int phase) {
    return phase == Production ? group.production.followsParent
                               : group.injection[static_cast<std::size_t>(phase)].followsParent;
}
const GuideRate& guideOf(const GroupControl& group, int phase) {
    return phase == Production ? group.production.guide
                               : group.injection[static_cast<std::size_t>(phase)].guide;
}

/// Whether rates of the group `above` reach the well.
bool follows(const Sharing& s, const Well& well, int above, int phase) {
    if (!well.underGroups) return false;
    for (int g = well.group; g != above; g = s.wells.groups[static_cast<std::size_t>(g)].parent)
        if (!followsParent(groupAt(s, g), phase)) return false;
    return true;
}

/// The uppermost group with a guide of its own between a well and `above`; `above` itself where there is
/// none.
int guidingGroup(const Sharing& s, const Well& well, int above, int phase) {
    int found = above;
    for (int g = well.group; g != above; g = s.wells.groups[static_cast<std::size_t>(g)].parent)
        if (guideOf(groupAt(s, g), phase).rate > 0.0) found = g;
    return found;
}

/// A guide in amounts of what is shared: one of another phase goes with what the wells could give of both.
double guideFor(const Sharing& s, const GuideRate& guide, const Shared& shared,
                std::span<const std::size_t> wells) {
    double could = 0.0, named = 0.0;
    for (const std::size_t w : wells) {
        could += potential(s, w, shared.control);
        if (guide.rate > 0.0 && !guide.control.empty()) named += potential(s, w, guide.control);
    }
    if (!(guide.rate > 0.0)) return could;
    if (guide.control.empty() || guide.control == shared.control) return guide.rate;
    return named > 0.0 ? guide.rate * could / named : 0.0;
}

/// Bottom-hole pressure of a rate; below a trickle the pressure of that.
double bhpForShare(const Sharing& s, const WellInflow& inflow, double rate) {
    const double rest = bhpOfRate(inflow, 0.0);
    const double bhp = bhpOfRate(inflow, rate);
    if (s.time == ShareTime::StepBegin && !(rate > 0.0)) return rest;
    return inflow.s * std::max(inflow.s * bhp, inflow.s * rest + Trickle);
}

void limitWell(const Shared& shared, double rate, std::size_t w, Sharing& s) {
    Well& well = s.wells.wells[w];
    const WellInflow inflow = inflowOf(s, w, shared.control);
    if (inflow.starts.empty()) return;
    const double bhp = bhpForShare(s, inflow, rate);
    s.bound[w] = tighter(well, s.bound[w], bhp);
    double& share = well.share.*shared.share;
    share = std::min(share, rateAtBhp(inflow, bhp));
}

/// A well, or a group with a guide of its own and its wells.
struct Part {
    int group = NoGroup;
    std::vector<std::size_t> wells;
};

std::vector<Part> partsOf(const Sharing& s, int above, int phase, std::span<const std::size_t> wells) {
    std::vector<Part> parts;
    for (const std::size_t w : wells) {
        const int group = guidingGroup(s, s.wells.wells[w], above, phase);
        const auto same = std::find_if(parts.begin(), parts.end(), [&](const Part& part) {
            return group != above && part.group == group;
        });
        if (same != parts.end())
            same->wells.push_back(w);
        else
            parts.push_back({group == above ? NoGroup : group, {w}});
    }
    return parts;
}

void distribute(int above, const Shared& shared, double total, std::span<const std::size_t> wells,
                Sharing& s) {
    const std::vector<Part> parts = partsOf(s, above, shared.phase, wells);
    std::vector<Sharer> sharers;
    for (const Part& part : parts) {
        const GuideRate& guide = part.group == NoGroup ? s.wells.wells[part.wells.front()].guide
                                                       : guideOf(groupAt(s, part.group), shared.phase);
        Sharer sharer{guideFor(s, guide, shared, part.wells), 0.0};
        for (const std::size_t w : part.wells) sharer.most += rateNow(s, w, shared.control);
        sharers.push_back(sharer);
    }
    const std::vector<double> shares = sharesOf(total, sharers);
    for (std::size_t n = 0; n < parts.size(); ++n) {
        if (!std::isfinite(shares[n])) continue;
        if (parts[n].group == NoGroup)
            limitWell(shared, shares[n], parts[n].wells.front(), s);
        else
            distribute(parts[n].group, shared, shares[n], parts[n].wells, s);
    }
}

void shareOut(int group, const Shared& shared, double total, Sharing& s) {
    if (!std::isfinite(total)) return;
    std::vector<std::size_t> followers;
    for (std::size_t w = 0; w < s.wells.wells.size(); ++w) {
        const Well& well = s.wells.wells[w];
        if (!isOfKind(well, shared.phase) || !belongsTo(well.group, group, s.wells)) continue;
        if (follows(s, well, group, shared.phase))
            followers.push_back(w);
        else
            total -= rateNow(s, w, shared.control);
    }
    distribute(group, shared, std::max(0.0, total), followers, s);
}

/// What the wells of a kind below a group give under their limits.
double sumBelow(const Sharing& s, int group, int phase, std::string_view control) {
    double sum = 0.0;
    for (std::size_t w = 0; w < s.wells.wells.size(); ++w)
        if (isOfKind(s.wells.wells[w], phase) && belongsTo(s.wells.wells[w].group, group, s.wells))
            sum += rateNow(s, w, control);
    return sum;
}

bool hasMixture(const Well& well) {
    return std::any_of(well.connections.begin(), well.connections.end(),
                       [](const WellConnection& connection) {
                           return connection.mixture.isSet || connection.mixture.injectedFactor > 0.0;
                       });
}

/// Gas that the oil of a producer holds in its cells, by what they let through.
double solutionGasAt(const Sharing& s, const Well& well) {
    double oil = 0.0, gas = 0.0;
    for (const WellConnection& connection : well.connections) {
        const double weight =
            openCoefficients(s.units, s.tables, s.state, s.averagePressure, well, connection).surfaceOil;
        oil += weight;
        gas += weight * s.state.Rs[connection.ConnCell];
    }
    return oil > 0.0 ? gas / oil : 0.0;
}

/// Reservoir volume of what the producers below a group give, at the average pressure; of components at that
/// of their cells.
double voidageBelow(const Sharing& s, int group) {
    double sum = 0.0;
    for (std::size_t w = 0; w < s.wells.wells.size(); ++w) {
        const Well& well = s.wells.wells[w];
        if (!isOfKind(well, Production) || !belongsTo(well.group, group, s.wells)) continue;
        if (hasMixture(well))
            sum += rateNow(s, w, "resv");
        else
            sum += reservoirVoidage(pvtAt(s.tables, well.connections.front().ConnCell), s.averagePressure,
                                    solutionGasAt(s, well), rateNow(s, w, "orat"), rateNow(s, w, "wlim"),
                                    rateNow(s, w, "grat"));
    }
    return sum;
}

/// Reservoir volume, at the average pressure, of a surface volume of what the well injects.
double injectedFactorAt(const Sharing& s, std::size_t w) {
    const Well& well = s.wells.wells[w];
    if (hasMixture(well)) {
        const double surface = potential(s, w, "rate");
        return surface > 0.0 ? potential(s, w, "resv") / surface : 0.0;
    }
    const bool isGas = well.InjectFluid == "gas", isOil = well.InjectFluid == "oil";
    return reservoirVoidage(pvtAt(s.tables, well.connections.front().ConnCell), s.averagePressure,
                            isOil ? 1.0 : 0.0, isGas || isOil ? 0.0 : 1.0, isGas ? 1.0 : 0.0);
}

/// Reservoir volume of what the injectors of a phase below a group bring.
double injectedBelow(const Sharing& s, int group, int phase) {
    double sum = 0.0;
    for (std::size_t w = 0; w < s.wells.wells.size(); ++w)
        if (isOfKind(s.wells.wells[w], phase) && belongsTo(s.wells.wells[w].group, group, s.wells))
            sum += rateNow(s, w, "rate") * injectedFactorAt(s, w);
    return sum;
}

/// The surface rate of a reservoir rate of a group, by the first of its injectors of the phase.
double surfaceOf(const Sharing& s, int group, int phase, double resv) {
    for (std::size_t w = 0; w < s.wells.wells.size(); ++w) {
        if (!isOfKind(s.wells.wells[w], phase) || !belongsTo(s.wells.wells[w].group, group, s.wells))
            continue;
        const double factor = injectedFactorAt(s, w);
        return factor > 0.0 ? resv / factor : NoGroupLimit;
    }
    return NoGroupLimit;
}

void limitInjection(int group, std::size_t place, Sharing& s) {
    const GroupInjection& injection = groupAt(s, group).injection[place];
    const int phase = static_cast<int>(place);
    double surface = injection.surface, resv = injection.resv;
    if (std::isfinite(injection.reinjection)) {
        const int source = groupNamed(injection.reinjectionSource, group, s.wells);
        surface =
            std::min(surface, injection.reinjection * sumBelow(s, source, Production, PhaseControls[place]));
    }
    if (std::isfinite(injection.voidage)) {
        const int source = groupNamed(injection.voidageSource, group, s.wells);
        double left = injection.voidage * voidageBelow(s, source);
        for (int other = 0; other < static_cast<int>(InjectedPhases.size()); ++other)
            if (other != phase) left -= injectedBelow(s, group, other);
        resv = std::min(resv, std::max(0.0, left));
    }
    if (std::isfinite(resv)) surface = std::min(surface, surfaceOf(s, group, phase, resv));
    shareOut(group, {"rate", &GroupShare::injected, phase}, surface, s);
}

/// Phases that make up for what others leave come behind those.
void limitInjections(int group, Sharing& s) {
    for (const bool byVoidage : {false, true})
        for (std::size_t phase = 0; phase < InjectedPhases.size(); ++phase)
            if (std::isfinite(groupAt(s, group).injection[phase].voidage) == byVoidage)
                limitInjection(group, phase, s);
}

void takeControl(const RateLimit& limit, Well& well, WellRecord& wells) {
    if (limit.control == "bhp") {
        if (isRateControlled(well)) --wells.RateWellCount;
        well.WellControl = well.deckControl = "bhp";
        well.Bhp = well.BhpLimit;
        well.TargetRate = 0.0;
        return;
    }
    // What the well gives against its target stays as it was found, as long as the control does.
    if (limit.control == well.deckControl)
        well.TargetRate = limit.target;
    else
        setRateControl(limit, well);
}

RateLimit injectionLimit(const Sharing& s, const Well& well) {
    const RateLimit own = ownInjection(well);
    if (!std::isfinite(well.share.injected)) return own;
    if (own.control == "rate") return {"rate", std::min(own.target, well.share.injected)};
    if (own.control == "bhp") return {"rate", well.share.injected};
    const WellInflow inflow = wellInflow(s.units, s.tables, s.state, s.averagePressure, well, "resv");
    const WellInflow surface = wellInflow(s.units, s.tables, s.state, s.averagePressure, well, "rate");
    if (inflow.starts.empty() || rateAtBhp(surface, bhpOfRate(inflow, own.target)) <= well.share.injected)
        return own;
    return {"rate", well.share.injected};
}

/// The limit that the well has been under, where it still is one, with its new rate; otherwise the tightest.
RateLimit productionLimit(const Sharing& s, const Well& well) {
    if (const auto held = rateLimit(well, well.deckControl); held.has_value()) return *held;
    return tightestLimit(s.units, s.tables, s.state, s.averagePressure, well).value_or(RateLimit{"bhp", 0.0});
}

void holdShares(Sharing& s) {
    for (Well& well : s.wells.wells) {
        if (well.shut || !well.underGroups) continue;
        const RateLimit limit = isInjector(well) ? injectionLimit(s, well) : productionLimit(s, well);
        if (limit.control != "bhp" && limit.target == 0.0)
            well.shut = well.shutByGroup = true;
        else
            takeControl(limit, well, s.wells);
    }
}

}  // namespace

std::vector<double> sharesOf(double total, std::span<const Sharer> sharers) {
    std::vector<double> shares(sharers.size(), NoGroupLimit);
    std::vector<bool> isFull(sharers.size(), false);
    for (bool found = true; found;) {
        found = false;
        double left = total, guides = 0.0;
        for (std::size_t n = 0; n < sharers.size(); ++n) {
            if (isFull[n])
                left -= sharers[n].most;
            else
                guides += sharers[n].guide;
        }
        const double each = guides > 0.0 ? std::max(0.0, left) / guides : NoGroupLimit;
        for (std::size_t n = 0; n < sharers.size(); ++n) {
            if (isFull[n]) continue;
            shares[n] = sharers[n].guide > 0.0 ? each * sharers[n].guide : NoGroupLimit;
            if (shares[n] < sharers[n].most) continue;
            shares[n] = NoGroupLimit;
            isFull[n] = found = true;
        }
    }
    return shares;
}

void shareGroupTargets(ShareTime time, const UnitSystem& units, const FluidTables& tables,
                       const CellState& state, double averagePressure, WellRecord& wells) {
    if (wells.groups.empty()) return;
    Sharing s{time, units, tables, state, averagePressure, wells, {}};
    begin(s);
    const int groups = static_cast<int>(wells.groups.size());
    for (int g = 0; g < groups; ++g)
        for (const ProductionRow& row : ProductionRows)
            shareOut(g, {row.control, row.share}, groupAt(s, g).production.*row.limit, s);
    for (int g = 0; g < groups; ++g) limitInjections(g, s);
    holdShares(s);
}

}  // namespace kvr
