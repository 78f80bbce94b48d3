// Intel HEX: only the data records of program memory are used. Every field is taken by
// character position, the record checksum is not verified and the line length is not
// checked, so that files from the older tools with loose record layouts still open.
#include <algorithm>
#include <string>

#include "core/text_lines.h"
#include "files/model_rules.h"
#include "files/read_support.h"
#include "files/readers.h"

namespace lk {
namespace files {

DataRecordResult StoreDataRecord(std::string_view line, std::vector<std::int32_t>& words,
                                 std::int32_t romSize, std::int32_t mask) {
  std::uint32_t byteCount = 0;
  std::uint32_t byteAddress = 0;
  if (!ParseHexField(Mid(line, 2, 2), byteCount) || !ParseHexField(Mid(line, 4, 4), byteAddress)) {
    return DataRecordResult::Malformed;
  }
  const std::uint32_t count = HalveRoundHalfEven(byteCount);
  const std::uint32_t address = HalveRoundHalfEven(byteAddress);
  if (romSize < 0 || address > static_cast<std::uint32_t>(romSize)) {
    return DataRecordResult::BeyondProgram;
  }
  const std::string_view data = Mid(line, 10);
  for (std::uint32_t j = 0; j < count; ++j) {
    // Four characters per word, low byte first: the word is characters 3-4 then 1-2.
    const std::string_view four = Mid(data, 4 * j + 1, 4);
    std::uint32_t high = 0;
    std::uint32_t low = 0;
    const std::string_view highDigits = Mid(four, 3, 2);
    if (!ParseHexField(highDigits, high) || !ParseHexField(Mid(four, 1, 2), low)) {
      return DataRecordResult::Malformed;
    }
    // The digits of the second pair follow those of the first ("3F" + "FF").
    const std::uint32_t word = (high << (4 * std::min<std::size_t>(four.size(), 2))) | low;
    const std::uint64_t index = std::uint64_t{address} + j;
    if (index < words.size() && index <= static_cast<std::uint64_t>(romSize)) {
      words[index] = static_cast<std::int32_t>(word) & mask;
    }
  }
  return DataRecordResult::Stored;
}

}  // namespace files

bool ReadHexFile(Host& host, const Home&, ChipParams& chip, const std::filesystem::path& path) {
  std::string text;
  if (!files::ReadImageFile(host, path, files::kMaxTextFileBytes, text)) return false;
  TextLines lines(text);
  for (std::string_view line; lines.Next(line);) {
    if (files::RecordType(line) != "00") continue;  // addresses, end of file, others
    const auto result = files::StoreDataRecord(line, chip.RomWords, chip.RomSize, chip.HexMcu);
    if (result == files::DataRecordResult::Malformed) return false;
    // Configuration words and EEDATA never come from a HEX file: the first record
    // beyond program memory ends the read.
    if (result == files::DataRecordResult::BeyondProgram) break;
  }
  if ((chip.Prod == "101E" || chip.Prod == "101F") && chip.ConfigWords.size() > 1) {
    chip.ConfigWords[1] &= 0xFFEF;
  }
  if (IsHexRotatedModel(chip.Name)) RotateWordsRight(chip.RomWords);
  return true;
}

}  // namespace lk
