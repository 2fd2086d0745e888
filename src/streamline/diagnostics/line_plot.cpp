#include "streamline/diagnostics/line_plot.hpp"

#include "base/index.hpp"
#include "base/number_lines.hpp"
#include "base/written_files.hpp"
#include "report/map_part.hpp"
#include "streamline/diagnostics/diffusive_time.hpp"
#include "streamline/diagnostics/line_course.hpp"

#include <string>

namespace kvr {

namespace {

constexpr std::string_view FrameVariables =
    "VARIABLES= X,Y,DEPTH,TOF,DFSV_TOF,S<sub>w</sub>,SNS,INDX_INJ,INDX_PRD,INDX_PERF\n";
constexpr std::string_view FrameLocations =
    "VARLOCATION=(4=CELLCENTERED,5=CELLCENTERED,6=CELLCENTERED,7=CELLCENTERED,8=CELLCENTERED,9=CELLCENTERED,"
    "10=CELLCENTERED)\n";
constexpr std::string_view LineHead =
    "TITLE = STREAMLINE\nVARIABLES =X,Y,Z,TOF,TOF_DFIIUSIVE,SWAT,SNS,INJ,PRD,PERF\n";
constexpr int ColumnsBeforeSw = 2;  // of the frame: TOF, DFSV_TOF
constexpr int ColumnsBehindSw = 4;  // SNS and the three indices

/// Columns that only lines have.
void putZeros(NumberWriter& writer, CellId cells, int columns) {
    for (int column = 0; column < columns; ++column) {
        NumberLines lines{writer};
        for (CellId cell = 1; cell <= cells; ++cell) lines.addZero();
        lines.finish();
    }
}

void putFrame(const GridModel& whole, const CellState& state, NumberWriter& writer) {
    const MapPart part = mainPart(whole);
    const GridModel& grid = part.grid();
    CellArray<double> store;
    put(writer, "TITLE=SL_FRAME_PLOT\n");
    put(writer, FrameVariables);
    put(writer, fmt::format("Zone i = {}, j= {}, k= {},  DATAPACKING=BLOCK\n", grid.NX + 1, grid.NY + 1,
                            grid.NZ + 1));
    put(writer, FrameLocations);
    for (const std::vector<double>* axis : {&grid.NodeX, &grid.NodeY, &grid.NodeZ}) putList(writer, *axis);
    putZeros(writer, grid.NCELLS, ColumnsBeforeSw);
    putList(writer, part.values(state.Sw, store).cells());
    putZeros(writer, grid.NCELLS, ColumnsBehindSw);
}

void putNext(NumberWriter& writer, double value) {
    put(writer, " ");
    putNumber(writer, value);
}

/// Days that a pressure front takes through node m.
double diffusiveStepOf(const RunOptions& options, const GridModel& grid, const FluidTables& fluids,
                       const CellState& state, const LineCourse& course, int m) {
    const CellId cell = courseCell(course, m);
    return diffusiveStep(courseStep(grid, course, m), grid.PERMX[cell],
                         diffusiveResistance(fluids, state, cell, grid.PORO[cell]),
                         diffusiveDimensions(options.gridDimensionality));
}

}  // namespace

void openLinePlot(const Console& console, const OutputStreams& outputs, const GridModel& grid,
                  const CellState& state, double time, LinePlot& plot) {
    const std::string name = "Streamline_Time_" + number(time) + ".plt";
    plot.writer.file = openForReplace(console, outputPath(outputs, name));
    log(console, " File generated : {}", name);
    putFrame(grid, state, plot.writer);
    put(plot.writer, LineHead);
}

void writePlotLine(const RunOptions& options, const GridModel& grid, const FluidTables& fluids,
                   const CellState& state, const PlottedLine& line, LinePlot& plot) {
    const int last = line.record.nodeCount;
    if (last < 2) return;
    NumberWriter& writer = plot.writer;
    put(writer, fmt::format(" ZONE I = {} F=POINT\n", last - 1));
    const std::string tail = fmt::format(" 0 {} {} {}\n", line.injector, line.producer, line.connection);
    const LineCourse course{line.record, line.againstFlow};
    double diffusive = 0.0;
    for (int m = 1; m <= last; ++m) {
        if (options.outputDiffusiveTof) diffusive += diffusiveStepOf(options, grid, fluids, state, course, m);
        if (m == 1) continue;
        for (const double coordinate : coursePoint(grid, course, m)) putNext(writer, coordinate);
        putNext(writer, courseTime(course, m));
        putNext(writer, diffusive);
        putNext(writer, line.Sw.empty() ? state.Sw[courseCell(course, m)] : line.Sw[at(m)]);
        put(writer, tail);
    }
}

void closeLinePlot(const Console& console, LinePlot& plot) {
    if (!isOpen(plot)) return;
    flush(plot.writer);
    closeWhole(console, plot.writer.file);
    plot.writer.file = nullptr;
}

void restartLineGeometry(const Console& console, const GridModel& grid, OutputStreams& outputs) {
    if (stream(outputs, OutputFile::RunStreamline) == nullptr) return;
    replaceOutput(console, OutputFile::RunStreamline, outputs);
    log(console, " File Replaced -> {}", outputName(OutputFile::RunStreamline));
    NumberWriter writer;
    writer.file = stream(outputs, OutputFile::RunStreamline);
    put(writer, "Variables = X, Y\nZONE I=4\n");
    for (const auto& [i, j] :
         {std::pair{1, 1}, {grid.NX + 1, 1}, {1, grid.NY + 1}, {grid.NX + 1, grid.NY + 1}}) {
        putNext(writer, grid.NodeX[nodeIndex(grid, i, j, 1)]);
        putNext(writer, grid.NodeY[nodeIndex(grid, i, j, 1)]);
        put(writer, "\n");
    }
    flush(writer);
}

void writeLineGeometry(const GridModel& grid, const PlottedLine& line, std::FILE* file) {
    const int last = line.record.nodeCount;
    if (last < 2 || file == nullptr) return;
    NumberWriter writer;
    writer.file = file;
    put(writer, fmt::format("GEOMETRY X=0, Y=0, T=LINE, C=WHITE, M=GRID\n{}\n", last));
    const LineCourse course{line.record, line.againstFlow};
    for (int m = 1; m <= last; ++m) {
        const std::array<double, 3> point = coursePoint(grid, course, m);
        putNext(writer, point[0]);
        putNext(writer, point[1]);
        put(writer, "\n");
    }
    flush(writer);
}

}  // namespace kvr
