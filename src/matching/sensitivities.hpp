#pragma once

#include "base/cell_array.hpp"
#include "base/console.hpp"
#include "deck/options.hpp"
#include "matching/sensitivity_rows.hpp"
#include "matching/well_match.hpp"
#include "model/grid.hpp"

#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace kvr {

/// Rows of the linear system of one inversion, one row a well in the order of the `WellMatch` list (a well
/// without a value has an empty row). Columns are cells; inactive ones never stand in a row.
///
/// A change d ln k of the cells answers a misfit where
///   -travelTime(well) . d ln k = shift(well)          travelTime: days that the well's curve comes EARLIER
///   per
///                                                     unit of ln k (rows are >= 0 as lines make them, so the
///                                                     row of the system is the negative of what stands here)
///   pressure(well) . d ln k = misfit_bhp(well)        pressure: psi that the bottom-hole pressure RISES per
///   unit
///                                                     of ln k (producers >= 0, injectors <= 0), mean of the
///                                                     observed points
struct MatchSensitivities {
    SensitivityRows travelTime;  // days per unit of ln k; of cut, gas-oil ratio: MatchedQuantity of the run
    SensitivityRows pressure;    // psi per unit of ln k
};

/// What reading back needs beside the files of the steps.
struct SensitivityReading {
    std::string folder;                  // in front of the names of the files: outputPath of ""
    std::vector<std::string> wellNames;  // every well of the run, injectors too, in the order of WellRecord
    std::vector<double> stepEnds;        // days, end of each report step; file K0001 is that of the first
    bool travelTime = true;              // which kinds are wanted; the rows of the other stay empty
    bool pressure = true;
    int iteration = 0;  // of the plots that OPTIONKVR 4 asks for: HM_SENSITIVITY_GTTI_Ite and so on
};

/// Reads the files HM_SENSTEMP_GTTI.K0001 .. and HM_SENSTEMP_GBHPI.K0001 .. of the report steps back, smooths
/// each well's values along the steps (AVGSENS) and reduces them to one row a well ("GTTI Sensitivity
/// reconstructed Tstep: ", "File : "): the travel-time row to the change of the shift that `travelTimeShift`
/// finds, times the first weight of SNSTIMWT; the pressure row to the change of the mean pressure of the
/// observed points that count, those whose time is above the second weight's share of the last one. The
/// classic form of travel times is summed over the steps instead. `wells`: histories at the same times, as
/// alignSeries gives them, producers in any order, found by name. A step without a file counts as zeros,
/// which a warning tells. Smoothing and weighing are linear, so that they act on the weights of the steps:
/// two cell arrays are held beside the rows.
MatchSensitivities reconstructSensitivities(const Console& console, const RunOptions& options,
                                            const SensitivityReading& reading,
                                            const CellArray<std::uint8_t>& Active,
                                            std::span<const WellMatch> wells);

/// Weights that reduce one value a report step to one value a well: sum over steps of weight * value.
/// Travel time, from the calculated curve c at the observed times t(i): c is moved by what the values change
/// it, so the shift of best fit changes by sum(c'(i) change(i)) / sum(c'(i)^2); a flat curve has zeros.
/// Pressure: the share of the observed points that belong to the step, of those above 0 whose time is above
/// `after` times the last one. A point belongs to the two steps whose ends enclose it, in proportion to its
/// nearness; time 0 has no sensitivity, and behind the last step its own goes on.
std::vector<double> travelTimeWeights(std::span<const double> stepEnds, const WellMatch& well,
                                      MatchedQuantity quantity);
std::vector<double> pressureWeights(std::span<const double> stepEnds, const WellMatch& well,
                                    double after = 0.0);

/// Weights by which values that are not smoothed give what they would give after `sweeps` sweeps of a moving
/// average along the steps: each value the mean of itself and its neighbours.
std::vector<double> smoothedWeights(std::vector<double> weights, int sweeps);

/// With OPTIONKVR 4: every step's values as a zone titled "Sensitivity", a variable for each well of the
/// reading, to HM_SENSITIVITY_GTTI_Ite<iteration>.plt and HM_SENSITIVITY_GBHPI_Ite<iteration>.plt, with a
/// warning that this takes time.
void plotSensitivities(const Console& console, const RunOptions& options, const SensitivityReading& reading,
                       const GridModel& grid);

}  // namespace kvr
