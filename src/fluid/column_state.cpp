#include "fluid/column_state.hpp"

#include "fluid/table_lookup.hpp"

#include <algorithm>

namespace kvr {

namespace {

/// Beyond the curve its end saturation stands.
double saturationAt(const CapillaryInverse& curve, double capillaryPressure) {
    if (capillaryPressure <= curve.pressure.front()) return curve.saturation.front();
    if (capillaryPressure >= curve.pressure.back()) return curve.saturation.back();
    return TableLookup(curve.pressure, curve.saturation, 1, 1, static_cast<int>(curve.pressure.size()),
                       capillaryPressure);
}

/// Most gas that a cell without capillary pressure holds: that of the gas table, beside the least water.
double mostGasOf(const SaturationTable& table) {
    return std::min(table.SgAxis.back(), 1.0 - table.SwAxis.front());
}

/// Sw by its capillary curve, or without one by the contact: the most below, the least above.
double waterSaturation(const CellView& cell, const InitDepthTable& rows) {
    if (cell.pcowFactor > 0.0)
        return saturationAt(cell.inverse.water, (cell.columns.oil - cell.columns.water) / cell.pcowFactor);
    return cell.depth >= rows.WocDepth ? cell.table.SwAxis.back() : cell.table.SwAxis.front();
}

/// Oil pressure of the cell: the oil column. Where the capillary pressure has run out of its curve oil no
/// longer moves, and the column of the water or gas that does must stay in balance instead.
double cellPressure(const CellView& cell) {
    const double leastPcow = cell.pcowFactor * cell.table.Pcow.back();
    const double mostPcog = cell.pcogFactor * cell.table.Pcog.back();
    const PhasePressures& p = cell.columns;
    if (p.oil - p.water < leastPcow) return p.water + leastPcow;
    if (p.gas - p.oil > mostPcog) return p.gas - mostPcog;
    return p.oil;
}

/// Capillary pressure of a curve by saturation, psi, scaled by the cell's factor; beyond the curve its ends.
double capillaryAt(const Column& axis, const Column& capillary, double factor, double saturation) {
    if (factor <= 0.0) return 0.0;
    const double within = std::clamp(saturation, axis.front(), axis.back());
    return factor * TableLookup(axis, capillary, 1, 1, static_cast<int>(axis.size()), within);
}

/// Where the transition zones of gas and water meet no oil is left: water has the saturation at which both
/// capillary pressures together balance gas against water, and gas has the rest. Bisection: both curves fall
/// with the water saturation.
DepthState gasOverWater(const CellView& cell) {
    constexpr int Halvings = 60;
    const SaturationTable& table = cell.table;
    const double pull = cell.columns.gas - cell.columns.water;
    const auto gasPull = [&](double sw) {
        return capillaryAt(table.SgAxis, table.Pcog, cell.pcogFactor, 1.0 - sw);
    };
    double low = table.SwAxis.front(), high = table.SwAxis.back();
    for (int n = 0; n < Halvings; ++n) {
        const double sw = 0.5 * (low + high);
        const double held = capillaryAt(table.SwAxis, table.Pcow, cell.pcowFactor, sw) + gasPull(sw);
        (held > pull ? low : high) = sw;
    }
    const double sw = 0.5 * (low + high);
    return {sw, 1.0 - sw, cell.columns.gas - gasPull(sw)};
}

DepthState stateAt(const CellView& cell, const InitDepthTable& rows, bool hasGas) {
    const DepthState found = {waterSaturation(cell, rows), hasGas ? gasSaturation(cell, rows) : 0.0,
                              cellPressure(cell)};
    constexpr double Slack = 1e-9;  // of saturations: rounding of tables that end at one another
    const bool overlap = found.Sw + found.Sg > 1.0 + Slack && cell.pcowFactor > 0.0;
    return overlap ? gasOverWater(cell) : found;
}

bool sameFluids(const DepthState& a, const DepthState& b) {
    return a.Sw == b.Sw && a.Sg == b.Sg;
}

/// All that the saturation of a phase can change, lies between the top and the bottom of a cell.
bool holdsWholeTransition(const CellView& cell, const DepthState& top, const DepthState& bottom) {
    constexpr double AllOfIt = 1.0 - 1e-6;
    const SaturationTable& table = cell.table;
    const double mostGas = cell.pcogFactor > 0.0 ? table.SgAxis.back() : mostGasOf(table);
    return bottom.Sw - top.Sw >= AllOfIt * (table.SwAxis.back() - table.SwAxis.front()) ||
           top.Sg - bottom.Sg >= AllOfIt * mostGas;
}

}  // namespace

double gasSaturation(const CellView& cell, const InitDepthTable& rows) {
    if (cell.pcogFactor > 0.0)
        return saturationAt(cell.inverse.gas, (cell.columns.gas - cell.columns.oil) / cell.pcogFactor);
    return cell.depth < rows.GocDepth ? mostGasOf(cell.table) : cell.table.SgAxis.front();
}

RegionInverse invert(const SaturationTable& table) {
    RegionInverse inverse;
    inverse.water.pressure.assign(table.Pcow.rbegin(), table.Pcow.rend());
    inverse.water.saturation.assign(table.SwAxis.rbegin(), table.SwAxis.rend());
    inverse.gas.pressure = table.Pcog;
    inverse.gas.saturation = table.SgAxis;
    return inverse;
}

PhasePressures pressuresAt(const InitDepthTable& rows, double depth) {
    const TablePlace place = findPlace(rows.Depth, 1, static_cast<int>(rows.Depth.size()), depth);
    return {valueAt(rows.PressureO, place), valueAt(rows.PressureW, place), valueAt(rows.PressureG, place)};
}

DepthState meanState(CellView cell, const InitDepthTable& rows, bool hasGas, std::array<double, 2> depths,
                     CellSlices slices) {
    const auto at = [&](double depth) {
        cell.depth = depth;
        cell.columns = pressuresAt(rows, depth);
        return stateAt(cell, rows, hasGas);
    };
    const DepthState centre = at(cell.depth);
    if (slices.count == 0) return centre;
    const DepthState top = at(depths[0]), bottom = at(depths[1]);
    if (sameFluids(top, centre) && sameFluids(bottom, centre)) return centre;
    if (!slices.always && !holdsWholeTransition(cell, top, bottom)) return centre;
    DepthState mean;
    const double height = (depths[1] - depths[0]) / slices.count;
    for (int slice = 0; slice < slices.count; ++slice) {
        const DepthState part = at(depths[0] + (slice + 0.5) * height);
        mean.Sw += part.Sw / slices.count;
        mean.Sg += part.Sg / slices.count;
        mean.pressure += part.pressure / slices.count;
    }
    if (!slices.always) mean.pressure = centre.pressure;
    return mean;
}

std::array<double, 2> depthRange(const GridModel& grid, CellId cell) {
    std::array<double, 2> range = {cornerOf(grid, cell, 1)[2], cornerOf(grid, cell, 1)[2]};
    for (int corner = 2; corner <= 8; ++corner) {
        const double depth = cornerOf(grid, cell, corner)[2];
        range = {std::min(range[0], depth), std::max(range[1], depth)};
    }
    return range;
}

}  // namespace kvr
