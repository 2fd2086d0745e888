#pragma once

#include <cstdio>
#include <fmt/format.h>
#include <string_view>

namespace kvr {

inline constexpr int RoundTripDigits = 17;  // a number written with them reads back to the same bits

/// Gathers text in memory and hands it to a stream in large pieces. Whatever was put in is in the
/// stream after `flush`; a writer that goes out of scope unflushed loses its text.
struct NumberWriter {
    std::FILE* file = nullptr;
    fmt::memory_buffer buffer;
};

/// Text as it stands.
void put(NumberWriter& writer, std::string_view text);
/// A number in general form, `digits` significant digits.
void putNumber(NumberWriter& writer, double value, int digits = 9);
void putNumber(NumberWriter& writer, int value);
/// A number with a fixed count of decimals, for columns.
void putFixed(NumberWriter& writer, double value, int decimals);
/// Hands the gathered text to the stream and to the operating system, so that the file is readable
/// up to here even if the process is killed next.
void flush(NumberWriter& writer);

}  // namespace kvr
