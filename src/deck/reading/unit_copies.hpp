#pragma once

#include "deck/reading/section_reader.hpp"

#include <initializer_list>
#include <span>
#include <string_view>

namespace kvr {

/// The deck rewritten in metric and in field units. Nothing is written unless the reader's `outputMetric`
/// is on, except by `copyLine`. Numbers are those of the deck: the copy in the deck's own unit system
/// gets them as they are, the other one times a factor (UnitSystem::copyLength, ...).

/// One line of text to both copies, always: a comment or a section word as read.
void copyEcho(const SectionReader& reader, std::string_view text);

/// One line of a keyword's own copy to both copies, always.
void copyLine(const SectionReader& reader, std::string_view text);

/// One line to each copy, for words that differ, such as the unit word.
void copyLines(const SectionReader& reader, std::string_view metricText, std::string_view fieldText);

/// The keyword line that the copied data of the present keyword follow.
void copyKeyword(const SectionReader& reader);

/// One item of a copied row.
struct CopyItem {
    double value = 0.0;
    double factor = 1.0;      // deck unit to the other system's
    std::string_view text{};  // written in quotes instead of the value when not empty
};

/// A row of items and its slash.
void copyRow(const SectionReader& reader, std::initializer_list<CopyItem> items);
/// The same from an array of numbers with one factor each; missing factors are 1.
void copyRow(const SectionReader& reader, std::span<const double> values, std::span<const double> factors);
/// The same without the slash: a row of a table, which has one at its end.
void copyTableRow(const SectionReader& reader, std::span<const double> values,
                  std::span<const double> factors);
/// The slash that ends a table or a list.
void copyTableEnd(const SectionReader& reader);

/// Keyword, numbers and slash. `deckFactor` is what the values were multiplied with on reading.
void copyArray(const SectionReader& reader, std::span<const double> values, double deckFactor,
               double copyFactor);
void copyArray(const SectionReader& reader, std::span<const float> values, double deckFactor,
               double copyFactor);
void copyArray(const SectionReader& reader, std::span<const int> values);

}  // namespace kvr
