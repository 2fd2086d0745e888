#include "pressure/component_transport.hpp"

#include "base/threads.hpp"
#include "pressure/component_properties.hpp"
#include "pressure/component_told.hpp"
#include "pressure/flow_order.hpp"
#include "pressure/velocity.hpp"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <utility>

namespace kvr {

namespace {

constexpr double LargestPoreShare = 0.1;  // of a cell's pores that leave it in a substep
constexpr double LargestMoleShare = 0.5;  // of what it holds of a component
constexpr double LeastShare =
    1e-20;  // of a cell's moles: a component that is not there; flashes hold traces of it
constexpr double LeastSubstep = 1e-9;  // of the step: the moves go on, whatever the limits say
constexpr double StaleChange = 1e-4;   // of what a cell holds, behind which its state is found anew
constexpr double LimitShare = 0.5;     // of the days that its limits allow, behind which they are

/// A day's flow through faces and sources. A face has two rows: what goes through it toward the high side,
/// and what comes back; a row has the moles of each component, the surface volume of water and the volume.
/// Those are of the cells' own mixtures; what is told of a face is its own row of the make-up, times a flow.
///
/// Amounts are linear in time while the balance of a cell stands: a substep touches only cells whose balance
/// it finds anew. Times are days of the step gone.
struct Moves {
    int count = 0;                   // components
    DirectionArray<double> faces;    // (cell, rows of its three high faces)
    DirectionArray<double> told;     // (cell, high face): flow along the axis that goes as it is told
    CellArray<double> followed;      // share of what is told of a cell's outflow that goes so
    DirectionArray<double> reached;  // what is told of faces that bring cells to their ends, or of no width
    std::vector<double> sourceRows;  // [source * width], into the reservoir positive
    DirectionArray<double> net;      // (cell, row): what a day brings
    double now = 0.0;
    CellArray<double> since;     // when what a cell holds was last brought up to
    CellArray<double> longest;   // days that its limits allow from when its balance was found
    CellArray<double> changed;   // share of its amounts since its state was found, up to `since` ...
    CellArray<double> changing;  // ... and a day
    CellArray<double> foundAt;   // when its state was found
    CellArray<double> staleAt;   // when it has to be found anew
    CellArray<double> fullAt;    // when its limits end a substep
    CellArray<double> emptyAt;   // when something that it holds would be overdrawn
    CellArray<std::uint8_t> isStale, isDue;
    std::vector<CellId> stale;  // state, and with it what goes through faces, is found anew
    std::vector<CellId> due;    // balance and limits are
    [[nodiscard]] int width() const { return count + 2; }
    [[nodiscard]] int water() const { return count; }
    [[nodiscard]] int volume() const { return count + 1; }
    [[nodiscard]] std::size_t rowOf(int axis, bool back) const {
        return static_cast<std::size_t>((2 * (axis - 1) + (back ? 1 : 0)) * width());
    }
    [[nodiscard]] const double* toldRow(const ComponentMakeUp& makeUp, CellId low, int axis) const {
        return (reached.width > 0 ? reached : makeUp.face).row(low) + makeUp.rowOf(axis);
    }
};

void sizeMoves(const GridModel& grid, int count, std::size_t sources, Moves& moves) {
    const CellId cells = grid.NCELLS;
    moves.count = count;
    moves.faces.assign(cells, 2 * AxisCount * moves.width(), 0.0);
    moves.net.assign(cells, moves.width(), 0.0);
    moves.told.assign(cells, AxisCount, 0.0);
    moves.followed.assign(cells, 1.0);
    for (CellArray<double>* zeros :
         {&moves.since, &moves.longest, &moves.changed, &moves.changing, &moves.foundAt})
        zeros->assign(cells, 0.0);
    for (CellArray<double>* times : {&moves.staleAt, &moves.fullAt, &moves.emptyAt})
        times->assign(cells, HUGE_VAL);
    moves.isStale.assign(cells, 0);
    moves.isDue.assign(cells, 0);
    moves.sourceRows.assign(sources * static_cast<std::size_t>(moves.width()), 0.0);
    for (CellId c = 1; c <= cells; ++c)
        if (grid.Active[c] != 0) moves.stale.push_back(c);
}

/// A volume of a phase of a cell as amounts, added to a row.
void addMixture(const ComponentStage& stage, double volumeFactor, const CellState& state, CellId from,
                bool isLiquid, double volume, double* row) {
    if (volume == 0.0) return;
    const FlashState& flash = stage.cells.flash[static_cast<std::size_t>(from)];
    const Composition& fractions = isLiquid ? flash.liquid : flash.vapour;
    const double moles = volume * phaseMolesIn(stage, volumeFactor, state, from, isLiquid);
    const double* held = stage.amounts.moles.row(from);
    const double* z = stage.cells.z.row(from);
    row[stage.set.count + 1] += volume;
    for (int i = 0; i < stage.set.count; ++i)
        if (held[i] > 0.0 && z[i] > LeastShare) row[i] += moles * fractions[i];
}

void addWater(const ComponentStage& stage, const CellState& state, CellId from, double volume, double* row) {
    row[stage.set.count] += volume / state.Bw[from];
    row[stage.set.count + 1] += volume;
}

/// Share of a flow that goes as it is told: what gravity leaves to go along with it of every phase.
double alongShare(const PhaseFlux& flux, double total, const CellState& state, CellId giver) {
    const double mobility = state.LambdaO[giver] + state.LambdaW[giver] + state.LambdaG[giver];
    if (!(mobility > 0.0)) return 0.0;
    double share = 1.0;
    const std::pair<double, double> phases[] = {{flux.oil, state.LambdaO[giver]},
                                                {flux.water, state.LambdaW[giver]},
                                                {flux.gas, state.LambdaG[giver]}};
    for (const auto& [flow, lambda] : phases)
        if (lambda > 0.0) share = std::min(share, flow * mobility / (lambda * total));
    return std::max(share, 0.0);
}

void takeAway(double part, const CellState& state, CellId giver, PhaseFlux& flux) {
    const double perMobility = part / (state.LambdaO[giver] + state.LambdaW[giver] + state.LambdaG[giver]);
    const auto less = [perMobility](double flow, double lambda) {
        const double left = flow - perMobility * lambda;
        return left * flow > 0.0 ? left : 0.0;
    };
    flux.oil = less(flux.oil, state.LambdaO[giver]);
    flux.water = less(flux.water, state.LambdaW[giver]);
    flux.gas = less(flux.gas, state.LambdaG[giver]);
}

/// Rows of the high faces of a cell beside which a state has been found anew.
void measureFaces(const UnitSystem& units, const ConnectionTable& connections, const VelocityField& velocity,
                  const ComponentMakeUp& makeUp, const ComponentStage& stage, const CellState& state,
                  CellId c, Moves& moves) {
    for (int axis = 1; axis <= AxisCount; ++axis) {
        const int face = 2 * axis;
        const CellId n = connections.Neighbour(c, face);
        if (n <= 0 || connections.Trans(c, face) == 0.0) continue;
        if (moves.isStale[c] == 0 && moves.isStale[n] == 0) continue;
        double* const rows = moves.faces.row(c);
        std::fill_n(rows + moves.rowOf(axis, false), 2 * moves.width(), 0.0);
        moves.told(c, axis) = 0.0;
        const double total = velocity.CellFaceFlux(c, face);
        PhaseFlux flux = phaseSharesThroughFace(units.FlowUnit, connections, state, c, face, total);
        const auto from = [c, n](double volume) { return volume > 0.0 ? c : n; };
        if (!makeUp.isEmpty() && makeUp.isTold(c, axis, total)) {
            const CellId giver = from(total);
            const double share = moves.followed[giver] * alongShare(flux, total, state, giver);
            moves.told(c, axis) = share * total;
            if (share > 0.0) takeAway(share * total, state, giver, flux);
        }
        const auto row = [&](double volume) { return rows + moves.rowOf(axis, !(volume > 0.0)); };
        addMixture(stage, units.VolumeFactor, state, from(flux.oil), true, std::abs(flux.oil), row(flux.oil));
        addMixture(stage, units.VolumeFactor, state, from(flux.gas), false, std::abs(flux.gas),
                   row(flux.gas));
        addWater(stage, state, from(flux.water), std::abs(flux.water), row(flux.water));
    }
}

void measureSources(const UnitSystem& units, std::span<const ComponentSource> sources,
                    const ComponentStage& stage, const CellState& state, Moves& moves) {
    for (std::size_t s = 0; s < sources.size(); ++s) {
        if (moves.isStale[sources[s].cell] == 0) continue;
        double* const row = moves.sourceRows.data() + s * static_cast<std::size_t>(moves.width());
        std::fill(row, row + moves.width(), 0.0);
        const CellId c = sources[s].cell;
        const double mobility = state.LambdaO[c] + state.LambdaG[c] + state.LambdaW[c];
        if (sources[s].produced > 0.0 && mobility > 0.0) {
            const double perMobility = sources[s].produced / mobility;
            addMixture(stage, units.VolumeFactor, state, c, true, perMobility * state.LambdaO[c], row);
            addMixture(stage, units.VolumeFactor, state, c, false, perMobility * state.LambdaG[c], row);
            addWater(stage, state, c, perMobility * state.LambdaW[c], row);
        }
        for (int k = 0; k < moves.width(); ++k) row[k] = -row[k];
        for (int i = 0; i < stage.set.count; ++i) row[i] += sources[s].stream[i];
        row[moves.water()] += sources[s].waterStream;
    }
}

/// Adds a row to what a cell gains, and to what leaves it where it is a loss.
void addRow(const double* row, double sign, int width, double* net, double* leaving) {
    for (int k = 0; k < width; ++k) {
        net[k] += sign * row[k];
        if (sign < 0.0) leaving[k] += row[k];
    }
}

/// What the faces of a cell bring it in a day, and how long it can give what leaves it by its own mixtures.
void gatherCell(const ConnectionTable& connections, const ComponentMakeUp& makeUp,
                const ComponentStage& stage, const CellState& state, CellId c, Moves& moves) {
    constexpr int MostWidth = MaxComponents + 2;
    double leaving[MostWidth] = {};
    double* const net = moves.net.row(c);
    const int width = moves.width();
    std::fill(net, net + width, 0.0);
    const auto addTold = [&](CellId low, int axis, double sign) {
        const double flow = moves.told(low, axis);
        if (flow == 0.0) return;
        const double* const row = moves.toldRow(makeUp, low, axis);
        for (int k = 0; k <= moves.count; ++k) net[k] += sign * flow * row[k];
    };
    for (int axis = 1; axis <= AxisCount; ++axis) {
        const double* const high = moves.faces.row(c);
        addRow(high + moves.rowOf(axis, false), -1.0, width, net, leaving);
        addRow(high + moves.rowOf(axis, true), 1.0, width, net, leaving);
        addTold(c, axis, -1.0);
        const CellId low = connections.Neighbour(c, 2 * axis - 1);
        if (low <= 0) continue;
        const double* const before = moves.faces.row(low);
        addRow(before + moves.rowOf(axis, false), 1.0, width, net, leaving);
        addRow(before + moves.rowOf(axis, true), -1.0, width, net, leaving);
        addTold(low, axis, 1.0);
    }
    double longest = HUGE_VAL;
    if (leaving[moves.volume()] > 0.0)
        longest = LargestPoreShare * state.PoreVolume[c] / leaving[moves.volume()];
    for (int i = 0; i < moves.count; ++i)
        if (leaving[i] > 0.0)
            longest = std::min(longest, LargestMoleShare * stage.amounts.moles(c, i + 1) / leaving[i]);
    moves.longest[c] = longest;
}

/// Sources take of their cells what faces leave them: their part bounds the substep too.
void addSources(std::span<const ComponentSource> sources, const ComponentStage& stage, const CellState& state,
                Moves& moves) {
    for (std::size_t s = 0; s < sources.size(); ++s) {
        const CellId c = sources[s].cell;
        if (moves.isDue[c] == 0) continue;
        const double* const row = moves.sourceRows.data() + s * static_cast<std::size_t>(moves.width());
        double* const net = moves.net.row(c);
        for (int k = 0; k < moves.width(); ++k) net[k] += row[k];
        double perDay = 1.0 / moves.longest[c];
        perDay += std::max(0.0, -row[moves.volume()]) / (LargestPoreShare * state.PoreVolume[c]);
        for (int i = 0; i < moves.count; ++i)
            if (row[i] < 0.0)
                perDay = std::max(perDay, -row[i] / (LargestMoleShare * stage.amounts.moles(c, i + 1)));
        moves.longest[c] = 1.0 / perDay;
    }
}

/// What a cell holds now.
void bringUp(CellId c, ComponentStage& stage, Moves& moves) {
    const double days = moves.now - moves.since[c];
    if (!(days > 0.0)) return;
    const double* const net = moves.net.row(c);
    double* const moles = stage.amounts.moles.row(c);
    for (int i = 0; i < moves.count; ++i) moles[i] += days * net[i];
    stage.amounts.water[c] += days * net[moves.water()];
    moves.changed[c] += days * moves.changing[c];
    moves.since[c] = moves.now;
}

/// When the state of a cell has to be found anew, when its limits end a substep and when it would be
/// overdrawn, with the balance that it has now.
void setTimes(const ComponentStage& stage, CellId c, Moves& moves) {
    const double* const net = moves.net.row(c);
    const double* const moles = stage.amounts.moles.row(c);
    const double water = stage.amounts.water[c], waterNet = net[moves.water()];
    double held = 0.0, change = 0.0, empty = HUGE_VAL;
    for (int i = 0; i < moves.count; ++i) {
        held += moles[i];
        change += std::abs(net[i]);
        if (net[i] < 0.0) empty = std::min(empty, -moles[i] / net[i]);
    }
    if (waterNet < 0.0) empty = std::min(empty, -water / waterNet);
    moves.changing[c] =
        (change > 0.0 ? change / held : 0.0) + (water > 0.0 ? std::abs(waterNet) / water : 0.0);
    const double longest = moves.longest[c];
    moves.fullAt[c] = moves.now + longest;
    moves.emptyAt[c] = moves.followed[c] > 0.0 ? moves.now + empty : HUGE_VAL;
    // At its limits too: what leaves it of a trace follows what is there of it.
    double days = LimitShare * longest;
    if (moves.changing[c] > 0.0) days = std::min(days, (StaleChange - moves.changed[c]) / moves.changing[c]);
    moves.staleAt[c] = std::isfinite(moves.changing[c]) ? moves.now + days : moves.now;
}

/// What the cell had since its state was found, added to the means of the mobilities over the step.
void addToMeans(double dt, const CellState& state, CellId c, PhaseMobilities& mean, Moves& moves) {
    const double share = (moves.now - moves.foundAt[c]) / dt;
    mean.oil[c] += share * state.LambdaO[c];
    mean.water[c] += share * state.LambdaW[c];
    mean.gas[c] += share * state.LambdaG[c];
    moves.foundAt[c] = moves.now;
}

/// What is new of a cell is new to its neighbours' balances.
void markDue(const ConnectionTable& connections, Moves& moves) {
    for (const CellId c : moves.due) moves.isDue[c] = 0;
    moves.due.clear();
    const auto mark = [&moves](CellId c) {
        if (moves.isDue[c] != 0) return;
        moves.isDue[c] = 1;
        moves.due.push_back(c);
    };
    for (const CellId c : moves.stale) {
        moves.isStale[c] = 1;
        mark(c);
        for (int face = 1; face <= FaceCount; ++face)
            if (const CellId n = connections.Neighbour(c, face); n > 0) mark(n);
    }
}

template <class Work>
void forCells(const std::vector<CellId>& cells, Work work) {
    const std::size_t count = cells.size();
#pragma omp parallel for schedule(dynamic, 64) if (count >= static_cast <std::size_t>(ParallelHeavyCells))
    for (std::size_t k = 0; k < count; ++k) work(cells[k]);
}

double endOfSubstep(const GridModel& grid, const Moves& moves, double dt) {
    double end = dt;
    for (CellId c = 1; c <= grid.NCELLS; ++c) end = std::min(end, moves.fullAt[c]);
    return std::min(dt, std::max(end, moves.now + LeastSubstep * dt));
}

/// Balances beside the cells that are stale.
void measureMoves(const UnitSystem& units, const ConnectionTable& connections, const VelocityField& velocity,
                  std::span<const ComponentSource> sources, const ComponentMakeUp& makeUp,
                  const CellState& state, ComponentStage& stage, Moves& moves) {
    markDue(connections, moves);
    forCells(moves.due, [&](CellId c) { bringUp(c, stage, moves); });
    forCells(moves.due,
             [&](CellId c) { measureFaces(units, connections, velocity, makeUp, stage, state, c, moves); });
    forCells(moves.due, [&](CellId c) { gatherCell(connections, makeUp, stage, state, c, moves); });
    measureSources(units, sources, stage, state, moves);
    addSources(sources, stage, state, moves);
    forCells(moves.due, [&](CellId c) { setTimes(stage, c, moves); });
    for (const CellId c : moves.stale) moves.isStale[c] = 0;
}

/// By how much the make-ups of all faces of a cell would leave it other than the lines do. `net` comes with
/// what a day brings.
double errorOfMakeUps(const ComponentMakeUp& makeUp, const ComponentStage& stage, const CellState& state,
                      const double* net, double dt, CellId c) {
    const double* const told = makeUp.end.row(c);
    const int count = makeUp.count;
    if (told[count] < 0.0) return HUGE_VAL;
    Composition held{};
    double sum = 0.0;
    for (int i = 0; i < count; ++i)
        sum += held[i] = std::max(0.0, stage.amounts.moles(c, i + 1) + dt * net[i]);
    if (!(sum > 0.0)) return HUGE_VAL;
    const double water = stage.amounts.water[c] + dt * net[count];
    double error = std::abs(state.Bw[c] * water / state.PoreVolume[c] - told[count]);
    for (int i = 0; i < count; ++i) error = std::max(error, std::abs(held[i] / sum - told[i]));
    return error;
}

/// How far each cell follows what is told of its outflow, from the flows that follow all of it.
void trustCells(const ConnectionTable& connections, const VelocityField& velocity, const GridModel& grid,
                std::span<const ComponentSource> sources, const ComponentMakeUp& makeUp,
                const ComponentStage& stage, const CellState& state, double dt, Moves& moves) {
    constexpr double TrustedError = 0.01;  // of a fraction or a saturation
    CellArray<double> outflow;
    sumOutflows(connections, velocity.CellFaceFlux, grid, sources, outflow);
#pragma omp parallel for schedule(static) if (grid.NCELLS >= ParallelCells)
    for (CellId c = 1; c <= grid.NCELLS; ++c) {
        if (grid.Active[c] == 0) continue;
        double told = 0.0;
        forToldOutflows(connections, velocity.CellFaceFlux, makeUp, c,
                        [&](CellId, int, double out) { told += out; });
        const double through = std::max(outflow[c], told);
        const double turns = dt * through / state.PoreVolume[c];
        if (turns <= 1.0) continue;
        const bool allTold = told >= (1.0 - AllTold) * through;
        const double error =
            allTold ? errorOfMakeUps(makeUp, stage, state, moves.net.row(c), dt, c) : HUGE_VAL;
        moves.followed[c] = error > TrustedError ? std::max(TrustedError / error, 1.0 / turns) : 1.0;
    }
}

/// Cells which what is told would overdraw before `end` follow it no further. True where there is one.
bool dropOverdrawn(const ConnectionTable& connections, const VelocityField& velocity, const GridModel& grid,
                   const ComponentMakeUp& makeUp, double end, Moves& moves) {
    if (makeUp.isEmpty()) return false;
    moves.stale.clear();
    for (CellId c = 1; c <= grid.NCELLS; ++c) {
        if (!(moves.emptyAt[c] < end)) continue;
        bool any = false;
        forToldOutflows(connections, velocity.CellFaceFlux, makeUp, c,
                        [&](CellId low, int axis, double) { any = any || moves.told(low, axis) != 0.0; });
        moves.followed[c] = 0.0;
        moves.emptyAt[c] = HUGE_VAL;
        if (any) moves.stale.push_back(c);
    }
    return !moves.stale.empty();
}

void addToSources(double days, const Moves& moves, std::vector<SourceTotals>& moved) {
    for (std::size_t s = 0; s < moved.size(); ++s) {
        const double* const row = moves.sourceRows.data() + s * static_cast<std::size_t>(moves.width());
        for (int i = 0; i < moves.count; ++i) moved[s].moles[static_cast<std::size_t>(i)] += days * row[i];
        moved[s].water += days * row[moves.water()];
    }
}

/// Cells whose state has to be found anew now.
void collectStale(const GridModel& grid, Moves& moves) {
    moves.stale.clear();
    for (CellId c = 1; c <= grid.NCELLS; ++c)
        if (moves.staleAt[c] <= moves.now) moves.stale.push_back(c);
}

}  // namespace

void moveComponents(const UnitSystem& units, const GridModel& grid, const ConnectionTable& connections,
                    const FluidTables& tables, const VelocityField& velocity,
                    std::span<const ComponentSource> sources, const ComponentMakeUp& makeUp, double dt,
                    ComponentStage& stage, CellState& state, std::vector<SourceTotals>& moved) {
    Moves moves;
    sizeMoves(grid, stage.set.count, sources.size(), moves);
    moved.assign(sources.size(), {});
    for (CellArray<double>* mean : {&stage.mean.oil, &stage.mean.water, &stage.mean.gas})
        mean->assign(grid.NCELLS, 0.0);
    const auto measure = [&] {
        measureMoves(units, connections, velocity, sources, makeUp, state, stage, moves);
    };
    const auto leave = [&](CellId c) {
        bringUp(c, stage, moves);
        addToMeans(dt, state, c, stage.mean, moves);
        moves.changed[c] = 0.0;
    };
    if (!makeUp.isEmpty()) {
        measure();
        if (makeUp.left.width > 0) {
            moves.reached = makeUp.face;
            reachEnds(units.VolumeFactor, grid, connections, velocity.CellFaceFlux, sources, makeUp, stage,
                      state, moves.told, dt, moves.net, moves.reached);
        }
        trustCells(connections, velocity, grid, sources, makeUp, stage, state, dt,
                   moves);  // all are stale still
    }
    while (moves.now < dt) {
        measure();
        const double end = endOfSubstep(grid, moves, dt);
        if (dropOverdrawn(connections, velocity, grid, makeUp, end, moves)) continue;
        addToSources(end - moves.now, moves, moved);
        moves.now = end;
        if (end >= dt) break;
        collectStale(grid, moves);
        forCells(moves.stale, leave);
        refreshCells(grid, tables, units.VolumeFactor, moves.stale, stage, state);
    }
    for (CellId c = 1; c <= grid.NCELLS; ++c)
        if (grid.Active[c] != 0) leave(c);
    refreshComponents(grid, tables, units.VolumeFactor, VolumeSlopes::None, Saturations::Found, stage, state);
}

}  // namespace kvr
