#include "run/step_measure.hpp"

#include "base/constants.hpp"
#include "fluid/saturation_functions.hpp"
#include "model/dual_porosity.hpp"
#include "pressure/left_over.hpp"
#include "pressure/ordered_transport.hpp"
#include "pressure/properties.hpp"
#include "pressure/wells/rate_limits.hpp"
#include "pressure/wells/well_rates.hpp"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <iterator>

namespace kvr {

namespace {

constexpr double GroupMissWeight = 4.0;     // of a share of a group's rate that a well does not give
constexpr double BelowNothingWeight = 1e3;  // what has fallen below nothing no later step makes good
constexpr double LargestFactor = 10.0;      // of a target, either way

/// The larger of a figure and a value; what is no number stays in sight.
void raise(double value, double& figure) {
    if (std::isnan(value) || value > figure) figure = value;
}

/// Reservoir volume by which a cell holds more than its pores, of what its saturations do not show.
double excessVolume(const CellState& state, const CellAmounts& carried, CellId cell) {
    return state.Bw[cell] * carried.water[cell] + state.Bo[cell] * carried.oil[cell] +
           state.Bg[cell] * (carried.gas[cell] - state.Rs[cell] * carried.oil[cell]);
}

/// Reservoir volume by which components of a cell have fallen below nothing.
double volumeBelowNothing(const CellState& state, const CellAmounts& carried, CellId cell) {
    const ConservedAmounts shown = shownAmounts(state, cell);
    const double pores = state.PoreVolume[cell];
    const auto missing = [](double amount) { return std::max(0.0, -amount); };
    return state.Bw[cell] * missing(shown.water * pores + carried.water[cell]) +
           state.Bo[cell] * missing(shown.oil * pores + carried.oil[cell]) +
           state.Bg[cell] * missing(shown.gas * pores + carried.gas[cell]);
}

/// Reservoir volumes of the cells of one continuum.
struct ContinuumSums {
    double pores = 0.0, error = 0.0, below = 0.0;
};

void measureVolumes(const Simulation& s, AttemptFigures& figures) {
    // Fractures hold a small part of the pores and all of the flow: each continuum is judged by its own.
    ContinuumSums sums[2];
    const double least = leastJudgedVolume(s.grid, s.state);
    for (CellId cell = 1; cell <= s.grid.NCELLS; ++cell) {
        const double volume = s.state.PoreVolume[cell];
        if (s.grid.Active[cell] == 0 || !(volume > 0.0)) continue;
        ContinuumSums& sum = sums[isMatrixCell(s.grid, cell) ? 1 : 0];
        sum.pores += volume;
        if (s.pressure.carried.water.empty()) continue;
        const double excess = std::abs(excessVolume(s.state, s.pressure.carried, cell));
        sum.error += excess;
        sum.below += volumeBelowNothing(s.state, s.pressure.carried, cell);
        raise(excess / std::max(volume, least), figures.largestVolumeError);
    }
    const double deficits[] = {s.pressure.deficit, 0.0};  // the matrix has no outflow to be cut
    for (std::size_t part = 0; part < std::size(sums); ++part) {
        const ContinuumSums& sum = sums[part];
        if (!(sum.pores > 0.0)) continue;
        raise(sum.error / sum.pores, figures.volumeError);
        raise((deficits[part] + BelowNothingWeight * sum.below) / sum.pores, figures.deficit);
    }
}

bool hasRateTarget(const Well& well) {
    return !well.shut && well.deckControl != "bhp" && well.TargetRate != 0.0;
}

double heldRate(const Well& well) {
    return heldRate(well, well.deckControl);
}

/// The present control is a share of a group's rate, which is to hold more closely: what one well of many
/// lacks none of the others makes up for within the step.
bool sharesGroupRate(const Well& well) {
    const GroupShare& share = well.share;
    const double shares[] = {share.oil, share.water, share.gas, share.liquid, share.resv, share.injected};
    return std::any_of(std::begin(shares), std::end(shares),
                       [&well](double rate) { return rate == std::abs(well.TargetRate); });
}

void measureTarget(const Well& well, AttemptFigures& figures) {
    if (!hasRateTarget(well)) return;
    const double share = std::abs(heldRate(well) / well.TargetRate) - 1.0;
    raise(share, figures.targetExcess);
    raise(passedLimit(well).share, figures.targetExcess);
    if (isRateControlled(well))
        raise(-share * (sharesGroupRate(well) ? GroupMissWeight : 1.0), figures.targetMiss);
}

/// Gas that a producer gives against what the pressure was solved with: away from it, the solve took the
/// wrong mobility for the well.
void measureGas(const Well& well, AttemptFigures& figures) {
    if (isInjector(well) || well.shut || !(std::abs(well.solvedQg) > SmallestNormal)) return;
    raise(std::abs(well.WellQg / well.solvedQg - 1.0), figures.targetMiss);
}

double totalMobility(const Simulation& s, const CellState& state, CellId cell) {
    const RelPerms kr = relPermsAtCell(s.fluids, cell, s.grid.SATNUM[cell], state.Sw[cell], state.Sg[cell]);
    const double gas = s.fluids.hasGas ? kr.g / s.state.MuG[cell] : 0.0;
    return kr.w / s.state.MuW[cell] + kr.o / s.state.MuO[cell] + gas;
}

/// Sums over cells, weighted by what flows through them, of how far total mobilities of the step's begin, and
/// those that its pressure was solved with, are from the mean of the step.
struct MobilityChange {
    double flow = 0.0, error = 0.0, lag = 0.0;
};

/// Flow through the faces of a cell, either way.
double flowThrough(const Simulation& s, CellId cell) {
    const double* flux = s.velocity.CellFaceFlux.row(cell);
    double through = 0.0;
    for (int face = 0; face < s.velocity.CellFaceFlux.width; ++face) through += std::abs(flux[face]);
    return through;
}

MobilityChange mobilityChange(const Simulation& s, const CellState& begin) {
    MobilityChange sum;
    const CellArray<double>& ratio = s.pressure.mobilityRatio;
    const auto solvedRatio = [&](CellId cell) { return ratio.empty() ? 1.0 : ratio[cell]; };
    for (CellId cell = 1; cell <= s.grid.NCELLS; ++cell) {
        if (s.grid.Active[cell] == 0) continue;
        const double through = flowThrough(s, cell);
        if (through == 0.0) continue;
        const double before = totalMobility(s, begin, cell);
        const double mean = 0.5 * (before + totalMobility(s, s.state, cell));
        sum.flow += through;
        if (!(mean > 0.0)) continue;
        sum.error += through * std::abs(solvedRatio(cell) * before - mean) / mean;
        sum.lag += through * std::abs(before - mean) / mean;
    }
    return sum;
}

void measureMobilities(const Simulation& s, AttemptFigures& figures) {
    const MobilityChange sum = mobilityChange(s, s.stepLevel.state);
    if (!(sum.flow > 0.0)) return;
    figures.forecast = !s.pressure.mobilityRatio.empty();
    figures.mobilityLag = sum.lag / sum.flow;
    figures.mobilityError = sum.error / sum.flow;
}

/// A limit beside the control that the rates have passed further than that one is the control of the next
/// pass over the step, or of the next step.
void takePassedLimit(Well& well) {
    const PassedLimit passed = passedLimit(well);
    if (!(passed.share > 0.0) || passed.share <= std::abs(heldRate(well) / well.TargetRate) - 1.0) return;
    setRateControl(passed.limit, well);
    well.controlChosen = true;
}

}  // namespace

bool holdsFreeGas(const GridModel& grid, const CellState& state) {
    for (CellId cell = 1; cell <= grid.NCELLS; ++cell)
        if (grid.Active[cell] != 0 && state.Sg[cell] > SmallestFreeGas) return true;
    return false;
}

double lagOfComponentStep(const Simulation& simulation) {
    const MobilityChange sum = mobilityChange(simulation, simulation.stepLevel.state);
    return sum.flow > 0.0 ? sum.lag / sum.flow : 0.0;
}

double errorOfComponentMobilities(const Simulation& s) {
    const ComponentStage& stage = s.components.stage;
    double flow = 0.0, error = 0.0;
    for (CellId cell = 1; cell <= s.grid.NCELLS; ++cell) {
        if (s.grid.Active[cell] == 0) continue;
        const double through = flowThrough(s, cell);
        const double mean = stage.mean.oil[cell] + stage.mean.water[cell] + stage.mean.gas[cell];
        flow += through;
        if (mean > 0.0) error += through * std::abs(stage.solvedMobility[cell] - mean) / mean;
    }
    return flow > 0.0 ? error / flow : 0.0;
}

double lagOfImplicitStep(const Simulation& simulation) {
    const MobilityChange sum = mobilityChange(simulation, simulation.implicit.saved);
    return sum.flow > 0.0 ? sum.lag / sum.flow : 0.0;
}

AttemptFigures measureStep(const Simulation& simulation) {
    AttemptFigures figures;
    figures.freeGas = simulation.fluids.hasGas && holdsFreeGas(simulation.grid, simulation.state);
    measureVolumes(simulation, figures);
    measureMobilities(simulation, figures);
    for (const Well& well : simulation.wells.wells) {
        measureTarget(well, figures);
        if (figures.freeGas) measureGas(well, figures);
    }
    return figures;
}

AttemptFigures unsolvedStep(const Simulation& simulation) {
    AttemptFigures figures;
    figures.freeGas = simulation.fluids.hasGas && holdsFreeGas(simulation.grid, simulation.stepLevel.state);
    figures.pressureSolved = false;
    return figures;
}

void correctTargets(WellRecord& wells) {
    for (Well& well : wells.wells) {
        if (isInjector(well) || !hasRateTarget(well)) continue;
        takePassedLimit(well);
        if (well.deckControl == "resv") continue;
        Well solved = {};
        solved.deckControl = well.deckControl;
        solved.WellQo = well.solvedQo;
        solved.WellQw = well.solvedQw;
        solved.WellQg = well.solvedQg;
        const double promised = std::abs(heldRate(solved));
        const double given = std::abs(heldRate(well));
        if (!(promised > SmallestNormal) || !(given > SmallestNormal)) continue;
        well.targetFactor = std::clamp(promised / given, 1.0 / LargestFactor, LargestFactor);
    }
}

}  // namespace kvr
