#include "base/number_writer.hpp"

#include <cmath>
#include <fmt/compile.h>
#include <iterator>

namespace kvr {

namespace {

constexpr std::size_t PieceSize = 1 << 20;  // bytes gathered before the stream is touched

// Coordinates and closed connections are often whole numbers, whose general form is that of an integer as
// long as its digits fit: several times quicker.
constexpr int DigitsOfAnInteger = 9;
constexpr double MostShortInteger = 1e9;  // ten digits: beyond DigitsOfAnInteger

bool isShortInteger(double value, int digits) {
    return digits >= DigitsOfAnInteger && std::abs(value) < MostShortInteger && value == std::trunc(value) &&
           !(value == 0.0 && std::signbit(value));
}

void handOver(NumberWriter& writer) {
    if (writer.file != nullptr) std::fwrite(writer.buffer.data(), 1, writer.buffer.size(), writer.file);
    writer.buffer.clear();
}

void handOverWhenFull(NumberWriter& writer) {
    if (writer.buffer.size() >= PieceSize) handOver(writer);
}

}  // namespace

void put(NumberWriter& writer, std::string_view text) {
    writer.buffer.append(text.data(), text.data() + text.size());
    handOverWhenFull(writer);
}

void putNumber(NumberWriter& writer, double value, int digits) {
    if (isShortInteger(value, digits)) {
        putNumber(writer, static_cast<int>(value));
        return;
    }
    fmt::format_to(std::back_inserter(writer.buffer), FMT_COMPILE("{:.{}g}"), value, digits);
    handOverWhenFull(writer);
}

void putNumber(NumberWriter& writer, int value) {
    const fmt::format_int text(value);
    writer.buffer.append(text.data(), text.data() + text.size());
    handOverWhenFull(writer);
}

void putFixed(NumberWriter& writer, double value, int decimals) {
    fmt::format_to(std::back_inserter(writer.buffer), FMT_COMPILE("{:.{}f}"), value, decimals);
    handOverWhenFull(writer);
}

void flush(NumberWriter& writer) {
    handOver(writer);
    if (writer.file != nullptr) std::fflush(writer.file);
}

}  // namespace kvr
