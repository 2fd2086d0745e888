#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace kvr {

/// Bytes written as hexadecimal digits; blanks between them are for the eye.
inline std::string bytesOf(std::string_view hex) {
    const auto digit = [](char c) { return c <= '9' ? c - '0' : c - 'a' + 10; };
    std::string bytes;
    int high = -1;
    for (const char c : hex) {
        if (c == ' ') continue;
        if (high < 0) {
            high = digit(c);
            continue;
        }
        bytes.push_back(static_cast<char>(high * 16 + digit(c)));
        high = -1;
    }
    return bytes;
}

/// Four bytes, highest first.
inline std::string bigEndian32(std::uint32_t value) {
    std::string bytes;
    for (int shift = 24; shift >= 0; shift -= 8) bytes.push_back(static_cast<char>(value >> shift & 0xffU));
    return bytes;
}

/// A record: payload between its two lengths.
inline std::string recordOf(const std::string& payload) {
    const std::string marker = bigEndian32(static_cast<std::uint32_t>(payload.size()));
    return marker + payload + marker;
}

/// A header record of 16 bytes; the keyword has eight characters, the tag four.
inline std::string headerOf(std::string_view keyword, std::uint32_t count, std::string_view tag) {
    return recordOf(std::string(keyword) + bigEndian32(count) + std::string(tag));
}

/// The same bytes with every group of `width` turned round, from `first` on.
inline std::string reversedGroups(std::string bytes, std::size_t first, std::size_t width) {
    for (std::size_t start = first; start + width <= bytes.size(); start += width)
        for (std::size_t n = 0; n < width / 2; ++n) std::swap(bytes[start + n], bytes[start + width - 1 - n]);
    return bytes;
}

}  // namespace kvr
