#pragma once

#include "base/cell_array.hpp"
#include "implicit/run_level.hpp"
#include "matching/most_probable.hpp"
#include "matching/perm_file.hpp"
#include "matching/secant_rows.hpp"
#include "matching/well_match.hpp"

#include <array>
#include <cstddef>
#include <string>
#include <vector>

namespace kvr {

/// Quantities whose misfits the tables of a match hold, in the order of their files.
namespace quantity {
inline constexpr std::size_t Pressure = 0, Fraction = 1, GasOilRatio = 2, Gas = 3, Oil = 4, Cut = 5,
                             Water = 6, Count = 7;
}

/// What one run lacks of one well's history.
struct WellMisfit {
    double shift = 0.0;     // days, before the criterion; above 0: the run is early
    double pressure = 0.0;  // psi, mean of observed minus calculated, before the criterion
    double slope = 0.0;     // a day, steepest rise of the calculated curve
    double matched = 0.0;   // sum of |observed - calculated| of the curve that gives the shift
    std::array<double, quantity::Count> sum{};     // of observed minus calculated, units of the files
    std::array<double, quantity::Count> sumAbs{};  // of |observed - calculated|
};

/// All wells of one run.
struct RunMisfit {
    std::vector<WellMisfit> wells;  // producers, in their order
    double shiftRms = 0.0;          // days
    double shift = 0.0;             // days, sum over the wells of |shift|
    double matched = 0.0;           // sum over the wells
    double pressure = 0.0;          // psi, sum over the wells of |pressure|
    double judged = 0.0;            // what updates are judged by: 1 in the first run, 0 in a perfect one
    double largestChange = 0.0;     // of ln k, by the update that led to the run
    int halvings = 0;               // of that update
};

/// Permeabilities along the axes, md, by cell.
struct Permeabilities {
    CellArray<double> x, y, z;
};

/// What HMPRIOR keeps: data and rows of the last accepted run, kind after kind, with errors as asked for, and
/// the fields that were run lately, the newest last.
struct ProbableRecord {
    ErrorData data;
    std::vector<std::size_t> kindEnds;  // rows of each kind end there
    std::vector<std::string> kindNames;
    std::vector<TriedField> tried;
    TriedField present;  // that of the data
};

/// A match from run to run. What stands here and in the deck is all that the next run depends on.
struct MatchRecord {
    std::vector<WellMatch> wells;       // histories of the last run, producers
    std::vector<WellMatch> firstWells;  // those of the first one
    std::vector<WellMatch> keptWells;   // those of the last accepted one
    std::vector<RunMisfit> accepted;    // runs whose field was kept, one for each iteration begun
    CellArray<double> prior;            // PERMX of the first run, md
    Permeabilities base;                // fields of the last accepted run
    CellArray<double> dlnk;             // the update that was made of them, whole
    int halvings = 0;                   // of the update in the present run
    bool ended = false;                 // nothing is left to be changed
    bool lastUpdateMade = false;        // the present run only judges it
    bool closingRun = false;            // the present run only shows the field that the match ends with
    ProbableRecord probable;
    std::vector<RunLevel> levels;  // of the present run, for adjoints; empty where no rows ask for them
    PermFile permFile;             // PERMFILE; without a path there is none
    double startSeconds = 0.0;     // wall clock at the start of the match
    bool observedGiven = false;    // the folder had observed histories at the start: they are the user's
    int runs = 0;                  // forward runs of this process
};

}  // namespace kvr
