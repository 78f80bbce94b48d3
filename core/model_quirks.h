// The rules the program decides by a chip's model name or product code, each named after
// what it does, so that a rule is spelled once and every layer asks the same question.
// A new chip quirk goes here (its predicate or its data) and is applied where it acts;
// the open-time rewrites of files/model_rules.h and the checksum cases of core/image.cpp
// are the two other homes of model rules.
#pragma once

#include <cstdint>
#include <initializer_list>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "core/chip_params.h"

namespace lk {

// True when value is one of the listed texts (exact, case-sensitive).
bool OneOf(std::string_view value, std::initializer_list<std::string_view> list);

// QVM50F96A, QVM50F96B and QVM50F98B: bit 8 is always clear on these chips.
bool ClearsBit8(const std::string& model);
// Every program and configuration word AND 0xFEFF.
void ClearBit8(ChipParams& chip);

// Product code "32A3": the chip has no readable type word, and its words 1020..1023 are
// its own (always sent as 0xFFFF).
bool Is32A3(const ChipParams& chip);

// The configuration-area word that holds the chip's type: 3 for product code "16E1",
// 13 for every other chip.
int TypeWordIndex(const ChipParams& chip);

// Chips that carry factory test words in configuration-area word 7: before a program or
// verify of the chip the word is read, its high byte must be the mark, and it goes to
// program word `address` (with word 7 XOR HexMcu at `address` + 1).
struct FactoryTestWords {
  int address;
  std::uint8_t mark;
};
// QVM50F96B/QVM50F98B (4093, 0x34) and QVM50P99 (2045, 0x15).
std::optional<FactoryTestWords> FactoryTestWordsOf(const ChipParams& chip);

// Product codes "2023", "34A4" and model LK467: the last two program words are the
// chip's voltage reference (word 7 of the configuration area and it XOR HexMcu), and the
// chip parameters are sent again after reading it.
bool KeepsVoltageReference(const ChipParams& chip);

// QVM50F98D and QVM50F96D may read their words 4093 and 4094 back as 0xFEFF.
bool ToleratesFeffTestWords(const ChipParams& chip);

// Product codes "30D1".."30D4": fixed bits in configuration words 0 and 1, and only 13
// configuration bits that read back.
bool HasForcedConfig(const ChipParams& chip);
// The configuration words as those chips need them (other chips unchanged).
std::vector<std::int32_t> ForcedConfigWords(const ChipParams& chip);
// What a verify expects to read back for configuration word i of the file: 13 bits for
// the forced chips, and bits 13-15 of word 1 set on "32A3" (the chip reads them as 1).
std::int32_t ExpectedConfigWord(const ChipParams& chip, int index, std::int32_t fileWord);
// The bits of a configuration word read from the chip that a verify compares.
std::int32_t ComparedConfigBits(const ChipParams& chip, std::int32_t chipWord);

// The model QVM75P82 takes the stand-alone parameter block of a download with the chip
// code 0xF6 instead of 0xFE.
bool StoresBlockWithChipCode(const ChipParams& chip);

// Product codes "101E" and "101F": a download carries the EEDATA information (and the
// EEDATA itself when the project has it).
bool DownloadCarriesEedata(const ChipParams& chip);

// The text after "CheckSum In IC is ": ChipInfo2 for Arch "LK3P", ChipInfo1 otherwise.
const std::string& ChipChecksumText(const ChipParams& chip);

// Type low byte 4: a verify first reads the configuration area and fails at once when
// bit 1 of word 1 is clear.
bool VerifyChecksConfigFirst(const ChipParams& chip);

}  // namespace lk
