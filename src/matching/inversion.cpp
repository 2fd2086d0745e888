#include "matching/inversion.hpp"

#include <algorithm>
#include <cmath>

namespace kvr {

namespace {

constexpr double HugeRatio = 100.0;  // of |dlnk| over |lnk|

double sumOfSizes(const CellArray<double>& values) {
    double sum = 0.0;
    for (const double value : values.cells()) sum += std::abs(value);
    return sum;
}

void divide(double divisor, CellArray<double>& values) {
    for (double& value : values.cells()) value /= divisor;
}

void limitGlobally(const Console& console, double g, const CellArray<double>& lnk, CellArray<double>& dlnk) {
    if (g > 0.0 && g < 1.0) {
        both(console, " Input Global Scaling is  : {}", number(g));
        both(console, " Update Inc is devided by : {}", number(g));
        divide(g, dlnk);
    } else if (g > 1.0) {
        const double all = sumOfSizes(lnk);
        const double r = all > 0.0 ? g * (sumOfSizes(dlnk) / all) : 0.0;
        if (!(r > 1.0)) return;
        both(console, " Update Global Scaling is : {}", number(r));
        both(console, " Update Inc is devided by : {}", number(r + 1.0));
        divide(r + 1.0, dlnk);
    }
}

bool isNear(const GridModel& grid, CellId cell, CellId completed, double radius) {
    const double i = grid.CellI[cell] - grid.CellI[completed], j = grid.CellJ[cell] - grid.CellJ[completed],
                 k = grid.CellK[cell] - grid.CellK[completed];
    return i * i + j * j + k * k <= radius * radius;
}

}  // namespace

RowFigures rowFigures(const SensitivityRows& rows, std::size_t row) {
    RowFigures figures;
    const std::size_t first = rows.start[row], last = rows.start[row + 1];
    figures.nonzeros = last - first;
    if (figures.nonzeros == 0) return figures;
    const auto count = static_cast<double>(figures.nonzeros);
    figures.least = figures.most = rows.value[first];
    for (std::size_t n = first; n < last; ++n) {
        figures.sum += rows.value[n];
        figures.sumOfSizes += std::abs(rows.value[n]);
        figures.least = std::min(figures.least, rows.value[n]);
        figures.most = std::max(figures.most, rows.value[n]);
    }
    figures.mean = figures.sum / count;
    for (std::size_t n = first; n < last; ++n)
        figures.variance += (rows.value[n] - figures.mean) * (rows.value[n] - figures.mean) / count;
    return figures;
}

double expectedChange(double misfit, double sum) {
    return sum == 0.0 ? 0.0 : misfit / sum;
}

double constraintMultiplier(double expected, double limit) {
    return limit > 0.0 && std::abs(expected) > limit ? std::abs(expected) / limit : 1.0;
}

void scaleRow(double factor, std::size_t row, SensitivityRows& rows) {
    for (std::size_t n = rows.start[row]; n < rows.start[row + 1]; ++n) rows.value[n] *= factor;
}

UpdateLimits updateLimits(const RunOptions& options) {
    return {options.globalWctLimit, options.gridWctLimit, options.lnkLimit};
}

ParameterBounds parameterBounds(const RunOptions& options) {
    return {options.minParameter, options.maxParameter};
}

void limitUpdate(const Console& console, const UpdateLimits& limits, const CellArray<double>& lnk,
                 CellArray<double>& dlnk) {
    limitGlobally(console, limits.global, lnk, dlnk);
    if (limits.grid > 0.0)
        for (CellId cell = 1; cell <= dlnk.count(); ++cell) {
            const double most = limits.grid * std::abs(lnk[cell]);
            dlnk[cell] = std::clamp(dlnk[cell], -most, most);
        }
    if (limits.divisor > 0.0) divide(limits.divisor, dlnk);
}

CellArray<double> logarithms(const CellArray<double>& permeability) {
    CellArray<double> lnk;
    lnk.assign(permeability.count(), 0.0);
    for (CellId cell = 1; cell <= lnk.count(); ++cell)
        if (permeability[cell] > 0.0) lnk[cell] = std::log(permeability[cell]);
    return lnk;
}

CellArray<std::uint8_t> updateRegion(const GridModel& grid, double radius,
                                     std::span<const CellId> completed) {
    CellArray<std::uint8_t> region;
    region.assign(grid.NCELLS, 0);
    for (CellId cell = 1; cell <= grid.NCELLS; ++cell) {
        if (grid.Active[cell] == 0 || grid.PERMX[cell] <= 0.0) continue;
        const bool reached = radius <= 0.0 || std::any_of(completed.begin(), completed.end(), [&](CellId c) {
                                 return isNear(grid, cell, c, radius);
                             });
        region[cell] = reached ? 1 : 0;
    }
    return region;
}

void applyUpdate(const Permeabilities& base, const CellArray<double>& dlnk, double share,
                 const ParameterBounds& bounds, GridModel& grid) {
    for (CellId cell = 1; cell <= grid.NCELLS; ++cell) {
        const double old = base.x[cell];
        double now = old;
        if (dlnk[cell] != 0.0 && old > 0.0) {
            now = std::exp(std::log(old) + share * dlnk[cell]);
            now = std::max(std::min(now, bounds.most), bounds.least);
        }
        const double ratio = old > 0.0 ? now / old : 1.0;
        grid.PERMX[cell] = now;
        grid.PERMY[cell] = base.y[cell] * ratio;
        grid.PERMZ[cell] = base.z[cell] * ratio;
    }
}

UpdateFigures updateFigures(const CellArray<std::uint8_t>& Active, const CellArray<double>& lnk,
                            const CellArray<double>& dlnk) {
    UpdateFigures figures;
    double changes = 0.0, all = 0.0;
    for (CellId cell = 1; cell <= dlnk.count(); ++cell) {
        if (Active[cell] == 0) continue;
        const double change = dlnk[cell], size = std::abs(lnk[cell]);
        figures.least = std::min(figures.least, change);
        figures.most = std::max(figures.most, change);
        changes += std::abs(change);
        all += size;
        if (size > 0.0 && std::abs(change) / size > HugeRatio) ++figures.huge;
    }
    figures.largest = std::max(figures.most, -figures.least);
    figures.magnitude = all > 0.0 ? changes / all : changes;
    return figures;
}

}  // namespace kvr
