#include "eclipse/end_file.hpp"

#include "base/written_files.hpp"
#include "eclipse/file_failure.hpp"
#include "eclipse/file_names.hpp"

#include <array>
#include <cerrno>
#include <filesystem>

namespace kvr {

namespace {

constexpr int LastClearedStep = 1000;

void deleteFile(const Console& console, const std::string& path) {
    if (!fileExists(path)) return;
    std::error_code failure;
    if (std::filesystem::remove(path, failure))
        log(console, " ECLIPSE File Deleted : {}", path);
    else
        log(console, " File Access Error while deleting : {}", path);
}

void deleteSilently(const std::string& path) {
    std::error_code ignored;
    if (fileExists(path)) std::filesystem::remove(path, ignored);
}

}  // namespace

void Output_ECLEND_Normal(const Console& console, const RunOptions& options, const MessageRecord& messages,
                          int problems) {
    struct CountRow {
        std::string_view kind;
        int count;
    };
    const std::array<CountRow, 5> rows = {{{"Comments", 0},
                                           {"Warnings", warningCount(messages)},
                                           {"Problems", problems},
                                           {"Errors", messages.errors},
                                           {"Bugs", 0}}};
    const std::string path = runFile(options, ".ECLEND");
    errno = 0;
    std::FILE* file = std::fopen(path.c_str(), "w");
    if (file == nullptr) stopOnFileStatus(console, errno, path);
    std::fputs(" Error summary\n", file);
    for (const CountRow& row : rows)
        std::fputs(fmt::format(" {:<20} {}\n", row.kind, row.count).c_str(), file);
    closeWhole(console, file);
    log(console, " File Generated : {}", path);
    lineToLog(console, " Function Ends Normally  : Output_ECLEND_Normal");
}

void clear_ECLIPSE_Data(const Console& console, const std::string& base) {
    RunOptions names;
    names.dataFileBase = base;
    deleteFile(console, runFile(names, ".RFT"));
    deleteFile(console, runFile(names, ".ECLEND"));
    int step = 0;
    for (; step <= LastClearedStep; ++step) {
        const std::string restart = runFile(names, ".X", step);
        if (step > 0 && !fileExists(restart)) break;
        deleteSilently(restart);
        deleteSilently(runFile(names, ".S", step));
    }
    both(console, " ECLIPSE Pre-Run File Deleted from 0 to {}", step);
    lineToLog(console, " Function Ends Normally  : clear_ECLIPSE_Data");
}

}  // namespace kvr
