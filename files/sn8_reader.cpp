// SN8: a 256-byte header followed by the whole program area, two bytes per word, low
// byte first. Only the size identifies the file: 256 + 2 x (RomSize + 1) bytes for the
// selected model exactly.
#include <string>

#include "core/chip_database.h"
#include "files/read_support.h"
#include "files/readers.h"

namespace lk {

bool ReadSn8File(Host& host, const Home& home, ChipParams& chip,
                 const std::filesystem::path& path) {
  std::string bytes;
  if (!files::ReadImageFile(host, path, files::kMaxBinaryFileBytes, bytes)) return false;
  ChipParams fresh = LoadChipParams(host, home, chip.Name);
  if (!fresh.Loaded() || fresh.RomSize < 0) return false;
  const std::size_t words = static_cast<std::size_t>(fresh.RomSize) + 1;
  if (bytes.size() != 256 + 2 * words || fresh.RomWords.size() < words) return false;
  files::CopyWords(bytes, 256, words, fresh.RomWords);
  // The top four words belong to the chip; the tools that make SN8 files fill them
  // with their own data.
  for (std::size_t i = 1020; i <= 1023 && i < fresh.RomWords.size(); ++i) {
    fresh.RomWords[i] = 0xFFFF;
  }
  chip = std::move(fresh);
  return true;
}

}  // namespace lk
