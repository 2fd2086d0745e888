#include "run/base_comparison.hpp"

#include "base/constants.hpp"
#include "base/messages.hpp"
#include "base/text.hpp"
#include "report/net_value.hpp"
#include "report/run_vectors.hpp"

#include <charconv>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <string_view>
#include <vector>

namespace kvr {

namespace {

constexpr std::array<std::string_view, 6> Totals = {"FOPT", "FWPT", "FGPT", "FOIT", "FWIT", "FGIT"};

std::vector<std::string> cells(const std::string& line) {
    std::vector<std::string> parts(1);
    for (const char c : line) {
        if (c == ',')
            parts.emplace_back();
        else if (c != '\r')
            parts.back() += c;
    }
    return parts;
}

bool readValue(const std::string& text, double& value) {
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    return error == std::errc() && end == text.data() + text.size();
}

/// From the unit of a column to stb or Mscf.
double factorOf(const std::string& unit, bool gas) {
    const VectorUnit metric = deckUnit(metricUnits(), gas ? Quantity::GasTotal : Quantity::LiquidTotal);
    return unit == metric.word ? 1.0 / metric.factor : 1.0;
}

struct Table {
    std::vector<std::string> names, units;
    std::vector<double> before, last;  // rows around the time asked for
};

bool readRows(std::ifstream& in, double time, std::size_t timeColumn, Table& table) {
    for (std::string line; std::getline(in, line);) {
        const std::vector<std::string> parts = cells(line);
        std::vector<double> row(table.names.size(), 0.0);
        if (parts.size() < row.size() || !readValue(parts[timeColumn], row[timeColumn])) return false;
        for (std::size_t n = 0; n < row.size(); ++n) readValue(parts[n], row[n]);
        table.before = table.last.empty() ? row : table.last;
        table.last = row;
        if (row[timeColumn] >= time - TimeTolerance) break;
    }
    return !table.last.empty();
}

std::string change(double now, double base) {
    if (!(std::abs(base) > 0.0)) return "";
    return fmt::format(", {:+.2f} %", Percent * (now / base - 1.0));
}

void tellRow(const Simulation& s, std::string_view name, std::string_view unit, double now, double base) {
    tell(s.console,
         fmt::format("  {:<15}: {} {}, base {}{}", name, number(now), unit, number(base), change(now, base)));
}

/// stb and Mscf of one side of a table.
PhaseAmounts sideOf(const BaseTotals& totals, std::string_view side) {
    const auto of = [&](std::string_view phase) {
        const std::string name = fmt::format("F{}{}T", phase, side);
        const auto found = totals.value.find(name);
        return found == totals.value.end() ? 0.0 : found->second * totals.factor.at(name);
    };
    return {of("O"), of("W"), of("G")};
}

double dollars(const PhaseAmounts& amount, const PhasePrices& price) {
    return amount.oil * price.oil + amount.water * price.water + amount.gas * price.gas;
}

bool hasPrices(const RunOptions& o) {
    for (const PhasePrices& price : {o.productionPrice, o.injectionPrice})
        if (price.oil != 0.0 || price.water != 0.0 || price.gas != 0.0) return true;
    return false;
}

PhaseAmounts reported(const Simulation& s, const PhaseAmounts& amount) {
    return {toBarrels(s.units, amount.oil), toBarrels(s.units, amount.water), toMscf(s.units, amount.gas)};
}

void tellAmount(const Simulation& s, std::string_view name, Quantity quantity, double now, double base) {
    const VectorUnit unit = deckUnit(s.units, quantity);
    if (now == 0.0 && base == 0.0) return;
    tellRow(s, name, unit.word, now * unit.factor, base * unit.factor);
}

}  // namespace

std::optional<BaseTotals> readBaseTotals(const std::string& path, double time) {
    std::ifstream in(path);
    Table table;
    std::string names, units;
    if (!in || !std::getline(in, names) || !std::getline(in, units)) return std::nullopt;
    table.names = cells(names);
    table.units = cells(units);
    if (table.names.empty() || table.names.front() != "TIME" || table.units.size() != table.names.size())
        return std::nullopt;
    if (!readRows(in, time, 0, table)) return std::nullopt;
    const double from = table.before[0], to = table.last[0];
    const double share = to > from ? std::min(1.0, std::max(0.0, (time - from) / (to - from))) : 1.0;
    BaseTotals totals;
    totals.time = from + share * (to - from);
    for (std::size_t n = 0; n < table.names.size(); ++n)
        for (const std::string_view name : Totals) {
            if (table.names[n] != name) continue;
            const std::string key(name);
            totals.value[key] = table.before[n] + share * (table.last[n] - table.before[n]);
            totals.factor[key] = factorOf(table.units[n], name[1] == 'G');
        }
    if (totals.value.empty()) return std::nullopt;
    return totals;
}

void tellBaseComparison(const Simulation& s) {
    if (s.options.baseSummary.empty() || s.balance.rows.empty()) return;
    std::error_code ignored;
    const std::string own = outputPath(s.outputs, outputName(OutputFile::RunSummary));
    if (std::filesystem::equivalent(own, s.options.baseSummary, ignored)) {
        warn(s.console, "WARNING :: BASERUN NAMES THE SUMMARY OF THIS RUN ITSELF");
        return;
    }
    const auto base = readBaseTotals(s.options.baseSummary, s.clock.time);
    if (!base) {
        warn(s.console, "WARNING :: BASERUN CANNOT BE READ AS A SUMMARY TABLE: {}", s.options.baseSummary);
        return;
    }
    tell(s.console,
         fmt::format("{:<18}: {}, at {} days", "Beside base run", s.options.baseSummary, number(base->time)));
    const PhaseAmounts produced = reported(s, s.balance.field.produced);
    const PhaseAmounts injected = reported(s, s.balance.field.injected);
    const PhaseAmounts baseProduced = sideOf(*base, "P"), baseInjected = sideOf(*base, "I");
    tellAmount(s, "Oil produced", Quantity::LiquidTotal, produced.oil, baseProduced.oil);
    tellAmount(s, "Water produced", Quantity::LiquidTotal, produced.water, baseProduced.water);
    if (s.options.hasGas) tellAmount(s, "Gas produced", Quantity::GasTotal, produced.gas, baseProduced.gas);
    tellAmount(s, "Water injected", Quantity::LiquidTotal, injected.water, baseInjected.water);
    if (!hasPrices(s.options)) return;
    const double baseValue =
        dollars(baseProduced, s.options.productionPrice) + dollars(baseInjected, s.options.injectionPrice);
    tellRow(s, "NPV", "$", s.balance.rows.back().npv, baseValue);
}

}  // namespace kvr
