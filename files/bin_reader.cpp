// BIN: the bare program area, two bytes per word, low byte first, word 0 first.
#include <string>

#include "files/model_rules.h"
#include "files/read_support.h"
#include "files/readers.h"

namespace lk {

bool ReadBinFile(Host& host, const Home&, ChipParams& chip, const std::filesystem::path& path) {
  std::string bytes;
  if (!files::ReadImageFile(host, path, files::kMaxBinaryFileBytes, bytes)) return false;
  const std::int64_t fullLength = 2 * (std::int64_t{chip.RomSize} + 1);
  const bool is51A1 = chip.Prod == "51A1";
  const auto length = static_cast<std::int64_t>(bytes.size());
  // The 51A1 parts keep their top 512 words to themselves (see ReadProgramArea), so
  // their files may leave them out.
  if (length != fullLength && !(is51A1 && length == fullLength - 1024)) return false;

  ReadProgramArea(bytes, 0, chip);
  // Deliberately the opposite of the HEX reader's rule for the same devices.
  if ((chip.Prod == "101E" || chip.Prod == "101F") && chip.ConfigWords.size() > 1) {
    chip.ConfigWords[1] |= 0x0010;
  }
  return true;
}

}  // namespace lk
