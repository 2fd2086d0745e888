#include "deck/options/finalise_options.hpp"

#include "base/messages.hpp"
#include "deck/options/option_echo.hpp"

#include <algorithm>
#include <cstdint>

namespace kvr {

namespace {

constexpr int AnalyticRelPermPoints = 200;
constexpr int AnalyticSolutionPoints = 100;
constexpr double CellsPerLine = 5.0;  // of the default streamline count, wells taken as layers of cells
constexpr int LinesPerLayer = 10;     // of a model with one row along y

constexpr double EnoughLines = 500.0;        // more than these, ...
constexpr double ActiveCellsPerLine = 16.0;  // ... or one for so many active cells, tell nothing new

constexpr long long LinesPerCell = 100;  // bounds of NUMLINE
constexpr long long LeastLineBound = 10'000;
constexpr long long MostLaunchedLines = 50'000'000;
constexpr double NodesPerLine = 100'000.0;  // bounds of the node factor
constexpr double LeastFactorBound = 10.0;

constexpr double LargestCfl = 100000.0;
constexpr double SmallestSetting = 1e-10;  // below: the step or the criterion was not given

/// The default number of streamlines: faces pass their own flow, so lines need not cover every cell. At least
/// 1, also where the formula of a tiny grid gives 0.
int defaultLineCount(const GridModel& grid, std::size_t wellCount) {
    if (grid.NY == 1 && grid.NZ == 1) return 1;
    if (grid.NY == 1) return grid.NZ * LinesPerLayer;
    const double rule =
        static_cast<double>(grid.NX) * static_cast<double>(wellCount) * grid.NY * grid.NZ / CellsPerLine;
    const auto active = std::count_if(grid.Active.cells().begin(), grid.Active.cells().end(),
                                      [](std::uint8_t flag) { return flag != 0; });
    const double enough = std::max(EnoughLines, static_cast<double>(active) / ActiveCellsPerLine);
    return std::max(1, static_cast<int>(std::min(rule, enough)));
}

/// More lines than the cells can tell apart take time and memory for nothing.
void boundLines(const Console& console, const GridModel& grid, RunOptions& options) {
    const long long most = std::clamp(LinesPerCell * grid.NCELLS, LeastLineBound, MostLaunchedLines);
    if (options.requestedLines <= most) return;
    warn(console, "WARNING :: NUMLINE {} IS TOO MUCH FOR {} CELLS, {} IS TAKEN", options.requestedLines,
         grid.NCELLS, most);
    options.requestedLines = static_cast<int>(most);
}

/// The nodes of a line that crosses the model once, times the node factor, stay within a bound; below it the
/// factor must leave at least a node for so many cells.
void boundNodeFactor(const Console& console, const GridModel& grid, RunOptions& options) {
    const double crossed = static_cast<double>(grid.NX) + grid.NY + grid.NZ;
    const double most = std::max(LeastFactorBound, NodesPerLine / crossed);
    double& factor = options.nodeFactor;
    const double taken = factor > 0.0 ? std::min(factor, most) : 1.0;
    if (factor == taken) return;
    warn(console, "WARNING :: SL1DCON: NODE FACTOR {} IS OUT OF RANGE 0 TO {} FOR THIS GRID, {} IS TAKEN",
         number(factor), number(most), number(taken));
    factor = taken;
}

void setLineCount(const Console& console, const GridModel& grid, const Schedule& schedule,
                  RunOptions& options) {
    if (options.requestedLines >= 1) return;
    const std::size_t wellCount = schedule.steps.empty() ? 0 : schedule.steps.front().wells.size();
    options.requestedLines = defaultLineCount(grid, wellCount);
    both(console, "WARNING :: Num of Streamline was 0. Use Default :: {}", options.requestedLines);
}

/// One test of the fall-backs: the value in force when it fails, and the two lines that say so.
template <class T>
struct FallBack {
    T RunOptions::*field;
    bool (*good)(T);
    std::string_view warning;
    std::string_view reset;
    T value;
};

constexpr bool isCfl(double value) {
    return value > 0.0 && value <= LargestCfl;
}
constexpr bool isStep(double value) {
    return value > SmallestSetting;
}
constexpr bool isCriterion(double value) {
    return value >= SmallestSetting;
}
constexpr bool isCount(int value) {
    return value >= 1;
}

constexpr FallBack<double> StepFallBacks[] = {
    {&RunOptions::maxDt, isStep,  // a shorter step would not move the clock
     "WARNING :: Maximum Constraint Tstep is less than zero", "Reset for 1.E10", 1e10},
    {&RunOptions::cfl, isCfl, "WARNING :: Courant Num was not given or too small", "Reset for 0.8", 0.8},
    {&RunOptions::cflGravity, isCfl, "WARNING :: Courant Num for gravity was not given or too small",
     "Reset for 0.8", 0.8},
    {&RunOptions::minCflStep, isStep, "WARNING :: Min Tstep for Expl SLine was not given or too small",
     "Reset for 1.d-2", 0.01},
    {&RunOptions::minCflgStep, isStep, "WARNING :: Min Tstep for Gravity flow was not given or too small",
     "Reset for 1.d-2", 0.01},
};

constexpr FallBack<int> IterationFallBacks[] = {
    {&RunOptions::MaxPressureIterations, isCount, "WARNING :: Max iter for pres was not given or zero",
     "We use default value, 30", 30},
    {&RunOptions::maxSaturationIterations, isCount,
     "WARNING :: Max iter for sat implicit was not given or zero", "We use default value, 30", 30},
};

constexpr FallBack<double> CriterionFallBacks[] = {
    {&RunOptions::PressureTolerance, isCriterion,
     "WARNING :: Conv criteria for Press was not given or too small", "We use default value, 1.d-2", 0.01},
    {&RunOptions::SaturationTolerance, isCriterion,
     "WARNING :: Conv criteria for Sat was not given or too small", "We use default value, 1.d-4", 0.0001},
};

template <class T, std::size_t N>
void applyFallBacks(const Console& console, const FallBack<T> (&rows)[N], RunOptions& options) {
    const RunOptions notGiven;
    for (const FallBack<T>& row : rows) {
        if (row.good(options.*row.field)) continue;
        lineToBoth(console, row.warning);
        // What was not given at all is no mistake.
        if (options.*row.field != notGiven.*row.field) noteWarning(console, row.warning, row.warning);
        lineToBoth(console, row.reset);
        options.*row.field = row.value;
    }
}

/// What the input asks for and the run does not do, or does at a price, in a line each.
struct Remark {
    bool (*applies)(const RunOptions&, const FluidTables&);
    std::string_view text;
};

constexpr Remark Remarks[] = {
    {[](const RunOptions& o, const FluidTables& t) {
         const bool capillary = t.PcowSpan > CapillarySpanLimit || t.PcogSpan > CapillarySpanLimit;
         return o.method != "FIM" && !o.lineCapillary && capillary;
     },
     "WARNING :: Capillary pressure of the tables does not act between cells (SL1DCON 7), fluids at rest "
     "will move"},
    {[](const RunOptions& o, const FluidTables& t) {
         const bool average = o.method == "streamline" && !o.conservativeMapping;
         return t.hasGas && (o.bubblePointMaxLimit || o.bubblePointMinLimit) && !average;
     },
     "WARNING :: Limits on solution gas (OPTIONKVR 5, 6) act under MAPPING AVERAGE alone"},
    {[](const RunOptions& o, const FluidTables& t) {
         const auto& phases = o.solverPhaseName;
         return t.scaledRegions > 0 && o.method == "streamline" &&
                std::find(phases.begin(), phases.end(), "btf") != phases.end();
     },
     "WARNING :: Analytical lines (SL1DCON) go by saturation table 1, end points by cell (ENDSCALE) do not "
     "act "
     "on them"},
};

}  // namespace

void finaliseOptions(const Console& console, const GridModel& grid, const FluidTables& tables,
                     const Schedule& schedule, RunOptions& options) {
    options.analyticRelPermPoints = AnalyticRelPermPoints;
    options.analyticSolutionPoints = AnalyticSolutionPoints;
    setLineCount(console, grid, schedule, options);
    boundLines(console, grid, options);
    boundNodeFactor(console, grid, options);
    // An implicit line has no use for the upwind word: the field names its solver instead.
    if (options.solverPhaseName.front() == "imp")
        for (std::string& name : options.upwindName) name = options.saturationSolver;
    applyFallBacks(console, StepFallBacks, options);
    applyFallBacks(console, IterationFallBacks, options);
    applyFallBacks(console, CriterionFallBacks, options);
    for (const Remark& remark : Remarks)
        if (remark.applies(options, tables)) {
            lineToBoth(console, remark.text);
            noteWarning(console, remark.text, remark.text);
        }
    echoOptions(console, options, tables);
}

}  // namespace kvr
