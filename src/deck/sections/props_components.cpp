#include "deck/sections/props_components.hpp"

#include "deck/sections/component_rules.hpp"
#include "deck/sections/pvto.hpp"
#include "fluid/components/component_set.hpp"

#include <algorithm>

namespace kvr {

namespace {

constexpr double CubicFeetPerLbMolPerMetric = 16.01846;  // m3/kg-mole to ft3/lb-mole

std::size_t componentCount(const PropsRecords& records) {
    return static_cast<std::size_t>(std::clamp(records.options.componentCount, 0, MaxComponents));
}

/// One value per component behind `message`; without components the data are skipped.
void readPerComponent(SectionReader& reader, const PropsRecords& records, std::string_view message,
                      double factor, Column& values) {
    announce(reader, message);
    values.assign(componentCount(records), 0.0);
    if (values.empty()) return skipKeywordData(reader);
    skipCommentLines(reader);
    readArray(reader, values, factor);
}

/// The numbers of the lower triangle, row by row; slashes may stand behind any of them.
std::vector<double> readTriangle(SectionReader& reader, std::size_t count) {
    std::vector<double> values;
    std::string_view line;
    while (values.size() < count && !nextLineIsKeyword(reader) && nextLine(*reader.cursor, line)) {
        if (isCommentLine(line)) continue;
        for (bool slash = true; slash; line.remove_prefix(line.find('/') + 1)) {
            const std::vector<double> numbers = readLineNumbers(reader, line, slash);
            values.insert(values.end(), numbers.begin(), numbers.end());
            if (values.size() >= count || !slash) break;
        }
    }
    values.resize(count, 0.0);
    return values;
}

}  // namespace

void readCnames(SectionReader& reader, PropsRecords& records) {
    announce(reader, reader.keyword);
    std::vector<std::string>& names = records.tables.CNAMES;
    names.assign(componentCount(records), {});
    if (names.empty()) return skipKeywordData(reader);
    skipCommentLines(reader);
    std::vector<ListTarget> targets;
    targets.reserve(names.size());
    for (std::string& name : names) targets.emplace_back(&name);
    checkRead(reader, readList(*reader.cursor, targets));
}

void readTcrit(SectionReader& reader, PropsRecords& records) {
    readPerComponent(reader, records, reader.keyword, isMetric(reader) ? RankinePerKelvin : 1.0,
                     records.tables.TCRIT);
}

void readPcrit(SectionReader& reader, PropsRecords& records) {
    readPerComponent(reader, records, reader.keyword, reader.units->pressure, records.tables.PCRIT);
}

void readVcrit(SectionReader& reader, PropsRecords& records) {
    readPerComponent(reader, records, reader.keyword, isMetric(reader) ? CubicFeetPerLbMolPerMetric : 1.0,
                     records.tables.VCRIT);
}

void readMw(SectionReader& reader, PropsRecords& records) {
    readPerComponent(reader, records, reader.keyword, 1.0, records.tables.MW);
}

void readAcf(SectionReader& reader, PropsRecords& records) {
    readPerComponent(reader, records, reader.keyword, 1.0, records.tables.ACF);
}

void readZi(SectionReader& reader, PropsRecords& records) {
    readPerComponent(reader, records, "FIELD Composition", 1.0, records.tables.ZI);
    if (!records.tables.ZI.empty()) checkComposition(reader, records.tables.ZI);
}

void readBic(SectionReader& reader, PropsRecords& records) {
    announce(reader, reader.keyword);
    const std::size_t n = componentCount(records);
    std::vector<double>& square = records.tables.BIC;
    square.assign(n * n, 0.0);
    if (n == 0) return skipKeywordData(reader);
    skipCommentLines(reader);
    const std::vector<double> triangle = readTriangle(reader, n * (n - 1) / 2);
    auto value = triangle.begin();
    for (std::size_t i = 1; i < n; ++i)
        for (std::size_t j = 0; j < i; ++j) square[i * n + j] = square[j * n + i] = *value++;
}

void readZmfvd(SectionReader& reader, PropsRecords& records) {
    announce(reader, reader.keyword);
    const std::size_t n = componentCount(records);
    records.tables.ZMFVD.clear();
    if (n == 0) return skipKeywordData(reader);
    std::vector<double> row(n + 1);
    RowLoop rows{RowSlash::EndsTable, RowStart::Number, {}, 0};
    while (nextTableRow(reader, rows)) {
        std::fill(row.begin(), row.end(), 0.0);
        rows.last = readDoubles(*reader.cursor, row);
        checkRead(reader, rows.last);
        if (rows.last.count == 0) continue;
        rows.axis = row[0];
        row[0] *= reader.units->length;
        checkComposition(reader, std::span<double>(row).subspan(1));
        records.tables.ZMFVD.insert(records.tables.ZMFVD.end(), row.begin(), row.end());
    }
}

}  // namespace kvr
