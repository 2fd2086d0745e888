#include "deck/reading/deck_extent.hpp"

#include "base/text.hpp"
#include "deck/reading/list_read.hpp"

#include <algorithm>
#include <array>
#include <filesystem>
#include <string_view>
#include <vector>

namespace kvr {

namespace {

constexpr std::int64_t BytesPerValue = 2;    // a digit and what parts it from the next
constexpr std::size_t IncludeReach = 10000;  // bytes behind INCLUDE within which its name stands
constexpr std::int64_t MostCounted = std::int64_t{1} << 40;

// Words behind which the size of an array says nothing about the size of the grid.
constexpr std::array<std::string_view, 4> UnboundedWords = {"EQUALS", "BOX", "ECLTRACE", "ECL2TEC"};

struct Extent {
    std::int64_t largest = 0;
    bool bounded = true;
    std::vector<std::string> includes;
};

bool isBlank(char c) {
    return static_cast<unsigned char>(c) <= ' ' || c == ',';
}

/// The count of "n*value", or 1.
std::int64_t repeatsOf(std::string_view token) {
    std::int64_t count = 0;
    for (const char c : token) {
        if (c == '*') return std::max<std::int64_t>(count, 1);
        if (c < '0' || c > '9') break;
        count = std::min(count * 10 + (c - '0'), MostCounted);
    }
    return 1;
}

/// Values of one line added to the present array; a slash or a word ends it.
void countLine(std::string_view line, std::int64_t& values, Extent& extent) {
    for (std::size_t at = 0; at < line.size();) {
        if (isBlank(line[at])) {
            ++at;
            continue;
        }
        if (line.substr(at).starts_with("--")) return;
        if (line[at] == '/') {
            extent.largest = std::max(extent.largest, values);
            values = 0;
            return;
        }
        std::size_t end = at;
        while (end < line.size() && !isBlank(line[end]) && line[end] != '/') ++end;
        values = std::min(values + repeatsOf(line.substr(at, end - at)), MostCounted);
        at = end;
    }
}

std::string includedName(const DeckCursor& deck, std::size_t position) {
    DeckCursor behind;
    behind.text = deck.text.substr(position, IncludeReach);
    std::string_view line;
    std::size_t begin = 0;
    while (nextLine(behind, line) && isCommentLine(line)) begin = behind.position;
    behind.position = begin;
    std::string name;
    readPath(behind, name);
    return std::string(trim(name));
}

/// Every array of a text, and the files that it includes.
void countText(const DeckCursor& deck, Extent& extent) {
    std::string_view rest = deck.text;
    std::int64_t values = 0;
    while (!rest.empty()) {
        const std::size_t length = std::min(rest.find('\n'), rest.size() - 1) + 1;
        const std::string_view line = trimLeft(rest.substr(0, rest.find('\n')));
        rest.remove_prefix(length);
        if (line.empty() || line.front() < 'A' || line.front() > 'Z') {
            countLine(line, values, extent);
            continue;
        }
        extent.largest = std::max(extent.largest, values);
        values = 0;
        const std::string_view word = firstWord(line);
        if (std::find(UnboundedWords.begin(), UnboundedWords.end(), word) != UnboundedWords.end())
            extent.bounded = false;
        if (word == "INCLUDE") extent.includes.push_back(includedName(deck, deck.text.size() - rest.size()));
    }
    extent.largest = std::max(extent.largest, values);
}

bool longEnough(std::uintmax_t bytes, std::int64_t enough) {
    return bytes / BytesPerValue >= static_cast<std::uintmax_t>(enough);
}

}  // namespace

std::optional<std::int64_t> largestArray(const DeckCursor& deck, const std::string& folder,
                                         std::int64_t enough) {
    if (longEnough(deck.text.size(), enough)) return std::nullopt;
    Extent extent;
    countText(deck, extent);
    const std::vector<std::string> names = extent.includes;  // files do not include others
    std::vector<std::string> paths;
    for (const std::string& name : names) {
        const std::string path = existingPath(folder + name);
        if (path.empty()) continue;
        std::error_code failure;
        if (longEnough(std::filesystem::file_size(path, failure), enough)) return std::nullopt;
        paths.push_back(path);
    }
    for (const std::string& path : paths) {
        DeckCursor file;
        if (loadDeck(path, file)) countText(file, extent);
    }
    if (!extent.bounded) return std::nullopt;
    return extent.largest;
}

}  // namespace kvr
