#include "eclipse/file_names.hpp"

#include "base/text.hpp"

#include <filesystem>
#include <fmt/format.h>

namespace kvr {

namespace {

std::string numbered(std::string_view letters, int step) {
    return fmt::format("{}{:04d}", letters, step);
}

}  // namespace

std::string runFile(const RunOptions& options, std::string_view extension) {
    return std::string(trim(options.dataFileBase)) + std::string(extension);
}

std::string runFile(const RunOptions& options, std::string_view letters, int step) {
    return runFile(options, numbered(letters, step));
}

const std::string& outsideFolder(const RunOptions& options) {
    return options.deckFile.empty() ? options.workingFolder : options.deckFolder;
}

std::string outsideFile(const RunOptions& options, std::string_view header, std::string_view extension) {
    return outsideFolder(options) + std::string(trim(header)) + std::string(extension);
}

std::string outsideFile(const RunOptions& options, std::string_view header, std::string_view letters,
                        int step) {
    return outsideFile(options, header, numbered(letters, step));
}

bool fileExists(const std::string& path) {
    std::error_code ignored;
    return std::filesystem::is_regular_file(path, ignored);
}

}  // namespace kvr
