#include "pressure/tracer_transport.hpp"

#include "base/index.hpp"

#include <algorithm>
#include <cmath>
#include <string_view>

namespace kvr {

namespace {

constexpr std::size_t TracerLetters = 4;  // of a tracer's name that count
constexpr int MostSweeps = 200;           // over cells that stand in rings
constexpr double StillSweep = 1e-12;      // change of a concentration between sweeps
constexpr double EvenShare = 1e-6;        // of the water: a tank that gains or loses less counts as even

std::string_view tracerWord(std::string_view name) {
    return name.substr(0, TracerLetters);
}

/// Items by the cell that they go into: those of cell c are listed from first[c] to first[c + 1].
struct ByCell {
    std::vector<std::size_t> first, items;
};

template <class Item, class Cell>
ByCell listByCell(const std::vector<Item>& items, std::size_t cells, const Cell& cellOf) {
    ByCell list;
    list.first.assign(cells + 2, 0);
    for (const Item& item : items) list.first[at(cellOf(item)) + 1] += 1;
    for (std::size_t c = 1; c < list.first.size(); ++c) list.first[c] += list.first[c - 1];
    list.items.resize(items.size());
    std::vector<std::size_t> next = list.first;
    for (std::size_t n = 0; n < items.size(); ++n) list.items[next[at(cellOf(items[n]))]++] = n;
    return list;
}

/// Cells down the flow; those of rings, and behind them, come last. `ordered`: how many stand before these.
std::vector<CellId> downTheFlow(const WaterMovement& movement, const ByCell& out, std::size_t cells,
                                std::size_t& ordered) {
    std::vector<int> waitsFor(cells + 1, 0);
    for (const WaterPassage& passage : movement.passages) waitsFor[at(passage.to)] += 1;
    std::vector<CellId> order;
    for (std::size_t c = 1; c <= cells; ++c)
        if (waitsFor[c] == 0) order.push_back(static_cast<CellId>(c));
    for (std::size_t n = 0; n < order.size(); ++n) {
        const std::size_t cell = at(order[n]);
        for (std::size_t k = out.first[cell]; k < out.first[cell + 1]; ++k) {
            const CellId to = movement.passages[out.items[k]].to;
            if (--waitsFor[at(to)] == 0) order.push_back(to);
        }
    }
    ordered = order.size();
    for (std::size_t c = 1; c <= cells; ++c)
        if (waitsFor[c] > 0) order.push_back(static_cast<CellId>(c));
    return order;
}

/// What fills and empties one cell.
struct TracerTank {
    double before = 0.0, in = 0.0, out = 0.0;  // surface volumes of water

    [[nodiscard]] double after() const { return std::max(0.0, before + in - out); }
    /// Share of the distance to the concentration of the inflow that is left at the end of the step.
    [[nodiscard]] double leftOver() const {
        if (!(in > 0.0)) return 1.0;
        if (!(before > 0.0) || !(after() > 0.0)) return 0.0;
        const double gain = in - out;
        const bool even = std::abs(gain) < EvenShare * before;
        return std::exp(-(even ? in / before : in / gain * std::log(after() / before)));
    }
};

/// The walk over the cells with what it knows of each.
struct TracerWalk {
    const WaterMovement& movement;
    const WellRecord& wells;
    const std::vector<std::string>& names;
    ByCell in, wellsOf;
    std::vector<TracerTank> tanks;   // by CellId
    DirectionArray<double> passing;  // concentration of what leaves a cell
    DirectionArray<double> start;    // concentration at the start of the step
};

/// Amount of a tracer that flows into a cell.
double inflowOf(const TracerWalk& walk, CellId cell, std::size_t t) {
    double amount = 0.0;
    for (std::size_t k = walk.in.first[at(cell)]; k < walk.in.first[at(cell) + 1]; ++k) {
        const WaterPassage& passage = walk.movement.passages[walk.in.items[k]];
        amount += passage.volume * walk.passing.row(passage.from)[t];
    }
    for (std::size_t k = walk.wellsOf.first[at(cell)]; k < walk.wellsOf.first[at(cell) + 1]; ++k) {
        const WellWater& water = walk.movement.wells[walk.wellsOf.items[k]];
        if (water.volume > 0.0)
            amount += water.volume * injectedConcentration(walk.wells.wells[water.well], walk.names, t);
    }
    return amount;
}

/// One cell; returns how far the concentration that leaves it has moved.
double passCell(CellId cell, TracerWalk& walk, DirectionArray<double>& tracer) {
    const TracerTank& tank = walk.tanks[at(cell)];
    double moved = 0.0;
    for (int n = 0; n < tracer.width; ++n) {
        const double old = walk.start.row(cell)[n];
        const double amount = inflowOf(walk, cell, at(n));
        const double coming = tank.in > 0.0 ? amount / tank.in : old;
        const double end = coming + (old - coming) * tank.leftOver();
        const double leaving =
            tank.out > 0.0 ? (tank.before * old + amount - tank.after() * end) / tank.out : end;
        double& passing = walk.passing.row(cell)[n];
        moved = std::max(moved, std::abs(leaving - passing));
        passing = leaving;
        tracer.row(cell)[n] = end;
    }
    return moved;
}

std::vector<TracerTank> tanksOf(const WaterMovement& movement, const CellArray<double>& before) {
    std::vector<TracerTank> tanks(before.slots.size());
    for (CellId cell = 1; cell <= before.count(); ++cell) tanks[at(cell)].before = before[cell];
    for (const WaterPassage& passage : movement.passages) {
        tanks[at(passage.from)].out += passage.volume;
        tanks[at(passage.to)].in += passage.volume;
    }
    for (const WellWater& water : movement.wells)
        (water.volume > 0.0 ? tanks[at(water.cell)].in : tanks[at(water.cell)].out) += std::abs(water.volume);
    return tanks;
}

}  // namespace

double injectedConcentration(const Well& well, const std::vector<std::string>& names, std::size_t t) {
    double concentration = 0.0;
    for (const InjectedTracer& row : well.injectedTracers) {
        const auto known = std::find_if(names.begin(), names.end(), [&](const std::string& name) {
            return tracerWord(name) == tracerWord(row.name);
        });
        if (known == names.end() || at(static_cast<int>(known - names.begin())) == t)
            concentration = row.concentration;
    }
    return concentration;
}

void moveTracers(const WaterMovement& movement, const WellRecord& wells,
                 const std::vector<std::string>& names, const CellArray<double>& before,
                 DirectionArray<double>& tracer) {
    const std::size_t cells = at(before.count());
    const ByCell out = listByCell(movement.passages, cells, [](const WaterPassage& p) { return p.from; });
    TracerWalk walk{movement,
                    wells,
                    names,
                    listByCell(movement.passages, cells, [](const WaterPassage& p) { return p.to; }),
                    listByCell(movement.wells, cells, [](const WellWater& w) { return w.cell; }),
                    tanksOf(movement, before),
                    tracer,
                    tracer};
    std::size_t ordered = 0;
    const std::vector<CellId> order = downTheFlow(movement, out, cells, ordered);
    for (std::size_t n = 0; n < ordered; ++n) passCell(order[n], walk, tracer);
    for (int sweep = 0; sweep < MostSweeps; ++sweep) {
        double moved = 0.0;
        for (std::size_t n = ordered; n < order.size(); ++n)
            moved = std::max(moved, passCell(order[n], walk, tracer));
        if (moved < StillSweep) break;
    }
}

}  // namespace kvr
