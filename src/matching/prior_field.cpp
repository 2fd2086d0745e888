#include "matching/prior_field.hpp"

#include <algorithm>
#include <cmath>
#include <numeric>

namespace kvr {

namespace {

constexpr double SideShare = 0.125;  // of a grid, where no length is given
constexpr double Least = 1e-4;       // of a correlation that is kept

/// Mean size of the active cells along an axis, ft.
double meanSize(const GridModel& grid, std::size_t axis) {
    const std::array<const CellArray<double>*, AxisCount> sizes = {&grid.DX, &grid.DY, &grid.DZ};
    double sum = 0.0;
    int count = 0;
    for (CellId cell = 1; cell <= grid.NCELLS; ++cell) {
        if (grid.Active[cell] == 0) continue;
        sum += (*sizes[axis])[cell];
        ++count;
    }
    return count > 0 ? sum / count : 0.0;
}

/// exp(-(d / reach)^2) for distances of d cells. Where it is cut, it is the product of a cut bell with
/// itself: what is cut off a covariance itself may leave it indefinite.
std::vector<double> correlations(double reach, int extent) {
    if (!(reach > 0.0)) return {1.0};
    const double kept = std::ceil(reach * std::sqrt(-0.5 * std::log(Least)));
    std::vector<double> result;
    if (2.0 * kept >= extent) {
        for (int d = 0; d < extent; ++d) result.push_back(std::exp(-d * d / (reach * reach)));
        return result;
    }
    const int half = static_cast<int>(kept);
    std::vector<double> bell;
    for (int n = -half; n <= half; ++n) bell.push_back(std::exp(-2.0 * n * n / (reach * reach)));
    const double whole = std::inner_product(bell.begin(), bell.end(), bell.begin(), 0.0);
    for (std::size_t d = 0; d < bell.size() && d < static_cast<std::size_t>(extent); ++d)
        result.push_back(
            std::inner_product(bell.begin() + static_cast<std::ptrdiff_t>(d), bell.end(), bell.begin(), 0.0) /
            whole);
    return result;
}

/// Along a line of cells that are `stride` apart.
void spreadLine(const std::vector<double>& correlation, std::size_t stride, std::size_t count, double* first,
                std::vector<double>& scratch) {
    for (std::size_t n = 0; n < count; ++n) scratch[n] = first[n * stride];
    for (std::size_t n = 0; n < count; ++n) {
        double sum = correlation[0] * scratch[n];
        for (std::size_t d = 1; d < correlation.size(); ++d) {
            if (d <= n) sum += correlation[d] * scratch[n - d];
            if (n + d < count) sum += correlation[d] * scratch[n + d];
        }
        first[n * stride] = sum;
    }
}

}  // namespace

PriorCovariance buildPriorCovariance(const GridModel& grid, const PriorSettings& settings,
                                     const CellArray<std::uint8_t>& region) {
    PriorCovariance prior;
    prior.extent = {grid.NX, grid.NY, grid.NZ};
    prior.variance = settings.deviation * settings.deviation;
    prior.levelVariance = settings.level * settings.level;
    prior.region = region;
    std::array<double, AxisCount> side{}, size{};
    for (std::size_t axis = 0; axis < AxisCount; ++axis) {
        size[axis] = meanSize(grid, axis);
        side[axis] = size[axis] * prior.extent[axis];
    }
    const double longer = std::max(side[0], side[1]);
    for (std::size_t axis = 0; axis < AxisCount; ++axis) {
        const double own = axis < 2 ? SideShare * longer : SideShare * side[2];
        const double length = settings.lengths[axis] > 0.0 ? settings.lengths[axis] : own;
        prior.correlation[axis] =
            correlations(size[axis] > 0.0 ? length / size[axis] : 0.0, prior.extent[axis]);
    }
    return prior;
}

void applyPriorCovariance(const PriorCovariance& prior, CellArray<double>& values,
                          std::vector<double>& scratch) {
    double sum = 0.0;
    for (CellId cell = 1; cell <= values.count(); ++cell) {
        if (prior.region[cell] == 0) values[cell] = 0.0;
        sum += values[cell];
    }
    const auto nx = static_cast<std::size_t>(prior.extent[0]), ny = static_cast<std::size_t>(prior.extent[1]),
               nz = static_cast<std::size_t>(prior.extent[2]);
    scratch.resize(std::max({nx, ny, nz}));
    double* first = values.slots.data() + 1;
    for (std::size_t line = 0; line < ny * nz; ++line)
        spreadLine(prior.correlation[0], 1, nx, first + line * nx, scratch);
    for (std::size_t k = 0; k < nz; ++k)
        for (std::size_t i = 0; i < nx; ++i)
            spreadLine(prior.correlation[1], nx, ny, first + k * nx * ny + i, scratch);
    for (std::size_t column = 0; column < nx * ny; ++column)
        spreadLine(prior.correlation[2], nx * ny, nz, first + column, scratch);
    for (CellId cell = 1; cell <= values.count(); ++cell)
        values[cell] =
            prior.region[cell] == 0 ? 0.0 : prior.variance * values[cell] + prior.levelVariance * sum;
}

}  // namespace kvr
