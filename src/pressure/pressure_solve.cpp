#include "pressure/pressure_solve.hpp"

#include "base/hard_stop.hpp"
#include "base/number_writer.hpp"
#include "base/written_files.hpp"
#include "pressure/solvers/multigrid.hpp"

#include <algorithm>
#include <cmath>
#include <new>
#include <string>

namespace kvr {

namespace {

/// Kind of a solver word: which texts and files go with it.
enum class SolverFamily { Elimination, DenseLu, Multigrid, BiCg };

constexpr int InfoDigits = 6;

SolverFamily familyOf(std::string_view word) {
    if (word == "st") return SolverFamily::Elimination;
    if (word == "dgesl" || word == "dgesv") return SolverFamily::DenseLu;
    return word == "amg" || word == "samg" ? SolverFamily::Multigrid : SolverFamily::BiCg;
}

struct CodeText {
    int code;
    std::string_view first;
    std::string_view second;
};

constexpr CodeText MultigridCodes[] = {
    {static_cast<int>(MultigridCode::SmallGrid),
     "PRESSURES COULD NOT BE SOLVED DUE TO SMALL NO. OF GRID BLCOKS",
     "YOU SHOULD CHOOSE DGESV FOR PRESSURE SOLVER."},
    {6, "PRESSURES COULD NOT BE SOLVED DUE TO MEMORY PROBLEM", "YOU SHOULD CHOOSE DIRECT MATRIX SOLVER."},
    {13, "DIAGONAL ELEMENT NOT STORED FIRST", ""},
    {14, "DIAGONAL ELEMENT MUST BE NEGATIVE", "CHANGE TO DGESV SOLVER"},
    {15, "POINTER IA ERRONEOUS", ""},
    {16, "POINTER JA ERRONEOUS", ""},
    {17, "PARAMETER ISWTCH ERRONEOUS", ""},
    {18, "PARAMETER LEVELX ERRONEOUS", ""},
};

constexpr int FirstSystemError = 21;  // from here on the multigrid itself has gone wrong
constexpr std::string_view SystemErrors[] = {"TRANSPOSE A-ENTRY MISSING",
                                             "INTERPOLATION ENTRY MISSING",
                                             "A-ENTRY MISSING",
                                             "ALGORITHMIC ERROR",
                                             "CG-CORRECTION NOT DEFINED",
                                             "ERRORNEOUS DIAGONAL ELEMENT",
                                             "NORM IS TOO BIG, PARAMETER MAY BE CHANGED",
                                             "FACTORIZATION"};

/// Every entry as row, column, value (1-based), then the right-hand side.
void dumpTriads(const Console& console, const std::string& path, const LinearSystem& system) {
    NumberWriter writer;
    writer.file = openForReplace(console, path);
    for (int row = 0; row < system.size; ++row) {
        const auto r = static_cast<std::size_t>(row);
        for (auto k = static_cast<std::size_t>(system.rowStart[r]);
             k < static_cast<std::size_t>(system.rowStart[r + 1]); ++k) {
            putNumber(writer, row + 1);
            put(writer, " ");
            putNumber(writer, system.column[k] + 1);
            put(writer, " ");
            putNumber(writer, system.value[k], RoundTripDigits);
            put(writer, "\n");
        }
    }
    for (const double value : system.rhs) {
        putNumber(writer, value, RoundTripDigits);
        put(writer, "\n");
    }
    flush(writer);
    closeWhole(console, writer.file);
}

/// One line per row: every coefficient of the full matrix, the right-hand side last, tabs between.
void dumpFullRows(const Console& console, const std::string& path, const LinearSystem& system) {
    NumberWriter writer;
    writer.file = openForReplace(console, path);
    std::vector<double> full(static_cast<std::size_t>(system.size));
    for (std::size_t r = 0; r < full.size(); ++r) {
        std::fill(full.begin(), full.end(), 0.0);
        for (auto k = static_cast<std::size_t>(system.rowStart[r]);
             k < static_cast<std::size_t>(system.rowStart[r + 1]); ++k)
            full[static_cast<std::size_t>(system.column[k])] += system.value[k];
        for (const double value : full) {
            putNumber(writer, value, RoundTripDigits);
            put(writer, "\t");
        }
        putNumber(writer, system.rhs[r], RoundTripDigits);
        put(writer, "\n");
    }
    flush(writer);
    closeWhole(console, writer.file);
}

/// One line of convergence behind those of the run so far.
void appendInfo(const Console& console, const std::string& path, const SolveResult& result,
                PressureSolver& solver) {
    if (!solver.infoFileOpened) closeWhole(console, openForReplace(console, path));
    solver.infoFileOpened = true;
    std::FILE* file = openForAppend(console, path);
    const long before = lengthOf(file);
    const std::string line =
        fmt::format("ITERATIONS = {}  ERROR = {}\n", result.iterations, number(result.residual, InfoDigits));
    std::fputs(line.c_str(), file);
    closeAppended(console, file, before);
}

void tell(const Console& console, const std::vector<std::string>& lines) {
    for (const std::string& line : lines) lineToBoth(console, line);
}

[[noreturn]] void stopElimination(const Console& console, const SolveResult& result) {
    if (result.code != 0) lineToBoth(console, "PARAMETER ERROR IN LINEAR_SOLVE");
    lineToBoth(console, "LINEAR_SOLVE FAILED");
    lineToBoth(console, "IT IS HIGHLY PROBABLE THAT THE MATRIX IS SINGULAR.");
    hardStop(console);
}

[[noreturn]] void stopDense(const Console& console, const OutputStreams& outputs, double time, int it,
                            const LinearSystem& system) {
    lineToBoth(console, "ERROR OCCURS IN SOLVING PRESSURES.");
    lineToBoth(console, " ERROR  :: DGESV SOLVER - MATRIX MEY BE ERRORNOUS");
    lineToBoth(console, "           GENERATE MATRIX AT PMATRIX FOLDER, PLEASE CHECK");
    const std::string name = fmt::format("PMatrix_T_{}_ite_{}.xls", number(time), it);
    dumpFullRows(console, outputPath(outputs, name), system);
    hardStop(console);
}

/// The BiCG words' work arrays against what the method takes; false after the texts of a shortage.
bool hasWorkSpace(const Console& console, const LinearSystem& system) {
    const std::vector<std::string> lines = shortageTexts(bicgNeed(system), bicgAllocation(system));
    tell(console, lines);
    return lines.empty();
}

SolveResult runRoute(const SolverRow& row, const LinearSystem& system, PressureSolver& solver) {
    try {
        if (solver.memory == nullptr) solver.memory = makeSolverMemory();
        solver.solution.assign(static_cast<std::size_t>(system.size), 0.0);
        return row.route(system, solver.solution, *solver.memory);
    } catch (const std::bad_alloc&) {
        SolveResult result;
        result.failure = SolveFailure::Memory;
        return result;
    }
}

/// Cells whose state has no sound storage stand in the matrix with diagonals below 0.
bool hasNegativeStorage(const SolveResult& result) {
    return result.failure == SolveFailure::BadMatrix &&
           result.code == static_cast<int>(MultigridCode::DiagonalSign);
}

}  // namespace

void stopForMemory(const Console& console, std::string_view word) {
    const SolverFamily family = familyOf(word);
    const bool iterative = family == SolverFamily::Multigrid || family == SolverFamily::BiCg;
    lineToBoth(console, iterative ? "Error :: Memory error for AMG Solver"
                                  : "Error :: Memory error for Direct Solver");
    hardStop(console);
}

std::vector<std::string> multigridTexts(int code) {
    std::vector<std::string> lines{"-- SECTION AMG --"};
    for (const CodeText& row : MultigridCodes) {
        if (row.code != code) continue;
        lines.emplace_back(row.first);
        if (!row.second.empty()) lines.emplace_back(row.second);
        return lines;
    }
    if (code < FirstSystemError) {
        lines.push_back(fmt::format("PRESSURES COULD NOT BE SOLVED WITH IERROR= {}", code));
        return lines;
    }
    lines.emplace_back("ERRORS OF THE AMG1R5-SYSTEM (SHOULD NOT OCCUR)");
    const auto place = static_cast<std::size_t>(code - FirstSystemError);
    lines.emplace_back(SystemErrors[std::min(place, std::size(SystemErrors) - 1)]);
    return lines;
}

void answerFailure(const Console& console, const OutputStreams& outputs, double time, std::string_view word,
                   const LinearSystem& system, const SolveResult& result, int& it) {
    const SolverFamily family = familyOf(word);
    switch (result.failure) {
        case SolveFailure::None:
            return;
        case SolveFailure::Memory:
            if (family == SolverFamily::Multigrid && result.code != 0)
                tell(console, multigridTexts(result.code));
            stopForMemory(console, word);
        case SolveFailure::Singular:
            if (family == SolverFamily::Elimination) stopElimination(console, result);
            stopDense(console, outputs, time, it, system);
        case SolveFailure::BadMatrix:
            tell(console, multigridTexts(result.code));
            lineToBoth(console,
                       fmt::format("ERROR :: PRESSURES BEHIND DAY {} CANNOT BE SOLVED, STEPCTRL Yes TAKES "
                                   "SHORTER STEPS",
                                   number(time)));
            hardStop(console);
        case SolveFailure::NotConverged:
        case SolveFailure::NotANumber:
            it = FailedIteration;
            return;
    }
}

WorkSpace bicgNeed(const LinearSystem& system) {
    const auto n = static_cast<std::int64_t>(system.size),
               entries = static_cast<std::int64_t>(system.column.size());
    // Strict triangles with their columns, row starts of both, a place per column; factors, inverse pivots
    // and eight vectors.
    return {entries - n + 2 * (n + 1) + n, entries + 8 * n};
}

WorkSpace bicgAllocation(const LinearSystem& system) {
    const auto n = static_cast<std::int64_t>(system.size),
               entries = static_cast<std::int64_t>(system.column.size());
    return {3 * n + 100 + 5 * entries, 3 * n + 1000 + 10 * entries};
}

std::vector<std::string> shortageTexts(const WorkSpace& need, const WorkSpace& allocated) {
    std::vector<std::string> lines;
    if (need.integers > allocated.integers)
        lines.push_back(
            fmt::format("DSLUBC: INTEGER work array too short.  IWORK needs {}: have allocated {}.",
                        need.integers, allocated.integers));
    if (need.doubles > allocated.doubles)
        lines.push_back(
            fmt::format("DSLUBC: DOUBLE PRECISION work array too short.  RWORK needs {}: have allocated {}.",
                        need.doubles, allocated.doubles));
    return lines;
}

void solvePressure(const Console& console, const RunOptions& options, const OutputStreams& outputs,
                   double time, const LinearSystem& system, PressureSolver& solver, int& it) {
    const SolverRow* row = findSolver(options.pressureSolver);
    if (row == nullptr) {
        lineToBoth(console, "Pressure solver not on the list");
        hardStop(console);
    }
    if (options.outputPressureMatrix)
        dumpTriads(console, outputPath(outputs, outputName(OutputFile::PressureMatrix)), system);
    const SolverFamily family = familyOf(row->word);
    if (family == SolverFamily::BiCg && !hasWorkSpace(console, system)) {
        it = FailedIteration;
        return;
    }
    const SolveResult result = runRoute(*row, system, solver);
    if (family == SolverFamily::BiCg)
        appendInfo(console, outputPath(outputs, outputName(OutputFile::BicgstabInfo)), result, solver);
    if (family == SolverFamily::Multigrid && options.debugOutput)
        appendInfo(console, outputPath(outputs, outputName(OutputFile::AmgInfo)), result, solver);
    if (options.stepControl && hasNegativeStorage(result)) {
        for (const std::string& line : multigridTexts(result.code)) log(console, "{}", line);
        it = FailedIteration;
        return;
    }
    answerFailure(console, outputs, time, row->word, system, result, it);
}

void updatePressures(const GridModel& grid, const PressureMatrix& matrix, std::span<const double> solution,
                     double fraction, CellState& state, WellRecord& wells, int& it) {
    bool good = true;
    for (CellId c = 1; c <= grid.NCELLS; ++c) {
        if (grid.Active[c] == 0) continue;
        const double p = state.Pressure[c] + fraction * solution[static_cast<std::size_t>(c) - 1];
        state.Pressure[c] = p;
        good = good && p >= LowestPressure && std::isfinite(p);
    }
    for (const WellRow& row : matrix.wellRows)
        wells.wells[row.well].Bhp += fraction * solution[static_cast<std::size_t>(row.row)];
    if (!good) it = FailedIteration;
}

}  // namespace kvr
