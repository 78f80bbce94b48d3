// Number parsing with the forgiving rules of the settings files: a numeric prefix is
// read, anything after it is ignored, text without digits is 0, and nothing throws.
// Settings files are edited by hand, so every value must survive being garbage.
#pragma once

#include <cstdint>
#include <string_view>

namespace lk {

// A decimal number ("12", "-3", "4.5", "1e2"; "&h"/"&o" prefixes read hex/octal),
// rounded half to even and clamped to the 32-bit range.
std::int32_t ValInt32(std::string_view text);

// The hexadecimal digits at the start of text, as the 32-bit value the settings
// file means ("FFFFFFFF" is -1; more than eight digits keep the low 32 bits).
std::int32_t ValHex32(std::string_view text);

// The hexadecimal digits at the start of text without wrapping: values that do not
// fit are saturated to a huge value, so range checks never see them as small.
std::int64_t ValHexWide(std::string_view text);

}  // namespace lk
