#include "base/constants.hpp"
#include "deck/options/option_handlers.hpp"

#include <algorithm>

namespace kvr {

namespace {

constexpr int DefaultMatchIterations = 30;
constexpr int MaxMatchIterations = 999999;
constexpr double DefaultMaxParameter = 5000.0;
constexpr double DefaultMinParameter = 0.0001;
constexpr int MaxAverages = 10000;
constexpr int DefaultWctAverages = 2;
constexpr int DefaultBhpAverages = 5;
constexpr double DefaultMisfit = 10.0;
constexpr int MinLsqrIterations = 5;
constexpr int MaxLsqrIterations = 10000;
constexpr int DefaultLsqrIterations = 400;
constexpr int MostHalvings = 4;
constexpr int MostCurveParts = 100;
constexpr double LeastDeviation = 1e-6, MostDeviation = 100.0;  // of ln k
constexpr double LeastError = 1e-6, DefaultErrorCut = 0.02, DefaultErrorGor = 0.05, DefaultErrorBhp = 10.0;

void zeroIfTiny(double& value) {
    if (!(value >= MachineEpsilon)) value = 0.0;
}

/// Clamped to 0..1; a NaN becomes 0.
double unitRange(double value) {
    return value > 0.0 ? std::min(value, 1.0) : 0.0;
}

/// By the first letter; any other word is the default.
SensitivityForm formOf(std::string_view word) {
    switch (upperInitialOf(word)) {
        case 'A':
            return SensitivityForm::Adjoint;
        case 'L':
            return SensitivityForm::Lines;
        case 'C':
            return word.size() > 1 && (word[1] == 'L' || word[1] == 'l') ? SensitivityForm::Classic
                                                                         : SensitivityForm::Coupled;
        default:
            return SensitivityForm::Coupled;
    }
}

std::string_view formName(SensitivityForm form) {
    switch (form) {
        case SensitivityForm::Lines:
            return "LINES";
        case SensitivityForm::Classic:
            return "CLASSIC";
        case SensitivityForm::Adjoint:
            return "ADJOINT";
        case SensitivityForm::Coupled:
            break;
    }
    return "COUPLED";
}

/// By the first letter; any other word is the default.
MatchedCurve curveOf(std::string_view word) {
    const char initial = upperInitialOf(word);
    if (initial == 'C' || initial == 'W') return MatchedCurve::Cut;
    return initial == 'G' ? MatchedCurve::GasOilRatio : MatchedCurve::Auto;
}

std::string_view curveName(MatchedCurve curve) {
    constexpr std::array<std::string_view, 3> names = {"AUTO", "CUT", "GOR"};
    return names[static_cast<std::size_t>(curve)];
}

}  // namespace

void readInversion(SectionReader& reader, RunOptions& options) {
    std::string misfit;
    std::string solver;
    const std::array<ListTarget, 3> targets = {&misfit, &solver, &options.hmIterationLimit};
    readRecord(reader, targets);
    options.historyMatch = true;
    options.amplitudeMatching = upperInitialOf(misfit) == 'A';
    options.gaussNewton = upperInitialOf(solver) == 'G';
    options.hmIterationLimit =
        within(options.hmIterationLimit, 1, MaxMatchIterations, DefaultMatchIterations);
    lineToBoth(consoleOf(reader), "Run Inversion Make sure that :");
    tellValue(reader, "Is Amplitude matching ? ::", yesNo(options.amplitudeMatching));
    tellValue(reader, "Use Gauss Newton Method ? ::", yesNo(options.gaussNewton));
    tellValue(reader, "Total Iteration for HM ::", options.hmIterationLimit);
}

void readPressureMatch(SectionReader& reader, RunOptions& options) {
    std::string kind;
    int flag = 0;
    const std::array<ListTarget, 3> targets = {&options.bhpGlobalIterations, &kind, &flag};
    readRecord(reader, targets);
    options.localGlobalPressureMatch = upperInitialOf(kind) == 'A';
    if (options.bhpGlobalIterations < 0) options.bhpGlobalIterations = 0;
    if (options.bhpGlobalIterations > options.hmIterationLimit)
        options.bhpGlobalIterations = options.hmIterationLimit - 1;
    if (flag == 1) options.bhpMatchFlag = false;
}

void readSensitivityWeights(SectionReader& reader, RunOptions& options) {
    const std::array<ListTarget, 2> targets = {&options.sensitivityTimeWeightWct,
                                               &options.sensitivityTimeWeightBhp};
    readRecord(reader, targets);
    options.sensitivityTimeWeightWct = unitRange(options.sensitivityTimeWeightWct);
    options.sensitivityTimeWeightBhp = unitRange(options.sensitivityTimeWeightBhp);
}

void readSensitivityForms(SectionReader& reader, RunOptions& options) {
    std::string travelTime;
    std::string pressure;
    const std::array<ListTarget, 2> targets = {&travelTime, &pressure};
    readRecord(reader, targets);
    options.travelTimeForm = formOf(travelTime);
    options.pressureForm = formOf(pressure);
    tellValue(reader, "Sensitivity of travel time ::", formName(options.travelTimeForm));
    tellValue(reader, "Sensitivity of pressure ::", formName(options.pressureForm));
}

void readInversionLimits(SectionReader& reader, RunOptions& options) {
    const std::array<double*, 5> limits = {&options.globalWctLimit, &options.gridWctLimit,
                                           &options.lnkLimitWct, &options.lnkLimitBhp, &options.lnkLimit};
    std::array<ListTarget, 5> targets{};
    std::copy(limits.begin(), limits.end(), targets.begin());
    readRecord(reader, targets);
    for (double* limit : limits) zeroIfTiny(*limit);
}

void readObjectiveWeights(SectionReader& reader, RunOptions& options) {
    beginRecord(reader, "OBJNV");
    const std::array<ListTarget, 2> targets = {&options.objectiveWeightWct, &options.objectiveWeightBhp};
    checkRead(reader, readList(*reader.cursor, targets));
    options.objectiveWeightWct = within(options.objectiveWeightWct, 0.0, LargestSetting, 1.0);
    options.objectiveWeightBhp = within(options.objectiveWeightBhp, 0.0, LargestSetting, 1.0);
}

void readMaxParameter(SectionReader& reader, RunOptions& options) {
    const std::array<ListTarget, 1> targets = {&options.maxParameter};
    readRecord(reader, targets);
    options.maxParameter = within(options.maxParameter, MachineEpsilon, LargestSetting, DefaultMaxParameter);
}

void readMinParameter(SectionReader& reader, RunOptions& options) {
    const std::array<ListTarget, 1> targets = {&options.minParameter};
    readRecord(reader, targets);
    options.minParameter = within(options.minParameter, 0.0, LargestSetting, DefaultMinParameter);
}

void readSensitivityAverages(SectionReader& reader, RunOptions& options) {
    beginRecord(reader, "MINPARAM");
    const std::array<ListTarget, 2> targets = {&options.smoothingWct, &options.smoothingBhp};
    checkRead(reader, readList(*reader.cursor, targets));
    options.smoothingWct = within(options.smoothingWct, 0, MaxAverages, DefaultWctAverages);
    options.smoothingBhp = within(options.smoothingBhp, 0, MaxAverages, DefaultBhpAverages);
}

void readMisfitCriteria(SectionReader& reader, RunOptions& options) {
    const std::array<ListTarget, 2> targets = {&options.misfitCriterionWct, &options.misfitCriterionBhp};
    readRecord(reader, targets);
    options.misfitCriterionWct = within(options.misfitCriterionWct, 0.0, LargestSetting, DefaultMisfit);
    options.misfitCriterionBhp = within(options.misfitCriterionBhp, 0.0, LargestSetting, DefaultMisfit);
}

void readWellGridUpdate(SectionReader& reader, RunOptions& options) {
    const std::array<ListTarget, 1> targets = {&options.updateWellGrid};
    readRecord(reader, targets);
    options.updateWellGrid = within(options.updateWellGrid, 0.0, LargestSetting, 0.0);
}

void readLsqr(SectionReader& reader, RunOptions& options) {
    const std::array<ListTarget, 4> targets = {&options.lsqrIterations, &options.lsqrNorm,
                                               &options.lsqrSmoothHorizontal, &options.lsqrSmoothVertical};
    readRecord(reader, targets);
    options.lsqrIterations =
        within(options.lsqrIterations, MinLsqrIterations, MaxLsqrIterations, DefaultLsqrIterations);
    options.lsqrNorm = unitRange(options.lsqrNorm);
    options.lsqrSmoothHorizontal = unitRange(options.lsqrSmoothHorizontal);
    options.lsqrSmoothVertical = unitRange(options.lsqrSmoothVertical);
}

void readCurveMatch(SectionReader& reader, RunOptions& options) {
    const std::array<ListTarget, 2> targets = {&options.curveParts, &options.curveFrom};
    readRecord(reader, targets);
    options.curveParts = within(options.curveParts, 0, MostCurveParts, 0);
    options.curveFrom = within(options.curveFrom, 1, MaxMatchIterations, 1);
    tellValue(reader, "Parts of each curve that are matched :", options.curveParts);
    tellValue(reader, "From iteration :", options.curveFrom);
}

void readMatchedCurve(SectionReader& reader, RunOptions& options) {
    std::string word;
    const std::array<ListTarget, 1> targets = {&word};
    readRecord(reader, targets);
    options.matchedCurve = curveOf(word);
    tellValue(reader, "Curve that is matched ::", curveName(options.matchedCurve));
}

void readPrior(SectionReader& reader, RunOptions& options) {
    const std::array<ListTarget, 4> targets = {&options.priorDeviation, &options.priorLength,
                                               &options.priorHeight, &options.priorLevel};
    readRecord(reader, targets);
    options.mostProbable = true;
    options.priorDeviation = within(options.priorDeviation, LeastDeviation, MostDeviation, 1.0);
    options.priorLength = within(options.priorLength, 0.0, LargestSetting, 0.0);
    options.priorHeight = within(options.priorHeight, 0.0, LargestSetting, 0.0);
    options.priorLevel = within(options.priorLevel, 0.0, MostDeviation, 1.0);
    tellValue(reader, "Most probable field, deviation of ln k :", options.priorDeviation);
    tellValue(reader, "Length over which it is alike, ft :", options.priorLength);
    tellValue(reader, "Height over which it is alike, ft :", options.priorHeight);
    tellValue(reader, "Deviation of the level of ln k :", options.priorLevel);
}

void readDataErrors(SectionReader& reader, RunOptions& options) {
    const std::array<ListTarget, 3> targets = {&options.errorCut, &options.errorGor, &options.errorBhp};
    readRecord(reader, targets);
    options.errorCut = within(options.errorCut, LeastError, 1.0, DefaultErrorCut);
    options.errorGor = within(options.errorGor, LeastError, LargestSetting, DefaultErrorGor);
    options.errorBhp = within(options.errorBhp, LeastError, LargestSetting, DefaultErrorBhp);
    tellValue(reader, "Error of water cuts :", options.errorCut);
    tellValue(reader, "Error of gas-oil ratios, share :", options.errorGor);
    tellValue(reader, "Error of pressures, psi :", options.errorBhp);
}

void readSafeUpdates(SectionReader& reader, RunOptions& options) {
    std::string finalRun;
    const std::array<ListTarget, 2> targets = {&options.matchHalvings, &finalRun};
    readRecord(reader, targets);
    options.matchHalvings = within(options.matchHalvings, 0, MostHalvings, MostHalvings);
    options.matchFinalRun = upperInitialOf(finalRun) == 'Y';
    tellValue(reader, "Halvings of an update that makes the misfit grow :", options.matchHalvings);
    tellValue(reader, "Run of the last update :", yesNo(options.matchFinalRun));
}

}  // namespace kvr
