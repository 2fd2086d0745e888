#pragma once

#include "base/console.hpp"

#include <cstdio>
#include <string>

namespace kvr {

/// A console whose screen and log are kept in memory files and whose input is at its end.
struct QuietConsole {
    QuietConsole() : console{std::tmpfile(), std::tmpfile(), nullptr} {}
    ~QuietConsole() {
        std::fclose(console.screen);
        if (console.log != nullptr) std::fclose(console.log);
    }
    QuietConsole(const QuietConsole&) = delete;
    QuietConsole& operator=(const QuietConsole&) = delete;

    [[nodiscard]] std::string screenText() const { return contents(console.screen); }
    [[nodiscard]] std::string logText() const { return contents(console.log); }

    static std::string contents(std::FILE* file) {
        std::fflush(file);
        std::string text(static_cast<std::size_t>(std::ftell(file)), '\0');
        std::rewind(file);
        const std::size_t count = std::fread(text.data(), 1, text.size(), file);
        text.resize(count);
        std::fseek(file, 0, SEEK_END);
        return text;
    }

    Console console;
};

/// The console of an exit test: the screen is the standard error stream, which such a test matches.
inline Console consoleOnStandardError() {
    return Console{stderr, nullptr, nullptr};
}

}  // namespace kvr
