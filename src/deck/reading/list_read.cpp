#include "deck/reading/list_read.hpp"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstdlib>
#include <limits>

namespace kvr {

namespace {

constexpr std::size_t MaxNumberLength = 63;   // characters of a number in its slow form
constexpr std::size_t ShownTokenLength = 40;  // characters of a bad token that a message repeats

/// A walk over the deck's text. `line` is the number of the line that `at` stands in.
struct Scan {
    const char* at;
    const char* end;
    const char* lineStart;
    int line;
};

struct Token {
    std::string_view text;
    bool quoted = false;
};

constexpr std::array<bool, 256> delimiters() {
    std::array<bool, 256> table{};
    for (std::size_t c = 0; c <= ' '; ++c) table[c] = true;
    table[','] = true;
    table['/'] = true;
    return table;
}
constexpr std::array<bool, 256> IsDelimiter = delimiters();

bool isDelimiter(char c) {
    return IsDelimiter[static_cast<unsigned char>(c)];
}
bool isDigit(char c) {
    return c >= '0' && c <= '9';
}
bool isBlank(char c) {
    return static_cast<unsigned char>(c) <= ' ';
}
bool isQuote(char c) {
    return c == '\'' || c == '"';
}

Scan startScan(const DeckCursor& cursor) {
    const char* at = cursor.text.data() + cursor.position;
    return {at, cursor.text.data() + cursor.text.size(), at, cursor.lineNumber + 1};
}

void toLineEnd(Scan& scan) {
    scan.at = std::find(scan.at, scan.end, '\n');
}

/// Moves to the next token; false at the end of the file.
bool skipSeparators(Scan& scan) {
    while (scan.at < scan.end) {
        const char c = *scan.at;
        if (c == '\n') {
            scan.lineStart = ++scan.at;
            ++scan.line;
        } else if (c == ',' || isBlank(c)) {
            ++scan.at;
        } else if (c == '-' && scan.at + 1 < scan.end && scan.at[1] == '-') {
            toLineEnd(scan);
        } else {
            return true;
        }
    }
    return false;
}

/// Takes "n*" off. 0: there is none; a count too large for an int is held at the largest.
/// A count of 0 is no repeat: the token stays whole and fails as a value.
int takeRepeat(Scan& scan) {
    const char* p = scan.at;
    while (p < scan.end && isDigit(*p)) ++p;
    if (p == scan.at || p == scan.end || *p != '*') return 0;
    int count = std::numeric_limits<int>::max();
    std::from_chars(scan.at, p, count);
    if (count > 0) scan.at = p + 1;
    return count;
}

/// Nothing stands behind "n*": its targets keep their values.
bool isNullValue(const Scan& scan) {
    return scan.at == scan.end || isDelimiter(*scan.at);
}

/// The token at the scan, without its quotes; an open quote runs to the end of its line.
Token takeToken(Scan& scan) {
    const char* first = scan.at;
    if (isQuote(*first)) {
        const char* close = first + 1;
        while (close < scan.end && *close != *first && *close != '\n') ++close;
        scan.at = close < scan.end && *close == *first ? close + 1 : close;
        return {{first + 1, static_cast<std::size_t>(close - first - 1)}, true};
    }
    while (scan.at < scan.end && !isDelimiter(*scan.at)) ++scan.at;
    return {{first, static_cast<std::size_t>(scan.at - first)}, false};
}

template <class T>
bool parseWhole(std::string_view text, T& value) {
    const auto [stop, status] = std::from_chars(text.data(), text.data() + text.size(), value);
    return status == std::errc() && stop == text.data() + text.size();
}

/// Forms beside the plain one: exponents with d, and numbers too small to be held, which are 0.
template <class T>
bool parseSlowly(std::string_view text, T& value) {
    if (text.size() > MaxNumberLength) return false;
    std::array<char, MaxNumberLength + 1> form{};
    std::transform(text.begin(), text.end(), form.begin(),
                   [](char c) { return c == 'd' || c == 'D' ? 'e' : c; });
    if (text.find_first_not_of("0123456789+-.eEdD") != std::string_view::npos) return false;
    char* stop = nullptr;
    const double result = std::strtod(form.data(), &stop);
    value = static_cast<T>(result);
    return stop == form.data() + text.size() && std::isfinite(value);
}

/// "inf" and "nan" parse as numbers elsewhere; in a deck they are words.
bool startsLikeNumber(std::string_view text) {
    if (!text.empty() && text.front() == '-') text.remove_prefix(1);
    return !text.empty() && (isDigit(text.front()) || text.front() == '.');
}

template <class T>
bool parseNumber(std::string_view text, T& value) {
    if (!text.empty() && text.front() == '+') {
        text.remove_prefix(1);
        if (!text.empty() && text.front() == '-') return false;
    }
    if (!startsLikeNumber(text)) return false;
    if (parseWhole(text, value)) return true;
    if constexpr (std::is_floating_point_v<T>) return parseSlowly(text, value);
    return false;
}

void fail(const Scan& scan, std::string_view token, ListEnd& end) {
    end.error = ListError::BadValue;
    end.errorLine = scan.line;
    end.errorText = token.substr(0, ShownTokenLength);
}

/// Drops the rest of the line behind the last target; a slash among its tokens is reported.
void dropRest(Scan& scan, ListEnd& end) {
    while (scan.at < scan.end && *scan.at != '\n' && !end.slash) {
        if (*scan.at == '/') end.slash = true;
        if (std::string_view(scan.at, static_cast<std::size_t>(scan.end - scan.at)).starts_with("--")) break;
        if (isDelimiter(*scan.at)) {
            ++scan.at;
        } else {
            takeToken(scan);
            ++end.dropped;
        }
    }
    toLineEnd(scan);
}

/// Leaves the cursor behind the line in which the read ended.
void finish(const Scan& scan, DeckCursor& cursor) {
    const char* base = cursor.text.data();
    const char* lineEnd = std::find(scan.at, scan.end, '\n');
    cursor.previousLine = static_cast<std::size_t>(scan.lineStart - base);
    cursor.position = static_cast<std::size_t>(lineEnd - base) + (lineEnd < scan.end ? 1U : 0U);
    // At the end of the file behind a line end there is no line that the number could belong to.
    cursor.lineNumber = scan.lineStart == scan.end ? scan.line - 1 : scan.line;
}

/// The shared shape of every list read. `store(token, index)` sets one target and tells whether the
/// token was of its type.
template <class Store>
ListEnd readTokens(DeckCursor& cursor, std::size_t targetCount, const Store& store) {
    ListEnd end;
    Scan scan = startScan(cursor);
    std::size_t passed = 0;
    while (passed < targetCount && end.error == ListError::None) {
        end.endOfFile = !skipSeparators(scan);
        if (end.endOfFile) break;
        end.slash = *scan.at == '/';
        if (end.slash) break;
        const auto repeat = static_cast<std::size_t>(std::max(1, takeRepeat(scan)));
        const std::size_t last = std::min(passed + repeat, targetCount);
        if (!isNullValue(scan)) {
            end.surplus = static_cast<std::int64_t>(passed + repeat - last);
            const Token token = takeToken(scan);
            while (passed < last && store(token, passed)) ++passed;
            if (passed < last) fail(scan, token.text, end);
        }
        passed = end.error == ListError::None ? last : passed;
    }
    end.count = static_cast<int>(passed);
    if (passed == targetCount) dropRest(scan, end);
    finish(scan, cursor);
    return end;
}

template <class T>
ListEnd readNumbers(DeckCursor& cursor, std::span<T> values, double scale) {
    return readTokens(cursor, values.size(), [values, scale](const Token& token, std::size_t index) {
        T value{};
        if (token.quoted || !parseNumber(token.text, value)) return false;
        values[index] = static_cast<T>(value * scale);
        return true;
    });
}

bool storeInto(const Token& token, std::string* target) {
    *target = token.text;
    return true;
}
template <class T>
bool storeInto(const Token& token, T* target) {
    return !token.quoted && parseNumber(token.text, *target);
}

}  // namespace

ListEnd readList(DeckCursor& cursor, std::span<const ListTarget> targets) {
    return readTokens(cursor, targets.size(), [targets](const Token& token, std::size_t index) {
        return std::visit([&token](auto* target) { return storeInto(token, target); }, targets[index]);
    });
}

ListEnd readDoubles(DeckCursor& cursor, std::span<double> values, double scale) {
    return readNumbers(cursor, values, scale);
}

ListEnd readFloats(DeckCursor& cursor, std::span<float> values, double scale) {
    return readNumbers(cursor, values, scale);
}

ListEnd readIntegers(DeckCursor& cursor, std::span<int> values) {
    return readTokens(cursor, values.size(), [values](const Token& token, std::size_t index) {
        return !token.quoted && parseNumber(token.text, values[index]);
    });
}

ListStart listStart(const DeckCursor& cursor) {
    return {cursor.position, cursor.lineNumber};
}

int lineOfValue(const DeckCursor& cursor, const ListStart& start, std::size_t number) {
    const char* at = cursor.text.data() + start.position;
    Scan scan{at, cursor.text.data() + cursor.text.size(), at, start.lineNumber + 1};
    std::size_t passed = 0;
    while (skipSeparators(scan) && *scan.at != '/') {
        passed += static_cast<std::size_t>(std::max(1, takeRepeat(scan)));
        if (passed > number) return scan.line;
        if (!isNullValue(scan)) takeToken(scan);
    }
    return scan.line;
}

ListEnd readPath(DeckCursor& cursor, std::string& path) {
    ListEnd end;
    Scan scan = startScan(cursor);
    end.endOfFile = !skipSeparators(scan);
    if (!end.endOfFile) {
        const char* wordEnd = std::find_if(scan.at, scan.end, isBlank);
        if (isQuote(*scan.at)) {
            path = takeToken(scan).text;
            end.count = 1;
        } else if (wordEnd - scan.at == 1 && *scan.at == '/') {
            end.slash = true;
        } else {
            path.assign(scan.at, wordEnd);
            scan.at = wordEnd;
            end.count = 1;
        }
    }
    if (end.count == 1) dropRest(scan, end);
    finish(scan, cursor);
    return end;
}

}  // namespace kvr
