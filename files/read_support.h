// Small helpers shared by the image readers: bounded whole-file reads, field access by
// character position that never reads past the text, hexadecimal fields and the
// halving with round-half-to-even that the record readers use. Line formats walk their
// text with TextLines (core/text_lines.h).
#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

#include "core/host.h"

namespace lk::files {

// The largest chip has 65536 program words and 32768 EEDATA bytes, so its project file
// is under 200 KiB; no valid binary image (project, BIN, SN8, BCT, FTC) comes near this.
inline constexpr std::uintmax_t kMaxBinaryFileBytes = 1u << 20;
// A text image of the largest chip, one word per record, takes about 1.1 MiB; this leaves
// room for any layout of records, blank lines and comments.
inline constexpr std::uintmax_t kMaxTextFileBytes = 16u << 20;

// Reads a whole image file for a reader: a regular file of at most maxBytes. Anything
// else gives false with the reason as a diagnostic; the open dispatcher then reports
// "Open File Error!" as for any refused file.
bool ReadImageFile(Host& host, const std::filesystem::path& path, std::uintmax_t maxBytes,
                   std::string& bytes);

// The characters from 1-based position start, at most length of them; empty past the
// end of the text, like the text functions of the record formats' original tools.
std::string_view Mid(std::string_view text, std::size_t start,
                     std::size_t length = std::string_view::npos);

// Hexadecimal digits only (either case), at most 8 of them; an empty field is 0.
bool ParseHexField(std::string_view field, std::uint32_t& value);

// value / 2 rounded half to even: 3 -> 2, 5 -> 2, 1 -> 0.
std::uint32_t HalveRoundHalfEven(std::uint32_t value);

// Little-endian 16-bit value at offset; the caller checks the bounds.
inline std::int32_t WordAt(const std::string& bytes, std::size_t offset) {
  return static_cast<std::uint8_t>(bytes[offset]) |
         (static_cast<std::uint8_t>(bytes[offset + 1]) << 8);
}

// words[i] = the little-endian word at offset + 2i, for i below count; stops early at
// the end of words or of bytes, so a short file fills what it has.
void CopyWords(const std::string& bytes, std::size_t offset, std::size_t count,
               std::vector<std::int32_t>& words);

enum class DataRecordResult { Stored, BeyondProgram, Malformed };

// Stores the words of one Intel HEX type "00" record into words[0..romSize], every word
// ANDed with mask. Fields are taken by character position (1-based): byte count at 2-3,
// byte load address at 4-7, data from 10; counts and addresses are halved with
// round-half-to-even. Characters past the end of the line read as nothing (a field cut
// short keeps the digits it has, an empty one is 0); a non-hex character makes the record
// Malformed. A word address beyond romSize gives BeyondProgram and stores nothing; words
// of a record that run past romSize are dropped.
DataRecordResult StoreDataRecord(std::string_view line, std::vector<std::int32_t>& words,
                                 std::int32_t romSize, std::int32_t mask);

// The record type, characters 8-9.
inline std::string_view RecordType(std::string_view line) { return Mid(line, 8, 2); }

}  // namespace lk::files
