#pragma once

#include "base/console.hpp"
#include "base/number_writer.hpp"
#include "deck/options.hpp"
#include "fluid/tables.hpp"
#include "model/grid.hpp"
#include "pressure/records/cell_state.hpp"
#include "run/records/output_streams.hpp"
#include "streamline/tracing/streamline_record.hpp"

#include <span>

namespace kvr {

/// The plot of the lines of one report time, while it is open.
struct LinePlot {
    NumberWriter writer = NumberWriter();  // its file is null while no plot is open
};

inline bool isOpen(const LinePlot& plot) {
    return plot.writer.file != nullptr;
}

/// Opens "Streamline_Time_" + time + ".plt" in place of any old one and writes the frame: the grid with the
/// present water saturation; what belongs to lines alone is 0 there.
void openLinePlot(const Console& console, const OutputStreams& outputs, const GridModel& grid,
                  const CellState& state, double time, LinePlot& plot);

/// What one line shows beside its course.
struct PlottedLine {
    const StreamlineRecord& record;
    bool againstFlow;            // the record runs from the producer
    std::span<const double> Sw;  // [1..nodes] from the injector; empty: that of the cells
    int injector = 0, producer = 0, connection = 0;
};

/// A zone of points from node 2 on; nothing for a line of one node. Diffusive times only with the option.
void writePlotLine(const RunOptions& options, const GridModel& grid, const FluidTables& fluids,
                   const CellState& state, const PlottedLine& line, LinePlot& plot);

void closeLinePlot(const Console& console, LinePlot& plot);

/// Empties the run's file of line geometry and writes its head: a zone of the four corners of the grid.
void restartLineGeometry(const Console& console, const GridModel& grid, OutputStreams& outputs);

/// Adds a line of at least two nodes to it.
void writeLineGeometry(const GridModel& grid, const PlottedLine& line, std::FILE* file);

}  // namespace kvr
