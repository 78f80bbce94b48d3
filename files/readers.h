// The image readers called by the open dispatcher, one per file format. Each takes the
// path and the shared image (the current chip record) and returns true when an image
// was loaded.
//
// HEX and BIN write straight into the shared image (a refused file may leave it partly
// overwritten, which is how these two formats have always behaved); QVM, SN8, BCT and
// FTC build a fresh record and replace the shared one only on success.
#pragma once

#include <filesystem>

#include "core/chip_params.h"
#include "core/home.h"
#include "core/host.h"

namespace lk {

bool ReadHexFile(Host& host, const Home& home, ChipParams& chip,
                 const std::filesystem::path& path);
bool ReadBinFile(Host& host, const Home& home, ChipParams& chip,
                 const std::filesystem::path& path);
bool ReadQvmFile(Host& host, const Home& home, ChipParams& chip,
                 const std::filesystem::path& path);
bool ReadSn8File(Host& host, const Home& home, ChipParams& chip,
                 const std::filesystem::path& path);
bool ReadBctFile(Host& host, const Home& home, ChipParams& chip,
                 const std::filesystem::path& path);
bool ReadFtcFile(Host& host, const Home& home, ChipParams& chip,
                 const std::filesystem::path& path);

}  // namespace lk
