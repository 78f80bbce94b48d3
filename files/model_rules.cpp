#include "files/model_rules.h"

#include <algorithm>
#include <cstdio>
#include <string_view>

#include "core/model_quirks.h"
#include "core/numeric_text.h"
#include "files/read_support.h"

namespace lk {
namespace {

// A word that the image does not have cannot hold data: it counts as the blank value.
bool WordIs(const std::vector<std::int32_t>& words, std::int64_t index, std::int32_t value) {
  if (index < 0 || index >= static_cast<std::int64_t>(words.size())) return true;
  return words[static_cast<std::size_t>(index)] == value;
}

void FillImage(ChipParams& chip, std::int32_t value) {
  std::fill(chip.RomWords.begin(), chip.RomWords.end(), value);
  std::fill(chip.ConfigWords.begin(), chip.ConfigWords.end(), value);
}

// The two comparator messages differ in one comma (full-width in the first, ASCII in
// the second); both are kept as the chips' documentation quotes them.
constexpr const char* kReservedLead = "检测到程序中 ";
constexpr const char* kComparatorUse =
    "H 地址中有数据，这2个地址目前作为保存同步比较器失调电压值使用，请阅读"
    "\"电磁炉芯片同步比较器调零功能使用说明\"";

}  // namespace

std::string ResolveModelAlias(const std::string& model) {
  if (OneOf(model, {"QVM50P49D", "QVM50F49D"})) return "QVM50F775";
  if (OneOf(model, {"QVM50P79D", "QVM50F79D"})) return "QVM50F776";
  if (model == "QVM50F77A") return "QVM50F77B";
  if (OneOf(model, {"QVM50T43", "QVM50T43F", "QVM50FT43", "QVM50FT75"})) return "QVM50F5759";
  if (OneOf(model, {"QVM50FT45", "QVM3T41B", "QVM3T41BF"})) return "QVM50F576";
  return model;
}

std::vector<std::int32_t> AdaptOscillatorConfig(Host& host, const std::string& model,
                                                std::vector<std::int32_t> configWords) {
  const bool group1 = OneOf(model, {"QVM50P49D", "QVM50P79D", "QVM50T43", "QVM3T41B"});
  const bool group2 =
      OneOf(model, {"QVM50F49D", "QVM50F79D", "QVM50F77A", "QVM50T43F", "QVM3T41BF"});
  const bool group3 = OneOf(model, {"QVM50FT43", "QVM50FT75", "QVM50FT45"});
  if (configWords.empty()) return configWords;

  if (group3) {
    configWords[0] = (configWords[0] | 0x0400) & 0xEFFF;
    return configWords;
  }
  if (!group1 && !group2) return configWords;

  const std::int32_t old = configWords[0];
  std::vector<std::int32_t> adapted(configWords.size(), 0x3FFF);
  std::int32_t word = 0x3FFF;
  // The base record only has the internal RC oscillator: the field stays 11 in any case.
  switch (old & 0x3) {
    case 3:
      host.Message(Icon::Information,
                   "所打开文件的振荡方式设置为外部RC振荡，而当前芯片不支持此振荡方式，"
                   "将自动设置成内部RC振荡。",
                   kAppTitle);
      break;
    case 2:
      host.Message(Icon::Information,
                   "所打开文件的振荡方式设置为外部XT振荡，而当前芯片不支持此振荡方式，"
                   "将自动设置成内部RC振荡。",
                   kAppTitle);
      break;
    default:
      break;
  }
  if ((old & 0x4) == 0) word &= 0xFFFB;
  if ((old & 0x8) == 0) word &= 0xFFF7;
  switch (old & 0x90) {
    case 0x00:
      word &= 0xFF7F;
      break;
    case 0x10:
      word &= 0xFFEF;
      break;
    case 0x90:
      if (group2) word &= 0xFF6F;
      break;
    default:  // 0x80 keeps both bits
      break;
  }
  if ((old & 0x200) == 0) word &= 0xFDFF;
  if (group1 && configWords.size() > 1 && (configWords[1] & 0x100) == 0) word &= 0xFFFE;
  adapted[0] = word;
  return adapted;
}

bool IsHexRotatedModel(const std::string& model) {
  if (model.rfind("QVM50FT", 0) == 0) return true;
  return OneOf(model, {"QVM50F49E", "QVM50F79E", "QVM50F47E", "QVM50F45E", "QVM50F96B",
                       "QVM50F98B", "QVM3T41B", "QVM50T43", "QVM50P49D", "QVM50P79D",
                       "QVM50P47A", "QVM50P77A", "QVM50P99", "QVM3T41BF", "QVM50T43F",
                       "QVM50F49D", "QVM50F79D", "QVM50F47A", "QVM50F77A"});
}

bool IsProjectRotatedModel(const std::string& model) {
  return model == "QVM50P49C" || model == "QVM50P79C";
}

void RotateWordsRight(std::vector<std::int32_t>& words) {
  if (words.size() > 1) std::rotate(words.rbegin(), words.rbegin() + 1, words.rend());
}

void RotateWordsLeft(std::vector<std::int32_t>& words) {
  if (words.size() > 1) std::rotate(words.begin(), words.begin() + 1, words.end());
}

void ReadProgramArea(const std::string& bytes, std::size_t offset, ChipParams& chip) {
  const bool is51A1 = chip.Prod == "51A1";
  const std::int64_t fileWords = std::int64_t{chip.RomSize} + 1 - (is51A1 ? 512 : 0);
  files::CopyWords(bytes, offset, static_cast<std::size_t>(std::max<std::int64_t>(fileWords, 0)),
                   chip.RomWords);
  if (is51A1) {
    for (std::size_t i = 1536; i <= 2047 && i < chip.RomWords.size(); ++i) chip.RomWords[i] = 0;
  }
}

bool CheckReservedAddresses(Host& host, Project& project) {
  ChipParams& chip = project.Chip;
  if (chip.Name == "QVM50F96B" || chip.Name == "QVM50F98B") {
    if (WordIs(chip.RomWords, 0x0FFD, 0xFEFF) && WordIs(chip.RomWords, 0x0FFE, 0xFEFF)) {
      ClearBit8(chip);
      return false;
    }
    host.Message(Icon::Information,
                 std::string(kReservedLead) + "0FFDH 或 0FFE" + kComparatorUse + "，并修改程序！",
                 kAppTitle);
    FillImage(chip, 0xFEFF);
    project.DocCaption.clear();
    return true;
  }
  if (chip.Name == "QVM50P99") {
    if (WordIs(chip.RomWords, 0x07FD, 0x3FFF) && WordIs(chip.RomWords, 0x07FE, 0x3FFF)) {
      return false;
    }
    host.Message(Icon::Information,
                 std::string(kReservedLead) + "07FDH 或 07FE" + kComparatorUse + ",并修改程序！",
                 kAppTitle);
    FillImage(chip, 0x3FFF);
    project.DocCaption.clear();
    return true;
  }
  if (chip.Prod == "34A4" || chip.Prod == "2023" || chip.Prod == "LK467") {
    const std::int64_t last = chip.RomSize;
    if (WordIs(chip.RomWords, last - 1, chip.HexMcu) && WordIs(chip.RomWords, last, chip.HexMcu)) {
      return false;
    }
    host.Message(Icon::Information,
                 kReservedLead + UpperHex(last - 1) + "H 或 " +
                     UpperHex(last) +
                     "H 地址中有数据，这2个地址作为内部电压基准使用，请保持数据为空！",
                 kAppTitle);
    FillImage(chip, chip.HexMcu);
    project.DocCaption.clear();
    return true;
  }
  return false;
}

}  // namespace lk
