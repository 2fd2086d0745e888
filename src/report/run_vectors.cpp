#include "report/run_vectors.hpp"

#include <algorithm>
#include <array>

namespace kvr {

namespace {

using Step = StepFigures;
using Well = WellFigures;

constexpr double CubicFeetPerMscf = 1000.0;

double liquid(const ReportedFlow& flow) {
    return flow.oil + flow.water;
}

constexpr std::array Vectors = {
    RunVector{"OPR", Quantity::LiquidRate, true, true,
              [](const Step&, const Well& w) { return w.production.oil; }},
    RunVector{"WPR", Quantity::LiquidRate, true, true,
              [](const Step&, const Well& w) { return w.production.water; }},
    RunVector{"GPR", Quantity::GasRate, true, true,
              [](const Step&, const Well& w) { return w.production.gas; }},
    RunVector{"LPR", Quantity::LiquidRate, true, true,
              [](const Step&, const Well& w) { return liquid(w.production); }},
    RunVector{"VPR", Quantity::ReservoirRate, true, true,
              [](const Step&, const Well& w) { return w.production.reservoir; }},
    RunVector{"WIR", Quantity::LiquidRate, true, true,
              [](const Step&, const Well& w) { return w.injection.water; }},
    RunVector{"GIR", Quantity::GasRate, true, true,
              [](const Step&, const Well& w) { return w.injection.gas; }},
    RunVector{"OIR", Quantity::LiquidRate, true, true,
              [](const Step&, const Well& w) { return w.injection.oil; }},
    RunVector{"VIR", Quantity::ReservoirRate, true, true,
              [](const Step&, const Well& w) { return w.injection.reservoir; }},
    RunVector{"WCT", Quantity::Fraction, true, true,
              [](const Step&, const Well& w) { return waterCut(w.production); }},
    RunVector{"GOR", Quantity::GasRatio, true, true,
              [](const Step&, const Well& w) { return gasOilRatio(w.production); }},
    RunVector{"BHP", Quantity::Pressure, false, true, [](const Step&, const Well& w) { return w.bhp; }},
    RunVector{"OPT", Quantity::LiquidTotal, true, true,
              [](const Step&, const Well& w) { return w.produced.oil; }},
    RunVector{"WPT", Quantity::LiquidTotal, true, true,
              [](const Step&, const Well& w) { return w.produced.water; }},
    RunVector{"GPT", Quantity::GasTotal, true, true,
              [](const Step&, const Well& w) { return w.produced.gas; }},
    RunVector{"LPT", Quantity::LiquidTotal, true, true,
              [](const Step&, const Well& w) { return liquid(w.produced); }},
    RunVector{"VPT", Quantity::ReservoirTotal, true, true,
              [](const Step&, const Well& w) { return w.produced.reservoir; }},
    RunVector{"WIT", Quantity::LiquidTotal, true, true,
              [](const Step&, const Well& w) { return w.injected.water; }},
    RunVector{"GIT", Quantity::GasTotal, true, true,
              [](const Step&, const Well& w) { return w.injected.gas; }},
    RunVector{"OIT", Quantity::LiquidTotal, true, true,
              [](const Step&, const Well& w) { return w.injected.oil; }},
    RunVector{"VIT", Quantity::ReservoirTotal, true, true,
              [](const Step&, const Well& w) { return w.injected.reservoir; }},
    RunVector{"PR", Quantity::Pressure, true, false,
              [](const Step& s, const Well&) { return s.averagePressure; }},
    RunVector{"OIP", Quantity::LiquidTotal, true, false,
              [](const Step& s, const Well&) { return s.inPlace.oil; }},
    RunVector{"WIP", Quantity::LiquidTotal, true, false,
              [](const Step& s, const Well&) { return s.inPlace.water; }},
    RunVector{"GIP", Quantity::GasTotal, true, false,
              [](const Step& s, const Well&) { return s.inPlace.gas; }},
    RunVector{"OE", Quantity::Fraction, true, false, [](const Step& s, const Well&) { return s.recovery; }},
    RunVector{"OPRH", Quantity::LiquidRate, true, true,
              [](const Step&, const Well& w) { return w.observed.production.oil; }, true},
    RunVector{"WPRH", Quantity::LiquidRate, true, true,
              [](const Step&, const Well& w) { return w.observed.production.water; }, true},
    RunVector{"GPRH", Quantity::GasRate, true, true,
              [](const Step&, const Well& w) { return w.observed.production.gas; }, true},
    RunVector{"LPRH", Quantity::LiquidRate, true, true,
              [](const Step&, const Well& w) { return liquid(w.observed.production); }, true},
    RunVector{"WIRH", Quantity::LiquidRate, true, true,
              [](const Step&, const Well& w) { return w.observed.injection.water; }, true},
    RunVector{"GIRH", Quantity::GasRate, true, true,
              [](const Step&, const Well& w) { return w.observed.injection.gas; }, true},
    RunVector{"WCTH", Quantity::Fraction, true, true,
              [](const Step&, const Well& w) { return waterCut(w.observed.production); }, true},
    RunVector{"GORH", Quantity::GasRatio, true, true,
              [](const Step&, const Well& w) { return gasOilRatio(w.observed.production); }, true},
    RunVector{"BHPH", Quantity::Pressure, false, true,
              [](const Step&, const Well& w) { return w.observed.bhp; }, true},
    RunVector{"OPTH", Quantity::LiquidTotal, true, true,
              [](const Step&, const Well& w) { return w.observed.produced.oil; }, true},
    RunVector{"WPTH", Quantity::LiquidTotal, true, true,
              [](const Step&, const Well& w) { return w.observed.produced.water; }, true},
    RunVector{"GPTH", Quantity::GasTotal, true, true,
              [](const Step&, const Well& w) { return w.observed.produced.gas; }, true},
    RunVector{"LPTH", Quantity::LiquidTotal, true, true,
              [](const Step&, const Well& w) { return liquid(w.observed.produced); }, true},
    RunVector{"WITH", Quantity::LiquidTotal, true, true,
              [](const Step&, const Well& w) { return w.observed.injected.water; }, true},
    RunVector{"GITH", Quantity::GasTotal, true, true,
              [](const Step&, const Well& w) { return w.observed.injected.gas; }, true},
    RunVector{"THP", Quantity::Pressure, false, true, [](const Step&, const Well& w) { return w.thp; }, false,
              true},
};

/// In the order of Quantity.
struct UnitRow {
    std::string_view field, metric;
    double (*factor)(const UnitSystem&);  // from field units to those of a metric deck
};

double liquidFactor(const UnitSystem& units) {
    return CubicFeetPerBarrel / units.liquidRate;
}
double gasFactor(const UnitSystem& units) {
    return CubicFeetPerMscf / units.gasRate;
}

constexpr std::array<UnitRow, 9> Units = {{
    {"STB/DAY", "SM3/DAY", liquidFactor},
    {"MSCF/DAY", "SM3/DAY", gasFactor},
    {"RB/DAY", "RM3/DAY", liquidFactor},
    {"STB", "SM3", liquidFactor},
    {"MSCF", "SM3", gasFactor},
    {"RB", "RM3", liquidFactor},
    {"PSIA", "BARSA", [](const UnitSystem& units) { return 1.0 / units.pressure; }},
    {"MSCF/STB", "SM3/SM3", [](const UnitSystem& units) { return gasFactor(units) / liquidFactor(units); }},
    {"", "", [](const UnitSystem&) { return 1.0; }},
}};

}  // namespace

VectorUnit deckUnit(const UnitSystem& units, Quantity quantity) {
    const UnitRow& row = Units[static_cast<std::size_t>(quantity)];
    if (units.deck != DeckUnits::Metric) return {row.field, 1.0};
    return {row.metric, row.factor(units)};
}

std::string_view fieldUnit(Quantity quantity) {
    return Units[static_cast<std::size_t>(quantity)].field;
}

std::span<const RunVector> runVectors() {
    return Vectors;
}

const RunVector* vectorOf(std::string_view mnemonic) {
    if (mnemonic.empty()) return nullptr;
    const auto matches = [mnemonic](const RunVector& row) {
        const bool scope = mnemonic.front() == 'F' ? row.ofField : mnemonic.front() == 'W' && row.ofWells;
        return scope && row.suffix == mnemonic.substr(1);
    };
    const auto* const found = std::find_if(Vectors.begin(), Vectors.end(), matches);
    return found == Vectors.end() ? nullptr : found;
}

}  // namespace kvr
