#pragma once

#include "base/console.hpp"
#include "deck/options.hpp"
#include "model/grid.hpp"
#include "pressure/records/cell_state.hpp"
#include "pressure/records/pressure_work.hpp"
#include "pressure/wells/wells.hpp"
#include "run/records/output_streams.hpp"

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace kvr {

/// Value that the iteration counter takes when a solve has failed; the step is then cut.
inline constexpr int FailedIteration = 999;

/// psia; a pressure below it in an active cell is a failed solve.
inline constexpr double LowestPressure = 15.0;

/// Ends the run with the line of a solver word that has no room for its matrix.
[[noreturn]] void stopForMemory(const Console& console, std::string_view word);

/// Lines of a multigrid return code, "-- SECTION AMG --" first.
std::vector<std::string> multigridTexts(int code);

/// What the result of a solve with the solver word does: nothing, when it is good; stops the run with the
/// texts of its failure; or sets `it` to 999.
void answerFailure(const Console& console, const OutputStreams& outputs, double time, std::string_view word,
                   const LinearSystem& system, const SolveResult& result, int& it);

/// Work arrays of the BiCG words, in entries: what the method takes, and what the run sets aside for it.
struct WorkSpace {
    std::int64_t integers = 0;
    std::int64_t doubles = 0;
};
WorkSpace bicgNeed(const LinearSystem& system);
WorkSpace bicgAllocation(const LinearSystem& system);

/// Lines of what is short; none when both arrays suffice.
std::vector<std::string> shortageTexts(const WorkSpace& need, const WorkSpace& allocated);

/// Solves the system by the route of options.pressureSolver into solver.solution. A word that is not on
/// the list, a singular dense matrix (dgesl and dgesv write it to PMatrix_T_*.xls first), a matrix that
/// the multigrid refuses and a shortage of memory stop the run with their texts; a solve that does not
/// converge or gives no number sets `it` to 999. Under step control so does a diagonal that the multigrid
/// refuses, as cells with a storage below 0 give it: the step is taken again in another way. With the matrix
/// switch the system goes to pmtrx.out. The BiCG words leave their convergence in KVR_BICGSTB_Info.out, with
/// the debug flag the multigrid words in KVR_dbgAMG.out.
void solvePressure(const Console& console, const RunOptions& options, const OutputStreams& outputs,
                   double time, const LinearSystem& system, PressureSolver& solver, int& it);

/// Adds `fraction` of the solution to the cell pressures and to the bottom-hole pressures of the rate
/// wells. An active cell below 15.0 psia or not finite sets `it` to 999.
void updatePressures(const GridModel& grid, const PressureMatrix& matrix, std::span<const double> solution,
                     double fraction, CellState& state, WellRecord& wells, int& it);

}  // namespace kvr
