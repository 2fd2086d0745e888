#pragma once

#include "deck/reading/section_reader.hpp"
#include "fluid/tables.hpp"

#include <cstddef>
#include <span>

namespace kvr {

// What the keywords of tables share: rows of a fixed number of values, in columns with units of their own.

/// A column that a table fills, with the factors of its numbers: deck to internal units, and to the
/// unit of the rewritten copy.
struct TableColumn {
    Column* target;
    double factor = 1.0;
    double copyFactor = 1.0;
};

inline constexpr std::size_t MaxColumns = 4;

/// "READ -> " and the keyword, its comments, and its line in the copies.
void beginTables(SectionReader& reader);

/// Behind the comments and slashes of one table no other one follows.
bool dataEnded(SectionReader& reader);

/// One table, rows until its end, checked and copied; the columns are replaced. `table`: its number in the
/// keyword.
void readTable(SectionReader& reader, std::size_t table, std::span<const TableColumn> columns);

/// Stops with "ERROR :: INSUFFICIENT " and the keyword where a table has fewer than two rows.
void requireRows(const SectionReader& reader, std::size_t rows);

}  // namespace kvr
