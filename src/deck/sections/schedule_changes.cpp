#include "deck/sections/schedule_changes.hpp"

#include "base/text.hpp"
#include "deck/sections/schedule_groups.hpp"
#include "deck/sections/well_rows.hpp"

#include <algorithm>
#include <array>
#include <limits>

namespace kvr {

namespace {

// --- WELOPEN and WPIMULT
// -----------------------------------------------------------------------------------------

constexpr int Defaulted = std::numeric_limits<int>::min();

/// What a row names of a well. Items that are given as 0 or less mean any of them.
struct ConnectionItems {
    int i = Defaulted, j = Defaulted, k = Defaulted;
    int first = Defaulted, last = Defaulted;  // numbers of connections, in the order of the deck
};

/// The row is for the well itself where all of them are left out.
bool namesConnections(const ConnectionItems& row) {
    const int items[] = {row.i, row.j, row.k, row.first, row.last};
    return std::any_of(std::begin(items), std::end(items), [](int item) { return item != Defaulted; });
}

/// The connections of a well one by one, a later row for a cell in place of the earlier.
std::vector<ScheduleCompletion> connectionsOf(const ScheduleWell& well, const ScheduleStep& step) {
    std::vector<ScheduleCompletion> list;
    for (const ScheduleCompletion& row : step.completions) {
        if (row.wellName != well.name) continue;
        const int down = row.k1 <= row.k2 ? 1 : -1;
        for (int n = 0; n <= (row.k2 - row.k1) * down; ++n) {
            ScheduleCompletion one = row;
            one.k1 = one.k2 = row.k1 + n * down;
            const auto same = std::find_if(list.begin(), list.end(), [&one](const ScheduleCompletion& other) {
                return other.i == one.i && other.j == one.j && other.k1 == one.k1;
            });
            if (same == list.end())
                list.push_back(std::move(one));
            else
                *same = std::move(one);
        }
    }
    return list;
}

bool isNamed(const ConnectionItems& row, const ScheduleWell& well, const ScheduleCompletion& connection,
             int number) {
    const int i = connection.i > 0 ? connection.i : well.headI;
    const int j = connection.j > 0 ? connection.j : well.headJ;
    const auto fits = [](int asked, int value) { return asked <= 0 || asked == value; };
    return fits(row.i, i) && fits(row.j, j) && fits(row.k, connection.k1) &&
           (row.first <= 0 || number >= row.first) && (row.last <= 0 || number <= row.last);
}

std::string itemText(int item) {
    return item > 0 ? fmt::format("{}", item) : "ANY";
}

/// Keeps the connections of a well that a row names as `change(connection)` leaves them.
template <class Change>
void changeConnections(const SectionReader& reader, const ConnectionItems& row, const ScheduleWell& well,
                       ScheduleStep& step, const Change& change) {
    int number = 0, found = 0;
    for (ScheduleCompletion& connection : connectionsOf(well, step)) {
        if (!isNamed(row, well, connection, ++number)) continue;
        change(connection);
        connection.place = placeOf(reader);
        keepCompletion(connection, step);
        ++found;
    }
    if (found == 0)
        warnHere(
            reader,
            "WARNING :: WELL {} HAS NO CONNECTION THERE, ROW SKIPPED :: I {} J {} K {}, NUMBERS {} TO {}",
            well.name, itemText(row.i), itemText(row.j), itemText(row.k), itemText(row.first),
            itemText(row.last));
}

// --- WELTARG -----------------------------------------------------------------------------------------

enum class TargetUnit { Liquid, Gas, Pressure };

struct TargetRow {
    std::string_view word;
    double ScheduleWell::*producer;
    TargetUnit unit;
};
constexpr TargetRow Targets[] = {
    {"ORAT", &ScheduleWell::prodOil, TargetUnit::Liquid},
    {"WRAT", &ScheduleWell::prodWater, TargetUnit::Liquid},
    {"GRAT", &ScheduleWell::prodGas, TargetUnit::Gas},
    {"LRAT", &ScheduleWell::prodLiquid, TargetUnit::Liquid},
    {"RESV", &ScheduleWell::prodResv, TargetUnit::Liquid},
    {"BHP", &ScheduleWell::prodBhp, TargetUnit::Pressure},
    {"THP", &ScheduleWell::prodThp, TargetUnit::Pressure},
};

/// The limit of an injector that the word names; null for none that it has.
double* injectorTarget(std::string_view word, ScheduleWell& well) {
    if (word == "BHP") return &well.injBhp;
    if (word == "THP") return &well.injThp;
    if (word == "RESV") return &well.injResv;
    const std::string fluid = toUpper(trim(well.injType).substr(0, 1));
    return word.substr(0, 1) == fluid && word != "GUID" ? &well.injRate : nullptr;
}

double targetValue(const SectionReader& reader, const TargetRow& target, double value, bool isInjector) {
    const UnitSystem& units = *reader.units;
    if (target.unit == TargetUnit::Pressure)
        return pressureFrom(reader, value, isInjector ? DefaultInjectorBhp : DefaultProducerBhp);
    return rateFrom(reader, value, target.unit == TargetUnit::Gas ? units.gasRate : units.liquidRate);
}

void setTarget(const SectionReader& reader, const TargetRow& target, double deckValue, ScheduleWell& well) {
    const double value = targetValue(reader, target, deckValue, well.isInjector);
    double* place = well.isInjector ? injectorTarget(target.word, well) : &(well.*target.producer);
    if (place == nullptr) {
        warnHere(reader, "WARNING :: INJECTOR {} HAS NO TARGET {}, ROW SKIPPED", well.name, target.word);
        return;
    }
    *place = value;
}

/// The target becomes the control; the rate of an injector has one word for all fluids.
void setControl(std::string_view word, ScheduleWell& well) {
    const bool ofPressure = word == "BHP" || word == "THP";
    if (well.isInjector && injectorTarget(word, well) == nullptr) return;
    well.injByReservoirRate = well.isInjector && word == "RESV";
    well.control = well.isInjector && !ofPressure && word != "RESV" ? "RATE" : std::string(word);
    well.waitsForGroup = false;
    well.hasControl = true;
}

// --- WECON -------------------------------------------------------------------------------------------

struct WorkoverWord {
    std::string_view word;
    Workover workover;
};
constexpr WorkoverWord WorkoverWords[] = {{"NONE", Workover::None},
                                          {"CON", Workover::Connection},
                                          {"+CON", Workover::ConnectionsBelow},
                                          {"WELL", Workover::Well}};

Workover workoverOf(const SectionReader& reader, const std::string& word) {
    const std::string upper = toUpper(trim(word));
    for (const WorkoverWord& row : WorkoverWords)
        if (upper == row.word) return row.workover;
    warnHere(reader, "WARNING :: WORKOVER {} IS NONE OF NONE, CON, +CON, WELL; SET TO WELL", word);
    return Workover::Well;
}

/// A limit of 0 or less is none.
double limitOf(double value, double factor) {
    return value > 0.0 ? value * factor : 0.0;
}

}  // namespace

void readWelopen(SectionReader& reader, ScheduleRecords& records) {
    announce(reader, reader.keyword);
    ScheduleStep& step = presentStep(records);
    while (nextWellRow(reader, presentStep(records))) {
        std::string name, status = "OPEN";
        ConnectionItems row;
        readRow(reader,
                std::array<ListTarget, 7>{&name, &status, &row.i, &row.j, &row.k, &row.first, &row.last});
        forNamedWells(reader, step, name, [&](ScheduleWell& well) {
            if (!namesConnections(row)) return setStatus(status, well);
            ++well.connectionOpenings;
            changeConnections(reader, row, well, step,
                              [&](ScheduleCompletion& connection) { connection.status = status; });
        });
    }
}

void readWpimult(SectionReader& reader, ScheduleRecords& records) {
    announce(reader, reader.keyword);
    ScheduleStep& step = presentStep(records);
    while (nextWellRow(reader, presentStep(records))) {
        std::string name;
        double factor = 1.0;
        ConnectionItems row;
        readRow(reader,
                std::array<ListTarget, 7>{&name, &factor, &row.i, &row.j, &row.k, &row.first, &row.last});
        if (!(factor >= 0.0)) {
            warnHere(reader, "WARNING :: MULTIPLIER {} IS BELOW ZERO, SET TO 1", number(factor));
            continue;
        }
        forNamedWells(reader, step, name, [&](const ScheduleWell& well) {
            changeConnections(reader, row, well, step,
                              [&](ScheduleCompletion& connection) { connection.multiplier *= factor; });
        });
    }
}

void readWeltarg(SectionReader& reader, ScheduleRecords& records) {
    announce(reader, reader.keyword);
    const bool controls = reader.keyword == "WELCNTL";
    while (nextWellRow(reader, presentStep(records))) {
        std::string name, word;
        double value = 0.0;
        readRow(reader, std::array<ListTarget, 3>{&name, &word, &value});
        word = toUpper(trim(word));
        const auto* const target = std::find_if(std::begin(Targets), std::end(Targets),
                                                [&word](const TargetRow& row) { return row.word == word; });
        if (target == std::end(Targets)) {
            warnHere(reader, "WARNING :: TARGET {} IS NOT KNOWN, ROW SKIPPED", word);
            continue;
        }
        forNamedWells(reader, presentStep(records), name, [&](ScheduleWell& well) {
            setTarget(reader, *target, value, well);
            if (controls) setControl(target->word, well);
        });
    }
}

void readWefac(SectionReader& reader, ScheduleRecords& records) {
    announce(reader, reader.keyword);
    while (nextWellRow(reader, presentStep(records))) {
        const auto [name, factor] = readEfficiency(reader);
        forNamedWells(reader, presentStep(records), name, [&](ScheduleWell& well) {
            well.efficiency = factor * onShareOf(records, presentStep(records), well.group);
        });
    }
}

void readWecon(SectionReader& reader, ScheduleRecords& records) {
    announce(reader, reader.keyword);
    const UnitSystem& units = *reader.units;
    while (nextWellRow(reader, presentStep(records))) {
        std::string name, workover = "NONE", end = "NO", follower, quantity, second;
        // oil, gas, water cut, GOR, WGR, second water cut, gas-liquid ratio, liquid, temperature, reservoir
        std::array<double, 10> item{};
        readRow(reader, std::array<ListTarget, 16>{&name, &item[0], &item[1], &item[2], &item[3], &item[4],
                                                   &workover, &end, &follower, &quantity, &item[5], &second,
                                                   &item[6], &item[7], &item[8], &item[9]});
        EconomicLimits limits;
        limits.leastOil = limitOf(item[0], units.liquidRate);
        limits.leastGas = limitOf(item[1], units.gasRate);
        limits.mostWaterCut = limitOf(item[2], 1.0);
        limits.mostGasOilRatio = limitOf(item[3], units.gasRatio);
        limits.mostWaterGasRatio = limitOf(item[4], 1.0 / units.gasRatio);
        limits.leastLiquid = limitOf(item[7], units.liquidRate);
        limits.workover = workoverOf(reader, workover);
        limits.endsRun = toUpper(trim(end)).starts_with('Y');
        if (toUpper(trim(quantity)).starts_with('P') || item[5] > 0.0 || item[6] > 0.0 || item[8] > 0.0 ||
            item[9] > 0.0)
            warnHere(reader,
                     "WARNING :: WELL {}: POTENTIALS, SECOND WATER CUTS, GAS-LIQUID RATIOS, TEMPERATURES AND "
                     "RESERVOIR RATES ARE NO LIMITS HERE",
                     name);
        if (!trim(follower).empty())
            warnHere(reader, "WARNING :: WELL {}: THE WELL {} THAT IS TO FOLLOW IT IS NOT OPENED", name,
                     follower);
        forNamedWells(reader, presentStep(records), name, [&](ScheduleWell& well) { well.limits = limits; });
    }
}

void readDrsdt(SectionReader& reader, ScheduleRecords& records) {
    announce(reader, reader.keyword);
    skipCommentLines(reader);
    double rise = std::numeric_limits<double>::infinity();  // not given: no limit
    std::string cells = "ALL";
    const std::array<ListTarget, 2> targets = {&rise, &cells};
    checkRead(reader, readList(*reader.cursor, targets));
    if (rise < 0.0) {
        warnHere(reader, "WARNING :: RISE OF RS {} IS BELOW ZERO, SET TO 0", number(rise));
        rise = 0.0;
    }
    if (!toUpper(trim(cells)).starts_with('A'))
        warnHere(reader, "WARNING :: DRSDT {}: THE LIMIT HOLDS IN ALL CELLS, NOT ONLY IN THOSE WITH FREE GAS",
                 cells);
    presentStep(records).mostRsRise = rise * reader.units->gasRatio;
}

}  // namespace kvr
