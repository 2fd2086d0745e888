#pragma once

#include "streamline/transport/component_line.hpp"
#include "streamline/transport/line_grid.hpp"
#include "unit/pressure/component_row.hpp"

#include <vector>

namespace kvr {

inline constexpr double Residence = 10.0;  // days in a cell

/// A line through all cells of a row, fed by the first source of the run.
struct RowLine {
    Row row;
    SolverLine line;
    ComponentLine components;
    ComponentField field;
    ExplicitControl control;

    RowLine(const FluidTables& mixture, int cells, const Composition& z) : row(mixture, cells, 1000.0, 0.0) {
        row.fill(z, 1500.0);
        std::vector<double> times(static_cast<std::size_t>(cells), Residence);
        lay(times);
    }
    void lay(const std::vector<double>& times) {
        const auto count = static_cast<int>(times.size());
        sizeSolverLine(count, 1.0, 0, line);
        line.tracedNodeCount = count;
        for (std::size_t n = 1; n <= times.size(); ++n) {
            line.tracedCell[n] = static_cast<CellId>(n);
            line.tracedDeltaTof[n] = times[n - 1];
            line.tracedTof[n] = line.tracedTof[n - 1] + times[n - 1];
        }
        layNodes(NodeControl::Irregular, 1.0, 1.0, line);
    }
    /// What comes in is `stream`, as dense as it is at the pressure.
    void load(const Composition& stream) {
        FlashState flash;
        FlashPT(row.stage.set, stream, 1500.0, flash);
        const PhaseVolumes volumes = phaseVolumes(row.stage.set, 1500.0, flash);
        ComponentSource source;
        source.cell = 1;
        for (std::size_t i = 0; i < stream.size(); ++i)
            source.stream[i] = stream[i] * row.run.units.VolumeFactor / (volumes.liquid + volumes.vapour);
        row.run.wells.wells = {Row::wellAt(1, "inj", "rate")};
        row.run.wells.wells[0].connections[0].reservoirRate = 1.0;
        row.run.components.sources = {source};
        prepareComponentField(row.run.units, row.grid, row.state, row.run.velocity, row.run.wells,
                              row.run.components, field);
        field.through = {1.0};  // there is no flow between the cells of the row
        loadComponentLine(row.grid, row.tables, row.state, field, line, components);
    }
    void advance(double step) { advanceComponentLine(row.tables, field, control, step, line, components); }
    [[nodiscard]] double held(std::size_t i) const {
        double sum = 0.0;
        for (std::size_t n = 1; n <= static_cast<std::size_t>(line.nodeCount); ++n)
            sum += line.DeltaTof[n] * components.nodes[n].held.moles[i];
        return sum;
    }
    [[nodiscard]] double fraction(std::size_t n, std::size_t i) const {
        const Composition& moles = components.nodes[n].held.moles;
        double sum = 0.0;
        for (int k = 0; k < row.stage.set.count; ++k) sum += moles[static_cast<std::size_t>(k)];
        return moles[i] / sum;
    }
};

}  // namespace kvr
