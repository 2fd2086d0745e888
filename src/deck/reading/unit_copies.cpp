#include "deck/reading/unit_copies.hpp"

#include "base/number_writer.hpp"

#include <cmath>

namespace kvr {

namespace {

constexpr std::size_t NumbersPerLine = 8;

void writeLine(std::FILE* file, std::string_view text) {
    if (file == nullptr) return;
    if (!text.empty()) std::fwrite(text.data(), 1, text.size(), file);  // an empty one may have no address
    std::fputc('\n', file);
}

bool copiesWanted(const SectionReader& reader) {
    return reader.outputMetric && reader.sinks != nullptr;
}

DeckUnits deckUnits(const SectionReader& reader) {
    return reader.units != nullptr ? reader.units->deck : DeckUnits::None;
}

/// Factor of a deck number in the copy of `system`.
double factorFor(const SectionReader& reader, DeckUnits system, double copyFactor) {
    const DeckUnits deck = deckUnits(reader);
    return deck == DeckUnits::None || deck == system ? 1.0 : copyFactor;
}

/// Calls `write(writer, system)` for each copy that is open.
template <class Write>
void forEachCopy(const SectionReader& reader, const Write& write) {
    if (!copiesWanted(reader)) return;
    reader.sinks->keywordCopied = true;
    NumberWriter metric;
    metric.file = reader.sinks->metricCopy;
    write(metric, DeckUnits::Metric);
    flush(metric);
    NumberWriter field;
    field.file = reader.sinks->fieldCopy;
    write(field, DeckUnits::Field);
    flush(field);
}

template <class T, class WriteValue>
void writeArray(NumberWriter& writer, std::string_view keyword, std::span<const T> values,
                const WriteValue& writeValue) {
    put(writer, keyword);
    for (std::size_t n = 0; n < values.size(); ++n) {
        put(writer, n % NumbersPerLine == 0 ? "\n" : " ");
        writeValue(values[n]);
    }
    put(writer, " /\n");
}

/// A row of numbers and what ends it.
void writeRow(const SectionReader& reader, std::span<const double> values, std::span<const double> factors,
              std::string_view end) {
    forEachCopy(reader, [&](NumberWriter& writer, DeckUnits system) {
        for (std::size_t n = 0; n < values.size(); ++n) {
            const double factor = n < factors.size() ? factors[n] : 1.0;
            if (n > 0) put(writer, " ");
            putNumber(writer, values[n] * factorFor(reader, system, factor));
        }
        put(writer, end);
    });
}

template <class T>
void copyReals(const SectionReader& reader, std::span<const T> values, double deckFactor, double copyFactor) {
    forEachCopy(reader, [&](NumberWriter& writer, DeckUnits system) {
        const double factor = factorFor(reader, system, copyFactor) / deckFactor;
        writeArray(writer, reader.keyword, values, [&](T value) {
            if (std::isnan(value)) return put(writer, "1*");  // left out in the deck
            putNumber(writer, value * factor);
        });
    });
}

}  // namespace

void copyEcho(const SectionReader& reader, std::string_view text) {
    if (reader.sinks == nullptr) return;
    writeLine(reader.sinks->metricCopy, text);
    writeLine(reader.sinks->fieldCopy, text);
}

void copyLine(const SectionReader& reader, std::string_view text) {
    copyLines(reader, text, text);
}

void copyLines(const SectionReader& reader, std::string_view metricText, std::string_view fieldText) {
    if (reader.sinks == nullptr) return;
    reader.sinks->keywordCopied = true;
    writeLine(reader.sinks->metricCopy, metricText);
    writeLine(reader.sinks->fieldCopy, fieldText);
}

void copyKeyword(const SectionReader& reader) {
    if (copiesWanted(reader)) copyLine(reader, reader.keyword);
}

void copyRow(const SectionReader& reader, std::initializer_list<CopyItem> items) {
    forEachCopy(reader, [&](NumberWriter& writer, DeckUnits system) {
        for (const CopyItem& item : items) {
            if (item.text.empty()) {
                putNumber(writer, item.value * factorFor(reader, system, item.factor));
            } else {
                put(writer, "'");
                put(writer, item.text);
                put(writer, "'");
            }
            put(writer, " ");
        }
        put(writer, "/\n");
    });
}

void copyRow(const SectionReader& reader, std::span<const double> values, std::span<const double> factors) {
    writeRow(reader, values, factors, " /\n");
}

void copyTableRow(const SectionReader& reader, std::span<const double> values,
                  std::span<const double> factors) {
    writeRow(reader, values, factors, "\n");
}

void copyTableEnd(const SectionReader& reader) {
    if (copiesWanted(reader)) copyLine(reader, "/");
}

void copyArray(const SectionReader& reader, std::span<const double> values, double deckFactor,
               double copyFactor) {
    copyReals(reader, values, deckFactor, copyFactor);
}

void copyArray(const SectionReader& reader, std::span<const float> values, double deckFactor,
               double copyFactor) {
    copyReals(reader, values, deckFactor, copyFactor);
}

void copyArray(const SectionReader& reader, std::span<const int> values) {
    forEachCopy(reader, [&](NumberWriter& writer, DeckUnits) {
        writeArray(writer, reader.keyword, values, [&](int value) { putNumber(writer, value); });
    });
}

}  // namespace kvr
