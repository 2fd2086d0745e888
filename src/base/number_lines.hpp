#pragma once

#include "base/number_writer.hpp"

#include <span>

namespace kvr {

/// A long list of numbers, eight to a line; the last line is ended by `finish`.
struct NumberLines {
    static constexpr int PerLine = 8;

    NumberWriter& writer;
    int onLine = 0;

    void add(double value) {
        putNumber(writer, value);
        separate();
    }
    void addZero() {
        put(writer, "0");
        separate();
    }
    void separate() {
        onLine = (onLine + 1) % PerLine;
        put(writer, onLine == 0 ? "\n" : " ");
    }
    void finish() {
        if (onLine > 0) put(writer, "\n");
        onLine = 0;
    }
};

inline void putList(NumberWriter& writer, std::span<const double> values) {
    NumberLines lines{writer};
    for (const double value : values) lines.add(value);
    lines.finish();
}

}  // namespace kvr
