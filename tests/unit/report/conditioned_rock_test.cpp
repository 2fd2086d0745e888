#include "report/conditioned_rock.hpp"

#include "unit/report/report_run.hpp"

#include <cmath>
#include <gtest/gtest.h>
#include <sstream>

namespace kvr {
namespace {

/// The small run with rock and averages that tell cells and properties apart.
struct ConditionedRun : ReportRun {
    ConditionedRun() {
        fill(run.grid.PORO, 0.01);
        fill(run.grid.PERMX, 1.0);
        fill(run.grid.PERMY, 2.0);
        fill(run.grid.PERMZ, 3.0);
        fill(run.grid.upscaled.PORO, 0.001);
        fill(run.grid.upscaled.PERMX, 10.0);
        fill(run.grid.upscaled.PERMY, 20.0);
        fill(run.grid.upscaled.PERMZ, 30.0);
    }
    void fill(CellArray<double>& array, double step) const {
        array.assign(run.grid.NCELLS, 0.0);
        for (CellId cell = 1; cell <= run.grid.NCELLS; ++cell) array[cell] = step * cell;
    }
    void smooth(const std::vector<std::string>& names) {
        run.options.parameterSmoothing = true;
        for (const std::string& name : names) run.options.smoothingRows.push_back({name, {1, 1, 1}, 0});
    }
};

TEST(SmoothedPlots, ShowEveryPropertyOfTheListAlsoWithoutPasses) {
    ConditionedRun test;
    test.smooth({"PERMX", "PERMZ", "PORO"});
    writeConditionedRock(test.run);
    const PlotZone permeability = test.zones("Smoothed_Kx.plt").at(0);
    EXPECT_EQ(permeability.columns[3][4], 5.0);
    EXPECT_EQ(test.zones("Smoothed_Kz.plt").at(0).columns[3][4], 15.0);
    const PlotZone porosity = test.zones("Smoothed_Poro.plt").at(0);
    EXPECT_EQ(porosity.title, "PoroPLOT");
    EXPECT_EQ(porosity.columns[3][4], 0.05);
    EXPECT_FALSE(test.exists("Smoothed_Ky.plt"));
    EXPECT_FALSE(test.exists("Upscaled_PERMX.plt"));
}

TEST(UpscaledPlots, HaveTheirOwnHead) {
    ConditionedRun test;
    test.run.options.flowUpscaling = true;
    writeConditionedRock(test.run);
    for (const char* name : {"Upscaled_Porosity.plt", "Upscaled_PERMX.plt", "Upscaled_PERMY_LOG10.plt"})
        EXPECT_EQ(test.folder.read(name).find(
                      "TITLE= PowerLawUpscale PLOT\nVARIABLES= X,Y,Depth,Perm\n"
                      "Zone i = 5, j= 4, k= 3,  DATAPACKING=BLOCK,\nVARLOCATION=(4=CELLCENTERED)\n"),
                  0U)
            << name;
    EXPECT_FALSE(test.exists("Smoothed_Poro.plt"));
}

TEST(UpscaledPlots, HoldTheAveragesAndTheirLogarithms) {
    ConditionedRun test;
    test.run.options.flowUpscaling = true;
    writeConditionedRock(test.run);
    const auto last = [&test](const std::string& name) { return test.zones(name).at(0).columns[3].at(23); };
    EXPECT_NEAR(last("Upscaled_Porosity.plt"), 0.024, 1e-10);
    EXPECT_EQ(last("Upscaled_PERMX.plt"), 240.0);
    EXPECT_EQ(last("Upscaled_PERMY.plt"), 480.0);
    EXPECT_EQ(last("Upscaled_PERMZ.plt"), 720.0);
    EXPECT_NEAR(last("Upscaled_PERMX_LOG10.plt"), std::log10(240.0), 1e-8);
    EXPECT_NEAR(last("Upscaled_PERMY_LOG10.plt"), std::log10(480.0), 1e-8);
    EXPECT_NEAR(last("Upscaled_PERMZ_LOG10.plt"), std::log10(720.0), 1e-8);
}

TEST(UpscaledFragments, HoldEachKeywordWithAllItsValuesAndASlashLine) {
    ConditionedRun test;
    test.run.options.flowUpscaling = true;
    writeConditionedRock(test.run);
    std::istringstream in(test.folder.read("UPSCALED_PERM.DATA"));
    double factor = 10.0;
    for (const char* keyword : {"PERMX", "PERMY", "PERMZ"}) {
        std::string word;
        in >> word;
        EXPECT_EQ(word, keyword);
        for (int cell = 1; cell <= 24; ++cell) {
            double value = 0.0;
            in >> value;
            EXPECT_EQ(value, factor * cell);
        }
        in >> word;
        EXPECT_EQ(word, "/");
        factor += 10.0;
    }
    EXPECT_EQ(test.folder.read("UPSCALED_POROSITY.DATA").rfind("PORO\n0.001 0.002", 0), 0U);
}

TEST(ConditionedRock, LeavesNoFileWithoutItsKeywords) {
    ConditionedRun test;
    writeConditionedRock(test.run);
    for (const auto& entry : std::filesystem::directory_iterator(test.folder.path)) {
        const std::string name = entry.path().filename().string();
        EXPECT_TRUE(name.find("caled") == std::string::npos && name.find("CALED") == std::string::npos &&
                    name.find("Smoothed") == std::string::npos)
            << name;
    }
}

}  // namespace
}  // namespace kvr
