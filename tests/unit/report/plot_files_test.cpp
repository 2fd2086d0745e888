#include "report/block_zone.hpp"
#include "report/point_file.hpp"
#include "report/slices.hpp"
#include "unit/quiet_console.hpp"
#include "unit/report/box_model.hpp"
#include "unit/report/plot_file_parser.hpp"

#include <gtest/gtest.h>
#include <set>

namespace kvr {
namespace {

/// What a writer puts into its stream.
template <class Writer>
std::string written(const Writer& write) {
    std::FILE* file = std::tmpfile();
    write(file);
    std::string text = QuietConsole::contents(file);
    std::fclose(file);
    return text;
}

std::vector<std::string> linesOf(const std::string& text) {
    std::istringstream in(text);
    std::vector<std::string> lines;
    for (std::string line; std::getline(in, line);) lines.push_back(line);
    return lines;
}

TEST(BlockZone, CountsNodesNotCells) {
    const GridModel grid = boxModel(10, 1, 1);
    const std::string text = written([&](std::FILE* file) {
        writeBlockZone(file, grid, ZoneNodes::Shared, countingValues(grid), 30.5, "p<sub>o</sub>");
    });
    const std::vector<std::string> lines = linesOf(text);
    EXPECT_EQ(lines[0], "TITLE=p<sub>o</sub>PLOT");
    EXPECT_EQ(lines[1], "VARIABLES= X,Y,Depth,p<sub>o</sub>");
    EXPECT_EQ(lines[2], "Zone i = 11, j= 2, k= 2,  DATAPACKING=BLOCK,");
    EXPECT_EQ(lines[3], "SOLUTIONTIME = 30.5");
    EXPECT_EQ(lines[4], "VARLOCATION=(4=CELLCENTERED)");

    const std::vector<PlotZone> zones = PlotFileParser(text).zones();
    ASSERT_EQ(zones.size(), 1U);
    for (int axis = 0; axis < 3; ++axis)
        EXPECT_EQ(zones[0].columns[static_cast<std::size_t>(axis)].size(), 44U);
    EXPECT_EQ(zones[0].columns[3].size(), 10U);
    EXPECT_EQ(zones[0].columns[0][10], 100.0);
    EXPECT_EQ(zones[0].columns[1][11], 20.0);
    EXPECT_EQ(zones[0].columns[2][22], 1005.0);
    EXPECT_EQ(zones[0].columns[3][9], 10.0);
}

TEST(BlockZone, OfTwoReportsAreTwoBlocksThatStandAlone) {
    const GridModel grid = boxModel(2, 3, 4);
    const std::vector<PlotZone> zones =
        PlotFileParser(written([&](std::FILE* file) {
            for (const double time : {10.0, 20.0})
                writeBlockZone(file, grid, ZoneNodes::Shared, countingValues(grid), time, "S<sub>w</sub>");
        })).zones();
    ASSERT_EQ(zones.size(), 2U);
    EXPECT_EQ(zones[1].time, 20.0);
    EXPECT_EQ(zones[1].title, zones[0].title);
    EXPECT_EQ(zones[1].columns, zones[0].columns);
    EXPECT_EQ(zones[1].columns[3].size(), 24U);
}

TEST(BlockZone, GivesEachCellItsOwnCornersWhenAsked) {
    GridModel grid = boxModel(2, 1, 1);
    for (int n = 1; n <= 8; ++n) cornerOf(grid, 2, n)[2] += 7.0F;  // a fault between the two cells
    const std::vector<PlotZone> zones =
        PlotFileParser(written([&](std::FILE* file) {
            writeBlockZone(file, grid, ZoneNodes::PerCell, countingValues(grid), 0.0, "p");
        })).zones();
    ASSERT_EQ(zones.size(), 1U);
    const PlotZone& zone = zones[0];
    EXPECT_EQ(zone.nodes, 16);
    EXPECT_EQ(zone.elements, 2);
    EXPECT_EQ(zone.columns[3], (std::vector<double>{1.0, 2.0}));
    ASSERT_EQ(zone.bricks.size(), 2U);
    EXPECT_EQ(zone.bricks[0], (std::vector<long>{1, 2, 4, 3, 5, 6, 8, 7}));
    EXPECT_EQ(zone.bricks[1], (std::vector<long>{9, 10, 12, 11, 13, 14, 16, 15}));
    // Around the top of the second brick: all four corners at its own depth, one step along one axis each.
    const auto& X = zone.columns[0];
    const auto& Y = zone.columns[1];
    const auto& Depth = zone.columns[2];
    for (std::size_t n = 0; n < 4; ++n) {
        const auto node = static_cast<std::size_t>(zone.bricks[1][n] - 1);
        const auto next = static_cast<std::size_t>(zone.bricks[1][(n + 1) % 4] - 1);
        EXPECT_EQ(Depth[node], 1007.0);
        EXPECT_NE(X[node] != X[next], Y[node] != Y[next]);
    }
}

TEST(BlockZoneMulti, NamesAndPlacesOneColumnPerTracer) {
    const GridModel grid = boxModel(3, 2, 1);
    DirectionArray<double> tracers;
    tracers.assign(grid.NCELLS, 2, 0.0);
    for (CellId cell = 1; cell <= grid.NCELLS; ++cell) {
        tracers(cell, 1) = cell;
        tracers(cell, 2) = 100.0 + cell;
    }
    const std::vector<PlotZone> zones =
        PlotFileParser(written([&](std::FILE* file) {
            writeBlockZoneMulti(file, grid, ZoneNodes::Shared, tracers, 2, 5.0, "TracerConcentration");
        })).zones();
    ASSERT_EQ(zones.size(), 1U);
    EXPECT_EQ(zones[0].variables, (std::vector<std::string>{"X", "Y", "Depth", "Value0001", "Value0002"}));
    EXPECT_EQ(zones[0].cellCentred, (std::vector<int>{4, 5}));
    EXPECT_EQ(zones[0].columns[3].back(), 6.0);
    EXPECT_EQ(zones[0].columns[4].front(), 101.0);
}

TEST(PointFile, WritesTinyValuesPlainAndOthersFixed) {
    const GridModel grid = boxModel(2, 1, 1);
    CellArray<double> values = countingValues(grid);
    values[1] = 1e-21;
    values[2] = 1e-3;
    const std::vector<std::string> lines = linesOf(
        written([&](std::FILE* file) { writePointFile(file, grid, values, "Saturation            "); }));
    EXPECT_EQ(lines[0], "TITLE=waterPLOT");
    EXPECT_EQ(lines[1], "VARIABLES= X,Y,Z,Saturation            ");
    EXPECT_EQ(lines[2], "Zone I =2,J=1,k=1,F = Point");
    EXPECT_EQ(lines[3], "5 10 1002.5 1e-21");
    EXPECT_EQ(lines[4], "15 10 1002.5 0.0010000000");
}

TEST(Slices, LeaveThePlaneLineOutOfOneLayer) {
    const GridModel grid = boxModel(3, 2, 1);
    EXPECT_EQ(
        written([&](std::FILE* file) { writeSlices(file, grid, countingValues(grid), 12.5, "SWAT_Frac"); }),
        "TIME ::\t12.5\nGrid\tSWAT_Frac\n - - - - - - - - - - - - -\n"
        "Y/ X =\t5\t15\t25\n10\t1\t2\t3\n30\t4\t5\t6\n");
}

TEST(Slices, AddACrossSectionToOneRow) {
    const GridModel grid = boxModel(2, 1, 2);
    EXPECT_EQ(
        written([&](std::FILE* file) { writeSlices(file, grid, countingValues(grid), 0.0, "Pres_Frac"); }),
        "TIME ::\t0\nGrid\tPres_Frac\n - - - - - - - - - - - - -\n"
        "plane Z = 1\nY/ X =\t5\t15\n10\t1\t2\n"
        "plane Z = 2\nY/ X =\t5\t15\n10\t3\t4\n"
        "Z/ X =\t5\t15\n1002.5\t1\t2\n1007.5\t3\t4\n");
}

TEST(Slices, HaveAPlaneLinePerLayer) {
    const GridModel grid = boxModel(2, 2, 3);
    const std::string text =
        written([&](std::FILE* file) { writeSlices(file, grid, countingValues(grid), 0.0, "SOIL_Frac"); });
    for (const char* plane : {"plane Z = 1\n", "plane Z = 2\n", "plane Z = 3\n"})
        EXPECT_NE(text.find(plane), std::string::npos);
    EXPECT_EQ(text.find("Z/ X ="), std::string::npos);
}

}  // namespace
}  // namespace kvr
