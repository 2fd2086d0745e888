#include "base/text.hpp"

#include <algorithm>
#include <cctype>
#include <vector>

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

std::size_t editDistance(std::string_view a, std::string_view b) {
    // Three rows of the table of distances between heads of a and b: the present one and the two before it.
    std::vector<std::size_t> twoBack(b.size() + 1), back(b.size() + 1), row(b.size() + 1);
    for (std::size_t j = 0; j <= b.size(); ++j) row[j] = j;
    for (std::size_t i = 1; i <= a.size(); ++i) {
        twoBack.swap(back);
        back.swap(row);
        row[0] = i;
        for (std::size_t j = 1; j <= b.size(); ++j) {
            const std::size_t changed = back[j - 1] + (a[i - 1] == b[j - 1] ? 0 : 1);
            row[j] = std::min({changed, back[j] + 1, row[j - 1] + 1});
            if (i > 1 && j > 1 && a[i - 1] == b[j - 2] && a[i - 2] == b[j - 1])
                row[j] = std::min(row[j], twoBack[j - 2] + 1);
        }
    }
    return row[b.size()];
}

std::string padded(std::string_view text, std::size_t width) {
    std::string result(text.substr(0, width));
    result.resize(width, ' ');
    return result;
}

}  // namespace kvr
