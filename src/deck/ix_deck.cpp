#include "deck/ix_deck.hpp"

#include "base/text.hpp"
#include "deck/deck_opening.hpp"

#include <algorithm>
#include <array>

namespace kvr {

namespace {

constexpr std::size_t IxLineWidth = 2048;  // characters of a line that are read
constexpr std::size_t ToldWidth = 8;       // of a line that is not supported
constexpr std::array<std::string_view, 3> IxExtensions = {".afi", ".Afi", ".AFI"};

/// The text between the next pair of double quotes, which is taken off `line`; to its end where the second
/// one is missing.
std::string takeQuoted(std::string_view& line) {
    const std::size_t open = line.find('"');
    if (open == std::string_view::npos) {
        line = {};
        return {};
    }
    line.remove_prefix(open + 1);
    const std::size_t close = line.find('"');
    std::string text(line.substr(0, close));
    line.remove_prefix(close == std::string_view::npos ? line.size() : close + 1);
    return text;
}

bool hasIxExtension(const std::string& name) {
    for (const std::string_view extension : IxExtensions)
        if (name.ends_with(extension)) return true;
    return false;
}

}  // namespace

std::vector<std::string> ixDeckNames(const RunOptions& options) {
    if (hasIxExtension(options.deckFile)) return {options.deckFile};
    if (!options.useRelativePath) return {options.deckFolder + "ECLIPSE.afi"};
    std::vector<std::string> names;
    for (const std::string_view extension : IxExtensions)
        names.push_back(options.dataFileBase + std::string(extension));
    return names;
}

IxInclude ixIncludeOf(std::string_view line) {
    line.remove_prefix(std::min(line.find("INCLUDE"), line.size()));
    IxInclude include;
    include.path = takeQuoted(line);
    if (line.find("type") != std::string_view::npos) include.type = takeQuoted(line);
    return include;
}

std::vector<IxInclude> readIxDeck(const Console& console, const RunOptions& options) {
    DeckCursor deck;
    openFirstDeck(console, ixDeckNames(options), deck);
    std::vector<IxInclude> includes;
    std::string_view line;
    while (nextLine(deck, line)) {
        line = line.substr(0, IxLineWidth);
        if (line.find("INCLUDE") == std::string_view::npos) {
            both(console, " {} -> not surpported  ", padded(trimLeft(line), ToldWidth));
            continue;
        }
        includes.push_back(ixIncludeOf(line));
        both(console, "Type = {} Path -> {}", includes.back().type, includes.back().path);
    }
    lineToBoth(console, "FILE I/O -> END OF FILE DETECTED BEFORE STREAMLINE INFO..");
    return includes;
}

}  // namespace kvr
