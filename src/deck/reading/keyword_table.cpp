#include "deck/reading/keyword_table.hpp"

#include "base/hard_stop.hpp"
#include "base/text.hpp"

#include <algorithm>
#include <array>
#include <cerrno>
#include <utility>

namespace kvr {

namespace {

constexpr std::size_t KeywordLineWidth = 100;  // characters of a line that the keyword test sees

void warnOfLimit(const SectionReader& reader) {
    warnHere(reader, "WARNING :: MORE THAN {} KEYWORD LINES IN ONE SECTION, SECTION ENDED", MaxKeywordLines);
}

// --- keywords of every section -----------------------------------------------------------------------

bool rangeFits(int low, int high, int count) {
    return low >= 1 && low <= high && high <= count;
}

/// Limits left out are those of the grid.
void readBox(SectionReader& reader) {
    announce(reader, reader.keyword);
    skipCommentLines(reader);
    const auto [nx, ny, nz] = reader.gridSize;
    CellBox box{1, nx, 1, ny, 1, nz};
    const std::array<ListTarget, 6> targets = {&box.i1, &box.i2, &box.j1, &box.j2, &box.k1, &box.k2};
    checkRead(reader, readList(*reader.cursor, targets));
    if (!rangeFits(box.i1, box.i2, nx) || !rangeFits(box.j1, box.j2, ny) || !rangeFits(box.k1, box.k2, nz)) {
        both(consoleOf(reader), "ERROR :: BOX OUTSIDE THE GRID: {} {} {} {} {} {} IN {} {} {}", box.i1,
             box.i2, box.j1, box.j2, box.k1, box.k2, nx, ny, nz);
        stopAtPlace(reader);
    }
    reader.box = {true, box};
    copyKeyword(reader);
    copyRow(reader,
            {{1.0 * box.i1}, {1.0 * box.i2}, {1.0 * box.j1}, {1.0 * box.j2}, {1.0 * box.k1}, {1.0 * box.k2}});
}

void endBox(SectionReader& reader) {
    announce(reader, reader.keyword);
    copyKeyword(reader);
    reader.box = {};
}

/// Drops the lines up to ENDSKIP, whatever they hold.
void skipPart(SectionReader& reader) {
    announce(reader, reader.keyword);
    const int begin = reader.cursor->lineNumber;
    std::string_view line;
    while (nextLine(*reader.cursor, line)) {
        if (keywordOf(line) != "ENDSKIP ") continue;
        both(consoleOf(reader), "-> Lines {} to {} are skipped", begin, reader.cursor->lineNumber);
        return;
    }
    reader.cursor->lineNumber = begin;
    warnHere(reader, "WARNING :: {} WITHOUT ENDSKIP, THE REST OF THE FILE IS SKIPPED", reader.keyword);
}

/// What is skipped for simulators of another kind than this one stays.
void keepPart(SectionReader& reader) {
    announce(reader, reader.keyword);
}

constexpr std::array CommonKeywords = {
    CommonKeyword{"SKIP", skipPart, "what stands up to `ENDSKIP` is not read"},
    CommonKeyword{"SKIP100", skipPart, "as `SKIP`: skipped by black-oil simulators"},
    CommonKeyword{"SKIP300", keepPart,
                  "what stands up to `ENDSKIP` is read: skipped by compositional simulators alone"},
    CommonKeyword{"ENDSKIP", keepPart, "ends what `SKIP`, `SKIP100` or `SKIP300` began"},
    CommonKeyword{
        "BOX", readBox,
        "I1, I2, J1, J2, K1, K2: arrays of one value per cell are given for these cells alone, and rows of "
        "array arithmetic without a box mean them, up to `ENDBOX` or the end of the section"},
    CommonKeyword{"ENDBOX", endBox, "the whole grid again"},
};

}  // namespace

bool handleCommonKeyword(SectionReader& reader, std::string_view word) {
    const auto* const row = std::find_if(
        CommonKeywords.begin(), CommonKeywords.end(),
        [word](const CommonKeyword& known) { return matchesKeyword(known.name, FullKeyword, word); });
    if (row == CommonKeywords.end()) return false;
    reader.keyword = row->name;
    row->handler(reader);
    return true;
}

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
    // The title is the next line, a blank one too; comments do not count.
    while (nextLine(*reader.cursor, text) && trimLeft(text).starts_with("--")) takeComment(reader, text);
    if (reader.outputMetric) copyEcho(reader, found.line);
    if (reader.outputMetric) copyEcho(reader, text);
    return true;
}

void keepSource(SectionReader& reader, SectionEvent event, std::string_view word, std::size_t& pending) {
    if (reader.kept == nullptr) return;
    const DeckCursor& cursor = *reader.cursor;
    const std::size_t here = event == SectionEvent::EndOfFile ? cursor.position : cursor.previousLine;
    KeptSource& kept = *reader.kept;
    if (pending != std::string::npos) {
        for (const char letter : std::string_view(cursor.text).substr(pending, here - pending))
            if (letter != '\r') kept.text += letter;
        if (!kept.text.empty() && kept.text.back() != '\n') kept.text += '\n';
    }
    const bool isKept = event == SectionEvent::Keyword &&
                        std::none_of(kept.without.begin(), kept.without.end(),
                                     [word](auto name) { return matchesKeyword(name, FullKeyword, word); });
    pending = isKept ? here : std::string::npos;
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

void stopAtEndlessIncludes(SectionReader reader) {
    reader.keyword = "INCLUDE";
    lineToBoth(consoleOf(reader), "ERROR :: FILES THAT INCLUDE ONE ANOTHER WITHOUT END");
    stopAtPlace(reader);
}

bool mayInclude(const SectionReader& reader) {
    if (!reader.insideInclude) return true;
    if (!reader.commonForm) return false;
    if (reader.includeDepth >= DeepestInclude) stopAtEndlessIncludes(reader);
    return true;
}

bool leaveRest(const SectionReader& inner, DeckCursor& file) {
    if (!inner.commonForm || !inner.sinks->readsRests) return false;
    std::vector<DeckCursor>& rests = inner.sinks->rests;
    const bool ended = !rests.empty();
    std::string_view line;
    if (!peekLine(inner, line)) return ended;
    const std::string word = keywordOf(line);
    // END and the options behind it close a file, not the deck.
    if (!ended && (!isSectionWord(word) || word == "END     " || word == "TUNEKVR ")) return false;
    rests.push_back(std::move(file));
    return true;
}

void tellMeant(const SectionReader& reader, std::string_view meant) {
    both(consoleOf(reader), "-> Is {} meant?", meant);
    noteMeant(consoleOf(reader), reader.keyword, meant);
}

bool isOwnSectionWord(const SectionReader& reader, std::string_view word) {
    return keywordOf(reader.section) == word || (reader.section == "REGIONS" && word == "REGION  ");
}

bool matchesKeyword(std::string_view name, int significant, std::string_view word) {
    const auto width = static_cast<std::size_t>(significant);
    return padded(name, width) == word.substr(0, width);
}

}  // namespace kvr
