#include "fluid/saturation_functions.hpp"

#include "fluid/table_lookup.hpp"

#include <algorithm>

namespace kvr {

namespace {

constexpr double SaturationStep = 1e-6;  // of the one-sided differences
constexpr double PerSaturationStep = 1e6;

using SaturationFunction = double (*)(const FluidTables&, double, int);

AxisPlace waterPlace(const SaturationTable& table, double sw) {
    return placeOnAxis(table.SwAxis, table.SwSearch, sw);
}

AxisPlace gasPlace(const SaturationTable& table, double sg) {
    return placeOnAxis(table.SgAxis, table.SgSearch, sg);
}

double slope(SaturationFunction function, const FluidTables& tables, double s, int region, double limit) {
    const double here = function(tables, s, region);
    if (s + SaturationStep > limit)
        return (function(tables, s - SaturationStep, region) - here) * -PerSaturationStep;
    return (function(tables, s + SaturationStep, region) - here) * PerSaturationStep;
}

double slopeInWater(SaturationFunction function, const FluidTables& tables, double sw, int region) {
    const SaturationTable& table = regionTable(tables, region);
    return slope(function, tables, sw, region, 1.0 - table.ResidualSo - table.CriticalSg);
}

double slopeInGas(SaturationFunction function, const FluidTables& tables, double sg, int region) {
    const SaturationTable& table = regionTable(tables, region);
    return slope(function, tables, sg, region, 1.0 - table.ConnateSw - table.ResidualSo);
}

double single(const Column& axis, const Column& column, double v) {
    return TableLookup(axis, column, 1, 1, static_cast<int>(axis.size()), v);
}

OilRule oilRuleOfSingleSet(const FluidTables& tables) {
    return tables.regions.empty() ? OilRule::Stone2 : tables.regions.front().oilRule;
}

double weightedOilSingle(const FluidTables& tables, double sw, double sg) {
    const double connate = tables.SwAxisSingle.front();
    const double s = std::max(0.0, sw - connate), gas = std::max(0.0, sg);
    const double krow =
        std::max(0.0, single(tables.SwAxisSingle, tables.KrowSingle, std::max(sw, connate) + gas));
    if (gas == 0.0) return std::min(1.0, krow);
    const double krog = std::max(0.0, single(tables.SgAxisSingle, tables.KrogSingle, s + gas));
    return std::min(1.0, (gas * krog + s * krow) / (s + gas));
}

}  // namespace

double KrwFn(const FluidTables& tables, double sw, int region) {
    const SaturationTable& table = regionTable(tables, region);
    return relPermAt(table.Krw, waterPlace(table, sw));
}

double KrowFn(const FluidTables& tables, double sw, int region) {
    const SaturationTable& table = regionTable(tables, region);
    return relPermAt(table.Krow, waterPlace(table, sw));
}

double KrgFn(const FluidTables& tables, double sg, int region) {
    const SaturationTable& table = regionTable(tables, region);
    return relPermAt(table.Krg, gasPlace(table, sg));
}

double KrogFn(const FluidTables& tables, double sg, int region) {
    const SaturationTable& table = regionTable(tables, region);
    return relPermAt(table.Krog, gasPlace(table, sg));
}

double PcowFn(const FluidTables& tables, double sw, int region) {
    if (tables.PcowSpan <= CapillarySpanLimit) return 0.0;
    const SaturationTable& table = regionTable(tables, region);
    return columnAt(table.Pcow, waterPlace(table, sw));
}

double PcogFn(const FluidTables& tables, double sg, int region) {
    if (tables.PcogSpan <= CapillarySpanLimit) return 0.0;
    const SaturationTable& table = regionTable(tables, region);
    return columnAt(table.Pcog, gasPlace(table, sg));
}

double Kro3Fn(const FluidTables& tables, double sw, double sg, int region) {
    return relPerms(regionTable(tables, region), tables.hasGas, sw, sg).o;
}

double KrwSlope(const FluidTables& tables, double sw, int region) {
    return slopeInWater(KrwFn, tables, sw, region);
}

double KrowSlope(const FluidTables& tables, double sw, int region) {
    return slopeInWater(KrowFn, tables, sw, region);
}

double KrgSlope(const FluidTables& tables, double sg, int region) {
    return slopeInGas(KrgFn, tables, sg, region);
}

double KrogSlope(const FluidTables& tables, double sg, int region) {
    return slopeInGas(KrogFn, tables, sg, region);
}

double PcowSlope(const FluidTables& tables, double sw, int region) {
    return slopeInWater(PcowFn, tables, sw, region);
}

double PcogSlope(const FluidTables& tables, double sg, int region) {
    return slopeInGas(PcogFn, tables, sg, region);
}

RelPerms relPermsSingle(const FluidTables& tables, double sw, double sg) {
    const double krow = single(tables.SwAxisSingle, tables.KrowSingle, sw);
    RelPerms result;
    result.w = single(tables.SwAxisSingle, tables.KrwSingle, sw);
    if (!tables.hasGas) {
        result.o = krow;
        return result;
    }
    result.g = single(tables.SgAxisSingle, tables.KrgSingle, sg);
    const double krog = single(tables.SgAxisSingle, tables.KrogSingle, sg);
    if (oilRuleOfSingleSet(tables) == OilRule::Weighted) {
        result.o = weightedOilSingle(tables, sw, sg);
        return result;
    }
    const double c = tables.KrowSingle.front();
    if (sw + sg < 1.0) result.o = stoneOil(c, 1.0 / c, result.w, krow, result.g, krog);
    return result;
}

namespace {

constexpr double LeastNotOil = 1e-9;    // water above connate and gas; with less both tables count the same
constexpr double TouchesLimit = 1e-12;  // past the limit of a relative permeability: rounding only

/// Slope of a column inside a segment, 0 where the relative permeability is clipped or the end value holds.
double relPermSlopeAt(const Column& column, const AxisSearch& search, const AxisPlace& place, double v) {
    if (v < search.least || v > search.most) return 0.0;
    const double slope = (column[place.low + 1] - column[place.low]) * search.inverseStep[place.low];
    const double value = columnAt(column, place);
    return value < 0.0 || (value == 0.0 && slope < 0.0) ? 0.0 : slope;
}

/// Slopes of stoneOil by the water and gas saturations, from the two-phase values and their slopes.
struct StoneSlopes {
    double krw, krow, krg, krog;  // slopes
};
void stoneOilSlopes(double c, double inverseC, const RelPerms& kr, double krow, double krog,
                    const StoneSlopes& slope, RelPermSlopes& result) {
    const double unclipped = c * ((krow * inverseC + kr.w) * (krog * inverseC + kr.g) - kr.w - kr.g);
    if (unclipped < 0.0 || unclipped > 1.0 + TouchesLimit) return;
    result.oBySw = c * ((slope.krow * inverseC + slope.krw) * (krog * inverseC + kr.g) - slope.krw);
    result.oBySg = c * ((krow * inverseC + kr.w) * (slope.krog * inverseC + slope.krg) - slope.krg);
}

/// Slopes of OilRule::Weighted. Both parts look their tables up at one sum t of water above connate and gas:
///   d(kro)/d(sw) = (krow - kro + sg krog' + s krow')/t,  d(kro)/d(sg) = (krog - kro + sg krog' + s krow')/t
/// with krow - kro = sg (krow - krog)/t and krog - kro = s (krog - krow)/t.
void weightedOilSlopes(const SaturationTable& table, double sw, double sg, RelPermSlopes& result) {
    const WeightedOil parts = weightedOil(table, sw, sg);
    const double krow = relPermAt(table.Krow, parts.water), krog = relPermAt(table.Krog, parts.gas);
    const double byWater = relPermSlopeAt(table.Krow, table.SwSearch, parts.water, parts.onWaterAxis);
    const double byGas = relPermSlopeAt(table.Krog, table.SgSearch, parts.gas, parts.onGasAxis);
    const double t = parts.sw + parts.sg;
    const double ofWater = t > LeastNotOil ? parts.sw / t : 0.5;
    const double ofGas = 1.0 - ofWater;
    if (ofGas * krog + ofWater * krow > 1.0 + TouchesLimit) return;
    const double both = ofGas * byGas + ofWater * byWater;
    const double apart = t > LeastNotOil ? (krow - krog) / t : 0.0;
    if (sw >= table.SwAxis.front()) result.oBySw = both + ofGas * apart;
    if (sg >= 0.0) result.oBySg = both - ofWater * apart;
}

RelPermSlopes relPermSlopesSingle(const FluidTables& tables, double sw, double sg) {
    const RelPerms here = relPermsSingle(tables, sw, sg);
    const RelPerms bySw = relPermsSingle(tables, sw + SaturationStep, sg);
    const RelPerms bySg = relPermsSingle(tables, sw, sg + SaturationStep);
    RelPermSlopes slopes;
    slopes.wBySw = (bySw.w - here.w) * PerSaturationStep;
    slopes.gBySg = (bySg.g - here.g) * PerSaturationStep;
    slopes.oBySw = (bySw.o - here.o) * PerSaturationStep;
    slopes.oBySg = (bySg.o - here.o) * PerSaturationStep;
    return slopes;
}

}  // namespace

RelPermSlopes relPermSlopes(const SaturationTable& table, bool hasGas, double sw, double sg) {
    const AxisPlace water = waterPlace(table, sw);
    RelPermSlopes slopes;
    slopes.wBySw = relPermSlopeAt(table.Krw, table.SwSearch, water, sw);
    const double krowSlope = relPermSlopeAt(table.Krow, table.SwSearch, water, sw);
    if (!hasGas) {
        slopes.oBySw = krowSlope;
        return slopes;
    }
    const AxisPlace gas = gasPlace(table, sg);
    slopes.gBySg = relPermSlopeAt(table.Krg, table.SgSearch, gas, sg);
    if (table.oilRule == OilRule::Weighted) {
        weightedOilSlopes(table, sw, sg, slopes);
        return slopes;
    }
    if (sw + sg >= 1.0 - table.ResidualSo || !(table.Krow.front() > 0.0)) return slopes;
    RelPerms kr;
    kr.w = relPermAt(table.Krw, water);
    kr.g = relPermAt(table.Krg, gas);
    const StoneSlopes slope{slopes.wBySw, krowSlope, slopes.gBySg,
                            relPermSlopeAt(table.Krog, table.SgSearch, gas, sg)};
    stoneOilSlopes(table.Krow.front(), table.InverseOilAtConnate, kr, relPermAt(table.Krow, water),
                   relPermAt(table.Krog, gas), slope, slopes);
    return slopes;
}

RelPermSlopes relPermSlopesAtCell(const FluidTables& tables, CellId cell, int region, double sw, double sg) {
    if (!hasRegionTable(tables, cell)) return relPermSlopesSingle(tables, sw, sg);
    return relPermSlopes(regionTable(tables, region), tables.hasGas, sw, sg);
}

RelPerms relPermsAtCell(const FluidTables& tables, CellId cell, int region, double sw, double sg) {
    if (!hasRegionTable(tables, cell)) return relPermsSingle(tables, sw, sg);
    return relPerms(regionTable(tables, region), tables.hasGas, sw, sg);
}

WaterCurves waterCurvesAtCell(const FluidTables& tables, CellId cell, int region, double sw) {
    const SaturationTable& table = regionTable(tables, region);
    const AxisPlace place = waterPlace(table, sw);
    WaterCurves curves;
    if (!hasRegionTable(tables, cell)) {
        const RelPerms kr = relPermsSingle(tables, sw, 0.0);
        const RelPermSlopes slopes = relPermSlopesSingle(tables, sw, 0.0);
        curves = {kr.w, kr.o, 0.0, slopes.wBySw, slopes.oBySw, 0.0};
    } else {
        curves = {relPermAt(table.Krw, place),
                  relPermAt(table.Krow, place),
                  0.0,
                  relPermSlopeAt(table.Krw, table.SwSearch, place, sw),
                  relPermSlopeAt(table.Krow, table.SwSearch, place, sw),
                  0.0};
    }
    if (tables.PcowSpan <= CapillarySpanLimit) return curves;
    curves.pcow = columnAt(table.Pcow, place);
    if (sw >= table.SwSearch.least && sw <= table.SwSearch.most)
        curves.pcowSlope =
            (table.Pcow[place.low + 1] - table.Pcow[place.low]) * table.SwSearch.inverseStep[place.low];
    return curves;
}

}  // namespace kvr
