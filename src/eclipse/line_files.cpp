#include "eclipse/line_files.hpp"

#include "eclipse/cell_arrays.hpp"
#include "eclipse/file_failure.hpp"
#include "eclipse/file_names.hpp"
#include "eclipse/restart_file.hpp"
#include "run/records/output_table.hpp"

#include <algorithm>
#include <limits>

namespace kvr {

namespace {

constexpr std::array<std::string_view, 9> BlankRestart = {};
constexpr std::array<std::string_view, 2> GridUnit = {"FEET", ""};
constexpr std::array<std::string_view, 1> MapUnit = {"FEET"};
constexpr std::array<std::string_view, 1> NotRadial = {"FALSE"};
constexpr std::string_view NoWell = "STAGSL";  // the name behind those of the wells
constexpr std::string_view MapAxes = "MAPAXES";

/// Least and greatest x, y, z over all corners.
std::array<double, 6> extentOf(const GridModel& grid) {
    constexpr double Infinity = std::numeric_limits<double>::infinity();
    std::array<double, 6> extent = {Infinity, -Infinity, Infinity, -Infinity, Infinity, -Infinity};
    for (CellId cell = 1; cell <= grid.NCELLS; ++cell)
        for (int n = 1; n <= 8; ++n)
            for (std::size_t axis = 0; axis < 3; ++axis) {
                const auto value = static_cast<double>(cornerOf(grid, cell, n)[axis]);
                extent[2 * axis] = std::min(extent[2 * axis], value);
                extent[2 * axis + 1] = std::max(extent[2 * axis + 1], value);
            }
    return extent;
}

std::array<std::int32_t, 10> lineHead(const RunClock& clock) {
    constexpr std::int32_t Version = 2, Kind = 2, Dimensions = 3;
    RunClock end = clock;  // the lines are those of the step, whose end the clock has not reached yet
    advanceCalendar(clock.dt, end);
    const HourMinute time = hourMinute(clock.time + clock.dt);
    return {Version,   Kind,     Dimensions, clock.reportIndex, end.day,
            end.month, end.year, time.hour,  time.minute,       0};
}

/// From segments before a line to the 1-based place of its first coordinate in GEOMETRY, and back.
void turnIntoPlaces(std::vector<std::int32_t>& offset) {
    for (std::size_t m = 0; m < offset.size(); ++m)
        offset[m] = 3 * (offset[m] + static_cast<std::int32_t>(m)) + 1;
}
void turnIntoOffsets(std::vector<std::int32_t>& offset) {
    for (std::size_t m = 1; m < offset.size(); ++m)
        offset[m] = (offset[m] - 1) / 3 - static_cast<std::int32_t>(m + 1) + 1;
    offset[0] = 0;
}

void writeEnds(std::string_view keyword, const std::vector<std::int32_t>& wells, std::size_t wellCount,
               RecordWriter& writer) {
    const auto none = static_cast<std::int32_t>(wellCount) + 1;
    write_keyword<std::int32_t>(writer, keyword, static_cast<std::int32_t>(wells.size()),
                                [&](std::size_t n) { return wells[n] == 0 ? none : wells[n]; });
}

void writeCourses(std::size_t wellCount, LinePaths& paths, RecordWriter& writer) {
    write_keyword<double>(writer, "GEOMETRY", static_cast<std::int32_t>(3 * paths.point.size()),
                          [&](std::size_t n) { return paths.point[n / 3][n % 3]; });
    turnIntoPlaces(paths.offset);
    write_keyword(writer, "GEOMINDX", std::span<const std::int32_t>(paths.offset));
    turnIntoOffsets(paths.offset);
    write_keyword<std::int32_t>(writer, "ID_CELL", paths.offset.back(),
                                [&](std::size_t n) { return paths.cell[n]; });
    writeEnds("ID_BEG", paths.begin, wellCount, writer);
    writeEnds("ID_END", paths.end, wellCount, writer);
    write_keyword(writer, "TIME_BEG", std::span<const double>(paths.time));
    write_keyword(writer, "SWAT", std::span<const double>(paths.Sw));
}

}  // namespace

void writeLineSpec(const Console& console, const RunOptions& options, const GridModel& grid,
                   const std::vector<std::string>& wellNames, LinePaths& paths) {
    if (!isOn(options, OutputSwitch::EclipseLines)) return;
    const std::array<double, 6> extent = extentOf(grid);
    const auto names = static_cast<std::int32_t>(wellNames.size()) + 1;
    RecordWriter writer;
    openOrStop(console, runFile(options, ".SLNSPEC"), writer);
    writeWords(writer, "RESTART", BlankRestart);
    write_keyword(writer, "EXTENT", std::span<const double>(extent), Cut::OneRecord);
    write_keyword<Text8>(
        writer, "NAMES", names,
        [&](std::size_t n) { return text8(n < wellNames.size() ? wellNames[n] : NoWell); }, Cut::OneRecord);
    // The one header whose keyword is not padded: readers of these files know it in this length.
    write_header(writer, MapAxes, static_cast<std::int32_t>(grid.mapAxes.size()), ElementType::Real,
                 MapAxes.size());
    write_block<float>(writer, static_cast<std::int32_t>(grid.mapAxes.size()),
                       [&](std::size_t n) { return static_cast<float>(grid.mapAxes[n]); });
    writeWords(writer, "GRIDUNIT", GridUnit);
    writeWords(writer, "MAPUNITS", MapUnit);
    writeWords(writer, "RADIAL", NotRadial);
    closeOrStop(console, writer);
    tellGenerated(console, writer.path);
    paths.wanted = true;
}

void writeLineStep(const Console& console, const RunOptions& options, const RunClock& clock, int tracedLines,
                   EclipseOutput& output) {
    output.tracedLines = tracedLines;
    if (!isOn(options, OutputSwitch::EclipseLines)) return;
    const std::array<std::int32_t, 10> head = lineHead(clock);
    RecordWriter writer;
    openOrStop(console, runFile(options, ".SLN", clock.reportIndex), writer);
    write_keyword(writer, "INTEHEAD", std::span<const std::int32_t>(head), Cut::OneRecord);
    writeCourses(output.wellCount, output.paths, writer);
    closeOrStop(console, writer);
    clearPaths(output.paths);
}

}  // namespace kvr
