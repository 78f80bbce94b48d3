#include "files/project_file.h"

#include <algorithm>
#include <cctype>

#include "core/atomic_file.h"
#include "core/chip_database.h"
#include "core/image.h"
#include "files/model_rules.h"
#include "files/read_support.h"

namespace lk {
namespace {

constexpr std::size_t kHeaderBytes = 256;
constexpr std::size_t kFlagOffset = 128;
constexpr std::size_t kConfigOffset = 160;
// The rotated models' program area is always 2048 words, whatever the record says.
constexpr std::size_t kRotatedAreaEnd = 4352;

std::string ReadModelName(const std::string& bytes) {
  std::string name;
  for (std::size_t i = 0; i < 16 && i < bytes.size(); ++i) {
    const char c = bytes[i];
    if (c == '!') break;
    if (c != ' ') name += c;  // every byte is trimmed on its own: inner blanks vanish
  }
  // The two models share one record.
  if (name == "QVM75FH86") name = "QVM75FH88";
  return name;
}

// Value of a hex field the way the document text is read: leading hex digits, else 0.
std::uint8_t LenientHexByte(std::string_view digits) {
  std::uint32_t value = 0;
  for (char c : digits) {
    std::uint32_t d;
    if (!files::ParseHexField(std::string_view(&c, 1), d)) break;
    value = (value << 4) | d;
  }
  return static_cast<std::uint8_t>(value);
}

}  // namespace

bool ReadProjectFile(Host& host, const Home& home, ChipParams& chip,
                     const std::filesystem::path& path) {
  std::string bytes;
  if (!files::ReadImageFile(host, path, files::kMaxBinaryFileBytes, bytes)) return false;

  const std::string fileModel = ReadModelName(bytes);
  if (fileModel.empty()) return false;
  ChipParams fresh = LoadChipParams(host, home, ResolveModelAlias(fileModel));
  if (!fresh.Loaded() || fresh.RomSize < 0) return false;

  const bool hasEedata =
      bytes.size() > kFlagOffset && static_cast<std::uint8_t>(bytes[kFlagOffset]) == kEeFlagPresent;
  const std::int64_t romBytes = (std::int64_t{fresh.RomSize} + 1) * 2;
  std::int64_t expectedLast = romBytes + 255;
  if (hasEedata) expectedLast += std::int64_t{fresh.EeSize} + 1;
  const auto fileLast = static_cast<std::int64_t>(bytes.size()) - 1;
  if (fresh.Prod == "51A1" && fileLast != expectedLast) expectedLast -= 1024;
  if (fileLast != expectedLast) return false;

  files::CopyWords(bytes, kConfigOffset, (kHeaderBytes - kConfigOffset) / 2, fresh.ConfigWords);

  ReadProgramArea(bytes, kHeaderBytes, fresh);

  if (hasEedata) {
    const auto tail = static_cast<std::size_t>(romBytes) + kHeaderBytes;
    if (fresh.EeSize >= 0 && tail + static_cast<std::size_t>(fresh.EeSize) + 1 > bytes.size()) {
      return false;  // the short 51A1 form has no room for an EEDATA tail
    }
    fresh.EeFlag = kEeFlagPresent;
    for (std::size_t i = 0; i < fresh.EeBytes.size() && tail + i < bytes.size(); ++i) {
      fresh.EeBytes[i] = static_cast<std::uint8_t>(bytes[tail + i]);
    }
  } else {
    fresh.EeFlag = kEeFlagAbsent;
  }

  if (IsProjectRotatedModel(fresh.Name)) RotateWordsLeft(fresh.RomWords);
  fresh.ConfigWords = AdaptOscillatorConfig(host, fileModel, std::move(fresh.ConfigWords));
  chip = std::move(fresh);
  return true;
}

std::string BuildProjectBytes(const ChipParams& chip, const std::string& hexText) {
  std::string buffer(kHeaderBytes, '\0');
  const std::size_t nameLength = std::min<std::size_t>(chip.Name.size(), kFlagOffset - 1);
  std::copy_n(chip.Name.begin(), nameLength, buffer.begin());
  buffer[nameLength] = '!';

  for (std::size_t i = 0; i < chip.ConfigWords.size(); ++i) {
    const std::size_t offset = kConfigOffset + 2 * i;
    if (offset + 1 >= kHeaderBytes) break;
    buffer[offset] = static_cast<char>(chip.ConfigWords[i] & 0xFF);
    buffer[offset + 1] = static_cast<char>((chip.ConfigWords[i] & 0xFF00) >> 8);
  }

  // Eight fields from every CR LF separated line, an empty last line included.
  std::string_view text(hexText);
  buffer.reserve(kHeaderBytes + (text.size() / 40 + 1) * 16 + chip.EeBytes.size());
  while (true) {
    const std::size_t end = text.find("\r\n");
    const std::string_view line = text.substr(0, end);
    for (std::size_t k = 0; k < 8; ++k) {
      const std::string_view field = files::Mid(line, 9 + 5 * k, 4);
      if (field.size() < 4) {
        buffer.append(2, '\0');
        continue;
      }
      buffer.push_back(static_cast<char>(LenientHexByte(field.substr(2, 2))));
      buffer.push_back(static_cast<char>(LenientHexByte(field.substr(0, 2))));
    }
    if (end == std::string_view::npos) break;
    text.remove_prefix(end + 2);
  }

  if (IsProjectRotatedModel(chip.Name)) {
    // The stored area starts with image word 2047 (or the last word there is).
    const std::size_t areaEnd = std::min(buffer.size(), kRotatedAreaEnd);
    if (areaEnd >= kHeaderBytes + 4) {
      std::rotate(buffer.begin() + kHeaderBytes, buffer.begin() + (areaEnd - 2),
                  buffer.begin() + areaEnd);
    }
  }

  if (chip.EeSize >= 1) {
    buffer[kFlagOffset] = static_cast<char>(chip.EeFlag);
    if (chip.EeFlag == kEeFlagPresent) {
      for (std::size_t i = 0; i <= static_cast<std::size_t>(chip.EeSize); ++i) {
        buffer.push_back(static_cast<char>(i < chip.EeBytes.size() ? chip.EeBytes[i] : 0xFF));
      }
    }
  }
  return buffer;
}

std::string ProjectSavePath(const std::string& chosenName) {
  if (chosenName.empty()) return {};
  if (chosenName.size() >= 4) {
    std::string ending = chosenName.substr(chosenName.size() - 4);
    std::transform(ending.begin(), ending.end(), ending.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    if (ending == ".lkx") return chosenName;
  }
  return chosenName + ".lkx";
}

bool WriteProjectFile(Host& host, const ChipParams& chip, const std::string& path,
                      const std::string& hexText) {
  std::string error;
  if (WriteFileAtomically(path, BuildProjectBytes(chip, hexText), error)) return true;
  host.Message(Icon::Critical, "Save File Error! " + error, kAppTitle);
  return false;
}

SaveResult SaveProject(Host& host, const Home& home, Project& project,
                       const std::string& chosenName) {
  SaveResult result;
  result.Path = ProjectSavePath(chosenName);
  if (result.Path.empty()) return result;
  if (!WriteProjectFile(host, project.Chip, result.Path, HexText(project.Chip))) return result;
  result.Saved = true;
  result.Reopened = OpenPath(host, home, project, result.Path);
  return result;
}

}  // namespace lk
