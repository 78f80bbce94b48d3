// Rolling-code values: the rules a code must satisfy, its placement into the
// outgoing program words, and the advance after each programmed chip.
#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "core/host.h"
#include "rolling/roll_settings.h"

namespace lk {

// Codes are four bytes long; the rules accept nothing else.
inline constexpr int kRollCodeLength = 4;

// The code rules; shows the first violated rule's message and returns false.
// Codes that are not four bytes long fail without a message. The caption is the
// dialog's ("Error"): the dialog is the only caller.
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

// The first address of the code that lies outside words 0..wordCount-1 (or below 0).
std::optional<std::int32_t> RollAddressOutside(const RollSettings& settings,
                                               std::size_t wordCount);
// The message for such an address ("Rolling Code Address 800H is outside ...").
std::string RollAddressOutsideText(std::int32_t address);

// Puts byte i into the low 8 bits of words[Addresses[i]] (bits 8-15 kept), on the
// outgoing copy the caller passes. False, words untouched, when an address lies outside
// the words.
bool PlaceRollCode(const RollSettings& settings, std::vector<std::int32_t>& words);

// The program addresses that carry code bytes (a verify leaves them out).
std::vector<std::int32_t> RollCodeAddresses(const RollSettings& settings);

// The codes of one advance, in their text form.
struct RollAdvance {
  std::string Used;  // the code the chip was given ("Rolling Code:")
  std::string Next;  // the code stored for the next chip ("Next Rolling Code:")
};

// After a successful program: logs "Rolling Code:", stores the successor (2262-
// adjusted when that mode is on) under "Count" and logs "Next Rolling Code:". A code
// of another length is not advanced: it is stored and logged as it is. Does nothing and
// returns true when the feature is off. Returns false when nothing could be stored:
// exhausted code space or a four-byte code with a byte outside 0..255 (a message says
// which), a missing settings file (its messages) or a write error. The codes go to
// `advance` when given (Next stays empty when nothing was stored).
// `used`, when given, is the code the chip was given (the production database may have
// moved it past the settings file's); the advance starts from it.
bool AdvanceRollCode(Host& host, bool enabled, const std::filesystem::path& settingsFile,
                     RollAdvance* advance = nullptr,
                     const std::vector<std::int32_t>* used = nullptr);

}  // namespace lk
