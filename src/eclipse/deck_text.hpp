#pragma once

#include "base/console.hpp"

#include <cstdio>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace kvr {

// What the writers of deck fragments share: the text of names, numbers, rows and blocks.

/// A name in quotes.
std::string inQuotes(std::string_view name);
/// A number with as many digits as bring the same one back.
std::string deckNumber(double value);

/// Rows of a keyword, ended by the slash line. Nothing is written where there are no rows.
void putKeyword(std::string_view keyword, const std::vector<std::string>& rows, std::FILE* file);
/// One record behind a keyword, its slash on the line.
void putRecord(std::string_view keyword, std::string_view record, std::FILE* file);
/// Values of every cell, at most eight and 128 characters to a line, then the slash line; equal ones in a row
/// with their count.
void putBlock(std::string_view keyword, std::span<const double> values, double factor, std::FILE* file);

/// The comment before the keywords of a time: rows of 40 dashes around it.
void putTimeBanner(double time, std::FILE* file);

}  // namespace kvr
