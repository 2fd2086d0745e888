#include "base/number_writer.hpp"

#include "unit/quiet_console.hpp"

#include <gtest/gtest.h>

namespace kvr {
namespace {

TEST(NumberWriter, WritesGeneralFixedAndWholeNumbers) {
    NumberWriter writer;
    writer.file = std::tmpfile();
    putNumber(writer, 1.0 / 3.0, 4);
    put(writer, " ");
    putNumber(writer, -7);
    put(writer, " ");
    putFixed(writer, 0.00125, 4);
    put(writer, " ");
    putFixed(writer, 2.5, 3);
    EXPECT_EQ(QuietConsole::contents(writer.file), "");
    flush(writer);
    EXPECT_EQ(QuietConsole::contents(writer.file), "0.3333 -7 0.0013 2.500");
    std::fclose(writer.file);
}

TEST(NumberWriter, WritesWholeNumbersAsTheirGeneralForm) {
    const double values[] = {0.0,   -0.0,          1.0,         -17.0,        999999999.0,  1e9,
                             -1e9,  1e15,          123456789.0, 1234567890.0, 2147483648.0, 0.5,
                             1e300, -2147483649.0, 8000.0,      -999999999.0};
    for (const int digits : {1, 4, 8, 9, 12}) {
        for (const double value : values) {
            NumberWriter writer;
            putNumber(writer, value, digits);
            char expected[64];
            std::snprintf(expected, sizeof expected, "%.*g", digits, value);
            EXPECT_EQ(fmt::to_string(writer.buffer), expected) << digits << " digits";
        }
    }
}

TEST(NumberWriter, HandsLongTextOnInPieces) {
    NumberWriter writer;
    writer.file = std::tmpfile();
    const std::string line(1000, 'x');
    constexpr int Lines = 3000;
    for (int n = 0; n < Lines; ++n) put(writer, line);
    flush(writer);
    std::fflush(writer.file);
    EXPECT_EQ(std::ftell(writer.file), static_cast<long>(line.size()) * Lines);
    std::fclose(writer.file);
}

}  // namespace
}  // namespace kvr
