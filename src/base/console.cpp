#include "base/console.hpp"

#include "base/text.hpp"

#include <algorithm>

namespace kvr {

namespace {

constexpr std::size_t LinesKept = 12;  // of those withheld: an error with what led to it
constexpr std::string_view FoldText =
    "FURTHER LINES OF THE STEPS STAND IN KVR_dbg.out ALONE, THE CONSOLE SHOWS THE PROGRESS";

void writeLine(std::FILE* stream, std::string_view text) {
    if (stream == nullptr) return;
    std::fwrite(text.data(), 1, text.size(), stream);
    std::fputc('\n', stream);
}

constexpr const char* EraseLine = "\r\033[K";  // back to the first column, clear to the end of the line

bool statusStands(const Console& console) {
    return console.status != nullptr && console.screen != nullptr && !console.status->text.empty();
}

void drawStatus(const Console& console) {
    std::fputs(console.status->text.c_str(), console.screen);
    std::fflush(console.screen);
}

void withhold(std::string_view text, ScreenAccount& account) {
    account.withheld.emplace_back(text);
    if (account.withheld.size() > LinesKept) account.withheld.pop_front();
}

/// True where the line is beyond what the screen may have.
bool isWithheld(const Console& console, std::string_view text) {
    if (console.account == nullptr) return console.concise;
    ScreenAccount& account = *console.account;
    if (console.concise) {
        withhold(text, account);
        return true;
    }
    if (console.log == nullptr) return false;
    const bool folded = isFolded(console);
    account.written += text.size() + 1;
    if (!isFolded(console)) return false;
    if (!folded) lineToScreenAlways(console, FoldText);
    withhold(text, account);
    return true;
}

}  // namespace

void lineToScreenAlways(const Console& console, std::string_view text) {
    if (!statusStands(console)) {
        writeLine(console.screen, text);
        return;
    }
    std::fputs(EraseLine, console.screen);
    writeLine(console.screen, text);
    drawStatus(console);
}

bool isFolded(const Console& console) {
    return console.account != nullptr && console.account->limit > 0 &&
           console.account->written > console.account->limit;
}

void unfold(const Console& console, bool showLast) {
    if (console.account == nullptr) return;
    std::deque<std::string> last;
    last.swap(console.account->withheld);
    console.account->limit = 0;
    if (!showLast) return;
    auto first = last.begin();
    if (console.concise) {  // the reason alone: what led to it stands in the log
        const auto reason = std::find_if(last.begin(), last.end(), [](const std::string& line) {
            return toUpper(line).find("ERROR") != std::string::npos;
        });
        if (reason != last.end()) first = reason;
    }
    for (; first != last.end(); ++first) lineToScreenAlways(console, *first);
}

void lineToScreen(const Console& console, std::string_view text) {
    if (!isWithheld(console, text)) lineToScreenAlways(console, text);
}

void tell(const Console& console, std::string_view text) {
    lineToScreenAlways(console, text);
    lineToLog(console, text);
}

void showStatus(const Console& console, std::string_view text) {
    if (console.status == nullptr || console.screen == nullptr) return;
    if (!console.status->text.empty()) std::fputs(EraseLine, console.screen);
    console.status->text = text;
    drawStatus(console);
}

void clearStatus(const Console& console) {
    if (statusStands(console)) showStatus(console, "");
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
    clearStatus(console);
    if (console.screen != nullptr) std::fflush(console.screen);
    if (console.input == nullptr) return;
    int character = std::fgetc(console.input);
    while (character != EOF && character != '\n') character = std::fgetc(console.input);
}

}  // namespace kvr
