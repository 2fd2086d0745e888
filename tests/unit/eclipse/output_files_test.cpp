#include "eclipse/end_file.hpp"
#include "eclipse/grid_file.hpp"
#include "eclipse/init_file.hpp"
#include "eclipse/output_stage.hpp"
#include "eclipse/restart_file.hpp"
#include "eclipse/rft_file.hpp"
#include "unit/eclipse/block_file.hpp"
#include "unit/eclipse/small_case.hpp"
#include "unit/quiet_console.hpp"

#include <filesystem>
#include <gtest/gtest.h>

namespace kvr {
namespace {

void writeGrid(const SmallCase& c) {
    writeGridFile(c.run.console, c.run.options, c.run.grid);
}
void writeInit(const SmallCase& c) {
    writeInitFile(c.run.console, c.run.options, c.run.units, c.run.grid, c.run.connections);
}
void writeRestart(const SmallCase& c) {
    writeRestartFile(c.run.console, c.run.options, c.run.clock, c.run.grid, c.run.state,
                     {c.run.units, c.run.connections, c.run.velocity}, c.run.lines.diagnostics);
}
void addRft(SmallCase& c) {
    addRftRecords(c.run.console, c.run.options, c.run.clock, c.run.grid, c.run.state, c.run.wells,
                  c.run.eclipse);
}

std::vector<std::uint64_t> sizesOf(const std::vector<ReadBlock>& blocks) {
    std::vector<std::uint64_t> sizes;
    for (const ReadBlock& block : blocks) sizes.push_back(block.bytes);
    return sizes;
}

// --- .EGRID ------------------------------------------------------------------------------------------------

TEST(GridFile, HasTheSizeOfItsBlocks) {
    const SmallCase small(2, 2, 1);
    writeGrid(small);
    EXPECT_EQ(small.size(".EGRID"), 1464U);
    const std::vector<ReadBlock> blocks = blocksOf(small.path(".EGRID"));
    EXPECT_EQ(keywordsOf(blocks), (std::vector<std::string>{"FILEHEAD", "GRIDUNIT", "GDORIENT", "GRIDHEAD",
                                                            "COORD", "ZCORN", "ACTNUM", "ENDGRID"}));
    EXPECT_EQ(sizesOf(blocks), (std::vector<std::uint64_t>{432, 48, 72, 432, 248, 160, 48, 24}));
    const SmallCase bigger(10, 10, 3);
    writeGrid(bigger);
    EXPECT_EQ(bigger.size(".EGRID"), 14824U);
}

TEST(GridFile, HeadsShareOneList) {
    SmallCase c(3, 2, 1);
    c.run.options.useNewtran = true;
    writeGrid(c);
    const std::vector<ReadBlock> blocks = blocksOf(c.path(".EGRID"));
    std::vector<std::int32_t> head(100, 0);
    head[0] = 3;
    head[1] = 2012;
    head[2] = 43;
    head[6] = 1;
    EXPECT_EQ(blocks[0].data.integers, head);
    head[0] = 1;
    head[1] = 3;
    head[2] = 2;
    head[3] = 1;
    head[24] = head[25] = 1;
    EXPECT_EQ(blocks[3].data.integers, head);
}

TEST(GridFile, GivesUnitAndOrientationInFixedWords) {
    const SmallCase c(1, 1, 1);
    writeGrid(c);
    const std::vector<ReadBlock> blocks = blocksOf(c.path(".EGRID"));
    EXPECT_EQ(textsOf(blocks[1]), (std::vector<std::string>{"FEET    ", "        "}));
    EXPECT_EQ(textsOf(blocks[2]),
              (std::vector<std::string>{"INC     ", "INC     ", "INC     ", "DOWN    ", "RIGHT   "}));
}

TEST(GridFile, GivesPillarsFromTheTopLayerAndTheBottomLayer) {
    const SmallCase c(2, 1, 3);  // blocks of 100 x 100 x 20 ft from 1000 ft down
    writeGrid(c);
    const std::vector<float> coord = blockNamed(blocksOf(c.path(".EGRID")), "COORD").data.reals;
    ASSERT_EQ(coord.size(), 36U);
    EXPECT_EQ(std::vector<float>(coord.begin() + 12, coord.begin() + 18),
              (std::vector<float>{200, 0, 1000, 200, 0, 1060}));
    EXPECT_EQ(std::vector<float>(coord.begin() + 18, coord.begin() + 24),
              (std::vector<float>{0, 100, 1000, 0, 100, 1060}));
}

TEST(GridFile, PutsTheCornersOfACellWhereTheDescriptionOfDepthsSays) {
    SmallCase c(3, 2, 2);
    for (CellId cell = 1; cell <= c.run.grid.NCELLS; ++cell)
        for (int n = 1; n <= 8; ++n) cornerOf(c.run.grid, cell, n)[2] = static_cast<float>(10 * cell + n);
    writeGrid(c);
    const std::vector<float> depths = blockNamed(blocksOf(c.path(".EGRID")), "ZCORN").data.reals;
    const int nx = 3, ny = 2;
    for (int k = 1; k <= 2; ++k)
        for (int j = 1; j <= 2; ++j)
            for (int i = 1; i <= 3; ++i) {
                const int p = 8 * nx * ny * (k - 1) + 4 * nx * (j - 1) + 2 * i - 1;  // 1-based
                const int below = 4 * nx * ny;
                const std::array<int, 8> places = {
                    p,         p + 1,         p + 2 * nx,         p + 2 * nx + 1,
                    p + below, p + below + 1, p + below + 2 * nx, p + below + 2 * nx + 1};
                for (int n = 1; n <= 8; ++n)
                    EXPECT_EQ(depths[static_cast<std::size_t>(places[static_cast<std::size_t>(n) - 1]) - 1],
                              static_cast<float>(10 * cellIndex(c.run.grid, i, j, k) + n));
            }
}

TEST(GridFile, WidensTheActiveFlags) {
    SmallCase c(2, 2, 1);
    c.run.grid.Active[3] = 0;
    writeGrid(c);
    EXPECT_EQ(blockNamed(blocksOf(c.path(".EGRID")), "ACTNUM").data.integers,
              (std::vector<std::int32_t>{1, 1, 0, 1}));
}

// --- .INIT -------------------------------------------------------------------------------------------------

TEST(InitFile, HasTheSizeOfItsBlocks) {
    SmallCase small(2, 2, 1);
    writeInit(small);
    EXPECT_EQ(small.size(".INIT"), 2376U);
    const std::vector<ReadBlock> blocks = blocksOf(small.path(".INIT"));
    EXPECT_EQ(keywordsOf(blocks), (std::vector<std::string>{"INTEHEAD", "LOGIHEAD", "DOBUHEAD", "PORV",
                                                            "PORO", "NTG", "PERMX", "PERMY", "PERMZ", "TRANX",
                                                            "TRANY", "TRANZ", "DEPTH", "DX", "DY", "DZ"}));
    EXPECT_EQ(blocks[0].bytes, 1236U);
    EXPECT_EQ(blocks[1].bytes, 476U);
    EXPECT_EQ(blocks[2].bytes, 40U);
    EXPECT_EQ(blocks[3].bytes, 48U);
    small.run.grid.Active[2] = 0;
    writeInit(small);
    EXPECT_EQ(small.size(".INIT"), 2328U);
    const SmallCase bigger(10, 10, 3);
    writeInit(bigger);
    EXPECT_EQ(bigger.size(".INIT"), 17768U);
}

TEST(InitFile, HeadsTellSizeStartAndPhases) {
    SmallCase c(3, 2, 1);
    c.run.grid.Active[2] = 0;
    c.run.options.hasGas = true;
    writeInit(c);
    const std::vector<ReadBlock> blocks = blocksOf(c.path(".INIT"));
    std::vector<std::int32_t> head(301, 0);
    const auto set = [&](std::size_t slot, std::int32_t value) { head[slot - 1] = value; };
    set(2, 201202);
    set(3, 2);
    for (const std::size_t slot : {9U, 106U, 114U}) set(slot, 3);
    for (const std::size_t slot : {10U, 107U, 115U}) set(slot, 2);
    for (const std::size_t slot : {11U, 108U, 116U}) set(slot, 1);
    set(12, 5);
    set(109, 5);
    set(14, 3);
    set(15, 7);
    set(65, 3);
    set(66, 2);
    set(67, 2001);
    set(95, -1);
    set(288, 6);
    EXPECT_EQ(blocks[0].data.integers, head);
    EXPECT_EQ(blocks[1].data.logicals[0], -1);
    EXPECT_EQ(std::count(blocks[1].data.logicals.begin(), blocks[1].data.logicals.end(), 0), 110);
    EXPECT_EQ(blocks[2].data.doubles, std::vector<double>{0.0});
}

TEST(InitFile, OfACornerPointRunWithoutGasHasOtherCodes) {
    SmallCase c(1, 1, 1);
    c.run.options.useNewtran = true;
    writeInit(c);
    const std::vector<ReadBlock> blocks = blocksOf(c.path(".INIT"));
    EXPECT_EQ(blocks[0].data.integers[13], 0);
    EXPECT_EQ(blocks[0].data.integers[14], 3);
    EXPECT_EQ(blocks[1].data.logicals[0], 0);
}

TEST(InitFile, GivesPoreVolumeForEveryCellAndKeepsActiveOnesAlive) {
    SmallCase c(2, 2, 1);
    c.run.grid.PORO[2] = 0.0;
    c.run.grid.Active[2] = 1;
    c.run.grid.Active[3] = 0;
    writeInit(c);
    const std::vector<float> volumes = blockNamed(blocksOf(c.path(".INIT")), "PORV").data.reals;
    // 100 x 100 x 20 ft at porosity 0.2: 40000 / 5.614583 rb.
    EXPECT_FLOAT_EQ(volumes[0], 7124.3047F);
    EXPECT_EQ(volumes[1], 1.0e-19F);
    EXPECT_EQ(volumes[2], 0.0F);
}

TEST(InitFile, GivesTransmissibilitiesOfTheHighFaces) {
    SmallCase c(2, 2, 2);
    for (CellId cell = 1; cell <= 8; ++cell)
        for (int face = 1; face <= 6; ++face) c.run.connections.Trans(cell, face) = 10.0 * cell + face;
    writeInit(c);
    const std::vector<ReadBlock> blocks = blocksOf(c.path(".INIT"));
    for (std::size_t n = 0; n < 8; ++n) {
        const auto cell = static_cast<float>(n + 1);
        EXPECT_EQ(blockNamed(blocks, "TRANX").data.reals[n], 10.0F * cell + 2.0F);
        EXPECT_EQ(blockNamed(blocks, "TRANY").data.reals[n], 10.0F * cell + 4.0F);
        EXPECT_EQ(blockNamed(blocks, "TRANZ").data.reals[n], 10.0F * cell + 6.0F);
    }
}

TEST(InitFile, LeavesInactiveCellsOutOfCompressedArrays) {
    SmallCase c(2, 2, 1);
    setCells(c.run.grid.PERMX, {1, 2, 3, 4});
    c.run.grid.Active[3] = 0;
    writeInit(c);
    const std::vector<ReadBlock> blocks = blocksOf(c.path(".INIT"));
    EXPECT_EQ(blockNamed(blocks, "PERMX").data.reals, (std::vector<float>{1, 2, 4}));
    EXPECT_EQ(blockNamed(blocks, "DEPTH").data.reals, (std::vector<float>{1010, 1010, 1010}));
    EXPECT_EQ(blockNamed(blocks, "DZ").data.reals, (std::vector<float>{20, 20, 20}));
}

// --- .Xnnnn ------------------------------------------------------------------------------------------------

TEST(RestartFile, HasTheSizeOfItsBlocks) {
    const SmallCase small(2, 2, 1);
    writeRestart(small);
    EXPECT_EQ(small.size(".X0001"), 1904U);
    const SmallCase bigger(10, 10, 3);
    writeRestart(bigger);
    EXPECT_EQ(bigger.size(".X0001"), 6640U);
}

TEST(RestartFile, HoldsTheStateOfTheActiveCells) {
    SmallCase c(2, 2, 1);
    c.run.grid.Active[1] = 0;
    c.run.clock.reportIndex = 12;
    c.run.clock.time = 10.7604;
    c.run.state.Sg[4] = 0.125;
    writeRestart(c);
    const std::vector<ReadBlock> blocks = blocksOf(c.path(".X0012"));
    EXPECT_EQ(keywordsOf(blocks), (std::vector<std::string>{"INTEHEAD", "LOGIHEAD", "DOUBHEAD", "PRESSURE",
                                                            "SWAT", "SOIL", "SGAS"}));
    std::vector<std::int32_t> head(301, 0);
    const auto set = [&](std::size_t slot, std::int32_t value) { head[slot - 1] = value; };
    set(3, 2);
    set(9, 2);
    set(10, 2);
    set(11, 1);
    set(12, 3);
    set(65, 3);
    set(66, 2);
    set(67, 2001);
    set(69, 12);
    set(95, -1);
    set(207, 18);
    set(208, 14);
    EXPECT_EQ(blocks[0].data.integers, head);
    EXPECT_EQ(blocks[1].data.logicals, std::vector<std::int32_t>(101, 0));
    EXPECT_EQ(blocks[2].data.doubles, std::vector<double>{10.7604});
    EXPECT_EQ(blocks[3].data.reals, (std::vector<float>{3002, 3003, 3004}));
    EXPECT_EQ(blocks[4].data.reals, (std::vector<float>{0.25F, 0.25F, 0.25F}));
    EXPECT_EQ(blocks[5].data.reals, (std::vector<float>{0.75F, 0.75F, 0.75F}));
    EXPECT_EQ(blocks[6].data.reals, (std::vector<float>{0, 0, 0.125F}));
}

TEST(RestartFile, HoldsTheMapsOfTheEndOfTheRunBehindTheState) {
    SmallCase c(2, 2, 1);
    c.run.grid.Active[1] = 0;
    DiagnosticMaps& maps = c.run.lines.diagnostics;
    for (CellArray<double>* times : {&maps.timeFromInjector, &maps.timeToProducer, &maps.timeSum})
        times->assign(4, UnreachedTime);
    for (CellArray<int>* wells : {&maps.injector, &maps.producer, &maps.connection}) wells->assign(4, 0);
    maps.producer[2] = 3;
    maps.injector[2] = 2;
    maps.connection[2] = 6;
    maps.timeFromInjector[2] = 12.5;
    maps.timeToProducer[2] = 30.0;
    maps.timeSum[2] = 42.5;
    writeRestart(c);
    const std::vector<ReadBlock> blocks = blocksOf(c.path(".X0001"));
    EXPECT_EQ(keywordsOf(blocks),
              (std::vector<std::string>{"INTEHEAD", "LOGIHEAD", "DOUBHEAD", "PRESSURE", "SWAT", "SOIL",
                                        "SGAS", "PRDID", "INJID", "CXNID", "TOFI", "TOFP", "TOFT"}));
    EXPECT_EQ(blockNamed(blocks, "PRDID").data.integers, (std::vector<std::int32_t>{3, 0, 0}));
    EXPECT_EQ(blockNamed(blocks, "INJID").data.integers, (std::vector<std::int32_t>{2, 0, 0}));
    EXPECT_EQ(blockNamed(blocks, "CXNID").data.integers, (std::vector<std::int32_t>{6, 0, 0}));
    EXPECT_EQ(blockNamed(blocks, "TOFI").data.reals, (std::vector<float>{12.5F, 1e10F, 1e10F}));
    EXPECT_EQ(blockNamed(blocks, "TOFP").data.reals, (std::vector<float>{30.0F, 1e10F, 1e10F}));
    EXPECT_EQ(blockNamed(blocks, "TOFT").data.reals, (std::vector<float>{42.5F, 1e10F, 1e10F}));
}

TEST(HourAndMinute, AreThoseOfTheFractionOfTheDay) {
    EXPECT_EQ(hourMinute(10.7604).hour, 18);
    EXPECT_EQ(hourMinute(10.7604).minute, 14);
    EXPECT_EQ(hourMinute(365.0).hour, 0);
    EXPECT_EQ(hourMinute(365.0).minute, 0);
    EXPECT_EQ(hourMinute(0.5).hour, 12);
}

// --- .RFT --------------------------------------------------------------------------------------------------

TEST(RftFile, GrowsByTheSizeOfEachWell) {
    SmallCase c(3, 4, 1);
    c.addWell("P1", "prd", {1, 2, 3});
    addRft(c);
    EXPECT_EQ(c.size(".RFT"), 564U);
    addRft(c);
    EXPECT_EQ(c.size(".RFT"), 2U * 564U);
    SmallCase wide(3, 4, 1);
    wide.addWell("P2", "prd", {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12});
    addRft(wide);
    EXPECT_EQ(wide.size(".RFT"), 888U);
}

TEST(RftFile, ListsTheCellsOfTheCompletions) {
    SmallCase c(2, 2, 2);
    c.run.clock.time = 31.0;
    c.run.state.Sg[8] = 0.5;
    c.addWell("P1", "prd", {4, 8});
    addRft(c);
    const std::vector<ReadBlock> blocks = blocksOf(c.path(".RFT"));
    EXPECT_EQ(keywordsOf(blocks),
              (std::vector<std::string>{"TIME", "DATE", "WELLETC", "CONIPOS", "CONJPOS", "CONKPOS",
                                        "HOSTGRID", "DEPTH", "PRESSURE", "SWAT", "SGAS"}));
    EXPECT_EQ(blocks[0].data.reals, std::vector<float>{31.0F});
    EXPECT_EQ(blocks[1].data.integers, (std::vector<std::int32_t>{3, 2, 2001}));
    EXPECT_EQ(textsOf(blocks[2]), (std::vector<std::string>{"  DAYS  ", "P1      ", "        ", "  FEET  ",
                                                            "  PSIA  ", "R       ", "STANDARD", " STB/DAY",
                                                            "MSCF/DAY", " RB/DAY ", " FT/SEC "}));
    EXPECT_EQ(blocks[3].data.integers, (std::vector<std::int32_t>{2, 2}));
    EXPECT_EQ(blocks[4].data.integers, (std::vector<std::int32_t>{2, 2}));
    EXPECT_EQ(blocks[5].data.integers, (std::vector<std::int32_t>{1, 2}));
    EXPECT_EQ(textsOf(blocks[6]), (std::vector<std::string>{"  DAYS  ", "P1      "}));
    EXPECT_EQ(blocks[7].data.reals, (std::vector<float>{1010, 1030}));
    EXPECT_EQ(blocks[8].data.reals, (std::vector<float>{3004, 3008}));
    EXPECT_EQ(blocks[9].data.reals, (std::vector<float>{0.25F, 0.25F}));
    EXPECT_EQ(blocks[10].data.reals, (std::vector<float>{0.0F, 0.5F}));
}

TEST(RftFile, OfAWellWithoutCompletionsHasEmptyLists) {
    SmallCase c(1, 1, 1);
    c.addWell("SHUT", "prd");
    addRft(c);
    EXPECT_EQ(blocksOf(c.path(".RFT")).size(), 11U);
}

TEST(RftFile, IsNamedInTheLogOnce) {
    SmallCase c(1, 1, 1);
    const QuietConsole quiet;
    c.run.console = quiet.console;
    addRft(c);
    addRft(c);
    EXPECT_EQ(quiet.logText(), "File Generated : " + c.path(".RFT") + "\n");
    EXPECT_EQ(quiet.screenText(), "");
}

// --- the set -----------------------------------------------------------------------------------------------

std::vector<std::string> filesOf(const SmallCase& c) {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(c.folder.path))
        names.push_back(entry.path().filename().string());
    std::sort(names.begin(), names.end());
    return names;
}

TEST(BinaryOutput, OffLeavesOnlyAnEmptyRftFile) {
    SmallCase c(2, 1, 1);
    c.run.options.outputEclipse = "No";
    c.run.options.outputSln = "Yes";
    c.addWell("P1", "prd", {1});
    startEclipseFiles(c.run);
    EXPECT_EQ(filesOf(c), std::vector<std::string>{});
    reportEclipseFiles(c.run);
    EXPECT_EQ(filesOf(c), std::vector<std::string>{"CASE.RFT"});
    EXPECT_EQ(c.size(".RFT"), 0U);
}

TEST(BinaryOutput, BeginsWithTheFilesOfTimeZeroAndGoesOnWithReportOne) {
    SmallCase c(2, 1, 1);
    const QuietConsole quiet;
    c.run.console = quiet.console;
    c.run.options.outputSln = "Yes";
    c.addWell("P1", "prd", {1});
    startEclipseFiles(c.run);
    EXPECT_EQ(c.run.clock.reportIndex, 1);
    const auto generated = [&](const char* extension) {
        return "File Generated : " + c.path(extension) + "\n";
    };
    EXPECT_EQ(quiet.logText(), generated(".SLNSPEC") + generated(".INIT") + generated(".SMSPEC") +
                                   generated(".X0000") + generated(".S0000"));
    reportEclipseFiles(c.run);
    EXPECT_EQ(filesOf(c),
              (std::vector<std::string>{"CASE.EGRID", "CASE.INIT", "CASE.RFT", "CASE.S0000", "CASE.S0001",
                                        "CASE.SLNSPEC", "CASE.SMSPEC", "CASE.X0000", "CASE.X0001"}));
}

TEST(BinaryOutput, OfATracedRunIsTheLineIndexOnly) {
    SmallCase c(2, 1, 1);
    c.run.options.outputSln = "Yes";
    c.run.options.traceFromRestart = true;
    startEclipseFiles(c.run);
    reportEclipseFiles(c.run);
    finishEclipseFiles(c.run);
    EXPECT_EQ(filesOf(c), std::vector<std::string>{"CASE.SLNSPEC"});
}

TEST(BinaryOutput, WithoutWellsHasNoIndexAndEmptySummaries) {
    SmallCase c(2, 1, 1);
    startEclipseFiles(c.run);
    EXPECT_FALSE(std::filesystem::exists(c.path(".SMSPEC")));
    EXPECT_EQ(c.size(".S0000"), 96U);
}

TEST(BinaryOutput, ThatCannotBeOpenedStops) {
    SmallCase c(2, 1, 1);
    c.run.console = consoleOnStandardError();
    c.run.options.dataFileBase = "/nowhere/at/all/CASE";
    EXPECT_EXIT(startEclipseFiles(c.run), testing::ExitedWithCode(1),
                "ERROR: File handling error, code = 2\n       Cannot create file for output");
}

// --- .ECLEND, clearing -------------------------------------------------------------------------------------

TEST(EndFile, CountsNoMessages) {
    SmallCase c(1, 1, 1);
    const QuietConsole quiet;
    c.run.console = quiet.console;
    finishEclipseFiles(c.run);
    std::istringstream text(c.folder.read("CASE.ECLEND"));
    std::string first;
    std::getline(text, first);
    EXPECT_EQ(first, " Error summary");
    for (const char* kind : {"Comments", "Warnings", "Problems", "Errors", "Bugs"}) {
        std::string word;
        int count = -1;
        text >> word >> count;
        EXPECT_EQ(word, kind);
        EXPECT_EQ(count, 0);
    }
    EXPECT_EQ(quiet.logText(), " File Generated : " + c.path(".ECLEND") +
                                   "\n Function Ends Normally  : Output_ECLEND_Normal\n");
}

TEST(ClearedRun, LosesItsStepsUpToTheFirstGap) {
    SmallCase c(1, 1, 1);
    const QuietConsole quiet;
    c.run.console = quiet.console;
    for (const char* name : {"CASE.RFT", "CASE.ECLEND", "CASE.S0000", "CASE.X0001", "CASE.S0001",
                             "CASE.X0002", "CASE.X0004", "CASE.INIT"})
        c.folder.write(name, "old");
    clear_ECLIPSE_Data(quiet.console, c.folder.path + "CASE");
    EXPECT_EQ(filesOf(c), (std::vector<std::string>{"CASE.INIT", "CASE.X0004"}));
    EXPECT_EQ(quiet.screenText(), " ECLIPSE Pre-Run File Deleted from 0 to 3\n");
    EXPECT_EQ(quiet.logText(), " ECLIPSE File Deleted : " + c.path(".RFT") + "\n ECLIPSE File Deleted : " +
                                   c.path(".ECLEND") + "\n ECLIPSE Pre-Run File Deleted from 0 to 3\n" +
                                   " Function Ends Normally  : clear_ECLIPSE_Data\n");
}

TEST(ClearedRun, HappensAtTheStartOnlyWhenAskedFor) {
    for (const bool asked : {false, true}) {
        SmallCase c(1, 1, 1);
        c.run.options.outputEclipse = "No";
        c.run.options.deleteEclipseRun = asked;
        c.folder.write("CASE.X0001", "old");
        startEclipseFiles(c.run);
        EXPECT_EQ(std::filesystem::exists(c.path(".X0001")), !asked);
    }
}

}  // namespace
}  // namespace kvr
