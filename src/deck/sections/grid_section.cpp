#include "deck/sections/grid_section.hpp"

#include "base/hard_stop.hpp"
#include "deck/reading/keyword_table.hpp"
#include "deck/reading/unit_copies.hpp"
#include "deck/sections/given_arrays.hpp"
#include "deck/sections/grid_arithmetic.hpp"
#include "deck/sections/grid_barriers.hpp"
#include "deck/sections/grid_checks.hpp"
#include "deck/sections/grid_continua.hpp"
#include "model/array_arithmetic.hpp"
#include "model/block_grid.hpp"
#include "model/corner_point.hpp"
#include "model/dual_porosity.hpp"
#include "run/records/output_table.hpp"

#include <array>
#include <limits>
#include <tuple>
#include <utility>
#include <vector>

namespace kvr {

namespace {

void sayGridKeyword(SectionReader& reader, GridRecords&) {
    lineToBoth(consoleOf(reader), "Grid keyword found.. read here as grid section");
}

void beginArray(SectionReader& reader) {
    announce(reader, reader.keyword);
    skipCommentLines(reader);
}

// --- arrays of one value per cell ------------------------------------------------------------------

constexpr double AnyValue = std::numeric_limits<double>::max();
constexpr ValueRule Porosity{-AnyValue, 1.0, true};  // below 0: the cell takes no part, see grid_checks
constexpr ValueRule NetToGross{-AnyValue, 1.0, false};
constexpr ValueRule Size{0.0, AnyValue, false};

template <CellArray<double> GridModel::*Array>
void readRock(SectionReader& reader, GridRecords& records) {
    beginArray(reader);
    readCellArray(reader, (records.grid.*Array).cells());
}

template <CellArray<double> GridModel::*Array, const ValueRule& Rule>
void readRuledRock(SectionReader& reader, GridRecords& records) {
    beginArray(reader);
    readCheckedArray(reader, Rule, (records.grid.*Array).cells());
}

template <CellArray<double> GridModel::*Array>
void readSize(SectionReader& reader, GridRecords& records) {
    beginArray(reader);
    readCheckedArray(reader, Size, (records.grid.*Array).cells(), reader.units->length,
                     reader.units->copyLength);
    records.grid.blockInput = true;
}

/// Cell sizes along x also turn the corner formula off.
void readDx(SectionReader& reader, GridRecords& records) {
    readSize<&GridModel::DX>(reader, records);
    records.options.useNewtran = false;
}

void readActnum(SectionReader& reader, GridRecords& records) {
    beginArray(reader);
    std::vector<int> flags(static_cast<std::size_t>(records.grid.NCELLS), 1);
    if (reader.box.isSet)
        flags.assign(records.grid.Active.cells().begin(), records.grid.Active.cells().end());
    readCellArray(reader, std::span<int>(flags));
    for (CellId cell = 1; cell <= records.grid.NCELLS; ++cell)
        records.grid.Active[cell] = flags[static_cast<std::size_t>(cell) - 1] != 0 ? 1 : 0;
}

// --- sizes by axis ---------------------------------------------------------------------------------

/// One size per position of an axis, copied to every cell of that plane.
void readAxis(SectionReader& reader, GridModel& grid, CellArray<double>& sizes,
              const CellArray<int>& position, int count) {
    beginArray(reader);
    std::vector<double> axis(static_cast<std::size_t>(count), 0.0);
    readArray(reader, std::span<double>(axis), reader.units->length, reader.units->copyLength);
    for (CellId cell = 1; cell <= grid.NCELLS; ++cell)
        sizes[cell] = axis[static_cast<std::size_t>(position[cell]) - 1];
    grid.blockInput = true;
}

void readDxv(SectionReader& reader, GridRecords& records) {
    GridModel& grid = records.grid;
    readAxis(reader, grid, grid.DX, grid.CellI, grid.NX);
}

void readDyv(SectionReader& reader, GridRecords& records) {
    GridModel& grid = records.grid;
    readAxis(reader, grid, grid.DY, grid.CellJ, grid.NY);
}

void readDzv(SectionReader& reader, GridRecords& records) {
    GridModel& grid = records.grid;
    readAxis(reader, grid, grid.DZ, grid.CellK, grid.NZ);
}

// --- tops ------------------------------------------------------------------------------------------

/// Values of the first layer, or of all cells: only the first layer is used, so that the second reading of
/// the keyword's data settles whatever else the first one found.
void readSurface(SectionReader& reader, GridModel& grid) {
    lineToBoth(consoleOf(reader), "-> Only NX*NY Data Will be Extracted");
    skipCommentLines(reader);
    const std::size_t layer = static_cast<std::size_t>(grid.NX) * static_cast<std::size_t>(grid.NY);
    const std::span<double> tops = grid.TOPS.cells();
    const UnitSystem& units = *reader.units;
    if (reader.box.isSet) return readCellArray(reader, tops, units.length, units.copyLength);
    DeckCursor& cursor = *reader.cursor;
    const auto before = std::tuple(cursor.position, cursor.previousLine, cursor.lineNumber);
    const ListEnd end = readDoubles(cursor, tops, units.length);
    if (end.error == ListError::None && end.surplus == 0 && static_cast<std::size_t>(end.count) >= layer) {
        copyArray(reader, std::span<const double>(tops.first(layer)), units.length, units.copyLength);
        return;
    }
    std::tie(cursor.position, cursor.previousLine, cursor.lineNumber) = before;
    readArray(reader, tops.first(layer), units.length, units.copyLength);
}

void readTops(SectionReader& reader, GridRecords& records) {
    announce(reader, reader.keyword);
    readSurface(reader, records.grid);
}

void readDepthz(SectionReader& reader, GridRecords& records) {
    announce(reader, "DEPTHZ as TOPS");
    readSurface(reader, records.grid);
}

// --- corner point ----------------------------------------------------------------------------------

void readMapaxes(SectionReader& reader, GridRecords& records) {
    beginArray(reader);
    checkRead(reader, readDoubles(*reader.cursor, records.grid.mapAxes));
}

void readCoord(SectionReader& reader, GridRecords& records) {
    GridModel& grid = records.grid;
    beginArray(reader);
    constexpr std::size_t PillarValues = 6;
    grid.COORD.assign(
        PillarValues * static_cast<std::size_t>(grid.NX + 1) * static_cast<std::size_t>(grid.NY + 1), 0.0F);
    readArray(reader, std::span<float>(grid.COORD), reader.units->length, reader.units->copyLength);
    grid.coordAfterZcorn = !grid.ZCORN.empty();
}

void buildFromCorners(const SectionReader& reader, GridModel& grid) {
    CALC_RESERVOIR_COORDINATE_FRMCOORD(grid, reader.units->VolumeFactor);
    grid.coordAfterZcorn = false;
}

void readZcorn(SectionReader& reader, GridRecords& records) {
    GridModel& grid = records.grid;
    beginArray(reader);
    grid.ZCORN.assign(8 * static_cast<std::size_t>(grid.NCELLS), 0.0F);
    readArray(reader, std::span<float>(grid.ZCORN), reader.units->length, reader.units->copyLength);
    if (!grid.COORD.empty()) buildFromCorners(reader, grid);
}

// --- J-function ------------------------------------------------------------------------------------

void readJfunc(SectionReader& reader, GridRecords& records) {
    RunOptions& options = records.options;
    beginArray(reader);
    std::string word;
    const std::array<ListTarget, 2> targets = {&word, &options.surfaceTension};
    checkRead(reader, readList(*reader.cursor, targets));
    options.useJFunction = true;
    const Console& console = consoleOf(reader);
    lineToBoth(console, "NOTE :: J-FUCNTION GIVEN, USE ONLY 2nd PARAM, USE DEFAULT FOR ELSE");
    both(console, ":: SURFACE TENTION = {}", number(options.surfaceTension));
    lineToBoth(console, "     :: (Will be multiplied by 4.61678)");
    copyKeyword(reader);
    copyRow(reader, {{0.0, 1.0, word}, {options.surfaceTension, 1.0, {}}});
}

// --- multipliers ------------------------------------------------------------------------------------

template <int Face>
void readMultiplierOf(SectionReader& reader, GridRecords& records) {
    readFaceMultiplier(reader, Face, records.grid);
}

void readMultpv(SectionReader& reader, GridRecords& records) {
    readPoreVolumeMultiplier(reader, records.grid);
}

void readLeastPoreVolume(SectionReader& reader, GridRecords& records) {
    readMinpv(reader, records.grid);
}

void readPinchOuts(SectionReader& reader, GridRecords& records) {
    readPinch(reader, records.grid);
}

void readNnc(SectionReader& reader, GridRecords& records) {
    readConnectionRows(reader, ConnectionRow::Means::Add, records.grid);
}

void readMultregt(SectionReader& reader, GridRecords& records) {
    readRegionMultipliers(reader, records.grid);
}

void readFaultRows(SectionReader& reader, GridRecords& records) {
    readFaults(reader, records.grid);
}
void readFaultMultiplierRows(SectionReader& reader, GridRecords& records) {
    readFaultMultipliers(reader, FaultMeans::Replace, records.grid, records.grid.faultMultipliers);
}

/// Region numbers by cell; cells left out stand in region 1.
template <CellArray<int> GridModel::*Array>
void readNumbers(SectionReader& reader, GridRecords& records) {
    beginArray(reader);
    CellArray<int>& numbers = records.grid.*Array;
    if (numbers.empty()) numbers.assign(records.grid.NCELLS, 1);
    readCellArray(reader, numbers.cells());
}

using Row = KeywordRow<GridRecords>;

constexpr std::array Keywords = {
    Row{"GRID", sayGridKeyword, "the section word"},
    Row{"MAPAXES", readMapaxes, "six map coordinates, kept for streamline files"},
    Row{"COORD", readCoord, "pillars, six values each"},
    Row{"ZCORN", readZcorn, "depths of the corners, eight per cell; the geometry is built from them"},
    Row{"DX", readDx, "cell sizes along x, one per cell; turns the corner formula off"},
    Row{"DY", readSize<&GridModel::DY>, "cell sizes along y, one per cell"},
    Row{"DZ", readSize<&GridModel::DZ>, "cell sizes along z, one per cell"},
    Row{"DXV", readDxv, "cell sizes along x, one per column"},
    Row{"DYV", readDyv, "cell sizes along y, one per row"},
    Row{"DZV", readDzv, "cell sizes along z, one per layer"},
    Row{"TOPS", readTops, "depths of the tops of the first layer; values of lower layers are not used"},
    Row{"DEPTHZ", readDepthz, "as TOPS"},
    Row{"PORO", readRuledRock<&GridModel::PORO, Porosity>, "porosity, one value per cell"},
    Row{"PERMX", readRock<&GridModel::PERMX>, "permeability along x in md, one value per cell"},
    Row{"PERMY", readRock<&GridModel::PERMY>, "permeability along y in md, one value per cell"},
    Row{"PERMZ", readRock<&GridModel::PERMZ>, "permeability along z in md, one value per cell"},
    Row{"NTG", readRuledRock<&GridModel::NTG, NetToGross>, "net-to-gross ratio, one value per cell"},
    Row{"ACTNUM", readActnum, "1 active, 0 inactive, one value per cell"},
    Row{"JFUNC", readJfunc, "J-function: a word and the surface tension"},
    Row{"COPY", readCopy,
        "copies PERMX, PERMY or PERMZ to another of them, whole arrays; in a named deck more arrays and a "
        "box, see "
        "the [guide](user-guide.md)"},
    Row{"MULTIPLY", readMultiply,
        "multiplies PERMX, PERMY, PERMZ, PORV, MULTPV, MULTX, MULTY, MULTZ, MULTX-, MULTY-, MULTZ- over a "
        "box; in a named deck any array of EQUALS"},
    Row{"EQUALS", readEquals,
        "sets PERMX, PERMY, PERMZ, PORO, DX, DY, DZ, TOPS, MULTPV, MULTX-, MULTY-, MULTZ- over a box; MULTX, "
        "MULTY, MULTZ multiply both connections of each cell along the axis; in a named deck they set that "
        "to the "
        "upper neighbour, and NTG, ACTNUM, MULTNUM, FLUXNUM, OPERNUM can be set, too"},
    Row{"ADD", readAdd, "adds to PERMX, PERMY, PERMZ, PORO, NTG, MULTPV over a box"},
    Row{"EQUALREG", readEqualreg,
        "rows of PERMX, PERMY, PERMZ, PORO, NTG or MULTPV, a value, a region and its numbering (M, F, O): "
        "sets "
        "the array where MULTNUM, FLUXNUM or OPERNUM has that number"},
    Row{"MULTIREG", readMultireg, "the same, multiplies"},
    Row{"ADDREG", readAddreg, "the same, adds"},
    Row{"MULTNUM", readNumbers<&GridModel::MULTNUM>,
        "region of each cell for `EQUALREG`, `MULTIREG`, `ADDREG`"},
    Row{"FLUXNUM", readNumbers<&GridModel::FLUXNUM>, "another numbering for the same"},
    Row{"OPERNUM", readNumbers<&GridModel::OPERNUM>, "another numbering for the same"},
    Row{"MULTPV", readMultpv, "of each cell, what its pore volume is multiplied by"},
    Row{"MINPV", readLeastPoreVolume, "pore volume below which a cell takes no part in flow"},
    Row{"PINCH", readPinchOuts,
        "thickness of inactive cells that are pinched out, `GAP` (cells that `MINPV` closes are, too) or "
        "`NOGAP`: the cells above and below them are joined"},
    Row{"MULTX", readMultiplierOf<2>,
        "of each cell, what the connection to its neighbour at i + 1 is multiplied by"},
    Row{"MULTY", readMultiplierOf<4>, "the same at j + 1"},
    Row{"MULTZ", readMultiplierOf<6>, "the same at k + 1"},
    Row{"MULTX-", readMultiplierOf<1>, "the same at i - 1"},
    Row{"MULTY-", readMultiplierOf<3>, "the same at j - 1"},
    Row{"MULTZ-", readMultiplierOf<5>, "the same at k - 1"},
    Row{"NNC", readNnc,
        "rows of I, J, K of two cells and the transmissibility of a connection between them; where they have "
        "one it is added"},
    Row{"MULTREGT", readMultregt,
        "rows of two regions (0 or left out: any other), what connections between them are multiplied by, "
        "axes "
        "(XYZ), ALL, NNC or NONNC, and a numbering (M, F, O)"},
    Row{"FAULTS", readFaultRows,
        "rows of a name, I1, I2, J1, J2, K1, K2 and a face (X, X-, Y, Y-, Z, Z- or I, J, K): the faces of a "
        "fault"},
    Row{"MULTFLT", readFaultMultiplierRows,
        "rows of a fault, or the begin of names and an asterisk, and what the connections through its faces "
        "are multiplied by"},
    Row{"DPGRID", readDpgrid,
        "dual porosity: what GRID leaves out of the fractures is as in the matrix; arrays may be given for "
        "the "
        "upper half alone"},
    Row{"SIGMA", readSigma, "dual porosity: shape factor of all matrix blocks"},
    Row{"SIGMAV", readSigmav, "the same, one value per cell; those of the matrix, the upper half, are used"},
    Row{"*shape", readSigma, "`*shape factor`: `SIGMA`"},
    Row{"*phim", readMatrixPorosity,
        "porosity of the matrix alone, one value per cell of the upper half; stands behind `PORO`"},
    Row{"DZMTRX", readDzmtrx, "dual porosity: height of all matrix blocks, for gravity drainage"},
    Row{"DZMTRXV", readDzmtrxv, "the same, one value per cell; those of the upper half are used"},
    Row{"NODPPM", readNodppm, "as in `RUNSPEC`"},
    Row{"DPNUM", refuseDpnum, "not known, stops"},
    Row{"RPTGRID", neglect<GridRecords>, "neglected"},
};

constexpr IncludeTexts Texts{"ERROR: INCLUDE File Open Error at GRID section",
                             "File I/O Error, in GRID Section", "INCLUDE FILE FINISHED, GRID SECTION"};

// --- end of the section ----------------------------------------------------------------------------

/// Corner-point input stands, with its formula, whatever block sizes came beside it.
void completeGeometry(const SectionReader& reader, GridRecords& records) {
    GridModel& grid = records.grid;
    const bool corners = !grid.COORD.empty() && !grid.ZCORN.empty();
    if (corners) {
        if (grid.coordAfterZcorn || grid.blockInput) buildFromCorners(reader, grid);
        if (grid.blockInput) records.options.useNewtran = true;
        grid.blockInput = false;
        grid.joinsAcrossFaults = reader.commonForm;
        return;
    }
    if (!grid.blockInput) return;
    const Console& console = consoleOf(reader);
    lineToBoth(console, "-> Calculating Geometry...");
    fillTopsBelow(grid);
    buildBlockGrid(grid, reader.units->VolumeFactor);
    lineToBoth(console, "-> Geometry Generated successfully.");
}

void leaveCornerPointDeck(const SectionReader& reader, const RunOptions& options, const GridModel& grid) {
    if (options.checkOnly) return;
    const std::string path =
        options.workingFolder + outputFileName(options.outputPrefix, CornerPointDeckName);
    const int status = writeCornerPointDeck(grid, reader.units->length, path);
    const Console& console = consoleOf(reader);
    if (const int open = unjoinedPillars(grid); open > 0)
        warn(console, "WARNING :: COLUMNS OF BLOCKS DO NOT JOIN AT {} PILLARS, {} HOLDS ANOTHER GRID", open,
             outputFileName(options.outputPrefix, CornerPointDeckName));
    if (status == 0) return;
    lineToBoth(console, "ERROR: File Open Error");
    lineToBoth(console, "ERROR: File handling Error");
    both(console, "ERROR: File handling error, code = {}", status);
    lineToBoth(console, "Cannot create file for output. Check Directry path.");
    lineToBoth(console, path);
    hardStop(console);
}

void warnOfUnusedCopies(const SectionReader& reader, const GridModel& grid) {
    if (grid.copyRows.size() <= AppliedCopyRows) return;
    warn(consoleOf(reader), "WARNING :: {} COPY ROWS, ONLY THE FIRST {} ARE APPLIED", grid.copyRows.size(),
         AppliedCopyRows);
}

}  // namespace

void readGridSection(SectionReader& reader, GridRecords& records) {
    GridModel& grid = records.grid;
    checkDimensionsKnown(reader, grid);
    const ArithmeticStart start = arithmeticRowsSoFar(grid);
    dispatchSection<GridRecords>(reader, records, Keywords, Texts);
    lineToBoth(consoleOf(reader), "-> Finished Reading GRID. Move to Next Section");

    requireRegionNumbers(reader, start, grid);
    applyArithmetic(grid, start);
    completeContinua(reader, grid);
    warnOfUnusedCopies(reader, grid);
    completeGeometry(reader, records);
    if (grid.dual.isSet) shareGeometry(grid);
    settleActivity(reader, grid);
    checkGridArrays(reader, grid);
    if (grid.blockInput) leaveCornerPointDeck(reader, records.options, grid);
}

}  // namespace kvr
