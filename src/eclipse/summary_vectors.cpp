#include "eclipse/summary_vectors.hpp"

#include "base/constants.hpp"

#include <cmath>

namespace kvr {

namespace {

using Figures = SummaryFigures;

double ofProducer(const Figures& f, double value) {
    return f.producer ? value : 0.0;
}
double cut(double water, double oil) {
    return water / (water + MachineEpsilon + oil);
}
double gasOil(double gas, double oil) {
    return gas / (oil + MachineEpsilon);
}

constexpr std::array<SummaryVector, SummaryVectorCount> Vectors = {{
    {"TIME", "DAYS", [](const Figures& f) { return f.time; }},
    {"WWCT", "", [](const Figures& f) { return ofProducer(f, cut(f.water, f.oil)); }},
    {"WBHP", "PSIA", [](const Figures& f) { return f.producer ? std::abs(f.bhp) : f.bhp; }},
    {"WGOR", "MSCF/STB", [](const Figures& f) { return ofProducer(f, gasOil(f.gas, f.oil)); }},
    {"WWPR", "STB", [](const Figures& f) { return ofProducer(f, f.water); }},
    {"WOPR", "STB", [](const Figures& f) { return ofProducer(f, f.oil); }},
    {"WGPR", "MSCF", [](const Figures& f) { return ofProducer(f, f.gas); }},
    {"WOPRH", "STB", [](const Figures& f) { return ofProducer(f, f.historyOil); }},
    {"WWPRH", "STB", [](const Figures& f) { return ofProducer(f, f.historyWater); }},
    {"WGPRH", "MSCF", [](const Figures& f) { return ofProducer(f, f.historyGas); }},
    {"WBHPH", "STB", [](const Figures& f) { return f.historyBhp; }},
    {"WWCTH", "STB", [](const Figures& f) { return ofProducer(f, cut(f.historyWater, f.historyOil)); }},
    {"WGORH", "STB", [](const Figures& f) { return ofProducer(f, gasOil(f.historyGas, f.historyOil)); }},
    {"WOPT", "STB", [](const Figures& f) { return ofProducer(f, f.oilTotal); }},
    {"WWPT", "STB", [](const Figures& f) { return ofProducer(f, f.waterTotal); }},
    {"WOPTH", "STB", [](const Figures& f) { return ofProducer(f, f.historyOilTotal); }},
    {"WWPTH", "STB", [](const Figures& f) { return ofProducer(f, f.historyWaterTotal); }},
}};

}  // namespace

const std::array<SummaryVector, SummaryVectorCount>& summaryVectors() {
    return Vectors;
}

}  // namespace kvr
