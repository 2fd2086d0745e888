#pragma once

#include <cstdint>
#include <span>
#include <string_view>
#include <vector>

namespace kvr {

inline constexpr double SolverTolerance = 1e-9;  // ||r|| over the right-side size
inline constexpr double AcceptedResidual =
    1e-7;  // the true one, above which a solve has failed at its iteration limit

/// Sparse system in compressed rows, the diagonal first in each row, signs such that diagonals are
/// positive. Cells come first, rate wells are the extra rows behind them. The pattern is built once per
/// well set; values are refilled every pressure iteration.
struct LinearSystem {
    int size = 0;                        // rows, 0-based here
    int cellRows = 0;                    // rows that are cells
    std::vector<std::int64_t> rowStart;  // [size + 1]
    std::vector<int> column;             // 0-based
    std::vector<double> value;
    std::vector<double> rhs;             // [size]
    double reference = 0.0;              // ||b|| of the first iteration of the step, 0 if this is the first
    double tolerance = SolverTolerance;  // at which iterative routes end, at most AcceptedResidual
    std::uint64_t patternStamp = 0;      // changes whenever the pattern does
};

/// The residual above which a solve has failed at its iteration limit.
inline double accepted(const LinearSystem& system) {
    return system.tolerance > AcceptedResidual ? system.tolerance : AcceptedResidual;
}

/// Why a solve gave no result.
enum class SolveFailure {
    None,
    Singular,      // dense factorisation broke down
    NotConverged,  // iteration limit with the error above 1e-7
    NotANumber,    // the first solution entry is not a number
    Memory,        // "Error :: Memory error for ..."
    BadMatrix,     // `code` tells which check of the multigrid set-up failed
};

struct SolveResult {
    int iterations = 0;
    double residual = 0.0;  // true residual |b - A x| over the right-side size of the system
    SolveFailure failure = SolveFailure::None;
    int code = 0;  // multigrid return code of a BadMatrix or Memory failure
};

}  // namespace kvr
