#include "deck/options/option_echo.hpp"

#include <span>
#include <string>
#include <string_view>

namespace kvr {

namespace {

struct Echoed {
    const RunOptions& options;
    const FluidTables& tables;
};

/// One line of the echo: a label and how its value is made.
struct EchoRow {
    std::string_view label;
    std::string (*value)(const Echoed&);
};

std::string show(bool value) {
    return value ? "Yes" : "No";
}
std::string show(int value) {
    return fmt::format("{}", value);
}
std::string show(double value) {
    return number(value);
}
std::string show(const std::string& value) {
    return value;
}

/// The value of a field of RunOptions.
template <auto Field>
std::string of(const Echoed& run) {
    return show(run.options.*Field);
}

std::string linePhase(const Echoed& run) {
    return run.options.solverPhaseName.front();
}
std::string lineUpwind(const Echoed& run) {
    return run.options.upwindName.front();
}
std::string lineNodes(const Echoed& run) {
    return run.options.nodeControl + (run.options.nodeControlAuto ? " AUTO" : "");
}
std::string hasCapillary(const Echoed& run) {
    return show(run.tables.PcowSpan > CapillarySpanLimit || run.tables.PcogSpan > CapillarySpanLimit);
}

constexpr EchoRow GeneralRows[] = {
    {"Nine Point Schme (FIM only)", of<&RunOptions::ninePoint>},
    {"Maximum Number of Cxn/Grid", of<&RunOptions::maxConnectionsPerCell>},
    {"Liniear Equation Solver", of<&RunOptions::pressureSolver>},
    {"Liniear Equation Solver Sat", of<&RunOptions::saturationSolver>},
    {"Numerical Method", of<&RunOptions::method>},
    {"Simulation Model", of<&RunOptions::modelName>},
    {"Gravity Drainage  DualPoro", of<&RunOptions::gravityDrainage>},
    {"Trnsmissibility by NEWTRAN?", of<&RunOptions::useNewtran>},
    {"Pressure Update Frequency", of<&RunOptions::pressureUpdateFrequency>},
    {"Jfunction Option", of<&RunOptions::useJFunction>},
    {"Jfunction Surface Tention", of<&RunOptions::surfaceTension>},
    {"Output METRIC unit file", of<&RunOptions::outputMetric>},
    {"Correction of Irreducible S", of<&RunOptions::keepIrreducibleSaturation>},
    {"Maximum iteration for prs", of<&RunOptions::MaxPressureIterations>},
    {"Maximum iteration for sat", of<&RunOptions::maxSaturationIterations>},
    {"Convergence criteria for P", of<&RunOptions::PressureTolerance>},
    {"Convergence criteria for S", of<&RunOptions::SaturationTolerance>},
    {"Optimal Time Steppint Ctrl", of<&RunOptions::tstepControl>},
    {"Maximum Allowable time step", of<&RunOptions::maxDt>},
    {"have Gas Phase through sim?", of<&RunOptions::hasGas>},
    {"Have Capillary thorugh sim?", hasCapillary},
    {"Iterative IMPES, Iteration", of<&RunOptions::globalIterations>},
};

constexpr EchoRow StreamlineRows[] = {
    {"Number of reference SLine", of<&RunOptions::requestedLines>},
    {"Mapping number of SL-Grid", of<&RunOptions::mapCount>},
    {"Save EndNode SL info ?", of<&RunOptions::saveEndNode>},
    {"Tracing Corner Point Method", of<&RunOptions::cornerPointTracing>},
    {"Tecplot Corner point HiRes", of<&RunOptions::cornerPointHiRes>},
    {"Output KVR SL inv file ?", of<&RunOptions::outputSln>},
    {"Output KVR inversion file", of<&RunOptions::outputEclipse>},
    {"Tracer Injection Active ?", of<&RunOptions::tracerActive>},
    {"Num of Tracer (If active)", of<&RunOptions::tracerCount>},
    {"Streamline Start from ?", of<&RunOptions::streamlineStart>},
    {"Trace from missed grid ?", of<&RunOptions::traceMissed>},
    {"Use Orthogonal Projection", of<&RunOptions::orthogonalProjection>},
    {"Num of Intp Rel, for ASol", of<&RunOptions::analyticRelPermPoints>},
    {"Num of Intp Sol, for ASol", of<&RunOptions::analyticSolutionPoints>},
    {"Streamline Saturation solver", linePhase},
    {"How do you divide node on SL", lineNodes},
    {"Degree of Upstream weighting", lineUpwind},
    {"Include Compressibility onSL", of<&RunOptions::lineCompressibility>},
    {"Include Gravity Effect  byOS", of<&RunOptions::lineGravity>},
    {"Include Capillary Pressure", of<&RunOptions::lineCapillary>},
};

constexpr EchoRow FileRows[] = {
    {"CFL condition for 1D", of<&RunOptions::cfl>},
    {"CFL condition for Gr", of<&RunOptions::cflGravity>},
    {"minimmum CFL  for 1D", of<&RunOptions::minCflStep>},
    {"minimmum CFL  for Gr", of<&RunOptions::minCflgStep>},
    {"Output Debug File", of<&RunOptions::debugOutput>},
    {"Output .xls  File", of<&RunOptions::outputXls>},
    {"Output .plt  File", of<&RunOptions::outputPlt>},
    {"Output Streamline", of<&RunOptions::outputStreamline>},
    {"Output Diffusive TOF", of<&RunOptions::outputDiffusiveTof>},
    {"Output Pressure Mtrx", of<&RunOptions::outputPressureMatrix>},
    {"Output Streamline MX", of<&RunOptions::outputSaturationMatrix>},
    {"Output KVR Visualize", of<&RunOptions::outputKvrView>},
    {"Output KVR Inversion", of<&RunOptions::outputEclipse>},
    {"Output KVR Inv .SLN", of<&RunOptions::outputSln>},
    {"Compressiblity metho", of<&RunOptions::lineCompressibility>},
    {"bubble pres max lim", of<&RunOptions::bubblePointMaxLimit>},
    {"bubble pres min lim", of<&RunOptions::bubblePointMinLimit>},
};

constexpr EchoRow SystemRows[] = {
    {"Global File Header Name", of<&RunOptions::headerName>},
    {"Global Working Folder Path", of<&RunOptions::workingFolder>},
    {"Main inputdata file path", of<&RunOptions::dataFileBase>},
    {"Given Simulation Command", of<&RunOptions::simulatorCommand>},
    {"Using Relative file path?", of<&RunOptions::useRelativePath>},
    {"Delete Pre outdata before ?", of<&RunOptions::deleteEclipseRun>},
    {"Restart File Detected ?", of<&RunOptions::traceFromRestart>},
    {"Convert Restart to Tecplot?", of<&RunOptions::eclipseToTecplot>},
    {"Convert ECLIPSE to IX ?", of<&RunOptions::eclipseToIx>},
    {"IX Extract Option Active ?", of<&RunOptions::ixExtract>},
};

constexpr EchoRow MatchSwitch = {"History Matching Activated?", of<&RunOptions::historyMatch>};

constexpr EchoRow MatchRows[] = {
    {"Total Iteration for HM", of<&RunOptions::hmIterationLimit>},
    {"Output Parameter Sensitiv", of<&RunOptions::outputSensitivity>},
    {"Upper Const, Global, Wct", of<&RunOptions::globalWctLimit>},
    {"Upper Const, Global, Prs", of<&RunOptions::globalPrsLimit>},
    {"Upper Const, Grid  , Wct", of<&RunOptions::gridWctLimit>},
    {"Upper Const, Grid  , Prs", of<&RunOptions::gridPrsLimit>},
    {"Ln(k) update constraint ?", of<&RunOptions::lnkLimit>},
    {"Ln(k) update constraint WCT", of<&RunOptions::lnkLimitWct>},
    {"Ln(k) update constraint Prd", of<&RunOptions::lnkLimitBhp>},
    {"Maximum possible grid para", of<&RunOptions::maxParameter>},
    {"Minimum possible grid para", of<&RunOptions::minParameter>},
    {"Matched TTime Criteria", of<&RunOptions::misfitCriterionWct>},
    {"Minimum BHP Criteria", of<&RunOptions::misfitCriterionBhp>},
    {"Update Well Grid ?", of<&RunOptions::updateWellGrid>},
    {"Use ECLIPSE Simulator ?", of<&RunOptions::useHistoryControls>},
    {"Output WCONHIST data ?", of<&RunOptions::outputWellHistory>},
    {"Number of Smoothing WCT sns", of<&RunOptions::smoothingWct>},
    {"Number of Smoothing BHP sns", of<&RunOptions::smoothingBhp>},
    {"Use Gauss Newton Method ?", of<&RunOptions::gaussNewton>},
    {"LSQR Maximum Iteration", of<&RunOptions::lsqrIterations>},
    {"LSQR Norm Constraint", of<&RunOptions::lsqrNorm>},
    {"LSQR Vertical Smoothness", of<&RunOptions::lsqrSmoothVertical>},
    {"LSQR Horizontal Smootherss", of<&RunOptions::lsqrSmoothHorizontal>},
    {"Local Global Pressure Match", of<&RunOptions::localGlobalPressureMatch>},
    {"Total Iteration for GloblHM", of<&RunOptions::bhpGlobalIterations>},
    {"Is Amplitude matching ?", of<&RunOptions::amplitudeMatching>},
    {"Travel Time Beta Factor", of<&RunOptions::travelTimeBeta>},
};

bool optimizes(const RunOptions& options) {
    return options.rateOptimization || options.equalArrival;
}

constexpr EchoRow OptimizationSwitch = {"Rate Optimization Activated?",
                                        [](const Echoed& run) { return show(optimizes(run.options)); }};

template <PhasePrices RunOptions::*Prices, double PhasePrices::*Phase>
std::string price(const Echoed& run) {
    return show(run.options.*Prices.*Phase);
}

constexpr EchoRow OptimizationRows[] = {
    {"Equalize Arrival Time ?", of<&RunOptions::equalArrival>},
    {"Equalize Allocation Factor?", of<&RunOptions::equalizeWafs>},
    {"NPV based Optimizaation ?", of<&RunOptions::npvOptimization>},
    {"Treat Minimum Miscibility P", of<&RunOptions::minimumMiscibility>},
    {"Oil Prd Price for NPV", price<&RunOptions::productionPrice, &PhasePrices::oil>},
    {"Wat Prd Price for NPV", price<&RunOptions::productionPrice, &PhasePrices::water>},
    {"Gas Prd Price for NPV", price<&RunOptions::productionPrice, &PhasePrices::gas>},
    {"Oil Inj Price for NPV", price<&RunOptions::injectionPrice, &PhasePrices::oil>},
    {"Wat Inj Price for NPV", price<&RunOptions::injectionPrice, &PhasePrices::water>},
    {"Gas Inj Price for NPV", price<&RunOptions::injectionPrice, &PhasePrices::gas>},
    {"Optimization strt step", of<&RunOptions::optimizationStart>},
    {"Optimization emin", of<&RunOptions::optimizationEmin>},
    {"Optimization emax", of<&RunOptions::optimizationEmax>},
    {"Optimization alpha", of<&RunOptions::optimizationAlpha>},
    {"Optimization wmin", of<&RunOptions::optimizationWmin>},
    {"Optimization wmax", of<&RunOptions::optimizationWmax>},
    {"Optimization qwmin", of<&RunOptions::optimizationMinFlux>},
    {"Optimization UsageofTOF", of<&RunOptions::optimizationTofUsage>},
};

constexpr EchoRow TestingRows[] = {
    {"Forward Restart Pressure", of<&RunOptions::useEclipsePressure>},
    {"Forward Restart Saturation", of<&RunOptions::useEclipseSaturation>},
    {"Do Flo Based upscaling ?", of<&RunOptions::flowUpscaling>},
    {"Do Parameter Smoothing ?", of<&RunOptions::parameterSmoothing>},
};

constexpr EchoRow ConsoleRows[] = {
    {"SL_1D Solution metho", linePhase},
    {"CFL condition for 1D", of<&RunOptions::cfl>},
    {"CFL condition for Gr", of<&RunOptions::cflGravity>},
    {"minimmum CFL  for 1D", of<&RunOptions::minCflStep>},
    {"minimmum CFL  for Gr", of<&RunOptions::minCflgStep>},
    {"Output Debug File", of<&RunOptions::debugOutput>},
    {"Output .xls  File", of<&RunOptions::outputXls>},
    {"Output .plt  File", of<&RunOptions::outputPlt>},
    {"Output Streamline", of<&RunOptions::outputStreamline>},
    {"Output Pressure Mtrx", of<&RunOptions::outputPressureMatrix>},
    {"Output Streamline MX", of<&RunOptions::outputSaturationMatrix>},
    {"Output KVR Visualize", of<&RunOptions::outputKvrView>},
    {"Output KVR Inversion", of<&RunOptions::outputEclipse>},
    {"Output KVR Inv .SLN", of<&RunOptions::outputSln>},
    {"Compressiblity metho", of<&RunOptions::lineCompressibility>},
    {"Gravity Drainage  DP", of<&RunOptions::gravityDrainage>},
    {"Max iteration for prs", of<&RunOptions::MaxPressureIterations>},
    {"Max iteration for sat", of<&RunOptions::maxSaturationIterations>},
    {"Conv criteria for prs", of<&RunOptions::PressureTolerance>},
    {"Conv criteria for sat", of<&RunOptions::SaturationTolerance>},
};

constexpr EchoRow SummaryRows[] = {
    {"CFL condition for 1D", of<&RunOptions::cfl>},
    {"CFL condition for Gr", of<&RunOptions::cflGravity>},
    {"minimmum CFL  for 1D", of<&RunOptions::minCflStep>},
    {"minimmum CFL  for Gr", of<&RunOptions::minCflgStep>},
    {"Output Streamline", of<&RunOptions::outputStreamline>},
    {"Output Pressure Mtrx", of<&RunOptions::outputPressureMatrix>},
    {"Output Streamline MX", of<&RunOptions::outputSaturationMatrix>},
    {"Compressiblity metho", of<&RunOptions::lineCompressibility>},
    {"Gravity Drainage  DP", of<&RunOptions::gravityDrainage>},
    {"SPECIAL pbub corre +", of<&RunOptions::bubblePointMaxLimit>},
    {"SPECIAL pbub corre -", of<&RunOptions::bubblePointMinLimit>},
};

constexpr std::string_view Rule = "--------------------------------------------------";

void header(const Console& console, std::string_view title) {
    lineToLog(console, Rule);
    lineToLog(console, title);
    lineToLog(console, Rule);
}

std::string lineOf(const EchoRow& row, const Echoed& run) {
    return fmt::format("{} :: {}", row.label, row.value(run));
}

void rowsToLog(const Console& console, const Echoed& run, std::span<const EchoRow> rows) {
    for (const EchoRow& row : rows) lineToLog(console, lineOf(row, run));
}

void section(const Console& console, const Echoed& run, std::string_view title,
             std::span<const EchoRow> rows) {
    header(console, title);
    rowsToLog(console, run, rows);
}

/// A section whose rows stand only when its feature is on.
void section(const Console& console, const Echoed& run, std::string_view title, const EchoRow& feature,
             bool on, std::span<const EchoRow> rows) {
    header(console, title);
    lineToLog(console, lineOf(feature, run));
    if (on) rowsToLog(console, run, rows);
}

void echoToLog(const Console& console, const Echoed& run) {
    const RunOptions& options = run.options;
    section(console, run, "Simulation General Info", GeneralRows);
    section(console, run, "Some Streamline Related Option", StreamlineRows);
    section(console, run, "File I/O, Option, ETC.", FileRows);
    section(console, run, "General System information", SystemRows);
    section(console, run, "History Matching Related Data", MatchSwitch, options.historyMatch, MatchRows);
    section(console, run, "Rate Optimization Related Data", OptimizationSwitch, optimizes(options),
            OptimizationRows);
    section(console, run, "Other Testing Functions", TestingRows);
}

}  // namespace

void echoOptions(const Console& console, const RunOptions& options, const FluidTables& tables) {
    const Echoed run{options, tables};
    if (options.debugOutput)
        echoToLog(console, run);
    else
        lineToLog(console, "Debug Mode is OFF");
    for (const EchoRow& row : ConsoleRows) lineToScreen(console, lineOf(row, run));
}

void echoSummary(const Console& console, const RunOptions& options, const FluidTables& tables) {
    rowsToLog(console, Echoed{options, tables}, SummaryRows);
}

}  // namespace kvr
