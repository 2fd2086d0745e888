#pragma once

#include "unit/streamline/flow_samples.hpp"

#include <algorithm>
#include <array>
#include <cmath>
#include <vector>

namespace kvr::samples {

/// Time of flight from the injectors by first-order finite volumes on `m` by `m` parts of every cell of one
/// layer: q_out tau = PV + sum of q_in tau over the parts before, taken in the order of flow. Fluxes between
/// parts follow from those of the cell, linear along each axis. Returns the mean of each cell, [cell].
inline std::vector<double> finiteVolumeTime(const Flow& flow, int m) {
    const int nx = flow.grid.NX * m;
    const int ny = flow.grid.NY * m;
    const auto parts = static_cast<std::size_t>(nx) * static_cast<std::size_t>(ny);
    const double share = 1.0 / m;
    const auto cellOf = [&](std::size_t part) {
        const auto i = static_cast<int>(part % static_cast<std::size_t>(nx));
        const auto j = static_cast<int>(part / static_cast<std::size_t>(nx));
        return cellIndex(flow.grid, i / m + 1, j / m + 1, 1);
    };
    // Both parts at a side must see the same flux to the last bit, or the order of flow breaks.
    const auto outflow = [&](std::size_t part) {
        const double* f = flow.velocity.CellFaceFlux.row(cellOf(part));
        const auto i = static_cast<int>(part % static_cast<std::size_t>(nx)) % m;
        const auto j = static_cast<int>(part / static_cast<std::size_t>(nx)) % m;
        const auto along = [share, m](double low, double high, int k) {
            return share * std::lerp(low, high, static_cast<double>(k) / m);
        };
        return std::array<double, 4>{-along(f[0], f[1], i), along(f[0], f[1], i + 1), -along(f[2], f[3], j),
                                     along(f[2], f[3], j + 1)};
    };
    std::vector<double> sink(static_cast<std::size_t>(flow.grid.NCELLS) + 1, 0.0);
    for (const Well& well : flow.wells.wells)
        for (const WellConnection& c : well.connections)
            sink[static_cast<std::size_t>(c.ConnCell)] += share * share * std::max(0.0, -c.reservoirRate);
    std::vector<double> tau(parts, 0.0);  // sum of the inflow until the part's turn comes
    std::vector<unsigned char> waiting(parts, 0);
    std::vector<std::size_t> ready;
    for (std::size_t part = 0; part < parts; ++part) {
        for (const double q : outflow(part)) waiting[part] += q < 0.0 ? 1 : 0;
        if (waiting[part] == 0) ready.push_back(part);
    }
    std::vector<double> mean(static_cast<std::size_t>(flow.grid.NCELLS) + 1, 0.0);
    while (!ready.empty()) {
        const std::size_t part = ready.back();
        ready.pop_back();
        const CellId cell = cellOf(part);
        const std::array<double, 4> q = outflow(part);
        double out = sink[static_cast<std::size_t>(cell)];
        for (const double side : q) out += std::max(0.0, side);
        tau[part] = (share * share * flow.state.PoreVolume[cell] + tau[part]) / out;
        mean[static_cast<std::size_t>(cell)] += share * share * tau[part];
        const std::size_t next[] = {part - 1, part + 1, part - static_cast<std::size_t>(nx),
                                    part + static_cast<std::size_t>(nx)};
        for (std::size_t side = 0; side < 4; ++side) {
            if (q[side] <= 0.0) continue;
            tau[next[side]] += q[side] * tau[part];
            if (--waiting[next[side]] == 0) ready.push_back(next[side]);
        }
    }
    return mean;
}

}  // namespace kvr::samples
