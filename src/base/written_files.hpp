#pragma once

#include "base/console.hpp"

#include <cstdio>
#include <string>
#include <vector>

namespace kvr {

/// A file that stays open while rows are added to it.
struct WrittenFile {
    std::FILE* file = nullptr;
    std::string path;
    long whole = 0;  // bytes that the operating system has taken and that end with a whole row
};

/// All of them. One instance for the run.
struct WrittenFiles {
    std::vector<WrittenFile> open;
};

/// Takes an open file under the watch of `checkWritten`, and out of it before it is closed. Nothing happens
/// where the console has no record of files.
void watchFile(const Console& console, std::FILE* file, const std::string& path);
void unwatchFile(const Console& console, std::FILE* file);

/// Hands everything written so far to the operating system and stops the run where it does not take it: no
/// space, a reader of the console that has gone, a file whose folder has vanished. Behind it all files are
/// readable up to here, even if the process is killed next. Called where all tables end with whole rows.
void checkWritten(const Console& console);

/// Closes a file that was written in one go. One that did not reach the disk whole is removed, and the run
/// stops.
void closeWhole(const Console& console, std::FILE* file);

/// Bytes that an open file has, written or read.
long lengthOf(std::FILE* file);

/// Closes a file that rows were added to behind its first `before` bytes; where they did not reach the disk
/// it ends there again, and the run stops.
void closeAppended(const Console& console, std::FILE* file, long before);

/// The stop of a run that cannot write: names the file and the reason, lets every watched file end with its
/// last whole row, waits for a line unless the console itself failed, exit status 1. `error` is an errno.
[[noreturn]] void stopOnWriteFailure(const Console& console, const std::string& path, int error);

/// Before an end for another reason: files that cannot take what is still to be written end with their last
/// whole row.
void settleFiles(const Console& console);

}  // namespace kvr
