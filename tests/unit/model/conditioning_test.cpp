#include "model/conditioning.hpp"

#include "unit/model/conditioned.hpp"

#include <cstdio>
#include <gtest/gtest.h>

namespace kvr {
namespace {

TEST(Activity, AnInactiveEndShutsTheConnectionInBothFormulas) {
    for (const bool newtran : {false, true}) {
        GridModel grid = uniformBlocks(3, 1, 1, 100, 50, 10);
        grid.Active[2] = 0;
        const auto [out, t] = condition(std::move(grid), newtran);
        for (CellId cell = 1; cell <= 3; ++cell)
            for (int d = 1; d <= 6; ++d) EXPECT_EQ(t.Trans(cell, d), 0.0);
        EXPECT_EQ(t.HalfTrans(1, 2), 0.0);
        EXPECT_EQ(t.HalfTrans(3, 1), 0.0);
        EXPECT_EQ(t.Neighbour(1, 2), 2);
    }
}

TEST(ReleaseConditioning, LeavesWhatARunReads) {
    auto [out, t] = condition(uniformBlocks(3, 1, 1, 100, 50, 10), false);
    const double trans = t.Trans(1, 2), area = t.ConnArea(1, 2);
    releaseConditioning(true, t);
    EXPECT_EQ(t.Trans(1, 2), trans);
    EXPECT_EQ(t.Neighbour(1, 2), 2);
    EXPECT_EQ(t.DepthDiff(1, 2), 0.0);
    EXPECT_EQ(t.ConnArea(1, 2), area);
    for (const auto* released : {&t.HalfTrans, &t.HarmonicPerm, &t.ConnLength})
        EXPECT_EQ(released->slots.capacity(), 0U);
    releaseConditioning(false, t);
    EXPECT_EQ(t.ConnArea.slots.capacity(), 0U);
}

TEST(NetToGross, OfZeroShutsEveryConnectionOfTheLayer) {
    GridModel grid = uniformBlocks(2, 1, 2, 100, 50, 10);
    setCells(grid.NTG, {0, 0});
    grid.Active[1] = grid.Active[2] = 0;  // as the grid section leaves such cells
    const auto [out, t] = condition(std::move(grid), false);
    EXPECT_EQ(t.Trans(1, 2), 0.0);
    EXPECT_EQ(t.Trans(3, 5), 0.0);
    EXPECT_GT(t.Trans(3, 2), 0.0);
    EXPECT_EQ(out.NTG[1], 1e-20);
    EXPECT_EQ(out.PORO[1], 1e-20);
    EXPECT_EQ(out.PERMX[1], 0.0);
}

TEST(NetToGross, OfAlmostNothingShutsLateralFlowAndLeavesVerticalFlow) {
    const auto normal = condition(uniformBlocks(2, 1, 2, 100, 50, 10), false);
    GridModel grid = uniformBlocks(2, 1, 2, 100, 50, 10);
    setCells(grid.NTG, {1e-10, 1e-10});
    const auto [out, t] = condition(std::move(grid), false);
    EXPECT_LT(t.Trans(1, 2), 1e-9 * normal.table.Trans(1, 2));
    EXPECT_EQ(t.Trans(1, 6), normal.table.Trans(1, 6));
}

TEST(JFactor, IsOneEverywhereWhenTheOptionIsOff) {
    GridModel grid = threeBlocks();
    grid.PORO[2] = 0.0;
    grid.JFactor[1] = 9.0;
    const auto [out, t] = condition(std::move(grid), false);
    for (CellId cell = 1; cell <= 3; ++cell) EXPECT_EQ(out.JFactor[cell], 1.0);
}

TEST(JFactor, ScalesWithTheRootOfPorosityOverPermeability) {
    GridModel grid = threeBlocks();
    grid.PERMX[3] = 0.0;
    grid.PORO[2] = 0.0;
    RunOptions options;
    options.useJFunction = true;
    options.surfaceTension = 30.0;
    const auto [out, t] = condition(std::move(grid), false, options);
    EXPECT_TRUE(close(out.JFactor[1], 6.194060088, 1e-9));
    EXPECT_EQ(out.JFactor[2], 0.0);
    EXPECT_EQ(out.JFactor[3], 0.0);
}

/// Screen text of one conditioning run.
std::string spoken(GridModel grid) {
    std::FILE* file = std::tmpfile();
    ConnectionTable table;
    RunOptions options;
    options.useNewtran = false;
    CALCTRANS_STATICGEOPART(Console{file, nullptr, nullptr}, options, UnitSystem{}, grid, table);
    std::rewind(file);
    std::string text;
    for (int c = std::fgetc(file); c != EOF; c = std::fgetc(file)) text.push_back(static_cast<char>(c));
    std::fclose(file);
    return text;
}

TEST(Summary, CountsConnectionsAndShowsExtremesInOrder) {
    const std::string rule(45, '-');
    EXPECT_EQ(spoken(uniformBlocks(2, 1, 1, 100, 50, 10)),
              rule + "\n--- PRECONDITIONED GEOLOGICAL INFORMATION ---\n" + rule +
                  "\n"
                  "Total Connection of Cells  : 2\n"
                  "Max Extention of Geo_X dir : 100 Feet\n"
                  "Min Extention of Geo_X dir : 100 Feet\n"
                  "Max Extention of Geo_Y dir : 50 Feet\n"
                  "Min Extention of Geo_Y dir : 50 Feet\n"
                  "Max Extention of Geo_Z dir : 10 Feet\n"
                  "Min Extention of Geo_Z dir : 10 Feet\n"
                  "Minimum Area of Connection : 500 Ft^2\n"
                  "Maximum Area of Connection : 500 Ft^2\n"
                  "Minimum Length of Connecti : 100 Feet\n"
                  "Maximum Length of Connecti : 100 Feet\n"
                  "Minimum Harmonic Permeabil : 100 MD\n"
                  "Maximum Harmonic Permeabil : 100 MD\n"
                  "Minimum Transmissibility   : 0.563855 BBL-\n"
                  "Maximum Transmissibility   : 0.563855 BBL-\n" +
                  rule + "\n");
}

TEST(Summary, FollowsTheReportsOfTheMultipliers) {
    GridModel grid = uniformBlocks(2, 1, 1, 100, 50, 10);
    grid.equalsRows.push_back(row("MULTX", 2.0));
    grid.editRows.push_back(row("PORV", 0.5));
    grid.editRows.push_back(row("DEPTH", 0.5));
    grid.editRows.push_back(row("TRANZ", 0.5));
    const std::string text = spoken(std::move(grid));
    const std::string reports =
        " PORV    -> Multiplied by EDIT\n"
        " DEPTH   -> not surpported\n"
        " MULTX   -> Multiplied by GRID,EQUALS\n"
        " TRANZ   -> Multiplied by EDIT\n";
    EXPECT_EQ(text.substr(0, reports.size()), reports);
}

}  // namespace
}  // namespace kvr
