// Small valid binary files, damaged in every way, against the record layer and each reader: they must end,
// with a result or with a fault that has a place, and take no more memory than the file can ask for.
// KVR_MUTATIONS sets how many damaged files are tried.

#include "eclipse/activity_reader.hpp"
#include "eclipse/grid_file.hpp"
#include "eclipse/grid_reader.hpp"
#include "eclipse/init_file.hpp"
#include "eclipse/init_reader.hpp"
#include "eclipse/line_files.hpp"
#include "eclipse/restart_file.hpp"
#include "eclipse/restart_plots.hpp"
#include "eclipse/rft_file.hpp"
#include "eclipse/summary_files.hpp"
#include "eclipse/summary_reader.hpp"
#include "unit/eclipse/record_bytes.hpp"
#include "unit/eclipse/small_case.hpp"

#include <cstdlib>
#include <filesystem>
#include <gtest/gtest.h>
#include <malloc.h>
#include <random>
#include <unistd.h>

namespace {

// Memory that is held through operator new, and its peak since the last reset.
std::size_t heldBytes = 0;
std::size_t peakBytes = 0;

}  // namespace

void* operator new(std::size_t size) {
    void* place = std::malloc(size == 0 ? 1 : size);
    if (place == nullptr) throw std::bad_alloc();
    heldBytes += malloc_usable_size(place);
    peakBytes = std::max(peakBytes, heldBytes);
    return place;
}
void operator delete(void* place) noexcept {
    if (place != nullptr) heldBytes -= malloc_usable_size(place);
    std::free(place);
}
void operator delete(void* place, std::size_t) noexcept {
    operator delete(place);
}

namespace kvr {
namespace {

constexpr std::size_t FilesShare = 4;          // of a file's size that reading it may hold in memory
constexpr std::size_t FixedShare = 64 * 1024;  // bytes beside it: names, the model of six cells
constexpr unsigned LongestRead = 20;           // s, for any file
constexpr int DefaultCount = 3000;

const Console Silent{nullptr, nullptr, nullptr};

std::vector<std::string> twoWells() {
    return {"I1", "P1"};
}

std::string integers(std::string_view keyword, const std::vector<std::int32_t>& values) {
    std::string payload;
    for (const std::int32_t value : values) payload += bigEndian32(static_cast<std::uint32_t>(value));
    return headerOf(keyword, static_cast<std::uint32_t>(values.size()), "INTE") + recordOf(payload);
}

std::string gridBytes(const GridModel& grid) {
    std::string bytes = integers("DIMENS  ", {grid.NX, grid.NY, grid.NZ});
    for (CellId cell = 1; cell <= grid.NCELLS; ++cell) {
        bytes += integers("COORDS  ", {grid.CellI[cell], grid.CellJ[cell], grid.CellK[cell], cell, 1});
        std::string corners;
        for (int n = 0; n < 24; ++n)
            corners += bigEndian32(std::bit_cast<std::uint32_t>(cornerOf(grid, cell, 1)[n]));
        bytes += headerOf("CORNERS ", 24, "REAL") + recordOf(corners);
    }
    return bytes;
}

/// The same .GRID file in the other byte order.
std::string littleEndian(const std::string& bytes) {
    std::string turned;
    for (std::size_t at = 0; at < bytes.size();) {
        const std::size_t length = static_cast<unsigned char>(bytes[at + 3]);
        const std::string record = bytes.substr(at, length + 8);
        const bool header = length == 16 && record[4] >= 'A' && record[4] <= 'Z';
        turned += header ? reversedGroups(record.substr(0, 4), 0, 4) + record.substr(4, 8) +
                               reversedGroups(record.substr(12, 4), 0, 4) + record.substr(16, 4) +
                               reversedGroups(record.substr(20, 4), 0, 4)
                         : reversedGroups(record, 0, 4);
        at += length + 8;
    }
    return turned;
}

/// A whole set of files of a model of six cells, one of them inactive, with two wells.
struct Corpus {
    Corpus() : small(3, 2, 1) {
        small.run.grid.Active[4] = 0;
        small.run.options.outputSln = "Yes";
        small.addWell("I1", "inj", {1});
        small.addWell("P1", "prd", {6});
        Simulation& run = small.run;
        writeGridFile(run.console, run.options, run.grid);
        writeInitFile(run.console, run.options, run.units, run.grid, run.connections);
        writeRestartFile(run.console, run.options, run.clock, run.grid, run.state,
                         {run.units, run.connections, run.velocity}, run.lines.diagnostics);
        writeSummarySpec(run.console, run.options, run.grid, {"I1", "P1"});
        writeSummaryStep(run.console, run.options, run.clock, std::vector<SummaryFigures>(2));
        addRftRecords(run.console, run.options, run.clock, run.grid, run.state, run.wells, run.eclipse);
        writeLineSpec(run.console, run.options, run.grid, {"I1", "P1"}, run.eclipse.paths);
        for (const char* extension : {".EGRID", ".INIT", ".X0001", ".SMSPEC", ".S0001", ".RFT", ".SLNSPEC"})
            files.push_back(small.folder.read(std::string("CASE") + extension));
        files.push_back(gridBytes(run.grid));
        files.push_back(littleEndian(files.back()));
    }
    SmallCase small;
    std::vector<std::string> files;
};

using Random = std::mt19937_64;

std::size_t below(std::size_t bound, Random& random) {
    return bound == 0 ? 0 : static_cast<std::size_t>(random() % bound);
}

constexpr std::uint32_t Remarkable[] = {0,    1,          0xffffffff, 0x7fffffff, 0x80000000, 4,      6,
                                        16,   24,         105,        106,        1000,       1001,   4000,
                                        4004, 0x01000000, 0x03000000, 0x10000000, 0x20000000, 0xfffff};
constexpr std::string_view Words[] = {"DIMENS  ", "COORDS  ", "CORNERS ", "ACTNUM  ", "INTEHEAD", "PORV    ",
                                      "TRANX   ", "PERMX   ", "KEYWORDS", "WGNAMES ", "NUMS    ", "PARAMS  ",
                                      "DOUBHEAD", "PRESSURE", "SWAT    ", "../../AB", "INTE",     "REAL",
                                      "DOUB",     "LOGI",     "CHAR",     "MESS"};

void overwrite(std::string& bytes, std::size_t at, std::string_view with) {
    for (std::size_t n = 0; n < with.size() && at + n < bytes.size(); ++n) bytes[at + n] = with[n];
}

/// A place where a header of the file begins, or any place.
std::size_t somePlace(const std::string& bytes, Random& random) {
    if (below(2, random) == 0) return below(bytes.size(), random);
    const std::size_t from = below(bytes.size(), random);
    const std::size_t found = bytes.find(std::string("\0\0\0\x10", 4), from);
    return found == std::string::npos ? from : found;
}

void damage(std::string& bytes, Random& random) {
    if (bytes.empty()) return;
    const std::size_t at = somePlace(bytes, random);
    switch (below(9, random)) {
        case 0:
            bytes[at] = static_cast<char>(bytes[at] ^ (1 << below(8, random)));
            break;
        case 1:
            bytes[at] = static_cast<char>(random());
            break;
        case 2:
            overwrite(bytes, at, bigEndian32(Remarkable[below(std::size(Remarkable), random)]));
            break;
        case 3:
            overwrite(bytes, at + 12, bigEndian32(Remarkable[below(std::size(Remarkable), random)]));
            break;
        case 4:
            bytes.resize(at);
            break;
        case 5:
            bytes.erase(at, 1 + below(64, random));
            break;
        case 6:
            bytes.insert(at, bytes.substr(somePlace(bytes, random), 1 + below(256, random)));
            break;
        case 7:
            overwrite(bytes, at + 4 + 12 * below(2, random), Words[below(std::size(Words), random)]);
            break;
        default:
            overwrite(bytes, at, bigEndian32(static_cast<std::uint32_t>(random())));
            break;
    }
}

// --- readers
// -------------------------------------------------------------------------------------------------

struct Bench {
    Corpus corpus;
    std::string folder;
    RestartPlots plots;
};

ReadResult walk(RecordReader& reader, bool skip) {
    BlockData data;
    for (;;) {
        BlockHeader header;
        ReadResult result = read_header(reader, header);
        if (result == ReadResult::EndOfFile) return ReadResult::Ok;
        if (result == ReadResult::Ok)
            result = skip ? skip_block(reader, header) : read_block(reader, header, data);
        if (result == ReadResult::Error) return result;
    }
}

struct ReaderRow {
    const char* name;
    ReadResult (*read)(Bench& bench, RecordReader& reader);
};

const ReaderRow Readers[] = {
    {"blocks", [](Bench&, RecordReader& reader) { return walk(reader, false); }},
    {"skipped blocks", [](Bench&, RecordReader& reader) { return walk(reader, true); }},
    {"grid of a new model",
     [](Bench&, RecordReader& reader) {
         GridModel grid;
         return readGridBlocks(Silent, reader, grid);
     }},
    {"grid",
     [](Bench& bench, RecordReader& reader) {
         return readGridBlocks(Silent, reader, bench.corpus.small.run.grid);
     }},
    {"activity",
     [](Bench& bench, RecordReader& reader) {
         return readActivityBlocks(Silent, reader, bench.corpus.small.run.grid);
     }},
    {"properties of a new model",
     [](Bench& bench, RecordReader& reader) {
         GridModel grid;
         ConnectionTable connections;
         InitDifferences differences;
         return readInitBlocks(Silent, bench.corpus.small.run.options, {}, reader, grid, connections,
                               differences);
     }},
    {"properties",
     [](Bench& bench, RecordReader& reader) {
         Simulation& run = bench.corpus.small.run;
         InitDifferences differences;
         return readInitBlocks(Silent, run.options, run.units, reader, run.grid, run.connections,
                               differences);
     }},
    {"summary index",
     [](Bench&, RecordReader& reader) {
         SummarySpec spec;
         SummaryResponse response;
         const ReadResult result = readSummarySpec(Silent, reader, spec);
         if (result == ReadResult::Ok) planResponse(Silent, spec, 2, twoWells(), response);
         return result;
     }},
    {"summary step",
     [](Bench&, RecordReader& reader) {
         SummarySpec spec;
         for (const char* name : {"TIME", "WOPR", "CVFR"}) {
             spec.keywords.push_back(text8(name));
             spec.wells.push_back(text8("P1"));
         }
         spec.vectorCount = 34;
         SummaryResponse response;
         const SummaryPlan plan = planResponse(Silent, spec, 0, twoWells(), response);
         StepFit fit = StepFit::Fits;
         return readSummaryStep(reader, spec, plan, response, fit);
     }},
    {"restart to plots",
     [](Bench& bench, RecordReader& reader) {
         RunClock clock;
         return plotRestartBlocks(Silent, {}, bench.corpus.small.run.grid, 1, reader, bench.plots, clock);
     }},
};

std::string tried(int number, const std::string& bytes, Bench& bench) {
    const std::string path = bench.folder + "DAMAGED";
    std::FILE* file = std::fopen(path.c_str(), "wb");
    std::fwrite(bytes.data(), 1, bytes.size(), file);
    std::fclose(file);
    for (const ReaderRow& row : Readers) {
        RecordReader reader;
        if (open_read(path, ByteOrder::Big, reader) != 0) return "could not be opened";
        ::alarm(LongestRead);
        peakBytes = heldBytes;
        const std::size_t before = heldBytes;
        const ReadResult result = row.read(bench, reader);
        const std::size_t taken = peakBytes - before;
        ::alarm(0);
        const bool placed = result != ReadResult::Error ||
                            (reader.fault.offset <= bytes.size() && !reader.fault.what.empty());
        close(reader);
        if (!placed) return fmt::format("file {}, {}: a fault without a place", number, row.name);
        if (taken > FilesShare * bytes.size() + FixedShare)
            return fmt::format("file {}, {}: {} bytes held for a file of {}", number, row.name, taken,
                               bytes.size());
    }
    return {};
}

int mutationCount() {
    const char* asked = std::getenv("KVR_MUTATIONS");
    return asked == nullptr ? DefaultCount : std::atoi(asked);
}

TEST(DamagedBinaryFiles, EndWithAResultOrAFaultAndHoldNoMoreThanTheirSizeAllows) {
    Bench bench;
    std::string pattern = (std::filesystem::temp_directory_path() / "kvr_damaged_XXXXXX").string();
    bench.folder = std::string(::mkdtemp(pattern.data())) + "/";
    bench.plots.base = bench.folder + "CASE";
    for (std::FILE*& file : bench.plots.files) file = std::fopen("/dev/null", "w");
    const int count = mutationCount();
    for (int number = 0; number < count; ++number) {
        Random random(static_cast<std::uint64_t>(number));
        std::string bytes = bench.corpus.files[static_cast<std::size_t>(number) % bench.corpus.files.size()];
        for (std::size_t n = 1 + below(4, random); n > 0; --n) damage(bytes, random);
        const std::string complaint = tried(number, bytes, bench);
        ASSERT_EQ(complaint, "");
    }
    closeRestartPlots(Console{nullptr, nullptr, nullptr}, bench.plots);
    std::filesystem::remove_all(bench.folder);
}

TEST(WholeBinaryFiles, AreTakenByTheirReaders) {
    Bench bench;
    const std::string path = bench.corpus.small.path(".INIT");
    RecordReader reader;
    ASSERT_EQ(open_read(path, ByteOrder::Big, reader), 0);
    EXPECT_EQ(Readers[6].read(bench, reader), ReadResult::Ok);
    ASSERT_EQ(open_read(bench.corpus.small.path(".SMSPEC"), ByteOrder::Big, reader), 0);
    EXPECT_EQ(Readers[7].read(bench, reader), ReadResult::Ok);
    close(reader);
}

}  // namespace
}  // namespace kvr
