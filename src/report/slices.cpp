#include "report/slices.hpp"

#include "base/number_writer.hpp"

#include <fmt/format.h>

namespace kvr {

namespace {

constexpr int AlongX = 1, AlongY = 2, AlongZ = 3;

void putCell(NumberWriter& writer, double value) {
    put(writer, "\t");
    putNumber(writer, value);
}

/// The head of a block: the name of the corner, then the X positions of the row of cells.
void putAcross(NumberWriter& writer, const GridModel& grid, std::string_view corner, int k) {
    put(writer, corner);
    for (int i = 1; i <= grid.NX; ++i) putCell(writer, grid.CellCentre(cellIndex(grid, i, 1, k), AlongX));
    put(writer, "\n");
}

/// One row of cells behind its position along `axis`.
void putRow(NumberWriter& writer, const GridModel& grid, const CellArray<double>& values, int axis, int j,
            int k) {
    putNumber(writer, grid.CellCentre(cellIndex(grid, 1, j, k), axis));
    for (int i = 1; i <= grid.NX; ++i) putCell(writer, values[cellIndex(grid, i, j, k)]);
    put(writer, "\n");
}

void putLayer(NumberWriter& writer, const GridModel& grid, const CellArray<double>& values, int k) {
    if (grid.NZ > 1 || grid.NY == 1) put(writer, fmt::format("plane Z = {}\n", k));
    putAcross(writer, grid, "Y/ X =", k);
    for (int j = 1; j <= grid.NY; ++j) putRow(writer, grid, values, AlongY, j, k);
}

void putCrossSection(NumberWriter& writer, const GridModel& grid, const CellArray<double>& values) {
    putAcross(writer, grid, "Z/ X =", 1);
    for (int k = 1; k <= grid.NZ; ++k) putRow(writer, grid, values, AlongZ, 1, k);
}

}  // namespace

void writeSlices(std::FILE* stream, const GridModel& grid, const CellArray<double>& values, double time,
                 std::string_view label) {
    NumberWriter writer;
    writer.file = stream;
    put(writer, "TIME ::\t");
    putNumber(writer, time);
    put(writer, fmt::format("\nGrid\t{}\n - - - - - - - - - - - - -\n", label));
    for (int k = 1; k <= grid.NZ; ++k) putLayer(writer, grid, values, k);
    if (grid.NY == 1) putCrossSection(writer, grid, values);
    flush(writer);
}

}  // namespace kvr
