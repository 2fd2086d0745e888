#pragma once

#include "eclipse/records.hpp"
#include "streamline/diagnostics/line_path.hpp"

#include <vector>

namespace kvr {

/// Running sums of the summary files, one per well of the run, positive, stb.
struct SummaryTotals {
    double previousTime = 0.0;  // days, of the last call
    std::vector<double> oil, water, historyOil, historyWater;
};

/// What the writers of the binary set keep from call to call.
struct EclipseOutput {
    RecordWriter rft;           // open from the first report step to the end of the run
    bool rftNamed = false;      // the log has told its name
    std::size_t wellCount = 0;  // wells of the run
    SummaryTotals totals;
    LinePaths paths;      // lines of the present streamline step
    int tracedLines = 0;  // of the last streamline step
};

}  // namespace kvr
