#include "eclipse/well_data_layout.hpp"

#include "base/text.hpp"

#include <fmt/format.h>

namespace kvr {

namespace {

constexpr std::size_t NameWidth = 8, NameGap = 4, HeadGap = 13;

void putHeadName(std::string_view name, NumberWriter& writer) {
    put(writer, padded(name, NameWidth + HeadGap));
}

}  // namespace

std::string fractionColumn(int component) {
    return fmt::format("WZMF_{:04d}", component);
}

void putWellDataHead(int componentCount, NumberWriter& writer) {
    for (const std::string_view column : WellDataColumns) putHeadName(column, writer);
    put(writer, "\n");
    for (int c = 1; c <= componentCount; ++c) putHeadName(fractionColumn(c), writer);
    if (componentCount > 0) put(writer, "\n");
}

void putWellDataRow(std::string_view well, std::span<const double> values, NumberWriter& writer) {
    put(writer, padded(padded(well, NameWidth), NameWidth + NameGap));
    for (const double value : values) fmt::format_to(fmt::appender(writer.buffer), "{:20.12E} ", value);
    put(writer, "\n");
}

}  // namespace kvr
