#include "unit/pressure/solvers/generated_systems.hpp"

#include <algorithm>
#include <cmath>
#include <utility>

namespace kvr::test {

namespace {

using Rows = std::vector<std::vector<std::pair<int, double>>>;  // off-diagonal entries

/// Stores rows diagonal first; each system gets a stamp of its own.
LinearSystem compressed(const Rows& couplings, const std::vector<double>& diagonal, int cellRows) {
    static std::uint64_t stamp = 0;
    LinearSystem system;
    system.size = static_cast<int>(couplings.size());
    system.cellRows = cellRows;
    system.patternStamp = ++stamp;
    system.rowStart.push_back(0);
    for (int i = 0; i < system.size; ++i) {
        system.column.push_back(i);
        system.value.push_back(diagonal[i]);
        for (const auto& [column, value] : couplings[i]) {
            system.column.push_back(column);
            system.value.push_back(value);
        }
        system.rowStart.push_back(static_cast<std::int64_t>(system.column.size()));
    }
    system.rhs.assign(static_cast<std::size_t>(system.size), 0.0);
    return system;
}

void addWells(std::span<const GeneratedWell> wells, int cells, Rows& couplings,
              std::vector<double>& diagonal) {
    for (std::size_t w = 0; w < wells.size(); ++w) {
        const int row = cells + static_cast<int>(w);
        for (std::size_t k = 0; k < wells[w].cells.size(); ++k) {
            const int cell = wells[w].cells[k];
            diagonal[cell] += wells[w].index[k];
            couplings[cell].emplace_back(row, -wells[w].index[k]);
            diagonal[row] += wells[w].index[k] * wells[w].rowWeight;
            couplings[row].emplace_back(cell, -wells[w].index[k] * wells[w].rowWeight);
        }
    }
}

}  // namespace

double RandomNumbers::uniform() {
    state = state * 6364136223846793005ULL + 1442695040888963407ULL;
    return (static_cast<double>(state >> 11U) + 0.5) / 9007199254740992.0;
}

double RandomNumbers::gaussian() {
    const double radius = std::sqrt(-2.0 * std::log(uniform()));
    return radius * std::cos(6.283185307179586 * uniform());
}

LinearSystem boxSystem(const Box& box, std::span<const double> permeability, std::array<double, 3> axisFactor,
                       double storage, std::span<const GeneratedWell> wells) {
    const std::array<int, 3> count = {box.nx, box.ny, box.nz};
    const std::array<int, 3> stride = {1, box.nx, box.nx * box.ny};
    const auto size = static_cast<std::size_t>(box.cells()) + wells.size();
    Rows couplings(size);
    std::vector<double> diagonal(size, 0.0);
    for (int cell = 0; cell < box.cells(); ++cell) {
        const std::array<int, 3> at = {cell % box.nx, cell / box.nx % box.ny, cell / (box.nx * box.ny)};
        diagonal[cell] += storage;
        for (int axis = 0; axis < 3; ++axis) {
            if (at[axis] + 1 == count[axis]) continue;
            const int next = cell + stride[axis];
            const double sum = permeability[cell] + permeability[next];
            const double t = axisFactor[axis] * 2.0 * permeability[cell] * permeability[next] / sum;
            couplings[cell].emplace_back(next, -t);
            couplings[next].emplace_back(cell, -t);
            diagonal[cell] += t;
            diagonal[next] += t;
        }
    }
    addWells(wells, box.cells(), couplings, diagonal);
    return compressed(couplings, diagonal, box.cells());
}

std::vector<double> lognormalField(int count, double deviation, std::uint64_t seed) {
    RandomNumbers random{seed};
    std::vector<double> field(static_cast<std::size_t>(count));
    for (double& k : field) k = std::exp(deviation * random.gaussian());
    return field;
}

std::vector<GeneratedWell> fiveSpotWells(const Box& box, std::span<const double> permeability) {
    const std::array<std::pair<int, int>, 5> places = {
        {{0, 0}, {box.nx - 1, 0}, {0, box.ny - 1}, {box.nx - 1, box.ny - 1}, {box.nx / 2, box.ny / 2}}};
    const std::array<double, 5> weights = {0.6, 0.9, 0.3, 178.0, 1.0};
    std::vector<GeneratedWell> wells;
    for (std::size_t w = 0; w < places.size(); ++w) {
        GeneratedWell well;
        well.rowWeight = weights[w];
        for (int k = 0; k < box.nz; ++k) {
            const int cell = places[w].first + box.nx * (places[w].second + box.ny * k);
            well.cells.push_back(cell);
            well.index.push_back(3.0 * permeability[cell]);
        }
        wells.push_back(well);
    }
    return wells;
}

void oneSidedMultipliers(LinearSystem& system, double share, std::uint64_t seed) {
    RandomNumbers random{seed};
    for (int i = 0; i < system.cellRows; ++i) {
        const std::int64_t first = system.rowStart[i];
        for (std::int64_t k = first + 1; k < system.rowStart[i + 1]; ++k) {
            if (random.uniform() > share || system.column[k] >= system.cellRows) continue;
            const double factor =
                random.uniform() < 0.1 ? 0.0 : std::pow(10.0, -2.0 + 3.0 * random.uniform());
            system.value[first] -= system.value[k] * (factor - 1.0);
            system.value[k] *= factor;
        }
    }
}

LinearSystem fromFull(const std::vector<std::vector<double>>& rows, std::vector<double> rhs) {
    Rows couplings(rows.size());
    std::vector<double> diagonal(rows.size());
    for (std::size_t i = 0; i < rows.size(); ++i) {
        diagonal[i] = rows[i][i];
        for (std::size_t j = 0; j < rows.size(); ++j) {
            if (j != i && rows[i][j] != 0.0) couplings[i].emplace_back(static_cast<int>(j), rows[i][j]);
        }
    }
    LinearSystem system = compressed(couplings, diagonal, static_cast<int>(rows.size()));
    system.rhs = std::move(rhs);
    return system;
}

void randomRhs(LinearSystem& system, std::uint64_t seed) {
    RandomNumbers random{seed};
    for (double& b : system.rhs) b = 2.0 * random.uniform() - 1.0;
}

double trueResidual(const LinearSystem& system, std::span<const double> x) {
    double residual = 0.0, size = 0.0;
    for (int i = 0; i < system.size; ++i) {
        double r = system.rhs[i];
        for (std::int64_t k = system.rowStart[i]; k < system.rowStart[i + 1]; ++k)
            r -= system.value[k] * x[system.column[k]];
        residual += r * r;
        size += system.rhs[i] * system.rhs[i];
    }
    return std::sqrt(residual / size);
}

std::vector<double> eliminated(const LinearSystem& system) {
    const auto n = static_cast<std::size_t>(system.size);
    std::vector<std::vector<double>> a(n, std::vector<double>(n + 1, 0.0));
    for (std::size_t i = 0; i < n; ++i) {
        for (std::int64_t k = system.rowStart[i]; k < system.rowStart[i + 1]; ++k)
            a[i][system.column[k]] += system.value[k];
        a[i][n] = system.rhs[i];
    }
    for (std::size_t c = 0; c < n; ++c) {
        std::size_t best = c;
        for (std::size_t i = c + 1; i < n; ++i) {
            if (std::abs(a[i][c]) > std::abs(a[best][c])) best = i;
        }
        std::swap(a[c], a[best]);
        for (std::size_t i = c + 1; i < n; ++i) {
            const double factor = a[i][c] / a[c][c];
            if (factor == 0.0) continue;
            for (std::size_t j = c; j <= n; ++j) a[i][j] -= factor * a[c][j];
        }
    }
    std::vector<double> x(n);
    for (std::size_t i = n; i-- > 0;) {
        double sum = a[i][n];
        for (std::size_t j = i + 1; j < n; ++j) sum -= a[i][j] * x[j];
        x[i] = sum / a[i][i];
    }
    return x;
}

}  // namespace kvr::test
