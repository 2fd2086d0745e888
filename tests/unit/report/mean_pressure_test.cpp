#include "report/mean_pressure.hpp"

#include "pressure/properties.hpp"

#include <gtest/gtest.h>

namespace kvr {
namespace {

/// Cells of 100, 200 and 300 volumes at 1000, 2000 and 3000 psia.
struct ThreeCells {
    GridModel grid;
    CellState state;

    explicit ThreeCells(double firstWater, double secondWater, double thirdWater) {
        grid.NCELLS = 3;
        grid.Active.assign(3, 1);
        allocateCellState(3, 0, state);
        const double water[] = {firstWater, secondWater, thirdWater};
        for (CellId cell = 1; cell <= 3; ++cell) {
            state.PoreVolume[cell] = 100.0 * cell;
            state.Pressure[cell] = 1000.0 * cell;
            state.Sw[cell] = water[cell - 1];
        }
    }
};

TEST(MeanPressure, IsWeighedByTheVolumeOfOilAndGas) {
    const ThreeCells cells(0.0, 0.5, 0.75);
    // 100 at 1000, 100 at 2000, 75 at 3000.
    EXPECT_DOUBLE_EQ(fieldPressure(cells.grid, cells.state), (100e3 + 200e3 + 225e3) / 275.0);
}

TEST(MeanPressure, IsWeighedByThePoreVolumeWhereThereIsOnlyWater) {
    const ThreeCells cells(1.0, 1.0, 1.0);
    EXPECT_DOUBLE_EQ(fieldPressure(cells.grid, cells.state), (100e3 + 400e3 + 900e3) / 600.0);
}

TEST(MeanPressure, LeavesOutCellsThatTakeNoPart) {
    ThreeCells cells(0.2, 0.2, 0.2);
    cells.grid.Active[3] = 0;
    EXPECT_DOUBLE_EQ(fieldPressure(cells.grid, cells.state), (100e3 + 400e3) / 300.0);
    cells.grid.Active[1] = cells.grid.Active[2] = 0;
    EXPECT_EQ(fieldPressure(cells.grid, cells.state), 0.0);
}

}  // namespace
}  // namespace kvr
