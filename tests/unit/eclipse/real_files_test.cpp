// A case that another simulator has written: its grid, properties and summaries.
#include "eclipse/activity_reader.hpp"
#include "eclipse/grid_reader.hpp"
#include "eclipse/init_reader.hpp"
#include "eclipse/restart_flux.hpp"
#include "eclipse/restart_velocity.hpp"
#include "eclipse/summary_reader.hpp"
#include "pressure/velocity.hpp"
#include "unit/eclipse/block_file.hpp"
#include "unit/eclipse/small_case.hpp"
#include "unit/fluid/table_samples.hpp"
#include "unit/quiet_console.hpp"

#include <cmath>
#include <filesystem>
#include <gtest/gtest.h>

namespace kvr {
namespace {

namespace fs = std::filesystem;

fs::path caseFolder() {
    const fs::path repository = fs::path(__FILE__).parent_path().parent_path().parent_path().parent_path();
    return repository.parent_path() / "shared" / "decks" / "restart" / "2D_HOMO";
}

/// The model of the case's deck: 21 x 21 blocks of 50 x 50 x 10 ft below 5000 ft, porosity 0.2, 1 md.
struct RealCase : testing::Test {
    void SetUp() override {
        if (!fs::exists(caseFolder())) GTEST_SKIP() << "no " << caseFolder();
        run.console = quiet.console;
        options().workingFolder = folder.path;
        options().startDay = 1;
        options().startMonth = 1;
        options().startYear = 2000;
        options().useNewtran = false;
        for (const auto& entry : fs::directory_iterator(caseFolder()))
            fs::copy(entry.path(), folder.path + entry.path().filename().string());
        GridModel& grid = run.grid;
        grid = rockOnly(21, 21, 1);
        for (CellId cell = 1; cell <= grid.NCELLS; ++cell) {
            grid.DX[cell] = grid.DY[cell] = 50.0;
            grid.DZ[cell] = 10.0;
            grid.TOPS[cell] = 5000.0;
            grid.PERMX[cell] = grid.PERMY[cell] = grid.PERMZ[cell] = 1.0;
        }
        fillTopsBelow(grid);
        buildBlockGrid(grid, run.units.VolumeFactor);
        CALCTRANS_STATICGEOPART(run.console, options(), run.units, grid, run.connections);
        std::rewind(quiet.console.screen);
    }
    RunOptions& options() { return run.options; }

    ScratchFolder folder;
    QuietConsole quiet;
    Simulation run;
};

TEST_F(RealCase, HasTheGeometryOfItsDeck) {
    GridModel read = run.grid;
    std::fill(read.xyz_3d.begin(), read.xyz_3d.end(), 0.0F);
    input_GRID(run.console, options(), run.units, "ECLIPSE", read);
    for (CellId cell = 1; cell <= read.NCELLS; ++cell)
        for (int n = 1; n <= 8; ++n)
            for (int axis = 0; axis < 3; ++axis)
                ASSERT_NEAR(cornerOf(read, cell, n)[axis], cornerOf(run.grid, cell, n)[axis], 1e-4);
    for (std::size_t node = 0; node < read.NodeX.size(); ++node) {
        ASSERT_NEAR(read.NodeX[node], run.grid.NodeX[node], 1e-4);
        ASSERT_NEAR(read.NodeY[node], run.grid.NodeY[node], 1e-4);
        ASSERT_NEAR(read.NodeZ[node], run.grid.NodeZ[node], 1e-4);
    }
}

TEST_F(RealCase, GivesAGridToAModelThatHasNone) {
    GridModel fresh;
    input_GRID(run.console, options(), run.units, "ECLIPSE", fresh);
    ASSERT_EQ(fresh.NCELLS, 441);
    EXPECT_NEAR(fresh.DX[441], 50.0, 1e-4);
    EXPECT_NEAR(fresh.CellCentre(441, 1), 1025.0, 1e-3);
    EXPECT_NEAR(fresh.BulkVolume[1], 25000.0 / 5.614583, 1e-2);
}

/// The fluids of the case's deck.
FluidTables fluidsOfTheCase() {
    FluidTables tables = samples::constantFluids();
    tables.OilPressure = {0.0, 8000.0};
    tables.OilFvf = {1.0, 0.99};
    tables.OilViscosity = {2.0, 2.0};
    tables.referencePressureWater = 0.0;
    tables.waterCompressibility = 3.03e-6;
    tables.oilDensity = 52.0;
    tables.waterDensity = 64.0;
    tables.regions.push_back(samples::fourRowRegion());
    finishTables(tables);
    return tables;
}

TEST_F(RealCase, GivesTheFieldOfItsFluxesAtTheFactorsOfItsFile) {
    run.fluids = fluidsOfTheCase();
    allocateCellState(run.grid.NCELLS, 0, run.state);
    AllocateVelocity(run.console, run.grid.NCELLS, FaceCount, false, run.velocity);
    ASSERT_TRUE(input_RST2Velocity(run, "ECLIPSE", 1).hasFluxes);
    const std::vector<ReadBlock> file = blocksOf(folder.path + "ECLIPSE.X0001");
    const auto value = [&](const char* keyword, CellId cell) {
        return static_cast<double>(blockNamed(file, keyword).data.reals[static_cast<std::size_t>(cell) - 1]);
    };
    constexpr double Injected = 603.03;  // stb/day
    double largest = 0.0;
    for (CellId cell = 1; cell <= run.grid.NCELLS; ++cell) {
        const auto through = [&](const char* oil, const char* water) {
            return value(oil, cell) / value("1OVERBO", cell) + value(water, cell) / value("1OVERBW", cell);
        };
        if (run.grid.CellI[cell] < 21)
            largest = std::max(
                largest, std::abs(run.velocity.CellFaceFlux(cell, 2) - through("FLOOILI+", "FLOWATI+")));
        if (run.grid.CellJ[cell] < 21)
            largest = std::max(
                largest, std::abs(run.velocity.CellFaceFlux(cell, 4) - through("FLOOILJ+", "FLOWATJ+")));
    }
    EXPECT_LT(largest, 1e-4 * Injected);
    // What enters and leaves a cell without a well does not cancel: water widens by 3 % from a cell to the
    // next beside the injector (5.5 of its 182 rb/day), and as the field fills up to 88,000 psia cells and
    // what is in them are compressed (6e-6 a psi of 891 rb at 230 psi a day).
    double imbalance = 0.0;
    for (CellId cell = 2; cell < run.grid.NCELLS; ++cell)
        imbalance = std::max(imbalance, std::abs(netOutflow(run.velocity, cell)));
    EXPECT_LT(imbalance, 182.0 * 0.03 + 891.0 * 6e-6 * 230.0 + 0.1);
    EXPECT_GT(imbalance, 1e-4 * Injected);
}

TEST_F(RealCase, HasTheSameGeometryInBothGridFiles) {
    GridModel byCells;
    input_GRID(run.console, options(), run.units, "ECLIPSE", byCells);
    fs::remove(folder.path + "ECLIPSE.GRID");
    GridModel byPillars;
    input_GRID(run.console, options(), run.units, "ECLIPSE", byPillars);
    ASSERT_EQ(byPillars.NCELLS, byCells.NCELLS);
    for (CellId cell = 1; cell <= byCells.NCELLS; ++cell) {
        for (int n = 1; n <= 8; ++n)
            for (int axis = 0; axis < 3; ++axis)
                ASSERT_NEAR(cornerOf(byPillars, cell, n)[axis], cornerOf(byCells, cell, n)[axis], 1e-4);
        ASSERT_NEAR(byPillars.DX[cell], byCells.DX[cell], 1e-4);
        ASSERT_NEAR(byPillars.BulkVolume[cell], byCells.BulkVolume[cell], 1e-4);
        ASSERT_EQ(byPillars.Active[cell], byCells.Active[cell]);
    }
    EXPECT_NE(quiet.screenText().find(" Geometry from the .EGRID file :: "), std::string::npos);
}

TEST_F(RealCase, HasTheActivityOfItsDeck) {
    input_ACTNUM_EGRID(run.console, options(), "ECLIPSE", run.grid);
    EXPECT_EQ(quiet.screenText().find("WARNING"), std::string::npos);
}

TEST_F(RealCase, HasOurTransmissibilitiesAndPoreVolumes) {
    const ConnectionTable own = run.connections;
    input_INIT_TRANS(run.console, options(), run.units, "ECLIPSE", run.grid, run.connections);
    const std::string text = quiet.screenText();
    EXPECT_EQ(text.find("ERROR"), std::string::npos) << text;
    for (CellId cell = 1; cell <= 441; ++cell) {
        for (const int face : {2, 4}) {
            if (own.Neighbour(cell, face) == 0) continue;
            const double read = run.connections.Trans(cell, face);
            ASSERT_GT(read, 0.0);
            ASSERT_NEAR(own.Trans(cell, face) / read, 1.0, 1e-3);
            ASSERT_EQ(run.connections.Trans(own.Neighbour(cell, face), face - 1), read);
        }
        const double volume = run.grid.PORO[cell] * run.grid.NTG[cell] * run.grid.BulkVolume[cell];
        ASSERT_NEAR(volume / run.grid.PORV[cell], 1.0, 1e-3);
    }
}

TEST_F(RealCase, TellsItsSummaries) {
    Schedule schedule;
    schedule.steps.resize(1);
    for (const char* name : {"INJ", "PRD"}) {
        ScheduleWell well;
        well.name = name;
        schedule.steps[0].wells.push_back(well);
    }
    SummaryResponse response;
    read_ECL_response(run.console, options(), schedule, "ECLIPSE", 1, response);
    ASSERT_EQ(response.time.size(), 1U);
    EXPECT_EQ(response.time[0], 100.0);
    const auto last = [&](int id) { return responseOf(response, id, 1)->front(); };
    EXPECT_NEAR(last(44), 49.2376480, 1e-6);   // FOPR, as an independent reading gives it
    EXPECT_NEAR(last(46), 24.7720871, 1e-6);   // FWPR
    EXPECT_NEAR(last(41), 31884.00195, 1e-4);  // FPR
    EXPECT_NEAR(last(47), 0.33471391, 1e-7);   // FWCT
    ASSERT_EQ(response.connections.size(), 2U);
    EXPECT_EQ(response.connections[0].well, "INJ");
    EXPECT_EQ(response.connections[1].well, "PRD");
    EXPECT_TRUE(response.wellNames.empty());
}

TEST_F(RealCase, IsReadWholeBlockByBlock) {
    for (const char* extension : {"EGRID", "INIT", "X0000", "X0001", "SMSPEC", "S0001", "GRID"})
        EXPECT_GT(blocksOf(folder.path + "ECLIPSE." + extension).size(), 5U);
}

}  // namespace
}  // namespace kvr
