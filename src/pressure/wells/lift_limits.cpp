#include "pressure/wells/lift_limits.hpp"

#include "base/constants.hpp"
#include "pressure/wells/well_heads.hpp"
#include "pressure/wells/well_rates.hpp"
#include "pressure/wells/well_target.hpp"

#include <algorithm>
#include <cmath>

namespace kvr {

namespace {

constexpr int ScanParts = 64;  // of the range of pressures in which the lowest crossing is looked for
constexpr int Halvings = 40;
constexpr double FarAbove = 20000.0;  // psi over the cells, beyond which no injector is looked at
constexpr std::size_t Axes = 5;

double ratio(double a, double b) {
    return b > 0.0 ? a / b : 0.0;
}

double rateOf(const LiftTable& table, const LiftRates& q) {
    switch (table.rate) {
        case LiftRate::Oil:
            return q.oil;
        case LiftRate::Liquid:
            return q.oil + q.water;
        case LiftRate::Gas:
            return q.gas;
        case LiftRate::Water:
            return q.water;
    }
    return 0.0;
}

double waterOf(const LiftTable& table, const LiftRates& q) {
    switch (table.water) {
        case LiftWater::PerOil:
            return ratio(q.water, q.oil);
        case LiftWater::Cut:
            return ratio(q.water, q.water + q.oil);
        case LiftWater::PerGas:
            return ratio(q.water, q.gas);
    }
    return 0.0;
}

double gasOf(const LiftTable& table, const LiftRates& q) {
    switch (table.gas) {
        case LiftGas::PerOil:
            return ratio(q.gas, q.oil);
        case LiftGas::PerLiquid:
            return ratio(q.gas, q.oil + q.water);
        case LiftGas::OilPerGas:
            return ratio(q.oil, q.gas);
    }
    return 0.0;
}

/// The piece of an axis that holds a value, or the end piece next to it, and how far along.
struct Piece {
    std::size_t first = 0;
    double share = 0.0;
};
Piece pieceOf(const std::vector<double>& axis, double value) {
    if (axis.size() < 2) return {};
    const auto above = std::upper_bound(axis.begin() + 1, axis.end() - 1, value);
    const auto first = static_cast<std::size_t>(above - axis.begin()) - 1;
    return {first, (value - axis[first]) / (axis[first + 1] - axis[first])};
}

std::size_t placeOf(const LiftTable& table, const std::array<std::size_t, Axes>& at) {
    const auto size = [&table](LiftTable::Axis axis) { return table.axes[axis].size(); };
    std::size_t place = at[LiftTable::Head];
    place = place * size(LiftTable::Water) + at[LiftTable::Water];
    place = place * size(LiftTable::Gas) + at[LiftTable::Gas];
    place = place * size(LiftTable::Lift) + at[LiftTable::Lift];
    return place * size(LiftTable::Rate) + at[LiftTable::Rate];
}

/// Sum over the corners of the pieces along all axes.
double valueAt(const LiftTable& table, const std::array<Piece, Axes>& pieces) {
    double sum = 0.0;
    for (unsigned corner = 0; corner < (1U << Axes); ++corner) {
        double weight = 1.0;
        std::array<std::size_t, Axes> at{};
        for (std::size_t axis = 0; axis < Axes; ++axis) {
            const bool upper = (corner >> axis & 1U) != 0;
            weight *= upper ? pieces[axis].share : 1.0 - pieces[axis].share;
            at[axis] = pieces[axis].first + (upper ? 1 : 0);
        }
        if (weight != 0.0) sum += weight * table.bhp[placeOf(table, at)];
    }
    return sum;
}

std::array<Piece, Axes> piecesAt(const LiftTable& table, const LiftRates& rates, double lift) {
    std::array<Piece, Axes> pieces;
    pieces[LiftTable::Rate] = pieceOf(table.axes[LiftTable::Rate], rateOf(table, rates));
    pieces[LiftTable::Water] = pieceOf(table.axes[LiftTable::Water], waterOf(table, rates));
    pieces[LiftTable::Gas] = pieceOf(table.axes[LiftTable::Gas], gasOf(table, rates));
    pieces[LiftTable::Lift] = pieceOf(table.axes[LiftTable::Lift], lift);
    return pieces;
}

/// What a well gives of each phase at a bottom-hole pressure while it is on.
struct PhaseInflows {
    WellInflow oil, water, gas;
    double onShare = 1.0;

    [[nodiscard]] LiftRates at(double bhp) const {
        return {rateAtBhp(oil, bhp) / onShare, rateAtBhp(water, bhp) / onShare,
                rateAtBhp(gas, bhp) / onShare};
    }
};

/// psi of the bore's fluid from the depth of the table to that of the well's pressures.
double weightBelowTable(const FluidTables& tables, const CellState& state, const Well& well) {
    const double depth = hasDatum(well) ? well.datumDepth - well.lift.table->datumDepth : 0.0;
    if (depth == 0.0 || well.connections.empty()) return 0.0;
    const FluidTables& own = pvtAt(tables, well.connections.front().ConnCell);
    return boreMixtureDensity(own, state, well, std::max(well.Bhp, StandardPressure)) * depth /
           SquareInchesPerSquareFoot;
}

/// The pressure without flow.
double stillBhp(const PhaseInflows& inflows, double own) {
    double still = own;
    bool any = false;
    for (const WellInflow* inflow : {&inflows.oil, &inflows.water, &inflows.gas}) {
        if (inflow->starts.empty()) continue;
        const double at = inflow->s * inflow->starts.front().at;
        still = any ? (inflow->s < 0.0 ? std::max(still, at) : std::min(still, at)) : at;
        any = true;
    }
    return still;
}

/// Between two pressures, where `lacks` changes from true to false.
template <class Lacks>
double crossing(double low, double high, const Lacks& lacks) {
    for (int n = 0; n < Halvings; ++n) {
        const double middle = 0.5 * (low + high);
        (lacks(middle) ? low : high) = middle;
    }
    return high;
}

double producerLimit(const PhaseInflows& inflows, const Well& well) {
    const double own = well.lift.ownLimit, still = stillBhp(inflows, own);
    const auto lacks = [&](double bhp) {
        return bhp - well.lift.weight <
               liftBhp(*well.lift.table, inflows.at(bhp), well.lift.head, well.lift.artificial);
    };
    if (!(still > own) || !lacks(own)) return own;
    const double part = (still - own) / ScanParts;
    for (int n = 1; n < ScanParts; ++n)
        if (!lacks(own + n * part)) return crossing(own + (n - 1) * part, own + n * part, lacks);
    return still;
}

double injectorLimit(const PhaseInflows& inflows, const Well& well) {
    const double still = stillBhp(inflows, well.lift.ownLimit);
    const double own = std::min(well.lift.ownLimit, still + FarAbove);
    const auto within = [&](double bhp) {
        return bhp - well.lift.weight <
               liftBhp(*well.lift.table, inflows.at(bhp), well.lift.head, well.lift.artificial);
    };
    if (within(own)) return well.lift.ownLimit;
    return within(still) ? crossing(still, own, within) : still;
}

}  // namespace

double liftBhp(const LiftTable& table, const LiftRates& rates, double head, double lift) {
    std::array<Piece, Axes> pieces = piecesAt(table, rates, lift);
    pieces[LiftTable::Head] = pieceOf(table.axes[LiftTable::Head], head);
    return valueAt(table, pieces);
}

double liftHead(const LiftTable& table, const LiftRates& rates, double bhp, double lift) {
    const std::vector<double>& heads = table.axes[LiftTable::Head];
    if (heads.size() < 2) return heads.front();
    std::array<Piece, Axes> pieces = piecesAt(table, rates, lift);
    const auto at = [&](std::size_t n) {
        pieces[LiftTable::Head] = {n, 0.0};
        return valueAt(table, pieces);
    };
    std::size_t n = 0;
    while (n + 2 < heads.size() && at(n + 1) < bhp) ++n;
    const double low = at(n), high = at(n + 1);
    return high > low ? heads[n] + (heads[n + 1] - heads[n]) * (bhp - low) / (high - low) : heads[n];
}

void settleLiftLimits(const UnitSystem& units, const FluidTables& tables, const CellState& state,
                      double averagePressure, WellRecord& wells) {
    for (Well& well : wells.wells) {
        if (well.lift.table == nullptr || well.shut || well.connections.empty()) continue;
        well.lift.weight = weightBelowTable(tables, state, well);
        if (!(well.lift.head > 0.0)) continue;
        const auto inflow = [&](std::string_view control) {
            return wellInflow(units, tables, state, averagePressure, well, control);
        };
        const PhaseInflows inflows{inflow("orat"), inflow("wlim"), inflow("grat"),
                                   well.efficiency > 0.0 ? well.efficiency : 1.0};
        well.BhpLimit = isInjector(well) ? injectorLimit(inflows, well) : producerLimit(inflows, well);
        if (!isRateControlled(well)) well.Bhp = well.BhpLimit;
    }
}

double tubingHead(const Well& well) {
    const double on = well.efficiency > 0.0 ? well.efficiency : 1.0;
    const LiftRates rates{std::abs(well.WellQo) / on, std::abs(well.WellQw) / on, std::abs(well.WellQg) / on};
    if (well.lift.table == nullptr || well.shut || rates.oil + rates.water + rates.gas == 0.0) return 0.0;
    return liftHead(*well.lift.table, rates, well.Bhp - well.lift.weight, well.lift.artificial);
}

}  // namespace kvr
