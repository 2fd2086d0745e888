#include "pressure/solvers/row_order.hpp"

#include <algorithm>
#include <array>
#include <cmath>
#include <numeric>

namespace kvr {

namespace {

constexpr int FrequentShare = 8;  // an offset is an axis when at least 1/8 of the cell rows have it
constexpr std::size_t MostAxes = 3;

struct Axis {
    int stride = 1;
    int count = 1;          // cells along it
    double strength = 0.0;  // coupling over a cut across it
};

/// Couplings of each column offset: how many, and the sum of |a_ij| / a_ii.
struct Offsets {
    std::vector<int> count;
    std::vector<double> strength;
};

Offsets gatherOffsets(const LinearSystem& system) {
    const auto cells = static_cast<std::size_t>(system.cellRows);
    Offsets offsets{std::vector<int>(cells, 0), std::vector<double>(cells, 0.0)};
    for (int i = 0; i < system.cellRows; ++i) {
        const std::int64_t first = system.rowStart[i];
        const double inverse = 1.0 / system.value[first];
        for (std::int64_t k = first + 1; k < system.rowStart[i + 1]; ++k) {
            const int j = system.column[k];
            if (j <= i || j >= system.cellRows) continue;
            ++offsets.count[j - i];
            offsets.strength[j - i] += std::abs(system.value[k]) * inverse;
        }
    }
    return offsets;
}

/// Axes by rising stride; none where the offsets do not make a box.
std::vector<Axis> axesOf(const Offsets& offsets, int cells) {
    std::vector<Axis> axes;
    for (int d = 1; d < cells; ++d) {
        if (offsets.count[d] < cells / FrequentShare || offsets.count[d] == 0) continue;
        if (axes.size() == MostAxes) return {};
        axes.push_back({d, 1, offsets.strength[d]});
    }
    if (axes.empty() || axes.front().stride != 1) return {};
    for (std::size_t a = 0; a < axes.size(); ++a) {
        const int next = a + 1 < axes.size() ? axes[a + 1].stride : cells;
        if (next % axes[a].stride != 0) return {};
        axes[a].count = next / axes[a].stride;
        axes[a].strength /= std::max(axes[a].count - 1, 1);
    }
    return axes;
}

}  // namespace

std::vector<int> sweepOrder(const LinearSystem& system) {
    std::vector<int> order(static_cast<std::size_t>(system.size));
    std::iota(order.begin(), order.end(), 0);
    std::vector<Axis> axes = axesOf(gatherOffsets(system), system.cellRows);
    if (axes.empty()) return order;
    std::stable_sort(axes.begin(), axes.end(),
                     [](const Axis& a, const Axis& b) { return a.strength < b.strength; });
    axes.resize(MostAxes);  // missing ones have one cell
    const auto [slow, middle, fast] = std::array{axes[0], axes[1], axes[2]};
    std::size_t place = 0;
    for (int s = 0; s < slow.count; ++s) {
        for (int m = 0; m < middle.count; ++m) {
            for (int f = 0; f < fast.count; ++f)
                order[place++] = s * slow.stride + m * middle.stride + f * fast.stride;
        }
    }
    return order;
}

}  // namespace kvr
