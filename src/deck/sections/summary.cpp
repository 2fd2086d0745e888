#include "deck/sections/summary.hpp"

#include "base/text.hpp"
#include "deck/reading/keyword_table.hpp"

#include <algorithm>
#include <array>

namespace kvr {

namespace {

struct SummaryRecords {
    std::vector<SummaryRequest>& requests;
};
using Row = KeywordRow<SummaryRecords>;

constexpr int MostNameLines = 10000;
constexpr std::string_view NameEnds = " \t,/'\"";

/// The names of one line; false when a slash ended the list.
bool takeNames(std::string_view line, std::vector<std::string>& names) {
    while (!line.empty()) {
        const char c = line.front();
        if (c == '/') return false;
        if (line.starts_with("--")) return true;
        const bool quoted = c == '\'' || c == '"';
        if (quoted) line.remove_prefix(1);
        const std::size_t end = quoted ? line.find(c) : line.find_first_of(NameEnds);
        const std::string_view name = line.substr(0, end);
        if (!name.empty()) names.emplace_back(name);
        const std::size_t taken = name.size() + (quoted || name.empty() ? 1 : 0);
        line.remove_prefix(std::min(taken, line.size()));
    }
    return true;
}

void askOfField(SectionReader& reader, SummaryRecords& records) {
    announce(reader, reader.keyword);
    records.requests.push_back({reader.keyword, {}});
}

void askOfWells(SectionReader& reader, SummaryRecords& records) {
    announce(reader, reader.keyword);
    SummaryRequest request{reader.keyword, {}};
    std::string_view line;
    for (int n = 0; n < MostNameLines && nextLine(*reader.cursor, line); ++n) {
        if (isSectionWord(keywordOf(line))) {
            stepBack(*reader.cursor);
            break;
        }
        if (!isCommentLine(line) && !takeNames(line, request.wells)) break;
    }
    records.requests.push_back(request);
}

void includeVectors(SectionReader& reader, SummaryRecords& records);

constexpr std::array SummaryKeywords = {
    Row{"FOPR", askOfField, "field: oil production rate"},
    Row{"FWPR", askOfField, "field: water production rate"},
    Row{"FGPR", askOfField, "field: gas production rate"},
    Row{"FLPR", askOfField, "field: liquid production rate"},
    Row{"FVPR", askOfField, "field: production rate in reservoir volume"},
    Row{"FWIR", askOfField, "field: water injection rate"},
    Row{"FGIR", askOfField, "field: gas injection rate"},
    Row{"FOIR", askOfField, "field: oil injection rate"},
    Row{"FVIR", askOfField, "field: injection rate in reservoir volume"},
    Row{"FWCT", askOfField, "field: water cut"},
    Row{"FGOR", askOfField, "field: gas-oil ratio of production"},
    Row{"FOPT", askOfField, "field: oil produced"},
    Row{"FWPT", askOfField, "field: water produced"},
    Row{"FGPT", askOfField, "field: gas produced"},
    Row{"FLPT", askOfField, "field: liquid produced"},
    Row{"FVPT", askOfField, "field: reservoir volume produced"},
    Row{"FWIT", askOfField, "field: water injected"},
    Row{"FGIT", askOfField, "field: gas injected"},
    Row{"FOIT", askOfField, "field: oil injected"},
    Row{"FVIT", askOfField, "field: reservoir volume injected"},
    Row{"FPR", askOfField, "field: average pressure, by the volume of oil and gas"},
    Row{"FOIP", askOfField, "field: oil in place"},
    Row{"FWIP", askOfField, "field: water in place"},
    Row{"FGIP", askOfField, "field: gas in place, dissolved gas included"},
    Row{"FOE", askOfField, "field: share of the oil that has been recovered"},
    Row{"WOPR", askOfWells, "wells: oil production rate"},
    Row{"WWPR", askOfWells, "wells: water production rate"},
    Row{"WGPR", askOfWells, "wells: gas production rate"},
    Row{"WLPR", askOfWells, "wells: liquid production rate"},
    Row{"WVPR", askOfWells, "wells: production rate in reservoir volume"},
    Row{"WWIR", askOfWells, "wells: water injection rate"},
    Row{"WGIR", askOfWells, "wells: gas injection rate"},
    Row{"WOIR", askOfWells, "wells: oil injection rate"},
    Row{"WVIR", askOfWells, "wells: injection rate in reservoir volume"},
    Row{"WWCT", askOfWells, "wells: water cut"},
    Row{"WGOR", askOfWells, "wells: gas-oil ratio of production"},
    Row{"WBHP", askOfWells, "wells: bottom-hole pressure"},
    Row{"WTHP", askOfWells, "wells: pressure at the tubing head, in decks with `VFPPROD` or `VFPINJ`"},
    Row{"WOPT", askOfWells, "wells: oil produced"},
    Row{"WWPT", askOfWells, "wells: water produced"},
    Row{"WGPT", askOfWells, "wells: gas produced"},
    Row{"WLPT", askOfWells, "wells: liquid produced"},
    Row{"WVPT", askOfWells, "wells: reservoir volume produced"},
    Row{"WWIT", askOfWells, "wells: water injected"},
    Row{"WGIT", askOfWells, "wells: gas injected"},
    Row{"WOIT", askOfWells, "wells: oil injected"},
    Row{"WVIT", askOfWells, "wells: reservoir volume injected"},
    Row{"FOPRH", askOfField, "field: observed oil production rate"},
    Row{"FWPRH", askOfField, "field: observed water production rate"},
    Row{"FGPRH", askOfField, "field: observed gas production rate"},
    Row{"FLPRH", askOfField, "field: observed liquid production rate"},
    Row{"FWIRH", askOfField, "field: observed water injection rate"},
    Row{"FGIRH", askOfField, "field: observed gas injection rate"},
    Row{"FWCTH", askOfField, "field: observed water cut"},
    Row{"FGORH", askOfField, "field: observed gas-oil ratio of production"},
    Row{"FOPTH", askOfField, "field: oil produced by the observed rates"},
    Row{"FWPTH", askOfField, "field: water produced by the observed rates"},
    Row{"FGPTH", askOfField, "field: gas produced by the observed rates"},
    Row{"FLPTH", askOfField, "field: liquid produced by the observed rates"},
    Row{"FWITH", askOfField, "field: water injected by the observed rates"},
    Row{"FGITH", askOfField, "field: gas injected by the observed rates"},
    Row{"WOPRH", askOfWells, "wells: observed oil production rate"},
    Row{"WWPRH", askOfWells, "wells: observed water production rate"},
    Row{"WGPRH", askOfWells, "wells: observed gas production rate"},
    Row{"WLPRH", askOfWells, "wells: observed liquid production rate"},
    Row{"WWIRH", askOfWells, "wells: observed water injection rate"},
    Row{"WGIRH", askOfWells, "wells: observed gas injection rate"},
    Row{"WWCTH", askOfWells, "wells: observed water cut"},
    Row{"WGORH", askOfWells, "wells: observed gas-oil ratio of production"},
    Row{"WBHPH", askOfWells, "wells: observed bottom-hole pressure"},
    Row{"WOPTH", askOfWells, "wells: oil produced by the observed rates"},
    Row{"WWPTH", askOfWells, "wells: water produced by the observed rates"},
    Row{"WGPTH", askOfWells, "wells: gas produced by the observed rates"},
    Row{"WLPTH", askOfWells, "wells: liquid produced by the observed rates"},
    Row{"WWITH", askOfWells, "wells: water injected by the observed rates"},
    Row{"WGITH", askOfWells, "wells: gas injected by the observed rates"},
    Row{"ALL", askOfField,
        "every vector of this list; the observed ones in decks with `WCONHIST` or `WCONINJH`, `WTHP` in "
        "those with tables for it"},
    Row{"INCLUDE", includeVectors, "file of further vectors; one that is not there is told and passed over"},
};

/// Vectors only add to the output, so that a run does not end for want of their file.
void includeVectors(SectionReader& reader, SummaryRecords& records) {
    skipCommentLines(reader);
    announce(reader, reader.keyword);
    std::string name;
    checkRead(reader, readPath(*reader.cursor, name));
    DeckCursor file;
    const std::string path = existingPath(reader.workingFolder + std::string(trim(name)));
    if (reader.insideInclude || path.empty() || !loadDeck(path, file))
        return warnHere(reader, "WARNING :: INCLUDE FILE OF SUMMARY CANNOT BE READ :: {}", trim(name));
    SectionReader inner = reader;
    inner.cursor = &file;
    inner.insideInclude = true;
    dispatchSection<SummaryRecords>(inner, records, SummaryKeywords, NoInclude);
    reader.keywordCount = inner.keywordCount;
}

}  // namespace

void readSummary(SectionReader& reader, std::vector<SummaryRequest>& requests) {
    SummaryRecords records{requests};
    dispatchSection<SummaryRecords>(reader, records, SummaryKeywords, NoInclude);
}

}  // namespace kvr
