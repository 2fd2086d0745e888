#include "fluid/phase_tables.hpp"

#include "base/messages.hpp"

#include <algorithm>

namespace kvr {

namespace {

constexpr double SameSaturation = 1e-9;  // closer rows are one

/// A column at a value of its axis, the end values outside.
double valueOf(const Column& axis, const Column& column, double at) {
    if (at <= axis.front()) return column.front();
    if (at >= axis.back()) return column.back();
    const auto above =
        static_cast<std::size_t>(std::upper_bound(axis.begin(), axis.end(), at) - axis.begin());
    const double width = axis[above] - axis[above - 1];
    const double share = width > 0.0 ? (at - axis[above - 1]) / width : 0.0;
    return column[above - 1] + share * (column[above] - column[above - 1]);
}

/// The saturations of a phase and those that leave the oil at a row of its table, inside the range of the
/// first. At least two rows, of which the look-ups take one for the low end: a table without any width has
/// its value twice.
Column commonAxis(const Column& own, const Column& oil, double rest) {
    Column axis = own;
    for (const double so : oil) {
        const double at = rest - so;
        if (at > own.front() && at < own.back()) axis.push_back(at);
    }
    std::sort(axis.begin(), axis.end());
    const auto same = [](double a, double b) { return b - a < SameSaturation; };
    axis.erase(std::unique(axis.begin(), axis.end(), same), axis.end());
    if (axis.size() == 1) axis.push_back(axis.front());
    return axis;
}

void combineWater(const PhaseTables& from, SaturationTable& to) {
    to.SwAxis = commonAxis(from.Sw, from.So, 1.0);
    to.Krw.clear();
    to.Krow.clear();
    to.Pcow.clear();
    for (const double sw : to.SwAxis) {
        to.Krw.push_back(valueOf(from.Sw, from.Krw, sw));
        to.Krow.push_back(valueOf(from.So, from.Krow, 1.0 - sw));
        to.Pcow.push_back(valueOf(from.Sw, from.Pcow, sw));
    }
}

void combineGas(const PhaseTables& from, double connate, SaturationTable& to) {
    to.SgAxis = commonAxis(from.Sg, from.So, 1.0 - connate);
    to.Krg.clear();
    to.Krog.clear();
    to.Pcog.clear();
    for (const double sg : to.SgAxis) {
        to.Krg.push_back(valueOf(from.Sg, from.Krg, sg));
        to.Krog.push_back(valueOf(from.So, from.Krog, 1.0 - connate - sg));
        to.Pcog.push_back(valueOf(from.Sg, from.Pcog, sg));
    }
}

}  // namespace

void combinePhaseTables(const Console& console, bool hasWater, FluidTables& tables) {
    for (std::size_t r = 0; r < tables.phaseTables.size(); ++r) {
        const PhaseTables& from = tables.phaseTables[r];
        if (from.So.empty() || (from.Sw.empty() && from.Sg.empty())) {
            warn(console, "WARNING :: REGION {} HAS {} AND IS NOT COMPLETE WITHOUT {}", r + 1,
                 from.So.empty() ? "SWFN OR SGFN" : "SOF2 OR SOF3",
                 from.So.empty() ? "SOF2 OR SOF3" : "SWFN OR SGFN");
            continue;
        }
        if (tables.regions.size() <= r) tables.regions.resize(r + 1);
        if (!from.Sw.empty()) combineWater(from, tables.regions[r]);
        const double connate = hasWater && !from.Sw.empty() ? from.Sw.front() : 0.0;
        if (!from.Sg.empty()) combineGas(from, connate, tables.regions[r]);
    }
    tables.phaseTables.clear();
}

}  // namespace kvr
