#pragma once

#include "deck/reading/section_reader.hpp"
#include "fluid/tables.hpp"

#include <span>
#include <string_view>

namespace kvr {

/// The rows of one table as the deck gives them, in its units.
struct TableRows {
    std::vector<const Column*> columns;
    std::vector<int> lines;  // of the deck, by row
};

/// Tests the table of the present keyword against what its columns may be (table_rules.cpp): values that make
/// no table stop the run, others are told; one line a rule, with the row and column of the first value and
/// its line in the deck. `table`: number of the table in the keyword, from 1. Keywords without rules pass.
void checkTable(const SectionReader& reader, std::size_t table, const TableRows& rows);
/// The same by the rules of a part of a table, under its own name.
void checkTable(const SectionReader& reader, std::size_t table, const TableRows& rows,
                std::string_view rules);
inline constexpr std::string_view RowsOfRs = "PVTO by Rs";  // pressure, Bo, viscosity under one Rs

/// The same for values of a scalar record, by column.
void checkRecord(const SectionReader& reader, std::size_t table, std::span<const double> values);

}  // namespace kvr
