#pragma once

#include "deck/reading/section_reader.hpp"

#include <cstdio>
#include <string>
#include <string_view>

namespace kvr {

inline DeckCursor cursorOn(std::string_view text) {
    DeckCursor cursor;
    cursor.fileName = "TEST.DATA";
    cursor.text = text;
    return cursor;
}

/// Everything written to a stream so far.
inline std::string contentsOf(std::FILE* file) {
    std::fflush(file);
    std::string text(static_cast<std::size_t>(std::ftell(file)), '\0');
    std::rewind(file);
    const std::size_t got = std::fread(text.data(), 1, text.size(), file);
    text.resize(got);
    std::fseek(file, 0, SEEK_END);
    return text;
}

/// A deck text in memory with everything that a section reader needs around it. Hard stops end at once:
/// the console has no input. Their messages go to standard error, where death tests look.
struct DeckBench {
    Console console;
    DeckSinks sinks;
    DeckCursor cursor;
    UnitSystem units;
    SectionReader reader;

    explicit DeckBench(std::string_view text, std::string_view section = "RUNSPEC") {
        console.screen = std::tmpfile();
        console.log = std::tmpfile();
        console.input = nullptr;
        sinks.console = &console;
        sinks.metricCopy = std::tmpfile();
        sinks.fieldCopy = std::tmpfile();
        cursor = cursorOn(text);
        reader.cursor = &cursor;
        reader.sinks = &sinks;
        reader.section = section;
        reader.errorName = section;
        reader.units = &units;
    }
    DeckBench(const DeckBench&) = delete;
    DeckBench& operator=(const DeckBench&) = delete;
    ~DeckBench() {
        for (std::FILE* file : {screenFile(), console.log, sinks.metricCopy, sinks.fieldCopy}) {
            if (file != nullptr) std::fclose(file);
        }
    }

    void speakToStandardError() {
        std::fclose(console.screen);
        console.screen = stderr;
    }
    [[nodiscard]] std::FILE* screenFile() const {
        return console.screen == stderr ? nullptr : console.screen;
    }
    [[nodiscard]] std::string screen() const { return contentsOf(console.screen); }
    [[nodiscard]] std::string logged() const { return contentsOf(console.log); }
    [[nodiscard]] bool printed(std::string_view text) const {
        return screen().find(text) != std::string::npos;
    }
    /// The next line of the deck, or "<end>".
    std::string next() {
        std::string_view line;
        return nextLine(cursor, line) ? std::string(line) : "<end>";
    }
};

}  // namespace kvr
