#include "eclipse/restart_well_tables.hpp"

#include "base/text.hpp"

#include <algorithm>
#include <cmath>

namespace kvr {

namespace {

// Words of the tables, 1-based. The type of a well is its seventh word: 1 producer, 2..4 injector of oil,
// water, gas; the eighth is its control mode.
namespace iwel {
constexpr std::size_t I = 1, J = 2, K = 3, Connections = 5, Type = 7, Status = 11;
}
namespace xwel {
constexpr std::size_t Oil = 1, Water = 2, Gas = 3, Bhp = 7;
}
namespace icon {
constexpr std::size_t Number = 1, I = 2, J = 3, K = 4, Status = 6, Direction = 14;
}
namespace scon {
constexpr std::size_t Factor = 1, Diameter = 3;
}
namespace xcon {
constexpr std::size_t Oil = 1, Water = 2, Gas = 3;
}
constexpr double NoValue = 1e12;  // no rate, factor or pressure is so large; tables are filled with 1e20
constexpr double LargestPressure = 1e7;  // psia, as of cells

struct LengthRow {
    std::size_t slot;  // of INTEHEAD, 1-based
    std::int32_t RestartWellTables::*length;
};
constexpr LengthRow Lengths[] = {{17, &RestartWellTables::wells},
                                 {18, &RestartWellTables::mostConnections},
                                 {25, &RestartWellTables::wellIntegers},
                                 {26, &RestartWellTables::wellSingles},
                                 {27, &RestartWellTables::wellDoubles},
                                 {28, &RestartWellTables::wellNames},
                                 {33, &RestartWellTables::connectionIntegers},
                                 {34, &RestartWellTables::connectionSingles},
                                 {35, &RestartWellTables::connectionDoubles}};

/// Word `word` (1-based) of entry `entry` (0-based) of a table; `none` where the table is shorter.
template <class T>
T wordAt(const std::vector<T>& table, std::int32_t words, std::size_t entry, std::size_t word, T none) {
    const auto length = static_cast<std::size_t>(std::max(words, 0));
    if (word > length) return none;
    const std::size_t place = entry * length + word - 1;
    return place < table.size() ? table[place] : none;
}

/// A number of a table; 0 for the filler and for what is none.
double usable(double value) {
    return std::abs(value) < NoValue ? value : 0.0;
}

bool holds(std::size_t size, std::int32_t words, std::size_t entry) {
    return words > 0 && entry < size && (entry + 1) * static_cast<std::size_t>(words) <= size;
}

/// Files count production as positive.
FileRates ratesOf(double oil, double water, double gas, const FileUnits& units) {
    const double volume = -units.volume * units.perDay;
    return {usable(oil) * volume, usable(water) * volume, usable(gas) * volume * units.surfaceGas};
}

void setKind(std::int32_t type, FileWell& well) {
    constexpr std::array<std::string_view, 3> Fluids = {"oil", "wat", "gas"};
    if (type == 1) well.kind = "prd";
    if (type < 2 || type > 4) return;
    well.kind = "inj";
    well.fluid = Fluids[static_cast<std::size_t>(type) - 2];
}

FileConnection connectionOf(const RestartWellTables& t, const FileUnits& units, std::size_t entry) {
    constexpr std::string_view Directions = "XYZ";
    const auto integer = [&](std::size_t word) {
        return wordAt<std::int32_t>(t.ICON, t.connectionIntegers, entry, word, 0);
    };
    const auto single = [&](std::size_t word) {
        return usable(static_cast<double>(wordAt(t.SCON, t.connectionSingles, entry, word, 0.0F)));
    };
    const auto real = [&](std::size_t word) { return wordAt(t.XCON, t.connectionDoubles, entry, word, 0.0); };
    FileConnection connection;
    connection.place = {integer(icon::I), integer(icon::J), integer(icon::K)};
    connection.open = integer(icon::Status) > 0;
    const std::int32_t direction = integer(icon::Direction);
    if (direction >= 1 && direction <= 3)
        connection.direction = Directions[static_cast<std::size_t>(direction) - 1];
    connection.factor = single(scon::Factor) * units.connectionFactor;
    connection.diameter = single(scon::Diameter) * units.length;
    connection.hasRates = holds(t.XCON.size(), t.connectionDoubles, entry);
    connection.rates = ratesOf(real(xcon::Oil), real(xcon::Water), real(xcon::Gas), units);
    return connection;
}

std::vector<FileConnection> connectionsOf(const RestartWellTables& t, const FileUnits& units,
                                          std::size_t well) {
    std::vector<FileConnection> connections;
    const auto most = static_cast<std::size_t>(std::max(t.mostConnections, 0));
    for (std::size_t n = 0; n < most; ++n) {
        const std::size_t entry = well * most + n;
        if (!holds(t.ICON.size(), t.connectionIntegers, entry)) break;
        if (wordAt<std::int32_t>(t.ICON, t.connectionIntegers, entry, icon::Number, 0) <= 0) continue;
        connections.push_back(connectionOf(t, units, entry));
    }
    return connections;
}

FileWell wellOf(const RestartWellTables& t, const FileUnits& units, std::size_t entry) {
    const auto integer = [&](std::size_t word) {
        return wordAt<std::int32_t>(t.IWEL, t.wellIntegers, entry, word, 0);
    };
    const auto real = [&](std::size_t word) { return wordAt(t.XWEL, t.wellDoubles, entry, word, 0.0); };
    FileWell well;
    well.name = std::string(trim(view(wordAt(t.ZWEL, t.wellNames, entry, 1, text8("")))));
    well.head = {integer(iwel::I), integer(iwel::J), integer(iwel::K)};
    well.connectionCount = integer(iwel::Connections);
    setKind(integer(iwel::Type), well);
    well.open = integer(iwel::Status) > 0;
    well.hasRates = holds(t.XWEL.size(), t.wellDoubles, entry);
    well.rates = ratesOf(real(xwel::Oil), real(xwel::Water), real(xwel::Gas), units);
    well.bhp = usable(real(xwel::Bhp)) * units.pressure;
    if (!(well.bhp <= LargestPressure)) well.bhp = 0.0;
    well.connections = connectionsOf(t, units, entry);
    return well;
}

}  // namespace

void takeWellLengths(const std::vector<std::int32_t>& head, RestartWellTables& tables) {
    for (const LengthRow& row : Lengths)
        tables.*row.length = row.slot <= head.size() ? head[row.slot - 1] : 0;
}

bool takeWellBlock(const BlockHeader& header, const BlockData& data, RestartWellTables& tables) {
    const std::string_view keyword = view(header.keyword);
    if (keyword == "IWEL    ")
        tables.IWEL = data.integers;
    else if (keyword == "ICON    ")
        tables.ICON = data.integers;
    else if (keyword == "SWEL    ")
        tables.SWEL = data.reals;
    else if (keyword == "SCON    ")
        tables.SCON = data.reals;
    else if (keyword == "XWEL    ")
        tables.XWEL = data.doubles;
    else if (keyword == "XCON    ")
        tables.XCON = data.doubles;
    else if (keyword == "ZWEL    ")
        tables.ZWEL = data.texts;
    else
        return false;
    return true;
}

std::vector<FileWell> wellsOf(const RestartWellTables& tables, const FileUnits& units) {
    std::vector<FileWell> wells;
    for (std::int32_t n = 0; n < tables.wells; ++n) {
        const auto entry = static_cast<std::size_t>(n);
        if (!holds(tables.IWEL.size(), tables.wellIntegers, entry)) break;
        wells.push_back(wellOf(tables, units, entry));
    }
    return wells;
}

}  // namespace kvr
