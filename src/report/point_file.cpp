#include "report/point_file.hpp"

#include "base/number_writer.hpp"

#include <cmath>
#include <fmt/format.h>

namespace kvr {

namespace {

constexpr double SmallestFixed = 1e-20;  // smaller values would be all zeros, or break a column
constexpr int Decimals = 10;

void putValue(NumberWriter& writer, double value) {
    if (std::abs(value) >= SmallestFixed)
        putFixed(writer, value, Decimals);
    else
        putNumber(writer, value);
}

}  // namespace

void writePointFile(std::FILE* stream, const GridModel& grid, const CellArray<double>& values,
                    std::string_view title) {
    NumberWriter writer;
    writer.file = stream;
    put(writer, fmt::format("TITLE=waterPLOT\nVARIABLES= X,Y,Z,{}\nZone I ={},J={},k={},F = Point\n", title,
                            grid.NX, grid.NY, grid.NZ));
    for (CellId cell = 1; cell <= grid.NCELLS; ++cell) {
        for (int axis = 1; axis <= 3; ++axis) {
            putNumber(writer, grid.CellCentre(cell, axis));
            put(writer, " ");
        }
        putValue(writer, values[cell]);
        put(writer, "\n");
    }
    flush(writer);
}

}  // namespace kvr
