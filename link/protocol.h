// The writer's USB protocol: command codes, answer codes and the layouts of every
// packet. The host side (link/) and the simulated writer (sim/) both follow this file.
//
// Reports are 65 bytes: report ID 0, then a 64-byte packet. A command packet is
//   [0] n (3..64, counts itself and the checksum)  [1] command code
//   [2..n-2] arguments                              [n-1] low 8 bits of the sum of [0..n-2]
// An answer, as an input report (index 0 = report ID), is
//   [1] n (3..64)  [2] answer code  [3..n-1] data  [n] low 8 bits of the sum of [1..n-1]
// Raw data answers (program/configuration reads, EEDATA reads) carry 64 data bytes
// from index 1 with no length byte and no checksum. Numbers are 16-bit little-endian.
//
// Layouts the writer defines beyond the command table:
//
// EEDATA program packet (0xB0 chip, 0xC0 writer store), up to 48 data bytes:
//   [0] n = 6 + k  [1] code  [2] address low  [3] address high  [4] k  [5..4+k] data
//   [5+k] checksum.   Answer: checked, code 0xE1.
// EEDATA read packet (0xB1 chip, 0xC1 writer store):
//   [0] 5  [1] code  [2] address low  [3] address high  [4] checksum.
//   Answer: raw, 64 EEDATA bytes from the address on (0xFF past the end).
//
// Rolling-code records of the download (the writer programs the code itself when it
// works stand-alone):
//   0xEA (n = 14): [2] 0xA5 [3] 0x69 [4..11] word addresses of code bytes 0..3, 16 bits
//     each, 0 when unused  [12] flags: bit 0 rolling code on, bit 1 2262 mode, bits 4-7
//     the code length  [13] checksum.   Answer: checked, 0xE1.
//   0xEB (n = 11): [2..5] code bytes 0..3  [6..9] steps of bytes 0..3 (low byte each),
//     zero when unused  [10] checksum.   Answer: checked, 0xE1.
//   0xEC (n = 3, checksum 0xEF). Answer (n = 14): [2] 0xE1 [3] 0x69 [4] 0xA5
//     [5..12] the four addresses as stored  [13] the flags as stored  [14] checksum.
//   0xED (n = 3, checksum 0xF0). Answer (n = 11): [2] 0xE1 [3..10] the eight bytes as
//     stored  [11] checksum.
//   The download checks the marks and that the stored bytes equal what was sent.
//
// Image checksum of the download:
//   0xF8 (n = 5): [2] checksum low  [3] checksum high  [4] packet checksum.
//   0xFD (n = 3, packet checksum 0: 3 + 0xFD wraps to 0). Answer (n = 5): [2] 0xE1
//     [3] stored checksum low  [4] stored checksum high  [5] checksum; the download
//     compares the stored value with the image checksum's low 16 bits.
//
// EEDATA information of the download:
//   0xC2 (n = 6): [2] EEDATA flag (0xA2 carries EEDATA, else 0xA0)  [3] EEDATA checksum
//     low  [4] EEDATA checksum high  [5] checksum.  0xC3 (n = 3).  Answers: checked, 0xE1.
//
// Writer identity:
//   0xA1 (n = 7): [2..5] ID bytes 0..3. Answer (n = 3): [2] 0xE1.
//   0xA2 (n = 3, checksum 0xA5). Answer (n = 9): [2] 0xA2  [3..6] ID bytes 0..3
//     [7] writer type  [8] marker  [9] checksum. The identity number is the ID read as
//     a 32-bit little-endian value. A writer whose type is below 6, or whose marker is
//     not '#', is a dedicated QVM50F96B/98B writer.
//
// Version: 0xA0 (n = 3, checksum 0xA3). Answer (n = 5): [2] 0xA0 [3] version low
//   [4] version high [5] checksum. Version low byte below 3 = first generation: no
//   addresses in read and program packets (the writer counts them itself; its counter
//   restarts at 0 after 0xF6/0xFE, after 0xE1 and whenever the command code changes),
//   0xE1 sent between steps.
//
// Blank check: after the chip session is prepared, 0xF1 starts the writer's blank check
// (OTP chips) or erase (flash chips); the writer answers 0xE3 while it works, then 0xE1
// (blank / erased) or 0xE2 (not blank). Answers to 0xF1 are (n = 3).
//
// Configuration words forced before programming for the 30D1..30D4 product codes
// (word index: AND mask, then OR value):
//   30D1: word 0 & 0x17DF | 11,   word 1 & 0x1FFC | 3
//   30D2: word 0 & 0x17EF | 96,   word 1 & 0x1FFA | 10
//   30D3: word 0 & 0x1F5A | 90,   word 1 | 0x1E3F
//   30D4: word 0 & 0x1FDF | 31,   word 1 | 0x1FFF
// Configuration verify compares those codes' words under the mask 0x1FFF (the chip
// has 13 configuration bits), and for "32A3" compares word 1 with bits 13-15 set
// (the chip reads them as 1).
//
// Protected test words: for QVM50F96B/98B (P[4093], P[4094]) and QVM50P99 (P[2045],
// P[2046]) the first word is configuration-area word 7 and the second is word 7 XOR
// HexMcu, the same derivation the 2023/34A4/LK467 chips use for their last two words.
#pragma once

#include <cstdint>

namespace lk::proto {

inline constexpr std::uint16_t kVendorId = 0x0161;
inline constexpr std::uint16_t kProductId = 0x0925;
inline constexpr int kReportLength = 65;  // report ID + 64 bytes
inline constexpr int kPacketLength = 64;

// Command codes.
inline constexpr std::uint8_t kGetVersion = 0xA0;
inline constexpr std::uint8_t kSetId = 0xA1;
inline constexpr std::uint8_t kGetId = 0xA2;
inline constexpr std::uint8_t kEeProgram = 0xB0;
inline constexpr std::uint8_t kEeRead = 0xB1;
inline constexpr std::uint8_t kEePrepare = 0xB2;
inline constexpr std::uint8_t kStoreEeProgram = 0xC0;
inline constexpr std::uint8_t kStoreEeRead = 0xC1;
inline constexpr std::uint8_t kStoreEeInfo = 0xC2;
inline constexpr std::uint8_t kStoreEeInfoEnd = 0xC3;
inline constexpr std::uint8_t kIdle = 0xE1;
inline constexpr std::uint8_t kEnd = 0xE4;
inline constexpr std::uint8_t kPassed = 0xE5;
inline constexpr std::uint8_t kFailed = 0xE6;
inline constexpr std::uint8_t kRollingStart = 0xEA;
inline constexpr std::uint8_t kRollingStep = 0xEB;
inline constexpr std::uint8_t kReadRollingStart = 0xEC;
inline constexpr std::uint8_t kReadRollingStep = 0xED;
inline constexpr std::uint8_t kReady = 0xF1;
inline constexpr std::uint8_t kReadRom = 0xF2;
inline constexpr std::uint8_t kProgramRom = 0xF3;
inline constexpr std::uint8_t kReadConfig = 0xF5;
inline constexpr std::uint8_t kChipType = 0xF6;
inline constexpr std::uint8_t kStoreRom = 0xF7;
inline constexpr std::uint8_t kImageSum = 0xF8;
inline constexpr std::uint8_t kProgramConfig = 0xF9;
inline constexpr std::uint8_t kStoreConfig = 0xFA;
inline constexpr std::uint8_t kStoreReadRom = 0xFB;
inline constexpr std::uint8_t kStoreReadConfig = 0xFC;
inline constexpr std::uint8_t kCheckStoredSum = 0xFD;
inline constexpr std::uint8_t kStoreChipType = 0xFE;

// Answer codes.
inline constexpr std::uint8_t kAnswerOk = 0xE1;
inline constexpr std::uint8_t kAnswerNotBlank = 0xE2;
inline constexpr std::uint8_t kAnswerBusy = 0xE3;
inline constexpr std::uint8_t kIdStatus = 0xA2;
// The writer refuses a packet: bad frame (length or checksum), unknown code, a
// parameter block that does not name the chip in the socket, no chip, an address
// outside the memory. Any code other than the expected one is a failure to the host.
inline constexpr std::uint8_t kAnswerRefused = 0xE0;

// Identity record.
inline constexpr std::uint8_t kGeneralWriterMarker = '#';
inline constexpr std::uint8_t kFirstGeneralWriterType = 6;

// Rolling-code record marks.
inline constexpr std::uint8_t kRollMarkA5 = 0xA5;
inline constexpr std::uint8_t kRollMark69 = 0x69;

inline constexpr int kWordsPerProgramPacket = 24;
inline constexpr int kWordsPerReadPacket = 32;
inline constexpr int kEeBytesPerProgramPacket = 48;
inline constexpr int kEeBytesPerReadPacket = 64;

// The packet checksum: low 8 bits of the sum of the given bytes.
inline std::uint8_t Checksum(const std::uint8_t* bytes, int count) {
  unsigned sum = 0;
  for (int i = 0; i < count; ++i) sum += bytes[i];
  return static_cast<std::uint8_t>(sum & 0xFF);
}

// The low and high byte of a 16-bit little-endian number on the wire.
inline std::uint8_t Lo(unsigned value) { return static_cast<std::uint8_t>(value & 0xFF); }
inline std::uint8_t Hi(unsigned value) { return static_cast<std::uint8_t>((value >> 8) & 0xFF); }

// First generation: version low byte below 3.
inline bool IsFirstGeneration(std::uint32_t version) { return (version & 0xFF) < 3; }

}  // namespace lk::proto
