#include "deck/reading/deck_cursor.hpp"

#include "base/text.hpp"

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <memory>

namespace kvr {

namespace {

constexpr std::size_t ReadPiece = 1 << 20;             // bytes asked of the system at a time
constexpr std::string_view Utf8Mark = "\xEF\xBB\xBF";  // some editors put it before the first line

struct CloseFile {
    void operator()(std::FILE* file) const { std::fclose(file); }
};

/// Folders and devices open as well, and a device may never end: they are no files here.
bool isFile(const std::string& path) {
    std::error_code ignored;
    return std::filesystem::is_regular_file(path, ignored);
}

/// Everything that the file holds; false on a read error.
bool readAll(std::FILE* file, std::string& text) {
    std::size_t used = 0;
    for (;;) {
        text.resize(used + ReadPiece);
        const std::size_t got = std::fread(text.data() + used, 1, ReadPiece, file);
        used += got;
        if (got < ReadPiece) break;
    }
    text.resize(used);
    return std::ferror(file) == 0;
}

}  // namespace

bool loadDeck(const std::string& path, DeckCursor& cursor) {
    cursor = DeckCursor();
    cursor.fileName = path;
    if (!isFile(path)) return false;
    const std::unique_ptr<std::FILE, CloseFile> file(std::fopen(path.c_str(), "rb"));
    if (!file || !readAll(file.get(), cursor.text)) {
        cursor.text.clear();
        return false;
    }
    if (std::string_view(cursor.text).starts_with(Utf8Mark)) cursor.text.erase(0, Utf8Mark.size());
    return true;
}

std::string existingPath(const std::string& path) {
    if (isFile(path)) return path;
    std::string other = path;
    std::replace(other.begin(), other.end(), '\\', '/');
    return isFile(other) ? other : std::string();
}

bool nextLine(DeckCursor& cursor, std::string_view& line) {
    if (cursor.position >= cursor.text.size()) return false;
    const std::string_view rest = std::string_view(cursor.text).substr(cursor.position);
    const std::size_t length = rest.find('\n');
    line = rest.substr(0, length);
    cursor.previousLine = cursor.position;
    cursor.position = length == std::string_view::npos ? cursor.text.size() : cursor.position + length + 1;
    ++cursor.lineNumber;
    if (!line.empty() && line.back() == '\r') line.remove_suffix(1);
    return true;
}

void stepBack(DeckCursor& cursor) {
    if (cursor.position == cursor.previousLine) return;
    cursor.position = cursor.previousLine;
    --cursor.lineNumber;
}

bool isCommentLine(std::string_view line) {
    const std::string_view text = trimLeft(line);
    return text.empty() || text.starts_with("--");
}

bool isSlashLine(std::string_view line) {
    return trimLeft(line).starts_with('/');
}

}  // namespace kvr
