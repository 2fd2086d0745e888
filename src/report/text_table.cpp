#include "report/text_table.hpp"

#include "base/text.hpp"

#include <algorithm>
#include <fmt/compile.h>
#include <iterator>

namespace kvr {

bool isEmptyFile(std::FILE* file) {
    return file != nullptr && std::ftell(file) == 0;
}

std::string withoutBlanks(std::string_view name) {
    std::string text(trim(name));
    std::replace_if(
        text.begin(), text.end(), [](char c) { return c == ' ' || c == '\t'; }, '_');
    return text;
}

void putHeading(NumberWriter& table, std::string_view name) {
    fmt::format_to(std::back_inserter(table.buffer), FMT_COMPILE(" {:>17}"), name);
}

void putColumn(NumberWriter& table, double value) {
    fmt::format_to(std::back_inserter(table.buffer), FMT_COMPILE(" {:>17.10g}"), value);
}

}  // namespace kvr
