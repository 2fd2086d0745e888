#include "eclipse/pillar_reader.hpp"

#include "base/units.hpp"
#include "eclipse/cell_arrays.hpp"
#include "eclipse/keyword_loop.hpp"
#include "model/corner_point.hpp"
#include "model/grid_memory.hpp"

#include <algorithm>

namespace kvr {

namespace {

constexpr std::size_t PillarValues = 6, CornersOfCell = 8;
constexpr std::int32_t CornerPointGrid = 1;
constexpr std::uint64_t LeastCellBytes = 32;  // of a cell's depths in the file

/// The arrays of one file.
struct PillarScan {
    double length = 1.0;  // of the file to ft
    std::vector<float> COORD, ZCORN;
    std::vector<std::int32_t> ACTNUM;
    bool hasHead = false;
    bool fresh = false;  // the grid is made from the file, and so is its activity
};

std::size_t pillarCount(const GridModel& grid) {
    return (static_cast<std::size_t>(grid.NX) + 1) * (static_cast<std::size_t>(grid.NY) + 1);
}

double lengthOf(const BlockData& data) {
    if (data.texts.empty()) return 1.0;
    const std::string_view word = view(data.texts.front());
    if (word.starts_with("METRES")) return metricUnits().length;
    constexpr double MetresPerCentimetre = 0.01;
    return word.starts_with("CM") ? metricUnits().length * MetresPerCentimetre : 1.0;
}

ReadResult createCells(RecordReader& reader, const BlockHeader& header, int nx, int ny, int nz,
                       GridModel& grid) {
    if (checkGridSize(nx, ny, nz) != GridSize::Usable)
        return rejectBlock(reader, header, "a grid of these dimensions cannot be held");
    const auto cells =
        static_cast<std::uint64_t>(nx) * static_cast<std::uint64_t>(ny) * static_cast<std::uint64_t>(nz);
    if (cells > reader.size / LeastCellBytes)
        return rejectBlock(reader, header, "the file has no room for so many cells");
    grid.NX = nx;
    grid.NY = ny;
    grid.NZ = nz;
    return allocateGrid(grid) ? ReadResult::Ok
                              : rejectBlock(reader, header, "there is no memory for so many cells");
}

ReadResult takeHead(RecordReader& reader, const BlockHeader& header, const std::vector<std::int32_t>& head,
                    PillarScan& scan, GridModel& grid) {
    if (head.size() < 4 || head[0] != CornerPointGrid)
        return rejectBlock(reader, header, "the head of a corner-point grid was expected");
    scan.hasHead = true;
    if (grid.NCELLS == 0) return createCells(reader, header, head[1], head[2], head[3], grid);
    if (head[1] != grid.NX || head[2] != grid.NY || head[3] != grid.NZ)
        return rejectBlock(reader, header, "the grid has other dimensions than the run");
    return ReadResult::Ok;
}

/// Takes a block of the first grid; EndOfFile behind its last one.
ReadResult takeBlock(const Console& console, RecordReader& reader, const BlockHeader& header,
                     const BlockData& data, PillarScan& scan, GridModel& grid) {
    const std::string_view keyword = view(header.keyword);
    if (keyword == "ENDGRID ") return ReadResult::EndOfFile;
    if (keyword == "GRIDUNIT")
        scan.length = lengthOf(data);
    else if (keyword == "COORD   ")
        scan.COORD = data.reals;
    else if (keyword == "ZCORN   ")
        scan.ZCORN = data.reals;
    else if (keyword == "ACTNUM  ")
        scan.ACTNUM = data.integers;
    else if (keyword != "GRIDHEAD") {
        logNeglected(console, header);
        return ReadResult::Ok;
    }
    logEmployed(console, header);
    return keyword == "GRIDHEAD" ? takeHead(reader, header, data.integers, scan, grid) : ReadResult::Ok;
}

void placeCorner(const PillarScan& scan, GridModel& grid, CellId cell, int corner) {
    const auto& offset = CornerOffset[static_cast<std::size_t>(corner) - 1];
    const auto row = static_cast<std::size_t>(grid.CellJ[cell] - 1 + offset[1]);
    const std::size_t pillar = row * (static_cast<std::size_t>(grid.NX) + 1) +
                               static_cast<std::size_t>(grid.CellI[cell] - 1 + offset[0]);
    const std::size_t depth = zcornIndex(grid, grid.CellI[cell], grid.CellJ[cell], grid.CellK[cell], corner);
    const double z = static_cast<double>(scan.ZCORN[depth]);
    double x = 0.0, y = 0.0;
    pointOnPillar(scan.COORD.data() + pillar * PillarValues, z, x, y);
    float* point = cornerOf(grid, cell, corner);
    point[0] = static_cast<float>(x * scan.length);
    point[1] = static_cast<float>(y * scan.length);
    point[2] = static_cast<float>(z * scan.length);
}

void placeCells(const PillarScan& scan, GridModel& grid) {
    for (CellId cell = 1; cell <= grid.NCELLS; ++cell) {
        for (int corner = 1; corner <= static_cast<int>(CornersOfCell); ++corner)
            placeCorner(scan, grid, cell, corner);
        if (!scan.fresh) continue;
        grid.Active[cell] =
            scan.ACTNUM.empty() || scan.ACTNUM[static_cast<std::size_t>(cell) - 1] > 0 ? 1 : 0;
    }
}

}  // namespace

ReadResult readPillarBlocks(const Console& console, RecordReader& reader, GridModel& grid) {
    PillarScan scan;
    scan.fresh = grid.NCELLS == 0;
    const ReadResult result = readBlocks(reader, [&](const BlockHeader& header, const BlockData& data) {
        return takeBlock(console, reader, header, data, scan, grid);
    });
    if (result == ReadResult::Error) return result;
    const BlockHeader whole{};
    const auto cells = static_cast<std::size_t>(grid.NCELLS);
    if (!scan.hasHead) return rejectBlock(reader, whole, "the file has no head of a grid");
    if (scan.COORD.size() != pillarCount(grid) * PillarValues || scan.ZCORN.size() != cells * CornersOfCell)
        return rejectBlock(reader, whole, "pillars and depths of the corners of every cell were expected");
    if (!areCoordinates(scan.COORD) || !areCoordinates(scan.ZCORN))
        return rejectBlock(reader, whole, "corners that are no places");
    if (!scan.ACTNUM.empty() && scan.ACTNUM.size() != cells)
        return rejectBlock(reader, whole, "ACTNUM: one value per cell was expected");
    placeCells(scan, grid);
    return ReadResult::Ok;
}

}  // namespace kvr
