#pragma once

#include "model/grid.hpp"
#include "streamline/tracing/streamline_record.hpp"

#include <array>
#include <cmath>

namespace kvr {

/// A traced line read from its injector's end, whichever way it was traced.
struct LineCourse {
    const StreamlineRecord& record;
    bool againstFlow;
};

/// Node of the record that is node m of the course.
inline std::size_t recordNode(const LineCourse& course, int m) {
    return static_cast<std::size_t>(course.againstFlow ? course.record.nodeCount + 1 - m : m);
}

inline CellId courseCell(const LineCourse& course, int m) {
    return course.record.NodeCell[recordNode(course, m)];
}

/// Days from the injector's end to the end of node m.
inline double courseTime(const LineCourse& course, int m) {
    const StreamlineRecord& record = course.record;
    if (!course.againstFlow) return record.NodeTof[static_cast<std::size_t>(m)];
    return record.NodeTof[static_cast<std::size_t>(record.nodeCount)] -
           record.NodeTof[recordNode(course, m) - 1];
}

/// Where node m ends downstream, ft; the two ends of the line stand at the centres of their cells.
inline std::array<double, 3> coursePoint(const GridModel& grid, const LineCourse& course, int m) {
    const std::size_t n = recordNode(course, m);
    if (m <= 1 || m >= course.record.nodeCount) return centreOf(grid, course.record.NodeCell[n]);
    return course.record.NodePosition[course.againstFlow ? n - 1 : n];
}

/// Length of the traverse that ends at node m, ft; measured between the points where an end of the line is
/// one of them, 0 for the first node.
inline double courseStep(const GridModel& grid, const LineCourse& course, int m) {
    if (m <= 1) return 0.0;
    if (m > 2 && m < course.record.nodeCount) return course.record.NodeStepLength[recordNode(course, m)];
    const std::array<double, 3> from = coursePoint(grid, course, m - 1);
    const std::array<double, 3> to = coursePoint(grid, course, m);
    return std::hypot(to[0] - from[0], to[1] - from[1], to[2] - from[2]);
}

}  // namespace kvr
