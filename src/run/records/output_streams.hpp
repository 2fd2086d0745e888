#pragma once

#include "base/console.hpp"
#include "run/records/output_table.hpp"

#include <cstdio>
#include <string>
#include <string_view>
#include <vector>

namespace kvr {

/// The open output set. Streams live until the process ends or `closeOutputs`.
struct OutputStreams {
    std::string folder;               // working folder path, joined directly to the names
    std::string prefix;               // stands for KVR in the names; empty: they have their own
    std::vector<std::FILE*> streams;  // by OutputFile; null before the set is opened
    std::FILE* summary = nullptr;     // KVR_Summary.csv; open while there are steps
};

/// The open stream of a file; null before the set is opened and after it is closed.
std::FILE* stream(const OutputStreams& outputs, OutputFile file);

/// Opens a file for writing in place of any old one, or stops with the open-failure texts and the path.
std::FILE* openForReplace(const Console& console, const std::string& path);
/// The same behind what the file holds.
std::FILE* openForAppend(const Console& console, const std::string& path);

/// Opens the whole set with replace under the set's prefix, writes the fixed heads of the tables, and
/// hands the log to the console.
void openOutputs(const std::string& folder, OutputStreams& outputs, Console& console);

/// Closes one file of the set and opens it empty again; the stream object stays the same.
void replaceOutput(const Console& console, OutputFile file, OutputStreams& outputs);

/// Path of a file written beside the set, replaced at every writing.
std::string outputPath(const OutputStreams& outputs, std::string_view name);

/// Opens a file that stands beside the fixed set, in place of any old one; the caller closes it.
std::FILE* openBeside(const Console& console, const OutputStreams& outputs, OutputFile file);

/// Hands everything written so far to the operating system, so that all files are readable up to here
/// even if the process is killed next.
void flushOutputs(const OutputStreams& outputs);

/// Closes everything up to stream 200; the log and the two copies stay open until `closeLog`. Whether all
/// was taken is told by `checkWritten` before.
void closeOutputs(OutputStreams& outputs);
void closeLog(OutputStreams& outputs, Console& console);

}  // namespace kvr
