#include "eclipse/restart_plots.hpp"

#include "base/number_writer.hpp"
#include "base/text.hpp"
#include "base/written_files.hpp"
#include "eclipse/cell_arrays.hpp"
#include "eclipse/file_failure.hpp"
#include "eclipse/file_names.hpp"
#include "eclipse/init_file.hpp"
#include "eclipse/keyword_loop.hpp"
#include "report/block_zone.hpp"

#include <algorithm>
#include <cmath>

namespace kvr {

namespace {

constexpr int LastStep = 1000;
constexpr std::size_t TitleGap = 8, MultiplierTitleGap = 5;  // blanks behind the keyword of a title
constexpr std::size_t Else = 4;
constexpr std::array<std::string_view, 5> PlotNames = {"_X0_PRES.PLT", "_X0_SOIL.PLT", "_X0_SWAT.PLT",
                                                       "_X0_SGAS.PLT", "_X0_ELSE.PLT"};

struct ZoneRow {
    std::string_view keyword;
    std::size_t file;        // in PlotNames
    std::string_view title;  // blank: the keyword
};
constexpr ZoneRow Zones[] = {{"PRESSURE", 0, "p<sub>o</sub>"}, {"SOIL    ", 1, "S<sub>o</sub>"},
                             {"SWAT    ", 2, "S<sub>w</sub>"}, {"SGAS    ", 3, "S<sub>g</sub>"},
                             {"RS      ", Else, ""},           {"ZMF1    ", Else, ""},
                             {"ZMF2    ", Else, ""},           {"DENO    ", Else, ""},
                             {"DENW    ", Else, ""},           {"DENG    ", Else, ""},
                             {"VOIL    ", Else, ""},           {"VGAS    ", Else, ""},
                             {"VWAT    ", Else, ""},           {"FLOOILI+", Else, ""},
                             {"FLOWATI+", Else, ""},           {"FLOGASI+", Else, ""}};

/// Values of a block by cell.
CellArray<double> byCell(const GridModel& grid, const std::vector<float>& values) {
    CellArray<double> cells;
    cells.assign(grid.NCELLS, 0.0);
    const auto all = static_cast<std::size_t>(grid.NCELLS);
    const bool whole = values.size() == all;
    const std::size_t active = whole ? all : static_cast<std::size_t>(activeCount(grid));
    ActiveWalk walk{grid};
    for (std::size_t n = 0; n < std::min(active, values.size()); ++n)
        cells[whole ? static_cast<CellId>(n) + 1 : walk.next()] = static_cast<double>(values[n]);
    return cells;
}

void addZone(const RunOptions& options, const GridModel& grid, const std::vector<float>& values, double time,
             std::string_view title, std::FILE* file) {
    const ZoneNodes nodes = zoneNodes(options);
    writeBlockZone(file, grid, nodes, byCell(grid, values), time, title);
}

/// A keyword as a part of a file name: nothing in it leaves the folder.
std::string fileWord(std::string_view keyword) {
    std::string word(trim(keyword));
    for (char& c : word) {
        const bool plain = (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') ||
                           c == '+' || c == '-' || c == '_';
        if (!plain) c = '_';
    }
    return word;
}

/// A time without its fraction; nothing that is not a time of a run shows as a number of its own.
std::string wholeTime(double time) {
    constexpr double Longest = 1e15;  // days, far beyond any run
    return fmt::format("{:.0f}", std::abs(time) < Longest ? std::trunc(time) : 0.0);
}

void writeOwnFiles(const Console& console, const RunOptions& options, const GridModel& grid, int step,
                   const BlockHeader& header, const std::vector<float>& values, double time,
                   const RestartPlots& plots) {
    const std::string_view keyword = view(header.keyword);
    const std::size_t gap = keyword.starts_with("AJGFN") ? MultiplierTitleGap : TitleGap;
    const std::string word = fileWord(keyword);
    both(console, "Data -> {}", keyword);
    std::FILE* plot = replaceTextOrStop(console, fmt::format("{}_{:04d}{}.PLT", plots.base, step, word));
    addZone(options, grid, values, time, padded(keyword, keyword.size() + gap), plot);
    closeWhole(console, plot);
    std::FILE* text = replaceTextOrStop(
        console, fmt::format("{}_{}_STEP_{:04d}_TIME_{}.ECLTXT", plots.base, word, step, wholeTime(time)));
    NumberWriter writer;
    writer.file = text;
    for (const float value : values) {
        putNumber(writer, static_cast<double>(value));
        put(writer, "\n");
    }
    flush(writer);
    closeWhole(console, text);
}

bool holdsReals(const BlockHeader& header) {
    return std::string_view(header.tag.data(), header.tag.size()) == "REAL";
}

/// Header and time of a step; true where the block was one of them.
bool takeHead(const Console& console, const GridModel& grid, int step, const BlockHeader& header,
              const BlockData& data, RunClock& clock) {
    if (view(header.keyword) == "INTEHEAD") {
        logEmployed(console, header);
        const bool other = data.integers.size() < inte_head::ActiveCells ||
                           data.integers[inte_head::ActiveCells - 1] != grid.NCELLS;
        if (other) lineToBoth(console, "Dimension does not match - Restart and Grid file");
        return true;
    }
    if (view(header.keyword) != "DOUBHEAD" || data.doubles.empty()) return false;
    logEmployed(console, header);
    clock.time = data.doubles.front();
    screen(console, "STEP :: {} Time :: {}", step, number(clock.time));
    return true;
}

}  // namespace

RestartPlots openRestartPlots(const Console& console, const RunOptions& options, std::string_view header) {
    RestartPlots plots;
    plots.base = outsideFile(options, header, "");
    for (std::size_t n = 0; n < PlotNames.size(); ++n)
        plots.files[n] = replaceTextOrStop(console, plots.base + std::string(PlotNames[n]));
    return plots;
}

void closeRestartPlots(const Console& console, RestartPlots& plots) {
    for (std::FILE*& file : plots.files) {
        if (file != nullptr) closeWhole(console, file);
        file = nullptr;
    }
}

ReadResult plotRestartBlocks(const Console& console, const RunOptions& options, const GridModel& grid,
                             int step, RecordReader& reader, RestartPlots& plots, RunClock& clock) {
    return readBlocks(reader, [&](const BlockHeader& header, const BlockData& data) {
        if (takeHead(console, grid, step, header, data, clock) || !holdsReals(header)) return ReadResult::Ok;
        const std::string_view keyword = view(header.keyword);
        for (const ZoneRow& row : Zones) {
            if (row.keyword != keyword) continue;
            logEmployed(console, header);
            const std::string title =
                row.title.empty() ? padded(keyword, keyword.size() + TitleGap) : std::string(row.title);
            addZone(options, grid, data.reals, clock.time, title, plots.files[row.file]);
            return ReadResult::Ok;
        }
        writeOwnFiles(console, options, grid, step, header, data.reals, clock.time, plots);
        return ReadResult::Ok;
    });
}

void input_RST2Tecplot(const Console& console, const RunOptions& options, const GridModel& grid,
                       std::string_view header, int firstStep, RunClock& clock) {
    logReaderStart(console, " Function Called : input_RST2Tecplot");
    RestartPlots plots = openRestartPlots(console, options, header);
    for (int step = firstStep; step <= LastStep; ++step) {
        RecordReader reader;
        if (open_read(outsideFile(options, header, ".X", step), ByteOrder::Big, reader) != 0) {
            if (step == 0) continue;
            break;
        }
        if (plotRestartBlocks(console, options, grid, step, reader, plots, clock) == ReadResult::Error)
            stopOnRecordFault(console, reader, "       Binary File Reading for *.EGRID ");
        close(reader);
    }
    clock.time = 0.0;
    closeRestartPlots(console, plots);
    logReaderEnd(console, " Function Ends Normally : input_RST2Tecplot");
}

}  // namespace kvr
