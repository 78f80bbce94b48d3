#include "sim/sim_chip.h"

#include <algorithm>

namespace lk::sim {

SimChip SimChip::FromParams(const ChipParams& params) {
  SimChip chip;
  chip.name = params.Name;
  chip.type = params.Type;
  chip.prod = params.Prod;
  chip.otp = params.IsOtp();
  chip.blank = static_cast<std::uint16_t>(params.HexMcu & 0xFFFF);
  chip.configLength = std::clamp<int>(params.ConfigLength, 0, kConfigAreaWords - 1);
  chip.program.assign(static_cast<size_t>(std::max(params.RomSize + 1, 0)), chip.blank);
  for (int i = 0; i <= chip.configLength; ++i) chip.config[i] = chip.blank;
  chip.config[8] = kInfoWord8;
  chip.config[9] = kInfoWord9;
  chip.config[11] = kInfoWord11;
  chip.config[12] = kInfoWord12;
  if (chip.name == "QVM50F96B" || chip.name == "QVM50F98B") {
    chip.config[7] = kTestWordF96;
  } else if (chip.name == "QVM50P99") {
    chip.config[7] = kTestWordP99;
  } else if (chip.prod == "2023" || chip.prod == "34A4" || chip.name == "LK467") {
    chip.config[7] = kTestWordLast;
  }
  chip.config[chip.TypeWordIndex()] = static_cast<std::uint16_t>(params.Type & 0xFFFF);
  if (params.EeSize >= 1) chip.eedata.assign(static_cast<size_t>(params.EeSize) + 1, 0xFF);
  return chip;
}

bool SimChip::IsBlank() const {
  if (programmed) return false;
  for (std::uint16_t w : program) {
    if (w != blank) return false;
  }
  for (int i = 0; i <= configLength; ++i) {
    if (i != TypeWordIndex() && config[i] != blank) return false;
  }
  return true;
}

void SimChip::Erase() {
  program.assign(program.size(), blank);
  for (int i = 0; i <= configLength; ++i) {
    if (i != TypeWordIndex()) config[i] = blank;
  }
  programmed = false;
}

}  // namespace lk::sim
