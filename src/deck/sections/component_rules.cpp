#include "deck/sections/component_rules.hpp"

#include "base/hard_stop.hpp"
#include "base/messages.hpp"

#include <algorithm>
#include <cmath>
#include <numeric>

namespace kvr {

namespace {

constexpr double SumSlack = 1e-3;      // of fractions written with a few digits
constexpr double SumRounding = 1e-12;  // of a sum that is 1
constexpr double Freezing = 491.67;    // Rankine

/// Data of each component; outside `low` .. `high` they are told, outside `least` .. `most`, some ten times
/// beyond any fluid's, they stop the run.
struct ComponentRule {
    std::string_view keyword;
    Column FluidTables::*values;
    double least, most;
    double low, high;
};

constexpr ComponentRule Rules[] = {
    {"TCRIT", &FluidTables::TCRIT, 0.9, 36000.0, 9.0, 3600.0},  // helium, 2000 K
    {"PCRIT", &FluidTables::PCRIT, 3.0, 33000.0, 30.0, 3300.0},
    {"VCRIT", &FluidTables::VCRIT, 0.05, 1500.0, 0.5, 150.0},
    {"MW", &FluidTables::MW, 0.1, 20000.0, 1.0, 2000.0},
    {"ACF", &FluidTables::ACF, -5.0, 30.0, -0.5, 3.0},
};
constexpr double MostPair = 10.0;  // of a binary coefficient

void checkValues(const Console& console, const ComponentRule& rule, const FluidTables& tables) {
    const Column& values = tables.*rule.values;
    for (std::size_t i = 0; i < values.size(); ++i) {
        if (!(values[i] >= rule.least && values[i] <= rule.most)) {
            both(console, "ERROR :: {} OF COMPONENT {} ({}) MUST BE {} TO {}, IT IS {}", rule.keyword, i + 1,
                 tables.CNAMES[i], number(rule.least), number(rule.most), number(values[i]));
            hardStop(console);
        }
        if (values[i] < rule.low || values[i] > rule.high)
            warn(console, "WARNING :: {} OF COMPONENT {} ({}) IS {}, USUAL ARE {} TO {}", rule.keyword, i + 1,
                 tables.CNAMES[i], number(values[i]), number(rule.low), number(rule.high));
    }
}

void nameComponents(const Console& console, std::size_t count, FluidTables& tables) {
    if (tables.CNAMES.empty())
        warn(console, "WARNING :: CNAMES IS NOT GIVEN, COMPONENTS ARE CALLED BY NUMBER");
    tables.CNAMES.resize(count);
    for (std::size_t i = 0; i < count; ++i)
        if (tables.CNAMES[i].empty()) tables.CNAMES[i] = fmt::format("COMP{}", i + 1);
}

void checkPair(const Console& console, std::size_t i, std::size_t j, double coefficient) {
    if (!(std::abs(coefficient) <= MostPair)) {
        both(console, "ERROR :: BIC OF COMPONENTS {} AND {} MUST BE {} TO {}, IT IS {}", i + 1, j + 1,
             number(-MostPair), number(MostPair), number(coefficient));
        hardStop(console);
    }
    if (!(std::abs(coefficient) < 1.0))
        warn(console, "WARNING :: BIC OF COMPONENTS {} AND {} IS {}, NOT WITHIN -1 TO 1", i + 1, j + 1,
             number(coefficient));
}

void checkPairs(const Console& console, std::size_t count, FluidTables& tables) {
    if (tables.BIC.empty()) {
        tables.BIC.assign(count * count, 0.0);
        if (count > 1) warn(console, "WARNING :: BIC IS NOT GIVEN, 0 FOR EVERY PAIR");
    }
    for (std::size_t i = 0; i < count; ++i)
        for (std::size_t j = 0; j < i; ++j) checkPair(console, i, j, tables.BIC[i * count + j]);
}

void checkTemperature(const Console& console, double rankine) {
    if (!(rankine > 0.0)) {
        both(console, "ERROR :: COMPONENTS NEED RTEMP, NOT GIVEN OR NOT ABOVE ABSOLUTE ZERO");
        hardStop(console);
    }
    if (rankine < Freezing)
        warn(console, "WARNING :: RTEMP IS BELOW THE FREEZING POINT OF WATER, {} RANKINE", number(rankine));
}

void checkDepths(const Console& console, std::size_t count, const std::vector<double>& rows) {
    for (std::size_t r = count + 1; r + count < rows.size(); r += count + 1) {
        if (rows[r] > rows[r - count - 1]) continue;
        both(console, "ERROR :: ZMFVD: DEPTH {} DOES NOT RISE", number(rows[r]));
        hardStop(console);
    }
}

}  // namespace

void checkComposition(const SectionReader& reader, std::span<double> fractions) {
    for (double& fraction : fractions) {
        if (fraction >= 0.0) continue;
        warnHere(reader, "WARNING :: MOLE FRACTION {} IS BELOW 0, SET TO 0", number(fraction));
        fraction = 0.0;
    }
    const double sum = std::accumulate(fractions.begin(), fractions.end(), 0.0);
    if (!(sum > 0.0)) {
        both(consoleOf(reader), "ERROR :: MOLE FRACTIONS SUM TO {}", number(sum));
        stopAtPlace(reader);
    }
    if (std::abs(sum - 1.0) > SumSlack)
        warnHere(reader, "WARNING :: MOLE FRACTIONS SUM TO {}, EACH IS DIVIDED BY THAT", number(sum));
    if (std::abs(sum - 1.0) > SumRounding)
        for (double& fraction : fractions) fraction /= sum;
}

void checkCellCompositions(const SectionReader& reader, DirectionArray<double>& compositions) {
    const auto width = static_cast<std::size_t>(compositions.width);
    const auto cells = static_cast<CellId>(compositions.slots.size() / width - 1);
    int off = 0;
    CellId first = 0;
    for (CellId cell = 1; cell <= cells; ++cell) {
        const std::span<double> z(compositions.row(cell), width);
        const bool hasNegative = std::any_of(z.begin(), z.end(), [](double v) { return !(v >= 0.0); });
        const double sum = std::accumulate(z.begin(), z.end(), 0.0);
        if (!hasNegative && std::abs(sum - 1.0) <= SumSlack) {
            for (double& fraction : z) fraction /= sum;
            continue;
        }
        if (off++ == 0) first = cell;
        if (hasNegative || !(sum > 0.0)) {
            both(consoleOf(reader), "ERROR :: MOLE FRACTIONS OF CELL {} ARE NO COMPOSITION, THEY SUM TO {}",
                 cell, number(sum));
            stopAtPlace(reader);
        }
        for (double& fraction : z) fraction /= sum;
    }
    if (off > 0)
        warnHere(reader,
                 "WARNING :: MOLE FRACTIONS OF {} CELLS DO NOT SUM TO 1, EACH IS DIVIDED BY ITS SUM; FIRST: "
                 "CELL {}",
                 off, first);
}

void checkComponents(SectionReader& reader, const RunOptions& options, FluidTables& tables) {
    if (options.componentCount <= 0) return;
    const Console& console = consoleOf(reader);
    const auto count = static_cast<std::size_t>(options.componentCount);
    nameComponents(console, count, tables);
    for (const ComponentRule& rule : Rules) {
        if ((tables.*rule.values).empty()) {
            both(console, "ERROR :: COMPONENTS NEED {}, NOT GIVEN", rule.keyword);
            hardStop(console);
        }
        checkValues(console, rule, tables);
    }
    checkPairs(console, count, tables);
    checkTemperature(console, tables.reservoirTemperature);
    checkDepths(console, count, tables.ZMFVD);
}

}  // namespace kvr
