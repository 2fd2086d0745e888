#include "deck/sections/table_rules.hpp"

#include "base/hard_stop.hpp"

#include <cmath>
#include <limits>

namespace kvr {

namespace {

constexpr double Any = std::numeric_limits<double>::infinity();
constexpr double Slack = 1e-9;  // of saturations written with many digits

enum class Trend { Any, Rising, NotFalling, NotRising };

/// What a column may be. Outside `low` .. `high` the run stops where `stopsRange` says so.
struct ColumnRule {
    std::string_view keyword;
    std::size_t column;  // from 0
    std::string_view name;
    double low, high;
    bool stopsRange;
    Trend trend;
    bool stopsTrend;
};

// An axis that falls makes no table. Relative permeabilities and formation factors against their trend can be
// meant, but rarely are.
constexpr ColumnRule Rules[] = {
    {"SWOF", 0, "Sw", 0.0, 1.0, true, Trend::Rising, true},
    {"SWOF", 1, "krw", 0.0, 1.0, false, Trend::NotFalling, false},
    {"SWOF", 2, "krow", 0.0, 1.0, false, Trend::NotRising, false},
    {"SWOF", 3, "pcow", -Any, Any, false, Trend::NotRising, false},
    {"SGOF", 0, "Sg", 0.0, 1.0, true, Trend::Rising, true},
    {"SGOF", 1, "krg", 0.0, 1.0, false, Trend::NotFalling, false},
    {"SGOF", 2, "krog", 0.0, 1.0, false, Trend::NotRising, false},
    {"SGOF", 3, "pcog", -Any, Any, false, Trend::NotFalling, false},
    {"SLGOF", 0, "Sl", 0.0, 1.0, true, Trend::Rising, true},
    {"SLGOF", 1, "krg", 0.0, 1.0, false, Trend::NotRising, false},
    {"SLGOF", 2, "krog", 0.0, 1.0, false, Trend::NotFalling, false},
    {"SLGOF", 3, "pcog", -Any, Any, false, Trend::NotRising, false},
    {"GRAVITY", 0, "gravity of oil", -131.0, Any, true, Trend::Any, false},
    {"GRAVITY", 1, "gravity of water", 0.0, Any, true, Trend::Any, false},
    {"GRAVITY", 2, "gravity of gas", 0.0, Any, true, Trend::Any, false},
    {"SWFN", 0, "Sw", 0.0, 1.0, true, Trend::Rising, true},
    {"SWFN", 1, "krw", 0.0, 1.0, false, Trend::NotFalling, false},
    {"SWFN", 2, "pcow", -Any, Any, false, Trend::NotRising, false},
    {"SGFN", 0, "Sg", 0.0, 1.0, true, Trend::Rising, true},
    {"SGFN", 1, "krg", 0.0, 1.0, false, Trend::NotFalling, false},
    {"SGFN", 2, "pcog", -Any, Any, false, Trend::NotFalling, false},
    {"SOF2", 0, "So", 0.0, 1.0, true, Trend::Rising, true},
    {"SOF2", 1, "kro", 0.0, 1.0, false, Trend::NotFalling, false},
    {"SOF3", 0, "So", 0.0, 1.0, true, Trend::Rising, true},
    {"SOF3", 1, "krow", 0.0, 1.0, false, Trend::NotFalling, false},
    {"SOF3", 2, "krog", 0.0, 1.0, false, Trend::NotFalling, false},
    {"PVDO", 0, "pressure", 0.0, Any, true, Trend::Rising, true},
    {"PVDO", 1, "Bo", 1e-10, Any, true, Trend::NotRising, false},
    {"PVDO", 2, "viscosity", 1e-10, Any, true, Trend::NotFalling, false},
    {"PVDG", 0, "pressure", 0.0, Any, true, Trend::Rising, true},
    {"PVDG", 1, "Bg", 1e-15, Any, true, Trend::NotRising, false},
    {"PVDG", 2, "viscosity", 1e-10, Any, true, Trend::NotFalling, false},
    {"PVTO", 0, "Rs", 0.0, Any, true, Trend::Rising, true},
    {"PVTO", 1, "pressure", 0.0, Any, true, Trend::Rising, true},
    {"PVTO", 2, "Bo", 1e-10, Any, true, Trend::Any, false},
    {"PVTO", 3, "viscosity", 1e-10, Any, true, Trend::Any, false},
    {RowsOfRs, 0, "pressure under one Rs", 0.0, Any, true, Trend::Rising, true},
    {RowsOfRs, 1, "Bo under one Rs", 1e-10, Any, true, Trend::NotRising, false},
    {RowsOfRs, 2, "viscosity under one Rs", 1e-10, Any, true, Trend::Any, false},
    {"PVTW", 2, "compressibility", 0.0, Any, false, Trend::Any, false},
    {"PVTW", 1, "Bw", 0.0, Any, true, Trend::Any, false},
    {"PVTW", 3, "viscosity", 0.0, Any, true, Trend::Any, false},
    {"DENSITY", 0, "oil", 0.0, Any, true, Trend::Any, false},
    {"DENSITY", 1, "water", 0.0, Any, true, Trend::Any, false},
    {"DENSITY", 2, "gas", 0.0, Any, true, Trend::Any, false},
    {"ROCK", 1, "compressibility", 0.0, Any, false, Trend::Any, false},
};

/// How two rows go against a trend; not a number does always.
bool breaks(Trend trend, double before, double value) {
    switch (trend) {
        case Trend::Rising:
            return !(value > before);
        case Trend::NotFalling:
            return !(value >= before);
        case Trend::NotRising:
            return !(value <= before);
        default:
            return false;
    }
}

std::string_view saying(Trend trend) {
    if (trend == Trend::Rising) return "DOES NOT RISE";
    return trend == Trend::NotFalling ? "FALLS" : "RISES";
}

/// Where the first of `count` values stands.
struct Finding {
    int count = 0;
    std::size_t row = 0;
};

template <class Bad>
Finding findBad(std::size_t rows, std::size_t from, const Bad& isBad) {
    Finding found;
    for (std::size_t r = from; r < rows; ++r) {
        if (!isBad(r)) continue;
        if (found.count++ == 0) found.row = r;
    }
    return found;
}

void tell(const SectionReader& reader, const ColumnRule& rule, std::size_t table, const TableRows& rows,
          const Finding& found, bool stops, std::string_view what) {
    if (found.count == 0) return;
    const double value = (*rows.columns[rule.column])[found.row];
    const DeckPlace place{reader.cursor->fileName, rows.lines[found.row]};
    if (!stops) {
        warnAt(consoleOf(reader), place, reader.keyword,
               "WARNING :: {} TABLE {}: {} {} IN {} ROWS; FIRST: ROW {}, COLUMN {}, {}", reader.keyword,
               table, rule.name, what, found.count, found.row + 1, rule.column + 1, number(value));
        return;
    }
    both(consoleOf(reader), "ERROR :: {} TABLE {}: {} {} IN {} ROWS; FIRST: ROW {}, COLUMN {}, {}",
         reader.keyword, table, rule.name, what, found.count, found.row + 1, rule.column + 1, number(value));
    lineToBoth(consoleOf(reader), placeText(place, reader.keyword));
    hardStop(consoleOf(reader));
}

/// An axis value that repeats makes no segment and does no harm.
bool fallsSomewhere(const Column& column) {
    for (std::size_t r = 1; r < column.size(); ++r)
        if (!(column[r] >= column[r - 1])) return true;
    return false;
}

void checkColumn(const SectionReader& reader, const ColumnRule& rule, std::size_t table,
                 const TableRows& rows) {
    const Column& column = *rows.columns[rule.column];
    const Finding outside = findBad(column.size(), 0, [&](std::size_t r) {
        return !(column[r] >= (rule.low > 0.0 ? rule.low : rule.low - Slack) &&
                 column[r] <= rule.high + Slack);
    });
    const std::string range =
        std::isinf(rule.high) ? fmt::format("IS BELOW {}", number(rule.low))
                              : fmt::format("IS NOT WITHIN {} TO {}", number(rule.low), number(rule.high));
    tell(reader, rule, table, rows, outside, rule.stopsRange, range);
    const Finding against = findBad(
        column.size(), 1, [&](std::size_t r) { return breaks(rule.trend, column[r - 1], column[r]); });
    tell(reader, rule, table, rows, against, rule.stopsTrend && fallsSomewhere(column), saying(rule.trend));
}

}  // namespace

void checkTable(const SectionReader& reader, std::size_t table, const TableRows& rows) {
    checkTable(reader, table, rows, reader.keyword);
}

void checkTable(const SectionReader& reader, std::size_t table, const TableRows& rows,
                std::string_view rules) {
    for (const ColumnRule& rule : Rules)
        if (rules == rule.keyword && rule.column < rows.columns.size())
            checkColumn(reader, rule, table, rows);
}

void checkRecord(const SectionReader& reader, std::size_t table, std::span<const double> values) {
    std::vector<Column> columns;
    for (const double value : values) columns.push_back({value});
    TableRows rows;
    for (const Column& column : columns) rows.columns.push_back(&column);
    rows.lines = {reader.cursor->lineNumber};
    checkTable(reader, table, rows);
}

}  // namespace kvr
