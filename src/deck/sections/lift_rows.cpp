#include "deck/sections/lift_rows.hpp"

#include "base/text.hpp"
#include "deck/lift_table.hpp"

#include <algorithm>
#include <array>
#include <cmath>
#include <memory>
#include <span>
#include <string>
#include <string_view>

namespace kvr {

namespace {

constexpr std::size_t MostValues = 1000;  // of a record
constexpr double Missing = -1e30;

template <class Kind>
struct KindWord {
    std::string_view word;
    Kind kind;
};
constexpr KindWord<LiftRate> ProducedRates[] = {
    {"OIL", LiftRate::Oil}, {"LIQ", LiftRate::Liquid}, {"GAS", LiftRate::Gas}};
constexpr KindWord<LiftRate> InjectedRates[] = {
    {"OIL", LiftRate::Oil}, {"WAT", LiftRate::Water}, {"GAS", LiftRate::Gas}};
constexpr KindWord<LiftWater> WaterRatios[] = {
    {"WOR", LiftWater::PerOil}, {"WCT", LiftWater::Cut}, {"WGR", LiftWater::PerGas}};
constexpr KindWord<LiftGas> GasRatios[] = {
    {"GOR", LiftGas::PerOil}, {"GLR", LiftGas::PerLiquid}, {"OGR", LiftGas::OilPerGas}};

[[noreturn]] void stopAtTable(const SectionReader& reader, int number, std::string_view what) {
    both(consoleOf(reader), "ERROR :: TABLE {} OF {}: {}", number, reader.keyword, what);
    stopAtPlace(reader);
}

template <class Kind, std::size_t Count>
Kind kindOf(const SectionReader& reader, int number, const KindWord<Kind> (&words)[Count],
            const std::string& text) {
    const std::string word = toUpper(trim(text));
    for (const KindWord<Kind>& known : words)
        if (word == known.word) return known.kind;
    stopAtTable(reader, number, fmt::format("{} IS NOT KNOWN", text.empty() ? "A BLANK WORD" : text));
}

/// The numbers of a record, up to its slash.
std::vector<double> readRecord(SectionReader& reader) {
    std::vector<double> values(MostValues, Missing);
    std::vector<ListTarget> targets;
    targets.reserve(MostValues);
    for (double& value : values) targets.emplace_back(&value);
    skipCommentLines(reader);
    const ListEnd end = readList(*reader.cursor, targets);
    checkRead(reader, end);
    values.resize(static_cast<std::size_t>(end.count));
    return values;
}

std::vector<double> readAxis(SectionReader& reader, int number, double factor) {
    std::vector<double> axis = readRecord(reader);
    if (axis.empty() || std::adjacent_find(axis.begin(), axis.end(), std::greater_equal<>()) != axis.end())
        stopAtTable(reader, number, "AN AXIS IS EMPTY OR DOES NOT RISE");
    for (double& value : axis) value *= factor;
    return axis;
}

double rateFactor(const UnitSystem& units, LiftRate rate) {
    return rate == LiftRate::Gas ? units.gasRate : units.liquidRate;
}

/// The rows of pressures; each begins with as many places on the axes as `places` names.
void readPressures(SectionReader& reader, std::span<const LiftTable::Axis> places, LiftTable& table) {
    std::size_t rows = 1;
    for (const LiftTable::Axis axis : places) rows *= table.axes[axis].size();
    const std::size_t width = table.axes[LiftTable::Rate].size();
    table.bhp.assign(rows * width, Missing);
    for (std::size_t n = 0; n < rows; ++n) {
        const std::vector<double> record = readRecord(reader);
        if (record.size() != places.size() + width)
            stopAtTable(reader, table.number,
                        fmt::format("A ROW OF {} VALUES, {} EXPECTED", record.size(), places.size() + width));
        std::size_t row = 0;
        for (std::size_t p = 0; p < places.size(); ++p) {
            const std::size_t size = table.axes[places[p]].size();
            const double place = record[p];
            if (!(place >= 1.0) || place > static_cast<double>(size) || place != std::floor(place))
                stopAtTable(reader, table.number, "A ROW STANDS OFF THE AXES");
            row = row * size + static_cast<std::size_t>(place) - 1;
        }
        for (std::size_t r = 0; r < width; ++r)
            table.bhp[row * width + r] = record[places.size() + r] * reader.units->pressure;
    }
    const double least = *std::min_element(table.bhp.begin(), table.bhp.end());
    if (!(least > 0.0)) stopAtTable(reader, table.number, "PRESSURES ARE LEFT OUT, OR NOT ABOVE 0");
}

void keep(const SectionReader& reader, LiftTable table, Schedule& schedule) {
    auto& tables = schedule.liftTables;
    const auto same = std::find_if(tables.begin(), tables.end(), [&table](const auto& known) {
        return known->number == table.number && known->ofInjector == table.ofInjector;
    });
    auto kept = std::make_shared<const LiftTable>(std::move(table));
    if (same == tables.end()) return tables.push_back(std::move(kept));
    warnHere(reader, "WARNING :: TABLE {} OF {} TAKES THE PLACE OF AN EARLIER ONE, FROM THE BEGIN ON",
             kept->number, reader.keyword);
    *same = std::move(kept);
}

/// Unit word of the table: that of the deck, or none.
void checkUnits(const SectionReader& reader, int number, const std::string& word) {
    const std::string upper = toUpper(trim(word));
    const std::string_view own = reader.units->deck == DeckUnits::Metric ? "METRIC" : "FIELD";
    if (!upper.empty() && upper != own) stopAtTable(reader, number, "ITS UNITS ARE NOT THOSE OF THE DECK");
}

}  // namespace

void readProducerLift(SectionReader& reader, ScheduleRecords& records) {
    announce(reader, reader.keyword);
    const UnitSystem& units = *reader.units;
    LiftTable table;
    std::string rate, water, gas, fixed, lift, unit, quantity;
    skipCommentLines(reader);
    const std::array<ListTarget, 9> targets = {
        &table.number, &table.datumDepth, &rate, &water, &gas, &fixed, &lift, &unit, &quantity};
    checkRead(reader, readList(*reader.cursor, targets));
    table.datumDepth *= units.length;
    table.rate = kindOf(reader, table.number, ProducedRates, rate);
    table.water = kindOf(reader, table.number, WaterRatios, water);
    table.gas = kindOf(reader, table.number, GasRatios, gas);
    checkUnits(reader, table.number, unit);
    const double gasPerLiquid = units.gasRate / units.liquidRate;
    table.axes[LiftTable::Rate] = readAxis(reader, table.number, rateFactor(units, table.rate));
    table.axes[LiftTable::Head] = readAxis(reader, table.number, units.pressure);
    table.axes[LiftTable::Water] =
        readAxis(reader, table.number, table.water == LiftWater::PerGas ? 1.0 / gasPerLiquid : 1.0);
    table.axes[LiftTable::Gas] =
        readAxis(reader, table.number, table.gas == LiftGas::OilPerGas ? 1.0 / gasPerLiquid : gasPerLiquid);
    table.axes[LiftTable::Lift] = readAxis(reader, table.number, 1.0);
    readPressures(reader, std::array{LiftTable::Head, LiftTable::Water, LiftTable::Gas, LiftTable::Lift},
                  table);
    keep(reader, std::move(table), records.schedule);
}

void readInjectorLift(SectionReader& reader, ScheduleRecords& records) {
    announce(reader, reader.keyword);
    const UnitSystem& units = *reader.units;
    LiftTable table;
    table.ofInjector = true;
    std::string rate, fixed, unit, quantity;
    skipCommentLines(reader);
    const std::array<ListTarget, 6> targets = {&table.number, &table.datumDepth, &rate, &fixed,
                                               &unit,         &quantity};
    checkRead(reader, readList(*reader.cursor, targets));
    table.datumDepth *= units.length;
    table.rate = kindOf(reader, table.number, InjectedRates, rate);
    checkUnits(reader, table.number, unit);
    table.axes[LiftTable::Rate] = readAxis(reader, table.number, rateFactor(units, table.rate));
    table.axes[LiftTable::Head] = readAxis(reader, table.number, units.pressure);
    for (const LiftTable::Axis axis : {LiftTable::Water, LiftTable::Gas, LiftTable::Lift})
        table.axes[axis] = {0.0};
    readPressures(reader, std::array{LiftTable::Head}, table);
    keep(reader, std::move(table), records.schedule);
}

}  // namespace kvr
