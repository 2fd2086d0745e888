#pragma once

#include "base/cell_array.hpp"
#include "base/console.hpp"
#include "model/grid.hpp"
#include "streamline/mapping/mapping.hpp"
#include "streamline/tracing/streamline_record.hpp"
#include "streamline/transport/solver_line.hpp"

#include <array>
#include <cstdint>
#include <vector>

namespace kvr {

/// Course of one line from its inlet: segments 1..s, each in one cell, between nodes 0..s.
struct LinePath {
    int segments = 0;
    std::vector<std::array<double, 3>> point;  // [0..s] ft
    std::vector<double> time;                  // [0..s] days from the inlet
    std::vector<CellId> cell;                  // [1..s]
    std::vector<double> Sw;                    // [1..s], after the transport of the step
    int begin = 0;                             // 1-based wells at the ends, 0 for none
    int end = 0;
};

/// Courses of the lines of one step, one after another, in line order.
struct LinePaths {
    bool wanted = false;                       // lines keep their courses
    std::vector<std::array<double, 3>> point;  // s + 1 a line
    std::vector<double> time;                  // s + 1 a line
    std::vector<CellId> cell;                  // s a line
    std::vector<double> Sw;                    // s a line
    std::vector<std::int32_t> offset{0};       // segments before line m at [m - 1]; the last is their total
    std::vector<std::int32_t> begin, end;      // one a line
};

/// The course of a solved line. Its ends in wells count as the centres of their cells, the other nodes are
/// where the traverses ended; the box family keeps no positions and takes cell centres throughout.
void takePath(const GridModel& grid, const StreamlineRecord& record, bool fromInjector, bool referenceCube,
              const SolverLine& line, const LineContribution& contribution, LinePath& path);

/// A line that was not solved stands as one node at its start.
void takeEmptyPath(const GridModel& grid, const StreamlineRecord& record, LinePath& path);

/// Adds one line behind the others. Stops the run where there is no memory for it.
void addPath(const Console& console, const LinePath& path, LinePaths& paths);

/// Forgets the lines; whether courses are wanted stays.
void clearPaths(LinePaths& paths);

}  // namespace kvr
