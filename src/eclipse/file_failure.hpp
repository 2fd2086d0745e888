#pragma once

#include "base/console.hpp"
#include "eclipse/records.hpp"

#include <cstdio>
#include <string>
#include <string_view>

namespace kvr {

/// Last line of the report on a file that cannot be written; readers close with it too.
inline constexpr std::string_view CannotCreate = "       Cannot create file for output. Check Directry path.";

/// The report on a file by its status (-1, -2, others) and the path.
void tellFileStatus(const Console& console, int status, const std::string& path,
                    std::string_view lastLine = CannotCreate);

/// The report on a file by its status (-1, -2, others), the path, then the stop. `lastLine` closes the
/// report of the other statuses.
[[noreturn]] void stopOnFileStatus(const Console& console, int status, const std::string& path,
                                   std::string_view lastLine = CannotCreate);

/// The same for what went wrong while reading, with the place in the file.
[[noreturn]] void stopOnRecordFault(const Console& console, const RecordReader& reader,
                                    std::string_view lastLine = CannotCreate);

/// "path: byte 123: what", the line that every failure of reading ends with.
void tellFaultPlace(const Console& console, const RecordReader& reader);

/// Opens a file for writing or stops.
void openOrStop(const Console& console, const std::string& path, RecordWriter& writer);
/// Opens a text file in place of any old one or stops; the caller closes it.
std::FILE* replaceTextOrStop(const Console& console, const std::string& path);
/// Closes a written file; stops when it did not reach the disk whole.
void closeOrStop(const Console& console, RecordWriter& writer);

/// The log line that closes the writing of most files.
void tellGenerated(const Console& console, const std::string& path);

}  // namespace kvr
