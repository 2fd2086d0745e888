#include "eclipse/grid_reader.hpp"

#include "base/messages.hpp"
#include "eclipse/cell_arrays.hpp"
#include "eclipse/file_failure.hpp"
#include "eclipse/file_names.hpp"
#include "eclipse/keyword_loop.hpp"
#include "eclipse/pillar_reader.hpp"
#include "model/cell_geometry.hpp"
#include "model/corner_point.hpp"
#include "model/grid_memory.hpp"

#include <cmath>

namespace kvr {

namespace {

constexpr std::size_t CornerValues = 24;
constexpr std::size_t PlaceValues = 4;         // i, j, k, n
constexpr std::uint32_t WrongOrderCount = 11;  // DIMENS never has so many elements
constexpr std::uint64_t LeastCellBytes = 176;  // a cell's COORDS and CORNERS blocks in the file

/// Value of corner n (0-based) along an axis.
float cornerValue(const std::vector<float>& values, CornerOrder order, std::size_t n, std::size_t axis) {
    return order == CornerOrder::ByPoint ? values[3 * n + axis] : values[8 * axis + n];
}

/// Mean edge from the low to the high corners of a direction.
Vector3 meanEdge(const float* corners, std::size_t direction) {
    Vector3 edge{};
    for (std::size_t n = 0; n < CornerOffset.size(); ++n)
        for (std::size_t axis = 0; axis < 3; ++axis)
            edge[axis] +=
                (CornerOffset[n][direction] == 1 ? 0.25 : -0.25) * static_cast<double>(corners[3 * n + axis]);
    return edge;
}

bool mainlyHorizontal(const Vector3& edge) {
    return std::hypot(edge[0], edge[1]) > std::abs(edge[2]);
}

bool topsAboveBottoms(const float* corners) {
    for (std::size_t n = 0; n < 4; ++n)
        if (!(corners[3 * n + 2] <= corners[3 * (n + 4) + 2])) return false;
    return true;
}

bool isProperCell(const std::array<float, CornerValues>& corners) {
    return mainlyHorizontal(meanEdge(corners.data(), 0)) && mainlyHorizontal(meanEdge(corners.data(), 1)) &&
           topsAboveBottoms(corners.data()) && integratedVolume(corners.data()) > 0.0;
}

std::array<float, CornerValues> cornersIn(const std::vector<float>& values, CornerOrder order) {
    std::array<float, CornerValues> corners{};
    for (std::size_t n = 0; n < 8; ++n)
        for (std::size_t axis = 0; axis < 3; ++axis)
            corners[3 * n + axis] = cornerValue(values, order, n, axis);
    return corners;
}

/// What the blocks of one file leave for the next ones.
struct GridScan {
    CellId cell = 0;  // named by the last COORDS
    CornerOrder order = CornerOrder::Undecided;
    bool wrongByteOrder = false;
};

bool sizeIsKnown(const GridModel& grid) {
    return grid.NX > 0 && grid.NY > 0 && grid.NZ > 0;
}

ReadResult createCells(RecordReader& reader, const BlockHeader& header, GridModel& grid) {
    const auto refuse = [&](std::string_view why) {
        grid.NX = grid.NY = grid.NZ = 0;
        return rejectBlock(reader, header, why);
    };
    if (checkGridSize(grid.NX, grid.NY, grid.NZ) != GridSize::Usable)
        return refuse("a grid of these dimensions cannot be held");
    const auto cells = static_cast<std::uint64_t>(grid.NX) * static_cast<std::uint64_t>(grid.NY) *
                       static_cast<std::uint64_t>(grid.NZ);
    if (cells > reader.size / LeastCellBytes) return refuse("the file has no room for so many cells");
    return allocateGrid(grid) ? ReadResult::Ok : refuse("there is no memory for so many cells");
}

ReadResult takeDimensions(RecordReader& reader, const BlockHeader& header, const BlockData& data,
                          GridModel& grid) {
    if (data.integers.size() < 3) return rejectBlock(reader, header, "three dimensions were expected");
    const std::array<int*, 3> own = {&grid.NX, &grid.NY, &grid.NZ};
    for (std::size_t axis = 0; axis < 3; ++axis)
        if (*own[axis] == 0) *own[axis] = data.integers[axis];
    if (grid.NCELLS != 0) return ReadResult::Ok;
    if (!sizeIsKnown(grid)) {
        grid.NX = grid.NY = grid.NZ = 0;
        return rejectBlock(reader, header, "a dimension is not positive");
    }
    return createCells(reader, header, grid);
}

ReadResult takePlace(RecordReader& reader, const BlockHeader& header, const BlockData& data, GridModel& grid,
                     CellId& cell) {
    if (data.integers.size() < PlaceValues)
        return rejectBlock(reader, header, "i, j, k and the number of a cell were expected");
    const int i = data.integers[0], j = data.integers[1], k = data.integers[2], n = data.integers[3];
    const bool inside = i >= 1 && i <= grid.NX && j >= 1 && j <= grid.NY && k >= 1 && k <= grid.NZ;
    if (!inside || n != cellIndex(grid, i, j, k) || n > grid.NCELLS)
        return rejectBlock(reader, header, "this cell is not one of the grid");
    cell = n;
    grid.CellI[cell] = i;
    grid.CellJ[cell] = j;
    grid.CellK[cell] = k;
    if (data.integers.size() > PlaceValues) grid.Active[cell] = data.integers[PlaceValues] > 0 ? 1 : 0;
    return ReadResult::Ok;
}

ReadResult takeCorners(RecordReader& reader, const BlockHeader& header, const BlockData& data, GridScan& scan,
                       GridModel& grid) {
    if (data.reals.size() != CornerValues) return rejectBlock(reader, header, "24 values were expected");
    if (scan.cell == 0) return rejectBlock(reader, header, "no cell has been named before these corners");
    if (!areCoordinates(data.reals)) return rejectBlock(reader, header, "corners that are no places");
    if (scan.order == CornerOrder::Undecided) scan.order = cornerOrderOf(data.reals);
    const std::array<float, CornerValues> corners = cornersIn(data.reals, scan.order);
    std::copy(corners.begin(), corners.end(), cornerOf(grid, scan.cell, 1));
    return ReadResult::Ok;
}

bool showsWrongByteOrder(const BlockHeader& header) {
    return view(header.keyword) == "DIMENS  " && static_cast<std::uint32_t>(header.count) >= WrongOrderCount;
}

/// One pass in the reader's byte order; stops where DIMENS shows that it is the wrong one.
ReadResult scanBlocks(const Console& console, RecordReader& reader, GridScan& scan, GridModel& grid) {
    BlockData data;
    for (;;) {
        BlockHeader header;
        ReadResult result = read_header(reader, header);
        if (result == ReadResult::EndOfFile) return ReadResult::Ok;
        if (result == ReadResult::Error) return result;
        scan.wrongByteOrder = showsWrongByteOrder(header);
        if (scan.wrongByteOrder) return rejectBlock(reader, header, "three dimensions were expected");
        if (read_block(reader, header, data) == ReadResult::Error) return ReadResult::Error;
        const std::string_view keyword = view(header.keyword);
        if (keyword == "DIMENS  ") {
            logEmployed(console, header);
            result = takeDimensions(reader, header, data, grid);
        } else if (keyword == "COORDS  ") {
            result = takePlace(reader, header, data, grid, scan.cell);
        } else if (keyword == "CORNERS ") {
            result = takeCorners(reader, header, data, scan, grid);
        } else {
            logNeglected(console, header);
        }
        if (result == ReadResult::Error) return result;
    }
}

}  // namespace

CornerOrder cornerOrderOf(const std::vector<float>& values) {
    const bool byAxis = isProperCell(cornersIn(values, CornerOrder::ByAxis));
    const bool byPoint = isProperCell(cornersIn(values, CornerOrder::ByPoint));
    return byPoint && !byAxis ? CornerOrder::ByPoint : CornerOrder::ByAxis;
}

ReadResult readGridBlocks(const Console& console, RecordReader& reader, GridModel& grid) {
    reader.eitherMarkerOrder = true;
    GridScan first;
    const ReadResult result = scanBlocks(console, reader, first, grid);
    if (!first.wrongByteOrder) return result;
    const std::string path = reader.path;
    if (open_read(path, ByteOrder::Little, reader) != 0) {
        reader.path = path;
        return rejectBlock(reader, {}, "the file could not be opened again");
    }
    reader.eitherMarkerOrder = true;
    GridScan second;
    return scanBlocks(console, reader, second, grid);
}

void input_GRID(const Console& console, const RunOptions& options, const UnitSystem& units,
                std::string_view header, GridModel& grid) {
    logReaderStart(console, " Function Callecd  : input_GRID");
    const std::string path = outsideFile(options, header, ".GRID");
    const bool fresh = grid.NCELLS == 0;
    RecordReader reader;
    if (open_read(path, ByteOrder::Big, reader) == 0) {
        if (readGridBlocks(console, reader, grid) == ReadResult::Error) stopOnRecordFault(console, reader);
    } else if (open_read(outsideFile(options, header, ".EGRID"), ByteOrder::Big, reader) == 0) {
        both(console, " Geometry from the .EGRID file :: {}", reader.path);
        if (readPillarBlocks(console, reader, grid) == ReadResult::Error) stopOnRecordFault(console, reader);
    } else {
        warn(console, " ECLIPSE .GRID File Not Found :: {}", path);
        return;
    }
    close(reader);
    nodesFromCorners(grid);
    if (fresh) {
        sizesFromCorners(grid);
        estimateVolumes(grid, units.VolumeFactor);
    }
    logReaderEnd(console, " Function Ends Normally  : input_GRID");
}

}  // namespace kvr
