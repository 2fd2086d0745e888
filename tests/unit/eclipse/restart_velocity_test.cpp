// A restart of another simulator as the state of a run: numbers worked by hand.
#include "eclipse/restart_velocity.hpp"

#include "eclipse/restart_file.hpp"
#include "eclipse/restart_flux.hpp"
#include "fluid/black_oil.hpp"
#include "pressure/properties.hpp"
#include "unit/pressure/small_run.hpp"
#include "unit/quiet_console.hpp"
#include "unit/scratch_folder.hpp"

#include <cmath>
#include <filesystem>
#include <gtest/gtest.h>

namespace kvr {
namespace {

constexpr std::size_t HeadSlots = 40;

/// A run of nx by ny by nz blocks and the restart CASE.X0001 that it is to read.
struct RestartCase {
    explicit RestartCase(int nx, int ny = 1, int nz = 1) {
        sample::makeRun(nx, ny, nz, sample::waterAndOil(0.0), run);
        run.console = quiet.console;
        run.options.hasOil = run.options.hasWater = true;
        run.options.workingFolder = folder.path;
        run.options.dataFileBase = folder.path + "CASE";
        refreshProperties(run.grid, run.fluids, run.state);
        for (double& flux : run.velocity.CellFaceFlux.slots) flux = 99.0;  // of the step before
        head[2] = 2;
        head[8] = nx;
        head[9] = ny;
        head[10] = nz;
        head[11] = run.grid.NCELLS;
    }
    void begin() {
        ASSERT_EQ(open_write(folder.path + "CASE.X0001", writer), 0);
        write_keyword<std::int32_t>(writer, "INTEHEAD", std::span<const std::int32_t>(head));
        write_keyword<double>(writer, "DOUBHEAD", 1, [&](std::size_t) { return time; });
    }
    void add(const char* keyword, const std::vector<float>& values) {
        write_keyword<float>(writer, keyword, std::span<const float>(values));
    }
    template <class T>
    void addAs(const char* keyword, const std::vector<T>& values) {
        write_keyword<T>(writer, keyword, std::span<const T>(values));
    }
    RestartReading read() {
        close(writer);
        return input_RST2Velocity(run, "CASE", 1);
    }
    [[nodiscard]] double outward(CellId cell, int face) const {
        return FaceSign[static_cast<std::size_t>(face) - 1] * run.velocity.CellFaceFlux(cell, face);
    }

    ScratchFolder folder;
    QuietConsole quiet;
    Simulation run;
    RecordWriter writer;
    std::vector<std::int32_t> head = std::vector<std::int32_t>(HeadSlots, 0);
    double time = 30.0;
};

// --- conversion --------------------------------------------------------------------------------------------

TEST(RestartFlux, TakesTheGasThatTheOilHoldsOffTheGas) {
    FluxFactors factors;
    factors.Bo = 1.5;
    factors.Bg = 0.005;
    factors.Rs = 200.0;
    factors.surfaceGas = 1.0 / GasRatioFactor;
    // 1000 Mscf are 178107.6 surface barrels, 890.538 rb; oil of 100 rb holds 66.667 rb of gas.
    const PhaseFlux flux = reservoirFlux({100.0 / 1.5, 0.0, 1000.0}, factors);
    EXPECT_NEAR(flux.oil, 100.0, 1e-12);
    EXPECT_NEAR(flux.gas, 823.87142, 1e-5);
}

TEST(RestartFlux, HasEqualVolumesOfGasAndLiquidInMetricFiles) {
    FluxFactors factors;
    factors.Bo = 1.5;
    factors.Bg = 0.005;
    factors.Rs = 200.0;
    EXPECT_NEAR(reservoirFlux({100.0 / 1.5, 0.0, 1000.0}, factors).gas, 5.0 - 66.0 - 2.0 / 3.0, 1e-9);
}

TEST(RestartFlux, UndoesOilInGasAndGasInOilTogether) {
    FluxFactors factors;
    factors.Bo = 1.4;
    factors.Bw = 1.02;
    factors.Bg = 0.004;
    factors.Rs = 150.0;
    factors.Rv = 0.05;  // stb/Mscf
    factors.surfaceGas = 1.0 / GasRatioFactor;
    const double oil = 80.0 / 1.4, gas = 20.0 / 0.004;  // stb and surface barrels of what flows as each phase
    const double Fo = oil + 0.05 * GasRatioFactor * gas;
    const double Fg = (gas + 150.0 * oil) * GasRatioFactor;
    const PhaseFlux flux = reservoirFlux({Fo, 10.0, Fg}, factors);
    EXPECT_NEAR(flux.oil, 80.0, 1e-9);
    EXPECT_NEAR(flux.water, 10.2, 1e-12);
    EXPECT_NEAR(flux.gas, 20.0, 1e-9);
}

// --- fluxes of a file --------------------------------------------------------------------------------------

TEST(RestartVelocity, PutsTheFluxOfAFaceAtBothItsCells) {
    RestartCase c(3);
    c.begin();
    c.add("BO", {1.5F, 1.5F, 1.5F});
    c.add("FLOOILI+", {100.0F, 40.0F, 77.0F});
    EXPECT_TRUE(c.read().hasFluxes);
    EXPECT_NEAR(c.outward(1, 2), 150.0, 1e-9);
    EXPECT_NEAR(c.outward(2, 1), -150.0, 1e-9);  // what leaves cell 1 enters cell 2
    EXPECT_NEAR(c.outward(2, 2), 60.0, 1e-9);
    EXPECT_EQ(c.outward(3, 2), 0.0);  // there is nothing behind the last cell
    EXPECT_NE(c.quiet.screenText().find("FLUX DATA FOUND :: Trace Streamline using FLO_X+"),
              std::string::npos);
}

TEST(RestartVelocity, LeavesAxesThatTheFileDoesNotHaveWithoutFlux) {
    RestartCase c(2, 2, 2);
    c.begin();
    c.add("FLOOILI+", std::vector<float>(8, 10.0F));
    EXPECT_TRUE(c.read().hasFluxes);
    for (CellId cell = 1; cell <= 8; ++cell)
        for (int face = 3; face <= 6; ++face) EXPECT_EQ(c.run.velocity.CellFaceFlux(cell, face), 0.0);
    EXPECT_NEAR(c.run.velocity.CellFaceFlux(1, 2), 10.0, 1e-9);
}

TEST(RestartVelocity, TellsTheAxesApart) {
    RestartCase c(2, 2, 2);
    c.begin();
    c.add("FLRWATI+", {1, 0, 2, 0, 3, 0, 4, 0});
    c.add("FLRWATJ+", {10, 20, 0, 0, 30, 40, 0, 0});
    c.add("FLRWATK+", {100, 200, 300, 400, 0, 0, 0, 0});
    c.read();
    const VelocityField& field = c.run.velocity;
    EXPECT_EQ(field.CellFaceFlux(3, 2), 2.0);  // cell (1, 2, 1)
    EXPECT_EQ(field.CellFaceFlux(4, 1), 2.0);
    EXPECT_EQ(field.CellFaceFlux(6, 4), 40.0);  // cell (2, 1, 2)
    EXPECT_EQ(field.CellFaceFlux(8, 3), 40.0);
    EXPECT_EQ(field.CellFaceFlux(2, 6), 200.0);  // cell (2, 1, 1)
    EXPECT_EQ(field.CellFaceFlux(6, 5), 200.0);
}

TEST(RestartVelocity, ConvertsTheGasFluxOfAFieldAndOfAMetricFile) {
    for (const std::int32_t units : {2, 1}) {
        RestartCase c(2);
        c.run.fluids = samples::lightOil();
        c.run.options.hasGas = true;
        c.head[2] = units;
        const bool field = units == 2;
        c.begin();
        c.add("SGAS", {0.1F, 0.1F});
        c.add("BO", {1.5F, 1.5F});
        c.add("BG", field ? std::vector<float>{0.890538F, 0.890538F} : std::vector<float>{0.005F, 0.005F});
        c.add("RS", field ? std::vector<float>{1.1229166F, 1.1229166F} : std::vector<float>{200.0F, 200.0F});
        c.add("FLOOILI+", {66.6666667F, 0.0F});
        c.add("FLOGASI+", {field ? 1000.0F : 20000.0F, 0.0F});
        c.read();
        // Field: 100 rb of oil and 823.871 of gas; metric: 100 m3 of oil, 20000 x 0.005 - 66.667 m3 of gas.
        const double expected = field ? 923.87142 : (100.0 + 100.0 - 66.6666667) * 6.2898111;
        EXPECT_NEAR(c.run.velocity.CellFaceFlux(1, 2), expected, 2e-3);
    }
}

TEST(RestartVelocity, ClosesTheFacesOfCellsThatAreInactiveBehindTheDeck) {
    RestartCase c(3);
    c.run.grid.Active[2] = 0;  // as the activity of the other run has it
    c.head[11] = 2;
    c.begin();
    c.add("PRESSURE", {3100.0F, 2900.0F});
    c.read();
    EXPECT_EQ(c.run.velocity.CellFaceFlux(1, 2), 0.0);
    EXPECT_EQ(c.run.velocity.CellFaceFlux(3, 1), 0.0);
}

TEST(RestartVelocity, ReadsPhasePressuresAndTheOilSaturation) {
    RestartCase c(2);
    c.begin();
    c.add("POIL", {3100.0F, 3000.0F});
    c.add("PWAT", {3090.0F, 2995.0F});
    c.add("SOIL", {0.7F, 0.6F});
    c.add("SWAT", {0.25F, 0.35F});
    c.read();
    EXPECT_EQ(c.run.state.PressureW[1], 3090.0);
    EXPECT_NEAR(c.run.state.So[1], 0.7, 1e-7);  // as the file says, not what water leaves
    EXPECT_NEAR(c.run.state.Sw[2], 0.35, 1e-7);
}

TEST(RestartVelocity, TakesReservoirFluxesAsTheyAre) {
    RestartCase c(2);
    c.begin();
    c.add("FLROILI+", {3.0F, 0.0F});
    c.add("FLRWATI+", {4.5F, 0.0F});
    EXPECT_TRUE(c.read().hasFluxes);
    EXPECT_NEAR(c.run.velocity.CellFaceFlux(1, 2), 7.5, 1e-12);
    const double area = c.run.connections.ConnArea(1, 2);
    ASSERT_GT(area, 0.0);
    EXPECT_NEAR(c.run.velocity.CellFaceVelocity(1, 2), 7.5 * 5.614583 / area, 1e-12);
}

TEST(RestartVelocity, WithoutFluxesIsTheFieldOfItsPressures) {
    RestartCase c(3, 2);
    const std::vector<float> pressures = {3100.0F, 3050.0F, 2990.0F, 3080.0F, 3040.0F, 3000.0F};
    c.begin();
    c.add("PRESSURE", pressures);
    c.add("SWAT", std::vector<float>(6, 0.5F));
    EXPECT_FALSE(c.read().hasFluxes);
    EXPECT_NE(c.quiet.screenText().find("FLUX NOT FOUND..."), std::string::npos);
    EXPECT_NE(c.quiet.screenText().find("Construct Velocity Field from Pressure"), std::string::npos);

    RestartCase own(3, 2);
    for (CellId cell = 1; cell <= 6; ++cell) {
        own.run.state.Pressure[cell] = static_cast<double>(pressures[static_cast<std::size_t>(cell) - 1]);
        own.run.state.Sw[cell] = own.run.state.So[cell] = 0.5;
    }
    refreshProperties(own.run.grid, own.run.fluids, own.run.state);
    BuildVelocityFromPressure(own.run.options, own.run.units, own.run.grid, own.run.connections,
                              own.run.state, {}, own.run.velocity);
    EXPECT_GT(own.run.velocity.CellFaceFlux(1, 2), 0.0);
    EXPECT_EQ(c.run.velocity.CellFaceFlux.slots, own.run.velocity.CellFaceFlux.slots);
    EXPECT_EQ(c.run.state.So[3], 0.5);
}

TEST(RestartVelocity, OfOurOwnRunIsItsField) {
    RestartCase writing(3, 2, 2);
    Simulation& w = writing.run;
    for (CellId cell = 1; cell <= 12; ++cell) {
        w.state.Pressure[cell] = 3000.0 + 7.0 * ((cell * 5) % 12);
        w.state.Sw[cell] = 0.25 + 0.04 * cell;
        w.state.So[cell] = 1.0 - w.state.Sw[cell];
    }
    refreshProperties(w.grid, w.fluids, w.state);
    BuildVelocityFromPressure(w.options, w.units, w.grid, w.connections, w.state, {}, w.velocity);
    for (CellId cell = 1; cell <= 12; ++cell) w.state.Sw[cell] += 0.02;  // transport came behind the field
    refreshProperties(w.grid, w.fluids, w.state);
    w.options.outputEclipse = "Yes";
    writeRestartFile(w.console, w.options, w.clock, w.grid, w.state, {w.units, w.connections, w.velocity},
                     {});

    RestartCase reading(3, 2, 2);
    reading.run.options.workingFolder = writing.folder.path;
    const RestartReading found = input_RST2Velocity(reading.run, "CASE", 1);
    EXPECT_TRUE(found.hasFluxes);
    double largest = 0.0;
    for (const double flux : w.velocity.CellFaceFlux.slots) largest = std::max(largest, std::abs(flux));
    for (std::size_t n = 6; n < w.velocity.CellFaceFlux.slots.size(); ++n)
        EXPECT_NEAR(reading.run.velocity.CellFaceFlux.slots[n], w.velocity.CellFaceFlux.slots[n],
                    1e-6 * largest);
}

// --- cells -------------------------------------------------------------------------------------------------

TEST(RestartVelocity, ConvertsRatiosAndGasFactorsOfTheFile) {
    RestartCase c(2);
    c.run.fluids = samples::lightOil();
    c.run.options.hasGas = true;
    c.begin();
    c.add("PRESSURE", {4500.0F, 4500.0F});
    c.add("SWAT", {0.2F, 0.2F});
    c.add("SGAS", {0.1F, 0.1F});
    c.add("RS", {1.27F, 1.27F});
    c.add("BG", {0.811F, 0.811F});
    c.read();
    EXPECT_NEAR(c.run.state.Rs[1], 226.196674, 1e-4);
    EXPECT_NEAR(c.run.state.Bg[1], 0.004553427, 1e-9);
    EXPECT_NEAR(c.run.state.So[1], 0.7, 1e-7);
}

TEST(RestartVelocity, ReadsMetricFilesIntoInternalUnits) {
    RestartCase c(2);
    c.head[2] = 1;
    c.begin();
    c.add("PRESSURE", {200.0F, 199.0F});
    c.add("FLRWATI+", {10.0F, 0.0F});
    c.read();
    EXPECT_NEAR(c.run.state.Pressure[1], 200.0 * 14.50377, 1e-3);
    EXPECT_NEAR(c.run.velocity.CellFaceFlux(1, 2), 62.89811, 1e-3);  // rb/day
}

TEST(RestartVelocity, GivesAnAbsentPhaseAFactorOfOne) {
    RestartCase c(2);
    c.begin();
    c.add("PRESSURE", {3000.0F, 3000.0F});
    c.add("BW", {1.25F, 1.25F});
    c.add("SWAT", {0.0F, 0.5F});
    c.read();
    EXPECT_EQ(c.run.state.Bw[1], 1.0);
    EXPECT_EQ(c.run.state.Bw[2], 1.25);
}

TEST(RestartVelocity, KeepsPropertiesOfTheFileAndComputesTheOthers) {
    RestartCase c(2);
    c.begin();
    c.add("PRESSURE", {3000.0F, 3000.0F});
    c.add("VOIL", {5.0F, 6.0F});
    c.add("WATKR", {0.25F, 0.5F});
    c.read();
    EXPECT_EQ(c.run.state.MuO[2], 6.0);
    EXPECT_EQ(c.run.state.LambdaW[1], 0.25 / 0.5);
    EXPECT_NEAR(c.run.state.LambdaO[1], c.run.state.KroCell[1] / 5.0, 1e-15);
    EXPECT_GT(c.run.state.KroCell[1], 0.0);
}

TEST(RestartVelocity, LeavesOutWhatIsNoValue) {
    RestartCase c(3);
    c.begin();
    c.add("PRESSURE", {3100.0F, std::nanf(""), -5.0F});
    c.add("SWAT", {0.4F, 7.0F, 1e30F});
    c.add("FLRWATI+", {std::nanf(""), 2.0F, 0.0F});
    c.read();
    EXPECT_NEAR(c.run.state.Pressure[1], 3100.0, 1e-9);
    EXPECT_EQ(c.run.state.Pressure[2], 3000.0);
    EXPECT_EQ(c.run.state.Pressure[3], 3000.0);
    EXPECT_EQ(c.run.state.Sw[2], 0.2);
    EXPECT_EQ(c.run.velocity.CellFaceFlux(1, 2), 0.0);
    EXPECT_EQ(c.run.velocity.CellFaceFlux(2, 2), 2.0);
    EXPECT_NE(c.quiet.screenText().find("WARNING :: 2 values of PRESSURE"), std::string::npos);
}

TEST(RestartVelocity, SpreadsArraysOverTheActiveCells) {
    RestartCase c(3);
    c.run.grid.Active[2] = 0;
    c.head[11] = 2;
    c.begin();
    c.add("SWAT", {0.31F, 0.33F});
    c.read();
    EXPECT_NEAR(c.run.state.Sw[1], 0.31, 1e-7);
    EXPECT_EQ(c.run.state.Sw[2], 0.2);
    EXPECT_NEAR(c.run.state.Sw[3], 0.33, 1e-7);
}

TEST(RestartVelocity, KeepsTheSaturationsOfARunThatMovesItsOwn) {
    RestartCase c(2);
    c.run.options.useEclipsePressure = true;
    c.run.clock.dt = 5.0;
    c.begin();
    c.add("PRESSURE", {3100.0F, 3000.0F});
    c.add("SWAT", {0.6F, 0.6F});
    c.read();
    EXPECT_EQ(c.run.state.Sw[1], 0.2);
    EXPECT_EQ(c.run.state.Pressure[1], 3100.0);
    EXPECT_EQ(c.run.clock.dt, 5.0);
}

// --- time, failures ----------------------------------------------------------------------------------------

TEST(RestartVelocity, MakesTheStepEndAtTheRestart) {
    RestartCase c(2);
    c.run.clock.time = 10.0;
    c.begin();
    EXPECT_EQ(c.read().time, 30.0);
    EXPECT_EQ(c.run.clock.dt, 20.0);
}

TEST(RestartVelocity, KeepsTheStepWhereTheRestartLiesBehind) {
    RestartCase c(2);
    c.run.clock.time = 50.0;
    c.run.clock.dt = 7.0;
    c.begin();
    c.read();
    EXPECT_EQ(c.run.clock.dt, 7.0);
    EXPECT_NE(c.quiet.screenText().find("WARNING :: The restart stands at 30"), std::string::npos);
}

TEST(RestartVelocity, OfAMissingFileLeavesEverythingAsItWas) {
    RestartCase c(2);
    const std::vector<double> pressures = c.run.state.Pressure.slots;
    const RestartReading found = input_RST2Velocity(c.run, "CASE", 7);
    EXPECT_FALSE(found.found);
    EXPECT_EQ(c.run.state.Pressure.slots, pressures);
    EXPECT_NE(c.quiet.screenText().find(" RESTART File Not Found :: "), std::string::npos);
}

TEST(RestartVelocity, TellsOfAnotherGrid) {
    RestartCase c(2);
    c.head[8] = 5;
    c.head[11] = 5;
    c.begin();
    c.add("PRESSURE", std::vector<float>(5, 3100.0F));
    c.read();
    EXPECT_NE(c.quiet.screenText().find(" ERROR :: ACTNUM not match from INIT and KVR"), std::string::npos);
    EXPECT_NE(c.quiet.screenText().find("Dimension does not match - Restart and Grid file"),
              std::string::npos);
    EXPECT_NE(c.quiet.screenText().find("WARNING :: PRESSURE of the restart has 5 values"),
              std::string::npos);
}

TEST(RestartVelocity, StopsAtAFileThatEndsInsideABlock) {
    RestartCase c(3);
    c.begin();
    c.add("PRESSURE", {3100.0F, 3050.0F, 3000.0F});
    c.add("SWAT", {0.3F, 0.3F, 0.3F});
    close(c.writer);
    const std::string path = c.folder.path + "CASE.X0001";
    std::filesystem::resize_file(path, std::filesystem::file_size(path) - 6);
    c.run.console = consoleOnStandardError();
    EXPECT_EXIT(input_RST2Velocity(c.run, "CASE", 1), testing::ExitedWithCode(1),
                "this block has more elements than the rest of the file holds");
}

TEST(RestartVelocity, TellsOfDimensionsThatNoIntegerHolds) {
    for (const std::int32_t wild : {2147483647, -2147483647 - 1}) {
        RestartCase c(2);
        c.head[8] = c.head[9] = c.head[10] = wild;
        c.begin();
        EXPECT_TRUE(c.read().found);
        EXPECT_NE(c.quiet.screenText().find("Dimension does not match"), std::string::npos);
    }
}

// --- wells -------------------------------------------------------------------------------------------------

/// Two wells at the ends of a row of three cells: an injector of water and a producer.
struct WellCase : RestartCase {
    WellCase() : RestartCase(3) {
        head[16] = 2;   // wells
        head[17] = 1;   // connections of a well
        head[24] = 12;  // words of IWEL
        head[26] = 7;   // of XWEL
        head[27] = 3;   // of ZWEL
        head[32] = 14;  // of ICON
        head[33] = 3;   // of SCON
        head[34] = 3;   // of XCON
    }
    void addTables(const std::vector<std::int32_t>& wells = {1, 1, 1, 0, 1, 1, 3, 0, 0, 0, 1, 0,
                                                             3, 1, 1, 0, 1, 1, 1, 0, 0, 0, 1, 0},
                   const char* first = "I-1", const char* second = "P-1") {
        addAs<std::int32_t>("IWEL", wells);
        addAs<double>("XWEL",
                      {0.0, -100.0, 0.0, -100.0, 0.0, 0.0, 3500.0, 60.0, 40.0, 0.0, 0.0, 0.0, 0.0, 2500.0});
        addAs<Text8>("ZWEL", {text8(first), text8(""), text8(""), text8(second), text8(""), text8("")});
        addAs<std::int32_t>(
            "ICON", {1, 1, 1, 1, 0, 1, 0, 0, 0, 0, 0, 0, 0, 3, 1, 3, 1, 1, 0, 1, 0, 0, 0, 0, 0, 0, 0, 3});
        add("SCON", {2.5F, 0.0F, 0.5F, 1.5F, 0.0F, 0.5F});
        addAs<double>("XCON", {0.0, -100.0, 0.0, 60.0, 40.0, 0.0});
    }
};

TEST(RestartWells, OfADeckWithoutWellsComeFromTheFile) {
    WellCase c;
    c.begin();
    c.addTables();
    c.add("PRESSURE", {3100.0F, 3000.0F, 2900.0F});
    c.read();
    ASSERT_EQ(c.run.wells.wells.size(), 2U);
    const Well& injector = c.run.wells.wells[0];
    const Well& producer = c.run.wells.wells[1];
    EXPECT_EQ(injector.WellName, "I-1");
    EXPECT_EQ(injector.WellKind, "inj");
    EXPECT_EQ(injector.InjectFluid, "wat");
    EXPECT_EQ(injector.Bhp, 3500.0);
    EXPECT_EQ(injector.connections.at(0).ConnCell, 1);
    EXPECT_EQ(injector.connections.at(0).ConnWI, 2.5);
    EXPECT_NEAR(injector.connections.at(0).reservoirRate, 100.0, 1e-9);  // Bw is 1
    EXPECT_EQ(producer.WellKind, "prd");
    EXPECT_NEAR(producer.reservoirRate, -100.0, 1e-9);
    EXPECT_EQ(producer.WellQw, -40.0);
    EXPECT_EQ(c.run.tags.CellTag[1], CellTagKind::Injector);
    EXPECT_EQ(c.run.tags.CellTag[2], CellTagKind::Pop);
    EXPECT_EQ(c.run.tags.CellTag[3], CellTagKind::Producer);
    EXPECT_NE(
        c.quiet.screenText().find("WARNING :: Welldata not read from Input - Overwrite from SUMMRY file"),
        std::string::npos);
}

TEST(RestartWells, OfTheDeckTakeTheirRatesFromTheFile) {
    WellCase c;
    sample::addWell("inj", "rate", 5.0, 9000.0, 1, c.run);
    c.run.wells.wells[0].WellName = "I-1";
    sample::addWell("prd", "bhp", 0.0, 2000.0, 3, c.run);
    c.run.wells.wells[1].WellName = "P-1";
    c.begin();
    c.addTables();
    c.read();
    EXPECT_NEAR(c.run.wells.wells[0].reservoirRate, 100.0, 1e-9);
    EXPECT_EQ(c.run.wells.wells[1].Bhp, 2500.0);
    EXPECT_EQ(c.quiet.screenText().find("not consistent"), std::string::npos);
}

TEST(RestartWells, ThatDifferFromTheDeckAreTold) {
    WellCase c;
    sample::addWell("inj", "rate", 5.0, 9000.0, 2, c.run);
    c.run.wells.wells[0].WellName = "I-1";
    c.begin();
    c.addTables();
    c.read();
    EXPECT_NE(c.quiet.screenText().find("WARNING :: Well Data from ECL is not consistent with KVR"),
              std::string::npos);
}

TEST(RestartWells, WithoutTablesFlowWhatTheFieldTakesFromTheirCells) {
    RestartCase c(3);
    sample::addWell("inj", "rate", 5.0, 9000.0, 1, c.run);
    sample::addWell("prd", "bhp", 0.0, 2000.0, 3, c.run);
    c.begin();
    c.add("FLRWATI+", {30.0F, 30.0F, 0.0F});
    c.read();
    EXPECT_NEAR(c.run.wells.wells[0].reservoirRate, 30.0, 1e-9);
    EXPECT_NEAR(c.run.wells.wells[1].reservoirRate, -30.0, 1e-9);
    EXPECT_NEAR(c.run.wells.wells[0].WellQw, 30.0, 1e-9);
}

TEST(RestartWells, BeyondTheGridAreLeftOutAndTheOthersKeepTheirRates) {
    WellCase c;
    c.begin();
    c.addTables({9, 1, 1, 0, 1, 1, 3, 0, 0, 0, 1, 0, 3, 1, 1, 0, 1, 1, 1, 0, 0, 0, 1, 0}, "", "");
    c.read();
    ASSERT_EQ(c.run.wells.wells.size(), 1U);
    EXPECT_EQ(c.run.wells.wells[0].WellName, "W2");  // nothing names it
    EXPECT_EQ(c.run.wells.wells[0].Bhp, 2500.0);
    EXPECT_NEAR(c.run.wells.wells[0].reservoirRate, -100.0, 1e-9);
    EXPECT_FALSE(c.run.wells.wells[0].shut);
    EXPECT_NE(c.quiet.screenText().find("ERROR :: Invailed Well Input Data (Location)"), std::string::npos);
}

TEST(RestartWells, KeepTheirPlacesFromRestartToRestart) {
    WellCase c;
    c.begin();
    // The first well is not drilled yet: its type is 0.
    c.addTables({1, 1, 1, 0, 1, 1, 0, 0, 0, 0, 0, 0, 3, 1, 1, 0, 1, 1, 1, 0, 0, 0, 1, 0}, "I-1", "P-1");
    c.read();
    ASSERT_EQ(c.run.wells.wells.size(), 1U);
    EXPECT_EQ(c.run.wells.wells[0].WellName, "P-1");
    c.begin();
    c.addTables();
    c.read();
    ASSERT_EQ(c.run.wells.wells.size(), 2U);
    EXPECT_EQ(c.run.wells.wells[0].WellName, "P-1");
    EXPECT_EQ(c.run.wells.wells[1].WellName, "I-1");
    EXPECT_NEAR(c.run.wells.wells[1].reservoirRate, 100.0, 1e-9);
    c.begin();  // a restart without any
    c.read();
    ASSERT_EQ(c.run.wells.wells.size(), 2U);
    EXPECT_TRUE(c.run.wells.wells[0].shut);
}

TEST(RestartWells, WithoutConnectionRatesShareOutThoseOfTheWell) {
    WellCase c;
    c.head[34] = 0;  // no words of XCON
    c.begin();
    c.addTables();
    c.read();
    ASSERT_EQ(c.run.wells.wells.size(), 2U);
    EXPECT_FALSE(c.run.wells.wells[1].shut);
    EXPECT_LT(c.run.wells.wells[1].reservoirRate, 0.0);
    EXPECT_EQ(c.run.wells.wells[1].WellQo, -60.0);
}

TEST(RestartWells, OfLengthsThatTheFileDoesNotHoldAreNone) {
    WellCase c;
    c.head[16] = 2000000000;
    c.head[24] = 2000000000;
    c.head[17] = 2000000000;
    c.begin();
    c.addTables();
    c.read();
    EXPECT_TRUE(c.run.wells.wells.empty());
}

}  // namespace
}  // namespace kvr
