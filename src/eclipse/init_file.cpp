#include "eclipse/init_file.hpp"

#include "eclipse/cell_arrays.hpp"
#include "eclipse/file_failure.hpp"
#include "eclipse/file_names.hpp"
#include "run/records/output_table.hpp"

#include <algorithm>

namespace kvr {

namespace {

constexpr std::size_t IntegerSlots = 301;
constexpr std::int32_t LogicalSlots = 111;
constexpr double LeastPoreVolume = 1.0e-19;  // rb; keeps an active cell alive in outside readers
constexpr int HighX = 2, HighY = 4, HighZ = 6;

struct InitSource {
    const GridModel& grid;
    const ConnectionTable& connections;
};

struct CellRow {
    std::string_view keyword;
    double (*value)(const InitSource&, CellId);
};

constexpr CellRow CellRows[] = {
    {"PORO", [](const InitSource& s, CellId c) { return s.grid.PORO[c]; }},
    {"NTG", [](const InitSource& s, CellId c) { return s.grid.NTG[c]; }},
    {"PERMX", [](const InitSource& s, CellId c) { return s.grid.PERMX[c]; }},
    {"PERMY", [](const InitSource& s, CellId c) { return s.grid.PERMY[c]; }},
    {"PERMZ", [](const InitSource& s, CellId c) { return s.grid.PERMZ[c]; }},
    {"TRANX", [](const InitSource& s, CellId c) { return s.connections.Trans(c, HighX); }},
    {"TRANY", [](const InitSource& s, CellId c) { return s.connections.Trans(c, HighY); }},
    {"TRANZ", [](const InitSource& s, CellId c) { return s.connections.Trans(c, HighZ); }},
    {"DEPTH", [](const InitSource& s, CellId c) { return s.grid.CellCentre(c, 3); }},
    {"DX", [](const InitSource& s, CellId c) { return s.grid.DX[c]; }},
    {"DY", [](const InitSource& s, CellId c) { return s.grid.DY[c]; }},
    {"DZ", [](const InitSource& s, CellId c) { return s.grid.DZ[c]; }},
};

HeadList<IntegerSlots> integerHead(const RunOptions& options, const GridModel& grid, CellId active) {
    constexpr std::int32_t Version = 201202, OilWater = 3, OilWaterGas = 7, NoIdentifier = -1;
    HeadList<IntegerSlots> head;
    head[2] = Version;
    head[inte_head::Units] = inte_head::FieldUnits;
    head[inte_head::GridType] = options.useNewtran ? inte_head::CornerPointGrid : inte_head::BlockCentredGrid;
    head[15] = options.hasGas ? OilWaterGas : OilWater;
    head[inte_head::Day] = options.startDay;
    head[inte_head::Month] = options.startMonth;
    head[inte_head::Year] = options.startYear;
    head[95] = NoIdentifier;
    head[inte_head::NX] = head[106] = head[114] = grid.NX;
    head[inte_head::NY] = head[107] = head[115] = grid.NY;
    head[inte_head::NZ] = head[108] = head[116] = grid.NZ;
    head[inte_head::ActiveCells] = head[109] = active;
    head[288] = grid.NCELLS;
    return head;
}

void writeHeads(const RunOptions& options, const GridModel& grid, CellId active, RecordWriter& writer) {
    writeHead(writer, "INTEHEAD", integerHead(options, grid, active));
    write_keyword<bool>(
        writer, "LOGIHEAD", LogicalSlots, [&](std::size_t n) { return n == 0 && options.hasGas; },
        Cut::OneRecord);
    // This file spells the name of the block so; the restart files spell it DOUBHEAD.
    write_keyword<double>(writer, "DOBUHEAD", 1, [](std::size_t) { return 0.0; });
}

double writtenPoreVolume(const UnitSystem& units, const GridModel& grid, CellId cell) {
    if (grid.Active[cell] == 0) return 0.0;
    const double volume = grid.PORO[cell] * grid.NTG[cell] * grid.BulkVolume[cell];
    return std::max(toBarrels(units, volume), LeastPoreVolume);
}

}  // namespace

void writeInitFile(const Console& console, const RunOptions& options, const UnitSystem& units,
                   const GridModel& grid, const ConnectionTable& connections) {
    if (!isOn(options, OutputSwitch::Eclipse)) return;
    const CellId active = activeCount(grid);
    const InitSource source{grid, connections};
    RecordWriter writer;
    openOrStop(console, runFile(options, ".INIT"), writer);
    writeHeads(options, grid, active, writer);
    writeAllCells(writer, "PORV", grid, [&](CellId c) { return writtenPoreVolume(units, grid, c); });
    for (const CellRow& row : CellRows)
        writeActiveCells(writer, row.keyword, grid, active, [&](CellId c) { return row.value(source, c); });
    closeOrStop(console, writer);
    tellGenerated(console, writer.path);
}

}  // namespace kvr
