#pragma once

#include "report/well_figures.hpp"

#include <cstdio>
#include <string>
#include <vector>

namespace kvr {

/// What decides the columns of the summary table.
struct SummaryColumns {
    const UnitSystem* units = nullptr;
    bool observed = false;  // the deck has observed rates
    int components = 0;     // columns of produced mole fractions stand last
    bool tubing = false;    // the deck has tables of VFPPROD or VFPINJ
};

/// KVR_Summary.csv: a line with the names TIME, DATE, then every field vector and every well vector as
/// "WOPR:NAME", then the produced mole
/// fractions of each component, FZMF_0001 and WZMF_0001:NAME; a line with their units; then a row per step.
/// Commas between, units of the deck.
void putSummaryHead(const SummaryColumns& columns, const std::vector<std::string>& wellNames,
                    std::FILE* file);
/// One row; `date` is the calendar date of the figures. Handed to the operating system when this returns.
void addSummaryRow(const SummaryColumns& columns, const StepFigures& figures, const RunClock& clock,
                   std::FILE* file);

/// The figures of the present step as vectors show them: at time zero nothing flows, whatever the wells are
/// set to, as in the other tables.
StepFigures vectorFigures(const Simulation& simulation);

/// Opens the table beside the other files, with its head and the row of time zero; a row per step; its end.
void startSummaryTable(Simulation& simulation);
void addToSummaryTable(const Simulation& simulation);
void closeSummaryTable(Simulation& simulation);

}  // namespace kvr
