// The chip in the simulated writer's socket and the writer's own store for
// stand-alone programming.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "core/chip_params.h"

namespace lk::sim {

inline constexpr int kConfigAreaWords = 16;

// Factory content of the configuration area beyond the configuration words: the
// chip's information words (shown by the host as ChipInfo1/ChipInfo2) and the test
// word 7 that some models carry.
inline constexpr std::uint16_t kInfoWord8 = 0x0052;
inline constexpr std::uint16_t kInfoWord9 = 0x0017;
inline constexpr std::uint16_t kInfoWord11 = 0x0A3C;
inline constexpr std::uint16_t kInfoWord12 = 0x00C5;
inline constexpr std::uint16_t kTestWordF96 = 0x3456;   // QVM50F96B/98B: high byte 0x34
inline constexpr std::uint16_t kTestWordP99 = 0x1529;   // QVM50P99: high byte 0x15
inline constexpr std::uint16_t kTestWordLast = 0x2A5C;  // 2023, 34A4, LK467

struct SimChip {
  std::string name;
  std::int32_t type = 0;
  std::string prod;
  bool otp = true;
  std::uint16_t blank = 0x3FFF;        // HexMcu: the erased word and the word width mask
  int configLength = 0;                // highest configuration word index
  bool programmed = false;             // a program packet reached the chip since the last erase
  std::vector<std::uint16_t> program;  // 0..RomSize
  std::array<std::uint16_t, kConfigAreaWords> config{};  // configuration area
  std::vector<std::uint8_t> eedata;                      // empty: no EEDATA

  // A blank chip of the model: program and configuration words blank, the type
  // word and the factory words in the configuration area, EEDATA all 0xFF.
  static SimChip FromParams(const ChipParams& params);

  // The type word lives at word 13, at word 3 for the "16E1" product code.
  int TypeWordIndex() const { return prod == "16E1" ? 3 : 13; }

  // Blank: never programmed since the last erase, every program word and every
  // configuration word (0..configLength, the type word excepted) blank.
  bool IsBlank() const;

  // Flash erase: program and configuration words back to blank; the factory words
  // of the configuration area and EEDATA stay.
  void Erase();

  bool operator==(const SimChip&) const = default;
};

// What the writer keeps for stand-alone programming (download). Words never stored
// read as 0xFFFF.
struct SimStore {
  std::vector<std::uint8_t> paramBlock;  // the 64-byte 0xFE packet, empty until stored
  std::vector<std::uint16_t> program;
  std::vector<std::uint16_t> config;
  std::uint16_t imageSum = 0;
  std::array<std::uint8_t, 9> rollStart{};  // four addresses (8 bytes) and the flags
  std::array<std::uint8_t, 8> rollStep{};   // code bytes 0..3 and steps 0..3
  std::uint8_t eeFlag = kEeFlagAbsent;
  std::uint16_t eeSum = 0;
  std::vector<std::uint8_t> eedata;

  bool operator==(const SimStore&) const = default;
};

}  // namespace lk::sim
