// BCT: the project-file layout without the model name. The model is the code at offsets
// 144-145; configuration word i at 160 + 2i, program word i at 256 + 2i, all low byte
// first. Opening a BCT file switches the selected model.
#include <string>

#include "core/chip_database.h"
#include "files/read_support.h"
#include "files/readers.h"

namespace lk {
namespace {

// 1031 was never given to a part: it refuses the file like any unknown code.
const char* BctModel(std::int32_t code) {
  switch (code) {
    case 1029:
      return "LK3P86E";
    case 1030:
      return "LK3P89E";
    case 1032:
      return "LK3P48A";
    case 1033:
      return "LK3PS89";
    default:
      return nullptr;
  }
}

}  // namespace

bool ReadBctFile(Host& host, const Home& home, ChipParams& chip,
                 const std::filesystem::path& path) {
  std::string bytes;
  if (!files::ReadImageFile(host, path, files::kMaxBinaryFileBytes, bytes)) return false;
  if (bytes.size() < 256) return false;
  const char* model = BctModel(files::WordAt(bytes, 144));
  if (model == nullptr) return false;
  ChipParams fresh = LoadChipParams(host, home, model);
  if (!fresh.Loaded() || fresh.RomSize < 0) return false;
  const std::size_t words = static_cast<std::size_t>(fresh.RomSize) + 1;
  // At least the whole program area after the header; a longer file is accepted.
  if (bytes.size() < 256 + 2 * words || fresh.RomWords.size() < words) return false;
  files::CopyWords(bytes, 160, (256 - 160) / 2, fresh.ConfigWords);
  files::CopyWords(bytes, 256, words, fresh.RomWords);
  chip = std::move(fresh);
  return true;
}

}  // namespace lk
