#include "matching/well_series_reader.hpp"

#include "base/hard_stop.hpp"
#include "base/messages.hpp"
#include "base/text.hpp"
#include "eclipse/well_data_layout.hpp"
#include "matching/calculated_wells.hpp"

#include <algorithm>
#include <array>
#include <cerrno>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <optional>
#include <set>
#include <string_view>

namespace kvr {

namespace {

constexpr std::size_t NameLength = 8;
constexpr std::size_t KnownLetters = 4;  // of a column's name

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

struct WellDataText {
    const Console& console;
    const SideWords& words;
    DeckPlace place;
    std::string_view left;  // unread lines
    std::vector<std::string_view> line;
};

[[noreturn]] void stopAt(const WellDataText& text, std::string_view message) {
    lineToBoth(text.console, message);
    lineToBoth(text.console, placeText(text.place, ""));
    hardStop(text.console);
}

[[noreturn]] void stopOnOpening(const Console& console, int status, const std::string& path) {
    if (status == OpenErrorStatus)
        lineToBoth(console, "ERROR: File Open Error");
    else if (status == HandlingErrorStatus)
        lineToBoth(console, "ERROR: File handling Error at *.obs file for INVERSION ");
    else
        both(console, "ERROR: File handling error in obs file for inversion, code = {}", status);
    lineToBoth(console, path);
    hardStop(console);
}

std::string wholeFile(const Console& console, const std::string& path) {
    errno = 0;
    std::FILE* file = std::fopen(path.c_str(), "rb");
    if (file == nullptr) stopOnOpening(console, errno == ENOENT ? OpenErrorStatus : errno, path);
    std::string text;
    std::array<char, 65536> piece;
    for (std::size_t count; (count = std::fread(piece.data(), 1, piece.size(), file)) > 0;)
        text.append(piece.data(), count);
    const bool failed = std::ferror(file) != 0;  // a folder opens but cannot be read
    std::fclose(file);
    if (failed) stopOnOpening(console, HandlingErrorStatus, path);
    return text;
}

/// Splits the next line that is not blank into its words; false at the end of the file.
bool nextLine(WellDataText& text) {
    constexpr std::string_view Separators = " \t\r,";
    while (!text.left.empty()) {
        const std::size_t end = std::min(text.left.find('\n'), text.left.size());
        std::string_view line = text.left.substr(0, end);
        text.left.remove_prefix(std::min(end + 1, text.left.size()));
        ++text.place.lineNumber;
        text.line.clear();
        for (std::size_t at = 0; (at = line.find_first_not_of(Separators, at)) != line.npos;) {
            const std::size_t stop = std::min(line.find_first_of(Separators, at), line.size());
            text.line.push_back(line.substr(at, stop - at));
            at = stop;
        }
        if (!text.line.empty()) return true;
    }
    return false;
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
std::vector<int> readHead(WellDataText& text, int componentCount) {
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

std::optional<double> numberOf(std::string_view word) {
    std::string form(word.starts_with('+') ? word.substr(1) : word);
    std::replace_if(
        form.begin(), form.end(), [](char c) { return c == 'd' || c == 'D'; }, 'E');
    double value = 0.0;
    const auto [stop, status] = std::from_chars(form.data(), form.data() + form.size(), value);
    if (status == std::errc::result_out_of_range && stop == form.data() + form.size()) {
        // Too small to be held is 0; too large is no number.
        return form.find("E-") == std::string::npos && form.find("e-") == std::string::npos
                   ? std::nullopt
                   : std::optional<double>(0.0);
    }
    if (status != std::errc() || stop != form.data() + form.size() || !std::isfinite(value)) return {};
    return value;
}

/// What has been said of a well already.
struct WellRemarks {
    bool order = false, range = false;
};

void checkPoint(const WellDataText& text, const WellSeries& series, WellRemarks& remarks) {
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

void takeRow(const WellDataText& text, const std::vector<int>& lists, WellSeries& series) {
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

void readRows(WellDataText& text, const std::vector<int>& lists, std::vector<WellSeries>& wells) {
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
    const std::string contents = wholeFile(console, path);
    WellDataText text{console, words, {path, 0}, contents, {}};
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
