#include "deck/options/option_handlers.hpp"

#include <algorithm>

namespace kvr {

namespace {

constexpr int MaxMapCount = 1000;  // mapping sub-steps of one pressure step

struct InitialRow {
    char initial;
    std::string_view value;
};

/// Value of the row with this initial; `other` when none has it.
template <std::size_t N>
std::string choose(const InitialRow (&rows)[N], char initial, std::string_view other) {
    for (const InitialRow& row : rows)
        if (row.initial == initial) return std::string(row.value);
    return std::string(other);
}

constexpr InitialRow Methods[] = {{'S', "streamline"}, {'F', "FIM"}, {'I', "IMPES"}, {'E', "EbFVM"}};

constexpr InitialRow PressureSolvers[] = {{'S', "st"}, {'D', "dgesv"}, {'I', "dgesl"},
                                          {'C', "cg"}, {'G', "gmres"}, {'A', "amg"}};

constexpr InitialRow SaturationSolvers[] = {{'S', "dgesv"}, {'G', "gband"}};

constexpr InitialRow LineStarts[] = {{'P', "prd"}, {'C', "cel"}, {'B', "cel"}};

// The only lower-case letter that counts is the a of the analytical method.
constexpr InitialRow LineMethods[] = {{'A', "btf"}, {'a', "btf"}, {'I', "imp"}, {'H', "hyb"}};

constexpr InitialRow UpwindWords[] = {{'S', "SPU"}, {'1', "SPU"}, {'T', "2PU"},
                                      {'2', "2PU"}, {'L', "3PU"}, {'3', "3PU"}};

/// Tells of a word that stands for none of the rows, and what is taken instead.
template <std::size_t N>
void tellWord(const SectionReader& reader, const InitialRow (&rows)[N], std::string_view word,
              std::string_view accepted, std::string_view taken) {
    const char initial = upperInitialOf(word);
    if (word.empty()) return;
    for (const InitialRow& row : rows)
        if (row.initial == initial) return;
    if (accepted.find(initial) != std::string_view::npos) return;
    warnHere(reader, "WARNING :: {}: WORD {} IS NOT KNOWN, {} IS TAKEN", reader.keyword, word, taken);
}

/// Yes or No; anything else is told.
void tellYesNo(const SectionReader& reader, std::string_view word) {
    const char initial = upperInitialOf(word);
    if (word.empty() || initial == 'Y' || initial == 'N') return;
    warnHere(reader, "WARNING :: {}: WORD {} IS NEITHER YES NOR NO", reader.keyword, word);
}

std::string readWord(SectionReader& reader) {
    std::string word;
    const std::array<ListTarget, 1> targets = {&word};
    readRecord(reader, targets);
    return word;
}

/// The nine values of SL1DCON as read.
struct LineControlRecord {
    std::string method, nodes, upwind, compressibility, gravity, capillary, projection;
};

void applyNodeControl(char initial, RunOptions& options) {
    options.nodeControl = initial == 'I' ? "irr" : "reg";
    options.nodeControlAuto = initial == 'A';
    if (options.nodeControlAuto) options.nodeFactor = 1.0;
}

void tellLineControl(const SectionReader& reader, const RunOptions& options) {
    const std::string nodes = options.nodeControl + (options.nodeControlAuto ? " AUTO" : "");
    tellValue(reader, "Streamline Saturation solver :", options.solverPhaseName.front());
    tellValue(reader, "How do you divide node on SL :", nodes);
    tellValue(reader, "Degree of Upstream weighting :", options.upwindName.front());
    tellValue(reader, "Include Compressibility onSL :", yesNo(options.lineCompressibility));
    tellValue(reader, "Include Gravity Effect  byOS :", yesNo(options.lineGravity));
    tellValue(reader, "Include Capillary Pressure   :", yesNo(options.lineCapillary));
    tellValue(reader, "Use Orthogonal Projection    :", yesNo(options.orthogonalProjection));
}

void readCflPair(SectionReader& reader, double& number, double& minimumStep) {
    const std::array<ListTarget, 2> targets = {&number, &minimumStep};
    readRecord(reader, targets);
}

}  // namespace

void readFdMethod(SectionReader& reader, RunOptions& options) {
    options.method = choose(Methods, upperInitialOf(readWord(reader)), "");
    if (options.method == "EbFVM")
        warnHere(reader, "WARNING :: EbFVM HAS NO SOLVER HERE, PRESSURES AND SATURATIONS STAND STILL");
    if (!options.method.empty()) return;
    warn(consoleOf(reader), "WARNING :: FDMETHOD IS INCORRECT OR NOT SPECIFIED");
    options.method = "EbFVM";
}

void readPressureSolver(SectionReader& reader, RunOptions& options) {
    const std::string word = readWord(reader);
    tellWord(reader, PressureSolvers, word, "B", "BICG");
    options.pressureSolver = choose(PressureSolvers, upperInitialOf(word), "bicg");
}

void readSaturationSolver(SectionReader& reader, RunOptions& options) {
    const std::string word = readWord(reader);
    tellWord(reader, SaturationSolvers, word, "", "GBAND");
    options.saturationSolver = choose(SaturationSolvers, initialOf(word), options.saturationSolver);
    tellValue(reader, "-> Input Sat Matrix Solver is :", options.saturationSolver);
}

void readConverge(SectionReader& reader, RunOptions& options) {
    const std::array<ListTarget, 4> targets = {&options.PressureTolerance, &options.SaturationTolerance,
                                               &options.MaxPressureIterations,
                                               &options.maxSaturationIterations};
    readRecord(reader, targets);
    tellValue(reader, "-> Input Pres Conv Crit :", options.PressureTolerance);
    tellValue(reader, "-> Input Pres Iteration :", options.MaxPressureIterations);
}

void readNumLine(SectionReader& reader, RunOptions& options) {
    std::string start;
    std::string cover;
    const std::array<ListTarget, 3> targets = {&options.requestedLines, &start, &cover};
    readRecord(reader, targets);
    tellWord(reader, LineStarts, start, "I", "INJ");
    tellYesNo(reader, cover);
    options.streamlineStart = choose(LineStarts, initialOf(start), "inj");
    options.traceMissed = initialOf(cover) == 'Y' ? "Yes" : "No";
    tellValue(reader, "-> MxNum of SL :", options.requestedLines);
    tellValue(reader, "-> Start from? :", options.streamlineStart);
    tellValue(reader, "-> Cover All ? :", options.traceMissed);
}

void readLineControl(SectionReader& reader, RunOptions& options) {
    LineControlRecord record;
    const std::array<ListTarget, 9> targets = {
        &record.method,  &record.nodes,     &options.nodeFactor, &record.upwind,      &record.compressibility,
        &record.gravity, &record.capillary, &record.projection,  &options.mergeFactor};
    readRecord(reader, targets);

    tellWord(reader, LineMethods, record.method, "EM", "EXPLICIT");
    tellWord(reader, UpwindWords, record.upwind, "", "SPU");
    for (const std::string* word :
         {&record.compressibility, &record.gravity, &record.capillary, &record.projection})
        tellYesNo(reader, *word);
    for (std::string& phase : options.solverPhaseName)
        phase = choose(LineMethods, initialOf(record.method), "mas");
    applyNodeControl(initialOf(record.nodes), options);
    options.upwindWord = choose(UpwindWords, initialOf(record.upwind), "SPU");
    for (std::string& name : options.upwindName) name = options.upwindWord;
    options.lineCompressibility = initialOf(record.compressibility) != 'N';
    options.lineGravity = initialOf(record.gravity) != 'N';
    options.lineCapillary = initialOf(record.capillary) == 'Y';
    options.orthogonalProjection = initialOf(record.projection) == 'Y';
    tellLineControl(reader, options);
}

void readMapCount(SectionReader& reader, RunOptions& options) {
    const std::array<ListTarget, 1> targets = {&options.mapCount};
    readRecord(reader, targets);
    if (options.mapCount < 1 || options.mapCount > MaxMapCount)
        warnHere(reader, "WARNING :: SL1DMAP {} IS OUT OF RANGE 1 TO {}", options.mapCount, MaxMapCount);
    options.mapCount = std::clamp(options.mapCount, 1, MaxMapCount);
}

void readCfl(SectionReader& reader, RunOptions& options) {
    readCflPair(reader, options.cfl, options.minCflStep);
}

void readCflGravity(SectionReader& reader, RunOptions& options) {
    readCflPair(reader, options.cflGravity, options.minCflgStep);
}

void readMaxDt(SectionReader& reader, RunOptions& options) {
    const double before = options.maxDt;
    const std::array<ListTarget, 1> targets = {&options.maxDt};
    readRecord(reader, targets);
    if (!(options.maxDt > 0.0)) {
        warnHere(reader, "WARNING :: MAXDT {} IS NOT ABOVE 0, {} IS TAKEN", number(options.maxDt),
                 number(before));
        options.maxDt = before;
    }
    lineToBoth(consoleOf(reader), "Max Dt Specidied : Max Dt for Pressure and Saturation step");
}

void readStepControl(SectionReader& reader, RunOptions& options) {
    std::string word;
    const std::array<ListTarget, 8> targets = {&word,
                                               &options.stepVolumeError,
                                               &options.stepCellVolumeError,
                                               &options.stepDeficit,
                                               &options.stepTargetError,
                                               &options.stepTargetMiss,
                                               &options.stepMobilityError,
                                               &options.stepSmallest};
    const RunOptions before = options;
    readRecord(reader, targets);
    tellYesNo(reader, word);
    for (const auto limit :
         {&RunOptions::stepVolumeError, &RunOptions::stepCellVolumeError, &RunOptions::stepDeficit,
          &RunOptions::stepTargetError, &RunOptions::stepTargetMiss, &RunOptions::stepMobilityError,
          &RunOptions::stepSmallest}) {
        if (options.*limit > 0.0) continue;
        warnHere(reader, "WARNING :: STEPCTRL: LIMIT {} IS NOT ABOVE 0, {} IS TAKEN", number(options.*limit),
                 number(before.*limit));
        options.*limit = before.*limit;
    }
    options.stepControl = upperInitialOf(word) != 'N';
    tellValue(reader, "Step control :", yesNo(options.stepControl));
}

void readMapping(SectionReader& reader, RunOptions& options) {
    constexpr InitialRow Mappings[] = {{'C', "conserve"}, {'A', "average"}};
    const std::string word = readWord(reader);
    tellWord(reader, Mappings, word, "", "CONSERVE");
    options.conservativeMapping = upperInitialOf(word) != 'A';
    tellValue(reader, "Mapping keeps every amount :", yesNo(options.conservativeMapping));
}

void readTimeMapForm(SectionReader& reader, RunOptions& options) {
    constexpr InitialRow Forms[] = {{'M', "mean"}, {'S', "smallest"}};
    const std::string word = readWord(reader);
    tellWord(reader, Forms, word, "", "MEAN");
    options.meanTimeMaps = upperInitialOf(word) != 'S';
    tellValue(reader, "Time maps hold the mean of a cell :", yesNo(options.meanTimeMaps));
}

void readOilRows(SectionReader& reader, RunOptions& options) {
    constexpr InitialRow Forms[] = {{'A', "all"}, {'L', "last"}};
    const std::string word = readWord(reader);
    tellWord(reader, Forms, word, "", "ALL");
    options.oilRowsOfEachRs = upperInitialOf(word) != 'L';
    tellValue(reader, "Undersaturated oil by the rows of each Rs :", yesNo(options.oilRowsOfEachRs));
}

void readOptimalTstep(SectionReader& reader, RunOptions& options) {
    const std::array<ListTarget, 1> targets = {&options.tstepControl};
    readRecord(reader, targets);
    options.optimalTstep = options.tstepControl > 0.0;
    if (!options.optimalTstep)
        warnHere(reader, "WARNING :: OPTTSTEP {} IS NOT ABOVE 0, NOT USED", number(options.tstepControl));
}

}  // namespace kvr
