#pragma once

#include <algorithm>
#include <array>
#include <string>
#include <vector>

namespace kvr {

/// One row of UPSCALE or SMTHPRM.
struct ConditioningRow {
    std::string name;                    // property, up to 8 characters
    std::array<int, 3> window{1, 1, 1};  // cells along x, y, z (UPSCALE)
    int iterations = 0;                  // smoothing passes (SMTHPRM)
};

/// One row of BPCONST: held, without effect.
struct BoundaryPressureRow {
    std::string firstWord;
    std::array<int, 7> integers{};
    std::string lastWord;
};

/// How sensitivities to permeability are formed from lines.
enum class SensitivityForm {
    Coupled,  // what lines say, with the answer of the pressures of the whole field
    Lines,    // each line for itself
    Classic,  // time of flight over saturation; harmonic means along the line
    Adjoint   // no lines: the balances of all steps, linear about the run
};

/// Which curve of a well is matched beside its pressure, HMDATA.
enum class MatchedCurve {
    Auto,  // water cut where water is active, else gas-oil ratio
    Cut,   // of water
    GasOilRatio
};

/// Prices in $/bbl, $/bbl, $/Mscf.
struct PhasePrices {
    double oil = 0.0;
    double water = 0.0;
    double gas = 0.0;
};

/// Values of inputMode.
namespace input_mode {
inline constexpr int EclipseForm = 1;  // one file
inline constexpr int Reserved = 2;     // ends the run at once
inline constexpr int NativeDeck = 3;   // three files
inline constexpr int IxDeck = 4;       // .afi
}  // namespace input_mode

inline constexpr std::string_view DualPorosityName = "DPSP";  // of RunOptions::modelName

/// Every option of a run. Written only while the deck is read, except globalIterations (0 for FIM)
/// and solverPhaseName. Initialisers are the built-in values; `setOptionDefaults` and
/// `finaliseOptions` complete them.
struct RunOptions {
    // --- what RUNSPEC says -------------------------------------------------------------------
    bool hasOil = false;
    bool hasWater = false;
    bool hasGas = false;
    int componentCount = 0;  // 0: black oil
    int startDay = 0;
    int startMonth = 1;
    int startYear = 2000;
    bool ninePoint = false;
    int maxConnectionsPerCell = 6;  // 26 with NINEPOIN
    int maxWells = 50;
    int maxConnPerWell = 50;
    int maxConnAll = 50;
    bool noSimulation = false;  // NOSIM: the deck is read and checked, nothing is run
    int maxRockTables = 1;
    int maxPvtTables = 1;
    int maxRockRows = 200;
    int maxPvtRows = 200;
    int maxEquilibria = 1;  // EQLDIMS
    bool tracerActive = false;
    int tracerCount = 0;
    bool outputMetric = false;                  // "-- ConvertUnitCommandKVR"
    std::string gridDimensionality = "xyz_3d";  // "x_1d", "xy_2d", "xz_2d", "xyz_3d"

    // --- files and input form ----------------------------------------------------------------
    int inputMode = input_mode::NativeDeck;
    std::string dataFileBase;  // path and header of the deck, without extension
    std::string headerName = "ECLIPSE";
    std::string workingFolder;     // of the results; ends with its separator; blank for the present folder
    bool useRelativePath = false;  // the user typed a name
    std::string deckFile;          // path of a deck named on the command line
    std::string deckFolder;        // of the deck and its INCLUDE files; ends with its separator
    std::string outputPrefix;      // stands for KVR in the names of files; empty: they have their own names
    bool checkOnly = false;        // --check: as NOSIM, and nothing is written
    bool ixExtract = false;

    // --- numerical method --------------------------------------------------------------------
    std::string method = "streamline";   // "streamline", "FIM", "IMPES", "EbFVM"
    std::string pressureSolver = "amg";  // "st", "amg", "dgesv", "dgesl", "cg", "gmres", "bicg"
    std::string saturationSolver;        // blank (acts as "gband"), "dgesv", "gband"
    std::string modelName = "SPSP";      // "SPSP", "DPSP" by DUALPORO of RUNSPEC
    double PressureTolerance = 0.0;      // psi; 0.01 by fall-back
    double SaturationTolerance = 0.0;    // 1e-4 by fall-back
    int MaxPressureIterations = 0;       // 30 by fall-back
    int maxSaturationIterations = 0;     // 30 by fall-back
    // STEPCTRL: limits of the figures that a step is judged by.
    bool stepControl = true;
    double stepVolumeError = 2e-3;           // share of the pore volume of the field
    double stepCellVolumeError = 0.5;        // share of the pore volume of a cell
    double stepDeficit = 1e-4;               // share of the pore volume of the field
    double stepTargetError = 8e-3;           // relative
    double stepTargetMiss = 0.03;            // relative
    double stepMobilityError = 0.025;        // relative, mean over the flow
    double stepSmallest = 1e-3;              // days
    double maxDt = 1.0e7;                    // days; MAXDT
    bool optimalTstep = false;               // OPTTSTEP
    double tstepControl = 0.0;               // psi; OPTTSTEP value
    int pressureUpdateFrequency = 1;         // OPTIONKVR 1
    bool cornerPointHiRes = false;           // OPTIONKVR 2
    bool keepIrreducibleSaturation = false;  // OPTIONKVR 3: end points limit saturations
    bool outputSensitivity = false;          // OPTIONKVR 4
    bool bubblePointMaxLimit = false;        // OPTIONKVR 5
    bool bubblePointMinLimit = false;        // OPTIONKVR 6
    int internalDebug = 0;                   // OPTIONKVR 7, not used
    int globalIterations = 0;                // OPTIONKVR 8: iterative IMPES passes
    bool gravityDrainage = false;            // GRAVDR of RUNSPEC
    bool firstStepPressureUpdate = true;     // copies the compressibility flag in the defaults

    // --- streamlines --------------------------------------------------------------------------
    int requestedLines = 0;                           // NUMLINE 1; below 1: default rule
    std::string streamlineStart = "inj";              // "inj", "prd", "cel"
    std::string traceMissed = "No";                   // "Yes", "No"
    std::string nodeControl;                          // blank until SL1DCON, then "reg" or "irr"
    bool nodeControlAuto = false;                     // AUTO in the second field
    double nodeFactor = 1.0;                          // SL1DCON 3
    double mergeFactor = 1.0;                         // SL1DCON 9: merge factor of AUTO
    std::vector<std::string> solverPhaseName{"mas"};  // "btf", "mas", "imp", "hyb"
    std::vector<double> solverPhaseEnd{0.0};          // days; follows endTime
    std::vector<std::string> upwindName{"SPU"};  // echo "Degree of Upstream weighting"; solver name for "imp"
    std::string upwindWord = "SPU";   // the scheme explicit lines limit with: "SPU", "2PU", "3PU", "Leonard"
    bool lineCompressibility = true;  // SL1DCON 5
    bool lineGravity = true;          // SL1DCON 6
    bool lineCapillary = false;       // SL1DCON 7
    bool orthogonalProjection = false;  // SL1DCON 8
    bool oilRowsOfEachRs = true;        // PVTOROWS: else those of the last Rs serve all
    bool conservativeMapping = true;    // MAPPING: faces pass their own flow, made up as the lines are
    int mapCount = 1;                   // SL1DMAP, 1..1000
    double cfl = 0.0;                   // CFL 1; 0.8 by fall-back
    double minCflStep = 0.0;            // days; CFL 2; 0.01 by fall-back
    double cflGravity = 0.0;            // CFLG 1; 0.8 by fall-back
    double minCflgStep = 0.0;           // days; CFLG 2; 0.01 by fall-back
    bool cornerPointTracing = true;     // reference-cube tracing; no keyword
    bool saveEndNode = true;            // no keyword
    int analyticRelPermPoints = 200;    // "Num of Intp Rel, for ASol"
    int analyticSolutionPoints = 100;   // "Num of Intp Sol, for ASol"

    // --- geometry options ---------------------------------------------------------------------
    bool useNewtran = true;  // corner-point transmissibility; DX switches it off
    bool useJFunction = false;
    double surfaceTension = 1.0;  // JFUNC

    // --- output switches ----------------------------------------------------------------------
    bool debugOutput = false;
    std::string outputXls = "No";
    std::string outputPlt = "No";
    bool outputStreamline = false;
    bool outputDiffusiveTof = false;
    bool meanTimeMaps = true;  // TOFMAP: mean over the lines of a cell in place of the smallest
    bool outputPressureMatrix = false;
    bool outputSaturationMatrix = false;
    std::string outputKvrView = "Yes";
    std::string outputEclipse = "No";
    std::string outputSln = "No";

    // --- outside simulators -------------------------------------------------------------------
    bool traceFromRestart = false;
    bool useEclipsePressure = false;
    bool useEclipseSaturation = false;
    bool useEclipseTrans = false;
    bool useHistoryControls = false;  // "Use ECLIPSE Simulator ?": WCONHIST or WCONINJH present
    bool outputWellHistory = false;
    bool deleteEclipseRun = false;
    bool eclipseToTecplot = false;
    bool eclipseToIx = false;
    bool linuxRun = false;
    bool co2Model = false;
    double co2SolidRate = 0.0;  // 1/day, share of the dissolved CO2 that turns solid; CO2SOLID
    std::string simulatorCommand = "$e300";
    bool outsideAllowed = true;  // a command of the deck may be run; on the command line --allow-outside
    std::string restartName;     // RESTART: of the run that wrote it
    int restartStep = 0;         // RESTART
    bool restartInside = false;  // SKIPREST: the schedule is that of the whole run

    // --- property conditioning ----------------------------------------------------------------
    bool flowUpscaling = false;
    std::vector<ConditioningRow> upscaleRows;
    bool parameterSmoothing = false;
    std::vector<ConditioningRow> smoothingRows;
    std::vector<BoundaryPressureRow> boundaryPressureRows;

    // --- history matching ---------------------------------------------------------------------
    bool historyMatch = false;
    bool amplitudeMatching = false;
    bool gaussNewton = false;
    int hmIterationLimit = 30;
    int bhpGlobalIterations = 0;
    bool localGlobalPressureMatch = false;
    bool bhpMatchFlag = true;  // BHPLGMCH third value 1 switches it off; no effect
    double sensitivityTimeWeightWct = 1.0;
    double sensitivityTimeWeightBhp = 1.0;
    SensitivityForm travelTimeForm = SensitivityForm::Coupled;  // SNSFORM 1
    SensitivityForm pressureForm = SensitivityForm::Coupled;    // SNSFORM 2
    double globalWctLimit = 0.0;
    double gridWctLimit = 0.0;
    double globalPrsLimit = 0.0;  // no keyword
    double gridPrsLimit = 0.0;    // no keyword
    double lnkLimitWct = 2.0;
    double lnkLimitBhp = 2.0;
    double lnkLimit = 1.0;  // divisor
    double objectiveWeightWct = 0.5;
    double objectiveWeightBhp = 0.5;
    double maxParameter = 5000.0;
    double minParameter = 0.0001;
    int smoothingWct = 2;
    int smoothingBhp = 5;
    double misfitCriterionWct = 10.0;
    double misfitCriterionBhp = 10.0;
    double updateWellGrid = 0.0;
    int lsqrIterations = 400;
    double lsqrNorm = 0.0;
    double lsqrSmoothHorizontal = 0.0;
    double lsqrSmoothVertical = 0.0;
    double travelTimeBeta = 0.0;  // no keyword
    int matchHalvings = 4;        // HMSAFE: of an update that makes the misfit grow; 0: every update stands
    int curveParts = 0;           // HMCURVE: parts of each history that are matched beside its shift; 0: none
    int curveFrom = 1;            // HMCURVE: first iteration that does
    bool matchFinalRun = false;   // HMSAFE: the last update is run and judged, too
    MatchedCurve matchedCurve = MatchedCurve::Auto;  // HMDATA
    bool mostProbable = false;      // HMPRIOR: the most probable field in place of LSQOPT and OPTINV's rows
    double priorDeviation = 1.0;    // HMPRIOR: of ln k about the starting field
    double priorLength = 0.0;       // HMPRIOR: ft along x and y, over which ln k is alike; 0: by the grid
    double priorHeight = 0.0;       // HMPRIOR: ft along z; 0: by the grid
    double priorLevel = 1.0;        // HMPRIOR: deviation of ln k of the whole field at once
    double errorCut = 0.02;         // HMERROR: deviation of observed water cuts from those of a right model
    double errorGor = 0.05;         // HMERROR: the same of gas-oil ratios, as a share
    double errorBhp = 10.0;         // HMERROR: the same of bottom-hole pressures, psi
    bool permFileReplaced = false;  // PERMFILE has changed the file that the grid may have been read from
    std::string permFileTarget;     // PERMFILE: path of the file that outside runs take permeability from

    // --- rate optimisation --------------------------------------------------------------------
    bool rateOptimization = false;
    bool equalArrival = false;
    bool equalizeWafs = false;
    bool npvOptimization = false;
    bool minimumMiscibility = false;
    int optimizationStart = 1;
    double optimizationEmin = 0.0;
    double optimizationEmax = 1.0;
    double optimizationAlpha = 2.0;
    double optimizationWmin = -0.25;
    double optimizationWmax = 25.0;
    double optimizationMinFlux = 0.0;
    double optimizationTofUsage = 100.0;
    double optimizationTolerance = 0.001;  // WFOOPT 9
    PhasePrices productionPrice;
    PhasePrices injectionPrice;
    double miscibilityTarget = 0.0;  // psia, of the average pressure; MMPTARGET; 0: none
    double rateInterval = 0.0;       // days between changes of rates at least; RATEEVERY
    std::string baseSummary;         // path of the summary table of another run; BASERUN
    std::vector<double> componentPrice;
};

/// The line solver of phase `index`, 1-based; behind the last phase the last one goes on.
inline const std::string& solverPhase(const RunOptions& options, int index) {
    const auto last = static_cast<int>(options.solverPhaseName.size());
    return options.solverPhaseName[static_cast<std::size_t>(std::clamp(index, 1, last) - 1)];
}

/// The analytical solver of lines has no wells in the sense of the reports: no net inflow, no recovery.
/// Methods without lines have, whatever the word.
inline bool isAnalyticalPhase(const RunOptions& options, int index) {
    return options.method == "streamline" && solverPhase(options, index) == "btf";
}

/// The deck is read and checked alone, by the command line or by NOSIM.
inline bool runsNothing(const RunOptions& options) {
    return options.checkOnly || options.noSimulation;
}

/// Lines show what the restarts of another simulator hold; the run has no transport of its own.
inline bool onlyTraces(const RunOptions& options) {
    return options.traceFromRestart && !options.useEclipsePressure;
}

/// Rates follow the pairs that lines join.
inline bool weighsPairs(const RunOptions& options) {
    return options.rateOptimization || options.equalArrival;
}
/// The run changes rates of its wells itself.
inline bool optimizesRates(const RunOptions& options) {
    return weighsPairs(options) || options.minimumMiscibility;
}

inline bool isDualPorosity(const RunOptions& options) {
    return options.modelName == DualPorosityName;
}

}  // namespace kvr
