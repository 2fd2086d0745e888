#include "eclipse/init_reader.hpp"

#include "base/messages.hpp"
#include "base/text.hpp"
#include "eclipse/cell_arrays.hpp"
#include "eclipse/file_failure.hpp"
#include "eclipse/file_names.hpp"
#include "eclipse/init_file.hpp"
#include "eclipse/keyword_loop.hpp"
#include "model/grid_memory.hpp"

#include <algorithm>
#include <cmath>

namespace kvr {

namespace {

constexpr std::size_t LeastHeadSlots = 67;  // as far as the checks look

// Values of a file below 0 or above these, or that are no numbers, are left out.
constexpr double MostSize = 1e9, MostPermeability = 1e12, MostShare = 1e6, MostTrans = 1e15,
                 MostVolume = 1e18;

/// A pore volume that differs by less from porosity times net-to-gross times bulk volume is that product in
/// single precision.
constexpr double PoreVolumeRounding = 1e-4;

struct PropertyRow {
    std::string_view keyword;
    std::string_view alternative;  // blank: none
    CellArray<double> GridModel::*values;
    double most;
};
constexpr PropertyRow Properties[] = {
    {"DX      ", "", &GridModel::DX, MostSize},
    {"DY      ", "", &GridModel::DY, MostSize},
    {"DZ      ", "", &GridModel::DZ, MostSize},
    {"PERMX   ", "XPERM   ", &GridModel::PERMX, MostPermeability},
    {"PERMY   ", "YPERM   ", &GridModel::PERMY, MostPermeability},
    {"PERMZ   ", "ZPERM   ", &GridModel::PERMZ, MostPermeability},
    {"NTG     ", "", &GridModel::NTG, MostShare},
    {"PORO    ", "POROSITY", &GridModel::PORO, MostShare},
};

struct TransRow {
    std::string_view keyword;
    std::string_view alternative;
    int face;  // the high face along the axis
};
constexpr TransRow TransRows[] = {
    {"TRANX   ", "XTRANS  ", 2}, {"TRANY   ", "YTRANS  ", 4}, {"TRANZ   ", "ZTRANS  ", 6}};

constexpr std::array<std::string_view, 4> GridTypes = {
    "        -> Corner Pint Grid Detected", "        -> Unstructured Grid Detected",
    "        -> Hybrid Grid Detected", "        -> Block Centerd Grid Detected"};

struct HeadCheck {
    std::size_t slot;
    std::int32_t expected;
    std::string_view message;
};

std::int32_t slotOf(const std::vector<std::int32_t>& head, std::size_t slot) {
    return head[slot - 1];
}

void checkHead(const Console& console, const RunOptions& options, const GridModel& grid,
               const std::vector<std::int32_t>& head) {
    const HeadCheck checks[] = {
        {inte_head::Units, inte_head::FieldUnits,
         " ERROR :: Reading Init file, Non Field unit is not surpported."},
        {inte_head::NX, grid.NX, " ERROR :: Nx not match from INIT and KVR"},
        {inte_head::NY, grid.NY, " ERROR :: Ny not match from INIT and KVR"},
        {inte_head::NZ, grid.NZ, " ERROR :: Nz not match from INIT and KVR"},
        {inte_head::ActiveCells, activeCount(grid), " ERROR :: ACTNUM not match from INIT and KVR"}};
    for (const HeadCheck& check : checks)
        if (slotOf(head, check.slot) != check.expected) lineToBoth(console, check.message);
    const HeadCheck dates[] = {{inte_head::Day, options.startDay, ""},
                               {inte_head::Month, options.startMonth, ""},
                               {inte_head::Year, options.startYear, ""}};
    for (const HeadCheck& check : dates) {
        if (slotOf(head, check.slot) == check.expected) continue;
        lineToLog(console, " ERROR :: Time not match from INIT and KVR");
        lineToScreen(console, " ERROR :: Time not match from INIT and KVR");
    }
}

void tellGridType(const Console& console, std::int32_t type) {
    if (type >= 0 && type < static_cast<std::int32_t>(GridTypes.size()))
        lineToBoth(console, GridTypes[static_cast<std::size_t>(type)]);
}

/// Whether the rest of the file has a PORV block of `cells` values.
bool poreVolumesFollow(RecordReader& reader, std::uint64_t cells) {
    BlockHeader header;
    while (read_header(reader, header) == ReadResult::Ok) {
        if (view(header.keyword) == "PORV    ") return static_cast<std::uint64_t>(header.count) == cells;
        if (skip_block(reader, header) == ReadResult::Error) return false;
    }
    return false;
}

ReadResult createCells(RecordReader& reader, const BlockHeader& header, const std::vector<std::int32_t>& head,
                       GridModel& grid) {
    const int nx = slotOf(head, inte_head::NX), ny = slotOf(head, inte_head::NY),
              nz = slotOf(head, inte_head::NZ);
    if (checkGridSize(nx, ny, nz) != GridSize::Usable)
        return rejectBlock(reader, header, "a grid of these dimensions cannot be held");
    const auto cells =
        static_cast<std::uint64_t>(nx) * static_cast<std::uint64_t>(ny) * static_cast<std::uint64_t>(nz);
    if (!poreVolumesFollow(reader, cells))
        return rejectBlock(reader, header, "the file has no pore volumes for a grid of these dimensions");
    grid.NX = nx;
    grid.NY = ny;
    grid.NZ = nz;
    if (!allocateGrid(grid)) return rejectBlock(reader, header, "there is no memory for so many cells");
    return ReadResult::EndOfFile;
}

/// Hands out every value of a block from 0 to `most` with its cell: of all cells, or else of the active ones
/// as far as there are values and cells; that their counts differ, and how many values are none, is told.
template <class Take>
void spread(const Console& console, const BlockHeader& header, const std::vector<float>& values,
            const GridModel& grid, double most, Take take) {
    const bool whole = values.size() == static_cast<std::size_t>(grid.NCELLS);
    const auto active = static_cast<std::size_t>(activeCount(grid));
    if (!whole && values.size() != active)
        warn(console, " WARNING :: {} of INIT has {} values, {} cells and {} active ones are expected",
             trim(view(header.keyword)), values.size(), grid.NCELLS, active);
    const std::size_t count = whole ? values.size() : std::min(values.size(), active);
    ActiveWalk walk{grid};
    long long leftOut = 0;
    for (std::size_t n = 0; n < count; ++n) {
        const CellId cell = whole ? static_cast<CellId>(n) + 1 : walk.next();
        const auto value = static_cast<double>(values[n]);
        if (value >= 0.0 && value <= most)
            take(cell, value);
        else
            ++leftOut;
    }
    if (leftOut > 0)
        warn(console, " WARNING :: {} values of {} in INIT are beyond its range and left out", leftOut,
             trim(view(header.keyword)));
}

/// Puts a value from a file into its place. Gives the difference to what stood there, as far as it shows in
/// the single precision of the file.
double replace(double& held, double value) {
    const double difference = std::abs(static_cast<double>(static_cast<float>(held)) - value);
    held = value;
    return difference;
}

double productPoreVolume(const GridModel& grid, CellId cell) {
    return grid.PORO[cell] * grid.NTG[cell] * grid.BulkVolume[cell];
}

void rebuildPoreVolumes(GridModel& grid) {
    grid.PORV.assign(grid.NCELLS, 0.0);
    for (CellId cell = 1; cell <= grid.NCELLS; ++cell) grid.PORV[cell] = productPoreVolume(grid, cell);
}

/// What the run has had so far: nothing in cells that take no part.
void holdPresentPoreVolumes(GridModel& grid) {
    rebuildPoreVolumes(grid);
    for (CellId cell = 1; cell <= grid.NCELLS; ++cell)
        if (grid.Active[cell] == 0) grid.PORV[cell] = 0.0;
}

/// Pores of the outside run where it has edited them (MULTPV, PORV): the porosity becomes what gives its pore
/// volume with the net-to-gross and the bulk volume held, so that everything that reads the rock has it.
void adoptPoreVolumes(GridModel& grid) {
    for (CellId cell = 1; cell <= grid.NCELLS; ++cell) {
        const double rock = grid.NTG[cell] * grid.BulkVolume[cell];
        const double held = grid.PORO[cell] * rock, wanted = grid.PORV[cell];
        if (grid.Active[cell] == 0 || !(rock > 0.0) || !(wanted > 0.0)) continue;
        if (std::abs(wanted - held) > PoreVolumeRounding * held) grid.PORO[cell] = wanted / rock;
    }
}

bool names(const BlockHeader& header, std::string_view keyword, std::string_view alternative) {
    return view(header.keyword) == keyword || view(header.keyword) == alternative;
}

struct InitTarget {
    const Console& console;
    const UnitSystem& units;
    GridModel& grid;
    ConnectionTable& connections;
    InitDifferences& differences;
    bool poreVolumeSeen = false;
};

void takePoreVolumes(const BlockHeader& header, const BlockData& data, InitTarget& target) {
    target.poreVolumeSeen = true;
    const double factor = CubicFeetPerBarrel / target.units.VolumeFactor;  // rb to internal volume
    spread(target.console, header, data.reals, target.grid, MostVolume, [&](CellId cell, double value) {
        target.differences.poreVolume += replace(target.grid.PORV[cell], value * factor);
    });
}

/// Takes a block that the table of its kind names; false where no table does.
bool takeNamed(const BlockHeader& header, const BlockData& data, InitTarget& target) {
    for (const PropertyRow& row : Properties) {
        if (!names(header, row.keyword, row.alternative)) continue;
        spread(target.console, header, data.reals, target.grid, row.most,
               [&](CellId cell, double value) { (target.grid.*row.values)[cell] = value; });
        return true;
    }
    for (std::size_t axis = 0; axis < std::size(TransRows); ++axis) {
        const TransRow& row = TransRows[axis];
        if (!names(header, row.keyword, row.alternative)) continue;
        spread(target.console, header, data.reals, target.grid, MostTrans, [&](CellId cell, double value) {
            target.differences.trans[axis] += replace(target.connections.Trans(cell, row.face), value);
        });
        return true;
    }
    if (view(header.keyword) != "PORV    ") return false;
    takePoreVolumes(header, data, target);
    return true;
}

/// Slots 1, 3, 5 from the high faces of the neighbours there.
void fillLowFaces(const GridModel& grid, ConnectionTable& connections) {
    for (CellId cell = 1; cell <= grid.NCELLS; ++cell)
        for (int low = 1; low <= 5; low += 2) {
            const CellId neighbour = connections.Neighbour(cell, low);
            if (neighbour > 0) connections.Trans(cell, low) = connections.Trans(neighbour, low + 1);
        }
}

void tellDifferences(const Console& console, const InitDifferences& differences) {
    both(console, "Sum Trans Error : X direc = {}", number(differences.trans[0]));
    both(console, "Sum Trans Error : Y direc = {}", number(differences.trans[1]));
    both(console, "Sum Trans Error : Z direc = {}", number(differences.trans[2]));
    both(console, "Sum Porev Error :         = {}", number(differences.poreVolume));
}

/// The header: a model without cells gets those that it tells, another is compared with it.
ReadResult takeHead(const Console& console, const RunOptions& options, RecordReader& reader,
                    const BlockHeader& header, const std::vector<std::int32_t>& head, GridModel& grid) {
    const bool fresh = grid.NCELLS == 0;
    if (head.size() < LeastHeadSlots) {
        if (fresh) return rejectBlock(reader, header, "a longer list of integers was expected");
        warn(console, " WARNING :: INTEHEAD of INIT has {} values, nothing is compared with it", head.size());
        return ReadResult::Ok;
    }
    logEmployed(console, header);
    if (fresh) return createCells(reader, header, head, grid);
    checkHead(console, options, grid, head);
    tellGridType(console, slotOf(head, inte_head::GridType));
    return ReadResult::Ok;
}

}  // namespace

ReadResult readInitBlocks(const Console& console, const RunOptions& options, const UnitSystem& units,
                          RecordReader& reader, GridModel& grid, ConnectionTable& connections,
                          InitDifferences& differences) {
    const bool fresh = grid.NCELLS == 0;
    if (!fresh && grid.PORV.empty()) holdPresentPoreVolumes(grid);
    InitTarget target{console, units, grid, connections, differences};
    const ReadResult result = readBlocks(reader, [&](const BlockHeader& header, const BlockData& data) {
        if (view(header.keyword) == "INTEHEAD")
            return takeHead(console, options, reader, header, data.integers, grid);
        if (fresh || !takeNamed(header, data, target))
            logNeglected(console, header);
        else
            logEmployed(console, header);
        return ReadResult::Ok;
    });
    if (result == ReadResult::Error || fresh) return result;
    fillLowFaces(grid, connections);
    if (target.poreVolumeSeen)
        adoptPoreVolumes(grid);
    else
        rebuildPoreVolumes(grid);
    return result;
}

void input_INIT_TRANS(const Console& console, const RunOptions& options, const UnitSystem& units,
                      std::string_view header, GridModel& grid, ConnectionTable& connections) {
    logReaderStart(console, " Function Callecd  : input_INIT_TRANS");
    const std::string path = outsideFile(options, header, ".INIT");
    const bool fresh = grid.NCELLS == 0;
    InitDifferences differences;
    RecordReader reader;
    if (open_read(path, ByteOrder::Big, reader) != 0) {
        warn(console, " ECLIPSE .INIT File Not Found :: {}", path);
        return;
    }
    if (readInitBlocks(console, options, units, reader, grid, connections, differences) == ReadResult::Error)
        stopOnRecordFault(console, reader);
    close(reader);
    if (!fresh) tellDifferences(console, differences);
    logReaderEnd(console, " Function End Normally: input_INIT_TRANS");
}

}  // namespace kvr
