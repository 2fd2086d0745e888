#include "matching/perm_file.hpp"

#include "base/hard_stop.hpp"
#include "base/number_writer.hpp"
#include "base/written_files.hpp"
#include "eclipse/file_failure.hpp"
#include "matching/well_data_text.hpp"

#include <algorithm>
#include <array>
#include <charconv>
#include <fstream>
#include <iterator>

namespace kvr {

namespace {

constexpr std::array<std::string_view, 3> Keywords = {"PERMX", "PERMY", "PERMZ"};
constexpr std::string_view Separators = " \t\r\n,";
constexpr int ValuesPerLine = 6;
constexpr std::size_t MostValues = std::size_t{1} << 31U;

/// Next word from `at` on, past comments; empty at the end.
std::string_view nextWord(std::string_view text, std::size_t& at) {
    for (;;) {
        at = std::min(text.find_first_not_of(Separators, at), text.size());
        if (!text.substr(at).starts_with("--")) break;
        at = std::min(text.find('\n', at), text.size());
    }
    std::size_t end = at;
    while (end < text.size() && Separators.find(text[end]) == Separators.npos && text[end] != '/') ++end;
    if (end == at && end < text.size()) ++end;  // the slash
    const std::string_view word = text.substr(at, end - at);
    at = end;
    return word;
}

bool addValues(std::string_view word, std::vector<double>& values) {
    std::size_t count = 1;
    if (const std::size_t star = word.find('*'); star != word.npos) {
        const auto [stop, status] = std::from_chars(word.data(), word.data() + star, count);
        if (status != std::errc() || stop != word.data() + star) return false;
        word.remove_prefix(star + 1);
    }
    const std::optional<double> value = numberOf(word);
    if (!value || count > MostValues - values.size()) return false;
    values.insert(values.end(), count, *value);
    return true;
}

bool takeBlock(std::string_view text, std::size_t& at, PermBlock& block) {
    block.begin = at;
    for (;;) {
        const std::size_t before = at;
        const std::string_view word = nextWord(text, at);
        if (word.empty()) return false;
        if (word == "/") {
            block.end = at - 1;
            return true;
        }
        block.end = before;
        if (!addValues(word, block.values)) return false;
    }
}

[[noreturn]] void stopOnPermFile(const Console& console, const std::string& path, std::string_view what) {
    both(console, "ERROR :: PERMFILE: {}", what);
    lineToBoth(console, path);
    hardStop(console);
}

void putValues(NumberWriter& writer, const PermBlock& block, const CellArray<double>& ratio) {
    for (std::size_t n = 0; n < block.values.size(); ++n) {
        put(writer, n % ValuesPerLine == 0 ? "\n" : " ");
        putNumber(writer, block.values[n] * ratio[static_cast<CellId>(n + 1)]);
    }
    put(writer, "\n");
}

}  // namespace

bool findPermBlocks(std::string_view text, std::vector<PermBlock>& blocks) {
    blocks.clear();
    for (std::size_t at = 0; at < text.size();) {
        const std::string_view word = nextWord(text, at);
        if (std::find(Keywords.begin(), Keywords.end(), word) == Keywords.end()) continue;
        PermBlock block;
        if (!takeBlock(text, at, block)) return false;
        blocks.push_back(std::move(block));
    }
    return true;
}

PermFile readPermFile(const Console& console, const std::string& path, CellId cells) {
    PermFile file;
    file.path = path;
    std::ifstream stream(path, std::ios::binary);
    if (!stream) stopOnPermFile(console, path, "the file cannot be read");
    file.text.assign(std::istreambuf_iterator<char>(stream), {});
    if (!findPermBlocks(file.text, file.blocks))
        stopOnPermFile(console, path, "a permeability is no list of numbers that ends with a slash");
    if (file.blocks.empty()) stopOnPermFile(console, path, "the file has no PERMX, PERMY or PERMZ");
    for (const PermBlock& block : file.blocks)
        if (block.values.size() != static_cast<std::size_t>(cells))
            stopOnPermFile(console, path,
                           fmt::format("{} values for the {} cells of the grid", block.values.size(), cells));
    return file;
}

void writePermFile(const Console& console, const PermFile& file, const CellArray<double>& ratio) {
    NumberWriter writer;
    writer.file = replaceTextOrStop(console, file.path);
    std::size_t at = 0;
    for (const PermBlock& block : file.blocks) {
        put(writer, std::string_view(file.text).substr(at, block.begin - at));
        putValues(writer, block, ratio);
        at = block.end;
    }
    put(writer, std::string_view(file.text).substr(at));
    flush(writer);
    closeWhole(console, writer.file);
}

}  // namespace kvr
