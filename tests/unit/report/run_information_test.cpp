#include "report/run_information.hpp"

#include "unit/fluid/table_samples.hpp"
#include "unit/report/report_run.hpp"

#include <gtest/gtest.h>
#include <sstream>

namespace kvr {
namespace {

/// The small run with a light oil, its summary written.
struct InformedRun : ReportRun {
    InformedRun() {
        run.fluids = samples::lightOil();
        run.pressure.AveragePressure = 4800.0;
        run.options.dataFileBase = "CASE";
        run.options.requestedLines = 500;
        run.options.cfl = 0.8;
        run.schedule.endTime = 2000.0;
        writeRunInformation(run);
        text = folder.read("KVR_Info_general.out");
    }
    /// What stands behind a label, in its line.
    [[nodiscard]] std::string behind(const std::string& label) const {
        const std::size_t at = text.find("\n" + label);
        if (at == std::string::npos) return "no " + label;
        const std::size_t start = text.find_first_not_of(" :", at + 1 + label.size());
        return text.substr(start, text.find('\n', start) - start);
    }
    std::string text;
};

std::vector<double> numbersIn(const std::string& line) {
    std::istringstream in(line);
    std::vector<double> values;
    for (double value = 0.0; in >> value;) values.push_back(value);
    return values;
}

TEST(RunInformation, HasItsSectionsInTheirOrder) {
    const InformedRun test;
    std::size_t at = 0;
    for (const char* heading :
         {"Input Control Section", "Reservoir Description Section", "Rock-fluid Property Section",
          "Fluid(Component) Property Section", "Simulation Data Section"}) {
        const std::size_t found = test.text.find(std::string(heading) + "\n", at);
        ASSERT_NE(found, std::string::npos) << heading;
        at = found;
    }
}

TEST(RunInformation, TurnsPressuresAndLengthsIntoMetricUnits) {
    EXPECT_NEAR(kilopascals(4800.0), 33094.8336, 1e-8 * 33094.8336);
    EXPECT_NEAR(metres(3280.84), 1000.000032, 1e-8 * 1000.0);
    const InformedRun test;
    EXPECT_EQ(test.behind("Pinit (Average) [kPa]"), "33094.8336");
    EXPECT_EQ(test.behind("Pinit (Average) [psi]"), "4800");
    EXPECT_EQ(test.behind("Total Length of Res. [m]"), "12.192 18.288 3.048");  // 40, 60 and 10 ft
    EXPECT_EQ(test.behind("Number of Grid"), "4 3 2");
    EXPECT_EQ(test.behind("Rock Compressibility"), "3e-06");
    EXPECT_EQ(test.behind("Reference pressure [kPa]"), "101.352928");  // 14.7 psia
}

TEST(RunInformation, NamesTheInputAndTheEndOfTheRun) {
    const InformedRun test;
    EXPECT_EQ(test.behind("File Name"), "CASE");
    EXPECT_EQ(test.behind("Number of Streamlines"), "500");
    EXPECT_EQ(test.behind("End Time of Simulation"), "2000");
}

TEST(RunInformation, ShowsTheTablesWithTheirSlopes) {
    const InformedRun test;
    EXPECT_EQ(test.behind("Number of Table Data (krw)"), "4");
    EXPECT_EQ(test.behind("Number of Table Data (krg)"), "4");
    for (const char* text :
         {"Rock Fluid Table", "Derivative of Rock Table - SWOF", "Derivative of Rock Table - SGOF", "dkrwSw",
          "dkrowSw", "dPcwdw", "dkrgSg", "dkrogSg", "dPcgdSg", "Connate Sw", "Critical Sg",
          "Residual So @ (o/w)", "Residual So @ (l/g)", "OIL PROPERTY TABLE", "GAS PROPERTY TABLE",
          "GAS PROPERTY TABLE - INTERPOLATED", "Oil density @ ref. conditions",
          "Water densit @ ref. conditions", "Gas densit @ ref. conditions"})
        EXPECT_NE(test.text.find(text), std::string::npos) << text;
}

TEST(RunInformation, ShowsTheSlopeOfEachSegmentOfTheWaterTable) {
    const InformedRun test;
    std::istringstream in(test.text.substr(test.text.find("Derivative of Rock Table - SWOF")));
    std::string line;
    std::getline(in, line);
    std::getline(in, line);
    for (const double slope : {0.25, 0.75, 1.25}) {  // rise of krw over the width 0.2 of each segment
        std::getline(in, line);
        ASSERT_EQ(numbersIn(line).size(), 4U) << line;
        EXPECT_NEAR(numbersIn(line)[1], slope, 1e-6);  // seven digits are printed
    }
}

TEST(RunInformation, EndsWithTheShortListOfOptions) {
    const InformedRun test;
    EXPECT_EQ(test.behind("CFL condition for 1D"), "0.8");
    for (const char* label :
         {"CFL condition for Gr", "minimmum CFL  for 1D", "minimmum CFL  for Gr", "Output Streamline",
          "Output Pressure Mtrx", "Output Streamline MX", "Compressiblity metho", "Gravity Drainage  DP",
          "SPECIAL pbub corre +", "SPECIAL pbub corre -"})
        EXPECT_NE(test.text.find(std::string("\n") + label + " :: "), std::string::npos) << label;
}

TEST(RunInformation, StartsTheTableOfIterationsWithAHeadAndARule) {
    const InformedRun test;
    std::istringstream in(test.folder.read("KVR_Info_aspect.out"));
    std::string head;
    std::string rule;
    std::getline(in, head);
    std::getline(in, rule);
    EXPECT_EQ(head, " Iteration   Traveltime RMS error   Total RMS error");
    EXPECT_GT(rule.size(), 10U);
    EXPECT_EQ(rule.find_first_not_of('-'), std::string::npos);
}

}  // namespace
}  // namespace kvr
