#include "deck/options/option_section.hpp"

#include "unit/quiet_console.hpp"
#include "unit/scratch_folder.hpp"

#include <gtest/gtest.h>

namespace kvr {
namespace {

/// An option section read from text, after the defaults between the passes.
struct OptionDeck {
    explicit OptionDeck(const std::string& text, const RunOptions& start = {}, Console* other = nullptr)
        : options(start) {
        sinks.console = other != nullptr ? other : &quiet.console;
        cursor.fileName = "TEST.DATA";
        cursor.text = text;
        reader.cursor = &cursor;
        reader.sinks = &sinks;
        reader.section = "TUNEKVR";
        reader.errorName = "STREAMLINE";
        setOptionDefaults(options);
        readOptionSection(reader, options);
    }
    [[nodiscard]] bool said(const std::string& text) const {
        return quiet.screenText().find(text) != std::string::npos &&
               quiet.logText().find(text) != std::string::npos;
    }

    QuietConsole quiet;
    DeckSinks sinks;
    DeckCursor cursor;
    SectionReader reader;
    RunOptions options;
};

/// Reads the text with its messages on the standard error stream, for exit tests.
void readAloud(const std::string& text, const std::string& folder = "") {
    Console console = consoleOnStandardError();
    DeckSinks sinks;
    sinks.console = &console;
    DeckCursor cursor;
    cursor.fileName = "TEST.DATA";
    cursor.text = text;
    SectionReader reader;
    reader.cursor = &cursor;
    reader.sinks = &sinks;
    reader.section = "TUNEKVR";
    reader.errorName = "STREAMLINE";
    reader.workingFolder = folder;
    RunOptions options;
    readOptionSection(reader, options);
}

RunOptions gasRun() {
    RunOptions options;
    options.hasGas = true;
    return options;
}

TEST(OptionDefaults, StandWhenTheSectionIsEmpty) {
    const RunOptions options = OptionDeck("").options;
    EXPECT_EQ(options.method, "streamline");
    EXPECT_EQ(options.pressureSolver, "amg");
    EXPECT_EQ(options.saturationSolver, "");
    EXPECT_EQ(options.modelName, "SPSP");
    EXPECT_EQ(options.streamlineStart, "inj");
    EXPECT_EQ(options.traceMissed, "No");
    EXPECT_EQ(options.nodeControl, "");
    EXPECT_EQ(options.solverPhaseName, std::vector<std::string>{"mas"});
    EXPECT_EQ(options.upwindName, std::vector<std::string>{"SPU"});
    EXPECT_EQ(options.maxDt, 1.0e7);
    EXPECT_EQ(options.outputXls + options.outputPlt + options.outputKvrView + options.outputEclipse,
              "NoNoYesNo");
    EXPECT_TRUE(options.lineCompressibility);
    EXPECT_TRUE(options.lineGravity);
    EXPECT_TRUE(options.lineCapillary) << "it acts where tables have it";
    EXPECT_TRUE(options.firstStepPressureUpdate);
    EXPECT_EQ(options.pressureUpdateFrequency, 1);
    EXPECT_EQ(options.mapCount, 1);
    EXPECT_EQ(options.lsqrIterations, 400);
    EXPECT_EQ(options.simulatorCommand, "$e300");
}

TEST(OptionDefaults, KeepTheEndOfTheSolverPhaseThatTheScheduleSet) {
    RunOptions options;
    options.solverPhaseEnd = {730.0};
    setOptionDefaults(options);
    EXPECT_EQ(options.solverPhaseEnd, std::vector<double>{730.0});
}

TEST(OptionDefaults, SwitchStreamlineOutputOnWhenRestartTracingIsSetAlready) {
    RunOptions options;
    options.traceFromRestart = true;
    setOptionDefaults(options);
    EXPECT_TRUE(options.outputStreamline);
    EXPECT_EQ(options.outputKvrView, "No");
    EXPECT_FALSE(OptionDeck("ECLTRACE\n").options.outputStreamline);
}

TEST(FdMethod, UnknownWordGivesEbfvmWithAWarning) {
    const OptionDeck deck("FDMETHOD\n X /\n");
    EXPECT_EQ(deck.options.method, "EbFVM");
    EXPECT_TRUE(deck.said("WARNING :: FDMETHOD IS INCORRECT OR NOT SPECIFIED"));
}

TEST(FdMethod, GoesByTheFirstLetterInEitherCase) {
    EXPECT_EQ(OptionDeck("FDMETHOD\nf\n").options.method, "FIM");
    EXPECT_EQ(OptionDeck("FDMETHOD\nSTREAMLINE\n").options.method, "streamline");
    EXPECT_EQ(OptionDeck("FDMETHOD\n-- comment\nimpes /\n").options.method, "IMPES");
    const OptionDeck ebfvm("FDMETHOD\nEbFVM\n");
    EXPECT_EQ(ebfvm.options.method, "EbFVM");
    EXPECT_FALSE(ebfvm.said("INCORRECT"));
    EXPECT_TRUE(ebfvm.said("WARNING :: EbFVM HAS NO SOLVER HERE"));
}

TEST(PressureSolver, GoesByTheFirstLetterAndFallsToBicg) {
    const std::pair<const char*, const char*> cases[] = {{"Z", "bicg"},  {"i", "dgesl"}, {"SGAUSS", "st"},
                                                         {"d", "dgesv"}, {"CG", "cg"},   {"GMRES", "gmres"},
                                                         {"AMG", "amg"}};
    for (const auto& [word, solver] : cases)
        EXPECT_EQ(OptionDeck(std::string("PSOLVER\n") + word + " /\n").options.pressureSolver, solver);
}

TEST(SaturationSolver, IsLeftByAnUnknownWord) {
    EXPECT_EQ(OptionDeck("SSOLVER\nSGAUSS\n").options.saturationSolver, "dgesv");
    EXPECT_EQ(OptionDeck("SSOLVER\nGBAND\nSSOLVER\nxyz\n").options.saturationSolver, "gband");
    EXPECT_TRUE(OptionDeck("SSOLVER\nGBAND\n").said("-> Input Sat Matrix Solver is : gband"));
}

TEST(Converge, FillsTwoCriteriaAndTwoIterationLimits) {
    const OptionDeck deck("CONVERGE\n1.d-1 2.d-4 15 25 /\n");
    EXPECT_EQ(deck.options.PressureTolerance, 0.1);
    EXPECT_EQ(deck.options.SaturationTolerance, 2e-4);
    EXPECT_EQ(deck.options.MaxPressureIterations, 15);
    EXPECT_EQ(deck.options.maxSaturationIterations, 25);
    EXPECT_TRUE(deck.said("READ -> CONVERGE"));
    EXPECT_TRUE(deck.said("-> Input Pres Conv Crit : 0.1"));
    EXPECT_TRUE(deck.said("-> Input Pres Iteration : 15"));
}

TEST(NumLine, ReadsCountStartAndCover) {
    const OptionDeck deck("NUMLINE\n 500 PRD Yes /\n");
    EXPECT_EQ(deck.options.requestedLines, 500);
    EXPECT_EQ(deck.options.streamlineStart, "prd");
    EXPECT_EQ(deck.options.traceMissed, "Yes");
    EXPECT_EQ(OptionDeck("NUMLINE\n 5 BOTH /\n").options.streamlineStart, "cel");
    EXPECT_EQ(OptionDeck("NUMLINE\n 5 /\n").options.streamlineStart, "inj");
    EXPECT_TRUE(
        deck.said("READ -> NUMLINE\n-> MxNum of SL : 500\n-> Start from? : prd\n-> Cover All ? : Yes\n"));
}

TEST(LineControl, ReadsTheAnalyticalRecord) {
    const RunOptions options = OptionDeck("SL1DCON\n a IRR 2 T /\n").options;
    EXPECT_EQ(options.solverPhaseName, std::vector<std::string>{"btf"});
    EXPECT_EQ(options.nodeControl, "irr");
    EXPECT_EQ(options.nodeFactor, 2.0);
    EXPECT_EQ(options.upwindWord, "2PU");
    EXPECT_EQ(options.upwindName, std::vector<std::string>{"2PU"});
}

TEST(LineControl, AutoSetsTheNodeFactorBackToOne) {
    const RunOptions options = OptionDeck("SL1DCON\n E AUTO 3 /\n").options;
    EXPECT_EQ(options.solverPhaseName.front(), "mas");
    EXPECT_EQ(options.nodeControl, "reg");
    EXPECT_TRUE(options.nodeControlAuto);
    EXPECT_EQ(options.nodeFactor, 1.0);
}

TEST(LineControl, ReadsTheSwitchesByTheirOwnRules) {
    const RunOptions on = OptionDeck("SL1DCON\nEXPLICIT REG 1.0 SPU Yes Yes Yes Yes 2.5 /\n").options;
    EXPECT_TRUE(on.lineCompressibility && on.lineGravity && on.lineCapillary && on.orthogonalProjection);
    EXPECT_EQ(on.mergeFactor, 2.5);
    const RunOptions off = OptionDeck("SL1DCON\nIMPLICIT REG 1.0 L No No No No /\n").options;
    EXPECT_FALSE(off.lineCompressibility || off.lineGravity || off.lineCapillary || off.orthogonalProjection);
    EXPECT_EQ(off.solverPhaseName.front(), "imp");
    EXPECT_EQ(off.upwindWord, "3PU");
    const RunOptions missing = OptionDeck("SL1DCON\nEXPLICIT /\n").options;
    EXPECT_TRUE(missing.lineCompressibility && missing.lineGravity);
    EXPECT_FALSE(missing.lineCapillary || missing.orthogonalProjection);
    EXPECT_EQ(missing.nodeControl, "reg");
}

TEST(LineControl, TellsItsSevenSettings) {
    const OptionDeck deck("SL1DCON\nEXPLICIT IRR 1.0 SPU Yes No Yes No /\n");
    for (const char* line : {"Streamline Saturation solver : mas", "How do you divide node on SL : irr",
                             "Degree of Upstream weighting : SPU", "Include Compressibility onSL : Yes",
                             "Include Gravity Effect  byOS : No", "Include Capillary Pressure   : Yes",
                             "Use Orthogonal Projection    : No"})
        EXPECT_TRUE(deck.said(line)) << line;
}

TEST(MapCount, IsClampedToOneAndAThousand) {
    EXPECT_EQ(OptionDeck("SL1DMAP\n0 /\n").options.mapCount, 1);
    EXPECT_EQ(OptionDeck("SL1DMAP\n5000 /\n").options.mapCount, 1000);
    EXPECT_EQ(OptionDeck("SL1DMAP\n3 /\n").options.mapCount, 3);
}

TEST(OptionSwitches, FirstValueBelowOneMeansTheFirstStepOnly) {
    EXPECT_EQ(OptionDeck("OPTIONKVR\n0 /\n").options.pressureUpdateFrequency, 99999);
    EXPECT_EQ(OptionDeck("OPTIONKVR\n/\n").options.pressureUpdateFrequency, 1);
    EXPECT_EQ(OptionDeck("").options.pressureUpdateFrequency, 1);
}

TEST(OptionSwitches, ForceTheGorConstraintsOnWithoutGas) {
    EXPECT_TRUE(OptionDeck("OPTIONKVR\n1 /\n").options.bubblePointMaxLimit);
    const RunOptions gas = OptionDeck("OPTIONKVR\n1 1 1 1 0 1 0 4 /\n", gasRun()).options;
    EXPECT_FALSE(gas.bubblePointMaxLimit);
    EXPECT_TRUE(gas.bubblePointMinLimit);
    EXPECT_TRUE(gas.cornerPointHiRes && gas.keepIrreducibleSaturation && gas.outputSensitivity);
    EXPECT_EQ(gas.globalIterations, 4);
}

TEST(OptionSwitches, AreToldInTheirOrder) {
    EXPECT_TRUE(OptionDeck("OPTIONKVR\n3 1 0 1 0 1 0 4 /\n", gasRun())
                    .said("READ -> OPTIONKVR\n"
                          "-> Pressure Update Freq (0 <= 1upda) : 3\n"
                          "-> Tecplot 8-point Corner (Fault)    : Yes\n"
                          "-> Check Irreduciable Saturation     : No\n"
                          "-> Output Sensitivity for inversion? : Yes\n"
                          "-> Constraint Upper Solution GOR     : No\n"
                          "-> Constraint Lower Solution GOR     : Yes\n"
                          "-> Make sure that this option is false : No\n"
                          "-> Iterative IMPES, how many iteration : 4\n"));
}

TEST(OutputSwitches, ActInTheirOrderAndTellEachLine) {
    const OptionDeck deck("OUTPUTKVR\n1 1 1 1 1 1 1 0 1 1 /\n");
    const RunOptions& options = deck.options;
    EXPECT_TRUE(options.debugOutput && options.outputStreamline && options.outputDiffusiveTof);
    EXPECT_TRUE(options.outputPressureMatrix && options.outputSaturationMatrix);
    EXPECT_EQ(options.outputXls + options.outputPlt + options.outputKvrView + options.outputEclipse +
                  options.outputSln,
              "YesYesNoYesYes");
    EXPECT_TRUE(
        deck.said("READ -> OUTPUTKVR\n"
                  "-> Output in Debug(This file)          : Yes\n"
                  "-> Output in Excel   (.xls)            : Yes\n"
                  "-> Output in Tecplot (.plt)            : Yes\n"
                  "-> Output Streamline                   : Yes\n"
                  "-> Output Diffusive TOF                : Yes\n"
                  "-> Output Pressure Matrix (Very Heavy) : Yes\n"
                  "-> Output Saturati Matrix (Very Heavy) : Yes\n"
                  "-> Output in KVR view files            : No\n"
                  "-> Output in ECLIPSE format (Binary)   : Yes\n"
                  "-> Output Streamline in .SLN           : Yes\n"));
}

TEST(OutputSwitches, NotGivenLeaveTheViewFilesOnAndTheRestOff) {
    const RunOptions options = OptionDeck("OUTPUTKVR\n0 1 /\n").options;
    EXPECT_FALSE(options.debugOutput);
    EXPECT_EQ(options.outputXls, "Yes");
    EXPECT_EQ(options.outputKvrView, "Yes");
    EXPECT_EQ(options.outputEclipse, "No");
}

TEST(Inversion, ZeroIterationsBecomeThirty) {
    const OptionDeck deck("DOINV\nT L 0 /\n");
    EXPECT_TRUE(deck.options.historyMatch);
    EXPECT_FALSE(deck.options.amplitudeMatching || deck.options.gaussNewton);
    EXPECT_EQ(deck.options.hmIterationLimit, 30);
    EXPECT_TRUE(deck.said("Run Inversion Make sure that :"));
    const RunOptions other = OptionDeck("DOINV\namplitude gn 12 /\n").options;
    EXPECT_TRUE(other.amplitudeMatching && other.gaussNewton);
    EXPECT_EQ(other.hmIterationLimit, 12);
}

TEST(PressureMatch, KeepsItsCountBelowTheTotal) {
    EXPECT_EQ(OptionDeck("DOINV\nT L 10\nBHPLGMCH\n11 A 1 /\n").options.bhpGlobalIterations, 9);
    EXPECT_EQ(OptionDeck("DOINV\nT L 10\nBHPLGMCH\n10 A /\n").options.bhpGlobalIterations, 10);
    const RunOptions options = OptionDeck("BHPLGMCH\n-2 a 1 /\n").options;
    EXPECT_EQ(options.bhpGlobalIterations, 0);
    EXPECT_TRUE(options.localGlobalPressureMatch);
    EXPECT_FALSE(options.bhpMatchFlag);
}

TEST(SensitivityForms, AreKnownByTheirWordsEachForItself) {
    const RunOptions given = OptionDeck("SNSFORM\nLINES CLASSIC /\n").options;
    EXPECT_EQ(given.travelTimeForm, SensitivityForm::Lines);
    EXPECT_EQ(given.pressureForm, SensitivityForm::Classic);
    const RunOptions other = OptionDeck("SNSFORM\nclassic coupled /\n").options;
    EXPECT_EQ(other.travelTimeForm, SensitivityForm::Classic);
    EXPECT_EQ(other.pressureForm, SensitivityForm::Coupled);
    const OptionDeck unknown("SNSFORM\nC nothing /\n");
    EXPECT_EQ(unknown.options.travelTimeForm, SensitivityForm::Coupled);
    EXPECT_EQ(unknown.options.pressureForm, SensitivityForm::Coupled);
    EXPECT_TRUE(unknown.said("Sensitivity of pressure ::"));
}

TEST(MatchedCurveWord, IsKnownByItsFirstLetter) {
    EXPECT_EQ(OptionDeck("DOINV\nT L 3 /\n").options.matchedCurve, MatchedCurve::Auto);
    EXPECT_EQ(OptionDeck("HMDATA\ngor /\n").options.matchedCurve, MatchedCurve::GasOilRatio);
    EXPECT_EQ(OptionDeck("HMDATA\nCUT /\n").options.matchedCurve, MatchedCurve::Cut);
    EXPECT_EQ(OptionDeck("HMDATA\nAUTO /\n").options.matchedCurve, MatchedCurve::Auto);
}

TEST(PriorNumbers, SwitchTheMostProbableFieldOnAndAreRepaired) {
    EXPECT_FALSE(OptionDeck("DOINV\nT L 3 /\n").options.mostProbable);
    const RunOptions given = OptionDeck("HMPRIOR\n0.7 300 20 0.2 /\nHMERROR\n0.03 0.1 25 /\n").options;
    EXPECT_TRUE(given.mostProbable);
    EXPECT_EQ(given.priorDeviation, 0.7);
    EXPECT_EQ(given.priorLength, 300.0);
    EXPECT_EQ(given.priorHeight, 20.0);
    EXPECT_EQ(given.priorLevel, 0.2);
    EXPECT_EQ(given.errorCut, 0.03);
    EXPECT_EQ(given.errorGor, 0.1);
    EXPECT_EQ(given.errorBhp, 25.0);
    const RunOptions broken = OptionDeck("HMPRIOR\n0 -1 -1 -1 /\nHMERROR\n0 0 -3 /\n").options;
    EXPECT_EQ(broken.priorDeviation, 1.0);
    EXPECT_EQ(broken.priorLength, 0.0);
    EXPECT_EQ(broken.priorLevel, 1.0);
    EXPECT_EQ(broken.errorCut, 0.02);
    EXPECT_EQ(broken.errorGor, 0.05);
    EXPECT_EQ(broken.errorBhp, 10.0);
}

TEST(MatchingNumbers, AreRepairedSilently) {
    const RunOptions options = OptionDeck(
                                   "SNSTIMWT\n2 -1 /\nLSQOPT\n3 2 .5 .5 /\nMINPARAM\n-1 /\nMAXPARAM\n0 /\n"
                                   "OBJINV\n-1 0.25 /\nMISFCRIT\n-1 2e10 /\nUPWELGRD\n-3 /\n"
                                   "AVGSENS\n10001 -1 /\nOPTINV\n0.5 1e-20 -1 3 0 /\n")
                                   .options;
    EXPECT_EQ(options.sensitivityTimeWeightWct, 1.0);
    EXPECT_EQ(options.sensitivityTimeWeightBhp, 0.0);
    EXPECT_EQ(options.lsqrIterations, 400);
    EXPECT_EQ(options.lsqrNorm, 1.0);
    EXPECT_EQ(options.lsqrSmoothHorizontal, 0.5);
    EXPECT_EQ(options.lsqrSmoothVertical, 0.5);
    EXPECT_EQ(options.minParameter, 0.0001);
    EXPECT_EQ(options.maxParameter, 5000.0);
    EXPECT_EQ(options.objectiveWeightWct, 1.0);
    EXPECT_EQ(options.objectiveWeightBhp, 0.25);
    EXPECT_EQ(options.misfitCriterionWct, 10.0);
    EXPECT_EQ(options.misfitCriterionBhp, 10.0);
    EXPECT_EQ(options.updateWellGrid, 0.0);
    EXPECT_EQ(options.smoothingWct, 2);
    EXPECT_EQ(options.smoothingBhp, 5);
    EXPECT_EQ(options.globalWctLimit, 0.5);
    EXPECT_EQ(options.gridWctLimit, 0.0);
    EXPECT_EQ(options.lnkLimitWct, 0.0);
    EXPECT_EQ(options.lnkLimitBhp, 3.0);
    EXPECT_EQ(options.lnkLimit, 0.0);
}

TEST(MatchingNumbers, AreAnnouncedUnderTheirOldNames) {
    EXPECT_TRUE(OptionDeck("AVGSENS\n1 1 /\n").said("READ -> MINPARAM"));
    EXPECT_TRUE(OptionDeck("OBJINV\n1 1 /\n").said("READ -> OBJNV"));
    for (const char* keyword : {"NPVPRICE", "INJPRICE", "PRDPRICE"})
        EXPECT_TRUE(OptionDeck(std::string(keyword) + "\n1 1 1 /\n").said("READ -> NPV\n"));
}

TEST(Prices, OfInjectionFollowThoseOfProduction) {
    const RunOptions options = OptionDeck("NPVPRICE\n1.0 -0.1 0.1 /\n").options;
    EXPECT_EQ(options.productionPrice.oil, 1.0);
    EXPECT_EQ(options.productionPrice.water, -0.1);
    EXPECT_EQ(options.productionPrice.gas, 0.1);
    EXPECT_EQ(options.injectionPrice.oil, -1.0);
    EXPECT_EQ(options.injectionPrice.water, -0.1);
    EXPECT_EQ(options.injectionPrice.gas, -0.1);
}

TEST(WaterfloodNumbers, InFrontOfOptimizeMayLeaveTheSeventhAtZero) {
    const RunOptions options = OptionDeck("WFOOPT\n2 0.1 /\nOPTIMIZE\n").options;
    EXPECT_TRUE(options.rateOptimization);
    EXPECT_EQ(options.optimizationStart, 2);
    EXPECT_EQ(options.optimizationEmin, 0.1);
    EXPECT_EQ(options.optimizationEmax, 1.0);
    EXPECT_EQ(options.optimizationAlpha, 2.0);
    EXPECT_EQ(options.optimizationWmin, -0.25);
    EXPECT_EQ(options.optimizationWmax, 25.0);
    EXPECT_EQ(options.optimizationTofUsage, 100.0);
    EXPECT_EQ(options.optimizationTolerance, 0.001);
}

TEST(WaterfloodNumbers, BehindOptimizeStopTheRunWhenTheSeventhIsZero) {
    EXPECT_EXIT(readAloud("OPTIMIZE\nWFOOPT\n1 0 1 2 /\n"), testing::ExitedWithCode(1),
                "ERROR : Option 7 should not be zero at WFOOPT. Provide constraint\n"
                "File TEST.DATA, line 3, keyword WFOOPT");
}

TEST(Optimization, KeywordsPrintTheirOwnMethodNames) {
    EXPECT_TRUE(OptionDeck("EQARRIVE\n").said("Waterflood Optimization Activated - Al-Hutali Method"));
    EXPECT_TRUE(OptionDeck("NPVOPT\n").said("Waterflood Optimization Activated - Al-Hutali Method"));
    EXPECT_TRUE(OptionDeck("EQWAFS\n").said("Waterflood Optimization Activated - Thieles Method"));
    const RunOptions options = OptionDeck("OPTIMIZE\nEQWAFS\nEQARRIVE\n").options;
    EXPECT_TRUE(options.equalArrival && options.equalizeWafs);
    EXPECT_FALSE(options.rateOptimization);
    EXPECT_TRUE(OptionDeck("NPVOPTXY\n").options.npvOptimization);
}

TEST(ComponentPrices, StartFromOne) {
    RunOptions start;
    start.componentCount = 3;
    const RunOptions options = OptionDeck("CMPPRICE\n2 1* /\n", start).options;
    EXPECT_EQ(options.componentPrice, (std::vector<double>{2.0, 1.0, 1.0}));
}

TEST(SimulatorCommand, IsTheNextLineAsItStands) {
    const OptionDeck deck("ECLCOMM\n-- the command\n  run/ecl2ix -a 'b' /\nMAXDT\n5 /\n");
    EXPECT_EQ(deck.options.simulatorCommand, "run/ecl2ix -a 'b' /");
    EXPECT_TRUE(deck.options.eclipseToIx);
    EXPECT_EQ(deck.options.maxDt, 5.0);
    EXPECT_TRUE(deck.said("Max Dt Specidied : Max Dt for Pressure and Saturation step"));
}

TEST(RestartSwitches, ImplyRestartTracing) {
    const OptionDeck trace("ECLTRACE\n");
    EXPECT_TRUE(trace.options.traceFromRestart);
    EXPECT_EQ(trace.options.inputMode, 1);
    EXPECT_TRUE(trace.said("JUST TRACING STREAMLINE FROM RST"));
    EXPECT_TRUE(OptionDeck("USEECLP\n").options.traceFromRestart);
    const OptionDeck saturation("USEECLS\n");
    EXPECT_TRUE(saturation.options.useEclipseSaturation && saturation.options.traceFromRestart);
    EXPECT_TRUE(saturation.said("ECLIPSE Pressure : USE Pressure data from ECLIPSE"));
    EXPECT_FALSE(OptionDeck("USEECLTR\n").options.traceFromRestart);
}

TEST(SwitchKeywords, PrintTheirNameAndTheirText) {
    const std::pair<const char*, const char*> texts[] = {
        {"ECLTRACE", "TRACING FROM ECLIPSE\nJUST TRACING STREAMLINE FROM RST"},
        {"OUTWHIST", "Output WCHONHIST Data end of the simulation, check WCHONHIST_TEMP.DATA"},
        {"ECL2TEC", "Output Convert_ECL2Tecplot at the starting simulation"},
        {"DELECL", "Delete previous ECL run at the starting simulation"},
        {"OPTIMIZE", "Waterflood Optimization Activated"},
        {"OPTMMP", "Flow Optimizatio : Missibility Pressure option Activated"},
        {"USEECLP", "ECLIPSE Pressure : USE Pressure data from ECLIPSE"},
        {"USEECLS", "ECLIPSE Pressure : USE Pressure data from ECLIPSE"},
        {"USEECLTR", "USE Transmisibility data from ECLIPSE INIT file"},
        {"LINUXRUN", "ECLIPSE Run by Linux System"},
        {"CO2MBM", "Black Oil CO2 Sequestration Option By M.Blunt Model"}};
    for (const auto& [keyword, text] : texts) {
        const OptionDeck deck(std::string(keyword) + "\n");
        EXPECT_EQ(deck.quiet.screenText(), std::string("READ -> ") + keyword + "\n" + text + "\n");
        EXPECT_EQ(deck.quiet.logText(), deck.quiet.screenText());
    }
    EXPECT_TRUE(OptionDeck("ECLCOMM\n$e300\n").said("-> ECLIPSE Run Command Specified    : $e300\n"));
    EXPECT_TRUE(OptionDeck("NPVPRICE\n1 2 3 /\n")
                    .said("READ -> NPV\nPrice of OIL,WATER and GAS, $/bbl,$/bbl and $/Mscf 1 2 3\n"));
}

TEST(Co2Model, CarriesOneTracer) {
    const RunOptions options = OptionDeck("CO2MBM\n").options;
    EXPECT_TRUE(options.co2Model && options.tracerActive);
    EXPECT_EQ(options.tracerCount, 1);
}

TEST(Co2Model, TakesARateAtWhichDissolvedGasTurnsSolid) {
    EXPECT_EQ(OptionDeck("CO2SOLID\n2.5e-6 /\n").options.co2SolidRate, 2.5e-6);
    const OptionDeck negative("CO2SOLID\n-1 /\n");
    EXPECT_EQ(negative.options.co2SolidRate, 0.0);
    EXPECT_TRUE(negative.said("WARNING :: CO2SOLID -1 IS NO RATE, NOTHING TURNS SOLID"));
}

TEST(BoundaryPressures, AreHeldRowByRow) {
    const RunOptions options =
        OptionDeck("BPCONST\n 'AQUIFER12' 1 2 3 4 5 6 7 'WAT' /\n EDGE 7 6 5 4 3 2 1 OIL /\n/\nMAXDT\n9 /\n")
            .options;
    ASSERT_EQ(options.boundaryPressureRows.size(), 2U);
    EXPECT_EQ(options.boundaryPressureRows[0].firstWord, "AQUIFER1");
    EXPECT_EQ(options.boundaryPressureRows[0].integers, (std::array<int, 7>{1, 2, 3, 4, 5, 6, 7}));
    EXPECT_EQ(options.boundaryPressureRows[1].lastWord, "OIL");
    EXPECT_EQ(options.maxDt, 9.0);
}

TEST(ConditioningTables, EndAtTheirTenthRow) {
    std::string rows;
    for (int n = 0; n < 12; ++n) rows += "PERMX 3 /\n";
    const OptionDeck deck("SMTHPRM\n" + rows + "/\nUPSCALE\nPORO 2 3 4 /\n/\n");
    EXPECT_EQ(deck.options.smoothingRows.size(), 10U);
    EXPECT_EQ(deck.options.smoothingRows[9].iterations, 3);
    ASSERT_EQ(deck.options.upscaleRows.size(), 1U);
    EXPECT_EQ(deck.options.upscaleRows[0].window, (std::array<int, 3>{2, 3, 4}));
    EXPECT_TRUE(deck.said("Smoothing Parameter : PERMX By 3"));
    EXPECT_TRUE(deck.said("UPSCALE : PORO By WindowSize 2 3 4"));
}

TEST(PermFile, CopiesTheInitialFileOverTheTarget) {
    const ScratchFolder folder;
    folder.write("target.inc", "old\n");
    folder.write("initial.inc", "PERMX\n" + std::string(1030, 'x') + "\n");
    QuietConsole quiet;
    DeckSinks sinks;
    sinks.console = &quiet.console;
    DeckCursor cursor;
    cursor.text = "PERMFILE\n'target.inc' 'initial.inc' /\n";
    SectionReader reader;
    reader.cursor = &cursor;
    reader.sinks = &sinks;
    reader.section = "TUNEKVR";
    reader.workingFolder = folder.path;
    RunOptions options;
    readOptionSection(reader, options);
    EXPECT_EQ(folder.read("target.inc"), "PERMX\n" + std::string(1024, 'x') + "\n");
    EXPECT_NE(quiet.logText().find("-> Finished Replacing HistoryMatch target File ::"), std::string::npos);
    EXPECT_NE(quiet.logText().find("-> Finished Replacing HistoryMatch Initial  File ::"), std::string::npos);
}

TEST(PermFile, StopsWhenAFileIsMissing) {
    const ScratchFolder folder;
    EXPECT_EXIT(readAloud("PERMFILE\na b /\n", folder.path), testing::ExitedWithCode(1),
                "Error :: HistoryMatching, cannot find target  input file by PERMFILE");
    folder.write("a", "x\n");
    EXPECT_EXIT(readAloud("PERMFILE\na b /\n", folder.path), testing::ExitedWithCode(1),
                "Error :: HistoryMatching, cannot find initial  input file by PERMFILE");
}

TEST(OptionSection, StopsAtALetterWhereANumberBelongs) {
    EXPECT_EXIT(readAloud("MAXDT\nten /\n"), testing::ExitedWithCode(1),
                "ERROR: File reading error, code = 64\nReading error, in STREAMLINE Section\n"
                "File TEST.DATA, line 2, keyword MAXDT");
}

TEST(OptionSection, EndsAtASectionWordAndReportsWhatItDoesNotKnow) {
    const OptionDeck deck("FOO\nMAXDT\n3 /\nEND\nMAXDT\n4 /\n");
    EXPECT_EQ(deck.options.maxDt, 3.0);
    EXPECT_TRUE(deck.said(" FOO      -> not surpported  "));
}

TEST(OptionSwitches, ThatAreNeitherZeroNorOneAreTold) {
    const OptionDeck deck("OUTPUTKVR\n1 1 2 0 0 0 0 3 /\nOPTIONKVR\n5 0 7 0 0 0 0 4 /\n");
    EXPECT_TRUE(deck.said("WARNING :: OUTPUTKVR 3: 2 IS NEITHER 0 NOR 1, TAKEN AS 0\n"));
    EXPECT_TRUE(deck.said("WARNING :: OUTPUTKVR 8: 3 IS NEITHER 0 NOR 1, TAKEN AS 1\n"));
    EXPECT_TRUE(deck.said("WARNING :: OPTIONKVR 3: 7 IS NEITHER 0 NOR 1, TAKEN AS 0\n"));
    EXPECT_FALSE(deck.said("OUTPUTKVR 2:")) << "a switch that is on is none of them";
    EXPECT_FALSE(deck.said("OPTIONKVR 1:") || deck.said("OPTIONKVR 8:")) << "counts are no switches";
    EXPECT_EQ(deck.options.outputPlt + deck.options.outputKvrView, "NoYes");
}

TEST(OptionSwitches, RepeatAStepAThousandTimesAtMost) {
    const OptionDeck deck("OPTIONKVR\n0 0 0 0 0 0 0 2147483647 /\n");
    EXPECT_EQ(deck.options.globalIterations, 1000);
    EXPECT_TRUE(deck.said("WARNING :: OPTIONKVR 8: 2147483647 REPEATS OF EVERY STEP, 1000 ARE TAKEN\n"));
    const OptionDeck most("OPTIONKVR\n0 0 0 0 0 0 0 1000 /\n");
    EXPECT_EQ(most.options.globalIterations, 1000);
    EXPECT_FALSE(most.said("OPTIONKVR 8:"));
}

TEST(OptionSection, NamesTheOptionThatAnUnknownWordLooksLike) {
    const OptionDeck deck("NUMLINES\n20 /\nFDMETHDO\nIMPES\nCFLX\n0.5 /\n");
    EXPECT_TRUE(deck.said("-> Is NUMLINE meant?\n"));
    EXPECT_TRUE(deck.said("-> Is FDMETHOD meant?\n"));
    EXPECT_FALSE(deck.said("-> Is IMPES meant?\n"));
    EXPECT_EQ(deck.options.requestedLines, 0) << "nothing is taken for what it looks like";
}

}  // namespace
}  // namespace kvr
