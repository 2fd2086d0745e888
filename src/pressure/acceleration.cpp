#include "pressure/acceleration.hpp"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>

namespace kvr {

namespace {

/// Times the solution that a step may be: a linear iteration of factor q asks for 1/(1 - q).
constexpr double LargestStretch = 20.0;

/// Part of a change that must be left beside its predecessors, squared; below it the change says nothing new.
constexpr double SmallestIndependence = 1e-10;

using Coefficients = std::array<double, AccelerationDepth>;
using GramMatrix = std::array<Coefficients, AccelerationDepth>;

double product(std::span<const double> a, std::span<const double> b) {
    double sum = 0.0;
    for (std::size_t i = 0; i < a.size(); ++i) sum += a[i] * b[i];
    return sum;
}

double largest(std::span<const double> a) {
    double most = 0.0;
    for (const double value : a) most = std::max(most, std::abs(value));
    return most;
}

/// Slot of the change `age` steps back, 0 for the last.
std::size_t slotOf(const IterationHistory& history, int age) {
    return static_cast<std::size_t>((history.next - 1 - age + AccelerationDepth) % AccelerationDepth);
}

/// Solves G g = b by Cholesky factors, latest change first, with as many changes as are independent.
int solveNormalEquations(int count, GramMatrix& gram, Coefficients& g) {
    int kept = 0;
    for (; kept < count; ++kept) {
        const double whole = gram[kept][kept];
        for (int j = 0; j <= kept; ++j) {
            double sum = gram[kept][j];
            for (int k = 0; k < j; ++k) sum -= gram[kept][k] * gram[j][k];
            gram[kept][j] = j < kept ? sum / gram[j][j] : sum;
        }
        if (!(gram[kept][kept] > SmallestIndependence * whole)) break;
        gram[kept][kept] = std::sqrt(gram[kept][kept]);
    }
    for (int i = 0; i < kept; ++i) {
        for (int k = 0; k < i; ++k) g[i] -= gram[i][k] * g[k];
        g[i] /= gram[i][i];
    }
    for (int i = kept - 1; i >= 0; --i) {
        for (int k = i + 1; k < kept; ++k) g[i] -= gram[k][i] * g[k];
        g[i] /= gram[i][i];
    }
    return kept;
}

/// Enters the last step and what it changed.
void remember(std::span<const double> solution, IterationHistory& history) {
    if (history.moves.empty()) {
        history.moves.resize(AccelerationDepth);
        history.changes.resize(AccelerationDepth);
    }
    const auto slot = static_cast<std::size_t>(history.next);
    history.moves[slot].assign(history.applied.begin(), history.applied.end());
    std::vector<double>& change = history.changes[slot];
    change.resize(solution.size());
    for (std::size_t i = 0; i < solution.size(); ++i) change[i] = solution[i] - history.solution[i];
    history.next = (history.next + 1) % AccelerationDepth;
    history.used = std::min(history.used + 1, AccelerationDepth);
}

/// The step by all that is remembered, into history.applied.
void combine(std::span<const double> solution, IterationHistory& history) {
    GramMatrix gram{};
    Coefficients g{};
    for (int i = 0; i < history.used; ++i) {
        const std::vector<double>& change = history.changes[slotOf(history, i)];
        for (int j = 0; j <= i; ++j) gram[i][j] = product(change, history.changes[slotOf(history, j)]);
        g[i] = product(change, solution);
    }
    const int kept = solveNormalEquations(history.used, gram, g);
    history.applied.assign(solution.begin(), solution.end());
    for (int j = 0; j < kept; ++j) {
        const std::vector<double>& move = history.moves[slotOf(history, j)];
        const std::vector<double>& change = history.changes[slotOf(history, j)];
        for (std::size_t i = 0; i < solution.size(); ++i) history.applied[i] -= g[j] * (move[i] + change[i]);
    }
}

}  // namespace

void resetHistory(IterationHistory& history) {
    history.used = history.next = 0;
    history.open = false;
}

void releaseHistory(IterationHistory& history) {
    history = IterationHistory();
}

std::span<const double> acceleratedStep(std::span<const double> solution, double largestMove,
                                        IterationHistory& history) {
    const double size = largest(solution);
    const bool follows = history.open && history.solution.size() == solution.size();
    if (follows && size < largest(history.solution)) {
        remember(solution, history);
        combine(solution, history);
        const double step = largest(history.applied);
        if (!(step <= largestMove && step <= LargestStretch * size)) resetHistory(history);
    } else {
        resetHistory(history);
    }
    if (history.used == 0) history.applied.assign(solution.begin(), solution.end());
    history.solution.assign(solution.begin(), solution.end());
    history.open = true;
    return history.applied;
}

}  // namespace kvr
