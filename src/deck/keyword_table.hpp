#pragma once

#include "deck/section_reader.hpp"

#include <span>
#include <string_view>

namespace kvr {

/// One keyword of a section. `Records` is the section's struct of references to what it writes.
template <class Records>
struct KeywordRow {
    std::string_view name;
    int significant;  // characters compared, 8 unless the description of the keyword says otherwise
    void (*handler)(SectionReader&, Records&);
    std::string_view documentation;  // one line, for the user guide
};

/// Outcome of one keyword test of a section loop.
enum class SectionEvent { Keyword, SectionWord, NotSupported, EndOfFile };

/// Reads on to the next keyword line by the line rule; comments are echoed, slash-first lines ignored.
/// A section word other than the section's own is stepped back onto. `word` is 8 characters.
SectionEvent nextKeyword(SectionReader& reader, int& linesTested, std::string& word);

/// The part of a section loop that does not depend on its records: opens the named INCLUDE file, or
/// stops with the section's texts.
DeckCursor openInclude(SectionReader& reader);

/// Texts of INCLUDE that differ from section to section.
struct IncludeTexts {
    std::string_view openError;  // "ERROR: INCLUDE File Open Error at RUNSPEC section"
    std::string_view ioError;    // "File I/O Error, in RUNSPEC Section"; the status follows
    std::string_view finished;   // "INCLUDE FILE FINISHED, RUNSPEC SECTION"
};

/// Keyword tests of one section loop, at most.
inline constexpr int MaxKeywordLines = 10000;

template <class Records>
void dispatchSection(SectionReader& reader, Records& records, std::span<const KeywordRow<Records>> table);

}  // namespace kvr
