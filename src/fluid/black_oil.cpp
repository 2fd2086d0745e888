#include "fluid/black_oil.hpp"

#include "base/constants.hpp"
#include "fluid/table_lookup.hpp"
#include "fluid/under_saturated.hpp"

#include <algorithm>
#include <cmath>

namespace kvr {

namespace {

constexpr double PressureStep = 0.0001;           // psi, of the one-sided differences
constexpr double PerPressureStep = 10000.0;       // 1/psi
constexpr double LeastReciprocal = 1e-10;         // floor of a looked-up 1/B or 1/(B mu)
constexpr double ConstantWaterViscosity = 1e-10;  // 1/psi; less viscosibility than this is none

double reciprocalOf(double lookup) {
    return 1.0 / std::max(LeastReciprocal, lookup);
}

bool isDeadOil(const FluidTables& tables) {
    return tables.MaxRs <= 0.0;
}

/// Also true where p or pb is not a number, so that a bad state goes the short way.
bool isSaturated(double p, double pb) {
    return !(std::abs(p - pb) >= SaturationPressureTolerance);
}

TablePlace saturatedPlace(const FluidTables& tables, double pb) {
    return findPlace(tables.OilPressure, 1, tables.SatRows, pb);
}

double saturatedFvf(const FluidTables& tables, const TablePlace& place) {
    return reciprocalOf(valueAt(tables.OilInvFvf, place));
}

double saturatedViscosity(const FluidTables& tables, const TablePlace& place) {
    return 1.0 /
           (std::max(LeastReciprocal, valueAt(tables.OilInvFvfVisc, place)) * saturatedFvf(tables, place));
}

/// Property off the bubble point: from its value at pb through the steps of the under-saturated block,
/// its reciprocal linear in p inside the last step reached and beyond the block.
double underSaturated(const FluidTables& tables, const Column& slopes, double atBubblePoint, double p,
                      double pb) {
    if (tables.UnderRows <= 0) return 0.0;
    double value = atBubblePoint;
    double pressure = pb;
    double walked = 0.0;
    int last = -1;
    for (int k = 0; k < tables.UnderRows && walked <= p - pb; ++k) {
        const auto row = static_cast<std::size_t>(k);
        const double step = tables.UnderPressureStep[row];
        value += slopes[row] * step;
        pressure += step;
        walked += step;
        if (step > 0.0) last = k;
    }
    const auto segment = static_cast<std::size_t>(std::max(last, 0));
    const double step = tables.UnderPressureStep[segment];
    if (step <= 0.0) return value;
    const double change = slopes[segment] * step;
    const double reciprocal = 1.0 / value - (p - pressure) * (1.0 / (value - change) - 1.0 / value) / step;
    return last < 0 ? 1.0 / reciprocal : std::max(0.0, 1.0 / reciprocal);
}

/// 1/B or 1/(B mu) off the bubble point; 0 where the table extended to p leaves nothing.
double reciprocalOff(const FluidTables& tables, const Column& saturated, const Column& factor,
                     const TablePlace& place, double rise) {
    return valueAt(saturated, place) *
           std::max(0.0, underSaturatedFactor(tables.underRows, factor, place, rise));
}

double fvfOff(const FluidTables& tables, const TablePlace& place, double p, double pb) {
    const UnderSaturatedRows& rows = tables.underRows;
    if (rows.first.empty())
        return underSaturated(tables, tables.UnderFvfSlope, saturatedFvf(tables, place), p, pb);
    const double inverse = reciprocalOff(tables, tables.OilInvFvf, rows.invFvf, place, p - pb);
    return inverse > LeastReciprocal ? 1.0 / inverse : 0.0;
}

double viscosityOff(const FluidTables& tables, const TablePlace& place, double fvf, double p, double pb) {
    const UnderSaturatedRows& rows = tables.underRows;
    if (rows.first.empty())
        return underSaturated(tables, tables.UnderViscSlope, saturatedViscosity(tables, place), p, pb);
    const double inverse = reciprocalOff(tables, tables.OilInvFvfVisc, rows.invFvfVisc, place, p - pb);
    return inverse > LeastReciprocal && fvf > 0.0 ? 1.0 / (inverse * fvf) : 0.0;
}

double deadOilFvf(const FluidTables& tables, const TablePlace& place) {
    return reciprocalOf(valueAt(tables.OilInvFvf, place));
}

double deadOilViscosity(const FluidTables& tables, const TablePlace& place) {
    const double inverse = valueAt(tables.OilInvFvfVisc, place);
    if (inverse < MachineEpsilon) return valueAt(tables.OilViscosity, place);
    return 1.0 / (inverse * deadOilFvf(tables, place));
}

/// Reciprocal of a gas column at p, or at standard pressure where the table extended to p gives nothing.
double gasReciprocal(const FluidTables& tables, const Column& column, const TablePlace& place) {
    const double inverse = valueAt(column, place);
    if (inverse > 0.0) return inverse;
    const TablePlace standard = findPlace(tables.GasPressure, 1, tables.GasRows, StandardPressure);
    return std::max(LeastReciprocal, valueAt(column, standard));
}

/// 1 + c (d + c d^2 / 2): the expansion of exp(c d) shared by water and rock.
double compressionSeries(double compressibility, double d) {
    return 1.0 + compressibility * (d + 0.5 * compressibility * d * d);
}

}  // namespace

OilProperties oilProperties(const FluidTables& tables, double p, double pb) {
    if (isDeadOil(tables)) {
        const TablePlace place = findPlace(tables.OilPressure, 1, tables.OilRows, p);
        return {deadOilFvf(tables, place), deadOilViscosity(tables, place)};
    }
    if (tables.SatRows <= 1) return {};
    if (isSaturated(p, pb)) {
        const TablePlace place = saturatedPlace(tables, p);
        return {saturatedFvf(tables, place), saturatedViscosity(tables, place)};
    }
    const TablePlace place = saturatedPlace(tables, pb);
    const double fvf = fvfOff(tables, place, p, pb);
    return {fvf, viscosityOff(tables, place, fvf, p, pb)};
}

OilProperties usableOilProperties(const FluidTables& tables, double p, double pb) {
    const OilProperties oil = oilProperties(tables, p, pb);
    return oil.Bo > 0.0 && oil.MuO > 0.0 ? oil : oilProperties(tables, pb, pb);
}

double OilFvf(const FluidTables& tables, double p, double pb) {
    if (isDeadOil(tables)) return deadOilFvf(tables, findPlace(tables.OilPressure, 1, tables.OilRows, p));
    if (tables.SatRows <= 1) return 1.0;
    if (isSaturated(p, pb)) return saturatedFvf(tables, saturatedPlace(tables, p));
    return fvfOff(tables, saturatedPlace(tables, pb), p, pb);
}

double OilViscosity(const FluidTables& tables, double p, double pb) {
    return oilProperties(tables, p, pb).MuO;
}

GasProperties gasProperties(const FluidTables& tables, double p) {
    if (!tables.hasGas) return {};
    const TablePlace place = findPlace(tables.GasPressure, 1, tables.GasRows, p);
    const double fvf = 1.0 / gasReciprocal(tables, tables.GasInvFvf, place);
    return {fvf, 1.0 / (fvf * gasReciprocal(tables, tables.GasInvFvfVisc, place))};
}

double GasFvf(const FluidTables& tables, double p) {
    if (!tables.hasGas) return 1.0;
    const TablePlace place = findPlace(tables.GasPressure, 1, tables.GasRows, p);
    return 1.0 / gasReciprocal(tables, tables.GasInvFvf, place);
}

double GasViscosity(const FluidTables& tables, double p) {
    return gasProperties(tables, p).MuG;
}

double SolutionRs(const FluidTables& tables, double pb) {
    if (isDeadOil(tables) || tables.SatRows < 2) return 0.0;
    return TableLookup(tables.OilPressure, tables.OilRs, 1, 1, tables.SatRows, pb);
}

double BubblePoint(const FluidTables& tables, double rs) {
    if (isDeadOil(tables) || tables.SatRows < 2) return 0.0;
    return TableLookup(tables.OilRs, tables.OilPressure, 1, 1, tables.SatRows, rs);
}

double WaterFvf(const FluidTables& tables, double p) {
    return tables.waterFvf /
           compressionSeries(tables.waterCompressibility, p - tables.referencePressureWater);
}

double WaterViscosity(const FluidTables& tables, double p) {
    if (tables.waterViscosibility < ConstantWaterViscosity) return tables.waterViscosity;
    const double y = -tables.waterViscosibility * (p - tables.referencePressureWater);
    return tables.waterViscosity / (1.0 + y + 0.5 * y * y);
}

double PoreFactor(const FluidTables& tables, double p) {
    return compressionSeries(tables.rockCompressibility, p - tables.rockReferencePressure);
}

namespace {

/// Bubble point that goes with p + PressureStep: moved along at saturation, held otherwise.
double bubblePointAhead(const FluidTables& tables, double p, double pb) {
    return !isDeadOil(tables) && isSaturated(p, pb) ? pb + PressureStep : pb;
}

}  // namespace

double OilFvfSlope(const FluidTables& tables, double p, double pb) {
    const double ahead = OilFvf(tables, p + PressureStep, bubblePointAhead(tables, p, pb));
    return (ahead - OilFvf(tables, p, pb)) * PerPressureStep;
}

double SolutionRsSlope(const FluidTables& tables, double pb) {
    return (SolutionRs(tables, pb + PressureStep) - SolutionRs(tables, pb)) * PerPressureStep;
}

double WaterFvfSlope(const FluidTables& tables, double p) {
    return (WaterFvf(tables, p + PressureStep) - WaterFvf(tables, p)) * PerPressureStep;
}

double WaterViscositySlope(const FluidTables& tables, double p) {
    return (WaterViscosity(tables, p + PressureStep) - WaterViscosity(tables, p)) * PerPressureStep;
}

double PoreFactorSlope(const FluidTables& tables, double p) {
    return (PoreFactor(tables, p + PressureStep) - PoreFactor(tables, p)) * PerPressureStep;
}

OilSlopes oilSlopes(const FluidTables& tables, double p, double pb, const OilProperties& here) {
    const OilProperties byP = usableOilProperties(tables, p + PressureStep, pb);
    OilSlopes slopes;
    slopes.BoByP = (byP.Bo - here.Bo) * PerPressureStep;
    slopes.MuOByP = (byP.MuO - here.MuO) * PerPressureStep;
    if (isDeadOil(tables)) return slopes;
    const OilProperties byPb = usableOilProperties(tables, p, pb + PressureStep);
    slopes.BoByPb = (byPb.Bo - here.Bo) * PerPressureStep;
    slopes.MuOByPb = (byPb.MuO - here.MuO) * PerPressureStep;
    return slopes;
}

OilSlopes saturatedOilSlopes(const FluidTables& tables, double p, const OilProperties& here) {
    const OilProperties along = usableOilProperties(tables, p + PressureStep, p + PressureStep);
    OilSlopes slopes;
    slopes.BoByP = (along.Bo - here.Bo) * PerPressureStep;
    slopes.MuOByP = (along.MuO - here.MuO) * PerPressureStep;
    return slopes;
}

GasProperties gasSlopes(const FluidTables& tables, double p, const GasProperties& here) {
    const GasProperties ahead = gasProperties(tables, p + PressureStep);
    return {(ahead.Bg - here.Bg) * PerPressureStep, (ahead.MuG - here.MuG) * PerPressureStep};
}

double reservoirVoidage(const FluidTables& tables, double p, double qo, double qw, double qg) {
    return reservoirVoidage(tables, p, qo > 0.0 ? qg / qo : 0.0, qo, qw, qg);
}

double reservoirVoidage(const FluidTables& tables, double p, double Rs, double qo, double qw, double qg) {
    constexpr std::size_t LeastRows = 2;
    const bool oilGiven = tables.OilInvFvf.size() >= LeastRows;
    const bool gasGiven = tables.hasGas && tables.GasInvFvf.size() >= LeastRows;
    const double most = oilGiven ? SolutionRs(tables, p) : 0.0;
    const double held = std::min(most, Rs);
    const double Bo = oilGiven ? OilFvf(tables, p, held < most ? BubblePoint(tables, held) : p) : 1.0;
    const double Bg = gasGiven ? GasFvf(tables, p) : 1.0;
    return WaterFvf(tables, p) * qw + Bo * qo + std::max(0.0, qg - qo * held) * Bg;
}

}  // namespace kvr
