#include "eclipse/step_decks.hpp"

#include "base/hard_stop.hpp"
#include "base/text.hpp"
#include "eclipse/deck_text.hpp"
#include "eclipse/file_failure.hpp"
#include "eclipse/file_names.hpp"
#include "eclipse/schedule_files.hpp"

#include <algorithm>
#include <array>
#include <cerrno>
#include <fstream>

namespace kvr {

namespace {

constexpr std::array<std::string_view, 8> SectionWords = {"RUNSPEC", "GRID",     "EDIT",    "PROPS",
                                                          "REGIONS", "SOLUTION", "SUMMARY", "SCHEDULE"};

/// The section that a line opens, or END; blank for any other line.
std::string sectionOf(const std::string& line) {
    const std::string word = toUpper(firstWord(line));
    const bool opens =
        word == "END" || std::find(SectionWords.begin(), SectionWords.end(), word) != SectionWords.end();
    return opens ? word : std::string();
}

std::string mainDeck(const RunOptions& options) {
    if (!options.deckFile.empty()) return options.deckFile;
    for (const std::string_view extension : {".DATA", ".DAT", ".ECL"}) {
        const std::string path = outsideFile(options, options.headerName, extension);
        if (fileExists(path)) return path;
    }
    return outsideFile(options, options.headerName, ".DATA");
}

std::ifstream openMainDeck(const Console& console, const std::string& path) {
    if (!fileExists(path)) {
        lineToBoth(console, "Error :: Optimization, cannot find original input file ");
        lineToBoth(console, path);
        hardStop(console);
    }
    std::ifstream deck(path);
    if (deck) return deck;
    lineToBoth(console, "ERROR: INCLUDE File Open Error at RUNSPEC section");
    lineToBoth(console, "       File I/O Error, in RUNSPEC Section");
    lineToBoth(console, path);
    hardStop(console);
}

[[noreturn]] void stopOnReading(const Console& console, const std::string& path) {
    both(console, "ERROR: File reading error, code = {}", errno);
    lineToBoth(console, "       Reading error, in RUNSPEC Section");
    lineToBoth(console, path);
    hardStop(console);
}

/// The main deck from where the last section ended.
struct DeckLines {
    std::ifstream in;
    std::string path;
    std::string line;        // the one that opened the present section
    bool isTitle = false;    // the next line is the text of TITLE
    bool isSkipped = false;  // up to ENDSKIP
};

/// The section that the present line opens, END, or nothing: a title and what is skipped open none.
std::string opened(DeckLines& deck) {
    const std::string word = toUpper(firstWord(deck.line));
    if (deck.isTitle) {
        deck.isTitle = false;
        return {};
    }
    if (word == "ENDSKIP") deck.isSkipped = false;
    if (deck.isSkipped) return {};
    deck.isTitle = word == "TITLE";
    deck.isSkipped = word == "SKIP" || word == "SKIP100";
    return sectionOf(deck.line);
}

/// Hands lines on, to `file` or to nothing, up to one that opens a section other than the present one; the
/// word of that, blank at the end of the deck.
std::string copySection(const Console& console, DeckLines& deck, std::FILE* file) {
    while (std::getline(deck.in, deck.line)) {
        if (!deck.line.empty() && deck.line.back() == '\r') deck.line.pop_back();
        const std::string section = opened(deck);
        if (!section.empty()) {
            lineToLog(console, " -> Finished Reading RUNSPEC. Move to Next Section ::");
            return section;
        }
        if (file != nullptr) std::fputs((deck.line + "\n").c_str(), file);
    }
    if (deck.in.bad()) stopOnReading(console, deck.path);
    lineToLog(console, "FILE I/O -> END OF FILE..");
    return {};
}

std::string replacementOf(const std::string& section, int step) {
    if (section == "SOLUTION") return stepSolutionName(step);
    if (section == "SCHEDULE") return stepScheduleName(step);
    return {};
}

void closeOrStop(const Console& console, std::FILE* file, const std::string& path) {
    const bool broken = std::ferror(file) != 0;
    errno = 0;
    if (std::fclose(file) != 0 || broken) stopOnFileStatus(console, errno, path);
}

}  // namespace

std::string restartDeckName(const RunOptions& options, int step) {
    return fmt::format("{}_RST{:04d}", trim(options.headerName), step);
}

std::string stepSolutionName(int step) {
    return fmt::format("SOLUTION_STP{:04d}.DATA", step);
}

void splitDeck(const Console& console, const RunOptions& options, int step) {
    DeckLines deck;
    deck.path = mainDeck(options);
    deck.in = openMainDeck(console, deck.path);
    const std::string path = outsideFile(options, restartDeckName(options, step), ".DATA");
    std::FILE* file = replaceTextOrStop(console, path);
    std::string section = copySection(console, deck, file);
    bool hasSchedule = false;
    while (!section.empty() && section != "END") {
        std::fputs((deck.line + "\n").c_str(), file);
        const std::string replacement = replacementOf(section, step);
        hasSchedule = hasSchedule || section == "SCHEDULE";
        if (!replacement.empty()) putRecord("INCLUDE", inQuotes(replacement), file);
        section = copySection(console, deck, replacement.empty() ? file : nullptr);
    }
    if (!hasSchedule) {  // as in a deck whose schedule is a file of its own
        std::fputs("SCHEDULE\n", file);
        putRecord("INCLUDE", inQuotes(stepScheduleName(step)), file);
    }
    std::fputs("END\n", file);
    closeOrStop(console, file, path);
}

void writeStepSolution(const Console& console, const RunOptions& options, const UnitSystem& units,
                       const CellState& state, int step) {
    const std::string path = outsideFolder(options) + stepSolutionName(step);
    std::FILE* file = replaceTextOrStop(console, path);
    log(console, " -> File Generated for Solution of Optimization    :: {}", path);
    putBlock("PRESSURE", state.Pressure.cells(), 1.0 / units.pressure, file);
    putBlock("SWAT    ", state.Sw.cells(), 1.0, file);
    if (options.hasGas) {
        const auto ratios = state.Rs.cells();
        putBlock("SGAS    ", state.Sg.cells(), 1.0, file);
        if (std::any_of(ratios.begin(), ratios.end(), [](double rs) { return rs > 0.0; }))
            putBlock("RS      ", ratios, 1.0 / units.gasRatio, file);
    }
    closeOrStop(console, file, path);
}

void writeRestartSolution(const Console& console, const RunOptions& options, int step) {
    const std::string path = outsideFolder(options) + stepSolutionName(step);
    std::FILE* file = replaceTextOrStop(console, path);
    log(console, " -> File Generated for Solution of Optimization    :: {}", path);
    if (step > 1) {
        putRecord("RESTART", fmt::format("{} {}", inQuotes(restartDeckName(options, step - 1)), step - 1),
                  file);
    } else {
        DeckLines deck;
        deck.path = mainDeck(options);
        deck.in = openMainDeck(console, deck.path);
        for (std::string section = copySection(console, deck, nullptr); !section.empty();)
            section = copySection(console, deck, section == "SOLUTION" ? file : nullptr);
    }
    closeOrStop(console, file, path);
}

}  // namespace kvr
