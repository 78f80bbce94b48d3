#include "core/image.h"

#include <algorithm>

namespace lk {
namespace {

constexpr char kHex[] = "0123456789ABCDEF";

// The last `digits` hexadecimal digits of value, upper case, zero-padded.
void AppendHex(std::string& out, std::uint32_t value, int digits) {
  for (int shift = (digits - 1) * 4; shift >= 0; shift -= 4)
    out.push_back(kHex[(value >> shift) & 0xF]);
}

// A word counts as its low byte plus its second byte; higher bits are ignored.
std::int32_t ByteSum(std::int32_t word) {
  const auto w = static_cast<std::uint32_t>(word);
  return static_cast<std::int32_t>((w & 0xFF) + ((w >> 8) & 0xFF));
}

}  // namespace

std::string HexText(const ChipParams& chip) {
  const std::size_t count = chip.RomWords.size();
  std::string out;
  // Per line: 6-digit address + ":" + 8 x " XXXX" + CR LF.
  out.reserve((count / 8 + 1) * (7 + 8 * 5 + 2));
  for (std::size_t i = 0; i < count; ++i) {
    if (i % 8 == 0) {
      if (i != 0) out += "\r\n";
      AppendHex(out, static_cast<std::uint32_t>(i), 6);
      out.push_back(':');
    }
    out.push_back(' ');
    AppendHex(out, static_cast<std::uint32_t>(chip.RomWords[i]), 4);
  }
  return out;
}

std::string EedataHexText(const ChipParams& chip) {
  if (chip.EeSize < 1) return "";
  std::string out;
  out.reserve((chip.EeBytes.size() / 16 + 1) * (5 + 16 * 3 + 2));
  for (std::size_t i = 0; i < chip.EeBytes.size(); ++i) {
    if (i % 16 == 0) {
      if (i != 0) out += "\r\n";
      AppendHex(out, static_cast<std::uint32_t>(i), 4);
      out.push_back(':');
    }
    out.push_back(' ');
    AppendHex(out, chip.EeBytes[i], 2);
  }
  return out;
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
  std::string out = "Checksum:";
  AppendHex(out, static_cast<std::uint32_t>(sum), 4);
  return out;
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
