#include "base/text.hpp"

#include <algorithm>
#include <cctype>

namespace kvr {

namespace {

constexpr std::string_view Blanks = " \t\r";

char upper(char c) {
    return static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
}
char lower(char c) {
    return static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
}

}  // namespace

std::string_view trimLeft(std::string_view text) {
    const auto first = text.find_first_not_of(Blanks);
    return first == std::string_view::npos ? std::string_view() : text.substr(first);
}

std::string_view trim(std::string_view text) {
    text = trimLeft(text);
    const auto last = text.find_last_not_of(Blanks);
    return last == std::string_view::npos ? std::string_view() : text.substr(0, last + 1);
}

std::string_view firstWord(std::string_view text) {
    return text.substr(0, text.find_first_of(" \t\r/"));
}

std::string toUpper(std::string_view text) {
    std::string result(text);
    std::transform(result.begin(), result.end(), result.begin(), upper);
    return result;
}

std::string toLower(std::string_view text) {
    std::string result(text);
    std::transform(result.begin(), result.end(), result.begin(), lower);
    return result;
}

std::string padded(std::string_view text, std::size_t width) {
    std::string result(text.substr(0, width));
    result.resize(width, ' ');
    return result;
}

}  // namespace kvr
