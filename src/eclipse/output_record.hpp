#pragma once

#include "eclipse/records.hpp"
#include "streamline/diagnostics/line_path.hpp"

#include <string>
#include <string_view>
#include <vector>

namespace kvr {

/// Running sums of the summary files over the executed steps, one per well of the run, positive, stb.
struct SummaryTotals {
    double previousTime = 0.0;  // days, of the last call
    std::vector<double> oil, water, historyOil, historyWater;
};

/// A vector that the deck's SUMMARY section asks for behind the fixed ones.
struct AskedVector {
    std::string mnemonic;
    std::string well;           // blank for a vector of the field
    std::string_view unit;      // field units, as everything in these files
    std::size_t wellPlace = 0;  // by number of the well, 0-based
};

/// What the writers of the binary set keep from call to call.
struct EclipseOutput {
    RecordWriter rft;           // open from the first report step to the end of the run
    bool rftNamed = false;      // the log has told its name
    bool begun = false;         // the run has written files of its own, so that .ECLEND is its to replace
    std::size_t wellCount = 0;  // wells of the run
    std::vector<AskedVector> asked;
    std::vector<std::vector<float>> steps;  // PARAMS of each step since the last .S file
    SummaryTotals totals;
    LinePaths paths;      // lines of the present streamline step
    int tracedLines = 0;  // of the last streamline step
};

}  // namespace kvr
