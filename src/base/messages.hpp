#pragma once

#include "base/console.hpp"
#include "base/deck_place.hpp"

#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace kvr {

/// Warnings of one kind: those that one format string of the source prints.
struct WarningKind {
    std::string format;  // as it stands in the source
    std::string first;   // the first of them, as printed
    DeckPlace place;     // of the first
    std::string keyword;
    int count = 0;
};

/// What a run loses with a keyword that it does not use.
enum class KeywordEffect {
    Answer,  // rates, pressures or saturations may be others than the deck means
    Output   // reports, files, or how the numbers are found
};

/// A keyword of the deck that the run did not use.
struct UnusedKeyword {
    std::string name;
    DeckPlace place;  // where it was met first
    KeywordEffect effect = KeywordEffect::Answer;
    int count = 0;
    std::string meant;  // a keyword that looks like it; blank for none
};

/// What a run had to say about its input and its course; repeated behind the run. One instance for the run.
struct MessageRecord {
    std::vector<WarningKind> warnings;  // in the order of their first
    std::vector<UnusedKeyword> unused;  // in the order of the deck
    int errors = 0;
};

/// Keeps a warning that has been printed. Nothing happens where the console has no record.
void noteWarning(const Console& console, std::string_view format, std::string_view text,
                 const DeckPlace& place = {}, std::string_view keyword = {});

/// Keeps a keyword that is not used, counted by its name. `section` is the word of its section.
void noteUnused(const Console& console, std::string_view keyword, const DeckPlace& place,
                std::string_view section);

/// Says of a keyword that is not used which one may have been meant.
void noteMeant(const Console& console, std::string_view keyword, std::string_view meant);

/// Warnings and unused keywords that could change the answer, of all kinds together.
int warningCount(const MessageRecord& messages);

/// "File CASE.DATA, line 12, keyword PORO", as far as it is known.
std::string placeText(const DeckPlace& place, std::string_view keyword);

/// A warning to console and log, kept for the end of the run. The format is the whole line as printed,
/// "WARNING ::" at its head; warnings of one format are one kind.
///
///     warn(console, "WARNING :: Well {} has no flow through cell {}", name, cell);
template <class... Args>
void warn(const Console& console, fmt::format_string<Args...> format, Args&&... args) {
    const fmt::string_view kind = format;
    const std::string text = fmt::format(format, std::forward<Args>(args)...);
    lineToBoth(console, text);
    noteWarning(console, {kind.data(), kind.size()}, text);
}

/// The same with its place in the input, which stands on a line of its own behind it.
template <class... Args>
void warnAt(const Console& console, const DeckPlace& place, std::string_view keyword,
            fmt::format_string<Args...> format, Args&&... args) {
    const fmt::string_view kind = format;
    const std::string text = fmt::format(format, std::forward<Args>(args)...);
    lineToBoth(console, text);
    lineToBoth(console, placeText(place, keyword));
    noteWarning(console, {kind.data(), kind.size()}, text, place, keyword);
}

}  // namespace kvr
