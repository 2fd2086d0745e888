#include "unit/pressure/solvers/block_samples.hpp"

#include "unit/pressure/solvers/generated_systems.hpp"

#include <cmath>

namespace kvr::test {

namespace {

constexpr double PoreVolume = 400.0;      // rb
constexpr double Coupling = 2.0;          // rb/day/psi at mobility 1
constexpr double Compressibility = 1e-5;  // 1/psi
constexpr double DissolvedGas = 0.6;      // gas per oil
constexpr double WellIndex = 20.0;        // rb/day/psi

/// Mobility of a phase and its slopes by the unknowns 1 and 2.
struct Mobility {
    double value = 0.0;
    std::array<double, 3> slope{};
};

/// Water, oil, gas at water saturation sw and gas saturation sg, Corey exponents of 2.
std::array<Mobility, 3> mobilities(double sw, double sg) {
    const double so = 1.0 - sw - sg;
    std::array<Mobility, 3> m;
    m[0] = {sw * sw / 0.5, {0.0, 2.0 * sw / 0.5, 0.0}};
    m[1] = {so * so / 2.0, {0.0, -2.0 * so / 2.0, -2.0 * so / 2.0}};
    m[2] = {sg * sg / 0.05, {0.0, 0.0, 2.0 * sg / 0.05}};
    return m;
}

/// Weights of the phases (water, oil, gas) in the equations: oil carries dissolved gas.
constexpr std::array<std::array<double, 3>, 3> Carried{
    {{1.0, 0.0, 0.0}, {0.0, 1.0, 0.0}, {0.0, DissolvedGas, 1.0}}};

struct Field {
    std::vector<double> k, p, sw, sg;
};

Field makeField(const BlockSample& s) {
    RandomNumbers random{s.seed};
    const int n = s.nx * s.ny * s.nz;
    Field f;
    f.k = lognormalField(n, s.deviation, s.seed + 1);
    for (int i = 0; i < n; ++i) {
        f.p.push_back(3000.0 + 200.0 * random.uniform());
        f.sw.push_back(0.2 + 0.5 * random.uniform());
        f.sg.push_back(s.blockSize == 3 ? 0.1 * random.uniform() : 0.0);
    }
    return f;
}

/// Adds `factor` times the derivatives of one phase's flow to the equations of a row.
void addFlow(const BlockSample& s, const std::array<double, 3>& carried, double factor,
             const std::array<double, 3>& slope, std::span<double> block) {
    for (int e = 0; e < s.blockSize; ++e) {
        for (int u = 0; u < s.blockSize; ++u)
            block[e * s.blockSize + u] += s.unit[e] * carried[e] * factor * slope[u];
    }
}

void addConnection(const BlockSample& s, const Field& f, int i, int j, const ConnectionPlaces& place,
                   BlockSystem& system) {
    const double t = Coupling * 2.0 * f.k[i] * f.k[j] / (f.k[i] + f.k[j]);
    const double drop = f.p[i] - f.p[j];
    const int up = drop >= 0.0 ? i : j;
    const auto m = mobilities(f.sw[up], f.sg[up]);
    for (int phase = 0; phase < s.blockSize; ++phase) {
        const std::array<double, 3> carried{Carried[0][phase], Carried[1][phase], Carried[2][phase]};
        std::array<double, 3> ofUp = m[phase].slope;
        for (double& slope : ofUp) slope *= drop;
        std::array<double, 3> byI = up == i ? ofUp : std::array<double, 3>{};
        std::array<double, 3> byJ = up == j ? ofUp : std::array<double, 3>{};
        byI[0] += m[phase].value;
        byJ[0] -= m[phase].value;
        addFlow(s, carried, t, byI, system.block(system.diagonal[i]));
        addFlow(s, carried, t, byJ, system.block(place.forward));
        addFlow(s, carried, -t, byJ, system.block(system.diagonal[j]));
        addFlow(s, carried, -t, byI, system.block(place.backward));
    }
}

/// Derivatives of the stored amounts over the step.
void addStorage(const BlockSample& s, const Field& f, int i, BlockSystem& system) {
    const double rate = PoreVolume / s.dt;
    const double so = 1.0 - f.sw[i] - f.sg[i];
    const std::array<std::array<double, 3>, 3> stored{
        {{f.sw[i] * Compressibility, 1.0, 0.0},
         {so * Compressibility, -1.0, -1.0},
         {(f.sg[i] * 30.0 + so * DissolvedGas) * Compressibility, -DissolvedGas, 1.0 - DissolvedGas}}};
    const std::span<double> block = system.block(system.diagonal[i]);
    for (int e = 0; e < s.blockSize; ++e) {
        for (int u = 0; u < s.blockSize; ++u) {
            const double entry = s.unit[e] * rate * stored[e][u];
            block[e * s.blockSize + u] += entry;
            system.accumulation[(i * s.blockSize + e) * s.blockSize + u] = entry;
        }
    }
}

}  // namespace

std::vector<std::pair<int, int>> boxConnections(const BlockSample& s) {
    std::vector<std::pair<int, int>> pairs;
    for (int k = 0; k < s.nz; ++k) {
        for (int j = 0; j < s.ny; ++j) {
            for (int i = 0; i < s.nx; ++i) {
                const int cell = (k * s.ny + j) * s.nx + i;
                if (i + 1 < s.nx) pairs.emplace_back(cell, cell + 1);
                if (j + 1 < s.ny) pairs.emplace_back(cell, cell + s.nx);
                if (k + 1 < s.nz) pairs.emplace_back(cell, cell + s.nx * s.ny);
            }
        }
    }
    return pairs;
}

BlockSystem makeBlockSystem(const BlockSample& s) {
    BlockSystem system;
    const auto pairs = boxConnections(s);
    const int cells = s.nx * s.ny * s.nz;
    const auto places = buildBlockPattern(cells, s.blockSize, pairs, system);
    system.accumulation.assign(static_cast<std::size_t>(cells * s.blockSize * s.blockSize), 0.0);
    const Field field = makeField(s);
    for (int i = 0; i < cells; ++i) addStorage(s, field, i, system);
    for (std::size_t c = 0; c < pairs.size(); ++c)
        addConnection(s, field, pairs[c].first, pairs[c].second, places[c], system);
    RandomNumbers random{s.seed + 2};
    for (std::size_t k = 0; k < system.rhs.size(); ++k)
        system.rhs[k] = s.unit[k % s.blockSize] * random.gaussian();
    return system;
}

void addColumnWell(const BlockSample& s, int i, int j, bool rate, BlockSystem& system) {
    const Field field = makeField(s);
    WellBorder well;
    well.diagonal = rate ? 0.0 : 1.0;
    well.rhs = rate ? 50.0 : -80.0;
    for (int k = 0; k < s.nz; ++k) {
        const int cell = (k * s.ny + j) * s.nx + i;
        const auto m = mobilities(field.sw[cell], field.sg[cell]);
        const double drop = 150.0;
        well.cells.push_back(cell);
        const std::size_t first = well.rowBlocks.size();
        well.rowBlocks.resize(first + s.blockSize, 0.0);
        well.columnBlocks.resize(first + s.blockSize, 0.0);
        const std::span<double> block = system.block(system.diagonal[cell]);
        for (int phase = 0; phase < s.blockSize; ++phase) {
            const double index = WellIndex * field.k[cell];
            std::array<double, 3> slope = m[phase].slope;
            for (double& entry : slope) entry *= drop;
            slope[0] = m[phase].value;
            addFlow(s, {Carried[0][phase], Carried[1][phase], Carried[2][phase]}, index, slope, block);
            for (int e = 0; e < s.blockSize; ++e)
                well.columnBlocks[first + e] -= s.unit[e] * Carried[e][phase] * index * m[phase].value;
            if (!rate || phase > 1) continue;  // the rate held is that of the liquids
            for (int u = 0; u < s.blockSize; ++u) well.rowBlocks[first + u] += index * slope[u];
            well.diagonal -= index * m[phase].value;
        }
    }
    system.wells.push_back(well);
}

std::vector<double> eliminatedBlocks(const BlockSystem& system) {
    const int n = system.blockSize;
    const int cells = system.rows * n;
    const int all = cells + static_cast<int>(system.wells.size());
    std::vector<std::vector<double>> full(all, std::vector<double>(all, 0.0));
    std::vector<double> rhs = system.rhs;
    for (int i = 0; i < system.rows; ++i) {
        for (int k = system.rowStart[i]; k < system.rowStart[i + 1]; ++k) {
            for (int e = 0; e < n; ++e) {
                for (int u = 0; u < n; ++u)
                    full[i * n + e][system.column[k] * n + u] = system.value[(k * n + e) * n + u];
            }
        }
    }
    for (const WellBorder& well : system.wells) {
        const int row = static_cast<int>(rhs.size());
        for (std::size_t c = 0; c < well.cells.size(); ++c) {
            for (int e = 0; e < n; ++e) {
                full[well.cells[c] * n + e][row] = well.columnBlocks[c * n + e];
                full[row][well.cells[c] * n + e] = well.rowBlocks[c * n + e];
            }
        }
        full[row][row] = well.diagonal;
        rhs.push_back(well.rhs);
    }
    return eliminated(fromFull(full, rhs));
}

}  // namespace kvr::test
