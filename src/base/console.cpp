#include "base/console.hpp"

namespace kvr {

namespace {

void writeLine(std::FILE* stream, std::string_view text) {
    if (stream == nullptr) return;
    std::fwrite(text.data(), 1, text.size(), stream);
    std::fputc('\n', stream);
}

}  // namespace

void lineToScreen(const Console& console, std::string_view text) {
    writeLine(console.screen, text);
}

void lineToLog(const Console& console, std::string_view text) {
    writeLine(console.log, text);
}

void lineToBoth(const Console& console, std::string_view text) {
    lineToScreen(console, text);
    lineToLog(console, text);
}

std::string number(double value, int digits) {
    return fmt::format("{:.{}g}", value, digits);
}

void waitForLine(const Console& console) {
    if (console.screen != nullptr) std::fflush(console.screen);
    if (console.input == nullptr) return;
    int character = std::fgetc(console.input);
    while (character != EOF && character != '\n') character = std::fgetc(console.input);
}

}  // namespace kvr
