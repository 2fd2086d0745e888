#include "deck/options/option_section.hpp"

#include "deck/options/option_handlers.hpp"
#include "deck/reading/keyword_table.hpp"

namespace kvr {

namespace {

constexpr int NpvOptWidth = 6;  // characters of NPVOPT that are compared

using Row = KeywordRow<RunOptions>;

// In the order in which the keywords are tested.
constexpr Row OptionKeywords[] = {
    {"FDMETHOD", readFdMethod, "numerical method: STREAMLINE, IMPES, FIM, EbFVM"},
    {"PSOLVER", readPressureSolver, "pressure solver: AMG, SGAUSS, DGESV, ITGSV, CG, GMRES"},
    {"SSOLVER", readSaturationSolver, "implicit solver on a line: SGAUSS, GBAND"},
    {"CONVERGE", readConverge, "pressure and saturation criterion, pressure and saturation iterations"},
    {"NUMLINE", readNumLine, "streamlines, where they start (INJ, PRD, CEL), trace from missed cells"},
    {"SL1DCON", readLineControl, "how a line is solved: method, nodes, factor, upwinding, effects"},
    {"SL1DMAP", readMapCount, "saturation sub-steps of one pressure step, 1 to 1000"},
    {"CFL", readCfl, "CFL number and smallest step (days) on a line"},
    {"CFLG", readCflGravity, "CFL number and smallest step (days) of gravity and capillary flow"},
    {"BPCONST", readBoundaryPressures, "boundary pressure constraints: held, no effect"},
    {"UPSCALE", readUpscaling, "flow-based upscaling: property and window along x, y, z"},
    {"SMTHPRM", readSmoothing, "smoothing: property and number of passes"},
    {"OPTIONKVR", readOptionSwitches, "eight switches of the method"},
    {"OUTPUTKVR", readOutputSwitches, "ten output switches"},
    {"ECLTRACE", setRestartTracing, "trace lines from restart files of an outside simulator"},
    {"OUTWHIST", setWellHistoryOutput, "write the rates of the run as history controls at its end"},
    {"ECL2TEC", setEclipseToTecplot, "convert restart files to Tecplot files"},
    {"DELECL", setDeleteEclipseRun, "delete the outside simulator's earlier output"},
    {"DOINV", readInversion, "history matching: misfit, minimiser, iterations"},
    {"BHPLGMCH", readPressureMatch, "local and global bottom-hole pressure matching"},
    {"SNSTIMWT", readSensitivityWeights, "time weights of the sensitivities, 0 to 1"},
    {"SNSFORM", readSensitivityForms,
     "how sensitivities are formed, of travel time and pressure: COUPLED, LINES, CLASSIC, ADJOINT"},
    {"ECLCOMM", readSimulatorCommand, "command line of the outside simulator"},
    {"OPTTSTEP", readOptimalTstep, "time step control by the largest pressure change (psi)"},
    {"OPTINV", readInversionLimits, "water-cut limits and limits of the change of ln k"},
    {"PERMFILE", copyPermFile, "target and initial file: the initial one is copied over the target"},
    {"OBJINV", readObjectiveWeights, "weights of water cut and bottom-hole pressure"},
    {"MAXPARAM", readMaxParameter, "largest permeability"},
    {"MINPARAM", readMinParameter, "smallest permeability"},
    {"AVGSENS", readSensitivityAverages, "smoothing passes of the sensitivities"},
    {"MISFCRIT", readMisfitCriteria, "misfits at which matching ends"},
    {"UPWELGRD", readWellGridUpdate, "update of well cells"},
    {"LSQOPT", readLsqr, "LSQR iterations, norm, horizontal and vertical smoothness"},
    {"HMCURVE", readCurveMatch, "curves matched in parts: parts of each history, first iteration that does"},
    {"HMDATA", readMatchedCurve, "curve of a well that is matched: AUTO, CUT or GOR"},
    {"HMPRIOR", readPrior,
     "the most probable field: deviation of ln k, lengths over which it is alike (ft), that of its level"},
    {"HMERROR", readDataErrors, "errors of histories: water cut, share of the gas-oil ratio, pressure (psi)"},
    {"HMSAFE", readSafeUpdates, "updates that make the misfit grow: halvings (0 to 4), run of the last one"},
    {"OPTIMIZE", setOptimize, "rate optimisation"},
    {"WFOOPT", readWaterfloodNumbers, "nine numbers of the rate optimisation"},
    {"EQARRIVE", setEqualArrival, "equal arrival times"},
    {"NPVOPT", setNpvOptimization, "optimisation by value", NpvOptWidth},
    {"NPVPRICE", readNpvPrice, "prices of oil, water ($/bbl) and gas ($/Mscf)"},
    {"INJPRICE", readInjectionPrice, "prices of injected oil, water and gas"},
    {"PRDPRICE", readProductionPrice, "prices of produced oil, water and gas"},
    {"CMPPRICE", readComponentPrice, "prices of the components"},
    {"EQWAFS", setEqualizeWafs, "equal well allocation factors"},
    {"OPTMMP", setMinimumMiscibility, "keep pressure around the minimum miscibility pressure"},
    {"MMPTARGET", readMiscibilityTarget, "average pressure that OPTMMP aims at; 0: none"},
    {"RATEEVERY", readRateInterval, "least days between two changes of rates"},
    {"BASERUN", readBaseSummary, "summary table of another run that this one is compared with at its end"},
    {"MAXDT", readMaxDt, "longest time step, days"},
    {"STEPCTRL", readStepControl, "steps that judge themselves: Yes or No, six limits, smallest step (days)"},
    {"MAPPING", readMapping, "how lines move cells: CONSERVE or AVERAGE"},
    {"TOFMAP", readTimeMapForm,
     "what maps of the time of flight hold of the lines of a cell: MEAN or SMALLEST"},
    {"PVTOROWS", readOilRows, "oil above its bubble point: by the rows of the LAST Rs, or of ALL"},
    {"USEECLP", setEclipsePressure, "pressure from the outside simulator"},
    {"USEECLS", setEclipseSaturation, "saturations from the outside simulator"},
    {"USEECLTR", setEclipseTrans, "transmissibility from the outside simulator"},
    {"LINUXRUN", setLinuxRun, "the outside simulator runs under Linux"},
    {"CO2MBM", setCo2Model, "CO2 storage in a black-oil model"},
    {"CO2SOLID", readCo2SolidRate, "share of the dissolved CO2 that turns solid, a day"},
};

constexpr IncludeTexts Texts{"ERROR: INCLUDE File Open Error at STREAMLINE section",
                             "File I/O Error, in STREAMLINE Section",
                             "INCLUDE FILE FINISHED, STREAMLINE SECTION"};

}  // namespace

void setOptionDefaults(RunOptions& options) {
    constexpr double DefaultMaxDt = 1.0e7;  // days
    options.maxDt = DefaultMaxDt;
    options.pressureSolver = "amg";
    options.method = "streamline";
    options.streamlineStart = "inj";
    options.traceMissed = "No";
    options.outputXls = "No";
    options.outputPlt = "No";
    options.outputEclipse = "No";
    options.outputKvrView = "Yes";
    options.lineCompressibility = true;
    options.lineGravity = options.lineCompressibility;
    options.lineCapillary = true;
    options.orthogonalProjection = false;
    options.firstStepPressureUpdate = options.lineCompressibility;
    options.keepIrreducibleSaturation = false;
    options.outputDiffusiveTof = false;
    options.outputSln = "No";
    options.pressureUpdateFrequency = 1;
    options.bubblePointMaxLimit = false;
    options.bubblePointMinLimit = false;
    // One phase; its end was set when the schedule was read and stays.
    options.solverPhaseName = {"mas"};
    options.solverPhaseEnd.resize(1);
    options.upwindName = {"SPU"};
    options.upwindWord = "SPU";
    if (options.traceFromRestart) {
        options.outputStreamline = true;
        options.outputKvrView = "No";
    }
}

void readOptionSection(SectionReader& reader, RunOptions& options) {
    dispatchSection<RunOptions>(reader, options, OptionKeywords, Texts);
}

}  // namespace kvr
