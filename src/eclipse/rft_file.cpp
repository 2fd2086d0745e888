#include "eclipse/rft_file.hpp"

#include "base/written_files.hpp"
#include "eclipse/cell_arrays.hpp"
#include "eclipse/file_failure.hpp"
#include "eclipse/file_names.hpp"
#include "run/records/output_table.hpp"

#include <vector>

namespace kvr {

namespace {

struct RftSource {
    const GridModel& grid;
    const CellState& state;
};

struct PlaceRow {
    std::string_view keyword;
    const CellArray<int> GridModel::*index;
};
constexpr PlaceRow PlaceRows[] = {
    {"CONIPOS", &GridModel::CellI}, {"CONJPOS", &GridModel::CellJ}, {"CONKPOS", &GridModel::CellK}};

struct ValueRow {
    std::string_view keyword;
    double (*value)(const RftSource&, CellId);
};
constexpr ValueRow ValueRows[] = {
    {"DEPTH", [](const RftSource& s, CellId c) { return s.grid.CellCentre(c, 3); }},
    {"PRESSURE", [](const RftSource& s, CellId c) { return s.state.Pressure[c]; }},
    {"SWAT", [](const RftSource& s, CellId c) { return s.state.Sw[c]; }},
    {"SGAS", [](const RftSource& s, CellId c) { return s.state.Sg[c]; }}};

constexpr std::size_t WellDataWords = 11;

std::array<std::string_view, WellDataWords> wellData(std::string_view wellName) {
    return {"  DAYS  ", wellName,   "        ", "  FEET  ", "  PSIA  ", "R       ",
            "STANDARD", " STB/DAY", "MSCF/DAY", " RB/DAY ", " FT/SEC "};
}

void addWell(const RunClock& clock, const RftSource& source, const Well& well, RecordWriter& writer) {
    const auto count = static_cast<std::int32_t>(well.connections.size());
    const auto cellOf = [&](std::size_t n) { return well.connections[n].ConnCell; };
    const std::array<std::int32_t, 3> date = {clock.day, clock.month, clock.year};
    const std::array<std::string_view, WellDataWords> words = wellData(well.WellName);

    write_keyword<float>(writer, "TIME", 1, [&](std::size_t) { return static_cast<float>(clock.time); });
    write_keyword(writer, "DATE", std::span<const std::int32_t>(date), Cut::OneRecord);
    writeWords(writer, "WELLETC", words);
    for (const PlaceRow& row : PlaceRows)
        write_keyword<std::int32_t>(
            writer, row.keyword, count, [&](std::size_t n) { return (source.grid.*row.index)[cellOf(n)]; },
            Cut::OneRecord);
    // There are no host grids: the list takes what stands in WELLETC, and readers ignore it.
    write_keyword<Text8>(
        writer, "HOSTGRID", count, [&](std::size_t n) { return text8(n < words.size() ? words[n] : ""); },
        Cut::OneRecord);
    for (const ValueRow& row : ValueRows)
        write_keyword<float>(
            writer, row.keyword, count,
            [&](std::size_t n) { return static_cast<float>(row.value(source, cellOf(n))); }, Cut::OneRecord);
}

}  // namespace

void addRftRecords(const Console& console, const RunOptions& options, const RunClock& clock,
                   const GridModel& grid, const CellState& state, const WellRecord& wells,
                   EclipseOutput& output) {
    if (output.rft.file == nullptr) {
        openOrStop(console, runFile(options, ".RFT"), output.rft);
        watchFile(console, output.rft.file, output.rft.path);
    }
    if (!isOn(options, OutputSwitch::Eclipse)) return;
    for (const Well& well : wells.wells) addWell(clock, {grid, state}, well, output.rft);
    std::fflush(output.rft.file);
    if (output.rftNamed) return;
    tellGenerated(console, output.rft.path);
    output.rftNamed = true;
}

}  // namespace kvr
