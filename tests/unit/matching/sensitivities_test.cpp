#include "matching/sensitivities.hpp"

#include "eclipse/sensitivity_files.hpp"
#include "matching/travel_time_shift.hpp"
#include "unit/quiet_console.hpp"
#include "unit/scratch_folder.hpp"

#include <cmath>
#include <gtest/gtest.h>
#include <numeric>

using namespace kvr;

namespace {

WellMatch matchOf(const std::vector<double>& times, const std::vector<double>& cut,
                  const std::vector<double>& pressure) {
    WellMatch well;
    well.name = "P1";
    for (WellSeries* series : {&well.obs, &well.cal}) {
        series->name = well.name;
        series->time = times;
        series->cut = cut;
        series->pressure = pressure;
        series->gasOilRatio.assign(times.size(), 0.0);
    }
    return well;
}

std::vector<double> every(double step, int count) {
    std::vector<double> times;
    for (int n = 1; n <= count; ++n) times.push_back(step * n);
    return times;
}

double sumOf(const std::vector<double>& values) {
    return std::accumulate(values.begin(), values.end(), 0.0);
}

/// A smooth rise of cut around `middle`, days.
std::vector<double> rise(const std::vector<double>& times, double middle) {
    std::vector<double> cut;
    for (const double t : times) cut.push_back(0.5 + 0.5 * std::tanh((t - middle) / 100.0));
    return cut;
}

}  // namespace

TEST(TravelTimeWeights, TurnTheChangeOfACurveIntoItsShift) {
    const std::vector<double> times = every(10.0, 100);
    const std::vector<double> curve = rise(times, 500.0), earlier = rise(times, 492.0);
    const WellMatch well = matchOf(times, curve, std::vector<double>(times.size(), 3000.0));
    const std::vector<double> weights = travelTimeWeights(times, well, MatchedQuantity::Cut);
    double shift = 0.0;
    for (std::size_t n = 0; n < times.size(); ++n) shift += weights[n] * (earlier[n] - curve[n]);
    EXPECT_NEAR(shift, 8.0, 0.1);
    // The same as the whole search finds, to its resolution of span / 2500.
    EXPECT_NEAR(travelTimeShift(times, curve, earlier).days, shift, 0.5);
}

TEST(TravelTimeWeights, AreZeroForAFlatCurve) {
    const std::vector<double> times = every(10.0, 10);
    const std::vector<double> flat(times.size(), 0.3);
    EXPECT_EQ(travelTimeWeights(times, matchOf(times, flat, flat), MatchedQuantity::Cut),
              std::vector<double>(10, 0.0));
}

TEST(PressureWeights, GiveAPointToTheStepsAroundIt) {
    const WellMatch well = matchOf({15.0, 30.0}, {0.0, 0.0}, {3000.0, 2900.0});
    const std::vector<double> weights = pressureWeights(every(10.0, 3), well);
    EXPECT_DOUBLE_EQ(weights[0], 0.25);
    EXPECT_DOUBLE_EQ(weights[1], 0.25);
    EXPECT_DOUBLE_EQ(weights[2], 0.5);
}

TEST(PressureWeights, CountMeasuredPointsOfTheLateTimesAlone) {
    const std::vector<double> times = every(10.0, 4);
    WellMatch well = matchOf(times, std::vector<double>(4, 0.0), {3000.0, 3000.0, 3000.0, 3000.0});
    well.obs.pressure[2] = 0.0;
    const std::vector<double> weights = pressureWeights(times, well, 0.25);
    EXPECT_EQ(weights, (std::vector<double>{0.0, 0.5, 0.0, 0.5}));
    EXPECT_EQ(sumOf(pressureWeights(times, well, 1.0)), 0.0);
}

TEST(SmoothedWeights, GiveWhatSmoothedValuesGive) {
    const std::vector<double> values{1.0, 5.0, 2.0, 8.0}, weights{0.1, 0.2, 0.3, 0.4};
    const std::vector<double> once{3.0, 8.0 / 3.0, 5.0, 5.0};
    const std::vector<double> twice{17.0 / 6.0, 32.0 / 9.0, 38.0 / 9.0, 5.0};
    for (const auto& [sweeps, smooth] : {std::pair{0, values}, {1, once}, {2, twice}}) {
        const std::vector<double> moved = smoothedWeights(weights, sweeps);
        EXPECT_NEAR(std::inner_product(moved.begin(), moved.end(), values.begin(), 0.0),
                    std::inner_product(weights.begin(), weights.end(), smooth.begin(), 0.0), 1e-14);
    }
}

namespace {

/// Three steps of two wells and four cells: value 100 step + 10 well + cell.
struct Written {
    QuietConsole quiet;
    ScratchFolder folder;
    RunOptions options;
    SensitivityReading reading;
    CellArray<std::uint8_t> Active;

    Written() {
        options.hasWater = true;
        options.smoothingBhp = options.smoothingWct = 0;
        options.sensitivityTimeWeightBhp = 0.0;
        reading.folder = folder.path;
        reading.wellNames = {"INJ", "P1"};
        reading.stepEnds = every(10.0, 3);
        Active.assign(4, 1);
        Active[3] = 0;
        for (const SensitivityKind kind : {SensitivityKind::TravelTime, SensitivityKind::Pressure})
            for (int step = 1; step <= 3; ++step)
                writeSensitivityStep(quiet.console,
                                     {folder.path + sensitivityFileName(kind, step),
                                      folder.path + sensitivityFileName(kind, WholeRun)},
                                     step == 1, 2, 4, [&](std::size_t well, CellArray<double>& values) {
                                         for (CellId cell = 1; cell <= 4; ++cell)
                                             values[cell] = 100.0 * step + 10.0 * (well + 1.0) + cell;
                                     });
    }
    [[nodiscard]] MatchSensitivities read(const WellMatch& well) const {
        const std::vector<WellMatch> wells{well};
        return reconstructSensitivities(quiet.console, options, reading, Active, wells);
    }
};

WellMatch threePoints() {
    return matchOf(every(10.0, 3), {0.0, 0.1, 0.2}, {3000.0, 2900.0, 2800.0});
}

}  // namespace

TEST(ReconstructedSensitivities, AreTheMeanOfTheObservedPointsForPressure) {
    const Written written;
    const MatchSensitivities rows = written.read(threePoints());
    ASSERT_EQ(rows.pressure.count(), 1U);
    EXPECT_EQ(rows.pressure.cell, (std::vector<CellId>{1, 2, 4}));  // cell 3 is inactive
    EXPECT_NEAR(rows.pressure.value[0], 221.0, 1e-12);
    EXPECT_NEAR(rows.pressure.value[2], 224.0, 1e-12);
}

TEST(ReconstructedSensitivities, FollowTheSlopeOfTheCurveForTravelTime) {
    const Written written;
    const MatchSensitivities rows = written.read(threePoints());
    // Slope 0.01 a day at three points: weights 0.01 / (3 * 0.0001).
    EXPECT_NEAR(rows.travelTime.value[0], 100.0 / 3.0 * (121.0 + 221.0 + 321.0), 1e-9);
}

TEST(ReconstructedSensitivities, AreSummedOverTheStepsInTheClassicForm) {
    Written written;
    written.options.travelTimeForm = SensitivityForm::Classic;
    written.options.sensitivityTimeWeightWct = 0.5;
    EXPECT_NEAR(written.read(threePoints()).travelTime.value[0], 0.5 * (121.0 + 221.0 + 321.0), 1e-12);
}

TEST(ReconstructedSensitivities, TellEachStepAndTheFilesThatAreMissing) {
    const Written written;
    std::filesystem::remove(written.folder.path + "HM_SENSTEMP_GTTI.K0002");
    const MatchSensitivities rows = written.read(threePoints());
    EXPECT_NEAR(rows.travelTime.value[0], 100.0 / 3.0 * (121.0 + 321.0), 1e-9);
    const std::string log = written.quiet.logText();
    EXPECT_NE(log.find("GTTI Sensitivity reconstructed Tstep: 1\nFile : HM_SENSTEMP_GTTI.K0001\n"),
              std::string::npos);
    EXPECT_NE(log.find("GBHP Sensitivity reconstructed Tstep: 3\n"), std::string::npos);
    EXPECT_NE(log.find("WARNING :: NO SENSITIVITIES OF REPORT STEP 2: HM_SENSTEMP_GTTI.K0002 IS MISSING"),
              std::string::npos);
}

TEST(ReconstructedSensitivities, LeaveTheKindOutThatIsNotWanted) {
    Written written;
    written.reading.travelTime = false;
    const MatchSensitivities rows = written.read(threePoints());
    EXPECT_EQ(rows.travelTime.count(), 1U);
    EXPECT_TRUE(rows.travelTime.value.empty());
    EXPECT_FALSE(rows.pressure.value.empty());
}
