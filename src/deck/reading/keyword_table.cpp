#include "deck/reading/keyword_table.hpp"

#include "base/hard_stop.hpp"
#include "base/text.hpp"

#include <cerrno>

namespace kvr {

namespace {

constexpr std::size_t KeywordLineWidth = 100;  // characters of a line that the keyword test sees

void warnOfLimit(const SectionReader& reader) {
    warnHere(reader, "WARNING :: MORE THAN {} KEYWORD LINES IN ONE SECTION, SECTION ENDED", MaxKeywordLines);
}

}  // namespace

SectionEvent nextKeyword(SectionReader& reader, int& tested, KeywordLine& found) {
    std::string_view line;
    while (nextLine(*reader.cursor, line)) {
        const std::string_view seen = trimLeft(line.substr(0, KeywordLineWidth));
        if (isCommentLine(seen)) {
            takeComment(reader, line);
        } else if (!isSlashLine(seen)) {
            found.line = seen;
            found.word = keywordOf(seen);
            reader.keyword = firstWord(seen);
            if (++tested <= MaxKeywordLines) {
                return isSectionWord(found.word) ? SectionEvent::SectionWord : SectionEvent::Keyword;
            }
            warnOfLimit(reader);
            stepBack(*reader.cursor);
            return SectionEvent::EndOfFile;
        }
    }
    return SectionEvent::EndOfFile;
}

bool skippedTitle(SectionReader& reader, const KeywordLine& found) {
    if (found.word != "TITLE   ") return false;
    reportNotSupported(reader, found.line);
    std::string_view text;
    nextLine(*reader.cursor, text);
    return true;
}

DeckCursor openInclude(SectionReader& reader, const IncludeTexts& texts) {
    const Console& console = consoleOf(reader);
    reader.keyword = "INCLUDE";
    skipCommentLines(reader);
    announce(reader, "INCLUDE");
    lineToBoth(console, "-> Read Data from INCLUDE file");
    std::string name;
    checkRead(reader, readPath(*reader.cursor, name));
    name = trim(name);
    both(console, "-> {}", name);

    DeckCursor file;
    const std::string path = existingPath(std::string(trim(reader.workingFolder)) + name);
    errno = ENOENT;
    if (path.empty() || !loadDeck(path, file)) {
        const std::string status = fmt::format(" {}", errno);
        both(console, "{}{}", texts.openError, texts.statusBehindOpenError ? status : "");
        both(console, "{}{}", texts.ioError, texts.statusBehindOpenError ? "" : status);
        stopAtPlace(reader);
    }
    return file;
}

bool isOwnSectionWord(const SectionReader& reader, std::string_view word) {
    return keywordOf(reader.section) == word || (reader.section == "REGIONS" && word == "REGION  ");
}

bool matchesKeyword(std::string_view name, int significant, std::string_view word) {
    const auto width = static_cast<std::size_t>(significant);
    return padded(name, width) == word.substr(0, width);
}

}  // namespace kvr
