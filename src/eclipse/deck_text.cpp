#include "eclipse/deck_text.hpp"

namespace kvr {

namespace {

constexpr int ValuesPerLine = 8;
constexpr std::size_t LineWidth = 128;  // simulators read no more of a line

void putLine(std::string_view line, std::FILE* file) {
    std::fputs(fmt::format("{}\n", line).c_str(), file);
}

}  // namespace

std::string inQuotes(std::string_view name) {
    return fmt::format("'{}'", name);
}

std::string deckNumber(double value) {
    return fmt::format("{}", value + 0.0);  // no sign before a zero
}

void putKeyword(std::string_view keyword, const std::vector<std::string>& rows, std::FILE* file) {
    if (rows.empty()) return;
    putLine(keyword, file);
    for (const std::string& row : rows) putLine(row + " /", file);
    putLine("/", file);
}

void putRecord(std::string_view keyword, std::string_view record, std::FILE* file) {
    putLine(keyword, file);
    putLine(fmt::format("{} /", record), file);
}

void putBlock(std::string_view keyword, std::span<const double> values, double factor, std::FILE* file) {
    putLine(keyword, file);
    std::string line;
    int column = 0;
    for (std::size_t n = 0; n < values.size();) {
        std::size_t end = n + 1;
        while (end < values.size() && values[end] == values[n]) ++end;
        const std::string value = deckNumber(values[n] * factor);
        const std::string item = end - n > 1 ? fmt::format("{}*{}", end - n, value) : value;
        if (column == ValuesPerLine || line.size() + 1 + item.size() > LineWidth) {
            putLine(line, file);
            line.clear();
            column = 0;
        }
        line += (column++ == 0 ? "" : " ") + item;
        n = end;
    }
    if (!line.empty()) putLine(line, file);
    putLine("/", file);
}

void putTimeBanner(double time, std::FILE* file) {
    const std::string dashes(40, '-');
    putLine(dashes, file);
    putLine(fmt::format("--  Time = {}", number(time)), file);
    putLine(dashes, file);
}

}  // namespace kvr
