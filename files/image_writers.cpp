#include "files/image_writers.h"

#include <algorithm>
#include <cstdio>

namespace lk {
namespace {

void AppendWord(std::string& out, std::int32_t word) {
  out.push_back(static_cast<char>(word & 0xFF));
  out.push_back(static_cast<char>((word >> 8) & 0xFF));
}

std::string WordBytes(const std::vector<std::int32_t>& words) {
  std::string out;
  out.reserve(words.size() * 2);
  for (std::int32_t w : words) AppendWord(out, w);
  return out;
}

}  // namespace

std::string MakeHexRecord(std::uint8_t type, std::uint16_t address, const std::string& data) {
  static constexpr char kDigits[] = "0123456789ABCDEF";
  std::string line;
  line.reserve(11 + 2 * data.size() + 2);
  unsigned sum = 0;
  auto put = [&](std::uint8_t byte) {
    line.push_back(kDigits[byte >> 4]);
    line.push_back(kDigits[byte & 0xF]);
    sum += byte;
  };
  line.push_back(':');
  put(static_cast<std::uint8_t>(data.size()));
  put(static_cast<std::uint8_t>(address >> 8));
  put(static_cast<std::uint8_t>(address & 0xFF));
  put(type);
  for (char c : data) put(static_cast<std::uint8_t>(c));
  put(static_cast<std::uint8_t>((0x100 - (sum & 0xFF)) & 0xFF));
  line += "\r\n";
  return line;
}

std::string MakeIntelHex(const std::vector<std::int32_t>& words, int wordsPerRecord) {
  const std::size_t perRecord = static_cast<std::size_t>(std::clamp(wordsPerRecord, 1, 127));
  std::string out;
  out.reserve(words.size() / perRecord * (13 + 4 * perRecord) + 64);
  std::uint32_t segment = 0;
  for (std::size_t first = 0; first < words.size(); first += perRecord) {
    const std::uint32_t byteAddress = static_cast<std::uint32_t>(first * 2);
    if ((byteAddress >> 16) != segment) {
      segment = byteAddress >> 16;
      out += MakeHexRecord(0x04, 0, std::string{static_cast<char>(segment >> 8),
                                                static_cast<char>(segment & 0xFF)});
    }
    std::string data;
    for (std::size_t i = first; i < std::min(words.size(), first + perRecord); ++i) {
      AppendWord(data, words[i]);
    }
    out += MakeHexRecord(0x00, static_cast<std::uint16_t>(byteAddress & 0xFFFF), data);
  }
  out += ":00000001FF\r\n";
  return out;
}

std::string MakeBinImage(const std::vector<std::int32_t>& words) { return WordBytes(words); }

std::string MakeQvmText(std::uint32_t modelNumber, const ChipParams& chip) {
  char model[32];
  std::snprintf(model, sizeof model, ":000000QV0000%02X\r\n", modelNumber);
  std::string out = model;
  std::string config;
  for (std::int32_t w : chip.ConfigWords) AppendWord(config, w);
  out += MakeHexRecord(0x08, 0, config);
  if (chip.EeFlag == kEeFlagPresent && chip.EeSize >= 1) {
    for (std::size_t first = 0; first < chip.EeBytes.size(); first += 16) {
      const std::size_t last = std::min(chip.EeBytes.size(), first + 16);
      std::string data(chip.EeBytes.begin() + static_cast<std::ptrdiff_t>(first),
                       chip.EeBytes.begin() + static_cast<std::ptrdiff_t>(last));
      out += MakeHexRecord(0x10, static_cast<std::uint16_t>(first), data);
    }
  }
  out += MakeIntelHex(chip.RomWords);
  return out;
}

std::string MakeSn8Image(const std::vector<std::int32_t>& words) {
  return std::string(256, '\0') + WordBytes(words);
}

std::string MakeBctImage(std::uint16_t modelCode, const std::vector<std::int32_t>& config,
                         const std::vector<std::int32_t>& words) {
  std::string header(256, '\0');
  header[144] = static_cast<char>(modelCode & 0xFF);
  header[145] = static_cast<char>(modelCode >> 8);
  for (std::size_t i = 0; i < config.size() && 161 + 2 * i < 256; ++i) {
    header[160 + 2 * i] = static_cast<char>(config[i] & 0xFF);
    header[161 + 2 * i] = static_cast<char>((config[i] >> 8) & 0xFF);
  }
  return header + WordBytes(words);
}

std::string MakeFtcImage(const std::vector<std::int32_t>& words, const std::string& name) {
  std::string header = name.substr(0, 7);
  header.resize(7, ' ');
  header.append(4, '\0');
  return header + WordBytes(words);
}

}  // namespace lk
