#include "deck/sections/schedule_groups.hpp"

#include "base/text.hpp"
#include "deck/sections/well_rows.hpp"

#include <algorithm>
#include <array>
#include <string_view>

namespace kvr {

namespace {

constexpr double NotGiven = -1.0;  // of a number that has no value of its own

/// A word in upper case without what stands around it.
std::string wordOf(const std::string& text) {
    return toUpper(trim(text));
}

std::size_t placeOfGroup(const ScheduleStep& step, const std::string& name) {
    const auto found = std::find_if(step.groups.begin(), step.groups.end(),
                                    [&name](const GroupControl& group) { return group.name == name; });
    return static_cast<std::size_t>(found - step.groups.begin());
}

/// The group of the step with this name, made where there is none.
GroupControl& groupOf(const std::string& name, ScheduleStep& step) {
    const std::size_t place = placeOfGroup(step, name);
    std::vector<GroupControl>& groups = step.groups.own();
    if (place == groups.size()) {
        groups.emplace_back();
        groups.back().name = name;
        if (name == FieldGroup) groups.back().parent.clear();
    }
    return groups[place];
}

bool isKnown(const std::string& name, const ScheduleStep& step) {
    return name == FieldGroup || placeOfGroup(step, name) < step.groups.size() ||
           std::any_of(step.wells.begin(), step.wells.end(),
                       [&name](const ScheduleWell& well) { return well.group == name; });
}

/// Every group that a name with a trailing asterisk stands for, otherwise the one with the name.
std::vector<std::string> namedGroups(const SectionReader& reader, const std::string& text,
                                     const ScheduleStep& step) {
    std::vector<std::string> names;
    const std::string name = wellName(text);
    const auto add = [&](const std::string& candidate) {
        if (!candidate.empty() && candidate != FieldGroup &&
            candidate.starts_with(std::string_view(name).substr(0, name.size() - 1)) &&
            std::find(names.begin(), names.end(), candidate) == names.end())
            names.push_back(candidate);
    };
    if (name.ends_with('*')) {
        for (const GroupControl& group : step.groups) add(group.name);
        for (const ScheduleWell& well : step.wells) add(well.group);
    } else if (isKnown(name, step)) {
        names.push_back(name);
    }
    if (names.empty()) warnHere(reader, "WARNING :: NO WELL IS IN GROUP {}, ROW SKIPPED", trim(text));
    return names;
}

/// Whether the way up from `start` comes by `name`.
bool liesBelow(const std::string& start, const std::string& name, const ScheduleStep& step) {
    std::string at = start;
    for (std::size_t n = 0; n <= step.groups.size(); ++n) {
        if (at == name) return true;
        const std::size_t place = placeOfGroup(step, at);
        if (at.empty() || at == FieldGroup || place == step.groups.size()) return false;
        at = step.groups[place].parent;
    }
    return true;
}

/// A rate of a row; one that is left out is no limit.
double limitFrom(const SectionReader& reader, double value, double factor) {
    return value < 0.0 ? NoGroupLimit : rateFrom(reader, value, factor);
}

double shareFrom(double value) {
    return value < 0.0 ? NoGroupLimit : value;
}

struct GuidePhase {
    std::string_view word;
    std::string_view control;
};
constexpr GuidePhase GuidePhases[] = {{"OIL", "orat"}, {"WAT", "wlim"},  {"GAS", "grat"},
                                      {"LIQ", "lrat"}, {"RESV", "resv"}, {"RES", "resv"}};

/// A guide rate of a phase; an injector's or an injecting group's is of what is shared.
GuideRate guideFrom(const SectionReader& reader, double rate, const std::string& phase) {
    GuideRate guide;
    const std::string word = wordOf(phase);
    if (!(rate > 0.0)) {
        if (word == "FORM")
            warnHere(reader,
                     "WARNING :: GUIDE RATES BY A FORMULA ARE NOT USED: SHARES GO BY WHAT WELLS COULD GIVE");
        return guide;
    }
    const auto* const row = std::find_if(std::begin(GuidePhases), std::end(GuidePhases),
                                         [&word](const GuidePhase& p) { return p.word == word; });
    if (row != std::end(GuidePhases)) guide.control = row->control;
    guide.rate = rate * (word == "GAS" ? reader.units->gasRate : reader.units->liquidRate);
    return guide;
}

bool saysNo(const std::string& word) {
    return wordOf(word).starts_with('N');
}

// --- GCONPROD ----------------------------------------------------------------------------------------

struct ProductionItems {
    std::string name, mode = "NONE", follows = "YES", guidePhase;
    double oil = NotGiven, water = NotGiven, gas = NotGiven, liquid = NotGiven, resv = NotGiven;
    double guide = 0.0;
    std::string onOil = "NONE", onWater, onGas, onLiquid;  // what is done where a rate is passed
};

constexpr std::string_view ProductionModes[] = {"NONE", "ORAT", "WRAT", "GRAT", "LRAT", "RESV", "FLD"};

/// What is done where a rate beside the control is passed.
void tellProcedure(const SectionReader& reader, const std::string& group, const std::string& word) {
    if (word.empty() || word == "RATE" || word == "NONE") return;
    warnHere(reader,
             "WARNING :: GROUP {}: {} IS NOT DONE WHERE A RATE IS PASSED, ONLY RATE: THE RATE IS NO LIMIT",
             group, word);
}

GroupProduction productionFrom(const SectionReader& reader, const ProductionItems& row,
                               const std::string& group) {
    const UnitSystem& units = *reader.units;
    const std::string mode = wordOf(row.mode), all = wordOf(row.onOil);
    struct LimitItem {
        std::string_view mode;
        double value;
        double factor;
        std::string procedure;
        double GroupProduction::*limit;
    };
    const LimitItem items[] = {
        {"ORAT", row.oil, units.liquidRate, all, &GroupProduction::oil},
        {"WRAT", row.water, units.liquidRate, wordOf(row.onWater), &GroupProduction::water},
        {"GRAT", row.gas, units.gasRate, wordOf(row.onGas), &GroupProduction::gas},
        {"LRAT", row.liquid, units.liquidRate, wordOf(row.onLiquid), &GroupProduction::liquid},
        {"RESV", row.resv, units.liquidRate, "NONE", &GroupProduction::resv},
    };
    GroupProduction production;
    for (const LimitItem& item : items) {
        const std::string& procedure = item.procedure.empty() ? all : item.procedure;
        const bool isTarget = mode == item.mode;
        if (isTarget && item.value < 0.0)
            warnHere(reader, "WARNING :: GROUP {}: {} WITHOUT A RATE", group, mode);
        if (!isTarget && item.value >= 0.0) tellProcedure(reader, group, procedure);
        if (isTarget || procedure == "RATE")
            production.*item.limit = limitFrom(reader, item.value, item.factor);
    }
    if (std::find(std::begin(ProductionModes), std::end(ProductionModes), mode) == std::end(ProductionModes))
        warnHere(reader, "WARNING :: GROUP {}: CONTROL {} IS NOT KNOWN, THE GROUP HAS NO TARGET", group,
                 mode);
    production.followsParent = !saysNo(row.follows);
    production.guide = guideFrom(reader, row.guide, row.guidePhase);
    return production;
}

// --- GCONINJE ----------------------------------------------------------------------------------------

struct InjectionItems {
    std::string name, phase, mode = "NONE", follows = "YES", guidePhase, reinjectionSource, voidageSource;
    double surface = NotGiven, resv = NotGiven, reinjection = NotGiven, voidage = NotGiven;
    double guide = 0.0;
};

struct InjectionMode {
    std::string_view word;
    double InjectionItems::*item;  // null: the group has no target of its own
};
constexpr InjectionMode InjectionModes[] = {{"NONE", nullptr},
                                            {"FLD", nullptr},
                                            {"RATE", &InjectionItems::surface},
                                            {"RESV", &InjectionItems::resv},
                                            {"REIN", &InjectionItems::reinjection},
                                            {"VREP", &InjectionItems::voidage}};

/// The place of a phase among those of GroupControl; their number where it is none.
std::size_t injectedPhase(const std::string& word) {
    const std::string letter = wordOf(word).substr(0, 1);
    const auto* const found = std::find_if(
        InjectedPhases.begin(), InjectedPhases.end(),
        [&letter](const char* phase) { return letter == toUpper(std::string_view(phase).substr(0, 1)); });
    return static_cast<std::size_t>(found - InjectedPhases.begin());
}

void tellInjectionMode(const SectionReader& reader, const InjectionItems& row, const std::string& group) {
    const std::string mode = wordOf(row.mode);
    const auto* const known = std::find_if(std::begin(InjectionModes), std::end(InjectionModes),
                                           [&mode](const InjectionMode& m) { return m.word == mode; });
    if (known == std::end(InjectionModes))
        warnHere(reader, "WARNING :: GROUP {}: CONTROL {} IS NOT KNOWN, THE GROUP HAS NO TARGET", group,
                 mode);
    else if (known->item != nullptr && row.*known->item < 0.0)
        warnHere(reader, "WARNING :: GROUP {}: {} WITHOUT A RATE", group, mode);
}

GroupInjection injectionFrom(const SectionReader& reader, const InjectionItems& row, bool isGas) {
    const UnitSystem& units = *reader.units;
    GroupInjection injection;
    injection.surface = limitFrom(reader, row.surface, isGas ? units.gasRate : units.liquidRate);
    injection.resv = limitFrom(reader, row.resv, units.liquidRate);
    injection.reinjection = shareFrom(row.reinjection);
    injection.voidage = shareFrom(row.voidage);
    injection.followsParent = !saysNo(row.follows);
    injection.guide = guideFrom(reader, row.guide, row.guidePhase);
    injection.guide.control.clear();
    injection.reinjectionSource = wellName(row.reinjectionSource);
    injection.voidageSource = wellName(row.voidageSource);
    return injection;
}

}  // namespace

void readGruptree(SectionReader& reader, ScheduleRecords& records) {
    announce(reader, reader.keyword);
    while (nextRow(reader)) {
        std::string child, parent = FieldGroup;
        readRow(reader, std::array<ListTarget, 2>{&child, &parent});
        child = wellName(child);
        parent = wellName(parent);
        ScheduleStep& step = presentStep(records);
        if (child.empty() || child == FieldGroup || liesBelow(parent, child, step)) {
            warnHere(reader, "WARNING :: GROUP {} CANNOT LIE BELOW {}, ROW SKIPPED", child, parent);
            continue;
        }
        groupOf(parent, step);
        groupOf(child, step).parent = parent;
    }
}

void readGconprod(SectionReader& reader, ScheduleRecords& records) {
    announce(reader, reader.keyword);
    while (nextRow(reader)) {
        ProductionItems row;
        readRow(reader,
                std::array<ListTarget, 14>{&row.name, &row.mode, &row.oil, &row.water, &row.gas, &row.liquid,
                                           &row.onOil, &row.follows, &row.guide, &row.guidePhase,
                                           &row.onWater, &row.onGas, &row.onLiquid, &row.resv});
        ScheduleStep& step = presentStep(records);
        for (const std::string& name : namedGroups(reader, row.name, step))
            groupOf(name, step).production = productionFrom(reader, row, name);
    }
}

void readGconinje(SectionReader& reader, ScheduleRecords& records) {
    announce(reader, reader.keyword);
    while (nextRow(reader)) {
        InjectionItems row;
        readRow(reader,
                std::array<ListTarget, 12>{&row.name, &row.phase, &row.mode, &row.surface, &row.resv,
                                           &row.reinjection, &row.voidage, &row.follows, &row.guide,
                                           &row.guidePhase, &row.reinjectionSource, &row.voidageSource});
        const std::size_t phase = injectedPhase(row.phase);
        if (phase == InjectedPhases.size()) {
            warnHere(reader, "WARNING :: PHASE {} IS NOT WATER, GAS OR OIL, ROW SKIPPED", trim(row.phase));
            continue;
        }
        ScheduleStep& step = presentStep(records);
        const bool isGas = std::string_view(InjectedPhases[phase]) == "gas";
        for (const std::string& name : namedGroups(reader, row.name, step)) {
            tellInjectionMode(reader, row, name);
            groupOf(name, step).injection[phase] = injectionFrom(reader, row, isGas);
        }
    }
}

void readWgrupcon(SectionReader& reader, ScheduleRecords& records) {
    announce(reader, reader.keyword);
    while (nextWellRow(reader, presentStep(records))) {
        std::string name, under = "YES", phase;
        double rate = NotGiven, factor = 1.0;
        readRow(reader, std::array<ListTarget, 5>{&name, &under, &rate, &phase, &factor});
        const GuideRate guide = guideFrom(reader, rate * factor, phase);
        forNamedWells(reader, presentStep(records), name, [&](ScheduleWell& well) {
            well.underGroups = !saysNo(under);
            well.guide = guide;
        });
    }
}

double onShareOf(const ScheduleRecords& records, const ScheduleStep& step, const std::string& group) {
    double share = 1.0;
    std::string name = group;
    // No group lies below itself, see readGruptree.
    while (!name.empty() && name != FieldGroup) {
        if (const auto own = records.onShares.find(name); own != records.onShares.end()) share *= own->second;
        const std::size_t place = placeOfGroup(step, name);
        name = place < step.groups.size() ? step.groups[place].parent : FieldGroup;
    }
    return share;
}

void readGefac(SectionReader& reader, ScheduleRecords& records) {
    announce(reader, reader.keyword);
    while (nextRow(reader)) {
        const auto [name, factor] = readEfficiency(reader);
        ScheduleStep& step = presentStep(records);
        std::vector<double> before;
        for (const ScheduleWell& well : step.wells) before.push_back(onShareOf(records, step, well.group));
        for (const std::string& group : namedGroups(reader, name, step)) records.onShares[group] = factor;
        for (std::size_t w = 0; w < before.size(); ++w)
            if (const double now = onShareOf(records, step, step.wells[w].group); now != before[w])
                step.wells.own(w).efficiency *= now / before[w];
    }
}

}  // namespace kvr
