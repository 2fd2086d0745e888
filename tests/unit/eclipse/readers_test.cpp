#include "eclipse/activity_reader.hpp"
#include "eclipse/grid_file.hpp"
#include "eclipse/grid_reader.hpp"
#include "eclipse/init_file.hpp"
#include "eclipse/init_reader.hpp"
#include "unit/eclipse/block_file.hpp"
#include "unit/eclipse/record_bytes.hpp"
#include "unit/eclipse/small_case.hpp"
#include "unit/quiet_console.hpp"

#include <gtest/gtest.h>
#include <limits>

namespace kvr {
namespace {

std::string integers(std::string_view keyword, const std::vector<std::int32_t>& values) {
    std::string payload;
    for (const std::int32_t value : values) payload += bigEndian32(static_cast<std::uint32_t>(value));
    return headerOf(keyword, static_cast<std::uint32_t>(values.size()), "INTE") + recordOf(payload);
}
std::string reals(std::string_view keyword, const std::vector<float>& values) {
    std::string payload;
    for (const float value : values) payload += bigEndian32(std::bit_cast<std::uint32_t>(value));
    return headerOf(keyword, static_cast<std::uint32_t>(values.size()), "REAL") + recordOf(payload);
}
bool holds(const std::string& text, const std::string& part) {
    return text.find(part) != std::string::npos;
}
std::size_t countOf(const std::string& text, const std::string& part) {
    std::size_t count = 0;
    for (std::size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) ++count;
    return count;
}

struct ReaderCase : SmallCase {
    ReaderCase(int nx, int ny, int nz) : SmallCase(nx, ny, nz) { run.console = quiet.console; }
    void readInit() {
        input_INIT_TRANS(run.console, run.options, run.units, "CASE", run.grid, run.connections);
    }
    void readActivity() { input_ACTNUM_EGRID(run.console, run.options, "CASE", run.grid); }
    void readGrid() { input_GRID(run.console, run.options, run.units, "CASE", run.grid); }
    [[nodiscard]] std::string screenText() const { return quiet.screenText(); }
    [[nodiscard]] std::string logText() const { return quiet.logText(); }
    QuietConsole quiet;
};

std::vector<std::int32_t> initHead(int nx, int ny, int nz, int active) {
    std::vector<std::int32_t> head(301, 0);
    head[2] = 2;
    head[8] = nx;
    head[9] = ny;
    head[10] = nz;
    head[11] = active;
    head[13] = 3;
    head[64] = 3;
    head[65] = 2;
    head[66] = 2001;
    return head;
}

// --- own files ---------------------------------------------------------------------------------------------

TEST(OwnFiles, ReadBackBringNoWarningAndNoDifference) {
    ReaderCase c(4, 3, 2);
    c.run.grid.Active[5] = 0;
    for (CellId cell = 1; cell <= 24; ++cell) c.run.grid.PERMX[cell] = 90.0 + 0.1 * cell;
    CALCTRANS_STATICGEOPART(c.run.console, c.run.options, c.run.units, c.run.grid, c.run.connections);
    std::rewind(c.quiet.console.screen);
    const ConnectionTable before = c.run.connections;
    writeGridFile(c.run.console, c.run.options, c.run.grid);
    writeInitFile(c.run.console, c.run.options, c.run.units, c.run.grid, c.run.connections);
    c.readActivity();
    c.readInit();
    const std::string text = c.screenText();
    EXPECT_FALSE(holds(text, "WARNING")) << text;
    EXPECT_FALSE(holds(text, "ERROR")) << text;
    EXPECT_TRUE(holds(text, "        -> Block Centerd Grid Detected\n"));
    EXPECT_TRUE(holds(text, "Sum Trans Error : X direc = 0\n"));
    EXPECT_TRUE(holds(text, "Sum Trans Error : Y direc = 0\n"));
    EXPECT_TRUE(holds(text, "Sum Trans Error : Z direc = 0\n"));
    EXPECT_TRUE(holds(text, "Sum Porev Error :         = 0\n"));
    for (CellId cell = 1; cell <= 24; ++cell) {
        for (int face = 1; face <= 6; ++face)
            EXPECT_NEAR(c.run.connections.Trans(cell, face), before.Trans(cell, face),
                        1e-7 * before.Trans(cell, face));
        EXPECT_NEAR(c.run.grid.PERMX[cell], 90.0 + 0.1 * cell, cell == 5 ? 1e-12 : 1e-5);
    }
}

// --- .INIT -------------------------------------------------------------------------------------------------

TEST(InitReader, TellsWhatItsHeadDisagreesAbout) {
    ReaderCase c(3, 1, 1);
    std::vector<std::int32_t> head = initHead(9, 8, 7, 6);
    head[2] = 1;
    head[13] = 0;
    head[64] = 4;
    head[66] = 1999;
    c.folder.write("CASE.INIT",
                   integers("INTEHEAD", head) + reals("PERMX   ", {5, 6, 7}) + reals("SURPLUS ", {1}));
    c.readInit();
    for (const std::string& text : {c.screenText(), c.logText()}) {
        EXPECT_TRUE(holds(text, " ERROR :: Reading Init file, Non Field unit is not surpported.\n"));
        EXPECT_TRUE(holds(text, " ERROR :: Nx not match from INIT and KVR\n"));
        EXPECT_TRUE(holds(text, " ERROR :: Ny not match from INIT and KVR\n"));
        EXPECT_TRUE(holds(text, " ERROR :: Nz not match from INIT and KVR\n"));
        EXPECT_TRUE(holds(text, " ERROR :: ACTNUM not match from INIT and KVR\n"));
        EXPECT_EQ(countOf(text, " ERROR :: Time not match from INIT and KVR\n"), 2U);
        EXPECT_TRUE(holds(text, "        -> Corner Pint Grid Detected\n"));
    }
    EXPECT_TRUE(holds(c.logText(), "Keyword -> PERMX    Employed \n"));
    EXPECT_TRUE(holds(c.logText(), "Keyword :: SURPLUS  Neglected\n"));
    EXPECT_EQ(c.run.grid.PERMX[1], 5.0);  // taken as they are, whatever the units
    EXPECT_EQ(c.run.grid.PERMX[3], 7.0);
}

TEST(InitReader, FillsLowFacesFromTheNeighbours) {
    ReaderCase c(3, 1, 1);
    c.folder.write("CASE.INIT", integers("INTEHEAD", initHead(3, 1, 1, 3)) + reals("XTRANS  ", {2, 4, 0}));
    c.readInit();
    EXPECT_EQ(c.run.connections.Trans(1, 2), 2.0);
    EXPECT_EQ(c.run.connections.Trans(2, 1), 2.0);
    EXPECT_EQ(c.run.connections.Trans(3, 1), 4.0);
}

TEST(InitReader, AddsUpWhatItReplaces) {
    ReaderCase c(3, 1, 1);
    for (CellId cell = 1; cell <= 3; ++cell) c.run.connections.Trans(cell, 2) = 1.0;
    c.run.grid.PORV.assign(3, 10.0);
    c.folder.write("CASE.INIT", integers("INTEHEAD", initHead(3, 1, 1, 3)) + reals("TRANX   ", {2, 4, 0}) +
                                    reals("PORV    ", {10, 12, 13}));
    c.readInit();
    EXPECT_TRUE(holds(c.screenText(), "Sum Trans Error : X direc = 5\n"));
    EXPECT_TRUE(holds(c.screenText(), "Sum Porev Error :         = 5\n"));
    EXPECT_EQ(c.run.grid.PORV[3], 13.0);
}

TEST(InitReader, RebuildsPoreVolumesThatTheFileLacks) {
    ReaderCase c(2, 1, 1);
    c.folder.write("CASE.INIT", integers("INTEHEAD", initHead(2, 1, 1, 2)) +
                                    reals("POROSITY", {0.25F, 0.5F}) + reals("NTG     ", {1.0F, 0.5F}));
    c.readInit();
    // 100 x 100 x 20 ft are 35621.523450 rb.
    EXPECT_NEAR(c.run.grid.PORV[1], 0.25 * 35621.5234435, 1e-3);
    EXPECT_NEAR(c.run.grid.PORV[2], 0.25 * 35621.5234435, 1e-3);
}

TEST(InitReader, MakesThePorosityThatGivesThePoreVolumeOfTheFile) {
    ReaderCase c(3, 1, 1);
    // 100 x 100 x 20 ft are 35621.52345 rb: a porosity of 0.2 with a net-to-gross of 0.5 gives 3562.152345
    // rb.
    c.folder.write("CASE.INIT", integers("INTEHEAD", initHead(3, 1, 1, 3)) +
                                    reals("PORO    ", {0.2F, 0.2F, 0.2F}) +
                                    reals("NTG     ", {0.5F, 0.5F, 0.5F}) +
                                    reals("PORV    ", {3562.1523F, 7124.3047F, 0.0F}));
    c.readInit();
    EXPECT_EQ(c.run.grid.PORO[1],
              static_cast<double>(0.2F));        // the same but for rounding: nothing is changed
    EXPECT_NEAR(c.run.grid.PORO[2], 0.4, 1e-6);  // multiplied by two there
    EXPECT_EQ(c.run.grid.PORO[3], static_cast<double>(0.2F));
}

TEST(InitReader, LeavesOutWhatNoRockCanHave) {
    ReaderCase c(3, 1, 1);
    const float none = std::numeric_limits<float>::quiet_NaN(),
                endless = std::numeric_limits<float>::infinity();
    c.folder.write("CASE.INIT",
                   integers("INTEHEAD", initHead(3, 1, 1, 3)) + reals("PERMX   ", {none, 7.0F, -3.0F}) +
                       reals("TRANX   ", {endless, 4.0F, 0.0F}) + reals("PORV    ", {none, -1.0F, 5.0F}));
    const double before = c.run.connections.Trans(1, 2), volume = 0.2 * 35621.5234435;
    ASSERT_NEAR(c.run.grid.PORO[1], 0.2, 1e-12);
    c.readInit();
    EXPECT_EQ(c.run.grid.PERMX[1], 100.0);
    EXPECT_EQ(c.run.grid.PERMX[2], 7.0);
    EXPECT_EQ(c.run.grid.PERMX[3], 100.0);
    EXPECT_EQ(c.run.connections.Trans(1, 2), before);
    EXPECT_EQ(c.run.connections.Trans(2, 2), 4.0);
    EXPECT_NEAR(c.run.grid.PORV[1], volume, 1e-3);
    EXPECT_NEAR(c.run.grid.PORV[2], volume, 1e-3);
    EXPECT_TRUE(
        holds(c.screenText(), " WARNING :: 2 values of PERMX in INIT are beyond its range and left out\n"));
    EXPECT_TRUE(
        holds(c.screenText(), " WARNING :: 1 values of TRANX in INIT are beyond its range and left out\n"));
    EXPECT_TRUE(
        holds(c.screenText(), " WARNING :: 2 values of PORV in INIT are beyond its range and left out\n"));
}

TEST(InitReader, SpreadsCompressedArraysOverTheActiveCells) {
    ReaderCase c(2, 2, 1);
    c.run.grid.Active[3] = 0;
    c.folder.write("CASE.INIT", integers("INTEHEAD", initHead(2, 2, 1, 3)) + reals("PERMX   ", {1, 2, 4}));
    c.readInit();
    EXPECT_EQ(c.run.grid.PERMX[1], 1.0);
    EXPECT_EQ(c.run.grid.PERMX[2], 2.0);
    EXPECT_EQ(c.run.grid.PERMX[3], 100.0);
    EXPECT_EQ(c.run.grid.PERMX[4], 4.0);
    EXPECT_FALSE(holds(c.screenText(), "ERROR"));
}

TEST(InitReader, GivesAModelWithoutCellsItsSizeAndReadsNoFurther) {
    ReaderCase c(2, 1, 1);
    c.run.grid = GridModel{};
    c.folder.write("CASE.INIT", integers("INTEHEAD", initHead(2, 2, 1, 4)) + reals("PORV    ", {1, 1, 1, 1}) +
                                    reals("PERMX   ", {1, 2, 3, 4}));
    c.readInit();
    EXPECT_EQ(c.run.grid.NCELLS, 4);
    EXPECT_EQ(c.run.grid.PERMX[4], 0.0);
}

TEST(InitReader, GivesNoModelASizeThatTheFileDoesNotBearOut) {
    ReaderCase c(2, 1, 1);
    c.run.grid = GridModel{};
    c.run.console = consoleOnStandardError();
    c.folder.write("CASE.INIT",
                   integers("INTEHEAD", initHead(100, 100, 10, 4)) + reals("PORV    ", {1, 1, 1, 1}));
    EXPECT_EXIT(c.readInit(), testing::ExitedWithCode(1), "no pore volumes for a grid of these dimensions");
}

TEST(InitReader, MissingItsFileSaysSoAndGoesOn) {
    ReaderCase c(2, 1, 1);
    c.readInit();
    EXPECT_EQ(c.screenText(), " ECLIPSE .INIT File Not Found :: " + c.path(".INIT") + "\n");
}

TEST(InitReader, TakesWhatAnArrayOfAnotherLengthHasAndTellsIt) {
    ReaderCase c(2, 2, 1);
    c.folder.write("CASE.INIT", integers("INTEHEAD", initHead(2, 2, 1, 4)) + reals("PERMX   ", {1, 2, 4}) +
                                    reals("PERMY   ", {1, 2, 3, 4, 5, 6}));
    c.readInit();
    EXPECT_EQ(c.run.grid.PERMX[3], 4.0);
    EXPECT_EQ(c.run.grid.PERMX[4], 100.0);
    EXPECT_EQ(c.run.grid.PERMY[4], 4.0);
    EXPECT_TRUE(holds(c.screenText(),
                      " WARNING :: PERMX of INIT has 3 values, 4 cells and 4 active ones are expected"));
    EXPECT_TRUE(holds(c.screenText(),
                      " WARNING :: PERMY of INIT has 6 values, 4 cells and 4 active ones are expected"));
}

TEST(InitReader, ComparesNothingWithAShortHeadAndGoesOn) {
    ReaderCase c(2, 1, 1);
    c.folder.write("CASE.INIT", integers("INTEHEAD", {1, 2, 3}) + reals("PERMX   ", {1, 2}));
    c.readInit();
    EXPECT_TRUE(holds(c.screenText(), " WARNING :: INTEHEAD of INIT has 3 values"));
    EXPECT_EQ(c.run.grid.PERMX[2], 2.0);
}

TEST(InitReader, KnowsKeywordsThatAreShiftedInTheirField) {
    ReaderCase c(2, 1, 1);
    c.folder.write("CASE.INIT", integers("INTEHEAD", initHead(2, 1, 1, 2)) + reals("   PERMX", {1, 2}));
    c.readInit();
    EXPECT_EQ(c.run.grid.PERMX[2], 2.0);
}

// --- .EGRID ------------------------------------------------------------------------------------------------

TEST(ActivityReader, TakesTheFilesValueAndNamesTheCell) {
    ReaderCase c(2, 2, 1);
    c.run.grid.Active[4] = 0;
    c.folder.write("CASE.EGRID", integers("FILEHEAD", {1, 2}) + integers("ACTNUM  ", {1, 0, 1, 1}));
    c.readActivity();
    const std::string warning = " WARNING :: ACTNUM for KVR and ECLIPSE does not match ";
    EXPECT_EQ(c.screenText(), warning + "2\n" + warning + "4\n");
    EXPECT_EQ(c.run.grid.Active.slots, (std::vector<std::uint8_t>{1, 1, 0, 1, 1}));
    EXPECT_TRUE(holds(c.logText(),
                      "------------------------------------------------------->\n"
                      " Function Called  : input_ACTNUM_EGRID\n"));
    EXPECT_TRUE(holds(c.logText(),
                      " Function Ends    : input_ACTNUM_EGRID\n"
                      "<------------------------------------------------------\n"));
}

TEST(ActivityReader, WithoutAFileIsSilent) {
    ReaderCase c(2, 2, 1);
    c.readActivity();
    EXPECT_EQ(c.screenText(), "");
}

TEST(ActivityReader, StopsAtAListOfAnotherLength) {
    ReaderCase c(2, 2, 1);
    c.run.console = consoleOnStandardError();
    c.folder.write("CASE.EGRID", integers("ACTNUM  ", {1, 0, 1}));
    EXPECT_EXIT(c.readActivity(), testing::ExitedWithCode(1), "byte 0: one value per cell was expected");
}

// --- .GRID -------------------------------------------------------------------------------------------------

/// Corners of a block 100 x 50 x 10 ft whose top stands at 5000 ft, in either order of a file.
std::vector<float> blockCorners(float x, bool byPoint) {
    std::vector<float> values(24);
    for (std::size_t n = 0; n < 8; ++n) {
        const auto& offset = CornerOffset[n];
        const std::array<float, 3> point = {x + 100.0F * static_cast<float>(offset[0]),
                                            50.0F * static_cast<float>(offset[1]),
                                            5000.0F + 10.0F * static_cast<float>(offset[2])};
        for (std::size_t axis = 0; axis < 3; ++axis)
            values[byPoint ? 3 * n + axis : 8 * axis + n] = point[axis];
    }
    return values;
}

std::string twoCellGrid(bool byPoint) {
    return integers("DIMENS  ", {2, 1, 1}) + integers("COORDS  ", {1, 1, 1, 1, 1, 0, 0}) +
           reals("CORNERS ", blockCorners(0.0F, byPoint)) + integers("COORDS  ", {2, 1, 1, 2, 0}) +
           reals("CORNERS ", blockCorners(100.0F, byPoint));
}

/// The same blocks, every number and length in the other byte order; all elements have four bytes.
std::string littleEndian(const std::string& bytes) {
    std::string turned;
    for (std::size_t at = 0; at < bytes.size();) {
        const auto length = static_cast<std::size_t>(static_cast<unsigned char>(bytes[at + 2])) * 256 +
                            static_cast<unsigned char>(bytes[at + 3]);
        std::string record = bytes.substr(at, length + 8);
        const bool header = length == 16 && std::isupper(static_cast<unsigned char>(record[4])) != 0;
        if (header)
            turned += reversedGroups(record.substr(0, 4), 0, 4) + record.substr(4, 8) +
                      reversedGroups(record.substr(12, 4), 0, 4) + record.substr(16, 4) +
                      reversedGroups(record.substr(20, 4), 0, 4);
        else
            turned += reversedGroups(record, 0, 4);
        at += length + 8;
    }
    return turned;
}

void expectTwoCells(const GridModel& grid) {
    ASSERT_EQ(grid.NCELLS, 2);
    const std::vector<float> first = blockCorners(0.0F, true);
    const std::vector<float> second = blockCorners(100.0F, true);
    EXPECT_EQ(std::vector<float>(cornerOf(grid, 1, 1), cornerOf(grid, 1, 1) + 24), first);
    EXPECT_EQ(std::vector<float>(cornerOf(grid, 2, 1), cornerOf(grid, 2, 1) + 24), second);
    EXPECT_EQ(grid.Active.slots, (std::vector<std::uint8_t>{1, 1, 0}));
    EXPECT_EQ(grid.NodeX[nodeIndex(grid, 3, 1, 1)], 200.0);
    EXPECT_EQ(grid.NodeZ[nodeIndex(grid, 1, 2, 2)], 5010.0);
    EXPECT_EQ(grid.DX[2], 100.0);
    EXPECT_EQ(grid.CellCentre(1, 3), 5005.0);
    EXPECT_NEAR(grid.BulkVolume[1], 50000.0 / 5.614583, 1e-9);
}

TEST(GridReader, BuildsAModelFromEitherOrderOfCorners) {
    for (const bool byPoint : {false, true}) {
        ReaderCase c(1, 1, 1);
        c.run.grid = GridModel{};
        c.folder.write("CASE.GRID", twoCellGrid(byPoint));
        c.readGrid();
        expectTwoCells(c.run.grid);
        EXPECT_EQ(c.logText(),
                  "------------------------------------------------------->\n"
                  " Function Callecd  : input_GRID\nKeyword -> DIMENS   Employed \n"
                  " Function Ends Normally  : input_GRID\n"
                  "<------------------------------------------------------\n");
    }
}

TEST(GridReader, ReadsTheOtherByteOrderToTheSameCorners) {
    for (const bool byPoint : {false, true}) {
        ReaderCase c(1, 1, 1);
        c.run.grid = GridModel{};
        c.folder.write("CASE.GRID", littleEndian(twoCellGrid(byPoint)));
        c.readGrid();
        expectTwoCells(c.run.grid);
    }
}

TEST(GridReader, KeepsTheDimensionsThatTheModelHas) {
    ReaderCase c(3, 1, 1);
    c.folder.write("CASE.GRID", twoCellGrid(false));
    c.readGrid();
    EXPECT_EQ(c.run.grid.NX, 3);
    EXPECT_EQ(c.run.grid.Active[2], 0);
    EXPECT_EQ(cornerOf(c.run.grid, 3, 1)[0], 200.0F);  // not in the file
    EXPECT_EQ(c.run.grid.NodeZ[nodeIndex(c.run.grid, 1, 1, 1)], 5000.0);
}

TEST(GridReader, MissingItsFileSaysSoAndGoesOn) {
    ReaderCase c(1, 1, 1);
    c.readGrid();
    EXPECT_EQ(c.screenText(), " ECLIPSE .GRID File Not Found :: " + c.path(".GRID") + "\n");
}

void expectGridStop(const std::string& bytes, const char* text) {
    ReaderCase c(1, 1, 1);
    c.run.grid = GridModel{};
    c.run.console = consoleOnStandardError();
    c.folder.write("CASE.GRID", bytes);
    EXPECT_EXIT(c.readGrid(), testing::ExitedWithCode(1), text);
}

TEST(GridReader, StopsAtCellsThatAreNotOfTheGrid) {
    const std::string head = twoCellGrid(false).substr(0, 44);
    const std::string filler(1000, '\0');
    expectGridStop(head + integers("COORDS  ", {3, 1, 1, 3}) + filler,
                   "byte 44: this cell is not one of the grid");
    expectGridStop(head + integers("COORDS  ", {2, 1, 1, 1}) + filler,
                   "byte 44: this cell is not one of the grid");
    expectGridStop(head + reals("CORNERS ", blockCorners(0.0F, false)) + filler, "no cell has been named");
    expectGridStop(head + integers("COORDS  ", {1, 1}) + filler, "i, j, k and the number of a cell");
}

TEST(GridReader, StopsAtMoreCellsThanTheFileCanHold) {
    expectGridStop(integers("DIMENS  ", {100, 100, 10}), "no room for so many cells");
    expectGridStop(integers("DIMENS  ", {0, 10, 10}), "a dimension is not positive");
    expectGridStop(integers("DIMENS  ", {2, 10}), "three dimensions were expected");
    expectGridStop(integers("DIMENS  ", std::vector<std::int32_t>(12, 1)), "byte 0: ");
}

TEST(GridReader, StopsAtCornersThatAreNoPlaces) {
    std::vector<float> corners = blockCorners(0.0F, false);
    corners[5] = std::numeric_limits<float>::quiet_NaN();
    const std::string head = twoCellGrid(false).substr(0, 44);
    expectGridStop(
        head + integers("COORDS  ", {1, 1, 1, 1, 1}) + reals("CORNERS ", corners) + std::string(1000, '\0'),
        "corners that are no places");
}

TEST(CornerOrder, OfAFaultedThinCellIsStillSeen) {
    std::vector<float> byPoint = blockCorners(0.0F, true);
    for (std::size_t n = 1; n < 8; n += 2) byPoint[3 * n + 2] += 40.0F;
    EXPECT_EQ(cornerOrderOf(byPoint), CornerOrder::ByPoint);
    std::vector<float> byAxis = blockCorners(0.0F, false);
    for (std::size_t n = 1; n < 8; n += 2) byAxis[16 + n] += 40.0F;
    EXPECT_EQ(cornerOrderOf(byAxis), CornerOrder::ByAxis);
}

// --- .EGRID where there is no .GRID ------------------------------------------------------------------------

TEST(PillarReader, PlacesCornersOnSlantingPillarsInFeet) {
    ScratchFolder folder;
    RecordWriter writer;
    ASSERT_EQ(open_write(folder.path + "SLANT.EGRID", writer), 0);
    const std::vector<Text8> unit = {text8("METRES"), text8("")};
    write_keyword<Text8>(writer, "GRIDUNIT", std::span<const Text8>(unit));
    const std::vector<std::int32_t> head = {1, 1, 1, 1};
    write_keyword<std::int32_t>(writer, "GRIDHEAD", std::span<const std::int32_t>(head));
    // Four pillars from depth 1000 to 1100 m that lean by 10 m along x.
    std::vector<float> pillars;
    for (const float y : {0.0F, 50.0F})
        for (const float x : {0.0F, 100.0F}) {
            const float ends[] = {x, y, 1000.0F, x + 10.0F, y, 1100.0F};
            pillars.insert(pillars.end(), std::begin(ends), std::end(ends));
        }
    write_keyword<float>(writer, "COORD", std::span<const float>(pillars));
    const std::vector<float> depths = {1000, 1000, 1000, 1000, 1050, 1050, 1050, 1050};
    write_keyword<float>(writer, "ZCORN", std::span<const float>(depths));
    write_header(writer, "ENDGRID", 0, ElementType::Inte);
    close(writer);

    Simulation run;
    const QuietConsole quiet;
    run.options.workingFolder = folder.path;
    GridModel grid;
    input_GRID(quiet.console, run.options, run.units, "SLANT", grid);
    ASSERT_EQ(grid.NCELLS, 1);
    constexpr double Feet = 3.28084;
    EXPECT_NEAR(cornerOf(grid, 1, 1)[0], 0.0, 1e-3);
    EXPECT_NEAR(cornerOf(grid, 1, 6)[0], 105.0 * Feet, 1e-3);  // half way down: 5 m along x
    EXPECT_NEAR(cornerOf(grid, 1, 7)[1], 50.0 * Feet, 1e-3);
    EXPECT_NEAR(cornerOf(grid, 1, 8)[2], 1050.0 * Feet, 1e-3);
    EXPECT_EQ(grid.Active[1], 1);
}

TEST(PillarReader, RefusesArraysOfAnotherLength) {
    ScratchFolder folder;
    RecordWriter writer;
    ASSERT_EQ(open_write(folder.path + "SHORT.EGRID", writer), 0);
    const std::vector<std::int32_t> head = {1, 1, 1, 1};
    write_keyword<std::int32_t>(writer, "GRIDHEAD", std::span<const std::int32_t>(head));
    const std::vector<float> few(7, 1.0F);
    write_keyword<float>(writer, "ZCORN", std::span<const float>(few));
    close(writer);
    Simulation run;
    run.options.workingFolder = folder.path;
    GridModel grid;
    EXPECT_EXIT(input_GRID(consoleOnStandardError(), run.options, run.units, "SHORT", grid),
                testing::ExitedWithCode(1), "pillars and depths of the corners of every cell were expected");
}

}  // namespace
}  // namespace kvr
