#include "core/model_quirks.h"

#include <algorithm>

namespace lk {

bool OneOf(std::string_view value, std::initializer_list<std::string_view> list) {
  return std::find(list.begin(), list.end(), value) != list.end();
}

bool ClearsBit8(const std::string& model) {
  return OneOf(model, {"QVM50F96A", "QVM50F96B", "QVM50F98B"});
}

void ClearBit8(ChipParams& chip) {
  for (auto& w : chip.RomWords) w &= 0xFEFF;
  for (auto& w : chip.ConfigWords) w &= 0xFEFF;
}

bool Is32A3(const ChipParams& chip) { return chip.Prod == "32A3"; }

int TypeWordIndex(const ChipParams& chip) { return chip.Prod == "16E1" ? 3 : 13; }

std::optional<FactoryTestWords> FactoryTestWordsOf(const ChipParams& chip) {
  if (OneOf(chip.Name, {"QVM50F98B", "QVM50F96B"})) return FactoryTestWords{4093, 0x34};
  if (chip.Name == "QVM50P99") return FactoryTestWords{2045, 0x15};
  return std::nullopt;
}

bool KeepsVoltageReference(const ChipParams& chip) {
  return OneOf(chip.Prod, {"2023", "34A4"}) || chip.Name == "LK467";
}

bool ToleratesFeffTestWords(const ChipParams& chip) {
  return OneOf(chip.Name, {"QVM50F98D", "QVM50F96D"});
}

bool HasForcedConfig(const ChipParams& chip) {
  return OneOf(chip.Prod, {"30D1", "30D2", "30D3", "30D4"});
}

std::vector<std::int32_t> ForcedConfigWords(const ChipParams& chip) {
  std::vector<std::int32_t> w = chip.ConfigWords;
  if (!HasForcedConfig(chip)) return w;
  // These chips keep fixed bits in their first two words that the options never show.
  if (w.size() < 2) w.resize(2, chip.HexMcu);
  if (chip.Prod == "30D1") {
    w[0] = (w[0] & 0x17DF) | 11;
    w[1] = (w[1] & 0x1FFC) | 3;
  } else if (chip.Prod == "30D2") {
    w[0] = (w[0] & 0x17EF) | 96;
    w[1] = (w[1] & 0x1FFA) | 10;
  } else if (chip.Prod == "30D3") {
    w[0] = (w[0] & 0x1F5A) | 90;
    w[1] = w[1] | 0x1E3F;
  } else {
    w[0] = (w[0] & 0x1FDF) | 31;
    w[1] = w[1] | 0x1FFF;
  }
  return w;
}

std::int32_t ExpectedConfigWord(const ChipParams& chip, int index, std::int32_t fileWord) {
  fileWord &= 0xFFFF;
  if (HasForcedConfig(chip)) return fileWord & 0x1FFF;  // the rest reads back as anything
  if (Is32A3(chip) && index == 1) return fileWord | 0xE000;
  return fileWord;
}

std::int32_t ComparedConfigBits(const ChipParams& chip, std::int32_t chipWord) {
  chipWord &= 0xFFFF;
  return HasForcedConfig(chip) ? chipWord & 0x1FFF : chipWord;
}

bool StoresBlockWithChipCode(const ChipParams& chip) { return chip.Name == "QVM75P82"; }

bool DownloadCarriesEedata(const ChipParams& chip) { return OneOf(chip.Prod, {"101E", "101F"}); }

const std::string& ChipChecksumText(const ChipParams& chip) {
  return chip.Arch == "LK3P" ? chip.ChipInfo2 : chip.ChipInfo1;
}

bool VerifyChecksConfigFirst(const ChipParams& chip) { return (chip.Type & 0xFF) == 4; }

}  // namespace lk
