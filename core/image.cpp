#include "core/image.h"

#include <algorithm>

#include "core/numeric_text.h"

namespace lk {
namespace {

constexpr char kHex[] = "0123456789ABCDEF";

// Writes the last `digits` hexadecimal digits of value, upper case, zero-padded.
char* PutHex(char* out, std::uint32_t value, int digits) {
  for (int shift = (digits - 1) * 4; shift >= 0; shift -= 4) *out++ = kHex[(value >> shift) & 0xF];
  return out;
}

// The text both document windows show: `perLine` values a line, each line led by its
// address and ":", each value after one blank, CR LF between lines and none at the end.
// The text is written into a buffer of its exact size: the hex document of a 64K-word
// chip is rebuilt on every open and save.
template <typename Values>
std::string HexDump(const Values& values, std::size_t perLine, int addressDigits,
                    int valueDigits) {
  const std::size_t count = values.size();
  if (count == 0) return "";
  const std::size_t lines = (count + perLine - 1) / perLine;
  const std::size_t size = lines * (static_cast<std::size_t>(addressDigits) + 1) +
                           count * (1 + static_cast<std::size_t>(valueDigits)) + (lines - 1) * 2;
  std::string text(size, '\0');
  char* out = text.data();
  for (std::size_t i = 0; i < count; ++i) {
    if (i % perLine == 0) {
      if (i != 0) {
        *out++ = '\r';
        *out++ = '\n';
      }
      out = PutHex(out, static_cast<std::uint32_t>(i), addressDigits);
      *out++ = ':';
    }
    *out++ = ' ';
    out = PutHex(out, static_cast<std::uint32_t>(values[i]), valueDigits);
  }
  return text;
}

// A word counts as its low byte plus its second byte; higher bits are ignored.
std::int32_t ByteSum(std::int32_t word) {
  const auto w = static_cast<std::uint32_t>(word);
  return static_cast<std::int32_t>((w & 0xFF) + ((w >> 8) & 0xFF));
}

}  // namespace

std::string HexText(const ChipParams& chip) { return HexDump(chip.RomWords, 8, 6, 4); }

std::string EedataHexText(const ChipParams& chip) {
  if (chip.EeSize < 1) return "";
  return HexDump(chip.EeBytes, 16, 4, 2);
}

std::int32_t ProgramChecksum(const ChipParams& chip) {
  const std::string& name = chip.Name;
  const std::string& prod = chip.Prod;
  const bool syncTrimF96 = name == "QVM50F96B" || name == "QVM50F98B";
  const bool syncTrimP99 = name == "QVM50P99";
  const bool upperBlank32A3 = prod == "32A3";
  const bool lastTwoBlank = prod == "2023" || prod == "34A4" || prod == "LK467";
  const std::int64_t romSize = chip.RomSize;

  std::int32_t sum = 0;
  for (std::size_t i = 0; i < chip.RomWords.size(); ++i) {
    const auto index = static_cast<std::int64_t>(i);
    if (syncTrimF96 && (index == 4093 || index == 4094)) {
      sum += 509;  // the comparator trim words count as 0xFEFF
    } else if (syncTrimP99 && (index == 2045 || index == 2046)) {
      sum += 318;  // ... and as 0x3FFF on the QVM50P99
    } else if (upperBlank32A3 && index >= 1020) {
      sum += 510;  // the top of a 32A3 counts as 0xFFFF
    } else if (lastTwoBlank && (index == romSize - 2 || index == romSize - 1)) {
      sum += ByteSum(chip.HexMcu);  // voltage reference words count as blank
    } else {
      sum += ByteSum(chip.RomWords[i]);
    }
  }

  std::vector<std::int32_t> config = chip.ConfigWords;
  if (prod == "16E1") {
    // The chip supplies words 0, 2 and 3 itself; the project's values do not count.
    if (config.size() > 0) config[0] = 0xFA5A;
    if (config.size() > 2) config[2] = 0xFEFF;
    if (config.size() > 3) config[3] = 0xFEFF;
  }
  const std::size_t last = std::min<std::size_t>(config.size(), 4);
  for (std::size_t j = 0; j < last; ++j) {
    const auto w = static_cast<std::uint32_t>(config[j]);
    if (upperBlank32A3 && j == 1) {
      sum += static_cast<std::int32_t>((w & 0xFF) + (((w >> 8) & 0xFF) | 0xE0));
    } else {
      sum += ByteSum(config[j]);
    }
  }
  return sum;
}

std::string ChecksumText(std::int32_t sum) {
  return "Checksum:" + Hex4(static_cast<std::uint32_t>(sum));
}

std::uint16_t EedataChecksum(const ChipParams& chip) {
  std::uint32_t sum = 0;
  for (std::uint8_t b : chip.EeBytes) sum += b;
  return static_cast<std::uint16_t>(sum);
}

bool EedataMenusEnabled(const ChipParams& chip) {
  return chip.EeSize >= 1;
}

BlankEraseCaptions GetBlankEraseCaptions(const ChipParams& chip) {
  if (chip.IsOtp()) return {"空检", "包含空检", "不包含空检", "Blank Check", "Blank Check"};
  return {"擦除", "包含擦除", "不包含擦除", "Erase", "Erase"};
}

}  // namespace lk
