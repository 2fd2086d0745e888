#pragma once

#include "base/constants.hpp"
#include "model/connections.hpp"
#include "model/neighbours.hpp"
#include "pressure/records/cell_state.hpp"
#include "pressure/records/velocity_field.hpp"
#include "pressure/wells/wells.hpp"
#include "streamline/tracing/cell_tags.hpp"
#include "streamline/tracing/exit_flags.hpp"
#include "streamline/tracing/launch.hpp"
#include "streamline/tracing/trace.hpp"
#include "unit/model/small_grids.hpp"
#include "unit/quiet_console.hpp"

#include <algorithm>
#include <cmath>
#include <string>
#include <vector>

namespace kvr::samples {

/// Everything that launching and tracing read, on a box of equal blocks.
struct Flow {
    RunOptions options;
    GridModel grid;
    ConnectionTable connections;
    CellState state;
    VelocityField velocity;
    WellRecord wells;
    CellTags tags;
    ExitFlags flags;
    TraceField field;
    LaunchPlan plan;
    StreamlineRecord record;
};

inline std::string dimensionalityOf(const GridModel& grid) {
    if (grid.NZ == 1) return grid.NY == 1 ? "x_1d" : "xy_2d";
    return grid.NY == 1 ? "xz_2d" : "xyz_3d";
}

inline Flow emptyFlow(int nx, int ny, int nz, double dx, double dy, double dz) {
    Flow flow;
    flow.grid = uniformBlocks(nx, ny, nz, dx, dy, dz);
    flow.options.gridDimensionality = dimensionalityOf(flow.grid);
    flow.connections.Neighbour.assign(flow.grid.NCELLS, flow.connections.NDIR, 0);
    flow.connections.DepthDiff.assign(flow.grid.NCELLS, flow.connections.NDIR, 0.0);
    buildNeighbours(flow.grid, flow.connections);
    const CellId count = flow.grid.NCELLS;
    allocateCellState(count, 0, flow.state);
    for (CellId cell = 1; cell <= count; ++cell) {
        flow.state.PoreFraction[cell] = flow.grid.PORO[cell];
        flow.state.PoreVolume[cell] = flow.grid.BulkVolume[cell] * flow.grid.NTG[cell] * flow.grid.PORO[cell];
    }
    flow.velocity.CellFaceFlux.assign(count, 6, 0.0);
    flow.velocity.CellFaceVelocity.assign(count, 6, 0.0);
    flow.tags.CellTag.assign(count, CellTagKind::Pop);
    return flow;
}

/// One completion well; rate in rb/day, positive into the reservoir.
inline void addWell(Flow& flow, const std::string& name, const std::string& kind, CellId cell, double rate) {
    Well well;
    well.WellName = name;
    well.WellKind = kind;
    well.WellControl = "rate";
    well.TargetRate = rate;
    well.InjectFluid = kind == "inj" ? "wat" : "";
    WellConnection connection;
    connection.ConnCell = cell;
    connection.completion = 1;
    connection.reservoirRate = rate;
    well.connections.push_back(connection);
    flow.wells.wells.push_back(well);
}

/// Box velocities that go with CellFaceFlux.
inline void completeVelocity(Flow& flow) {
    for (CellId cell = 1; cell <= flow.grid.NCELLS; ++cell) {
        const double size[3] = {flow.grid.DX[cell], flow.grid.DY[cell], flow.grid.DZ[cell]};
        for (int axis = 1; axis <= 3; ++axis) {
            const double area = size[axis % 3] * size[(axis + 1) % 3];
            for (int face = 2 * axis - 1; face <= 2 * axis; ++face)
                flow.velocity.CellFaceVelocity(cell, face) =
                    flow.velocity.CellFaceFlux(cell, face) * CubicFeetPerBarrel / area;
        }
    }
}

/// Harmonic conductance between a cell and its neighbour through a face, PERMX on all axes.
inline double conductance(const GridModel& grid, CellId cell, CellId neighbour, int face) {
    const double size[3] = {grid.DX[cell], grid.DY[cell], grid.DZ[cell]};
    const int axis = (face - 1) / 2;
    const double area = size[(axis + 1) % 3] * size[(axis + 2) % 3];
    const double a = grid.PERMX[cell];
    const double b = grid.PERMX[neighbour];
    return DarcyConstant * area / size[axis] * 2.0 * a * b / (a + b);
}

/// Incompressible single-phase flow between the wells (rates must balance): conjugate gradients on the
/// five- or seven-point system, then fluxes, tags, exit flags and the packed field.
inline void solveFlow(Flow& flow) {
    const CellId count = flow.grid.NCELLS;
    const auto size = static_cast<std::size_t>(count) + 1;
    DirectionArray<double> t;
    t.assign(count, 6, 0.0);
    std::vector<double> diagonal(size, 0.0), p(size, 0.0), r(size, 0.0), z(size, 0.0), d(size, 0.0),
        q(size, 0.0);
    for (CellId cell = 1; cell <= count; ++cell)
        for (int face = 1; face <= 6; ++face) {
            const CellId n = flow.connections.Neighbour(cell, face);
            if (n <= 0) continue;
            t(cell, face) = conductance(flow.grid, cell, n, face);
            diagonal[static_cast<std::size_t>(cell)] += t(cell, face);
        }
    for (const Well& well : flow.wells.wells)
        for (const WellConnection& c : well.connections)
            r[static_cast<std::size_t>(c.ConnCell)] += c.reservoirRate;
    double rz = 0.0;
    for (std::size_t i = 1; i < size; ++i) rz += r[i] * (d[i] = r[i] / diagonal[i]);
    const double stop = rz * 1e-26;
    for (int iteration = 0; iteration < 20000 && rz > stop; ++iteration) {
        double dq = 0.0;
        for (CellId cell = 1; cell <= count; ++cell) {
            const auto i = static_cast<std::size_t>(cell);
            q[i] = diagonal[i] * d[i];
            for (int face = 1; face <= 6; ++face) {
                const CellId n = flow.connections.Neighbour(cell, face);
                if (n > 0) q[i] -= t(cell, face) * d[static_cast<std::size_t>(n)];
            }
            dq += d[i] * q[i];
        }
        const double step = rz / dq;
        double next = 0.0;
        for (std::size_t i = 1; i < size; ++i) {
            p[i] += step * d[i];
            r[i] -= step * q[i];
            z[i] = r[i] / diagonal[i];
            next += r[i] * z[i];
        }
        for (std::size_t i = 1; i < size; ++i) d[i] = z[i] + next / rz * d[i];
        rz = next;
    }
    for (CellId cell = 1; cell <= count; ++cell)
        for (int face = 1; face <= 6; ++face) {
            const CellId n = flow.connections.Neighbour(cell, face);
            if (n <= 0) continue;
            flow.velocity.CellFaceFlux(cell, face) =
                FaceSign[static_cast<std::size_t>(face) - 1] * t(cell, face) *
                (p[static_cast<std::size_t>(cell)] - p[static_cast<std::size_t>(n)]);
        }
}

/// Tags, flags and packed field from the fluxes and wells as they stand.
inline void prepareTracing(Flow& flow) {
    const QuietConsole quiet;
    completeVelocity(flow);
    rebuildCellTags(flow.grid.NCELLS, flow.wells, flow.tags);
    prepareExitFlags(quiet.console, flow.connections, flow.velocity, flow.flags);
    buildTraceField(flow.options, flow.grid, flow.state, flow.velocity, flow.wells, flow.tags, flow.flags,
                    flow.field);
    sizeRecord(maxNodes(flow.options, flow.grid), flow.record);
}

/// Homogeneous quarter five-spot on n by n blocks of 20 ft, rate rb/day.
inline Flow quarterFiveSpot(int n, double rate) {
    Flow flow = emptyFlow(n, n, 1, 1000.0 / n, 1000.0 / n, 20.0);
    addWell(flow, "I", "inj", 1, rate);
    addWell(flow, "P", "prd", flow.grid.NCELLS, -rate);
    solveFlow(flow);
    prepareTracing(flow);
    return flow;
}

/// A row of n blocks with a pore volume each, flow rate rb/day from the first to the last.
inline Flow column(int n, double poreVolume, double rate) {
    Flow flow = emptyFlow(n, 1, 1, 10.0, 10.0, 10.0);
    for (CellId cell = 1; cell <= n; ++cell) {
        flow.state.PoreVolume[cell] = poreVolume;
        if (cell > 1) flow.velocity.CellFaceFlux(cell, 1) = rate;
        if (cell < n) flow.velocity.CellFaceFlux(cell, 2) = rate;
    }
    addWell(flow, "I", "inj", 1, rate);
    addWell(flow, "P", "prd", n, -rate);
    prepareTracing(flow);
    return flow;
}

/// The start of a line at mid-face.
inline LineStart startAt(CellId cell, int face, std::array<double, 3> point, int well = 1) {
    LineStart start;
    start.completion = 1;
    start.cell = cell;
    start.face = face;
    start.point = point;
    start.well = well;
    return start;
}

}  // namespace kvr::samples
