#include "deck/sections/pvto.hpp"

#include <span>

namespace kvr {

namespace {

constexpr std::size_t MaxLineValues = 3001;  // numbers of one line, repeats counted out

/// Numbers so far make whole rows, with or without an Rs in front.
bool isWhole(std::size_t count) {
    return count >= PvtoRowValues && count % PvtoRowValues != PvtoRowValues - 1;
}

void addUnderRows(std::span<const double> values, PvtoTable& table) {
    table.records.back().insert(table.records.back().end(), values.begin(), values.end());
    for (std::size_t n = 0; n + PvtoRowValues <= values.size(); n += PvtoRowValues) {
        table.underPressure.push_back(values[n]);
        table.underFvf.push_back(values[n + 1]);
        table.underViscosity.push_back(values[n + 2]);
    }
}

void startRs(std::span<const double> values, PvtoTable& table) {
    table.Rs.push_back(values[0]);
    table.records.emplace_back(values.begin(), values.begin() + 1 + PvtoRowValues);
    table.pressure.push_back(values[1]);
    table.fvf.push_back(values[2]);
    table.viscosity.push_back(values[3]);
    table.underPressure.clear();
    table.underFvf.clear();
    table.underViscosity.clear();
    addUnderRows(values.subspan(1 + PvtoRowValues), table);
}

/// False when the numbers are no record: a wrong count, or rows of no Rs.
bool addRecord(std::span<const double> values, PvtoTable& table) {
    if (!isWhole(values.size())) return false;
    if (values.size() % PvtoRowValues == 1)
        startRs(values, table);
    else if (!table.Rs.empty())
        addUnderRows(values, table);
    else
        return false;
    return true;
}

void refuseLine(const SectionReader& reader, std::string_view line) {
    ListEnd end;
    end.error = ListError::BadValue;
    end.errorLine = reader.cursor->lineNumber;
    end.errorText = line;
    checkRead(reader, end);
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
    if (end.surplus > 0) refuseLine(reader, line);
    checkRead(reader, end);
    values.resize(static_cast<std::size_t>(end.count));
    return values;
}

PvtoTable readPvtoTable(SectionReader& reader) {
    PvtoTable table;
    std::vector<double> record;
    std::string_view line;
    skipCommentLines(reader);
    while (!nextLineIsKeyword(reader) && consumeSlashLines(reader) == 0 && nextLine(*reader.cursor, line)) {
        bool slash = false;
        const std::vector<double> numbers = readLineNumbers(reader, line, slash);
        record.insert(record.end(), numbers.begin(), numbers.end());
        if (!slash && !isWhole(record.size())) continue;
        if (!addRecord(record, table)) refuseLine(reader, line);
        table.lines.resize(table.Rs.size(), reader.cursor->lineNumber);
        record.clear();
    }
    if (!record.empty()) refuseLine(reader, line);
    return table;
}

}  // namespace kvr
