#include "streamline/transport/node_data.hpp"

#include "base/index.hpp"
#include "base/threads.hpp"
#include "fluid/black_oil.hpp"
#include "fluid/state_recovery.hpp"
#include "pressure/properties.hpp"
#include "pressure/tracer_transport.hpp"
#include "streamline/transport/fractional_flow.hpp"

#include <algorithm>
#include <string_view>

namespace kvr {

namespace {

constexpr double LeastPorosity = 1e-12;  // below it the old amounts cannot be related to the cell

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
    node.pvt = &pvtAt(fluids, cell);
    if (!fluids.hasGas) return node;
    const double saturated = SolutionRs(*node.pvt, node.pressure);
    node.saturatedRs = allowedRs(state, cell, saturated);
    node.limitsRs = node.saturatedRs < saturated;
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

/// Weighted sums of the data of cells.
void addShare(bool hasGas, double share, const NodeData& data, NodeData& mean) {
    mean.Cw += share * data.Cw;
    mean.Co += share * data.Co;
    mean.Bw += share * data.Bw;
    mean.Bo += share * data.Bo;
    mean.MuW += share * data.MuW;
    mean.MuO += share * data.MuO;
    mean.expansion += share * data.expansion;
    mean.Sw += share * data.Sw / data.Bw;
    mean.So += share * data.So / data.Bo;
    if (!hasGas) return;
    mean.Cg += share * data.Cg;
    mean.Bg += share * data.Bg;
    mean.MuG += share * data.MuG;
    mean.pressure += share * data.pressure;
    mean.saturatedRs += share * data.saturatedRs;
    mean.Sg += share * (data.Sg / data.Bg + data.Rs * data.So / data.Bo);
}

NodeData emptySum(const NodeData& centre) {
    NodeData sum;
    sum.Bw = sum.Bo = sum.Bg = sum.MuW = sum.MuO = sum.MuG = 0.0;
    sum.region = centre.region;
    sum.pvt = centre.pvt;
    sum.limitsRs = centre.limitsRs;
    sum.keepsAmounts = centre.keepsAmounts;
    return sum;
}

/// The phases of a node whose saturations still are the amounts that they stand for.
void splitPhases(const FluidTables& fluids, NodeData& mean) {
    const ConservedAmounts amounts{mean.Sw, mean.So, mean.Sg};
    const RecoveryFactors factors{mean.pressure, mean.Bw, mean.Bo, mean.Bg, mean.limitsRs};
    const FluidTables& pvt = mean.pvt != nullptr ? *mean.pvt : fluids;
    const PhaseState state = fluids.hasGas ? recoverState(pvt, regionTable(fluids, mean.region), false,
                                                          factors, mean.saturatedRs, amounts)
                                           : recoverState(fluids, mean.region, false, factors, amounts);
    mean.Sw = state.Sw;
    mean.So = state.So;
    mean.Sg = state.Sg;
    mean.Rs = state.Rs;
    mean.Pb = state.Pb;
}

/// What a node holds that covers parts of several cells: the sums of their parts, at the means of their
/// factors, by the tables of the cell at its centre. `first` is the traced node in which it begins, and moves
/// on to the one in which it ends.
NodeData meanOverNode(const std::vector<NodeData>& nodes, const FluidTables& fluids, const SolverLine& line,
                      std::size_t i, std::size_t& first) {
    const auto dataOf = [&](std::size_t traced) -> const NodeData& {
        return nodes[at(line.tracedCell[traced])];
    };
    const NodeData& centre = dataOf(at(line.tracedNode[i]));
    const std::size_t last = at(line.tracedNodeCount);
    const double from = line.Tof[i - 1], to = line.Tof[i];
    while (first < last && line.tracedTof[first] <= from) ++first;
    if (first == last || line.tracedTof[first] >= to || !(to > from)) return centre;
    NodeData mean = emptySum(centre);
    double covered = 0.0;
    for (std::size_t n = first; n <= last && line.tracedTof[n - 1] < to; ++n) {
        const double end = n < last ? std::min(line.tracedTof[n], to) : to;
        const double overlap = end - std::max(line.tracedTof[n - 1], from);
        if (overlap <= 0.0) continue;
        addShare(fluids.hasGas, overlap / (to - from), dataOf(n), mean);
        covered += overlap;
    }
    if (!(covered > 0.0)) return centre;
    splitPhases(fluids, mean);
    return mean;
}

void loadPosition(const FluidTables& fluids, const NodeData& data, FlowNode& node) {
    node.table = &regionTable(fluids, data.region);
    node.Sw = data.Sw;
    node.So = data.So;
    node.Bw = data.Bw;
    node.Bo = data.Bo;
    node.inverseBw = 1.0 / data.Bw;
    node.inverseBo = 1.0 / data.Bo;
    node.inverseMuW = 1.0 / data.MuW;
    node.inverseMuO = 1.0 / data.MuO;
    node.Cw = data.Cw;
    node.Co = data.Co;
    node.expansion = data.expansion;
    node.Rs = data.Rs;
    if (!fluids.hasGas) return;
    node.keepsAmounts = data.keepsAmounts;
    node.pressure = data.pressure;
    node.bubblePoint = data.Pb;
    node.Sg = data.Sg;
    node.saturatedRs = data.saturatedRs;
    node.pvt = data.pvt;
    node.limitsRs = data.limitsRs;
    node.Bg = data.Bg;
    node.inverseBg = 1.0 / data.Bg;
    node.inverseMuG = 1.0 / data.MuG;
    node.Cg = data.Cg;
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

/// Concentration of tracer t in what the well at the start of a line injects.
double injectedTracer(const WellRecord& wells, int number, const std::vector<std::string>& names,
                      std::size_t t) {
    const Well* well = injectorOf(wells, number);
    return well != nullptr ? injectedConcentration(*well, names, t) : 0.0;
}

void clearWellCells(const WellRecord& wells, std::vector<NodeData>& nodes) {
    for (const Well& well : wells.wells)
        for (const WellConnection& connection : well.connections)
            if (startsOrEndsLines(well, connection)) nodes[at(connection.ConnCell)].expansion = 0.0;
}

}  // namespace

Storage storageOf(const RunOptions& options, const FluidTables& fluids) {
    if (!options.lineCompressibility) return Storage::Present;
    const std::vector<std::string>& solvers = options.solverPhaseName;
    const bool allExplicit =
        std::all_of(solvers.begin(), solvers.end(), [](const std::string& word) { return word == "mas"; });
    if (fluids.hasGas && allExplicit && carriesAmounts(options)) return Storage::Whole;
    return options.mapCount <= 1 && options.pressureUpdateFrequency <= 1 ? Storage::TimeLevel
                                                                         : Storage::Expanded;
}

void gatherNodeData(const FluidTables& fluids, const GridModel& grid, const CellState& state,
                    const CellState& timeLevel, const VelocityField& velocity, const WellRecord& wells,
                    Storage storage, double step, std::vector<NodeData>& nodes) {
    nodes.resize(at(grid.NCELLS) + 1);
#pragma omp parallel for schedule(static) if (grid.NCELLS >= ParallelCells)
    for (CellId cell = 1; cell <= grid.NCELLS; ++cell) {
        NodeData& node = nodes[at(cell)];
        node = presentState(fluids, grid, state, cell);
        if (storage != Storage::Present && state.PoreVolume[cell] > 0.0)
            node.expansion = netOutflow(velocity.CellFaceFlux.row(cell)) / state.PoreVolume[cell];
    }
    clearWellCells(wells, nodes);
#pragma omp parallel for schedule(static) if (grid.NCELLS >= ParallelCells)
    for (CellId cell = 1; cell <= grid.NCELLS; ++cell) {
        NodeData& node = nodes[at(cell)];
        const bool old = storage == Storage::TimeLevel && state.PoreFraction[cell] > LeastPorosity;
        if (old)
            setStorage(timeLevel, cell, timeLevel.PoreFraction[cell] / state.PoreFraction[cell], node);
        else
            setStorage(state, cell, storage == Storage::Expanded ? 1.0 + node.expansion * step : 1.0, node);
    }
}

void addCarriedAmounts(const CellState& state, const CellAmounts& carried, std::vector<NodeData>& nodes) {
    for (std::size_t cell = 1; cell < nodes.size(); ++cell) nodes[cell].keepsAmounts = true;
    for (CellId cell = 1; cell <= carried.water.count(); ++cell) {
        if (!(state.PoreVolume[cell] > 0.0)) continue;
        NodeData& node = nodes[at(cell)];
        const double inverse = 1.0 / state.PoreVolume[cell];
        node.Cw += carried.water[cell] * inverse;
        node.Co += carried.oil[cell] * inverse;
        node.Cg += carried.gas[cell] * inverse;
    }
}

void loadNodes(const std::vector<NodeData>& nodes, const FluidTables& fluids,
               const DirectionArray<double>& tracers, bool means, SolverLine& line) {
    std::size_t traced = 1;
    for (std::size_t i = 1; i <= at(line.nodeCount); ++i) {
        const CellId cell = line.tracedCell[at(line.tracedNode[i])];
        if (means && line.regridded)
            loadPosition(fluids, meanOverNode(nodes, fluids, line, i, traced), line.nodes[i]);
        else
            loadPosition(fluids, nodes[at(cell)], line.nodes[i]);
        for (std::size_t t = 0; t < line.tracer.size(); ++t) line.tracer[t][i] = tracers.row(cell)[t];
    }
}

void loadInlet(const std::vector<NodeData>& nodes, const FluidTables& fluids, const WellRecord& wells,
               bool firstCellInjects, SolverLine& line) {
    const NodeData& node = nodes[at(line.tracedCell[1])];
    FlowNode& inlet = line.nodes[0];
    loadPosition(fluids, node, inlet);
    for (std::size_t t = 0; t < line.tracer.size(); ++t)
        line.tracer[t][0] = firstCellInjects ? injectedTracer(wells, line.injector, fluids.tracerNames, t)
                                             : line.tracer[t][1];
    if (!firstCellInjects) return;

    const SaturationTable& table = regionTable(fluids, node.region);
    inlet.So = table.ResidualSo;
    inlet.Sw = table.ConnateSw;
    inlet.Sg = table.CriticalSg;
    const std::string_view fluid = injectedFluid(wells, line.injector);
    if (fluid == "oil") {
        inlet.So = 1.0 - table.ConnateSw - table.CriticalSg;
        inlet.Rs = 0.0;
    }
    if (fluid == "wat") inlet.Sw = 1.0 - table.ResidualSo - table.CriticalSg;
    if (fluid == "gas") inlet.Sg = 1.0 - table.ResidualSo - table.ConnateSw;
    setAmounts(fluids.hasGas, inlet);
}

}  // namespace kvr
