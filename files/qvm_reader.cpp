// The "QVM" text format: Intel HEX record layout, one record a line,
//   ":" LL AAAA TT data CC
// with LL the byte count, AAAA an address, TT the record type (characters 8-9).
//
//   QV  chip model. The model number is written in hexadecimal from character 14 to the
//       end of the line (characters 10-13 are reserved, written "0000"), e.g.
//       ":000000QV00000C" for model 12. The first QV record counts. A file without one,
//       or with a number outside the model table, is not a QVM file.
//   00  program words, exactly as in Intel HEX (byte addresses, low byte first, fields by
//       character position, checksum not verified). Records beyond program memory are
//       skipped.
//   08  configuration words: AAAA = 2 x index of the first word, LL = 2 x number of
//       words, data = the words low byte first, CC = the Intel HEX checksum.
//   10  EEDATA bytes: AAAA = EEDATA address of the first byte, data = the bytes, CC = the
//       checksum. Any 10 record marks the project as carrying EEDATA.
//   01, 02, 04  end of file and extended addresses: skipped.
// Blank lines are skipped. Records 08 and 10 are checked strictly (hex digits, exact
// length, even count and address for 08, checksum, within the chip's arrays); any other
// record type or a broken 08/10 record refuses the file.
#include <array>
#include <string>
#include <utility>

#include "core/chip_database.h"
#include "core/text_lines.h"
#include "files/model_rules.h"
#include "files/read_support.h"
#include "files/readers.h"

namespace lk {
namespace {

struct QvmModel {
  std::uint32_t number;
  const char* name;
};

constexpr std::array<QvmModel, 20> kQvmModels{{
    {1, "QVM75P89"},   {2, "QVM75P86"},   {3, "QVM75P88"},   {4, "QVM55P47"},
    {5, "QVM55P49"},   {6, "QVM55P21"},   {7, "QVM55P99"},   {8, "QVM55P96"},
    {9, "QVM53P45"},   {10, "QVM53P74"},  {11, "QVM53P64"},  {12, "QVM50P49C"},
    {13, "QVM50P79C"}, {14, "QVM50T43"},  {15, "QVM50P99"},  {16, "QVM50P49D"},
    {17, "QVM75P89B"}, {18, "QVM75P86B"}, {19, "QVM75P88B"}, {84, "QVM75P82"},
}};

std::string_view TrimRight(std::string_view s) {
  while (!s.empty() && (s.back() == ' ' || s.back() == '\t')) s.remove_suffix(1);
  return s;
}

// The model named by the first QV record; empty when there is none or it is not in the
// table.
std::string FindModel(std::string_view text) {
  TextLines lines(text);
  for (std::string_view line; lines.Next(line);) {
    if (files::RecordType(line) != "QV") continue;
    const std::string_view digits = TrimRight(files::Mid(line, 14));
    std::uint32_t number = 0;
    if (digits.empty() || !files::ParseHexField(digits, number)) return {};
    for (const auto& m : kQvmModels) {
      if (m.number == number) return m.name;
    }
    return {};
  }
  return {};
}

// A strictly checked 08 or 10 record: address and data bytes.
bool ParseStrictRecord(std::string_view line, std::uint32_t& address, std::string& data) {
  line = TrimRight(line);
  std::uint32_t count = 0;
  if (line.size() < 11 || line[0] != ':' || !files::ParseHexField(line.substr(1, 2), count) ||
      line.size() != 11 + 2 * std::size_t{count}) {
    return false;
  }
  std::uint32_t sum = 0;
  data.clear();
  for (std::size_t pos = 1; pos + 1 < line.size(); pos += 2) {
    std::uint32_t byte = 0;
    if (!files::ParseHexField(line.substr(pos, 2), byte)) return false;
    sum += byte;
    if (pos >= 9 && pos < 9 + 2 * std::size_t{count}) data.push_back(static_cast<char>(byte));
  }
  if ((sum & 0xFF) != 0) return false;
  return files::ParseHexField(line.substr(3, 4), address);
}

}  // namespace

bool ReadQvmFile(Host& host, const Home& home, ChipParams& chip,
                 const std::filesystem::path& path) {
  std::string text;
  if (!files::ReadImageFile(host, path, files::kMaxTextFileBytes, text)) return false;
  const std::string model = FindModel(text);
  ChipParams fresh;
  if (!model.empty()) fresh = LoadChipParams(host, home, ResolveModelAlias(model));
  if (!fresh.Loaded()) {
    host.Message(Icon::Information, "QVM File Error!", kAppTitle);
    return false;
  }

  bool configRead = false;
  std::string data;
  TextLines lines(text);
  for (std::string_view line; lines.Next(line);) {
    if (TrimRight(line).empty()) continue;
    const std::string_view type = files::RecordType(line);
    if (type == "QV" || type == "01" || type == "02" || type == "04") continue;
    if (type == "00") {
      const auto result =
          files::StoreDataRecord(line, fresh.RomWords, fresh.RomSize, fresh.HexMcu);
      if (result == files::DataRecordResult::Malformed) return false;
      continue;
    }
    std::uint32_t address = 0;
    if ((type != "08" && type != "10") || !ParseStrictRecord(line, address, data)) return false;
    if (type == "08") {
      if (address % 2 != 0 || data.size() % 2 != 0) return false;
      const std::size_t first = address / 2;
      if (first + data.size() / 2 > fresh.ConfigWords.size()) return false;
      for (std::size_t k = 0; k < data.size() / 2; ++k) {
        fresh.ConfigWords[first + k] = files::WordAt(data, 2 * k);
      }
      configRead = true;
    } else {
      if (fresh.EeSize < 1 || address + data.size() > fresh.EeBytes.size()) return false;
      for (std::size_t k = 0; k < data.size(); ++k) {
        fresh.EeBytes[address + k] = static_cast<std::uint8_t>(data[k]);
      }
      fresh.EeFlag = kEeFlagPresent;
    }
  }

  if (IsHexRotatedModel(model)) RotateWordsRight(fresh.RomWords);
  // Words from the file are in the named model's layout; the record's own defaults are
  // already in the shared record's layout.
  if (configRead) {
    fresh.ConfigWords = AdaptOscillatorConfig(host, model, std::move(fresh.ConfigWords));
  }
  chip = std::move(fresh);
  return true;
}

}  // namespace lk
