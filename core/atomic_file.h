// Writes a whole file so that a crash or a full disk never leaves it half written:
// temp file in the same folder, fsync, rename over the old one, fsync the folder.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>

namespace lk {

// Returns false and sets error to a readable reason on any failure; the previous
// file is then untouched.
bool WriteFileAtomically(const std::filesystem::path& path, std::string_view bytes,
                         std::string& error);

}  // namespace lk
