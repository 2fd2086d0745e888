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
    if (!options.method.empty()) return;
    warn(consoleOf(reader), "WARNING :: FDMETHOD IS INCORRECT OR NOT SPECIFIED");
    options.method = "EbFVM";
}

void readPressureSolver(SectionReader& reader, RunOptions& options) {
    options.pressureSolver = choose(PressureSolvers, upperInitialOf(readWord(reader)), "bicg");
}

void readSaturationSolver(SectionReader& reader, RunOptions& options) {
    options.saturationSolver =
        choose(SaturationSolvers, initialOf(readWord(reader)), options.saturationSolver);
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
    options.mapCount = std::clamp(options.mapCount, 1, MaxMapCount);
}

void readCfl(SectionReader& reader, RunOptions& options) {
    readCflPair(reader, options.cfl, options.minCflStep);
}

void readCflGravity(SectionReader& reader, RunOptions& options) {
    readCflPair(reader, options.cflGravity, options.minCflgStep);
}

void readMaxDt(SectionReader& reader, RunOptions& options) {
    const std::array<ListTarget, 1> targets = {&options.maxDt};
    readRecord(reader, targets);
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
    readRecord(reader, targets);
    options.stepControl = upperInitialOf(word) != 'N';
    tellValue(reader, "Step control :", yesNo(options.stepControl));
}

void readMapping(SectionReader& reader, RunOptions& options) {
    options.conservativeMapping = upperInitialOf(readWord(reader)) != 'A';
    tellValue(reader, "Mapping keeps every amount :", yesNo(options.conservativeMapping));
}

void readOptimalTstep(SectionReader& reader, RunOptions& options) {
    const std::array<ListTarget, 1> targets = {&options.tstepControl};
    readRecord(reader, targets);
    options.optimalTstep = true;
}

}  // namespace kvr
