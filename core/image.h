// The memory image: hex document text, EEDATA hex text, checksums, and the captions
// and menu states that follow from the selected chip.
#pragma once

#include <cstdint>
#include <string>

#include "core/chip_params.h"

namespace lk {

// "000000: 3FFF 3FFF ..." eight words a line, CR LF between lines, no trailing break.
std::string HexText(const ChipParams& chip);

// Sixteen bytes a line, "0000: FF FF ...", as the EEDATA window shows them.
// Empty when EeSize is below 1.
std::string EedataHexText(const ChipParams& chip);

// The program checksum with the per-model special cases (the whole 32-bit sum).
std::int32_t ProgramChecksum(const ChipParams& chip);

// "Checksum:" + the sum's last four hexadecimal digits.
std::string ChecksumText(std::int32_t sum);

// Sum of every EEDATA byte, low 16 bits.
std::uint16_t EedataChecksum(const ChipParams& chip);

// The EEDATA menu entries are enabled only when EeSize is at least 1.
bool EedataMenusEnabled(const ChipParams& chip);

struct BlankEraseCaptions {
  std::string Blank;        // menu entry and toolbar button
  std::string AutoBlank;    // auto sequence with blank check
  std::string AutoNoBlank;  // auto sequence without
  std::string ButtonTip;    // toolbar tip
  std::string OpCaption;    // BlankOpCaption: names the operation in result lines
};
BlankEraseCaptions GetBlankEraseCaptions(const ChipParams& chip);

}  // namespace lk
