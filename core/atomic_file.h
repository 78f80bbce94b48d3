// Writes a whole file so that a crash or a full disk never leaves it half written:
// temp file in the same folder, fsync, rename over the old one, fsync the folder.
//
// The temporary file is named ".lktmp-PID-XXXXXXXX" whatever the target is called, so a
// target with the longest name the file system accepts can still be written. A process
// killed during a save leaves its temporary file behind; the next write into that folder
// removes every such file whose process is gone. Files of any other name, files of
// processes still running and files of other users are never touched.
#pragma once

#include <sys/types.h>

#include <filesystem>
#include <string>
#include <string_view>

namespace lk {

// Returns false and sets error to a readable reason on any failure; the previous
// file is then untouched.
bool WriteFileAtomically(const std::filesystem::path& path, std::string_view bytes,
                         std::string& error);

// The name of a temporary file written by process pid ("serial" tells apart the files
// of one process).
std::string TempFileName(pid_t pid, unsigned serial);

}  // namespace lk
