// The writer's own identity: its four-byte ID (set with 0xA1, read with 0xA2).
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <vector>

#include "link/fault.h"
#include "link/writer.h"

namespace lk {

// Sends 0xA1 with the four ID bytes, lowest first, and reads the answer without judging it.
Fault SetWriterId(Writer& writer, const std::array<std::uint8_t, 4>& id);

// The answer to 0xA2 from its length byte to its checksum ([0] n, [1] status 0xA2, [2..5]
// the ID bytes, [6] writer type, [7] marker). The answer is not checked here: callers
// look at the status byte.
Result<std::vector<std::uint8_t>> GetWriterId(Writer& writer);

// What an identity answer says: the ID as a 32-bit little-endian number, and whether the
// writer is a dedicated QVM50F96B/98B writer (type below 6, or a marker other than '#').
struct WriterIdentity {
  std::uint32_t Number = 0;
  bool Dedicated = false;
};
// Nothing when the answer is too short or its status is not 0xA2.
std::optional<WriterIdentity> ParseWriterId(const std::vector<std::uint8_t>& answer);

}  // namespace lk
