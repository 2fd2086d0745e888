#include "matching/well_data_text.hpp"

#include "base/hard_stop.hpp"

#include <algorithm>
#include <array>
#include <cerrno>
#include <charconv>
#include <cmath>
#include <cstdio>

namespace kvr {

namespace {

constexpr std::string_view Separators = " \t\r,";

[[noreturn]] void stopOnOpening(const Console& console, int status, const std::string& path) {
    if (status == OpenErrorStatus)
        lineToBoth(console, "ERROR: File Open Error");
    else if (status == HandlingErrorStatus)
        lineToBoth(console, "ERROR: File handling Error at *.obs file for INVERSION ");
    else
        both(console, "ERROR: File handling error in obs file for inversion, code = {}", status);
    lineToBoth(console, path);
    hardStop(console);
}

std::string_view takeLine(WellDataText& text) {
    const std::size_t end = std::min(text.left.find('\n'), text.left.size());
    const std::string_view line = text.left.substr(0, end);
    text.left.remove_prefix(std::min(end + 1, text.left.size()));
    ++text.place.lineNumber;
    return line;
}

}  // namespace

std::string readWellData(const Console& console, const std::string& path) {
    errno = 0;
    std::FILE* file = std::fopen(path.c_str(), "rb");
    if (file == nullptr) stopOnOpening(console, errno == ENOENT ? OpenErrorStatus : errno, path);
    std::string text;
    std::array<char, 65536> piece;
    for (std::size_t count; (count = std::fread(piece.data(), 1, piece.size(), file)) > 0;)
        text.append(piece.data(), count);
    const bool failed = std::ferror(file) != 0;  // a folder opens but cannot be read
    std::fclose(file);
    if (failed) stopOnOpening(console, HandlingErrorStatus, path);
    return text;
}

void skipLine(WellDataText& text) {
    if (!text.left.empty()) takeLine(text);
}

bool nextLine(WellDataText& text) {
    while (!text.left.empty()) {
        const std::string_view line = takeLine(text);
        text.line.clear();
        for (std::size_t at = 0; (at = line.find_first_not_of(Separators, at)) != line.npos;) {
            const std::size_t stop = std::min(line.find_first_of(Separators, at), line.size());
            text.line.push_back(line.substr(at, stop - at));
            at = stop;
        }
        if (!text.line.empty()) return true;
    }
    return false;
}

std::optional<double> numberOf(std::string_view word) {
    std::string form(word.starts_with('+') ? word.substr(1) : word);
    std::replace_if(
        form.begin(), form.end(), [](char c) { return c == 'd' || c == 'D'; }, 'E');
    double value = 0.0;
    const auto [stop, status] = std::from_chars(form.data(), form.data() + form.size(), value);
    if (status == std::errc::result_out_of_range && stop == form.data() + form.size()) {
        // Too small to be held is 0; too large is no number.
        return form.find("E-") == std::string::npos && form.find("e-") == std::string::npos
                   ? std::nullopt
                   : std::optional<double>(0.0);
    }
    if (status != std::errc() || stop != form.data() + form.size() || !std::isfinite(value)) return {};
    return value;
}

}  // namespace kvr
