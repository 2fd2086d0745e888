#include "report/block_zone.hpp"

#include "base/number_lines.hpp"

#include <algorithm>
#include <array>
#include <cmath>
#include <fmt/format.h>

namespace kvr {

namespace {

constexpr int CornersPerCell = 8;
constexpr double LeastPermeability = 1e-20;  // md; what a logarithm takes where there is no permeability
constexpr int FirstValueVariable = 4;        // behind X, Y, Depth

// Corners of a brick as its node list names them: around the top, then around the bottom. Ours run
// row by row, so the third and fourth change places.
constexpr std::array<int, CornersPerCell> BrickCorners = {1, 2, 4, 3, 5, 6, 8, 7};

void putZoneLine(NumberWriter& writer, const GridModel& grid, ZoneNodes nodes) {
    if (nodes == ZoneNodes::Shared)
        put(writer, fmt::format("Zone i = {}, j= {}, k= {},  DATAPACKING=BLOCK,\n", grid.NX + 1, grid.NY + 1,
                                grid.NZ + 1));
    else
        put(writer, fmt::format("Zone N = {}, E= {}, ZONETYPE=FEBRICK,  DATAPACKING=BLOCK,\n",
                                static_cast<long long>(CornersPerCell) * grid.NCELLS, grid.NCELLS));
}

void putCoordinates(NumberWriter& writer, const GridModel& grid, ZoneNodes nodes) {
    if (nodes == ZoneNodes::Shared) {
        for (const std::vector<double>* axis : {&grid.NodeX, &grid.NodeY, &grid.NodeZ})
            putList(writer, *axis);
        return;
    }
    for (int axis = 0; axis < 3; ++axis) {
        NumberLines lines{writer};
        for (CellId cell = 1; cell <= grid.NCELLS; ++cell)
            for (int corner = 1; corner <= CornersPerCell; ++corner)
                lines.add(static_cast<double>(cornerOf(grid, cell, corner)[axis]));
        lines.finish();
    }
}

/// The node list of the bricks; ordered zones have none.
void putBricks(NumberWriter& writer, const GridModel& grid, ZoneNodes nodes) {
    if (nodes == ZoneNodes::Shared) return;
    for (CellId cell = 1; cell <= grid.NCELLS; ++cell) {
        const long long first = static_cast<long long>(CornersPerCell) * (cell - 1);
        for (const int corner : BrickCorners) {
            const fmt::format_int node(first + corner);
            put(writer, {node.data(), node.size()});
            put(writer, " ");
        }
        put(writer, "\n");
    }
}

void putHead(NumberWriter& writer, const ZoneHead& head, const GridModel& grid, ZoneNodes nodes,
             std::string_view locations) {
    put(writer, fmt::format("TITLE={}PLOT\nVARIABLES= X,Y,Depth{}\n", head.title, head.variables));
    putZoneLine(writer, grid, nodes);
    if (head.time != nullptr) {
        put(writer, "SOLUTIONTIME = ");
        putNumber(writer, *head.time);
        put(writer, "\n");
    }
    put(writer, fmt::format("VARLOCATION=({})\n", locations));
}

void putCells(NumberWriter& writer, const GridModel& grid, const CellValue& value) {
    NumberLines lines{writer};
    for (CellId cell = 1; cell <= grid.NCELLS; ++cell) lines.add(value(cell));
    lines.finish();
}

}  // namespace

void writeZone(std::FILE* stream, const GridModel& grid, ZoneNodes nodes, const CellValue& value,
               const ZoneHead& head) {
    NumberWriter writer;
    writer.file = stream;
    putHead(writer, head, grid, nodes, "4=CELLCENTERED");
    putCoordinates(writer, grid, nodes);
    putCells(writer, grid, value);
    putBricks(writer, grid, nodes);
    flush(writer);
}

void writeBlockZone(std::FILE* stream, const GridModel& grid, ZoneNodes nodes, const CellValue& value,
                    double time, std::string_view title) {
    const std::string variable = fmt::format(",{}", title);
    writeZone(stream, grid, nodes, value, {title, variable, &time});
}

void writeBlockZone(std::FILE* stream, const GridModel& grid, ZoneNodes nodes,
                    const CellArray<double>& values, double time, std::string_view title) {
    writeBlockZone(
        stream, grid, nodes, [&values](CellId cell) { return values[cell]; }, time, title);
}

double plottedLog10(double permeability) {
    return std::log10(std::max(permeability, LeastPermeability));
}

void writeBlockZoneMulti(std::FILE* stream, const GridModel& grid, ZoneNodes nodes,
                         const DirectionArray<double>& values, int columns, double time,
                         std::string_view title) {
    std::string variables;
    std::string locations;
    for (int column = 1; column <= columns; ++column) {
        variables += fmt::format(",Value{:04}", column);
        locations += fmt::format("{}=CELLCENTERED,", FirstValueVariable + column - 1);
    }
    NumberWriter writer;
    writer.file = stream;
    putHead(writer, {title, variables, &time}, grid, nodes, locations);
    putCoordinates(writer, grid, nodes);
    for (int column = 1; column <= columns; ++column)
        putCells(writer, grid, [&](CellId cell) { return values(cell, column); });
    putBricks(writer, grid, nodes);
    flush(writer);
}

}  // namespace kvr
