#include "eclipse/restart_flux.hpp"

#include "eclipse/restart_cells.hpp"

#include <algorithm>
#include <cmath>
#include <utility>

namespace kvr {

namespace {

constexpr double LargestFlux = 1e15;       // beyond any field; what is larger is no number of a flux
constexpr double LeastDeterminant = 1e-6;  // of oil in gas in oil

constexpr std::array<std::string_view, 3> Phases = {"OIL", "WAT", "GAS"};
constexpr std::string_view Axes = "IJK";

/// Parts of a keyword of eight characters: "FLR" or "FLO", phase, axis, "+".
struct FluxName {
    bool reservoir = false;
    std::size_t phase = 0, axis = 0;
};

bool readName(std::string_view keyword, FluxName& name) {
    if (!keyword.starts_with("FL") || keyword[7] != '+') return false;
    if (keyword[2] != 'R' && keyword[2] != 'O') return false;
    const auto phase = std::find(Phases.begin(), Phases.end(), keyword.substr(3, 3));
    const std::size_t axis = Axes.find(keyword[6]);
    if (phase == Phases.end() || axis == std::string_view::npos) return false;
    name = {keyword[2] == 'R', static_cast<std::size_t>(phase - Phases.begin()), axis};
    return true;
}

double valueAt(const CellArray<float>& values, CellId cell) {
    return values.empty() ? 0.0 : static_cast<double>(values[cell]);
}

PhaseFlux fluxAt(const AxisFluxes& fluxes, CellId cell) {
    return {valueAt(fluxes[0], cell), valueAt(fluxes[1], cell), valueAt(fluxes[2], cell)};
}

double total(const PhaseFlux& flux) {
    return flux.oil + flux.water + flux.gas;
}

}  // namespace

bool anyFlux(const RestartFluxes& fluxes) {
    const auto found = [](bool has) { return has; };
    return std::any_of(fluxes.hasReservoir.begin(), fluxes.hasReservoir.end(), found) ||
           std::any_of(fluxes.hasSurface.begin(), fluxes.hasSurface.end(), found);
}

bool takeFluxBlock(const Console& console, const GridModel& grid, const BlockHeader& header,
                   const BlockData& data, RestartFluxes& fluxes) {
    FluxName name;
    if (!readName(view(header.keyword), name) || realCount(data) == 0) return false;
    (name.reservoir ? fluxes.hasReservoir : fluxes.hasSurface)[name.axis] = true;
    CellArray<float>& target = (name.reservoir ? fluxes.reservoir : fluxes.surface)[name.axis][name.phase];
    target.assign(grid.NCELLS, 0.0F);
    long long leftOut = 0;
    spreadOverCells(console, grid, header, data, [&](CellId cell, double value) {
        if (std::abs(value) <= LargestFlux)
            target[cell] = static_cast<float>(value);
        else
            ++leftOut;
    });
    tellLeftOut(console, header, leftOut);
    return true;
}

PhaseFlux reservoirFlux(const PhaseFlux& surface, const FluxFactors& factors) {
    const double gas = surface.gas * factors.surfaceGas;
    const double vapour = factors.Rv / factors.surfaceGas;
    const double determinant = 1.0 - vapour * factors.Rs;
    const double oil =
        std::abs(determinant) > LeastDeterminant ? (surface.oil - vapour * gas) / determinant : surface.oil;
    return {oil * factors.Bo, surface.water * factors.Bw, (gas - factors.Rs * oil) * factors.Bg};
}

void assembleFluxes(const GridModel& grid, const ConnectionTable& connections, const FileUnits& units,
                    const CellState& state, const CellArray<double>& vaporisedOil, RestartFluxes& fluxes,
                    VelocityField& velocity) {
    std::fill(velocity.CellFaceFlux.slots.begin(), velocity.CellFaceFlux.slots.end(), 0.0);
    const double volume = units.volume * units.perDay;
    for (std::size_t axis = 0; axis < Axes.size(); ++axis) {
        const int high = 2 * static_cast<int>(axis) + 2;
        const AxisFluxes reservoir = std::exchange(fluxes.reservoir[axis], {});
        const AxisFluxes surface = std::exchange(fluxes.surface[axis], {});
        for (CellId cell = 1; cell <= grid.NCELLS; ++cell) {
            const CellId neighbour = connections.Neighbour(cell, high);
            if (grid.Active[cell] == 0 || neighbour <= 0) continue;
            PhaseFlux flux = fluxAt(reservoir, cell);
            if (!fluxes.hasReservoir[axis]) {
                const double rv = vaporisedOil.empty() ? 0.0 : vaporisedOil[cell];
                flux = reservoirFlux(fluxAt(surface, cell), {state.Bo[cell], state.Bw[cell], state.Bg[cell],
                                                             state.Rs[cell], rv, units.surfaceGas});
            }
            const double through = total(flux) * volume;
            velocity.CellFaceFlux(cell, high) = through;
            velocity.CellFaceFlux(neighbour, high - 1) = through;
        }
    }
}

double netOutflow(const VelocityField& velocity, CellId cell) {
    double sum = 0.0;
    for (int axis = 1; axis <= 3; ++axis) sum += fluxGradient(velocity, cell, axis);
    return sum;
}

}  // namespace kvr
