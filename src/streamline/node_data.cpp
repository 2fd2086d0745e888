#include "streamline/node_data.hpp"

#include "fluid/black_oil.hpp"
#include "streamline/fractional_flow.hpp"

#include <string_view>

namespace kvr {

namespace {

constexpr double LeastPorosity = 1e-12;  // below it the old amounts cannot be related to the cell

std::size_t at(int n) {
    return static_cast<std::size_t>(n);
}

NodeData presentState(const FluidTables& fluids, const GridModel& grid, const CellState& state, CellId cell) {
    NodeData node;
    node.Sw = state.Sw[cell];
    node.So = state.So[cell];
    node.Sg = state.Sg[cell];
    node.Rs = state.Rs[cell];
    node.Pb = state.Pb[cell];
    node.pressure = state.Pressure[cell];
    node.Bw = state.Bw[cell];
    node.Bo = state.Bo[cell];
    node.Bg = state.Bg[cell];
    node.MuW = state.MuW[cell];
    node.MuO = state.MuO[cell];
    node.MuG = state.MuG[cell];
    node.region = grid.SATNUM[cell];
    if (fluids.hasGas) node.saturatedRs = SolutionRs(fluids, node.pressure);
    return node;
}

/// Amounts of a state times `ratio`.
void setStorage(const CellState& state, CellId cell, double ratio, NodeData& node) {
    node.Cw = ratio * state.Sw[cell] / state.Bw[cell];
    node.Co = ratio * state.So[cell] / state.Bo[cell];
    node.Cg = ratio * state.Sg[cell] / state.Bg[cell] + state.Rs[cell] * node.Co;
}

double netOutflow(const double* flux) {
    return flux[1] - flux[0] + flux[3] - flux[2] + flux[5] - flux[4];
}

void loadPosition(const NodeData& node, bool hasGas, std::size_t i, SolverLine& line) {
    line.region[i] = node.region;
    line.pressure[i] = node.pressure;
    line.bubblePoint[i] = node.Pb;
    line.Sw[i] = node.Sw;
    line.So[i] = node.So;
    line.Rs[i] = node.Rs;
    line.Bw[i] = node.Bw;
    line.Bo[i] = node.Bo;
    line.inverseBw[i] = 1.0 / node.Bw;
    line.inverseBo[i] = 1.0 / node.Bo;
    line.inverseMuW[i] = 1.0 / node.MuW;
    line.inverseMuO[i] = 1.0 / node.MuO;
    line.Cw[i] = node.Cw;
    line.Co[i] = node.Co;
    line.expansion[i] = node.expansion;
    if (!hasGas) return;
    line.Sg[i] = node.Sg;
    line.saturatedRs[i] = node.saturatedRs;
    line.Bg[i] = node.Bg;
    line.inverseBg[i] = 1.0 / node.Bg;
    line.inverseMuG[i] = 1.0 / node.MuG;
    line.Cg[i] = node.Cg;
}

/// The injector at the line's start, null where there is none.
const Well* injectorOf(const WellRecord& wells, int number) {
    if (number < 1 || at(number) > wells.wells.size()) return nullptr;
    const Well& well = wells.wells[at(number) - 1];
    return isInjector(well) ? &well : nullptr;
}

std::string_view injectedFluid(const WellRecord& wells, int number) {
    const Well* well = injectorOf(wells, number);
    return well != nullptr ? std::string_view(well->InjectFluid) : std::string_view();
}

double injectedTracer(const WellRecord& wells, int number) {
    const Well* well = injectorOf(wells, number);
    return well != nullptr ? well->tracerConcentration : 0.0;
}

void clearWellCells(const WellRecord& wells, std::vector<NodeData>& nodes) {
    for (const Well& well : wells.wells)
        for (const WellConnection& connection : well.connections)
            nodes[at(connection.ConnCell)].expansion = 0.0;
}

}  // namespace

Storage storageOf(const RunOptions& options) {
    if (!options.lineCompressibility) return Storage::Present;
    return options.mapCount <= 1 && options.pressureUpdateFrequency <= 1 ? Storage::TimeLevel
                                                                         : Storage::Expanded;
}

void gatherNodeData(const FluidTables& fluids, const GridModel& grid, const CellState& state,
                    const CellState& timeLevel, const VelocityField& velocity, const WellRecord& wells,
                    Storage storage, double step, std::vector<NodeData>& nodes) {
    nodes.resize(at(grid.NCELLS) + 1);
    for (CellId cell = 1; cell <= grid.NCELLS; ++cell) {
        NodeData& node = nodes[at(cell)];
        node = presentState(fluids, grid, state, cell);
        if (storage != Storage::Present && state.PoreVolume[cell] > 0.0)
            node.expansion = netOutflow(velocity.CellFaceFlux.row(cell)) / state.PoreVolume[cell];
    }
    clearWellCells(wells, nodes);
    for (CellId cell = 1; cell <= grid.NCELLS; ++cell) {
        NodeData& node = nodes[at(cell)];
        const bool old = storage == Storage::TimeLevel && state.PoreFraction[cell] > LeastPorosity;
        if (old)
            setStorage(timeLevel, cell, timeLevel.PoreFraction[cell] / state.PoreFraction[cell], node);
        else
            setStorage(state, cell, storage == Storage::Expanded ? 1.0 + node.expansion * step : 1.0, node);
    }
}

void loadNodes(const std::vector<NodeData>& nodes, const DirectionArray<double>& tracers, bool hasGas,
               SolverLine& line) {
    for (std::size_t i = 1; i <= at(line.nodeCount); ++i) {
        const CellId cell = line.tracedCell[at(line.tracedNode[i])];
        loadPosition(nodes[at(cell)], hasGas, i, line);
        for (std::size_t t = 0; t < line.tracer.size(); ++t) line.tracer[t][i] = tracers.row(cell)[t];
    }
}

void loadInlet(const std::vector<NodeData>& nodes, const FluidTables& fluids, const WellRecord& wells,
               bool firstCellInjects, SolverLine& line) {
    const NodeData& node = nodes[at(line.tracedCell[1])];
    loadPosition(node, fluids.hasGas, 0, line);
    line.startsInInjector = firstCellInjects;
    for (std::vector<double>& concentration : line.tracer)
        concentration[0] = firstCellInjects ? injectedTracer(wells, line.injector) : concentration[1];
    if (!firstCellInjects) return;

    const SaturationTable& table = regionTable(fluids, node.region);
    line.So[0] = table.ResidualSo;
    line.Sw[0] = table.ConnateSw;
    line.Sg[0] = table.CriticalSg;
    const std::string_view fluid = injectedFluid(wells, line.injector);
    if (fluid == "oil") {
        line.So[0] = 1.0 - table.ConnateSw - table.CriticalSg;
        line.Rs[0] = 0.0;
    }
    if (fluid == "wat") line.Sw[0] = 1.0 - table.ResidualSo - table.CriticalSg;
    if (fluid == "gas") line.Sg[0] = 1.0 - table.ResidualSo - table.ConnateSw;
    setAmounts(fluids.hasGas, 0, line);
}

}  // namespace kvr
