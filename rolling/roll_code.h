// Rolling-code values: the rules a code must satisfy, its placement into the
// outgoing program words, and the advance after each programmed chip.
#pragma once

#include <cstdint>
#include <filesystem>
#include <vector>

#include "core/host.h"
#include "rolling/roll_settings.h"

namespace lk {

// The code rules; shows the first violated rule's message and returns false.
// Codes that are not four bytes long fail without a message.
bool CheckRollCode(Host& host, const std::vector<std::int32_t>& bytes);

// The successor of a four-byte code, in place. Returns false (code unchanged) when
// the code space is exhausted or the code is not four bytes long.
bool NextRollCode(std::vector<std::int32_t>& bytes);

// Turns every 2-bit group "10" of every byte into "11".
void Adjust2262(std::vector<std::int32_t>& bytes);

// Text form: highest byte first, decimal, single spaces.
std::string RollCodeText(const std::vector<std::int32_t>& bytes);

// Puts byte i into the low 8 bits of words[Addresses[i]]. Refuses (message, false,
// words untouched) when an address lies outside the words.
bool PlaceRollCode(Host& host, const RollSettings& settings, std::vector<std::int32_t>& words);

// After a successful program: logs "Rolling Code:", stores the successor under
// "Count" and logs "Next Rolling Code:". Does nothing when the feature is off.
// Returns false when nothing could be advanced (exhausted code space, write error).
bool AdvanceRollCode(Host& host, bool enabled, const std::filesystem::path& settingsFile);

}  // namespace lk
