// ChipParams: the record of one chip model from the chip database. Its three arrays
// are at the same time the memory image of the open project (program words,
// configuration words, EEDATA bytes).
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace lk {

// The EEDATA flag of a project: 0xA2 when it carries EEDATA, 0xA0 when it does not.
inline constexpr std::uint8_t kEeFlagPresent = 0xA2;
inline constexpr std::uint8_t kEeFlagAbsent = 0xA0;

struct ChipParams {
  std::string Name;  // empty when the model could not be loaded
  std::int32_t Type = 0;
  std::string Prod;    // product code text such as "32A3"
  std::string Arch;
  std::string Crafts;  // "OTP" for OTP chips
  std::vector<std::int32_t> RomWords;  // 0..RomSize
  std::int32_t RomSize = 0;            // highest program word index
  std::vector<std::int32_t> ConfigWords;  // 0..ConfigLength
  std::int16_t ConfigLength = 0;          // highest configuration word index, at most 3
  std::vector<std::uint8_t> EeBytes;      // 0..EeSize, empty without the EEDATA key
  std::int16_t EeSize = 0;                // highest EEDATA index; below 1 = no EEDATA
  // Empty in a fresh record, as every field is; a project file sets 0xA2 or 0xA0, the
  // EEDATA window's OK too. Saved as it is (byte 128), so an image that never had a flag
  // is saved with 0.
  std::uint8_t EeFlag = 0;
  std::int32_t HexMcu = 0;  // blank word and word width mask
  std::int16_t Ins = 0;
  std::uint8_t Fst = 0;
  std::uint8_t VppMode = 0;
  float VppProg = 0, VppErase = 0, VppRead = 0, VppKeep = 0;
  std::int32_t VppSel = 0;
  std::int32_t Erase0 = 0, Erase1 = 0, EraseRom = 0, EraseConfig = 0;
  std::int32_t ProgTime = 0;
  std::int16_t SpcAdd = 0;
  std::int32_t SpcDat = 0;
  std::vector<std::uint8_t> ProPin;
  std::string ChipInfo1;  // filled from the chip by chip preparation
  std::string ChipInfo2;
  std::int32_t BlankRom = 0;
  std::int16_t BlankConfig = 0;

  bool Loaded() const { return !Name.empty(); }
  bool IsOtp() const { return Crafts == "OTP"; }
};

}  // namespace lk
