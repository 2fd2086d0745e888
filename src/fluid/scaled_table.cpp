#include "fluid/scaled_table.hpp"

#include "fluid/table_checks.hpp"

#include <algorithm>
#include <cmath>
#include <span>

namespace kvr {

namespace {

constexpr double Tolerance = 1e-6;        // relative permeability that counts as none
constexpr double SameSaturation = 1e-10;  // closer rows are one
constexpr double OnARow = 1e-9;           // a saturation this close to a row has its value
constexpr double LeastWidth = 1e-9;       // of saturation, between two points

struct Pair {
    double inTable = 0.0, scaled = 0.0;
};

/// Straight lines between two or three pairs of saturations, extended beyond the ends.
struct PointMap {
    std::array<Pair, 3> pairs{};
    std::size_t count = 0;
};

double alongPairs(const PointMap& map, double at, double Pair::*of, double Pair::*to) {
    const std::size_t low = map.count == 3 && at > map.pairs[1].*of ? 1 : 0;
    const Pair& a = map.pairs[low];
    const Pair& b = map.pairs[low + 1];
    if (!(b.*of - a.*of > LeastWidth)) return a.*to;
    return a.*to + (at - a.*of) * (b.*to - a.*to) / (b.*of - a.*of);
}

double toTable(const PointMap& map, double scaled) {
    return alongPairs(map, scaled, &Pair::scaled, &Pair::inTable);
}

double toScaled(const PointMap& map, double inTable) {
    return alongPairs(map, inTable, &Pair::inTable, &Pair::scaled);
}

PointMap mapOf(Pair first, Pair last) {
    return {{first, last}, 2};
}

/// With three points the middle pair counts; where scaling leaves one stretch no width, the other one goes
/// on. A stretch of no width in the table has the one value there.
PointMap mapOf(Pair first, Pair middle, Pair last, bool threePoint) {
    if (!threePoint) return mapOf(first, last);
    if (middle.scaled - first.scaled <= LeastWidth) return mapOf(middle, last);
    if (last.scaled - middle.scaled <= LeastWidth) return mapOf(first, middle);
    return {{first, middle, last}, 3};
}

/// A column by its axis; the end values outside.
double valueOn(const Column& axis, const Column& column, double at) {
    const auto above =
        static_cast<std::size_t>(std::lower_bound(axis.begin(), axis.end(), at - OnARow) - axis.begin());
    if (above == axis.size()) return column.back();
    if (above == 0 || axis[above] <= at + OnARow) return column[above];
    const double share = (at - axis[above - 1]) / (axis[above] - axis[above - 1]);
    return column[above - 1] + share * (column[above] - column[above - 1]);
}

/// One function of a table: its column, how its saturations move, and how its values do.
struct ScaledCurve {
    const Column& axis;
    const Column& column;
    PointMap map;
    double factor = 1.0;       // of all values, or of those up to `bend`
    bool bends = false;        // values beyond `bend` have a line of their own
    bool rises = true;         // with its saturation
    double bend = 0.0;         // scaled saturation where the other phase stops flowing
    double valueAtBend = 0.0;  // of the scaled curve
    double rawAtBend = 0.0, rawMost = 0.0, most = 0.0;
    double end = 0.0;  // scaled saturation of the greatest value
};

double rawAt(const ScaledCurve& curve, double scaled) {
    return valueOn(curve.axis, curve.column, toTable(curve.map, scaled));
}

double valueAt(const ScaledCurve& curve, double scaled) {
    const double raw = rawAt(curve, scaled);
    const bool beyond = curve.rises ? scaled > curve.bend : scaled < curve.bend;
    if (!curve.bends || !beyond) return raw * curve.factor;
    const double width = curve.rawMost - curve.rawAtBend;
    const double share = width > Tolerance ? (raw - curve.rawAtBend) / width
                                           : (scaled - curve.bend) / (curve.end - curve.bend);
    return curve.valueAtBend + std::min(share, 1.0) * (curve.most - curve.valueAtBend);
}

/// Values of a curve by its greatest one and, where it is given, that at `bend`; `end` is where it is
/// greatest.
void scaleValues(double mostInTable, double most, double atBend, double bend, double end,
                 ScaledCurve& curve) {
    if (!(mostInTable > Tolerance)) return;
    curve.factor = most / mostInTable;
    const double rawAtBend = rawAt(curve, bend);
    if (atBend < 0.0 || !(rawAtBend > Tolerance)) return;
    curve.factor = atBend / rawAtBend;
    if (std::abs(end - bend) <= LeastWidth) return;
    curve.bends = true;
    curve.rises = end > bend;
    curve.bend = bend;
    curve.end = end;
    curve.valueAtBend = atBend;
    curve.rawAtBend = rawAtBend;
    curve.rawMost = mostInTable;
    curve.most = most;
}

/// Rows at every bend of the curves, from `first` to `last`.
Column rowsOf(std::span<const ScaledCurve> curves, double first, double last) {
    Column rows = {first, last};
    const auto add = [&](double at) {
        if (at > first && at < last) rows.push_back(at);
    };
    for (const ScaledCurve& curve : curves) {
        for (const double at : curve.axis) add(toScaled(curve.map, at));
        for (std::size_t n = 0; n < curve.map.count; ++n) add(curve.map.pairs[n].scaled);
        if (curve.bends) add(curve.bend);
        if (curve.bends) add(curve.end);
    }
    std::sort(rows.begin(), rows.end());
    const auto same = [](double a, double b) { return b - a < SameSaturation; };
    rows.erase(std::unique(rows.begin(), rows.end(), same), rows.end());
    rows.back() = last;
    rows.shrink_to_fit();
    return rows;
}

Column columnOf(const ScaledCurve& curve, const Column& rows) {
    Column column;
    column.reserve(rows.size());
    for (const double at : rows) column.push_back(valueAt(curve, at));
    return column;
}

double ratioOf(double to, double from) {
    return from != 0.0 ? to / from : 1.0;
}

void scaleWater(const SaturationTable& table, const EndPoints& from, const EndPoints& to, bool threePoint,
                SaturationTable& result) {
    const Pair oilStops = {1.0 - from.SOWCR - from.SGL, 1.0 - to.SOWCR - to.SGL};
    const Pair waterStops = {from.SWCR + from.SGL, to.SWCR + to.SGL};
    const Pair least = {from.SWL + from.SGL, to.SWL + to.SGL};
    const Pair most = {from.SWU, to.SWU};
    ScaledCurve krw{table.SwAxis, table.Krw, mapOf({from.SWCR, to.SWCR}, oilStops, most, threePoint)};
    ScaledCurve krow{table.SwAxis, table.Krow,
                     mapOf(least, waterStops, {1.0 - from.SOWCR, 1.0 - to.SOWCR}, threePoint)};
    ScaledCurve pcow{table.SwAxis, table.Pcow, mapOf({from.SWL, to.SWL}, most), ratioOf(to.PCW, from.PCW)};
    scaleValues(from.KRW, to.KRW, to.KRWR, oilStops.scaled, most.scaled, krw);
    scaleValues(from.KROW, to.KROW, to.KRORW, waterStops.scaled, least.scaled, krow);
    const std::array curves = {krw, krow, pcow};
    result.SwAxis = rowsOf(curves, to.SWL, to.SWU);
    result.Krw = columnOf(krw, result.SwAxis);
    result.Krow = columnOf(krow, result.SwAxis);
    result.Pcow = columnOf(pcow, result.SwAxis);
}

void scaleGas(const SaturationTable& table, const EndPoints& from, const EndPoints& to, bool threePoint,
              SaturationTable& result) {
    const Pair oilStops = {1.0 - from.SOGCR - from.SWL, 1.0 - to.SOGCR - to.SWL};
    const Pair gasStops = {from.SGCR, to.SGCR};
    const Pair least = {from.SGL, to.SGL};
    const Pair most = {from.SGU, to.SGU};
    ScaledCurve krg{table.SgAxis, table.Krg, mapOf(gasStops, oilStops, most, threePoint)};
    ScaledCurve krog{table.SgAxis, table.Krog, mapOf(least, gasStops, oilStops, threePoint)};
    ScaledCurve pcog{table.SgAxis, table.Pcog, mapOf(least, most), ratioOf(to.PCG, from.PCG)};
    scaleValues(from.KRG, to.KRG, to.KRGR, oilStops.scaled, most.scaled, krg);
    scaleValues(from.KROG, to.KROG, to.KRORG, gasStops.scaled, least.scaled, krog);
    const std::array curves = {krg, krog, pcog};
    result.SgAxis = rowsOf(curves, to.SGL, to.SGU);
    result.Krg = columnOf(krg, result.SgAxis);
    result.Krog = columnOf(krog, result.SgAxis);
    result.Pcog = columnOf(pcog, result.SgAxis);
}

/// Highest saturation at which a rising function is none; the first one where it is never so, or always.
double lastWithout(const Column& axis, const Column& values) {
    const auto flows = [](double value) { return value > Tolerance; };
    const auto first = std::find_if(values.begin(), values.end(), flows);
    if (first == values.begin() || first == values.end()) return axis.front();
    return axis[static_cast<std::size_t>(first - values.begin()) - 1];
}

/// Lowest saturation from which on a falling function is none; the last one where it is never so, or always.
double firstWithout(const Column& axis, const Column& values) {
    const auto flows = [](double value) { return value > Tolerance; };
    const auto first = std::find_if_not(values.begin(), values.end(), flows);
    if (first == values.begin() || first == values.end()) return axis.back();
    return axis[static_cast<std::size_t>(first - values.begin())];
}

}  // namespace

EndPoints endPointsOf(const SaturationTable& table) {
    EndPoints points;
    points.SWL = table.SwAxis.front();
    points.SWU = table.SwAxis.back();
    points.SGL = table.SgAxis.front();
    points.SGU = table.SgAxis.back();
    points.SWCR = lastWithout(table.SwAxis, table.Krw);
    points.SGCR = lastWithout(table.SgAxis, table.Krg);
    points.SOWCR = 1.0 - firstWithout(table.SwAxis, table.Krow);
    points.SOGCR = 1.0 - points.SWL - firstWithout(table.SgAxis, table.Krog);
    points.KRW = table.Krw.back();
    points.KRG = table.Krg.back();
    points.KROW = table.Krow.front();
    points.KROG = table.Krog.front();
    points.PCW = table.Pcow.front();
    points.PCG = table.Pcog.back();
    return points;
}

std::string_view endPointFault(const EndPoints& p, bool hasWater, bool hasGas) {
    struct Rule {
        bool broken;
        std::string_view text;
    };
    const Rule rules[] = {
        {hasWater && !(p.SWU - p.SWL > LeastWidth), "SWL IS NOT BELOW SWU"},
        {hasWater && !(p.SWU - p.SWCR > LeastWidth), "SWCR IS NOT BELOW SWU"},
        {hasWater && !(1.0 - p.SOWCR - p.SWL - p.SGL > LeastWidth), "SWL + SGL + SOWCR IS NOT BELOW 1"},
        {hasGas && !(p.SGU - p.SGL > LeastWidth), "SGL IS NOT BELOW SGU"},
        {hasGas && !(p.SGU - p.SGCR > LeastWidth), "SGCR IS NOT BELOW SGU"},
        {hasGas && !(1.0 - p.SOGCR - p.SWL - p.SGL > LeastWidth), "SWL + SGL + SOGCR IS NOT BELOW 1"},
    };
    const auto* const found =
        std::find_if(std::begin(rules), std::end(rules), [](const Rule& rule) { return rule.broken; });
    return found == std::end(rules) ? std::string_view{} : found->text;
}

SaturationTable scaledTable(const SaturationTable& table, const EndPoints& from, const EndPoints& to,
                            bool threePoint, bool hasGas) {
    SaturationTable result = table;
    scaleWater(table, from, to, threePoint, result);
    if (hasGas) scaleGas(table, from, to, threePoint, result);
    finishRegion(hasGas, result);
    return result;
}

}  // namespace kvr
