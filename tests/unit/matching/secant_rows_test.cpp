#include "matching/secant_rows.hpp"

#include <gtest/gtest.h>
#include <random>

using namespace kvr;

namespace {

constexpr CellId Cells = 6;
constexpr std::size_t Rows = 3;

CellArray<double> fieldOf(const std::vector<double>& values) {
    CellArray<double> field;
    field.slots = {0.0};
    field.slots.insert(field.slots.end(), values.begin(), values.end());
    return field;
}

SensitivityRows rowsOf(const std::vector<std::vector<double>>& values) {
    CellArray<std::uint8_t> active;
    active.assign(Cells, 1);
    SensitivityRows rows;
    for (const std::vector<double>& row : values) addRow(fieldOf(row), active, rows);
    return rows;
}

/// The rows with what is to be added to them.
SensitivityRows summed(const SensitivityRows& rows, const SecantTerms& terms) {
    SensitivityRows result;
    CellArray<std::uint8_t> active;
    active.assign(Cells, 1);
    for (std::size_t r = 0; r < rows.count(); ++r) {
        CellArray<double> row = fieldOf(std::vector<double>(Cells, 0.0));
        for (std::size_t n = rows.start[r]; n < rows.start[r + 1]; ++n) row[rows.cell[n]] = rows.value[n];
        for (std::size_t n = 0; n < terms.fields.size(); ++n)
            for (CellId cell = 1; cell <= Cells; ++cell)
                row[cell] += terms.factor[r * terms.fields.size() + n] * terms.fields[n][cell];
        addRow(row, active, result);
    }
    return result;
}

SensitivityRows secantRows(const SensitivityRows& rows, std::span<const std::size_t> datum,
                           const TriedField& present, std::span<const TriedField> runs) {
    return summed(rows, secantTerms(rows, datum, present, runs));
}

std::vector<double> randomValues(std::mt19937& random) {
    std::normal_distribution<double> normal;
    std::vector<double> values(Cells);
    for (double& value : values) value = normal(random);
    return values;
}

std::vector<std::vector<double>> randomRows(std::mt19937& random) {
    std::vector<std::vector<double>> rows(Rows);
    for (auto& row : rows) row = randomValues(random);
    return rows;
}

const std::vector<std::size_t> InOrder{0, 1, 2};

/// The data are 1 minus what the true rows say of a field.
TriedField tried(const SensitivityRows& truth, const std::vector<double>& lnk) {
    TriedField field{fieldOf(lnk), {}};
    for (std::size_t row = 0; row < Rows; ++row)
        field.misfit.push_back(1.0 - rowTimes(truth, row, field.lnk));
    return field;
}

}  // namespace

TEST(SecantRows, GiveTheChangesThatEveryRunHasShown) {
    std::mt19937 random(3);
    const SensitivityRows truth = rowsOf(randomRows(random)), given = rowsOf(randomRows(random));
    const TriedField present = tried(truth, randomValues(random));
    std::vector<TriedField> runs;
    for (int n = 0; n < 3; ++n) runs.push_back(tried(truth, randomValues(random)));
    const SensitivityRows found = secantRows(given, InOrder, present, runs);
    for (const TriedField& run : runs)
        for (std::size_t row = 0; row < Rows; ++row)
            EXPECT_NEAR(rowTimes(found, row, run.lnk) - rowTimes(found, row, present.lnk),
                        present.misfit[row] - run.misfit[row], 1e-10);
}

TEST(SecantRows, StayAsTheyWereAcrossWhatNoRunHasShown) {
    const SensitivityRows truth = rowsOf({{5, 0, 0, 0, 0, 0}, {0, 0, 0, 0, 0, 0}, {0, 0, 0, 0, 0, 9}});
    const SensitivityRows given = rowsOf({{1, 2, 3, 4, 5, 6}, {0, 0, 0, 0, 0, 0}, {7, 7, 0, 0, 0, 7}});
    const std::vector<TriedField> runs{tried(truth, {0.5, 0, 0, 0, 0, 0})};
    const SensitivityRows found = secantRows(given, InOrder, tried(truth, {0, 0, 0, 0, 0, 0}), runs);
    ASSERT_EQ(found.count(), Rows);
    EXPECT_NEAR(rowTimes(found, 0, fieldOf({1, 0, 0, 0, 0, 0})), 5.0, 1e-12);
    EXPECT_NEAR(rowTimes(found, 0, fieldOf({0, 1, 0, 1, 0, 0})), 6.0, 1e-12);
    EXPECT_NEAR(rowTimes(found, 2, fieldOf({1, 0, 0, 0, 0, 0})), 0.0, 1e-12);
    EXPECT_NEAR(rowTimes(found, 2, fieldOf({0, 0, 0, 0, 0, 1})), 7.0, 1e-12);
}

TEST(SecantRows, TakeTheDatumOfTheRowAndNotItsPlace) {
    const SensitivityRows truth = rowsOf({{1, 0, 0, 0, 0, 0}, {2, 0, 0, 0, 0, 0}, {3, 0, 0, 0, 0, 0}});
    const std::vector<TriedField> runs{tried(truth, {1, 0, 0, 0, 0, 0})};
    const std::vector<std::size_t> last{2};
    CellArray<std::uint8_t> active;
    active.assign(Cells, 1);
    SensitivityRows one;
    addRow(fieldOf({9, 0, 0, 0, 0, 0}), active, one);
    const SensitivityRows found = secantRows(one, last, tried(truth, {0, 0, 0, 0, 0, 0}), runs);
    EXPECT_NEAR(rowTimes(found, 0, fieldOf({1, 0, 0, 0, 0, 0})), 3.0, 1e-12);
}

TEST(SecantRows, LeaveOutRunsThatAreTooNearAndThoseOfOtherData) {
    const SensitivityRows truth = rowsOf({{5, 0, 0, 0, 0, 0}, {5, 0, 0, 0, 0, 0}, {5, 0, 0, 0, 0, 0}});
    const SensitivityRows given = rowsOf({{1, 0, 0, 0, 0, 0}, {1, 0, 0, 0, 0, 0}, {1, 0, 0, 0, 0, 0}});
    std::vector<TriedField> runs{tried(truth, {0.5 * LeastDistance, 0, 0, 0, 0, 0}),
                                 tried(truth, {1, 0, 0, 0, 0, 0})};
    runs[1].misfit.pop_back();
    EXPECT_EQ(secantRows(given, InOrder, tried(truth, {0, 0, 0, 0, 0, 0}), runs).value, given.value);
}
