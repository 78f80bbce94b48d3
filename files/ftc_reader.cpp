// FTC: seven bytes of model name (blank padded), four header bytes we do not use, then
// the program area from offset 11, two bytes per word, low byte first. Only files made
// for the 3PS86 part are accepted; they are loaded onto the selected model.
#include <algorithm>
#include <string>

#include "core/chip_database.h"
#include "files/read_support.h"
#include "files/readers.h"

namespace lk {

bool ReadFtcFile(Host& host, const Home& home, ChipParams& chip,
                 const std::filesystem::path& path) {
  std::string bytes;
  if (!files::ReadImageFile(host, path, files::kMaxBinaryFileBytes, bytes)) return false;
  // A file shorter than the name field names no model either.
  std::string_view name(bytes.data(), std::min<std::size_t>(bytes.size(), 7));
  while (!name.empty() && name.front() == ' ') name.remove_prefix(1);
  while (!name.empty() && name.back() == ' ') name.remove_suffix(1);
  if (name != "DW3PS86") {
    host.Message(Icon::Information, std::string("Only for ") + "3PS86" + " is Enabled!",
                 kAppTitle);
    return false;
  }
  ChipParams fresh = LoadChipParams(host, home, chip.Name);
  if (!fresh.Loaded() || fresh.RomSize < 0) return false;
  const std::size_t words = static_cast<std::size_t>(fresh.RomSize) + 1;
  if (bytes.size() < 11 + 2 * words || fresh.RomWords.size() < words) return false;
  files::CopyWords(bytes, 11, words, fresh.RomWords);
  chip = std::move(fresh);
  return true;
}

}  // namespace lk
