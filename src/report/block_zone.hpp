#pragma once

#include "base/cell_array.hpp"
#include "deck/options.hpp"
#include "model/grid.hpp"

#include <cstdio>
#include <functional>
#include <string_view>

namespace kvr {

/// Nodes of a grid plot. Shared: an ordered zone of (NX+1)(NY+1)(NZ+1) nodes, neighbours meet in them.
/// PerCell: every cell has its own eight corners, so that faults show; a zone of NCELLS separate bricks
/// (FEBRICK, 8 NCELLS nodes, then the node list of each brick).
enum class ZoneNodes { Shared, PerCell };

/// The nodes that the options ask for.
inline ZoneNodes zoneNodes(const RunOptions& options) {
    return options.cornerPointHiRes ? ZoneNodes::PerCell : ZoneNodes::Shared;
}

/// What a zone shows of a cell.
using CellValue = std::function<double(CellId)>;

/// One zone with one cell-centred scalar: title and variable lines, zone line, time, X, Y and Depth of
/// all nodes (ft), the values in natural order. Every zone carries its coordinates, so a file is a
/// sequence of blocks that can be read by themselves. The stream is flushed.
void writeBlockZone(std::FILE* stream, const GridModel& grid, ZoneNodes nodes,
                    const CellArray<double>& values, double time, std::string_view title);

/// The same with values made cell by cell while they are written; no array is held.
void writeBlockZone(std::FILE* stream, const GridModel& grid, ZoneNodes nodes, const CellValue& value,
                    double time, std::string_view title);

/// A zone under lines of the caller's: `title` stands as given, `variables` behind Depth, `time` null for a
/// zone without a time line.
struct ZoneHead {
    std::string_view title;
    std::string_view variables;
    const double* time = nullptr;
};
void writeZone(std::FILE* stream, const GridModel& grid, ZoneNodes nodes, const CellValue& value,
               const ZoneHead& head);

/// Logarithm to base ten of a permeability for a map; -20 where there is none.
double plottedLog10(double permeability);

/// The same with `columns` scalars per cell, named Value0001 and on, one after another.
void writeBlockZoneMulti(std::FILE* stream, const GridModel& grid, ZoneNodes nodes,
                         const DirectionArray<double>& values, int columns, double time,
                         std::string_view title);

}  // namespace kvr
