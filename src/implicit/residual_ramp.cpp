#include "implicit/residual_ramp.hpp"

#include "base/threads.hpp"

namespace kvr {

namespace {

constexpr double Inside = 0.1 * RampWidth;  // from its end: where a move that would jump over it stops
constexpr double JustAbove = 1e-9;          // of the residual oil: where the height of the jump is seen
constexpr double LeastJump = 1e-6;          // of kro; a smaller one is none

double aboveResidual(const GridModel& grid, const FluidTables& tables, CellId cell, double sw, double sg) {
    return 1.0 - regionTable(tables, grid.SATNUM[cell]).ResidualSo - sw - sg;
}

}  // namespace

RelPermSlopes rampedSlopes(const RelPermSlopes& slopes, double share, double kro) {
    if (share >= 1.0 || share <= 0.0) return slopes;  // below the ramp all of them are 0
    RelPermSlopes ramped = slopes;
    ramped.oBySw = share * slopes.oBySw - kro / share / RampWidth;
    ramped.oBySg = share * slopes.oBySg - kro / share / RampWidth;
    return ramped;
}

void rampOil(const GridModel& grid, const FluidTables& tables, CellState& state) {
#pragma omp parallel for schedule(static) if (grid.NCELLS >= ParallelCells)
    for (CellId c = 1; c <= grid.NCELLS; ++c) {
        if (grid.Active[c] == 0 || state.KroCell[c] == 0.0) continue;
        const double share = rampShare(regionTable(tables, grid.SATNUM[c]), state.Sw[c], state.Sg[c]);
        state.KroCell[c] *= share;
        state.LambdaO[c] *= share;
    }
}

double shareOntoRamp(const GridModel& grid, const FluidTables& tables, CellId cell, double sw, double sg,
                     double swTo, double sgTo) {
    if (regionTable(tables, grid.SATNUM[cell]).oilRule != OilRule::Stone2) return 1.0;
    const double before = aboveResidual(grid, tables, cell, sw, sg);
    const double after = aboveResidual(grid, tables, cell, swTo, sgTo);
    const bool down = before >= RampWidth && after <= 0.0;
    const bool up = before <= 0.0 && after >= RampWidth;
    if (!down && !up) return 1.0;
    const auto shareTo = [&](double above) { return (before - above) / (before - after); };
    const double atJump = shareTo(JustAbove);
    const RelPerms kr =
        relPermsAtCell(tables, cell, grid.SATNUM[cell], sw + atJump * (swTo - sw), sg + atJump * (sgTo - sg));
    if (kr.o <= LeastJump) return 1.0;
    return shareTo(down ? RampWidth - Inside : Inside);
}

}  // namespace kvr
