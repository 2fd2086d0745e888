#pragma once

#include <array>
#include <string_view>

namespace kvr {

/// What the summary files say of one well. Rates and sums positive: oil and water stb, gas Mscf, a day.
struct SummaryFigures {
    double time = 0.0;  // days
    bool producer = false;
    double oil = 0.0, water = 0.0, gas = 0.0;
    double historyOil = 0.0, historyWater = 0.0, historyGas = 0.0;
    double bhp = 0.0;                                                                         // psia
    double historyBhp = 0.0;                                                                  // psia
    double oilTotal = 0.0, waterTotal = 0.0, historyOilTotal = 0.0, historyWaterTotal = 0.0;  // stb
};

struct SummaryVector {
    std::string_view mnemonic;
    std::string_view unit;
    double (*value)(const SummaryFigures&);
};

inline constexpr std::size_t SummaryVectorCount = 17;

/// The vectors of every well, in the order of the files. Some units are not those of their values (STB for a
/// history pressure, a cut, a ratio): the files are read back under these words, so they stay.
const std::array<SummaryVector, SummaryVectorCount>& summaryVectors();

}  // namespace kvr
