#include "deck/sections/pvto.hpp"

#include "base/hard_stop.hpp"
#include "deck/sections/table_rules.hpp"

#include <array>
#include <span>

namespace kvr {

namespace {

constexpr std::size_t MaxLineValues = 3001;  // numbers of one line, repeats counted out

/// The numbers of one record and the line of the deck of each.
struct PvtoRecord {
    std::vector<double> values;
    std::vector<int> lines;
};

bool holdsRs(std::size_t count) {
    return count > PvtoRowValues && count % PvtoRowValues == 1;
}

void addUnderRows(const PvtoRecord& record, std::size_t first, PvtoTable& table) {
    const std::vector<double>& values = record.values;
    table.records.back().insert(table.records.back().end(),
                                values.begin() + static_cast<std::ptrdiff_t>(first), values.end());
    for (std::size_t n = first; n + PvtoRowValues <= values.size(); n += PvtoRowValues) {
        table.underPressure.push_back(values[n]);
        table.underFvf.push_back(values[n + 1]);
        table.underViscosity.push_back(values[n + 2]);
        table.rowLines.back().push_back(record.lines[n]);
    }
}

void startRs(const PvtoRecord& record, PvtoTable& table) {
    const std::vector<double>& values = record.values;
    table.Rs.push_back(values[0]);
    table.records.emplace_back(values.begin(), values.begin() + 1 + PvtoRowValues);
    table.rowLines.push_back({record.lines[0]});
    table.pressure.push_back(values[1]);
    table.fvf.push_back(values[2]);
    table.viscosity.push_back(values[3]);
    table.lines.push_back(record.lines[0]);
    table.underPressure.clear();
    table.underFvf.clear();
    table.underViscosity.clear();
    addUnderRows(record, 1 + PvtoRowValues, table);
}

[[noreturn]] void refuse(const SectionReader& reader, int line, const std::string& what) {
    lineToBoth(consoleOf(reader), "ERROR :: PVTO: " + what);
    lineToBoth(consoleOf(reader), placeText(DeckPlace{reader.cursor->fileName, line}, reader.keyword));
    hardStop(consoleOf(reader));
}

/// 1 + 3n numbers start an Rs; 3n numbers are further rows of the Rs before. A row that lacks a number has a
/// count of neither kind, or, as a record of 3n, a pressure that does not rise.
void addRecord(const SectionReader& reader, const PvtoRecord& record, PvtoTable& table) {
    const std::size_t count = record.values.size();
    if (holdsRs(count)) return startRs(record, table);
    const bool further = count > 0 && count % PvtoRowValues == 0 && !table.Rs.empty();
    const double above = !further                      ? 0.0
                         : table.underPressure.empty() ? table.pressure.back()
                                                       : table.underPressure.back();
    if (!further || !(record.values[0] > above))
        refuse(reader, record.lines[0],
               fmt::format(
                   "A RECORD OF {} NUMBERS; IT HOLDS RS, PRESSURE, BO AND VISCOSITY, THEN ROWS OF PRESSURE, "
                   "BO AND VISCOSITY, AND ENDS WITH A SLASH",
                   count));
    addUnderRows(record, 0, table);
}

/// What stands next goes on with the table: an Rs above the last one.
bool rsGoesOn(const SectionReader& reader, const PvtoTable& table) {
    std::string_view line;
    if (nextLineIsKeyword(reader) || !peekLine(reader, line)) return false;
    return isCommentLine(line) ? reader.commonForm : firstNumber(line, table.Rs.back()) > table.Rs.back();
}

/// A line without numbers. Between two records a line of only a slash ends the table, and a comment or blank
/// line where such lines end rows; one of only a slash may stand behind a record, too. False at the end of
/// the table.
bool passLine(SectionReader& reader, std::string_view line, PvtoRecord& record, PvtoTable& table) {
    if (isCommentLine(line)) {
        takeComment(reader, line);
        return !record.values.empty() || reader.commonForm;
    }
    if (record.values.empty()) return false;
    addRecord(reader, record, table);
    record = {};
    return rsGoesOn(reader, table);
}

}  // namespace

std::vector<double> readLineNumbers(SectionReader& reader, std::string_view line, bool& slash) {
    DeckCursor lineCursor;
    lineCursor.fileName = reader.cursor->fileName;
    lineCursor.text = line;
    lineCursor.lineNumber = reader.cursor->lineNumber - 1;
    std::vector<double> values(MaxLineValues);
    ListEnd end = readDoubles(lineCursor, values);
    slash = end.slash;
    end.endOfFile = false;  // the end of the line
    if (end.surplus > 0) {
        end.error = ListError::BadValue;
        end.errorLine = reader.cursor->lineNumber;
        end.errorText = line;
    }
    checkRead(reader, end);
    values.resize(static_cast<std::size_t>(end.count));
    return values;
}

PvtoTable readPvtoTable(SectionReader& reader) {
    PvtoTable table;
    PvtoRecord record;
    std::string_view line;
    skipCommentLines(reader);
    while (!nextLineIsKeyword(reader) && nextLine(*reader.cursor, line)) {
        if (isCommentLine(line) || isSlashLine(line)) {
            if (!passLine(reader, line, record, table)) break;
            continue;
        }
        bool slash = false;
        const std::vector<double> numbers = readLineNumbers(reader, line, slash);
        record.values.insert(record.values.end(), numbers.begin(), numbers.end());
        record.lines.resize(record.values.size(), reader.cursor->lineNumber);
        if (!slash) continue;
        addRecord(reader, record, table);
        record = {};
    }
    if (!record.values.empty()) addRecord(reader, record, table);
    consumeSlashLines(reader);
    return table;
}

void checkRowsOfRs(const SectionReader& reader, std::size_t table, const PvtoTable& live) {
    for (std::size_t r = 0; r < live.records.size(); ++r) {
        std::array<Column, PvtoRowValues> columns;
        for (std::size_t n = 1; n < live.records[r].size(); ++n)
            columns[(n - 1) % PvtoRowValues].push_back(live.records[r][n]);
        checkTable(reader, table, {{&columns[0], &columns[1], &columns[2]}, live.rowLines[r]}, RowsOfRs);
    }
}

}  // namespace kvr
