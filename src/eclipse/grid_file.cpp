#include "eclipse/grid_file.hpp"

#include "eclipse/cell_arrays.hpp"
#include "eclipse/file_failure.hpp"
#include "eclipse/file_names.hpp"
#include "run/records/output_table.hpp"

namespace kvr {

namespace {

constexpr std::size_t HeadSlots = 100;
constexpr std::size_t PillarValues = 6;
constexpr std::array<std::string_view, 2> GridUnit = {"FEET", ""};
constexpr std::array<std::string_view, 5> Orientation = {"INC", "INC", "INC", "DOWN", "RIGHT"};

HeadList<HeadSlots> fileHead(const RunOptions& options) {
    constexpr std::int32_t Version = 3, ReleaseYear = 2012, CompatibleFrom = 43;
    HeadList<HeadSlots> head;
    head[1] = Version;
    head[2] = ReleaseYear;
    head[3] = CompatibleFrom;
    head[7] = options.useNewtran ? 1 : 0;
    return head;
}

/// Both heads share one list: what is not set here keeps its value of the file head.
void turnIntoGridHead(const GridModel& grid, HeadList<HeadSlots>& head) {
    constexpr std::int32_t CornerPoint = 1, Reservoirs = 1, CoordinateLines = 1;
    head[1] = CornerPoint;
    head[2] = grid.NX;
    head[3] = grid.NY;
    head[4] = grid.NZ;
    head[25] = Reservoirs;
    head[26] = CoordinateLines;
}

/// x, y, z of the node in the top layer, then in the bottom one.
float pillarValue(const GridModel& grid, std::size_t n) {
    const std::size_t pillar = n / PillarValues;
    const std::size_t part = n % PillarValues;
    const auto row = static_cast<std::size_t>(grid.NX) + 1;
    const int i = static_cast<int>(pillar % row) + 1;
    const int j = static_cast<int>(pillar / row) + 1;
    const std::size_t node = nodeIndex(grid, i, j, part < 3 ? 1 : grid.NZ + 1);
    const std::array<const std::vector<double>*, 3> axes = {&grid.NodeX, &grid.NodeY, &grid.NodeZ};
    return static_cast<float>((*axes[part % 3])[node]);
}

/// Goes through corner depths in the order of the file: along i two corners a cell, then the second row of
/// the cells, then the next row of cells, then the lower corners of the layer.
struct CornerWalk {
    const GridModel& grid;
    int column = 0, row = 0, layer = 0;  // in corners, two a cell

    float next() {
        const CellId cell = cellIndex(grid, column / 2 + 1, row / 2 + 1, layer / 2 + 1);
        const int corner = 1 + column % 2 + 2 * (row % 2) + 4 * (layer % 2);
        if (++column == 2 * grid.NX) {
            column = 0;
            if (++row == 2 * grid.NY) {
                row = 0;
                ++layer;
            }
        }
        return cornerOf(grid, cell, corner)[2];
    }
};

void writeGeometry(const GridModel& grid, RecordWriter& writer) {
    const std::int32_t pillarCount = (grid.NX + 1) * (grid.NY + 1);
    write_keyword<float>(writer, "COORD", static_cast<std::int32_t>(PillarValues) * pillarCount,
                         [&](std::size_t n) { return pillarValue(grid, n); });
    CornerWalk walk{grid};
    write_keyword<float>(writer, "ZCORN", 8 * grid.NCELLS, [&](std::size_t) { return walk.next(); });
    write_keyword<std::int32_t>(writer, "ACTNUM", grid.NCELLS, [&](std::size_t n) {
        return static_cast<std::int32_t>(grid.Active[static_cast<CellId>(n) + 1]);
    });
}

}  // namespace

void writeGridFile(const Console& console, const RunOptions& options, const GridModel& grid) {
    if (!isOn(options, OutputSwitch::Eclipse)) return;
    RecordWriter writer;
    openOrStop(console, runFile(options, ".EGRID"), writer);
    HeadList<HeadSlots> head = fileHead(options);
    writeHead(writer, "FILEHEAD", head);
    writeWords(writer, "GRIDUNIT", GridUnit);
    writeWords(writer, "GDORIENT", Orientation);
    turnIntoGridHead(grid, head);
    writeHead(writer, "GRIDHEAD", head);
    writeGeometry(grid, writer);
    write_header(writer, "ENDGRID", 0, ElementType::Inte);
    closeOrStop(console, writer);
}

}  // namespace kvr
