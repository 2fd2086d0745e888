#include "eclipse/file_failure.hpp"

#include "base/hard_stop.hpp"

#include <cerrno>

namespace kvr {

namespace {

void tellStatus(const Console& console, int status, std::string_view lastLine) {
    if (status == OpenErrorStatus) return lineToBoth(console, "ERROR: File Open Error");
    if (status == HandlingErrorStatus) return lineToBoth(console, "ERROR: File handling Error");
    lineToBoth(console, "");
    both(console, "ERROR: File handling error, code = {}", status);
    lineToBoth(console, lastLine);
}

}  // namespace

void tellFileStatus(const Console& console, int status, const std::string& path, std::string_view lastLine) {
    tellStatus(console, status, lastLine);
    lineToBoth(console, path);
}

void stopOnFileStatus(const Console& console, int status, const std::string& path,
                      std::string_view lastLine) {
    tellFileStatus(console, status, path, lastLine);
    hardStop(console);
}

void tellFaultPlace(const Console& console, const RecordReader& reader) {
    both(console, "{}: byte {}: {}", reader.path, reader.fault.offset, reader.fault.what);
}

void stopOnRecordFault(const Console& console, const RecordReader& reader, std::string_view lastLine) {
    if (reader.fault.status == RecordFault::NoMemory) {
        lineToBoth(console, "");
        both(console, "ERROR: Memory Allocation Error, code = {}", reader.fault.status);
    } else {
        tellStatus(console, reader.fault.status, lastLine);
    }
    tellFaultPlace(console, reader);
    hardStop(console);
}

void openOrStop(const Console& console, const std::string& path, RecordWriter& writer) {
    const int status = open_write(path, writer);
    if (status != 0) stopOnFileStatus(console, status, path);
}

std::FILE* replaceTextOrStop(const Console& console, const std::string& path) {
    errno = 0;
    std::FILE* file = std::fopen(path.c_str(), "w");
    if (file == nullptr) stopOnFileStatus(console, errno, path);
    return file;
}

void closeOrStop(const Console& console, RecordWriter& writer) {
    errno = 0;
    if (close(writer)) return;
    std::remove(writer.path.c_str());  // a part of a file would be read as one
    stopOnFileStatus(console, errno == 0 ? HandlingErrorStatus : errno, writer.path);
}

void tellGenerated(const Console& console, const std::string& path) {
    log(console, "File Generated : {}", path);
}

}  // namespace kvr
