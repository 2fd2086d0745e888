#include "matching/well_series_reader.hpp"

#include "base/hard_stop.hpp"
#include "base/messages.hpp"
#include "base/text.hpp"
#include "eclipse/well_data_layout.hpp"
#include "matching/well_data_text.hpp"

#include <algorithm>
#include <functional>
#include <optional>
#include <set>
#include <string_view>

namespace kvr {

namespace {

constexpr std::size_t NameLength = 8;
constexpr std::size_t KnownLetters = 4;  // of a column's name
constexpr double NoLiquid = 1e-10;       // stb/day, keeps the cut of a shut well at 0

struct SideWords {
    std::string_view file, reading, row, unreadable, suspicious;
};
constexpr SideWords Words[] = {
    {"WELL_OBSERVED.DATA", "Read WELL_OBSERVED.DATA ", " Observed ",
     "ERROR :: During Matching, could not extract Observed Data. ",
     "ERROR :: Observed Data Format is Suspicious, Check WELL_OBSERVED.DATA "},
    {"WELL_CALCULATED.DATA", "Read WELL_CALCULATED.DATA ", " Calculated ",
     "ERROR :: During History Matching, problem by Calculated Data -> WELL_CALCULATED.DATA ",
     "ERROR :: Calculated Data Format is Suspicious, Check WELL_CALCULATED.DATA "}};

/// Lists of a series by the columns behind WNAME.
constexpr std::vector<double> WellSeries::*Lists[] = {
    &WellSeries::time,     &WellSeries::oil, &WellSeries::water,      &WellSeries::gas,
    &WellSeries::pressure, &WellSeries::cut, &WellSeries::gasOilRatio};
enum ListPlace { Time, Oil, Water, Gas, Pressure, Cut, GasOilRatio, ListCount };
constexpr int UnknownColumn = -1;

struct SeriesText : WellDataText {
    const Console& console;
    const SideWords& words;
};

[[noreturn]] void stopAt(const SeriesText& text, std::string_view message) {
    lineToBoth(text.console, message);
    lineToBoth(text.console, placeText(text.place, ""));
    hardStop(text.console);
}

/// The list that a column fills; ListCount + c - 1 for component c.
int listOfColumn(std::string_view word, int componentCount) {
    const std::string name = toUpper(word);
    for (int list = Time; list < ListCount; ++list)
        if (name.starts_with(WellDataColumns[static_cast<std::size_t>(list) + 1].substr(0, KnownLetters)))
            return list;
    for (int c = 1; c <= componentCount; ++c)
        if (name == fractionColumn(c)) return ListCount + c - 1;
    return UnknownColumn;
}

/// The list of each column behind the well's name.
std::vector<int> readHead(SeriesText& text, int componentCount) {
    std::vector<int> lists;
    const auto takeLine = [&](std::size_t first) {
        for (std::size_t n = first; n < text.line.size(); ++n) {
            lists.push_back(listOfColumn(text.line[n], componentCount));
            if (lists.back() == UnknownColumn)
                warnAt(text.console, text.place, "", "WARNING :: Column {} is not known and is left out",
                       text.line[n]);
            else if (std::count(lists.begin(), lists.end(), lists.back()) > 1)
                stopAt(text, text.words.suspicious);
        }
    };
    if (!nextLine(text)) stopAt(text, text.words.unreadable);
    if (toUpper(text.line.front()) != WellDataColumns.front()) stopAt(text, text.words.suspicious);
    takeLine(1);
    if (componentCount > 0) {
        if (!nextLine(text)) stopAt(text, text.words.unreadable);
        takeLine(0);
    }
    if (std::find(lists.begin(), lists.end(), Time) == lists.end()) stopAt(text, text.words.suspicious);
    return lists;
}

/// What has been said of a well already.
struct WellRemarks {
    bool order = false, range = false;
};

void checkPoint(const SeriesText& text, const WellSeries& series, WellRemarks& remarks) {
    const std::size_t last = series.time.size() - 1;
    if (series.time[last] < 0.0) stopAt(text, text.words.suspicious);
    if (!remarks.order && last > 0 && series.time[last] <= series.time[last - 1]) {
        remarks.order = true;
        warnAt(text.console, text.place, "", "WARNING :: Times of well {} do not rise, they are not sorted",
               series.name);
    }
    const bool negative = std::any_of(std::begin(Lists), std::end(Lists), [&](const auto list) {
        return (series.*list).size() > last && (series.*list)[last] < 0.0;
    });
    const bool noCut = series.cut.size() > last && series.cut[last] > 1.0;
    if (remarks.range || !(negative || noCut)) return;
    remarks.range = true;
    warnAt(text.console, text.place, "", "WARNING :: Well {} has a value below 0 or a water cut above 1",
           series.name);
}

void takeRow(const SeriesText& text, const std::vector<int>& lists, WellSeries& series) {
    for (std::size_t n = 0; n < lists.size(); ++n) {
        const std::optional<double> value = numberOf(text.line[n + 1]);
        if (!value) stopAt(text, text.words.unreadable);
        if (lists[n] == UnknownColumn) continue;
        if (lists[n] < ListCount)
            (series.*Lists[lists[n]]).push_back(*value);
        else
            series.fractions[static_cast<std::size_t>(lists[n] - ListCount)].push_back(*value);
    }
    log(text.console, "{} Point  : {}", text.words.row, series.count());
}

void readRows(SeriesText& text, const std::vector<int>& lists, std::vector<WellSeries>& wells) {
    std::vector<WellRemarks> remarks(wells.size());
    std::set<std::string, std::less<>> strangers;
    while (nextLine(text)) {
        if (text.line.size() != lists.size() + 1) stopAt(text, text.words.suspicious);
        const std::string_view name = text.line.front().substr(0, NameLength);
        const auto well = std::find_if(wells.begin(), wells.end(),
                                       [&](const WellSeries& series) { return series.name == name; });
        if (well == wells.end()) {
            if (strangers.emplace(name).second)
                warnAt(text.console, text.place, "",
                       "WARNING :: {} is no producer of the run, its rows are left out", name);
            continue;
        }
        takeRow(text, lists, *well);
        checkPoint(text, *well, remarks[static_cast<std::size_t>(well - wells.begin())]);
    }
}

/// Water over liquid: 0 for a shut well; a phase that goes back counts as none.
double surfaceCut(double water, double oil) {
    const double producedWater = std::max(0.0, water), producedOil = std::max(0.0, oil);
    return producedWater / (producedWater + NoLiquid + producedOil);
}

/// Lists of columns that the file does not have.
void completeSeries(WellSeries& series) {
    const std::size_t count = series.count();
    const bool noCut = series.cut.size() < count, noRatio = series.gasOilRatio.size() < count;
    for (const auto list : Lists) (series.*list).resize(count, 0.0);
    for (std::vector<double>& fraction : series.fractions) fraction.resize(count, 0.0);
    for (std::size_t i = 0; i < count; ++i) {
        if (noCut) series.cut[i] = surfaceCut(series.water[i], series.oil[i]);
        if (noRatio) series.gasOilRatio[i] = series.oil[i] > 0.0 ? series.gas[i] / series.oil[i] : 0.0;
    }
}

bool lacks(const std::vector<int>& lists, int list) {
    return std::find(lists.begin(), lists.end(), list) == lists.end();
}

}  // namespace

std::vector<WellSeries> readWellSeries(const Console& console, const std::string& folder, WellDataSide side,
                                       std::span<const std::string> wells, int componentCount) {
    const SideWords& words = Words[side == WellDataSide::Observed ? 0 : 1];
    const std::string path = folder + std::string(words.file);
    lineToBoth(console, words.reading);
    const std::string contents = readWellData(console, path);
    SeriesText text{{{path, 0}, contents, {}}, console, words};
    std::vector<WellSeries> series(wells.size());
    for (std::size_t w = 0; w < wells.size(); ++w) {
        series[w].name = wells[w].substr(0, NameLength);
        series[w].fractions.resize(static_cast<std::size_t>(componentCount));
    }
    const std::vector<int> lists = readHead(text, componentCount);
    readRows(text, lists, series);
    if (lacks(lists, Cut) && side == WellDataSide::Observed)
        lineToBoth(console, "NOTE :: Observed WCT Data calculated internally, from WOPR and WWPR ");
    for (WellSeries& well : series) completeSeries(well);
    return series;
}

}  // namespace kvr
