// The chip session: the parameter block that tells the writer which chip to handle, and
// the check of the chip's own type word.
#pragma once

#include <string>

#include "core/chip_params.h"
#include "link/fault.h"
#include "link/writer.h"

namespace lk {

// Sends the model's parameter block, 0xF6 for the chip in the socket (Target::Chip) or
// 0xFE to keep it for stand-alone use (Target::Store); Ok when the writer answers 0xE1.
// Any failure is Fault::ChipType (the detail says why).
Fault CheckChipType(Writer& writer, const ChipParams& chip, Target target = Target::Chip);

// The two information texts the chip's configuration area gives: ChipInfo1 (words 9, 8)
// and ChipInfo2 (words 12, 11), four hex digits each.
struct ChipInfo {
  std::string Info1;
  std::string Info2;
};

// Reads the configuration area and compares the chip's type word with the model's
// (Fault::ChipMismatch when it differs). "32A3" chips read nothing and give empty texts.
// Ends with ReturnToIdle on every road.
Result<ChipInfo> PrepareChip(Writer& writer, const ChipParams& chip);

}  // namespace lk
