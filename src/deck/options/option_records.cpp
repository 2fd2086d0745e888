#include "base/text.hpp"
#include "deck/options/option_handlers.hpp"

namespace kvr {

void beginRecord(SectionReader& reader, std::string_view name) {
    announce(reader, name);
    skipCommentLines(reader);
}

void readRecord(SectionReader& reader, std::span<const ListTarget> targets) {
    beginRecord(reader, reader.keyword);
    checkRead(reader, readList(*reader.cursor, targets));
}

void readRecord(SectionReader& reader, std::span<double> values) {
    beginRecord(reader, reader.keyword);
    checkRead(reader, readDoubles(*reader.cursor, values));
}

void readRecord(SectionReader& reader, std::span<int> values) {
    beginRecord(reader, reader.keyword);
    checkRead(reader, readIntegers(*reader.cursor, values));
}

char initialOf(std::string_view word) {
    return word.empty() ? ' ' : word.front();
}

char upperInitialOf(std::string_view word) {
    return word.empty() ? ' ' : toUpper(word.substr(0, 1)).front();
}

void tellValue(const SectionReader& reader, std::string_view text, std::string_view value) {
    both(consoleOf(reader), "{} {}", text, value);
}

void tellValue(const SectionReader& reader, std::string_view text, double value) {
    tellValue(reader, text, number(value));
}

void tellValue(const SectionReader& reader, std::string_view text, int value) {
    both(consoleOf(reader), "{} {}", text, value);
}

std::string_view yesNo(bool on) {
    return on ? "Yes" : "No";
}

double within(double value, double low, double high, double fallback) {
    return value >= low && value <= high ? value : fallback;
}

int within(int value, int low, int high, int fallback) {
    return value >= low && value <= high ? value : fallback;
}

}  // namespace kvr
