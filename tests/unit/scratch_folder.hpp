#pragma once

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>

namespace kvr {

/// A folder of its own for one test, removed with everything in it when the test ends.
struct ScratchFolder {
    ScratchFolder() {
        std::string pattern = (std::filesystem::temp_directory_path() / "kvr_unit_XXXXXX").string();
        path = ::mkdtemp(pattern.data());
        path += "/";
    }
    ~ScratchFolder() { std::filesystem::remove_all(path); }
    ScratchFolder(const ScratchFolder&) = delete;
    ScratchFolder& operator=(const ScratchFolder&) = delete;

    [[nodiscard]] std::string read(const std::string& name) const { return readFile(path + name); }
    void write(const std::string& name, const std::string& text) const { std::ofstream(path + name) << text; }

    static std::string readFile(const std::string& file) {
        std::ifstream in(file);
        std::ostringstream text;
        text << in.rdbuf();
        return text.str();
    }

    std::string path;  // ends with its separator
};

}  // namespace kvr
