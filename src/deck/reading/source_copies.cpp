#include "deck/reading/source_copies.hpp"

#include "base/number_writer.hpp"
#include "base/text.hpp"

#include <algorithm>
#include <array>
#include <charconv>
#include <string>
#include <vector>

namespace kvr {

namespace {

using enum ItemUnit;

constexpr std::size_t MostItems = 14;  // of a row below

/// The units of a keyword's items, in the order of a record.
struct KeywordUnits {
    std::string_view keyword;
    std::array<ItemUnit, MostItems> items{};
};
constexpr KeywordUnits UnitRows[] = {
    {"WELSPECS", {None, None, None, None, Length}},
    {"WELSPEC", {None, None, None, None, None, Length, None, None, WellControl}},
    {"COMPDAT", {None, None, None, None, None, None, None, ConnectionFactor, Length, Length}},
    {"WCONPROD",
     {None, None, None, LiquidRate, LiquidRate, GasRate, LiquidRate, LiquidRate, Pressure, Pressure}},
    {"WCONINJE", {None, None, None, None, Injected, LiquidRate, Pressure, Pressure}},
    {"WCONHIST", {None, None, None, LiquidRate, LiquidRate, GasRate, None, None, Pressure, Pressure}},
    {"WCONINJH", {None, None, None, Injected, Pressure, Pressure}},
    {"WELTARG", {None, None, Target}},
    {"WECON",
     {None, LiquidRate, GasRate, None, GasRatio, LiquidRatio, None, None, None, None, None, None, GasRatio,
      LiquidRate}},
    {"GCONPROD",
     {None, None, LiquidRate, LiquidRate, GasRate, LiquidRate, None, None, None, None, None, None, None,
      LiquidRate}},
    {"GCONINJE", {None, None, None, Injected, LiquidRate}},
    {"AQUFETP", {None, Length, Pressure, LiquidRate, PerPressure, Productivity}},
    {"AQUCT", {None, Length, Pressure, None, None, PerPressure, Length, Length}},
    {"DRSDT", {GasRatio}},
    {"RTEMP", {Temperature}},
    {"STCOND", {Temperature, Pressure}},
};

const KeywordUnits* unitsOf(std::string_view keyword) {
    const auto* const row = std::find_if(std::begin(UnitRows), std::end(UnitRows),
                                         [keyword](const KeywordUnits& r) { return r.keyword == keyword; });
    return row == std::end(UnitRows) ? nullptr : row;
}

/// One item of a record as it stands in the deck.
struct Item {
    std::string_view text;   // with its quotes, without a repeat count
    std::string_view count;  // "3*" of "3*100", empty where there is none
    int repeats = 1;
};

bool endsItem(char c) {
    return static_cast<unsigned char>(c) <= ' ' || c == ',' || c == '/';
}

std::size_t endOfItem(std::string_view text, std::size_t at) {
    if (at < text.size() && (text[at] == '\'' || text[at] == '"'))
        return std::min(text.find_first_of(std::string{text[at], '\n'}, at + 1), text.size() - 1) + 1;
    while (at < text.size() && !endsItem(text[at])) ++at;
    return at;
}

Item takeItem(std::string_view text, std::size_t& at) {
    Item item;
    const std::size_t digits = std::min(text.find_first_not_of("0123456789", at), text.size());
    if (digits > at && digits < text.size() && text[digits] == '*') {
        std::from_chars(text.data() + at, text.data() + digits, item.repeats);
        item.count = text.substr(at, digits + 1 - at);
        at = digits + 1;
    }
    const std::size_t end = endOfItem(text, at);
    item.text = text.substr(at, end - at);
    at = end;
    return item;
}

std::string wordOf(const std::vector<Item>& record, std::size_t item) {
    if (item >= record.size()) return {};
    std::string_view text = record[item].text;
    while (!text.empty() && (text.front() == '\'' || text.front() == '"')) text.remove_prefix(1);
    return toUpper(trim(text));
}

bool isPressureWord(std::string_view word) {
    return word.starts_with("BH") || word.starts_with("TH");
}

/// The unit that the words of a record give an item of it.
ItemUnit settled(ItemUnit unit, const std::vector<Item>& record) {
    const std::string second = wordOf(record, 1);
    if (unit == Injected) return second.starts_with('G') ? GasRate : LiquidRate;
    if (unit == Target) return isPressureWord(second) ? Pressure : second == "GRAT" ? GasRate : LiquidRate;
    if (unit != WellControl) return unit;
    constexpr std::size_t TypeItem = 7, ControlItem = 9;
    const std::string control = wordOf(record, ControlItem);
    if (isPressureWord(control)) return Pressure;
    return wordOf(record, TypeItem).starts_with('G') || control.starts_with("GR") ? GasRate : LiquidRate;
}

bool isNumber(std::string_view text, double& value) {
    std::string form(text.substr(text.starts_with('+') ? 1 : 0));
    std::replace_if(
        form.begin(), form.end(), [](char c) { return c == 'd' || c == 'D'; }, 'e');
    const auto [stop, status] = std::from_chars(form.data(), form.data() + form.size(), value);
    return status == std::errc() && stop == form.data() + form.size();
}

void writeItem(const SectionReader& reader, const Item& item, ItemUnit unit, NumberWriter& writer) {
    double value = 0.0;
    put(writer, item.count);
    if (unit == None || item.text.empty() || !isNumber(item.text, value))
        put(writer, item.text);
    else
        putNumber(writer, inOtherUnits(reader, unit, value));
}

/// A record's items, in the other system's units where `units` names some. A repeated value whose items
/// have different units is taken for one of the first's: no keyword above has such a pair that a deck
/// repeats.
void writeRecord(const SectionReader& reader, const KeywordUnits* units, const std::vector<Item>& record,
                 NumberWriter& writer) {
    std::vector<Item> spread;  // repeats counted out, so that an item's number is its place
    for (const Item& item : record)
        for (int n = 0; n < std::min(item.repeats, static_cast<int>(MostItems)); ++n)
            spread.push_back({item.text, {}, 1});
    std::size_t place = 0;
    for (const Item& item : record) {
        const ItemUnit unit = units != nullptr && place < MostItems ? units->items[place] : None;
        writeItem(reader, item, settled(unit, spread), writer);
        put(writer, " ");
        place += static_cast<std::size_t>(std::max(item.repeats, 1));
    }
}

/// Lines with their comments off.
void writeLines(std::string_view text, NumberWriter& writer) {
    while (!text.empty()) {
        const std::size_t length = std::min(text.find('\n'), text.size() - 1) + 1;
        std::string_view line = text.substr(0, length);
        text.remove_prefix(length);
        if (isCommentLine(line)) continue;
        while (!line.empty() && (line.back() == '\n' || line.back() == '\r')) line.remove_suffix(1);
        put(writer, line);
        put(writer, "\n");
    }
}

/// Records with slashes, a line each.
void writeRecords(const SectionReader& reader, const KeywordUnits& units, std::string_view text,
                  NumberWriter& writer) {
    std::vector<Item> record;
    for (std::size_t at = 0; at < text.size();) {
        if (text[at] == '/') {
            writeRecord(reader, &units, record, writer);
            put(writer, "/\n");
            record.clear();
            at = std::min(text.find('\n', at), text.size());
        } else if (text.substr(at).starts_with("--")) {
            at = std::min(text.find('\n', at), text.size());
        } else if (endsItem(text[at])) {
            ++at;
        } else {
            record.push_back(takeItem(text, at));
        }
    }
    if (record.empty()) return;
    writeRecord(reader, &units, record, writer);
    put(writer, "/\n");
}

void copyTo(std::FILE* file, const SectionReader& reader, std::string_view keywordLine, std::string_view text,
            bool converted) {
    NumberWriter writer;
    writer.file = file;
    put(writer, keywordLine);
    put(writer, "\n");
    const KeywordUnits* units = converted ? unitsOf(reader.keyword) : nullptr;
    if (units != nullptr)
        writeRecords(reader, *units, text, writer);
    else
        writeLines(text, writer);
    flush(writer);
}

}  // namespace

double inOtherUnits(const SectionReader& reader, ItemUnit unit, double value) {
    constexpr double FreezingPoint = 32.0;  // degrees Fahrenheit
    constexpr double FahrenheitPerCelsius = 1.8;
    const UnitSystem& from = *reader.units;
    const bool metric = from.deck == DeckUnits::Metric;
    const UnitSystem to = metric ? fieldUnits() : metricUnits();
    switch (unit) {
        case Length:
            return value * from.copyLength;
        case Pressure:
            return value * from.copyPressure;
        case LiquidRate:
            return value * (from.liquidRate * from.VolumeFactor) / (to.liquidRate * to.VolumeFactor);
        case GasRate:
            return value * (from.gasRate * from.VolumeFactor) / (to.gasRate * to.VolumeFactor);
        case GasRatio:
            return value * from.gasRatio / to.gasRatio;
        case LiquidRatio:
            return value * to.gasRatio / from.gasRatio;
        case GasFvf:
            return value * from.gasFvf / to.gasFvf;
        case ConnectionFactor:
            return value * from.connectionFactor / to.connectionFactor;
        case PerPressure:
            return value / from.copyPressure;
        case Productivity:
            return inOtherUnits(reader, LiquidRate, value) / from.copyPressure;
        case Temperature:
            return metric ? value * FahrenheitPerCelsius + FreezingPoint
                          : (value - FreezingPoint) / FahrenheitPerCelsius;
        default:
            return value;
    }
}

void copySource(const SectionReader& reader, std::string_view keywordLine, std::size_t begin) {
    if (!reader.outputMetric || reader.sinks == nullptr || reader.sinks->keywordCopied) return;
    const std::string_view source = reader.cursor->text;
    const std::size_t end = std::min(reader.cursor->position, source.size());
    const std::string_view text = end > begin ? source.substr(begin, end - begin) : std::string_view();
    const DeckUnits deck = reader.units != nullptr ? reader.units->deck : DeckUnits::None;
    copyTo(reader.sinks->metricCopy, reader, keywordLine, text, deck == DeckUnits::Field);
    copyTo(reader.sinks->fieldCopy, reader, keywordLine, text, deck == DeckUnits::Metric);
}

}  // namespace kvr
