#pragma once

#include "fluid/tables.hpp"

#include <cstddef>

namespace kvr {

// Look-ups in the saturation tables of a region (1-based SATNUM) over finished tables. Relative
// permeabilities are clipped at 0 from below; outside a table the end segment is extended, or the end value
// holds (SaturationTable::holdsEnds). Capillary pressures are psi before JFactor.

double KrwFn(const FluidTables& tables, double sw, int region);
double KrowFn(const FluidTables& tables, double sw, int region);
double KrgFn(const FluidTables& tables, double sg, int region);
double KrogFn(const FluidTables& tables, double sg, int region);
/// 0 when the capillary switch (span of region 1) is off.
double PcowFn(const FluidTables& tables, double sw, int region);
double PcogFn(const FluidTables& tables, double sg, int region);
/// Three-phase oil relative permeability, clipped to 0..1. Without a gas phase KrowFn(sw).
/// OilRule::Stone2, Stone's second model (Stone 1973), 0 from sw + sg = 1 - ResidualSo on, and where c is 0:
///   kro = c ((krow/c + krw)(krog/c + krg) - krw - krg),  c = krow of the first SWOF row
/// OilRule::Weighted (Baker 1988), oil apart from water in one part of the pores and from gas in the other,
/// at one So in both; s = max(0, sw - Swc), Swc the first row of SWOF:
///   kro = (sg krog(s + sg) + s krow(Swc + s + sg)) / (s + sg)
double Kro3Fn(const FluidTables& tables, double sw, double sg, int region);

/// Differences with step 1e-6, backward where the forward step would pass the top of the range:
/// 1 - ResidualSo - CriticalSg for the functions of sw, 1 - ConnateSw - ResidualSo for those of sg.
double KrwSlope(const FluidTables& tables, double sw, int region);
double KrowSlope(const FluidTables& tables, double sw, int region);
double KrgSlope(const FluidTables& tables, double sg, int region);
double KrogSlope(const FluidTables& tables, double sg, int region);
double PcowSlope(const FluidTables& tables, double sw, int region);
double PcogSlope(const FluidTables& tables, double sg, int region);

/// Relative permeabilities of one cell or node.
struct RelPerms {
    double w = 0.0, o = 0.0, g = 0.0;
};

/// By the region-free set: TableLookup on the single columns; the oil by the rule of region 1, Stone's model
/// for sw + sg below 1.
RelPerms relPermsSingle(const FluidTables& tables, double sw, double sg);

/// Whether a cell is flagged for the tables of its region, not for the region-free set.
inline bool hasRegionTable(const FluidTables& tables, CellId cell) {
    return tables.RegionTableCell.empty() || tables.RegionTableCell[cell] != 0;
}

/// By the set that the cell is flagged for.
RelPerms relPermsAtCell(const FluidTables& tables, CellId cell, int region, double sw, double sg);

// --- the same inline, one search per table, for loops over cells and line nodes -------------------

/// Segment of a saturation axis, 0-based lower row, and how far along it a value stands.
struct AxisPlace {
    std::size_t low = 0;
    double weight = 0.0;
};

/// Bucket of a value; rises with it, so that rows of a lower bucket lie below the value.
inline std::size_t bucketOf(const AxisSearch& search, double v) {
    const double bucket = (v - search.start) * search.bucketsPerUnit;
    if (!(bucket > 0.0)) return 0;
    return static_cast<std::size_t>(bucket < search.lastBucket ? bucket : search.lastBucket);
}

/// Last row, the last of all excepted, whose axis value is at or below `v`; the first row below the axis.
/// The row that bisection finds on a rising axis. At least two rows.
inline AxisPlace placeOnAxis(const Column& axis, const AxisSearch& search, double value) {
    const double v = value < search.least ? search.least : (value > search.most ? search.most : value);
    std::size_t low = search.firstRow[bucketOf(search, v)];
    while (low + 2 < axis.size() && axis[low + 1] <= v) ++low;
    return {low, (v - axis[low]) * search.inverseStep[low]};
}

inline double columnAt(const Column& column, const AxisPlace& place) {
    return column[place.low] + place.weight * (column[place.low + 1] - column[place.low]);
}

/// A relative permeability: never below 0, and 0 where it is not a number.
inline double relPermAt(const Column& column, const AxisPlace& place) {
    const double value = columnAt(column, place);
    return value > 0.0 ? value : 0.0;
}

/// Stone's second model from the two-phase values, clipped to 0..1; not a number (c = 0) gives 0.
inline double stoneOil(double c, double inverseC, double krw, double krow, double krg, double krog) {
    const double kro = c * ((krow * inverseC + krw) * (krog * inverseC + krg) - krw - krg);
    if (!(kro > 0.0)) return 0.0;
    return kro < 1.0 ? kro : 1.0;
}

/// The parts of OilRule::Weighted.
struct WeightedOil {
    double sw = 0.0, sg = 0.0;  // water above connate, gas: the weights
    double onWaterAxis = 0.0, onGasAxis = 0.0;
    AxisPlace water, gas;  // where the tables hold the oil saturation
};
inline WeightedOil weightedOil(const SaturationTable& table, double sw, double sg) {
    WeightedOil parts;
    const double connate = table.SwAxis.front();
    parts.sw = sw > connate ? sw - connate : 0.0;
    parts.sg = sg > 0.0 ? sg : 0.0;
    parts.onWaterAxis = (sw > connate ? sw : connate) + parts.sg;
    parts.onGasAxis = parts.sw + parts.sg;
    parts.water = placeOnAxis(table.SwAxis, table.SwSearch, parts.onWaterAxis);
    parts.gas = placeOnAxis(table.SgAxis, table.SgSearch, parts.onGasAxis);
    return parts;
}

inline double kroOf(const SaturationTable& table, const WeightedOil& parts) {
    const double krow = relPermAt(table.Krow, parts.water);
    if (parts.sg == 0.0) return krow < 1.0 ? krow : 1.0;
    const double kro =
        (parts.sg * relPermAt(table.Krog, parts.gas) + parts.sw * krow) / (parts.sg + parts.sw);
    return kro < 1.0 ? kro : 1.0;
}

/// KrwFn, Kro3Fn and KrgFn at once, to the same bits, with one search in each table. Without a gas phase
/// the gas table is not searched and `g` is 0.
inline RelPerms relPerms(const SaturationTable& table, bool hasGas, double sw, double sg) {
    const AxisPlace water = placeOnAxis(table.SwAxis, table.SwSearch, sw);
    RelPerms result;
    result.w = relPermAt(table.Krw, water);
    if (!hasGas) {
        result.o = relPermAt(table.Krow, water);
        return result;
    }
    const AxisPlace gas = placeOnAxis(table.SgAxis, table.SgSearch, sg);
    result.g = relPermAt(table.Krg, gas);
    if (table.oilRule == OilRule::Weighted) {
        result.o = kroOf(table, weightedOil(table, sw, sg));
        return result;
    }
    if (sw + sg >= 1.0 - table.ResidualSo) return result;
    const double c = table.Krow.front() > 0.0 ? table.Krow.front() : 0.0;
    result.o = stoneOil(c, table.InverseOilAtConnate, result.w, relPermAt(table.Krow, water), result.g,
                        relPermAt(table.Krog, gas));
    return result;
}

/// Slopes of relPermsAtCell: of krw by sw, of krg by sg, of kro by both.
struct RelPermSlopes {
    double wBySw = 0.0, gBySg = 0.0;
    double oBySw = 0.0, oBySg = 0.0;
};

/// Slopes of relPerms by the segments of the tables, to the right at a row. Where a value is clipped its
/// slope is 0; one that only touches the limit keeps the slope.
RelPermSlopes relPermSlopes(const SaturationTable& table, bool hasGas, double sw, double sg);
/// The same by the set that the cell is flagged for, the region-free one by differences.
RelPermSlopes relPermSlopesAtCell(const FluidTables& tables, CellId cell, int region, double sw, double sg);

/// Water and oil alone at a water saturation, with slopes by the segments of the tables, those of relative
/// permeabilities as relPermSlopes has them. Capillary pressure as PcowFn.
struct WaterCurves {
    double krw = 0.0, kro = 0.0, pcow = 0.0;
    double krwSlope = 0.0, kroSlope = 0.0, pcowSlope = 0.0;
};
WaterCurves waterCurvesAtCell(const FluidTables& tables, CellId cell, int region, double sw);

}  // namespace kvr
