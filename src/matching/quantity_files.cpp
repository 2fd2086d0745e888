#include "matching/quantity_files.hpp"

#include "base/hard_stop.hpp"
#include "base/messages.hpp"
#include "matching/well_data_text.hpp"

#include <algorithm>

namespace kvr {

namespace {

[[noreturn]] void stopAt(const Console& console, const WellDataText& text) {
    lineToBoth(console, "ERROR :: During Matching, could not extract Observed Data. ");
    lineToBoth(console, placeText(text.place, ""));
    hardStop(console);
}

std::vector<QuantityRow> readRows(const Console& console, const std::string& path, std::size_t wellCount) {
    const std::string contents = readWellData(console, path);
    WellDataText text{{path, 0}, contents, {}};
    std::vector<QuantityRow> rows;
    skipLine(text);  // the label, which may be blank
    while (rows.size() < MostQuantityRows && nextLine(text)) {
        if (text.line.size() < wellCount + 1) stopAt(console, text);
        QuantityRow row;
        for (std::size_t n = 0; n <= wellCount; ++n) {
            const std::optional<double> value = numberOf(text.line[n]);
            if (!value) stopAt(console, text);
            if (n == 0)
                row.time = *value;
            else
                row.values.push_back(*value);
        }
        rows.push_back(std::move(row));
    }
    return rows;
}

}  // namespace

QuantityRows readQuantityFiles(const Console& console, const std::string& folder, std::size_t wellCount) {
    QuantityRows rows;
    for (std::size_t n = 0; n < QuantityFiles.size(); ++n) {
        rows.files[n] = readRows(console, folder + std::string(QuantityFiles[n]), wellCount);
        rows.rowsKept = std::max(rows.rowsKept, rows.files[n].size());
    }
    return rows;
}

}  // namespace kvr
