#pragma once

#include "deck/options.hpp"
#include "deck/reading/section_reader.hpp"

#include <array>
#include <string>
#include <string_view>

/// The keywords of the option section, one handler each, called by the section's table. A handler
/// prints "READ -> " and its name, reads its record and repairs what is out of range.
namespace kvr {

// --- method, solvers, streamline settings: option_numerics.cpp ------------------------------------
void readFdMethod(SectionReader& reader, RunOptions& options);
void readPressureSolver(SectionReader& reader, RunOptions& options);
void readSaturationSolver(SectionReader& reader, RunOptions& options);
void readConverge(SectionReader& reader, RunOptions& options);
void readNumLine(SectionReader& reader, RunOptions& options);
void readLineControl(SectionReader& reader, RunOptions& options);  // SL1DCON
void readMapCount(SectionReader& reader, RunOptions& options);     // SL1DMAP
void readCfl(SectionReader& reader, RunOptions& options);
void readCflGravity(SectionReader& reader, RunOptions& options);
void readMaxDt(SectionReader& reader, RunOptions& options);
void readStepControl(SectionReader& reader, RunOptions& options);
void readMapping(SectionReader& reader, RunOptions& options);
void readTimeMapForm(SectionReader& reader, RunOptions& options);
void readOilRows(SectionReader& reader, RunOptions& options);
void readOptimalTstep(SectionReader& reader, RunOptions& options);

// --- switches and tables: option_switches.cpp -----------------------------------------------------
void readOptionSwitches(SectionReader& reader, RunOptions& options);  // OPTIONKVR
void readOutputSwitches(SectionReader& reader, RunOptions& options);  // OUTPUTKVR
void readBoundaryPressures(SectionReader& reader, RunOptions& options);
void readUpscaling(SectionReader& reader, RunOptions& options);
void readSmoothing(SectionReader& reader, RunOptions& options);
void setCo2Model(SectionReader& reader, RunOptions& options);
void readCo2SolidRate(SectionReader& reader, RunOptions& options);  // CO2SOLID

// --- outside simulators: option_coupling.cpp ------------------------------------------------------
void setRestartTracing(SectionReader& reader, RunOptions& options);
void setWellHistoryOutput(SectionReader& reader, RunOptions& options);
void setEclipseToTecplot(SectionReader& reader, RunOptions& options);
void setDeleteEclipseRun(SectionReader& reader, RunOptions& options);
void readSimulatorCommand(SectionReader& reader, RunOptions& options);
void setEclipsePressure(SectionReader& reader, RunOptions& options);
void setEclipseSaturation(SectionReader& reader, RunOptions& options);
void setEclipseTrans(SectionReader& reader, RunOptions& options);
void setLinuxRun(SectionReader& reader, RunOptions& options);
void copyPermFile(SectionReader& reader, RunOptions& options);

// --- history matching: option_matching.cpp --------------------------------------------------------
void readInversion(SectionReader& reader, RunOptions& options);  // DOINV
void readPressureMatch(SectionReader& reader, RunOptions& options);
void readSensitivityWeights(SectionReader& reader, RunOptions& options);
void readSensitivityForms(SectionReader& reader, RunOptions& options);
void readInversionLimits(SectionReader& reader, RunOptions& options);  // OPTINV
void readObjectiveWeights(SectionReader& reader, RunOptions& options);
void readMaxParameter(SectionReader& reader, RunOptions& options);
void readMinParameter(SectionReader& reader, RunOptions& options);
void readSensitivityAverages(SectionReader& reader, RunOptions& options);  // AVGSENS
void readMisfitCriteria(SectionReader& reader, RunOptions& options);
void readWellGridUpdate(SectionReader& reader, RunOptions& options);
void readLsqr(SectionReader& reader, RunOptions& options);
void readCurveMatch(SectionReader& reader, RunOptions& options);    // HMCURVE
void readMatchedCurve(SectionReader& reader, RunOptions& options);  // HMDATA
void readPrior(SectionReader& reader, RunOptions& options);         // HMPRIOR
void readDataErrors(SectionReader& reader, RunOptions& options);    // HMERROR
void readSafeUpdates(SectionReader& reader, RunOptions& options);   // HMSAFE

// --- rate optimisation: option_optimization.cpp ---------------------------------------------------
void setOptimize(SectionReader& reader, RunOptions& options);
void readWaterfloodNumbers(SectionReader& reader, RunOptions& options);  // WFOOPT
void setEqualArrival(SectionReader& reader, RunOptions& options);
void setNpvOptimization(SectionReader& reader, RunOptions& options);
void readNpvPrice(SectionReader& reader, RunOptions& options);
void readInjectionPrice(SectionReader& reader, RunOptions& options);
void readProductionPrice(SectionReader& reader, RunOptions& options);
void readComponentPrice(SectionReader& reader, RunOptions& options);
void setEqualizeWafs(SectionReader& reader, RunOptions& options);
void setMinimumMiscibility(SectionReader& reader, RunOptions& options);
void readMiscibilityTarget(SectionReader& reader, RunOptions& options);  // MMPTARGET
void readRateInterval(SectionReader& reader, RunOptions& options);       // RATEEVERY
void readBaseSummary(SectionReader& reader, RunOptions& options);        // BASERUN

// --- what the handlers share: option_records.cpp --------------------------------------------------

/// "READ -> " and the name, then the comments in front of the data.
void beginRecord(SectionReader& reader, std::string_view name);
/// The same for a keyword under its own name, and its record. Values not given keep what they hold.
void readRecord(SectionReader& reader, std::span<const ListTarget> targets);
void readRecord(SectionReader& reader, std::span<double> values);
void readRecord(SectionReader& reader, std::span<int> values);

/// First character, a blank for an empty word.
char initialOf(std::string_view word);
/// The same in upper case, where either case is accepted.
char upperInitialOf(std::string_view word);

/// The text and a value behind it, to console and log.
void tellValue(const SectionReader& reader, std::string_view text, std::string_view value);
void tellValue(const SectionReader& reader, std::string_view text, double value);
void tellValue(const SectionReader& reader, std::string_view text, int value);
/// "Yes" or "No", as switches are shown everywhere.
std::string_view yesNo(bool on);

/// Value, or `fallback` when it lies outside low..high (a NaN does).
double within(double value, double low, double high, double fallback);
int within(int value, int low, int high, int fallback);

inline constexpr double LargestSetting = 1e10;  // upper end of weights, criteria and limits

}  // namespace kvr
