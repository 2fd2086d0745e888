#include "deck/options/finalise_options.hpp"
#include "deck/options/option_section.hpp"
#include "run/example_deck.hpp"
#include "unit/quiet_console.hpp"
#include "unit/scratch_folder.hpp"

#include <fmt/format.h>
#include <gtest/gtest.h>
#include <map>
#include <regex>

/// What a deck gets that does not say, three times: the options record, the guide, and the comments of the
/// example deck.
namespace kvr {
namespace {

using Defaults = std::map<std::string, std::vector<std::string>>;  // keyword -> text by position

struct OptionRow {
    std::string keyword;
    int position;
    std::string (*inForce)(const RunOptions&);
    bool inDeck = true;  // the example deck has a line of comment for it
};

template <auto Field>
std::string of(const RunOptions& options) {
    return fmt::format("{}", options.*Field);
}
std::string saturationSolver(const RunOptions& o) {
    return o.saturationSolver.empty() ? "gband" : o.saturationSolver;
}
std::string lineMethod(const RunOptions& o) {
    return o.solverPhaseName.front();
}
template <auto Field>
std::string form(const RunOptions& o) {
    return o.*Field == SensitivityForm::Coupled ? "COUPLED"
           : o.*Field == SensitivityForm::Lines ? "LINES"
                                                : "CLASSIC";
}
std::string nodes(const RunOptions& o) {
    return o.nodeControl == "reg" ? "reg" : "irr";
}

using O = RunOptions;
const OptionRow Rows[] = {
    {"FDMETHOD", 1, of<&O::method>},
    {"PSOLVER", 1, of<&O::pressureSolver>},
    {"SSOLVER", 1, saturationSolver},
    {"CONVERGE", 1, of<&O::PressureTolerance>},
    {"CONVERGE", 2, of<&O::SaturationTolerance>},
    {"CONVERGE", 3, of<&O::MaxPressureIterations>, false},
    {"CONVERGE", 4, of<&O::maxSaturationIterations>, false},
    {"NUMLINE", 2, of<&O::streamlineStart>},
    {"NUMLINE", 3, of<&O::traceMissed>},
    {"SL1DCON", 1, lineMethod},
    {"SL1DCON", 2, nodes},
    {"SL1DCON", 3, of<&O::nodeFactor>},
    {"SL1DCON", 4, of<&O::upwindWord>},
    {"SL1DCON", 5, of<&O::lineCompressibility>},
    {"SL1DCON", 6, of<&O::lineGravity>},
    {"SL1DCON", 7, of<&O::lineCapillary>},
    {"SL1DCON", 8, of<&O::orthogonalProjection>},
    {"SL1DCON", 9, of<&O::mergeFactor>, false},
    {"SL1DMAP", 1, of<&O::mapCount>},
    {"CFL", 1, of<&O::cfl>},
    {"CFL", 2, of<&O::minCflStep>},
    {"CFLG", 1, of<&O::cflGravity>},
    {"CFLG", 2, of<&O::minCflgStep>},
    {"MAXDT", 1, of<&O::maxDt>},
    {"PVTOROWS", 1, of<&O::oilRowsOfEachRs>},
    {"MAPPING", 1, of<&O::conservativeMapping>},
    {"CO2SOLID", 1, of<&O::co2SolidRate>, false},
    {"TOFMAP", 1, of<&O::meanTimeMaps>},
    {"STEPCTRL", 1, of<&O::stepControl>},
    {"STEPCTRL", 2, of<&O::stepVolumeError>},
    {"STEPCTRL", 3, of<&O::stepCellVolumeError>},
    {"STEPCTRL", 4, of<&O::stepDeficit>},
    {"STEPCTRL", 5, of<&O::stepTargetError>},
    {"STEPCTRL", 6, of<&O::stepTargetMiss>},
    {"STEPCTRL", 7, of<&O::stepMobilityError>},
    {"STEPCTRL", 8, of<&O::stepSmallest>},
    {"OPTIONKVR", 1, of<&O::pressureUpdateFrequency>},
    {"OPTIONKVR", 2, of<&O::cornerPointHiRes>},
    {"OPTIONKVR", 3, of<&O::keepIrreducibleSaturation>},
    {"OPTIONKVR", 4, of<&O::outputSensitivity>},
    {"OPTIONKVR", 5, of<&O::bubblePointMaxLimit>},
    {"OPTIONKVR", 6, of<&O::bubblePointMinLimit>},
    {"OPTIONKVR", 7, of<&O::internalDebug>},
    {"OPTIONKVR", 8, of<&O::globalIterations>},
    {"OUTPUTKVR", 1, of<&O::debugOutput>},
    {"OUTPUTKVR", 2, of<&O::outputXls>},
    {"OUTPUTKVR", 3, of<&O::outputPlt>},
    {"OUTPUTKVR", 4, of<&O::outputStreamline>},
    {"OUTPUTKVR", 5, of<&O::outputDiffusiveTof>},
    {"OUTPUTKVR", 6, of<&O::outputPressureMatrix>},
    {"OUTPUTKVR", 7, of<&O::outputSaturationMatrix>},
    {"OUTPUTKVR", 8, of<&O::outputKvrView>},
    {"OUTPUTKVR", 9, of<&O::outputEclipse>},
    {"OUTPUTKVR", 10, of<&O::outputSln>},
    {"SNSFORM", 1, form<&O::travelTimeForm>},
    {"SNSFORM", 2, form<&O::pressureForm>},
    {"WFOOPT", 1, of<&O::optimizationStart>, false},
    {"WFOOPT", 2, of<&O::optimizationEmin>, false},
    {"WFOOPT", 3, of<&O::optimizationEmax>, false},
    {"WFOOPT", 4, of<&O::optimizationAlpha>, false},
    {"WFOOPT", 5, of<&O::optimizationWmin>, false},
    {"WFOOPT", 6, of<&O::optimizationWmax>, false},
    {"WFOOPT", 7, of<&O::optimizationMinFlux>, false},
    {"WFOOPT", 8, of<&O::optimizationTofUsage>, false},
    {"WFOOPT", 9, of<&O::optimizationTolerance>, false},
};

/// The options of a deck with gas whose option section is `text`, and what was said on the way.
struct Section {
    explicit Section(const std::string& text) {
        options.hasGas = true;
        DeckSinks sinks;
        sinks.console = &quiet.console;
        DeckCursor cursor;
        cursor.fileName = "TEST.DATA";
        cursor.text = text;
        SectionReader reader;
        reader.cursor = &cursor;
        reader.sinks = &sinks;
        reader.section = "TUNEKVR";
        reader.errorName = "STREAMLINE";
        setOptionDefaults(options);
        readOptionSection(reader, options);
        said = quiet.screenText();
        GridModel grid;
        grid.NX = 10, grid.NY = 10, grid.NZ = 3;
        grid.Active.assign(300, 1);
        Schedule schedule;
        schedule.steps.resize(1);
        const ScheduleWell well;
        for (int w = 0; w < 2; ++w) schedule.steps[0].wells.push_back(well);
        finaliseOptions(quiet.console, grid, {}, schedule, options);
    }
    QuietConsole quiet;
    RunOptions options;
    std::string said;
};

std::vector<std::string> parts(const std::string& text, char separator) {
    std::vector<std::string> found;
    std::istringstream stream(text);
    for (std::string part; std::getline(stream, part, separator);) {
        part = std::regex_replace(part, std::regex("^[ `]+|[ `]+$"), "");
        found.push_back(part);
    }
    return found;
}

std::string guideText() {
    return ScratchFolder::readFile(std::string(KVR_SOURCE_FOLDER) + "docs/user-guide.md");
}

/// The third column of the table of options, and the last one of the tables by position.
Defaults guideDefaults() {
    Defaults found;
    std::istringstream lines(guideText());
    std::string table;
    const std::regex title("^\\*\\*`([A-Z0-9]+)`\\*\\*.*");
    for (std::string line; std::getline(lines, line);) {
        std::smatch match;
        if (std::regex_match(line, match, title)) table = match[1];
        if (line.starts_with("## ")) table = line == "## Options" ? "options" : "";
        if (!line.starts_with("| ") || table.empty()) continue;
        const std::vector<std::string> cells = parts(line, '|');  // [0] is what stands before the first |
        if (table == "options" && cells.size() >= 5) {
            if (cells[3] == "below") continue;  // has a table by position
            for (const std::string& value : parts(cells[3], ',')) found[cells[1]].push_back(value);
        } else if (std::isdigit(static_cast<unsigned char>(cells[1].front())) != 0) {
            // One row may hold several positions: "2, 3".
            for (const std::string& value : parts(cells.back(), ',')) found[table].push_back(value);
        }
    }
    return found;
}

std::string exampleDeck() {
    const ScratchFolder folder;
    writeExampleDeck({nullptr, nullptr, nullptr}, folder.path + "ECLIPSE.DATA");
    return folder.read("ECLIPSE.DATA");
}

/// "[.. Def = X]" line by line below its keyword; "in force: X" on the line behind it stands for it.
Defaults deckDefaults() {
    Defaults found;
    std::istringstream lines(exampleDeck());
    std::string keyword;
    bool options = false;
    for (std::string line; std::getline(lines, line);) {
        std::smatch match;
        options = options || line == "TUNEKVR";
        if (!options) continue;
        if (std::regex_match(line, match, std::regex("^(?:--)?([A-Z][A-Z0-9]+)$"))) keyword = match[1];
        if (std::regex_search(line, match, std::regex("^-- .*Def = ([^\\],]+).*\\]")))
            found[keyword].push_back(match[1]);
        if (std::regex_search(line, match, std::regex("^--   in force: ([^,]+)")))
            found[keyword].back() = match[1];
    }
    return found;
}

/// Saying what is called the default changes nothing.
void expectDefault(const OptionRow& row, const Defaults& said, const std::string& place) {
    const auto found = said.find(row.keyword);
    const auto index = static_cast<std::size_t>(row.position - 1);
    ASSERT_TRUE(found != said.end() && found->second.size() > index)
        << place << " has no default of " << row.keyword << " " << row.position;
    const std::string& value = found->second[index];
    const std::string before = row.position > 1 ? fmt::format("{}* ", row.position - 1) : "";
    const Section section(fmt::format("{}\n{}{} /\n", row.keyword, before, value));
    EXPECT_EQ(row.inForce(section.options), row.inForce(Section("").options))
        << row.keyword << " " << row.position << " is " << value << " in " << place;
    EXPECT_EQ(section.said.find("WARNING"), std::string::npos) << section.said;
}

TEST(OptionDefaults, OfTheGuideAreThoseInForce) {
    const Defaults guide = guideDefaults();
    for (const OptionRow& row : Rows) expectDefault(row, guide, "the guide");
}

TEST(OptionDefaults, OfTheExampleDeckAreThoseInForce) {
    const Defaults deck = deckDefaults();
    for (const OptionRow& row : Rows)
        if (row.inDeck) expectDefault(row, deck, "the example deck");
}

TEST(OptionDefaults, OfTheGuideAndTheDeckAreAllCompared) {
    const auto compared = [](const std::string& keyword) {
        return std::count_if(std::begin(Rows), std::end(Rows),
                             [&keyword](const OptionRow& row) { return row.keyword == keyword; });
    };
    for (const auto& [keyword, values] : deckDefaults()) {
        if (keyword == "DOINV") continue;                    // not in this version
        const auto others = keyword == "NUMLINE" ? 1U : 0U;  // its first is a rule, below
        EXPECT_LE(values.size(), static_cast<std::size_t>(compared(keyword)) + others) << keyword;
    }
    for (const char* keyword : {"SL1DCON", "STEPCTRL", "OPTIONKVR", "OUTPUTKVR", "WFOOPT"})
        EXPECT_EQ(guideDefaults()[keyword].size(), static_cast<std::size_t>(compared(keyword))) << keyword;
}

TEST(OptionDefaults, OfTheNumberOfLinesAreOneRule) {
    const auto plain = [](std::string text) {
        for (const char* dropped : {"\u00b7", "\\*", "\\(number of ", "\\)"})
            text = std::regex_replace(text, std::regex(dropped), "");
        return std::regex_replace(text, std::regex("wells"), "Nwell");
    };
    EXPECT_NE(plain(guideText()).find("NXNYNZNwell/5"), std::string::npos);
    EXPECT_EQ(plain(deckDefaults()["NUMLINE"].front()), "NXNYNZNwell/5");
    EXPECT_EQ(Section("").options.requestedLines, 10 * 10 * 3 * 2 / 5);
}

TEST(OptionDefaults, OfARecordOfLinesThatSaysNothingElseAreEvenNodesWithoutCapillarity) {
    const Section section("SL1DCON\nEXPLICIT /\n");
    EXPECT_EQ(section.options.nodeControl, "reg");
    EXPECT_FALSE(section.options.lineCapillary);
    for (const std::string& place : {guideText(), exampleDeck()}) {
        EXPECT_TRUE(std::regex_search(place, std::regex("`?REG`? on a record that says nothing else")));
        EXPECT_TRUE(std::regex_search(place, std::regex("(off|No) on a record that says nothing else")));
    }
}

}  // namespace
}  // namespace kvr
