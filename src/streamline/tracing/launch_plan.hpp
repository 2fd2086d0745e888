#pragma once

#include "base/cell_array.hpp"

#include <array>
#include <random>
#include <string>
#include <vector>

namespace kvr {

/// Start of one streamline.
struct LineStart {
    int completion = 0;  // 1-based slot in the well's list
    CellId cell = 0;
    int face = 0;                   // 1..6
    std::array<double, 3> point{};  // reference cube 0..1, or ft in the box family
    int well = 0;                   // 1-based well number at the launching end
};

/// Three-letter tag of a cell as a number: what kind of well is completed in it.
enum class CellTagKind : unsigned char { Pop, Injector, Producer };

/// What launching decides for one streamline step, and what of it lives on.
struct LaunchPlan {
    std::string LaunchMode = "inj";  // "inj", "prd", "cel"; an overwritten value stays for the run
    int RequestedLines = 0;
    int ActiveLines = 0;    // launched lines, and during the missed-block stage the lines so far
    int launchedLines = 0;  // ActiveLines as the count stage left it
    int successfulLines = 0;
    double LineFlux = 1.0;                                // rb/day carried by one line
    std::vector<std::vector<std::array<int, 6>>> counts;  // [well][completion][face - 1]
    std::vector<int> wellCounts;                          // lines per well, both sides
    std::vector<LineStart> starts;                        // line l at [l - 1]
    std::mt19937_64 random;                               // default seed; its state runs on over steps
};

/// Cell tags, rebuilt whenever the wells are: the last well completed in a cell decides.
struct CellTags {
    CellArray<CellTagKind> CellTag;
};

}  // namespace kvr
