#include "matching/minimise.hpp"

#include "base/messages.hpp"
#include "matching/gauss_newton.hpp"
#include "matching/lsqr.hpp"

namespace kvr {

namespace {

std::vector<double> solve(const Console& console, const MinimisationSettings& settings,
                          const MatchingSystem& system) {
    std::vector<double> x;
    if (settings.method == MinimisationMethod::GaussNewton) {
        if (gaussNewtonFits(system) && solveByGaussNewton(system, x)) return x;
        warn(console,
             "WARNING :: The normal equations of {} cells cannot be solved as a dense matrix, LSQR "
             "solves them",
             system.columns());
    }
    LsqrVectors vectors;
    allocateLsqr(console, system, vectors);
    solveByLsqr(console, system, settings.iterationLimit, vectors);
    return std::move(vectors.x);
}

}  // namespace

MinimisationSettings minimisationSettings(const RunOptions& options) {
    MinimisationSettings settings;
    settings.method = options.gaussNewton ? MinimisationMethod::GaussNewton : MinimisationMethod::Lsqr;
    settings.iterationLimit = options.lsqrIterations;
    settings.weights[constraint::Norm] = options.lsqrNorm;
    settings.weights[constraint::Horizontal] = options.lsqrSmoothHorizontal;
    settings.weights[constraint::Vertical] = options.lsqrSmoothVertical;
    return settings;
}

void minimise(const Console& console, const MinimisationSettings& settings, const GridModel& grid,
              const WellData& wells, const CellArray<double>& lnk, CellArray<double>& new_lnk) {
    lineToBoth(console, "------------------------------------------------------------");
    lineToBoth(console, "Calling Minimization Module");
    lineToBoth(console, "============================================================");
    const MatchingSystem system = buildMatchingSystem(grid, settings.weights, wells);
    const std::vector<double> x = solve(console, settings, system);
    new_lnk = lnk;
    for (std::size_t column = 0; column < x.size(); ++column) new_lnk[system.cells[column]] += x[column];
}

}  // namespace kvr
