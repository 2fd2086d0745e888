#include "optimization/pair_efficiency.hpp"

#include <map>
#include <utility>

namespace kvr {

namespace {

void addLine(const JoiningLine& line, bool counts, WellPair& pair) {
    pair.flux += line.flow;
    pair.poreVolume += line.flow * line.time;
    ++pair.lines;
    if (!counts) return;
    pair.counted += line.flow;
    pair.oil += line.flow * line.oilFraction;
    pair.surfaceOil += line.flow * line.oil;
    pair.surfaceWater += line.flow * line.water;
    pair.surfaceGas += line.flow * line.gas;
}

template <class Take>
PairSet gather(std::span<const JoiningLine> lines, double mostTime, const Take& take) {
    PairSet set;
    std::map<std::pair<int, int>, std::size_t> place;
    for (const JoiningLine& line : lines) {
        if (!(line.flow > 0.0)) continue;
        const bool isLong = line.time > mostTime;
        set.longLines += isLong ? 1 : 0;
        if (!take(isLong)) continue;
        const auto [found, isNew] = place.try_emplace({line.injector, line.producer}, set.pairs.size());
        if (isNew) set.pairs.push_back({line.injector, line.producer});
        addLine(line, !isLong, set.pairs[found->second]);
    }
    double volume = 0.0;
    for (WellPair& pair : set.pairs) {
        pair.time = pair.poreVolume / pair.flux;
        set.flux += pair.flux;
        volume += pair.poreVolume;
    }
    set.time = set.flux > 0.0 ? volume / set.flux : 0.0;
    return set;
}

}  // namespace

double meanTime(std::span<const JoiningLine> lines) {
    double flow = 0.0, volume = 0.0;
    for (const JoiningLine& line : lines) {
        flow += line.flow;
        volume += line.flow * line.time;
    }
    return flow > 0.0 ? volume / flow : 0.0;
}

PairSet weighPairs(std::span<const JoiningLine> lines, double mostTime) {
    return gather(lines, mostTime, [](bool) { return true; });
}

PairSet pairsOfArrival(std::span<const JoiningLine> lines, double mostTime) {
    return gather(lines, mostTime, [](bool isLong) { return !isLong; });
}

double efficiency(const WellPair& pair) {
    return pair.counted > 0.0 ? pair.oil / pair.counted : 0.0;
}

double meanEfficiency(const PairSet& set) {
    double oil = 0.0, counted = 0.0;
    for (const WellPair& pair : set.pairs) {
        oil += pair.oil;
        counted += pair.counted;
    }
    return counted > 0.0 ? oil / counted : 0.0;
}

}  // namespace kvr
