#include "model/block_grid.hpp"

#include "base/number_writer.hpp"
#include "model/cell_geometry.hpp"
#include "model/corner_point.hpp"

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstdint>
#include <string_view>
#include <vector>

namespace kvr {

namespace {

/// One cell's box: lower corner and opposite corner.
struct CellExtent {
    Vector3 low;
    Vector3 high;
};

void placeBlock(GridModel& grid, CellId cell, const CellExtent& extent) {
    for (int n = 1; n <= 8; ++n) {
        const auto& offset = CornerOffset[n - 1];
        float* point = cornerOf(grid, cell, n);
        for (int r = 0; r < 3; ++r)
            point[r] = static_cast<float>(offset[r] == 0 ? extent.low[r] : extent.high[r]);
        placeNode(grid, cell, n);
    }
    const Vector3 centre = meanOfCorners(cornerOf(grid, cell, 1));
    for (int r = 1; r <= 3; ++r) grid.CellCentre(cell, r) = centre[r - 1];
}

void buildLayer(GridModel& grid, int k, std::vector<double>& columnY) {
    std::fill(columnY.begin(), columnY.end(), 0.0);
    for (int j = 1; j <= grid.NY; ++j) {
        double x = 0.0;
        for (int i = 1; i <= grid.NX; ++i) {
            const CellId cell = cellIndex(grid, i, j, k);
            double& y = columnY[static_cast<std::size_t>(i)];
            const double top = grid.TOPS[cell];
            placeBlock(grid, cell,
                       {{x, y, top}, {x + grid.DX[cell], y + grid.DY[cell], top + grid.DZ[cell]}});
            x += grid.DX[cell];
            y += grid.DY[cell];
        }
    }
}

/// Values of one keyword, six a line. Neighbouring values are often equal: the text of the last one is kept.
struct ListWriter {
    NumberWriter out;
    int onLine = 0;
    float lastValue = 0.0F;
    std::size_t lastLength = 0;
    char lastText[32] = {};
};

constexpr int ValuesPerLine = 6;

void beginList(ListWriter& list, std::string_view keyword) {
    put(list.out, keyword);
    put(list.out, "\n");
    list.onLine = 0;
}

void endList(ListWriter& list) {
    put(list.out, list.onLine == 0 ? "/\n" : "\n/\n");
}

void putText(ListWriter& list, std::string_view text) {
    put(list.out, list.onLine == 0 ? "" : " ");
    put(list.out, text);
    if (++list.onLine < ValuesPerLine) return;
    put(list.out, "\n");
    list.onLine = 0;
}

/// The shortest text that reads back as the same single-precision number.
void putValue(ListWriter& list, float value) {
    if (list.lastLength == 0 || value != list.lastValue) {
        list.lastLength = fmt::format_to_n(list.lastText, sizeof list.lastText, "{}", value).size;
        list.lastValue = value;
    }
    putText(list, {list.lastText, list.lastLength});
}

float deckLength(float feet, double lengthFactor) {
    return static_cast<float>(static_cast<double>(feet) / lengthFactor);
}

/// Each pillar runs through the cell that holds its node last, from that column's top to its bottom.
void writePillars(ListWriter& list, const GridModel& grid, double lengthFactor) {
    beginList(list, "COORD");
    for (int j = 1; j <= grid.NY + 1; ++j)
        for (int i = 1; i <= grid.NX + 1; ++i) {
            const int ci = std::min(i, grid.NX);
            const int cj = std::min(j, grid.NY);
            const int corner = 1 + (i - ci) + 2 * (j - cj);
            const float* top = cornerOf(grid, cellIndex(grid, ci, cj, 1), corner);
            const float* bottom = cornerOf(grid, cellIndex(grid, ci, cj, grid.NZ), corner + 4);
            for (int r = 0; r < 3; ++r) putValue(list, deckLength(top[r], lengthFactor));
            for (int r = 0; r < 3; ++r) putValue(list, deckLength(bottom[r], lengthFactor));
        }
    endList(list);
}

/// Depths of one row of corners: every cell of row (j, k), two corners each along x.
void writeCornerRow(ListWriter& list, const GridModel& grid, int j, int k, int firstCorner,
                    double lengthFactor) {
    for (int i = 1; i <= grid.NX; ++i) {
        const CellId cell = cellIndex(grid, i, j, k);
        putValue(list, deckLength(cornerOf(grid, cell, firstCorner)[2], lengthFactor));
        putValue(list, deckLength(cornerOf(grid, cell, firstCorner + 1)[2], lengthFactor));
    }
}

void writeDepths(ListWriter& list, const GridModel& grid, double lengthFactor) {
    beginList(list, "ZCORN");
    for (int k = 1; k <= grid.NZ; ++k)
        for (const int upperOrLower : {1, 5})
            for (int j = 1; j <= grid.NY; ++j)
                for (const int nearOrFar : {0, 2})
                    writeCornerRow(list, grid, j, k, upperOrLower + nearOrFar, lengthFactor);
    endList(list);
}

void writeActivity(ListWriter& list, const GridModel& grid) {
    beginList(list, "ACTNUM");
    for (CellId cell = 1; cell <= grid.NCELLS; ++cell) putText(list, grid.Active[cell] != 0 ? "1" : "0");
    endList(list);
}

}  // namespace

void fillTopsBelow(GridModel& grid) {
    const CellId layer = grid.NX * grid.NY;
    for (CellId cell = layer + 1; cell <= grid.NCELLS; ++cell)
        grid.TOPS[cell] = grid.TOPS[cell - layer] + grid.DZ[cell - layer];
}

void buildBlockGrid(GridModel& grid, double volumeFactor) {
    std::vector<double> columnY(static_cast<std::size_t>(grid.NX) + 1);
    for (int k = 1; k <= grid.NZ; ++k) buildLayer(grid, k, columnY);
    estimateVolumes(grid, volumeFactor);
}

int unjoinedPillars(const GridModel& grid) {
    constexpr float Slack = 1e-4F;  // of a coordinate, and ft: single precision adds up sizes
    const auto apart = [](float a, float b) { return std::abs(a - b) > Slack * (1.0F + std::abs(a)); };
    std::vector<std::uint8_t> open(static_cast<std::size_t>(grid.NX + 1) *
                                   static_cast<std::size_t>(grid.NY + 1));
    constexpr int Corners = 8;
    for (CellId cell = 1; cell <= grid.NCELLS; ++cell)
        for (int corner = 0; corner < Corners; ++corner) {
            const int i = grid.CellI[cell] + corner % 2, j = grid.CellJ[cell] + corner / 2 % 2;
            const int ci = std::min(i, grid.NX), cj = std::min(j, grid.NY);
            const float* pillar = cornerOf(grid, cellIndex(grid, ci, cj, 1), 1 + (i - ci) + 2 * (j - cj));
            const float* own = cornerOf(grid, cell, corner + 1);
            if (apart(pillar[0], own[0]) || apart(pillar[1], own[1]))
                open[static_cast<std::size_t>(j - 1) * static_cast<std::size_t>(grid.NX + 1) +
                     static_cast<std::size_t>(i - 1)] = 1;
        }
    return static_cast<int>(std::count(open.begin(), open.end(), 1));
}

int writeCornerPointDeck(const GridModel& grid, double lengthFactor, const std::string& path) {
    ListWriter list;
    list.out.file = std::fopen(path.c_str(), "w");
    if (list.out.file == nullptr) return errno;
    writePillars(list, grid, lengthFactor);
    writeDepths(list, grid, lengthFactor);
    writeActivity(list, grid);
    flush(list.out);
    const bool failed = std::ferror(list.out.file) != 0;
    if (std::fclose(list.out.file) == 0 && !failed) return 0;
    std::remove(path.c_str());
    return EIO;
}

}  // namespace kvr
