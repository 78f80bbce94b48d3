// Encoders for the file formats the readers take. The example generator, the benchmark
// and the tests use them to make files; the program itself only writes project files.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "core/chip_params.h"

namespace lk {

// Intel HEX: type 00 records of wordsPerRecord words (byte addresses, low byte first,
// valid checksums), a type 04 record before each 64 KiB of bytes beyond the first, and
// the end-of-file record. CR LF line ends.
std::string MakeIntelHex(const std::vector<std::int32_t>& words, int wordsPerRecord = 8);

// One Intel HEX record with its checksum: ":" LL AAAA TT data CC.
std::string MakeHexRecord(std::uint8_t type, std::uint16_t address, const std::string& data);

// The bare program area, two bytes per word, low byte first.
std::string MakeBinImage(const std::vector<std::int32_t>& words);

// The QVM text format: the model record, the configuration words (08), the EEDATA bytes
// (10, only when chip.EeFlag is 0xA2 and EeSize >= 1), the program words (00), end.
std::string MakeQvmText(std::uint32_t modelNumber, const ChipParams& chip);

// SN8: a 256-byte header of zeros, then the program words.
std::string MakeSn8Image(const std::vector<std::int32_t>& words);

// BCT: the 256-byte header with the model code at 144 and the configuration words at
// 160, then the program words.
std::string MakeBctImage(std::uint16_t modelCode, const std::vector<std::int32_t>& config,
                         const std::vector<std::int32_t>& words);

// FTC: the seven-byte name "DW3PS86", four zero bytes, then the program words.
std::string MakeFtcImage(const std::vector<std::int32_t>& words, const std::string& name = "DW3PS86");

}  // namespace lk
