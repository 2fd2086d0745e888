#include "deck/sections/table_columns.hpp"

#include "deck/reading/unit_copies.hpp"
#include "deck/sections/props_tables.hpp"
#include "deck/sections/table_rules.hpp"

#include <array>
#include <utility>
#include <vector>

namespace kvr {

namespace {

constexpr std::size_t LeastTableRows = 2;

/// The rows of a table to the copies, in the units of the deck times what a copy asks.
void copyTable(const SectionReader& reader, std::span<const TableColumn> columns) {
    std::array<double, MaxColumns> row{};
    std::array<double, MaxColumns> factors{};
    for (std::size_t c = 0; c < columns.size(); ++c) factors[c] = columns[c].copyFactor;
    for (std::size_t r = 0; r < columns[0].target->size(); ++r) {
        for (std::size_t c = 0; c < columns.size(); ++c) row[c] = (*columns[c].target)[r] / columns[c].factor;
        copyTableRow(reader, std::span<const double>(row.data(), columns.size()),
                     std::span<const double>(factors.data(), columns.size()));
    }
    copyTableEnd(reader);
}

/// A row is one read: what stands behind its last value in the line would be lost, and a value too few takes
/// the next row's first.
void checkRowLength(const SectionReader& reader, const ListEnd& row, std::size_t columns) {
    if (row.dropped > 0) {
        both(consoleOf(reader), "ERROR :: {}: {} VALUES IN A ROW OF {}", reader.keyword,
             columns + static_cast<std::size_t>(row.dropped), columns);
        stopAtPlace(reader);
    }
    if (static_cast<std::size_t>(row.count) < columns)
        warnHere(reader, "WARNING :: {}: {} VALUES IN A ROW OF {}, THE REST IS 0", reader.keyword, row.count,
                 columns);
}

/// The columns in units of the deck against their rules.
void checkColumns(const SectionReader& reader, std::size_t table, std::vector<int> lines,
                  std::span<const TableColumn> columns) {
    std::vector<Column> deck;
    for (const TableColumn& column : columns) {
        deck.push_back(*column.target);
        for (double& value : deck.back()) value /= column.factor;
    }
    TableRows rows;
    for (const Column& column : deck) rows.columns.push_back(&column);
    rows.lines = std::move(lines);
    checkTable(reader, table, rows);
}

/// The values of one row; in the common form of several whole rows, where they share a line.
ListEnd readRowValues(SectionReader& reader, std::size_t columns, std::vector<double>& values) {
    DeckCursor& cursor = *reader.cursor;
    const std::size_t begin = cursor.position;
    const int line = cursor.lineNumber;
    values.assign(columns, OpenValue);
    ListEnd row = readDoubles(cursor, values);
    checkRead(reader, row);
    const auto further = static_cast<std::size_t>(row.dropped);
    if (reader.commonForm && further > 0 && further % columns == 0) {
        cursor.position = begin;
        cursor.lineNumber = line;
        values.assign(columns + further, OpenValue);
        row = readDoubles(cursor, values);
        checkRead(reader, row);
    } else if (row.count > 0) {
        checkRowLength(reader, row, columns);
    }
    for (std::size_t c = static_cast<std::size_t>(row.count); c < values.size(); ++c) values[c] = 0.0;
    return row;
}

}  // namespace

void beginTables(SectionReader& reader) {
    announce(reader, reader.keyword);
    skipCommentLines(reader);
    copyKeyword(reader);
}

void requireRows(const SectionReader& reader, std::size_t rows) {
    if (rows >= LeastTableRows) return;
    both(consoleOf(reader), "ERROR :: INSUFFICIENT {} TABLE", reader.keyword);
    stopAtPlace(reader);
}

bool dataEnded(SectionReader& reader) {
    consumeSlashLines(reader);
    return nextLineIsKeyword(reader);
}

void readTable(SectionReader& reader, std::size_t table, std::span<const TableColumn> columns) {
    for (const TableColumn& column : columns) column.target->clear();
    std::vector<double> values;
    std::vector<int> lines;
    RowLoop rows{RowSlash::EndsTable, RowStart::Number, {}, 0};
    while (nextTableRow(reader, rows)) {
        rows.last = readRowValues(reader, columns.size(), values);
        if (rows.last.count == 0) continue;
        for (std::size_t n = 0; n < values.size(); ++n) {
            const TableColumn& column = columns[n % columns.size()];
            column.target->push_back(values[n] * column.factor);
        }
        lines.resize(columns[0].target->size(), reader.cursor->lineNumber);
        rows.axis = values[values.size() - columns.size()];
    }
    for (const TableColumn& column : columns) fillOpenValues(*columns[0].target, *column.target);
    copyTable(reader, columns);
    checkColumns(reader, table, lines, columns);
}

}  // namespace kvr
