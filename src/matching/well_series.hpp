#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace kvr {

/// What one well did, or what a run says that it did, by time. All lists are as long as `time`.
struct WellSeries {
    std::string name;                            // up to eight characters
    std::vector<double> time;                    // days
    std::vector<double> oil, water, gas;         // surface rates in the units of the files, 0 or above
    std::vector<double> pressure;                // bottom hole
    std::vector<double> cut;                     // share of water in the liquid, 0 to 1
    std::vector<double> gasOilRatio;             // gas rate over oil rate, units of the files
    std::vector<std::vector<double>> fractions;  // by component: produced mole fractions

    [[nodiscard]] std::size_t count() const { return time.size(); }
};

}  // namespace kvr
