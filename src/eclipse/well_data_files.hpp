#pragma once

#include "base/console.hpp"
#include "deck/options.hpp"
#include "deck/schedule.hpp"
#include "eclipse/well_response.hpp"

#include <cstdio>

namespace kvr {

/// WELL_CALCULATED.DATA and WELL_OBSERVED.DATA in the working folder: one header line, then one row for each
/// producer and time: name, time (days), oil, water and gas rate, bottom-hole pressure, water cut, gas-oil
/// ratio, and the mole fractions of components.
struct WellDataFiles {
    std::FILE* calculated = nullptr;
    std::FILE* observed = nullptr;  // null without history controls
};

/// Replaces the files; the observed one only with history controls. Stops where one cannot be written.
WellDataFiles openWellData(const Console& console, const RunOptions& options);
void writeWellDataHeads(int componentCount, WellDataFiles& files);
/// Well after well, in the order of the response; vectors that the response lacks are 0.
void writeWellDataRows(int componentCount, const SharedElements<ScheduleWell>& wells,
                       const SummaryResponse& response, WellDataFiles& files);
void closeWellData(const Console& console, WellDataFiles& files);

}  // namespace kvr
