// Rolling-code values: the rules a code must satisfy, its placement into the
// outgoing program words, and the advance after each programmed chip.
#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

#include "core/host.h"
#include "rolling/roll_settings.h"

namespace lk {

// Codes are four bytes long; the rules accept nothing else.
inline constexpr int kRollCodeLength = 4;

// The code rules; shows the first violated rule's message and returns false.
// Codes that are not four bytes long fail without a message.
bool CheckRollCode(Host& host, const std::vector<std::int32_t>& bytes);

// The successor of a four-byte code, in place: byte 0 plus one, then the repair
// passes until nothing changes, so codes run through the legal values in increasing
// order of byte 3, 2, 1, 0. "BIND"/"DNIB" are skipped as well, so the result always
// passes CheckRollCode. Returns false (code unchanged) when byte 3 would pass 0xFE
// (code space exhausted), the code is not four bytes long or a byte lies outside
// 0..255.
bool NextRollCode(std::vector<std::int32_t>& bytes);

// Turns every 2-bit group "10" of every byte into "11".
void Adjust2262(std::vector<std::int32_t>& bytes);

// Text form: highest byte first, decimal, single spaces.
std::string RollCodeText(const std::vector<std::int32_t>& bytes);

// Puts byte i into the low 8 bits of words[Addresses[i]] (bits 8-15 kept), on the
// outgoing copy the caller passes. Refuses (message naming the address, false, words
// untouched) when an address is negative or lies outside the words.
bool PlaceRollCode(Host& host, const RollSettings& settings, std::vector<std::int32_t>& words);

// After a successful program: logs "Rolling Code:", stores the successor (2262-
// adjusted when that mode is on) under "Count" and logs "Next Rolling Code:". Does
// nothing and returns true when the feature is off. Returns false when nothing could
// be advanced: exhausted code space or a code that is not four valid bytes (a message
// says which; nothing is stored), a missing settings file or a write error.
bool AdvanceRollCode(Host& host, bool enabled, const std::filesystem::path& settingsFile);

}  // namespace lk
