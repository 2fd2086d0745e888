#include "base/messages.hpp"

#include <algorithm>
#include <array>

namespace kvr {

namespace {

/// Keywords that ask for reports and files, say how the numbers are found and how much memory to take, or
/// repeat what is so in any case.
constexpr std::array<std::string_view, 58> OutputKeywords = {
    "BOUNDARY", "COLUMNS",  "COORDSYS", "CPR",      "DATE",     "DATUM",    "DEBUG",    "DIFFCOEF", "ECHO",
    "EXCEL",    "FAULTDIM", "FILLEPS",  "FMTIN",    "FMTOUT",   "GRIDFILE", "GRIDUNIT", "HISTDATE", "INIT",
    "LOAD",     "LOGIC",    "MAPAXES",  "MAPUNITS", "MEMORY",   "MESSAGES", "MESSOPTS", "MONITOR",  "NARROW",
    "NMATOPTS", "NMESSAGE", "NOECHO",   "NOGGF",    "NOINSPEC", "NONNC",    "NORSSPEC", "NOWARN",   "NSTACK",
    "NUPCOL",   "OUTRAD",   "OUTSOL",   "PARALLEL", "PRINT",    "RPTONLY",  "RPTONLYO", "RUNSUM",   "SAVE",
    "SEPARATE", "SMRYDIMS", "SPECGRID", "TITLE",    "TUNING",   "UNIFIN",   "UNIFOUT",  "WARN",     "WIDE",
    "WPAVE",    "WRFT",     "WRFTPLT",  "ZIPPY2"};
constexpr std::string_view ReportPrefix = "RPT";
constexpr std::string_view DimensionSuffix = "DIMS";  // sizes that other programs set memory aside by
constexpr std::string_view SummarySection = "SUMMARY";

KeywordEffect effectOf(std::string_view keyword, std::string_view section) {
    const bool output =
        section == SummarySection || keyword.starts_with(ReportPrefix) ||
        keyword.ends_with(DimensionSuffix) ||
        std::find(OutputKeywords.begin(), OutputKeywords.end(), keyword) != OutputKeywords.end();
    return output ? KeywordEffect::Output : KeywordEffect::Answer;
}

}  // namespace

void noteWarning(const Console& console, std::string_view format, std::string_view text,
                 const DeckPlace& place, std::string_view keyword) {
    if (console.messages == nullptr) return;
    std::vector<WarningKind>& kinds = console.messages->warnings;
    auto kind = std::find_if(kinds.begin(), kinds.end(),
                             [format](const WarningKind& row) { return row.format == format; });
    if (kind == kinds.end())
        kind = kinds.insert(kinds.end(),
                            {std::string(format), std::string(text), place, std::string(keyword), 0});
    ++kind->count;
}

void noteUnused(const Console& console, std::string_view keyword, const DeckPlace& place,
                std::string_view section) {
    if (console.messages == nullptr) return;
    std::vector<UnusedKeyword>& unused = console.messages->unused;
    auto known = std::find_if(unused.begin(), unused.end(),
                              [keyword](const UnusedKeyword& row) { return row.name == keyword; });
    if (known == unused.end())
        known = unused.insert(unused.end(), {std::string(keyword), place, effectOf(keyword, section), 0, ""});
    ++known->count;
}

void noteMeant(const Console& console, std::string_view keyword, std::string_view meant) {
    if (console.messages == nullptr) return;
    for (UnusedKeyword& row : console.messages->unused)
        if (row.name == keyword) row.meant = meant;
}

int warningCount(const MessageRecord& messages) {
    int count = 0;
    for (const WarningKind& kind : messages.warnings) count += kind.count;
    for (const UnusedKeyword& keyword : messages.unused)
        if (keyword.effect == KeywordEffect::Answer) count += keyword.count;
    return count;
}

std::string placeText(const DeckPlace& place, std::string_view keyword) {
    const std::string line = fmt::format("File {}, line {}", place.fileName, place.lineNumber);
    return keyword.empty() ? line : fmt::format("{}, keyword {}", line, keyword);
}

}  // namespace kvr
