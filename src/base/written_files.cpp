#include "base/written_files.hpp"

#include "base/messages.hpp"

#include <algorithm>
#include <array>
#include <cerrno>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace kvr {

namespace {

constexpr const char* ConsoleName = "the console";
constexpr int Removed = -1;  // in place of an errno: the file is no longer in any folder

/// Path of an open file, as the operating system keeps it.
std::string pathOf(std::FILE* file) {
    constexpr std::string_view DeletedMark = " (deleted)";
    std::array<char, PATH_MAX> text{};
    const std::string link = fmt::format("/proc/self/fd/{}", fileno(file));
    const ssize_t length = readlink(link.c_str(), text.data(), text.size());
    std::string path(text.data(), length > 0 ? static_cast<std::size_t>(length) : 0);
    if (path.ends_with(DeletedMark)) path.resize(path.size() - DeletedMark.size());
    return path;
}

/// The reason of a failure that has left its mark on the stream and no errno: that of another try, whose byte
/// goes with the rest of a file that cannot be written.
int pastFailure(std::FILE* file) {
    errno = 0;
    return write(fileno(file), "\n", 1) < 0 && errno != 0 ? errno : EIO;
}

bool isRegular(std::FILE* file) {
    struct stat status {};
    return fstat(fileno(file), &status) == 0 && S_ISREG(status.st_mode);
}

/// 0, an errno, or Removed.
int failureOf(std::FILE* file) {
    errno = 0;
    if (std::fflush(file) != 0) return errno != 0 ? errno : EIO;
    if (std::ferror(file) != 0) return pastFailure(file);
    struct stat status {};
    if (fstat(fileno(file), &status) == 0 && S_ISREG(status.st_mode) && status.st_nlink == 0) return Removed;
    return 0;
}

/// Whatever is still in the buffer of the stream goes nowhere: the end of the process would write it.
void cutLoose(std::FILE* file) {
    const int nowhere = open("/dev/null", O_WRONLY | O_CLOEXEC);
    if (nowhere < 0) return;
    dup2(nowhere, fileno(file));
    close(nowhere);
}

void cutBack(std::FILE* file, long length) {
    if (ftruncate(fileno(file), length) == 0) lseek(fileno(file), length, SEEK_SET);
}

/// A line into a log whose stream no longer works.
void writeRaw(std::FILE* file, const std::string& text) {
    const ssize_t written = write(fileno(file), text.data(), text.size());
    static_cast<void>(written);  // there is nowhere left to tell of it
}

/// The log keeps what it has where it can; the tables end together.
void endWithWholeRows(const Console& console, const std::string& lastWords) {
    if (console.files == nullptr) return;
    for (const WrittenFile& written : console.files->open) {
        const bool isLog = written.file == console.log;
        if (!isLog || failureOf(written.file) != 0) cutBack(written.file, written.whole);
        if (isLog) writeRaw(written.file, lastWords);
        cutLoose(written.file);
    }
}

std::string reasonText(int error) {
    return error == Removed ? "the file or its folder has been removed" : std::strerror(error);
}

}  // namespace

void watchFile(const Console& console, std::FILE* file, const std::string& path) {
    if (console.files == nullptr || file == nullptr) return;
    console.files->open.push_back({file, path, std::max(0L, std::ftell(file))});
}

void unwatchFile(const Console& console, std::FILE* file) {
    if (console.files == nullptr) return;
    std::erase_if(console.files->open, [file](const WrittenFile& row) { return row.file == file; });
}

void checkWritten(const Console& console) {
    if (console.screen != nullptr)
        if (const int error = failureOf(console.screen); error > 0)
            stopOnWriteFailure(console, ConsoleName, error);
    if (console.files == nullptr) return;
    for (const WrittenFile& written : console.files->open)
        if (const int error = failureOf(written.file); error != 0)
            stopOnWriteFailure(console, written.path, error);
    for (WrittenFile& written : console.files->open) written.whole = std::ftell(written.file);
}

void closeWhole(const Console& console, std::FILE* file) {
    const int error = failureOf(file);
    if (error <= 0) {
        std::fclose(file);
        return;
    }
    const std::string path = pathOf(file);
    const bool removable = isRegular(file);  // a device stays where it is
    cutLoose(file);
    std::fclose(file);
    if (removable) std::remove(path.c_str());
    stopOnWriteFailure(console, path, error);
}

long lengthOf(std::FILE* file) {
    return std::fseek(file, 0, SEEK_END) == 0 ? std::max(0L, std::ftell(file)) : 0;
}

void closeAppended(const Console& console, std::FILE* file, long before) {
    const int error = failureOf(file);
    if (error <= 0) {
        std::fclose(file);
        return;
    }
    const std::string path = pathOf(file);
    cutBack(file, before);
    cutLoose(file);
    std::fclose(file);
    stopOnWriteFailure(console, path, error);
}

void stopOnWriteFailure(const Console& console, const std::string& path, int error) {
    const std::string text = fmt::format("ERROR :: CANNOT WRITE {} :: {}", path, reasonText(error));
    constexpr std::string_view State = "The tables end with their last whole row.";
    if (console.messages != nullptr) ++console.messages->errors;
    endWithWholeRows(console, fmt::format("{}\n{}\n", text, State));
    if (path == ConsoleName) {
        std::fprintf(stderr, "%s\n", text.c_str());
        cutLoose(console.screen);
    } else {
        clearStatus(console);
        lineToScreenAlways(console, text);
        lineToScreenAlways(console, State);
        waitForLine(console);
    }
    std::exit(EXIT_FAILURE);
}

void settleFiles(const Console& console) {
    if (console.files == nullptr) return;
    for (const WrittenFile& written : console.files->open) {
        if (failureOf(written.file) <= 0) continue;
        cutBack(written.file, written.whole);
        cutLoose(written.file);
    }
}

}  // namespace kvr
