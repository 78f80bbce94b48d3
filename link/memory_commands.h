// Program memory and configuration words: program, read and verify, for the chip in the
// socket (Target::Chip: 0xF3, 0xF2, 0xF9, 0xF5) or the writer's own store (Target::Store:
// 0xF7, 0xFB, 0xFA, 0xFC). Program words are 16 bits on the wire, low byte first.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "core/chip_params.h"
#include "link/fault.h"
#include "link/writer.h"
#include "rolling/roll_settings.h"

namespace lk {

// What a verify leaves for the result lines "Data Address:", "File Data:", "MCU Data:".
struct [[nodiscard]] VerifyResult {
  bool Pass = false;
  // What stopped the verify before anything could be compared; None when it compared
  // (and Pass says how that went).
  Fault Why = Fault::None;
  bool Stopped() const { return Why != Fault::None; }
  std::string Address;   // "0000" form, "Config(i)" or "eedata(i)"
  std::string FileData;  // "0000" form
  std::string ChipData;  // "0000" form
};

// Sends the program words, 24 a packet, every packet answered 0xE1. For the chip, the
// model's protected words are taken from the chip first (Fault::TestContent when its
// factory test words are missing, after the parameter block has been sent again) and,
// when `roll` is given, the current rolling code is placed on the outgoing copy
// (Fault::RollAddress when an address lies outside the program). The image is never
// changed. The session's progress follows the address.
// `sent`, when given, receives the words as they went out (rolling code placed).
Fault ProgramRom(Writer& writer, const ChipParams& chip, const RollSettings* roll,
                 Target target = Target::Chip, std::vector<std::int32_t>* sent = nullptr);

// The chip's program words 0..RomSize (0xF2).
Result<std::vector<std::int32_t>> ReadRom(Writer& writer, const ChipParams& chip);

// The configuration words below ConfigLength, with the forced bits of the chips that
// have them.
Fault ProgramConfig(Writer& writer, const ChipParams& chip, Target target = Target::Chip);

// Reads the program memory and compares it with the words ProgramRom would send,
// leaving the rolling-code addresses out; the first difference fills the record.
VerifyResult VerifyRom(Writer& writer, const ChipParams& chip, const RollSettings* roll,
                       Target target = Target::Chip);

// The same for the configuration words ("Config(i)").
VerifyResult VerifyConfig(Writer& writer, const ChipParams& chip, Target target = Target::Chip);

}  // namespace lk
