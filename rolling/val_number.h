// Numbers in the rolling-code settings, read forgivingly: the file is edited by hand,
// so every value must survive being garbage. A numeric prefix is read, text without
// digits is 0, nothing throws. The parsing itself is the core's.
#pragma once

#include <cstdint>
#include <string_view>

namespace lk {

// A decimal number ("12", "-3", "4.5", "1e2"; "&h" reads hexadecimal), rounded half
// to even and clamped to the 32-bit range.
std::int32_t ValInt32(std::string_view text);

// The hexadecimal digits at the start of text as a 32-bit value ("FFFFFFFF" is -1).
// More than 32 bits of digits give -1, an address no program memory has.
std::int32_t ValHex32(std::string_view text);

// The hexadecimal digits at the start of text without wrapping: values past 32 bits
// saturate, so range checks never see them as small.
std::int64_t ValHexWide(std::string_view text);

}  // namespace lk
