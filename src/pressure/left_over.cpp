#include "pressure/left_over.hpp"

#include <algorithm>
#include <cmath>

namespace kvr {

namespace {

constexpr double Share = 0.1;              // of the limits of a step
constexpr double ShareWithGas = 0.02;      // the same where limits are narrower
constexpr double TolerancesOfMean = 10.0;  // a field that moves as a whole drives no flow inside

constexpr double LeastOfMean = 1e-6;  // pore volume of a cell that is judged by its own

/// What is no number is none that could be handed on.
double shareOf(double left, double most) {
    if (left == 0.0) return 0.0;
    return std::isfinite(left) && most > 0.0 ? left / most : HUGE_VAL;
}

}  // namespace

double leastJudgedVolume(const GridModel& grid, const CellState& state) {
    double pores = 0.0;
    int count = 0;
    for (CellId c = 1; c <= grid.NCELLS; ++c) {
        if (grid.Active[c] == 0 || !(state.PoreVolume[c] > 0.0)) continue;
        pores += state.PoreVolume[c];
        ++count;
    }
    return count > 0 ? LeastOfMean * pores / count : 0.0;
}

LeftOver measureLeftOver(double dt, const GridModel& grid, const CellState& state, const WellRecord& wells,
                         const PressureMatrix& matrix) {
    LeftOver left;
    double pores = 0.0, sum = 0.0;
    const double least = leastJudgedVolume(grid, state);
    for (CellId c = 1; c <= grid.NCELLS; ++c) {
        const double volume = state.PoreVolume[c];
        if (grid.Active[c] == 0 || !(volume > 0.0)) continue;
        const double asked = dt * matrix.MatRhs[c];
        pores += volume;
        sum += matrix.MatRhs[c];
        left.field += std::abs(asked);
        left.cell = std::max(left.cell, std::abs(asked) / std::max(volume, least));
    }
    if (pores > 0.0) left.field /= pores;
    if (matrix.storage > 0.0) left.pressure = std::abs(sum) / matrix.storage;
    for (const WellRow& row : matrix.wellRows) {
        const double through = std::abs(wells.wells[row.well].reservoirRate);
        const double asked = std::abs(matrix.system.rhs[static_cast<std::size_t>(row.row)]);
        if (asked > 0.0) left.rate = std::max(left.rate, asked / through);
    }
    return left;
}

double shareOfHandedOn(const RunOptions& options, const LeftOver& leftOver) {
    const double share = options.hasGas ? ShareWithGas : Share;
    return std::max({shareOf(leftOver.field, share * options.stepVolumeError),
                     shareOf(leftOver.cell, share * options.stepCellVolumeError),
                     shareOf(leftOver.pressure, TolerancesOfMean * options.PressureTolerance),
                     shareOf(leftOver.rate, share * options.stepTargetError)});
}

void settleRateWells(const PressureMatrix& matrix, WellRecord& wells) {
    const LinearSystem& system = matrix.system;
    for (const WellRow& row : matrix.wellRows) {
        const auto r = static_cast<std::size_t>(row.row);
        const double diagonal = system.value[static_cast<std::size_t>(system.rowStart[r])];
        wells.wells[row.well].Bhp += system.rhs[r] / diagonal;
    }
}

}  // namespace kvr
