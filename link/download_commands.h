// The steps of a download that only the writer's store knows: the image checksum, the
// rolling-code records the writer programs by itself when it works stand-alone, and the
// EEDATA information. The whole sequence is the download operation's (ops/).
#pragma once

#include <array>
#include <cstdint>

#include "link/fault.h"
#include "link/writer.h"
#include "rolling/roll_settings.h"

namespace lk {

// The rolling-code records of the download (0xEA / 0xEB), as sent and as read back.
struct RollRecord {
  std::array<std::uint16_t, 4> Addresses{};  // word addresses of code bytes 0..3
  std::uint8_t Flags = 0;                    // bit 0 on, bit 1 2262 mode, bits 4-7 length
  std::array<std::uint8_t, 4> Codes{};       // code bytes 0..3
  std::array<std::uint8_t, 4> Steps{};       // steps of bytes 0..3 (low byte each)
};

// The records for the project's settings; all zero when the rolling code is off (null).
RollRecord MakeRollRecord(const RollSettings* settings);

Fault SendImageSum(Writer& writer, std::uint16_t imageSum);          // 0xF8
Fault SendRollingStart(Writer& writer, const RollRecord& record);    // 0xEA
Fault SendRollingStep(Writer& writer, const RollRecord& record);     // 0xEB
// 0xFD: the writer answers the checksum it stored; StoreMismatch when it differs.
Fault CheckStoredSum(Writer& writer, std::uint16_t imageSum);
Fault SendEedataInfo(Writer& writer, std::uint8_t eeFlag, std::uint16_t eeSum);  // 0xC2
Fault EndEedataInfo(Writer& writer);                                             // 0xC3
// 0xEC / 0xED: the records as stored must carry their marks and equal what was sent.
Fault ReadRollingStart(Writer& writer, const RollRecord& expected);
Fault ReadRollingStep(Writer& writer, const RollRecord& expected);

}  // namespace lk
