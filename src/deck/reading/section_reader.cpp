#include "deck/reading/section_reader.hpp"

#include "base/hard_stop.hpp"
#include "base/text.hpp"
#include "deck/reading/unit_copies.hpp"

#include <algorithm>
#include <array>
#include <cctype>
#include <cmath>

namespace kvr {

namespace {

constexpr std::size_t KeywordWidth = 8;
constexpr int MaxCommentLines = 1000;   // skipped before a keyword's data
constexpr int MaxSkippedLines = 10000;  // dropped behind an unknown keyword
constexpr double RuleSlack = 1e-9;      // of limits of values: digits of what another program has written
constexpr std::string_view UnitCopyRequest = "-- ConvertUnitCommandKVR";
constexpr std::string_view EndOfFileText = "FILE I/O -> END OF FILE..";

constexpr std::array<std::string_view, 11> SectionWords = {"GRID    ", "EDIT    ", "PROPS   ", "REGIONS ",
                                                           "REGION  ", "RUNSPEC ", "SOLUTION", "SUMMARY ",
                                                           "SCHEDULE", "TUNEKVR ", "END     "};

bool isLetter(char c) {
    return std::isalpha(static_cast<unsigned char>(c)) != 0;
}

/// One comment of RUNSPEC is more than a comment, also among the lines that an unknown keyword drops.
void noteUnitCopyRequest(SectionReader& reader, std::string_view line) {
    if (reader.section == "RUNSPEC" && trimLeft(line).starts_with(UnitCopyRequest)) {
        reader.outputMetric = true;
    }
}

void printReadError(const SectionReader& reader, ListError error) {
    const Console& console = consoleOf(reader);
    both(console, "ERROR: File reading error, code = {}", static_cast<int>(error));
    both(console, "Reading error, in {} {}", reader.errorName,
         reader.insideInclude ? "INCLUDE file" : "Section");
}

std::string placeAt(const SectionReader& reader, int line) {
    return placeText(DeckPlace{reader.cursor->fileName, line}, reader.keyword);
}

/// Values behind a whole array, in its last line or the next, are not read: the grid may be another one.
void tellFurtherValues(const SectionReader& reader, const ListEnd& end, std::size_t size) {
    std::string_view next;
    const bool inNextLine = !end.slash && !end.endOfFile && peekLine(reader, next) && !next.empty() &&
                            !std::isnan(firstNumber(next, std::numeric_limits<double>::quiet_NaN()));
    if (end.dropped == 0 && !inNextLine) return;
    warnHere(reader, "WARNING :: {}: MORE THAN THE {} VALUES THAT IT HAS, WHAT FOLLOWS THEM IS NOT READ",
             reader.keyword, size);
}

/// An array must be given whole.
void checkWhole(const SectionReader& reader, const ListEnd& end, std::size_t size) {
    checkRead(reader, end);
    const bool tooFew = !end.endOfFile && static_cast<std::size_t>(end.count) < size;
    if (!tooFew && end.surplus == 0) return tellFurtherValues(reader, end, size);
    printReadError(reader, tooFew ? ListError::TooFew : ListError::TooMany);
    both(consoleOf(reader), "{}: {} values, {} given", placeAt(reader, reader.cursor->lineNumber), size,
         end.count + end.surplus);
    hardStop(consoleOf(reader));
}

/// Whether an array was given for the upper half of the cells, or of the layers, where that stands for both.
bool holdsUpperHalf(const SectionReader& reader, const ListEnd& end, std::size_t size) {
    if (!reader.halfRepeats || end.error != ListError::None || end.endOfFile || end.surplus != 0)
        return false;
    const std::size_t cells = static_cast<std::size_t>(reader.gridSize[0]) *
                              static_cast<std::size_t>(reader.gridSize[1]) *
                              static_cast<std::size_t>(reader.gridSize[2]);
    constexpr std::size_t Corners = 8;
    const bool byPlace = size == cells || size == Corners * cells || reader.keyword == "DZV";
    return byPlace && 2 * static_cast<std::size_t>(end.count) == size;
}

/// The whole of an array, or its upper half twice.
template <class Value>
void takeWhole(const SectionReader& reader, const ListEnd& end, std::span<Value> values) {
    if (!holdsUpperHalf(reader, end, values.size())) return checkWhole(reader, end, values.size());
    const std::size_t half = values.size() / 2;
    std::copy_n(values.begin(), half, values.begin() + static_cast<std::ptrdiff_t>(half));
}

/// Places, in an array by cell, of the cells of the present box, i fastest.
std::vector<std::size_t> placesInBox(const SectionReader& reader) {
    const CellBox& box = reader.box.cells;
    const auto place = [&](int i, int j, int k) {
        const std::size_t row =
            static_cast<std::size_t>(k - 1) * static_cast<std::size_t>(reader.gridSize[1]) +
            static_cast<std::size_t>(j - 1);
        return row * static_cast<std::size_t>(reader.gridSize[0]) + static_cast<std::size_t>(i - 1);
    };
    std::vector<std::size_t> places;
    for (int k = box.k1; k <= box.k2; ++k)
        for (int j = box.j1; j <= box.j2; ++j)
            for (int i = box.i1; i <= box.i2; ++i) places.push_back(place(i, j, k));
    return places;
}

template <class T>
std::vector<T> valuesInBox(const SectionReader& reader, std::span<const T> values) {
    std::vector<T> part;
    for (const std::size_t place : placesInBox(reader)) part.push_back(values[place]);
    return part;
}

template <class T>
void putIntoBox(const SectionReader& reader, std::span<const T> part, std::span<T> values) {
    std::size_t n = 0;
    for (const std::size_t place : placesInBox(reader)) values[place] = part[n++];
}

}  // namespace

bool isSectionWord(std::string_view word) {
    return std::find(SectionWords.begin(), SectionWords.end(), word) != SectionWords.end();
}

std::string keywordOf(std::string_view line) {
    return padded(firstWord(trimLeft(line)), KeywordWidth);
}

void echoLine(const SectionReader& reader, std::string_view line) {
    lineToLog(consoleOf(reader), line);
    copyEcho(reader, line);
}

void takeComment(SectionReader& reader, std::string_view line) {
    echoLine(reader, line);
    noteUnitCopyRequest(reader, line);
}

bool peekLine(const SectionReader& reader, std::string_view& line) {
    const std::string_view text = reader.cursor->text;
    if (reader.cursor->position >= text.size()) return false;
    line = text.substr(reader.cursor->position);
    line = trimLeft(line.substr(0, line.find('\n')));
    return true;
}

double firstNumber(std::string_view line, double otherwise) {
    DeckCursor alone;
    alone.text = line;
    std::array<double, 1> value{otherwise};
    readDoubles(alone, value);
    return value[0];
}

void skipCommentLines(SectionReader& reader) {
    std::string_view line;
    for (int n = 0; n < MaxCommentLines; ++n) {
        if (!nextLine(*reader.cursor, line)) {
            lineToBoth(consoleOf(reader), EndOfFileText);
            return;
        }
        if (!isCommentLine(line)) {
            stepBack(*reader.cursor);
            return;
        }
        takeComment(reader, line);
    }
}

namespace {

/// A skipped keyword and its first line, which the copies need to have it whole.
void copySkipped(const SectionReader& reader, std::string_view line) {
    if (!reader.keyword.empty()) copyEcho(reader, reader.keyword);
    copyEcho(reader, line);
    reader.sinks->keywordCopied = true;
}

}  // namespace

void skipKeywordData(SectionReader& reader) {
    std::string_view line;
    bool within = reader.commonForm && reader.keyword.starts_with("RPT");
    for (int n = 0; n < MaxSkippedLines && nextLine(*reader.cursor, line); ++n) {
        // Names of reports look like keywords, and are those of arrays.
        within = within && !isSectionWord(keywordOf(line));
        if (!within && !isCommentLine(line) && line.find_first_of("/*") == std::string_view::npos) {
            stepBack(*reader.cursor);
            return;
        }
        within = within && (isCommentLine(line) || line.find('/') == std::string_view::npos);
        noteUnitCopyRequest(reader, line);
        if (n > 0)
            echoLine(reader, line);
        else if (reader.outputMetric)
            copySkipped(reader, line);
    }
}

int consumeSlashLines(SectionReader& reader, bool* slashSeen) {
    std::string_view line;
    int count = 0;
    while (nextLine(*reader.cursor, line)) {
        if (isCommentLine(line)) {
            takeComment(reader, line);
        } else if (!isSlashLine(line)) {
            stepBack(*reader.cursor);
            break;
        } else if (slashSeen != nullptr) {
            *slashSeen = true;
        }
        ++count;
    }
    return count;
}

bool nextLineIsKeyword(const SectionReader& reader) {
    std::string_view line;
    return !peekLine(reader, line) || (!line.empty() && isLetter(line.front()));
}

bool nextLineIsLoneWord(const SectionReader& reader) {
    std::string_view line;
    if (!peekLine(reader, line)) return true;
    if (line.empty() || !isLetter(line.front())) return false;
    return isSectionWord(keywordOf(line)) || isCommentLine(line.substr(firstWord(line).size()));
}

void announce(const SectionReader& reader, std::string_view text) {
    both(consoleOf(reader), "READ -> {}", text);
}

void reportNotSupported(SectionReader& reader, std::string_view line) {
    line = trimLeft(line);
    both(consoleOf(reader), " {} -> not surpported  ", padded(line, KeywordWidth));
    if (line.empty() || !isLetter(line.front())) return;
    const std::string name(firstWord(line));
    // A title is for people.
    if (name != "TITLE") noteUnused(consoleOf(reader), name, placeOf(reader), reader.section);
    auto& skipped = reader.sinks->skipped;
    const auto known = std::find_if(skipped.begin(), skipped.end(),
                                    [&name](const SkippedKeyword& row) { return row.name == name; });
    if (known != skipped.end()) {
        ++known->count;
    } else {
        skipped.push_back({name, reader.cursor->fileName, reader.cursor->lineNumber, 1});
    }
}

void checkRead(const SectionReader& reader, const ListEnd& end) {
    const Console& console = consoleOf(reader);
    if (end.error != ListError::None) {
        printReadError(reader, end.error);
        both(console, "{}: \"{}\"", placeAt(reader, end.errorLine), end.errorText);
        hardStop(console);
    }
    if (end.endOfFile) {
        lineToBoth(console, EndOfFileText);
        tellPlace(reader);
    }
}

DeckPlace placeOf(const SectionReader& reader) {
    return {reader.cursor->fileName, reader.cursor->lineNumber};
}

void tellPlace(const SectionReader& reader) {
    lineToBoth(consoleOf(reader), placeAt(reader, reader.cursor->lineNumber));
}

void stopAtPlace(const SectionReader& reader) {
    tellPlace(reader);
    hardStop(consoleOf(reader));
}

void neglectKeyword(SectionReader& reader) {
    announce(reader, reader.keyword + ", is neglected");
    noteUnused(consoleOf(reader), reader.keyword, placeOf(reader), reader.section);
    skipKeywordData(reader);
}

void readArray(SectionReader& reader, std::span<double> values, double factor, double copyFactor) {
    takeWhole(reader, readDoubles(*reader.cursor, values, factor), values);
    copyArray(reader, values, factor, copyFactor);
}

void readArray(SectionReader& reader, std::span<float> values, double factor, double copyFactor) {
    takeWhole(reader, readFloats(*reader.cursor, values, factor), values);
    copyArray(reader, values, factor, copyFactor);
}

void readArray(SectionReader& reader, std::span<int> values) {
    takeWhole(reader, readIntegers(*reader.cursor, values), values);
    copyArray(reader, values);
}

void readCellArray(SectionReader& reader, std::span<double> values, double factor, double copyFactor) {
    if (!reader.box.isSet) return readArray(reader, values, factor, copyFactor);
    std::vector<double> part = valuesInBox(reader, std::span<const double>(values));
    readArray(reader, part, factor, copyFactor);
    putIntoBox(reader, std::span<const double>(part), values);
}

void readCellArray(SectionReader& reader, std::span<int> values) {
    if (!reader.box.isSet) return readArray(reader, values);
    std::vector<int> part = valuesInBox(reader, std::span<const int>(values));
    readArray(reader, part);
    putIntoBox(reader, std::span<const int>(part), values);
}

namespace {

/// Number, from 0, in a list for the present box, of the value of a cell.
std::size_t listPlace(const SectionReader& reader, std::size_t cell) {
    const std::vector<std::size_t> places = placesInBox(reader);
    return static_cast<std::size_t>(std::find(places.begin(), places.end(), cell - 1) - places.begin());
}

}  // namespace

std::string cellText(const SectionReader& reader, std::size_t cell) {
    const auto nx = static_cast<std::size_t>(reader.gridSize[0]);
    const auto ny = static_cast<std::size_t>(reader.gridSize[1]);
    if (nx == 0 || ny == 0) return fmt::format("cell {}", cell);
    return fmt::format("cell {} (I {}, J {}, K {})", cell, (cell - 1) % nx + 1, (cell - 1) / nx % ny + 1,
                       (cell - 1) / (nx * ny) + 1);
}

void readCheckedArray(SectionReader& reader, const ValueRule& rule, std::span<double> values, double factor,
                      double copyFactor) {
    const ListStart start = listStart(*reader.cursor);
    readCellArray(reader, values, factor, copyFactor);
    const double low = rule.low * factor - RuleSlack, high = rule.high * factor + RuleSlack;
    const auto isBad = [low, high](double value) { return !(value >= low && value <= high); };
    const auto first = std::find_if(values.begin(), values.end(), isBad);
    if (first == values.end()) return;
    const auto count = std::count_if(first, values.end(), isBad);
    const auto cell = static_cast<std::size_t>(first - values.begin()) + 1;
    const std::size_t inList = reader.box.isSet ? listPlace(reader, cell) : cell - 1;
    const int line = lineOfValue(*reader.cursor, start, inList);
    const DeckPlace place{reader.cursor->fileName, line};
    const std::string limit =
        *first < low ? fmt::format("BELOW {}", number(rule.low)) : fmt::format("ABOVE {}", number(rule.high));
    if (rule.stops) {
        both(consoleOf(reader), "ERROR :: {} {} IN {} CELLS; FIRST: {}, {}", reader.keyword, limit, count,
             cellText(reader, cell), number(*first / factor));
        lineToBoth(consoleOf(reader), placeText(place, reader.keyword));
        hardStop(consoleOf(reader));
    }
    warnAt(consoleOf(reader), place, reader.keyword,
           "WARNING :: {} {} IN {} CELLS, SET TO THAT; FIRST: {}, {}", reader.keyword, limit, count,
           cellText(reader, cell), number(*first / factor));
    for (double& value : values)
        if (isBad(value)) value = value > high ? rule.high * factor : rule.low * factor;
}

namespace {

/// What stands next cannot be a keyword: a number, a quoted name, or a row of several words.
bool rowIsNext(const SectionReader& reader, RowStart start) {
    std::string_view line;
    if (!peekLine(reader, line) || line.empty() || isSlashLine(line)) return false;
    const char first = line.front();
    const bool number = std::isdigit(static_cast<unsigned char>(first)) != 0 || first == '.' || first == '-';
    if (start == RowStart::Number) return number && !isCommentLine(line);
    return first == '\'' ||
           (isLetter(first) && line.find('/') != std::string_view::npos && !isSectionWord(keywordOf(line)));
}

/// The row that stands next goes on with the walk: it cannot be a keyword, and in a table it lies above the
/// row before.
bool goesOn(const SectionReader& reader, const RowLoop& loop) {
    if (!rowIsNext(reader, loop.start)) return false;
    std::string_view line;
    return std::isnan(loop.axis) || (peekLine(reader, line) && firstNumber(line, loop.axis) > loop.axis);
}

/// Rows that a comment has cut off from the rows before it.
void tellRowsBehindComment(const SectionReader& reader, const RowLoop& loop, bool slashSeen) {
    if (slashSeen || loop.rows == 0 || !rowIsNext(reader, loop.start)) return;
    warnHere(reader,
             "WARNING :: A COMMENT OR BLANK LINE ENDS THE ROWS OF {}, THE ROWS BEHIND IT ARE NOT READ",
             reader.keyword);
}

}  // namespace

namespace {

/// A row without a slash ends with the one on the next line.
void passRowSlash(SectionReader& reader) {
    std::string_view line;
    if (peekLine(reader, line) && isSlashLine(line)) nextLine(*reader.cursor, line);
}

}  // namespace

bool nextTableRow(SectionReader& reader, RowLoop& loop) {
    const auto keywordIsNext = [&] {
        return loop.start == RowStart::Number ? nextLineIsKeyword(reader) : nextLineIsLoneWord(reader);
    };
    if (loop.rows == 0) {
        skipCommentLines(reader);
        if (consumeSlashLines(reader) > 0 || keywordIsNext()) return false;
        ++loop.rows;
        return true;
    }
    if (loop.last.endOfFile) return false;
    if (loop.rows == 1 && loop.last.slash) loop.slash = RowSlash::EndsRow;
    if (loop.last.slash && loop.slash == RowSlash::EndsTable) return false;
    bool slashSeen = false;
    if (reader.commonForm && loop.slash == RowSlash::EndsRow && !loop.last.slash) passRowSlash(reader);
    const int lines = consumeSlashLines(reader, &slashSeen);
    const bool passedOver = lines > 0 && !slashSeen && reader.commonForm && goesOn(reader, loop);
    if (lines > 0 && !passedOver) {
        tellRowsBehindComment(reader, loop, slashSeen || loop.last.slash);
        return false;
    }
    if (keywordIsNext()) return false;
    ++loop.rows;
    return true;
}

namespace {

/// Whether the line before, comments aside, is a row without its slash: more than a keyword, and none in it.
bool rowIsOpen(const SectionReader& reader) {
    std::string_view before = std::string_view(reader.cursor->text).substr(0, reader.cursor->position);
    while (!before.empty()) {
        before.remove_suffix(before.back() == '\n' ? 1 : 0);
        const std::size_t start = before.rfind('\n') + 1;  // 0 where there is none
        const std::string_view line = before.substr(start);
        before = before.substr(0, start);
        if (isCommentLine(line)) continue;
        const std::string_view text = line.substr(0, line.find("--"));
        return text.find('/') == std::string_view::npos &&
               !isCommentLine(trimLeft(text).substr(firstWord(trimLeft(text)).size()));
    }
    return false;
}

}  // namespace

bool nextRow(SectionReader& reader, RowStart start) {
    skipCommentLines(reader);
    std::string_view line;
    if (!peekLine(reader, line)) return false;
    if (reader.commonForm && isSlashLine(line) && rowIsOpen(reader)) {
        nextLine(*reader.cursor, line);
        return nextRow(reader, start);
    }
    if (isSlashLine(line)) return !nextLine(*reader.cursor, line);
    return start == RowStart::Number ? !nextLineIsKeyword(reader) : !nextLineIsLoneWord(reader);
}

}  // namespace kvr
